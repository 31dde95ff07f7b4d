// References and plain numbers out: rows of the callback tables.
#include "module/callback_functions.h"

void ref_add(PyObject* obj) { Py_XINCREF(obj); }
void ref_drop(PyObject* obj) { Py_XDECREF(obj); }
PyObject* ref_none() { Py_RETURN_NONE; }

PyObject* out_bool(uint8_t value) { return PyBool_FromLong(value); }
PyObject* out_int32(int32_t value) { return PyLong_FromLong(value); }
PyObject* out_uint32(uint32_t value) { return PyLong_FromUnsignedLong(value); }
PyObject* out_int64(int64_t value) { return PyLong_FromLongLong(value); }
PyObject* out_uint64(uint64_t value) { return PyLong_FromUnsignedLongLong(value); }
PyObject* out_double(double value) { return PyFloat_FromDouble(value); }
PyObject* out_char(uint16_t unit) {
    char16_t text[1] = {static_cast<char16_t>(unit)};
    int byte_order = -1;
    return PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(text), 2, "", &byte_order);
}
