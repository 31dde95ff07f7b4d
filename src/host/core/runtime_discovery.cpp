// Runtime and assembly discovery from NETCORE_WRAPPER_*_DIR_<vendor> and the executable's directory.
#include "host/core/runtime_discovery.h"

#include <algorithm>
#include <cstring>
#include <stdexcept>
#include <string>

#include "host/platform/platform.h"

namespace host {

const char* const kLoaderLibraryName = platform::kLoaderLibraryName;
const char* const kLoaderLibraryDebugName = platform::kLoaderLibraryDebugName;
const char* const kRuntimeLibraryName = platform::kRuntimeLibraryName;

namespace {

constexpr char kDirectoryPrefix[] = "netcore";
constexpr size_t kDirectoryPrefixLength = 7;

bool all_digits(const std::string& text) {
    if (text.empty()) return false;
    return std::all_of(text.begin(), text.end(), [](char c) { return c >= '0' && c <= '9'; });
}

// Decimal digits to a signed 32-bit number; beyond its range the start-up ends with out_of_range.
int parse_version_number(const std::string& digits) {
    long long value = 0;
    for (char c : digits) {
        value = value * 10 + (c - '0');
        if (value > 2147483647LL) throw std::out_of_range("stoi argument out of range");
    }
    return static_cast<int>(value);
}

struct Candidate {
    RuntimeVersion version;
    std::string name;
};

}  // namespace

std::string default_directory(const std::string& executable_path) {
    size_t start = platform::file_name_start(executable_path);
    if (start == 0) return executable_path;
    return executable_path.substr(0, start);
}

bool read_environment(const std::string& name, std::string& out) {
    out.clear();
    std::string value;
    if (!platform::get_environment(name.c_str(), value) || value.empty()) return false;
    out = value;
    return true;
}

std::string join_paths(const std::string& base, const std::string& part) {
    if (base.empty()) return part;
    char buffer[platform::kPathLimit + 1];
    size_t kept = std::min(base.size(), platform::kPathLimit);
    std::memcpy(buffer, base.data(), kept);
    std::memset(buffer + kept, 0, sizeof buffer - kept);
    if (!platform::path_append(buffer, part.c_str())) return std::string(buffer);
    return std::string(buffer);
}

bool parse_runtime_directory_name(const std::string& name, RuntimeVersion& version) {
    if (name.size() < kDirectoryPrefixLength) return false;
    if (name.compare(0, kDirectoryPrefixLength, kDirectoryPrefix) != 0) return false;
    std::string rest = name.substr(kDirectoryPrefixLength);
    size_t dot = rest.find('.');
    if (dot == std::string::npos) return false;
    std::string major = rest.substr(0, dot);
    std::string minor = rest.substr(dot + 1);
    if (minor.find('.') != std::string::npos) return false;
    if (!all_digits(major) || !all_digits(minor)) return false;
    version.major = parse_version_number(major);
    version.minor = parse_version_number(minor);
    return true;
}

bool find_runtime_directory(const std::string& root, const std::string& file_name, std::string& directory) {
    std::vector<platform::DirectoryEntry> entries;
    if (!platform::list_directory(root, entries)) return false;
    std::vector<Candidate> candidates;
    for (const auto& entry : entries) {
        if (entry.name == "." || entry.name == ".." || !entry.is_directory) continue;
        RuntimeVersion version;
        if (parse_runtime_directory_name(entry.name, version)) candidates.push_back({version, entry.name});
    }
    if (candidates.empty()) return false;
    // Stable, so that among equal versions the one enumerated last is tried first.
    std::stable_sort(candidates.begin(), candidates.end(), [](const Candidate& a, const Candidate& b) {
        return a.version.major != b.version.major ? a.version.major < b.version.major
                                                  : a.version.minor < b.version.minor;
    });
    for (auto it = candidates.rbegin(); it != candidates.rend(); ++it) {
        std::string candidate = join_paths(root, it->name);
        if (platform::file_exists(join_paths(candidate, file_name))) {
            directory = candidate;
            return true;
        }
    }
    return false;
}

void collect_assembly_directories(const std::string& root, bool debug, std::vector<std::string>& list) {
    std::vector<platform::DirectoryEntry> entries;
    if (!platform::list_directory(root, entries)) return;
    for (const auto& entry : entries) {
        if (entry.name == "." || entry.name == ".." || !entry.is_directory) continue;
        std::string sub = join_paths(root, entry.name);
        if (!debug) {
            list.push_back(sub);
            continue;
        }
        std::string candidate = join_paths(sub, "debug");
        if (platform::is_directory(candidate)) list.push_back(candidate);
    }
}

std::string resolve_runtime_directory(const std::string& vendor, const std::string& default_dir) {
    std::string root;
    std::string found;
    if (read_environment("NETCORE_WRAPPER_NETCORE_DIR_" + vendor, root) &&
        find_runtime_directory(root, kLoaderLibraryName, found))
        return found;
    return default_dir;
}

std::vector<std::string> resolve_assembly_directories(const std::string& vendor, bool debug,
                                                      const std::string& default_dir,
                                                      const std::string& runtime_dir) {
    std::vector<std::string> list;
    std::string root;
    if (read_environment("NETCORE_WRAPPER_ASSEMBLY_DIR_" + vendor, root))
        collect_assembly_directories(root, debug, list);
    else
        list.push_back(default_dir);
    if (std::find(list.begin(), list.end(), runtime_dir) == list.end()) list.push_back(runtime_dir);
    return list;
}

std::string join_list(const std::vector<std::string>& entries, char separator) {
    std::string joined;
    for (size_t i = 0; i < entries.size(); ++i) {
        if (i > 0) joined += separator;
        joined += entries[i];
    }
    return joined;
}

}  // namespace host
