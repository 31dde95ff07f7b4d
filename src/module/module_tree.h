// Builds the package tree: the root with its five sub-modules, and the hidden _wrpgen package.
#pragma once
#include <Python.h>

// New reference to the complete root module, or null with an exception set.
PyObject* create_root_module();

// Creates _wrpgen with _interop and _generic and adds it to the root. 0, or -1 with an exception set.
int create_wrpgen_module(PyObject* root);

// PyType_Ready, then add under `name` (-1015 / -1014 on failure). 0 or -1.
int ready_and_add_type(PyObject* module, PyTypeObject* type, const char* name);
