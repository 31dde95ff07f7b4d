// Start-up of the host singleton against the fake loader library; each test group needs a process of its own.
#include <dlfcn.h>
#include <limits.h>
#include <link.h>
#include <stdlib.h>
#include <string.h>
#include <unistd.h>

#include <memory>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "fake_coreclrwrap.h"
#include "host/core/host_exception.h"
#include "host/core/host_runtime.h"
#include "temp_tree.h"

namespace {

using host::HostRuntime;
using test_support::TempTree;

constexpr char kFakePath[] = FAKE_LOADER_PATH;
constexpr char kFakeName[] = "orvane.embed.coreclrwrap.so";
constexpr char kFakeDebugName[] = "orvane.embed.coreclrwrap.debug.so";

// ---------------------------------------------------------------------------------------------------
// Helpers

// The singleton can start only once in a process, so a process serves one group only.
const char* g_group = nullptr;

::testing::AssertionResult claim_process(const char* group) {
    if (g_group == nullptr) g_group = group;
    if (strcmp(g_group, group) == 0) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << "group " << group << " needs a process of its own (" << g_group
                                         << " already started the host); run with --gtest_filter=" << group << ".*";
}

std::string own_executable() {
    char buffer[PATH_MAX + 1];
    ssize_t n = readlink("/proc/self/exe", buffer, PATH_MAX);
    return n > 0 ? std::string(buffer, static_cast<size_t>(n)) : std::string();
}

std::string directory_of(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

bool object_loaded_from(const std::string& path) {
    struct Search {
        const std::string* path;
        bool found;
    } search{&path, false};
    dl_iterate_phdr(
        [](struct dl_phdr_info* info, size_t, void* data) {
            auto* s = static_cast<Search*>(data);
            if (info->dlpi_name != nullptr && *s->path == info->dlpi_name) s->found = true;
            return 0;
        },
        &search);
    return search.found;
}

FakeWrapState* state_from(void* address_of_state_function) {
    auto fn = reinterpret_cast<FakeWrapStateFunction>(address_of_state_function);
    return fn != nullptr ? fn() : nullptr;
}

// The file the fake's record was loaded from.
std::string loaded_file_of(const FakeWrapState* state) {
    Dl_info info{};
    if (state == nullptr || dladdr(state, &info) == 0 || info.dli_fname == nullptr) return std::string();
    return info.dli_fname;
}

// A runtime root <root>/netcore1.0 holding the fake under `library_name` and a libcoreclr.so placeholder.
std::string make_runtime_root(const TempTree& tree, const char* library_name) {
    std::string dir = tree.dir("netcore1.0");
    tree.copy(kFakePath, std::string("netcore1.0/") + library_name);
    tree.file("netcore1.0/libcoreclr.so");
    return dir;
}

std::u16string widen_ascii(const std::string& text) { return std::u16string(text.begin(), text.end()); }

// What one group observed around the first, effective call.
struct Start {
    TempTree runtime_tree;
    TempTree assembly_tree;
    std::string runtime_dir;
    HostRuntime* runtime = nullptr;
    FakeWrapState* state = nullptr;        // live record of the fake
    std::unique_ptr<FakeWrapState> first;  // copy taken right after the first call
    std::string trace;                     // standard output of the first call
    std::string error;                     // what() of an exception of the first call, if any
};

void snapshot(Start& s) {
    if (s.state != nullptr) s.first.reset(new FakeWrapState(*s.state));
}

// Runs the first call with standard output captured.
void first_call(Start& s, const char16_t* version, bool debug, const char16_t* vendor) {
    ::testing::internal::CaptureStdout();
    try {
        s.runtime = &host::host_runtime_instance(version, debug, vendor, u"pyfigura");
    } catch (const std::exception& e) {
        s.error = e.what();
    }
    s.trace = ::testing::internal::GetCapturedStdout();
}

struct Counts {
    int load, initialize, create_delegate, shutdown, is_domain_initialized;
    bool operator==(const Counts& o) const {
        return load == o.load && initialize == o.initialize && create_delegate == o.create_delegate &&
               shutdown == o.shutdown && is_domain_initialized == o.is_domain_initialized;
    }
};

std::ostream& operator<<(std::ostream& out, const Counts& c) {
    return out << "{load " << c.load << ", initialize " << c.initialize << ", create_delegate " << c.create_delegate
               << ", shutdown " << c.shutdown << ", is_domain_initialized " << c.is_domain_initialized << "}";
}

Counts counts_of(const FakeWrapState& s) {
    return {s.load_calls, s.initialize_calls, s.create_delegate_calls, s.shutdown_calls,
            s.is_domain_initialized_calls};
}

// Later calls, with no arguments and with different ones, return the same host and make no loader call.
void expect_later_calls_are_inert(Start& s) {
    ASSERT_NE(s.runtime, nullptr);
    ASSERT_NE(s.state, nullptr);
    Counts before = counts_of(*s.state);
    std::string runtime_dir = s.runtime->runtime_directory;
    std::string paths = s.runtime->assembly_directories;
    ::testing::internal::CaptureStdout();
    HostRuntime* second = &host::host_runtime_instance();
    HostRuntime* third = &host::host_runtime_instance();
    HostRuntime* other = &host::host_runtime_instance(u"9.9", !s.runtime->debug, u"gtestothervendor", u"other");
    std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(second, s.runtime);
    EXPECT_EQ(third, s.runtime);
    EXPECT_EQ(other, s.runtime);
    EXPECT_EQ(counts_of(*s.state), before);
    EXPECT_EQ(out, "") << "a later call writes no trace";
    EXPECT_EQ(s.runtime->runtime_directory, runtime_dir);
    EXPECT_EQ(s.runtime->assembly_directories, paths);
}

std::string crlf_lines(std::initializer_list<std::string> lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\r\n";
    return text;
}

// ---------------------------------------------------------------------------------------------------
// FreshStart: the loader library is not in the process; the host loads it and creates the domain.

Start& fresh() {
    static Start s;
    static bool started = [] {
        s.runtime_dir = make_runtime_root(s.runtime_tree, kFakeName);
        setenv("NETCORE_WRAPPER_NETCORE_DIR_gtestfresh", s.runtime_tree.root().c_str(), 1);
        unsetenv("NETCORE_WRAPPER_ASSEMBLY_DIR_gtestfresh");
        setenv("COREHOST_TRACE", "1", 1);
        setenv("FAKE_WRAP_SHUTDOWN_RESULT", "7", 1);
        first_call(s, u"3.1", false, u"gtestfresh");
        if (s.runtime != nullptr && s.runtime->wrap_library.holds_handle())
            s.state = state_from(s.runtime->wrap_library.symbol(kFakeWrapStateSymbol));
        snapshot(s);
        return true;
    }();
    (void)started;
    return s;
}

class FreshStart : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(claim_process("FreshStart"));
        Start& s = fresh();
        ASSERT_EQ(s.error, "");
        ASSERT_NE(s.runtime, nullptr);
        ASSERT_NE(s.state, nullptr);
    }
};

