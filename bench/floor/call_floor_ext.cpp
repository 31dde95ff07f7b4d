// The no-hop floor of a bound call: the same call shapes as the generated wrappers (keyword parsing
// with O& converters, the same result kinds), with no managed call behind them.
#define PY_SSIZE_T_CLEAN
#include <Python.h>

#include <cstdint>

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

PyMethodDef g_methods[] = {{"set_resolution", reinterpret_cast<PyCFunction>(floor_set_resolution),
                            METH_VARARGS | METH_KEYWORDS, nullptr},
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
    PyObject* module = PyModule_Create(&g_module);
    if (module == nullptr) return nullptr;
    Py_INCREF(&g_type);
    if (PyModule_AddObject(module, "Floor", reinterpret_cast<PyObject*>(&g_type)) < 0) {
        Py_DECREF(&g_type);
        Py_DECREF(module);
        return nullptr;
    }
    return module;
}
