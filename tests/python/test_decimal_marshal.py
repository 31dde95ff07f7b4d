"""Decimal in (any object, and from a tuple) and out, through the values-in and values-out rows."""

import math
import os
import shutil
import struct
import subprocess
from decimal import ROUND_HALF_EVEN, Context, Decimal, DecimalTuple
from types import SimpleNamespace

import pytest

import marshal_probe as probe
from conftest import BUILD, REPO

SIGN = 0x80000000
MAX = 2**96 - 1


def words(magnitude, scale=0, negative=False):
    return (magnitude & 0xFFFFFFFF, (magnitude >> 32) & 0xFFFFFFFF, magnitude >> 64,
            (SIGN if negative else 0) | scale << 16)


def double_form(value):
    bits = struct.unpack("<Q", struct.pack("<d", value))[0]
    return (bits & 0xFFFFFFFF, bits >> 32, 0, 1)


def value_of(record):
    low, mid, high, flags = record
    magnitude = high << 64 | mid << 32 | low
    return Decimal((1 if flags & SIGN else 0, tuple(int(d) for d in str(magnitude)), -((flags >> 16) & 0xFF)))


def fitted(value):
    """The value rounded half to even to the most digits the 96-bit magnitude holds, at most scale 28."""
    wide = Context(prec=60)
    scale = min(28, 28 - value.adjusted())
    rounded = value.quantize(Decimal(1).scaleb(-scale), ROUND_HALF_EVEN, wide)
    if int(rounded.scaleb(scale, wide).copy_abs()) > MAX:
        rounded = value.quantize(Decimal(1).scaleb(1 - scale), ROUND_HALF_EVEN, wide)
    return rounded


def failure(value, row=probe.decimal_in):
    with pytest.raises(Exception) as caught:
        row(value)
    return caught.type, str(caught.value)


class TestDecimalValues:
    @pytest.mark.parametrize("text, magnitude, scale", [
        ("0.1", 1, 1),
        ("1E+28", 10**28, 0),
        ("79228162514264337593543950335", MAX, 0),
        ("7922816251426433759354395033.5", MAX, 1),
        ("7.9228162514264337593543950336", 7922816251426433759354395034, 27),
        ("0.00000000000000000000000000006", 1, 28),
        ("0.00000000000000000000000000015", 2, 28),  # 1.5 rounds half to even: 2
        ("0.00000000000000000000000000025", 2, 28),  # 2.5 rounds half to even: 2
        ("12.5000", 125000, 4),
    ])
    def test_exact_records(self, text, magnitude, scale):
        assert probe.decimal_in(Decimal(text)) == words(magnitude, scale)

    def test_sign_goes_to_bit_31(self):
        assert probe.decimal_in(Decimal("-1.5")) == words(15, 1, negative=True)

    @pytest.mark.parametrize("text", ["0", "-0", "-0.000", "0E+50", "0.00000000000000000000000000005", "1E-40"])
    def test_zero_has_no_sign_and_no_scale(self, text):
        assert probe.decimal_in(Decimal(text)) == (0, 0, 0, 0)

    @pytest.mark.parametrize("text", ["1E+29", "79228162514264337593543950336", "-79228162514264337593543950336",
                                      "123456789012345678901234567890"])
    def test_too_large(self, text):
        assert failure(Decimal(text)) == (OverflowError, "value too large for .Net decimal")

    @pytest.mark.parametrize("text", ["12345678901234567890.1234567895", "9.87654321098765432109876543216",
                                      "-0.000000000000000000000000000123456"])
    def test_longer_values_round_half_even_to_what_fits(self, text):
        assert value_of(probe.decimal_in(Decimal(text))).as_tuple() == fitted(Decimal(text)).as_tuple()

    def test_digits_past_the_thirtieth_are_not_seen_by_rounding(self):
        # Digit 30 is a 5 with more behind it: true rounding goes up, the builder sees only the 5.
        value = Decimal("12345678901234567890.12345678850001")
        seen = Decimal("12345678901234567890.1234567885")
        assert value_of(probe.decimal_in(value)).as_tuple() == fitted(seen).as_tuple()
        assert value_of(probe.decimal_in(value)) != fitted(value)

    @pytest.mark.parametrize("text, error, message", [
        ("Infinity", OverflowError, "value too large for .Net 'Decimal'"),
        ("-Infinity", OverflowError, "value too large for .Net 'Decimal'"),
        ("NaN", OverflowError, "value is not a number"),
        ("sNaN", OverflowError, "value is not a number"),
    ])
    def test_special_values(self, text, error, message):
        assert failure(Decimal(text)) == (error, message)


