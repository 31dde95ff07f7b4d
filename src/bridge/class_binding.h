// Run-time pieces every generated class uses: its init status and gate, its converter and wrap function.
#pragma once
#include <Python.h>

#include <string>

#include "bridge/wrapper_object.h"
#include "host/entry_tables.h"

// Whether a class, and every class it refers to (base, interfaces), could be bound.
struct TypeInitStatus {
    bool failed = false;
    bool referenced = false;
    std::string error;
};

using StatusGetter = const TypeInitStatus& (*)();

// Status of a class from its own table and, in order, the statuses of the classes it refers to.
TypeInitStatus compute_status(const ClassEntryTableHeader& table, const StatusGetter* references, size_t count);

// Raises the status's TypeError (chained under "one or more refereced type is not initialized" when the
// failure lies in a referenced class). Returns false when the class can't be used.
bool pass_gate(const TypeInitStatus& status);
bool raise_status_error(const TypeInitStatus& status);

// tp_new of a class: the gate, then an empty wrapper with handle 0.
PyObject* gated_new(PyTypeObject* type, const TypeInitStatus& status, PyObject* args, PyObject* kwargs);

using IsAssignableByHandle = uint8_t (*)(InstanceHandle);
using IsAssignableByArg = uint8_t (*)(InstanceArg*);

// The class's btp_IsAssignableTo, fetched only when a converter needs it (binding the table on first
// use); null when the table failed, which counts as "not assignable".
using AssignableGetter = IsAssignableByHandle (*)();
using AssignableArgGetter = IsAssignableByArg (*)();

// ArgConverter bodies: exact type or subtype first, then any wrapper the managed side accepts.
int convert_class_handle(PyObject* object, InstanceHandle* out, PyTypeObject* type, AssignableGetter is_assignable);
int convert_interface_arg(PyObject* object, InstanceArg* out, PyTypeObject* type, AssignableArgGetter is_assignable);
int convert_struct_arg(PyObject* object, InstanceArg* out, PyTypeObject* type, AssignableGetter is_assignable);

// Wrap function of a class: None for 0, else a wrapper of exactly `type` (gate included).
PyObject* wrap_class_handle(InstanceHandle handle, PyTypeObject* type);

// `del obj.attribute` reaches a setter with no value: refused.
int refuse_attribute_delete();

// Last component of tp_name: the managed short name.
const char* short_name_of(PyTypeObject* type);

// Refusal texts, kept out of the converters' fast path.
int refuse_value(const char* type_name, PyObject* object);
