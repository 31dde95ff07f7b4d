// _ArrListWrapper: the list protocol on the entries of SiApiArrayList, which reserves capacity before a bulk extend.
#include "interop/array_list_wrapper.h"

#include "interop/iteration_wrappers.h"
#include "interop/list_protocol.h"

namespace {

constexpr const char* kListClass = "Orvane.WrpGen.Interop.SiApiArrayList";
// SqSetItemNoChek is spelt as the managed side spells it.
constexpr const char* kListNames[] = {
    "SqLength",        "Add",        "Remove",        "Clear",          "SqContains",      "SqGetItem",
    "SqGetItemNoCheck", "SqSetItem", "SqSetItemNoChek", "Insert",       "RemoveAt",        "Pop",
    "SqInplaceConcat", "SqInplaceRepeat", "MpSetItems", "MpRemoveItems", "Reverse",        "Sort",
    "IndexBy",         "CountOf",    "EnsureCapacity", "CreateInstanceFromPyList", "CreateInstanceFromPySequence",
    "IsAssignableTo"};
constexpr size_t kListCount = sizeof kListNames / sizeof kListNames[0];
using ListTable = ClassEntryTable<kListCount>;

ListTable& list_table() {
    static ListTable t = [] {
        ListTable x{};
        bind_class_entries(x.header, x.entries, kListClass, kListNames, kListCount);
        return x;
    }();
    return t;
}

const ListEntries& E() {
    static const ListEntries entries = [] {
        void* const* s = list_table().entries;
        ListEntries e{};
        e.length = reinterpret_cast<decltype(e.length)>(s[0]);
        e.add = reinterpret_cast<decltype(e.add)>(s[1]);
        e.remove = reinterpret_cast<decltype(e.remove)>(s[2]);
        e.clear = reinterpret_cast<decltype(e.clear)>(s[3]);
        e.contains = reinterpret_cast<decltype(e.contains)>(s[4]);
        e.get_item = reinterpret_cast<decltype(e.get_item)>(s[5]);
        e.get_item_no_check = reinterpret_cast<decltype(e.get_item_no_check)>(s[6]);
        e.set_item = reinterpret_cast<decltype(e.set_item)>(s[7]);
        e.set_item_no_check = reinterpret_cast<decltype(e.set_item_no_check)>(s[8]);
        e.insert = reinterpret_cast<decltype(e.insert)>(s[9]);
        e.remove_at = reinterpret_cast<decltype(e.remove_at)>(s[10]);
        e.pop = reinterpret_cast<decltype(e.pop)>(s[11]);
        e.inplace_concat = reinterpret_cast<decltype(e.inplace_concat)>(s[12]);
        e.inplace_repeat = reinterpret_cast<decltype(e.inplace_repeat)>(s[13]);
        e.set_items = reinterpret_cast<decltype(e.set_items)>(s[14]);
        e.remove_items = reinterpret_cast<decltype(e.remove_items)>(s[15]);
        e.reverse = reinterpret_cast<decltype(e.reverse)>(s[16]);
        e.sort = reinterpret_cast<decltype(e.sort)>(s[17]);
        e.index_by = reinterpret_cast<decltype(e.index_by)>(s[18]);
        e.count_of = reinterpret_cast<decltype(e.count_of)>(s[19]);
        e.ensure_capacity = reinterpret_cast<decltype(e.ensure_capacity)>(s[20]);
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
PyObject* sq_inplace_concat(PyObject* self, PyObject* other) { return list_inplace_concat(self, other, E()); }
PyObject* sq_inplace_repeat(PyObject* self, Py_ssize_t count) { return list_inplace_repeat(self, count, E()); }
PyObject* mp_subscript(PyObject* self, PyObject* key) { return list_subscript(self, key, E()); }
int mp_ass_subscript(PyObject* self, PyObject* key, PyObject* value) {
    return list_ass_subscript(self, key, value, E());
}

PyObject* m_extend(PyObject* self, PyObject* other) { return list_extend(self, other, E()); }
PyObject* m_append(PyObject* self, PyObject* value) { return list_append(self, value, E()); }
PyObject* m_insert(PyObject* self, PyObject* args) { return list_insert(self, args, E()); }
PyObject* m_remove(PyObject* self, PyObject* value) { return list_remove(self, value, E()); }
PyObject* m_pop(PyObject* self, PyObject* args) { return list_pop(self, args, E()); }
PyObject* m_clear(PyObject* self, PyObject*) { return list_clear(self, E()); }
PyObject* m_index(PyObject* self, PyObject* args) { return list_index(self, args, E()); }
PyObject* m_count(PyObject* self, PyObject* value) { return list_count(self, value, E()); }
PyObject* m_sort(PyObject* self, PyObject* args, PyObject* kwargs) { return list_sort(self, args, kwargs, E()); }
PyObject* m_reverse(PyObject* self, PyObject*) { return list_reverse(self, E()); }
PyObject* m_copy(PyObject* self, PyObject*) { return list_copy(self, E()); }
PyObject* m_contains(PyObject* self, PyObject* value) { return list_contains(self, value, E()); }
PyObject* get_length(PyObject* self, void*) { return list_length_attr(self, E()); }

PyMethodDef g_methods[] = {
    {"extend", m_extend, METH_O, nullptr},
    {"append", m_append, METH_O, nullptr},
    {"insert", m_insert, METH_VARARGS, nullptr},
    {"remove", m_remove, METH_O, nullptr},
    {"pop", m_pop, METH_VARARGS, nullptr},
    {"clear", m_clear, METH_NOARGS, nullptr},
    {"index", m_index, METH_VARARGS, nullptr},
    {"count", m_count, METH_O, nullptr},
    {"sort", reinterpret_cast<PyCFunction>(reinterpret_cast<void*>(m_sort)), METH_VARARGS | METH_KEYWORDS, nullptr},
    {"reverse", m_reverse, METH_NOARGS, nullptr},
    {"copy", m_copy, METH_NOARGS, nullptr},
    {"contains", m_contains, METH_O, nullptr},
    {nullptr, nullptr, 0, nullptr}};

PyGetSetDef g_getset[] = {{"length", get_length, nullptr, nullptr, nullptr},
                          {nullptr, nullptr, nullptr, nullptr, nullptr}};

PySequenceMethods g_sequence = {sq_length, sq_concat, sq_repeat, sq_item, nullptr, sq_ass_item, nullptr,
                                sq_contains, sq_inplace_concat, sq_inplace_repeat};
PyMappingMethods g_mapping = {sq_length, mp_subscript, mp_ass_subscript};

PyObject* tp_richcompare(PyObject* self, PyObject* other, int op) {
    const int same = PyObject_IsInstance(other, reinterpret_cast<PyObject*>(&Interop_ArrListWrapper_Type));
    if (same == 0) Py_RETURN_NOTIMPLEMENTED;
    if (same < 0) return nullptr;
    return class_compare(handle_of(self), handle_of(other), op);
}

PyObject* tp_new(PyTypeObject* type, PyObject* args, PyObject* kwargs) {
    return gated_new(type, Interop_ArrListWrapper_status(), args, kwargs);
}

}  // namespace

PyTypeObject Interop_ArrListWrapper_Type = [] {
    PyTypeObject t = {PyVarObject_HEAD_INIT(nullptr, 0)};
    t.tp_name = "orvane.pyfigura._wrpgen._interop._ArrListWrapper";
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

const TypeInitStatus& Interop_ArrListWrapper_status() {
    static const TypeInitStatus status = [] {
        const StatusGetter references[] = {Interop_IterableWrapper_status};
        return compute_status(list_table().header, references, 1);
    }();
    return status;
}
