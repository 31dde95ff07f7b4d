// Binding a protocol type's entry table and computing its status from it and the types it refers to.
#pragma once
#include <initializer_list>

#include "bridge/class_binding.h"

// A table of one managed class, its entries bound in the order of `names`.
template <size_t N>
ClassEntryTable<N> bind_entry_table(const char* class_name, const char* const (&names)[N]) {
    ClassEntryTable<N> table{};
    bind_class_entries(table.header, table.entries, class_name, names, N);
    return table;
}

// The table of the managed class that C describes (C::kClass, C::kEntries), bound on first use.
template <typename C>
auto& bound_table() {
    static auto table = bind_entry_table(C::kClass, C::kEntries);
    return table;
}

// Status of a type from its table and, in order, the statuses of the types it refers to.
inline TypeInitStatus status_of(const ClassEntryTableHeader& table,
                                std::initializer_list<StatusGetter> references = {}) {
    return compute_status(table, references.begin(), references.size());
}

template <typename C>
TypeInitStatus status_of(std::initializer_list<StatusGetter> references = {}) {
    return status_of(bound_table<C>().header, references);
}
