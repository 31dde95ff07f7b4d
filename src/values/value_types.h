// The seven native value types: objects that hold their record inline, their converters, wrap functions and capsule slots.
#pragma once
#ifndef PY_SSIZE_T_CLEAN
#define PY_SSIZE_T_CLEAN
#endif
#include <Python.h>

#include <cstdint>
#include <initializer_list>

#include "bridge/class_binding.h"
#include "common/module_contents.h"
#include "values/field_keywords.h"
#include "values/value_records.h"

// Object header, then the record; no dictionary, no weak references, no collector support.
template <typename Record>
struct ValueObject {
    PyObject_HEAD
    Record value;
};

template <typename Record>
inline Record& record_of(PyObject* object) {
    return reinterpret_cast<ValueObject<Record>*>(object)->value;
}

// Per type X: the type object; the value converter (copies the record to `out`); the reference
// converter (stores the record's address in the object in `out`); the wrap function (a new object
// holding a copy of `*record`); the capsule slots; and, generated from the API description, the
// class's init status and its method and attribute tables.
#define DECLARE_VALUE_TYPE(X)                          \
    extern PyTypeObject X##_Type;                      \
    int X##_convert(PyObject* object, void* out);      \
    int X##_convert_ref(PyObject* object, void* out);  \
    PyObject* X##_wrap(const void* record);            \
    extern ValueCapsule X##_capsule_v1_slot;           \
    extern ValueCapsule X##_capsule_slot;              \
    const TypeInitStatus& X##_status();                \
    extern PyMethodDef X##_methods[];                  \
    extern PyGetSetDef X##_getset[];                 \
    extern const char* const X##_doc;

DECLARE_VALUE_TYPE(Point)
DECLARE_VALUE_TYPE(PointF)
DECLARE_VALUE_TYPE(Size)
DECLARE_VALUE_TYPE(SizeF)
DECLARE_VALUE_TYPE(Rectangle)
DECLARE_VALUE_TYPE(RectangleF)
DECLARE_VALUE_TYPE(Color)

#undef DECLARE_VALUE_TYPE

// Attribute installers: the mixed methods of the rectangles, the named colours of Color.
int Rectangle_install(PyTypeObject* type);
int RectangleF_install(PyTypeObject* type);
int Color_install(PyTypeObject* type);

// The value sequence of the root module, in registration order.
extern const ValueRegistration kRootValues[];

// --- shared slot bodies --------------------------------------------------------------------------

// Cold paths, kept out of the templates below.
int refuse_value_type(PyTypeObject* type, PyObject* object);  // "argument should be X, not '...'"; 0
int read_int_field(PyObject* value, int32_t* out);             // setter value: int in signed 32 bits
int read_real_field(PyObject* value, double* out);             // setter value: int or float
int raise_count_error(const char* format, Py_ssize_t given);   // AttributeError; -1
int raise_got_type(const char* format, PyObject* object);      // TypeError with the argument's type; -1
int read_int_argument(PyObject* value, int32_t* out);          // PyLong_AsLong with the 32-bit range

// A static value type: default flags only (not subclassable), no hash slot (so unhashable), default repr.
PyTypeObject value_type(const char* name, Py_ssize_t size, initproc init, newfunc make, richcmpfunc compare,
                        PyMethodDef* methods, PyGetSetDef* getset, const char* doc, reprfunc repr);

// "Name(v1, v2, ...)" from the reprs of the given new references (stolen, nulls allowed after a failure).
PyObject* call_repr(const char* name, std::initializer_list<PyObject*> values);

// tp_new of every value type: the class's status gate, then zeros.
PyObject* gated_value_new(PyTypeObject* type, const TypeInitStatus& status);

inline bool is_instance(PyObject* object, PyTypeObject* type) {
    return Py_IS_TYPE(object, type) || PyObject_IsInstance(object, reinterpret_cast<PyObject*>(type)) > 0;
}

template <typename Record>
int convert_value(PyObject* object, void* out, PyTypeObject* type) {
    if (!is_instance(object, type)) return refuse_value_type(type, object);
    *static_cast<Record*>(out) = record_of<Record>(object);
    return 1;
}

template <typename Record>
int convert_value_ref(PyObject* object, void* out, PyTypeObject* type) {
    if (!is_instance(object, type)) return refuse_value_type(type, object);
    *static_cast<Record**>(out) = &record_of<Record>(object);
    return 1;
}

template <typename Record>
PyObject* wrap_value(const void* record, PyTypeObject* type) {
    PyObject* object = PyType_GenericNew(type, nullptr, nullptr);
    if (object != nullptr) record_of<Record>(object) = *static_cast<const Record*>(record);
    return object;
}

// Equality only; every other comparison, and any other type, is NotImplemented. Doubles compare
// with ==, so NaN makes == false and != true.
template <typename Record, bool (*Same)(const Record&, const Record&)>
PyObject* compare_values(PyObject* self, PyObject* other, int op) {
    PyTypeObject* type = Py_TYPE(self);
    if ((op != Py_EQ && op != Py_NE) || !is_instance(other, type)) Py_RETURN_NOTIMPLEMENTED;
    bool same = Same(record_of<Record>(self), record_of<Record>(other));
    return PyBool_FromLong(op == Py_EQ ? same : !same);
}

// Field accessors, instantiated by the generated attribute tables.
template <typename Record, int32_t Record::*Field>
PyObject* int_field_get(PyObject* self, void*) {
    return PyLong_FromLong(record_of<Record>(self).*Field);
}

template <typename Record, int32_t Record::*Field>
int int_field_set(PyObject* self, PyObject* value, void*) {
    int32_t v;
    if (!read_int_field(value, &v)) return -1;
    record_of<Record>(self).*Field = v;
    return 0;
}

template <typename Record, double Record::*Field>
PyObject* real_field_get(PyObject* self, void*) {
    return PyFloat_FromDouble(record_of<Record>(self).*Field);
}

template <typename Record, double Record::*Field>
int real_field_set(PyObject* self, PyObject* value, void*) {
    double v;
    if (!read_real_field(value, &v)) return -1;
    record_of<Record>(self).*Field = v;
    return 0;
}

template <typename Record, uint8_t Record::*Field>
PyObject* byte_field_get(PyObject* self, void*) {
    return PyLong_FromLong(record_of<Record>(self).*Field);
}
