// Package tree construction in its fixed order, with the failure code of each step.
#include "module/module_tree.h"

#include "bridge/type_registry.h"
#include "interop/managed_collection.h"
#include "module/fault_signals.h"
#include "common/init_failures.h"
#include "common/interned_names.h"
#include "common/module_contents.h"

namespace {

PyModuleDef make_definition(const char* name) {
    return PyModuleDef{PyModuleDef_HEAD_INIT, name, nullptr, -1, nullptr, nullptr, nullptr, nullptr, nullptr};
}

PyModuleDef g_root_def = make_definition("orvane.pyfigura");
// The sub-modules' definitions, made from the generated rows on first use; a definition lives as long
// as its module.
constexpr size_t kMaxSubModules = 8;
PyModuleDef g_sub_defs[kMaxSubModules];
PyModuleDef g_wrpgen_def = make_definition("orvane.pyfigura._wrpgen");
PyMethodDef g_interop_functions[] = {MANAGED_COLLECTION_METHODS, FAULT_SIGNAL_METHODS, {nullptr, nullptr, 0, nullptr}};
PyModuleDef g_interop_def = [] {
    PyModuleDef def = make_definition("orvane.pyfigura._wrpgen._interop");
    def.m_methods = g_interop_functions;
    return def;
}();
PyModuleDef g_generic_def = make_definition("orvane.pyfigura._wrpgen._generic");

PyObject* create_module(PyModuleDef& def) {
    PyObject* module = PyModule_Create2(&def, PYTHON_API_VERSION);
    if (module == nullptr) raise_module_failure(code_value(InitCode::ModuleCreate), def.m_name);
    return module;
}

const char* module_name(PyObject* module) { return PyModule_GetDef(module)->m_name; }

// Adds `child` under its short name; steals `child` in every case.
int add_child_module(PyObject* parent, PyObject* child, const char* short_name) {
    if (PyModule_AddObject(parent, short_name, child) < 0) {
        raise_module_failure(code_value(InitCode::ModuleAdd), module_name(parent), module_name(child));
        Py_DECREF(child);
        return -1;
    }
    return 0;
}

int ready_all(const TypeList& list) {
    for (size_t i = 0; i < list.count; ++i) {
        if (PyType_Ready(list.types[i]) < 0) {
            raise_type_failure(code_value(InitCode::TypeReady), list.types[i]->tp_name);
            return -1;
        }
    }
    return 0;
}

// Both interface sets of a type hold the same types.
int set_interface_set(PyTypeObject* type, InternedName key, const TypeList& interfaces) {
    PyObject* set = PySet_New(nullptr);
    if (set == nullptr) return -1;
    for (size_t i = 0; i < interfaces.count; ++i) {
        if (PySet_Add(set, reinterpret_cast<PyObject*>(interfaces.types[i])) < 0) {
            Py_DECREF(set);
            return -1;
        }
    }
    int result = PyDict_SetItem(type->tp_dict, interned(key), set);
    Py_DECREF(set);
    return result;
}

int set_interfaces(PyTypeObject* type, const TypeList& interfaces) {
    if (interfaces.count == 0) return 0;
    if (set_interface_set(type, InternedName::AdditionalInterfaces, interfaces) < 0) {
        raise_type_failure(code_value(InitCode::AdditionalInterfacesSet), type->tp_name);
        return -1;
    }
    if (set_interface_set(type, InternedName::ImplicitInterfaces, interfaces) < 0) {
        raise_type_failure(code_value(InitCode::ImplicitInterfacesSet), type->tp_name);
        return -1;
    }
    return 0;
}

int set_host_mark(PyTypeObject* type, HostMark mark) {
    PyObject* value = mark == HostMark::Ellipsis ? Py_Ellipsis : Py_None;
    if (PyDict_SetItem(type->tp_dict, interned(InternedName::OrvaneClrHost), value) < 0) {
        raise_type_failure(code_value(InitCode::HostMarkSet), type->tp_name);
        return -1;
    }
    PyType_Modified(type);
    return 0;
}

int add_type(PyObject* module, PyTypeObject* type, const char* name) {
    Py_INCREF(type);
    if (PyModule_AddObject(module, name, reinterpret_cast<PyObject*>(type)) < 0) {
        raise_type_failure(code_value(InitCode::TypeAdd), module_name(module), type->tp_name);
        Py_DECREF(type);
        return -1;
    }
    return 0;
}

// The attribute name of a capsule is the last component of its full name.
const char* capsule_attribute(const char* full_name) {
    const char* last = full_name;
    for (const char* p = full_name; *p; ++p)
        if (*p == '.') last = p + 1;
    return last;
}

int add_capsule(PyObject* module, ValueCapsule* slot, const ValueCapsule& value, const char* full_name) {
    *slot = value;
    PyObject* capsule = PyCapsule_New(slot, full_name, nullptr);
    if (PyModule_AddObject(module, capsule_attribute(full_name), capsule) < 0) {
        raise_module_failure(code_value(InitCode::CapsuleAdd), module_name(module), full_name);
        Py_XDECREF(capsule);
        return -1;
    }
    return 0;
}

int register_enums(PyObject* module, const ModuleContents& contents) {
    for (size_t i = 0; i < contents.enum_count; ++i) {
        const EnumRegistration& e = contents.enums[i];
        PyObject* enum_type = e.build();
        if (enum_type == nullptr) {
            raise_type_failure(code_value(InitCode::EnumBuild), e.full_name);
            return -1;
        }
        if (PyModule_AddObject(module, e.short_name, enum_type) < 0) {
            raise_type_failure(code_value(InitCode::TypeAdd), module_name(module), e.full_name);
            Py_DECREF(enum_type);
            return -1;
        }
    }
    return 0;
}

int register_class(PyObject* module, const ClassRegistration& c) {
    registry_register(c.managed_name, c.type);
    if (set_interfaces(c.type, c.interfaces) < 0) return -1;
    if (set_host_mark(c.type, c.mark) < 0) return -1;
    if (c.outer != nullptr) {
        if (PyDict_SetItemString(c.outer->tp_dict, c.short_name, reinterpret_cast<PyObject*>(c.type)) < 0) {
            raise_type_failure(code_value(InitCode::TypeAdd), c.outer->tp_name, c.type->tp_name);
            return -1;
        }
        PyType_Modified(c.outer);
    } else if (add_type(module, c.type, c.short_name) < 0) {
        return -1;
    }
    if (c.install_attributes != nullptr && c.install_attributes(c.type) < 0) return -1;
    return add_capsule(module, c.capsule_slot, c.capsule, c.capsule_name);
}

int register_value(PyObject* module, const ValueRegistration& v) {
    if (add_type(module, v.type, v.short_name) < 0) return -1;
    if (v.install_attributes != nullptr && v.install_attributes(v.type) < 0) return -1;
    if (add_capsule(module, v.capsule_v1_slot, v.capsule_v1, v.capsule_v1_name) < 0) return -1;
    return add_capsule(module, v.capsule_slot, v.capsule, v.capsule_name);
}

// Ready in one run, then enumerations, then classes, then value types.
int fill_module(PyObject* module, const ModuleContents& contents) {
    if (ready_all(contents.ready_first) < 0) return -1;
    if (register_enums(module, contents) < 0) return -1;
    for (size_t i = 0; i < contents.class_count; ++i)
        if (register_class(module, contents.classes[i]) < 0) return -1;
    for (size_t i = 0; i < contents.value_count; ++i)
        if (register_value(module, contents.values[i]) < 0) return -1;
    return 0;
}

PyObject* create_filled_module(PyModuleDef& def, const ModuleContents& contents) {
    PyObject* module = create_module(def);
    if (module == nullptr) return nullptr;
    if (fill_module(module, contents) < 0) {
        Py_DECREF(module);
        return nullptr;
    }
    return module;
}

int register_interop_type(PyObject* module, const InteropRegistration& r) {
    if (set_interfaces(r.type, r.interfaces) < 0) return -1;
    if (r.marked && set_host_mark(r.type, HostMark::None) < 0) return -1;
    return add_type(module, r.type, r.short_name);
}

PyObject* create_interop_module() {
    PyObject* module = create_module(g_interop_def);
    if (module == nullptr) return nullptr;
    for (size_t i = 0; i < kInteropContents.count; ++i) {
        const InteropRegistration& r = kInteropContents.types[i];
        PyTypeObject* one[] = {r.type};
        if (ready_all(TypeList{one, 1}) < 0 || register_interop_type(module, r) < 0) {
            Py_DECREF(module);
            return nullptr;
        }
    }
    return module;
}

PyObject* create_generic_module() {
    PyObject* module = create_module(g_generic_def);
    if (module == nullptr) return nullptr;
    if (ready_all(kGenericContents.ready_first) < 0) {
        Py_DECREF(module);
        return nullptr;
    }
    for (size_t i = 0; i < kGenericContents.count; ++i) {
        if (register_interop_type(module, kGenericContents.types[i]) < 0) {
            Py_DECREF(module);
            return nullptr;
        }
    }
    return module;
}

}  // namespace

