// Tests of runtime and assembly discovery: path helpers, the netcoreX.Y rule, directory scans, variables.
#include "host/core/runtime_discovery.h"

#include <stdlib.h>

#include <filesystem>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fake_loader/temp_tree.h"
#include "host/platform/platform.h"

namespace {

using host::RuntimeVersion;
using test_support::TempTree;
using List = std::vector<std::string>;

constexpr char kLibrary[] = "orvane.embed.coreclrwrap.so";

// Names of the entries of a directory in the order the file system reports them (readdir's order).
List raw_directory_order(const std::string& directory) {
    List names;
    for (const auto& entry : std::filesystem::directory_iterator(directory)) names.push_back(entry.path().filename());
    return names;
}

// Fills a tree: "x/" is a directory, anything else an empty file; a file named LIB is the loader library.
void build(const TempTree& tree, const List& entries) {
    for (std::string entry : entries) {
        size_t name = entry.rfind('/') + 1;
        if (entry.back() == '/')
            tree.dir(entry);
        else
            tree.file(entry.compare(name, std::string::npos, "LIB") == 0 ? entry.substr(0, name) + kLibrary : entry);
    }
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
        {"/usr/bin/python3", "/usr/bin/"}, {"/python3", "/"}, {"relative/dir/python3", "relative/dir/"},
        {"/opt/dir/", "/opt/dir/"},        {"python3", "python3"}, {"", ""}};
    for (const auto& c : directories) EXPECT_EQ(host::default_directory(c.first), c.second) << c.first;

    struct Join { const char* base; const char* part; const char* joined; };
    for (const Join& c : {Join{"", "netcore3.1", "netcore3.1"}, Join{"", "", ""},
                          Join{"/opt/root", "netcore3.1", "/opt/root/netcore3.1"},
                          Join{"/opt/root/", "netcore3.1", "/opt/root/netcore3.1"},
                          Join{"/opt/root", "/netcore3.1", "/opt/root/netcore3.1"},
                          Join{"/opt/root", "", "/opt/root"}, Join{"/", "x", "/x"}})
        EXPECT_EQ(host::join_paths(c.base, c.part), c.joined) << c.base << " + " << c.part;
    EXPECT_EQ(host::join_paths("", std::string(400, 'p')), std::string(400, 'p')) << "no buffer for an empty base";

    EXPECT_EQ(host::join_list({}, ':'), "");
    EXPECT_EQ(host::join_list({"/a"}, ':'), "/a");
    EXPECT_EQ(host::join_list({"/a", "/b/", "/c"}, ':'), "/a:/b/:/c");
    EXPECT_EQ(host::join_list({"", "/a", "/a", ""}, ';'), ";/a;/a;") << "duplicates and empty entries stay";
}

TEST(PathHelpers, JoinedPathStaysWithinThePathLimit) {
    const size_t limit = platform::kPathLimit;
    const std::string fits = "/" + std::string(limit - 3, 'b');  // with "/x" exactly the limit
    EXPECT_EQ(host::join_paths(fits, "x"), fits + "/x");
    const std::string full = "/" + std::string(limit - 2, 'b');  // no room for "/x": the base comes back
    EXPECT_EQ(host::join_paths(full, "x"), full);
    const std::string over = "/" + std::string(limit + 40, 'c');  // cut to the limit, nothing appended
    EXPECT_EQ(host::join_paths(over, "tail"), over.substr(0, limit));
    EXPECT_EQ(host::join_paths(over, ""), over.substr(0, limit));
}

