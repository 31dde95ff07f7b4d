// The buffer view type: one-dimensional, format-less bytes over memory it does not own.
#include "interop/buffer_view.h"

namespace {

int view_getbuffer(PyObject* self, Py_buffer* view, int flags) {
    BufferViewObject* v = reinterpret_cast<BufferViewObject*>(self);
    return PyBuffer_FillInfo(view, self, v->data, static_cast<Py_ssize_t>(v->length), v->readonly, flags);
}

PyBufferProcs g_view_buffer = {view_getbuffer, nullptr};

}  // namespace

PyTypeObject Interop_ShlBufferView_Type = [] {
    PyTypeObject t = {PyVarObject_HEAD_INIT(nullptr, 0)};
    t.tp_name = "orvane.pyfigura._wrpgen._interop._ShlBufferView";
    t.tp_basicsize = sizeof(BufferViewObject);
    t.tp_flags = Py_TPFLAGS_DEFAULT;
    t.tp_as_buffer = &g_view_buffer;
    return t;
}();

PyObject* new_buffer_view(void* data, int64_t length, int readonly) {
    PyObject* self = PyType_GenericNew(&Interop_ShlBufferView_Type, nullptr, nullptr);
    if (self == nullptr) return nullptr;
    BufferViewObject* v = reinterpret_cast<BufferViewObject*>(self);
    v->data = data;
    v->length = length;
    v->readonly = readonly;
    return self;
}
