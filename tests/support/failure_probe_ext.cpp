// Test module failure_probe: exposes the failure family, the exception bridge, the dependency
// import and the string record helpers that the bridge delivers texts through.
#include "bridge/exception_bridge.h"
#include "marshal/string_marshal.h"
#include "common/dependency_import.h"
#include "common/init_failures.h"
#include "common/interned_names.h"

namespace {

using Keywords = char*[];

// Makes `pending` (an exception instance, or None) the pending exception before a raise.
void set_pending(PyObject* pending) {
    if (pending != nullptr && pending != Py_None) {
        PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(pending)), pending);
    }
}

PyObject* probe_load_failure(PyObject*, PyObject* args, PyObject* kwargs) {
    const char* module;
    int code;
    PyObject* pending = nullptr;
    static Keywords names = {(char*)"module", (char*)"code", (char*)"pending", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "si|$O", names, &module, &code, &pending)) {
        return nullptr;
    }
    set_pending(pending);
    raise_load_failure(module, code);
    return nullptr;
}

// Module and type members take one or two names; `second` selects the two-name form.
template <void (*One)(int, const char*), void (*Two)(int, const char*, const char*)>
PyObject* probe_named_failure(PyObject*, PyObject* args, PyObject* kwargs) {
    int code;
    const char* first;
    const char* second = nullptr;
    PyObject* pending = nullptr;
    static Keywords names = {(char*)"code", (char*)"name", (char*)"second", (char*)"pending", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "is|z$O", names, &code, &first, &second, &pending)) {
        return nullptr;
    }
    set_pending(pending);
    if (second != nullptr) {
        Two(code, first, second);
    } else {
        One(code, first);
    }
    return nullptr;
}

template <void (*Raise)(const char*)>
PyObject* probe_module_named_failure(PyObject*, PyObject* args, PyObject* kwargs) {
    const char* module;
    PyObject* pending = nullptr;
    static Keywords names = {(char*)"module", (char*)"pending", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "s|$O", names, &module, &pending)) {
        return nullptr;
    }
    set_pending(pending);
    Raise(module);
    return nullptr;
}

PyObject* probe_attribute_failure(PyObject*, PyObject* args, PyObject* kwargs) {
    PyObject* attribute;
    const char* module;
    PyObject* pending = nullptr;
    static Keywords names = {(char*)"attribute", (char*)"module", (char*)"pending", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "Us|$O", names, &attribute, &module, &pending)) {
        return nullptr;
    }
    set_pending(pending);
    raise_attribute_failure(attribute, module);
    return nullptr;
}

PyObject* probe_enum_failure(PyObject*, PyObject* args, PyObject* kwargs) {
    const char* message;
    const char* enum_name;
    PyObject* pending = nullptr;
    static Keywords names = {(char*)"message", (char*)"enum_name", (char*)"pending", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "ss|$O", names, &message, &enum_name, &pending)) {
        return nullptr;
    }
    set_pending(pending);
    raise_enum_failure(message, enum_name);
    return nullptr;
}

PyObject* probe_chain_and_raise(PyObject*, PyObject* args, PyObject* kwargs) {
    PyObject* type;
    const char* text;
    PyObject* pending = nullptr;
    static Keywords names = {(char*)"type", (char*)"text", (char*)"pending", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "Os|$O", names, &type, &text, &pending)) {
        return nullptr;
    }
    set_pending(pending);
    chain_and_raise(type, "%s", text);
    return nullptr;
}

// None stands for a null argument; the callee steals what it is given.
PyObject* new_or_null(PyObject* object) {
    if (object == Py_None) {
        return nullptr;
    }
    Py_INCREF(object);
    return object;
}

PyObject* probe_proxy_error(PyObject*, PyObject* args, PyObject* kwargs) {
    PyObject* type_name;
    PyObject* message;
    PyObject* pending = nullptr;
    static Keywords names = {(char*)"type_name", (char*)"message", (char*)"pending", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "OO|$O", names, &type_name, &message, &pending)) {
        return nullptr;
    }
    set_pending(pending);
    raise_proxy_error(new_or_null(type_name), new_or_null(message));
    return nullptr;
}

// Makes an exception pending by `action` (an exception instance is set without a traceback, a
// callable is called and may raise, None leaves nothing pending), then runs the bridge.
// Returns (code, text, length, kind, data_is_text_storage); untouched outputs read None, -7, -7.
PyObject* probe_catch_and_clear(PyObject*, PyObject* action) {
    if (PyExceptionInstance_Check(action)) {
        set_pending(action);
    } else if (action != Py_None) {
        PyObject* result = PyObject_CallNoArgs(action);
        Py_XDECREF(result);
    }
    PyObject* text = nullptr;
    StringArg view = {-7, -7, nullptr};
    const int32_t code = catch_and_clear_error(&text, &view);
    if (PyErr_Occurred()) {
        Py_XDECREF(text);
        PyErr_SetString(PyExc_AssertionError, "catch_and_clear_error left an exception pending");
        return nullptr;
    }
    const bool same_storage = text != nullptr && view.data == PyUnicode_DATA(text);
    PyObject* text_item = text != nullptr ? text : Py_NewRef(Py_None);
    return Py_BuildValue("(iNiiO)", code, text_item, view.length, view.kind, same_storage ? Py_True : Py_False);
}

