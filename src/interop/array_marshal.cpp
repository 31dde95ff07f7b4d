// The typed-array argument converter: wrappers by handle, lists and sequences borrowed for the call.
#include "interop/array_marshal.h"

#include "values/value_types.h"

namespace {

int refuse_array(PyObject* object) {
    PyErr_Format(PyExc_TypeError, "can't build Array value from '%s'", Py_TYPE(object)->tp_name);
    return 0;
}

// A wrapper of another type: accepted only when the managed side says the object is such an array.
int convert_foreign_wrapper(PyObject* object, ArrayArg* out, AssignableGetter is_assignable) {
    IsAssignableByHandle assignable = is_assignable();
    if (assignable == nullptr) return refuse_array(object);
    InstanceHandle handle = handle_of(object);
    uint8_t answer = assignable(handle);
    if (PyErr_Occurred()) return 0;
    if (answer == 0) return refuse_array(object);
    out->kind = kArrayHandle;
    out->value = handle;
    return 1;
}

}  // namespace

int convert_array_arg(PyObject* object, ArrayArg* out, PyTypeObject* own_type, AssignableGetter is_assignable) {
    // An exact list can carry no host mark, so it takes its branch at once.
    if (PyList_CheckExact(object)) {
        out->kind = kArrayList;
        out->value = reinterpret_cast<uint64_t>(object);
        return 1;
    }
    if (object == Py_None) {
        out->kind = kArrayHandle;
        out->value = 0;
        return 1;
    }
    PyTypeObject* type = Py_TYPE(object);
    if (own_type != nullptr && (type == own_type || PyType_IsSubtype(type, own_type))) {
        out->kind = kArrayHandle;
        out->value = handle_of(object);
        return 1;
    }
    int32_t instance_kind;
    if (recognise_by_mark(object, &instance_kind)) return convert_foreign_wrapper(object, out, is_assignable);
    if (PyType_HasFeature(type, Py_TPFLAGS_LIST_SUBCLASS)) {
        out->kind = kArrayList;
        out->value = reinterpret_cast<uint64_t>(object);
        return 1;
    }
    if (PySequence_Check(object) && type->tp_as_sequence->sq_length != nullptr) {
        out->kind = kArraySequence;
        out->value = reinterpret_cast<uint64_t>(object);
        return 1;
    }
    return refuse_array(object);
}

int convert_pointf_element(PyObject* object, void* out) {
    if (Py_IS_TYPE(object, &Point_Type)) {
        const PointValue& point = record_of<PointValue>(object);
        *static_cast<PointFValue*>(out) = PointFValue{static_cast<double>(point.x), static_cast<double>(point.y)};
        return 1;
    }
    return PointF_convert(object, out);
}

int convert_rectanglef_element(PyObject* object, void* out) {
    if (Py_IS_TYPE(object, &Rectangle_Type)) {
        const RectangleValue& r = record_of<RectangleValue>(object);
        *static_cast<RectangleFValue*>(out) = RectangleFValue{static_cast<double>(r.x), static_cast<double>(r.y),
                                                              static_cast<double>(r.width),
                                                              static_cast<double>(r.height)};
        return 1;
    }
    return RectangleF_convert(object, out);
}
