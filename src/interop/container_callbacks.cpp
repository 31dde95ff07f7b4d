// Python lists, sequences and iterators read and changed on behalf of managed collections.
#include "interop/container_callbacks.h"

#include <climits>

#include "bridge/wrapper_object.h"
#include "interop/interop_types.h"
#include "common/interned_names.h"

namespace {

// -2 when the pending exception is an IndexError, else -1.
int32_t failure_status() { return PyErr_ExceptionMatches(PyExc_IndexError) ? -2 : -1; }

// A stolen item that the managed side could not make: its exception stays, or SystemError stands for it.
bool missing_item(PyObject* item) {
    if (item != nullptr) return false;
    if (!PyErr_Occurred()) PyErr_BadInternalCall();
    return true;
}

// An index found by Python, as a signed 32-bit result; -2 with IndexError beyond that range.
int32_t int32_index(Py_ssize_t index) {
    if (index > INT32_MAX) {
        PyErr_Format(PyExc_IndexError, "%s too big to convert to '%s'", "index", "Int32");
        return -2;
    }
    if (index < INT32_MIN) {
        PyErr_Format(PyExc_IndexError, "%s too small to convert to '%s'", "index", "Int32");
        return -2;
    }
    return static_cast<int32_t>(index);
}

// Calls `name` on the list with one stolen argument; the result is dropped. 0, or -1.
int32_t call_with_stolen(PyObject* list, InternedName name, PyObject* item) {
    if (missing_item(item)) return -1;
    PyObject* result = PyObject_CallMethodOneArg(list, interned(name), item);
    Py_XDECREF(item);
    if (result == nullptr) return -1;
    Py_DECREF(result);
    return 0;
}

PyObject** new_list(Py_ssize_t count, PyObject** list) {
    *list = PyList_New(count);
    if (*list == nullptr) return nullptr;
    return reinterpret_cast<PyListObject*>(*list)->ob_item;
}

// Position of `item` in `sequence` by ==: the index, -1 not found, -2 failed. With `fresh_size` the
// size is read again before each comparison, so that a sequence that shrinks ends the search.
Py_ssize_t search(PyObject* sequence, PyObject* item, bool fresh_size) {
    Py_ssize_t size = PySequence_Size(sequence);
    for (Py_ssize_t i = 0;; ++i) {
        if (fresh_size && i > 0) size = PySequence_Size(sequence);
        if (size < 0) return -2;
        if (i >= size) return -1;
        PyObject* element = PySequence_GetItem(sequence, i);
        if (element == nullptr) return -2;
        int equal = PyObject_RichCompareBool(element, item, Py_EQ);
        Py_DECREF(element);
        if (equal < 0) return -2;
        if (equal) return i;
    }
}

// A null item stands for a failed conversion on the managed side; without its exception, IndexError.
bool refuse_null_item(PyObject* item) {
    if (item != nullptr) return false;
    if (!PyErr_Occurred()) PyErr_SetString(PyExc_IndexError, "item is null");
    return true;
}

}  // namespace

int32_t iteration_next(PyObject* iterator, PyObject** item, VariantArg* out) {
    PyObject* next = PyIter_Next(iterator);
    if (next == nullptr) return PyErr_Occurred() ? 2 : 1;
    reset_variant_arg(out);
    if (!convert_variant(next, out)) {
        Py_DECREF(next);
        return 2;
    }
    *item = next;
    return 0;
}

Py_ssize_t container_list_size(PyObject* list) { return PyList_Size(list); }

int32_t container_list_pop(PyObject* list, int32_t index) {
    PyObject* position = PyLong_FromLong(index);
    if (position == nullptr) return -1;
    PyObject* result = PyObject_CallMethodOneArg(list, interned(InternedName::Pop), position);
    Py_DECREF(position);
    if (result == nullptr) return failure_status();
    Py_DECREF(result);
    return 0;
}

int32_t container_list_clear(PyObject* list) {
    PyObject* result = PyObject_CallMethodNoArgs(list, interned(InternedName::Clear));
    if (result == nullptr) return -1;
    Py_DECREF(result);
    return 0;
}

Py_ssize_t container_sequence_size(PyObject* sequence) { return PySequence_Size(sequence); }

