// Test module descriptor_probe: a static type carrying field and mixed method descriptors whose functions record
// each call.
#include "bridge/descriptors.h"
#include "probe_binding.h"

namespace {

long g_reads = 0;
PyObject* g_last_call = nullptr;  // what the last row function saw, or null

PyObject* or_none(PyObject* object) { return object != nullptr ? object : Py_None; }

// Keeps what a row function saw: its name, the address of self (None for null), args, kwargs and the type of the
// exception pending when it started. The pending exception is left in place.
void record_call(const char* function, PyObject* self, PyObject* args, PyObject* kwargs) {
    PyObject* pending = PyErr_Occurred();
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    PyObject* address = self != nullptr ? PyLong_FromVoidPtr(self) : Py_NewRef(Py_None);
    Py_XSETREF(g_last_call, Py_BuildValue("{s:s,s:N,s:O,s:O,s:O}", "function", function, "self", address, "args",
                                          or_none(args), "kwargs", or_none(kwargs), "pending", or_none(pending)));
    PyErr_Restore(type, value, traceback);
}

template <bool Static>
PyObject* row_function(PyObject* self, PyObject* args, PyObject* kwargs) {
    const char* name = Static ? "static" : "instance";
    record_call(name, self, args, kwargs);
    return Py_BuildValue("(sOO)", name, or_none(args), or_none(kwargs));
}

// Shaped like a generated METH_NOARGS method: it does its work, then asks PyErr_Occurred.
PyObject* noargs_row_function(PyObject* self, PyObject* args, PyObject* kwargs) {
    record_call("noargs", self, args, kwargs);
    return PyErr_Occurred() ? nullptr : PyUnicode_FromString("noargs");
}

PyObject* count_reads(PyObject*, void*) { return PyLong_FromLong(++g_reads); }

PyObject* fail_read(PyObject*, void*) { return PyErr_Format(PyExc_ValueError, "getter failed"); }

PyGetSetDef g_fields[] = {
    {"counter", count_reads, nullptr, "Number of reads so far.", nullptr},
    {"broken", fail_read, nullptr, "", nullptr},
};

#define ROW(name, function, flags, doc) \
    {name, reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function)), flags, doc}

PyMethodDef g_static_m = ROW("m", row_function<true>, METH_VARARGS | METH_KEYWORDS | METH_STATIC, "Static form of m.");
PyMethodDef g_instance_m = ROW("m", noargs_row_function, METH_NOARGS, "Instance form of m.");
PyMethodDef g_static_k = ROW("k", row_function<true>, METH_VARARGS | METH_KEYWORDS, nullptr);
PyMethodDef g_instance_k = ROW("k", row_function<false>, METH_VARARGS | METH_KEYWORDS, nullptr);

PyTypeObject ProbeType = [] {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "descriptor_probe.Probe";
    type.tp_basicsize = sizeof(PyObject);
    type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE;
    type.tp_new = PyType_GenericNew;
    return type;
}();

// last_call() -> the record of the last row call since the previous last_call(), or None
PyObject* probe_last_call(PyObject*, PyObject*) {
    PyObject* record = g_last_call != nullptr ? g_last_call : Py_NewRef(Py_None);
    g_last_call = nullptr;
    return record;
}

int install(const char* name, PyObject* descriptor) { return install_class_attribute(&ProbeType, name, descriptor); }

// install(name: bytes, failed=False): stores a new counter field on Probe, or a creation that failed with RuntimeError.
PyObject* probe_install(PyObject*, PyObject* args) {
    const char* name;
    int failed = 0;
    if (!PyArg_ParseTuple(args, "y|p", &name, &failed)) return nullptr;
    if (failed) PyErr_SetString(PyExc_RuntimeError, "creation failed");
    PyObject* descriptor = failed ? nullptr : make_field_descriptor(&ProbeType, &g_fields[0]);
    return install(name, descriptor) < 0 ? nullptr : Py_NewRef(Py_None);
}

PyMethodDef g_functions[] = {
    {"last_call", probe_last_call, METH_NOARGS, nullptr},
    {"install", probe_install, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "descriptor_probe", nullptr, -1, g_functions};

}  // namespace

PyMODINIT_FUNC PyInit_descriptor_probe() {
    for (PyTypeObject* type : {&FieldDescrType, &MixMethodDescrType, &ProbeType})
        if (PyType_Ready(type) < 0) return nullptr;
    for (PyGetSetDef& field : g_fields)
        if (install(field.name, make_field_descriptor(&ProbeType, &field)) < 0) return nullptr;
    if (install("m", make_mix_descriptor(&ProbeType, &g_static_m, &g_instance_m)) < 0 ||
        install("k", make_mix_descriptor(&ProbeType, &g_static_k, &g_instance_k)) < 0) {
        return nullptr;
    }
    return probe_module(g_module, {{"Probe", &ProbeType}});
}
