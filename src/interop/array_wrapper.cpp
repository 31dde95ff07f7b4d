// _ArrayWrapper: the list protocol on the entries of SiApiArray, without the operations that change the length.
#include "interop/array_wrapper.h"

#include "interop/entry_table_binding.h"
#include "interop/list_entry_roles.h"
#include "interop/list_slots.h"
#include "interop/wrapper_type_shape.h"

namespace {

constexpr const char* kArrayClass = "Orvane.WrpGen.Interop.SiApiArray";
// SqSetItemNoChek is spelt as the managed side spells it.
constexpr const char* kArrayNames[] = {
    "SqLength", "SqContains", "SqGetItem", "SqGetItemNoCheck", "SqSetItem", "SqSetItemNoChek", "MpSetItems",
    "Reverse",  "Sort",       "IndexBy",   "CountOf",          "CreateInstanceFromPyList",
    "CreateInstanceFromPySequence",        "IsAssignableTo"};
using ArrayTable = ClassEntryTable<sizeof kArrayNames / sizeof kArrayNames[0]>;

ArrayTable& array_table() {
    static ArrayTable t = bind_entry_table(kArrayClass, kArrayNames);
    return t;
}

// The table names no remove_at, remove_items, add, insert or pop: deletion is refused, and the
// methods that change the length are not offered.
const ListEntries& entries() {
    static const ListEntries e = list_entries_of(array_table(), kArrayNames);
    return e;
}

}  // namespace

PyTypeObject Interop_ArrayWrapper_Type = [] {
    PyTypeObject t = ListSlots<entries>::type("orvane.pyfigura._wrpgen._interop._ArrayWrapper", false);
    t.tp_richcompare = compare_within<&Interop_ArrayWrapper_Type>;
    t.tp_new = new_gated_by<Interop_ArrayWrapper_status>;
    return t;
}();

// The collection and list statuses are not consulted: the array runs on a table of its own.
const TypeInitStatus& Interop_ArrayWrapper_status() {
    static const TypeInitStatus status = status_of(array_table().header, {Interop_IterableWrapper_status});
    return status;
}
