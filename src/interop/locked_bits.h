// Locked pixels as a Python buffer: what Bitmap.lock_bits hands out, lent zero-copy to memoryview and numpy.
#pragma once
#include <Python.h>

#include <cstdint>

// The buffer slots of BitmapData. A view exists only while the bits are locked; it has the shape
// (height, width, 3|4) for 24 and 32 bits per pixel, else (height, abs(stride)) bytes.
extern PyBufferProcs LockedBits_buffer_procs;

// After a successful lock: records the geometry of `data` (read from its attributes) and keeps
// `bitmap` alive with it. Returns `data`, or null (dropping it) with an exception set.
PyObject* locked_bits_begin(PyObject* data, PyObject* bitmap, int32_t lock_mode);

// Before an unlock: false with BufferError set while a view of `data` is still exported.
bool locked_bits_may_end(PyObject* data);

// After a successful unlock: no new views of `data`.
void locked_bits_end(PyObject* data);

// Installs the dispose guard: a Bitmap whose locked bits are still viewed refuses to be disposed,
// and the locks of a disposed Bitmap end with it.
void install_locked_bits_guard();
