// Loading the loader library: join a copy already in the process, or load it from a path.
#include "host/core/dynamic_library.h"

#include <stdexcept>

#include "host/core/host_trace.h"
#include "host/platform/platform.h"

namespace host {

DynamicLibrary::DynamicLibrary(DynamicLibrary&& other) noexcept
    : free_on_destroy_(other.free_on_destroy_), handle_(other.handle_), loaded_here_(other.loaded_here_) {
    other.handle_ = nullptr;
}

DynamicLibrary& DynamicLibrary::operator=(DynamicLibrary&& other) noexcept {
    if (this != &other) {
        release();
        handle_ = other.handle_;
        loaded_here_ = other.loaded_here_;
        other.handle_ = nullptr;
    }
    return *this;
}

DynamicLibrary::~DynamicLibrary() { release(); }

void DynamicLibrary::release() {
    if (handle_ != nullptr && free_on_destroy_) platform::free_library(handle_);
    handle_ = nullptr;
}

void DynamicLibrary::load(const std::string& path, const std::string& name) {
    release();
    HOST_TRACE("Try get module...");
    if (void* existing = platform::find_loaded_library(name.c_str())) {
        handle_ = existing;
        loaded_here_ = false;
        HOST_TRACE("Using existed module...");
        return;
    }
    HOST_TRACE("No existed module...");
    if (void* loaded = platform::load_library(path.c_str())) {
        handle_ = loaded;
        loaded_here_ = true;
        return;
    }
    HOST_TRACE("No module...");
    HOST_TRACE("No: '%s'", path.c_str());
    throw std::runtime_error("DynamicLibrary::load");
}

void* DynamicLibrary::symbol(const char* name) const {
    if (handle_ == nullptr) throw std::logic_error("Library was not opened!");
    void* address = platform::library_symbol(handle_, name);
    if (address == nullptr) throw std::runtime_error(std::string("No such symbol: ") + name);
    return address;
}

}  // namespace host
