// Init statuses, the construction gate, converters and wrap functions of generated classes.
#include "bridge/class_binding.h"

#include "bridge/fork_guard.h"
#include "common/init_failures.h"
#include "common/interned_names.h"

TypeInitStatus compute_status(const ClassEntryTableHeader& table, const StatusGetter* references, size_t count) {
    TypeInitStatus status;
    if (table.failed) {
        status.failed = true;
        status.error = table.error_text;
        return status;
    }
    for (size_t i = 0; i < count; ++i) {
        const TypeInitStatus& other = references[i]();
        if (other.failed) {
            status.failed = true;
            status.referenced = true;
            status.error = other.error;
            return status;
        }
    }
    return status;
}

bool raise_status_error(const TypeInitStatus& status) {
    PyErr_SetString(PyExc_TypeError, status.error.c_str());
    if (status.referenced) chain_and_raise(PyExc_TypeError, "one or more refereced type is not initialized");
    return false;
}

bool pass_gate(const TypeInitStatus& status) {
    REFUSE_IN_FORKED_CHILD(false);
    return !status.failed || raise_status_error(status);
}

PyObject* gated_new(PyTypeObject* type, const TypeInitStatus& status, PyObject* args, PyObject* kwargs) {
    REFUSE_IN_FORKED_CHILD(nullptr);
    if (status.failed) {
        raise_status_error(status);
        return nullptr;
    }
    PyObject* self = PyType_GenericNew(type, args, kwargs);
    if (self != nullptr) reinterpret_cast<WrapperObject*>(self)->handle = 0;
    return self;
}

const char* short_name_of(PyTypeObject* type) {
    const char* name = type->tp_name;
    for (const char* p = type->tp_name; *p; ++p)
        if (*p == '.') name = p + 1;
    return name;
}

int refuse_value(const char* type_name, PyObject* object) {
    PyErr_Format(PyExc_TypeError, "can't build %s value from '%s'", type_name, Py_TYPE(object)->tp_name);
    return 0;
}

int convert_class_handle(PyObject* object, InstanceHandle* out, PyTypeObject* type, AssignableGetter is_assignable) {
    if (object == Py_None) {
        *out = 0;
        return 1;
    }
    if (Py_TYPE(object) == type || PyType_IsSubtype(Py_TYPE(object), type)) {
        *out = handle_of(object);
        return 1;
    }
    int32_t kind;
    IsAssignableByHandle assignable;
    if (recognise_by_mark(object, &kind) && (assignable = is_assignable()) != nullptr) {
        InstanceHandle handle = handle_of(object);
        uint8_t answer = assignable(handle);
        if (PyErr_Occurred()) return 0;
        if (answer != 0) {
            *out = handle;
            return 1;
        }
    }
    return refuse_value(short_name_of(type), object);
}

int convert_interface_arg(PyObject* object, InstanceArg* out, PyTypeObject* type, AssignableArgGetter is_assignable) {
    if (object == Py_None) {
        out->kind = kInstanceClass;
        out->handle = 0;
        return 1;
    }
    if (Py_TYPE(object) == type) {
        out->kind = kInstanceClass;
        out->handle = handle_of(object);
        return 1;
    }
    int32_t kind;
    if (recognise_by_slot(object, &kind)) {
        PyObject* interfaces =
            PyDict_GetItem(Py_TYPE(object)->tp_dict, interned(InternedName::AdditionalInterfaces));
        if (interfaces != nullptr && PySet_Check(interfaces)) {
            int contains = PySet_Contains(interfaces, reinterpret_cast<PyObject*>(type));
            if (contains < 0) PyErr_Clear();
            if (contains == 1) {
                out->kind = kind;
                out->handle = handle_of(object);
                return 1;
            }
        }
    }
    IsAssignableByArg assignable;
    if (recognise_by_mark(object, &kind) && (assignable = is_assignable()) != nullptr) {
        out->kind = kind;
        out->handle = handle_of(object);
        uint8_t answer = assignable(out);
        if (PyErr_Occurred()) return 0;
        if (answer != 0) return 1;
    }
    return refuse_value(short_name_of(type), object);
}

int convert_struct_arg(PyObject* object, InstanceArg* out, PyTypeObject* type, AssignableGetter is_assignable) {
    if (Py_TYPE(object) == type) {
        out->kind = kInstanceStruct;
        out->handle = handle_of(object);
        return 1;
    }
    int32_t kind;
    IsAssignableByHandle assignable;
    if (object != Py_None && recognise_by_mark(object, &kind) && (assignable = is_assignable()) != nullptr) {
        out->kind = kind;
        out->handle = handle_of(object);
        uint8_t answer = assignable(out->handle);
        if (PyErr_Occurred()) return 0;
        if (answer != 0) return 1;
    }
    return refuse_value(short_name_of(type), object);
}

PyObject* wrap_class_handle(InstanceHandle handle, PyTypeObject* type) {
    if (handle == 0) Py_RETURN_NONE;
    return wrap_exact(handle, type);
}

int refuse_attribute_delete() {
    PyErr_SetString(PyExc_TypeError, "can't delete attribute");
    return -1;
}
