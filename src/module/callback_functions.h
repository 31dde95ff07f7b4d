// The rows of the callback tables that belong to no other layer: references and plain numbers out.
#pragma once
#include <Python.h>

#include <cstdint>

// Group references.
void ref_add(PyObject* obj);
void ref_drop(PyObject* obj);
PyObject* ref_none();

// Group values out: scalars, each a new reference or null.
PyObject* out_bool(uint8_t value);
PyObject* out_int32(int32_t value);
PyObject* out_uint32(uint32_t value);
PyObject* out_int64(int64_t value);
PyObject* out_uint64(uint64_t value);
PyObject* out_double(double value);
PyObject* out_char(uint16_t unit);
