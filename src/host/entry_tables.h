// The wire to managed code: the ExchangeHost and ObjectHost entry tables and per-class entry tables.
#pragma once
#include <Python.h>

#include <cstdint>
#include <string>

struct StringArg;

using InstanceHandle = uint64_t;
using TypeKey = uint64_t;

// Native callbacks handed to the managed side.
using RaiseProxyErrorFn = void (*)(PyObject*, PyObject*);
using CatchAndClearErrorFn = int32_t (*)(PyObject**, StringArg*);
using U16StrBuilderFn = std::u16string* (*)(const char16_t*, int32_t);
using PyStrBuilderFn = PyObject* (*)(const char16_t*, int32_t);
using PyBytesBuilderFn = PyObject* (*)(const uint8_t*, int32_t);

struct ExchangeHostTable {
    std::u16string* (*GetTypeName)(InstanceHandle);
    void (*SetExceptionCallback)(RaiseProxyErrorFn);
    void (*SetCatchAndClearErrorCallback)(CatchAndClearErrorFn);
    void (*SetU16StrBuilderCallback)(U16StrBuilderFn);
    void (*SetPyStrBuilderCallback)(PyStrBuilderFn);
    void (*SetPyUnraisableStrBuilderCallback)(PyStrBuilderFn);
    void (*SetPyBytesBuilderCallback)(PyBytesBuilderFn);
    void (*SetPyStaticCallbacks)(void* const*);
    void (*SetPyGenericCallbacks)(void* const*);
    void (*FreePendingArgs)();
    void (*FreeInstance)(InstanceHandle);        // class handles
    void (*FreeStructInstance)(InstanceHandle);  // managed-struct handles: the same method, bound twice
    void (*InitServices)();
    void (*BoxStcTarget)();
    const char* assembly_name;
    std::string error_text;
};

struct ObjectHostTable {
    int32_t (*ToStringOfObj)(InstanceHandle, PyObject**);
    int32_t (*ToStringOfStc)(InstanceHandle, PyObject**);
    int32_t (*GetHashOfObj)(InstanceHandle);
    int32_t (*GetHashOfStc)(InstanceHandle);
    uint8_t (*IsEqualsOfObj)(InstanceHandle, InstanceHandle);
    uint8_t (*IsEqualsOfStc)(InstanceHandle, InstanceHandle);
    void (*Dispose)(InstanceHandle);
    const char* assembly_name;
    bool failed;
    std::string error_text;
};

// Header of every per-class table; the entry pointers follow it in table order.
struct ClassEntryTableHeader {
    const char* assembly_name;  // the managed context handle
    bool failed;
    std::string error_text;
};

template <size_t N>
struct ClassEntryTable {
    ClassEntryTableHeader header;
    void* entries[N];
};

ExchangeHostTable& exchange_host();
const ObjectHostTable& object_host();

// Binds the 14 exchange entries in their binding order; false with the table's error text set.
bool exchange_bind(ExchangeHostTable& table, const char* assembly_name);

// Binds the entries of one class in slot order; stops at the first missing entry and marks the table failed.
void bind_class_entries(ClassEntryTableHeader& header, void** slots, const char* class_name,
                        const char* const* entry_names, size_t count);

// "While initializing the host for the '<class> (Assembly=<assembly>)' type, an error occurred - ..."
std::string format_binding_error(const char* assembly_name, const char* class_name, const char* method_name,
                                 uint32_t status);
