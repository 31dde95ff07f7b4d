// Test module descriptor_probe: static types carrying field and mixed method descriptors whose functions record each call.
#include "bridge/descriptors.h"

#include <cstddef>
#include <cstring>

namespace {

struct ProbeObject {
    PyObject_HEAD
    PyObject* weak_references;
};

long g_reads = 0;
PyObject* g_last_call = nullptr;  // dict describing the last row function that ran, or null

// Keeps what a row function saw: its name, the address of self (None for null), args, kwargs and
// the type of the exception pending when it started. The pending exception is left in place.
void record_call(const char* function, PyObject* self, PyObject* args, PyObject* kwargs) {
    PyObject* pending = PyErr_Occurred();
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    PyObject* address = self != nullptr ? PyLong_FromVoidPtr(self) : Py_NewRef(Py_None);
    PyObject* record = Py_BuildValue("{s:s,s:N,s:O,s:O,s:O}", "function", function, "self", address,
                                     "args", args != nullptr ? args : Py_None, "kwargs",
                                     kwargs != nullptr ? kwargs : Py_None, "pending",
                                     pending != nullptr ? pending : Py_None);
    Py_XSETREF(g_last_call, record);
    PyErr_Clear();
    PyErr_Restore(type, value, traceback);
}

PyObject* result_of(const char* function, PyObject* args, PyObject* kwargs) {
    return Py_BuildValue("(sOO)", function, args != nullptr ? args : Py_None,
                         kwargs != nullptr ? kwargs : Py_None);
}

PyObject* static_row_function(PyObject* self, PyObject* args, PyObject* kwargs) {
    record_call("static", self, args, kwargs);
    return result_of("static", args, kwargs);
}

PyObject* instance_row_function(PyObject* self, PyObject* args, PyObject* kwargs) {
    record_call("instance", self, args, kwargs);
    return result_of("instance", args, kwargs);
}

// Shaped like a generated METH_NOARGS method: it does its work, then asks PyErr_Occurred.
PyObject* noargs_row_function(PyObject* self, PyObject* args, PyObject* kwargs) {
    record_call("noargs", self, args, kwargs);
    if (PyErr_Occurred()) {
        return nullptr;
    }
    return PyUnicode_FromString("noargs");
}

PyObject* count_reads(PyObject*, void*) { return PyLong_FromLong(++g_reads); }

// Tells whether the getter got a null object, and hands back the row's closure text.
PyObject* report_origin(PyObject* object, void* closure) {
    return Py_BuildValue("(ss)", object == nullptr ? "null" : "object", static_cast<const char*>(closure));
}

PyObject* fail_read(PyObject*, void*) {
    PyErr_SetString(PyExc_ValueError, "getter failed");
    return nullptr;
}

char kOriginClosure[] = "closure of origin";

PyGetSetDef g_fields[] = {
    {"counter", count_reads, nullptr, "Number of reads so far.", nullptr},
    {"origin", report_origin, nullptr, nullptr, kOriginClosure},
    {"broken", fail_read, nullptr, "", nullptr},
};

PyMethodDef g_static_m = {"m", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(static_row_function)),
                          METH_VARARGS | METH_KEYWORDS | METH_STATIC, "Static form of m."};
PyMethodDef g_instance_m = {"m", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(noargs_row_function)),
                            METH_NOARGS, "Instance form of m."};
PyMethodDef g_static_k = {"k", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(static_row_function)),
                          METH_VARARGS | METH_KEYWORDS, nullptr};
PyMethodDef g_instance_k = {"k", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(instance_row_function)),
                            METH_VARARGS | METH_KEYWORDS, nullptr};
// Another row with k's instance function: method objects compare by function, not by row.
PyMethodDef g_alias_k = {"alias", reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(instance_row_function)),
                         METH_VARARGS | METH_KEYWORDS, nullptr};

// A name longer than the 200 characters that the argument messages keep; filled at module start.
char g_long_name[251];
PyMethodDef g_long_noargs = {g_long_name, reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(noargs_row_function)),
                             METH_NOARGS, nullptr};

struct NamedRow {
    const char* name;
    PyMethodDef* row;
};

