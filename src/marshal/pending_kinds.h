// Argument records and converters of the kinds whose marshalling is not bound yet: typed arrays
// and the native value types. Their converters refuse with a clear TypeError, so
// that every class exists whole and no such call reaches managed code.
#pragma once
#include <Python.h>

#include <cstdint>

struct ArrayArg {
    int32_t kind;
    int32_t padding;
    uint64_t value;
};

int convert_pending_array(PyObject* object, void* out);
int convert_pending_value(PyObject* object, void* out);
