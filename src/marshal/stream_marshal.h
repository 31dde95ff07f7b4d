// Python file objects as managed streams: the Stream argument converter and the streams callback rows
// through which managed code reads, writes and seeks such a file.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>

// Argument record of a Stream parameter.
struct StreamArg {
    int32_t kind;  // 0: `value` is an InstanceHandle (0 for None); 2: a borrowed Python file object
    int32_t padding;
    uint64_t value;
};

enum StreamArgKind : int32_t { kStreamHandle = 0, kStreamPythonFile = 2 };

// O& converter: None, a _StreamWrapper, a wrapper of a managed stream, or an instance of io.RawIOBase,
// io.BufferedIOBase or orvane.pyio.BufferStream. Anything else: TypeError "can't build Stream from '%s'".
int convert_stream(PyObject* object, void* out);

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
