// Types of _wrpgen._interop and _wrpgen._generic: the protocol wrappers that generated classes name
// as interfaces or bases (disposable, iterable, collections, arrays, streams).
#pragma once
#include <Python.h>

#include "bridge/class_binding.h"
#include "interop/buffer_view.h"
#include "interop/collection_protocol.h"
#include "interop/disposable_wrapper.h"
#include "interop/iteration_wrappers.h"
#include "interop/list_wrappers.h"
#include "interop/stream_wrapper.h"

extern PyTypeObject Interop_ArrayWrapper_Type;
extern PyTypeObject Interop_ArrListWrapper_Type;

const TypeInitStatus& Interop_ArrayWrapper_status();
const TypeInitStatus& Interop_ArrListWrapper_status();
