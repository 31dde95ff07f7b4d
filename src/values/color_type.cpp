// Color: native construction and equality over the record, empty, converters, wrap function and capsule slots.
#include "values/value_types.h"

namespace {

constexpr int32_t kEmptyState = 1;

// Channels in the order a, r, g, b, then the state word; the bytes are never read as one integer.
bool same_color(const ColorValue& x, const ColorValue& y) {
    return x.a == y.a && x.r == y.r && x.g == y.g && x.b == y.b && x.state == y.state;
}

// Positional arguments only: () is the empty colour; (r, g, b) is opaque; (a, r, g, b). The
// three- and four-argument forms leave the state word as it is.
int color_init(PyObject* self, PyObject* args, PyObject*) {
    ColorValue& c = record_of<ColorValue>(self);
    Py_ssize_t given = PyTuple_GET_SIZE(args);
    if (given == 0) {
        c.state = kEmptyState;
        return 0;
    }
    if (given == 3) {
        if (!PyArg_ParseTuple(args, "bbb", &c.r, &c.g, &c.b)) return -1;
        c.a = 255;
        return 0;
    }
    if (given == 4) return PyArg_ParseTuple(args, "bbbb", &c.a, &c.r, &c.g, &c.b) ? 0 : -1;
    return raise_count_error("0, 3 or 4 arguments is required (%i given)", given);
}

PyObject* color_new(PyTypeObject* type, PyObject*, PyObject*) { return gated_value_new(type, Color_status()); }

}  // namespace

PyTypeObject Color_Type = value_type("orvane.pyfigura.Color", sizeof(ValueObject<ColorValue>), color_init, color_new,
                                     compare_values<ColorValue, same_color>, Color_methods, Color_getset);

// The empty colour, without a managed call and without the readiness check.
PyObject* Color_empty(PyObject*, PyObject*) {
    PyObject* object = PyType_GenericNew(&Color_Type, nullptr, nullptr);
    if (object != nullptr) record_of<ColorValue>(object).state = kEmptyState;
    return object;
}

int Color_convert(PyObject* object, void* out) { return convert_value<ColorValue>(object, out, &Color_Type); }
int Color_convert_ref(PyObject* object, void* out) { return convert_value_ref<ColorValue>(object, out, &Color_Type); }
PyObject* Color_wrap(const void* record) { return wrap_value<ColorValue>(record, &Color_Type); }

ValueCapsule Color_capsule_v1_slot;
ValueCapsule Color_capsule_slot;
