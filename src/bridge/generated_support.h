// Everything the generated class code relies on, in one include.
#pragma once
// Argument parsing with Py_ssize_t lengths throughout.
#ifndef PY_SSIZE_T_CLEAN
#define PY_SSIZE_T_CLEAN
#endif
#include <Python.h>

#include "bridge/class_binding.h"
#include "bridge/fork_guard.h"
#include "bridge/object_use.h"
#include "bridge/descriptors.h"
#include "bridge/overload_trials.h"
#include "bridge/python_methods.h"
#include "bridge/type_registry.h"
#include "bridge/wrapper_object.h"
#include "host/entry_tables.h"
#include "interop/interop_types.h"
#include "interop/locked_bits.h"
#include "marshal/buffer_marshal.h"
#include "marshal/guid_marshal.h"
#include "marshal/scalar_marshal.h"
#include "marshal/stream_marshal.h"
#include "marshal/string_marshal.h"
#include "marshal/variant_marshal.h"
#include "module/module_contents.h"
#include "values/value_types.h"

// A Guid crosses as its 16 bytes in UUID.bytes_le order.
struct GuidValue {
    uint8_t bytes[16];
};
