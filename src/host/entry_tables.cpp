// Binding of the exchange, object and class entry tables through the loader library.
#include "host/entry_tables.h"

#include <sstream>

#include "bridge/exception_bridge.h"
#include "host/callback_tables.h"
#include "host/core/host_runtime.h"
#include "host/released_calls.h"
#include "marshal/string_marshal.h"

namespace {

constexpr const char* kExchangeClass = "Orvane.WrpGen.Interop.ExchangeHost";
constexpr const char* kObjectClass = "Orvane.WrpGen.Interop.ObjectHost";

template <typename Fn>
void** slot_of(Fn& field) {
    return reinterpret_cast<void**>(&field);
}

// Binds one entry; on failure stores the binding message and returns false.
bool bind_one(host::HostRuntime& rt, const char* assembly, const char* class_name, const char* method,
              void** slot, std::string& error_text) {
    uint32_t status = host::bind_managed_entry(rt, assembly, class_name, method, slot);
    if (status == 0) return true;
    error_text = format_binding_error(assembly, class_name, method, status);
    return false;
}

}  // namespace

std::string format_binding_error(const char* assembly_name, const char* class_name, const char* method_name,
                                 uint32_t status) {
    std::ostringstream text;
    text << "While initializing the host for the '" << class_name << " (Assembly=" << assembly_name
         << ")' type, an error occurred - Method '" << method_name
         << "' not found (error=" << static_cast<int32_t>(status) << ")";
    return text.str();
}

ExchangeHostTable& exchange_host() {
    static ExchangeHostTable table{};
    return table;
}

bool exchange_bind(ExchangeHostTable& t, const char* assembly_name) {
    t.assembly_name = assembly_name;
    host::HostRuntime& rt = host::host_runtime_instance();
    struct Binding {
        const char* name;
        void** slot;
    };
    // Binding order differs from slot order at the two string builders.
    const Binding bindings[] = {
        {"GetTypeName", slot_of(t.GetTypeName)},
        {"SetExceptionCallback", slot_of(t.SetExceptionCallback)},
        {"SetCatchAndClearErrorCallback", slot_of(t.SetCatchAndClearErrorCallback)},
        {"SetU16StrBuilderCallback", slot_of(t.SetU16StrBuilderCallback)},
        {"SetPyUnraisableStrBuilderCallback", slot_of(t.SetPyUnraisableStrBuilderCallback)},
        {"SetPyStrBuilderCallback", slot_of(t.SetPyStrBuilderCallback)},
        {"SetPyBytesBuilderCallback", slot_of(t.SetPyBytesBuilderCallback)},
        {"SetPyStaticCallbacks", slot_of(t.SetPyStaticCallbacks)},
        {"SetPyGenericCallbacks", slot_of(t.SetPyGenericCallbacks)},
        {"FreePendingArgs", slot_of(t.FreePendingArgs)},
        {"FreeInstance", slot_of(t.FreeInstance)},
        {"FreeInstance", slot_of(t.FreeStructInstance)},
        {"InitServices", slot_of(t.InitServices)},
        {"BoxStcTarget", slot_of(t.BoxStcTarget)},
    };
    for (const Binding& b : bindings)
        if (!bind_one(rt, assembly_name, kExchangeClass, b.name, b.slot, t.error_text)) return false;
    return true;
}

const ObjectHostTable& object_host() {
    static ObjectHostTable table = [] {
        ObjectHostTable t{};
        t.assembly_name = exchange_host().assembly_name;
        host::HostRuntime& rt = host::host_runtime_instance();
        const char* names[] = {"ToStringOfObj", "ToStringOfStc", "GetHashOfObj", "GetHashOfStc",
                               "IsEqualsOfObj", "IsEqualsOfStc", "Dispose"};
        void** slots[] = {slot_of(t.ToStringOfObj), slot_of(t.ToStringOfStc), slot_of(t.GetHashOfObj),
                          slot_of(t.GetHashOfStc),  slot_of(t.IsEqualsOfObj), slot_of(t.IsEqualsOfStc),
                          slot_of(t.Dispose)};
        for (size_t i = 0; i < 7; ++i) {
            if (!bind_one(rt, t.assembly_name, kObjectClass, names[i], slots[i], t.error_text)) {
                t.failed = true;
                break;
            }
        }
        return t;
    }();
    return table;
}

void bind_class_entries(ClassEntryTableHeader& header, void** slots, const char* class_name,
                        const char* const* entry_names, size_t count) {
    header.assembly_name = exchange_host().assembly_name;
    if (host::in_forked_child()) {
        // Binding makes the runtime write code into pages the parent shares: a table first needed in a
        // forked child stays unbound (the calls that need it are refused before they run).
        header.failed = true;
        header.error_text = "the .NET runtime stays with the parent of a forked process";
        return;
    }
    host::HostRuntime& rt = host::host_runtime_instance();
    for (size_t i = 0; i < count; ++i) {
        if (!bind_one(rt, header.assembly_name, class_name, entry_names[i], &slots[i], header.error_text)) {
            header.failed = true;
            return;
        }
    }
}

int start_host_and_bind(const char16_t* runtime_version, const char* assembly_name, bool debug,
                        const char16_t* vendor, const char16_t* module_word) {
    host::host_runtime_instance(runtime_version, debug, vendor, module_word, nullptr, nullptr);
    ExchangeHostTable& exchange = exchange_host();
    if (!exchange_bind(exchange, assembly_name)) {
        PyErr_SetString(PyExc_TypeError, exchange.error_text.c_str());
        return -1;
    }
    exchange.SetExceptionCallback(&WithInterpreterLock<raise_proxy_error>::call);
    exchange.SetCatchAndClearErrorCallback(&WithInterpreterLock<catch_and_clear_error>::call);
    exchange.SetU16StrBuilderCallback(&WithInterpreterLock<build_u16_string>::call);
    exchange.SetPyStrBuilderCallback(&WithInterpreterLock<build_py_string>::call);
    exchange.SetPyUnraisableStrBuilderCallback(&WithInterpreterLock<build_py_string_quiet>::call);
    exchange.SetPyBytesBuilderCallback(&WithInterpreterLock<build_py_bytes>::call);
    exchange.SetPyStaticCallbacks(py_static_callbacks());
    exchange.SetPyGenericCallbacks(py_generic_callbacks());
    exchange.InitServices();
    const ObjectHostTable& objects = object_host();
    if (objects.failed) {
        PyErr_SetString(PyExc_TypeError, objects.error_text.c_str());
        return -1;
    }
    return 0;
}