class TestTuplePath:
    def test_tuple_row_and_lookalikes(self):
        assert probe.decimal_in_tuple(DecimalTuple(1, (1, 2, 3), -2)) == words(123, 2, negative=True)
        assert probe.decimal_in_tuple(SimpleNamespace(exponent=1, sign=0, digits=(4,))) == words(40)
        assert probe.decimal_in(DecimalTuple(0, (9,), -3)) == words(9, 3)

    @pytest.mark.parametrize("exponent, error, message", [
        ("x", TypeError, "can't build 'Decimal' from exponent value 'x'"),
        (None, TypeError, "unknown exponent type 'NoneType'"),
        ("F", OverflowError, "value too large for .Net 'Decimal'"),
        ("n", OverflowError, "value is not a number"),
    ])
    def test_exponent_forms(self, exponent, error, message):
        assert failure(DecimalTuple(0, (1,), exponent), probe.decimal_in_tuple) == (error, message)


class TestNumbers:
    @pytest.mark.parametrize("value", [0, 5, -5, 2**63 - 1, -2**63, 2**64 - 1])
    def test_int_magnitude_and_sign(self, value):
        assert probe.decimal_in(value) == words(abs(value), negative=value < 0)

    @pytest.mark.parametrize("value", [2**64, -2**63 - 1])
    def test_int_beyond_64_bits_leaves_pythons_overflow_pending(self, value):
        assert failure(value)[0] is OverflowError

    @pytest.mark.parametrize("value", [1e28, -1.5, 0.1, float(2**96 - 2**43)])
    def test_float_crosses_in_double_form(self, value):
        assert probe.decimal_in(value) == double_form(value)

    @pytest.mark.parametrize("value", [1e29, float(2**96), math.inf, -math.inf])
    def test_float_from_two_to_the_96_is_refused(self, value):
        assert failure(value) == (OverflowError, "value too large for .Net decimal")

    def test_float_nan_differs_from_decimal_nan(self):
        assert failure(math.nan) == (TypeError, "can't build Decimal from NaN")
        assert failure(Decimal("NaN")) == (OverflowError, "value is not a number")

    @pytest.mark.parametrize("value, name", [(True, "bool"), ("1", "str"), (None, "NoneType")])
    def test_other_types(self, value, name):
        assert failure(value) == (TypeError, f"can't build Decimal from '{name}'")


class TestDecimalOut:
    @pytest.mark.parametrize("record, expected", [
        ((0, 0, 0, 0), "0"),
        ((0, 0, 0, SIGN), "-0"),
        (words(MAX), "79228162514264337593543950335"),
        (words(1, 28), "1E-28"),
        (words(1234500, 3, negative=True), "-1234.500"),
    ])
    def test_builds_decimal(self, record, expected):
        result = probe.decimal_out(*record)
        assert type(result) is Decimal
        assert result.as_tuple() == Decimal(expected).as_tuple()

    @pytest.mark.parametrize("text", ["0.1", "-12.340", "79228162514264337593543950335", "1E-28", "42"])
    def test_round_trip_keeps_digits_and_exponent(self, text):
        assert probe.decimal_out(*probe.decimal_in(Decimal(text))).as_tuple() == Decimal(text).as_tuple()


@pytest.fixture(scope="module")
def managed_decoder():
    """Runs the managed record type over records: (decoded value text, words encoded back) per record."""
    dotnet = shutil.which("dotnet")
    if dotnet is None:
        pytest.skip("dotnet is not installed")
    output = os.path.join(BUILD, "test-assets", "decimal-check")
    subprocess.run([dotnet, "build", os.path.join(REPO, "tests", "support", "decimal-check", "DecimalCheck.csproj"),
                    "-c", "Release", "-o", output, "--nologo", "-v", "quiet"], check=True, capture_output=True)

    def decode(records):
        lines = "".join(" ".join(map(str, record)) + "\n" for record in records)
        done = subprocess.run([dotnet, os.path.join(output, "DecimalCheck.dll")], input=lines, text=True,
                              capture_output=True, check=True)
        return [(text, tuple(map(int, back))) for text, *back in (line.split() for line in done.stdout.splitlines())]
    return decode


class TestManagedDecoding:
    def test_records_mean_the_same_value_on_both_sides(self, managed_decoder):
        texts = ["0.1", "-12.340", "79228162514264337593543950335", "-7.9228162514264337593543950336",
                 "0.00000000000000000000000000006", "1E+28", "42", "-0.5"]
        records = [probe.decimal_in(Decimal(text)) for text in texts]
        for record, (text, back) in zip(records, managed_decoder(records)):
            assert Decimal(text).as_tuple() == value_of(record).as_tuple()
            assert back == record

    def test_double_form(self, managed_decoder):
        values = [0.1, -1.5, 1e28, 123456.789, 0.0]
        decoded = managed_decoder([probe.decimal_in(value) for value in values])
        assert [Decimal(text) for text, _ in decoded] == [Decimal(repr(value)) for value in values]
