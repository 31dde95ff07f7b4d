// Trusted-platform-assembly list: framework assemblies first, then application assemblies.
#include "trusted_assemblies.h"

#include <set>
#include <string>
#include <vector>

#include "runtime_files.h"

namespace loader {
namespace {

// Appends the .dll files of one directory, skipping simple names already present.
void add_directory(const std::string& dir, std::set<std::string>& names, std::string& list) {
    for (const auto& name : assembly_files(dir)) {
        std::string simple = name.substr(0, name.size() - 4);
        if (!names.insert(simple).second) continue;
        if (!list.empty()) list += kListSeparator;
        list += join_file(dir, name);
    }
}

}  // namespace

std::string build_trusted_assemblies(const std::string& coreclr_path, const std::string& app_paths) {
    std::set<std::string> names;
    std::string list;
    add_directory(real_directory_of(coreclr_path), names, list);
    size_t start = 0;
    while (start <= app_paths.size()) {
        size_t end = app_paths.find(kListSeparator, start);
        if (end == std::string::npos) end = app_paths.size();
        if (end > start) add_directory(app_paths.substr(start, end - start), names, list);
        start = end + 1;
    }
    return list;
}

}  // namespace loader
