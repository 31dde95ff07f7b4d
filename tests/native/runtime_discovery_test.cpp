// Tests of runtime and assembly discovery: path helpers, the netcoreX.Y rule, directory scans, variables.
#include "host/core/runtime_discovery.h"

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "fake_loader/temp_tree.h"
#include "host/platform/platform.h"

namespace {

using host::RuntimeVersion;
using test_support::TempTree;
using List = std::vector<std::string>;

#define LIB "/orvane.embed.coreclrwrap.so"

// Names of the entries of a directory in the order the file system reports them (readdir's order).
List raw_directory_order(const std::string& directory) {
    List names;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) names.push_back(entry.path().filename());
    return names;
}

// In the tables "@" at the start of a path stands for the tree's root.
std::string at(const TempTree& tree, const std::string& path) {
    return path.rfind('@', 0) == 0 ? tree.root() + path.substr(1) : path;
}

// Sets (null: clears) an environment variable for the life of a test; cleared at the end.
struct ScopedVariable {
    std::string name;
    ScopedVariable(std::string n, const char* value) : name(std::move(n)) {
        value != nullptr ? setenv(name.c_str(), value, 1) : unsetenv(name.c_str());
    }
    ~ScopedVariable() { unsetenv(name.c_str()); }
};

TEST(PathHelpers, DirectoryPartJoinedPathsAndLists) {
    const std::pair<const char*, const char*> directories[] = {
        {"/usr/bin/python3", "/usr/bin/"}, {"/python3", "/"}, {"/opt/dir/", "/opt/dir/"}, {"python3", "python3"}};
    for (const auto& c : directories) EXPECT_EQ(host::default_directory(c.first), c.second) << c.first;

    struct Join { const char* base; const char* part; const char* joined; };
    for (const Join& c : {Join{"", "netcore3.1", "netcore3.1"}, Join{"/opt/root", "netcore3.1", "/opt/root/netcore3.1"},
                          Join{"/opt/root/", "x", "/opt/root/x"}, Join{"/opt/root", "/x", "/opt/root/x"},
                          Join{"/opt/root", "", "/opt/root"}})
        EXPECT_EQ(host::join_paths(c.base, c.part), c.joined) << c.base << " + " << c.part;
    EXPECT_EQ(host::join_paths("", std::string(400, 'p')), std::string(400, 'p')) << "no buffer for an empty base";

    EXPECT_EQ(host::join_list({}, ':'), "");
    EXPECT_EQ(host::join_list({"", "/a", "/a", "/b/"}, ';'), ";/a;/a;/b/") << "duplicates and empty entries stay";
}

TEST(PathHelpers, JoinedPathStaysWithinThePathLimit) {
    const size_t limit = platform::kPathLimit;
    const std::string fits = "/" + std::string(limit - 3, 'b');  // with "/x" exactly the limit
    EXPECT_EQ(host::join_paths(fits, "x"), fits + "/x");
    const std::string full = "/" + std::string(limit - 2, 'b');  // no room for "/x": the base comes back
    EXPECT_EQ(host::join_paths(full, "x"), full);
    const std::string over = "/" + std::string(limit + 40, 'c');  // cut to the limit, nothing appended
    EXPECT_EQ(host::join_paths(over, "tail"), over.substr(0, limit));
}

TEST(RuntimeDirectoryName, NetcoreMajorDotMinorInDecimalDigitsWithin32Bits) {
    struct Case { const char* name; int major, minor; };
    for (const Case& c : {Case{"netcore3.1", 3, 1}, Case{"netcore10.0", 10, 0}, Case{"netcore03.01", 3, 1},
                          Case{"netcore2147483647.2147483647", 2147483647, 2147483647}}) {
        RuntimeVersion version{-1, -1};
        ASSERT_TRUE(host::parse_runtime_directory_name(c.name, version)) << c.name;
        EXPECT_EQ(std::make_pair(version.major, version.minor), std::make_pair(c.major, c.minor)) << c.name;
    }
    // The last one: the shape is refused before the over-long number is read, so nothing throws.
    for (const char* name : {"netcore3", "netcore3.1.0", "netcore-3.1", "NetCore3.1", "mynetcore3.1", "netcore3.1-rc",
                             "netcore", "netcore3.", "netcore.1", "netcor", "netcore 3.1", "netcore+3.1",
                             "netcore99999999999.0.1"}) {
        RuntimeVersion version{-1, -1};
        EXPECT_FALSE(host::parse_runtime_directory_name(name, version)) << '"' << name << '"';
    }
    for (const char* name : {"netcore2147483648.0", "netcore1.2147483648"}) {
        RuntimeVersion version{};
        try {
            host::parse_runtime_directory_name(name, version);
            ADD_FAILURE() << name << " did not throw";
        } catch (const std::out_of_range& e) {
            EXPECT_STREQ(e.what(), "stoi argument out of range") << name;
        }
    }
}

