// Maps the field keywords of a value constructor onto the positional form they complete.
#include "values/field_keywords.h"

#include "bridge/class_binding.h"

namespace {

int field_index(const FieldForm& form, PyObject* key) {
    for (int i = 0; i < form.count; ++i)
        if (PyUnicode_CompareWithASCIIString(key, form.fields[i]) == 0) return i;
    return -1;
}

// A form fits when the positional arguments fill its first fields and the keywords its rest.
bool form_fits(const FieldForm& form, Py_ssize_t given, PyObject* kwargs) {
    if (given + PyDict_GET_SIZE(kwargs) != form.count) return false;
    Py_ssize_t pos = 0;
    PyObject *key, *value;
    while (PyDict_Next(kwargs, &pos, &key, &value))
        if (field_index(form, key) < given) return false;
    return true;
}

PyObject* refuse_keywords(PyTypeObject* type, PyObject* args, PyObject* kwargs, const FieldForm* forms,
                          int form_count) {
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    Py_ssize_t pos = 0;
    PyObject *key, *value;
    while (PyDict_Next(kwargs, &pos, &key, &value)) {
        bool known = false;
        for (int f = 0; f < form_count; ++f) {
            int index = field_index(forms[f], key);
            if (index >= 0 && index < given && form_count == 1) {
                PyErr_Format(PyExc_TypeError, "%s() got multiple values for argument '%U'", short_name_of(type),
                             key);
                return nullptr;
            }
            known = known || index >= 0;
        }
        if (!known) {
            PyErr_Format(PyExc_TypeError, "%s() got an unexpected keyword argument '%U'", short_name_of(type), key);
            return nullptr;
        }
    }
    PyErr_Format(PyExc_TypeError, "%s() arguments %R with keywords %R complete none of its constructor forms",
                 short_name_of(type), args, kwargs);
    return nullptr;
}

}  // namespace

PyObject* fields_as_positional(PyTypeObject* type, PyObject* args, PyObject* kwargs, const FieldForm* forms,
                               int form_count) {
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    for (int f = 0; f < form_count; ++f) {
        const FieldForm& form = forms[f];
        if (!form_fits(form, given, kwargs)) continue;
        PyObject* merged = PyTuple_New(form.count);
        if (merged == nullptr) return nullptr;
        for (Py_ssize_t i = 0; i < form.count; ++i) {
            PyObject* item = i < given ? PyTuple_GET_ITEM(args, i) : PyDict_GetItemString(kwargs, form.fields[i]);
            PyTuple_SET_ITEM(merged, i, Py_NewRef(item));
        }
        return merged;
    }
    return refuse_keywords(type, args, kwargs, forms, form_count);
}

void name_overflowing_field(PyObject* self, PyObject* args, initproc positional, const FieldForm* forms,
                            int form_count) {
    const Py_ssize_t given = PyTuple_GET_SIZE(args);
    const FieldForm* form = nullptr;
    for (int f = 0; f < form_count; ++f)
        if (forms[f].count == given) form = &forms[f];
    if (form == nullptr) return;
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    PyObject* zero = PyLong_FromLong(0);
    for (Py_ssize_t i = 0; zero != nullptr && i < given; ++i) {
        PyObject* argument = PyTuple_GET_ITEM(args, i);
        if (!PyLong_Check(argument)) continue;
        PyObject* alone = PyTuple_New(given);
        if (alone == nullptr) break;
        for (Py_ssize_t j = 0; j < given; ++j) {
            PyObject* item = j == i || !PyLong_Check(PyTuple_GET_ITEM(args, j)) ? PyTuple_GET_ITEM(args, j) : zero;
            Py_INCREF(item);
            PyTuple_SET_ITEM(alone, j, item);
        }
        const bool overflows = positional(self, alone, nullptr) < 0 && PyErr_ExceptionMatches(PyExc_OverflowError);
        Py_DECREF(alone);
        if (overflows) {
            PyObject* text = PyObject_Str(value);
            PyErr_Clear();
            if (text != nullptr) {
                PyErr_Format(PyExc_OverflowError, "field '%s': %U", form->fields[i], text);
                Py_DECREF(text);
                Py_DECREF(zero);
                Py_XDECREF(type);
                Py_XDECREF(value);
                Py_XDECREF(traceback);
                return;
            }
            break;
        }
        PyErr_Clear();
    }
    Py_XDECREF(zero);
    PyErr_Restore(type, value, traceback);
}
