// The two list types: the list slots over the entries of SiApiCntList, with the length of SiApiCntCollection.
#include "interop/list_wrappers.h"

#include "interop/collection_protocol.h"
#include "interop/list_entry_roles.h"
#include "interop/list_slots.h"
#include "interop/wrapper_type_shape.h"

namespace {

struct SiApiCntList {
    static constexpr const char* kClass = "Orvane.WrpGen.Interop.SiApiCntList";
    static constexpr const char* kEntries[] = {
        "SqGetItem",       "SqGetItemNoCheck", "SqSetItem",      "SqSetItemNoCheck",         "Add",
        "Insert",          "Remove",           "RemoveAt",       "Pop",                      "Clear",
        "SqInplaceConcat", "SqInplaceRepeat",  "MpSetItems",     "MpRemoveItems",            "Reverse",
        "Sort",            "IndexBy",          "SqContains",     "CountOf",                  "CreateInstanceFromPyList",
        "CreateInstanceFromPySequence",        "IsAssignableTo"};
};

struct SiApiCollectionBase {
    static constexpr const char* kClass = "Orvane.WrpGen.Interop.SiApiCollectionBase";
    static constexpr const char* kEntries[] = {"CreateInstanceFromPyList", "CreateInstanceFromPySequence",
                                               "IsAssignableTo"};
};

using Slots = ListSlots<cnt_list_entries>;

}  // namespace

PyTypeObject Interop_IListWrapper_Type = with_own_slots<&Interop_IListWrapper_Type, Interop_IListWrapper_status>(
    Slots::type("orvane.pyfigura._wrpgen._interop._IListWrapper", true));

PyTypeObject Interop_ColBaseWrapper_Type = with_own_slots<&Interop_ColBaseWrapper_Type, Interop_ColBaseWrapper_status>(
    Slots::type("orvane.pyfigura._wrpgen._interop._ColBaseWrapper", true));

const TypeInitStatus& Interop_IListWrapper_status() {
    static const TypeInitStatus status =
        status_of<SiApiCntList>({Interop_IColWrapper_status, Interop_IterableWrapper_status});
    return status;
}

const TypeInitStatus& Interop_ColBaseWrapper_status() {
    static const TypeInitStatus status = status_of<SiApiCollectionBase>(
        {Interop_IListWrapper_status, Interop_IColWrapper_status, Interop_IterableWrapper_status});
    return status;
}

const ListEntries& cnt_list_entries() {
    static const ListEntries entries = [] {
        ListEntries e = list_entries_of<SiApiCntList>();
        e.length = collection_entries().length;
        return e;
    }();
    return entries;
}
