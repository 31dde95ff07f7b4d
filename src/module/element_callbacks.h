// The element readers of the generic callback table: one list element or sequence element converted
// by the argument converter of its kind. Results: 0 done, -1 conversion failed, -2 IndexError pending.
// The kinds and their order come from api/callbacks.json (the generated callback tables).
#pragma once
#include <Python.h>

#include <cstdint>

#include "marshal/buffer_marshal.h"

using ElementConverter = int (*)(PyObject*, void*);

// -2 when the failed lookup left an IndexError, else -1.
int32_t element_lookup_failure();

// List half: the element is borrowed from the list.
template <ElementConverter Convert>
int32_t list_element(PyObject* list, int32_t index, void* out) {
    PyObject* item = PyList_GetItem(list, index);
    if (item == nullptr) return element_lookup_failure();
    return Convert(item, out) == 1 ? 0 : -1;
}

// Sequence half: the element is handed to the caller in *held, whose output may point into it.
template <ElementConverter Convert>
int32_t sequence_element(PyObject* sequence, int32_t index, PyObject** held, void* out) {
    PyObject* item = PySequence_GetItem(sequence, index);
    if (item == nullptr) return element_lookup_failure();
    if (Convert(item, out) != 1) {
        Py_DECREF(item);
        return -1;
    }
    *held = item;
    return 0;
}

// Byte arrays have two outputs: the Py_buffer record and its BufferArg.
int32_t list_byte_array(PyObject* list, int32_t index, Py_buffer* view, BufferArg* arg);
int32_t sequence_byte_array(PyObject* sequence, int32_t index, PyObject** held, Py_buffer* view, BufferArg* arg);
