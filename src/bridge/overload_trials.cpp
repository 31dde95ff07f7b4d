// Trial bookkeeping of overloaded calls and the list cells of out parameters.
#include "bridge/overload_trials.h"

void keep_trial_error(PyObject** slot) {
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    // A value of the right type that can't cross (a lone surrogate, a NUL in a file name, nesting too
    // deep) is kept as its exception, so that it can be raised as itself if no trial matches.
    if (type != nullptr && (PyErr_GivenExceptionMatches(type, PyExc_ValueError) ||
                            PyErr_GivenExceptionMatches(type, PyExc_RecursionError))) {
        PyErr_NormalizeException(&type, &value, &traceback);
    }
    // Kept as raised (usually the message itself): turned into text only if every trial fails.
    *slot = value;
    Py_XDECREF(type);
    Py_XDECREF(traceback);
}

void drop_trial_errors(PyObject** slots, size_t count) {
    for (size_t i = 0; i < count; ++i) Py_CLEAR(slots[i]);
}

void raise_trial_errors(PyObject** slots, size_t count) {
    for (size_t i = 0; i < count; ++i) {
        if (slots[i] != nullptr && (PyObject_TypeCheck(slots[i], reinterpret_cast<PyTypeObject*>(PyExc_ValueError)) ||
                                    PyObject_TypeCheck(slots[i], reinterpret_cast<PyTypeObject*>(PyExc_RecursionError)))) {
            PyObject* error = slots[i];
            slots[i] = nullptr;
            drop_trial_errors(slots, count);
            PyErr_SetObject(reinterpret_cast<PyObject*>(Py_TYPE(error)), error);
            Py_DECREF(error);
            return;
        }
    }
    PyObject* list = PyList_New(static_cast<Py_ssize_t>(count));
    if (list == nullptr) {
        drop_trial_errors(slots, count);
        return;
    }
    for (size_t i = 0; i < count; ++i) {
        PyObject* text = slots[i] != nullptr ? PyObject_Str(slots[i]) : PyUnicode_FromString("");
        Py_CLEAR(slots[i]);
        if (text == nullptr) {
            drop_trial_errors(slots, count);
            Py_DECREF(list);
            return;
        }
        PyList_SET_ITEM(list, static_cast<Py_ssize_t>(i), text);
    }
    PyErr_SetObject(PyExc_TypeError, list);
    Py_DECREF(list);
}

namespace {

// Replaces the pending OverflowError by one whose message starts with `label`.
void prefix_overflow(const char* kind, const char* name) {
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    PyErr_NormalizeException(&type, &value, &traceback);
    PyObject* text = value != nullptr ? PyObject_Str(value) : nullptr;
    if (text != nullptr) {
        PyErr_Format(PyExc_OverflowError, "%s '%s': %U", kind, name, text);
        Py_DECREF(text);
        Py_XDECREF(type);
        Py_XDECREF(value);
        Py_XDECREF(traceback);
        return;
    }
    PyErr_Clear();
    PyErr_Restore(type, value, traceback);
}

int refuse_list_cell(PyObject* object) {
    PyErr_Format(PyExc_TypeError, "argument should be empty list or list contains default value, not '%.200s'",
                 Py_TYPE(object)->tp_name);
    return 0;
}

}  // namespace

int convert_list_cell(PyObject* object, void* output) {
    ListCell* cell = static_cast<ListCell*>(output);
    if (!PyList_CheckExact(object)) return refuse_list_cell(object);
    cell->list = object;
    if (PyList_GET_SIZE(object) == 0) return 1;
    PyObject* first = PyList_GetItem(object, 0);
    if (first == nullptr) return refuse_list_cell(object);
    if (first == Py_None) return 1;
    return cell->item_converter(first, cell->item_output) == 1 ? 1 : 0;
}

int store_out_value(PyObject* list, PyObject* value) {
    if (PyList_GET_SIZE(list) > 0) return PyList_SetItem(list, 0, value);
    int result = PyList_Append(list, value);
    Py_DECREF(value);
    return result;
}

