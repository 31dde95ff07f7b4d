// A dynamic library handle that knows whether this load brought the library into the process.
#pragma once
#include <string>

namespace host {

class DynamicLibrary {
public:
    DynamicLibrary() = default;
    DynamicLibrary(const DynamicLibrary&) = delete;
    DynamicLibrary& operator=(const DynamicLibrary&) = delete;
    DynamicLibrary(DynamicLibrary&& other) noexcept;
    DynamicLibrary& operator=(DynamicLibrary&& other) noexcept;
    ~DynamicLibrary();

    // Takes the library already in the process by its bare name, else loads it from `path`.
    // Throws std::runtime_error("DynamicLibrary::load") when neither works.
    void load(const std::string& path, const std::string& name);

    // Throws std::logic_error without a handle, std::runtime_error("No such symbol: ...") without the symbol.
    void* symbol(const char* name) const;

    bool holds_handle() const { return handle_ != nullptr; }
    bool loaded_here() const { return loaded_here_; }
    void set_free_on_destroy(bool value) { free_on_destroy_ = value; }

private:
    void release();

    bool free_on_destroy_ = true;
    void* handle_ = nullptr;
    bool loaded_here_ = false;
};

}  // namespace host
