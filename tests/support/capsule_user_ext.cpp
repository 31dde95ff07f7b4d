// Test module capsule_user: a sister-like native module that reaches the value types only through their capsules.
// Nothing of the value types is linked in: it knows the records' layouts, and converts only through the converter
// and wrap function that orvane.pyfigura publishes.
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

// The value capsule (_C_APITV1_<name>) or the reference capsule (_C_APIT_<name>) of a value type, and its size.
const CapsuleRecord* capsule_of(const char* name, bool reference, size_t* size) {
    const ValueKind* kind = nullptr;
    for (const ValueKind& k : kKinds)
        if (std::strcmp(k.name, name) == 0) kind = &k;
    if (kind == nullptr) {
        PyErr_Format(PyExc_ValueError, "no value type '%s'", name);
        return nullptr;
    }
    *size = kind->size;
    PyObject* full = PyUnicode_FromFormat("orvane.pyfigura.%s%s", reference ? "_C_APIT_" : "_C_APITV1_", name);
    if (full == nullptr) return nullptr;
    void* record = PyCapsule_Import(PyUnicode_AsUTF8(full), 0);
    Py_DECREF(full);
    return static_cast<const CapsuleRecord*>(record);
}

// to_bytes(name, obj): the record that the value capsule's converter copies out, as bytes.
PyObject* to_bytes(PyObject*, PyObject* args) {
    const char* name;
    PyObject* object;
    size_t size;
    if (!PyArg_ParseTuple(args, "sO", &name, &object)) return nullptr;
    const CapsuleRecord* capsule = capsule_of(name, false, &size);
    alignas(8) unsigned char record[64] = {};
    if (capsule == nullptr || !capsule->converter(object, record)) return nullptr;
    return PyBytes_FromStringAndSize(reinterpret_cast<const char*>(record), size);
}

// from_bytes(name, data, reference=False): an object made by the wrap function of either capsule.
PyObject* from_bytes(PyObject*, PyObject* args) {
    const char* name;
    Py_buffer data;
    int reference = 0;
    size_t size;
    if (!PyArg_ParseTuple(args, "sy*|p", &name, &data, &reference)) return nullptr;
    const CapsuleRecord* capsule = capsule_of(name, reference, &size);
    PyObject* result = nullptr;
    if (capsule != nullptr && static_cast<size_t>(data.len) != size) {
        PyErr_Format(PyExc_ValueError, "%s takes %zu bytes", name, size);
    } else if (capsule != nullptr) {
        alignas(8) unsigned char record[64];
        std::memcpy(record, data.buf, size);
        result = capsule->wrap(record);
    }
    PyBuffer_Release(&data);
    return result;
}

// overwrite(name, obj, data): writes `data` through the pointer that the reference capsule's converter gives,
// straight into the object's record.
PyObject* overwrite(PyObject*, PyObject* args) {
    const char* name;
    PyObject* object;
    Py_buffer data;
    size_t size;
    if (!PyArg_ParseTuple(args, "sOy*", &name, &object, &data)) return nullptr;
    const CapsuleRecord* capsule = capsule_of(name, true, &size);
    void* target = nullptr;
    const bool ok = capsule != nullptr && capsule->converter(object, &target);
    if (ok) std::memcpy(target, data.buf, static_cast<size_t>(data.len) < size ? data.len : size);
    PyBuffer_Release(&data);
    return ok ? Py_NewRef(Py_None) : nullptr;
}

PyMethodDef g_methods[] = {
    {"to_bytes", to_bytes, METH_VARARGS, nullptr},
    {"from_bytes", from_bytes, METH_VARARGS, nullptr},
    {"overwrite", overwrite, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "capsule_user", nullptr, -1, g_methods};

}  // namespace

PyMODINIT_FUNC PyInit_capsule_user() { return PyModule_Create(&g_module); }
