// Classification of a Python value into a variant code, in the order that settles overlaps
// (a bool is an int, a datetime is a date).
#include "interop/variant_marshal.h"

#include <datetime.h>

#include "bridge/wrapper_object.h"
#include "common/dependency_import.h"
#include "common/interned_names.h"

namespace {

// 1 instance, 0 not, -1 error (a failed import).
int is_instance_of(const char* module, InternedName name, PyObject* object) {
    PyObject* type = import_attribute(module, interned(name));
    if (type == nullptr) return -1;
    int result = PyObject_IsInstance(object, type);
    Py_DECREF(type);
    return result;
}

int refuse_variant() {
    PyErr_SetString(PyExc_TypeError, "unknown variant type");
    return 0;
}

// Codes from the decimal, uuid and datetime tests; -1 when none applies, -2 on error.
int classify_library_value(PyObject* object) {
    int found = is_instance_of("decimal", InternedName::DecimalTuple, object);
    if (found != 0) return found > 0 ? kVariantDecimalTuple : -2;
    found = is_instance_of("decimal", InternedName::Decimal, object);
    if (found != 0) return found > 0 ? kVariantDecimal : -2;
    found = is_instance_of("uuid", InternedName::Uuid, object);
    if (found != 0) return found > 0 ? kVariantUuid : -2;
    PyDateTime_IMPORT;
    if (PyDateTimeAPI == nullptr) return -2;
    if (PyDelta_Check(object)) return kVariantTimeDelta;
    if (PyDateTime_Check(object)) return kVariantDateTime;
    if (PyDate_Check(object)) return kVariantDate;
    if (PyTime_Check(object)) return kVariantTime;
    return -1;
}

// The managed side reads a list or tuple recursively, one managed frame per level: nesting deeper than
// Python itself allows (or a list that contains itself) is refused here, with Python's RecursionError,
// before it can overflow the managed stack. Only containers are walked; their other items cost a test.
int check_nesting(PyObject* container) {
    if (Py_EnterRecursiveCall(" while passing a nested list or tuple to managed code")) return 0;
    const Py_ssize_t count = PySequence_Fast_GET_SIZE(container);
    PyObject** items = PySequence_Fast_ITEMS(container);
    int ok = 1;
    for (Py_ssize_t i = 0; i < count && ok; ++i) {
        PyObject* item = items[i];
        if (PyList_CheckExact(item) || PyTuple_CheckExact(item)) ok = check_nesting(item);
    }
    Py_LeaveRecursiveCall();
    return ok;
}

}  // namespace

int convert_variant(PyObject* object, void* output) {
    VariantArg* out = static_cast<VariantArg*>(output);
    out->value = reinterpret_cast<uint64_t>(object);
    if (object == Py_None) {
        out->code = kVariantNone;
        return 1;
    }
    if (PyBool_Check(object)) {
        out->code = kVariantBool;
        return 1;
    }
    if (PyLong_Check(object)) {
        out->code = kVariantInt;
        return 1;
    }
    if (PyFloat_Check(object)) {
        out->code = kVariantFloat;
        return 1;
    }
    int code = classify_library_value(object);
    if (code == -2) return 0;
    if (code >= 0) {
        out->code = code;
        return 1;
    }
    if (PyUnicode_Check(object)) {
        out->code = kVariantString;
        return 1;
    }
    PyTypeObject* type = Py_TYPE(object);
    if ((PyBytes_Check(object) || PyByteArray_Check(object) || Py_IS_TYPE(object, &PyMemoryView_Type)) &&
        type->tp_as_buffer != nullptr && type->tp_as_buffer->bf_getbuffer != nullptr) {
        out->code = kVariantBytes;
        return 1;
    }
    if (PyList_CheckExact(object)) {
        out->code = kVariantList;
        return check_nesting(object);
    }
    if (PyTuple_CheckExact(object)) {
        out->code = kVariantTuple;
        return check_nesting(object);
    }
    int32_t kind;
    if (recognise_by_slot(object, &kind) || recognise_by_mark(object, &kind)) {
        InstanceHandle handle = handle_of(object);
        if (handle == 0) return refuse_variant();
        out->code = kind + 1;
        out->value = handle;
        return 1;
    }
    return refuse_variant();
}