void name_overflowing_argument(PyObject* args, PyObject* kwargs, const char* const* keywords,
                               const ParamConverter* converters, size_t count) {
    if (!PyErr_ExceptionMatches(PyExc_OverflowError)) return;
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    const Py_ssize_t positional = PyTuple_GET_SIZE(args);
    for (size_t i = 0; i < count; ++i) {
        PyObject* argument = static_cast<Py_ssize_t>(i) < positional
                                 ? PyTuple_GET_ITEM(args, static_cast<Py_ssize_t>(i))
                                 : (kwargs != nullptr ? PyDict_GetItemString(kwargs, keywords[i]) : nullptr);
        // Only an int can overflow; converters given an int write at most a small record.
        if (argument == nullptr || !PyLong_Check(argument)) continue;
        alignas(16) unsigned char scratch[256] = {};
        if (converters[i](argument, scratch)) continue;
        if (PyErr_ExceptionMatches(PyExc_OverflowError)) {
            Py_XDECREF(type);
            Py_XDECREF(value);
            Py_XDECREF(traceback);
            prefix_overflow("parameter", keywords[i]);
            return;
        }
        PyErr_Clear();
    }
    PyErr_Restore(type, value, traceback);
}

void name_overflowing_attribute(const char* name) {
    if (PyErr_ExceptionMatches(PyExc_OverflowError)) prefix_overflow("attribute", name);
}

bool trial_may_match(PyObject* args, const uint8_t* kinds, Py_ssize_t count) {
    const Py_ssize_t given = PyTuple_GET_SIZE(args) < count ? PyTuple_GET_SIZE(args) : count;
    for (Py_ssize_t i = 0; i < given; ++i) {
        PyObject* a = PyTuple_GET_ITEM(args, i);
        switch (kinds[i]) {
            case kStrArgument:
                if (a != Py_None && !PyUnicode_Check(a)) return false;
                break;
            case kBoolArgument:
                if (!PyBool_Check(a)) return false;
                break;
            case kNumberArgument:
                if (a == Py_None || PyUnicode_CheckExact(a) || PyBytes_CheckExact(a)) return false;
                break;
            case kWrapperArgument:
                if (PyLong_CheckExact(a) || PyFloat_CheckExact(a) || PyUnicode_CheckExact(a) || PyBool_Check(a) ||
                    PyTuple_CheckExact(a) || PyList_CheckExact(a))
                    return false;
                break;
            default:
                break;
        }
    }
    return true;
}

namespace {

// Cold: the kept errors of the failed trials, the others null, as raise_trial_errors reads them.
[[gnu::cold, gnu::noinline]] void raise_failed_trials(PyObject** errors, uint32_t failed, size_t count) {
    for (size_t i = 0; i < count; ++i)
        if ((failed & (1u << i)) == 0) errors[i] = nullptr;
    raise_trial_errors(errors, count);
}

void drop_failed_trials(PyObject** errors, uint32_t failed) {
    for (size_t i = 0; failed != 0; ++i, failed >>= 1)
        if (failed & 1u) Py_CLEAR(errors[i]);
}

}  // namespace

// The error slots are filled only for trials that failed, so a call pays no clearing of 32 slots.
template <typename Result>
Result dispatch_trials(const OverloadTrial<Result>* trials, size_t count, PyObject* self, PyObject* args,
                       PyObject* kwargs, Result failure) {
    PyObject* errors[kMaxTrials];
    uint32_t deferred = 0, failed = 0;
    const Py_ssize_t given = argument_count(args, kwargs);
    for (int pass = 0; pass < 2; ++pass) {
        for (size_t i = 0; i < count; ++i) {
            const OverloadTrial<Result>& trial = trials[i];
            const uint32_t bit = 1u << i;
            if (pass == 0) {
                if (trial.arity != given || (trial.kinds != nullptr && !trial_may_match(args, trial.kinds, trial.arity))) {
                    deferred |= bit;
                    continue;
                }
            } else if ((deferred & bit) == 0) {
                continue;
            }
            bool parsed = false;
            Result result = trial.run(self, args, kwargs, &parsed);
            if (parsed) {
                if (failed != 0) drop_failed_trials(errors, failed);
                return result;
            }
            keep_trial_error(&errors[i]);
            failed |= bit;
        }
        if (deferred == 0) break;
    }
    raise_failed_trials(errors, failed, count);
    return failure;
}

template PyObject* dispatch_trials<PyObject*>(const OverloadTrial<PyObject*>*, size_t, PyObject*, PyObject*, PyObject*,
                                              PyObject*);
template int dispatch_trials<int>(const OverloadTrial<int>*, size_t, PyObject*, PyObject*, PyObject*, int);
