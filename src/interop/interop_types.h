// Types of _wrpgen._interop and _wrpgen._generic: the protocol wrappers that generated classes name
// as interfaces or bases (disposable, iterable, collections, arrays, streams).
#pragma once
#include <Python.h>

#include "bridge/class_binding.h"
#include "interop/buffer_view.h"
#include "interop/stream_wrapper.h"

extern PyTypeObject Interop_IDisposableWrapper_Type;
extern PyTypeObject Interop_IterWrapper_Type;
extern PyTypeObject Interop_IterableWrapper_Type;
extern PyTypeObject Interop_IColWrapper_Type;
extern PyTypeObject Interop_IListWrapper_Type;
extern PyTypeObject Interop_RoColBaseWrapper_Type;
extern PyTypeObject Interop_ColBaseWrapper_Type;
extern PyTypeObject Interop_ArrayWrapper_Type;
extern PyTypeObject Interop_ArrListWrapper_Type;

const TypeInitStatus& Interop_IDisposableWrapper_status();
const TypeInitStatus& Interop_IterWrapper_status();
const TypeInitStatus& Interop_IterableWrapper_status();
const TypeInitStatus& Interop_IColWrapper_status();
const TypeInitStatus& Interop_IListWrapper_status();
const TypeInitStatus& Interop_RoColBaseWrapper_status();
const TypeInitStatus& Interop_ColBaseWrapper_status();
const TypeInitStatus& Interop_ArrayWrapper_status();
const TypeInitStatus& Interop_ArrListWrapper_status();
