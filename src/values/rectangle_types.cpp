// Rectangle and RectangleF: native construction, equality, the derived attributes, converters, wrap functions, capsule slots.
#include "values/value_types.h"

namespace {

bool same_rectangle(const RectangleValue& a, const RectangleValue& b) {
    return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}
bool same_rectangle_f(const RectangleFValue& a, const RectangleFValue& b) {
    return a.x == b.x && a.y == b.y && a.width == b.width && a.height == b.height;
}

int raise_pair_types(const char* format, PyObject* first, PyObject* second) {
    PyErr_Format(PyExc_TypeError, format, Py_TYPE(first)->tp_name, Py_TYPE(second)->tp_name);
    return -1;
}

// Positional forms: (), (Point, Size), (x, y, width, height); the four fields may come as keywords.
int rectangle_positional(PyObject* self, PyObject* args, PyObject*) {
    RectangleValue& r = record_of<RectangleValue>(self);
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    if (given == 0) return 0;
    if (given == 4) return PyArg_ParseTuple(args, "iiii", &r.x, &r.y, &r.width, &r.height) ? 0 : -1;
    if (given != 2) return raise_count_error("0, 2 or 4 arguments is required (%i given)", given);
    PyObject* location = PyTuple_GET_ITEM(args, 0);
    PyObject* size = PyTuple_GET_ITEM(args, 1);
    if (!is_instance(location, &Point_Type) || !is_instance(size, &Size_Type))
        return raise_pair_types("\"Point\" and \"Size\" is required (got type '%s and %s')", location, size);
    r.x = record_of<PointValue>(location).x;
    r.y = record_of<PointValue>(location).y;
    r.width = record_of<SizeValue>(size).width;
    r.height = record_of<SizeValue>(size).height;
    return 0;
}

int rectangle_f_positional(PyObject* self, PyObject* args, PyObject*) {
    RectangleFValue& r = record_of<RectangleFValue>(self);
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    if (given == 0) return 0;
    if (given == 4) return PyArg_ParseTuple(args, "dddd", &r.x, &r.y, &r.width, &r.height) ? 0 : -1;
    if (given != 2)
        return raise_count_error("function takes 0 () or 4 (x y width height) arguments (%i given)", given);
    PyObject* location = PyTuple_GET_ITEM(args, 0);
    PyObject* size = PyTuple_GET_ITEM(args, 1);
    if (!is_instance(location, &PointF_Type) || !is_instance(size, &SizeF_Type))
        return raise_pair_types("\"PointF\" and \"SizeF\" is required (got type '%s and %s')", location, size);
    r.x = record_of<PointFValue>(location).x;
    r.y = record_of<PointFValue>(location).y;
    r.width = record_of<SizeFValue>(size).width;
    r.height = record_of<SizeFValue>(size).height;
    return 0;
}


constexpr const char* kRectangleFields0[] = {"x", "y", "width", "height"};
constexpr FieldForm kRectangleForms[] = {{kRectangleFields0, 4}};

PyObject* rectangle_repr(PyObject* self) {
    const RectangleValue& r = record_of<RectangleValue>(self);
    return call_repr("Rectangle", {PyLong_FromLong(r.x), PyLong_FromLong(r.y), PyLong_FromLong(r.width), PyLong_FromLong(r.height)});
}

constexpr const char* kRectangleFFields0[] = {"x", "y", "width", "height"};
constexpr FieldForm kRectangleFForms[] = {{kRectangleFFields0, 4}};

PyObject* rectangle_f_repr(PyObject* self) {
    const RectangleFValue& r = record_of<RectangleFValue>(self);
    return call_repr("RectangleF", {PyFloat_FromDouble(r.x), PyFloat_FromDouble(r.y), PyFloat_FromDouble(r.width), PyFloat_FromDouble(r.height)});
}

int rectangle_init(PyObject* self, PyObject* args, PyObject* kwargs) {
    return init_with_field_keywords<kRectangleForms, 1, rectangle_positional>(self, args, kwargs);
}
int rectangle_f_init(PyObject* self, PyObject* args, PyObject* kwargs) {
    return init_with_field_keywords<kRectangleFForms, 1, rectangle_f_positional>(self, args, kwargs);
}

PyObject* rectangle_new(PyTypeObject* type, PyObject*, PyObject*) { return gated_value_new(type, Rectangle_status()); }
PyObject* rectangle_f_new(PyTypeObject* type, PyObject*, PyObject*) {
    return gated_value_new(type, RectangleF_status());
}

// A setter's value must be an instance of `type`; deleting is refused.
bool setter_accepts(PyObject* value, PyTypeObject* type, const char* format) {
    if (value == nullptr) {
        refuse_attribute_delete();
        return false;
    }
    if (is_instance(value, type)) return true;
    raise_got_type(format, value);
    return false;
}

// 32-bit addition that wraps around, as the managed Right and Bottom do.
int32_t wrapping_sum(int32_t a, int32_t b) {
    return static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
}

}  // namespace

PyTypeObject Rectangle_Type =
    value_type("orvane.pyfigura.Rectangle", sizeof(ValueObject<RectangleValue>), rectangle_init, rectangle_new,
               compare_values<RectangleValue, same_rectangle>, Rectangle_methods, Rectangle_getset, Rectangle_doc, rectangle_repr);
PyTypeObject RectangleF_Type =
    value_type("orvane.pyfigura.RectangleF", sizeof(ValueObject<RectangleFValue>), rectangle_f_init, rectangle_f_new,
               compare_values<RectangleFValue, same_rectangle_f>, RectangleF_methods, RectangleF_getset, RectangleF_doc, rectangle_f_repr);