TEST_F(FreshStart, FirstCallLoadsTheRuntimeAndInitializesOnce) {
    const FakeWrapState& first = *fresh().first;
    EXPECT_EQ(counts_of(first), (Counts{1, 1, 0, 0, 0}));
    EXPECT_EQ(std::u16string(first.load_path), widen_ascii(fresh().runtime_dir + "/libcoreclr.so"));
}

TEST_F(FreshStart, InitializeReceivesFivePropertiesInOrder) {
    Start& s = fresh();
    const FakeWrapState& first = *s.first;
    const std::string exe = own_executable();
    const std::string paths = directory_of(exe) + ":" + s.runtime_dir;
    EXPECT_EQ(std::string(first.executable_path), exe);
    EXPECT_EQ(std::string(first.domain_name), "OrvaneCLRHostDomain");
    ASSERT_EQ(first.property_count, 5);
    const char* keys[] = {"TRUSTED_PLATFORM_ASSEMBLIES", "APP_PATHS", "APP_NI_PATHS",
                          "NATIVE_DLL_SEARCH_DIRECTORIES", "AppDomainCompatSwitch"};
    const std::string values[] = {"", paths, paths, paths, "UseLatestBehaviorWhenTFMNotSpecified"};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(std::string(first.keys[i]), keys[i]) << i;
        EXPECT_EQ(std::string(first.values[i]), values[i]) << i;
        EXPECT_FALSE(first.value_was_null[i]) << i;
    }
}

