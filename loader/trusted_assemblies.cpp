// Trusted-platform-assembly list: framework assemblies first, then application assemblies.
#include "trusted_assemblies.h"

#include <dirent.h>
#include <limits.h>
#include <stdlib.h>

#include <set>
#include <string>
#include <vector>

namespace loader {
namespace {

std::string directory_of(const std::string& path) {
    auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash);
}

std::string real_directory_of(const std::string& file) {
    char resolved[PATH_MAX];
    if (realpath(file.c_str(), resolved) != nullptr) return directory_of(resolved);
    return directory_of(file);
}

bool has_dll_suffix(const std::string& name) {
    return name.size() > 4 && name.compare(name.size() - 4, 4, ".dll") == 0;
}

// Appends the .dll files of one directory, skipping simple names already present.
void add_directory(const std::string& dir, std::set<std::string>& names, std::string& list) {
    DIR* d = opendir(dir.c_str());
    if (d == nullptr) return;
    std::vector<std::string> files;
    while (dirent* e = readdir(d)) {
        std::string name = e->d_name;
        if (has_dll_suffix(name)) files.push_back(name);
    }
    closedir(d);
    for (const auto& name : files) {
        std::string simple = name.substr(0, name.size() - 4);
        if (!names.insert(simple).second) continue;
        if (!list.empty()) list += ':';
        list += dir;
        if (dir.empty() || dir.back() != '/') list += '/';
        list += name;
    }
}

}  // namespace

std::string build_trusted_assemblies(const std::string& coreclr_path, const std::string& app_paths) {
    std::set<std::string> names;
    std::string list;
    add_directory(real_directory_of(coreclr_path), names, list);
    size_t start = 0;
    while (start <= app_paths.size()) {
        size_t end = app_paths.find(':', start);
        if (end == std::string::npos) end = app_paths.size();
        if (end > start) add_directory(app_paths.substr(start, end - start), names, list);
        start = end + 1;
    }
    return list;
}

}  // namespace loader
