// Python file objects as managed streams: the Stream argument converter and the streams callback rows
// through which managed code reads, writes and seeks such a file.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>
#include "generated_wire_records.h"

enum StreamArgKind : int32_t { kStreamHandle = 0, kStreamPythonFile = 2 };

// O& converter: None, a _StreamWrapper, a wrapper of a managed stream, or an instance of io.RawIOBase,
// io.BufferedIOBase or orvane.pyio.BufferStream. Anything else: TypeError "can't build Stream from '%s'".
int convert_stream(PyObject* object, void* out);