TEST_F(FreshStart, HostRecordsDirectoriesLibraryAndDomain) {
    Start& s = fresh();
    HostRuntime& rt = *s.runtime;
    const std::string exe = own_executable();
    EXPECT_EQ(rt.executable_path, exe);
    EXPECT_EQ(rt.runtime_directory, s.runtime_dir);
    EXPECT_EQ(rt.assembly_directories, directory_of(exe) + ":" + s.runtime_dir);
    EXPECT_EQ(loaded_file_of(s.state), s.runtime_dir + "/" + kFakeName);
    EXPECT_TRUE(rt.wrap_library.loaded_here());
    EXPECT_TRUE(rt.domain_initialized);
    EXPECT_FALSE(rt.debug);
    void* handle = dlopen(kFakeName, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(reinterpret_cast<void*>(rt.wrap_initialize), dlsym(handle, "coreclr_wrap_initialize"));
    EXPECT_EQ(reinterpret_cast<void*>(rt.wrap_create_delegate), dlsym(handle, "coreclr_wrap_create_delegate"));
    EXPECT_EQ(reinterpret_cast<void*>(rt.wrap_shutdown), dlsym(handle, "coreclr_wrap_shutdown"));
    EXPECT_EQ(reinterpret_cast<void*>(rt.wrap_is_domain_initialized),
              dlsym(handle, "coreclr_wrap_is_domain_initialized"));
    dlclose(handle);
}

TEST_F(FreshStart, TraceTellsEveryStepOnStandardOutput) {
    Start& s = fresh();
    const std::string paths = directory_of(own_executable()) + ":" + s.runtime_dir;
    EXPECT_EQ(s.trace, crlf_lines({
                           "CLR host tracing enabled",
                           "Initializing .NET Core host...",
                           "NETCORE_DIR: '" + s.runtime_dir + "'",
                           "PRODUCT_ASSEMBLY_DIR: '" + paths + "'",
                           "Loading: '" + s.runtime_dir + "/" + kFakeName + "'",
                           "Try get module...",
                           "No existed module...",
                           "wrap dll loaded",
                           "Loading2: '" + s.runtime_dir + "/libcoreclr.so'",
                           ".NET Core host ready.",
                           "Creating default AppDomain...",
                           "APP_PATH: '" + paths + "'",
                           "APP_NI_PATHS: '" + paths + "'",
                           "NATIVE_DLL_SEARCH_DIRECTORIES: '" + paths + "'",
                           "Default AppDomain ready.",
                       }));
}

TEST_F(FreshStart, LaterCallsMakeNoLoaderCall) { expect_later_calls_are_inert(fresh()); }

TEST_F(FreshStart, BindingForwardsToCreateDelegate) {
    Start& s = fresh();
    int before = s.state->create_delegate_calls;
    void* slot = reinterpret_cast<void*>(0x1);
    uint32_t status = host::bind_managed_entry(*s.runtime, "Asm", "Cls", "Method", &slot);
    EXPECT_EQ(status, 0x80070002u);
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(s.state->create_delegate_calls, before + 1);
}

// Kept last: after the shutdown the host is down for the rest of the process.
TEST_F(FreshStart, ShutdownStopsTheRuntimeOnceAndKeepsTheLibrary) {
    Start& s = fresh();
    ::testing::internal::CaptureStdout();
    host::host_shutdown();
    std::string out = ::testing::internal::GetCapturedStdout();
    EXPECT_EQ(out, crlf_lines({"Shutdowning .NET Core host...", ".NET Core host is down: 7"}));
    EXPECT_EQ(s.state->shutdown_calls, 1);
    EXPECT_FALSE(s.runtime->domain_initialized);
    EXPECT_FALSE(s.runtime->wrap_library.holds_handle());
    EXPECT_EQ(s.runtime->executable_path, "");
    EXPECT_EQ(s.runtime->runtime_directory, "");
    EXPECT_EQ(s.runtime->assembly_directories, "");
    EXPECT_TRUE(object_loaded_from(s.runtime_dir + "/" + kFakeName)) << "the loader library is never unloaded";

    ::testing::internal::CaptureStdout();
    host::host_shutdown();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(s.state->shutdown_calls, 1) << "a second shutdown must not stop the runtime again";
}

// ---------------------------------------------------------------------------------------------------
// SharedStart: another module loaded the library first and its domain stands.

Start& shared(const char* domain_result, const char* vendor_word, const char16_t* vendor) {
    static Start s;
    static bool started = [&] {
        setenv("FAKE_WRAP_DOMAIN_RESULT", domain_result, 1);
        void* handle = dlopen(kFakePath, RTLD_NOW | RTLD_GLOBAL);
        if (handle == nullptr) {
            s.error = std::string("preload failed: ") + dlerror();
            return false;
        }
        s.state = state_from(dlsym(handle, kFakeWrapStateSymbol));
        s.runtime_dir = make_runtime_root(s.runtime_tree, kFakeName);
        setenv(("NETCORE_WRAPPER_NETCORE_DIR_" + std::string(vendor_word)).c_str(), s.runtime_tree.root().c_str(), 1);
        setenv("COREHOST_TRACE", "1", 1);
        first_call(s, u"5.0", false, vendor);
        snapshot(s);
        return true;
    }();
    (void)started;
    return s;
}

Start& shared_running() { return shared("1", "gtestshared", u"gtestshared"); }

class SharedStart : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(claim_process("SharedStart"));
        Start& s = shared_running();
        ASSERT_EQ(s.error, "");
        ASSERT_NE(s.runtime, nullptr);
        ASSERT_NE(s.state, nullptr);
    }
};

