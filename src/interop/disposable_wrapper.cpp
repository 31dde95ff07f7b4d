// The disposable type: __enter__ and __exit__ of the wrapper family; its one-entry table SiApiDisposable
// is bound only so that the type can't be created when the managed class is missing.
#include "interop/disposable_wrapper.h"

#include "interop/entry_table_binding.h"
#include "interop/wrapper_type_shape.h"

namespace {

struct SiApiDisposable {
    static constexpr const char* kClass = "Orvane.WrpGen.Interop.SiApiDisposable";
    static constexpr const char* kEntries[] = {"IsAssignableTo"};
};

PyMethodDef g_methods[] = {WRAPPER_CONTEXT_METHODS, {nullptr, nullptr, 0, nullptr}};

}  // namespace

PyTypeObject Interop_IDisposableWrapper_Type = [] {
    PyTypeObject t = with_own_slots<&Interop_IDisposableWrapper_Type, Interop_IDisposableWrapper_status>(
        wrapper_type_shape("orvane.pyfigura._wrpgen._interop._IDisposableWrapper"));
    t.tp_methods = g_methods;
    return t;
}();

const TypeInitStatus& Interop_IDisposableWrapper_status() {
    static const TypeInitStatus status = status_of<SiApiDisposable>();
    return status;
}
