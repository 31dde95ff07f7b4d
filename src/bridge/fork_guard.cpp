// The refusal text of calls in a forked child.
#include "bridge/fork_guard.h"

PyObject* refuse_forked_child() {
    PyErr_SetString(PyExc_RuntimeError,
                    "orvane.pyfigura cannot be used in a process forked after it was imported: the .NET runtime "
                    "stays with the parent process. Start worker processes with the 'spawn' or 'forkserver' "
                    "method instead (multiprocessing.get_context('spawn') or "
                    "multiprocessing.set_start_method('forkserver')).");
    return nullptr;
}
