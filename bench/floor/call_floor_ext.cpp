// The no-hop floor of a bound call: the same call shapes as the generated wrappers (keyword parsing
// with O& converters, the same result kinds), with no managed call behind them.
#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>

#include "bridge/overload_trials.h"
#include "marshal/scalar_marshal.h"

namespace {

struct FloorObject {
    PyObject_HEAD
    uint64_t handle;
    float x_dpi;
    float y_dpi;
};

// Stand-ins for the managed entries: plain functions called through pointers, as the tables do.
using CtorEntry = uint64_t (*)(int32_t, int32_t);
using GetEntry = int32_t (*)(uint64_t);
using SetResolutionEntry = void (*)(uint64_t, float, float);

uint64_t fake_ctor(int32_t w, int32_t h) { return (static_cast<uint64_t>(w) << 32) | static_cast<uint32_t>(h); }
int32_t fake_width(uint64_t handle) { return static_cast<int32_t>(handle >> 32); }
void fake_set_resolution(uint64_t, float, float) {}

volatile CtorEntry g_ctor = fake_ctor;
volatile GetEntry g_width = fake_width;
volatile SetResolutionEntry g_set_resolution = fake_set_resolution;

int floor_init(PyObject* self, PyObject* args, PyObject* kwargs) {
    int32_t width = 0, height = 0;
    static const char* const kw[] = {"width", "height", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "O&O&", const_cast<char**>(kw), convert_int32, &width,
                                     convert_int32, &height))
        return -1;
    reinterpret_cast<FloorObject*>(self)->handle = g_ctor(width, height);
    return PyErr_Occurred() ? -1 : 0;
}

PyObject* floor_width(PyObject* self, void*) {
    int32_t r = g_width(reinterpret_cast<FloorObject*>(self)->handle);
    if (PyErr_Occurred()) return nullptr;
    return PyLong_FromLong(r);
}

PyObject* floor_set_resolution(PyObject* self, PyObject* args, PyObject* kwargs) {
    float x = 0, y = 0;
    static const char* const kw[] = {"x_dpi", "y_dpi", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "O&O&", const_cast<char**>(kw), convert_single, &x,
                                     convert_single, &y))
        return nullptr;
    g_set_resolution(reinterpret_cast<FloorObject*>(self)->handle, x, y);
    if (PyErr_Occurred()) return nullptr;
    Py_RETURN_NONE;
}

// Value-type shapes: an 8-byte record inline, the instance test and copy of a value converter, an
// out record filled by the entry and wrapped afterwards.
struct FloorValueObject {
    PyObject_HEAD
    int32_t first, second;
};

struct Pair {
    int32_t first, second;
};

int floor_value_init(PyObject* self, PyObject* args, PyObject*) {
    FloorValueObject* v = reinterpret_cast<FloorValueObject*>(self);
    return PyArg_ParseTuple(args, "|ii", &v->first, &v->second) ? 0 : -1;
}

PyTypeObject make_value_type(const char* name) {
    PyTypeObject t = {PyVarObject_HEAD_INIT(nullptr, 0)};
    t.tp_name = name;
    t.tp_basicsize = sizeof(FloorValueObject);
    t.tp_flags = Py_TPFLAGS_DEFAULT;
    t.tp_init = floor_value_init;
    t.tp_new = PyType_GenericNew;
    return t;
}

PyTypeObject g_point_type = make_value_type("call_floor.FloorPoint");
PyTypeObject g_size_type = make_value_type("call_floor.FloorSize");
PyTypeObject g_color_type = make_value_type("call_floor.FloorColor");

int convert_pair(PyObject* object, void* out, PyTypeObject* type) {
    if (!Py_IS_TYPE(object, type) && PyObject_IsInstance(object, reinterpret_cast<PyObject*>(type)) <= 0) {
        PyErr_Format(PyExc_TypeError, "argument should be %s, not '%.200s'", type->tp_name, Py_TYPE(object)->tp_name);
        return 0;
    }
    FloorValueObject* v = reinterpret_cast<FloorValueObject*>(object);
    *static_cast<Pair*>(out) = Pair{v->first, v->second};
    return 1;
}

int convert_point(PyObject* object, void* out) { return convert_pair(object, out, &g_point_type); }
int convert_size(PyObject* object, void* out) { return convert_pair(object, out, &g_size_type); }