TEST_F(SharedStart, NoLoadNoInitializeAndOneDomainQuery) {
    Start& s = shared_running();
    EXPECT_EQ(counts_of(*s.first), (Counts{0, 0, 0, 0, 1}));
    EXPECT_FALSE(s.runtime->wrap_library.loaded_here());
    EXPECT_TRUE(s.runtime->domain_initialized);
}

TEST_F(SharedStart, NothingIsLoadedFromTheComputedPath) {
    Start& s = shared_running();
    EXPECT_EQ(s.runtime->runtime_directory, s.runtime_dir) << "discovery still runs";
    EXPECT_FALSE(object_loaded_from(s.runtime_dir + "/" + kFakeName));
    EXPECT_EQ(loaded_file_of(s.state), kFakePath);
    EXPECT_EQ(s.runtime->wrap_library.symbol(kFakeWrapStateSymbol),
              reinterpret_cast<void*>(dlsym(RTLD_DEFAULT, kFakeWrapStateSymbol)));
}

TEST_F(SharedStart, TraceSaysTheLibraryWasThere) {
    Start& s = shared_running();
    EXPECT_NE(s.trace.find(crlf_lines({"Try get module...", "Using existed module...", "wrap dll loaded",
                                       ".NET Core host ready."})),
              std::string::npos)
        << s.trace;
    EXPECT_EQ(s.trace.find("No existed module..."), std::string::npos);
    EXPECT_EQ(s.trace.find("Loading2"), std::string::npos);
    EXPECT_EQ(s.trace.find("Creating default AppDomain..."), std::string::npos);
}

TEST_F(SharedStart, LaterCallsMakeNoLoaderCall) { expect_later_calls_are_inert(shared_running()); }

