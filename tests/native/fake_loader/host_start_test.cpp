// Start-up of the host singleton against the fake loader library; each test group needs a process of its own.
#include <dlfcn.h>
#include <stdlib.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <vector>

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

// The singleton starts once per process: each group is one test, and ctest runs each group alone.
int g_groups = 0;
constexpr char kOwnProcess[] = "each group needs a process of its own: run with --gtest_filter=<group>.*";

std::string own_executable() { return std::filesystem::read_symlink("/proc/self/exe").string(); }

std::string directory_of(const std::string& path) { return path.substr(0, path.rfind('/') + 1); }

// Whether a file is mapped into the process.
bool object_loaded_from(const std::string& path) {
    std::ifstream maps("/proc/self/maps");
    return std::string(std::istreambuf_iterator<char>(maps), {}).find(" " + path + "\n") != std::string::npos;
}

// The record of the fake in the process (the host loads it into the global scope), or null.
FakeWrapState* fake_state() {
    auto fn = reinterpret_cast<FakeWrapStateFunction>(dlsym(RTLD_DEFAULT, kFakeWrapStateSymbol));
    return fn != nullptr ? fn() : nullptr;
}

// Calls of load, initialize, create_delegate, shutdown and is_domain_initialized, in that order.
using Calls = std::vector<int>;
Calls calls(const FakeWrapState& s) {
    return {s.load_calls, s.initialize_calls, s.create_delegate_calls, s.shutdown_calls, s.is_domain_initialized_calls};
}

// A runtime root <root>/netcore1.0 holding the fake under `library_name` and a libcoreclr.so placeholder.
std::string make_runtime_root(const TempTree& tree, const char* library_name) {
    tree.copy(kFakePath, std::string("netcore1.0/") + library_name);
    tree.file("netcore1.0/libcoreclr.so");
    return tree.path("netcore1.0");
}

std::u16string widen_ascii(const std::string& text) { return std::u16string(text.begin(), text.end()); }

std::string crlf_lines(std::initializer_list<std::string> lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\r\n";
    return text;
}

// The first, effective call with its standard output, and the text of its exception if it threw.
struct FirstCall { HostRuntime* runtime = nullptr; std::string trace, error; };

FirstCall first_call(const char16_t* vendor, bool debug = false) {
    FirstCall call;
    ::testing::internal::CaptureStdout();
    try {
        call.runtime = &host::host_runtime_instance(u"3.1", debug, vendor, u"pyfigura");
    } catch (const std::exception& e) {
        call.error = e.what();
    }
    call.trace = ::testing::internal::GetCapturedStdout();
    return call;
}

// Later calls, with no arguments and with different ones, return the same host and make no loader call.
void expect_later_calls_are_inert(HostRuntime& rt, const FakeWrapState& state) {
    const Calls before = calls(state);
    const std::string runtime_dir = rt.runtime_directory, paths = rt.assembly_directories;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(&host::host_runtime_instance(), &rt);
    EXPECT_EQ(&host::host_runtime_instance(u"9.9", !rt.debug, u"gtestothervendor", u"other"), &rt);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "") << "a later call writes no trace";
    EXPECT_EQ(calls(state), before);
    EXPECT_EQ(rt.runtime_directory, runtime_dir);
    EXPECT_EQ(rt.assembly_directories, paths);
}

