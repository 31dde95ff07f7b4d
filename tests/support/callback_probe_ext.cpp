// Test-only module callback_probe: calls the callback rows from managed code through the probe assembly,
// and reports the row's result, what it made, and the Python exception it left.
#include <Python.h>

#include "host/core/host_runtime.h"
#include "host/entry_tables.h"
#include "marshal/string_marshal.h"
#include "probe_binding.h"

namespace {

constexpr const char* kProbeClass = "Orvane.PyFigura.Probe.CallbackProbe";

struct Entries {
    PyObject* (*Row)(StringArg*, PyObject*, PyObject*, int32_t, int64_t*);
    int64_t (*LiveHandles)();
    int32_t (*WireLayoutMismatches)();
    bool bound;
};

Entries g_entries{};

bool bind_probe() {
    const ProbeBinding bindings[] = {{"Row", probe_slot(g_entries.Row)},
                                     {"LiveHandles", probe_slot(g_entries.LiveHandles)},
                                     {"WireLayoutMismatches", probe_slot(g_entries.WireLayoutMismatches)}};
    return bind_probe_entries(kProbeClass, bindings, sizeof bindings / sizeof bindings[0], g_entries.bound);
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

PyObject* wire_layout_mismatches(PyObject*, PyObject*) {
    if (!bind_probe()) return nullptr;
    return PyLong_FromLong(g_entries.WireLayoutMismatches());
}

PyMethodDef g_methods[] = {
    {"row", reinterpret_cast<PyCFunction>(reinterpret_cast<void*>(row)), METH_VARARGS | METH_KEYWORDS,
     "row(op, target, item=None, index=0, raising=False) -> (status, result, exception)"},
    {"live_handles", live_handles, METH_NOARGS, "number of live instance handles"},
    {"wire_layout_mismatches", wire_layout_mismatches, METH_NOARGS,
     "wire records the runtime lays out otherwise than the description"},
    {nullptr, nullptr, 0, nullptr}};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "callback_probe", nullptr, -1, g_methods,
                        nullptr, nullptr, nullptr, nullptr};

}  // namespace

PyMODINIT_FUNC PyInit_callback_probe() { return PyModule_Create(&g_module); }
