// Managed type names and type keys to Python wrapper types, and the wrapping of results by key.
#pragma once
#include <Python.h>

#include <string>

#include "host/entry_tables.h"
#include "generated_wire_records.h"

// Enters (or overwrites) a managed full name; holds no reference: wrapper types are static.
void registry_register(const char16_t* managed_name, PyTypeObject* type);

// The type registered under a name, or null.
PyTypeObject* registry_find_name(const std::u16string& managed_name);

// Python type of the managed object behind a handle, by its managed name (no key to cache it by).
PyTypeObject* registry_find_by_handle(InstanceHandle handle);

// Python type of the managed object behind a handle; one name lookup per type key, then cached.
PyTypeObject* registry_find_by_key(InstanceHandle handle, TypeKey key);
PyTypeObject* registry_find_by_typed_handle(const TypedHandle* typed);

// Wrapper of the registered type; on a miss the handle is given back and TypeError "unknown wrapper type".
PyObject* wrap_by_key(InstanceHandle handle, TypeKey key);
// As above without raising: 1 wrapped into *out, -1 wrapping failed, 0 no type (handle given back).
int32_t wrap_by_key_quiet(InstanceHandle handle, TypeKey key, PyObject** out);
// Interface results: the most derived registered class when it converts implicitly, else `declared`.
PyObject* wrap_typed(const TypedHandle* typed, PyTypeObject* declared);

