// Test module failure_probe: the failure family, the exception bridge, the dependency import and the string record
// helpers that the bridge delivers texts through.
#include <cstdarg>
#include <memory>

#include "bridge/exception_bridge.h"
#include "common/dependency_import.h"
#include "common/init_failures.h"
#include "marshal/string_marshal.h"
#include "probe_binding.h"

namespace {

void set_pending(PyObject* error) { PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error)), error); }

// Parses the positional arguments of a raising probe by `format`. Its one keyword, pending=, is an exception made
// the pending one just before the raise. False when parsing failed.
bool parse_raise(PyObject* args, PyObject* kwargs, const char* format, ...) {
    PyObject* pending = kwargs != nullptr ? PyDict_GetItemString(kwargs, "pending") : nullptr;
    if (kwargs != nullptr && PyDict_GET_SIZE(kwargs) != (pending != nullptr ? 1 : 0)) return PyErr_BadArgument();
    va_list values;
    va_start(values, format);
    const bool parsed = PyArg_VaParse(args, format, values) != 0;
    va_end(values);
    if (parsed && pending != nullptr && pending != Py_None) set_pending(pending);
    return parsed;
}

// Module and type failures take one or two names.
template <void (*One)(int, const char*), void (*Two)(int, const char*, const char*)>
PyObject* probe_named_failure(PyObject*, PyObject* args, PyObject* kwargs) {
    int code;
    const char *first, *second = nullptr;
    if (!parse_raise(args, kwargs, "is|z", &code, &first, &second)) return nullptr;
    second != nullptr ? Two(code, first, second) : One(code, first);
    return nullptr;
}

template <void (*Raise)(const char*)>
PyObject* probe_module_named_failure(PyObject*, PyObject* args, PyObject* kwargs) {
    const char* module;
    if (parse_raise(args, kwargs, "s", &module)) Raise(module);
    return nullptr;
}

PyObject* probe_attribute_failure(PyObject*, PyObject* args, PyObject* kwargs) {
    PyObject* attribute;
    const char* module;
    if (parse_raise(args, kwargs, "Us", &attribute, &module)) raise_attribute_failure(attribute, module);
    return nullptr;
}

PyObject* probe_enum_failure(PyObject*, PyObject* args, PyObject* kwargs) {
    const char *message, *enum_name;
    if (parse_raise(args, kwargs, "ss", &message, &enum_name)) raise_enum_failure(message, enum_name);
    return nullptr;
}

PyObject* probe_chain_and_raise(PyObject*, PyObject* args, PyObject* kwargs) {
    PyObject* type;
    const char* text;
    if (parse_raise(args, kwargs, "Os", &type, &text)) chain_and_raise(type, "%s", text);
    return nullptr;
}

// None stands for a null argument; the callee steals what it is given.
PyObject* new_or_null(PyObject* object) { return object == Py_None ? nullptr : Py_NewRef(object); }

PyObject* probe_proxy_error(PyObject*, PyObject* args, PyObject* kwargs) {
    PyObject *type_name, *message;
    if (parse_raise(args, kwargs, "OO", &type_name, &message)) {
        raise_proxy_error(new_or_null(type_name), new_or_null(message));
    }
    return nullptr;
}

// catch_and_clear_error(action) -> (code, text, length, kind, data_is_text_storage), after `action` made an exception
// pending: an exception is set without a traceback, a callable is called, None sets nothing. Untouched outputs read
// None, -7, -7.
PyObject* probe_catch_and_clear(PyObject*, PyObject* action) {
    if (PyExceptionInstance_Check(action)) {
        set_pending(action);
    } else if (action != Py_None) {
        Py_XDECREF(PyObject_CallNoArgs(action));
    }
    PyObject* text = nullptr;
    StringArg view = {-7, -7, nullptr};
    const int32_t code = catch_and_clear_error(&text, &view);
    if (PyErr_Occurred()) {
        Py_XDECREF(text);
        return PyErr_Format(PyExc_AssertionError, "catch_and_clear_error left an exception pending");
    }
    const bool same_storage = text != nullptr && view.data == PyUnicode_DATA(text);
    return Py_BuildValue("(iNiiO)", code, text != nullptr ? text : Py_NewRef(Py_None), view.length, view.kind,
                         same_storage ? Py_True : Py_False);
}

