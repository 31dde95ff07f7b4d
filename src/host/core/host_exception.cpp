// Text of a host exception, built once.
#include "host/core/host_exception.h"

#include "host/core/host_trace.h"

namespace host {

const char* BaseException::what() const noexcept {
    if (message_.empty()) {
        if (!prefix_.empty()) {
            message_ += prefix_;
            if (code_ != 0) message_ += ": ";
        }
        message_ += platform_error_text(code_);
    }
    return message_.c_str();
}

}  // namespace host
