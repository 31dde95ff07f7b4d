// The type _ModuleVersionType: dotted text, numeric ordering and an FNV-1a hash over the four numbers.
#include "common/version_object.h"

#include <cstddef>

namespace {

inline ModuleVersionObject* as_version(PyObject* object) {
    return reinterpret_cast<ModuleVersionObject*>(object);
}

inline int compare_numbers(const VersionNumbers& left, const VersionNumbers& right) {
    const int32_t l[4] = {left.major, left.minor, left.patch, left.sub};
    const int32_t r[4] = {right.major, right.minor, right.patch, right.sub};
    for (int i = 0; i < 4; ++i) {
        if (l[i] != r[i]) {
            return l[i] < r[i] ? -1 : 1;
        }
    }
    return 0;
}

void version_dealloc(PyObject* self) {
    Py_XDECREF(as_version(self)->view);
    Py_TYPE(self)->tp_free(self);
}

PyObject* version_repr(PyObject* self) {
    return PyUnicode_FromFormat("<%s: %U>", Py_TYPE(self)->tp_name, as_version(self)->view);
}

PyObject* version_str(PyObject* self) {
    PyObject* view = as_version(self)->view;
    Py_INCREF(view);
    return view;
}

Py_hash_t version_hash(PyObject* self) {
    const VersionNumbers& n = as_version(self)->numbers;
    const int32_t fields[4] = {n.major, n.minor, n.patch, n.sub};
    uint32_t hash = 0x811C9DC5u;
    for (int32_t field : fields) {
        uint32_t bits = static_cast<uint32_t>(field);
        for (int byte = 0; byte < 4; ++byte) {
            hash ^= bits & 0xFFu;
            hash *= 16777619u;
            bits >>= 8;
        }
    }
    Py_hash_t result = static_cast<int32_t>(hash);
    // -1 is the interpreter's error marker for tp_hash; it takes -2 in its place, as int does.
    return result == -1 ? -2 : result;
}

PyObject* version_richcompare(PyObject* left, PyObject* right, int op) {
    if (Py_TYPE(left) != &ModuleVersionType || Py_TYPE(right) != &ModuleVersionType || op > Py_GE) {
        Py_RETURN_NOTIMPLEMENTED;
    }
    const int order = compare_numbers(as_version(left)->numbers, as_version(right)->numbers);
    bool result = false;
    switch (op) {
        case Py_LT: result = order < 0; break;
        case Py_LE: result = order <= 0; break;
        case Py_EQ: result = order == 0; break;
        case Py_NE: result = order != 0; break;
        case Py_GT: result = order > 0; break;
        case Py_GE: result = order >= 0; break;
    }
    return PyBool_FromLong(result);
}

// Field getters: the closure is the byte offset of the number inside the object.
PyObject* get_number(PyObject* self, void* closure) {
    const auto offset = reinterpret_cast<std::size_t>(closure);
    return PyLong_FromLong(*reinterpret_cast<const int32_t*>(reinterpret_cast<const char*>(self) + offset));
}

PyObject* get_view(PyObject* self, void*) {
    return version_str(self);
}

void* number_offset(std::size_t field_offset) {
    return reinterpret_cast<void*>(offsetof(ModuleVersionObject, numbers) + field_offset);
}

PyGetSetDef version_getset[] = {
    {"major", get_number, nullptr, nullptr, number_offset(offsetof(VersionNumbers, major))},
    {"minor", get_number, nullptr, nullptr, number_offset(offsetof(VersionNumbers, minor))},
    {"patch", get_number, nullptr, nullptr, number_offset(offsetof(VersionNumbers, patch))},
    {"sub", get_number, nullptr, nullptr, number_offset(offsetof(VersionNumbers, sub))},
    {"view", get_view, nullptr, nullptr, nullptr},
    {nullptr, nullptr, nullptr, nullptr, nullptr},
};

PyTypeObject make_version_type() {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "orvane.pyfigura._ModuleVersionType";
    type.tp_basicsize = sizeof(ModuleVersionObject);
    type.tp_dealloc = version_dealloc;
    type.tp_repr = version_repr;
    type.tp_str = version_str;
    type.tp_hash = version_hash;
    type.tp_richcompare = version_richcompare;
    type.tp_getset = version_getset;
    type.tp_flags = Py_TPFLAGS_DEFAULT;
    return type;
}

}  // namespace

PyTypeObject ModuleVersionType = make_version_type();

PyObject* make_version_object(int32_t major, int32_t minor, int32_t patch, int32_t sub, const char* text) {
    PyObject* object = PyType_GenericNew(&ModuleVersionType, nullptr, nullptr);
    ModuleVersionObject* version = as_version(object);
    version->numbers = VersionNumbers{major, minor, patch, sub};
    version->view = PyUnicode_FromString(text);
    return object;
}

int version_compare(const VersionNumbers& numbers, PyObject* version) {
    return compare_numbers(numbers, as_version(version)->numbers);
}
