// ListEntries read off a bound list table by its entry names, so that no table keeps a role-by-position map.
#pragma once
#include "interop/entry_table_binding.h"
#include "interop/list_protocol.h"

// The roles whose managed names stand in `names`, from the slots beside them; other names are skipped
// and roles without a name stay null.
ListEntries list_entries_by_name(const char* const* names, void* const* slots, size_t count);

// The roles of the bound table of the managed class that C describes.
template <typename C>
ListEntries list_entries_of() {
    return list_entries_by_name(C::kEntries, bound_table<C>().entries, sizeof C::kEntries / sizeof C::kEntries[0]);
}
