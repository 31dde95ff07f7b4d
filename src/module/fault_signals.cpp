// The Python face of the fault-handler arrangement of the host.
#include "module/fault_signals.h"

#include "host/core/host_runtime.h"

PyObject* yield_fault_handlers_function(PyObject*, PyObject*) {
    if (!host::in_forked_child()) host::yield_fault_handlers();
    Py_RETURN_NONE;
}

PyObject* reassert_fault_handlers_function(PyObject*, PyObject*) {
    if (!host::in_forked_child()) host::reassert_fault_handlers();
    Py_RETURN_NONE;
}
