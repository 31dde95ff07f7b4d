// _IterableWrapper and _IterWrapper: Python iteration over a managed enumerable, through the tables
// SiApiEnumerable (GetEnumerator) and SiApiEnumerator (MoveNext).
#pragma once
#include <Python.h>

#include "bridge/class_binding.h"

extern PyTypeObject Interop_IterableWrapper_Type;
extern PyTypeObject Interop_IterWrapper_Type;

const TypeInitStatus& Interop_IterableWrapper_status();
const TypeInitStatus& Interop_IterWrapper_status();

// tp_iter of every collection type: a new enumerator, wrapped as _IterWrapper (or a registered subtype).
PyObject* iterable_iter(PyObject* self);

// The shape of every collection type: the common wrapper shape, iterated through iterable_iter.
PyTypeObject iterable_type_shape(const char* name);

// Result wrapping with a default type: None for 0; the registered type of the managed object when it
// is a subtype of `default_type`, else `default_type`. The handle is given back on failure.
PyObject* wrap_with_default(InstanceHandle handle, PyTypeObject* default_type);
