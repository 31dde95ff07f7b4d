// BitmapData as a buffer: the geometry of a lock is taken once, when the lock succeeds, so the
// settable attributes of BitmapData can't move a view off the locked memory.
#include "interop/locked_bits.h"

#include <cstdlib>

#include "bridge/wrapper_object.h"

namespace {

// ImageLockMode.WRITE_ONLY; READ_WRITE includes it.
constexpr int32_t kWriteMode = 2;

struct LockedBits : WrapperExtras {
    PyObject* data = nullptr;    // the BitmapData, borrowed: the record dies with it
    PyObject* bitmap = nullptr;  // strong while locked; null when not (or no longer) locked
    uint8_t* scan0 = nullptr;
    int32_t width = 0, height = 0, stride = 0, bytes_per_pixel = 0;
    bool writable = false;
    Py_ssize_t exports = 0;
    Py_ssize_t shape[3] = {};
    Py_ssize_t strides[3] = {};
    LockedBits* next = nullptr;  // the records that hold a lock, for a dispose of their Bitmap
};

LockedBits* g_locked = nullptr;

void unlink(LockedBits* record) {
    for (LockedBits** p = &g_locked; *p != nullptr; p = &(*p)->next) {
        if (*p == record) {
            *p = record->next;
            record->next = nullptr;
            return;
        }
    }
}

void end_lock(LockedBits* record) {
    unlink(record);
    Py_CLEAR(record->bitmap);
}

void release_record(WrapperExtras* extras) {
    LockedBits* record = static_cast<LockedBits*>(extras);
    end_lock(record);
    delete record;
}

// Null for None and for objects that are not a BitmapData.
LockedBits* record_of(PyObject* data) {
    if (data == nullptr || Py_TYPE(data)->tp_as_buffer != &LockedBits_buffer_procs) return nullptr;
    return static_cast<LockedBits*>(reinterpret_cast<WrapperObject*>(data)->extras);
}

bool read_int(PyObject* data, const char* name, long long* out) {
    PyObject* value = PyObject_GetAttrString(data, name);
    if (value == nullptr) return false;
    *out = PyLong_AsLongLong(value);
    Py_DECREF(value);
    return !(*out == -1 && PyErr_Occurred());
}

[[gnu::cold, gnu::noinline]] int refuse_view(Py_buffer* view, const char* message) {
    view->obj = nullptr;
    PyErr_SetString(PyExc_BufferError, message);
    return -1;
}

[[gnu::cold, gnu::noinline]] bool refuse_still_viewed(Py_ssize_t exports, const char* what) {
    PyErr_Format(PyExc_BufferError,
                 "cannot %s: %zd buffer view(s) of the locked bits still exist; release them first "
                 "(memoryview.release(), or drop the numpy arrays made from the BitmapData)",
                 what, exports);
    return false;
}

int bits_getbuffer(PyObject* self, Py_buffer* view, int flags) {
    LockedBits* r = record_of(self);
    if (r == nullptr || r->bitmap == nullptr)
        return refuse_view(view, "the bits of this BitmapData are not locked: views exist only between "
                                 "Bitmap.lock_bits and Bitmap.unlock_bits");
    if ((flags & PyBUF_WRITABLE) == PyBUF_WRITABLE && !r->writable)
        return refuse_view(view, "the bits are locked read-only: lock them with ImageLockMode.WRITE_ONLY or "
                                 "READ_WRITE for a writable view");
    const bool with_strides = (flags & PyBUF_STRIDES) == PyBUF_STRIDES;
    if (!with_strides && r->stride < 0)
        return refuse_view(view, "the locked rows run bottom-up (negative stride): request a strided buffer");
    const Py_ssize_t row = std::llabs(r->stride);
    view->buf = r->scan0;
    view->len = row * r->height;
    view->itemsize = 1;
    view->readonly = r->writable ? 0 : 1;
    view->format = (flags & PyBUF_FORMAT) == PyBUF_FORMAT ? const_cast<char*>("B") : nullptr;
    view->suboffsets = nullptr;
    view->internal = nullptr;
    if (with_strides && (r->bytes_per_pixel == 3 || r->bytes_per_pixel == 4)) {
        r->shape[0] = r->height;
        r->shape[1] = r->width;
        r->shape[2] = r->bytes_per_pixel;
        r->strides[0] = r->stride;
        r->strides[1] = r->bytes_per_pixel;
        r->strides[2] = 1;
        view->ndim = 3;
    } else {
        r->shape[0] = r->height;
        r->shape[1] = row;
        r->strides[0] = r->stride;
        r->strides[1] = 1;
        view->ndim = 2;
    }
    // Without PyBUF_ND the consumer reads `len` contiguous bytes; rows of positive stride are that.
    view->shape = (flags & PyBUF_ND) == PyBUF_ND ? r->shape : nullptr;
    view->strides = with_strides ? r->strides : nullptr;
    if (view->shape == nullptr) view->ndim = 1;
    ++r->exports;
    view->obj = Py_NewRef(self);
    return 0;
}

void bits_releasebuffer(PyObject* self, Py_buffer*) {
    LockedBits* r = record_of(self);
    if (r != nullptr) --r->exports;
}

bool guard_dispose(PyObject* object) {
    for (LockedBits* r = g_locked; r != nullptr; r = r->next) {
        if (r->bitmap == object && r->exports > 0)
            return refuse_still_viewed(r->exports, "dispose while the bits are locked");
    }
    // Disposing frees the locked memory: the records of this Bitmap end with it.
    for (LockedBits* r = g_locked; r != nullptr;) {
        LockedBits* next = r->next;
        if (r->bitmap == object) end_lock(r);
        r = next;
    }
    return true;
}

}  // namespace

