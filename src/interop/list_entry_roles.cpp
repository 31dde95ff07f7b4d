// The managed entry names of the list roles; both spellings of SqSetItemNoCheck in use are known.
#include "interop/list_entry_roles.h"

#include <cstddef>
#include <cstring>

namespace {

struct Role {
    const char* name;
    size_t offset;  // of the role's pointer in ListEntries
};

#define ROLE(name, field) {name, offsetof(ListEntries, field)}
constexpr Role kRoles[] = {
    ROLE("SqLength", length),         ROLE("SqContains", contains),
    ROLE("CountOf", count_of),        ROLE("SqGetItem", get_item),
    ROLE("SqGetItemNoCheck", get_item_no_check),
    ROLE("SqSetItem", set_item),      ROLE("SqSetItemNoCheck", set_item_no_check),
    ROLE("SqSetItemNoChek", set_item_no_check),
    ROLE("Add", add),                 ROLE("Insert", insert),
    ROLE("Remove", remove),           ROLE("RemoveAt", remove_at),
    ROLE("Pop", pop),                 ROLE("Clear", clear),
    ROLE("SqInplaceConcat", inplace_concat),
    ROLE("SqInplaceRepeat", inplace_repeat),
    ROLE("MpSetItems", set_items),    ROLE("MpRemoveItems", remove_items),
    ROLE("Reverse", reverse),         ROLE("Sort", sort),
    ROLE("IndexBy", index_by),        ROLE("EnsureCapacity", ensure_capacity),
};
#undef ROLE

}  // namespace

ListEntries list_entries_by_name(const char* const* names, void* const* slots, size_t count) {
    static_assert(sizeof(void*) == sizeof(ListEntries::length), "entries are stored as bound");
    ListEntries entries{};
    char* base = reinterpret_cast<char*>(&entries);
    for (size_t i = 0; i < count; ++i)
        for (const Role& role : kRoles)
            if (std::strcmp(names[i], role.name) == 0) std::memcpy(base + role.offset, &slots[i], sizeof(void*));
    return entries;
}
