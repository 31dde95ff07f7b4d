// ListEntries read off a bound list table by its entry names, so that no table keeps a role-by-position map.
#pragma once
#include "host/entry_tables.h"
#include "interop/list_protocol.h"

// The roles whose managed names stand in `names`, from the slots beside them; other names are skipped
// and roles without a name stay null.
ListEntries list_entries_by_name(const char* const* names, void* const* slots, size_t count);

template <size_t N>
ListEntries list_entries_of(const ClassEntryTable<N>& table, const char* const (&names)[N]) {
    return list_entries_by_name(names, table.entries, N);
}
