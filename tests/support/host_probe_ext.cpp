// Test-only module host_probe: joins the runtime that orvane.pyfigura started, as a sister module
// would, and calls test entries of the probe assembly through the same binding path.
#include <Python.h>

#include "host/core/host_runtime.h"
#include "host/entry_tables.h"
#include "marshal/string_marshal.h"
#include "probe_binding.h"

namespace {

constexpr const char* kProbeClass = "Orvane.PyFigura.Probe.DrawingProbe";

struct ProbeEntries {
    int32_t (*DrawSample)(StringArg*, StringArg*);
    void (*Fail)(StringArg*);
    PyObject* (*Echo)(StringArg*, int32_t*);
    int64_t (*LiveHandles)();
    bool bound;
};

ProbeEntries g_entries{};

// Joins the host (the loader library is already in the process) and binds the probe entries.
bool bind_probe() {
    const ProbeBinding bindings[] = {{"DrawSample", probe_slot(g_entries.DrawSample)},
                                     {"Fail", probe_slot(g_entries.Fail)},
                                     {"Echo", probe_slot(g_entries.Echo)},
                                     {"LiveHandles", probe_slot(g_entries.LiveHandles)}};
    return bind_probe_entries(kProbeClass, bindings, sizeof bindings / sizeof bindings[0], g_entries.bound);
}

PyObject* draw_sample(PyObject*, PyObject* args) {
    StringArg path, text;
    reset_string_arg(&path);
    reset_string_arg(&text);
    if (!PyArg_ParseTuple(args, "O&O&", convert_string, &path, convert_string, &text)) return nullptr;
    if (!bind_probe()) return nullptr;
    int32_t argb = g_entries.DrawSample(&path, &text);
    if (PyErr_Occurred()) return nullptr;
    return PyLong_FromLong(argb);
}

PyObject* fail(PyObject*, PyObject* args) {
    StringArg message;
    reset_string_arg(&message);
    if (!PyArg_ParseTuple(args, "O&", convert_string, &message)) return nullptr;
    if (!bind_probe()) return nullptr;
    g_entries.Fail(&message);
    if (PyErr_Occurred()) return nullptr;
    Py_RETURN_NONE;
}

PyObject* echo(PyObject*, PyObject* args) {
    StringArg text;
    reset_string_arg(&text);
    if (!PyArg_ParseTuple(args, "O&", convert_string, &text)) return nullptr;
    if (!bind_probe()) return nullptr;
    int32_t units = 0;
    PyObject* result = g_entries.Echo(&text, &units);
    if (PyErr_Occurred()) {
        Py_XDECREF(result);
        return nullptr;
    }
    return Py_BuildValue("(Ni)", result, units);
}

PyObject* live_handles(PyObject*, PyObject*) {
    if (!bind_probe()) return nullptr;
    return PyLong_FromLongLong(g_entries.LiveHandles());
}

PyObject* runtime_state(PyObject*, PyObject*) {
    if (!bind_probe()) return nullptr;
    host::HostRuntime& rt = host::host_runtime_instance();
    return Py_BuildValue("{s:s,s:s,s:O,s:O}", "runtime_directory", rt.runtime_directory.c_str(),
                         "assembly_directories", rt.assembly_directories.c_str(), "loaded_here",
                         rt.wrap_library.loaded_here() ? Py_True : Py_False, "domain_initialized",
                         rt.domain_initialized ? Py_True : Py_False);
}

PyMethodDef g_methods[] = {
    {"draw_sample", draw_sample, METH_VARARGS, "draw_sample(path, text) -> ARGB of pixel (0, 0)"},
    {"fail", fail, METH_VARARGS, "fail(message): a managed exception with that message"},
    {"echo", echo, METH_VARARGS, "echo(text) -> (text back from managed code, UTF-16 length)"},
    {"live_handles", live_handles, METH_NOARGS, "number of live instance handles"},
    {"runtime_state", runtime_state, METH_NOARGS, "this module's view of the shared host"},
    {nullptr, nullptr, 0, nullptr}};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "host_probe", nullptr, -1, g_methods,
                        nullptr, nullptr, nullptr, nullptr};

}  // namespace

PyMODINIT_FUNC PyInit_host_probe() { return PyModule_Create(&g_module); }
