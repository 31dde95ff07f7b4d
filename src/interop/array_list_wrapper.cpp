// _ArrListWrapper: the list protocol on the entries of SiApiArrayList, which reserves capacity before a bulk extend.
#include "interop/array_list_wrapper.h"

#include "interop/entry_table_binding.h"
#include "interop/list_entry_roles.h"
#include "interop/list_slots.h"
#include "interop/wrapper_type_shape.h"

namespace {

constexpr const char* kListClass = "Orvane.WrpGen.Interop.SiApiArrayList";
// SqSetItemNoChek is spelt as the managed side spells it.
constexpr const char* kListNames[] = {
    "SqLength",        "Add",        "Remove",        "Clear",          "SqContains",      "SqGetItem",
    "SqGetItemNoCheck", "SqSetItem", "SqSetItemNoChek", "Insert",       "RemoveAt",        "Pop",
    "SqInplaceConcat", "SqInplaceRepeat", "MpSetItems", "MpRemoveItems", "Reverse",        "Sort",
    "IndexBy",         "CountOf",    "EnsureCapacity", "CreateInstanceFromPyList", "CreateInstanceFromPySequence",
    "IsAssignableTo"};
using ListTable = ClassEntryTable<sizeof kListNames / sizeof kListNames[0]>;

ListTable& list_table() {
    static ListTable t = bind_entry_table(kListClass, kListNames);
    return t;
}

const ListEntries& entries() {
    static const ListEntries e = list_entries_of(list_table(), kListNames);
    return e;
}

}  // namespace

PyTypeObject Interop_ArrListWrapper_Type = [] {
    PyTypeObject t = ListSlots<entries>::type("orvane.pyfigura._wrpgen._interop._ArrListWrapper", true);
    t.tp_richcompare = compare_within<&Interop_ArrListWrapper_Type>;
    t.tp_new = new_gated_by<Interop_ArrListWrapper_status>;
    return t;
}();

const TypeInitStatus& Interop_ArrListWrapper_status() {
    static const TypeInitStatus status = status_of(list_table().header, {Interop_IterableWrapper_status});
    return status;
}
