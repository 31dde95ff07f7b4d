// The disposable type: __enter__ and __exit__ of the wrapper family; its one-entry table SiApiDisposable
// is bound only so that the type can't be created when the managed class is missing.
#include "interop/disposable_wrapper.h"

#include "interop/entry_table_binding.h"
#include "interop/wrapper_type_shape.h"

namespace {

constexpr const char* kEntryClass = "Orvane.WrpGen.Interop.SiApiDisposable";
constexpr const char* kEntryNames[] = {"IsAssignableTo"};

ClassEntryTable<1>& table() {
    static ClassEntryTable<1> t = bind_entry_table(kEntryClass, kEntryNames);
    return t;
}

PyMethodDef g_methods[] = {WRAPPER_CONTEXT_METHODS, {nullptr, nullptr, 0, nullptr}};

}  // namespace

PyTypeObject Interop_IDisposableWrapper_Type = [] {
    PyTypeObject t = wrapper_type_shape("orvane.pyfigura._wrpgen._interop._IDisposableWrapper");
    t.tp_richcompare = compare_within<&Interop_IDisposableWrapper_Type>;
    t.tp_methods = g_methods;
    t.tp_new = new_gated_by<Interop_IDisposableWrapper_status>;
    return t;
}();

const TypeInitStatus& Interop_IDisposableWrapper_status() {
    static const TypeInitStatus status = status_of(table().header);
    return status;
}
