// Record kept by the fake loader library of every call made into its five coreclr_wrap_* operations.
#pragma once
#include <cstdint>

struct FakeWrapState {
    static constexpr int kMaxPairs = 8;
    static constexpr int kMaxText = 4096;

    int load_calls;
    int initialize_calls;
    int create_delegate_calls;
    int shutdown_calls;
    int is_domain_initialized_calls;

    char16_t load_path[kMaxText];  // the argument of the last coreclr_wrap_load, zero-terminated

    // Arguments of the last coreclr_wrap_initialize; texts longer than kMaxText - 1 are cut.
    char executable_path[kMaxText];
    char domain_name[kMaxText];
    int32_t property_count;
    char keys[kMaxPairs][kMaxText];
    char values[kMaxPairs][kMaxText];
    bool value_was_null[kMaxPairs];

    // Results handed back; read from FAKE_WRAP_LOAD_RESULT, FAKE_WRAP_INITIALIZE_RESULT,
    // FAKE_WRAP_SHUTDOWN_RESULT and FAKE_WRAP_DOMAIN_RESULT when the library is loaded.
    int32_t load_result;
    int32_t initialize_result;
    int32_t shutdown_result;
    int32_t is_domain_initialized_result;
};

// Exported by the fake; looked up by name by the tests.
using FakeWrapStateFunction = FakeWrapState* (*)();
constexpr char kFakeWrapStateSymbol[] = "fake_wrap_state";
