// Test module marshal_probe: the scalar and byte-array converters, and the decimal and buffers callback rows.
#define PY_SSIZE_T_CLEAN
#include <Python.h>
#include <structmember.h>

#include <cstring>
#include <type_traits>

#include "marshal/buffer_marshal.h"
#include "marshal/decimal_marshal.h"
#include "marshal/scalar_marshal.h"
#include "module/callback_tables.h"
#include "probe_binding.h"

namespace {

// Function `index` of callback group `group`, read from the table the managed side is given.
template <typename Fn>
Fn row(int group, int index) {
    return reinterpret_cast<Fn>(static_cast<void* const*>(py_static_callbacks()[group])[index]);
}

// bool, byte, int16, int32, int64, single, double(object): the converted value, or the converter's exception.
template <typename T, int (*Convert)(PyObject*, void*)>
PyObject* probe_convert(PyObject*, PyObject* object) {
    T value{};
    if (!Convert(object, &value)) return nullptr;
    if constexpr (std::is_same_v<T, bool>) return PyBool_FromLong(value);
    else if constexpr (std::is_floating_point_v<T>) return PyFloat_FromDouble(value);
    else return PyLong_FromLongLong(value);
}

// decimal_in(object) -> (low, mid, high, flags), through the values-in row
PyObject* probe_decimal_in(PyObject*, PyObject* object) {
    ManagedDecimal value{0xDEADBEEFu, 0xDEADBEEFu, 0xDEADBEEFu, 0xDEADBEEFu};
    const int result = row<int (*)(PyObject*, ManagedDecimal*)>(kGroupValuesIn, 4)(object, &value);
    if (!result || PyErr_Occurred()) return nullptr;  // as a wrapper checks after its call
    return Py_BuildValue("(kkkk)", static_cast<unsigned long>(value.low), static_cast<unsigned long>(value.mid),
                         static_cast<unsigned long>(value.high), static_cast<unsigned long>(value.flags));
}

// The report of one lease: (result, acquired, length, content or None, exception or None).
PyObject* lease_report(int result, const BufferArg& arg, bool read) {
    PyObject* error = take_error();
    PyObject* content = result && read && arg.length >= 0
                            ? PyBytes_FromStringAndSize(static_cast<const char*>(arg.data), arg.length)
                            : Py_NewRef(Py_None);
    return Py_BuildValue("(iiiNN)", result, arg.acquired, arg.length, content, error);
}

// lease_byte_array(object, during=None, *, element=False, read=True, write=None) -> report
PyObject* probe_lease_byte_array(PyObject*, PyObject* args, PyObject* kwargs) {
    PyObject* object;
    PyObject* during = nullptr;
    int element = 0, read = 1;
    const char* write = nullptr;
    Py_ssize_t write_size = 0;
    static const char* names[] = {"object", "during", "element", "read", "write", nullptr};
    if (!PyArg_ParseTupleAndKeywords(args, kwargs, "O|O$ppz#", const_cast<char**>(names), &object, &during, &element,
                                     &read, &write, &write_size)) {
        return nullptr;
    }
    BufferLeaseGuard guard;
    const BufferArg& arg = *guard.arg();
    const int result = element ? convert_byte_array_element(object, &guard.lease()->view, guard.arg())
                               : convert_byte_array(object, guard.lease());
    if (result && write != nullptr && arg.length >= write_size) std::memcpy(arg.data, write, write_size);
    if (result && during != nullptr && during != Py_None) {  // runs while the buffer is held
        PyObject* outcome = PyObject_CallNoArgs(during);
        if (outcome == nullptr) return nullptr;
        Py_DECREF(outcome);
    }
    return lease_report(result, arg, read != 0);
}

// buffer_group(object) -> (record size, record zeroed, then the lease report), all through the buffers rows
PyObject* probe_buffer_group(PyObject*, PyObject* object) {
    const int32_t size = row<int32_t (*)()>(kGroupBuffers, 0)();
    unsigned char record[kPyBufferRecordSize];
    std::memset(record, 0xA5, sizeof record);
    Py_buffer* view = reinterpret_cast<Py_buffer*>(record);
    row<void (*)(Py_buffer*)>(kGroupBuffers, 1)(view);
    bool zeroed = true;
    for (unsigned char byte : record) zeroed = zeroed && byte == 0;
    BufferArg arg{0, -1, nullptr};
    const int32_t result = row<int32_t (*)(PyObject*, Py_buffer*, BufferArg*)>(kGroupBuffers, 2)(object, view, &arg);
    PyObject* report = lease_report(result, arg, true);
    if (arg.acquired) row<void (*)(Py_buffer*)>(kGroupBuffers, 3)(view);
    return report == nullptr ? nullptr : Py_BuildValue("(iON)", size, zeroed ? Py_True : Py_False, report);
}

// Exporter(length, stride=1): a buffer exporter that hands out whatever view it is told to, and counts exports.
struct ExporterObject {
    PyObject_HEAD
    Py_ssize_t length, stride, exports;
    char storage[64];
};

PyObject* exporter_new(PyTypeObject* type, PyObject* args, PyObject*) {
    Py_ssize_t length, stride = 1;
    if (!PyArg_ParseTuple(args, "n|n:Exporter", &length, &stride)) return nullptr;
    ExporterObject* self = reinterpret_cast<ExporterObject*>(type->tp_alloc(type, 0));
    if (self != nullptr) {
        self->length = length;
        self->stride = stride;
    }
    return reinterpret_cast<PyObject*>(self);
}

int exporter_getbuffer(PyObject* object, Py_buffer* view, int) {
    ExporterObject* self = reinterpret_cast<ExporterObject*>(object);
    // buf, obj, len, itemsize, readonly, ndim, format, shape, strides, suboffsets, internal
    *view = {self->storage, Py_NewRef(object), self->length, 1, 1, 1, nullptr, &self->length, &self->stride};
    ++self->exports;
    return 0;
}

void exporter_releasebuffer(PyObject* object, Py_buffer*) { --reinterpret_cast<ExporterObject*>(object)->exports; }

PyBufferProcs exporter_buffer = {exporter_getbuffer, exporter_releasebuffer};

PyMemberDef exporter_members[] = {
    {(char*)"exports", T_PYSSIZET, offsetof(ExporterObject, exports), READONLY, nullptr},
    {nullptr, 0, 0, 0, nullptr},
};

PyTypeObject exporter_type = [] {
    PyTypeObject type{PyVarObject_HEAD_INIT(nullptr, 0)};
    type.tp_name = "marshal_probe.Exporter";
    type.tp_basicsize = sizeof(ExporterObject);
    type.tp_flags = Py_TPFLAGS_DEFAULT;
    type.tp_new = exporter_new;
    type.tp_as_buffer = &exporter_buffer;
    type.tp_members = exporter_members;
    return type;
}();

PyMethodDef probe_methods[] = {
    {"bool", probe_convert<bool, convert_bool>, METH_O, nullptr},
    {"byte", probe_convert<uint8_t, convert_byte>, METH_O, nullptr},
    {"int16", probe_convert<int16_t, convert_int16>, METH_O, nullptr},
    {"int32", probe_convert<int32_t, convert_int32>, METH_O, nullptr},
    {"int64", probe_convert<int64_t, convert_int64>, METH_O, nullptr},
    {"single", probe_convert<float, convert_single>, METH_O, nullptr},
    {"double", probe_convert<double, convert_double>, METH_O, nullptr},
    {"decimal_in", probe_decimal_in, METH_O, nullptr},
    PROBE_KW("lease_byte_array", probe_lease_byte_array),
    {"buffer_group", probe_buffer_group, METH_O, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef probe_definition = {PyModuleDef_HEAD_INIT, "marshal_probe", nullptr, -1, probe_methods};

}  // namespace

PyMODINIT_FUNC PyInit_marshal_probe() { return probe_module(probe_definition, {{"Exporter", &exporter_type}}); }
