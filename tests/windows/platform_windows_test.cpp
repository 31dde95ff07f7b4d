// The Windows half of the platform layer as the host core sees it: paths, environment, error texts, the
// trace's line ends and library loading, with non-ASCII paths throughout.
#include <fcntl.h>
#include <io.h>
#include <sys/stat.h>
#include <windows.h>

#include <cstdio>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>

#include <gtest/gtest.h>

#include "host/core/dynamic_library.h"
#include "host/core/host_trace.h"
#include "host/core/runtime_discovery.h"
#include "windows_test_support.h"

namespace {

using windows_test::utf8;

TEST(WindowsPaths, BackslashJoinsAndEitherSeparatorIsRecognised) {
    struct Case { const char* base; const char* part; const char* joined; };
    for (const Case& c : {Case{"C:\\root", "netcore3.1", "C:\\root\\netcore3.1"}, Case{"C:\\root", "", "C:\\root"},
                          Case{"C:\\root\\", "x", "C:\\root\\x"}, Case{"C:/root/", "x", "C:/root/x"},
                          Case{"C:\\root", "\\x", "C:\\root\\x"}})
        EXPECT_EQ(host::join_paths(c.base, c.part), c.joined) << c.base << " + " << c.part;
    EXPECT_EQ(host::default_directory("C:\\Python311\\python.exe"), "C:\\Python311\\");
    EXPECT_EQ(host::default_directory("C:/Python311/python.exe"), "C:/Python311/");
    EXPECT_EQ(host::default_directory("python.exe"), "python.exe");
}

TEST(WindowsEnvironment, ValuesComeBackAsUtf8AndEmptyCountsAsUnset) {
    const wchar_t* values[] = {nullptr, L"", L"C:\\\u0420\u0438\u043c\\\u00e9t\u00e9\\\U0001F600"};
    const char* expected[] = {"", "", "C:\\\xd0\xa0\xd0\xb8\xd0\xbc\\\xc3\xa9t\xc3\xa9\\\xf0\x9f\x98\x80"};
    for (int i = 0; i < 3; ++i) {
        SetEnvironmentVariableW(L"ORVANE_WINDOWS_TEST_VARIABLE", values[i]);
        std::string out = "stale";
        EXPECT_EQ(host::read_environment("ORVANE_WINDOWS_TEST_VARIABLE", out), i == 2) << i;
        EXPECT_EQ(out, expected[i]) << i;
    }
    SetEnvironmentVariableW(L"ORVANE_WINDOWS_TEST_VARIABLE", nullptr);
}

TEST(WindowsErrorText, SystemMessagesAreCutAtTheLineEndAndUnknownCodesFormatted) {
    for (uint32_t code : {2u, 5u, 0x80070002u}) {
        const std::string text = host::platform_error_text(code);
        EXPECT_FALSE(text.empty() || text.find_first_of("\r\n") != std::string::npos) << code << ": " << text;
        EXPECT_EQ(text.rfind("Unknown error", 0), std::string::npos) << code << ": " << text;
    }
    EXPECT_NE(host::platform_error_text(2), host::platform_error_text(5));
    EXPECT_EQ(host::platform_error_text(0xFFFFFFFFu), "Unknown error: -1 (0xFFFFFFFF)");
}

TEST(WindowsTrace, LinesEndInOneCarriageReturnLineFeedOnATextModeOutput) {
    // Standard output goes, at descriptor level, to a file opened in text mode; it is read back as bytes.
    windows_test::TempTree tree(L"trace");
    const std::filesystem::path file = tree.path(L"out.txt");
    std::fflush(stdout);
    const int saved = _dup(_fileno(stdout));
    const int target = _wopen(file.c_str(), _O_CREAT | _O_TRUNC | _O_WRONLY | _O_TEXT, _S_IREAD | _S_IWRITE);
    ASSERT_GE(target, 0);
    _dup2(target, _fileno(stdout));
    _close(target);
    host::g_trace_enabled = false;
    SetEnvironmentVariableW(L"COREHOST_TRACE", L"1");
    host::read_trace_switch();
    host::trace_line("NETCORE_DIR: '%s'", "C:\\runtime\\netcore1.0");
    std::fflush(stdout);
    _dup2(saved, _fileno(stdout));
    _close(saved);
    host::g_trace_enabled = false;
    SetEnvironmentVariableW(L"COREHOST_TRACE", nullptr);

    std::ifstream in(file, std::ios::binary);
    std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    EXPECT_EQ(bytes, "CLR host tracing enabled\r\nNETCORE_DIR: 'C:\\runtime\\netcore1.0'\r\n");
}

// The text of the exception an action throws, or "" when it throws none.
template <typename Action>
std::string error_of(Action action) {
    try {
        action();
    } catch (const std::exception& e) {
        return e.what();
    }
    return "";
}

TEST(WindowsDynamicLibrary, LoadsByPathJoinsByNameAndBalancesItsReferences) {
    const char* name = host::kLoaderLibraryName;
    ASSERT_EQ(GetModuleHandleA(name), nullptr) << "the fake must not be in the process yet";
    {
        host::DynamicLibrary first, second;
        first.load(utf8(windows_test::fake_loader().wstring()), name);
        EXPECT_TRUE(first.loaded_here());
        second.load("C:\\nonexistent\\orvane.embed.coreclrwrap.dll", name);
        EXPECT_FALSE(second.loaded_here());
        EXPECT_EQ(second.symbol("coreclr_wrap_load"), first.symbol("coreclr_wrap_load"));
        EXPECT_EQ(error_of([&] { second.symbol("coreclr_wrap_absent"); }), "No such symbol: coreclr_wrap_absent");
        first = host::DynamicLibrary();
        EXPECT_NE(GetModuleHandleA(name), nullptr) << "the handle joined by name holds a reference of its own";
    }
    EXPECT_EQ(GetModuleHandleA(name), nullptr) << "both handles are freed";
    host::DynamicLibrary absent;
    EXPECT_EQ(error_of([&] { absent.load("C:\\nonexistent\\orvane.absent.dll", "orvane.absent.dll"); }),
              "DynamicLibrary::load");
    EXPECT_FALSE(absent.holds_handle());
}

}  // namespace
