"""Values of managed type `object` (as Image.tag): classified natively, read by the managed side, made Python again."""
import ast
import collections
import functools
import os
import reprlib
import uuid
from datetime import date, datetime, time, timedelta, timezone
from decimal import Decimal

import pytest

import orvane.pyfigura as f
from conftest import TEST_ASSETS, run_python

@pytest.mark.parametrize("value, expected", [(v, v) for v in (
    0, 2**31 - 1, -2**31, 2**31, -2**31 - 1, 2**63 - 1, -2**63, 2**63, 2**64 - 1, 1.25, -0.0, float("inf"), "",
    "plain", "astral \U0001F600\U00010348 and \u00e9", True, False, None, Decimal("-79228162514264337593543950335"),
    Decimal("-12.340"), Decimal("0.0000000000000000000000000001"), Decimal("7.9228162514264337593543950335"),
    uuid.UUID("12345678-1234-5678-9abc-def012345678"), timedelta(hours=-3, microseconds=9),
    datetime(2001, 2, 3, 4, 5, 6, 7), datetime(2001, 2, 3, 4, 5, tzinfo=timezone(timedelta(hours=9))), datetime.max,
    datetime(2024, 5, 1, tzinfo=timezone.utc), timedelta(days=10675199, seconds=10085, microseconds=477580))] + [
    (Decimal("-0.0625").as_tuple(), Decimal("-0.0625")), (b"abc", bytearray(b"abc")),
    (date(2020, 2, 29), datetime(2020, 2, 29)), (time(6, 7, 8), datetime(1, 1, 1, 6, 7, 8)),
    (bytearray(b"abc"), bytearray(b"abc")), (memoryview(b"abc"), bytearray(b"abc"))], ids=repr)
def test_image_tag_gives_back_the_value(value, expected):
    bitmap = f.Bitmap(2, 2)
    bitmap.tag = value
    back = bitmap.tag
    assert type(back) is type(expected) and repr(back) == repr(expected)  # the sign of zero, digits, the zone


LOOPED, DEEP = [], functools.reduce(lambda inner, _: [inner], range(20000), [1])  # 20000 lists deep
LOOPED.append(LOOPED)
NESTED = "while passing a nested list or tuple to managed code"


@pytest.mark.parametrize("value, error, text", [
    *[(value, TypeError, "^unknown variant type$") for value in (
        {}, f.Point(1, 2), collections.namedtuple("Pair", "a b")(1, 2), type("Items", (list,), {})())],
    (2**64, RuntimeError, "TypeError: can't build integer value from 'int'"),
    (Decimal("1e40"), RuntimeError, "OverflowError: value too large for .Net decimal"),
    (timedelta.max, RuntimeError, "OverflowError: value too large or too small for .Net TimeSpan"),
    ([1, object()], RuntimeError,
     r"^Proxy error\(Orvane.WrpGen.Interop.PythonException\): TypeError: unknown variant type\n$"),
    ((1, {}), RuntimeError, "unknown variant type"),
    # nesting deeper than Python allows, or a loop
    (LOOPED, RecursionError, NESTED), ((1, LOOPED), RecursionError, NESTED), (DEEP, RecursionError, NESTED)],
    ids=reprlib.repr)
def test_refused_values_leave_the_tag_as_it_was(value, error, text):
    bitmap = f.Bitmap(2, 2)
    bitmap.tag = "kept"
    with pytest.raises(error, match=text):
        bitmap.tag = value
    assert bitmap.tag == "kept"
    bitmap.tag = [1, (2, [3.5, "x"])]  # ordinary nesting still crosses


CODES = r'''
import decimal, enum, uuid, datetime as dt, orvane.pyfigura as f, callback_probe as cp

values = [None, f.Bitmap(1, 1), f.CharacterRange(1, 2), "s", b"b", True, 7, 1.5, decimal.Decimal("2.5"),
          decimal.Decimal("2.5").as_tuple(), dt.datetime(2020, 1, 2), dt.date(2020, 1, 2), dt.time(3, 4),
          dt.timedelta(5), uuid.UUID(int=1), [1], (1,), enum.IntEnum("Colour", {"RED": 4}).RED, bytearray(b"x"),
          2**40, 2**63]
codes = [(status, made[0] if made else None) for status, made in (cp.row("get", values, index=i)[0:2]
                                                                  for i in range(len(values)))]
lists = [cp.row("get", [v])[1][1] for v in ([1, "a", [2.5, None, True]], (1, (2**40, "b")), [], ())]
print(repr((codes, lists)))
'''


def test_codes_and_the_managed_values_they_make():
    run = run_python(CODES, env={"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": os.path.join(TEST_ASSETS, "assemblies")})
    assert run.returncode == 0, run
    codes, lists = ast.literal_eval(run.stdout.decode().strip().splitlines()[-1])
    # the order of the tests settles overlaps: bool before int, IntEnum as int, bytearray as bytes
    assert codes == [(0, c) for c in [*range(17), 6, 4, 6, 6]]
    assert lists == ["List`1[Int32 1, String a, List`1[Double 2.5, null, Boolean True]]",
                     "Object[][Int32 1, Object[][Int64 1099511627776, String b]]", "List`1[]", "Object[][]"]
