// Types of _wrpgen._interop and _wrpgen._generic: the protocol wrappers that generated classes name
// as interfaces or bases (disposable, iterable, collections, arrays, streams).
#pragma once
#include <Python.h>

#include "bridge/class_binding.h"
#include "interop/array_list_wrapper.h"
#include "interop/array_wrapper.h"
#include "interop/buffer_view.h"
#include "interop/collection_protocol.h"
#include "interop/disposable_wrapper.h"
#include "interop/iteration_wrappers.h"
#include "interop/list_wrappers.h"
#include "interop/stream_wrapper.h"
