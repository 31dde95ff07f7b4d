// Class-level descriptors of generated types: computed static fields, mixed static/instance methods, method objects.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

// "orvane.pyfigura._FieldDescrType": a read-only static member whose getter runs on every access,
// through the type and through an instance alike. Readied and added to the root module by name.
extern PyTypeObject FieldDescrType;

// "orvane.pyfigura._MixMethodDescrType": one name that is a static method on the type and an
// instance method on an instance. Readied and added to the root module by name.
extern PyTypeObject MixMethodDescrType;

// "orvane.pyfigura._MethodObjectType": a callable made from one method row, bound to an instance
// or not. Not added to any module; make_method_object readies it the first time it makes one.
extern PyTypeObject MethodObjectType;

// New _FieldDescrType object over a static getter row (getter only; it is called with a null
// object and the row's closure). Holds a reference to `owner`; tracked by the collector.
// Null with an exception set on failure.
PyObject* make_field_descriptor(PyTypeObject* owner, PyGetSetDef* definition);

// New _MixMethodDescrType object. `static_definition` (METH_VARARGS | METH_KEYWORDS, with or
// without METH_STATIC) gives the method object handed out through the type, made here once;
// `instance_definition` gives a new bound method object on each access through an instance.
// Null with an exception set on failure.
PyObject* make_mix_descriptor(PyTypeObject* owner, PyMethodDef* static_definition,
                              PyMethodDef* instance_definition);

// New _MethodObjectType object for `definition`, bound to `self` when it isn't null. A row with
// METH_NOARGS gets the no-arguments caller, any other row the keywords caller. Holds references
// to `owner` and `self`; tracked by the collector. Null with an exception set on failure.
PyObject* make_method_object(PyTypeObject* owner, PyMethodDef* definition, PyObject* self);

// Stores `descriptor` (stolen; may be null after a failed creation) under `name` in the type's own
// dictionary and tells the type that its dictionary changed. On failure raises the start-up
// failure -1020 with the type's and the attribute's name, drops `descriptor` and returns -1;
// 0 on success.
int install_class_attribute(PyTypeObject* type, const char* name, PyObject* descriptor);
