// Shared steps and error texts of the array protocol, kept out of its per-instantiation templates.
#include "interop/generic_arrays.h"

#include <climits>

#include <Python.h>

int raise_removing_refused() {
    PyErr_SetString(PyExc_ValueError, "elements removing not supported");
    return -1;
}

PyObject* raise_index_out_of_range() {
    PyErr_SetString(PyExc_IndexError, "list index out of range");
    return nullptr;
}

int raise_index_out_of_range_status() {
    raise_index_out_of_range();
    return -1;
}

PyObject* raise_bad_key(PyObject* key) {
    PyErr_Format(PyExc_TypeError, "list indices must be integers or slices, not %.200s", Py_TYPE(key)->tp_name);
    return nullptr;
}

int raise_bad_key_status(PyObject* key) {
    raise_bad_key(key);
    return -1;
}

int raise_slice_size(Py_ssize_t given, Py_ssize_t slice) {
    PyErr_Format(PyExc_ValueError, "attempt to assign sequence of size %zd to extended slice of size %zd", given,
                 slice);
    return -1;
}

int raise_slice_not_iterable() {
    PyErr_SetString(PyExc_TypeError, "must assign iterable to extended slice");
    return -1;
}

PyObject* raise_value_not_in_list() {
    PyErr_SetString(PyExc_ValueError, "value is not in list");
    return nullptr;
}

PyObject* raise_sorting_key() {
    PyErr_SetString(PyExc_ValueError, "custom sorting key is not supported");
    return nullptr;
}

// Managed arrays hold at most 2^31 - 1 elements: a position beyond 32 bits is pinned to the nearest
// 32-bit one, which misses as surely, instead of wrapping round to a valid one.
int32_t index_to_wire(Py_ssize_t index) {
    if (index > INT32_MAX) return INT32_MAX;
    if (index < INT32_MIN) return INT32_MIN;
    return static_cast<int32_t>(index);
}

bool key_is_index(PyObject* key) {
    PyNumberMethods* number = Py_TYPE(key)->tp_as_number;
    return number != nullptr && number->nb_index != nullptr;
}

bool instance_arg_of(PyObject* object, InstanceArg* arg) {
    int32_t kind = 0;
    if (!recognise_by_slot(object, &kind) && !recognise_by_mark(object, &kind)) return false;
    arg->kind = kind;
    arg->handle = handle_of(object);
    return true;
}

PyObject* long_from_int32(const int32_t& value) { return PyLong_FromLong(value); }
PyObject* float_from_single(const float& value) { return PyFloat_FromDouble(value); }
PyObject* uuid_from_guid(const GuidValue& value) { return guid_out(value.bytes); }
