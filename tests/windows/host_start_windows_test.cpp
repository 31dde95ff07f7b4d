// Start-up of the host singleton on Windows against the fake loader library, from a non-ASCII tree.
// The singleton starts once per process: run this group alone (--gtest_filter=HostStartWindows.*).
#include <windows.h>

#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "fake_loader/fake_coreclrwrap.h"
#include "host/core/host_runtime.h"
#include "host/core/runtime_discovery.h"
#include "windows_test_support.h"

namespace {

using windows_test::utf8;

TEST(HostStartWindows, DiscoversLoadsAndInitializesThroughWidePaths) {
    // netcore5.0 is newer but lacks the loader library; notes.txt is a file, not an assembly directory.
    windows_test::TempTree tree(L"start", {L"rt\\netcore1.0\\", L"rt\\netcore5.0\\debug", L"asm\\\u00e4\\debug\\",
                                           L"asm\\notes.txt"});
    std::filesystem::copy_file(windows_test::fake_loader(), tree.path(L"rt\\netcore1.0\\orvane.embed.coreclrwrap.dll"));
    const std::string runtime_dir = tree.root() + "\\rt\\netcore1.0";
    const std::string assembly_dirs = tree.root() + "\\asm\\\xc3\xa4;" + runtime_dir;
    SetEnvironmentVariableW(L"NETCORE_WRAPPER_NETCORE_DIR_gtestwin", tree.path(L"rt").c_str());
    SetEnvironmentVariableW(L"NETCORE_WRAPPER_ASSEMBLY_DIR_gtestwin", tree.path(L"asm").c_str());
    SetEnvironmentVariableW(L"COREHOST_TRACE", L"1");

    ::testing::internal::CaptureStdout();
    host::HostRuntime& rt = host::host_runtime_instance(u"3.1", false, u"gtestwin", u"pyfigura");
    const std::string trace = ::testing::internal::GetCapturedStdout();
    SetEnvironmentVariableW(L"COREHOST_TRACE", nullptr);

    EXPECT_EQ(rt.runtime_directory, runtime_dir);
    EXPECT_EQ(rt.assembly_directories, assembly_dirs);
    EXPECT_EQ(rt.executable_path, utf8(windows_test::own_executable()));
    ASSERT_TRUE(rt.wrap_library.loaded_here());
    EXPECT_TRUE(rt.domain_initialized);
    const FakeWrapState& state =
        *reinterpret_cast<FakeWrapStateFunction>(rt.wrap_library.symbol(kFakeWrapStateSymbol))();
    EXPECT_EQ(utf8(reinterpret_cast<const wchar_t*>(state.load_path)), runtime_dir + "\\coreclr.dll");
    EXPECT_EQ(std::string(state.executable_path), rt.executable_path);
    ASSERT_EQ(state.property_count, 5);
    for (int i = 1; i <= 3; ++i) EXPECT_EQ(std::string(state.values[i]), assembly_dirs) << i;
    // The capture reads its file in text mode: line ends are checked by WindowsTrace.
    EXPECT_EQ(trace.rfind("CLR host tracing enabled", 0), 0u) << trace;
    EXPECT_NE(trace.find("Loading2: '" + runtime_dir + "\\coreclr.dll'"), std::string::npos) << trace;

    // The fake is now in the process: the same name is found, with no second load.
    EXPECT_NE(GetModuleHandleW(L"orvane.embed.coreclrwrap.dll"), nullptr);
    EXPECT_EQ(&host::host_runtime_instance(), &rt);
    EXPECT_EQ(std::make_pair(state.load_calls, state.initialize_calls), std::make_pair(1, 1));

    // In debug mode the sub-directories' debug directories count, not files of that name.
    std::vector<std::string> debug;
    host::collect_assembly_directories(tree.root() + "\\rt", true, debug);  // netcore5.0\debug is a file
    host::collect_assembly_directories(tree.root() + "\\asm", true, debug);
    EXPECT_EQ(debug, std::vector<std::string>{tree.root() + "\\asm\\\xc3\xa4\\debug"});
}

}  // namespace
