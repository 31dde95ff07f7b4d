// Keyword forms of the value constructors: field names given as keywords become positional arguments.
#pragma once
#ifndef PY_SSIZE_T_CLEAN
#define PY_SSIZE_T_CLEAN
#endif
#include <Python.h>

// One constructor form that takes fields, in its positional order (Color: r, g, b and a, r, g, b).
struct FieldForm {
    const char* const* fields;
    int count;
};

// New reference to the positional tuple that (args, kwargs) stand for under one of the forms: the
// positional arguments fill a form's first fields, the keywords exactly its remaining ones. Null
// with TypeError for an unknown keyword, a field given twice, or keywords that fit no form.
PyObject* fields_as_positional(PyTypeObject* type, PyObject* args, PyObject* kwargs, const FieldForm* forms,
                               int form_count);

// After `positional` failed on `args` with OverflowError: names the field whose argument overflows
// ("field 'y': ..."), found by trying each int argument alone among zeros. Cold.
void name_overflowing_field(PyObject* self, PyObject* args, initproc positional, const FieldForm* forms,
                            int form_count);

// tp_init over a positional-only init: calls it as is without keywords, else with the merged tuple.
template <const FieldForm* Forms, int FormCount, initproc Positional>
int init_with_field_keywords(PyObject* self, PyObject* args, PyObject* kwargs) {
    PyObject* merged = nullptr;
    if (kwargs != nullptr && PyDict_GET_SIZE(kwargs) != 0) {
        merged = fields_as_positional(Py_TYPE(self), args, kwargs, Forms, FormCount);
        if (merged == nullptr) return -1;
    }
    PyObject* positional = merged != nullptr ? merged : args;
    int result = Positional(self, positional, nullptr);
    if (result < 0 && PyErr_ExceptionMatches(PyExc_OverflowError))
        name_overflowing_field(self, positional, Positional, Forms, FormCount);
    Py_XDECREF(merged);
    return result;
}
