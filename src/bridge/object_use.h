// Which thread is using a wrapped object: System.Drawing objects are not thread-safe, so a call on an
// object waits while another thread is inside a call on it (or on its partner) without the interpreter lock.
#pragma once
#include <Python.h>

#include "bridge/wrapper_object.h"
#include "host/released_calls.h"

namespace object_use {
// Cold: waits, without the interpreter lock, until no other thread uses `w`.
void wait_until_free(WrapperObject* w, PyThreadState* me);
// Cold: waits as above unless this thread is the one using `w`.
void wait_unless_mine(WrapperObject* w);
// Cold: wakes the threads waiting for any object.
void wake_waiters();
}  // namespace object_use

// A property read: waits while another thread is inside a released call on `self`, and marks nothing:
// marking would cost every attribute read a few nanoseconds. A read holds the interpreter lock; only
// if Python code it calls back (a dropped reference's __del__) lets another thread start a released
// call on the object can the two overlap, and then a read of native state meets a writer of it.
inline void wait_while_used_elsewhere(PyObject* self) {
    WrapperObject* w = reinterpret_cast<WrapperObject*>(self);
    if (w->user != nullptr) object_use::wait_unless_mine(w);
}

// Marks `self` in use by this thread for one call (nested calls of the same thread are allowed).
class ObjectUse {
public:
    explicit ObjectUse(PyObject* self) : w_(reinterpret_cast<WrapperObject*>(self)) {
        PyThreadState* me = PyThreadState_Get();
        if (w_->user != nullptr && w_->user != me) object_use::wait_until_free(w_, me);
        w_->user = me;
        ++w_->depth;
    }
    ~ObjectUse() {
        if (--w_->depth == 0) {
            w_->user = nullptr;
            if (w_->waiters != 0) object_use::wake_waiters();
        }
    }
    ObjectUse(const ObjectUse&) = delete;
    ObjectUse& operator=(const ObjectUse&) = delete;

private:
    WrapperObject* w_;
};

// A managed call that runs without the interpreter lock. It first marks in use every wrapper it
// touches (self, the wrapper arguments, their partners), waiting until all are free at once, so
// two such calls never hold one object each while waiting for the other's. With `release` false
// (work too small to pay for the hand-off) it waits and marks the same way but keeps the lock.
class ReleasedCall {
public:
    static constexpr int kMaxObjects = 12;
    ReleasedCall(PyObject* self, PyObject* args, PyObject* kwargs, bool release = true);
    ~ReleasedCall();
    ReleasedCall(const ReleasedCall&) = delete;
    ReleasedCall& operator=(const ReleasedCall&) = delete;

private:
    void add(PyObject* object);
    WrapperObject* objects_[kMaxObjects];  // the first count_ are set
    int count_ = 0;
    bool keep_lock_ = false;  // small work, or too many objects to mark: the call keeps the lock
    PyThreadState* previous_ = nullptr;
    PyThreadState* state_ = nullptr;
};

// Gives `result` (a new wrapper, or null) the partner `partner` (borrowed; ignored unless a wrapper).
PyObject* with_partner(PyObject* result, PyObject* partner);

// Before `partner` is disposed: disposes the objects that work on it (the Graphics of an image), so
// that they raise ObjectDisposed errors instead of drawing into freed memory. False with an error set.
bool dispose_dependents(PyObject* partner);
