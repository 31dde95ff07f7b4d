// Start-up of the host singleton on Windows against the fake loader library, from a non-ASCII tree.
// The singleton starts once per process: run this group alone (--gtest_filter=HostStartWindows.*).
#include <windows.h>

#include <string>

#include <gtest/gtest.h>

#include "fake_loader/fake_coreclrwrap.h"
#include "host/core/host_runtime.h"
#include "windows_test_support.h"

namespace {

using windows_test::TempTree;
using windows_test::utf8;

TEST(HostStartWindows, DiscoversLoadsAndInitializesThroughWidePaths) {
    TempTree tree(L"start");
    tree.copy(windows_test::fake_loader(), L"rt\\netcore1.0\\orvane.embed.coreclrwrap.dll");
    tree.dir(L"rt\\netcore5.0");  // newer, but without the loader library
    tree.dir(L"asm\\\u00e4");
    tree.file(L"asm\\notes.txt");  // a file: not an assembly directory
    const std::string runtime_dir = tree.root() + "\\rt\\netcore1.0";
    const std::string assembly_dir = tree.root() + "\\asm\\\xc3\xa4";
    SetEnvironmentVariableW(L"NETCORE_WRAPPER_NETCORE_DIR_gtestwin",
                            std::filesystem::u8path(tree.root() + "\\rt").c_str());
    SetEnvironmentVariableW(L"NETCORE_WRAPPER_ASSEMBLY_DIR_gtestwin",
                            std::filesystem::u8path(tree.root() + "\\asm").c_str());
    SetEnvironmentVariableW(L"COREHOST_TRACE", L"1");

    ::testing::internal::CaptureStdout();
    host::HostRuntime& rt = host::host_runtime_instance(u"3.1", false, u"gtestwin", u"pyfigura");
    const std::string trace = ::testing::internal::GetCapturedStdout();

    EXPECT_EQ(rt.runtime_directory, runtime_dir);
    EXPECT_EQ(rt.assembly_directories, assembly_dir + ";" + runtime_dir);
    EXPECT_EQ(rt.executable_path, utf8(windows_test::own_executable()));
    ASSERT_TRUE(rt.wrap_library.loaded_here());
    EXPECT_TRUE(rt.domain_initialized);

    auto state_of = reinterpret_cast<FakeWrapStateFunction>(rt.wrap_library.symbol(kFakeWrapStateSymbol));
    const FakeWrapState& state = *state_of();
    EXPECT_EQ(state.load_calls, 1);
    EXPECT_EQ(utf8(reinterpret_cast<const wchar_t*>(state.load_path)), runtime_dir + "\\coreclr.dll");
    EXPECT_EQ(state.initialize_calls, 1);
    EXPECT_EQ(std::string(state.executable_path), rt.executable_path);
    ASSERT_EQ(state.property_count, 5);
    for (int i = 1; i <= 3; ++i) EXPECT_EQ(std::string(state.values[i]), assembly_dir + ";" + runtime_dir) << i;
    // The capture reads its file in text mode: line ends are checked by WindowsTrace.
    EXPECT_NE(trace.find("Loading2: '" + runtime_dir + "\\coreclr.dll'"), std::string::npos) << trace;
    EXPECT_EQ(trace.rfind("CLR host tracing enabled", 0), 0u) << trace;

    // The fake is now in the process: the same name is found, with no second load.
    EXPECT_NE(GetModuleHandleW(L"orvane.embed.coreclrwrap.dll"), nullptr);
    EXPECT_EQ(&host::host_runtime_instance(), &rt);
    EXPECT_EQ(state.load_calls, 1);
    SetEnvironmentVariableW(L"COREHOST_TRACE", nullptr);
}

}  // namespace
