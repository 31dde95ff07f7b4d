// Host trace and error texts.
#include "host/core/host_trace.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>

#include "host/platform/platform.h"

namespace host {

bool g_trace_enabled = false;

void read_trace_switch() {
    if (g_trace_enabled) return;
    std::string value;
    if (!platform::get_environment("COREHOST_TRACE", value)) return;
    long number = std::strtol(value.c_str(), nullptr, 10);
    if (number > 0) {
        g_trace_enabled = true;
        platform::use_untranslated_standard_output();
        trace_line("%s", "CLR host tracing enabled");
    }
}

void trace_line(const char* format, ...) {
    if (!g_trace_enabled) return;
    va_list args;
    va_start(args, format);
    std::vfprintf(stdout, format, args);
    va_end(args);
    std::fputs("\r\n", stdout);
    // The interpreter writes to the same descriptor through its own buffer: keep the order readable.
    std::fflush(stdout);
}

std::string platform_error_text(uint32_t code) {
    std::string text;
    if (platform::error_text(code, text)) {
        size_t cr = text.find('\r');
        if (cr != std::string::npos) text.resize(cr);
        return text;
    }
    char buffer[100];
    std::snprintf(buffer, sizeof buffer, "Unknown error: %ld (0x%lX)", static_cast<long>(static_cast<int32_t>(code)),
                  static_cast<unsigned long>(code));
    return buffer;
}

}  // namespace host
