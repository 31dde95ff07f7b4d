// The buffer view type: one-dimensional, format-less bytes of its own, lent to Python for one callback.
#include "interop/buffer_view.h"

#include <cstring>

namespace {

[[gnu::cold, gnu::noinline]] int refuse_expired(Py_buffer* view) {
    view->obj = nullptr;
    PyErr_SetString(PyExc_BufferError, "the buffer lent to a stream call is no longer valid after the call");
    return -1;
}

int view_getbuffer(PyObject* self, Py_buffer* view, int flags) {
    BufferViewObject* v = reinterpret_cast<BufferViewObject*>(self);
    if (v->expired) return refuse_expired(view);
    return PyBuffer_FillInfo(view, self, v->data, static_cast<Py_ssize_t>(v->length), v->readonly, flags);
}

PyBufferProcs g_view_buffer = {view_getbuffer, nullptr};

// Runs only when no memoryview holds the object any more, so the copy is no longer reachable.
void view_dealloc(PyObject* self) {
    PyMem_Free(reinterpret_cast<BufferViewObject*>(self)->data);
    Py_TYPE(self)->tp_free(self);
}

}  // namespace

PyTypeObject Interop_ShlBufferView_Type = [] {
    PyTypeObject t = {PyVarObject_HEAD_INIT(nullptr, 0)};
    t.tp_name = "orvane.pyfigura._wrpgen._interop._ShlBufferView";
    t.tp_basicsize = sizeof(BufferViewObject);
    t.tp_flags = Py_TPFLAGS_DEFAULT;
    t.tp_as_buffer = &g_view_buffer;
    t.tp_dealloc = view_dealloc;
    return t;
}();

PyObject* new_buffer_view(const void* source, int64_t length, int readonly) {
    const size_t size = length > 0 ? static_cast<size_t>(length) : 1;
    uint8_t* data = static_cast<uint8_t*>(source != nullptr ? PyMem_Malloc(size) : PyMem_Calloc(size, 1));
    if (data == nullptr) return PyErr_NoMemory();
    if (source != nullptr && length > 0) std::memcpy(data, source, static_cast<size_t>(length));
    PyObject* self = PyType_GenericNew(&Interop_ShlBufferView_Type, nullptr, nullptr);
    if (self == nullptr) {
        PyMem_Free(data);
        return nullptr;
    }
    BufferViewObject* v = reinterpret_cast<BufferViewObject*>(self);
    v->data = data;
    v->length = length;
    v->readonly = readonly;
    v->expired = 0;
    return self;
}

const uint8_t* expire_buffer_view(PyObject* view) {
    BufferViewObject* v = reinterpret_cast<BufferViewObject*>(view);
    v->expired = 1;
    return v->data;
}
