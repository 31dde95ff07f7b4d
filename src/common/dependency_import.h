// Imports of sister modules under a version check, and of single attributes of standard modules.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include "common/version_object.h"

// New reference to the dependency, accepted when its threshold <= reference <= its VERSION;
// otherwise null with ImportError set. `module_name` is the importer, named in one message.
PyObject* import_versioned_dependency(const char* module_name, const char* dependency_name,
                                      const VersionNumbers& reference);

// New reference to `module_name`.`attribute` (an interned str), or null with ImportError set.
PyObject* import_attribute(const char* module_name, PyObject* attribute);
