// _StreamWrapper: Python's raw binary I/O protocol over a managed stream, through the table SiApiStream.
#pragma once
#include <Python.h>

#include "bridge/class_binding.h"
#include "bridge/wrapper_object.h"

struct StreamWrapperObject {
    WrapperObject wrapper;
    int32_t closed;  // set by close() and __exit__, never cleared
};

extern PyTypeObject Interop_StreamWrapper_Type;

// Failed exactly when SiApiStream could not be bound.
const TypeInitStatus& Interop_StreamWrapper_status();

// IsAssignableTo of SiApiStream (binding the table on first use); null when the table failed.
IsAssignableByHandle stream_is_assignable();
