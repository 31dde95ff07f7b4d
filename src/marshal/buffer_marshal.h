// Byte arrays across the managed boundary: a Python buffer leased, uncopied, for the length of one call.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>
#include "generated_wire_records.h"

// A Py_buffer followed by its BufferArg, on the wrapper's stack.
struct BufferLease {
    Py_buffer view;
    BufferArg arg;
};

// Size of the Py_buffer record the managed side provides when it leases a buffer by itself.
constexpr int32_t kPyBufferRecordSize = 80;
static_assert(sizeof(Py_buffer) == kPyBufferRecordSize, "the managed side allocates Py_buffer records of this size");

// Empty state: acquired 0, length -1, data null; the Py_buffer part is left as it is.
inline void init_buffer_lease(BufferLease* lease) {
    lease->arg.acquired = 0;
    lease->arg.length = -1;
    lease->arg.data = nullptr;
}

// O& converter of a byte[] parameter, `out` a BufferLease put in its empty state before. None gives
// length -1; any buffer exporter is acquired. 1, or 0 with TypeError or BufferError set; after a
// BufferError the lease may still be held, so release on every path.
int convert_byte_array(PyObject* object, void* out);

// The same with the two parts at separate addresses, for element converters.
int convert_byte_array_element(PyObject* object, Py_buffer* view, BufferArg* arg);

// Gives the buffer back if one was acquired. The flag stays as it is.
inline void release_buffer_lease(BufferLease* lease) {
    if (lease->arg.acquired) PyBuffer_Release(&lease->view);
}

// Group buffers, for the managed side's own leases.
int32_t buffer_record_size();
void zero_buffer_record(Py_buffer* view);
// Acquires without the None and type tests. 1, or 0 with BufferError set (the record may still be held).
int32_t acquire_buffer(PyObject* object, Py_buffer* view, BufferArg* arg);
void release_buffer_record(Py_buffer* view);

// A lease in its empty state that is released when the guard goes out of scope.
class BufferLeaseGuard {
public:
    BufferLeaseGuard() { init_buffer_lease(&lease_); }
    ~BufferLeaseGuard() { release_buffer_lease(&lease_); }
    BufferLeaseGuard(const BufferLeaseGuard&) = delete;
    BufferLeaseGuard& operator=(const BufferLeaseGuard&) = delete;

    BufferLease* lease() { return &lease_; }  // the converter's output
    BufferArg* arg() { return &lease_.arg; }  // the entry's argument

private:
    BufferLease lease_;
};
