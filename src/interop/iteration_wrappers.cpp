// The two bottom types of the collection family: an enumerable hands out enumerators, an enumerator
// is a single-pass Python iterator whose elements arrive as finished Python objects.
#include "interop/iteration_wrappers.h"

#include "bridge/type_registry.h"
#include "bridge/wrapper_object.h"
#include "interop/entry_table_binding.h"
#include "interop/wrapper_type_shape.h"

namespace {

struct SiApiEnumerable {
    static constexpr const char* kClass = "Orvane.WrpGen.Interop.SiApiEnumerable";
    static constexpr const char* kEntries[] = {"GetEnumerator", "CreateInstanceFromPyIterable", "IsAssignableTo"};
};

struct SiApiEnumerator {
    static constexpr const char* kClass = "Orvane.WrpGen.Interop.SiApiEnumerator";
    static constexpr const char* kEntries[] = {"MoveNext", "IsAssignableTo"};
};

using GetEnumeratorFn = int32_t (*)(InstanceHandle, InstanceHandle*);
using MoveNextFn = uint32_t (*)(InstanceHandle, PyObject**);

// Only reached through wrappers, which exist only when their table is bound.
GetEnumeratorFn get_enumerator() {
    return reinterpret_cast<GetEnumeratorFn>(bound_table<SiApiEnumerable>().entries[0]);
}
MoveNextFn move_next() { return reinterpret_cast<MoveNextFn>(bound_table<SiApiEnumerator>().entries[0]); }

PyObject* iter_next(PyObject* self) {
    PyObject* item = nullptr;
    const uint32_t status = move_next()(handle_of(self), &item);
    if (status == 0) return item;
    if (status == 1) PyErr_SetNone(PyExc_StopIteration);
    return nullptr;
}

PyObject* iter_self(PyObject* self) { return Py_NewRef(self); }

}  // namespace

PyTypeObject Interop_IterableWrapper_Type =
    with_own_slots<&Interop_IterableWrapper_Type, Interop_IterableWrapper_status>(
        iterable_type_shape("orvane.pyfigura._wrpgen._interop._IterableWrapper"));

PyTypeObject Interop_IterWrapper_Type = [] {
    PyTypeObject t = with_own_slots<&Interop_IterWrapper_Type, Interop_IterWrapper_status>(
        wrapper_type_shape("orvane.pyfigura._wrpgen._interop._IterWrapper"));
    t.tp_iter = iter_self;
    t.tp_iternext = iter_next;
    return t;
}();

const TypeInitStatus& Interop_IterableWrapper_status() {
    static const TypeInitStatus status = status_of<SiApiEnumerable>();
    return status;
}

const TypeInitStatus& Interop_IterWrapper_status() {
    static const TypeInitStatus status = status_of<SiApiEnumerator>();
    return status;
}

PyObject* iterable_iter(PyObject* self) {
    InstanceHandle enumerator = 0;
    if (get_enumerator()(handle_of(self), &enumerator) < 0) return nullptr;
    return wrap_with_default(enumerator, &Interop_IterWrapper_Type);
}

PyTypeObject iterable_type_shape(const char* name) {
    PyTypeObject t = wrapper_type_shape(name);
    t.tp_iter = iterable_iter;
    return t;
}

PyObject* wrap_with_default(InstanceHandle handle, PyTypeObject* default_type) {
    if (handle == 0) Py_RETURN_NONE;
    // Once per iter(): the enumerator entry hands out no type key, so the name is read each time.
    PyTypeObject* found = registry_find_by_handle(handle);
    return wrap_exact(handle, found != nullptr && PyType_IsSubtype(found, default_type) ? found : default_type);
}
