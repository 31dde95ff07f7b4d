// Start-up of the host singleton on Windows against the fake loader library, from a non-ASCII tree.
// The singleton starts once per process: run this group alone (--gtest_filter=HostStartWindows.*).
#include <windows.h>

#include <memory>
#include <string>

#include <gtest/gtest.h>

#include "fake_loader/fake_coreclrwrap.h"
#include "host/core/host_runtime.h"
#include "windows_test_support.h"

namespace {

using windows_test::TempTree;
using windows_test::utf8;

std::u16string utf16(const std::string& text) {
    std::wstring wide = std::filesystem::u8path(text).wstring();
    return std::u16string(wide.begin(), wide.end());
}

std::vector<std::string> split(const std::string& text, char separator) {
    std::vector<std::string> parts;
    size_t start = 0;
    for (size_t end; (end = text.find(separator, start)) != std::string::npos; start = end + 1)
        parts.push_back(text.substr(start, end - start));
    parts.push_back(text.substr(start));
    return parts;
}

TEST(HostStartWindows, DiscoversLoadsAndInitializesThroughWidePaths) {
    TempTree tree(L"start");
    tree.copy(windows_test::fake_loader(), L"rt\\netcore1.0\\orvane.embed.coreclrwrap.dll");
    tree.dir(L"asm\\\u00e4");
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
    EXPECT_EQ(std::u16string(state.load_path), utf16(runtime_dir + "\\coreclr.dll"));
    EXPECT_EQ(state.initialize_calls, 1);
    EXPECT_EQ(std::string(state.executable_path), rt.executable_path);
    ASSERT_EQ(state.property_count, 5);
    for (int i = 1; i <= 3; ++i) {
        EXPECT_EQ(split(state.values[i], ';'), (std::vector<std::string>{assembly_dir, runtime_dir}))
            << state.keys[i];
    }
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
