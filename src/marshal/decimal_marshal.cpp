// Decimal in and out: the digit-group builder with its one-digit rounding, and the division back to digits.
#include "marshal/decimal_marshal.h"

#include <cmath>
#include <cstring>

#include "common/dependency_import.h"
#include "common/interned_names.h"

namespace {

constexpr long long kMaxDigits = 29;
constexpr long long kMaxScale = 28;
constexpr uint32_t kGroupDigits = 9;
constexpr uint32_t kPow10[10] = {1u,      10u,      100u,      1000u,      10000u,
                                 100000u, 1000000u, 10000000u, 100000000u, 1000000000u};

// (2**96 - 1) / 100: the largest 27-digit prefix that two more digits can follow without overflow,
// provided those two are 35 or less.
constexpr uint32_t kPrefixLimit[3] = {0x28F5C28Fu, 0xF5C28F5Cu, 0x028F5C28u};  // low, mid, high
constexpr uint32_t kPrefixLimitTail = 36;

// Biased exponent of 2**96: doubles at or above it cannot be a managed decimal.
constexpr uint64_t kLargestDoubleExponent = 1118;

[[gnu::cold, gnu::noinline]] int fail_too_large() {
    PyErr_SetString(PyExc_OverflowError, "value too large for .Net decimal");
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_not_a_decimal(PyObject* object) {
    PyErr_Format(PyExc_TypeError, "can't build Decimal from '%s'", Py_TYPE(object)->tp_name);
    return 0;
}

[[gnu::cold, gnu::noinline]] int fail_nan() {
    PyErr_SetString(PyExc_TypeError, "can't build Decimal from NaN");
    return 0;
}

[[gnu::cold, gnu::noinline]] int refuse_exponent(PyObject* exponent, const char* type_name) {
    if (!PyUnicode_Check(exponent)) {
        PyErr_Format(PyExc_TypeError, "unknown exponent type '%s'", Py_TYPE(exponent)->tp_name);
    } else if (PyUnicode_CompareWithASCIIString(exponent, "F") == 0) {
        PyErr_Format(PyExc_OverflowError, "value too large for .Net '%s'", type_name);
    } else if (PyUnicode_CompareWithASCIIString(exponent, "n") == 0 ||
               PyUnicode_CompareWithASCIIString(exponent, "N") == 0) {
        PyErr_SetString(PyExc_OverflowError, "value is not a number");
    } else {
        PyErr_Format(PyExc_TypeError, "can't build '%s' from exponent value '%U'", type_name, exponent);
    }
    return 0;
}

inline bool is_zero(const ManagedDecimal* value) { return (value->low | value->mid | value->high) == 0; }

// magnitude := magnitude * factor + addend; true on a carry out of 96 bits.
inline bool multiply_add(ManagedDecimal* value, uint32_t factor, uint32_t addend) {
    uint64_t step = static_cast<uint64_t>(value->low) * factor + addend;
    value->low = static_cast<uint32_t>(step);
    step = static_cast<uint64_t>(value->mid) * factor + (step >> 32);
    value->mid = static_cast<uint32_t>(step);
    step = static_cast<uint64_t>(value->high) * factor + (step >> 32);
    value->high = static_cast<uint32_t>(step);
    return (step >> 32) != 0;
}

// Drops the last digit of `group`, rounding half to even on that one digit.
inline uint32_t round_off_digit(uint32_t group) {
    uint32_t kept = group / 10;
    const uint32_t dropped = group % 10;
    if (dropped > 5 || (dropped == 5 && (kept & 1u) != 0)) ++kept;
    return kept;
}

// -1, 0 or 1 as the magnitude is below, at or above the 27-digit prefix limit.
inline int compare_prefix_limit(const ManagedDecimal* value) {
    const uint32_t words[3] = {value->low, value->mid, value->high};
    for (int i = 2; i >= 0; --i) {
        if (words[i] != kPrefixLimit[i]) return words[i] > kPrefixLimit[i] ? 1 : -1;
    }
    return 0;
}

struct DecimalBuilder {
    ManagedDecimal* target;
    bool overflow;
    int32_t round_position;  // digits after which one digit is consumed for rounding; -1 for none
    int64_t exponent;
    uint32_t sign;
    uint32_t digit_count;
};

void feed(DecimalBuilder* builder, uint32_t group, uint32_t digits) {
    if (static_cast<int64_t>(builder->digit_count) + digits == builder->round_position) {
        group = round_off_digit(group);
        --digits;
    }
    builder->digit_count += digits;
    if (builder->digit_count == kMaxDigits && builder->exponent < 0) {
        // 27 digits stand in the magnitude and `group` holds the last two: they may not fit.
        const int order = compare_prefix_limit(builder->target);
        if (order > 0 || (order == 0 && group >= kPrefixLimitTail)) {
            builder->exponent += 1;
            group = round_off_digit(group);
            digits = 1;
        }
    }
    if (multiply_add(builder->target, kPow10[digits], group)) builder->overflow = true;
}

bool finish(DecimalBuilder* builder) {
    if (builder->overflow) return false;
    ManagedDecimal* value = builder->target;
    if (is_zero(value)) {
        value->flags = 0;  // no negative zero
        return true;
    }
    const uint32_t sign = builder->sign != 0 ? kDecimalSignBit : 0u;
    if (builder->exponent <= 0) {
        value->flags = sign | (static_cast<uint32_t>(-builder->exponent) & 0xFFu) << 16;
        return true;
    }
    for (int64_t left = builder->exponent; left > 0; left -= kGroupDigits) {
        const uint32_t step = left > kGroupDigits ? kGroupDigits : static_cast<uint32_t>(left);
        if (multiply_add(value, kPow10[step], 0)) return false;
    }
    value->flags = sign;
    return true;
}

// Feeds the first `count` digits of `digits` (a tuple) in groups of nine. 1, or 0 with an exception set.
int feed_digits(DecimalBuilder* builder, PyObject* digits, Py_ssize_t count) {
    for (Py_ssize_t start = 0; start < count; start += kGroupDigits) {
        const Py_ssize_t end = count - start > kGroupDigits ? start + kGroupDigits : count;
        uint32_t group = 0;
        for (Py_ssize_t i = start; i < end; ++i) {
            const long digit = PyLong_AsLong(PyTuple_GET_ITEM(digits, i));
            if (digit == -1 && PyErr_Occurred()) return 0;
            group = group * 10 + static_cast<uint32_t>(digit);
        }
        feed(builder, group, static_cast<uint32_t>(end - start));
    }
    return 1;
}

int build_from_digits(ManagedDecimal* out, long long exponent, long sign, PyObject* digits) {
    Py_ssize_t count = PyTuple_GET_SIZE(digits);
    int32_t round_position = -1;
    if (exponent > kMaxDigits - count && count > 1) return fail_too_large();
    if (exponent < -kMaxScale) {
        const long long excess = -kMaxScale - exponent;
        if (count < excess) {
            count = 0;
        } else {
            count -= static_cast<Py_ssize_t>(excess);
            round_position = static_cast<int32_t>(count + 1);
        }
        exponent = -kMaxScale;
    }
    if (count > kMaxDigits) {
        exponent += count - kMaxDigits;
        count = kMaxDigits;
        round_position = kMaxDigits + 1;
    }
    *out = ManagedDecimal{};
    DecimalBuilder builder{out, false, round_position, exponent, static_cast<uint32_t>(sign), 0};
    const Py_ssize_t fed = count > round_position ? count : round_position;
    if (!feed_digits(&builder, digits, fed)) return 0;
    return finish(&builder) ? 1 : fail_too_large();
}

int decimal_from_int(PyObject* object, ManagedDecimal* out) {
    *out = ManagedDecimal{};
    const long long value = PyLong_AsLongLong(object);
    if (value == -1 && PyErr_Occurred()) {
        // Beyond signed 64 bits: the unsigned reading is stored untested; a failure stays pending.
        PyErr_Clear();
        const unsigned long long wide = PyLong_AsUnsignedLongLong(object);
        out->low = static_cast<uint32_t>(wide);
        out->mid = static_cast<uint32_t>(wide >> 32);
        return 1;
    }
    const unsigned long long magnitude =
        value < 0 ? 0ull - static_cast<unsigned long long>(value) : static_cast<unsigned long long>(value);
    out->low = static_cast<uint32_t>(magnitude);
    out->mid = static_cast<uint32_t>(magnitude >> 32);
    if (value < 0) out->flags = kDecimalSignBit;
    return 1;
}

int decimal_from_double(double value, ManagedDecimal* out) {
    *out = ManagedDecimal{};
    if (std::isnan(value)) return fail_nan();
    uint64_t bits;
    std::memcpy(&bits, &value, sizeof bits);
    if (((bits >> 52) & 0x7FFu) > kLargestDoubleExponent) return fail_too_large();
    out->low = static_cast<uint32_t>(bits);
    out->mid = static_cast<uint32_t>(bits >> 32);
    out->flags = kDecimalDoubleForm;
    return 1;
}

int decimal_from_decimal(PyObject* decimal, ManagedDecimal* out) {
    PyObject* tuple = PyObject_CallMethodNoArgs(decimal, interned(InternedName::AsTuple));
    if (tuple == nullptr) return 0;
    const int result = decimal_in_tuple(tuple, out);
    Py_DECREF(tuple);
    return result;
}

// Divides the magnitude by 10 in place, from the top word down; returns the remainder.
inline uint8_t divide_by_ten(ManagedDecimal* value) {
    uint32_t* const words[3] = {&value->high, &value->mid, &value->low};
    uint64_t rest = 0;
    for (uint32_t* word : words) {
        const uint64_t current = (rest << 32) | *word;
        *word = static_cast<uint32_t>(current / 10);
        rest = current % 10;
    }
    return static_cast<uint8_t>(rest);
}

int is_instance_of(PyObject* object, InternedName type_name) {
    PyObject* type = import_attribute("decimal", interned(type_name));
    if (type == nullptr) return -1;
    const int result = PyObject_IsInstance(object, type);
    Py_DECREF(type);
    return result;
}

}  // namespace

int decimal_family(PyObject* object) {
    int found = is_instance_of(object, InternedName::DecimalTuple);
    if (found != 0) return found;
    found = is_instance_of(object, InternedName::Decimal);
    return found > 0 ? 2 : found;
}

int read_decimal_exponent(PyObject* tuple, const char* type_name, long long* exponent) {
    PyObject* value = PyObject_GetAttr(tuple, interned(InternedName::Exponent));
    if (value == nullptr) return 0;
    if (!PyLong_Check(value)) {
        refuse_exponent(value, type_name);
        Py_DECREF(value);
        return 0;
    }
    *exponent = PyLong_AsLongLong(value);
    Py_DECREF(value);
    return *exponent == -1 && PyErr_Occurred() ? 0 : 1;
}

int decimal_in_tuple(PyObject* tuple, ManagedDecimal* out) {
    long long exponent;
    if (!read_decimal_exponent(tuple, "Decimal", &exponent)) return 0;
    PyObject* sign_object = PyObject_GetAttr(tuple, interned(InternedName::Sign));
    if (sign_object == nullptr) return 0;
    const long sign = PyLong_AsLong(sign_object);
    Py_DECREF(sign_object);
    if (sign == -1 && PyErr_Occurred()) return 0;
    PyObject* digit_object = PyObject_GetAttr(tuple, interned(InternedName::Digits));
    if (digit_object == nullptr) return 0;
    PyObject* digits = PySequence_Tuple(digit_object);
    Py_DECREF(digit_object);
    if (digits == nullptr) return 0;
    const int result = build_from_digits(out, exponent, sign, digits);
    Py_DECREF(digits);
    return result;
}

int decimal_in(PyObject* object, ManagedDecimal* out) {
    // int and float first: neither can also be a Decimal or a DecimalTuple, and they need no import.
    if (PyLong_Check(object) && !PyBool_Check(object)) return decimal_from_int(object, out);
    if (PyFloat_Check(object)) return decimal_from_double(PyFloat_AS_DOUBLE(object), out);
    switch (decimal_family(object)) {
        case 1:
            return decimal_in_tuple(object, out);
        case 2:
            return decimal_from_decimal(object, out);
        case 0:
            return fail_not_a_decimal(object);
        default:
            return 0;
    }
}

PyObject* decimal_out(ManagedDecimal* value) {
    const long sign = (value->flags & kDecimalSignBit) != 0 ? 1 : 0;
    const long scale = static_cast<long>((value->flags >> 16) & 0xFFu);
    uint8_t digits[30];
    int count = 0;
    do {
        digits[count++] = divide_by_ten(value);
    } while (!is_zero(value));
    PyObject* digit_tuple = PyTuple_New(count);
    if (digit_tuple == nullptr) return nullptr;
    for (int i = 0; i < count; ++i) {
        PyTuple_SET_ITEM(digit_tuple, i, PyLong_FromLong(digits[count - 1 - i]));  // small ints: cached
    }
    PyObject* tuple = Py_BuildValue("(lNl)", sign, digit_tuple, -scale);
    if (tuple == nullptr) return nullptr;
    PyObject* decimal_type = import_attribute("decimal", interned(InternedName::Decimal));
    if (decimal_type == nullptr) {
        Py_DECREF(tuple);
        return nullptr;
    }
    PyObject* result = PyObject_CallOneArg(decimal_type, tuple);
    Py_DECREF(decimal_type);
    Py_DECREF(tuple);
    return result;
}
