// Native exceptions of the host bootstrap: a code with the platform's text for it.
#pragma once
#include <cstdint>
#include <exception>
#include <string>

namespace host {

class BaseException : public std::exception {
public:
    BaseException(std::string prefix, uint32_t code) : prefix_(std::move(prefix)), code_(code) {}
    const char* what() const noexcept override;
    uint32_t code() const { return code_; }

private:
    std::string prefix_;
    uint32_t code_;
    mutable std::string message_;  // filled on the first what()
};

class HostException : public BaseException {
public:
    explicit HostException(uint32_t code) : BaseException(std::string(), code) {}
};

}  // namespace host