TEST(RuntimeDirectoryName, NetcoreMajorDotMinorInDecimalDigits) {
    struct Case { const char* name; int major, minor; };
    for (const Case& c : {Case{"netcore3.1", 3, 1}, Case{"netcore10.0", 10, 0}, Case{"netcore03.01", 3, 1},
                          Case{"netcore0.0", 0, 0}, Case{"netcore2147483647.2147483647", 2147483647, 2147483647}}) {
        RuntimeVersion version{-1, -1};
        ASSERT_TRUE(host::parse_runtime_directory_name(c.name, version)) << c.name;
        EXPECT_EQ(version.major, c.major) << c.name;
        EXPECT_EQ(version.minor, c.minor) << c.name;
    }
    // The last three: the shape is refused before the over-long number is read, so nothing throws.
    for (const char* name : {"netcore3", "netcore3.1.0", "netcore-3.1", "NetCore3.1", "mynetcore3.1", "netcore3.1-rc",
                             "netcore", "netcore.", "netcore3.", "netcore.1", "netcor", "", "netcore 3.1",
                             "netcore3.1 ", "netcore+3.1", "netcore3.+1", "NETCORE3.1", "netcore3,1",
                             "netcore99999999999.0.1", "netcore99999999999", "NetCore99999999999.0"}) {
        RuntimeVersion version{-1, -1};
        EXPECT_FALSE(host::parse_runtime_directory_name(name, version)) << '"' << name << '"';
    }
}

TEST(RuntimeDirectoryName, NumberBeyond32BitsThrowsOutOfRange) {
    for (const char* name : {"netcore99999999999.0", "netcore2147483648.0", "netcore3.99999999999",
                             "netcore1.2147483648"}) {
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
        {{"netcore3.0/LIB", "netcore3.1/LIB", "netcore5.0/"}, "netcore3.1"},     // 5.0 lacks the library
        {{"netcore3.9/LIB", "netcore3.10/LIB", "netcore2.99/LIB"}, "netcore3.10"},  // numbers, not text
        {{"netcore9.9/LIB", "netcore10.0/LIB"}, "netcore10.0"},
        {{"netcore9/LIB", "NetCore9.9/LIB", "netcore9.9-rc/LIB", "LIB"}, nullptr},  // nothing versioned
        {{"netcore3.1/other.so"}, nullptr},
        {{}, nullptr},
    };
    for (const Case& c : cases) {
        TempTree tree;
        build(tree, c.tree);
        std::string found = "untouched";
        EXPECT_EQ(host::find_runtime_directory(tree.root(), kLibrary, found), c.found != nullptr)
            << ::testing::PrintToString(c.tree);
        EXPECT_EQ(found, c.found != nullptr ? tree.path(c.found) : "untouched");
    }
    std::string found;
    EXPECT_FALSE(host::find_runtime_directory("/nonexistent/orvane/root", kLibrary, found)) << "root absent";
}

TEST(FindRuntimeDirectory, AmongEqualVersionsTheOneEnumeratedLastWins) {
    TempTree tree;
    build(tree, {"netcore3.1/LIB", "netcore03.01/LIB", "netcore3.01/LIB"});
    List order = raw_directory_order(tree.root());
    ASSERT_EQ(order.size(), 3u);
    std::string found;
    ASSERT_TRUE(host::find_runtime_directory(tree.root(), kLibrary, found));
    EXPECT_EQ(found, tree.path(order.back()));
}

TEST(CollectAssemblyDirectories, SubDirectoriesInFileSystemOrderOrTheirDebugDirectories) {
    TempTree tree;
    build(tree, {"zeta/", "alpha/debug/", "mid/", "beta/debug/", "c.txt", "gamma/debug"});  // gamma/debug: a file
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

    TempTree empty;
    List none;
    host::collect_assembly_directories(empty.root(), false, none);
    host::collect_assembly_directories(empty.root(), true, none);
    host::collect_assembly_directories(empty.path("missing"), false, none);
    EXPECT_TRUE(none.empty());
}

