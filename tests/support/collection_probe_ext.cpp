// Test module collection_probe: managed collections, enumerables and disposables from the probe assembly, wrapped
// in a chosen type of _wrpgen._interop, and the logs those managed objects keep.
#include "bridge/wrapper_object.h"
#include "marshal/string_marshal.h"
#include "probe_binding.h"

namespace {

struct {
    InstanceHandle (*Make)(StringArg*);
    PyObject* (*Log)(InstanceHandle);
    bool bound;
} g_entries{};

bool bind_probe() {
    const ProbeBinding bindings[] = {PROBE_ENTRY(g_entries, Make), PROBE_ENTRY(g_entries, Log)};
    return bind_probe_entries("Orvane.PyFigura.Probe.CollectionProbe", bindings, g_entries.bound);
}

// make(kind, type) -> a new object of `type` (a wrapper type of the extension) holding the managed object.
PyObject* make(PyObject*, PyObject* args) {
    StringArg kind;
    reset_string_arg(&kind);
    PyTypeObject* type;
    if (!PyArg_ParseTuple(args, "O&O!", convert_string, &kind, &PyType_Type, &type) || !bind_probe()) return nullptr;
    const InstanceHandle handle = g_entries.Make(&kind);
    if (PyErr_Occurred()) return nullptr;
    PyObject* wrapper = type->tp_new(type, nullptr, nullptr);
    if (wrapper != nullptr) reinterpret_cast<WrapperObject*>(wrapper)->handle = handle;
    return wrapper;  // on failure the handle stays with the managed side: a test-only leak
}

// log(wrapper) -> what the managed object recorded.
PyObject* read_log(PyObject*, PyObject* wrapper) { return bind_probe() ? g_entries.Log(handle_of(wrapper)) : nullptr; }

PyMethodDef g_methods[] = {{"make", make, METH_VARARGS, nullptr},
                           {"log", read_log, METH_O, nullptr},
                           {nullptr, nullptr, 0, nullptr}};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "collection_probe", nullptr, -1, g_methods};

}  // namespace

PyMODINIT_FUNC PyInit_collection_probe() { return probe_module(g_module); }
