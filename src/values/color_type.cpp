// Color: native construction and equality over the record, empty, converters, wrap function and capsule slots.
#include "values/value_types.h"

#include <string>

namespace {

constexpr int32_t kEmptyState = 1;

// Channels in the order a, r, g, b, then the state word; the bytes are never read as one integer.
bool same_color(const ColorValue& x, const ColorValue& y) {
    return x.a == y.a && x.r == y.r && x.g == y.g && x.b == y.b && x.state == y.state;
}

// Positional forms: () is the empty colour; (r, g, b) is opaque; (a, r, g, b). The three- and
// four-argument forms leave the state word as it is; their channels may come as keywords.
int color_positional(PyObject* self, PyObject* args, PyObject*) {
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

constexpr const char* kOpaqueFields[] = {"r", "g", "b"};
constexpr const char* kChannelFields[] = {"a", "r", "g", "b"};
constexpr FieldForm kColorForms[] = {{kOpaqueFields, 3}, {kChannelFields, 4}};

int color_init(PyObject* self, PyObject* args, PyObject* kwargs) {
    return init_with_field_keywords<kColorForms, 2, color_positional>(self, args, kwargs);
}

// "AliceBlue" -> "alice_blue", or upper case for the KnownColor member ("ALICE_BLUE").
PyObject* snake_name(PyObject* managed_name, bool upper) {
    const char* text = PyUnicode_AsUTF8(managed_name);
    if (text == nullptr) return nullptr;
    std::string out;
    for (const char* p = text; *p; ++p) {
        bool capital = *p >= 'A' && *p <= 'Z';
        if (capital && p != text) out += '_';
        char lower = capital ? static_cast<char>(*p - 'A' + 'a') : *p;
        out += upper && lower >= 'a' && lower <= 'z' ? static_cast<char>(lower - 'a' + 'A') : lower;
    }
    return PyUnicode_FromStringAndSize(out.data(), static_cast<Py_ssize_t>(out.size()));
}

bool flag_of(PyObject* self, const char* attribute, bool* out) {
    PyObject* value = PyObject_GetAttrString(self, attribute);
    int truth = value ? PyObject_IsTrue(value) : -1;
    Py_XDECREF(value);
    *out = truth > 0;
    return truth >= 0;
}

// Known colours by the class attribute that holds them (Color.red) or through KnownColor, other
// named colours through from_name, the rest by their channels: each evaluates to an equal colour.
PyObject* named_color_repr(PyObject* self, bool known) {
    PyObject* name = PyObject_GetAttrString(self, "name");
    if (name == nullptr) return nullptr;
    PyObject* result = nullptr;
    if (!known) {
        result = PyUnicode_FromFormat("Color.from_name(%R)", name);
    } else if (PyObject* attribute = snake_name(name, false)) {
        PyObject* held = PyObject_GetAttr(reinterpret_cast<PyObject*>(&Color_Type), attribute);
        int same = held ? PyObject_RichCompareBool(held, self, Py_EQ) : 0;
        PyErr_Clear();
        Py_XDECREF(held);
        if (same > 0) {
            result = PyUnicode_FromFormat("Color.%U", attribute);
        } else if (PyObject* member = snake_name(name, true)) {
            result = PyUnicode_FromFormat("Color.from_known_color(KnownColor.%U)", member);
            Py_DECREF(member);
        }
        Py_DECREF(attribute);
    }
    Py_DECREF(name);
    return result;
}

PyObject* color_repr(PyObject* self) {
    const ColorValue& c = record_of<ColorValue>(self);
    if (c.state == kEmptyState) return PyUnicode_FromString("Color.empty()");
    bool known = false, named = false;
    if (!flag_of(self, "is_known_color", &known) || !flag_of(self, "is_named_color", &named)) return nullptr;
    if (known || named) return named_color_repr(self, known);
    return call_repr("Color.from_argb",
                     {PyLong_FromLong(c.a), PyLong_FromLong(c.r), PyLong_FromLong(c.g), PyLong_FromLong(c.b)});
}

PyObject* color_new(PyTypeObject* type, PyObject*, PyObject*) { return gated_value_new(type, Color_status()); }

}  // namespace

PyTypeObject Color_Type = value_type("orvane.pyfigura.Color", sizeof(ValueObject<ColorValue>), color_init, color_new,
                                     compare_values<ColorValue, same_color>, Color_methods, Color_getset, Color_doc, color_repr);

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
