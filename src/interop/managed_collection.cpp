// The entry behind _collect_managed, bound on its first call.
#include "interop/managed_collection.h"

#include "bridge/fork_guard.h"
#include "interop/entry_table_binding.h"

namespace {

struct NativeMemoryPressure {
    static constexpr const char* kClass = "Orvane.WrpGen.Interop.NativeMemoryPressure";
    static constexpr const char* kEntries[] = {"Collect"};
};

[[gnu::cold, gnu::noinline]] PyObject* fail_unbound(const ClassEntryTableHeader& header) {
    PyErr_SetString(PyExc_RuntimeError, header.error_text.c_str());
    return nullptr;
}

}  // namespace

PyObject* collect_managed(PyObject*, PyObject*) {
    if (host::in_forked_child()) Py_RETURN_NONE;  // nothing of the parent's runtime to collect here
    auto& table = bound_table<NativeMemoryPressure>();
    if (table.header.failed) return fail_unbound(table.header);
    reinterpret_cast<void (*)()>(table.entries[0])();
    if (PyErr_Occurred()) return nullptr;
    Py_RETURN_NONE;
}
