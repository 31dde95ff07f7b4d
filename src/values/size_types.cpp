// Size and SizeF: native construction, equality, empty, converters, wrap functions and capsule slots.
#include "values/value_types.h"

namespace {

bool same_size(const SizeValue& a, const SizeValue& b) { return a.width == b.width && a.height == b.height; }
bool same_size_f(const SizeFValue& a, const SizeFValue& b) { return a.width == b.width && a.height == b.height; }

// Positional forms: (), (Point), (width, height); width and height may come as keywords.
int size_positional(PyObject* self, PyObject* args, PyObject*) {
    SizeValue& s = record_of<SizeValue>(self);
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    if (given == 0) return 0;
    if (given == 2) return PyArg_ParseTuple(args, "ii", &s.width, &s.height) ? 0 : -1;
    if (given != 1) return raise_count_error("0, 1 or 2 arguments is required (%i given)", given);
    PyObject* arg = PyTuple_GET_ITEM(args, 0);
    if (!is_instance(arg, &Point_Type)) return raise_got_type("\"Point\" is required (got type '%s')", arg);
    const PointValue& p = record_of<PointValue>(arg);
    s.width = p.x;
    s.height = p.y;
    return 0;
}

// Positional forms: (), (SizeF or PointF), (width, height); the fields may come as keywords.
int size_f_positional(PyObject* self, PyObject* args, PyObject*) {
    SizeFValue& s = record_of<SizeFValue>(self);
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    if (given == 0) return 0;
    if (given == 2) return PyArg_ParseTuple(args, "dd", &s.width, &s.height) ? 0 : -1;
    if (given != 1) return raise_count_error("0, 1 or 2 arguments is required (%i given)", given);
    PyObject* arg = PyTuple_GET_ITEM(args, 0);
    if (is_instance(arg, &SizeF_Type)) {
        s = record_of<SizeFValue>(arg);
        return 0;
    }
    if (is_instance(arg, &PointF_Type)) {
        const PointFValue& p = record_of<PointFValue>(arg);
        s.width = p.x;
        s.height = p.y;
        return 0;
    }
    return raise_got_type("\"SizeF\" or \"PointF\" is required (got type '%s')", arg);
}


constexpr const char* kSizeFields0[] = {"width", "height"};
constexpr FieldForm kSizeForms[] = {{kSizeFields0, 2}};

PyObject* size_repr(PyObject* self) {
    const SizeValue& r = record_of<SizeValue>(self);
    return call_repr("Size", {PyLong_FromLong(r.width), PyLong_FromLong(r.height)});
}

constexpr const char* kSizeFFields0[] = {"width", "height"};
constexpr FieldForm kSizeFForms[] = {{kSizeFFields0, 2}};

PyObject* size_f_repr(PyObject* self) {
    const SizeFValue& r = record_of<SizeFValue>(self);
    return call_repr("SizeF", {PyFloat_FromDouble(r.width), PyFloat_FromDouble(r.height)});
}

int size_init(PyObject* self, PyObject* args, PyObject* kwargs) {
    return init_with_field_keywords<kSizeForms, 1, size_positional>(self, args, kwargs);
}
int size_f_init(PyObject* self, PyObject* args, PyObject* kwargs) {
    return init_with_field_keywords<kSizeFForms, 1, size_f_positional>(self, args, kwargs);
}

PyObject* size_new(PyTypeObject* type, PyObject*, PyObject*) { return gated_value_new(type, Size_status()); }
PyObject* size_f_new(PyTypeObject* type, PyObject*, PyObject*) { return gated_value_new(type, SizeF_status()); }

}  // namespace

PyTypeObject Size_Type = value_type("orvane.pyfigura.Size", sizeof(ValueObject<SizeValue>), size_init, size_new,
                                    compare_values<SizeValue, same_size>, Size_methods, Size_getset, Size_doc, size_repr);
PyTypeObject SizeF_Type = value_type("orvane.pyfigura.SizeF", sizeof(ValueObject<SizeFValue>), size_f_init,
                                     size_f_new, compare_values<SizeFValue, same_size_f>, SizeF_methods, SizeF_getset, SizeF_doc, size_f_repr);

PyObject* Size_empty(PyObject*, PyObject*) { return PyType_GenericNew(&Size_Type, nullptr, nullptr); }
PyObject* SizeF_empty(PyObject*, PyObject*) { return PyType_GenericNew(&SizeF_Type, nullptr, nullptr); }

int Size_convert(PyObject* object, void* out) { return convert_value<SizeValue>(object, out, &Size_Type); }
int Size_convert_ref(PyObject* object, void* out) { return convert_value_ref<SizeValue>(object, out, &Size_Type); }
PyObject* Size_wrap(const void* record) { return wrap_value<SizeValue>(record, &Size_Type); }

int SizeF_convert(PyObject* object, void* out) { return convert_value<SizeFValue>(object, out, &SizeF_Type); }
int SizeF_convert_ref(PyObject* object, void* out) { return convert_value_ref<SizeFValue>(object, out, &SizeF_Type); }
PyObject* SizeF_wrap(const void* record) { return wrap_value<SizeFValue>(record, &SizeF_Type); }

ValueCapsule Size_capsule_v1_slot;
ValueCapsule Size_capsule_slot;
ValueCapsule SizeF_capsule_v1_slot;
ValueCapsule SizeF_capsule_slot;