const NamedRow g_rows[] = {
    {"static_m", &g_static_m}, {"instance_m", &g_instance_m}, {"static_k", &g_static_k},
    {"instance_k", &g_instance_k}, {"alias_k", &g_alias_k}, {"long_noargs", &g_long_noargs},
};

void probe_dealloc(PyObject* self) {
    if (reinterpret_cast<ProbeObject*>(self)->weak_references != nullptr) {
        PyObject_ClearWeakRefs(self);
    }
    Py_TYPE(self)->tp_free(self);
}

PyTypeObject make_probe_type() {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "descriptor_probe.Probe";
    type.tp_basicsize = sizeof(ProbeObject);
    type.tp_dealloc = probe_dealloc;
    type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_BASETYPE;
    type.tp_weaklistoffset = offsetof(ProbeObject, weak_references);
    type.tp_new = PyType_GenericNew;
    return type;
}

PyTypeObject make_target_type() {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "descriptor_probe.Target";
    type.tp_basicsize = sizeof(PyObject);
    type.tp_flags = Py_TPFLAGS_DEFAULT;
    return type;
}

PyTypeObject ProbeType = make_probe_type();
PyTypeObject TargetType = make_target_type();

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
    if (!PyArg_ParseTuple(args, "s|O", &name, &self)) {
        return nullptr;
    }
    for (const NamedRow& named : g_rows) {
        if (std::strcmp(named.name, name) == 0) {
            return make_method_object(&ProbeType, named.row, self == Py_None ? nullptr : self);
        }
    }
    PyErr_Format(PyExc_KeyError, "no row %s", name);
    return nullptr;
}

// install(name: bytes, kind): stores a new descriptor on Target. Kinds: "field" (Probe's counter
// row), "failed" (a creation that failed with RuntimeError pending).
PyObject* probe_install(PyObject*, PyObject* args) {
    const char* name;
    const char* kind;
    if (!PyArg_ParseTuple(args, "ys", &name, &kind)) {
        return nullptr;
    }
    PyObject* descriptor;
    if (std::strcmp(kind, "field") == 0) {
        descriptor = make_field_descriptor(&TargetType, &g_fields[0]);
    } else {
        PyErr_SetString(PyExc_RuntimeError, "creation failed");
        descriptor = nullptr;
    }
    if (install_class_attribute(&TargetType, name, descriptor) < 0) {
        return nullptr;
    }
    Py_RETURN_NONE;
}

PyMethodDef g_functions[] = {
    {"last_call", probe_last_call, METH_NOARGS, nullptr},
    {"reads", probe_reads, METH_NOARGS, nullptr},
    {"make_method", probe_make_method, METH_VARARGS, nullptr},
    {"install", probe_install, METH_VARARGS, nullptr},
    {nullptr},
};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "descriptor_probe", nullptr, -1, g_functions};

int install_probe_members() {
    for (PyGetSetDef& field : g_fields) {
        if (install_class_attribute(&ProbeType, field.name, make_field_descriptor(&ProbeType, &field)) < 0) {
            return -1;
        }
    }
    if (install_class_attribute(&ProbeType, "m", make_mix_descriptor(&ProbeType, &g_static_m, &g_instance_m)) < 0 ||
        install_class_attribute(&ProbeType, "k", make_mix_descriptor(&ProbeType, &g_static_k, &g_instance_k)) < 0) {
        return -1;
    }
    return 0;
}

}  // namespace

PyMODINIT_FUNC PyInit_descriptor_probe() {
    std::memset(g_long_name, 'n', sizeof g_long_name - 1);
    PyTypeObject* types[] = {&FieldDescrType, &MixMethodDescrType, &ProbeType, &TargetType};
    for (PyTypeObject* type : types) {
        if (PyType_Ready(type) < 0) {
            return nullptr;
        }
    }
    if (install_probe_members() < 0) {
        return nullptr;
    }
    PyObject* module = PyModule_Create(&g_module);
    if (module == nullptr) {
        return nullptr;
    }
    if (PyModule_AddObjectRef(module, "Probe", reinterpret_cast<PyObject*>(&ProbeType)) < 0 ||
        PyModule_AddObjectRef(module, "Target", reinterpret_cast<PyObject*>(&TargetType)) < 0) {
        Py_DECREF(module);
        return nullptr;
    }
    return module;
}
