// Start-up of the host with everything wired in: callbacks handed over, services initialised.
#pragma once
#include <Python.h>

// Starts the host, binds ExchangeHost, hands over the callbacks, calls InitServices, binds ObjectHost.
// 0, or -1 with a Python exception set. Native exceptions of the bootstrap are not caught.
int start_host_and_bind(const char16_t* runtime_version, const char* assembly_name, bool debug,
                        const char16_t* vendor, const char16_t* module_word);
