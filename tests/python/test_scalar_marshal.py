"""Scalar converters (bool, Byte, Int16, Int32, Int64, Single, Double) and the scalar readers of the values-in rows."""

import enum
import math
import struct
from decimal import Decimal, DecimalTuple
from types import SimpleNamespace

import pytest

import marshal_probe as probe

INTEGERS = ["byte", "int16", "int32", "int64"]
MANAGED = {"byte": "Byte", "int16": "Int16", "int32": "Int32", "int64": "Int64",
           "single": "Single", "double": "Double"}
INT32_MIN = -2**31


class Colour(enum.IntEnum):
    RED = 7


class Real(float):
    pass


def refused(name, value):
    with pytest.raises(Exception) as caught:
        probe.convert(name, value)
    return caught.type, str(caught.value)


class TestBool:
    @pytest.mark.parametrize("value", [True, False])
    def test_bool_itself(self, value):
        assert probe.convert("bool", value) is value

    @pytest.mark.parametrize("value, name", [(1, "int"), (None, "NoneType"), ([], "list")])
    def test_no_truth_testing(self, value, name):
        assert refused("bool", value) == (TypeError, f"can't build bool from '{name}'")


class TestIntegerAcceptance:
    @pytest.mark.parametrize("name", INTEGERS)
    @pytest.mark.parametrize("value", [0, 7, Colour.RED])
    def test_int_and_int_enum(self, name, value):
        assert probe.convert(name, value) == int(value)

    @pytest.mark.parametrize("name", INTEGERS + ["single", "double"])
    @pytest.mark.parametrize("value, type_name", [(True, "bool"), (None, "NoneType"), ("1", "str")])
    def test_refusals_name_managed_and_python_types(self, name, value, type_name):
        assert refused(name, value) == (TypeError, f"can't build '{MANAGED[name]}' from '{type_name}'")


class TestIntegerRanges:
    @pytest.mark.parametrize("name, low, high", [
        ("byte", 0, 255), ("int16", -32768, 32767), ("int32", INT32_MIN, 2**31 - 1), ("int64", -2**63, 2**63 - 1),
    ])
    def test_bounds_pass(self, name, low, high):
        assert (probe.convert(name, low), probe.convert(name, high)) == (low, high)

    @pytest.mark.parametrize("name, value, message", [
        ("byte", 256, "value too big to convert to 'Byte'"),
        ("byte", 2**40, "Python int too large to convert to C unsigned long"),
        ("int16", 32768, "value too big to convert to 'Int16'"),
        ("int16", -32769, "value too small to convert to 'Int16'"),
        ("int16", 2**40, "Python int too large to convert to C long"),
        ("int32", 2**31, "Python int too large to convert to C long"),
        ("int32", INT32_MIN - 1, "Python int too large to convert to C long"),
    ])
    def test_out_of_range_keeps_32_bit_long_semantics(self, name, value, message):
        assert refused(name, value) == (OverflowError, message)

    @pytest.mark.parametrize("name, value", [("byte", -1), ("int64", 2**63), ("int64", -2**63 - 1)])
    def test_other_overflows_are_pythons_own(self, name, value):
        error, message = refused(name, value)
        assert error is OverflowError and not message.startswith("value ")


class TestFloatToInteger:
    @pytest.mark.parametrize("name, value, expected", [
        ("int32", 2.9, 2),
        ("int32", -2.9, -2),
        ("int32", Real(5.5), 5),
        ("int32", math.nan, INT32_MIN),
        ("int32", 1e10, INT32_MIN),
        ("int32", -math.inf, INT32_MIN),
        ("int16", 1e10, 0),          # low 16 bits of the indefinite value
        ("int16", 70000.0, 70000 - 65536),
        ("byte", 300.7, 300 & 0xFF),
        ("byte", -1.0, 0xFF),
        ("int64", 2.5e18, 2500000000000000000),
        ("int64", math.nan, -2**63),
    ])
    def test_hardware_truncation(self, name, value, expected):
        assert probe.convert(name, value) == expected