PyBufferProcs LockedBits_buffer_procs = {bits_getbuffer, bits_releasebuffer};

PyObject* locked_bits_begin(PyObject* data, PyObject* bitmap, int32_t lock_mode) {
    if (data == nullptr) return nullptr;
    WrapperObject* w = reinterpret_cast<WrapperObject*>(data);
    LockedBits* r = record_of(data);
    if (r != nullptr && r->exports > 0) {
        refuse_still_viewed(r->exports, "lock again into a BitmapData");
        Py_DECREF(data);
        return nullptr;
    }
    long long width, height, stride, format, scan0;
    if (!read_int(data, "width", &width) || !read_int(data, "height", &height) ||
        !read_int(data, "stride", &stride) || !read_int(data, "pixel_format", &format) ||
        !read_int(data, "scan0", &scan0)) {
        Py_DECREF(data);
        return nullptr;
    }
    if (r == nullptr) {
        r = new LockedBits();
        r->release = release_record;
        r->data = data;
        w->extras = r;
    } else {
        end_lock(r);
    }
    r->scan0 = reinterpret_cast<uint8_t*>(static_cast<intptr_t>(scan0));
    r->width = static_cast<int32_t>(width);
    r->height = static_cast<int32_t>(height);
    r->stride = static_cast<int32_t>(stride);
    // Bits per pixel are bits 8..15 of a PixelFormat value.
    const int32_t bits = static_cast<int32_t>((format >> 8) & 0xff);
    r->bytes_per_pixel = bits % 8 == 0 ? bits / 8 : 0;
    r->writable = (lock_mode & kWriteMode) != 0;
    r->bitmap = Py_NewRef(bitmap);
    r->next = g_locked;
    g_locked = r;
    return data;
}

bool locked_bits_may_end(PyObject* data) {
    LockedBits* r = record_of(data);
    if (r != nullptr && r->exports > 0) return refuse_still_viewed(r->exports, "unlock the bits");
    return true;
}

void locked_bits_end(PyObject* data) {
    LockedBits* r = record_of(data);
    if (r != nullptr) end_lock(r);
}

void install_locked_bits_guard() { set_dispose_guard(guard_dispose); }
