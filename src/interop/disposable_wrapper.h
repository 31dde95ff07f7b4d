// _IDisposableWrapper: the context-manager face of a managed disposable; `with obj:` disposes it at the end.
#pragma once
#include <Python.h>

#include "bridge/class_binding.h"

extern PyTypeObject Interop_IDisposableWrapper_Type;

// Failed exactly when SiApiDisposable could not be bound.
const TypeInitStatus& Interop_IDisposableWrapper_status();
