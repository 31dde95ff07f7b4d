// The protocol wrapper types. They exist from start-up so that classes can name them; their
// protocols (iteration, collections, streams, disposal) are bound by their own files as they land.
#include "interop/interop_types.h"

#include "bridge/wrapper_object.h"

namespace {

PyTypeObject make_wrapper_type(const char* name, PyTypeObject* base = nullptr) {
    PyTypeObject t = {PyVarObject_HEAD_INIT(nullptr, 0)};
    t.tp_name = name;
    t.tp_basicsize = sizeof(WrapperObject);
    t.tp_dealloc = class_dealloc;
    t.tp_hash = class_hash;
    t.tp_flags = Py_TPFLAGS_DEFAULT;
    t.tp_base = base;
    t.tp_init = no_constructor_init;
    t.tp_new = PyType_GenericNew;
    return t;
}

PyMethodDef g_disposable_methods[] = {WRAPPER_CONTEXT_METHODS, {nullptr, nullptr, 0, nullptr}};

// Statuses of protocol types whose managed side has no table of its own yet.
const TypeInitStatus& bound_status() {
    static const TypeInitStatus status;
    return status;
}

}  // namespace

PyTypeObject Interop_IDisposableWrapper_Type = [] {
    PyTypeObject t = make_wrapper_type("orvane.pyfigura._wrpgen._interop._IDisposableWrapper");
    t.tp_methods = g_disposable_methods;
    return t;
}();
PyTypeObject Interop_IterWrapper_Type = make_wrapper_type("orvane.pyfigura._wrpgen._interop._IterWrapper");
PyTypeObject Interop_IterableWrapper_Type = make_wrapper_type("orvane.pyfigura._wrpgen._interop._IterableWrapper");
PyTypeObject Interop_IColWrapper_Type = make_wrapper_type("orvane.pyfigura._wrpgen._interop._IColWrapper");
PyTypeObject Interop_IListWrapper_Type = make_wrapper_type("orvane.pyfigura._wrpgen._interop._IListWrapper");
PyTypeObject Interop_RoColBaseWrapper_Type =
    make_wrapper_type("orvane.pyfigura._wrpgen._interop._RoColBaseWrapper");
PyTypeObject Interop_ColBaseWrapper_Type = make_wrapper_type("orvane.pyfigura._wrpgen._interop._ColBaseWrapper");
PyTypeObject Interop_ArrayWrapper_Type = make_wrapper_type("orvane.pyfigura._wrpgen._interop._ArrayWrapper");
PyTypeObject Interop_ArrListWrapper_Type = make_wrapper_type("orvane.pyfigura._wrpgen._interop._ArrListWrapper");

const TypeInitStatus& Interop_IDisposableWrapper_status() { return bound_status(); }
const TypeInitStatus& Interop_IterWrapper_status() { return bound_status(); }
const TypeInitStatus& Interop_IterableWrapper_status() { return bound_status(); }
const TypeInitStatus& Interop_IColWrapper_status() { return bound_status(); }
const TypeInitStatus& Interop_IListWrapper_status() { return bound_status(); }
const TypeInitStatus& Interop_RoColBaseWrapper_status() { return bound_status(); }
const TypeInitStatus& Interop_ColBaseWrapper_status() { return bound_status(); }
const TypeInitStatus& Interop_ArrayWrapper_status() { return bound_status(); }
const TypeInitStatus& Interop_ArrListWrapper_status() { return bound_status(); }
