// Loader library: owns the CoreCLR handle and domain id and offers the five coreclr_wrap_* operations.
#include "coreclr_wrap.h"

#include <exception>
#include <string>
#include <vector>

#include "host/core/text_encoding.h"
#include "runtime_files.h"
#include "trusted_assemblies.h"

namespace {

// The CoreCLR hosting API of libcoreclr.so and coreclr.dll.
using coreclr_initialize_fn = int (*)(const char* exe_path, const char* domain_name, int property_count,
                                      const char** keys, const char** values, void** host_handle,
                                      unsigned int* domain_id);
using coreclr_shutdown_fn = int (*)(void* host_handle, unsigned int domain_id);
using coreclr_create_delegate_fn = int (*)(void* host_handle, unsigned int domain_id, const char* assembly_name,
                                           const char* type_name, const char* method_name, void** delegate);

struct RuntimeState {
    void* library = nullptr;
    std::string coreclr_path;
    coreclr_initialize_fn initialize = nullptr;
    coreclr_shutdown_fn shutdown = nullptr;
    coreclr_create_delegate_fn create_delegate = nullptr;
    void* host_handle = nullptr;
    unsigned int domain_id = 0;
    bool domain_initialized = false;
};

RuntimeState& state() {
    static RuntimeState instance;
    return instance;
}

// Status codes of the runtime's HRESULT family, used where the runtime itself cannot answer.
constexpr uint32_t kStatusFail = 0x80004005u;             // E_FAIL
constexpr uint32_t kStatusNotInitialized = 0x80131022u;   // HOST_E_INVALIDOPERATION

const char* find_value(int32_t count, const char** keys, const char** values, const char* key) {
    for (int32_t i = 0; i < count; ++i)
        if (std::string(keys[i]) == key) return values[i];
    return nullptr;
}

}  // namespace

int32_t coreclr_wrap_load(const char16_t* coreclr_path) {
    RuntimeState& s = state();
    if (s.library != nullptr) return 1;
    // Load through the real path: the runtime finds its JIT and native parts beside its own file.
    std::string path;
    try {
        path = host::utf16_to_utf8(coreclr_path);
    } catch (const std::exception&) {
        return 0;  // not a valid UTF-16 path
    }
    std::string resolved;
    void* library = loader::open_runtime_library(path, resolved);
    if (library == nullptr) return 0;
    s.initialize = reinterpret_cast<coreclr_initialize_fn>(loader::runtime_symbol(library, "coreclr_initialize"));
    s.shutdown = reinterpret_cast<coreclr_shutdown_fn>(loader::runtime_symbol(library, "coreclr_shutdown"));
    s.create_delegate =
        reinterpret_cast<coreclr_create_delegate_fn>(loader::runtime_symbol(library, "coreclr_create_delegate"));
    if (s.initialize == nullptr || s.shutdown == nullptr || s.create_delegate == nullptr) {
        loader::close_runtime_library(library);
        s.initialize = nullptr;
        s.shutdown = nullptr;
        s.create_delegate = nullptr;
        return 0;
    }
    s.library = library;
    s.coreclr_path = resolved;
    return 1;
}

int32_t coreclr_wrap_initialize(const char* executable_path, const char* domain_name, int32_t property_count,
                                const char** keys, const char** values) {
    RuntimeState& s = state();
    if (s.initialize == nullptr) return static_cast<int32_t>(kStatusNotInitialized);
    if (s.domain_initialized) return 0;

    std::vector<const char*> all_keys(keys, keys + property_count);
    std::vector<const char*> all_values(values, values + property_count);

    // An empty assembly list from the caller means: the framework's assemblies plus the app paths'.
    const char* app_paths = find_value(property_count, keys, values, "APP_PATHS");
    std::string trusted = loader::build_trusted_assemblies(s.coreclr_path, app_paths ? app_paths : "");
    bool has_trusted = false;
    for (size_t i = 0; i < all_keys.size(); ++i) {
        if (std::string(all_keys[i]) == "TRUSTED_PLATFORM_ASSEMBLIES") {
            has_trusted = true;
            if (all_values[i][0] == 0) all_values[i] = trusted.c_str();
        }
    }
    if (!has_trusted) {
        all_keys.push_back("TRUSTED_PLATFORM_ASSEMBLIES");
        all_values.push_back(trusted.c_str());
    }
    // System.Drawing.Common 6 runs on Unix (over libgdiplus) only with this switch.
    if (find_value(property_count, keys, values, "System.Drawing.EnableUnixSupport") == nullptr) {
        all_keys.push_back("System.Drawing.EnableUnixSupport");
        all_values.push_back("true");
    }

    int status = s.initialize(executable_path, domain_name, static_cast<int>(all_keys.size()), all_keys.data(),
                              all_values.data(), &s.host_handle, &s.domain_id);
    if (status < 0) return status;
    s.domain_initialized = true;
    return 0;
}

uint32_t coreclr_wrap_create_delegate(const char* assembly_name, const char* class_name, const char* method_name,
                                      void** delegate_out) {
    RuntimeState& s = state();
    if (!s.domain_initialized) return kStatusNotInitialized;
    int status = s.create_delegate(s.host_handle, s.domain_id, assembly_name, class_name, method_name, delegate_out);
    if (status < 0) return static_cast<uint32_t>(status);
    return *delegate_out != nullptr ? 0u : kStatusFail;
}

int32_t coreclr_wrap_shutdown() {
    RuntimeState& s = state();
    if (!s.domain_initialized) return static_cast<int32_t>(kStatusNotInitialized);
    s.domain_initialized = false;
    return s.shutdown(s.host_handle, s.domain_id);
}

int32_t coreclr_wrap_is_domain_initialized() { return state().domain_initialized ? 1 : 0; }
