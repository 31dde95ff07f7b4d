// `self + other` as a new list for every list-shaped wrapper: the receiver's elements, then other's.
#pragma once
#include <Python.h>

// Fills list[0..n-1] with the receiver's own elements; false with an exception set.
using OwnElementsFill = bool (*)(PyObject* self, PyObject* list, Py_ssize_t n, const void* context);

// The receiver's n elements (by `fill`, handed `context`) followed by those of `other`: a list, a tuple,
// a sized sequence or any iterable, else ValueError.
PyObject* concat_to_list(PyObject* self, Py_ssize_t n, PyObject* other, OwnElementsFill fill, const void* context);
