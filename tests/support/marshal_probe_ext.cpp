// Test module marshal_probe: the scalar, decimal, Guid and byte-array converters, and their callback rows.
#define PY_SSIZE_T_CLEAN
#include <Python.h>
#include <structmember.h>

#include <cstring>

#include "marshal/buffer_marshal.h"
#include "marshal/decimal_marshal.h"
#include "marshal/guid_marshal.h"
#include "marshal/scalar_marshal.h"
#include "module/callback_tables.h"
#include "probe_binding.h"

namespace {

// Function `index` of callback group `group`, read from the table the managed side is given.
template <typename Fn>
Fn row(int group, int index) {
    return reinterpret_cast<Fn>(static_cast<void* const*>(py_static_callbacks()[group])[index]);
}

union ConvertedValue {
    uint8_t byte;
    int16_t int16;
    int32_t int32;
    int64_t int64;
    float single;
    double real;
    uint8_t guid[kGuidSize];
};

struct ConverterEntry {
    const char* name;
    int (*convert)(PyObject*, void*);
    PyObject* (*result)(const ConvertedValue&);
};

const ConverterEntry kConverters[] = {
    {"bool", convert_bool, [](const ConvertedValue& v) { return PyBool_FromLong(v.byte); }},
    {"byte", convert_byte, [](const ConvertedValue& v) { return PyLong_FromLong(v.byte); }},
    {"int16", convert_int16, [](const ConvertedValue& v) { return PyLong_FromLong(v.int16); }},
    {"int32", convert_int32, [](const ConvertedValue& v) { return PyLong_FromLong(v.int32); }},
    {"int64", convert_int64, [](const ConvertedValue& v) { return PyLong_FromLongLong(v.int64); }},
    {"single", convert_single, [](const ConvertedValue& v) { return PyFloat_FromDouble(v.single); }},
    {"double", convert_double, [](const ConvertedValue& v) { return PyFloat_FromDouble(v.real); }},
    {"guid", convert_guid,
     [](const ConvertedValue& v) { return PyBytes_FromStringAndSize(reinterpret_cast<const char*>(v.guid), 16); }},
};

// convert(name, object): the converted value, or the converter's exception.
PyObject* probe_convert(PyObject*, PyObject* args) {
    const char* name;
    PyObject* object;
    if (!PyArg_ParseTuple(args, "sO:convert", &name, &object)) return nullptr;
    for (const ConverterEntry& entry : kConverters) {
        if (std::strcmp(entry.name, name) != 0) continue;
        ConvertedValue value;
        std::memset(&value, 0, sizeof value);
        if (!entry.convert(object, &value)) return nullptr;
        return entry.result(value);
    }
    PyErr_Format(PyExc_ValueError, "no converter '%s'", name);
    return nullptr;
}

// Scalar readers, through the values-in rows.
// read_truth(object) -> (byte, pending exception or None)
PyObject* probe_read_truth(PyObject*, PyObject* object) {
    const uint8_t truth = row<uint8_t (*)(PyObject*)>(kGroupValuesIn, 1)(object);
    return Py_BuildValue("(iN)", truth, take_error());
}

// read_integer(object) -> (code, value)
PyObject* probe_read_integer(PyObject*, PyObject* object) {
    int64_t value = 0;
    const int32_t code = row<int32_t (*)(PyObject*, int64_t*)>(kGroupValuesIn, 2)(object, &value);
    if (code == 0) return nullptr;
    return code == 3 ? Py_BuildValue("(iK)", code, static_cast<unsigned long long>(value))
                     : Py_BuildValue("(iL)", code, static_cast<long long>(value));
}

// read_float(object) -> value
PyObject* probe_read_float(PyObject*, PyObject* object) {
    double value = 0.0;
    const int32_t ok = row<int32_t (*)(PyObject*, double*)>(kGroupValuesIn, 3)(object, &value);
    return ok ? PyFloat_FromDouble(value) : nullptr;
}

// read_char_string(object) -> (count, owner bytes, offset of the data word into the owner)
PyObject* probe_read_char_string(PyObject*, PyObject* object) {
    PyObject* owner = nullptr;
    int32_t count = -1;
    const void* data = nullptr;
    if (!read_char_string(object, &owner, &count, &data)) return nullptr;
    const Py_ssize_t offset = static_cast<const char*>(data) - PyBytes_AS_STRING(owner);
    return Py_BuildValue("(iNn)", count, owner, offset);
}

// Decimal and Guid, through the values-in and values-out rows.
// decimal_in(object) / decimal_in_tuple(tuple) -> (low, mid, high, flags)
template <int Row>
PyObject* probe_decimal_in(PyObject*, PyObject* object) {
    ManagedDecimal value{0xDEADBEEFu, 0xDEADBEEFu, 0xDEADBEEFu, 0xDEADBEEFu};
    const int result = row<int (*)(PyObject*, ManagedDecimal*)>(kGroupValuesIn, Row)(object, &value);
    if (!result || PyErr_Occurred()) return nullptr;  // as a wrapper checks after its call
    return Py_BuildValue("(kkkk)", static_cast<unsigned long>(value.low), static_cast<unsigned long>(value.mid),
                         static_cast<unsigned long>(value.high), static_cast<unsigned long>(value.flags));
}

// decimal_out(low, mid, high, flags) -> Decimal
PyObject* probe_decimal_out(PyObject*, PyObject* args) {
    unsigned int low, mid, high, flags;
    if (!PyArg_ParseTuple(args, "IIII:decimal_out", &low, &mid, &high, &flags)) return nullptr;
    ManagedDecimal value{low, mid, high, flags};
    return row<PyObject* (*)(ManagedDecimal*)>(kGroupValuesOut, 7)(&value);
}

// guid_in_quiet(object) -> 16 bytes, or the pending exception
PyObject* probe_guid_in_quiet(PyObject*, PyObject* object) {
    uint8_t bytes[kGuidSize];
    std::memset(bytes, 0xAB, sizeof bytes);
    row<void (*)(PyObject*, uint8_t*)>(kGroupValuesIn, 10)(object, bytes);
    return PyErr_Occurred() ? nullptr : PyBytes_FromStringAndSize(reinterpret_cast<const char*>(bytes), kGuidSize);
}

// guid_out(16 bytes) -> UUID
PyObject* probe_guid_out(PyObject*, PyObject* args) {
    const char* bytes;
    Py_ssize_t size;
    if (!PyArg_ParseTuple(args, "y#:guid_out", &bytes, &size)) return nullptr;
    if (size != kGuidSize) return PyErr_Format(PyExc_ValueError, "16 bytes expected");
    return row<PyObject* (*)(const uint8_t*)>(kGroupValuesOut, 11)(reinterpret_cast<const uint8_t*>(bytes));
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
    {"convert", probe_convert, METH_VARARGS, nullptr},
    {"read_truth", probe_read_truth, METH_O, nullptr},
    {"read_integer", probe_read_integer, METH_O, nullptr},
    {"read_float", probe_read_float, METH_O, nullptr},
    {"read_char_string", probe_read_char_string, METH_O, nullptr},
    {"decimal_in", probe_decimal_in<4>, METH_O, nullptr},
    {"decimal_in_tuple", probe_decimal_in<5>, METH_O, nullptr},
    {"decimal_out", probe_decimal_out, METH_VARARGS, nullptr},
    {"guid_in_quiet", probe_guid_in_quiet, METH_O, nullptr},
    {"guid_out", probe_guid_out, METH_VARARGS, nullptr},
    PROBE_KW("lease_byte_array", probe_lease_byte_array),
    {"buffer_group", probe_buffer_group, METH_O, nullptr},
    {nullptr, nullptr, 0, nullptr},
};

PyModuleDef probe_definition = {PyModuleDef_HEAD_INIT, "marshal_probe", nullptr, -1, probe_methods};

}  // namespace

PyMODINIT_FUNC PyInit_marshal_probe() { return probe_module(probe_definition, {{"Exporter", &exporter_type}}); }
