// Byte-array converter and the buffer acquisition shared with the managed side's own leases.
#include "marshal/buffer_marshal.h"

#include <cstring>

namespace {

constexpr Py_ssize_t kLongestBuffer = 2147483647;

[[gnu::cold, gnu::noinline]] int32_t fail_buffer(const char* message) {
    PyErr_SetString(PyExc_BufferError, message);
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_not_a_buffer(PyObject* object) {
    PyErr_Format(PyExc_TypeError, "can't build byte[] from '%s'", Py_TYPE(object)->tp_name);
    return 0;
}

inline bool exports_buffer(PyObject* object) {
    const PyBufferProcs* procs = Py_TYPE(object)->tp_as_buffer;
    return procs != nullptr && procs->bf_getbuffer != nullptr;
}

}  // namespace

int32_t acquire_buffer(PyObject* object, Py_buffer* view, BufferArg* arg) {
    if (PyObject_GetBuffer(object, view, PyBUF_SIMPLE) != 0) return fail_buffer("can't get internal buffer");
    arg->acquired = 1;  // from here on a release is due, whatever follows
    if (!PyBuffer_IsContiguous(view, 'C')) return fail_buffer("buffer is not contiguous");
    if (view->len > kLongestBuffer) return fail_buffer("buffer is too long");
    arg->data = view->buf;
    arg->length = static_cast<int32_t>(view->len);
    return 1;
}

int convert_byte_array_element(PyObject* object, Py_buffer* view, BufferArg* arg) {
    if (object == Py_None) {
        arg->length = -1;
        return 1;
    }
    if (!exports_buffer(object)) return fail_not_a_buffer(object);
    return acquire_buffer(object, view, arg);
}

int convert_byte_array(PyObject* object, void* out) {
    BufferLease* lease = static_cast<BufferLease*>(out);
    return convert_byte_array_element(object, &lease->view, &lease->arg);
}

int32_t buffer_record_size() { return kPyBufferRecordSize; }

void zero_buffer_record(Py_buffer* view) { std::memset(view, 0, sizeof *view); }

void release_buffer_record(Py_buffer* view) { PyBuffer_Release(view); }
