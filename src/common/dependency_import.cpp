// Version-checked import of a sister module and plain attribute import; messages stay out of the way.
#include "common/dependency_import.h"

#include "common/init_failures.h"
#include "common/interned_names.h"

namespace {

#define DEPENDENCY_PREFIX "Unable to import module dependencies. Cannot import the %s module. "

inline PyObject* view_of(PyObject* version) {
    return reinterpret_cast<ModuleVersionObject*>(version)->view;
}

void raise_missing_version(const char* dependency) {
    PyErr_Format(PyExc_ImportError,
                 DEPENDENCY_PREFIX
                 "The %s module found does not have 'VERSION' attribute to check version compatibility.",
                 dependency, dependency);
}

void raise_version_too_low(const char* dependency, PyObject* version, const VersionNumbers& reference) {
    PyErr_Format(PyExc_ImportError,
                 DEPENDENCY_PREFIX
                 "The %s module found has a version ('%U') that is lower than the referenced version "
                 "of that module ('%i.%i.%i.%i').",
                 dependency, dependency, view_of(version), reference.major, reference.minor, reference.patch,
                 reference.sub);
}

void raise_missing_threshold(const char* dependency) {
    PyErr_Format(PyExc_ImportError,
                 DEPENDENCY_PREFIX
                 "The %s module found does not have 'BACKWARD_COMPATIBILITY_THRESHOLD' attribute to check "
                 "version compatibility.",
                 dependency, dependency);
}

void raise_not_compatible(const char* module_name, const char* dependency, PyObject* version,
                          const VersionNumbers& reference, PyObject* threshold) {
    PyErr_Format(PyExc_ImportError,
                 DEPENDENCY_PREFIX
                 "The installed version of the module ('%U') is not compatible with the referenced vesion of "
                 "the module ('%i.%i.%i.%i'). The installed version of the module is not compatible with the "
                 "module versions < '%U'. Update dendend module '%s' to a latest version.",
                 dependency, view_of(version), reference.major, reference.minor, reference.patch, reference.sub,
                 view_of(threshold), module_name);
}

#undef DEPENDENCY_PREFIX

}  // namespace

PyObject* import_versioned_dependency(const char* module_name, const char* dependency_name,
                                      const VersionNumbers& reference) {
    PyObject* module = PyImport_ImportModule(dependency_name);
    if (module == nullptr) {
        raise_dependency_failure(dependency_name);
        return nullptr;
    }
    PyObject* version = PyObject_GetAttr(module, interned(InternedName::Version));
    if (version == nullptr) {
        raise_missing_version(dependency_name);
        Py_DECREF(module);
        return nullptr;
    }
    if (version_compare(reference, version) > 0) {
        raise_version_too_low(dependency_name, version, reference);
        Py_DECREF(version);
        Py_DECREF(module);
        return nullptr;
    }
    PyObject* threshold = PyObject_GetAttr(module, interned(InternedName::BackwardCompatibilityThreshold));
    if (threshold == nullptr) {
        raise_missing_threshold(dependency_name);
        Py_DECREF(module);
        Py_DECREF(version);
        return nullptr;
    }
    if (version_compare(reference, threshold) < 0) {
        raise_not_compatible(module_name, dependency_name, version, reference, threshold);
        Py_DECREF(threshold);
        Py_DECREF(version);
        Py_DECREF(module);
        return nullptr;
    }
    Py_DECREF(threshold);
    Py_DECREF(version);
    return module;
}

PyObject* import_attribute(const char* module_name, PyObject* attribute) {
    PyObject* module = PyImport_ImportModule(module_name);
    if (module == nullptr) {
        raise_import_failure(module_name);
        return nullptr;
    }
    PyObject* value = PyObject_GetAttr(module, attribute);
    Py_DECREF(module);
    if (value == nullptr) {
        raise_attribute_failure(attribute, module_name);
    }
    return value;
}
