// POSIX implementation of the host's platform layer: dlopen, dirent, stat, /proc/self/exe, strerror.
#include "host/platform/platform.h"

#include <dirent.h>
#include <dlfcn.h>
#include <limits.h>
#include <pthread.h>
#include <signal.h>
#include <string.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace platform {

const char* const kLibrarySuffix = ".so";

std::string executable_path() {
    char buffer[PATH_MAX + 1];
    ssize_t n = readlink("/proc/self/exe", buffer, PATH_MAX);
    if (n <= 0) return std::string();
    return std::string(buffer, static_cast<size_t>(n));
}

bool get_environment(const char* name, std::string& value) {
    const char* text = std::getenv(name);
    if (text == nullptr) return false;
    value = text;
    return true;
}

size_t file_name_start(const std::string& path) {
    size_t slash = path.rfind(kPathSeparator);
    return slash == std::string::npos ? 0 : slash + 1;
}

bool path_append(char* buffer, const char* part) {
    size_t base = strlen(buffer);
    size_t extra = strlen(part);
    bool needs_separator = base > 0 && buffer[base - 1] != kPathSeparator && extra > 0 && part[0] != kPathSeparator;
    size_t total = base + (needs_separator ? 1 : 0) + extra;
    if (total > kPathLimit) return false;
    if (needs_separator) buffer[base++] = kPathSeparator;
    memcpy(buffer + base, part, extra + 1);
    return true;
}

bool list_directory(const std::string& directory, std::vector<DirectoryEntry>& entries) {
    DIR* dir = opendir(directory.c_str());
    if (dir == nullptr) return false;
    while (dirent* e = readdir(dir)) {
        bool is_dir;
        if (e->d_type == DT_DIR) {
            is_dir = true;
        } else if (e->d_type == DT_UNKNOWN || e->d_type == DT_LNK) {
            is_dir = is_directory(directory + kPathSeparator + e->d_name);
        } else {
            is_dir = false;
        }
        entries.push_back({e->d_name, is_dir});
    }
    closedir(dir);
    return true;
}

bool file_exists(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0;
}

bool is_directory(const std::string& path) {
    struct stat st;
    return stat(path.c_str(), &st) == 0 && S_ISDIR(st.st_mode);
}

void* find_loaded_library(const char* name) { return dlopen(name, RTLD_NOW | RTLD_NOLOAD | RTLD_GLOBAL); }

void* load_library(const char* path) { return dlopen(path, RTLD_NOW | RTLD_GLOBAL); }

void free_library(void* handle) { dlclose(handle); }

void* library_symbol(void* handle, const char* name) { return dlsym(handle, name); }

bool error_text(uint32_t code, std::string& text) {
    // errno values are small positive numbers; runtime status codes (HRESULTs) have no system text here.
    if (code == 0) {
        text = "Success";
        return true;
    }
    if (code > 4095) return false;
    char buffer[256];
    const char* message = strerror_r(static_cast<int>(code), buffer, sizeof buffer);
    if (message == nullptr || strncmp(message, "Unknown error", 13) == 0) return false;
    text = message;
    return true;
}

void on_fork_child(void (*handler)()) { pthread_atfork(nullptr, nullptr, handler); }

namespace {

struct SignalSnapshot {
    struct sigaction saved[NSIG];
    bool taken_over[NSIG];
    const char* const* owners;
    size_t owner_count;
};
SignalSnapshot g_signals;

bool handler_in_owner(const struct sigaction& action) {
    void* handler = (action.sa_flags & SA_SIGINFO) ? reinterpret_cast<void*>(action.sa_sigaction)
                                                   : reinterpret_cast<void*>(action.sa_handler);
    if (handler == reinterpret_cast<void*>(SIG_DFL) || handler == reinterpret_cast<void*>(SIG_IGN)) return false;
    Dl_info info{};
    if (dladdr(handler, &info) == 0 || info.dli_fname == nullptr) return false;
    for (size_t i = 0; i < g_signals.owner_count; ++i) {
        if (strstr(info.dli_fname, g_signals.owners[i]) != nullptr) return true;
    }
    return false;
}

// In the parent, just before fork: which handlers belong to the owners (dladdr is not safe in the child).
void mark_taken_over_signals() {
    for (int sig = 1; sig < NSIG; ++sig) {
        struct sigaction current {};
        g_signals.taken_over[sig] = sigaction(sig, nullptr, &current) == 0 && handler_in_owner(current);
    }
}

// In the child: only sigaction, which is async-signal-safe.
void put_back_taken_over_signals() {
    for (int sig = 1; sig < NSIG; ++sig) {
        if (g_signals.taken_over[sig]) sigaction(sig, &g_signals.saved[sig], nullptr);
    }
}

}  // namespace

void restore_signals_in_fork_child(const char* const* owners, size_t count) {
    for (int sig = 1; sig < NSIG; ++sig) sigaction(sig, nullptr, &g_signals.saved[sig]);
    g_signals.owners = owners;
    g_signals.owner_count = count;
    pthread_atfork(mark_taken_over_signals, nullptr, put_back_taken_over_signals);
}

}  // namespace platform
