// Decimal values across the managed boundary: Decimal, DecimalTuple, int and float to the 96-bit record and back.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>
#include "generated_wire_records.h"

constexpr uint32_t kDecimalSignBit = 0x80000000u;
constexpr uint32_t kDecimalDoubleForm = 1u;

// Decimal in, any accepted object (DecimalTuple, Decimal, int, float). 1, or 0 with an exception
// set. An int beyond 64 bits gives 1 with Python's OverflowError pending, for the caller's check.
int decimal_in(PyObject* object, ManagedDecimal* out);

// Decimal in from a DecimalTuple (or anything with exponent, sign and digits). 1, or 0 with an exception set.
int decimal_in_tuple(PyObject* tuple, ManagedDecimal* out);

// New decimal.Decimal from the record, or null with an exception set. Destroys the magnitude:
// the digits are divided out in place.
PyObject* decimal_out(ManagedDecimal* value);

// Which decimal family an object belongs to, from decimal.DecimalTuple and decimal.Decimal looked
// up at each call: 1 a DecimalTuple, 2 a Decimal, 0 neither, -1 with an exception set.
int decimal_family(PyObject* object);

// Reads the tuple's exponent as a 64-bit integer. The infinity and NaN markers and foreign types
// are refused with texts naming `type_name`. 1, or 0 with an exception set.
int read_decimal_exponent(PyObject* tuple, const char* type_name, long long* exponent);
