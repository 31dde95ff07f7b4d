// _ArrayWrapper: a managed array of any element type as a fixed-length Python list, over SiApiArray.
#pragma once
#include <Python.h>

#include "bridge/class_binding.h"

extern PyTypeObject Interop_ArrayWrapper_Type;

const TypeInitStatus& Interop_ArrayWrapper_status();
