// Guid across the managed boundary: uuid.UUID in and out as 16 bytes in bytes_le order.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>

// A Guid crosses as its 16 bytes in UUID.bytes_le order.
struct GuidValue {
    uint8_t bytes[16];
};

constexpr int kGuidSize = 16;

// O& converter of a Guid parameter: `out` is 16 bytes, filled with the UUID's bytes_le.
// 1, or 0 with TypeError "can't build Guid from '%s'" (or the failure of the uuid lookup).
int convert_guid(PyObject* object, void* out);

// Copies the object's bytes_le without testing its type; on failure the exception stays pending
// and `out` is zeroed.
void guid_in_quiet(PyObject* object, uint8_t* out);

// New uuid.UUID(bytes_le=...) from 16 bytes, or null with an exception set.
PyObject* guid_out(const uint8_t* bytes);
