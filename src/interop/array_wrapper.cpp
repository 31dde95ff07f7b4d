// _ArrayWrapper: the list protocol on the entries of SiApiArray, without the operations that change the length.
#include "interop/array_wrapper.h"

#include "interop/list_entry_roles.h"
#include "interop/list_slots.h"
#include "interop/wrapper_type_shape.h"

namespace {

struct SiApiArray {
    static constexpr const char* kClass = "Orvane.WrpGen.Interop.SiApiArray";
    // SqSetItemNoChek is spelt as the managed side spells it.
    static constexpr const char* kEntries[] = {
        "SqLength", "SqContains", "SqGetItem", "SqGetItemNoCheck", "SqSetItem", "SqSetItemNoChek", "MpSetItems",
        "Reverse",  "Sort",       "IndexBy",   "CountOf",          "CreateInstanceFromPyList",
        "CreateInstanceFromPySequence",        "IsAssignableTo"};
};

// The table names no remove_at, remove_items, add, insert or pop: deletion is refused, and the
// methods that change the length are not offered.
const ListEntries& entries() {
    static const ListEntries e = list_entries_of<SiApiArray>();
    return e;
}

}  // namespace

PyTypeObject Interop_ArrayWrapper_Type = with_own_slots<&Interop_ArrayWrapper_Type, Interop_ArrayWrapper_status>(
    ListSlots<entries>::type("orvane.pyfigura._wrpgen._interop._ArrayWrapper", false));

// The collection and list statuses are not consulted: the array runs on a table of its own.
const TypeInitStatus& Interop_ArrayWrapper_status() {
    static const TypeInitStatus status = status_of<SiApiArray>({Interop_IterableWrapper_status});
    return status;
}
