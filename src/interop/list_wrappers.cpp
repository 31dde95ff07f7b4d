// The two list types: the list slots over the entries of SiApiCntList, with the length of SiApiCntCollection.
#include "interop/list_wrappers.h"

#include "interop/collection_protocol.h"
#include "interop/entry_table_binding.h"
#include "interop/list_entry_roles.h"
#include "interop/list_slots.h"
#include "interop/wrapper_type_shape.h"

namespace {

constexpr const char* kListClass = "Orvane.WrpGen.Interop.SiApiCntList";
constexpr const char* kListNames[] = {
    "SqGetItem",       "SqGetItemNoCheck", "SqSetItem",      "SqSetItemNoCheck",         "Add",
    "Insert",          "Remove",           "RemoveAt",       "Pop",                      "Clear",
    "SqInplaceConcat", "SqInplaceRepeat",  "MpSetItems",     "MpRemoveItems",            "Reverse",
    "Sort",            "IndexBy",          "SqContains",     "CountOf",                  "CreateInstanceFromPyList",
    "CreateInstanceFromPySequence",        "IsAssignableTo"};
constexpr const char* kBaseClass = "Orvane.WrpGen.Interop.SiApiCollectionBase";
constexpr const char* kBaseNames[] = {"CreateInstanceFromPyList", "CreateInstanceFromPySequence", "IsAssignableTo"};

using ListTable = ClassEntryTable<sizeof kListNames / sizeof kListNames[0]>;
using BaseTable = ClassEntryTable<3>;

ListTable& list_table() {
    static ListTable t = bind_entry_table(kListClass, kListNames);
    return t;
}

BaseTable& base_table() {
    static BaseTable t = bind_entry_table(kBaseClass, kBaseNames);
    return t;
}

using Slots = ListSlots<cnt_list_entries>;

}  // namespace

PyTypeObject Interop_IListWrapper_Type = [] {
    PyTypeObject t = Slots::type("orvane.pyfigura._wrpgen._interop._IListWrapper", true);
    t.tp_richcompare = compare_within<&Interop_IListWrapper_Type>;
    t.tp_new = new_gated_by<Interop_IListWrapper_status>;
    return t;
}();

PyTypeObject Interop_ColBaseWrapper_Type = [] {
    PyTypeObject t = Slots::type("orvane.pyfigura._wrpgen._interop._ColBaseWrapper", true);
    t.tp_richcompare = compare_within<&Interop_ColBaseWrapper_Type>;
    t.tp_new = new_gated_by<Interop_ColBaseWrapper_status>;
    return t;
}();

const TypeInitStatus& Interop_IListWrapper_status() {
    static const TypeInitStatus status =
        status_of(list_table().header, {Interop_IColWrapper_status, Interop_IterableWrapper_status});
    return status;
}

const TypeInitStatus& Interop_ColBaseWrapper_status() {
    static const TypeInitStatus status = status_of(
        base_table().header, {Interop_IListWrapper_status, Interop_IColWrapper_status, Interop_IterableWrapper_status});
    return status;
}

const ListEntries& cnt_list_entries() {
    static const ListEntries entries = [] {
        ListEntries e = list_entries_of(list_table(), kListNames);
        e.length = collection_entries().length;
        return e;
    }();
    return entries;
}
