// The disposable type: __enter__ and __exit__ of the wrapper family; its one-entry table SiApiDisposable
// is bound only so that the type can't be created when the managed class is missing.
#include "interop/disposable_wrapper.h"

namespace {

constexpr const char* kEntryClass = "Orvane.WrpGen.Interop.SiApiDisposable";
constexpr const char* kEntryNames[] = {"IsAssignableTo"};
using Table = ClassEntryTable<1>;

Table& table() {
    static Table t = [] {
        Table x{};
        bind_class_entries(x.header, x.entries, kEntryClass, kEntryNames, 1);
        return x;
    }();
    return t;
}

PyObject* compare(PyObject* self, PyObject* other, int op) {
    const int same = PyObject_IsInstance(other, reinterpret_cast<PyObject*>(&Interop_IDisposableWrapper_Type));
    if (same == 0) Py_RETURN_NOTIMPLEMENTED;
    if (same < 0) return nullptr;
    return class_compare(handle_of(self), handle_of(other), op);
}

PyObject* gated(PyTypeObject* type, PyObject* args, PyObject* kwargs) {
    return gated_new(type, Interop_IDisposableWrapper_status(), args, kwargs);
}

PyMethodDef g_methods[] = {WRAPPER_CONTEXT_METHODS, {nullptr, nullptr, 0, nullptr}};

}  // namespace

PyTypeObject Interop_IDisposableWrapper_Type = [] {
    PyTypeObject t = {PyVarObject_HEAD_INIT(nullptr, 0)};
    t.tp_name = "orvane.pyfigura._wrpgen._interop._IDisposableWrapper";
    t.tp_basicsize = sizeof(WrapperObject);
    t.tp_dealloc = class_dealloc;
    t.tp_hash = class_hash;
    t.tp_flags = Py_TPFLAGS_DEFAULT;
    t.tp_richcompare = compare;
    t.tp_methods = g_methods;
    t.tp_init = no_constructor_init;
    t.tp_new = gated;
    return t;
}();

const TypeInitStatus& Interop_IDisposableWrapper_status() {
    static const TypeInitStatus status = compute_status(table().header, nullptr, 0);
    return status;
}
