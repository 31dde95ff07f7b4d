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
#include "host/core/host_runtime.h"
#include "temp_tree.h"

namespace {

using host::HostRuntime;
using test_support::TempTree;
using Texts = std::vector<std::string>;

constexpr char kFakePath[] = FAKE_LOADER_PATH;
constexpr char kFakeName[] = "orvane.embed.coreclrwrap.so";
constexpr char kFakeDebugName[] = "orvane.embed.coreclrwrap.debug.so";

// The singleton starts once per process: each group is one test, and ctest runs each group alone.
int g_groups = 0;
constexpr char kOwnProcess[] = "each group needs a process of its own: run with --gtest_filter=<group>.*";

// Whether a file is mapped into the process.
bool object_loaded_from(const std::string& path) {
    std::ifstream maps("/proc/self/maps");
    return std::string(std::istreambuf_iterator<char>(maps), {}).find(" " + path + "\n") != std::string::npos;
}

// The record of the fake, through the host's handle: a lookup in the global scope (RTLD_DEFAULT) would tie
// the fake to the test program, and a library wrongly unloaded would then stay mapped.
FakeWrapState& state_of(const HostRuntime& rt) {
    return *reinterpret_cast<FakeWrapStateFunction>(rt.wrap_library.symbol(kFakeWrapStateSymbol))();
}

// Calls of load, initialize, create_delegate, shutdown and is_domain_initialized, in that order.
using Calls = std::vector<int>;
Calls calls(const FakeWrapState& s) {
    return {s.load_calls, s.initialize_calls, s.create_delegate_calls, s.shutdown_calls, s.is_domain_initialized_calls};
}

// A runtime root <root>/netcore1.0 holding the fake under `library_name`; the variable of `vendor` names it.
std::string make_runtime_root(const TempTree& tree, const char* library_name, const std::string& vendor) {
    tree.copy(kFakePath, std::string("netcore1.0/") + library_name);
    setenv(("NETCORE_WRAPPER_NETCORE_DIR_" + vendor).c_str(), tree.root().c_str(), 1);
    return tree.path("netcore1.0");
}

std::string crlf_lines(const Texts& lines) {
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
    const std::string directories = rt.runtime_directory + "|" + rt.assembly_directories;
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(&host::host_runtime_instance(), &rt);
    EXPECT_EQ(&host::host_runtime_instance(u"9.9", !rt.debug, u"gtestothervendor", u"other"), &rt);
    EXPECT_EQ(::testing::internal::GetCapturedStdout(), "") << "a later call writes no trace";
    EXPECT_EQ(calls(state), before);
    EXPECT_EQ(rt.runtime_directory + "|" + rt.assembly_directories, directories);
}

// The loader library is not in the process: the host loads it, loads the runtime and creates the domain.
TEST(FreshStart, LoadsInitializesTracesBindsAndShutsDownOnce) {
    ASSERT_EQ(++g_groups, 1) << kOwnProcess;
    TempTree tree;
    const std::string runtime_dir = make_runtime_root(tree, kFakeName, "gtestfresh");
    setenv("COREHOST_TRACE", "1", 1);
    const FirstCall first = first_call(u"gtestfresh");
    ASSERT_EQ(first.error, "");
    HostRuntime& rt = *first.runtime;
    FakeWrapState& state = state_of(rt);
    const std::string exe = std::filesystem::read_symlink("/proc/self/exe").string();
    const std::string paths = exe.substr(0, exe.rfind('/') + 1) + ":" + runtime_dir;

    // The trace names the directories found: the default assembly directory is the executable's.
    EXPECT_EQ(first.trace, crlf_lines({"CLR host tracing enabled", "Initializing .NET Core host...",
                                       "NETCORE_DIR: '" + runtime_dir + "'", "PRODUCT_ASSEMBLY_DIR: '" + paths + "'",
                                       "Loading: '" + runtime_dir + "/" + kFakeName + "'", "Try get module...",
                                       "No existed module...", "wrap dll loaded",
                                       "Loading2: '" + runtime_dir + "/libcoreclr.so'", ".NET Core host ready.",
                                       "Creating default AppDomain...", "APP_PATH: '" + paths + "'",
                                       "APP_NI_PATHS: '" + paths + "'",
                                       "NATIVE_DLL_SEARCH_DIRECTORIES: '" + paths + "'", "Default AppDomain ready."}));
    EXPECT_EQ(calls(state), (Calls{1, 1, 0, 0, 0}));
    const std::string load_path = runtime_dir + "/libcoreclr.so";
    EXPECT_EQ(std::u16string(state.load_path), std::u16string(load_path.begin(), load_path.end()));
    EXPECT_EQ(std::string(state.executable_path) + " " + state.domain_name, exe + " OrvaneCLRHostDomain");
    ASSERT_EQ(state.property_count, 5);
    Texts properties;
    for (int i = 0; i < 5; ++i) properties.push_back(std::string(state.keys[i]) + "=" + state.values[i]);
    EXPECT_EQ(properties, (Texts{"TRUSTED_PLATFORM_ASSEMBLIES=", "APP_PATHS=" + paths, "APP_NI_PATHS=" + paths,
                                 "NATIVE_DLL_SEARCH_DIRECTORIES=" + paths,
                                 "AppDomainCompatSwitch=UseLatestBehaviorWhenTFMNotSpecified"}));
    EXPECT_TRUE(object_loaded_from(runtime_dir + "/" + kFakeName));
    EXPECT_TRUE(rt.wrap_library.loaded_here() && rt.domain_initialized && !rt.debug);
    expect_later_calls_are_inert(rt, state);

    void* slot = reinterpret_cast<void*>(0x1);  // binding forwards to create_delegate and returns its status
    EXPECT_EQ(host::bind_managed_entry(rt, "Asm", "Cls", "Method", &slot), 0x80070002u);
    EXPECT_EQ(slot, nullptr);
    EXPECT_EQ(state.create_delegate_calls, 1);

    // The runtime stays with the parent of a fork: the child's exit step must not stop it.
    pid_t child = fork();
    if (child == 0) {
        host::host_shutdown();
        _exit(host::in_forked_child() && state.shutdown_calls == 0 ? 0 : 1);
    }
    int status = -1;
    ASSERT_EQ(waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0) << "the forked child does not know it is one, or it stopped the runtime";
    EXPECT_FALSE(host::in_forked_child());

    state.shutdown_result = 7;
    for (const char* expected_trace : {"Shutdowning .NET Core host...\r\n.NET Core host is down: 7\r\n", ""}) {
        ::testing::internal::CaptureStdout();
        host::host_shutdown();
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), expected_trace);
        EXPECT_EQ(state.shutdown_calls, 1) << "a second shutdown must not stop the runtime again";
    }
    EXPECT_FALSE(rt.domain_initialized || rt.wrap_library.holds_handle());
    EXPECT_EQ(rt.executable_path + rt.runtime_directory + rt.assembly_directories, "");
    EXPECT_TRUE(object_loaded_from(runtime_dir + "/" + kFakeName)) << "the loader library is never unloaded";
}