class TestDigitPath:
    @pytest.mark.parametrize("text, expected", [
        ("2147483647", 2147483647),
        ("-2147483648", INT32_MIN),
        ("1E+2", 100),
        ("2E+9", 2000000000),
        ("0.99", 0),
        ("1.99", 1),
        ("-1.99", -1),
        ("-0", 0),
        ("0E+999999999", 0),
        ("1E-999999", 0),
    ])
    def test_int32_from_decimal(self, text, expected):
        assert probe.convert("int32", Decimal(text)) == expected

    @pytest.mark.parametrize("name, text, message", [
        ("int32", "2147483648", "value too large for 'Int32'"),
        ("int32", "-2147483649", "value too small for 'Int32'"),
        ("int32", "3E+9", "value too large for 'Int32'"),
        ("int32", "-3E+9", "value too small for 'Int32'"),
        ("int16", "32768", "value too large for 'Int16'"),
        ("int16", "-32769", "value too small for 'Int16'"),
        ("int64", "9223372036854775808", "value too large for 'Int64'"),
        ("byte", "256", "value too large for 'Byte'"),
        ("byte", "-0", "value too small for 'Byte'"),
        ("byte", "-1", "value too small for 'Byte'"),
        ("int32", "Infinity", "value too large for .Net 'Int32'"),
        ("int32", "-Infinity", "value too large for .Net 'Int32'"),
        ("int32", "NaN", "value is not a number"),
        ("int32", "sNaN", "value is not a number"),
    ])
    def test_range_and_special_values(self, name, text, message):
        assert refused(name, Decimal(text)) == (OverflowError, message)

    @pytest.mark.parametrize("name, text", [
        ("int16", "-32768"), ("int64", "-9223372036854775808"), ("int64", "9223372036854775807"), ("byte", "255"),
    ])
    def test_limits_reached_by_the_last_digit(self, name, text):
        assert probe.convert(name, Decimal(text)) == int(text)

    def test_decimal_tuple_and_lookalikes(self):
        assert probe.convert("int32", DecimalTuple(1, (4, 2), 1)) == -420
        assert probe.convert("int16", DecimalTuple(0, (1, 2, 3), -1)) == 12

    @pytest.mark.parametrize("exponent, error, message", [
        ("x", TypeError, "can't build 'Int32' from exponent value 'x'"),
        (1.5, TypeError, "unknown exponent type 'float'"),
    ])
    def test_foreign_exponents(self, exponent, error, message):
        assert refused("int32", DecimalTuple(0, (1,), exponent)) == (error, message)

    def test_digit_path_is_not_taken_for_plain_objects(self):
        shaped = SimpleNamespace(sign=0, digits=(1,), exponent=0)
        assert refused("int32", shaped) == (TypeError, "can't build 'Int32' from 'types.SimpleNamespace'")


class TestFloatConverters:
    def test_single_narrows_without_range_test(self):
        assert probe.convert("single", 1e300) == math.inf
        assert probe.convert("single", -1e300) == -math.inf
        assert probe.convert("single", 0.1) == struct.unpack("f", struct.pack("f", 0.1))[0]

    @pytest.mark.parametrize("name", ["single", "double"])
    @pytest.mark.parametrize("value", [3, -2**63, 2**63, 2**64 - 1, Colour.RED])
    def test_integers_up_to_unsigned_64_bits(self, name, value):
        expected = float(value) if name == "double" else struct.unpack("f", struct.pack("f", float(value)))[0]
        assert probe.convert(name, value) == expected

    @pytest.mark.parametrize("name", ["single", "double"])
    @pytest.mark.parametrize("value", [2**64, -2**63 - 1])
    def test_wider_integers_bring_pythons_overflow(self, name, value):
        assert refused(name, value)[0] is OverflowError

    def test_decimal_is_not_a_float(self):
        assert refused("double", Decimal(1)) == (TypeError, "can't build 'Double' from 'decimal.Decimal'")


class TestReaders:
    def test_truth(self):
        assert probe.read_truth([]) == (0, None)
        assert probe.read_truth([0]) == (1, None)

    def test_failing_truth_test_counts_as_true(self):
        class Broken:
            def __bool__(self):
                raise ValueError("no truth")
        truth, error = probe.read_truth(Broken())
        assert truth == 1 and isinstance(error, ValueError)

    @pytest.mark.parametrize("value, code", [
        (5, 1), (INT32_MIN, 1), (2**31 - 1, 1), (Colour.RED, 1),
        (2**31, 2), (INT32_MIN - 1, 2), (-2**63, 2),
        (2**63, 3), (2**64 - 1, 3),
    ])
    def test_integer_width_codes(self, value, code):
        assert probe.read_integer(value) == (code, value)

    @pytest.mark.parametrize("value, name", [(2**64, "int"), (-2**63 - 1, "int"), (2.5, "float"), ("3", "str")])
    def test_integer_refusal(self, value, name):
        with pytest.raises(TypeError, match=f"^can't build integer value from '{name}'$"):
            probe.read_integer(value)

    def test_float_status(self):
        assert probe.read_float(3) == 3.0
        with pytest.raises(TypeError):
            probe.read_float("x")

    @pytest.mark.parametrize("text", ["a", "ab", "\u20ac", "\U0001F600", ""])
    def test_char_string_counts_units_behind_the_mark(self, text):
        count, owner, offset = probe.read_char_string(text)
        assert owner == text.encode("utf-16")
        assert count == len(text.encode("utf-16-le")) // 2
        assert offset == 4

    def test_char_string_refuses_non_strings(self):
        with pytest.raises(TypeError, match="^can't build Char from 'int'$"):
            probe.read_char_string(5)
