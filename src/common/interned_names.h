// Process-wide table of interned Python strings used for lookups, calls and message placeholders.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

// One entry per name, in table order; the integer value is the slot in the table.
enum class InternedName : int {
    Empty,
    Write,
    Readinto,
    Seek,
    Flush,
    Close,
    Closed,
    Readable,
    Writable,
    Seekable,
    Tell,
    OrvaneClrHost,
    ExternalAncestor,
    AdditionalInterfaces,
    ImplicitInterfaces,
    IntEnum,
    Enum,
    Uuid,
    Decimal,
    DecimalTuple,
    RawIOBase,
    BufferedIOBase,
    BufferStream,
    Datetime,
    Timezone,
    BytesLe,
    Exponent,
    Sign,
    Digits,
    AsTuple,
    Tzinfo,
    Utcoffset,
    Utc,
    Extend,
    Pop,
    Clear,
    Remove,
    Index,
    FormatException,
    FormatExceptionOnly,
    FormatCallbackException,
    Unknown,
    Qualname,
    Finalize,
    Version,
    BackwardCompatibilityThreshold,
};

constexpr int kInternedNameCount = static_cast<int>(InternedName::BackwardCompatibilityThreshold) + 1;

extern PyObject* interned_name_table[kInternedNameCount];

// Borrowed reference; valid once fill_interned_names has run.
inline PyObject* interned(InternedName name) {
    return interned_name_table[static_cast<int>(name)];
}

// Interns every name. A further call overwrites the table and abandons the old references.
void fill_interned_names();
