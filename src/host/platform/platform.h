// The operating-system layer of the host: every platform call of the module goes through here.
#pragma once
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace platform {

// Paths and names are UTF-8 everywhere above this layer; the Windows side converts them to UTF-16.
#ifdef _WIN32
constexpr char kPathSeparator = '\\';
constexpr char kListSeparator = ';';
constexpr char kLoaderLibraryName[] = "orvane.embed.coreclrwrap.dll";
constexpr char kLoaderLibraryDebugName[] = "orvane.embed.coreclrwrap.debug.dll";
constexpr char kRuntimeLibraryName[] = "coreclr.dll";
#else
constexpr char kPathSeparator = '/';
constexpr char kListSeparator = ':';
constexpr char kLoaderLibraryName[] = "orvane.embed.coreclrwrap.so";
constexpr char kLoaderLibraryDebugName[] = "orvane.embed.coreclrwrap.debug.so";
constexpr char kRuntimeLibraryName[] = "libcoreclr.so";
#endif
constexpr size_t kPathLimit = 260;  // length of a path buffer
extern const char* const kLibrarySuffix;  // ".so", ".dll"

// Full path of the process's executable (the interpreter), or empty when it can't be told.
std::string executable_path();

// Value of an environment variable; false when it is unset.
bool get_environment(const char* name, std::string& value);

// Index of the first character of the file name in a path (0 when there is no directory part).
size_t file_name_start(const std::string& path);

// Appends `part` to the zero-terminated path in `buffer` (kPathLimit + 1 chars), adding a separator
// where needed. False, with the buffer untouched, when the result would not fit.
bool path_append(char* buffer, const char* part);

struct DirectoryEntry {
    std::string name;
    bool is_directory;
};
// Entries of a directory in the file system's order; false when it can't be read.
bool list_directory(const std::string& directory, std::vector<DirectoryEntry>& entries);
bool file_exists(const std::string& path);
bool is_directory(const std::string& path);

// Dynamic libraries. find_loaded_library takes a reference on a library already in the process.
void* find_loaded_library(const char* name);
void* load_library(const char* path);
void free_library(void* handle);
void* library_symbol(void* handle, const char* name);

// Runs `handler` in the child after fork(); on systems without fork it is never called.
void on_fork_child(void (*handler)());

// Saves the signal dispositions of now. A child forked later puts back the saved disposition of every
// signal whose handler then lies in a library whose path contains one of `owners` (the runtime's own
// handlers report to threads that stayed in the parent). Nothing on systems without fork.
void restore_signals_in_fork_child(const char* const* owners, size_t count);

// Fault signals (segmentation, bus error, arithmetic, illegal instruction) shared with the runtime,
// which turns those raised by managed code into exceptions and passes the others to the handler it
// found installed. Python's faulthandler, enabled after the runtime started, would sit on top of the
// runtime's handler and end the process on every managed NullReferenceException.
//   install_fault_forwarder: before the runtime starts (a runtime whose handlers lie in one of
//     `owners` already stands: nothing to do); installs the forwarder the runtime will pass native
//     faults to, which hands them to the handler that was there before (or to one installed later).
//   record_runtime_fault_handlers: once the runtime started; remembers its handlers.
//   yield_runtime_fault_handlers: just before someone installs handlers (faulthandler.enable): puts the
//     forwarder on top, so that the newcomer saves the forwarder, not the runtime, as what it chains
//     to (the runtime's handler overflows faulthandler's small signal stack).
//   reassert_runtime_fault_handlers: after that (and after faulthandler.disable): the handlers found on
//     top become the forwarder's targets and the runtime's go back on top.
void install_fault_forwarder(const char* const* owners, size_t count);
void record_runtime_fault_handlers();
void yield_runtime_fault_handlers();
void reassert_runtime_fault_handlers();

// Standard output passes the bytes written as they are. The trace ends its lines in CR LF itself: on
// Windows a C runtime's standard output in text mode would turn that into CR CR LF.
void use_untranslated_standard_output();

// The platform's text for an error code; false when it has none.
bool error_text(uint32_t code, std::string& text);

}  // namespace platform
