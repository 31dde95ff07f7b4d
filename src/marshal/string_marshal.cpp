// String converter, expose and the string and byte builders.
#include "marshal/string_marshal.h"

#include <new>

#include "module/interned_names.h"

namespace {

[[gnu::cold, gnu::noinline]] int fail_not_ready() {
    PyErr_SetString(PyExc_TypeError, "unicode object is not ready");
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_unknown_kind(int kind) {
    PyErr_Format(PyExc_TypeError, "unknown unicode encoding '%i'", kind);
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_not_a_string(PyObject* object) {
    PyErr_Format(PyExc_TypeError, "can't build String from '%s'", Py_TYPE(object)->tp_name);
    return 0;
}

inline PyObject* decode_utf16(const char16_t* units, int32_t count) {
    // Byte order -1 is little-endian. The empty handler name is deliberate: malformed input then
    // fails with the lookup of that handler rather than with a decode error.
    int byte_order = -1;
    return PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(units), 2 * static_cast<Py_ssize_t>(count), "",
                                 &byte_order);
}

}  // namespace

int expose_string(PyObject* str, StringArg* out) {
    if (!PyUnicode_IS_READY(str) && _PyUnicode_Ready(str) < 0) {
        return fail_not_ready();
    }
    const int kind = PyUnicode_KIND(str);
    if (kind != PyUnicode_1BYTE_KIND && kind != PyUnicode_2BYTE_KIND && kind != PyUnicode_4BYTE_KIND) {
        return fail_unknown_kind(kind);
    }
    out->kind = kind;
    out->data = PyUnicode_DATA(str);
    out->length = static_cast<int32_t>(PyUnicode_GET_LENGTH(str));
    return 1;
}

int convert_string(PyObject* object, void* out) {
    StringArg* arg = static_cast<StringArg*>(out);
    if (object == Py_None) {
        arg->length = -1;
        return 1;
    }
    if (!PyUnicode_Check(object)) {
        return fail_not_a_string(object);
    }
    return expose_string(object, arg);
}

std::u16string* build_u16_string(const char16_t* units, int32_t count) {
    std::u16string* text = new (std::nothrow) std::u16string();
    if (text == nullptr || count <= 0) {
        return text;
    }
    try {
        text->assign(units, static_cast<std::size_t>(count));
    } catch (...) {
        delete text;
        return nullptr;
    }
    return text;
}

PyObject* build_py_string(const char16_t* units, int32_t count) {
    return decode_utf16(units, count);
}

PyObject* build_py_string_quiet(const char16_t* units, int32_t count) {
    PyObject* text = decode_utf16(units, count);
    if (text == nullptr && PyErr_Occurred()) {
        PyErr_WriteUnraisable(interned(InternedName::FormatCallbackException));
    }
    return text;
}

PyObject* build_py_bytes(const uint8_t* data, int32_t count) {
    return PyByteArray_FromStringAndSize(reinterpret_cast<const char*>(data), count);
}