PyObject* container_iterator(PyObject* object) {
    PyObject* iterator = PyObject_GetIter(object);
    if (iterator == nullptr) return nullptr;
    if (!PyIter_Check(iterator)) {
        PyErr_Format(PyExc_TypeError, "No iterator in '%s'", Py_TYPE(object)->tp_name);
        Py_DECREF(iterator);
        return nullptr;
    }
    return iterator;
}

Py_ssize_t container_object_size(PyObject* object) { return PyObject_Size(object); }

PyObject** container_new_list32(int32_t count, PyObject** list) { return new_list(count, list); }
PyObject** container_new_list64(int64_t count, PyObject** list) { return new_list(count, list); }

int32_t list_get(PyObject* list, int32_t index, VariantArg* out) {
    PyObject* item = PyList_GetItem(list, index);
    if (item == nullptr) return failure_status();
    reset_variant_arg(out);
    return convert_variant(item, out) ? 0 : -1;
}

int32_t list_set(PyObject* list, int32_t index, PyObject* item) {
    if (missing_item(item)) return -1;
    return PyList_SetItem(list, index, item) == 0 ? 0 : failure_status();
}

Py_ssize_t list_append(PyObject* list, PyObject* item) {
    if (missing_item(item)) return -1;
    int appended = PyList_Append(list, item);
    Py_XDECREF(item);
    return appended == 0 ? PyList_GET_SIZE(list) : -1;
}

int32_t list_insert(PyObject* list, int32_t index, PyObject* item) {
    if (missing_item(item)) return -1;
    int inserted = PyList_Insert(list, index, item);
    Py_XDECREF(item);
    return inserted == 0 ? 0 : failure_status();
}

int32_t list_remove(PyObject* list, PyObject* item) { return call_with_stolen(list, InternedName::Remove, item); }

int32_t list_contains(PyObject* list, PyObject* item) {
    if (missing_item(item)) return -1;
    PyObject* result = PyObject_CallMethodOneArg(list, interned(InternedName::Index), item);
    Py_XDECREF(item);
    if (result != nullptr) {
        Py_DECREF(result);
        return 1;
    }
    if (!PyErr_ExceptionMatches(PyExc_ValueError)) return -1;
    PyErr_Clear();
    return 0;
}

int32_t list_index(PyObject* list, PyObject* item) {
    if (missing_item(item)) return -2;
    PyObject* result = PyObject_CallMethodOneArg(list, interned(InternedName::Index), item);
    Py_XDECREF(item);
    if (result == nullptr) {
        if (!PyErr_ExceptionMatches(PyExc_ValueError)) return -2;
        PyErr_Clear();
        return -1;
    }
    Py_ssize_t index = PyLong_AsSsize_t(result);
    Py_DECREF(result);
    if (index == -1 && PyErr_Occurred()) return -2;
    return int32_index(index);
}

int32_t list_store(PyObject** items, int32_t index, PyObject* object) {
    items[index] = object;
    return index;
}

PyObject* list_wrap_ilist(InstanceHandle handle) { return wrap_exact(handle, &Interop_IListWrapper_Type); }
PyObject* list_wrap_array_list(InstanceHandle handle) { return wrap_exact(handle, &Interop_ArrListWrapper_Type); }
PyObject* list_wrap_array(InstanceHandle handle) { return wrap_exact(handle, &Interop_ArrayWrapper_Type); }

int32_t sequence_get(PyObject* sequence, int32_t index, VariantArg* out) {
    PyObject* item = PySequence_GetItem(sequence, index);
    if (item == nullptr) return failure_status();
    reset_variant_arg(out);
    if (!convert_variant(item, out)) {
        Py_DECREF(item);
        return -1;
    }
    if (out->code == kVariantClass || out->code == kVariantStruct) Py_DECREF(item);
    return 0;
}

int32_t sequence_contains(PyObject* sequence, PyObject* item) {
    if (refuse_null_item(item)) return -1;
    Py_ssize_t found = search(sequence, item, true);
    Py_DECREF(item);
    return found >= 0 ? 1 : (found == -1 ? 0 : -1);
}

int32_t sequence_index(PyObject* sequence, PyObject* item) {
    if (refuse_null_item(item)) return -2;
    Py_ssize_t found = search(sequence, item, false);
    Py_DECREF(item);
    return found >= 0 ? int32_index(found) : static_cast<int32_t>(found);
}
