// Host bootstrap: directories, loader library, runtime load, default domain; shutdown at exit.
#include "host/core/host_runtime.h"

#include <cstdlib>
#include <stdexcept>

#include "host/core/host_exception.h"
#include "host/core/host_trace.h"
#include "host/core/runtime_discovery.h"
#include "host/core/text_encoding.h"
#include "host/platform/platform.h"

namespace host {
namespace {

HostRuntime* g_runtime = nullptr;  // for the exit step, which takes no argument

void mark_forked_child() { g_forked_child = true; }

void host_bootstrap(HostRuntime& rt, bool debug, const std::string& vendor, const char* runtime_directory,
                    const char* assembly_directory) {
    HOST_TRACE("Initializing .NET Core host...");
    rt.executable_path = platform::executable_path();
    rt.debug = debug;
    const char* library_name = debug ? kLoaderLibraryDebugName : kLoaderLibraryName;
    std::string default_dir = default_directory(rt.executable_path);

    rt.runtime_directory = runtime_directory ? std::string(runtime_directory)
                                             : resolve_runtime_directory(vendor, default_dir);
    HOST_TRACE("NETCORE_DIR: '%s'", rt.runtime_directory.c_str());

    std::vector<std::string> directories;
    if (assembly_directory) {
        directories.push_back(assembly_directory);
        if (directories.front() != rt.runtime_directory) directories.push_back(rt.runtime_directory);
    } else {
        directories = resolve_assembly_directories(vendor, debug, default_dir, rt.runtime_directory);
    }
    rt.assembly_directories = join_list(directories, platform::kListSeparator);
    HOST_TRACE("PRODUCT_ASSEMBLY_DIR: '%s'", rt.assembly_directories.c_str());

    std::string library_path = join_paths(rt.runtime_directory, library_name);
    HOST_TRACE("Loading: '%s'", library_path.c_str());
    DynamicLibrary library;
    library.load(library_path, library_name);
    rt.wrap_library = std::move(library);
    HOST_TRACE("wrap dll loaded");
    // The runtime can't be unloaded and its entry pointers stay valid until the process ends.
    rt.wrap_library.set_free_on_destroy(false);

    rt.wrap_initialize = reinterpret_cast<WrapInitialize>(rt.wrap_library.symbol("coreclr_wrap_initialize"));
    rt.wrap_create_delegate =
        reinterpret_cast<WrapCreateDelegate>(rt.wrap_library.symbol("coreclr_wrap_create_delegate"));
    rt.wrap_shutdown = reinterpret_cast<WrapShutdown>(rt.wrap_library.symbol("coreclr_wrap_shutdown"));
    rt.wrap_is_domain_initialized =
        reinterpret_cast<WrapIsDomainInitialized>(rt.wrap_library.symbol("coreclr_wrap_is_domain_initialized"));

    if (rt.wrap_library.loaded_here()) {
        auto wrap_load = reinterpret_cast<WrapLoad>(rt.wrap_library.symbol("coreclr_wrap_load"));
        std::string runtime_path = join_paths(rt.runtime_directory, kRuntimeLibraryName);
        HOST_TRACE("Loading2: '%s'", runtime_path.c_str());
        // The message is kept letter for letter ("wap"): callers and tests match it.
        if (wrap_load(utf8_to_utf16(runtime_path).c_str()) == 0) throw std::runtime_error("init coreclr wap");
    }
    HOST_TRACE(".NET Core host ready.");
}

bool create_default_domain(HostRuntime& rt) {
    if (rt.domain_initialized) return false;
    HOST_TRACE("Creating default AppDomain...");
    const std::string& paths = rt.assembly_directories;
    HOST_TRACE("APP_PATH: '%s'", paths.c_str());
    HOST_TRACE("APP_NI_PATHS: '%s'", paths.c_str());
    HOST_TRACE("NATIVE_DLL_SEARCH_DIRECTORIES: '%s'", paths.c_str());
    const char* keys[] = {"TRUSTED_PLATFORM_ASSEMBLIES", "APP_PATHS", "APP_NI_PATHS",
                          "NATIVE_DLL_SEARCH_DIRECTORIES", "AppDomainCompatSwitch"};
    const char* values[] = {"", paths.c_str(), paths.c_str(), paths.c_str(), "UseLatestBehaviorWhenTFMNotSpecified"};
    int32_t status = rt.wrap_initialize(rt.executable_path.c_str(), "OrvaneCLRHostDomain", 5, keys, values);
    if (status != 0) throw HostException(static_cast<uint32_t>(status));
    rt.domain_initialized = true;
    HOST_TRACE("Default AppDomain ready.");
    return true;
}

}  // namespace

HostRuntime& host_runtime_instance(const char16_t* /*runtime_version*/, bool debug, const char16_t* vendor,
                                   const char16_t* /*module_word*/, const char* runtime_directory,
                                   const char* assembly_directory) {
    static HostRuntime* instance = [] {
        static HostRuntime runtime;
        g_runtime = &runtime;
        std::atexit(host_shutdown);
        platform::on_fork_child(mark_forked_child);
        // Before the runtime installs its handlers: a forked child goes back to these.
        static const char* const runtime_libraries[] = {"libcoreclr", "libSystem.Native"};
        platform::restore_signals_in_fork_child(runtime_libraries, 2);
        platform::install_fault_forwarder(runtime_libraries, 2);
        return &runtime;
    }();
    HostRuntime& rt = *instance;
    if (rt.wrap_library.holds_handle()) return rt;
    read_trace_switch();
    host_bootstrap(rt, debug, vendor ? utf16_to_utf8(vendor) : std::string(), runtime_directory,
                   assembly_directory);
    if (rt.wrap_library.loaded_here())
        create_default_domain(rt);
    else
        rt.domain_initialized = rt.wrap_is_domain_initialized() != 0;
    platform::record_runtime_fault_handlers();
    return rt;
}

uint32_t bind_managed_entry(HostRuntime& host, const char* assembly_name, const char* class_name,
                            const char* method_name, void** slot) {
    return host.wrap_create_delegate(assembly_name, class_name, method_name, slot);
}

bool g_forked_child = false;

void reassert_fault_handlers() { platform::reassert_runtime_fault_handlers(); }
void yield_fault_handlers() { platform::yield_runtime_fault_handlers(); }

void host_shutdown() {
    HostRuntime* rt = g_runtime;
    if (rt == nullptr || g_forked_child) return;
    if (rt->wrap_shutdown != nullptr && rt->domain_initialized) {
        if (rt->wrap_library.holds_handle() && rt->wrap_library.loaded_here()) {
            HOST_TRACE("Shutdowning .NET Core host...");  // the trace text is kept as it has always read
            int32_t result = rt->wrap_shutdown();
            HOST_TRACE(".NET Core host is down: %d", result);
        }
        rt->domain_initialized = false;
    }
    rt->wrap_library = DynamicLibrary();
    rt->assembly_directories.clear();
    rt->runtime_directory.clear();
    rt->executable_path.clear();
}

}  // namespace host
