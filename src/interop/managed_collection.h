// Python's gc.collect() reaching the managed collector: the private function the package's gc hook calls.
#pragma once
#include <Python.h>

// _wrpgen._interop._collect_managed(): a full managed collection, so that images Python dropped give
// their native memory back now. Returns None.
PyObject* collect_managed(PyObject* module, PyObject* unused);

#define MANAGED_COLLECTION_METHODS \
    {"_collect_managed", collect_managed, METH_NOARGS, "_collect_managed($module, /)\n--\n\nRuns a full managed garbage collection."}
