// The process-wide host: finds and loads the loader library, starts CoreCLR, binds managed entries.
#pragma once
#include <cstdint>
#include <string>

#include "host/core/dynamic_library.h"

namespace host {

using WrapInitialize = int32_t (*)(const char*, const char*, int32_t, const char**, const char**);
using WrapCreateDelegate = uint32_t (*)(const char*, const char*, const char*, void**);
using WrapShutdown = int32_t (*)();
using WrapIsDomainInitialized = int32_t (*)();
using WrapLoad = int32_t (*)(const char16_t*);

struct HostRuntime {
    std::string executable_path;
    std::string runtime_directory;
    std::string assembly_directories;  // joined with the platform's list separator
    DynamicLibrary wrap_library;
    WrapInitialize wrap_initialize = nullptr;
    WrapCreateDelegate wrap_create_delegate = nullptr;
    WrapShutdown wrap_shutdown = nullptr;
    WrapIsDomainInitialized wrap_is_domain_initialized = nullptr;
    bool domain_initialized = false;
    bool debug = false;
};

// The singleton. The first effective call starts the host (native exceptions on failure);
// later callers pass no arguments. runtime_version and module_word are part of the interface
// and not read: the runtime that runs is the one the directory scan finds.
HostRuntime& host_runtime_instance(const char16_t* runtime_version = nullptr, bool debug = false,
                                   const char16_t* vendor = nullptr, const char16_t* module_word = nullptr,
                                   const char* runtime_directory = nullptr,
                                   const char* assembly_directory = nullptr);

// Forwards to coreclr_wrap_create_delegate; returns its status.
uint32_t bind_managed_entry(HostRuntime& host, const char* assembly_name, const char* class_name,
                            const char* method_name, void** slot);

// Stops the runtime if this module started it; registered at exit by the first instance call.
// Does nothing in a forked child: the runtime belongs to the parent.
void host_shutdown();

// True in a process forked from the one that started the runtime. The runtime's threads did not
// follow the fork and its code pages are shared with the parent, so nothing may enter managed code.
extern bool g_forked_child;

// Puts the runtime's fault handlers back on top of handlers installed after it started, which then
// receive the faults that managed code did not raise.
void reassert_fault_handlers();
// Before handlers are installed on top: they then chain to the forwarder, not to the runtime.
void yield_fault_handlers();
inline bool in_forked_child() { return g_forked_child; }

}  // namespace host