PyObject* probe_versioned_dependency(PyObject*, PyObject* args) {
    const char *module, *dependency;
    VersionNumbers reference;
    if (!PyArg_ParseTuple(args, "ss(iiii)", &module, &dependency, &reference.major, &reference.minor,
                          &reference.patch, &reference.sub)) {
        return nullptr;
    }
    return import_versioned_dependency(module, dependency, reference);
}

PyObject* probe_import_attribute(PyObject*, PyObject* args) {
    const char* module;
    PyObject* attribute;
    if (!PyArg_ParseTuple(args, "sU", &module, &attribute)) return nullptr;
    Py_INCREF(attribute);
    PyUnicode_InternInPlace(&attribute);
    PyObject* value = import_attribute(module, attribute);
    Py_DECREF(attribute);
    return value;
}

// The builders take UTF-16LE bytes, as the managed side hands them over. A null result without an error reads None.
template <PyObject* (*Build)(const char* data, int32_t size)>
PyObject* probe_build(PyObject*, PyObject* args) {
    Py_buffer input;
    if (!PyArg_ParseTuple(args, "y*", &input)) return nullptr;
    PyObject* made = Build(static_cast<const char*>(input.buf), static_cast<int32_t>(input.len));
    PyBuffer_Release(&input);
    return made != nullptr || PyErr_Occurred() ? made : Py_NewRef(Py_None);
}

const char16_t* units(const char* data) { return reinterpret_cast<const char16_t*>(data); }
PyObject* string_of(const char* data, int32_t size) { return build_py_string(units(data), size / 2); }
PyObject* quiet_string_of(const char* data, int32_t size) { return build_py_string_quiet(units(data), size / 2); }

// The copied units as bytes, so that the copy can be told from the input.
PyObject* u16_of(const char* data, int32_t size) {
    std::unique_ptr<std::u16string> text(build_u16_string(units(data), size / 2));
    if (text == nullptr) return PyErr_NoMemory();
    return PyBytes_FromStringAndSize(reinterpret_cast<const char*>(text->data()), text->size() * 2);
}

PyMethodDef probe_methods[] = {
    PROBE_KW("raise_module_failure", (probe_named_failure<raise_module_failure, raise_module_failure>)),
    PROBE_KW("raise_type_failure", (probe_named_failure<raise_type_failure, raise_type_failure>)),
    PROBE_KW("raise_import_failure", probe_module_named_failure<raise_import_failure>),
    PROBE_KW("raise_attribute_failure", probe_attribute_failure),
    PROBE_KW("raise_enum_failure", probe_enum_failure),
    PROBE_KW("chain_and_raise", probe_chain_and_raise),
    PROBE_KW("raise_proxy_error", probe_proxy_error),
    {"catch_and_clear_error", probe_catch_and_clear, METH_O, nullptr},
    {"import_versioned_dependency", probe_versioned_dependency, METH_VARARGS, nullptr},
    {"import_attribute", probe_import_attribute, METH_VARARGS, nullptr},
    {"build_py_string", probe_build<string_of>, METH_VARARGS, nullptr},
    {"build_py_string_quiet", probe_build<quiet_string_of>, METH_VARARGS, nullptr},
    {"build_u16_string", probe_build<u16_of>, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef probe_definition = {PyModuleDef_HEAD_INIT, "failure_probe", nullptr, -1, probe_methods};

}  // namespace

PyMODINIT_FUNC PyInit_failure_probe() { return probe_module(probe_definition); }
