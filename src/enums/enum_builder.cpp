// The one shape shared by every enumeration builder: accessor values into IntEnum's functional call.
#include "enums/enum_builder.h"

#include <cstdint>

#include "common/dependency_import.h"
#include "common/init_failures.h"
#include "common/interned_names.h"

namespace {

using Accessor = int32_t (*)();

// New (name, value) pair for one member, or null with an exception set.
PyObject* member_pair(const char* name, void* accessor) {
    int32_t value = reinterpret_cast<Accessor>(accessor)();
    PyObject* number = PyLong_FromLong(value);
    PyObject* text = PyUnicode_FromString(name);
    return Py_BuildValue("(NN)", text, number);
}

}  // namespace

PyObject* build_int_enum(const EnumDescription& d, const ClassEntryTableHeader& header, void* const* accessors) {
    if (header.failed) {
        raise_enum_failure(header.error_text.c_str(), d.full_name);
        return nullptr;
    }
    PyObject* int_enum = import_attribute("enum", interned(InternedName::IntEnum));
    if (int_enum == nullptr) return nullptr;
    PyObject* members = PyTuple_New(static_cast<Py_ssize_t>(d.member_count));
    if (members == nullptr) {
        Py_DECREF(int_enum);
        return nullptr;
    }
    for (size_t i = 0; i < d.member_count; ++i) {
        PyObject* pair = member_pair(d.member_names[i], accessors[i]);
        if (pair == nullptr) {
            Py_DECREF(members);
            Py_DECREF(int_enum);
            return nullptr;
        }
        PyTuple_SET_ITEM(members, static_cast<Py_ssize_t>(i), pair);
    }
    PyObject* name = PyUnicode_FromString(d.short_name);
    PyObject* result = name ? PyObject_CallFunctionObjArgs(int_enum, name, members, nullptr) : nullptr;
    Py_XDECREF(name);
    Py_DECREF(members);
    Py_DECREF(int_enum);
    if (result != nullptr && d.doc != nullptr) {
        PyObject* doc = PyUnicode_FromString(d.doc);
        if (doc == nullptr || PyObject_SetAttrString(result, "__doc__", doc) < 0) Py_CLEAR(result);
        Py_XDECREF(doc);
    }
    return result;
}
