// Test module datetime_probe: the date and time rows of the value groups, called directly with raw ticks.
#include "marshal/datetime_marshal.h"
#include "probe_binding.h"

namespace {

// datetime_in, time_in(object) -> (status, ticks, kind, offset); a failed conversion raises.
template <int32_t (*Convert)(PyObject*, ManagedDateTime*)>
PyObject* probe_zoned_in(PyObject*, PyObject* object) {
    ManagedDateTime value{0, 0};
    const int32_t status = Convert(object, &value);
    if (status == 0) return nullptr;
    return Py_BuildValue("(iKiL)", status, static_cast<unsigned long long>(value.value & kTicksMask),
                         static_cast<int>(value.value >> kDateTimeKindShift), static_cast<long long>(value.offset));
}

PyObject* probe_timedelta_in(PyObject*, PyObject* object) {
    int64_t ticks = 0;
    return timedelta_in(object, &ticks) ? PyLong_FromLongLong(ticks) : nullptr;
}

// datetime_out(ticks, kind=0, offset=0)
PyObject* probe_datetime_out(PyObject*, PyObject* args) {
    unsigned long long ticks;
    int kind = 0;
    long long offset = 0;
    if (!PyArg_ParseTuple(args, "K|iL", &ticks, &kind, &offset)) return nullptr;
    ManagedDateTime value{ticks | (static_cast<uint64_t>(kind) << kDateTimeKindShift), offset};
    return datetime_out(&value);
}

PyObject* probe_timedelta_out(PyObject*, PyObject* arg) {
    const long long ticks = PyLong_AsLongLong(arg);
    return ticks == -1 && PyErr_Occurred() ? nullptr : timedelta_out(ticks);
}

PyMethodDef g_methods[] = {
    {"datetime_in", probe_zoned_in<datetime_in>, METH_O, nullptr},
    {"time_in", probe_zoned_in<time_in>, METH_O, nullptr},
    {"timedelta_in", probe_timedelta_in, METH_O, nullptr},
    {"datetime_out", probe_datetime_out, METH_VARARGS, nullptr},
    {"timedelta_out", probe_timedelta_out, METH_O, nullptr},
    {nullptr, nullptr, 0, nullptr}};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "datetime_probe", nullptr, -1, g_methods};

}  // namespace

PyMODINIT_FUNC PyInit_datetime_probe() { return probe_module(g_module); }
