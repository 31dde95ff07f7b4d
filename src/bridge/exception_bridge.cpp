// Proxy errors raised for managed exceptions, and Python exceptions turned into text for managed code.
#include "bridge/exception_bridge.h"

#include "common/init_failures.h"
#include "common/interned_names.h"

namespace {

// Name of an exception type: its __qualname__ when that is a str, else str(type).
PyObject* exception_type_name(PyObject* type) {
    PyObject* name = PyObject_GetAttr(type, interned(InternedName::Qualname));
    if (name != nullptr && PyUnicode_Check(name)) {
        return name;
    }
    Py_XDECREF(name);
    PyErr_Clear();
    return PyObject_Str(type);
}

// Traceback text of `traceback` only when it reads empty; null (short form) when it has text.
// Failing to take its str also selects the long form, with no text for that part.
bool wants_long_form(PyObject* traceback, PyObject** text) {
    *text = PyObject_Str(traceback);
    const bool has_text = *text != nullptr && PyUnicode_GET_LENGTH(*text) > 0;
    if (PyErr_Occurred()) {
        PyErr_Clear();
        return true;
    }
    return !has_text;
}

// The module traceback's formatting joined to one str, or null (an exception may then be pending).
PyObject* format_with_traceback_module(PyObject* type, PyObject* value, PyObject* traceback) {
    PyObject* module = PyImport_ImportModule("traceback");
    if (module == nullptr) {
        if (!PyErr_Occurred()) {
            raise_import_failure("traceback");
        }
        return nullptr;
    }
    const InternedName which = traceback != nullptr ? InternedName::FormatException
                                                    : InternedName::FormatExceptionOnly;
    PyObject* function = PyObject_GetAttr(module, interned(which));
    PyObject* lines = nullptr;
    if (function != nullptr && PyCallable_Check(function)) {
        lines = traceback != nullptr ? PyObject_CallFunctionObjArgs(function, type, value, traceback, nullptr)
                                     : PyObject_CallFunctionObjArgs(function, type, value, nullptr);
    }
    Py_XDECREF(function);
    PyObject* text = lines != nullptr ? PyUnicode_Join(interned(InternedName::Empty), lines) : nullptr;
    Py_XDECREF(lines);
    Py_DECREF(module);
    return text;
}

// Exposes `text` into `view_out` and hands it to `text_out`; drops it when it can't be exposed.
bool deliver_text(PyObject* text, PyObject** text_out, StringArg* view_out) {
    if (!expose_string(text, view_out)) {
        Py_DECREF(text);
        return false;
    }
    *text_out = text;
    return true;
}

}  // namespace

void raise_proxy_error(PyObject* type_name, PyObject* message) {
    PyObject* unknown = interned(InternedName::Unknown);
    PyErr_Format(PyExc_RuntimeError, "Proxy error(%U): %U", type_name != nullptr ? type_name : unknown,
                 message != nullptr ? message : unknown);
    Py_XDECREF(type_name);
    Py_XDECREF(message);
}

int32_t catch_and_clear_error(PyObject** text_out, StringArg* view_out) {
    if (!PyErr_Occurred()) {
        return -1;
    }
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    PyErr_NormalizeException(&type, &value, &traceback);

    PyObject* text = nullptr;
    PyObject *second_type = nullptr, *second_value = nullptr, *second_traceback = nullptr;
    if (value != nullptr) {
        text = format_with_traceback_module(type, value, traceback);
        if (text == nullptr) {
            // Whatever stands now (possibly nothing) is kept aside while the fallback runs.
            PyErr_Fetch(&second_type, &second_value, &second_traceback);
        }
    }
    if (text == nullptr) {
        format_pending_exception(type, value, traceback, &text);
    }
    Py_XDECREF(type);
    Py_XDECREF(value);
    Py_XDECREF(traceback);

    const bool delivered = text != nullptr && deliver_text(text, text_out, view_out);

    if (second_type != nullptr) {
        if (PyErr_Occurred()) {
            Py_XDECREF(second_type);
            Py_XDECREF(second_value);
            Py_XDECREF(second_traceback);
        } else {
            PyErr_Restore(second_type, second_value, second_traceback);
        }
    }
    const int32_t result = delivered ? 0 : -1;
    if (PyErr_Occurred()) {
        // Managed code has no way to receive this one; report it and leave nothing pending.
        PyErr_WriteUnraisable(interned(InternedName::FormatCallbackException));
    }
    return result;
}

bool format_pending_exception(PyObject* type, PyObject* value, PyObject* traceback, PyObject** text_out) {
    PyObject* name = exception_type_name(type);
    if (name == nullptr) {
        return false;
    }
    PyObject* value_text = nullptr;
    if (value != nullptr) {
        value_text = PyObject_Str(value);
        if (value_text == nullptr && PyErr_Occurred()) {
            Py_DECREF(name);
            return false;
        }
    }
    PyObject* traceback_text = nullptr;
    const bool long_form = traceback != nullptr && wants_long_form(traceback, &traceback_text);

    if (long_form) {
        // %V keeps a part that could not be made from crashing the format; it prints empty.
        *text_out = PyUnicode_FromFormat("%U: %V\n%V", name, value_text, "", traceback_text, "");
    } else if (value_text != nullptr) {
        *text_out = PyUnicode_FromFormat("%U: %U", name, value_text);
    } else {
        *text_out = PyUnicode_FromFormat("%U:", name);
    }
    Py_DECREF(name);
    Py_XDECREF(value_text);
    Py_XDECREF(traceback_text);
    return *text_out != nullptr || !PyErr_Occurred();
}
