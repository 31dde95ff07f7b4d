// The stream wrapper type: read sizing, line finding and the closed flag are native; managed code
// offers only the primitive stream operations of SiApiStream.
#include "interop/stream_wrapper.h"

#include <cstdint>
#include <cstring>

#include "interop/arg_checks.h"
#include "interop/entry_table_binding.h"
#include "interop/wrapper_type_shape.h"
#include "common/init_failures.h"
#include "common/interned_names.h"

namespace {

struct SiApiStream {
    static constexpr const char* kClass = "Orvane.WrpGen.Interop.SiApiStream";
    static constexpr const char* kEntries[] = {"CanRead", "CanSeek",   "CanWrite", "Length",
                                               "Position", "Close",    "Flush",    "Read",
                                               "Seek",    "SetLength", "Write",    "IsAssignableTo"};
};
constexpr size_t kEntryCount = sizeof SiApiStream::kEntries / sizeof SiApiStream::kEntries[0];

// The entries, typed, in table order. Only called on wrappers, which exist only when the table is bound.
struct Entries {
    uint8_t (*CanRead)(InstanceHandle);
    uint8_t (*CanSeek)(InstanceHandle);
    uint8_t (*CanWrite)(InstanceHandle);
    void* Length;  // bound only
    int64_t (*Position)(InstanceHandle);
    void (*Close)(InstanceHandle);
    void (*Flush)(InstanceHandle);
    int32_t (*Read)(InstanceHandle, uint8_t*, int32_t);
    int64_t (*Seek)(InstanceHandle, int64_t, int32_t);
    int64_t (*SetLength)(InstanceHandle, int32_t, int64_t);
    void (*Write)(InstanceHandle, const uint8_t*, int32_t);
    uint8_t (*IsAssignableTo)(InstanceHandle);
};
static_assert(sizeof(Entries) == sizeof(void*) * kEntryCount, "one pointer per entry");

const Entries& entries() { return *reinterpret_cast<const Entries*>(bound_table<SiApiStream>().entries); }

constexpr Py_ssize_t kMaxChunk = INT32_MAX;   // one managed call moves at most this many bytes
constexpr Py_ssize_t kMaxSize = PY_SSIZE_T_MAX;

InstanceHandle self_handle(PyObject* self) { return handle_of(self); }
int32_t& closed_flag(PyObject* self) { return reinterpret_cast<StreamWrapperObject*>(self)->closed; }

// The closed rule: true (with ValueError set) when the stream was closed by close() or __exit__.
bool refuse_closed(PyObject* self) {
    if (closed_flag(self) == 0) return false;
    PyErr_SetString(PyExc_ValueError, "I/O operation on closed stream");
    return true;
}

const char* type_name_or_none(PyObject* object) {
    return object == Py_None ? "None" : Py_TYPE(object)->tp_name;
}

// The size argument of read, readline and readlines: a count check naming the method, then the reader.
bool parse_size(PyObject* args, const char* name, Py_ssize_t* size) {
    *size = -1;
    return !wrong_arg_count(PyTuple_GET_SIZE(args), name, 0, 1) && read_optional_index(args, size);
}

bool seekable_check(PyObject* self) {
    const uint8_t seekable = entries().CanSeek(self_handle(self));
    if (PyErr_Occurred()) {
        chain_and_raise(PyExc_TypeError,
                        "the operation supported only for seekable inner streams. "
                        "an exception was thrown during 'CanSeek' check");
        return false;
    }
    if (seekable == 0) {
        PyErr_SetString(PyExc_TypeError,
                        "the operation supported only for seekable inner streams. the inner stream is not seekable");
        return false;
    }
    return true;
}

// ----- reading -----

// Growth of a read buffer of `size` bytes, clamped to `ceiling`.
Py_ssize_t grown(Py_ssize_t size, Py_ssize_t ceiling) {
    Py_ssize_t step;
    if (size <= 8192) {
        step = 4096;
    } else if (size <= 65536) {
        step = 2 * size;
    } else {
        step = size / 8 < 65536 ? 65536 : size / 8;
    }
    return size > ceiling - step ? ceiling : size + step;
}

PyObject* raise_unbounded_overflow(PyObject* buffer) {
    Py_DECREF(buffer);
    PyErr_SetString(PyExc_OverflowError, "unbounded read returned more bytes than a Python bytes buffer can hold");
    return nullptr;
}

// One managed Read into `buffer` at `held`, for at most `free` bytes; -1 with an exception set.
Py_ssize_t read_chunk(PyObject* self, PyObject* buffer, Py_ssize_t held, Py_ssize_t free) {
    const int32_t count = static_cast<int32_t>(free < kMaxChunk ? free : kMaxChunk);
    uint8_t* at = reinterpret_cast<uint8_t*>(PyBytes_AS_STRING(buffer)) + held;
    const int32_t got = entries().Read(self_handle(self), at, count);
    return PyErr_Occurred() ? -1 : got;
}

// Reads until the end, or until `limit` bytes when it is not negative.
PyObject* read_unbounded(PyObject* self, Py_ssize_t limit) {
    PyObject* buffer = PyBytes_FromStringAndSize(nullptr, limit < 0 ? 1024 : limit);
    if (buffer == nullptr) return nullptr;
    Py_ssize_t held = 0;
    for (;;) {
        const Py_ssize_t size = PyBytes_GET_SIZE(buffer);
        const Py_ssize_t got = read_chunk(self, buffer, held, size - held);
        if (got < 0) {
            Py_DECREF(buffer);
            return nullptr;
        }
        if (got == 0) break;
        held += got;
        if (held == limit) break;
        if (held == size) {
            if (size == kMaxSize) return raise_unbounded_overflow(buffer);
            if (_PyBytes_Resize(&buffer, grown(size, kMaxSize)) < 0) return nullptr;
        }
    }
    if (held != PyBytes_GET_SIZE(buffer) && _PyBytes_Resize(&buffer, held) < 0) return nullptr;
    return buffer;
}

// One line, ending behind the byte 10, of at most `limit` bytes (any negative limit is none). The read
// runs ahead and the stream is moved back to the end of the line, which is why it must be seekable.
PyObject* read_line(PyObject* self, Py_ssize_t limit) {
    const Py_ssize_t ceiling =
        static_cast<size_t>(limit) < static_cast<size_t>(kMaxSize) ? limit : kMaxSize;
    PyObject* buffer = PyBytes_FromStringAndSize(nullptr, ceiling < 1024 ? ceiling : 1024);
    if (buffer == nullptr) return nullptr;
    Py_ssize_t total = 0;
    Py_ssize_t line_end = -1;
    for (;;) {
        const Py_ssize_t size = PyBytes_GET_SIZE(buffer);
        const Py_ssize_t got = read_chunk(self, buffer, total, size - total);
        if (got < 0) {
            Py_DECREF(buffer);
            return nullptr;
        }
        if (got == 0) break;
        const char* fresh = PyBytes_AS_STRING(buffer) + total;
        const void* newline = std::memchr(fresh, '\n', static_cast<size_t>(got));
        total += got;
        if (newline != nullptr) {
            line_end = static_cast<const char*>(newline) - PyBytes_AS_STRING(buffer) + 1;
            break;
        }
        if (total == limit) break;
        if (total == size) {
            if (size == kMaxSize) return raise_unbounded_overflow(buffer);
            if (_PyBytes_Resize(&buffer, grown(size, ceiling)) < 0) return nullptr;
        }
    }
    if (line_end < 0) line_end = total;
    if (total > line_end) {
        entries().Seek(self_handle(self), line_end - total, 1);
        if (PyErr_Occurred()) {
            Py_DECREF(buffer);
            return nullptr;
        }
    }
    if (line_end != PyBytes_GET_SIZE(buffer) && _PyBytes_Resize(&buffer, line_end) < 0) return nullptr;
    return buffer;
}

// ----- writing -----

// Steps shared by write and writelines: the item's contiguous buffer, written in 32-bit chunks.
PyObject* write_buffer(PyObject* self, PyObject* data) {
    Py_buffer view = {};
    if (PyObject_GetBuffer(data, &view, PyBUF_SIMPLE) < 0) {
        PyErr_Clear();
        PyErr_Format(PyExc_TypeError, "write argument must be bytes-like object, not '%s'", type_name_or_none(data));
        return nullptr;
    }
    if (!PyBuffer_IsContiguous(&view, 'C')) {
        PyBuffer_Release(&view);
        PyErr_Format(PyExc_TypeError, "write argument must be contiguous buffer, not '%s'", type_name_or_none(data));
        return nullptr;
    }
    const uint8_t* at = static_cast<const uint8_t*>(view.buf);
    Py_ssize_t left = view.len;
    do {
        const int32_t count = static_cast<int32_t>(left < kMaxChunk ? left : kMaxChunk);
        entries().Write(self_handle(self), at, count);
        if (PyErr_Occurred()) {
            PyBuffer_Release(&view);
            return nullptr;
        }
        at += count;
        left -= count;
    } while (left > 0);
    const Py_ssize_t total = view.len;
    PyBuffer_Release(&view);
    return PyLong_FromSsize_t(total);
}

// ----- methods -----

PyObject* io_close(PyObject* self, PyObject*) {
    if (closed_flag(self) == 0) {
        entries().Close(self_handle(self));
        closed_flag(self) = 1;
        if (PyErr_Occurred()) return nullptr;
    }
    Py_RETURN_NONE;
}

PyObject* io_flush(PyObject* self, PyObject*) {
    if (refuse_closed(self)) return nullptr;
    entries().Flush(self_handle(self));
    if (PyErr_Occurred()) return nullptr;
    Py_RETURN_NONE;
}

PyObject* answer_of(PyObject* self, uint8_t (*entry)(InstanceHandle)) {
    if (refuse_closed(self)) return nullptr;
    const uint8_t answer = entry(self_handle(self));
    if (PyErr_Occurred()) return nullptr;
    return PyBool_FromLong(answer);
}

PyObject* io_readable(PyObject* self, PyObject*) { return answer_of(self, entries().CanRead); }
PyObject* io_seekable(PyObject* self, PyObject*) { return answer_of(self, entries().CanSeek); }
PyObject* io_writable(PyObject* self, PyObject*) { return answer_of(self, entries().CanWrite); }

PyObject* io_tell(PyObject* self, PyObject*) {
    if (refuse_closed(self)) return nullptr;
    const int64_t position = entries().Position(self_handle(self));
    if (PyErr_Occurred()) return nullptr;
    return PyLong_FromSsize_t(static_cast<Py_ssize_t>(position));
}

PyObject* io_seek(PyObject* self, PyObject* args) {
    Py_ssize_t offset;
    int whence = 0;
    if (!PyArg_ParseTuple(args, "n|i", &offset, &whence)) return nullptr;
    if (static_cast<unsigned>(whence) >= 3) {
        PyErr_Format(PyExc_ValueError, "invalid whence (%i, should be 0, 1 or 2)", whence);
        return nullptr;
    }
    if (offset < 0 && whence == 0) {
        PyErr_Format(PyExc_ValueError, "negative seek value %zd", offset);
        return nullptr;
    }
    if (refuse_closed(self)) return nullptr;
    const int64_t position = entries().Seek(self_handle(self), offset, whence);
    if (PyErr_Occurred()) return nullptr;
    return PyLong_FromLongLong(position);
}

PyObject* io_truncate(PyObject* self, PyObject* args) {
    if (wrong_arg_count(PyTuple_GET_SIZE(args), "truncate", 0, 1)) return nullptr;
    int32_t use_position = 1;
    Py_ssize_t size = 0;
    if (PyTuple_GET_SIZE(args) == 1 && PyTuple_GET_ITEM(args, 0) != Py_None) {
        if (!read_index_object(PyTuple_GET_ITEM(args, 0), &size)) return nullptr;
        use_position = 0;
    }
    if (refuse_closed(self)) return nullptr;
    const int64_t result = entries().SetLength(self_handle(self), use_position, size);
    if (PyErr_Occurred()) return nullptr;
    return PyLong_FromLongLong(result);
}

PyObject* io_write(PyObject* self, PyObject* data) {
    if (refuse_closed(self)) return nullptr;
    return write_buffer(self, data);
}

PyObject* io_writelines(PyObject* self, PyObject* lines) {
    if (refuse_closed(self)) return nullptr;
    PyObject* iterator = PyObject_GetIter(lines);
    if (iterator == nullptr) return nullptr;
    PyObject* line;
    while ((line = PyIter_Next(iterator)) != nullptr) {
        PyObject* written = refuse_closed(self) ? nullptr : write_buffer(self, line);
        Py_DECREF(line);
        if (written == nullptr) break;
        Py_DECREF(written);
    }
    Py_DECREF(iterator);
    if (PyErr_Occurred()) return nullptr;
    Py_RETURN_NONE;
}

PyObject* io_readline(PyObject* self, PyObject* args) {
    Py_ssize_t size;
    if (!parse_size(args, "readline", &size) || refuse_closed(self) || !seekable_check(self)) return nullptr;
    return read_line(self, size);
}

PyObject* io_readlines(PyObject* self, PyObject* args) {
    Py_ssize_t hint;
    if (!parse_size(args, "readlines", &hint) || refuse_closed(self) || !seekable_check(self)) return nullptr;
    PyObject* lines = PyList_New(0);
    if (lines == nullptr) return nullptr;
    if (hint < 1) {
        PyObject* done = PyObject_CallMethodObjArgs(lines, interned(InternedName::Extend), self, nullptr);
        if (done == nullptr) Py_CLEAR(lines);
        Py_XDECREF(done);
        return lines;
    }
    PyObject* iterator = PyObject_GetIter(self);
    if (iterator == nullptr) {
        Py_DECREF(lines);
        return nullptr;
    }
    Py_ssize_t total = 0;
    PyObject* line;
    while ((line = PyIter_Next(iterator)) != nullptr) {
        const bool stored = PyList_Append(lines, line) == 0;
        const Py_ssize_t length = stored ? PyObject_Size(line) : -1;
        Py_DECREF(line);
        if (length < 0) break;
        total += length;
        if (total >= hint) break;
    }
    Py_DECREF(iterator);
    if (PyErr_Occurred()) Py_CLEAR(lines);
    return lines;
}

PyObject* io_readinto(PyObject* self, PyObject* target) {
    if (refuse_closed(self)) return nullptr;
    Py_buffer view = {};
    if (PyObject_GetBuffer(target, &view, PyBUF_WRITABLE) < 0) {
        PyErr_Clear();
        PyErr_Format(PyExc_TypeError, "readinto argument must be read-write bytes-like object, not '%s'",
                     type_name_or_none(target));
        return nullptr;
    }
    if (!PyBuffer_IsContiguous(&view, 'C')) {
        PyBuffer_Release(&view);
        PyErr_Format(PyExc_TypeError, "readinto argument must be read-write contiguous buffer, not '%s'",
                     type_name_or_none(target));
        return nullptr;
    }
    uint8_t* at = static_cast<uint8_t*>(view.buf);
    Py_ssize_t total = 0;
    do {
        const Py_ssize_t left = view.len - total;
        const int32_t count = static_cast<int32_t>(left < kMaxChunk ? left : kMaxChunk);
        const int32_t got = entries().Read(self_handle(self), at + total, count);
        if (PyErr_Occurred()) {
            PyBuffer_Release(&view);
            return nullptr;
        }
        total += got;
        if (got < count) break;
    } while (total < view.len);
    PyBuffer_Release(&view);
    return PyLong_FromSsize_t(total);
}

PyObject* io_read(PyObject* self, PyObject* args) {
    Py_ssize_t size;
    if (!parse_size(args, "read", &size) || refuse_closed(self)) return nullptr;
    if (size < 0) return read_unbounded(self, -1);
    if (size > kMaxChunk) return read_unbounded(self, size);
    PyObject* buffer = PyBytes_FromStringAndSize(nullptr, size);
    if (buffer == nullptr) return nullptr;
    const Py_ssize_t got = read_chunk(self, buffer, 0, size);
    if (got < 0) {
        Py_DECREF(buffer);
        return nullptr;
    }
    if (got < size && _PyBytes_Resize(&buffer, got) < 0) return nullptr;
    return buffer;
}

PyObject* io_readall(PyObject* self, PyObject*) {
    if (refuse_closed(self)) return nullptr;
    return read_unbounded(self, -1);
}

PyObject* io_fileno(PyObject*, PyObject*) {
    PyErr_SetString(PyExc_ValueError, "fileno method is not supported");
    return nullptr;
}

PyObject* io_isatty(PyObject* self, PyObject*) {
    if (refuse_closed(self)) return nullptr;
    Py_RETURN_FALSE;
}

PyObject* io_exit(PyObject* self, PyObject* args) {
    PyObject* result = wrapper_exit(self, args);
    closed_flag(self) = 1;
    return result;
}

PyObject* io_get_closed(PyObject* self, void*) { return PyBool_FromLong(closed_flag(self) != 0); }

PyObject* io_iter(PyObject* self) {
    if (refuse_closed(self) || !seekable_check(self)) return nullptr;
    Py_INCREF(self);
    return self;
}

PyObject* io_next(PyObject* self) {
    PyObject* line = read_line(self, -1);
    if (line != nullptr && PyBytes_GET_SIZE(line) == 0) Py_CLEAR(line);
    return line;
}

PyObject* io_new(PyTypeObject* type, PyObject* args, PyObject* kwargs) {
    PyObject* self = gated_new(type, Interop_StreamWrapper_status(), args, kwargs);
    if (self != nullptr) closed_flag(self) = 0;
    return self;
}

PyMethodDef g_methods[] = {
    {"close", io_close, METH_NOARGS, nullptr},
    {"flush", io_flush, METH_NOARGS, nullptr},
    {"readable", io_readable, METH_NOARGS, nullptr},
    {"seekable", io_seekable, METH_NOARGS, nullptr},
    {"writable", io_writable, METH_NOARGS, nullptr},
    {"tell", io_tell, METH_NOARGS, nullptr},
    {"seek", io_seek, METH_VARARGS, nullptr},
    {"truncate", io_truncate, METH_VARARGS, nullptr},
    {"write", io_write, METH_O, nullptr},
    {"writelines", io_writelines, METH_O, nullptr},
    {"readline", io_readline, METH_VARARGS, nullptr},
    {"readlines", io_readlines, METH_VARARGS, nullptr},
    {"readinto", io_readinto, METH_O, nullptr},
    {"read", io_read, METH_VARARGS, nullptr},
    {"readall", io_readall, METH_NOARGS, nullptr},
    {"fileno", io_fileno, METH_NOARGS, nullptr},
    {"isatty", io_isatty, METH_NOARGS, nullptr},
    {"__enter__", wrapper_enter, METH_NOARGS, nullptr},
    {"__exit__", io_exit, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr}};

PyGetSetDef g_getset[] = {{"closed", io_get_closed, nullptr, nullptr, nullptr},
                          {nullptr, nullptr, nullptr, nullptr, nullptr}};

}  // namespace

PyTypeObject Interop_StreamWrapper_Type = [] {
    PyTypeObject t =
        wrapper_type_shape("orvane.pyfigura._wrpgen._interop._StreamWrapper", sizeof(StreamWrapperObject));
    t.tp_richcompare = compare_within<&Interop_StreamWrapper_Type>;
    t.tp_iter = io_iter;
    t.tp_iternext = io_next;
    t.tp_methods = g_methods;
    t.tp_getset = g_getset;
    t.tp_new = io_new;
    return t;
}();

const TypeInitStatus& Interop_StreamWrapper_status() {
    static const TypeInitStatus status = status_of<SiApiStream>();
    return status;
}

IsAssignableByHandle stream_is_assignable() {
    return bound_table<SiApiStream>().header.failed ? nullptr : entries().IsAssignableTo;
}
