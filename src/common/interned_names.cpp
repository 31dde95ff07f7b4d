// Fills the interned-name table once at module entry.
#include "common/interned_names.h"

PyObject* interned_name_table[kInternedNameCount];

namespace {

// Texts in the order of InternedName.
const char* const kNameTexts[kInternedNameCount] = {
    "",
    "write",
    "readinto",
    "seek",
    "flush",
    "close",
    "closed",
    "readable",
    "writable",
    "seekable",
    "tell",
    "_orvane_clr_host",
    "_external_ancestor",
    "_additional_interfaces",
    "_implicit_interfaces",
    "IntEnum",
    "Enum",
    "UUID",
    "Decimal",
    "DecimalTuple",
    "RawIOBase",
    "BufferedIOBase",
    "BufferStream",
    "datetime",
    "timezone",
    "bytes_le",
    "exponent",
    "sign",
    "digits",
    "as_tuple",
    "tzinfo",
    "utcoffset",
    "utc",
    "extend",
    "pop",
    "clear",
    "remove",
    "index",
    "format_exception",
    "format_exception_only",
    "FormatCallbackException",
    "<unknown>",
    "__qualname__",
    "finalize",
    "VERSION",
    "_BACKWARD_COMPATIBILITY_THRESHOLD",
};

}  // namespace

void fill_interned_names() {
    // Results are stored untested: interning a short ASCII literal only fails when out of memory.
    for (int i = 0; i < kInternedNameCount; ++i) {
        interned_name_table[i] = PyUnicode_InternFromString(kNameTexts[i]);
    }
}
