// _wrpgen._interop._reassert_fault_handlers: called by the package after faulthandler.enable/disable.
#pragma once
#include <Python.h>

PyObject* reassert_fault_handlers_function(PyObject* module, PyObject* unused);
PyObject* yield_fault_handlers_function(PyObject* module, PyObject* unused);

#define FAULT_SIGNAL_METHODS                                                                          \
    {"_reassert_fault_handlers", reassert_fault_handlers_function, METH_NOARGS,                        \
     "_reassert_fault_handlers($module, /)\n--\n\nPuts the runtime's fault handlers back on top, so that " \
     "managed null references stay exceptions; the handlers found on top receive native faults."}, \
    {"_yield_fault_handlers", yield_fault_handlers_function, METH_NOARGS,                            \
     "_yield_fault_handlers($module, /)\n--\n\nCalled just before faulthandler.enable(): what it " \
     "saves to chain to is the forwarder of native faults, not the runtime."}