int ready_and_add_type(PyObject* module, PyTypeObject* type, const char* name) {
    if (PyType_Ready(type) < 0) {
        raise_type_failure(code_value(InitCode::TypeReady), type->tp_name);
        return -1;
    }
    return add_type(module, type, name);
}

PyObject* create_root_module() {
    PyObject* root = create_module(g_root_def);
    if (root == nullptr) return nullptr;
    for (size_t i = 0; kRootDescriptorTypes[i] != nullptr; ++i) {
        if (ready_and_add_type(root, kRootDescriptorTypes[i], kRootDescriptorNames[i]) < 0) {
            Py_DECREF(root);
            return nullptr;
        }
    }
    static_assert(kMaxSubModules >= 5, "room for the sub-modules of the description");
    for (size_t i = 0; i < kSubModuleCount && i < kMaxSubModules; ++i) {
        const SubModuleRow& sub = kSubModules[i];
        g_sub_defs[i] = make_definition(sub.name);
        PyObject* child = create_filled_module(g_sub_defs[i], *sub.contents);
        if (child == nullptr || add_child_module(root, child, sub.short_name) < 0) {
            Py_DECREF(root);
            return nullptr;
        }
    }
    if (fill_module(root, kRootContents) < 0) {
        Py_DECREF(root);
        return nullptr;
    }
    return root;
}

int create_wrpgen_module(PyObject* root) {
    PyObject* wrpgen = create_module(g_wrpgen_def);
    if (wrpgen == nullptr) return -1;
    // Added at once, before it holds anything; the root keeps it alive from here on.
    Py_INCREF(wrpgen);
    if (add_child_module(root, wrpgen, "_wrpgen") < 0) {
        Py_DECREF(wrpgen);
        return -1;
    }
    PyObject* interop = create_interop_module();
    if (interop == nullptr || add_child_module(wrpgen, interop, "_interop") < 0) {
        Py_DECREF(wrpgen);
        return -1;
    }
    PyObject* generic = create_generic_module();
    if (generic == nullptr || add_child_module(wrpgen, generic, "_generic") < 0) {
        Py_DECREF(wrpgen);
        return -1;
    }
    Py_DECREF(wrpgen);
    return 0;
}
