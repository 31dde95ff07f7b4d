// Loader library interface: the five operations through which the extension starts and reaches CoreCLR.
#pragma once
#include <cstdint>

#ifdef _WIN32
#define CORECLR_WRAP_EXPORT extern "C" __declspec(dllexport)
#else
#define CORECLR_WRAP_EXPORT extern "C" __attribute__((visibility("default")))
#endif

// Loads libcoreclr.so (coreclr.dll) from a full path given in UTF-16. Non-zero on success.
CORECLR_WRAP_EXPORT int32_t coreclr_wrap_load(const char16_t* coreclr_path);
// Starts the runtime and creates the default domain. 0 on success, else the runtime's status code.
CORECLR_WRAP_EXPORT int32_t coreclr_wrap_initialize(const char* executable_path, const char* domain_name,
                                                    int32_t property_count, const char** keys,
                                                    const char** values);
// Writes a native pointer to a public static managed method. 0 on success.
CORECLR_WRAP_EXPORT uint32_t coreclr_wrap_create_delegate(const char* assembly_name, const char* class_name,
                                                          const char* method_name, void** delegate_out);
CORECLR_WRAP_EXPORT int32_t coreclr_wrap_shutdown();
CORECLR_WRAP_EXPORT int32_t coreclr_wrap_is_domain_initialized();
