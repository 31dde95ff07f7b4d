// Version objects published by every module of the family, and the comparison of version numbers.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>

struct VersionNumbers {
    int32_t major;
    int32_t minor;
    int32_t patch;
    int32_t sub;
};

// Sister modules read these objects by layout, so the field order is part of the family contract.
struct ModuleVersionObject {
    PyObject_HEAD
    VersionNumbers numbers;
    PyObject* view;  // owned str with the dotted text
};

extern PyTypeObject ModuleVersionType;

// New version object; ModuleVersionType must be ready. Neither allocation is tested.
PyObject* make_version_object(int32_t major, int32_t minor, int32_t patch, int32_t sub, const char* text);

// -1, 0 or 1 as `numbers` is lower, equal or higher. `version` is read by layout, untested.
int version_compare(const VersionNumbers& numbers, PyObject* version);
