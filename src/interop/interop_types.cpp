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

// Statuses of protocol types whose managed side has no table of its own yet.
const TypeInitStatus& bound_status() {
    static const TypeInitStatus status;
    return status;
}

}  // namespace

PyTypeObject Interop_ArrayWrapper_Type = make_wrapper_type("orvane.pyfigura._wrpgen._interop._ArrayWrapper");
PyTypeObject Interop_ArrListWrapper_Type = make_wrapper_type("orvane.pyfigura._wrpgen._interop._ArrListWrapper");

const TypeInitStatus& Interop_ArrayWrapper_status() { return bound_status(); }
const TypeInitStatus& Interop_ArrListWrapper_status() { return bound_status(); }
