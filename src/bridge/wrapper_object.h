// The wrapper object: a Python object that holds one handle of a managed object, and its two slot families.
#pragma once
#include <Python.h>

#include "host/entry_tables.h"
#include "generated_wire_records.h"

// State a few wrapper types attach to their objects (the locked pixels of a BitmapData); most have none.
struct WrapperExtras {
    void (*release)(WrapperExtras* extras);  // from dealloc, under the interpreter lock
};

struct WrapperObject {
    PyObject_HEAD
    InstanceHandle handle;
    WrapperExtras* extras;
    PyObject* partner;     // an object this one works on (the Image of a Graphics): kept alive, and in use with it
    PyThreadState* user;   // the thread inside a call on this object, or null
    int32_t depth;         // that thread's nested calls on it
    int32_t waiters;       // threads waiting for it to be free
};

enum InstanceKind : int32_t { kInstanceClass = 0, kInstanceStruct = 1 };

inline InstanceHandle handle_of(PyObject* wrapper) { return reinterpret_cast<WrapperObject*>(wrapper)->handle; }

// Class family: managed classes, interfaces and the interop wrappers.
void class_dealloc(PyObject* self);
Py_hash_t class_hash(PyObject* self);
PyObject* class_repr(PyObject* self);
PyObject* class_compare(InstanceHandle a, InstanceHandle b, int op);

// Struct family: managed structs held by handle.
void struct_dealloc(PyObject* self);
Py_hash_t struct_hash(PyObject* self);
PyObject* struct_repr(PyObject* self);
PyObject* struct_compare(InstanceHandle a, InstanceHandle b, int op);

// tp_init of every type without a public constructor.
int no_constructor_init(PyObject* self, PyObject* args, PyObject* kwargs);

// __enter__ / __exit__ and dispose() over the managed IDisposable; dispose() is what leaving a `with`
// block does, for objects whose lifetime is not one block.
PyObject* wrapper_enter(PyObject* self, PyObject* unused);
PyObject* wrapper_exit(PyObject* self, PyObject* args);
PyObject* wrapper_dispose(PyObject* self, PyObject* unused);
// Asked before every dispose: false, with an exception set, keeps the object as it is (memory of it
// is still lent out). The layer that lends such memory installs it.
using DisposeGuard = bool (*)(PyObject* self);
void set_dispose_guard(DisposeGuard guard);
#define WRAPPER_CONTEXT_METHODS                                                                          \
    {"__enter__", (PyCFunction)wrapper_enter, METH_NOARGS, "__enter__($self, /)\n--\n\nReturns the object itself."}, \
    {"__exit__", (PyCFunction)wrapper_exit, METH_VARARGS,                                                \
     "__exit__($self, exc_type, exc_value, traceback, /)\n--\n\nDisposes the managed object (IDisposable.Dispose)."}, \
    {"dispose", (PyCFunction)wrapper_dispose, METH_NOARGS,                                               \
     "dispose($self, /)\n--\n\nReleases the managed object's native resources now, as leaving a `with` block does "  \
     "(IDisposable.Dispose). Calling it again does nothing."}

// Recognition of wrappers: by this module's slot functions, by the host mark of any wrapper type.
bool recognise_by_slot(PyObject* object, int32_t* kind);
bool recognise_by_mark(PyObject* object, int32_t* kind);
bool is_wrapper(PyObject* object);

// A new empty wrapper of `type` (tp_new with null arguments, so the type's gate runs) holding `handle`.
// On failure the handle is given back and null returned.
PyObject* wrap_exact(InstanceHandle handle, PyTypeObject* type);
