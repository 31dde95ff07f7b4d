// Test probes: join the host that orvane.pyfigura started, as a sister module would, and bind
// entries of the probe assembly once.
#pragma once
#include <Python.h>

#include <cstddef>

#include "host/core/host_runtime.h"
#include "host/entry_tables.h"

struct ProbeBinding {
    const char* name;
    void** slot;
};

constexpr const char* kProbeAssembly = "Orvane.PyFigura.Probe";

// Binds every entry of `class_name` on the first call; false with the binding TypeError otherwise.
inline bool bind_probe_entries(const char* class_name, const ProbeBinding* bindings, size_t count, bool& bound) {
    if (bound) return true;
    host::HostRuntime& rt = host::host_runtime_instance(u"3.1", false, u"orvane", u"pyfigura");
    for (size_t i = 0; i < count; ++i) {
        uint32_t status = host::bind_managed_entry(rt, kProbeAssembly, class_name, bindings[i].name, bindings[i].slot);
        if (status != 0) {
            PyErr_SetString(PyExc_TypeError,
                            format_binding_error(kProbeAssembly, class_name, bindings[i].name, status).c_str());
            return false;
        }
    }
    bound = true;
    return true;
}

template <typename Fn>
void** probe_slot(Fn& field) {
    return reinterpret_cast<void**>(&field);
}
