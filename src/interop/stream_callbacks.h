// The streams callback group: each stream operation of managed code as one call on a Python file object.
#pragma once
#include <Python.h>

#include <cstdint>

// The streams group, in row order. `file` is borrowed. Each tells failure by its result, with the
// Python exception left pending; none raises past its return.
int32_t stream_write(PyObject* file, const uint8_t* data, int32_t count);
int32_t stream_write_byte(PyObject* file, uint8_t value);
int32_t stream_read(PyObject* file, uint8_t* data, int32_t count);
int32_t stream_read_byte(PyObject* file);
int64_t stream_seek(PyObject* file, int64_t offset, int32_t whence);
int32_t stream_flush(PyObject* file);
void stream_close(PyObject* file);
int32_t stream_can_read(PyObject* file);
int32_t stream_can_write(PyObject* file);
int32_t stream_can_seek(PyObject* file);
int64_t stream_tell(PyObject* file);
int64_t stream_length(PyObject* file);
