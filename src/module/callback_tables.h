// The two callback tables through which managed code reads and makes Python values (generated from
// api/callbacks.json, with the group and row names of both sides).
#pragma once

#include "generated_callback_rows.h"

// Nine groups of function pointers, in group order: values in, values out, buffers, references,
// iteration, containers, lists, sequences, streams.
void* const* py_static_callbacks();

// 36 cells, each the address of a function pointer: 18 element kinds read from a list, then from a sequence.
void* const* py_generic_callbacks();
