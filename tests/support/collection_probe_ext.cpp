// Test-only module collection_probe: managed collections, enumerables and disposables from the probe
// assembly, wrapped in a chosen type of _wrpgen._interop, and the logs those managed objects keep.
#include <Python.h>

#include "bridge/wrapper_object.h"
#include "host/core/host_runtime.h"
#include "host/entry_tables.h"
#include "marshal/string_marshal.h"
#include "probe_binding.h"

namespace {

constexpr const char* kProbeClass = "Orvane.PyFigura.Probe.CollectionProbe";

struct Entries {
    InstanceHandle (*Make)(StringArg*);
    PyObject* (*Log)(InstanceHandle);
    bool bound;
};

Entries g_entries{};

bool bind_probe() {
    const ProbeBinding bindings[] = {{"Make", probe_slot(g_entries.Make)},
                                     {"Log", probe_slot(g_entries.Log)}};
    return bind_probe_entries(kProbeClass, bindings, sizeof bindings / sizeof bindings[0], g_entries.bound);
}

// make(kind, type) -> a new object of `type` (a wrapper type of the extension) holding the managed object.
PyObject* make(PyObject*, PyObject* args) {
    StringArg kind;
    reset_string_arg(&kind);
    PyTypeObject* type;
    if (!PyArg_ParseTuple(args, "O&O!", convert_string, &kind, &PyType_Type, &type)) return nullptr;
    if (!bind_probe()) return nullptr;
    const InstanceHandle handle = g_entries.Make(&kind);
    if (PyErr_Occurred()) return nullptr;
    PyObject* wrapper = type->tp_new(type, nullptr, nullptr);
    if (wrapper == nullptr) return nullptr;  // the handle stays with the managed side: a test-only leak
    reinterpret_cast<WrapperObject*>(wrapper)->handle = handle;
    return wrapper;
}

// log(wrapper) -> what the managed object recorded.
PyObject* read_log(PyObject*, PyObject* wrapper) {
    if (!bind_probe()) return nullptr;
    return g_entries.Log(handle_of(wrapper));
}

PyMethodDef g_methods[] = {{"make", make, METH_VARARGS, nullptr},
                           {"log", read_log, METH_O, nullptr},
                           {nullptr, nullptr, 0, nullptr}};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "collection_probe", nullptr, -1, g_methods};

}  // namespace

PyMODINIT_FUNC PyInit_collection_probe() { return PyModule_Create(&g_module); }