// Another module loaded the library first: this one joins it, loads no runtime and creates no domain,
// takes the domain's state from the library and stops nothing, though discovery still runs.
TEST(SharedStart, JoinsTheLibraryWithOrWithoutAStandingDomain) {
    ASSERT_EQ(++g_groups, 1) << kOwnProcess;
    void* handle = dlopen(kFakePath, RTLD_NOW | RTLD_GLOBAL);
    ASSERT_NE(handle, nullptr) << dlerror();
    FakeWrapState& state = *reinterpret_cast<FakeWrapStateFunction>(dlsym(handle, kFakeWrapStateSymbol))();
    TempTree tree;
    const std::string runtime_dir = make_runtime_root(tree, kFakeName, "gtestshared");
    setenv("COREHOST_TRACE", "1", 1);
    int joins = 0;
    for (bool domain_stands : {true, false}) {  // shut down, the host starts again on the next call
        state.is_domain_initialized_result = domain_stands;
        const FirstCall first = first_call(u"gtestshared");
        ASSERT_EQ(first.error, "");
        HostRuntime& rt = *first.runtime;
        EXPECT_EQ(calls(state), (Calls{0, 0, 0, 0, ++joins}));
        EXPECT_FALSE(rt.wrap_library.loaded_here());
        EXPECT_EQ(rt.domain_initialized, domain_stands);
        EXPECT_EQ(rt.runtime_directory, runtime_dir);
        EXPECT_EQ(rt.wrap_library.symbol(kFakeWrapStateSymbol), dlsym(handle, kFakeWrapStateSymbol));
        EXPECT_NE(first.trace.find(crlf_lines({"Try get module...", "Using existed module...", "wrap dll loaded",
                                               ".NET Core host ready."})),
                  std::string::npos)
            << first.trace;
        expect_later_calls_are_inert(rt, state);
        EXPECT_EQ(rt.domain_initialized, domain_stands) << "a domain is not created later either";

        ::testing::internal::CaptureStdout();
        host::host_shutdown();
        EXPECT_EQ(::testing::internal::GetCapturedStdout(), "");
        EXPECT_EQ(calls(state), (Calls{0, 0, 0, 0, joins})) << "the runtime is left to its owner";
        EXPECT_FALSE(rt.domain_initialized || rt.wrap_library.holds_handle());
    }
}

