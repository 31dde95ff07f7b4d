// Calls made in a process forked after the runtime started: refused before they reach managed code.
#pragma once
#include <Python.h>

#include "host/core/host_runtime.h"

// RuntimeError saying that the runtime stays with the parent and how to start workers instead.
// Returns null, for `return refuse_forked_child();`.
PyObject* refuse_forked_child();

// First line of every generated function that reaches managed code; `failure` is its error value.
#define REFUSE_IN_FORKED_CHILD(failure)                              \
    do {                                                             \
        if (__builtin_expect(host::in_forked_child(), 0)) {          \
            refuse_forked_child();                                   \
            return failure;                                          \
        }                                                            \
    } while (0)