// Kept last: after the shutdown the host is down for the rest of the process.
TEST_F(SharedStart, ShutdownLeavesTheRuntimeToItsOwner) {
    Start& s = shared_running();
    ::testing::internal::CaptureStdout();
    host::host_shutdown();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(s.state->shutdown_calls, 0);
    EXPECT_FALSE(s.runtime->domain_initialized);
}

// ---------------------------------------------------------------------------------------------------
// SharedWithoutDomain: the library is in the process but no domain stands; this module creates none.

Start& shared_idle() { return shared("0", "gtestidle", u"gtestidle"); }

class SharedWithoutDomain : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(claim_process("SharedWithoutDomain"));
        Start& s = shared_idle();
        ASSERT_EQ(s.error, "");
        ASSERT_NE(s.runtime, nullptr);
        ASSERT_NE(s.state, nullptr);
    }
};

TEST_F(SharedWithoutDomain, DomainStaysAbsentAndIsNotCreated) {
    Start& s = shared_idle();
    EXPECT_EQ(counts_of(*s.first), (Counts{0, 0, 0, 0, 1}));
    EXPECT_FALSE(s.runtime->domain_initialized);
    expect_later_calls_are_inert(s);
    EXPECT_FALSE(s.runtime->domain_initialized);
}

TEST_F(SharedWithoutDomain, ShutdownMakesNoLoaderCall) {
    Start& s = shared_idle();
    host::host_shutdown();
    EXPECT_EQ(counts_of(*s.state), (Counts{0, 0, 0, 0, 1}));
}

// ---------------------------------------------------------------------------------------------------
// DebugStart: the debug library variant and the assembly root's debug sub-directories.

Start& debug_start() {
    static Start s;
    static bool started = [] {
        // The scan looks for the release name; the debug variant is what gets loaded.
        s.runtime_dir = make_runtime_root(s.runtime_tree, kFakeDebugName);
        s.runtime_tree.file(std::string("netcore1.0/") + kFakeName);
        s.assembly_tree.dir("a/debug");
        s.assembly_tree.dir("b");
        setenv("NETCORE_WRAPPER_NETCORE_DIR_gtestdebug", s.runtime_tree.root().c_str(), 1);
        setenv("NETCORE_WRAPPER_ASSEMBLY_DIR_gtestdebug", s.assembly_tree.root().c_str(), 1);
        unsetenv("COREHOST_TRACE");
        first_call(s, u"3.1", true, u"gtestdebug");
        if (s.runtime != nullptr && s.runtime->wrap_library.holds_handle())
            s.state = state_from(s.runtime->wrap_library.symbol(kFakeWrapStateSymbol));
        snapshot(s);
        return true;
    }();
    (void)started;
    return s;
}

class DebugStart : public ::testing::Test {
protected:
    void SetUp() override {
        ASSERT_TRUE(claim_process("DebugStart"));
        Start& s = debug_start();
        ASSERT_EQ(s.error, "");
        ASSERT_NE(s.runtime, nullptr);
        ASSERT_NE(s.state, nullptr);
    }
};

TEST_F(DebugStart, LoadsTheDebugVariantFromTheVersionedDirectory) {
    Start& s = debug_start();
    EXPECT_TRUE(s.runtime->debug);
    EXPECT_EQ(loaded_file_of(s.state), s.runtime_dir + "/" + kFakeDebugName);
    EXPECT_EQ(counts_of(*s.first), (Counts{1, 1, 0, 0, 0}));
    EXPECT_EQ(s.trace, "") << "no trace without COREHOST_TRACE";
}

TEST_F(DebugStart, SearchPathsAreTheDebugSubDirectoriesThenTheRuntimeDirectory) {
    Start& s = debug_start();
    const std::string paths = s.assembly_tree.root() + "/a/debug:" + s.runtime_dir;
    EXPECT_EQ(s.runtime->assembly_directories, paths);
    ASSERT_EQ(s.first->property_count, 5);
    EXPECT_EQ(std::string(s.first->values[1]), paths);
}

// ---------------------------------------------------------------------------------------------------
// FailedLoad: a missing library can be retried; a failed runtime load leaves the host half started.

