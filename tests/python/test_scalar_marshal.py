"""Scalar converters of parameters: bool, Byte, Int16, Int32, Int64, Single and Double, their limits and refusals."""
import enum
import math
import struct
from decimal import Decimal as D, DecimalTuple
from types import SimpleNamespace

import pytest

import marshal_probe as probe

INT32_MIN = -2**31
Colour = enum.IntEnum("Colour", {"RED": 7})


def single(value):
    return struct.unpack("f", struct.pack("f", value))[0]


def digits(word, name):
    return OverflowError, f"value too {word} for '{name}'"


C_LONG = (OverflowError, "Python int too large to convert to C long")
TOO_BIG = (OverflowError, "int too big to convert")


CASES = [
    # bool only from bool; integers from int and IntEnum up to each type's limits
    ("bool", True, True), ("byte", Colour.RED, 7), ("byte", 255, 255), ("int16", -32768, -32768),
    ("int16", 32767, 32767), ("int32", INT32_MIN, INT32_MIN), ("int32", 2**31 - 1, 2**31 - 1),
    ("int64", -2**63, -2**63), ("int64", 2**63 - 1, 2**63 - 1),
    # floats: hardware truncation; out of range and NaN give the indefinite value, cut to the width
    ("int32", 2.9, 2), ("int32", -2.9, -2), ("int32", math.nan, INT32_MIN), ("int32", 1e10, INT32_MIN),
    ("int16", 70000.0, 4464), ("byte", -1.0, 0xFF), ("int64", 2.5e18, 25 * 10**17), ("int64", math.nan, -2**63),
    # Decimal and DecimalTuple: the digit path, truncating toward zero
    ("int32", D("2147483647"), 2147483647), ("int32", D("-2147483648"), INT32_MIN), ("int32", D("2E+9"), 2000000000),
    ("int32", D("-1.99"), -1), ("int32", D("-0"), 0), ("int32", D("0E+999999999"), 0), ("int32", D("1E-999999"), 0),
    ("int16", D("-32768"), -32768), ("byte", D("255"), 255), ("int64", D("-9223372036854775808"), -2**63),
    ("int64", D("9223372036854775807"), 2**63 - 1), ("int32", DecimalTuple(1, (4, 2), 1), -420),
    # Single narrows without a range test; both take integers up to unsigned 64 bits
    ("single", 1e300, math.inf), ("single", 0.1, single(0.1)), ("single", 2**64 - 1, single(2.0**64)),
    ("single", Colour.RED, 7.0), ("double", -2**63, -2.0**63), ("double", 2**64 - 1, 2.0**64),
    # the type: bool only from bool, numbers not from bool, Decimal not for floats, no digit path for lookalikes
    ("bool", 1, (TypeError, "can't build bool from 'int'")),
    ("byte", True, (TypeError, "can't build 'Byte' from 'bool'")),
    ("int32", None, (TypeError, "can't build 'Int32' from 'NoneType'")),
    ("single", True, (TypeError, "can't build 'Single' from 'bool'")),
    ("double", D(1), (TypeError, "can't build 'Double' from 'decimal.Decimal'")),
    ("int32", SimpleNamespace(sign=0, digits=(1,), exponent=0),
     (TypeError, "can't build 'Int32' from 'types.SimpleNamespace'")),
    # integers out of range: 32-bit C long semantics, or Python's own texts where its readers refuse first
    ("byte", 256, (OverflowError, "value too big to convert to 'Byte'")),
    ("int16", 32768, (OverflowError, "value too big to convert to 'Int16'")),
    ("int16", -32769, (OverflowError, "value too small to convert to 'Int16'")),
    ("byte", 2**40, (OverflowError, "Python int too large to convert to C unsigned long")),
    ("int16", 2**40, C_LONG), ("int32", 2**31, C_LONG), ("int32", INT32_MIN - 1, C_LONG),
    ("byte", -1, (OverflowError, "can't convert negative value to unsigned int")),
    ("int64", 2**63, TOO_BIG), ("single", 2**64, TOO_BIG),
    ("double", -2**63 - 1, (OverflowError, "can't convert negative int to unsigned")),
    # the digit path
    ("int32", D("2147483648"), digits("large", "Int32")), ("int32", D("-2147483649"), digits("small", "Int32")),
    ("int32", D("3E+9"), digits("large", "Int32")), ("int32", D("-3E+9"), digits("small", "Int32")),
    ("int16", D("-32769"), digits("small", "Int16")), ("int64", D("9223372036854775808"), digits("large", "Int64")),
    ("byte", D("256"), digits("large", "Byte")), ("byte", D("-0"), digits("small", "Byte")),
    ("int32", D("Infinity"), (OverflowError, "value too large for .Net 'Int32'")),
    ("int32", D("sNaN"), (OverflowError, "value is not a number")),
    ("int32", DecimalTuple(0, (1,), "x"), (TypeError, "can't build 'Int32' from exponent value 'x'")),
    ("int32", DecimalTuple(0, (1,), 1.5), (TypeError, "unknown exponent type 'float'")),
]


@pytest.mark.parametrize("name, value, expected", CASES)
def test_converter(name, value, expected):  # a value of the expected type, or (exception type, text)
    try:
        got = getattr(probe, name)(value)
    except Exception as error:
        got = (type(error), str(error))
    assert (type(got), got) == (type(expected), expected)

