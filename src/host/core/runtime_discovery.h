// Finds the runtime directory (versioned "netcoreX.Y" sub-directories) and the assembly directories.
#pragma once
#include <string>
#include <vector>

namespace host {

struct RuntimeVersion {
    int major;
    int minor;
};

// Directory part of a path including the trailing separator; a path without one is returned whole.
std::string default_directory(const std::string& executable_path);

// True when the variable has a non-empty value, written to `out` (emptied first).
bool read_environment(const std::string& name, std::string& out);

// Appends `part` to `base` with a separator where needed, within the path limit.
std::string join_paths(const std::string& base, const std::string& part);

// True for names "netcore<digits>.<digits>"; throws std::out_of_range for numbers beyond 32 bits.
bool parse_runtime_directory_name(const std::string& name, RuntimeVersion& version);

// The highest versioned sub-directory of `root` that holds `file_name`.
bool find_runtime_directory(const std::string& root, const std::string& file_name, std::string& directory);

// Every sub-directory of `root` (its "debug" sub-directory in debug mode), in enumeration order.
void collect_assembly_directories(const std::string& root, bool debug, std::vector<std::string>& list);

// The runtime directory: a versioned directory under the runtime variable's root, else the default.
std::string resolve_runtime_directory(const std::string& vendor, const std::string& default_dir);

// The assembly directory list, with the runtime directory appended when it is not in it.
std::vector<std::string> resolve_assembly_directories(const std::string& vendor, bool debug,
                                                      const std::string& default_dir,
                                                      const std::string& runtime_dir);

std::string join_list(const std::vector<std::string>& entries, char separator);

// The platform's file names: "orvane.embed.coreclrwrap[.debug].so" and "libcoreclr.so" on POSIX,
// "orvane.embed.coreclrwrap[.debug].dll" and "coreclr.dll" on Windows.
extern const char* const kLoaderLibraryName;
extern const char* const kLoaderLibraryDebugName;
extern const char* const kRuntimeLibraryName;

}  // namespace host
