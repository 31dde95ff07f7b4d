// Test-only module callback_probe: calls the callback rows from managed code through the probe assembly,
// and reports the row's result, what it made, and the Python exception it left.
#include <Python.h>

#include "host/core/host_runtime.h"
#include "host/entry_tables.h"
#include "marshal/string_marshal.h"

namespace {

constexpr const char* kProbeAssembly = "Orvane.PyFigura.Probe";
constexpr const char* kProbeClass = "Orvane.PyFigura.Probe.CallbackProbe";

struct Entries {
    PyObject* (*Row)(StringArg*, PyObject*, PyObject*, int32_t, int64_t*);
    int64_t (*LiveHandles)();
    bool bound;
};

Entries g_entries{};

bool bind_probe() {
    if (g_entries.bound) return true;
    host::HostRuntime& rt = host::host_runtime_instance(u"3.1", false, u"orvane", u"pyfigura");
    struct Binding {
        const char* name;
        void** slot;
    } bindings[] = {{"Row", reinterpret_cast<void**>(&g_entries.Row)},
                    {"LiveHandles", reinterpret_cast<void**>(&g_entries.LiveHandles)}};
    for (auto& b : bindings) {
        uint32_t status = host::bind_managed_entry(rt, kProbeAssembly, kProbeClass, b.name, b.slot);
        if (status != 0) {
            PyErr_SetString(PyExc_TypeError, format_binding_error(kProbeAssembly, kProbeClass, b.name, status).c_str());
            return false;
        }
    }
    g_entries.bound = true;
    return true;
}

// row(op, target, item=None, index=0) -> (status, result or None, pending exception or None).
// With raising=True the pending exception is raised instead, as a wrapper's check would.
PyObject* row(PyObject*, PyObject* args, PyObject* kwargs) {
    static const char* keywords[] = {"op", "target", "item", "index", "raising", nullptr};
    StringArg op;
    reset_string_arg(&op);
    PyObject* target;
    PyObject* item = Py_None;
    int index = 0;
    int raising = 0;
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "O&O|Oip", const_cast<char**>(keywords), convert_string, &op,
                                     &target, &item, &index, &raising)) {
        return nullptr;
    }
    if (!bind_probe()) return nullptr;
    int64_t status = 0;
    PyObject* result = g_entries.Row(&op, target, item, index, &status);
    PyObject* error = nullptr;
    if (PyErr_Occurred()) {
        if (raising) {
            Py_XDECREF(result);
            return nullptr;
        }
        PyObject *type, *traceback;
        PyErr_Fetch(&type, &error, &traceback);
        PyErr_NormalizeException(&type, &error, &traceback);
        Py_XDECREF(type);
        Py_XDECREF(traceback);
    }
    return Py_BuildValue("(LNN)", static_cast<long long>(status), result ? result : Py_NewRef(Py_None),
                         error ? error : Py_NewRef(Py_None));
}

PyObject* live_handles(PyObject*, PyObject*) {
    if (!bind_probe()) return nullptr;
    return PyLong_FromLongLong(g_entries.LiveHandles());
}

PyMethodDef g_methods[] = {
    {"row", reinterpret_cast<PyCFunction>(reinterpret_cast<void*>(row)), METH_VARARGS | METH_KEYWORDS,
     "row(op, target, item=None, index=0, raising=False) -> (status, result, exception)"},
    {"live_handles", live_handles, METH_NOARGS, "number of live instance handles"},
    {nullptr, nullptr, 0, nullptr}};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "callback_probe", nullptr, -1, g_methods,
                        nullptr, nullptr, nullptr, nullptr};

}  // namespace

PyMODINIT_FUNC PyInit_callback_probe() { return PyModule_Create(&g_module); }