TEST(ReadEnvironment, UnsetAndEmptyCountAsAbsentAndClearTheOutput) {
    const std::string name = "GTEST_ORVANE_READ_ENV";
    for (const char* value : {static_cast<const char*>(nullptr), ""}) {
        ScopedVariable variable(name, value);
        std::string out = "stale";
        EXPECT_FALSE(host::read_environment(name, out));
        EXPECT_EQ(out, "");
    }
    ScopedVariable set(name, "/some/where");
    std::string out;
    EXPECT_TRUE(host::read_environment(name, out));
    EXPECT_EQ(out, "/some/where");
}

TEST(ResolveRuntimeDirectory, VersionedDirectoryUnderTheVendorsVariableElseTheDefault) {
    struct Case { const char* variable; List tree; const char* expected; };  // variable: null for unset
    const Case cases[] = {
        {nullptr, {"netcore1.0/LIB"}, "/default/"},
        {"", {"netcore1.0/LIB"}, "/default/"},
        {"@", {"netcore1.0/LIB"}, "@/netcore1.0"},
        {"@", {"LIB"}, "/default/"},
        {"@/missing", {}, "/default/"},
        // The scan looks for the release library, also for a debug start.
        {"@", {std::string("netcore1.0/") + host::kLoaderLibraryDebugName}, "/default/"},
    };
    for (const Case& c : cases) {
        TempTree tree;
        build(tree, c.tree);
        ScopedVariable variable("NETCORE_WRAPPER_NETCORE_DIR_gtestrt",
                                c.variable != nullptr ? at(tree, c.variable).c_str() : nullptr);
        EXPECT_EQ(host::resolve_runtime_directory("gtestrt", "/default/"), at(tree, c.expected))
            << (c.variable != nullptr ? c.variable : "(unset)") << " " << ::testing::PrintToString(c.tree);
    }

    TempTree tree;
    build(tree, {"netcore1.0/LIB", "netcore99999999999.0/"});
    ScopedVariable variable("NETCORE_WRAPPER_NETCORE_DIR_gtestrt", tree.root().c_str());
    EXPECT_EQ(host::resolve_runtime_directory("gtestother", "/default/"), "/default/") << "another vendor's variable";
    try {
        host::resolve_runtime_directory("gtestrt", "/default/");
        ADD_FAILURE() << "an over-long version number must end the start-up";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "stoi argument out of range");
    }
}

TEST(ResolveAssemblyDirectories, RootSubDirectoriesElseTheDefaultThenTheRuntimeDirectoryOnce) {
    struct Case { const char* variable; List tree; bool debug; const char* runtime; List expected; };
    const Case cases[] = {
        {nullptr, {}, false, "/rt", {"/default/", "/rt"}},
        {"", {"a/"}, false, "/rt", {"/default/", "/rt"}},
        {nullptr, {}, false, "/default/", {"/default/"}},
        {"@", {"a/", "c.txt"}, false, "/rt", {"@/a", "/rt"}},  // the default directory is not added
        {"@", {"a/debug/", "b/"}, true, "/rt", {"@/a/debug", "/rt"}},
        {"@", {}, false, "/rt", {"/rt"}},
        {"@", {"x/"}, false, "@/x", {"@/x"}},
        {"@", {"x/"}, false, "@/x/", {"@/x", "@/x/"}},  // the runtime directory is matched exactly
        {"@", {"x/"}, false, "@/X", {"@/x", "@/X"}},
    };
    for (const Case& c : cases) {
        TempTree tree;
        build(tree, c.tree);
        ScopedVariable variable("NETCORE_WRAPPER_ASSEMBLY_DIR_gtestasm",
                                c.variable != nullptr ? at(tree, c.variable).c_str() : nullptr);
        List expected;
        for (const std::string& path : c.expected) expected.push_back(at(tree, path));
        EXPECT_EQ(host::resolve_assembly_directories("gtestasm", c.debug, "/default/", at(tree, c.runtime)), expected)
            << (c.variable != nullptr ? c.variable : "(unset)") << " " << ::testing::PrintToString(c.tree);
    }
}

}  // namespace
