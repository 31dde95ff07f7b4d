// The read-only collection protocol over SiApiCntCollection: _IColWrapper, _RoColBaseWrapper, and the
// slots and methods that the generated collection classes reuse.
#pragma once
#include <Python.h>

#include "bridge/class_binding.h"
#include "interop/list_protocol.h"

extern PyTypeObject Interop_IColWrapper_Type;
extern PyTypeObject Interop_RoColBaseWrapper_Type;

const TypeInitStatus& Interop_IColWrapper_status();
const TypeInitStatus& Interop_RoColBaseWrapper_status();

// Length, membership and counting of SiApiCntCollection; the other roles are empty. Bound on first use.
const ListEntries& collection_entries();

// The entries of a collection class's item reads: its own SqGetItem and SqGetItemNoCheck pair over
// the length of SiApiCntCollection.
ListEntries collection_item_entries(void* sq_get_item, void* sq_get_item_no_check);

// Slots and methods of the protocol. Concatenation, repetition and copy walk the enumerator and give lists.
Py_ssize_t collection_length(PyObject* self);
int collection_sq_contains(PyObject* self, PyObject* value);
PyObject* collection_concat(PyObject* self, PyObject* other);
PyObject* collection_repeat(PyObject* self, Py_ssize_t count);
PyObject* collection_count(PyObject* self, PyObject* value);      // METH_O
PyObject* collection_copy(PyObject* self, PyObject* unused);      // METH_NOARGS
PyObject* collection_contains(PyObject* self, PyObject* value);   // METH_O
PyObject* collection_length_attr(PyObject* self, void* closure);  // getter of `length`

// The protocol's sequence table with `item` as sq_item (null for none).
PySequenceMethods collection_sequence_methods(ssizeargfunc item);
