// Test module descriptor_probe: static types carrying field and mixed method descriptors whose functions record
// each call.
#include <cstddef>
#include <cstring>

#include "bridge/descriptors.h"
#include "probe_binding.h"

namespace {

struct ProbeObject {
    PyObject_HEAD
    PyObject* weak_references;
};

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

// Tells whether the getter got a null object, and hands back the row's closure text.
PyObject* report_origin(PyObject* object, void* closure) {
    return Py_BuildValue("(ss)", object == nullptr ? "null" : "object", static_cast<const char*>(closure));
}

PyObject* fail_read(PyObject*, void*) { return PyErr_Format(PyExc_ValueError, "getter failed"); }

char kOriginClosure[] = "closure of origin";

PyGetSetDef g_fields[] = {
    {"counter", count_reads, nullptr, "Number of reads so far.", nullptr},
    {"origin", report_origin, nullptr, nullptr, kOriginClosure},
    {"broken", fail_read, nullptr, "", nullptr},
};

#define ROW(name, function, flags, doc) \
    {name, reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function)), flags, doc}

PyMethodDef g_static_m = ROW("m", row_function<true>, METH_VARARGS | METH_KEYWORDS | METH_STATIC, "Static form of m.");
PyMethodDef g_instance_m = ROW("m", noargs_row_function, METH_NOARGS, "Instance form of m.");
PyMethodDef g_static_k = ROW("k", row_function<true>, METH_VARARGS | METH_KEYWORDS, nullptr);
PyMethodDef g_instance_k = ROW("k", row_function<false>, METH_VARARGS | METH_KEYWORDS, nullptr);
// Another row with k's instance function: method objects compare by function, not by row.
PyMethodDef g_alias_k = ROW("alias", row_function<false>, METH_VARARGS | METH_KEYWORDS, nullptr);
// A name longer than the 200 characters that the argument messages keep; filled at module start.
char g_long_name[251];
PyMethodDef g_long_noargs = ROW(g_long_name, noargs_row_function, METH_NOARGS, nullptr);

const struct {
    const char* name;
    PyMethodDef* row;
} g_rows[] = {{"instance_k", &g_instance_k}, {"alias_k", &g_alias_k}, {"long_noargs", &g_long_noargs}};

void probe_dealloc(PyObject* self) {
    if (reinterpret_cast<ProbeObject*>(self)->weak_references != nullptr) PyObject_ClearWeakRefs(self);
    Py_TYPE(self)->tp_free(self);
}

PyTypeObject ProbeType = [] {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "descriptor_probe.Probe";
    type.tp_basicsize = sizeof(ProbeObject);
    type.tp_dealloc = probe_dealloc;
    type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE;
    type.tp_weaklistoffset = offsetof(ProbeObject, weak_references);
    type.tp_new = PyType_GenericNew;
    return type;
}();

PyTypeObject TargetType = [] {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "descriptor_probe.Target";
    type.tp_basicsize = sizeof(PyObject);
    type.tp_flags = Py_TPFLAGS_DEFAULT;
    return type;
}();

// last_call() -> the record of the last row call since the previous last_call(), or None
PyObject* probe_last_call(PyObject*, PyObject*) {
    PyObject* record = g_last_call != nullptr ? g_last_call : Py_NewRef(Py_None);
    g_last_call = nullptr;
    return record;
}

PyObject* probe_reads(PyObject*, PyObject*) { return PyLong_FromLong(g_reads); }

// make_method(row_name, self=None): a method object of Probe over one of the rows above.
PyObject* probe_make_method(PyObject*, PyObject* args) {
    const char* name;
    PyObject* self = Py_None;
    if (!PyArg_ParseTuple(args, "s|O", &name, &self)) return nullptr;
    for (const auto& named : g_rows) {
        if (std::strcmp(named.name, name) == 0)
            return make_method_object(&ProbeType, named.row, self == Py_None ? nullptr : self);
    }
    return PyErr_Format(PyExc_KeyError, "no row %s", name);
}

// install(name: bytes, kind): stores a new descriptor on Target. Kinds: "field" (Probe's counter row), any other
// a creation that failed with RuntimeError pending.
PyObject* probe_install(PyObject*, PyObject* args) {
    const char *name, *kind;
    if (!PyArg_ParseTuple(args, "ys", &name, &kind)) return nullptr;
    PyObject* descriptor = nullptr;
    if (std::strcmp(kind, "field") == 0) {
        descriptor = make_field_descriptor(&TargetType, &g_fields[0]);
    } else {
        PyErr_SetString(PyExc_RuntimeError, "creation failed");
    }
    return install_class_attribute(&TargetType, name, descriptor) < 0 ? nullptr : Py_NewRef(Py_None);
}

PyMethodDef g_functions[] = {
    {"last_call", probe_last_call, METH_NOARGS, nullptr},
    {"reads", probe_reads, METH_NOARGS, nullptr},
    {"make_method", probe_make_method, METH_VARARGS, nullptr},
    {"install", probe_install, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "descriptor_probe", nullptr, -1, g_functions};

int install(const char* name, PyObject* descriptor) { return install_class_attribute(&ProbeType, name, descriptor); }

}  // namespace

PyMODINIT_FUNC PyInit_descriptor_probe() {
    std::memset(g_long_name, 'n', sizeof g_long_name - 1);
    for (PyTypeObject* type : {&FieldDescrType, &MixMethodDescrType, &ProbeType})
        if (PyType_Ready(type) < 0) return nullptr;
    for (PyGetSetDef& field : g_fields)
        if (install(field.name, make_field_descriptor(&ProbeType, &field)) < 0) return nullptr;
    if (install("m", make_mix_descriptor(&ProbeType, &g_static_m, &g_instance_m)) < 0 ||
        install("k", make_mix_descriptor(&ProbeType, &g_static_k, &g_instance_k)) < 0) {
        return nullptr;
    }
    return probe_module(g_module, {{"Probe", &ProbeType}, {"Target", &TargetType}});
}
