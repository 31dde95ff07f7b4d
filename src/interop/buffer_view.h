// _ShlBufferView: a Python object without methods that lends a raw memory range through the buffer protocol.
#pragma once
#include <Python.h>

#include <cstdint>

struct BufferViewObject {
    PyObject_HEAD
    void* data;      // not owned
    int64_t length;  // bytes
    int32_t readonly;
};

extern PyTypeObject Interop_ShlBufferView_Type;

// A new view of `length` bytes at `data`, without checks; the memory must stay valid while Python
// code may read it (for a callback: until it returns). Null with an exception set on failure.
PyObject* new_buffer_view(void* data, int64_t length, int readonly);
