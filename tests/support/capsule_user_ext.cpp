// Test module capsule_user: a sister-like native module that reaches the value types only through their capsules.
//
// Nothing of the value types is linked in: the records' layouts are all it knows, and every
// conversion goes through the converter and wrap function that orvane.pyfigura publishes.
#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstring>

#include "values/value_records.h"

namespace {

// The two-word record behind each capsule: converter, then wrap function.
struct CapsuleRecord {
    int (*converter)(PyObject*, void*);
    PyObject* (*wrap)(const void*);
};

struct ValueKind {
    const char* name;
    size_t size;
};

const ValueKind kKinds[] = {
    {"Point", sizeof(PointValue)},         {"PointF", sizeof(PointFValue)}, {"Size", sizeof(SizeValue)},
    {"SizeF", sizeof(SizeFValue)},         {"Rectangle", sizeof(RectangleValue)},
    {"RectangleF", sizeof(RectangleFValue)}, {"Color", sizeof(ColorValue)},
};

const ValueKind* kind_named(const char* name) {
    for (const ValueKind& kind : kKinds)
        if (std::strcmp(kind.name, name) == 0) return &kind;
    PyErr_Format(PyExc_ValueError, "no value type '%s'", name);
    return nullptr;
}

// "_C_APIT_" for the reference capsule, "_C_APITV1_" for the value capsule.
const CapsuleRecord* import_capsule(const char* prefix, const char* name) {
    PyObject* full = PyUnicode_FromFormat("orvane.pyfigura.%s%s", prefix, name);
    if (full == nullptr) return nullptr;
    void* record = PyCapsule_Import(PyUnicode_AsUTF8(full), 0);
    Py_DECREF(full);
    return static_cast<const CapsuleRecord*>(record);
}

// to_bytes(name, obj): the record that the value capsule's converter copies out, as bytes.
PyObject* to_bytes(PyObject*, PyObject* args) {
    const char* name;
    PyObject* object;
    if (!PyArg_ParseTuple(args, "sO", &name, &object)) return nullptr;
    const ValueKind* kind = kind_named(name);
    const CapsuleRecord* capsule = kind ? import_capsule("_C_APITV1_", name) : nullptr;
    if (capsule == nullptr) return nullptr;
    alignas(8) unsigned char record[64] = {};
    if (!capsule->converter(object, record)) return nullptr;
    return PyBytes_FromStringAndSize(reinterpret_cast<const char*>(record), kind->size);
}

// from_bytes(name, data, reference=False): an object made by the wrap function of either capsule.
PyObject* from_bytes(PyObject*, PyObject* args) {
    const char* name;
    Py_buffer data;
    int reference = 0;
    if (!PyArg_ParseTuple(args, "sy*|p", &name, &data, &reference)) return nullptr;
    const ValueKind* kind = kind_named(name);
    const CapsuleRecord* capsule = kind ? import_capsule(reference ? "_C_APIT_" : "_C_APITV1_", name) : nullptr;
    PyObject* result = nullptr;
    if (capsule != nullptr && static_cast<size_t>(data.len) != kind->size) {
        PyErr_Format(PyExc_ValueError, "%s takes %zu bytes", name, kind->size);
    } else if (capsule != nullptr) {
        alignas(8) unsigned char record[64];
        std::memcpy(record, data.buf, kind->size);
        result = capsule->wrap(record);
    }
    PyBuffer_Release(&data);
    return result;
}

// overwrite(name, obj, data): writes `data` through the pointer that the reference capsule's
// converter gives, straight into the object's record.
PyObject* overwrite(PyObject*, PyObject* args) {
    const char* name;
    PyObject* object;
    Py_buffer data;
    if (!PyArg_ParseTuple(args, "sOy*", &name, &object, &data)) return nullptr;
    const ValueKind* kind = kind_named(name);
    const CapsuleRecord* capsule = kind ? import_capsule("_C_APIT_", name) : nullptr;
    void* target = nullptr;
    bool ok = capsule != nullptr && capsule->converter(object, &target);
    if (ok) std::memcpy(target, data.buf, static_cast<size_t>(data.len) < kind->size ? data.len : kind->size);
    PyBuffer_Release(&data);
    if (!ok) return nullptr;
    Py_RETURN_NONE;
}

PyMethodDef g_methods[] = {
    {"to_bytes", to_bytes, METH_VARARGS, nullptr},
    {"from_bytes", from_bytes, METH_VARARGS, nullptr},
    {"overwrite", overwrite, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "capsule_user", nullptr, -1, g_methods,
                        nullptr, nullptr, nullptr, nullptr};

}  // namespace

PyMODINIT_FUNC PyInit_capsule_user() { return PyModule_Create(&g_module); }
