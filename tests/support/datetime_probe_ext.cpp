// Test module datetime_probe: the date and time rows of the value groups, called directly with raw ticks.
#include <Python.h>

#include "marshal/datetime_marshal.h"
#include "common/interned_names.h"

namespace {

// (status, ticks, kind, offset) of values in 6, 7 or 8; the exception of a failed conversion is raised.
PyObject* zoned_in(int32_t (*convert)(PyObject*, ManagedDateTime*), PyObject* object) {
    ManagedDateTime value{0, 0};
    int32_t status = convert(object, &value);
    if (status == 0) return nullptr;
    return Py_BuildValue("(iKiL)", status, static_cast<unsigned long long>(value.value & kTicksMask),
                         static_cast<int>(value.value >> kDateTimeKindShift), static_cast<long long>(value.offset));
}

PyObject* probe_datetime_in(PyObject*, PyObject* object) { return zoned_in(datetime_in, object); }
PyObject* probe_date_in(PyObject*, PyObject* object) { return zoned_in(date_in, object); }
PyObject* probe_time_in(PyObject*, PyObject* object) { return zoned_in(time_in, object); }

PyObject* probe_timedelta_in(PyObject*, PyObject* object) {
    int64_t ticks = 0;
    if (!timedelta_in(object, &ticks)) return nullptr;
    return PyLong_FromLongLong(ticks);
}

// datetime_out(ticks, kind=0, offset=0) and datetime_offset_out(ticks, offset).
PyObject* probe_datetime_out(PyObject*, PyObject* args) {
    unsigned long long ticks;
    int kind = 0;
    long long offset = 0;
    if (!PyArg_ParseTuple(args, "K|iL", &ticks, &kind, &offset)) return nullptr;
    ManagedDateTime value{ticks | (static_cast<uint64_t>(kind) << kDateTimeKindShift), offset};
    return datetime_out(&value);
}

PyObject* probe_datetime_offset_out(PyObject*, PyObject* args) {
    unsigned long long ticks;
    long long offset;
    if (!PyArg_ParseTuple(args, "KL", &ticks, &offset)) return nullptr;
    ManagedDateTime value{ticks, offset};
    return datetime_offset_out(&value);
}

PyObject* probe_timedelta_out(PyObject*, PyObject* arg) {
    long long ticks = PyLong_AsLongLong(arg);
    if (ticks == -1 && PyErr_Occurred()) return nullptr;
    return timedelta_out(ticks);
}

PyMethodDef g_methods[] = {
    {"datetime_in", probe_datetime_in, METH_O, "(status, ticks, kind, offset) of a datetime"},
    {"date_in", probe_date_in, METH_O, "(status, ticks, kind, offset) of a date"},
    {"time_in", probe_time_in, METH_O, "(status, ticks, kind, offset) of a time"},
    {"timedelta_in", probe_timedelta_in, METH_O, "ticks of a timedelta"},
    {"datetime_out", probe_datetime_out, METH_VARARGS, "datetime_out(ticks, kind=0, offset=0)"},
    {"datetime_offset_out", probe_datetime_offset_out, METH_VARARGS, "datetime_offset_out(ticks, offset)"},
    {"timedelta_out", probe_timedelta_out, METH_O, "timedelta of ticks"},
    {nullptr, nullptr, 0, nullptr}};

PyModuleDef g_module = {PyModuleDef_HEAD_INIT, "datetime_probe", nullptr, -1, g_methods,
                        nullptr, nullptr, nullptr, nullptr};

}  // namespace

PyMODINIT_FUNC PyInit_datetime_probe() {
    fill_interned_names();
    return PyModule_Create(&g_module);
}
