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

void use_untranslated_standard_output() {}  // POSIX streams never translate

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

namespace {

constexpr int kFaultSignals[] = {SIGSEGV, SIGBUS, SIGFPE, SIGILL};

struct FaultState {
    struct sigaction target[NSIG];    // where the forwarder sends a native fault
    struct sigaction previous[NSIG];  // the target before the last handler put on top
    struct sigaction runtime[NSIG];   // the runtime's own handlers
    volatile sig_atomic_t forwarding[NSIG];
    bool installed;
    bool recorded;
};
FaultState g_faults;

void* handler_address(const struct sigaction& action) {
    return (action.sa_flags & SA_SIGINFO) ? reinterpret_cast<void*>(action.sa_sigaction)
                                          : reinterpret_cast<void*>(action.sa_handler);
}

bool same_handler(const struct sigaction& a, const struct sigaction& b) {
    return handler_address(a) == handler_address(b);
}

// The handler that called us may run with the signal blocked: unblock it, or raise would only queue it.
void die_by_signal(int sig) {
    signal(sig, SIG_DFL);
    sigset_t only;
    sigemptyset(&only);
    sigaddset(&only, sig);
    pthread_sigmask(SIG_UNBLOCK, &only, nullptr);
    raise(sig);
}

// Reached only for faults the runtime did not claim. The target becomes the real handler and the fault
// repeats when this returns, so it runs as the kernel would run it (on its own signal stack, with
// the fault's own context); calling it from inside the runtime's handler smashes that handler's stack.
// A second fault while one is forwarded (the target re-raised it, as faulthandler does) ends the
// process by the signal.
void forward_fault(int sig, siginfo_t*, void*) {
    if (g_faults.forwarding[sig]) die_by_signal(sig);
    g_faults.forwarding[sig] = 1;
    if (handler_address(g_faults.target[sig]) == reinterpret_cast<void*>(SIG_IGN)) die_by_signal(sig);
    sigaction(sig, &g_faults.target[sig], nullptr);
}

}  // namespace

struct sigaction forwarder_action() {
    struct sigaction forwarder {};
    forwarder.sa_sigaction = forward_fault;
    forwarder.sa_flags = SA_SIGINFO | SA_ONSTACK | SA_NODEFER;
    sigemptyset(&forwarder.sa_mask);
    return forwarder;
}

void install_fault_forwarder(const char* const* owners, size_t count) {
    if (g_faults.installed) return;
    g_faults.installed = true;
    struct sigaction current {};
    g_signals.owners = owners;
    g_signals.owner_count = count;
    // A runtime that already stands (started by a sister module) keeps its handlers as they are.
    if (sigaction(SIGSEGV, nullptr, &current) == 0 && handler_in_owner(current)) return;
    const struct sigaction forwarder = forwarder_action();
    for (int sig : kFaultSignals) {
        sigaction(sig, &forwarder, &g_faults.target[sig]);
        g_faults.previous[sig] = g_faults.target[sig];
    }
}

void record_runtime_fault_handlers() {
    for (int sig : kFaultSignals) sigaction(sig, nullptr, &g_faults.runtime[sig]);
    g_faults.recorded = true;
}

void yield_runtime_fault_handlers() {
    if (!g_faults.recorded || !g_faults.installed) return;
    const struct sigaction forwarder = forwarder_action();
    for (int sig : kFaultSignals) sigaction(sig, &forwarder, nullptr);
}

void reassert_runtime_fault_handlers() {
    if (!g_faults.recorded) return;
    for (int sig : kFaultSignals) {
        struct sigaction current {};
        if (sigaction(sig, nullptr, &current) != 0) continue;
        if (same_handler(current, g_faults.runtime[sig]) ||
            handler_address(current) == reinterpret_cast<void*>(forward_fault)) {
            // Whoever sat on top went away and put back what it found: so goes its forwarding.
            g_faults.target[sig] = g_faults.previous[sig];
            sigaction(sig, &g_faults.runtime[sig], nullptr);
            continue;
        }
        g_faults.previous[sig] = g_faults.target[sig];
        g_faults.target[sig] = current;
        sigaction(sig, &g_faults.runtime[sig], nullptr);
    }
}

}  // namespace platform
