// The field descriptor, the mixed method descriptor and the method object types, and the class attribute installer.
#include "bridge/descriptors.h"

#include <climits>
#include <cstddef>
#include <cstdint>

#include "common/init_failures.h"

namespace {

struct FieldDescrObject {
    PyObject_HEAD
    PyTypeObject* owner;
    PyGetSetDef* definition;
};

struct MixMethodDescrObject {
    PyObject_HEAD
    PyTypeObject* owner;
    PyObject* static_method;
    PyMethodDef* instance_definition;
};

struct MethodObject;
using MethodCaller = PyObject* (*)(MethodObject*, PyObject*, PyObject*);

struct MethodObject {
    PyObject_HEAD
    PyMethodDef* definition;
    PyObject* self;
    PyObject* weak_references;
    PyTypeObject* owner;
    MethodCaller call;
};

FieldDescrObject* as_field(PyObject* object) { return reinterpret_cast<FieldDescrObject*>(object); }
MixMethodDescrObject* as_mix(PyObject* object) { return reinterpret_cast<MixMethodDescrObject*>(object); }
MethodObject* as_method(PyObject* object) { return reinterpret_cast<MethodObject*>(object); }

// A row's doc as the __doc__ value: the text, or None when there is none.
PyObject* doc_or_none(const char* doc) {
    if (doc == nullptr || doc[0] == '\0') {
        Py_RETURN_NONE;
    }
    return PyUnicode_FromString(doc);
}

// A null argument stands for the None that the interpreter turned into null on the way in.
const char* type_name_of(PyObject* object) {
    return object != nullptr ? Py_TYPE(object)->tp_name : Py_TYPE(Py_None)->tp_name;
}

PyObject* raise_needs_a_type(const char* name, PyObject* type) {
    PyErr_Format(PyExc_TypeError, "descriptor '%s' needs a type, not '%s', as arg 2", name,
                 type_name_of(type));
    return nullptr;
}

// Generated rows keep the slot function's own signature; every row is called with three arguments.
PyCFunctionWithKeywords row_function(const PyMethodDef* definition) {
    return reinterpret_cast<PyCFunctionWithKeywords>(reinterpret_cast<void (*)()>(definition->ml_meth));
}

// The interpreter's pointer hash: the address rotated right by 4 bits, -1 taken as -2.
Py_hash_t rotated_address(const void* address) {
    constexpr int kBits = sizeof(void*) * CHAR_BIT;
    auto value = reinterpret_cast<uintptr_t>(address);
    value = (value >> 4) | (value << (kBits - 4));
    auto hash = static_cast<Py_hash_t>(value);
    return hash == -1 ? -2 : hash;
}

// ---- _FieldDescrType ------------------------------------------------------------------------

PyObject* field_descr_get(PyObject* descriptor, PyObject* instance, PyObject* type) {
    PyGetSetDef* definition = as_field(descriptor)->definition;
    if (type == nullptr && instance != nullptr) {
        // __get__(instance) with one argument: the instance's type stands for the missing one.
        type = reinterpret_cast<PyObject*>(Py_TYPE(instance));
    }
    if (type == nullptr || !PyType_Check(type)) {
        return raise_needs_a_type(definition->name, type);
    }
    return definition->get(nullptr, definition->closure);
}

PyObject* field_descr_repr(PyObject* descriptor) {
    FieldDescrObject* field = as_field(descriptor);
    return PyUnicode_FromFormat("<attribute '%s' of '%s' objects>", field->definition->name,
                                field->owner->tp_name);
}

PyObject* field_descr_doc(PyObject* descriptor, void*) {
    return doc_or_none(as_field(descriptor)->definition->doc);
}

int field_descr_traverse(PyObject* descriptor, visitproc visit, void* arg) {
    Py_VISIT(reinterpret_cast<PyObject*>(as_field(descriptor)->owner));
    return 0;
}

void field_descr_dealloc(PyObject* descriptor) {
    PyObject_GC_UnTrack(descriptor);
    Py_XDECREF(reinterpret_cast<PyObject*>(as_field(descriptor)->owner));
    PyObject_GC_Del(descriptor);
}

PyGetSetDef field_descr_getset[] = {
    {"__doc__", field_descr_doc, nullptr, nullptr, nullptr},
    {nullptr},
};

PyTypeObject make_field_descr_type() {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "orvane.pyfigura._FieldDescrType";
    type.tp_basicsize = sizeof(FieldDescrObject);
    type.tp_dealloc = field_descr_dealloc;
    type.tp_repr = field_descr_repr;
    type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC;
    type.tp_traverse = field_descr_traverse;
    type.tp_getset = field_descr_getset;
    type.tp_descr_get = field_descr_get;
    return type;
}

// ---- _MixMethodDescrType --------------------------------------------------------------------

PyObject* mix_descr_get(PyObject* descriptor, PyObject* instance, PyObject* type) {
    MixMethodDescrObject* mix = as_mix(descriptor);
    const char* name = mix->instance_definition->ml_name;
    if (instance == nullptr) {
        if (type != nullptr && PyType_Check(type)) {
            Py_INCREF(mix->static_method);
            return mix->static_method;
        }
        return raise_needs_a_type(name, type);
    }
    if (!PyObject_TypeCheck(instance, mix->owner)) {
        PyErr_Format(PyExc_TypeError, "descriptor '%s' for '%.100s' objects doesn't apply to a '%.100s' object",
                     name, mix->owner->tp_name, Py_TYPE(instance)->tp_name);
        return nullptr;
    }
    return make_method_object(mix->owner, mix->instance_definition, instance);
}

PyObject* mix_descr_repr(PyObject* descriptor) {
    MixMethodDescrObject* mix = as_mix(descriptor);
    return PyUnicode_FromFormat("<method '%s' of '%s' objects>", mix->instance_definition->ml_name,
                                mix->owner->tp_name);
}

PyObject* mix_descr_doc(PyObject* descriptor, void*) {
    return doc_or_none(as_mix(descriptor)->instance_definition->ml_doc);
}

int mix_descr_traverse(PyObject* descriptor, visitproc visit, void* arg) {
    MixMethodDescrObject* mix = as_mix(descriptor);
    Py_VISIT(reinterpret_cast<PyObject*>(mix->owner));
    Py_VISIT(mix->static_method);
    return 0;
}

void mix_descr_dealloc(PyObject* descriptor) {
    MixMethodDescrObject* mix = as_mix(descriptor);
    PyObject_GC_UnTrack(descriptor);
    Py_XDECREF(reinterpret_cast<PyObject*>(mix->owner));
    Py_XDECREF(mix->static_method);
    PyObject_GC_Del(descriptor);
}

PyGetSetDef mix_descr_getset[] = {
    {"__doc__", mix_descr_doc, nullptr, nullptr, nullptr},
    {nullptr},
};

PyTypeObject make_mix_descr_type() {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "orvane.pyfigura._MixMethodDescrType";
    type.tp_basicsize = sizeof(MixMethodDescrObject);
    type.tp_dealloc = mix_descr_dealloc;
    type.tp_repr = mix_descr_repr;
    type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC;
    type.tp_traverse = mix_descr_traverse;
    type.tp_getset = mix_descr_getset;
    type.tp_descr_get = mix_descr_get;
    return type;
}

// ---- _MethodObjectType ----------------------------------------------------------------------

PyObject* call_with_keywords(MethodObject* method, PyObject* args, PyObject* kwargs) {
    return row_function(method->definition)(method->self, args, kwargs);
}

// Refuses arguments by raising, yet runs the function all the same: the function's own
// PyErr_Occurred check after its work turns the pending error into the call's failure.
PyObject* call_without_arguments(MethodObject* method, PyObject* args, PyObject* kwargs) {
    const char* name = method->definition->ml_name;
    if (args != nullptr && PyTuple_GET_SIZE(args) != 0) {
        PyErr_Format(PyExc_TypeError, "%.200s() takes no arguments (%zd given)", name, PyTuple_GET_SIZE(args));
    }
    if (kwargs != nullptr && PyDict_GET_SIZE(kwargs) != 0) {
        PyErr_Format(PyExc_TypeError, "%.200s() takes no keyword arguments", name);
    }
    return row_function(method->definition)(method->self, args, kwargs);
}

PyObject* method_call(PyObject* object, PyObject* args, PyObject* kwargs) {
    MethodObject* method = as_method(object);
    return method->call(method, args, kwargs);
}

PyObject* method_repr(PyObject* object) {
    MethodObject* method = as_method(object);
    const char* name = method->definition->ml_name;
    if (method->self == nullptr) {
        return PyUnicode_FromFormat("<extension function %s>", name);
    }
    return PyUnicode_FromFormat("<extension method %s of %s object at %p>", name,
                                Py_TYPE(method->self)->tp_name, method->self);
}

PyObject* method_richcompare(PyObject* left, PyObject* right, int op) {
    if ((op != Py_EQ && op != Py_NE) || Py_TYPE(left) != &MethodObjectType || Py_TYPE(right) != &MethodObjectType) {
        Py_RETURN_NOTIMPLEMENTED;
    }
    MethodObject* a = as_method(left);
    MethodObject* b = as_method(right);
    bool equal = a->self == b->self && a->definition->ml_meth == b->definition->ml_meth;
    return PyBool_FromLong((op == Py_EQ) == equal);
}

Py_hash_t method_hash(PyObject* object) {
    MethodObject* method = as_method(object);
    Py_hash_t hash = rotated_address(reinterpret_cast<const void*>(method->definition->ml_meth)) ^
                     rotated_address(method->self);
    return hash == -1 ? -2 : hash;
}

PyObject* method_doc(PyObject* object, void*) {
    return doc_or_none(as_method(object)->definition->ml_doc);
}

int method_traverse(PyObject* object, visitproc visit, void* arg) {
    MethodObject* method = as_method(object);
    Py_VISIT(reinterpret_cast<PyObject*>(method->owner));
    Py_VISIT(method->self);
    return 0;
}

void method_dealloc(PyObject* object) {
    MethodObject* method = as_method(object);
    PyObject_GC_UnTrack(object);
    if (method->weak_references != nullptr) {
        PyObject_ClearWeakRefs(object);
    }
    Py_XDECREF(reinterpret_cast<PyObject*>(method->owner));
    Py_XDECREF(method->self);
    PyObject_GC_Del(object);
}

PyGetSetDef method_getset[] = {
    {"__doc__", method_doc, nullptr, nullptr, nullptr},
    {nullptr},
};

PyTypeObject make_method_object_type() {
    PyTypeObject type = {PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "orvane.pyfigura._MethodObjectType";
    type.tp_basicsize = sizeof(MethodObject);
    type.tp_dealloc = method_dealloc;
    type.tp_repr = method_repr;
    type.tp_hash = method_hash;
    type.tp_call = method_call;
    type.tp_flags = Py_TPFLAGS_DEFAULT | Py_TPFLAGS_HAVE_GC;
    type.tp_traverse = method_traverse;
    type.tp_richcompare = method_richcompare;
    type.tp_weaklistoffset = offsetof(MethodObject, weak_references);
    type.tp_getset = method_getset;
    return type;
}

}  // namespace

PyTypeObject FieldDescrType = make_field_descr_type();
PyTypeObject MixMethodDescrType = make_mix_descr_type();
PyTypeObject MethodObjectType = make_method_object_type();

PyObject* make_field_descriptor(PyTypeObject* owner, PyGetSetDef* definition) {
    FieldDescrObject* field = PyObject_GC_New(FieldDescrObject, &FieldDescrType);
    if (field == nullptr) {
        return nullptr;
    }
    Py_INCREF(reinterpret_cast<PyObject*>(owner));
    field->owner = owner;
    field->definition = definition;
    PyObject_GC_Track(field);
    return reinterpret_cast<PyObject*>(field);
}

PyObject* make_mix_descriptor(PyTypeObject* owner, PyMethodDef* static_definition,
                              PyMethodDef* instance_definition) {
    PyObject* static_method = make_method_object(owner, static_definition, nullptr);
    if (static_method == nullptr) {
        return nullptr;
    }
    MixMethodDescrObject* mix = PyObject_GC_New(MixMethodDescrObject, &MixMethodDescrType);
    if (mix == nullptr) {
        Py_DECREF(static_method);
        return nullptr;
    }
    Py_INCREF(reinterpret_cast<PyObject*>(owner));
    mix->owner = owner;
    mix->static_method = static_method;
    mix->instance_definition = instance_definition;
    PyObject_GC_Track(mix);
    return reinterpret_cast<PyObject*>(mix);
}

PyObject* make_method_object(PyTypeObject* owner, PyMethodDef* definition, PyObject* self) {
    // Readied on first use: method objects then have attribute access (__doc__) and a usable type.
    if (!(MethodObjectType.tp_flags & Py_TPFLAGS_READY) && PyType_Ready(&MethodObjectType) < 0) {
        return nullptr;
    }
    MethodObject* method = PyObject_GC_New(MethodObject, &MethodObjectType);
    if (method == nullptr) {
        return nullptr;
    }
    method->definition = definition;
    method->call = (definition->ml_flags & METH_NOARGS) ? call_without_arguments : call_with_keywords;
    Py_INCREF(reinterpret_cast<PyObject*>(owner));
    method->owner = owner;
    Py_XINCREF(self);
    method->self = self;
    method->weak_references = nullptr;
    PyObject_GC_Track(method);
    return reinterpret_cast<PyObject*>(method);
}

int install_class_attribute(PyTypeObject* type, const char* name, PyObject* descriptor) {
    PyObject* dictionary = type->tp_dict;
    if (descriptor == nullptr || dictionary == nullptr ||
        PyDict_SetItemString(dictionary, name, descriptor) < 0) {
        raise_type_failure(code_value(InitCode::ClassAttributeStore), type->tp_name, name);
        Py_XDECREF(descriptor);
        return -1;
    }
    Py_DECREF(descriptor);
    PyType_Modified(type);
    return 0;
}
