"""Decimal and Guid through the values-in and values-out rows: records in (any object, and from a tuple) and out.
What the managed side makes of decimal records is seen through Image.tag (test_variants)."""
import math
import struct
import uuid
from decimal import Decimal as D, DecimalTuple
from types import SimpleNamespace

import pytest

import marshal_probe as probe

SIGN = 0x80000000
MAX = 2**96 - 1
FIXED = uuid.UUID("00112233-4455-6677-8899-aabbccddeeff")


def words(magnitude, scale=0, negative=False):
    return (magnitude & 0xFFFFFFFF, (magnitude >> 32) & 0xFFFFFFFF, magnitude >> 64,
            (SIGN if negative else 0) | scale << 16)


def double_form(value):
    bits = struct.unpack("<Q", struct.pack("<d", value))[0]
    return (bits & 0xFFFFFFFF, bits >> 32, 0, 1)


@pytest.mark.parametrize("value, record", [
    (D("0.1"), words(1, 1)), (D("-1.5"), words(15, 1, negative=True)), (D("12.5000"), words(125000, 4)),
    (D("1E+28"), words(10**28)), (D("79228162514264337593543950335"), words(MAX)),
    (D("7922816251426433759354395033.5"), words(MAX, 1)),
    (D("7.9228162514264337593543950336"), words(7922816251426433759354395034, 27)),
    (D("0.00000000000000000000000000006"), words(1, 28)),
    (D("0.00000000000000000000000000015"), words(2, 28)),  # 1.5 rounds half to even: 2
    (D("0.00000000000000000000000000025"), words(2, 28)),  # 2.5 rounds half to even: 2
    # longer values round half to even to what fits, seeing no digit past the thirtieth
    (D("12345678901234567890.1234567895"), words(12345678901234567890123456790, 9)),
    (D("9.87654321098765432109876543216"), words(9876543210987654321098765432, 27)),
    (D("-0.000000000000000000000000000123456"), words(1, 28, negative=True)),
    (D("12345678901234567890.12345678850001"), words(12345678901234567890123456788, 9)),  # not ...789
    # zero has neither sign nor scale
    (D("-0.000"), words(0)), (D("0E+50"), words(0)), (D("0.00000000000000000000000000005"), words(0)),
    (D("1E-40"), words(0)),
    # ints by magnitude and sign, floats in their double form, tuples by their fields
    (-5, words(5, negative=True)), (-2**63, words(2**63, negative=True)), (2**64 - 1, words(2**64 - 1)),
    (-1.5, double_form(-1.5)), (float(2**96 - 2**43), double_form(float(2**96 - 2**43))),
    (DecimalTuple(1, (1, 2, 3), -2), words(123, 2, negative=True))])
def test_decimal_records(value, record):
    assert probe.decimal_in(value) == record


def test_the_tuple_row_reads_the_fields_of_any_object():
    assert probe.decimal_in_tuple(SimpleNamespace(exponent=1, sign=0, digits=(4,))) == words(40)


@pytest.mark.parametrize("read, value, error, message", [
    (probe.decimal_in, D("1E+29"), OverflowError, "value too large for .Net decimal"),
    (probe.decimal_in, D("-79228162514264337593543950336"), OverflowError, "value too large for .Net decimal"),
    (probe.decimal_in, float(2**96), OverflowError, "value too large for .Net decimal"),
    (probe.decimal_in, D("-Infinity"), OverflowError, "value too large for .Net 'Decimal'"),
    (probe.decimal_in, D("sNaN"), OverflowError, "value is not a number"),
    (probe.decimal_in, math.nan, TypeError, "can't build Decimal from NaN"),
    (probe.decimal_in, 2**64, OverflowError, "int too big to convert"),
    (probe.decimal_in, True, TypeError, "can't build Decimal from 'bool'"),
    (probe.decimal_in_tuple, DecimalTuple(0, (1,), "x"), TypeError, "can't build 'Decimal' from exponent value 'x'"),
    (probe.decimal_in_tuple, DecimalTuple(0, (1,), None), TypeError, "unknown exponent type 'NoneType'"),
    (lambda value: probe.convert("guid", value), str(FIXED), TypeError, "can't build Guid from 'str'"),
    (lambda value: probe.convert("guid", value), FIXED.bytes_le, TypeError, "can't build Guid from 'bytes'"),
    (probe.guid_in_quiet, object(), AttributeError, "'object' object has no attribute 'bytes_le'")])
def test_refusals(read, value, error, message):
    with pytest.raises(Exception) as caught:
        read(value)
    assert (caught.type, str(caught.value)) == (error, message)


@pytest.mark.parametrize("record, expected", [
    ((0, 0, 0, SIGN), "-0"), (words(MAX), "79228162514264337593543950335"), (words(1, 28), "1E-28"),
    (words(1234500, 3, negative=True), "-1234.500")])
def test_decimal_out_builds_a_decimal_keeping_sign_digits_and_exponent(record, expected):
    result = probe.decimal_out(*record)
    assert type(result) is D and result.as_tuple() == D(expected).as_tuple()


@pytest.mark.parametrize("value", [FIXED, uuid.UUID(int=2**128 - 1), type("Tagged", (uuid.UUID,), {})(int=5)])
def test_guid_converter_copies_bytes_le_and_the_builder_reverses_it(value):
    assert probe.convert("guid", value) == value.bytes_le
    back = probe.guid_out(value.bytes_le)
    assert type(back) is uuid.UUID and back == value
    # the quiet reader skips the type test
    assert probe.guid_in_quiet(SimpleNamespace(bytes_le=value.bytes_le)) == value.bytes_le
