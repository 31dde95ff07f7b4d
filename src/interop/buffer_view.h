// _ShlBufferView: a Python object without methods that lends bytes to one callback through the buffer protocol.
#pragma once
#include <Python.h>

#include <cstdint>

struct BufferViewObject {
    PyObject_HEAD
    uint8_t* data;   // owned, PyMem
    int64_t length;  // bytes
    int32_t readonly;
    int32_t expired;  // the callback returned: no new exports
};

extern PyTypeObject Interop_ShlBufferView_Type;

// A view of its own copy of `length` bytes: copied from `source`, or zeroed when `source` is null.
// Python code may keep the view (or a memoryview of it) past the callback: it then holds that copy,
// never the caller's memory, which is gone once the callback returns. Null with an exception set.
PyObject* new_buffer_view(const void* source, int64_t length, int readonly);

// Ends the lending: later buffer requests raise BufferError. Returns the copy's bytes.
const uint8_t* expire_buffer_view(PyObject* view);
