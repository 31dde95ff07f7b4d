// Record kept by the fake loader library of every call made into its five coreclr_wrap_* operations.
#pragma once
#include <cstdint>

struct FakeWrapState {
    static constexpr int kMaxPairs = 8;
    static constexpr int kMaxText = 4096;

    int load_calls, initialize_calls, create_delegate_calls, shutdown_calls, is_domain_initialized_calls;
    char16_t load_path[kMaxText];  // the argument of the last coreclr_wrap_load, zero-terminated

    // Arguments of the last coreclr_wrap_initialize; texts are cut to kMaxText - 1, a null one reads "(null)".
    char executable_path[kMaxText];
    char domain_name[kMaxText];
    int32_t property_count;
    char keys[kMaxPairs][kMaxText];
    char values[kMaxPairs][kMaxText];

    // Results handed back. Load and initialize read FAKE_WRAP_LOAD_RESULT and FAKE_WRAP_INITIALIZE_RESULT
    // when the library is loaded (default 1 and 0); shutdown gives 0 and is_domain_initialized 1 unless set.
    int32_t load_result, initialize_result, shutdown_result, is_domain_initialized_result;
};

// Exported by the fake; looked up by name by the tests.
using FakeWrapStateFunction = FakeWrapState* (*)();
constexpr char kFakeWrapStateSymbol[] = "fake_wrap_state";
