// _ArrayWrapper: the list protocol on the entries of SiApiArray, without the operations that change the length.
#include "interop/array_wrapper.h"

#include "interop/iteration_wrappers.h"
#include "interop/list_protocol.h"

namespace {

constexpr const char* kArrayClass = "Orvane.WrpGen.Interop.SiApiArray";
// SqSetItemNoChek is spelt as the managed side spells it.
constexpr const char* kArrayNames[] = {
    "SqLength", "SqContains", "SqGetItem", "SqGetItemNoCheck", "SqSetItem", "SqSetItemNoChek", "MpSetItems",
    "Reverse",  "Sort",       "IndexBy",   "CountOf",          "CreateInstanceFromPyList",
    "CreateInstanceFromPySequence",        "IsAssignableTo"};
constexpr size_t kArrayCount = sizeof kArrayNames / sizeof kArrayNames[0];
using ArrayTable = ClassEntryTable<kArrayCount>;

ArrayTable& array_table() {
    static ArrayTable t = [] {
        ArrayTable x{};
        bind_class_entries(x.header, x.entries, kArrayClass, kArrayNames, kArrayCount);
        return x;
    }();
    return t;
}

// No remove_at, remove_items, add, insert or pop: deletion is refused, and the methods that change the
// length are not offered.
const ListEntries& E() {
    static const ListEntries entries = [] {
        void* const* s = array_table().entries;
        ListEntries e{};
        e.length = reinterpret_cast<decltype(e.length)>(s[0]);
        e.contains = reinterpret_cast<decltype(e.contains)>(s[1]);
        e.get_item = reinterpret_cast<decltype(e.get_item)>(s[2]);
        e.get_item_no_check = reinterpret_cast<decltype(e.get_item_no_check)>(s[3]);
        e.set_item = reinterpret_cast<decltype(e.set_item)>(s[4]);
        e.set_item_no_check = reinterpret_cast<decltype(e.set_item_no_check)>(s[5]);
        e.set_items = reinterpret_cast<decltype(e.set_items)>(s[6]);
        e.reverse = reinterpret_cast<decltype(e.reverse)>(s[7]);
        e.sort = reinterpret_cast<decltype(e.sort)>(s[8]);
        e.index_by = reinterpret_cast<decltype(e.index_by)>(s[9]);
        e.count_of = reinterpret_cast<decltype(e.count_of)>(s[10]);
        return e;
    }();
    return entries;
}

Py_ssize_t sq_length(PyObject* self) { return list_length(self, E()); }
PyObject* sq_concat(PyObject* self, PyObject* other) { return list_concat(self, other, E()); }
PyObject* sq_repeat(PyObject* self, Py_ssize_t count) { return list_repeat(self, count, E()); }
PyObject* sq_item(PyObject* self, Py_ssize_t i) { return list_item(self, i, E()); }
int sq_ass_item(PyObject* self, Py_ssize_t i, PyObject* value) { return list_ass_item(self, i, value, E()); }
int sq_contains(PyObject* self, PyObject* value) { return list_sq_contains(self, value, E()); }
PyObject* mp_subscript(PyObject* self, PyObject* key) { return list_subscript(self, key, E()); }
int mp_ass_subscript(PyObject* self, PyObject* key, PyObject* value) {
    return list_ass_subscript(self, key, value, E());
}

PyObject* m_index(PyObject* self, PyObject* args) { return list_index(self, args, E()); }
PyObject* m_count(PyObject* self, PyObject* value) { return list_count(self, value, E()); }
PyObject* m_sort(PyObject* self, PyObject* args, PyObject* kwargs) { return list_sort(self, args, kwargs, E()); }
PyObject* m_reverse(PyObject* self, PyObject*) { return list_reverse(self, E()); }
PyObject* m_copy(PyObject* self, PyObject*) { return list_copy(self, E()); }
PyObject* m_contains(PyObject* self, PyObject* value) { return list_contains(self, value, E()); }
PyObject* get_length(PyObject* self, void*) { return list_length_attr(self, E()); }

PyMethodDef g_methods[] = {
    {"index", m_index, METH_VARARGS, nullptr},
    {"count", m_count, METH_O, nullptr},
    {"sort", reinterpret_cast<PyCFunction>(reinterpret_cast<void*>(m_sort)), METH_VARARGS | METH_KEYWORDS, nullptr},
    {"reverse", m_reverse, METH_NOARGS, nullptr},
    {"copy", m_copy, METH_NOARGS, nullptr},
    {"contains", m_contains, METH_O, nullptr},
    {nullptr, nullptr, 0, nullptr}};

PyGetSetDef g_getset[] = {{"length", get_length, nullptr, nullptr, nullptr},
                          {nullptr, nullptr, nullptr, nullptr, nullptr}};

PySequenceMethods g_sequence = {sq_length, sq_concat, sq_repeat,   sq_item, nullptr,
                                sq_ass_item, nullptr, sq_contains, nullptr, nullptr};
PyMappingMethods g_mapping = {sq_length, mp_subscript, mp_ass_subscript};

PyObject* tp_richcompare(PyObject* self, PyObject* other, int op) {
    const int same = PyObject_IsInstance(other, reinterpret_cast<PyObject*>(&Interop_ArrayWrapper_Type));
    if (same == 0) Py_RETURN_NOTIMPLEMENTED;
    if (same < 0) return nullptr;
    return class_compare(handle_of(self), handle_of(other), op);
}

PyObject* tp_new(PyTypeObject* type, PyObject* args, PyObject* kwargs) {
    return gated_new(type, Interop_ArrayWrapper_status(), args, kwargs);
}

}  // namespace

PyTypeObject Interop_ArrayWrapper_Type = [] {
    PyTypeObject t = {PyVarObject_HEAD_INIT(nullptr, 0)};
    t.tp_name = "orvane.pyfigura._wrpgen._interop._ArrayWrapper";
    t.tp_basicsize = sizeof(WrapperObject);
    t.tp_dealloc = class_dealloc;
    t.tp_hash = class_hash;
    t.tp_flags = Py_TPFLAGS_DEFAULT;
    t.tp_richcompare = tp_richcompare;
    t.tp_iter = iterable_iter;
    t.tp_as_sequence = &g_sequence;
    t.tp_as_mapping = &g_mapping;
    t.tp_methods = g_methods;
    t.tp_getset = g_getset;
    t.tp_init = no_constructor_init;
    t.tp_new = tp_new;
    return t;
}();

// The collection and list statuses are not consulted: the array runs on a table of its own.
const TypeInitStatus& Interop_ArrayWrapper_status() {
    static const TypeInitStatus status = [] {
        const StatusGetter references[] = {Interop_IterableWrapper_status};
        return compute_status(array_table().header, references, 1);
    }();
    return status;
}
