// Fake loader library for the native tests: the five coreclr_wrap_* operations, counted and recorded.
#include "fake_coreclrwrap.h"

#include <cstdlib>
#include <cstring>

#include "loader/coreclr_wrap.h"

namespace {

FakeWrapState g_state;

void copy_text(char* target, const char* source) {
    std::strncpy(target, source != nullptr ? source : "(null)", FakeWrapState::kMaxText - 1);
    target[FakeWrapState::kMaxText - 1] = '\0';
}

int32_t result_from_environment(const char* name, int32_t fallback) {
    const char* text = std::getenv(name);
    return text == nullptr || *text == '\0' ? fallback : static_cast<int32_t>(std::strtoll(text, nullptr, 0));
}

__attribute__((constructor)) void read_results() {
    g_state.load_result = result_from_environment("FAKE_WRAP_LOAD_RESULT", 1);
    g_state.initialize_result = result_from_environment("FAKE_WRAP_INITIALIZE_RESULT", 0);
    g_state.is_domain_initialized_result = 1;
}

}  // namespace

extern "C" __attribute__((visibility("default"))) FakeWrapState* fake_wrap_state() { return &g_state; }

int32_t coreclr_wrap_load(const char16_t* coreclr_path) {
    ++g_state.load_calls;
    int i = 0;
    for (; coreclr_path != nullptr && i < FakeWrapState::kMaxText - 1 && coreclr_path[i] != 0; ++i)
        g_state.load_path[i] = coreclr_path[i];
    g_state.load_path[i] = 0;
    return g_state.load_result;
}

int32_t coreclr_wrap_initialize(const char* executable_path, const char* domain_name, int32_t property_count,
                                const char** keys, const char** values) {
    ++g_state.initialize_calls;
    copy_text(g_state.executable_path, executable_path);
    copy_text(g_state.domain_name, domain_name);
    g_state.property_count = property_count;
    for (int i = 0; i < property_count && i < FakeWrapState::kMaxPairs; ++i) {
        copy_text(g_state.keys[i], keys[i]);
        copy_text(g_state.values[i], values[i]);
    }
    return g_state.initialize_result;
}

uint32_t coreclr_wrap_create_delegate(const char*, const char*, const char*, void** delegate_out) {
    ++g_state.create_delegate_calls;
    if (delegate_out != nullptr) *delegate_out = nullptr;
    return 0x80070002u;
}

int32_t coreclr_wrap_shutdown() {
    ++g_state.shutdown_calls;
    return g_state.shutdown_result;
}

int32_t coreclr_wrap_is_domain_initialized() {
    ++g_state.is_domain_initialized_calls;
    return g_state.is_domain_initialized_result;
}
