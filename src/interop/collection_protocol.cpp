// The read-only collection face: element-wise tests are managed, everything list-shaped (result length,
// order, repetition) is native, built from the elements that the enumerator gives.
#include "interop/collection_protocol.h"

#include "interop/concat_to_list.h"
#include "interop/entry_table_binding.h"
#include "interop/iteration_wrappers.h"
#include "interop/list_entry_roles.h"
#include "interop/wrapper_type_shape.h"

namespace {

struct SiApiCntCollection {
    static constexpr const char* kClass = "Orvane.WrpGen.Interop.SiApiCntCollection";
    static constexpr const char* kEntries[] = {"SqLength",       "SqContains", "CountOf", "CreateInstanceFromPyList",
                                               "CreateInstanceFromPySequence", "IsAssignableTo"};
};

struct SiApiReadOnlyCollectionBase {
    static constexpr const char* kClass = "Orvane.WrpGen.Interop.SiApiReadOnlyCollectionBase";
    static constexpr const char* kEntries[] = {"CreateInstanceFromPyList", "CreateInstanceFromPySequence",
                                               "IsAssignableTo"};
};

// ----- cold texts -----

[[gnu::cold]] PyObject* raise_value_error(const char* text) {
    PyErr_SetString(PyExc_ValueError, text);
    return nullptr;
}

[[gnu::cold]] PyObject* raise_surplus() { return raise_value_error("argument must be iterable or sequence"); }

[[gnu::cold]] PyObject* raise_modified() {
    return raise_value_error("the collection was modified during the operation");
}

// ----- the walk -----

// The collection's own enumerator; null with an exception set.
PyObject* own_iterator(PyObject* self) {
    PyObject* iterator = PyObject_GetIter(self);
    if (iterator == nullptr && !PyErr_Occurred()) raise_modified();
    return iterator;
}

// Stores the enumerator's elements at positions 0..n-1 of `list`, each also at `copies` - 1 further
// positions n apart. Surplus is an error; the number stored is returned, -1 on failure.
Py_ssize_t fill_from_walk(PyObject* self, PyObject* list, Py_ssize_t n, Py_ssize_t copies) {
    PyObject* iterator = own_iterator(self);
    if (iterator == nullptr) return -1;
    Py_ssize_t i = 0;
    PyObject* item;
    while ((item = PyIter_Next(iterator)) != nullptr) {
        if (i == n) {
            Py_DECREF(item);
            raise_surplus();
            break;
        }
        if (copies == 0) {
            Py_DECREF(item);
        } else {
            PyList_SET_ITEM(list, i, item);
            for (Py_ssize_t j = 1; j < copies; ++j) PyList_SET_ITEM(list, i + j * n, Py_NewRef(item));
        }
        ++i;
    }
    Py_DECREF(iterator);
    return PyErr_Occurred() ? -1 : i;
}

// The collection's elements at list[0..n-1], exactly n of them.
bool fill_walked(PyObject* self, PyObject* list, Py_ssize_t n, const void*) {
    const Py_ssize_t got = fill_from_walk(self, list, n, 1);
    if (got == n) return true;
    if (got >= 0) raise_surplus();  // fewer elements than the length told
    return false;
}

PyMethodDef g_methods[] = {{"count", collection_count, METH_O, nullptr},
                           {"copy", collection_copy, METH_NOARGS, nullptr},
                           {"contains", collection_contains, METH_O, nullptr},
                           {nullptr, nullptr, 0, nullptr}};

PyGetSetDef g_getset[] = {{"length", collection_length_attr, nullptr, nullptr, nullptr},
                          {nullptr, nullptr, nullptr, nullptr, nullptr}};

PySequenceMethods g_sequence = collection_sequence_methods(nullptr);

PyTypeObject collection_type(const char* name) {
    PyTypeObject t = iterable_type_shape(name);
    t.tp_as_sequence = &g_sequence;
    t.tp_methods = g_methods;
    t.tp_getset = g_getset;
    return t;
}

}  // namespace