PyObject* probe_versioned_dependency(PyObject*, PyObject* args) {
    const char* module_name;
    const char* dependency_name;
    VersionNumbers reference;
    if (!PyArg_ParseTuple(args, "ss(iiii):import_versioned_dependency", &module_name, &dependency_name,
                          &reference.major, &reference.minor, &reference.patch, &reference.sub)) {
        return nullptr;
    }
    return import_versioned_dependency(module_name, dependency_name, reference);
}

PyObject* probe_import_attribute(PyObject*, PyObject* args) {
    const char* module_name;
    PyObject* attribute;
    if (!PyArg_ParseTuple(args, "sU:import_attribute", &module_name, &attribute)) {
        return nullptr;
    }
    Py_INCREF(attribute);
    PyUnicode_InternInPlace(&attribute);
    PyObject* value = import_attribute(module_name, attribute);
    Py_DECREF(attribute);
    return value;
}

// Builders take UTF-16LE bytes, as the managed side hands them over.
bool units_of(PyObject* args, const char* format, Py_buffer* buffer) {
    if (!PyArg_ParseTuple(args, format, buffer)) {
        return false;
    }
    if (buffer->len % 2 != 0) {
        PyBuffer_Release(buffer);
        PyErr_SetString(PyExc_ValueError, "UTF-16 input needs an even number of bytes");
        return false;
    }
    return true;
}

template <PyObject* (*Build)(const char16_t*, int32_t)>
PyObject* probe_build_string(PyObject*, PyObject* args) {
    Py_buffer buffer;
    if (!units_of(args, "y*", &buffer)) {
        return nullptr;
    }
    PyObject* text = Build(static_cast<const char16_t*>(buffer.buf), static_cast<int32_t>(buffer.len / 2));
    PyBuffer_Release(&buffer);
    if (text == nullptr && !PyErr_Occurred()) {
        Py_RETURN_NONE;
    }
    return text;
}

// Returns the copied units as bytes, so the copy can be told from the input.
PyObject* probe_build_u16(PyObject*, PyObject* args) {
    Py_buffer buffer;
    if (!units_of(args, "y*", &buffer)) {
        return nullptr;
    }
    std::u16string* text =
        build_u16_string(static_cast<const char16_t*>(buffer.buf), static_cast<int32_t>(buffer.len / 2));
    PyBuffer_Release(&buffer);
    if (text == nullptr) {
        return PyErr_NoMemory();
    }
    PyObject* bytes = PyBytes_FromStringAndSize(reinterpret_cast<const char*>(text->data()),
                                                static_cast<Py_ssize_t>(text->size() * 2));
    delete text;
    return bytes;
}

PyObject* probe_build_bytes(PyObject*, PyObject* args) {
    Py_buffer buffer;
    if (!PyArg_ParseTuple(args, "y*:build_py_bytes", &buffer)) {
        return nullptr;
    }
    PyObject* result = build_py_bytes(static_cast<const uint8_t*>(buffer.buf), static_cast<int32_t>(buffer.len));
    PyBuffer_Release(&buffer);
    return result;
}

#define KW_METHOD(name, function) {name, reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function)), \
                                   METH_VARARGS | METH_KEYWORDS, nullptr}

PyMethodDef probe_methods[] = {
    KW_METHOD("raise_load_failure", probe_load_failure),
    KW_METHOD("raise_module_failure", (probe_named_failure<raise_module_failure, raise_module_failure>)),
    KW_METHOD("raise_type_failure", (probe_named_failure<raise_type_failure, raise_type_failure>)),
    KW_METHOD("raise_dependency_failure", probe_module_named_failure<raise_dependency_failure>),
    KW_METHOD("raise_import_failure", probe_module_named_failure<raise_import_failure>),
    KW_METHOD("raise_attribute_failure", probe_attribute_failure),
    KW_METHOD("raise_enum_failure", probe_enum_failure),
    KW_METHOD("chain_and_raise", probe_chain_and_raise),
    KW_METHOD("raise_proxy_error", probe_proxy_error),
    {"catch_and_clear_error", probe_catch_and_clear, METH_O, nullptr},
    {"import_versioned_dependency", probe_versioned_dependency, METH_VARARGS, nullptr},
    {"import_attribute", probe_import_attribute, METH_VARARGS, nullptr},
    {"build_py_string", probe_build_string<build_py_string>, METH_VARARGS, nullptr},
    {"build_py_string_quiet", probe_build_string<build_py_string_quiet>, METH_VARARGS, nullptr},
    {"build_u16_string", probe_build_u16, METH_VARARGS, nullptr},
    {"build_py_bytes", probe_build_bytes, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

#undef KW_METHOD

PyModuleDef probe_definition = {PyModuleDef_HEAD_INIT, "failure_probe", nullptr, -1, probe_methods};

}  // namespace

PyMODINIT_FUNC PyInit_failure_probe() {
    fill_interned_names();
    return PyModule_Create(&probe_definition);
}