TEST(FindRuntimeDirectory, HighestVersionedDirectoryHoldingTheLibrary) {
    struct Case { List tree; const char* found; };  // found: null for none
    const Case cases[] = {
        {{"netcore3.0" LIB, "netcore3.1" LIB, "netcore5.0/"}, "netcore3.1"},        // 5.0 lacks the library
        {{"netcore3.9" LIB, "netcore3.10" LIB, "netcore2.99" LIB}, "netcore3.10"},  // numbers, not text
        {{"netcore9" LIB, "netcore9.9-rc" LIB, LIB}, nullptr},                      // nothing versioned
        {{"netcore3.1/other.so"}, nullptr},
    };
    for (const Case& c : cases) {
        TempTree tree(c.tree);
        std::string found = "untouched";
        EXPECT_EQ(host::find_runtime_directory(tree.root(), LIB + 1, found), c.found != nullptr)
            << ::testing::PrintToString(c.tree);
        EXPECT_EQ(found, c.found != nullptr ? tree.path(c.found) : "untouched");
    }
    std::string found;
    EXPECT_FALSE(host::find_runtime_directory("/nonexistent/orvane/root", LIB + 1, found)) << "root absent";

    TempTree equal({"netcore3.1" LIB, "netcore03.01" LIB, "netcore3.01" LIB});
    ASSERT_TRUE(host::find_runtime_directory(equal.root(), LIB + 1, found));
    EXPECT_EQ(found, equal.path(raw_directory_order(equal.root()).back())) << "equal versions: the last enumerated";
}

TEST(CollectAssemblyDirectories, SubDirectoriesInFileSystemOrderOrTheirDebugDirectories) {
    TempTree tree({"zeta/", "alpha/debug/", "mid/", "beta/debug/", "c.txt", "gamma/debug"});  // gamma/debug: a file
    List release{"/existing"}, debug;
    host::collect_assembly_directories(tree.root(), false, release);
    host::collect_assembly_directories(tree.root(), true, debug);
    List expected_release{"/existing"}, expected_debug;  // appended behind what the list holds, one level deep
    for (const std::string& name : raw_directory_order(tree.root())) {
        if (name == "c.txt") continue;
        expected_release.push_back(tree.path(name));
        if (name == "alpha" || name == "beta") expected_debug.push_back(tree.path(name + "/debug"));
    }
    EXPECT_EQ(release, expected_release);
    EXPECT_EQ(debug, expected_debug);
    List none;
    host::collect_assembly_directories(tree.path("missing"), false, none);
    EXPECT_TRUE(none.empty());
}

TEST(ReadEnvironment, EmptyCountsAsUnsetAndTheOutputIsEmptiedFirst) {
    for (const char* value : {static_cast<const char*>(nullptr), "", "/some/where"}) {
        ScopedVariable variable("GTEST_ORVANE_READ_ENV", value);
        std::string out = "stale";
        EXPECT_EQ(host::read_environment("GTEST_ORVANE_READ_ENV", out), value != nullptr && *value != '\0');
        EXPECT_EQ(out, value != nullptr ? value : "");
    }
}

TEST(ResolveRuntimeDirectory, VersionedDirectoryUnderTheVendorsVariableElseTheDefault) {
    struct Case { const char* variable; List tree; const char* expected; };  // variable: null for unset
    const Case cases[] = {
        {nullptr, {"netcore1.0" LIB}, "/default/"},
        {"@", {"netcore1.0" LIB}, "@/netcore1.0"},
        // The scan looks for the release library, also for a debug start.
        {"@", {"netcore1.0/orvane.embed.coreclrwrap.debug.so"}, "/default/"},
    };
    for (const Case& c : cases) {
        TempTree tree(c.tree);
        ScopedVariable variable("NETCORE_WRAPPER_NETCORE_DIR_gtestrt",
                                c.variable != nullptr ? at(tree, c.variable).c_str() : nullptr);
        EXPECT_EQ(host::resolve_runtime_directory("gtestrt", "/default/"), at(tree, c.expected))
            << (c.variable != nullptr ? c.variable : "(unset)") << " " << ::testing::PrintToString(c.tree);
    }

    TempTree tree({"netcore1.0" LIB, "netcore99999999999.0/"});
    ScopedVariable variable("NETCORE_WRAPPER_NETCORE_DIR_gtestrt", tree.root().c_str());
    EXPECT_EQ(host::resolve_runtime_directory("gtestother", "/default/"), "/default/") << "another vendor's variable";
    EXPECT_THROW(host::resolve_runtime_directory("gtestrt", "/default/"), std::out_of_range)
        << "an over-long version number must end the start-up";
}

TEST(ResolveAssemblyDirectories, RootSubDirectoriesElseTheDefaultThenTheRuntimeDirectoryOnce) {
    struct Case { const char* variable; List tree; bool debug; const char* runtime; List expected; };
    const Case cases[] = {
        {nullptr, {}, false, "/rt", {"/default/", "/rt"}},
        {nullptr, {}, false, "/default/", {"/default/"}},
        {"@", {"a/", "c.txt"}, false, "/rt", {"@/a", "/rt"}},  // the default directory is not added
        {"@", {}, false, "/rt", {"/rt"}},
        {"@", {"x/"}, false, "@/x", {"@/x"}},
        {"@", {"x/"}, false, "@/x/", {"@/x", "@/x/"}},  // the runtime directory is matched exactly
    };
    for (const Case& c : cases) {
        TempTree tree(c.tree);
        ScopedVariable variable("NETCORE_WRAPPER_ASSEMBLY_DIR_gtestasm",
                                c.variable != nullptr ? at(tree, c.variable).c_str() : nullptr);
        List expected;
        for (const std::string& path : c.expected) expected.push_back(at(tree, path));
        EXPECT_EQ(host::resolve_assembly_directories("gtestasm", c.debug, "/default/", at(tree, c.runtime)), expected)
            << (c.variable != nullptr ? c.variable : "(unset)") << " " << ::testing::PrintToString(c.tree);
    }
}

}  // namespace
