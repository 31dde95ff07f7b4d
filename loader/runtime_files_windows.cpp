// Windows side of the loader library's system calls: LoadLibraryExW of coreclr.dll, GetFullPathNameW,
// FindFirstFileExW. Paths arrive as UTF-8 and go to the system as UTF-16.
#include "runtime_files.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <windows.h>

#include <cwchar>

namespace loader {

const char kListSeparator = ';';

namespace {

std::wstring widen(const std::string& text) {
    int length = MultiByteToWideChar(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), nullptr, 0);
    std::wstring wide(static_cast<size_t>(length), L'\0');
    if (length > 0) MultiByteToWideChar(CP_UTF8, 0, text.c_str(), static_cast<int>(text.size()), &wide[0], length);
    return wide;
}

std::string narrow(const wchar_t* text) {
    int length = static_cast<int>(wcslen(text));
    int size = WideCharToMultiByte(CP_UTF8, 0, text, length, nullptr, 0, nullptr, nullptr);
    std::string out(static_cast<size_t>(size), '\0');
    if (size > 0) WideCharToMultiByte(CP_UTF8, 0, text, length, &out[0], size, nullptr, nullptr);
    return out;
}

std::string full_path(const std::string& path) {
    std::wstring wide = widen(path);
    DWORD size = GetFullPathNameW(wide.c_str(), 0, nullptr, nullptr);
    if (size == 0) return path;
    std::wstring full(size, L'\0');
    DWORD written = GetFullPathNameW(wide.c_str(), size, &full[0], nullptr);
    if (written == 0 || written >= size) return path;
    full.resize(written);
    return narrow(full.c_str());
}

bool has_dll_suffix(const std::string& name) {
    return name.size() > 4 && _stricmp(name.c_str() + name.size() - 4, ".dll") == 0;
}

}  // namespace

void* open_runtime_library(const std::string& path, std::string& resolved) {
    resolved = full_path(path);
    // The runtime's own directory first for its dependencies (clrjit.dll and the native parts).
    HMODULE module = LoadLibraryExW(widen(resolved).c_str(), nullptr,
                                    LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    return reinterpret_cast<void*>(module);
}

void* runtime_symbol(void* library, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(library), name));
}

void close_runtime_library(void* library) { FreeLibrary(reinterpret_cast<HMODULE>(library)); }

std::string real_directory_of(const std::string& path) {
    std::string full = full_path(path);
    size_t separator = full.find_last_of("\\/");
    return separator == std::string::npos ? std::string(".") : full.substr(0, separator);
}

std::vector<std::string> assembly_files(const std::string& directory) {
    std::vector<std::string> files;
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileExW(widen(join_file(directory, "*.dll")).c_str(), FindExInfoBasic, &found,
                                     FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE) return files;
    do {
        std::string name = narrow(found.cFileName);
        if (!(found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) && has_dll_suffix(name)) files.push_back(name);
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return files;
}

std::string join_file(const std::string& directory, const std::string& name) {
    if (directory.empty() || directory.back() == '\\' || directory.back() == '/') return directory + name;
    return directory + '\\' + name;
}

}  // namespace loader
