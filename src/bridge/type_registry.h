// Managed type names and type keys to Python wrapper types.
#pragma once
#include <Python.h>

#include <string>

// Enters (or overwrites) a managed full name; holds no reference: wrapper types are static.
void registry_register(const char16_t* managed_name, PyTypeObject* type);

// The type registered under a name, or null.
PyTypeObject* registry_find_name(const std::u16string& managed_name);
