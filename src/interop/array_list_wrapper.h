// _ArrListWrapper: a managed ArrayList with the whole list surface, over SiApiArrayList.
#pragma once
#include <Python.h>

#include "bridge/class_binding.h"

extern PyTypeObject Interop_ArrListWrapper_Type;

const TypeInitStatus& Interop_ArrListWrapper_status();