// The loader library is not in the process: the host loads it, loads the runtime and creates the domain.
TEST(FreshStart, LoadsInitializesTracesBindsAndShutsDownOnce) {
    ASSERT_EQ(++g_groups, 1) << kOwnProcess;
    TempTree tree;
    const std::string runtime_dir = make_runtime_root(tree, kFakeName);
    setenv("NETCORE_WRAPPER_NETCORE_DIR_gtestfresh", tree.root().c_str(), 1);
    setenv("COREHOST_TRACE", "1", 1);
    setenv("FAKE_WRAP_SHUTDOWN_RESULT", "7", 1);
    const FirstCall first = first_call(u"gtestfresh");
    ASSERT_EQ(first.error, "");
    FakeWrapState* state = fake_state();
    ASSERT_NE(state, nullptr);
    HostRuntime& rt = *first.runtime;
    const std::string exe = own_executable();
    const std::string paths = directory_of(exe) + ":" + runtime_dir;

    EXPECT_EQ(calls(*state), (Calls{1, 1, 0, 0, 0}));
    EXPECT_EQ(std::u16string(state->load_path), widen_ascii(runtime_dir + "/libcoreclr.so"));
    EXPECT_EQ(std::string(state->executable_path), exe);
    EXPECT_EQ(std::string(state->domain_name), "OrvaneCLRHostDomain");
    ASSERT_EQ(state->property_count, 5);
    const char* keys[] = {"TRUSTED_PLATFORM_ASSEMBLIES", "APP_PATHS", "APP_NI_PATHS", "NATIVE_DLL_SEARCH_DIRECTORIES",
                          "AppDomainCompatSwitch"};
    const std::string values[] = {"", paths, paths, paths, "UseLatestBehaviorWhenTFMNotSpecified"};
    for (int i = 0; i < 5; ++i) {
        EXPECT_EQ(std::string(state->keys[i]), keys[i]) << i;
        EXPECT_EQ(std::string(state->values[i]), values[i]) << i;
        EXPECT_FALSE(state->value_was_null[i]) << i;
    }

    EXPECT_EQ(rt.executable_path, exe);
    EXPECT_EQ(rt.runtime_directory, runtime_dir);
    EXPECT_EQ(rt.assembly_directories, paths);
    EXPECT_TRUE(object_loaded_from(runtime_dir + "/" + kFakeName));
    EXPECT_TRUE(rt.wrap_library.loaded_here());
    EXPECT_TRUE(rt.domain_initialized);
    EXPECT_FALSE(rt.debug);

    EXPECT_EQ(first.trace, crlf_lines({
                               "CLR host tracing enabled",
                               "Initializing .NET Core host...",
                               "NETCORE_DIR: '" + runtime_dir + "'",
                               "PRODUCT_ASSEMBLY_DIR: '" + paths + "'",
                               "Loading: '" + runtime_dir + "/" + kFakeName + "'",
                               "Try get module...",
                               "No existed module...",
                               "wrap dll loaded",
                               "Loading2: '" + runtime_dir + "/libcoreclr.so'",
                               ".NET Core host ready.",
                               "Creating default AppDomain...",
                               "APP_PATH: '" + paths + "'",
                               "APP_NI_PATHS: '" + paths + "'",
                               "NATIVE_DLL_SEARCH_DIRECTORIES: '" + paths + "'",
                               "Default AppDomain ready.",
                           }));
    expect_later_calls_are_inert(rt, *state);

    void* slot = reinterpret_cast<void*>(0x1);  // binding forwards to create_delegate and returns its status
    EXPECT_EQ(host::bind_managed_entry(rt, "Asm", "Cls", "Method", &slot), 0x80070002u);
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(state->create_delegate_calls, 1);

    // The runtime stays with the parent of a fork: the child's exit step must not stop it.
    pid_t child = fork();
    if (child == 0) {
        host::host_shutdown();
        _exit(host::in_forked_child() && state->shutdown_calls == 0 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "the forked child does not know it is one, or it stopped the runtime";
    EXPECT_FALSE(host::in_forked_child());

    ::testing::internal::CaptureStdout();
    host::host_shutdown();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(),
              crlf_lines({"Shutdowning .NET Core host...", ".NET Core host is down: 7"}));
    EXPECT_EQ(state->shutdown_calls, 1);
    EXPECT_FALSE(rt.domain_initialized);
    EXPECT_FALSE(rt.wrap_library.holds_handle());
    EXPECT_EQ(rt.executable_path + rt.runtime_directory + rt.assembly_directories, "");
    EXPECT_TRUE(object_loaded_from(runtime_dir + "/" + kFakeName)) << "the loader library is never unloaded";
    ::testing::internal::CaptureStdout();
    host::host_shutdown();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(state->shutdown_calls, 1) << "a second shutdown must not stop the runtime again";
}

// Another module loaded the library first, with its domain standing or not: this one loads nothing,
// creates no domain and stops nothing, though discovery still runs.
void expect_shared_start(const char* vendor_word, const char16_t* vendor, bool domain_stands) {
    setenv("FAKE_WRAP_DOMAIN_RESULT", domain_stands ? "1" : "0", 1);
    void* handle = dlopen(kFakePath, RTLD_NOW | RTLD_GLOBAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    TempTree tree;
    const std::string runtime_dir = make_runtime_root(tree, kFakeName);
    setenv(("NETCORE_WRAPPER_NETCORE_DIR_" + std::string(vendor_word)).c_str(), tree.root().c_str(), 1);
    setenv("COREHOST_TRACE", "1", 1);
    const FirstCall first = first_call(vendor);
    ASSERT_EQ(first.error, "");
    HostRuntime& rt = *first.runtime;
    const FakeWrapState& state = *fake_state();

    EXPECT_EQ(calls(state), (Calls{0, 0, 0, 0, 1}));
    EXPECT_FALSE(rt.wrap_library.loaded_here());
    EXPECT_EQ(rt.domain_initialized, domain_stands);
    EXPECT_EQ(rt.runtime_directory, runtime_dir);
    EXPECT_FALSE(object_loaded_from(runtime_dir + "/" + kFakeName));
    EXPECT_EQ(rt.wrap_library.symbol(kFakeWrapStateSymbol), dlsym(handle, kFakeWrapStateSymbol));
    EXPECT_NE(first.trace.find(crlf_lines({"Try get module...", "Using existed module...", "wrap dll loaded",
                                           ".NET Core host ready."})),
              std::string::npos)
        << first.trace;
    for (const char* absent : {"No existed module...", "Loading2", "Creating default AppDomain..."})
        EXPECT_EQ(first.trace.find(absent), std::string::npos) << absent;
    expect_later_calls_are_inert(rt, state);
    EXPECT_EQ(rt.domain_initialized, domain_stands) << "a domain is not created later either";

    ::testing::internal::CaptureStdout();
    host::host_shutdown();
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(calls(state), (Calls{0, 0, 0, 0, 1})) << "the runtime is left to its owner";
    EXPECT_FALSE(rt.domain_initialized);
}

TEST(SharedStart, JoinsTheLibraryAndTheStandingDomain) {
    ASSERT_EQ(++g_groups, 1) << kOwnProcess;
    expect_shared_start("gtestshared", u"gtestshared", true);
}

TEST(SharedWithoutDomain, JoinsTheLibraryAndCreatesNoDomain) {
    ASSERT_EQ(++g_groups, 1) << kOwnProcess;
    expect_shared_start("gtestidle", u"gtestidle", false);
}

// The debug library variant is loaded from the directory the release name was found in, and the search
// paths are the assembly root's debug sub-directories, then the runtime directory.
TEST(DebugStart, LoadsTheDebugVariantAndSearchesTheDebugSubDirectories) {
    ASSERT_EQ(++g_groups, 1) << kOwnProcess;
    TempTree runtime_tree, assembly_tree;
    const std::string runtime_dir = make_runtime_root(runtime_tree, kFakeDebugName);
    runtime_tree.file(std::string("netcore1.0/") + kFakeName);
    assembly_tree.dir("a/debug");
    assembly_tree.dir("b");
    setenv("NETCORE_WRAPPER_NETCORE_DIR_gtestdebug", runtime_tree.root().c_str(), 1);
    setenv("NETCORE_WRAPPER_ASSEMBLY_DIR_gtestdebug", assembly_tree.root().c_str(), 1);
    unsetenv("COREHOST_TRACE");
    const FirstCall first = first_call(u"gtestdebug", true);
    ASSERT_EQ(first.error, "");
    const FakeWrapState& state = *fake_state();
    EXPECT_TRUE(first.runtime->debug);
    EXPECT_TRUE(object_loaded_from(runtime_dir + "/" + kFakeDebugName));
    EXPECT_EQ(calls(state), (Calls{1, 1, 0, 0, 0}));
    EXPECT_EQ(first.trace, "") << "no trace without COREHOST_TRACE";
    const std::string paths = assembly_tree.path("a/debug") + ":" + runtime_dir;
    EXPECT_EQ(first.runtime->assembly_directories, paths);
    EXPECT_EQ(std::string(state.values[1]), paths);
}

// A missing library can be retried; a failed runtime load leaves the host half started, as it stays.
TEST(FailedLoad, MissingLibraryThenRuntimeLoadFailureThenInertHost) {
    ASSERT_EQ(++g_groups, 1) << kOwnProcess;
    unsetenv("COREHOST_TRACE");
    // The executable's directory holds no loader library.
    EXPECT_EQ(first_call(u"gtestfailed").error, "DynamicLibrary::load");
    EXPECT_EQ(fake_state(), nullptr);

    // Nothing was held, so a new call starts again; now coreclr_wrap_load reports failure.
    TempTree tree;
    const std::string runtime_dir = make_runtime_root(tree, kFakeName);
    setenv("NETCORE_WRAPPER_NETCORE_DIR_gtestfailed", tree.root().c_str(), 1);
    setenv("FAKE_WRAP_LOAD_RESULT", "0", 1);
    EXPECT_EQ(first_call(u"gtestfailed").error, "init coreclr wap");
    FakeWrapState* state = fake_state();
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(calls(*state), (Calls{1, 0, 0, 0, 0}));
    EXPECT_EQ(std::u16string(state->load_path), widen_ascii(runtime_dir + "/libcoreclr.so"));

    // The handle is held: later calls return the host as it stands, and the exit step stops nothing.
    HostRuntime& rt = host::host_runtime_instance();
    EXPECT_TRUE(rt.wrap_library.holds_handle());
    EXPECT_FALSE(rt.domain_initialized);
    host::host_shutdown();
    EXPECT_EQ(calls(*state), (Calls{1, 0, 0, 0, 0}));
}

// A non-zero status of coreclr_wrap_initialize becomes a HostException; the domain is not tried again.
TEST(FailedInitialize, StatusBecomesHostExceptionAndTheHostStaysWithoutDomain) {
    ASSERT_EQ(++g_groups, 1) << kOwnProcess;
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
    FakeWrapState* state = fake_state();
    ASSERT_NE(state, nullptr);
    EXPECT_EQ(calls(*state), (Calls{1, 1, 0, 0, 0}));
    EXPECT_FALSE(host::host_runtime_instance().domain_initialized);
    host::host_shutdown();
    EXPECT_EQ(calls(*state), (Calls{1, 1, 0, 0, 0}));
}

}  // namespace
