// Point and PointF: native construction, equality, empty, converters, wrap functions and capsule slots.
#include "values/value_types.h"

namespace {

bool same_point(const PointValue& a, const PointValue& b) { return a.x == b.x && a.y == b.y; }
bool same_point_f(const PointFValue& a, const PointFValue& b) { return a.x == b.x && a.y == b.y; }

// Positional forms: (), (int) for both fields, (Size), (x, y); x and y may come as keywords.
int point_positional(PyObject* self, PyObject* args, PyObject*) {
    PointValue& p = record_of<PointValue>(self);
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    if (given == 0) return 0;
    if (given == 2) return PyArg_ParseTuple(args, "ii", &p.x, &p.y) ? 0 : -1;
    if (given != 1) return raise_count_error("0, 1 or 2 arguments is required (%i given)", given);
    PyObject* arg = PyTuple_GET_ITEM(args, 0);
    if (PyLong_Check(arg)) {
        int32_t v;
        if (!read_int_argument(arg, &v)) return -1;
        p.x = p.y = v;
        return 0;
    }
    if (is_instance(arg, &Size_Type)) {
        const SizeValue& s = record_of<SizeValue>(arg);
        p.x = s.width;
        p.y = s.height;
        return 0;
    }
    return raise_got_type("integer or \"Size\" is required (got type '%s')", arg);
}

int point_f_positional(PyObject* self, PyObject* args, PyObject*) {
    PointFValue& p = record_of<PointFValue>(self);
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    if (given == 0) return 0;
    if (given == 2) return PyArg_ParseTuple(args, "dd", &p.x, &p.y) ? 0 : -1;
    return raise_count_error("0 or 2 arguments is required (%i given)", given);
}


constexpr const char* kPointFields0[] = {"x", "y"};
constexpr FieldForm kPointForms[] = {{kPointFields0, 2}};

PyObject* point_repr(PyObject* self) {
    const PointValue& r = record_of<PointValue>(self);
    return call_repr("Point", {PyLong_FromLong(r.x), PyLong_FromLong(r.y)});
}

constexpr const char* kPointFFields0[] = {"x", "y"};
constexpr FieldForm kPointFForms[] = {{kPointFFields0, 2}};

PyObject* point_f_repr(PyObject* self) {
    const PointFValue& r = record_of<PointFValue>(self);
    return call_repr("PointF", {PyFloat_FromDouble(r.x), PyFloat_FromDouble(r.y)});
}

int point_init(PyObject* self, PyObject* args, PyObject* kwargs) {
    return init_with_field_keywords<kPointForms, 1, point_positional>(self, args, kwargs);
}
int point_f_init(PyObject* self, PyObject* args, PyObject* kwargs) {
    return init_with_field_keywords<kPointFForms, 1, point_f_positional>(self, args, kwargs);
}

PyObject* point_new(PyTypeObject* type, PyObject*, PyObject*) { return gated_value_new(type, Point_status()); }
PyObject* point_f_new(PyTypeObject* type, PyObject*, PyObject*) { return gated_value_new(type, PointF_status()); }

}  // namespace

PyTypeObject Point_Type = value_type("orvane.pyfigura.Point", sizeof(ValueObject<PointValue>), point_init, point_new,
                                     compare_values<PointValue, same_point>, Point_methods, Point_getset, Point_doc, point_repr);
PyTypeObject PointF_Type =
    value_type("orvane.pyfigura.PointF", sizeof(ValueObject<PointFValue>), point_f_init, point_f_new,
               compare_values<PointFValue, same_point_f>, PointF_methods, PointF_getset, PointF_doc, point_f_repr);

PyObject* Point_empty(PyObject*, PyObject*) { return PyType_GenericNew(&Point_Type, nullptr, nullptr); }
PyObject* PointF_empty(PyObject*, PyObject*) { return PyType_GenericNew(&PointF_Type, nullptr, nullptr); }

int Point_convert(PyObject* object, void* out) { return convert_value<PointValue>(object, out, &Point_Type); }
int Point_convert_ref(PyObject* object, void* out) { return convert_value_ref<PointValue>(object, out, &Point_Type); }
PyObject* Point_wrap(const void* record) { return wrap_value<PointValue>(record, &Point_Type); }

int PointF_convert(PyObject* object, void* out) { return convert_value<PointFValue>(object, out, &PointF_Type); }
int PointF_convert_ref(PyObject* object, void* out) {
    return convert_value_ref<PointFValue>(object, out, &PointF_Type);
}
PyObject* PointF_wrap(const void* record) { return wrap_value<PointFValue>(record, &PointF_Type); }

ValueCapsule Point_capsule_v1_slot;
ValueCapsule Point_capsule_slot;
ValueCapsule PointF_capsule_v1_slot;
ValueCapsule PointF_capsule_slot;
