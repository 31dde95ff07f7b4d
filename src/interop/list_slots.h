// Slot functions, method tables and the type shape of a list wrapper, bound to one table of list entries.
#pragma once
#include <Python.h>

#include "interop/iteration_wrappers.h"
#include "interop/list_protocol.h"

// Entries is the getter of the type's ListEntries. A growable list has the methods and in-place
// operators that change its length; a fixed one (an array) has not.
template <const ListEntries& (*Entries)()>
struct ListSlots {
    static Py_ssize_t length(PyObject* self) { return list_length(self, Entries()); }
    static PyObject* concat(PyObject* self, PyObject* other) { return list_concat(self, other, Entries()); }
    static PyObject* repeat(PyObject* self, Py_ssize_t count) { return list_repeat(self, count, Entries()); }
    static PyObject* item(PyObject* self, Py_ssize_t i) { return list_item(self, i, Entries()); }
    static int ass_item(PyObject* self, Py_ssize_t i, PyObject* value) {
        return list_ass_item(self, i, value, Entries());
    }
    static int has(PyObject* self, PyObject* value) { return list_sq_contains(self, value, Entries()); }
    static PyObject* inplace_concat(PyObject* self, PyObject* other) {
        return list_inplace_concat(self, other, Entries());
    }
    static PyObject* inplace_repeat(PyObject* self, Py_ssize_t count) {
        return list_inplace_repeat(self, count, Entries());
    }
    static PyObject* subscript(PyObject* self, PyObject* key) { return list_subscript(self, key, Entries()); }
    static int ass_subscript(PyObject* self, PyObject* key, PyObject* value) {
        return list_ass_subscript(self, key, value, Entries());
    }

    static PyObject* append(PyObject* self, PyObject* value) { return list_append(self, value, Entries()); }
    static PyObject* insert(PyObject* self, PyObject* args) { return list_insert(self, args, Entries()); }
    static PyObject* extend(PyObject* self, PyObject* other) { return list_extend(self, other, Entries()); }
    static PyObject* remove(PyObject* self, PyObject* value) { return list_remove(self, value, Entries()); }
    static PyObject* pop(PyObject* self, PyObject* args) { return list_pop(self, args, Entries()); }
    static PyObject* clear(PyObject* self, PyObject*) { return list_clear(self, Entries()); }
    static PyObject* index(PyObject* self, PyObject* args) { return list_index(self, args, Entries()); }
    static PyObject* count(PyObject* self, PyObject* value) { return list_count(self, value, Entries()); }
    static PyObject* sort(PyObject* self, PyObject* args, PyObject* kwargs) {
        return list_sort(self, args, kwargs, Entries());
    }
    static PyObject* reverse(PyObject* self, PyObject*) { return list_reverse(self, Entries()); }
    static PyObject* copy(PyObject* self, PyObject*) { return list_copy(self, Entries()); }
    static PyObject* contains(PyObject* self, PyObject* value) { return list_contains(self, value, Entries()); }
    static PyObject* length_attr(PyObject* self, void*) { return list_length_attr(self, Entries()); }

    static constexpr int kGrowingMethods = 6;  // the head of `methods` that a fixed list leaves out
    static inline PyMethodDef methods[] = {
        {"append", append, METH_O, nullptr},
        {"insert", insert, METH_VARARGS, nullptr},
        {"extend", extend, METH_O, nullptr},
        {"remove", remove, METH_O, nullptr},
        {"pop", pop, METH_VARARGS, nullptr},
        {"clear", clear, METH_NOARGS, nullptr},
        {"index", index, METH_VARARGS, nullptr},
        {"count", count, METH_O, nullptr},
        {"sort", reinterpret_cast<PyCFunction>(reinterpret_cast<void*>(sort)), METH_VARARGS | METH_KEYWORDS, nullptr},
        {"reverse", reverse, METH_NOARGS, nullptr},
        {"copy", copy, METH_NOARGS, nullptr},
        {"contains", contains, METH_O, nullptr},
        {nullptr, nullptr, 0, nullptr}};
    static inline PyGetSetDef getset[] = {{"length", length_attr, nullptr, nullptr, nullptr},
                                          {nullptr, nullptr, nullptr, nullptr, nullptr}};
    static inline PySequenceMethods growable_sequence = {length, concat,  repeat,         item,          nullptr,
                                                         ass_item, nullptr, has, inplace_concat, inplace_repeat};
    static inline PySequenceMethods fixed_sequence = {length, concat, repeat, item,   nullptr,
                                                      ass_item, nullptr, has, nullptr, nullptr};
    static inline PyMappingMethods mapping = {length, subscript, ass_subscript};

    // The type over these entries, without its comparison and creation slots.
    static PyTypeObject type(const char* name, bool growable) {
        PyTypeObject t = iterable_type_shape(name);
        t.tp_as_sequence = growable ? &growable_sequence : &fixed_sequence;
        t.tp_as_mapping = &mapping;
        t.tp_methods = growable ? methods : methods + kGrowingMethods;
        t.tp_getset = getset;
        return t;
    }
};
