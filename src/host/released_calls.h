// Managed calls that run without the interpreter lock, and the callbacks that take it back first.
#pragma once
#include <Python.h>

#include <atomic>

namespace released_calls {

// Threads inside a released call, process-wide: while it is 0 a callback checks nothing else.
extern std::atomic<int> g_active;

// This thread's state while its managed call runs without the lock; null otherwise.
PyThreadState*& saved_state();

}  // namespace released_calls

// The interpreter lock for one callback from managed code: taken back if this thread gave it up
// for the call that is calling back, given up again when the callback returns.
class CallbackLock {
public:
    CallbackLock() {
        if (released_calls::g_active.load(std::memory_order_relaxed) != 0) take();
    }
    ~CallbackLock() {
        if (state_ != nullptr) give();
    }
    CallbackLock(const CallbackLock&) = delete;
    CallbackLock& operator=(const CallbackLock&) = delete;

private:
    void take();
    void give();
    PyThreadState* state_ = nullptr;
};

// The same function behind a CallbackLock: the form in which callbacks are handed to managed code.
template <auto F>
struct WithInterpreterLock;
template <typename R, typename... A, R (*F)(A...)>
struct WithInterpreterLock<F> {
    static R call(A... args) {
        CallbackLock lock;
        return F(args...);
    }
};

template <auto F>
void* locked_callback() {
    return reinterpret_cast<void*>(&WithInterpreterLock<F>::call);
}
