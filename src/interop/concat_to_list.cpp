// Concatenation into a plain list: lists and tuples are copied whole, sized sequences by position,
// anything else by iteration.
#include "interop/concat_to_list.h"

namespace {

[[gnu::cold]] PyObject* raise_value_error(const char* text) {
    PyErr_SetString(PyExc_ValueError, text);
    return nullptr;
}

PyObject* own_head(PyObject* self, Py_ssize_t n, Py_ssize_t extra, OwnElementsFill fill, const void* context) {
    PyObject* list = PyList_New(n + extra);
    if (list == nullptr) return nullptr;
    if (fill(self, list, n, context)) return list;
    Py_DECREF(list);
    return nullptr;
}

bool has_length_slot(PyObject* object) {
    PySequenceMethods* sequence = Py_TYPE(object)->tp_as_sequence;
    return sequence != nullptr && sequence->sq_length != nullptr;
}

PyObject* append_iterated(PyObject* list, PyObject* other) {
    PyObject* iterator = PyObject_GetIter(other);
    if (iterator == nullptr) {
        Py_DECREF(list);
        return PyErr_Occurred() ? nullptr : raise_value_error("argument must be iterable");
    }
    PyObject* item;
    while ((item = PyIter_Next(iterator)) != nullptr) {
        const int appended = PyList_Append(list, item);
        Py_DECREF(item);
        if (appended < 0) break;
    }
    Py_DECREF(iterator);
    if (PyErr_Occurred()) Py_CLEAR(list);
    return list;
}

}  // namespace

PyObject* concat_to_list(PyObject* self, Py_ssize_t n, PyObject* other, OwnElementsFill fill, const void* context) {
    if (PyList_CheckExact(other) || PyTuple_CheckExact(other)) {
        PyObject* fast = PySequence_Fast(other, "argument must be iterable");
        if (fast == nullptr) return nullptr;
        const Py_ssize_t m = PySequence_Fast_GET_SIZE(fast);
        PyObject* list = own_head(self, n, m, fill, context);
        if (list != nullptr) {
            PyObject** items = PySequence_Fast_ITEMS(fast);
            for (Py_ssize_t k = 0; k < m; ++k) PyList_SET_ITEM(list, n + k, Py_NewRef(items[k]));
        }
        Py_DECREF(fast);
        return list;
    }
    if (PySequence_Check(other) && has_length_slot(other)) {
        const Py_ssize_t m = PySequence_Size(other);
        if (m < 0) return nullptr;
        PyObject* list = own_head(self, n, m, fill, context);
        if (list == nullptr) return nullptr;
        for (Py_ssize_t k = 0; k < m; ++k) {
            PyObject* item = PySequence_GetItem(other, k);
            if (item == nullptr) {
                Py_DECREF(list);
                return nullptr;
            }
            PyList_SET_ITEM(list, n + k, item);
        }
        return list;
    }
    if (Py_TYPE(other)->tp_iter == nullptr && !PySequence_Check(other))
        return raise_value_error("argument must be iterable or sequence");
    PyObject* list = own_head(self, n, 0, fill, context);
    return list == nullptr ? nullptr : append_iterated(list, other);
}
