// Slot functions shared by all wrapper types: dealloc, hash, repr, equality; recognition of wrappers.
#include "bridge/wrapper_object.h"

#include "bridge/fork_guard.h"
#include "bridge/object_use.h"
#include "common/interned_names.h"

namespace {

Py_hash_t finish_hash(int32_t value) {
    if (PyErr_Occurred()) return -1;
    return value == -1 ? -2 : static_cast<Py_hash_t>(value);
}

// Printing runs while exceptions are formatted: a pending exception is set aside around the call,
// and a failure of our own is reported as unraisable so that the one in hand survives.
PyObject* repr_through(PyObject* self, int32_t (*to_string)(InstanceHandle, PyObject**)) {
    PyObject *saved_type = nullptr, *saved_value = nullptr, *saved_tb = nullptr;
    bool had_error = PyErr_Occurred() != nullptr;
    if (had_error) PyErr_Fetch(&saved_type, &saved_value, &saved_tb);
    PyObject* text = nullptr;
    PyObject* result;
    if (!host::in_forked_child() && to_string(handle_of(self), &text) == 1) {
        result = text;
    } else if (PyErr_Occurred()) {
        result = nullptr;
    } else {
        result = PyUnicode_FromFormat("<%s object at %p>", Py_TYPE(self)->tp_name, self);
    }
    if (!had_error) return result;
    if (PyErr_Occurred()) PyErr_WriteUnraisable(interned(InternedName::FormatCallbackException));
    PyErr_Restore(saved_type, saved_value, saved_tb);
    return result;
}

PyObject* compare_through(InstanceHandle a, InstanceHandle b, int op,
                          uint8_t (*is_equal)(InstanceHandle, InstanceHandle)) {
    if (op != Py_EQ && op != Py_NE) Py_RETURN_NOTIMPLEMENTED;
    REFUSE_IN_FORKED_CHILD(nullptr);
    bool equal;
    if (a == b) {
        equal = true;
    } else {
        uint8_t answer = is_equal(a, b);
        if (PyErr_Occurred()) return nullptr;
        equal = answer != 0;
    }
    return PyBool_FromLong(op == Py_EQ ? equal : !equal);
}

}  // namespace

void class_dealloc(PyObject* self) {
    WrapperObject* w = reinterpret_cast<WrapperObject*>(self);
    if (w->extras != nullptr) {
        WrapperExtras* extras = w->extras;
        w->extras = nullptr;
        extras->release(extras);
    }
    Py_CLEAR(w->partner);
    // In a forked child the handle belongs to the parent's runtime: the wrapper just goes.
    if (w->handle != 0 && !host::in_forked_child()) {
        exchange_host().FreeInstance(w->handle);
        w->handle = 0;
    }
    Py_TYPE(self)->tp_free(self);
}

void struct_dealloc(PyObject* self) {
    WrapperObject* w = reinterpret_cast<WrapperObject*>(self);
    // In a forked child the handle belongs to the parent's runtime: the wrapper just goes.
    if (w->handle != 0 && !host::in_forked_child()) {
        exchange_host().FreeStructInstance(w->handle);
        w->handle = 0;
    }
    Py_TYPE(self)->tp_free(self);
}

Py_hash_t class_hash(PyObject* self) {
    REFUSE_IN_FORKED_CHILD(-1);
    return finish_hash(object_host().GetHashOfObj(handle_of(self)));
}
Py_hash_t struct_hash(PyObject* self) {
    REFUSE_IN_FORKED_CHILD(-1);
    return finish_hash(object_host().GetHashOfStc(handle_of(self)));
}

PyObject* class_repr(PyObject* self) { return repr_through(self, object_host().ToStringOfObj); }
PyObject* struct_repr(PyObject* self) { return repr_through(self, object_host().ToStringOfStc); }

PyObject* class_compare(InstanceHandle a, InstanceHandle b, int op) {
    return compare_through(a, b, op, object_host().IsEqualsOfObj);
}
PyObject* struct_compare(InstanceHandle a, InstanceHandle b, int op) {
    return compare_through(a, b, op, object_host().IsEqualsOfStc);
}

int no_constructor_init(PyObject*, PyObject*, PyObject*) {
    PyErr_SetString(PyExc_TypeError, "type has no available constructor");
    return -1;
}

PyObject* wrapper_enter(PyObject* self, PyObject*) {
    Py_INCREF(self);
    return self;
}

namespace {
DisposeGuard g_dispose_guard = nullptr;
}

void set_dispose_guard(DisposeGuard guard) { g_dispose_guard = guard; }

PyObject* wrapper_exit(PyObject* self, PyObject*) {
    REFUSE_IN_FORKED_CHILD(nullptr);
    ObjectUse use(self);  // not while another thread draws with it
    if (g_dispose_guard != nullptr && !g_dispose_guard(self)) return nullptr;
    if (!dispose_dependents(self)) return nullptr;
    object_host().Dispose(handle_of(self));
    if (PyErr_Occurred()) return nullptr;
    Py_RETURN_NONE;
}

PyObject* wrapper_dispose(PyObject* self, PyObject*) {
    return wrapper_exit(self, nullptr);
}

bool recognise_by_slot(PyObject* object, int32_t* kind) {
    destructor dealloc = Py_TYPE(object)->tp_dealloc;
    if (dealloc == class_dealloc) {
        *kind = kInstanceClass;
        return true;
    }
    if (dealloc == struct_dealloc) {
        *kind = kInstanceStruct;
        return true;
    }
    return false;
}

bool recognise_by_mark(PyObject* object, int32_t* kind) {
    PyObject* dict = Py_TYPE(object)->tp_dict;
    if (dict == nullptr) return false;
    PyObject* mark = PyDict_GetItem(dict, interned(InternedName::OrvaneClrHost));
    if (mark == Py_None) {
        *kind = kInstanceClass;
        return true;
    }
    if (mark == Py_Ellipsis) {
        *kind = kInstanceStruct;
        return true;
    }
    return false;
}

bool is_wrapper(PyObject* object) {
    PyObject* dict = Py_TYPE(object)->tp_dict;
    if (dict == nullptr) return false;
    int found = PyDict_Contains(dict, interned(InternedName::OrvaneClrHost));
    if (found < 0) {
        PyErr_Clear();
        return false;
    }
    return found == 1;
}

PyObject* wrap_exact(InstanceHandle handle, PyTypeObject* type) {
    PyObject* wrapper = type->tp_new(type, nullptr, nullptr);
    if (wrapper == nullptr) {
        exchange_host().FreeInstance(handle);
        return nullptr;
    }
    reinterpret_cast<WrapperObject*>(wrapper)->handle = handle;
    return wrapper;
}