PyTypeObject Interop_IColWrapper_Type = with_own_slots<&Interop_IColWrapper_Type, Interop_IColWrapper_status>(
    collection_type("orvane.pyfigura._wrpgen._interop._IColWrapper"));

PyTypeObject Interop_RoColBaseWrapper_Type =
    with_own_slots<&Interop_RoColBaseWrapper_Type, Interop_RoColBaseWrapper_status>(
        collection_type("orvane.pyfigura._wrpgen._interop._RoColBaseWrapper"));

const TypeInitStatus& Interop_IColWrapper_status() {
    static const TypeInitStatus status = status_of<SiApiCntCollection>({Interop_IterableWrapper_status});
    return status;
}

const TypeInitStatus& Interop_RoColBaseWrapper_status() {
    static const TypeInitStatus status =
        status_of<SiApiReadOnlyCollectionBase>({Interop_IColWrapper_status, Interop_IterableWrapper_status});
    return status;
}

const ListEntries& collection_entries() {
    static const ListEntries entries = list_entries_of<SiApiCntCollection>();
    return entries;
}

ListEntries collection_item_entries(void* sq_get_item, void* sq_get_item_no_check) {
    ListEntries e = collection_entries();
    e.get_item = reinterpret_cast<decltype(e.get_item)>(sq_get_item);
    e.get_item_no_check = reinterpret_cast<decltype(e.get_item_no_check)>(sq_get_item_no_check);
    return e;
}

Py_ssize_t collection_length(PyObject* self) { return list_length(self, collection_entries()); }

PyObject* collection_length_attr(PyObject* self, void*) { return list_length_attr(self, collection_entries()); }

int collection_sq_contains(PyObject* self, PyObject* value) {
    return list_sq_contains(self, value, collection_entries());
}

PyObject* collection_contains(PyObject* self, PyObject* value) {
    return list_contains(self, value, collection_entries());
}

PyObject* collection_count(PyObject* self, PyObject* value) { return list_count(self, value, collection_entries()); }

PyObject* collection_copy(PyObject* self, PyObject*) {
    const Py_ssize_t n = collection_length(self);
    if (n < 0 && PyErr_Occurred()) return nullptr;
    PyObject* list = PyList_New(n);
    if (list == nullptr) return nullptr;
    const Py_ssize_t got = fill_from_walk(self, list, n, 1);
    if (got < 0) {
        Py_DECREF(list);
        return nullptr;
    }
    // A collection that lost elements under the walk gives the shorter list; its tail holds no item.
    if (got < n) Py_SET_SIZE(list, got);
    return list;
}

PyObject* collection_repeat(PyObject* self, Py_ssize_t count) {
    if (count < 0) count = 0;
    const Py_ssize_t n = collection_length(self);
    if (n < 0 && PyErr_Occurred()) return nullptr;
    if (n > 0 && count > PY_SSIZE_T_MAX / n) return PyErr_NoMemory();
    PyObject* list = PyList_New(count * n);
    if (list == nullptr) return nullptr;
    const Py_ssize_t got = fill_from_walk(self, list, n, count);
    if (got < 0) {
        Py_DECREF(list);
        return nullptr;
    }
    if (got < n && count > 0) {
        // Shortage leaves holes in every copy: close them up, keeping the order of each copy.
        for (Py_ssize_t j = 1; j < count; ++j)
            for (Py_ssize_t i = 0; i < got; ++i)
                PyList_SET_ITEM(list, j * got + i, PyList_GET_ITEM(list, j * n + i));
        Py_SET_SIZE(list, count * got);
    }
    return list;
}

PyObject* collection_concat(PyObject* self, PyObject* other) {
    const Py_ssize_t n = collection_length(self);
    if (n < 0 && PyErr_Occurred()) return nullptr;
    return concat_to_list(self, n, other, fill_walked, nullptr);
}

PySequenceMethods collection_sequence_methods(ssizeargfunc item) {
    PySequenceMethods s = {};
    s.sq_length = collection_length;
    s.sq_concat = collection_concat;
    s.sq_repeat = collection_repeat;
    s.sq_item = item;
    s.sq_contains = collection_sq_contains;
    return s;
}
