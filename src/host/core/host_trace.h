// Host trace on standard output (switched on by COREHOST_TRACE) and the platform's error texts.
#pragma once
#include <cstdint>
#include <string>

namespace host {

extern bool g_trace_enabled;

// Reads COREHOST_TRACE once; a number above 0 switches the trace on and writes its first line.
void read_trace_switch();

// Writes one formatted line ending in CR LF when the trace is on.
void trace_line(const char* format, ...) __attribute__((format(printf, 1, 2)));

#define HOST_TRACE(...)                                  \
    do {                                                 \
        if (::host::g_trace_enabled) ::host::trace_line(__VA_ARGS__); \
    } while (0)

// The platform's text for a code, or "Unknown error: <signed> (0x<hex>)".
std::string platform_error_text(uint32_t code);

}  // namespace host
