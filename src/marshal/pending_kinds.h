// Converters of the kinds whose marshalling is not bound yet: the native value types. They refuse
// with a clear TypeError, so that every class exists whole and no such call reaches managed code.
#pragma once
#include <Python.h>

int convert_pending_value(PyObject* object, void* out);
