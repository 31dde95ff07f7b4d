// Scalar converters with the digit path for Decimal values, and the number and character readers.
#include "marshal/scalar_marshal.h"

#include <climits>

#if defined(__x86_64__) || defined(_M_X64)
#include <emmintrin.h>
#endif

#include "marshal/decimal_marshal.h"
#include "common/interned_names.h"

namespace {

// What the digit path needs of an integer type: the limit L before the last step, the largest last
// digits P (upwards) and N (downwards), and the output width in bytes.
struct IntegerTarget {
    const char* name;
    long long limit;
    int last_up;
    int last_down;
    int width;
    bool unsigned_only;
};

constexpr IntegerTarget kByte{"Byte", 25, 5, 0, 1, true};
constexpr IntegerTarget kInt16{"Int16", 3276, 7, 8, 2, false};
constexpr IntegerTarget kInt32{"Int32", 214748364, 7, 8, 4, false};
constexpr IntegerTarget kInt64{"Int64", 922337203685477580LL, 7, 8, 8, false};

// The processor's truncating conversions: NaN, infinities and values out of range all give the
// lowest value of the width, which is what scripts passing floats to integer parameters get.
inline int32_t truncate32(double value) {
#if defined(__x86_64__) || defined(_M_X64)
    return _mm_cvttsd_si32(_mm_set_sd(value));
#else
    return value > -2147483649.0 && value < 2147483648.0 ? static_cast<int32_t>(value) : INT32_MIN;
#endif
}

inline int64_t truncate64(double value) {
#if defined(__x86_64__) || defined(_M_X64)
    return _mm_cvttsd_si64(_mm_set_sd(value));
#else
    return value >= -9223372036854775808.0 && value < 9223372036854775808.0 ? static_cast<int64_t>(value)
                                                                            : INT64_MIN;
#endif
}

inline bool is_int(PyObject* object) { return PyLong_Check(object) && !PyBool_Check(object); }

inline void store(void* out, int width, long long value) {
    switch (width) {
        case 1:
            *static_cast<uint8_t*>(out) = static_cast<uint8_t>(value);
            break;
        case 2:
            *static_cast<int16_t*>(out) = static_cast<int16_t>(value);
            break;
        case 4:
            *static_cast<int32_t*>(out) = static_cast<int32_t>(value);
            break;
        default:
            *static_cast<int64_t*>(out) = value;
            break;
    }
}

[[gnu::cold, gnu::noinline]] int fail_refused(const char* managed_name, PyObject* object) {
    PyErr_Format(PyExc_TypeError, "can't build '%s' from '%s'", managed_name, Py_TYPE(object)->tp_name);
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_not_bool(PyObject* object) {
    PyErr_Format(PyExc_TypeError, "can't build bool from '%s'", Py_TYPE(object)->tp_name);
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_convert_range(const char* bound, const char* managed_name) {
    PyErr_Format(PyExc_OverflowError, bound, "value", managed_name);
    return 0;
}

inline int fail_too_big(const char* managed_name) {
    return fail_convert_range("%s too big to convert to '%s'", managed_name);
}

inline int fail_too_small(const char* managed_name) {
    return fail_convert_range("%s too small to convert to '%s'", managed_name);
}

// Python's own texts for a C long of 32 bits: integers keep the range of the managed platform.
[[gnu::cold, gnu::noinline]] int fail_c_long() {
    PyErr_SetString(PyExc_OverflowError, "Python int too large to convert to C long");
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_c_unsigned_long() {
    PyErr_SetString(PyExc_OverflowError, "Python int too large to convert to C unsigned long");
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_digits_too_large(const char* managed_name) {
    PyErr_Format(PyExc_OverflowError, "value too large for '%s'", managed_name);
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_digits_too_small(const char* managed_name) {
    PyErr_Format(PyExc_OverflowError, "value too small for '%s'", managed_name);
    return 0;
}

[[gnu::cold, gnu::noinline]] int32_t fail_integer_value(PyObject* object) {
    PyErr_Format(PyExc_TypeError, "can't build integer value from '%s'", Py_TYPE(object)->tp_name);
    return 0;
}

[[gnu::cold, gnu::noinline]] int32_t fail_char(const char* message) {
    PyErr_SetString(PyExc_TypeError, message);
    return 0;
}

[[gnu::cold, gnu::noinline]] int32_t fail_char_type(const char* format, const char* type_name) {
    PyErr_Format(PyExc_TypeError, format, type_name);
    return 0;
}

inline bool fits_int32(long long value) { return value >= INT32_MIN && value <= INT32_MAX; }

// Accumulates the counted digits, then the powers of ten of a positive exponent, writing the value
// as it grows. 1, or 0 with OverflowError and the partial value in `out`.
int accumulate_digits(PyObject* digits, long long exponent, long sign, void* out, const IntegerTarget& target) {
    const Py_ssize_t count = PyTuple_GET_SIZE(digits);
    if (exponent <= -static_cast<long long>(count)) return 1;  // every digit lies right of the point
    const Py_ssize_t used = exponent < 0 ? count + static_cast<Py_ssize_t>(exponent) : count;
    const long long limit = target.limit;
    long long value = 0;
    for (Py_ssize_t i = 0; i < used; ++i) {
        long digit = PyLong_AsLong(PyTuple_GET_ITEM(digits, i));
        if (digit == -1 && PyErr_Occurred()) return 0;
        if (sign != 0) digit = -digit;
        if (value > limit || (value == limit && digit > target.last_up)) return fail_digits_too_large(target.name);
        if (value < -limit || (value == -limit && digit < -target.last_down)) {
            return fail_digits_too_small(target.name);
        }
        value = value * 10 + digit;
        store(out, target.width, value);
    }
    for (long long left = exponent; left > 0 && value != 0; --left) {
        if (value > limit) return fail_digits_too_large(target.name);
        if (value < -limit) return fail_digits_too_small(target.name);
        value *= 10;
        store(out, target.width, value);
    }
    return 1;
}

// The digit path over a DecimalTuple or anything with its three attributes.
int integer_from_digits(PyObject* tuple, void* out, const IntegerTarget& target) {
    long long exponent;
    if (!read_decimal_exponent(tuple, target.name, &exponent)) return 0;
    PyObject* sign_object = PyObject_GetAttr(tuple, interned(InternedName::Sign));
    if (sign_object == nullptr) return 0;
    const long sign = PyLong_AsLong(sign_object);
    Py_DECREF(sign_object);
    if (sign == -1 && PyErr_Occurred()) return 0;
    if (target.unsigned_only && sign != 0) return fail_digits_too_small(target.name);
    store(out, target.width, 0);
    PyObject* digit_object = PyObject_GetAttr(tuple, interned(InternedName::Digits));
    if (digit_object == nullptr) return 0;
    PyObject* digits = PySequence_Tuple(digit_object);
    Py_DECREF(digit_object);
    if (digits == nullptr) return 0;
    const int result = accumulate_digits(digits, exponent, sign, out, target);
    Py_DECREF(digits);
    return result;
}

// What is left after int and float: DecimalTuple, Decimal, or the refusal.
[[gnu::noinline]] int integer_from_other(PyObject* object, void* out, const IntegerTarget& target) {
    switch (decimal_family(object)) {
        case 1:
            return integer_from_digits(object, out, target);
        case 2: {
            PyObject* tuple = PyObject_CallMethodNoArgs(object, interned(InternedName::AsTuple));
            if (tuple == nullptr) return 0;
            const int result = integer_from_digits(tuple, out, target);
            Py_DECREF(tuple);
            return result;
        }
        case 0:
            return fail_refused(target.name, object);
        default:
            return 0;
    }
}

[[gnu::cold, gnu::noinline]] int fail_byte_range(unsigned long value) {
    return value > UINT32_MAX ? fail_c_unsigned_long() : fail_too_big("Byte");
}

[[gnu::cold, gnu::noinline]] int fail_int16_range(long value) {
    if (!fits_int32(value)) return fail_c_long();
    return value < 0 ? fail_too_small("Int16") : fail_too_big("Int16");
}

template <typename Real>
int convert_real(PyObject* object, void* out, const char* managed_name) {
    if (PyFloat_Check(object)) {
        // Narrowing to Single has no range test: what doesn't fit becomes an infinity.
        *static_cast<Real*>(out) = static_cast<Real>(PyFloat_AS_DOUBLE(object));
        return 1;
    }
    if (!is_int(object)) return fail_refused(managed_name, object);
    const long long value = PyLong_AsLongLong(object);
    if (value != -1 || !PyErr_Occurred()) {
        *static_cast<Real*>(out) = static_cast<Real>(value);
        return 1;
    }
    PyErr_Clear();
    const unsigned long long wide = PyLong_AsUnsignedLongLong(object);
    if (wide == ULLONG_MAX && PyErr_Occurred()) return 0;
    *static_cast<Real*>(out) = static_cast<Real>(wide);
    return 1;
}

}  // namespace

int convert_bool(PyObject* object, void* out) {
    if (!PyBool_Check(object)) return fail_not_bool(object);
    *static_cast<uint8_t*>(out) = object == Py_True ? 1 : 0;
    return 1;
}

int convert_byte(PyObject* object, void* out) {
    if (is_int(object)) {
        const unsigned long value = PyLong_AsUnsignedLong(object);
        if (value == ULONG_MAX && PyErr_Occurred()) return 0;
        if (value >= 256) return fail_byte_range(value);
        *static_cast<uint8_t*>(out) = static_cast<uint8_t>(value);
        return 1;
    }
    if (PyFloat_Check(object)) {
        *static_cast<uint8_t*>(out) = static_cast<uint8_t>(truncate32(PyFloat_AS_DOUBLE(object)));
        return 1;
    }
    return integer_from_other(object, out, kByte);
}

int convert_int16(PyObject* object, void* out) {
    if (is_int(object)) {
        const long value = PyLong_AsLong(object);
        if (value == -1 && PyErr_Occurred()) return 0;
        if (value < -32768 || value > 32767) return fail_int16_range(value);
        *static_cast<int16_t*>(out) = static_cast<int16_t>(value);
        return 1;
    }
    if (PyFloat_Check(object)) {
        *static_cast<int16_t*>(out) = static_cast<int16_t>(truncate32(PyFloat_AS_DOUBLE(object)));
        return 1;
    }
    return integer_from_other(object, out, kInt16);
}

int convert_int32(PyObject* object, void* out) {
    if (is_int(object)) {
        const long value = PyLong_AsLong(object);
        if (value == -1 && PyErr_Occurred()) return 0;
        if (!fits_int32(value)) return fail_c_long();
        *static_cast<int32_t*>(out) = static_cast<int32_t>(value);
        return 1;
    }
    if (PyFloat_Check(object)) {
        *static_cast<int32_t*>(out) = truncate32(PyFloat_AS_DOUBLE(object));
        return 1;
    }
    return integer_from_other(object, out, kInt32);
}

int convert_int64(PyObject* object, void* out) {
    if (is_int(object)) {
        const long long value = PyLong_AsLongLong(object);
        if (value == -1 && PyErr_Occurred()) return 0;
        *static_cast<int64_t*>(out) = value;
        return 1;
    }
    if (PyFloat_Check(object)) {
        *static_cast<int64_t*>(out) = truncate64(PyFloat_AS_DOUBLE(object));
        return 1;
    }
    return integer_from_other(object, out, kInt64);
}

int convert_single(PyObject* object, void* out) { return convert_real<float>(object, out, "Single"); }

int convert_double(PyObject* object, void* out) { return convert_real<double>(object, out, "Double"); }

uint8_t read_truth(PyObject* object) { return PyObject_IsTrue(object) != 0 ? 1 : 0; }

int32_t read_integer(PyObject* object, int64_t* out) {
    // One signed 64-bit reading decides both signed widths: code 1 is kept for what fits 32 bits.
    const long long value = PyLong_AsLongLong(object);
    if (value != -1 || !PyErr_Occurred()) {
        *out = value;
        return fits_int32(value) ? 1 : 2;
    }
    PyErr_Clear();
    const unsigned long long wide = PyLong_AsUnsignedLongLong(object);
    if (wide != ULLONG_MAX || !PyErr_Occurred()) {
        *out = static_cast<int64_t>(wide);
        return 3;
    }
    PyErr_Clear();
    return fail_integer_value(object);
}

int32_t read_float(PyObject* object, double* out) {
    const double value = PyFloat_AsDouble(object);
    if (value == -1.0 && PyErr_Occurred()) return 0;
    *out = value;
    return 1;
}

int32_t read_char_string(PyObject* object, PyObject** owner, int32_t* count, const void** data) {
    if (!PyUnicode_Check(object)) return fail_char_type("can't build Char from '%s'", Py_TYPE(object)->tp_name);
    if (!PyUnicode_IS_READY(object) && _PyUnicode_Ready(object) < 0) {
        return fail_char("unicode object is not ready");
    }
    PyObject* encoded = PyUnicode_AsUTF16String(object);
    if (encoded == nullptr) {
        return PyErr_Occurred() ? 0 : fail_char("cannot convert unicode object to byte string");
    }
    if (!PyBytes_Check(encoded)) {
        const char* name = object == Py_None ? "None" : Py_TYPE(encoded)->tp_name;
        fail_char_type("converted string must be bytes-like object, not '%s'", name);
        Py_DECREF(encoded);
        return 0;
    }
    *count = static_cast<int32_t>((PyBytes_GET_SIZE(encoded) - 2) / 2);
    *owner = encoded;
    // Start plus four, not plus the two bytes of the byte order mark: the managed side reads from there.
    *data = PyBytes_AS_STRING(encoded) + 4;
    return 1;
}
