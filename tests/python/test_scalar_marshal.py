"""Scalar converters (bool, Byte, Int16, Int32, Int64, Single, Double) and the scalar readers of the values-in rows."""

import enum
import math
import struct
from decimal import Decimal as D, DecimalTuple
from types import SimpleNamespace

import pytest

import marshal_probe as probe

INT32_MIN = -2**31


class Colour(enum.IntEnum):
    RED = 7


class Real(float):
    pass


def single(value):
    return struct.unpack("f", struct.pack("f", value))[0]


ACCEPTED = [
    # bool only from bool; integers from int and IntEnum up to each type's limits
    ("bool", True, True), ("bool", False, False), ("byte", Colour.RED, 7),
    ("byte", 255, 255), ("int16", -32768, -32768), ("int16", 32767, 32767),
    ("int32", INT32_MIN, INT32_MIN), ("int32", 2**31 - 1, 2**31 - 1),
    ("int64", -2**63, -2**63), ("int64", 2**63 - 1, 2**63 - 1),
    # floats: hardware truncation; out of range and NaN give the indefinite value, cut to the width
    ("int32", 2.9, 2), ("int32", -2.9, -2), ("int32", Real(5.5), 5), ("int32", math.nan, INT32_MIN),
    ("int32", 1e10, INT32_MIN), ("int32", -math.inf, INT32_MIN), ("int16", 1e10, 0), ("int16", 70000.0, 4464),
    ("byte", 300.7, 300 & 0xFF), ("byte", -1.0, 0xFF), ("int64", 2.5e18, 25 * 10**17), ("int64", math.nan, -2**63),
    # Decimal and DecimalTuple: the digit path, truncating toward zero
    ("int32", D("2147483647"), 2147483647), ("int32", D("-2147483648"), INT32_MIN), ("int32", D("1E+2"), 100),
    ("int32", D("2E+9"), 2000000000), ("int32", D("1.99"), 1), ("int32", D("-1.99"), -1), ("int32", D("-0"), 0),
    ("int32", D("0E+999999999"), 0), ("int32", D("1E-999999"), 0), ("int16", D("-32768"), -32768),
    ("byte", D("255"), 255),
    ("int64", D("-9223372036854775808"), -2**63), ("int64", D("9223372036854775807"), 2**63 - 1),
    ("int32", DecimalTuple(1, (4, 2), 1), -420), ("int16", DecimalTuple(0, (1, 2, 3), -1), 12),
    # Single narrows without a range test; both take integers up to unsigned 64 bits
    ("single", 1e300, math.inf), ("single", -1e300, -math.inf), ("single", 0.1, single(0.1)),
    ("single", 2**64 - 1, single(2.0**64)), ("single", Colour.RED, 7.0), ("double", -2**63, -2.0**63),
    ("double", 2**64 - 1, 2.0**64), ("double", 3, 3.0),
]

