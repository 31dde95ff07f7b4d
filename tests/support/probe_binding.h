// Test probes: what the probe modules share, and the binding of probe-assembly entries through the host that
// orvane.pyfigura started, as a sister module would.
#pragma once
#include <Python.h>

#include <cstddef>
#include <initializer_list>
#include <string>
#include <utility>

#include "common/interned_names.h"
#include "host/core/host_runtime.h"
#include "host/entry_tables.h"

#define PROBE_KW(name, function) \
    {name, reinterpret_cast<PyCFunction>(reinterpret_cast<void (*)()>(function)), METH_VARARGS | METH_KEYWORDS, nullptr}

// The pending exception, normalized and cleared: a new reference, or None when none is pending.
inline PyObject* take_error() {
    PyObject *type, *value, *traceback;
    PyErr_Fetch(&type, &value, &traceback);
    if (type == nullptr) return Py_NewRef(Py_None);
    PyErr_NormalizeException(&type, &value, &traceback);
    Py_XDECREF(type);
    Py_XDECREF(traceback);
    return value;
}

using ProbeTypes = std::initializer_list<std::pair<const char*, PyTypeObject*>>;

// The module of `definition` with `types` readied and added by name; interned names are filled first, as the
// extension does.
inline PyObject* probe_module(PyModuleDef& definition, ProbeTypes types = {}) {
    fill_interned_names();
    PyObject* module = PyModule_Create(&definition);
    for (const auto& [name, type] : types) {
        if (module != nullptr && (PyType_Ready(type) < 0 || PyModule_AddObjectRef(module, name, (PyObject*)type) < 0))
            Py_CLEAR(module);
    }
    return module;
}

struct ProbeBinding {
    const char* name;
    void** slot;
};

#define PROBE_ENTRY(entries, name) {#name, reinterpret_cast<void**>(&entries.name)}

// Binds every entry of `class_name` of the probe assembly on the first call; false with the binding TypeError.
template <size_t N>
bool bind_probe_entries(const char* class_name, const ProbeBinding (&bindings)[N], bool& bound) {
    constexpr const char* kAssembly = "Orvane.PyFigura.Probe";
    if (bound) return true;
    host::HostRuntime& rt = host::host_runtime_instance(u"3.1", false, u"orvane", u"pyfigura");
    for (size_t i = 0; i < N; ++i) {
        if (uint32_t status = host::bind_managed_entry(rt, kAssembly, class_name, bindings[i].name, bindings[i].slot)) {
            const std::string text = format_binding_error(kAssembly, class_name, bindings[i].name, status);
            PyErr_SetString(PyExc_TypeError, text.c_str());
            return false;
        }
    }
    return bound = true;
}
