// Forwarding of methods written in Python (conversions to numpy and Pillow) from the wrapper types.
#include "bridge/python_methods.h"

PyObject* call_python_method(const char* module, const char* function, PyObject* first, PyObject* args,
                             PyObject* kwargs) {
    PyObject* owner = PyImport_ImportModule(module);  // sys.modules answers after the first call
    if (owner == nullptr) return nullptr;
    PyObject* callable = PyObject_GetAttrString(owner, function);
    Py_DECREF(owner);
    if (callable == nullptr) return nullptr;
    const Py_ssize_t count = PyTuple_GET_SIZE(args);
    PyObject* all = PyTuple_New(count + 1);
    if (all == nullptr) {
        Py_DECREF(callable);
        return nullptr;
    }
    PyTuple_SET_ITEM(all, 0, Py_NewRef(first));
    for (Py_ssize_t i = 0; i < count; ++i) PyTuple_SET_ITEM(all, i + 1, Py_NewRef(PyTuple_GET_ITEM(args, i)));
    PyObject* result = PyObject_Call(callable, all, kwargs);
    Py_DECREF(all);
    Py_DECREF(callable);
    return result;
}
