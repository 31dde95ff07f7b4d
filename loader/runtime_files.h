// What the loader library needs of the operating system: the runtime library and the framework's files.
#pragma once
#include <string>
#include <vector>

namespace loader {

extern const char kListSeparator;  // between the entries of a path list: ':' or ';'

// Loads the runtime library from `path` (UTF-8) through its real path, which `resolved` receives:
// the runtime finds its JIT and native parts beside its own file. Null on failure.
void* open_runtime_library(const std::string& path, std::string& resolved);
void* runtime_symbol(void* library, const char* name);
void close_runtime_library(void* library);

// Directory of the real file behind `path`, without a trailing separator.
std::string real_directory_of(const std::string& path);

// Names of the *.dll files of a directory, in the file system's order; none when it can't be read.
std::vector<std::string> assembly_files(const std::string& directory);

// `directory` and `name` joined with the platform's separator.
std::string join_file(const std::string& directory, const std::string& name);

}  // namespace loader
