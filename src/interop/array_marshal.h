// Array arguments: the ArrayArg record and the converter behind every typed-array parameter.
#pragma once
#ifndef PY_SSIZE_T_CLEAN
#define PY_SSIZE_T_CLEAN
#endif
#include <Python.h>

#include <cstdint>

#include "bridge/class_binding.h"
#include "generated_wire_records.h"

enum ArrayArgKind : int32_t { kArrayHandle = 0, kArrayList = 2, kArraySequence = 3 };

// In order: None; an instance of `own_type` (null for an instantiation without a Python type); any other
// wrapper that the instantiation's IsAssignableTo accepts; a list or list subclass; a sequence with a
// length. Anything else: TypeError "can't build Array value from '%s'". 1, or 0 with the error set.
int convert_array_arg(PyObject* object, ArrayArg* out, PyTypeObject* own_type, AssignableGetter is_assignable);

// Element readers of PointF and RectangleF arrays: the float value, or its integer counterpart widened
// to it, as managed code converts them implicitly. A list of Points thus works with the PointF[]
// overload that comes first. Anything else is refused with the float type's text.
int convert_pointf_element(PyObject* object, void* out);
int convert_rectanglef_element(PyObject* object, void* out);
