// Windows implementation of the host's platform layer: LoadLibraryExW, FindFirstFileExW, FormatMessageW.
// The POSIX build compiles every file of this directory, so the whole file stands under _WIN32.
#ifdef _WIN32
#include "host/platform/platform.h"

#ifndef WIN32_LEAN_AND_MEAN
#define WIN32_LEAN_AND_MEAN
#endif
#include <fcntl.h>
#include <io.h>
#include <windows.h>

#include <cstdio>
#include <cstring>

namespace platform {

const char* const kLibrarySuffix = ".dll";

namespace {

// Windows takes and gives UTF-16; the layers above hold UTF-8. Invalid text converts to empty.
std::wstring widen(const char* text) {
    int length = MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, nullptr, 0);
    if (length <= 0) return std::wstring();
    std::wstring wide(static_cast<size_t>(length), L'\0');
    MultiByteToWideChar(CP_UTF8, MB_ERR_INVALID_CHARS, text, -1, &wide[0], length);
    wide.resize(static_cast<size_t>(length - 1));
    return wide;
}

std::string narrow(const wchar_t* text, int length) {
    int size = WideCharToMultiByte(CP_UTF8, 0, text, length, nullptr, 0, nullptr, nullptr);
    if (size <= 0) return std::string();
    std::string out(static_cast<size_t>(size), '\0');
    WideCharToMultiByte(CP_UTF8, 0, text, length, &out[0], size, nullptr, nullptr);
    return out;
}

bool is_separator(char c) { return c == '\\' || c == '/'; }

DWORD attributes(const std::string& path) { return GetFileAttributesW(widen(path.c_str()).c_str()); }

}  // namespace

std::string executable_path() {
    // The module-path query with no module names the process's executable, not this module.
    wchar_t buffer[kPathLimit + 1] = {};
    DWORD n = GetModuleFileNameW(nullptr, buffer, static_cast<DWORD>(kPathLimit));
    if (n == 0 || n >= kPathLimit) return std::string();
    return narrow(buffer, static_cast<int>(n));
}

bool get_environment(const char* name, std::string& value) {
    std::wstring wide_name = widen(name);
    DWORD size = GetEnvironmentVariableW(wide_name.c_str(), nullptr, 0);
    if (size == 0) {
        // Zero is both "unset" and the size of nothing; the last error tells them apart.
        if (GetLastError() == ERROR_ENVVAR_NOT_FOUND) return false;
        value.clear();
        return true;
    }
    std::wstring wide(size, L'\0');
    DWORD written = GetEnvironmentVariableW(wide_name.c_str(), &wide[0], size);
    if (written >= size) return false;  // changed between the two calls
    value = narrow(wide.c_str(), static_cast<int>(written));
    return true;
}

size_t file_name_start(const std::string& path) {
    size_t separator = path.find_last_of("\\/");
    return separator == std::string::npos ? 0 : separator + 1;
}

bool path_append(char* buffer, const char* part) {
    // Either separator counts as one, as it does for the file system; the one added is a backslash.
    size_t base = strlen(buffer);
    size_t extra = strlen(part);
    bool needs_separator = base > 0 && !is_separator(buffer[base - 1]) && extra > 0 && !is_separator(part[0]);
    size_t total = base + (needs_separator ? 1 : 0) + extra;
    if (total > kPathLimit) return false;
    if (needs_separator) buffer[base++] = kPathSeparator;
    memcpy(buffer + base, part, extra + 1);
    return true;
}

bool list_directory(const std::string& directory, std::vector<DirectoryEntry>& entries) {
    std::string pattern = directory;
    if (!pattern.empty() && !is_separator(pattern.back())) pattern += kPathSeparator;
    pattern += '*';
    WIN32_FIND_DATAW found;
    HANDLE search = FindFirstFileExW(widen(pattern.c_str()).c_str(), FindExInfoBasic, &found, FindExSearchNameMatch,
                                     nullptr, 0);
    if (search == INVALID_HANDLE_VALUE) return false;
    do {
        std::string name = narrow(found.cFileName, static_cast<int>(wcslen(found.cFileName)));
        entries.push_back({name, (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0});
    } while (FindNextFileW(search, &found));
    FindClose(search);
    return true;
}

bool file_exists(const std::string& path) { return attributes(path) != INVALID_FILE_ATTRIBUTES; }

bool is_directory(const std::string& path) {
    DWORD a = attributes(path);
    return a != INVALID_FILE_ATTRIBUTES && (a & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

void* find_loaded_library(const char* name) {
    HMODULE module = nullptr;
    // Without GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT the call takes a reference, as dlopen does.
    if (!GetModuleHandleExW(0, widen(name).c_str(), &module)) return nullptr;
    return reinterpret_cast<void*>(module);
}

void* load_library(const char* path) {
    // The library's own directory first (the loader library finds coreclr.dll's neighbours there), then
    // the application directory, System32 and AddDllDirectory entries; not the current directory or PATH.
    std::wstring wide = widen(path);
    if (wide.empty()) return nullptr;
    HMODULE module =
        LoadLibraryExW(wide.c_str(), nullptr, LOAD_LIBRARY_SEARCH_DLL_LOAD_DIR | LOAD_LIBRARY_SEARCH_DEFAULT_DIRS);
    return reinterpret_cast<void*>(module);
}

void free_library(void* handle) { FreeLibrary(reinterpret_cast<HMODULE>(handle)); }

void* library_symbol(void* handle, const char* name) {
    return reinterpret_cast<void*>(GetProcAddress(reinterpret_cast<HMODULE>(handle), name));
}

bool error_text(uint32_t code, std::string& text) {
    wchar_t* message = nullptr;
    DWORD length = FormatMessageW(
        FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, code,
        MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT), reinterpret_cast<wchar_t*>(&message), 0, nullptr);
    if (length == 0 || message == nullptr) return false;
    text = narrow(message, static_cast<int>(length));
    LocalFree(message);
    return true;
}

void use_untranslated_standard_output() {
    std::fflush(stdout);
    _setmode(_fileno(stdout), _O_BINARY);
}

// There is no fork on Windows, and the runtime catches managed faults with vectored exception
// handlers, which sit before any handler Python installs: nothing to arrange here.
void on_fork_child(void (*)()) {}
void restore_signals_in_fork_child(const char* const*, size_t) {}
void install_fault_forwarder(const char* const*, size_t) {}
void record_runtime_fault_handlers() {}
void yield_runtime_fault_handlers() {}
void reassert_runtime_fault_handlers() {}

}  // namespace platform
#endif  // _WIN32