REFUSED = [
    # the type: bool only from bool, numbers not from bool, Decimal not for floats, no digit path for lookalikes
    ("bool", 1, TypeError, "can't build bool from 'int'"), ("byte", True, TypeError, "can't build 'Byte' from 'bool'"),
    ("int32", None, TypeError, "can't build 'Int32' from 'NoneType'"),
    ("int64", "1", TypeError, "can't build 'Int64' from 'str'"),
    ("single", True, TypeError, "can't build 'Single' from 'bool'"),
    ("double", D(1), TypeError, "can't build 'Double' from 'decimal.Decimal'"),
    ("int32", SimpleNamespace(sign=0, digits=(1,), exponent=0), TypeError,
     "can't build 'Int32' from 'types.SimpleNamespace'"),
    # integers out of range: 32-bit C long semantics, or Python's own texts where its readers refuse first
    ("byte", 256, OverflowError, "value too big to convert to 'Byte'"),
    ("byte", 2**40, OverflowError, "Python int too large to convert to C unsigned long"),
    ("int16", 32768, OverflowError, "value too big to convert to 'Int16'"),
    ("int16", -32769, OverflowError, "value too small to convert to 'Int16'"),
    ("int16", 2**40, OverflowError, "Python int too large to convert to C long"),
    ("int32", 2**31, OverflowError, "Python int too large to convert to C long"),
    ("int32", INT32_MIN - 1, OverflowError, "Python int too large to convert to C long"),
    ("byte", -1, OverflowError, "can't convert negative value to unsigned int"),
    ("int64", 2**63, OverflowError, "int too big to convert"),
    ("single", 2**64, OverflowError, "int too big to convert"),
    ("double", -2**63 - 1, OverflowError, "can't convert negative int to unsigned"),
    # the digit path
    ("int32", D("2147483648"), OverflowError, "value too large for 'Int32'"),
    ("int32", D("-2147483649"), OverflowError, "value too small for 'Int32'"),
    ("int32", D("3E+9"), OverflowError, "value too large for 'Int32'"),
    ("int32", D("-3E+9"), OverflowError, "value too small for 'Int32'"),
    ("int16", D("-32769"), OverflowError, "value too small for 'Int16'"),
    ("int64", D("9223372036854775808"), OverflowError, "value too large for 'Int64'"),
    ("byte", D("256"), OverflowError, "value too large for 'Byte'"),
    ("byte", D("-0"), OverflowError, "value too small for 'Byte'"),
    ("int32", D("Infinity"), OverflowError, "value too large for .Net 'Int32'"),
    ("int32", D("sNaN"), OverflowError, "value is not a number"),
    ("int32", DecimalTuple(0, (1,), "x"), TypeError, "can't build 'Int32' from exponent value 'x'"),
    ("int32", DecimalTuple(0, (1,), 1.5), TypeError, "unknown exponent type 'float'"),
]


@pytest.mark.parametrize("name, value, expected", ACCEPTED)
def test_converter_accepts(name, value, expected):
    result = probe.convert(name, value)
    assert (type(result), result) == (type(expected), expected)


@pytest.mark.parametrize("name, value, error, message", REFUSED)
def test_converter_refuses(name, value, error, message):
    with pytest.raises(Exception) as caught:
        probe.convert(name, value)
    assert (caught.type, str(caught.value)) == (error, message)


class TestReaders:
    def test_truth_tests_and_a_failing_one_counts_as_true(self):
        class Broken:
            def __bool__(self):
                raise ValueError("no truth")
        assert probe.read_truth([]) == (0, None) and probe.read_truth([0]) == (1, None)
        truth, error = probe.read_truth(Broken())
        assert truth == 1 and isinstance(error, ValueError)

    @pytest.mark.parametrize("value, code", [(5, 1), (INT32_MIN, 1), (2**31 - 1, 1), (Colour.RED, 1),
                                             (2**31, 2), (INT32_MIN - 1, 2), (-2**63, 2), (2**63, 3), (2**64 - 1, 3)])
    def test_integer_width_codes(self, value, code):
        assert probe.read_integer(value) == (code, value)

    def test_integer_refusals_and_the_float_reader(self):
        for value, name in [(2**64, "int"), (-2**63 - 1, "int"), (2.5, "float"), ("3", "str")]:
            with pytest.raises(TypeError, match=f"^can't build integer value from '{name}'$"):
                probe.read_integer(value)
        assert probe.read_float(3) == 3.0
        with pytest.raises(TypeError):
            probe.read_float("x")

    @pytest.mark.parametrize("text", ["a", "\u20ac", "\U0001F600", ""])
    def test_char_string_counts_units_behind_the_mark(self, text):
        assert probe.read_char_string(text) == (len(text.encode("utf-16-le")) // 2, text.encode("utf-16"), 4)
        with pytest.raises(TypeError, match="^can't build Char from 'int'$"):
            probe.read_char_string(5)