PyObject* wrap_pair(const Pair& record, PyTypeObject* type) {
    PyObject* object = PyType_GenericNew(type, nullptr, nullptr);
    if (object != nullptr) {
        reinterpret_cast<FloorValueObject*>(object)->first = record.first;
        reinterpret_cast<FloorValueObject*>(object)->second = record.second;
    }
    return object;
}

using ArgbEntry = void (*)(int32_t, Pair*);
using ArgbFourEntry = void (*)(int32_t, int32_t, int32_t, int32_t, Pair*);
using PixelEntry = void (*)(uint64_t, int32_t, int32_t, Pair*);
using AddEntry = void (*)(Pair*, Pair*, Pair*);

void fake_argb(int32_t argb, Pair* out) { *out = Pair{argb, 0}; }
void fake_argb_four(int32_t a, int32_t r, int32_t g, int32_t b, Pair* out) { *out = Pair{(a << 24) | (r << 16) | (g << 8) | b, 0}; }
void fake_pixel(uint64_t, int32_t x, int32_t y, Pair* out) { *out = Pair{x, y}; }
void fake_add(Pair* p, Pair* s, Pair* out) { *out = Pair{p->first + s->first, p->second + s->second}; }

volatile ArgbEntry g_argb = fake_argb;
volatile ArgbFourEntry g_argb_four = fake_argb_four;
volatile PixelEntry g_pixel = fake_pixel;
volatile AddEntry g_add = fake_add;

// Color.from_argb(a, r, g, b): the first trial (argb) fails to parse, the second one is called.
PyObject* floor_from_argb(PyObject*, PyObject* args, PyObject* kwargs) {
    PyObject* errors[2] = {};
    {
        int32_t a0{};
        static const char* const kw[] = {"argb", nullptr};
        if (PyArg_ParseTupleAndKeywords(args, kwargs, "O&", const_cast<char**>(kw), convert_int32, &a0)) {
            drop_trial_errors(errors, 0);
            Pair r{};
            g_argb(a0, &r);
            if (PyErr_Occurred()) return nullptr;
            return wrap_pair(r, &g_color_type);
        }
        keep_trial_error(&errors[0]);
    }
    {
        int32_t a0{}, a1{}, a2{}, a3{};
        static const char* const kw[] = {"alpha", "red", "green", "blue", nullptr};
        if (PyArg_ParseTupleAndKeywords(args, kwargs, "O&O&O&O&", const_cast<char**>(kw), convert_int32, &a0,
                                        convert_int32, &a1, convert_int32, &a2, convert_int32, &a3)) {
            drop_trial_errors(errors, 1);
            Pair r{};
            g_argb_four(a0, a1, a2, a3, &r);
            if (PyErr_Occurred()) return nullptr;
            return wrap_pair(r, &g_color_type);
        }
        keep_trial_error(&errors[1]);
    }
    raise_trial_errors(errors, 2);
    return nullptr;
}

PyObject* floor_get_pixel(PyObject* self, PyObject* args, PyObject* kwargs) {
    int32_t x = 0, y = 0;
    static const char* const kw[] = {"x", "y", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "O&O&", const_cast<char**>(kw), convert_int32, &x, convert_int32, &y))
        return nullptr;
    Pair r{};
    g_pixel(reinterpret_cast<FloorObject*>(self)->handle, x, y, &r);
    if (PyErr_Occurred()) return nullptr;
    return wrap_pair(r, &g_color_type);
}

// fill_rectangle(brush, x, y, w, h) with floats: a wrapper argument and four Singles, a void entry.
extern PyTypeObject g_type;
using FillEntry = void (*)(uint64_t, uint64_t, float, float, float, float);
void fake_fill(uint64_t, uint64_t, float, float, float, float) {}
volatile FillEntry g_fill = fake_fill;

int convert_floor(PyObject* object, void* out) {
    if (!PyObject_TypeCheck(object, &g_type)) {
        PyErr_Format(PyExc_TypeError, "can't build Brush from '%s'", Py_TYPE(object)->tp_name);
        return 0;
    }
    *static_cast<uint64_t*>(out) = reinterpret_cast<FloorObject*>(object)->handle;
    return 1;
}

PyObject* floor_fill_rectangle(PyObject* self, PyObject* args, PyObject* kwargs) {
    uint64_t brush = 0;
    float x = 0, y = 0, w = 0, h = 0;
    static const char* const kw[] = {"brush", "x", "y", "width", "height", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "O&O&O&O&O&", const_cast<char**>(kw), convert_floor, &brush,
                                     convert_single, &x, convert_single, &y, convert_single, &w, convert_single, &h))
        return nullptr;
    g_fill(reinterpret_cast<FloorObject*>(self)->handle, brush, x, y, w, h);
    if (PyErr_Occurred()) return nullptr;
    Py_RETURN_NONE;
}

