// The ImportError family raised while the module initialises, with its location codes.
#pragma once

#define PY_SSIZE_T_CLEAN
#include <Python.h>

// Where a start-up failure happened; printed as a signed number in the message.
enum class InitCode : int {
    VersionAdd = -1001,
    ModuleAdd = -1002,
    ModuleCreate = -1003,
    VersionTypeAdd = -1004,
    WrpgenCreate = -1005,
    RootCreate = -1006,
    HostStart = -1007,
    DependencyImport = -1008,
    CapsuleAdd = -1012,
    EnumBuild = -1013,
    TypeAdd = -1014,
    TypeReady = -1015,
    HostMarkSet = -1016,
    AdditionalInterfacesSet = -1017,
    ImplicitInterfacesSet = -1018,
    ThresholdAdd = -1019,
    ClassAttributeStore = -1020,
};

inline int code_value(InitCode code) { return static_cast<int>(code); }

// Raises `type` with a formatted message whose __cause__ and __context__ are the exception pending now.
void chain_and_raise(PyObject* type, const char* format, ...);

// Each member leaves an ImportError set, chained over a pending exception if there is one.
void raise_load_failure(const char* module, int code);
void raise_module_failure(int code, const char* name);
void raise_module_failure(int code, const char* first, const char* second);
void raise_type_failure(int code, const char* name);
void raise_type_failure(int code, const char* first, const char* second);
void raise_dependency_failure(const char* module);
void raise_import_failure(const char* module);
void raise_attribute_failure(PyObject* attribute, const char* module);

// Sets TypeError with `message`, then chains the ImportError naming the enum over it.
void raise_enum_failure(const char* message, const char* enum_full_name);
