// Rows of the iteration, containers, lists and sequences callback groups: Python lists, sequences and
// iterators as managed collections see them. Results: 0 or a count on success, -1 with an exception set,
// -2 with an IndexError pending where an index can miss. An item marked stolen is released on all paths.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>

#include "host/entry_tables.h"
#include "interop/variant_marshal.h"

// Group iteration: 0 with a new reference in *item and the variant filled; 1 exhausted; 2 failed.
int32_t iteration_next(PyObject* iterator, PyObject** item, VariantArg* out);

// Group containers.
Py_ssize_t container_list_size(PyObject* list);
int32_t container_list_pop(PyObject* list, int32_t index);  // the popped item is dropped
int32_t container_list_clear(PyObject* list);
Py_ssize_t container_sequence_size(PyObject* sequence);
PyObject* container_iterator(PyObject* object);  // TypeError "No iterator in '%s'" without a usable next
Py_ssize_t container_object_size(PyObject* object);
// A new list of `count` empty places into *list; the result is its item array, filled with list_store.
PyObject** container_new_list32(int32_t count, PyObject** list);
PyObject** container_new_list64(int64_t count, PyObject** list);

// Group lists.
int32_t list_get(PyObject* list, int32_t index, VariantArg* out);  // the item stays borrowed
int32_t list_set(PyObject* list, int32_t index, PyObject* item);
Py_ssize_t list_append(PyObject* list, PyObject* item);  // the new size
int32_t list_insert(PyObject* list, int32_t index, PyObject* item);
int32_t list_remove(PyObject* list, PyObject* item);     // ValueError stays pending
int32_t list_contains(PyObject* list, PyObject* item);   // 1 found, 0 not found, -1
int32_t list_index(PyObject* list, PyObject* item);      // the index, -1 not found, -2 failed
int32_t list_store(PyObject** items, int32_t index, PyObject* object);  // no bounds test
PyObject* list_wrap_ilist(InstanceHandle handle);
PyObject* list_wrap_array_list(InstanceHandle handle);
PyObject* list_wrap_array(InstanceHandle handle);

// Group sequences. sequence_get hands the item's new reference over with the variant; for a wrapper
// (codes 1 and 2, where the variant holds the handle) the sequence itself keeps the wrapper alive and the
// reference is dropped here.
int32_t sequence_get(PyObject* sequence, int32_t index, VariantArg* out);
int32_t sequence_contains(PyObject* sequence, PyObject* item);  // 1, 0, -1
int32_t sequence_index(PyObject* sequence, PyObject* item);     // the index, -1 not found, -2 failed