// The same call with the interpreter lock given up around the managed part, as heavy calls do.
PyObject* floor_get_pixel_released(PyObject* self, PyObject* args, PyObject* kwargs) {
    int32_t x = 0, y = 0;
    static const char* const kw[] = {"x", "y", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "O&O&", const_cast<char**>(kw), convert_int32, &x, convert_int32, &y))
        return nullptr;
    Pair r{};
    Py_BEGIN_ALLOW_THREADS
    g_pixel(reinterpret_cast<FloorObject*>(self)->handle, x, y, &r);
    Py_END_ALLOW_THREADS
    if (PyErr_Occurred()) return nullptr;
    return wrap_pair(r, &g_color_type);
}

PyObject* floor_add(PyObject*, PyObject* args, PyObject* kwargs) {
    Pair pt{}, sz{};
    static const char* const kw[] = {"pt", "sz", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "O&O&", const_cast<char**>(kw), convert_point, &pt, convert_size, &sz))
        return nullptr;
    Pair r{};
    g_add(&pt, &sz, &r);
    if (PyErr_Occurred()) return nullptr;
    return wrap_pair(r, &g_point_type);
}

PyMethodDef g_methods[] = {{"set_resolution", reinterpret_cast<PyCFunction>(floor_set_resolution),
                            METH_VARARGS | METH_KEYWORDS, nullptr},
                           {"get_pixel", reinterpret_cast<PyCFunction>(floor_get_pixel), METH_VARARGS | METH_KEYWORDS,
                            nullptr},
                           {"fill_rectangle", reinterpret_cast<PyCFunction>(floor_fill_rectangle),
                            METH_VARARGS | METH_KEYWORDS, nullptr},
                           {"get_pixel_released", reinterpret_cast<PyCFunction>(floor_get_pixel_released),
                            METH_VARARGS | METH_KEYWORDS, nullptr},
                           {"from_argb", reinterpret_cast<PyCFunction>(floor_from_argb),
                            METH_VARARGS | METH_KEYWORDS | METH_STATIC, nullptr},
                           {"add", reinterpret_cast<PyCFunction>(floor_add), METH_VARARGS | METH_KEYWORDS | METH_STATIC,
                            nullptr},
                           {nullptr, nullptr, 0, nullptr}};
PyGetSetDef g_getset[] = {{"width", floor_width, nullptr, nullptr, nullptr}, {nullptr, nullptr, nullptr, nullptr, nullptr}};

PyTypeObject g_type = [] {
    PyTypeObject t = {PyVarObject_HEAD_INIT(nullptr, 0)};
    t.tp_name = "call_floor.Floor";
    t.tp_basicsize = sizeof(FloorObject);
    t.tp_flags = Py_TPFLAGS_DEFAULT;
    t.tp_methods = g_methods;
    t.tp_getset = g_getset;
    t.tp_init = floor_init;
    t.tp_new = PyType_GenericNew;
    return t;
}();

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "call_floor", nullptr, -1, nullptr, nullptr, nullptr, nullptr, nullptr};

}  // namespace

PyMODINIT_FUNC PyInit_call_floor() {
    if (PyType_Ready(&g_type) < 0) return nullptr;
    PyTypeObject* values[] = {&g_point_type, &g_size_type, &g_color_type};
    const char* value_names[] = {"FloorPoint", "FloorSize", "FloorColor"};
    for (PyTypeObject* value : values)
        if (PyType_Ready(value) < 0) return nullptr;
    PyObject* module = PyModule_Create(&g_module);
    if (module == nullptr) return nullptr;
    for (int i = 0; i < 3; ++i) {
        Py_INCREF(values[i]);
        if (PyModule_AddObject(module, value_names[i], reinterpret_cast<PyObject*>(values[i])) < 0) {
            Py_DECREF(values[i]);
            Py_DECREF(module);
            return nullptr;
        }
    }
    Py_INCREF(&g_type);
    if (PyModule_AddObject(module, "Floor", reinterpret_cast<PyObject*>(&g_type)) < 0) {
        Py_DECREF(&g_type);
        Py_DECREF(module);
        return nullptr;
    }
    return module;
}
