// Guid converter and the quiet reader and builder used by the managed side.
#include "marshal/guid_marshal.h"

#include <cstring>

#include "common/dependency_import.h"
#include "common/interned_names.h"

namespace {

[[gnu::cold, gnu::noinline]] int fail_not_a_guid(PyObject* object) {
    PyErr_Format(PyExc_TypeError, "can't build Guid from '%s'", Py_TYPE(object)->tp_name);
    return 0;
}

// Copies bytes_le into `out`. 1; 0 with the attribute's failure set, or -1 (nothing set) when the
// attribute is not 16 bytes.
int copy_bytes_le(PyObject* object, uint8_t* out) {
    PyObject* bytes = PyObject_GetAttr(object, interned(InternedName::BytesLe));
    if (bytes == nullptr) return 0;
    int result = -1;
    if (PyBytes_Check(bytes) && PyBytes_GET_SIZE(bytes) == kGuidSize) {
        std::memcpy(out, PyBytes_AS_STRING(bytes), kGuidSize);
        result = 1;
    }
    Py_DECREF(bytes);
    return result;
}

}  // namespace

int convert_guid(PyObject* object, void* out) {
    PyObject* uuid_type = import_attribute("uuid", interned(InternedName::Uuid));
    if (uuid_type == nullptr) return 0;
    const int is_uuid = PyObject_IsInstance(object, uuid_type);
    Py_DECREF(uuid_type);
    if (is_uuid <= 0) return is_uuid < 0 ? 0 : fail_not_a_guid(object);
    const int copied = copy_bytes_le(object, static_cast<uint8_t*>(out));
    return copied >= 0 ? copied : fail_not_a_guid(object);
}

void guid_in_quiet(PyObject* object, uint8_t* out) {
    if (copy_bytes_le(object, out) != 1) std::memset(out, 0, kGuidSize);
}

PyObject* guid_out(const uint8_t* bytes) {
    PyObject* uuid_type = import_attribute("uuid", interned(InternedName::Uuid));
    if (uuid_type == nullptr) return nullptr;
    PyObject* result = nullptr;
    PyObject* arguments = PyTuple_New(0);
    PyObject* keywords = PyDict_New();
    PyObject* value = PyBytes_FromStringAndSize(reinterpret_cast<const char*>(bytes), kGuidSize);
    if (arguments != nullptr && keywords != nullptr && value != nullptr &&
        PyDict_SetItem(keywords, interned(InternedName::BytesLe), value) == 0) {
        result = PyObject_Call(uuid_type, arguments, keywords);
    }
    Py_XDECREF(value);
    Py_XDECREF(keywords);
    Py_XDECREF(arguments);
    Py_DECREF(uuid_type);
    return result;
}
