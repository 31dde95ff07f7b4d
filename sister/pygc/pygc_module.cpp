// The sister module orvane.pygc: publishes its version and the oldest version it still serves.
#include "common/version_object.h"

namespace {

PyModuleDef pygc_definition = {
    PyModuleDef_HEAD_INIT,
    "orvane.pygc",
    nullptr,
    -1,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
    nullptr,
};

// Adds a version object under `name`; the object is dropped when the add fails.
int add_version(PyObject* module, const char* name, int32_t major, int32_t minor, int32_t patch, int32_t sub,
                const char* text) {
    PyObject* version = make_version_object(major, minor, patch, sub, text);
    if (PyModule_AddObject(module, name, version) < 0) {
        Py_XDECREF(version);
        return -1;
    }
    return 0;
}

}  // namespace

PyMODINIT_FUNC PyInit_pygc() {
    // Importers read these objects by layout, so they come from the family's own version type.
    if (PyType_Ready(&ModuleVersionType) < 0) {
        return nullptr;
    }
    PyObject* module = PyModule_Create(&pygc_definition);
    if (module == nullptr) {
        return nullptr;
    }
    if (add_version(module, "VERSION", 22, 9, 1, 0, "22.9.1.0") < 0 ||
        add_version(module, "_BACKWARD_COMPATIBILITY_THRESHOLD", 22, 6, 0, 0, "22.6.0.0") < 0) {
        Py_DECREF(module);
        return nullptr;
    }
    return module;
}
