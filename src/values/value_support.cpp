// Cold paths shared by the value types: refusals, setter value reading, the construction gate.
#include "values/value_types.h"

int refuse_value_type(PyTypeObject* type, PyObject* object) {
    PyErr_Format(PyExc_TypeError, "argument should be %s, not '%.200s'", short_name_of(type),
                 Py_TYPE(object)->tp_name);
    return 0;
}

int read_int_argument(PyObject* value, int32_t* out) {
    long v = PyLong_AsLong(value);
    if (v == -1 && PyErr_Occurred()) return 0;
    if (v < INT32_MIN || v > INT32_MAX) {
        PyErr_SetString(PyExc_OverflowError, "Python int too large to convert to C int");
        return 0;
    }
    *out = static_cast<int32_t>(v);
    return 1;
}

int read_int_field(PyObject* value, int32_t* out) {
    if (value == nullptr) {
        refuse_attribute_delete();
        return 0;
    }
    if (!PyLong_Check(value)) {
        PyErr_Format(PyExc_TypeError, "integer is required (got type '%s')", Py_TYPE(value)->tp_name);
        return 0;
    }
    return read_int_argument(value, out);
}

int read_real_field(PyObject* value, double* out) {
    if (value == nullptr) {
        refuse_attribute_delete();
        return 0;
    }
    if (!PyLong_Check(value) && !PyFloat_Check(value)) {
        PyErr_Format(PyExc_TypeError, "real is required (got type '%s')", Py_TYPE(value)->tp_name);
        return 0;
    }
    double v = PyFloat_AsDouble(value);
    if (v == -1.0 && PyErr_Occurred()) return 0;
    *out = v;
    return 1;
}

int raise_count_error(const char* format, Py_ssize_t given) {
    PyErr_Format(PyExc_AttributeError, format, static_cast<int>(given));
    return -1;
}

int raise_got_type(const char* format, PyObject* object) {
    PyErr_Format(PyExc_TypeError, format, Py_TYPE(object)->tp_name);
    return -1;
}

PyObject* gated_value_new(PyTypeObject* type, const TypeInitStatus& status) {
    if (status.failed) {
        raise_status_error(status);
        return nullptr;
    }
    return PyType_GenericNew(type, nullptr, nullptr);
}

PyTypeObject value_type(const char* name, Py_ssize_t size, initproc init, newfunc make, richcmpfunc compare,
                        PyMethodDef* methods, PyGetSetDef* getset, const char* doc, reprfunc repr) {
    PyTypeObject t = {PyVarObject_HEAD_INIT(nullptr, 0)};
    t.tp_name = name;
    t.tp_basicsize = size;
    t.tp_flags = Py_TPFLAGS_DEFAULT;
    t.tp_richcompare = compare;
    t.tp_methods = methods;
    t.tp_getset = getset;
    t.tp_doc = doc;
    t.tp_repr = repr;
    t.tp_init = init;
    t.tp_new = make;
    return t;
}

PyObject* call_repr(const char* name, std::initializer_list<PyObject*> values) {
    PyObject* parts = PyList_New(0);
    bool failed = parts == nullptr;
    for (PyObject* value : values) {
        PyObject* text = failed || value == nullptr ? nullptr : PyObject_Repr(value);
        failed = failed || text == nullptr || PyList_Append(parts, text) < 0;
        Py_XDECREF(text);
        Py_XDECREF(value);
    }
    PyObject* separator = failed ? nullptr : PyUnicode_FromString(", ");
    PyObject* joined = separator ? PyUnicode_Join(separator, parts) : nullptr;
    PyObject* result = joined ? PyUnicode_FromFormat("%s(%U)", name, joined) : nullptr;
    Py_XDECREF(joined);
    Py_XDECREF(separator);
    Py_XDECREF(parts);
    return result;
}
