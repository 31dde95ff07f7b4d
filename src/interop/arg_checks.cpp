// The count check and index readers shared by pop, read and the like; their texts are those of the interpreter.
#include "interop/arg_checks.h"

namespace {

[[gnu::cold]] void raise_count(Py_ssize_t count, const char* name, Py_ssize_t min, Py_ssize_t max) {
    const bool exact = min == max;
    const Py_ssize_t bound = count < min ? min : max;
    PyErr_Format(PyExc_TypeError, "%.150s%s takes %s %d argument%s (%zd given)", name != nullptr ? name : "function",
                 name != nullptr ? "()" : "", exact ? "exactly" : (count < min ? "at least" : "at most"),
                 static_cast<int>(bound), bound == 1 ? "" : "s", count);
}

[[gnu::cold]] int refuse_index(PyObject* object) {
    PyErr_Format(PyExc_TypeError, "argument should be integer or None, not '%.200s'", Py_TYPE(object)->tp_name);
    return 0;
}

}  // namespace

bool wrong_arg_count(Py_ssize_t count, const char* name, Py_ssize_t min, Py_ssize_t max) {
    if (count >= min && count <= max) return false;
    raise_count(count, name, min, max);
    return true;
}

int read_index_object(PyObject* object, Py_ssize_t* out) {
    PyNumberMethods* number = Py_TYPE(object)->tp_as_number;
    if (number == nullptr || number->nb_index == nullptr) return refuse_index(object);
    const Py_ssize_t value = PyNumber_AsSsize_t(object, PyExc_OverflowError);
    if (value == -1 && PyErr_Occurred()) return 0;
    *out = value;
    return 1;
}

int read_optional_index(PyObject* args, Py_ssize_t* out) {
    if (PyTuple_GET_SIZE(args) == 0) return 1;
    PyObject* item = PyTuple_GET_ITEM(args, 0);
    return item == Py_None ? 1 : read_index_object(item, out);
}
