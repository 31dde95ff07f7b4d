// The two bottom types of the collection family: an enumerable hands out enumerators, an enumerator
// is a single-pass Python iterator whose elements arrive as finished Python objects.
#include "interop/iteration_wrappers.h"

#include "bridge/type_registry.h"
#include "bridge/wrapper_object.h"
#include "interop/entry_table_binding.h"
#include "interop/wrapper_type_shape.h"

namespace {

constexpr const char* kEnumerableClass = "Orvane.WrpGen.Interop.SiApiEnumerable";
constexpr const char* kEnumerableNames[] = {"GetEnumerator", "CreateInstanceFromPyIterable", "IsAssignableTo"};
constexpr const char* kEnumeratorClass = "Orvane.WrpGen.Interop.SiApiEnumerator";
constexpr const char* kEnumeratorNames[] = {"MoveNext", "IsAssignableTo"};
using EnumerableTable = ClassEntryTable<3>;
using EnumeratorTable = ClassEntryTable<2>;

EnumerableTable& enumerable_table() {
    static EnumerableTable t = bind_entry_table(kEnumerableClass, kEnumerableNames);
    return t;
}

EnumeratorTable& enumerator_table() {
    static EnumeratorTable t = bind_entry_table(kEnumeratorClass, kEnumeratorNames);
    return t;
}

using GetEnumeratorFn = int32_t (*)(InstanceHandle, InstanceHandle*);
using MoveNextFn = uint32_t (*)(InstanceHandle, PyObject**);

// Only reached through wrappers, which exist only when their table is bound.
GetEnumeratorFn get_enumerator() { return reinterpret_cast<GetEnumeratorFn>(enumerable_table().entries[0]); }
MoveNextFn move_next() { return reinterpret_cast<MoveNextFn>(enumerator_table().entries[0]); }

PyObject* iter_next(PyObject* self) {
    PyObject* item = nullptr;
    const uint32_t status = move_next()(handle_of(self), &item);
    if (status == 0) return item;
    if (status == 1) PyErr_SetNone(PyExc_StopIteration);
    return nullptr;
}

PyObject* iter_self(PyObject* self) { return Py_NewRef(self); }

}  // namespace

PyTypeObject Interop_IterableWrapper_Type = [] {
    PyTypeObject t = iterable_type_shape("orvane.pyfigura._wrpgen._interop._IterableWrapper");
    t.tp_richcompare = compare_within<&Interop_IterableWrapper_Type>;
    t.tp_new = new_gated_by<Interop_IterableWrapper_status>;
    return t;
}();

PyTypeObject Interop_IterWrapper_Type = [] {
    PyTypeObject t = wrapper_type_shape("orvane.pyfigura._wrpgen._interop._IterWrapper");
    t.tp_richcompare = compare_within<&Interop_IterWrapper_Type>;
    t.tp_iter = iter_self;
    t.tp_iternext = iter_next;
    t.tp_new = new_gated_by<Interop_IterWrapper_status>;
    return t;
}();

const TypeInitStatus& Interop_IterableWrapper_status() {
    static const TypeInitStatus status = status_of(enumerable_table().header);
    return status;
}

const TypeInitStatus& Interop_IterWrapper_status() {
    static const TypeInitStatus status = status_of(enumerator_table().header);
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
    PyTypeObject* type = default_type;
    if (std::u16string* name = exchange_host().GetTypeName(handle)) {
        PyTypeObject* found = registry_find_name(*name);
        delete name;
        if (found != nullptr && PyType_IsSubtype(found, default_type)) type = found;
    }
    return wrap_exact(handle, type);
}
