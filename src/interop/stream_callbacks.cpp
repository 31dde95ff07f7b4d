// The streams group: each stream operation of managed code as one method call on a Python file object.
#include "interop/stream_callbacks.h"

#include <cstring>

#include "interop/buffer_view.h"
#include "marshal/scalar_marshal.h"
#include "marshal/stream_marshal.h"
#include "module/init_failures.h"
#include "module/interned_names.h"

namespace {

constexpr const char* kClosedTestFailed = "An error occurred while checking if the stream is closed";
constexpr const char* kLengthFailed = "While calculating the length of the stream, an error occurred.";

// Calls `file.<name>(view)` over a copy of `count` bytes at `data`: `data` is valid only while the
// callback runs, and Python code may keep the view. A readinto's bytes are copied back after the call
// (as many as it reports, at most `count`); the view then lends nothing more.
PyObject* call_with_view(PyObject* file, InternedName name, void* data, int32_t count, int readonly) {
    PyObject* view = new_buffer_view(readonly ? data : nullptr, count, readonly);
    if (view == nullptr) return nullptr;
    PyObject* result = PyObject_CallMethodObjArgs(file, interned(name), view, nullptr);
    const uint8_t* copy = expire_buffer_view(view);
    if (!readonly && result != nullptr && count > 0) {
        // Copied whole: the count is read from the result later, and bytes past it are not looked at.
        std::memcpy(data, copy, static_cast<size_t>(count));
    }
    Py_DECREF(view);
    return result;
}

// A write or readinto result: None counts 0, anything else goes through the Int32 converter.
int32_t byte_count(PyObject* result) {
    if (result == nullptr) return -1;
    int32_t count = 0;
    const int ok = result == Py_None || convert_int32(result, &count);
    Py_DECREF(result);
    return ok ? count : -1;
}

// A seek or tell result through the Int64 converter; -1 on failure.
int64_t position_of(PyObject* result) {
    if (result == nullptr) return -1;
    int64_t position = 0;
    const int ok = convert_int64(result, &position);
    Py_DECREF(result);
    return ok ? position : -1;
}

// 1 closed, 0 open, -1 failed with the chained TypeError.
int32_t closed_test(PyObject* file) {
    PyObject* value = PyObject_GetAttr(file, interned(InternedName::Closed));
    uint8_t flag = 0;
    const int ok = value != nullptr && convert_bool(value, &flag);
    Py_XDECREF(value);
    if (!ok) {
        chain_and_raise(PyExc_TypeError, kClosedTestFailed);
        return -1;
    }
    return flag;
}

// readable(), writable() or seekable(), answered 0 for a closed file.
int32_t capability(PyObject* file, InternedName method) {
    const int32_t closed = closed_test(file);
    if (closed != 0) return closed < 0 ? -1 : 0;
    PyObject* result = PyObject_CallMethodObjArgs(file, interned(method), nullptr);
    if (result == nullptr) return -1;
    uint8_t answer = 0;
    const int ok = convert_bool(result, &answer);
    Py_DECREF(result);
    return ok ? answer : -1;
}

PyObject* call_seek(PyObject* file, PyObject* offset, PyObject* whence) {
    return PyObject_CallMethodObjArgs(file, interned(InternedName::Seek), offset, whence, nullptr);
}

// seek(0, 1), seek(0, 2), then seek(position) back; the end as a new reference, or null.
PyObject* end_position(PyObject* file) {
    PyObject* zero = PyLong_FromLong(0);
    PyObject* one = PyLong_FromLong(1);
    PyObject* two = PyLong_FromLong(2);
    PyObject* end = nullptr;
    if (zero != nullptr && one != nullptr && two != nullptr) {
        PyObject* current = call_seek(file, zero, one);
        if (current != nullptr) {
            end = call_seek(file, zero, two);
            if (end != nullptr) {
                PyObject* back = PyObject_CallMethodObjArgs(file, interned(InternedName::Seek), current, nullptr);
                if (back == nullptr) Py_CLEAR(end);
                Py_XDECREF(back);
            }
            Py_DECREF(current);
        }
    }
    Py_XDECREF(zero);
    Py_XDECREF(one);
    Py_XDECREF(two);
    return end;
}

}  // namespace

int32_t stream_write(PyObject* file, const uint8_t* data, int32_t count) {
    return byte_count(call_with_view(file, InternedName::Write, const_cast<uint8_t*>(data), count, 1));
}

int32_t stream_write_byte(PyObject* file, uint8_t value) {
    return byte_count(call_with_view(file, InternedName::Write, &value, 1, 1));
}

int32_t stream_read(PyObject* file, uint8_t* data, int32_t count) {
    return byte_count(call_with_view(file, InternedName::Readinto, data, count, 0));
}

int32_t stream_read_byte(PyObject* file) {
    uint8_t value = 0;
    PyObject* result = call_with_view(file, InternedName::Readinto, &value, 1, 0);
    if (result == nullptr) return -2;
    if (result == Py_None) {
        Py_DECREF(result);
        PyErr_SetString(PyExc_OSError, "no bytes are available for reading");
        return -2;
    }
    const int32_t count = byte_count(result);
    if (count < 0) return -2;
    return count == 0 ? -1 : value;
}

int64_t stream_seek(PyObject* file, int64_t offset, int32_t whence) {
    PyObject* py_offset = PyLong_FromLongLong(offset);
    PyObject* py_whence = PyLong_FromLong(whence);
    PyObject* result = py_offset != nullptr && py_whence != nullptr ? call_seek(file, py_offset, py_whence) : nullptr;
    Py_XDECREF(py_offset);
    Py_XDECREF(py_whence);
    return position_of(result);
}

int32_t stream_flush(PyObject* file) {
    PyObject* result = PyObject_CallMethodObjArgs(file, interned(InternedName::Flush), nullptr);
    if (result == nullptr) return -1;
    Py_DECREF(result);
    return 0;
}

void stream_close(PyObject* file) {
    // May run while managed code unwinds from an earlier failure: that exception stays in place.
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    PyObject* result = PyObject_CallMethodObjArgs(file, interned(InternedName::Close), nullptr);
    if (result == nullptr) PyErr_WriteUnraisable(file);
    Py_XDECREF(result);
    PyErr_Restore(type, value, traceback);
}

int32_t stream_can_read(PyObject* file) { return capability(file, InternedName::Readable); }
int32_t stream_can_write(PyObject* file) { return capability(file, InternedName::Writable); }
int32_t stream_can_seek(PyObject* file) { return capability(file, InternedName::Seekable); }

int64_t stream_tell(PyObject* file) {
    return position_of(PyObject_CallMethodObjArgs(file, interned(InternedName::Tell), nullptr));
}

int64_t stream_length(PyObject* file) {
    const int32_t closed = closed_test(file);
    if (closed != 0) return closed < 0 ? -1 : -3;
    PyObject* seekable = PyObject_CallMethodObjArgs(file, interned(InternedName::Seekable), nullptr);
    uint8_t answer = 0;
    const int ok = seekable != nullptr && convert_bool(seekable, &answer);
    Py_XDECREF(seekable);
    if (!ok) {
        chain_and_raise(PyExc_TypeError, kLengthFailed);
        return -1;
    }
    if (answer == 0) return -2;
    PyObject* end = end_position(file);
    int64_t length = 0;
    const int converted = end != nullptr && convert_int64(end, &length);
    Py_XDECREF(end);
    if (!converted) {
        chain_and_raise(PyExc_TypeError, kLengthFailed);
        return -1;
    }
    return length;
}
