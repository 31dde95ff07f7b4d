// The type-object shape and the per-type slots (comparison, gated creation) every protocol wrapper shares.
#pragma once
#include <Python.h>

#include "bridge/class_binding.h"

// A wrapper type with no dictionary, not a base, without a constructor; the caller adds its faces.
PyTypeObject wrapper_type_shape(const char* name, Py_ssize_t basic_size = sizeof(WrapperObject));

// Handles compared when `other` is an instance of `type`; NotImplemented otherwise.
PyObject* compare_as(PyTypeObject* type, PyObject* self, PyObject* other, int op);

// tp_richcompare of one type: it tests against that type only.
template <PyTypeObject* Type>
PyObject* compare_within(PyObject* self, PyObject* other, int op) {
    return compare_as(Type, self, other, op);
}

// tp_new of one type: its status gates the creation.
template <const TypeInitStatus& (*Status)()>
PyObject* new_gated_by(PyTypeObject* type, PyObject* args, PyObject* kwargs) {
    return gated_new(type, Status(), args, kwargs);
}

// `shape` with the slots that belong to one type: comparison within it, creation gated by its status.
template <PyTypeObject* Type, const TypeInitStatus& (*Status)()>
PyTypeObject with_own_slots(PyTypeObject shape) {
    shape.tp_richcompare = compare_within<Type>;
    shape.tp_new = new_gated_by<Status>;
    return shape;
}
