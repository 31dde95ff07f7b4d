// Raising functions of the start-up failure family and the chained raise they share.
#include "common/init_failures.h"

#include <cstdarg>

namespace {

void chain_and_raise_v(PyObject* type, const char* format, va_list arguments) {
    PyObject *old_type, *old_value, *old_traceback;
    PyErr_Fetch(&old_type, &old_value, &old_traceback);
    PyErr_NormalizeException(&old_type, &old_value, &old_traceback);
    if (old_traceback != nullptr) {
        // The traceback would otherwise be lost with the fetched triple.
        if (old_value != nullptr) {
            PyException_SetTraceback(old_value, old_traceback);
        }
        Py_DECREF(old_traceback);
    }
    Py_XDECREF(old_type);

    PyErr_FormatV(type, format, arguments);

    PyObject *new_type, *new_value, *new_traceback;
    PyErr_Fetch(&new_type, &new_value, &new_traceback);
    PyErr_NormalizeException(&new_type, &new_value, &new_traceback);
    if (new_value != nullptr) {
        // Each setter consumes one reference: the fetched one and one more.
        Py_XINCREF(old_value);
        PyException_SetCause(new_value, old_value);
        PyException_SetContext(new_value, old_value);
    } else {
        Py_XDECREF(old_value);
    }
    PyErr_Restore(new_type, new_value, new_traceback);
}

// The family's common rule: chain only when something is pending.
void raise_import_error(const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    if (PyErr_Occurred()) {
        chain_and_raise_v(PyExc_ImportError, format, arguments);
    } else {
        PyErr_FormatV(PyExc_ImportError, format, arguments);
    }
    va_end(arguments);
}

}  // namespace

void chain_and_raise(PyObject* type, const char* format, ...) {
    va_list arguments;
    va_start(arguments, format);
    chain_and_raise_v(type, format, arguments);
    va_end(arguments);
}

void raise_load_failure(const char* module, int code) {
    raise_import_error("One or more errors occurred while loading the module '%s' (%i)", module, code);
}

void raise_module_failure(int code, const char* name) {
    raise_import_error("Module initialization internal error (%i) <%s>", code, name);
}

void raise_module_failure(int code, const char* first, const char* second) {
    raise_import_error("Module initialization internal error (%i) <%s,%s>", code, first, second);
}

void raise_type_failure(int code, const char* name) {
    raise_import_error("Type initialization internal error (%i) <%s>", code, name);
}

void raise_type_failure(int code, const char* first, const char* second) {
    raise_import_error("Type initialization internal error (%i) <%s,%s>", code, first, second);
}

void raise_dependency_failure(const char* module) {
    raise_import_error(
        "Unable to import module dependencies. Cannot import the %s module. "
        "The module not found or errors occurred while initializing it.",
        module);
}

void raise_import_failure(const char* module) {
    raise_import_error(
        "Unable to import the specified module %s. "
        "The module not found or errors occurred while initializing it.",
        module);
}

void raise_attribute_failure(PyObject* attribute, const char* module) {
    raise_import_error(
        "Unable to import the specified type %U from the module %s. "
        "The type not found or errors occurred while initializing it.",
        attribute, module);
}

void raise_enum_failure(const char* message, const char* enum_full_name) {
    PyErr_SetString(PyExc_TypeError, message);
    chain_and_raise(PyExc_ImportError, "enum type '%s' is not initialized", enum_full_name);
}
