// Argument checks of the hand-written protocol methods: the count check and the optional index readers.
#pragma once
#include <Python.h>

// True (with TypeError "%.150s%s takes %s %d argument%s (%zd given)" set) when `count` lies outside
// [min, max]; `name` may be null ("function").
bool wrong_arg_count(Py_ssize_t count, const char* name, Py_ssize_t min, Py_ssize_t max);

// Any object with nb_index, through PyNumber_AsSsize_t with OverflowError; else TypeError. 1 or 0.
int read_index_object(PyObject* object, Py_ssize_t* out);

// Item 0 of `args`: None (or no item) leaves *out as it is. 1 or 0.
int read_optional_index(PyObject* args, Py_ssize_t* out);
