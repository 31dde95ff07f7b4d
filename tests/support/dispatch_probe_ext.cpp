// Test module dispatch_probe: the overload dispatcher over three synthetic trials, counting runs.
#include "bridge/overload_trials.h"
#include "marshal/scalar_marshal.h"
#include "marshal/string_marshal.h"
#include "probe_binding.h"

namespace {

long g_runs[3] = {};

PyObject* by_text(PyObject*, PyObject* args, PyObject* kwargs, bool* parsed) {
    ++g_runs[0];
    StringArg text{-1, 0, nullptr};
    static const char* kw[] = {"text", nullptr};
    *parsed = PyArg_ParseTupleAndKeywords(args, kwargs, "O&", const_cast<char**>(kw), convert_string, &text);
    return *parsed ? Py_BuildValue("(si)", "text", text.length) : nullptr;
}

PyObject* by_number(PyObject*, PyObject* args, PyObject* kwargs, bool* parsed) {
    ++g_runs[1];
    int32_t value = 0;
    static const char* kw[] = {"number", nullptr};
    *parsed = PyArg_ParseTupleAndKeywords(args, kwargs, "O&", const_cast<char**>(kw), convert_int32, &value);
    return *parsed ? Py_BuildValue("(si)", "number", value) : nullptr;
}

// Its call fails for a negative first number: a trial that parsed is final even when its call fails.
PyObject* by_pair(PyObject*, PyObject* args, PyObject* kwargs, bool* parsed) {
    ++g_runs[2];
    int32_t a = 0, b = 0;
    static const char* kw[] = {"a", "b", nullptr};
    *parsed = PyArg_ParseTupleAndKeywords(args, kwargs, "O&O&", const_cast<char**>(kw), convert_int32, &a,
                                          convert_int32, &b);
    if (!*parsed) return nullptr;
    return a < 0 ? PyErr_Format(PyExc_ArithmeticError, "negative %d", a) : Py_BuildValue("(sii)", "pair", a, b);
}

const uint8_t kTextKinds[] = {kStrArgument};
const OverloadTrial<PyObject*> kTrials[] = {{1, kTextKinds, by_text}, {1, nullptr, by_number}, {2, nullptr, by_pair}};

// call(text) | call(number) | call(a, b), dispatched as an overloaded method
PyObject* call(PyObject* self, PyObject* args, PyObject* kwargs) {
    return dispatch_trials(kTrials, 3, self, args, kwargs, static_cast<PyObject*>(nullptr));
}

// runs() -> (text, number, pair): how often each trial's function ran; resets the counts.
PyObject* runs(PyObject*, PyObject*) {
    PyObject* counts = Py_BuildValue("(lll)", g_runs[0], g_runs[1], g_runs[2]);
    g_runs[0] = g_runs[1] = g_runs[2] = 0;
    return counts;
}

PyMethodDef g_methods[] = {
    PROBE_KW("call", call), {"runs", runs, METH_NOARGS, nullptr}, {nullptr, nullptr, 0, nullptr}};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "dispatch_probe", nullptr, -1, g_methods};

}  // namespace

PyMODINIT_FUNC PyInit_dispatch_probe() { return probe_module(g_module); }
