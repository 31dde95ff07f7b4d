// Test module version_probe: makes version objects with any numbers, for fake sister modules.
#include "common/version_object.h"
#include "probe_binding.h"

namespace {

// make(major, minor, patch, sub, text) -> version object
PyObject* probe_make(PyObject*, PyObject* args) {
    int major, minor, patch, sub;
    const char* text;
    if (!PyArg_ParseTuple(args, "iiiis:make", &major, &minor, &patch, &sub, &text)) return nullptr;
    return make_version_object(major, minor, patch, sub, text);
}

// compare((major, minor, patch, sub), version) -> -1, 0 or 1
PyObject* probe_compare(PyObject*, PyObject* args) {
    VersionNumbers numbers;
    PyObject* version;
    if (!PyArg_ParseTuple(args, "(iiii)O!:compare", &numbers.major, &numbers.minor, &numbers.patch, &numbers.sub,
                          &ModuleVersionType, &version)) {
        return nullptr;
    }
    return PyLong_FromLong(version_compare(numbers, version));
}

PyMethodDef probe_methods[] = {
    {"make", probe_make, METH_VARARGS, nullptr},
    {"compare", probe_compare, METH_VARARGS, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef probe_definition = {PyModuleDef_HEAD_INIT, "version_probe", nullptr, -1, probe_methods};

}  // namespace

PyMODINIT_FUNC PyInit_version_probe() {
    return probe_module(probe_definition, {{"_ModuleVersionType", &ModuleVersionType}});
}
