// Tests of DynamicLibrary: joining a library already in the process, loading one, symbols, release.
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
// The fake loader library is never linked into the test program; it is only loaded by tests.
constexpr char kFakeName[] = "orvane.embed.coreclrwrap.so";

bool in_process(const char* name) {
    void* handle = dlopen(name, RTLD_NOW | RTLD_NOLOAD);
    if (handle == nullptr) return false;
    dlclose(handle);
    return true;
}

#ifdef FAKE_LOADER_PATH
constexpr char kFakePath[] = FAKE_LOADER_PATH;
#define REQUIRE_FAKE_LOADER() \
    ASSERT_FALSE(in_process(kFakeName)) << "the fake loader library must not be in the process yet"
#else
constexpr char kFakePath[] = "";
#define REQUIRE_FAKE_LOADER() GTEST_SKIP() << "built without the fake loader library (tests/native/fake_loader)"
#endif

void expect_runtime_error(const std::function<void()>& action, const std::string& text) {
    try {
        action();
        ADD_FAILURE() << "no exception, expected: " << text;
    } catch (const std::runtime_error& e) {
        EXPECT_EQ(std::string(e.what()), text);
    }
}

TEST(DynamicLibraryErrors, MissingLibraryThrowsAndHoldsNothing) {
    DynamicLibrary library;
    expect_runtime_error([&] { library.load("/nonexistent/dir/orvane.absent.so", "orvane.absent.so"); },
                         "DynamicLibrary::load");
    EXPECT_FALSE(library.holds_handle());
    EXPECT_FALSE(library.loaded_here());
}

TEST(DynamicLibraryErrors, FileThatIsNoLibraryThrows) {
    DynamicLibrary library;
    expect_runtime_error([&] { library.load("/proc/self/status", "status"); }, "DynamicLibrary::load");
    EXPECT_FALSE(library.holds_handle());
}

TEST(DynamicLibraryErrors, SymbolWithoutALibraryIsALogicError) {
    DynamicLibrary library;
    try {
        library.symbol("cos");
        ADD_FAILURE() << "no exception";
    } catch (const std::logic_error& e) {
        EXPECT_STREQ(e.what(), "Library was not opened!");
    }
}

TEST(DynamicLibraryErrors, MissingSymbolNamesTheSymbol) {
    DynamicLibrary library;
    library.load(kResidentPath, kResidentName);
    expect_runtime_error([&] { library.symbol("coreclr_wrap_initialize"); },
                         "No such symbol: coreclr_wrap_initialize");
    expect_runtime_error([&] { library.symbol(""); }, "No such symbol: ");
}

TEST(DynamicLibraryErrors, FailedLoadReleasesTheLibraryHeldBefore) {
    DynamicLibrary library;
    library.load(kResidentPath, kResidentName);
    ASSERT_TRUE(library.holds_handle());
    EXPECT_THROW(library.load("/nonexistent/orvane.absent.so", "orvane.absent.so"), std::runtime_error);
    EXPECT_FALSE(library.holds_handle());
    EXPECT_THROW(library.symbol("cos"), std::logic_error);
}

TEST(DynamicLibraryResident, LibraryAlreadyInTheProcessIsJoinedNotLoaded) {
    DynamicLibrary library;
    library.load(kResidentPath, kResidentName);
    EXPECT_TRUE(library.holds_handle());
    EXPECT_FALSE(library.loaded_here());
    EXPECT_EQ(library.symbol("cos"), dlsym(RTLD_DEFAULT, "cos"));
}

TEST(DynamicLibraryResident, BareNameDecidesAndThePathIsNotUsed) {
    DynamicLibrary library;
    library.load("/nonexistent/dir/libm.so.6", kResidentName);
    EXPECT_TRUE(library.holds_handle());
    EXPECT_FALSE(library.loaded_here());
}

TEST(DynamicLibraryResident, ReleasingAJoinedLibraryLeavesItInTheProcess) {
    { DynamicLibrary library; library.load(kResidentPath, kResidentName); }
    EXPECT_TRUE(in_process(kResidentName));
}

TEST(DynamicLibraryLoaded, LibraryNotYetInTheProcessIsLoadedHere) {
    REQUIRE_FAKE_LOADER();
    {
        DynamicLibrary library;
        library.load(kFakePath, kFakeName);
        EXPECT_TRUE(library.holds_handle());
        EXPECT_TRUE(library.loaded_here());
        EXPECT_TRUE(in_process(kFakeName));
        EXPECT_NE(library.symbol("coreclr_wrap_initialize"), nullptr);
        EXPECT_NE(library.symbol("coreclr_wrap_is_domain_initialized"), nullptr);
    }
    EXPECT_FALSE(in_process(kFakeName)) << "the destructor frees a library by default";
}

