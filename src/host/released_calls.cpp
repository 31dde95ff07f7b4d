// Per-thread state of released calls: which thread gave up the interpreter lock, and taking it back.
#include "host/released_calls.h"

namespace released_calls {

std::atomic<int> g_active{0};

PyThreadState*& saved_state() {
    static thread_local PyThreadState* state = nullptr;
    return state;
}

}  // namespace released_calls

void CallbackLock::take() {
    PyThreadState*& saved = released_calls::saved_state();
    if (saved == nullptr) return;  // this thread holds the lock: another thread's call is the released one
    state_ = saved;
    saved = nullptr;
    PyEval_RestoreThread(state_);
}

void CallbackLock::give() {
    released_calls::saved_state() = PyEval_SaveThread();
}
