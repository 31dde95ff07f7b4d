// The common wrapper type shape and the same-type comparison behind every protocol type's tp_richcompare.
#include "interop/wrapper_type_shape.h"

PyTypeObject wrapper_type_shape(const char* name, Py_ssize_t basic_size) {
    PyTypeObject t = {PyVarObject_HEAD_INIT(nullptr, 0)};
    t.tp_name = name;
    t.tp_basicsize = basic_size;
    t.tp_dealloc = class_dealloc;
    t.tp_hash = class_hash;
    t.tp_flags = Py_TPFLAGS_DEFAULT;
    t.tp_init = no_constructor_init;
    return t;
}

PyObject* compare_as(PyTypeObject* type, PyObject* self, PyObject* other, int op) {
    const int same = PyObject_IsInstance(other, reinterpret_cast<PyObject*>(type));
    if (same == 0) Py_RETURN_NOTIMPLEMENTED;
    if (same < 0) return nullptr;
    return class_compare(handle_of(self), handle_of(other), op);
}
