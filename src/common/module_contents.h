// What each module of the package tree holds, as data: ready order, enumerations, classes, value types.
#pragma once
#include <Python.h>

#include <cstddef>

// Converter and wrap function behind every capsule, in this order.
struct ValueCapsule {
    int (*converter)(PyObject*, void*);
    PyObject* (*wrap)(const void*);
};

struct TypeList {
    PyTypeObject* const* types;
    size_t count;
};

enum class HostMark { None, Ellipsis };

struct ClassRegistration {
    const char16_t* managed_name;  // registry key, nested types with '+'
    PyTypeObject* type;
    const char* short_name;        // attribute name in the module or the outer type
    TypeList interfaces;           // both interface sets hold these
    HostMark mark;
    PyTypeObject* outer;           // nested class: stored in the outer type's dictionary
    int (*install_attributes)(PyTypeObject*);  // -1 with the -1020 error raised
    ValueCapsule* capsule_slot;
    ValueCapsule capsule;
    const char* capsule_name;      // full dotted name; the attribute is its last component
};

struct EnumRegistration {
    const char* short_name;
    const char* full_name;
    PyObject* (*build)();          // new IntEnum type, or null with an exception set
};

struct ValueRegistration {
    PyTypeObject* type;
    const char* short_name;
    int (*install_attributes)(PyTypeObject*);
    ValueCapsule* capsule_v1_slot;  // delivers the value itself
    ValueCapsule capsule_v1;
    const char* capsule_v1_name;
    ValueCapsule* capsule_slot;     // delivers a pointer to the value
    ValueCapsule capsule;
    const char* capsule_name;
};

struct ModuleContents {
    TypeList ready_first;           // readied in one run before anything is added
    const EnumRegistration* enums;
    size_t enum_count;
    const ClassRegistration* classes;
    size_t class_count;
    const ValueRegistration* values;
    size_t value_count;
};

// The interop sub-module readies and registers its types one at a time.
struct InteropRegistration {
    PyTypeObject* type;
    const char* short_name;
    TypeList interfaces;
    bool marked;
};

struct InteropContents {
    const InteropRegistration* types;
    size_t count;
};

// The typed array and iterator wrappers: all readied first, then registered in order.
struct GenericContents {
    TypeList ready_first;
    const InteropRegistration* types;
    size_t count;
};

extern const ModuleContents kRootContents;
extern const ModuleContents kTextContents;
extern const ModuleContents kDrawing2DContents;
extern const ModuleContents kDesignContents;
extern const ModuleContents kPrintingContents;
extern const ModuleContents kImagingContents;
extern const InteropContents kInteropContents;

// The sub-modules of the root in the order they are created and added.
struct SubModuleRow {
    const char* name;  // full dotted name
    const ModuleContents* contents;
    const char* short_name;
};
extern const SubModuleRow kSubModules[];
extern const size_t kSubModuleCount;
extern const GenericContents kGenericContents;

// Descriptor types readied and added to the root before anything else; null-terminated.
extern PyTypeObject* const kRootDescriptorTypes[];
extern const char* const kRootDescriptorNames[];
