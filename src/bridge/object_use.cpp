// Waiting for wrapped objects used by other threads, and the released managed call.
#include "bridge/object_use.h"

#include <condition_variable>
#include <cstdint>
#include <mutex>

namespace {

// One condition for every object: waits are rare (two threads on one object), and a generation
// counter makes a wake-up between reading it and sleeping impossible to miss.
std::mutex g_mutex;
std::condition_variable g_free;
uint64_t g_generation = 0;

uint64_t current_generation() {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_generation;
}

}  // namespace

namespace object_use {

void wait_until_free(WrapperObject* w, PyThreadState* me) {
    ++w->waiters;
    while (w->user != nullptr && w->user != me) {
        const uint64_t seen = current_generation();
        Py_BEGIN_ALLOW_THREADS
        {  // the mutex is let go before the interpreter lock is taken back
            std::unique_lock<std::mutex> lock(g_mutex);
            g_free.wait(lock, [seen] { return g_generation != seen; });
        }
        Py_END_ALLOW_THREADS
    }
    --w->waiters;
}

void wait_unless_mine(WrapperObject* w) {
    PyThreadState* me = PyThreadState_Get();
    if (w->user != me) wait_until_free(w, me);
}

void wake_waiters() {
    {
        std::lock_guard<std::mutex> lock(g_mutex);
        ++g_generation;
    }
    g_free.notify_all();
}

}  // namespace object_use

void ReleasedCall::add(PyObject* object) {
    // Wrapped class instances only (the test recognise_by_slot makes, inline: most arguments are numbers).
    while (object != nullptr && Py_TYPE(object)->tp_dealloc == class_dealloc) {
        WrapperObject* w = reinterpret_cast<WrapperObject*>(object);
        for (int i = 0; i < count_; ++i)
            if (objects_[i] == w) return;
        if (count_ == kMaxObjects) {
            keep_lock_ = true;
            return;
        }
        objects_[count_++] = w;
        object = w->partner;
    }
}

ReleasedCall::ReleasedCall(PyObject* self, PyObject* args, PyObject* kwargs, bool release)
    : keep_lock_(!release) {
    add(self);
    if (args != nullptr)
        for (Py_ssize_t i = 0; i < PyTuple_GET_SIZE(args); ++i) add(PyTuple_GET_ITEM(args, i));
    if (kwargs != nullptr) {
        Py_ssize_t pos = 0;
        PyObject *key, *value;
        while (PyDict_Next(kwargs, &pos, &key, &value)) add(value);
    }
    PyThreadState* me = PyThreadState_Get();
    // All free (or this thread's own) at one moment, under the interpreter lock: then all are marked.
    for (int i = 0; i < count_;) {
        WrapperObject* w = objects_[i];
        if (w->user != nullptr && w->user != me) {
            object_use::wait_until_free(w, me);
            i = 0;
            continue;
        }
        ++i;
    }
    for (int i = 0; i < count_; ++i) {
        objects_[i]->user = me;
        ++objects_[i]->depth;
    }
    if (keep_lock_) return;
    previous_ = released_calls::saved_state();
    released_calls::g_active.fetch_add(1, std::memory_order_relaxed);
    state_ = PyEval_SaveThread();
    released_calls::saved_state() = state_;
}

ReleasedCall::~ReleasedCall() {
    if (!keep_lock_) {
        PyThreadState* state = released_calls::saved_state();
        released_calls::saved_state() = previous_;
        PyEval_RestoreThread(state);
        released_calls::g_active.fetch_sub(1, std::memory_order_relaxed);
    }
    bool wake = false;
    for (int i = 0; i < count_; ++i) {
        WrapperObject* w = objects_[i];
        if (--w->depth == 0) {
            w->user = nullptr;
            wake = wake || w->waiters != 0;
        }
    }
    if (wake) object_use::wake_waiters();
}

namespace {

// The objects that have a partner, so that disposing a partner can reach them: libgdiplus frees an
// image's memory on dispose, and a Graphics still drawing into it would write into freed memory.
struct PartnerLink : WrapperExtras {
    PyObject* dependent = nullptr;  // borrowed: the link dies with it
    PartnerLink* next = nullptr;
};

PartnerLink* g_partner_links = nullptr;

void release_link(WrapperExtras* extras) {
    PartnerLink* link = static_cast<PartnerLink*>(extras);
    for (PartnerLink** p = &g_partner_links; *p != nullptr; p = &(*p)->next) {
        if (*p == link) {
            *p = link->next;
            break;
        }
    }
    delete link;
}

}  // namespace

PyObject* with_partner(PyObject* result, PyObject* partner) {
    int32_t kind;
    if (result == nullptr || partner == nullptr || !recognise_by_slot(partner, &kind) || kind != kInstanceClass)
        return result;
    WrapperObject* w = reinterpret_cast<WrapperObject*>(result);
    Py_XSETREF(w->partner, Py_NewRef(partner));
    if (w->extras == nullptr) {
        PartnerLink* link = new PartnerLink();
        link->release = release_link;
        link->dependent = result;
        link->next = g_partner_links;
        g_partner_links = link;
        w->extras = link;
    }
    return result;
}

bool dispose_dependents(PyObject* partner) {
    for (PartnerLink* link = g_partner_links; link != nullptr; link = link->next) {
        WrapperObject* dependent = reinterpret_cast<WrapperObject*>(link->dependent);
        if (dependent->partner != partner || dependent->handle == 0) continue;
        object_host().Dispose(dependent->handle);
        if (PyErr_Occurred()) return false;
    }
    return true;
}