// The debug variant is loaded from the directory the release name was found in, and the search paths are
// the assembly root's debug sub-directories, then the runtime directory. A non-zero status of
// coreclr_wrap_initialize becomes a HostException; the host stays without a domain and tries none again.
TEST(DebugStart, LoadsTheDebugVariantAndAFailedInitializeLeavesNoDomain) {
    ASSERT_EQ(++g_groups, 1) << kOwnProcess;
    TempTree runtime_tree({std::string("netcore1.0/") + kFakeName}), assembly_tree({"a/debug/", "b/"});
    const std::string runtime_dir = make_runtime_root(runtime_tree, kFakeDebugName, "gtestdebug");
    setenv("NETCORE_WRAPPER_ASSEMBLY_DIR_gtestdebug", assembly_tree.root().c_str(), 1);
    setenv("FAKE_WRAP_INITIALIZE_RESULT", "0x80004005", 1);
    unsetenv("COREHOST_TRACE");
    const FirstCall first = first_call(u"gtestdebug", true);
    EXPECT_EQ(first.error, "Unknown error: -2147467259 (0x80004005)");
    EXPECT_EQ(first.trace, "") << "no trace without COREHOST_TRACE";
    EXPECT_TRUE(object_loaded_from(runtime_dir + "/" + kFakeDebugName));
    HostRuntime& rt = host::host_runtime_instance();  // the handle is held: the host stays as it is
    const FakeWrapState& state = state_of(rt);
    EXPECT_EQ(std::string(state.values[1]), assembly_tree.path("a/debug") + ":" + runtime_dir);
    EXPECT_TRUE(rt.debug && !rt.domain_initialized);
    host::host_shutdown();
    EXPECT_EQ(calls(state), (Calls{1, 1, 0, 0, 0})) << "no second initialize, and nothing to stop";
}

// A missing library can be retried; a failed runtime load leaves the host half started, as it stays.
TEST(FailedLoad, MissingLibraryThenRuntimeLoadFailureThenInertHost) {
    ASSERT_EQ(++g_groups, 1) << kOwnProcess;
    unsetenv("COREHOST_TRACE");
    // The executable's directory holds no loader library.
    EXPECT_EQ(first_call(u"gtestfailed").error, "DynamicLibrary::load");
    EXPECT_EQ(dlsym(RTLD_DEFAULT, kFakeWrapStateSymbol), nullptr);

    // Nothing was held, so a new call starts again; now coreclr_wrap_load reports failure.
    TempTree tree;
    make_runtime_root(tree, kFakeName, "gtestfailed");
    setenv("FAKE_WRAP_LOAD_RESULT", "0", 1);
    EXPECT_EQ(first_call(u"gtestfailed").error, "init coreclr wap");
    // The handle is held: later calls return the host as it stands, and the exit step stops nothing.
    HostRuntime& rt = host::host_runtime_instance();
    const FakeWrapState& state = state_of(rt);
    EXPECT_EQ(calls(state), (Calls{1, 0, 0, 0, 0}));
    EXPECT_TRUE(rt.wrap_library.holds_handle() && !rt.domain_initialized);
    host::host_shutdown();
    EXPECT_EQ(calls(state), (Calls{1, 0, 0, 0, 0}));
}

}  // namespace
