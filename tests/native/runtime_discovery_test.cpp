// Tests of runtime and assembly discovery: path helpers, the netcoreX.Y rule, directory scans, variables.
#include "host/core/runtime_discovery.h"

#include <dirent.h>
#include <stdlib.h>

#include <algorithm>
#include <set>
#include <stdexcept>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "fake_loader/temp_tree.h"
#include "host/platform/platform.h"

namespace {

using host::RuntimeVersion;
using test_support::TempTree;

// Names of the entries of a directory in the order the file system reports them, read directly.
std::vector<std::string> raw_directory_order(const std::string& directory) {
    std::vector<std::string> names;
    DIR* dir = opendir(directory.c_str());
    if (dir == nullptr) return names;
    while (dirent* e = readdir(dir)) {
        std::string name = e->d_name;
        if (name != "." && name != "..") names.push_back(name);
    }
    closedir(dir);
    return names;
}

// Sets or clears an environment variable for the life of a test.
class ScopedVariable {
public:
    ScopedVariable(std::string name, const char* value) : name_(std::move(name)) {
        if (value != nullptr)
            setenv(name_.c_str(), value, 1);
        else
            unsetenv(name_.c_str());
    }
    ~ScopedVariable() { unsetenv(name_.c_str()); }

private:
    std::string name_;
};

std::string runtime_variable(const std::string& vendor) { return "NETCORE_WRAPPER_NETCORE_DIR_" + vendor; }
std::string assembly_variable(const std::string& vendor) { return "NETCORE_WRAPPER_ASSEMBLY_DIR_" + vendor; }

// ---------------------------------------------------------------------------------------------------
// default_directory

TEST(DefaultDirectory, KeepsTheDirectoryWithItsTrailingSeparator) {
    EXPECT_EQ(host::default_directory("/usr/bin/python3"), "/usr/bin/");
    EXPECT_EQ(host::default_directory("/python3"), "/");
    EXPECT_EQ(host::default_directory("relative/dir/python3"), "relative/dir/");
    EXPECT_EQ(host::default_directory("/opt/dir/"), "/opt/dir/");
}

TEST(DefaultDirectory, PathWithoutDirectoryPartIsReturnedWhole) {
    EXPECT_EQ(host::default_directory("python3"), "python3");
    EXPECT_EQ(host::default_directory(""), "");
}

// ---------------------------------------------------------------------------------------------------
// join_paths

TEST(JoinPaths, EmptyBaseGivesThePartAsItStands) {
    EXPECT_EQ(host::join_paths("", "netcore3.1"), "netcore3.1");
    EXPECT_EQ(host::join_paths("", ""), "");
    std::string long_part(400, 'p');
    EXPECT_EQ(host::join_paths("", long_part), long_part);
}

TEST(JoinPaths, AddsASeparatorOnlyWhereOneIsMissing) {
    EXPECT_EQ(host::join_paths("/opt/root", "netcore3.1"), "/opt/root/netcore3.1");
    EXPECT_EQ(host::join_paths("/opt/root/", "netcore3.1"), "/opt/root/netcore3.1");
    EXPECT_EQ(host::join_paths("/opt/root", "/netcore3.1"), "/opt/root/netcore3.1");
    EXPECT_EQ(host::join_paths("/opt/root", ""), "/opt/root");
    EXPECT_EQ(host::join_paths("/", "x"), "/x");
}

TEST(JoinPaths, ResultMayReachThePathLimitExactly) {
    const size_t limit = platform::kPathLimit;
    std::string base = "/" + std::string(limit - 3, 'b');  // limit - 2 characters
    std::string joined = host::join_paths(base, "x");      // base + "/" + "x" is exactly the limit
    EXPECT_EQ(joined.size(), limit);
    EXPECT_EQ(joined, base + "/x");
}

TEST(JoinPaths, ResultBeyondThePathLimitLeavesTheBase) {
    const size_t limit = platform::kPathLimit;
    std::string base = "/" + std::string(limit - 2, 'b');  // limit - 1 characters: no room for "/x"
    std::string joined = host::join_paths(base, "x");
    EXPECT_STREQ(joined.c_str(), base.c_str());
}

TEST(JoinPaths, BaseLongerThanTheLimitIsCutAndStaysCut) {
    const size_t limit = platform::kPathLimit;
    std::string base = "/" + std::string(limit + 40, 'c');
    std::string joined = host::join_paths(base, "tail");
    EXPECT_STREQ(joined.c_str(), base.substr(0, limit).c_str());
    EXPECT_EQ(joined.find("tail"), std::string::npos);
    // An empty part fits: the result is the base cut to the limit.
    EXPECT_STREQ(host::join_paths(base, "").c_str(), base.substr(0, limit).c_str());
}

// ---------------------------------------------------------------------------------------------------
// parse_runtime_directory_name

TEST(ParseRuntimeDirectoryName, QualifyingNamesGiveTheirVersion) {
    struct Case {
        const char* name;
        int major;
        int minor;
    };
    for (const Case& c : {Case{"netcore3.1", 3, 1}, Case{"netcore10.0", 10, 0}, Case{"netcore03.01", 3, 1},
                          Case{"netcore0.0", 0, 0}, Case{"netcore2147483647.2147483647", 2147483647, 2147483647}}) {
        RuntimeVersion version{-1, -1};
        ASSERT_TRUE(host::parse_runtime_directory_name(c.name, version)) << c.name;
        EXPECT_EQ(version.major, c.major) << c.name;
        EXPECT_EQ(version.minor, c.minor) << c.name;
    }
}

TEST(ParseRuntimeDirectoryName, OtherNamesAreRefused) {
    for (const char* name : {"netcore3", "netcore3.1.0", "netcore-3.1", "NetCore3.1", "mynetcore3.1", "netcore3.1-rc",
                             "netcore", "netcore.", "netcore3.", "netcore.1", "netcor", "", "netcore 3.1",
                             "netcore3.1 ", "netcore+3.1", "netcore3.+1", "NETCORE3.1", "netcore3,1"}) {
        RuntimeVersion version{-1, -1};
        EXPECT_FALSE(host::parse_runtime_directory_name(name, version)) << '"' << name << '"';
    }
}

TEST(ParseRuntimeDirectoryName, NumberBeyond32BitsThrowsOutOfRange) {
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

TEST(ParseRuntimeDirectoryName, RefusalOfTheShapeComesBeforeTheNumberCheck) {
    // An over-long number in a name that is refused anyway does not throw.
    RuntimeVersion version{};
    EXPECT_FALSE(host::parse_runtime_directory_name("netcore99999999999.0.1", version));
    EXPECT_FALSE(host::parse_runtime_directory_name("netcore99999999999", version));
    EXPECT_FALSE(host::parse_runtime_directory_name("NetCore99999999999.0", version));
}

// ---------------------------------------------------------------------------------------------------
// find_runtime_directory

constexpr char kLibrary[] = "orvane.embed.coreclrwrap.so";

TEST(FindRuntimeDirectory, HighestVersionHoldingTheLibraryWins) {
    TempTree tree;
    tree.dir("netcore3.0");
    tree.dir("netcore3.1");
    tree.dir("netcore5.0");
    tree.file("netcore3.0/" + std::string(kLibrary));
    tree.file("netcore3.1/" + std::string(kLibrary));
    std::string found;
    ASSERT_TRUE(host::find_runtime_directory(tree.root(), kLibrary, found));
    EXPECT_EQ(found, tree.root() + "/netcore3.1");
}

TEST(FindRuntimeDirectory, MinorVersionComparesAsANumber) {
    TempTree tree;
    tree.dir("netcore3.9");
    tree.dir("netcore3.10");
    tree.dir("netcore2.99");
    tree.file("netcore3.9/" + std::string(kLibrary));
    tree.file("netcore3.10/" + std::string(kLibrary));
    tree.file("netcore2.99/" + std::string(kLibrary));
    std::string found;
    ASSERT_TRUE(host::find_runtime_directory(tree.root(), kLibrary, found));
    EXPECT_EQ(found, tree.root() + "/netcore3.10");
}

TEST(FindRuntimeDirectory, MajorVersionComparesAsANumber) {
    TempTree tree;
    tree.dir("netcore9.9");
    tree.dir("netcore10.0");
    tree.file("netcore9.9/" + std::string(kLibrary));
    tree.file("netcore10.0/" + std::string(kLibrary));
    std::string found;
    ASSERT_TRUE(host::find_runtime_directory(tree.root(), kLibrary, found));
    EXPECT_EQ(found, tree.root() + "/netcore10.0");
}

TEST(FindRuntimeDirectory, FilesNamedLikeVersionsAreNotCandidates) {
    TempTree tree;
    tree.dir("netcore1.0");
    tree.file("netcore1.0/" + std::string(kLibrary));
    tree.file("netcore9.9", "not a directory");
    std::string found;
    ASSERT_TRUE(host::find_runtime_directory(tree.root(), kLibrary, found));
    EXPECT_EQ(found, tree.root() + "/netcore1.0");
}

TEST(FindRuntimeDirectory, NonVersionedDirectoriesAreNotCandidates) {
    TempTree tree;
    tree.dir("netcore9");
    tree.dir("NetCore9.9");
    tree.dir("netcore9.9-rc");
    for (const char* d : {"netcore9", "NetCore9.9", "netcore9.9-rc"}) tree.file(std::string(d) + "/" + kLibrary);
    tree.file(kLibrary);  // directly in the root: not a versioned directory
    std::string found = "untouched";
    EXPECT_FALSE(host::find_runtime_directory(tree.root(), kLibrary, found));
    EXPECT_EQ(found, "untouched");
}

TEST(FindRuntimeDirectory, NoCandidateOrNoLibraryOrNoRootGivesFalse) {
    TempTree tree;
    std::string found;
    EXPECT_FALSE(host::find_runtime_directory(tree.root(), kLibrary, found)) << "empty root";

    tree.dir("netcore3.1");
    tree.file("netcore3.1/other.so");
    EXPECT_FALSE(host::find_runtime_directory(tree.root(), kLibrary, found)) << "library absent";

    EXPECT_FALSE(host::find_runtime_directory(tree.path("missing"), kLibrary, found)) << "root absent";
}

TEST(FindRuntimeDirectory, AmongEqualVersionsTheOneEnumeratedLastWins) {
    TempTree tree;
    tree.dir("netcore3.1");
    tree.dir("netcore03.01");
    tree.dir("netcore3.01");
    for (const char* d : {"netcore3.1", "netcore03.01", "netcore3.01"}) tree.file(std::string(d) + "/" + kLibrary);
    std::vector<std::string> order = raw_directory_order(tree.root());
    ASSERT_EQ(order.size(), 3u);
    std::string found;
    ASSERT_TRUE(host::find_runtime_directory(tree.root(), kLibrary, found));
    EXPECT_EQ(found, tree.root() + "/" + order.back());
}

TEST(FindRuntimeDirectory, OverLongVersionNumberThrows) {
    TempTree tree;
    tree.dir("netcore99999999999.0");
    std::string found;
    EXPECT_THROW(host::find_runtime_directory(tree.root(), kLibrary, found), std::out_of_range);
}

// ---------------------------------------------------------------------------------------------------
// collect_assembly_directories

TEST(CollectAssemblyDirectories, TakesEverySubDirectoryAndNoFile) {
    TempTree tree;
    tree.dir("a");
    tree.dir("b");
    tree.file("c.txt");
    std::vector<std::string> list;
    host::collect_assembly_directories(tree.root(), false, list);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(std::set<std::string>(list.begin(), list.end()),
              (std::set<std::string>{tree.root() + "/a", tree.root() + "/b"}));
}

TEST(CollectAssemblyDirectories, KeepsTheFileSystemOrderAndOnlyOneLevel) {
    TempTree tree;
    for (const char* d : {"zeta", "alpha", "mid", "beta"}) tree.dir(d);
    tree.dir("alpha/nested");
    std::vector<std::string> expected;
    for (const std::string& name : raw_directory_order(tree.root())) expected.push_back(tree.root() + "/" + name);
    std::vector<std::string> list;
    host::collect_assembly_directories(tree.root(), false, list);
    EXPECT_EQ(list, expected);
}

TEST(CollectAssemblyDirectories, AppendsBehindEntriesAlreadyInTheList) {
    TempTree tree;
    tree.dir("a");
    std::vector<std::string> list{"/existing"};
    host::collect_assembly_directories(tree.root(), false, list);
    EXPECT_EQ(list, (std::vector<std::string>{"/existing", tree.root() + "/a"}));
}

TEST(CollectAssemblyDirectories, DebugModeTakesOnlyDebugSubDirectories) {
    TempTree tree;
    tree.dir("a/debug");
    tree.dir("b");
    tree.dir("c");
    tree.file("c/debug", "a file, not a directory");
    tree.dir("d/debug");
    std::vector<std::string> list;
    host::collect_assembly_directories(tree.root(), true, list);
    ASSERT_EQ(list.size(), 2u);
    EXPECT_EQ(std::set<std::string>(list.begin(), list.end()),
              (std::set<std::string>{tree.root() + "/a/debug", tree.root() + "/d/debug"}));
}

TEST(CollectAssemblyDirectories, EmptyOrMissingRootAddsNothing) {
    TempTree tree;
    std::vector<std::string> list;
    host::collect_assembly_directories(tree.root(), false, list);
    host::collect_assembly_directories(tree.root(), true, list);
    host::collect_assembly_directories(tree.path("missing"), false, list);
    EXPECT_TRUE(list.empty());
}

// ---------------------------------------------------------------------------------------------------
// read_environment

TEST(ReadEnvironment, UnsetAndEmptyCountAsAbsentAndClearTheOutput) {
    const std::string name = "GTEST_ORVANE_READ_ENV_1";
    std::string out = "stale";
    {
        ScopedVariable unset(name, nullptr);
        EXPECT_FALSE(host::read_environment(name, out));
        EXPECT_EQ(out, "");
    }
    out = "stale";
    {
        ScopedVariable empty(name, "");
        EXPECT_FALSE(host::read_environment(name, out));
        EXPECT_EQ(out, "");
    }
    {
        ScopedVariable set(name, "/some/where");
        EXPECT_TRUE(host::read_environment(name, out));
        EXPECT_EQ(out, "/some/where");
    }
}

// ---------------------------------------------------------------------------------------------------
// resolve_runtime_directory / resolve_assembly_directories

TEST(ResolveDirectories, NeitherVariableSetGivesTheDefaultDirectoryAlone) {
    const std::string vendor = "gtestvendor1";
    ScopedVariable r(runtime_variable(vendor), nullptr);
    ScopedVariable a(assembly_variable(vendor), nullptr);
    const std::string default_dir = "/opt/python/bin/";
    std::string runtime_dir = host::resolve_runtime_directory(vendor, default_dir);
    EXPECT_EQ(runtime_dir, default_dir);
    std::vector<std::string> list = host::resolve_assembly_directories(vendor, false, default_dir, runtime_dir);
    EXPECT_EQ(list, std::vector<std::string>{default_dir});
    EXPECT_EQ(host::join_list(list, platform::kListSeparator).find(platform::kListSeparator), std::string::npos);
}

TEST(ResolveDirectories, EmptyVariablesCountAsUnset) {
    const std::string vendor = "gtestvendor2";
    ScopedVariable r(runtime_variable(vendor), "");
    ScopedVariable a(assembly_variable(vendor), "");
    const std::string default_dir = "/opt/python/bin/";
    EXPECT_EQ(host::resolve_runtime_directory(vendor, default_dir), default_dir);
    EXPECT_EQ(host::resolve_assembly_directories(vendor, false, default_dir, default_dir),
              std::vector<std::string>{default_dir});
}

TEST(ResolveDirectories, RuntimeVariableRootWithAVersionedDirectoryIsUsed) {
    const std::string vendor = "gtestvendor3";
    TempTree tree;
    tree.dir("netcore1.0");
    tree.file("netcore1.0/" + std::string(kLibrary));
    ScopedVariable r(runtime_variable(vendor), tree.root().c_str());
    ScopedVariable a(assembly_variable(vendor), nullptr);
    const std::string default_dir = "/opt/python/bin/";
    std::string runtime_dir = host::resolve_runtime_directory(vendor, default_dir);
    EXPECT_EQ(runtime_dir, tree.root() + "/netcore1.0");
    EXPECT_EQ(host::resolve_assembly_directories(vendor, false, default_dir, runtime_dir),
              (std::vector<std::string>{default_dir, runtime_dir}));
}

TEST(ResolveDirectories, RuntimeVariableIsReadForItsOwnVendorOnly) {
    TempTree tree;
    tree.dir("netcore1.0");
    tree.file("netcore1.0/" + std::string(kLibrary));
    ScopedVariable r(runtime_variable("gtestvendor4a"), tree.root().c_str());
    ScopedVariable other(runtime_variable("gtestvendor4b"), nullptr);
    EXPECT_EQ(host::resolve_runtime_directory("gtestvendor4b", "/default/"), "/default/");
    EXPECT_EQ(host::resolve_runtime_directory("gtestvendor4a", "/default/"), tree.root() + "/netcore1.0");
}

TEST(ResolveDirectories, RootHoldingTheLibraryDirectlyIsIgnored) {
    const std::string vendor = "gtestvendor5";
    TempTree tree;
    tree.file(kLibrary);
    ScopedVariable r(runtime_variable(vendor), tree.root().c_str());
    EXPECT_EQ(host::resolve_runtime_directory(vendor, "/default/"), "/default/");
}

TEST(ResolveDirectories, VersionedDirectoryWithoutTheReleaseLibraryIsIgnored) {
    // The scan looks for the release library name, also for a debug start.
    const std::string vendor = "gtestvendor6";
    TempTree tree;
    tree.dir("netcore1.0");
    tree.file("netcore1.0/" + std::string(host::kLoaderLibraryDebugName));
    ScopedVariable r(runtime_variable(vendor), tree.root().c_str());
    EXPECT_EQ(host::resolve_runtime_directory(vendor, "/default/"), "/default/");
}

TEST(ResolveDirectories, RuntimeRootWithAnOverLongVersionThrows) {
    const std::string vendor = "gtestvendor7";
    TempTree tree;
    tree.dir("netcore99999999999.0");
    ScopedVariable r(runtime_variable(vendor), tree.root().c_str());
    try {
        host::resolve_runtime_directory(vendor, "/default/");
        ADD_FAILURE() << "no exception";
    } catch (const std::out_of_range& e) {
        EXPECT_STREQ(e.what(), "stoi argument out of range");
    }
}

TEST(ResolveDirectories, AssemblyRootSubDirectoriesComeFirstThenTheRuntimeDirectory) {
    const std::string vendor = "gtestvendor8";
    TempTree tree;
    tree.dir("a");
    tree.dir("b");
    tree.file("c.txt");
    ScopedVariable a(assembly_variable(vendor), tree.root().c_str());
    const std::string runtime_dir = "/elsewhere/netcore3.1";
    std::vector<std::string> list = host::resolve_assembly_directories(vendor, false, "/default/", runtime_dir);
    ASSERT_EQ(list.size(), 3u);
    EXPECT_EQ(std::set<std::string>(list.begin(), list.begin() + 2),
              (std::set<std::string>{tree.root() + "/a", tree.root() + "/b"}));
    EXPECT_EQ(list.back(), runtime_dir);
    EXPECT_EQ(std::count(list.begin(), list.end(), "/default/"), 0) << "the default directory is not added";
}

TEST(ResolveDirectories, DebugModeLeavesOutSubDirectoriesWithoutDebug) {
    const std::string vendor = "gtestvendor9";
    TempTree tree;
    tree.dir("a/debug");
    tree.dir("b");
    ScopedVariable a(assembly_variable(vendor), tree.root().c_str());
    std::vector<std::string> list = host::resolve_assembly_directories(vendor, true, "/default/", "/rt");
    EXPECT_EQ(list, (std::vector<std::string>{tree.root() + "/a/debug", "/rt"}));
}

TEST(ResolveDirectories, EmptyAssemblyRootGivesTheRuntimeDirectoryAlone) {
    const std::string vendor = "gtestvendor10";
    TempTree tree;
    ScopedVariable a(assembly_variable(vendor), tree.root().c_str());
    EXPECT_EQ(host::resolve_assembly_directories(vendor, false, "/default/", "/rt/netcore3.1"),
              std::vector<std::string>{"/rt/netcore3.1"});
}

TEST(ResolveDirectories, RuntimeDirectoryAlreadyListedIsNotAppendedTwice) {
    const std::string vendor = "gtestvendor11";
    TempTree tree;
    std::string sub = tree.dir("x");
    ScopedVariable a(assembly_variable(vendor), tree.root().c_str());
    EXPECT_EQ(host::resolve_assembly_directories(vendor, false, "/default/", sub), std::vector<std::string>{sub});
}

TEST(ResolveDirectories, RuntimeDirectoryMatchesOnlyExactly) {
    const std::string vendor = "gtestvendor12";
    TempTree tree;
    std::string sub = tree.dir("x");
    ScopedVariable a(assembly_variable(vendor), tree.root().c_str());
    EXPECT_EQ(host::resolve_assembly_directories(vendor, false, "/default/", sub + "/"),
              (std::vector<std::string>{sub, sub + "/"}));
    std::string upper = tree.root() + "/X";
    EXPECT_EQ(host::resolve_assembly_directories(vendor, false, "/default/", upper),
              (std::vector<std::string>{sub, upper}));
}

TEST(ResolveDirectories, DefaultDirectoryEqualToTheRuntimeDirectoryIsNotRepeated) {
    const std::string vendor = "gtestvendor13";
    ScopedVariable a(assembly_variable(vendor), nullptr);
    EXPECT_EQ(host::resolve_assembly_directories(vendor, false, "/same/", "/same/"),
              std::vector<std::string>{"/same/"});
    EXPECT_EQ(host::resolve_assembly_directories(vendor, false, "/default/", "/rt"),
              (std::vector<std::string>{"/default/", "/rt"}));
}

// ---------------------------------------------------------------------------------------------------
// join_list

TEST(JoinList, SeparatesEntriesWithoutATrailingSeparator) {
    EXPECT_EQ(host::join_list({}, ':'), "");
    EXPECT_EQ(host::join_list({"/a"}, ':'), "/a");
    EXPECT_EQ(host::join_list({"/a", "/b/", "/c"}, ':'), "/a:/b/:/c");
    EXPECT_EQ(host::join_list({"/a", "/b"}, ';'), "/a;/b");
}

TEST(JoinList, KeepsDuplicatesAndEmptyEntries) {
    EXPECT_EQ(host::join_list({"/a", "/a"}, ':'), "/a:/a");
    EXPECT_EQ(host::join_list({"", "/a", ""}, ':'), ":/a:");
}

}  // namespace
