// Scalars across the managed boundary: the O& converters of bool, Byte, Int16, Int32, Int64, Single, Double
// and the readers that managed code calls to take a number or a character string out of a Python object.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>

// O& converters: 1 with the value stored in `out`, or 0 with an exception set. Outputs are uint8_t
// (bool: 0 or 1), uint8_t, int16_t, int32_t, int64_t, float and double.
int convert_bool(PyObject* object, void* out);
int convert_byte(PyObject* object, void* out);
int convert_int16(PyObject* object, void* out);
int convert_int32(PyObject* object, void* out);
int convert_int64(PyObject* object, void* out);
int convert_single(PyObject* object, void* out);
int convert_double(PyObject* object, void* out);

// Truth value; a failing test counts as true and leaves its exception pending.
uint8_t read_truth(PyObject* object);

// Width code of an integer: 1 fits signed 32 bits, 2 signed 64 bits, 3 unsigned 64 bits; the value
// is stored in `out` (the unsigned one by its bits). 0 with TypeError for anything else.
int32_t read_integer(PyObject* object, int64_t* out);

// 1 with the value stored, or 0 with an exception set.
int32_t read_float(PyObject* object, double* out);

// UTF-16 form of a str for the managed side: `owner` receives a new reference to the encoded bytes,
// which the managed side drops through the references group; `count` the code units after the byte
// order mark; `data` the encoded bytes' address plus 4. 1, or 0 with TypeError set.
int32_t read_char_string(PyObject* object, PyObject** owner, int32_t* count, const void** data);
