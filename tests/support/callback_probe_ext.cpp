// Test module callback_probe: calls the callback rows from managed code through the probe assembly, and reports
// the row's result, what it made, and the Python exception it left.
#include "marshal/string_marshal.h"
#include "probe_binding.h"

namespace {

struct {
    PyObject* (*Row)(StringArg*, PyObject*, PyObject*, int32_t, int64_t*);
    int32_t (*WireLayoutMismatches)();
    bool bound;
} g_entries{};

bool bind_probe() {
    const ProbeBinding bindings[] = {PROBE_ENTRY(g_entries, Row), PROBE_ENTRY(g_entries, WireLayoutMismatches)};
    return bind_probe_entries("Orvane.PyFigura.Probe.CallbackProbe", bindings, g_entries.bound);
}

// row(op, target, item=None, index=0) -> (status, result or None, pending exception or None).
PyObject* row(PyObject*, PyObject* args, PyObject* kwargs) {
    static const char* keywords[] = {"op", "target", "item", "index", nullptr};
    StringArg op;
    reset_string_arg(&op);
    PyObject *target, *item = Py_None;
    int index = 0;
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "O&O|Oi", const_cast<char**>(keywords), convert_string, &op,
                                     &target, &item, &index) ||
        !bind_probe()) {
        return nullptr;
    }
    int64_t status = 0;
    PyObject* result = g_entries.Row(&op, target, item, index, &status);
    return Py_BuildValue("(LNN)", static_cast<long long>(status), result ? result : Py_NewRef(Py_None), take_error());
}

PyObject* wire_layout_mismatches(PyObject*, PyObject*) {
    return bind_probe() ? PyLong_FromLong(g_entries.WireLayoutMismatches()) : nullptr;
}

PyMethodDef g_methods[] = {PROBE_KW("row", row),
                           {"wire_layout_mismatches", wire_layout_mismatches, METH_NOARGS, nullptr},
                           {nullptr, nullptr, 0, nullptr}};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "callback_probe", nullptr, -1, g_methods};

}  // namespace

PyMODINIT_FUNC PyInit_callback_probe() { return probe_module(g_module); }
