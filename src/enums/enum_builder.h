// Builds one IntEnum type from the values that its interop class's accessors return.
#pragma once

#include <Python.h>

#include <cstddef>

#include "host/entry_tables.h"

// What a generated enumeration hands to the builder; the member names are in accessor order.
struct EnumDescription {
    const char* short_name;  // name given to IntEnum ("ContentAlignment")
    const char* full_name;   // qualified name used in messages ("orvane.pyfigura.ContentAlignment")
    const char* const* member_names;
    size_t member_count;
    const char* doc;         // __doc__ of the enumeration, naming the managed type
};

// New reference to IntEnum(short_name, ((name, value), ...)), every value read through its accessor
// in order; null with an exception set. A failed table raises the enum failure and calls nothing.
PyObject* build_int_enum(const EnumDescription& description, const ClassEntryTableHeader& header,
                         void* const* accessors);
