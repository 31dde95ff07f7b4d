// Methods written in Python: a generated method row that forwards to a function of the package.
#pragma once
#include <Python.h>

// Calls `module.function(first, *args, **kwargs)`; the module is imported on first use.
PyObject* call_python_method(const char* module, const char* function, PyObject* first, PyObject* args,
                             PyObject* kwargs);
