// Test module host_probe: joins the runtime that orvane.pyfigura started, as a sister module would, and calls test
// entries of the probe assembly through the same binding path.
#include "marshal/string_marshal.h"
#include "probe_binding.h"

namespace {

struct {
    int32_t (*DrawSample)(StringArg*, StringArg*);
    void (*Fail)(StringArg*);
    PyObject* (*Echo)(StringArg*, int32_t*);
    int64_t (*LiveHandles)();
    bool bound;
} g_entries{};

bool bind_probe() {
    const ProbeBinding bindings[] = {PROBE_ENTRY(g_entries, DrawSample), PROBE_ENTRY(g_entries, Fail),
                                     PROBE_ENTRY(g_entries, Echo), PROBE_ENTRY(g_entries, LiveHandles)};
    return bind_probe_entries("Orvane.PyFigura.Probe.DrawingProbe", bindings, g_entries.bound);
}

// Parses the str arguments of `format` ("O&" each, None allowed) into `texts`, then binds the probe.
bool parse_texts(PyObject* args, const char* format, StringArg (&texts)[2]) {
    reset_string_arg(&texts[0]);
    reset_string_arg(&texts[1]);
    return PyArg_ParseTuple(args, format, convert_string, &texts[0], convert_string, &texts[1]) && bind_probe();
}

// draw_sample(path, text) -> ARGB of pixel (0, 0) of the drawing saved at `path`.
PyObject* draw_sample(PyObject*, PyObject* args) {
    StringArg texts[2];
    if (!parse_texts(args, "O&O&:draw_sample", texts)) return nullptr;
    const int32_t argb = g_entries.DrawSample(&texts[0], &texts[1]);
    return PyErr_Occurred() ? nullptr : PyLong_FromLong(argb);
}

// fail(message): raises the proxy error of a managed exception with that message.
PyObject* fail(PyObject*, PyObject* args) {
    StringArg texts[2];
    if (!parse_texts(args, "O&:fail", texts)) return nullptr;
    g_entries.Fail(&texts[0]);
    return PyErr_Occurred() ? nullptr : Py_NewRef(Py_None);
}

// echo(text) -> (the text back from managed code, its UTF-16 length)
PyObject* echo(PyObject*, PyObject* args) {
    StringArg texts[2];
    if (!parse_texts(args, "O&:echo", texts)) return nullptr;
    int32_t units = 0;
    PyObject* result = g_entries.Echo(&texts[0], &units);
    if (PyErr_Occurred()) {
        Py_XDECREF(result);
        return nullptr;
    }
    return Py_BuildValue("(Ni)", result, units);
}

PyObject* live_handles(PyObject*, PyObject*) {
    return bind_probe() ? PyLong_FromLongLong(g_entries.LiveHandles()) : nullptr;
}

// runtime_state() -> this module's view of the shared host
PyObject* runtime_state(PyObject*, PyObject*) {
    if (!bind_probe()) return nullptr;
    host::HostRuntime& rt = host::host_runtime_instance();
    return Py_BuildValue("{s:O,s:O}", "loaded_here", rt.wrap_library.loaded_here() ? Py_True : Py_False,
                         "domain_initialized", rt.domain_initialized ? Py_True : Py_False);
}

PyMethodDef g_methods[] = {{"draw_sample", draw_sample, METH_VARARGS, nullptr},
                           {"fail", fail, METH_VARARGS, nullptr},
                           {"echo", echo, METH_VARARGS, nullptr},
                           {"live_handles", live_handles, METH_NOARGS, nullptr},
                           {"runtime_state", runtime_state, METH_NOARGS, nullptr},
                           {nullptr, nullptr, 0, nullptr}};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "host_probe", nullptr, -1, g_methods};

}  // namespace

PyMODINIT_FUNC PyInit_host_probe() { return probe_module(g_module); }
