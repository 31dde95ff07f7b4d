// Strings across the managed boundary: a zero-copy view of a str going in, UTF-16 builders coming out.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>
#include <string>
#include "generated_wire_records.h"

inline void reset_string_arg(StringArg* arg) {
    arg->length = -1;
    arg->kind = 0;
    arg->data = nullptr;
}

// Fills `out` from a str (no type test). Returns 1, or 0 with TypeError set, or UnicodeEncodeError
// for a lone surrogate, which has no UTF-16 form.
int expose_string(PyObject* str, StringArg* out);

// O& converter of a String parameter: None gives length -1, a str (or subclass) is exposed.
int convert_string(PyObject* object, void* out);

// O& converter of a file name: a String that refuses an embedded NUL with ValueError, as open() does,
// instead of letting the native side cut the name short.
int convert_path(PyObject* object, void* out);

// Builders handed to the managed side; plain signatures, nothing thrown.
std::u16string* build_u16_string(const char16_t* units, int32_t count);
PyObject* build_py_string(const char16_t* units, int32_t count);
PyObject* build_py_string_quiet(const char16_t* units, int32_t count);
PyObject* build_py_bytes(const uint8_t* data, int32_t count);
