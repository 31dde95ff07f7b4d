// The one place where the host, the callbacks of every layer and the managed services meet at start-up.
#include "module/host_start.h"

#include "bridge/exception_bridge.h"
#include "host/core/host_runtime.h"
#include "host/entry_tables.h"
#include "host/released_calls.h"
#include "marshal/string_marshal.h"
#include "module/callback_tables.h"

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
