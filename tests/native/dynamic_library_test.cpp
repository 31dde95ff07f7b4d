// Tests of DynamicLibrary: joining a library already in the process, loading one, symbols, release, moves.
#include "host/core/dynamic_library.h"

#include <dlfcn.h>

#include <functional>
#include <stdexcept>
#include <string>
#include <utility>

#include <gtest/gtest.h>

namespace {

using host::DynamicLibrary;

// libm is a dependency of the C++ runtime, so it is in the process before any test runs.
constexpr char kResidentPath[] = "/lib/x86_64-linux-gnu/libm.so.6";
constexpr char kResidentName[] = "libm.so.6";
// The fake loader library is never linked into the test program; only these tests load it.
constexpr char kFakePath[] = FAKE_LOADER_PATH;
constexpr char kFakeName[] = "orvane.embed.coreclrwrap.so";

bool in_process(const char* name) {
    void* handle = dlopen(name, RTLD_NOW | RTLD_NOLOAD);
    if (handle != nullptr) dlclose(handle);
    return handle != nullptr;
}

// Each test starts and must end with the fake out of the process.
class DynamicLibraryTest : public ::testing::Test {
protected:
    void SetUp() override { ASSERT_FALSE(in_process(kFakeName)) << "the fake is still in the process"; }
    void TearDown() override { EXPECT_FALSE(in_process(kFakeName)) << "a reference to the fake was not given back"; }
};

template <typename Error = std::runtime_error>
void expect_error(const std::function<void()>& action, const std::string& text) {
    try {
        action();
        ADD_FAILURE() << "no exception, expected: " << text;
    } catch (const Error& e) {
        EXPECT_EQ(std::string(e.what()), text);
    }
}

TEST_F(DynamicLibraryTest, FailuresThrowTheirTextsAndHoldNothing) {
    DynamicLibrary library;
    expect_error<std::logic_error>([&] { library.symbol("cos"); }, "Library was not opened!");
    library.load(kFakePath, kFakeName);
    expect_error([&] { library.load("/proc/self/status", "orvane.absent.so"); }, "DynamicLibrary::load");  // no library
    EXPECT_FALSE(library.holds_handle()) << "the library held before is released";
    library.load(kResidentPath, kResidentName);
    expect_error([&] { library.symbol("coreclr_wrap_initialize"); }, "No such symbol: coreclr_wrap_initialize");
}

// A library in the process is joined by its bare name (the path is not used); every holder frees its reference.
TEST_F(DynamicLibraryTest, JoinsByNameOrLoadsByPathAndEveryHolderFrees) {
    DynamicLibrary first, second;
    first.load(kFakePath, kFakeName);
    EXPECT_TRUE(first.loaded_here());
    second.load("/nonexistent/" + std::string(kFakeName), kFakeName);
    EXPECT_FALSE(second.loaded_here());
    EXPECT_EQ(first.symbol("coreclr_wrap_load"), second.symbol("coreclr_wrap_load"));
    first.load(kResidentPath, kResidentName);  // a new load releases the library held before
    EXPECT_TRUE(in_process(kFakeName)) << "the second holder's reference was taken away";
    EXPECT_FALSE(first.loaded_here());
}

// Without free-on-destroy the library stays on destruction and on assignment.
TEST_F(DynamicLibraryTest, WithoutFreeOnDestroyTheLibraryStays) {
    for (bool by_assignment : {false, true}) {
        {
            DynamicLibrary library;
            library.load(kFakePath, kFakeName);
            library.set_free_on_destroy(false);
            if (by_assignment) library = DynamicLibrary();
            EXPECT_NE(library.holds_handle(), by_assignment);
        }
        void* handle = dlopen(kFakeName, RTLD_NOW | RTLD_NOLOAD);
        ASSERT_NE(handle, nullptr) << "the library was unloaded";
        dlclose(handle);  // the reference just taken
        dlclose(handle);  // the one the DynamicLibrary kept
    }
}

TEST_F(DynamicLibraryTest, MovesHandOverTheHandleAndReleaseTheTarget) {
    {
        DynamicLibrary source;
        source.load(kFakePath, kFakeName);
        DynamicLibrary target(std::move(source));
        EXPECT_THROW(source.symbol("coreclr_wrap_load"), std::logic_error);
        EXPECT_TRUE(target.loaded_here());
        { DynamicLibrary gone(std::move(source)); }
        DynamicLibrary assigned;
        assigned = std::move(target);
        EXPECT_NE(assigned.symbol("coreclr_wrap_shutdown"), nullptr);
        EXPECT_TRUE(in_process(kFakeName)) << "destroying an emptied source must not free the library";
    }
    DynamicLibrary target, source;
    target.load(kFakePath, kFakeName);
    source.load(kResidentPath, kResidentName);
    target = std::move(source);
    EXPECT_FALSE(in_process(kFakeName)) << "the target's library was not released";
    EXPECT_FALSE(target.loaded_here() || source.holds_handle());
}

}  // namespace