TEST(DynamicLibraryLoaded, SecondLoadWhileTheFirstHoldsItJoins) {
    REQUIRE_FAKE_LOADER();
    {
        DynamicLibrary first;
        first.load(kFakePath, kFakeName);
        DynamicLibrary second;
        second.load("/nonexistent/" + std::string(kFakeName), kFakeName);
        EXPECT_TRUE(first.loaded_here());
        EXPECT_FALSE(second.loaded_here());
        EXPECT_EQ(first.symbol("coreclr_wrap_load"), second.symbol("coreclr_wrap_load"));
    }
    EXPECT_FALSE(in_process(kFakeName)) << "both references are given back";
}

TEST(DynamicLibraryLoaded, WithoutFreeOnDestroyTheLibraryStays) {
    REQUIRE_FAKE_LOADER();
    {
        DynamicLibrary library;
        library.load(kFakePath, kFakeName);
        library.set_free_on_destroy(false);
    }
    void* handle = dlopen(kFakeName, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(handle, nullptr) << "the library was unloaded";
    // Give back the reference just taken and the one the DynamicLibrary kept.
    dlclose(handle);
    dlclose(handle);
    EXPECT_FALSE(in_process(kFakeName));
}

TEST(DynamicLibraryLoaded, NewLoadReleasesTheLibraryHeldBefore) {
    REQUIRE_FAKE_LOADER();
    DynamicLibrary library;
    library.load(kFakePath, kFakeName);
    ASSERT_TRUE(library.loaded_here());
    library.load(kResidentPath, kResidentName);
    EXPECT_FALSE(in_process(kFakeName));
    EXPECT_FALSE(library.loaded_here());
    EXPECT_TRUE(library.holds_handle());
}

TEST(DynamicLibraryMove, MoveConstructionTakesTheHandleAndEmptiesTheSource) {
    REQUIRE_FAKE_LOADER();
    {
        DynamicLibrary source;
        source.load(kFakePath, kFakeName);
        DynamicLibrary target(std::move(source));
        EXPECT_FALSE(source.holds_handle());
        EXPECT_THROW(source.symbol("coreclr_wrap_load"), std::logic_error);
        EXPECT_TRUE(target.holds_handle());
        EXPECT_TRUE(target.loaded_here());
        { DynamicLibrary gone(std::move(source)); }
        EXPECT_TRUE(in_process(kFakeName)) << "destroying the emptied source must not free the library";
    }
    EXPECT_FALSE(in_process(kFakeName));
}

TEST(DynamicLibraryMove, MoveAssignmentReleasesTheTargetAndTakesOverTheSource) {
    REQUIRE_FAKE_LOADER();
    DynamicLibrary target;
    target.load(kFakePath, kFakeName);
    DynamicLibrary source;
    source.load(kResidentPath, kResidentName);
    target = std::move(source);
    EXPECT_FALSE(in_process(kFakeName)) << "the target's library was not released";
    EXPECT_TRUE(target.holds_handle());
    EXPECT_FALSE(target.loaded_here());
    EXPECT_FALSE(source.holds_handle());
}

TEST(DynamicLibraryMove, MoveAssignmentTakesOverLoadedHere) {
    REQUIRE_FAKE_LOADER();
    {
        DynamicLibrary target;
        DynamicLibrary source;
        source.load(kFakePath, kFakeName);
        target = std::move(source);
        EXPECT_TRUE(target.loaded_here());
        EXPECT_TRUE(in_process(kFakeName));
        EXPECT_NE(target.symbol("coreclr_wrap_shutdown"), nullptr);
    }
    EXPECT_FALSE(in_process(kFakeName));
}

TEST(DynamicLibraryMove, TargetWithoutFreeOnDestroyKeepsItsOldLibraryOnAssignment) {
    REQUIRE_FAKE_LOADER();
    DynamicLibrary target;
    target.load(kFakePath, kFakeName);
    target.set_free_on_destroy(false);
    target = DynamicLibrary();
    EXPECT_FALSE(target.holds_handle());
    void* handle = dlopen(kFakeName, RTLD_NOW | RTLD_NOLOAD);
    ASSERT_NE(handle, nullptr) << "the library was unloaded";
    dlclose(handle);
    dlclose(handle);
    EXPECT_FALSE(in_process(kFakeName));
}

}  // namespace
