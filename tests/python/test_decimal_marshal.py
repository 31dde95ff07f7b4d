"""Decimal records from the values-in row (Decimal back out: test_variants), and Guid parameters and results."""
import math
import struct
import uuid
from decimal import Decimal as D, DecimalTuple

import pytest

import marshal_probe as probe
from orvane.pyfigura import imaging

SIGN = 0x80000000
MAX = 2**96 - 1
FIXED = uuid.UUID("00112233-4455-6677-8899-aabbccddeeff")
TOO_LARGE = "value too large for .Net decimal"


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


@pytest.mark.parametrize("value, error, message", [
    (D("1E+29"), OverflowError, TOO_LARGE), (D("-79228162514264337593543950336"), OverflowError, TOO_LARGE),
    (float(2**96), OverflowError, TOO_LARGE), (D("-Infinity"), OverflowError, "value too large for .Net 'Decimal'"),
    (D("sNaN"), OverflowError, "value is not a number"), (math.nan, TypeError, "can't build Decimal from NaN"),
    (2**64, OverflowError, "int too big to convert"), (True, TypeError, "can't build Decimal from 'bool'"),
    (str(FIXED), TypeError, "can't build Guid from 'str'"), (FIXED.bytes_le, TypeError, "can't build Guid from 'bytes'")])
def test_refusals(value, error, message):  # str and bytes go to a Guid parameter
    with pytest.raises(Exception) as caught:
        (imaging.FrameDimension if isinstance(value, (str, bytes)) else probe.decimal_in)(value)
    assert (caught.type, str(caught.value)) == (error, message)


@pytest.mark.parametrize("value", [FIXED, uuid.UUID(int=2**128 - 1), type("Tagged", (uuid.UUID,), {})(int=5)])
def test_guid_parameters_take_uuids_and_results_are_uuids(value):
    back = imaging.FrameDimension(value).guid
    assert type(back) is uuid.UUID and back == value
