// POSIX side of the loader library's system calls: dlopen of libcoreclr.so, realpath, dirent.
#include "runtime_files.h"

#include <dirent.h>
#include <dlfcn.h>
#include <limits.h>
#include <stdlib.h>

namespace loader {

const char kListSeparator = ':';

namespace {

std::string directory_of(const std::string& path) {
    auto slash = path.rfind('/');
    return slash == std::string::npos ? std::string(".") : path.substr(0, slash);
}

bool has_dll_suffix(const std::string& name) {
    return name.size() > 4 && name.compare(name.size() - 4, 4, ".dll") == 0;
}

}  // namespace

void* open_runtime_library(const std::string& path, std::string& resolved) {
    resolved = path;
    if (char* real = realpath(path.c_str(), nullptr)) {
        resolved = real;
        free(real);
    }
    return dlopen(resolved.c_str(), RTLD_NOW | RTLD_LOCAL);
}

void* runtime_symbol(void* library, const char* name) { return dlsym(library, name); }

void close_runtime_library(void* library) { dlclose(library); }

std::string real_directory_of(const std::string& path) {
    char resolved[PATH_MAX];
    if (realpath(path.c_str(), resolved) != nullptr) return directory_of(resolved);
    return directory_of(path);
}

std::vector<std::string> assembly_files(const std::string& directory) {
    std::vector<std::string> files;
    DIR* d = opendir(directory.c_str());
    if (d == nullptr) return files;
    while (dirent* e = readdir(d)) {
        std::string name = e->d_name;
        if (has_dll_suffix(name)) files.push_back(name);
    }
    closedir(d);
    return files;
}

std::string join_file(const std::string& directory, const std::string& name) {
    if (directory.empty() || directory.back() == '/') return directory + name;
    return directory + '/' + name;
}

}  // namespace loader
