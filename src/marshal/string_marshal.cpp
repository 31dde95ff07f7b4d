// String converter, expose and the string and byte builders.
#include "marshal/string_marshal.h"

#include <new>

#include "common/interned_names.h"

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

// A lone surrogate can't become UTF-16: the codec raises UnicodeEncodeError with the position, as
// str.encode does.
[[gnu::cold, gnu::noinline]] int fail_unencodable(PyObject* str) {
    PyObject* encoded = PyUnicode_AsEncodedString(str, "utf-16-le", "strict");
    if (encoded == nullptr) return 0;
    Py_DECREF(encoded);
    PyErr_SetString(PyExc_SystemError, "a surrogate passed the UTF-16 codec");
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_embedded_null() {
    PyErr_SetString(PyExc_ValueError, "embedded null character");
    return 0;
}

// Surrogates can only be stored in the two wider kinds; a str made by Python code holds them only
// when it was built with surrogateescape, surrogatepass or by hand.
template <typename Unit>
bool has_surrogate(const Unit* units, Py_ssize_t count) {
    Unit found = 0;
    for (Py_ssize_t i = 0; i < count; ++i) found |= static_cast<Unit>((units[i] & ~Unit{0x7FF}) == Unit{0xD800});
    return found != 0;
}

template <typename Unit>
bool has_null(const Unit* units, Py_ssize_t count) {
    for (Py_ssize_t i = 0; i < count; ++i) {
        if (units[i] == 0) return true;
    }
    return false;
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
    const void* data = PyUnicode_DATA(str);
    const Py_ssize_t length = PyUnicode_GET_LENGTH(str);
    if ((kind == PyUnicode_2BYTE_KIND && has_surrogate(static_cast<const uint16_t*>(data), length)) ||
        (kind == PyUnicode_4BYTE_KIND && has_surrogate(static_cast<const uint32_t*>(data), length))) {
        return fail_unencodable(str);
    }
    out->kind = kind;
    out->data = data;
    out->length = static_cast<int32_t>(length);
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

int convert_path(PyObject* object, void* out) {
    if (!convert_string(object, out)) return 0;
    const StringArg* arg = static_cast<const StringArg*>(out);
    if (arg->length <= 0) return 1;
    const bool null_inside = arg->kind == PyUnicode_1BYTE_KIND ? has_null(static_cast<const uint8_t*>(arg->data), arg->length)
                             : arg->kind == PyUnicode_2BYTE_KIND
                                 ? has_null(static_cast<const uint16_t*>(arg->data), arg->length)
                                 : has_null(static_cast<const uint32_t*>(arg->data), arg->length);
    return null_inside ? fail_embedded_null() : 1;
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