TEST(FailedLoad, MissingLibraryThenRuntimeLoadFailureThenInertHost) {
    ASSERT_TRUE(claim_process("FailedLoad"));
    unsetenv("NETCORE_WRAPPER_NETCORE_DIR_gtestfailed");
    unsetenv("NETCORE_WRAPPER_ASSEMBLY_DIR_gtestfailed");
    unsetenv("COREHOST_TRACE");

    // 1. The executable's directory holds no loader library.
    try {
        host::host_runtime_instance(u"3.1", false, u"gtestfailed", u"pyfigura");
        ADD_FAILURE() << "no exception without a loader library";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "DynamicLibrary::load");
    }
    EXPECT_EQ(dlopen(kFakeName, RTLD_NOW | RTLD_NOLOAD), nullptr);

    // 2. Nothing was held, so a new call starts again; now coreclr_wrap_load reports failure.
    TempTree tree;
    std::string runtime_dir = make_runtime_root(tree, kFakeName);
    setenv("NETCORE_WRAPPER_NETCORE_DIR_gtestfailed", tree.root().c_str(), 1);
    setenv("FAKE_WRAP_LOAD_RESULT", "0", 1);
    try {
        host::host_runtime_instance(u"3.1", false, u"gtestfailed", u"pyfigura");
        ADD_FAILURE() << "no exception for a failed runtime load";
    } catch (const std::runtime_error& e) {
        EXPECT_STREQ(e.what(), "init coreclr wap");
    }
    void* handle = dlopen(kFakeName, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(handle, nullptr);
    FakeWrapState* state = state_from(dlsym(handle, kFakeWrapStateSymbol));
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(counts_of(*state), (Counts{1, 0, 0, 0, 0}));
    EXPECT_EQ(std::u16string(state->load_path), widen_ascii(runtime_dir + "/libcoreclr.so"));

    // 3. The handle is held: later calls return the host as it stands, without repair.
    HostRuntime& rt = host::host_runtime_instance();
    EXPECT_TRUE(rt.wrap_library.holds_handle());
    EXPECT_FALSE(rt.domain_initialized);
    EXPECT_EQ(counts_of(*state), (Counts{1, 0, 0, 0, 0}));

    // 4. Without a domain the exit step stops nothing.
    host::host_shutdown();
    EXPECT_EQ(state->shutdown_calls, 0);
    dlclose(handle);
}

// ---------------------------------------------------------------------------------------------------
// FailedInitialize: a non-zero status of coreclr_wrap_initialize becomes a HostException.

TEST(FailedInitialize, StatusBecomesHostExceptionAndTheHostStaysWithoutDomain) {
    ASSERT_TRUE(claim_process("FailedInitialize"));
    TempTree tree;
    make_runtime_root(tree, kFakeName);
    setenv("NETCORE_WRAPPER_NETCORE_DIR_gtestinitfail", tree.root().c_str(), 1);
    setenv("FAKE_WRAP_INITIALIZE_RESULT", "0x80004005", 1);
    unsetenv("COREHOST_TRACE");
    try {
        host::host_runtime_instance(u"3.1", false, u"gtestinitfail", u"pyfigura");
        ADD_FAILURE() << "no exception for a failed initialize";
    } catch (const host::HostException& e) {
        EXPECT_EQ(e.code(), 0x80004005u);
        EXPECT_STREQ(e.what(), "Unknown error: -2147467259 (0x80004005)");
    }
    void* handle = dlopen(kFakeName, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(handle, nullptr);
    FakeWrapState* state = state_from(dlsym(handle, kFakeWrapStateSymbol));
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(counts_of(*state), (Counts{1, 1, 0, 0, 0}));

    HostRuntime& rt = host::host_runtime_instance();
    EXPECT_FALSE(rt.domain_initialized);
    EXPECT_EQ(counts_of(*state), (Counts{1, 1, 0, 0, 0})) << "the domain is not attempted again";

    host::host_shutdown();
    EXPECT_EQ(state->shutdown_calls, 0);
    dlclose(handle);
}

}  // namespace
