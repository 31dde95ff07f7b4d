// The extension's one export: start-up of orvane.pyfigura in its fixed order.
#include "module/module_entry.h"

#include "host/entry_tables.h"
#include "interop/locked_bits.h"
#include "module/dependency_import.h"
#include "module/init_failures.h"
#include "module/interned_names.h"
#include "module/module_tree.h"
#include "module/version_object.h"

namespace {

constexpr const char* kModuleName = "orvane.pyfigura";
constexpr const char* kDependencyName = "orvane.pygc";
constexpr VersionNumbers kDependencyReference = {22, 9, 1, 0};
constexpr const char* kAssemblyName = "WrpInterop.Orvane.PyFigura";

PyObject* fail(InitCode code) {
    raise_load_failure(kModuleName, code_value(code));
    return nullptr;
}

PyObject* fail_dropping(InitCode code, PyObject* root) {
    raise_load_failure(kModuleName, code_value(code));
    Py_DECREF(root);
    return nullptr;
}

// Steals `version`; on failure reports `code` and drops both the object and the root.
bool add_version(PyObject* root, const char* name, PyObject* version, InitCode code) {
    if (PyModule_AddObject(root, name, version) < 0) {
        raise_load_failure(kModuleName, code_value(code));
        Py_XDECREF(version);
        Py_DECREF(root);
        return false;
    }
    return true;
}

}  // namespace

PyMODINIT_FUNC PyInit_pyfigura() {
    fill_interned_names();

    PyObject* dependency = import_versioned_dependency(kModuleName, kDependencyName, kDependencyReference);
    if (dependency == nullptr) return fail(InitCode::DependencyImport);
    Py_DECREF(dependency);  // it stays alive in sys.modules

    if (start_host_and_bind(u"3.1", kAssemblyName, false, u"orvane", u"pyfigura") < 0)
        return fail(InitCode::HostStart);

    install_locked_bits_guard();

    PyObject* root = create_root_module();
    if (root == nullptr) return fail(InitCode::RootCreate);

    if (create_wrpgen_module(root) < 0) return fail_dropping(InitCode::WrpgenCreate, root);

    if (ready_and_add_type(root, &ModuleVersionType, "_ModuleVersionType") < 0)
        return fail_dropping(InitCode::VersionTypeAdd, root);

    if (!add_version(root, "VERSION", make_version_object(22, 9, 1, 0, "22.9.1.0"), InitCode::VersionAdd))
        return nullptr;
    if (!add_version(root, "_BACKWARD_COMPATIBILITY_THRESHOLD", make_version_object(22, 6, 0, 0, "22.6.0.0"),
                     InitCode::ThresholdAdd))
        return nullptr;
    return root;
}
