// _ArrListWrapper: the list protocol on the entries of SiApiArrayList, which reserves capacity before a bulk extend.
#include "interop/array_list_wrapper.h"

#include "interop/list_entry_roles.h"
#include "interop/list_slots.h"
#include "interop/wrapper_type_shape.h"

namespace {

struct SiApiArrayList {
    static constexpr const char* kClass = "Orvane.WrpGen.Interop.SiApiArrayList";
    // SqSetItemNoChek is spelt as the managed side spells it.
    static constexpr const char* kEntries[] = {
        "SqLength",        "Add",        "Remove",        "Clear",          "SqContains",      "SqGetItem",
        "SqGetItemNoCheck", "SqSetItem", "SqSetItemNoChek", "Insert",       "RemoveAt",        "Pop",
        "SqInplaceConcat", "SqInplaceRepeat", "MpSetItems", "MpRemoveItems", "Reverse",        "Sort",
        "IndexBy",         "CountOf",    "EnsureCapacity", "CreateInstanceFromPyList", "CreateInstanceFromPySequence",
        "IsAssignableTo"};
};

const ListEntries& entries() {
    static const ListEntries e = list_entries_of<SiApiArrayList>();
    return e;
}

}  // namespace

PyTypeObject Interop_ArrListWrapper_Type = with_own_slots<&Interop_ArrListWrapper_Type, Interop_ArrListWrapper_status>(
    ListSlots<entries>::type("orvane.pyfigura._wrpgen._interop._ArrListWrapper", true));

const TypeInitStatus& Interop_ArrListWrapper_status() {
    static const TypeInitStatus status = status_of<SiApiArrayList>({Interop_IterableWrapper_status});
    return status;
}
