// Python's list surface over a managed list, on any table of list entries: the wrappers of lists,
// collection bases, arrays and array lists each supply their own ListEntries and thin slot functions.
#pragma once
#include <Python.h>

#include <cstdint>

#include "bridge/wrapper_object.h"
#include "interop/variant_marshal.h"

// Managed list entries, by role. Statuses: 0 done, 2 index out of range (Pop: 1 empty), any other
// value means that a Python exception is set. Entries whose result is not looked at are followed by
// PyErr_Occurred. A null entry marks an operation the table doesn't offer.
struct ListEntries {
    int32_t (*length)(InstanceHandle);
    int32_t (*contains)(InstanceHandle, VariantArg*);
    int32_t (*count_of)(InstanceHandle, VariantArg*);
    int32_t (*get_item)(InstanceHandle, int32_t, PyObject**);
    PyObject* (*get_item_no_check)(InstanceHandle, int32_t);
    int32_t (*set_item)(InstanceHandle, int32_t, VariantArg*);
    void (*set_item_no_check)(InstanceHandle, int32_t, VariantArg*);
    void (*add)(InstanceHandle, VariantArg*);
    void (*insert)(InstanceHandle, int32_t, VariantArg*);
    int32_t (*remove)(InstanceHandle, VariantArg*);
    int32_t (*remove_at)(InstanceHandle, int32_t);  // null: elements can't be removed
    int32_t (*pop)(InstanceHandle, int32_t argc, int32_t index, PyObject**);
    void (*clear)(InstanceHandle);
    int32_t (*inplace_concat)(InstanceHandle, InstanceArg*);
    void (*inplace_repeat)(InstanceHandle, int32_t);
    int32_t (*set_items)(InstanceHandle, InstanceArg*, int32_t start, int32_t count, int32_t step);
    void (*remove_items)(InstanceHandle, int32_t start, int32_t count, int32_t step);
    void (*reverse)(InstanceHandle);
    void (*sort)(InstanceHandle, int32_t reverse);
    int32_t (*index_by)(InstanceHandle, int32_t has_start, int32_t start, int32_t has_stop, int32_t stop,
                        VariantArg*);
    void (*ensure_capacity)(InstanceHandle, int32_t);  // null: no reservation before a bulk extend
};

// Fills `arg` when `object` is a wrapper (by its dealloc slot, then by the host mark); false otherwise.
bool fill_instance_arg(PyObject* object, InstanceArg* arg);

// Length and membership.
Py_ssize_t list_length(PyObject* self, const ListEntries& e);
PyObject* list_length_attr(PyObject* self, const ListEntries& e);
int list_sq_contains(PyObject* self, PyObject* value, const ListEntries& e);
PyObject* list_contains(PyObject* self, PyObject* value, const ListEntries& e);
PyObject* list_count(PyObject* self, PyObject* value, const ListEntries& e);

// Items and slices: index arithmetic here, bounds checks managed.
PyObject* list_item(PyObject* self, Py_ssize_t index, const ListEntries& e);
int list_ass_item(PyObject* self, Py_ssize_t index, PyObject* value, const ListEntries& e);
PyObject* list_subscript(PyObject* self, PyObject* key, const ListEntries& e);
int list_ass_subscript(PyObject* self, PyObject* key, PyObject* value, const ListEntries& e);

// Plain list results: concatenation, repetition, copy.
PyObject* list_concat(PyObject* self, PyObject* other, const ListEntries& e);
PyObject* list_repeat(PyObject* self, Py_ssize_t count, const ListEntries& e);
PyObject* list_copy(PyObject* self, const ListEntries& e);

// In-place operators: both return self.
PyObject* list_inplace_concat(PyObject* self, PyObject* other, const ListEntries& e);
PyObject* list_inplace_repeat(PyObject* self, Py_ssize_t count, const ListEntries& e);

// Methods, with the argument forms of list.
PyObject* list_append(PyObject* self, PyObject* value, const ListEntries& e);
PyObject* list_insert(PyObject* self, PyObject* args, const ListEntries& e);
PyObject* list_extend(PyObject* self, PyObject* other, const ListEntries& e);
PyObject* list_remove(PyObject* self, PyObject* value, const ListEntries& e);
PyObject* list_pop(PyObject* self, PyObject* args, const ListEntries& e);
PyObject* list_clear(PyObject* self, const ListEntries& e);
PyObject* list_index(PyObject* self, PyObject* args, const ListEntries& e);
PyObject* list_sort(PyObject* self, PyObject* args, PyObject* kwargs, const ListEntries& e);
PyObject* list_reverse(PyObject* self, const ListEntries& e);
