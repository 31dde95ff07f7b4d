// The two bottom types of the collection family: an enumerable hands out enumerators, an enumerator
// is a single-pass Python iterator whose elements arrive as finished Python objects.
#include "interop/iteration_wrappers.h"

#include "bridge/type_registry.h"
#include "bridge/wrapper_object.h"

namespace {

constexpr const char* kEnumerableClass = "Orvane.WrpGen.Interop.SiApiEnumerable";
constexpr const char* kEnumerableNames[] = {"GetEnumerator", "CreateInstanceFromPyIterable", "IsAssignableTo"};
constexpr const char* kEnumeratorClass = "Orvane.WrpGen.Interop.SiApiEnumerator";
constexpr const char* kEnumeratorNames[] = {"MoveNext", "IsAssignableTo"};

using EnumerableTable = ClassEntryTable<3>;
using EnumeratorTable = ClassEntryTable<2>;

EnumerableTable& enumerable_table() {
    static EnumerableTable t = [] {
        EnumerableTable x{};
        bind_class_entries(x.header, x.entries, kEnumerableClass, kEnumerableNames, 3);
        return x;
    }();
    return t;
}

EnumeratorTable& enumerator_table() {
    static EnumeratorTable t = [] {
        EnumeratorTable x{};
        bind_class_entries(x.header, x.entries, kEnumeratorClass, kEnumeratorNames, 2);
        return x;
    }();
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

PyObject* iterable_compare(PyObject* self, PyObject* other, int op) {
    const int same = PyObject_IsInstance(other, reinterpret_cast<PyObject*>(&Interop_IterableWrapper_Type));
    if (same == 0) Py_RETURN_NOTIMPLEMENTED;
    if (same < 0) return nullptr;
    return class_compare(handle_of(self), handle_of(other), op);
}

PyObject* iter_compare(PyObject* self, PyObject* other, int op) {
    const int same = PyObject_IsInstance(other, reinterpret_cast<PyObject*>(&Interop_IterWrapper_Type));
    if (same == 0) Py_RETURN_NOTIMPLEMENTED;
    if (same < 0) return nullptr;
    return class_compare(handle_of(self), handle_of(other), op);
}

PyObject* iterable_new(PyTypeObject* type, PyObject* args, PyObject* kwargs) {
    return gated_new(type, Interop_IterableWrapper_status(), args, kwargs);
}

PyObject* iter_new(PyTypeObject* type, PyObject* args, PyObject* kwargs) {
    return gated_new(type, Interop_IterWrapper_status(), args, kwargs);
}

PyTypeObject wrapper_type(const char* name) {
    PyTypeObject t = {PyVarObject_HEAD_INIT(nullptr, 0)};
    t.tp_name = name;
    t.tp_basicsize = sizeof(WrapperObject);
    t.tp_dealloc = class_dealloc;
    t.tp_hash = class_hash;
    t.tp_flags = Py_TPFLAGS_DEFAULT;
    t.tp_init = no_constructor_init;
    return t;
}

}  // namespace

PyTypeObject Interop_IterableWrapper_Type = [] {
    PyTypeObject t = wrapper_type("orvane.pyfigura._wrpgen._interop._IterableWrapper");
    t.tp_richcompare = iterable_compare;
    t.tp_iter = iterable_iter;
    t.tp_new = iterable_new;
    return t;
}();

PyTypeObject Interop_IterWrapper_Type = [] {
    PyTypeObject t = wrapper_type("orvane.pyfigura._wrpgen._interop._IterWrapper");
    t.tp_richcompare = iter_compare;
    t.tp_iter = iter_self;
    t.tp_iternext = iter_next;
    t.tp_new = iter_new;
    return t;
}();

const TypeInitStatus& Interop_IterableWrapper_status() {
    static const TypeInitStatus status = compute_status(enumerable_table().header, nullptr, 0);
    return status;
}

const TypeInitStatus& Interop_IterWrapper_status() {
    static const TypeInitStatus status = compute_status(enumerator_table().header, nullptr, 0);
    return status;
}

PyObject* iterable_iter(PyObject* self) {
    InstanceHandle enumerator = 0;
    if (get_enumerator()(handle_of(self), &enumerator) < 0) return nullptr;
    return wrap_with_default(enumerator, &Interop_IterWrapper_Type);
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