PyObject* Rectangle_empty(PyObject*, PyObject*) { return PyType_GenericNew(&Rectangle_Type, nullptr, nullptr); }
PyObject* RectangleF_empty(PyObject*, PyObject*) { return PyType_GenericNew(&RectangleF_Type, nullptr, nullptr); }

// --- Rectangle: location and size are new objects on each read; left/top/right/bottom are read-only.
PyObject* Rectangle_get_location(PyObject* self, void*) {
    const RectangleValue& r = record_of<RectangleValue>(self);
    PointValue p{r.x, r.y};
    return Point_wrap(&p);
}

int Rectangle_set_location(PyObject* self, PyObject* value, void*) {
    if (!setter_accepts(value, &Point_Type, "\"Point\" is required (got type '%s')")) return -1;
    record_of<RectangleValue>(self).x = record_of<PointValue>(value).x;
    record_of<RectangleValue>(self).y = record_of<PointValue>(value).y;
    return 0;
}

PyObject* Rectangle_get_size(PyObject* self, void*) {
    const RectangleValue& r = record_of<RectangleValue>(self);
    SizeValue s{r.width, r.height};
    return Size_wrap(&s);
}

int Rectangle_set_size(PyObject* self, PyObject* value, void*) {
    if (!setter_accepts(value, &Size_Type, "\"Size\" is required (got type '%s')")) return -1;
    record_of<RectangleValue>(self).width = record_of<SizeValue>(value).width;
    record_of<RectangleValue>(self).height = record_of<SizeValue>(value).height;
    return 0;
}

PyObject* Rectangle_get_left(PyObject* self, void*) { return PyLong_FromLong(record_of<RectangleValue>(self).x); }
PyObject* Rectangle_get_top(PyObject* self, void*) { return PyLong_FromLong(record_of<RectangleValue>(self).y); }

PyObject* Rectangle_get_right(PyObject* self, void*) {
    const RectangleValue& r = record_of<RectangleValue>(self);
    return PyLong_FromLong(wrapping_sum(r.x, r.width));
}

PyObject* Rectangle_get_bottom(PyObject* self, void*) {
    const RectangleValue& r = record_of<RectangleValue>(self);
    return PyLong_FromLong(wrapping_sum(r.y, r.height));
}

// --- RectangleF: the same over doubles.
PyObject* RectangleF_get_location(PyObject* self, void*) {
    const RectangleFValue& r = record_of<RectangleFValue>(self);
    PointFValue p{r.x, r.y};
    return PointF_wrap(&p);
}

int RectangleF_set_location(PyObject* self, PyObject* value, void*) {
    if (!setter_accepts(value, &PointF_Type, "\"PointF\" is required (got type '%s')")) return -1;
    record_of<RectangleFValue>(self).x = record_of<PointFValue>(value).x;
    record_of<RectangleFValue>(self).y = record_of<PointFValue>(value).y;
    return 0;
}

PyObject* RectangleF_get_size(PyObject* self, void*) {
    const RectangleFValue& r = record_of<RectangleFValue>(self);
    SizeFValue s{r.width, r.height};
    return SizeF_wrap(&s);
}

int RectangleF_set_size(PyObject* self, PyObject* value, void*) {
    if (!setter_accepts(value, &SizeF_Type, "\"SizeF\" is required (got type '%s')")) return -1;
    record_of<RectangleFValue>(self).width = record_of<SizeFValue>(value).width;
    record_of<RectangleFValue>(self).height = record_of<SizeFValue>(value).height;
    return 0;
}

PyObject* RectangleF_get_left(PyObject* self, void*) { return PyFloat_FromDouble(record_of<RectangleFValue>(self).x); }
PyObject* RectangleF_get_top(PyObject* self, void*) { return PyFloat_FromDouble(record_of<RectangleFValue>(self).y); }

PyObject* RectangleF_get_right(PyObject* self, void*) {
    const RectangleFValue& r = record_of<RectangleFValue>(self);
    return PyFloat_FromDouble(r.x + r.width);
}

PyObject* RectangleF_get_bottom(PyObject* self, void*) {
    const RectangleFValue& r = record_of<RectangleFValue>(self);
    return PyFloat_FromDouble(r.y + r.height);
}

// --- converters, wrap functions, capsule slots
int Rectangle_convert(PyObject* object, void* out) {
    return convert_value<RectangleValue>(object, out, &Rectangle_Type);
}
int Rectangle_convert_ref(PyObject* object, void* out) {
    return convert_value_ref<RectangleValue>(object, out, &Rectangle_Type);
}
PyObject* Rectangle_wrap(const void* record) { return wrap_value<RectangleValue>(record, &Rectangle_Type); }

int RectangleF_convert(PyObject* object, void* out) {
    return convert_value<RectangleFValue>(object, out, &RectangleF_Type);
}
int RectangleF_convert_ref(PyObject* object, void* out) {
    return convert_value_ref<RectangleFValue>(object, out, &RectangleF_Type);
}
PyObject* RectangleF_wrap(const void* record) { return wrap_value<RectangleFValue>(record, &RectangleF_Type); }

ValueCapsule Rectangle_capsule_v1_slot;
ValueCapsule Rectangle_capsule_slot;
ValueCapsule RectangleF_capsule_v1_slot;
ValueCapsule RectangleF_capsule_slot;
