"""Values of managed type `object`: classified natively, read by the managed side by their code, and made
into Python values again. Image.tag is such a property; the probe shows the codes and the managed values."""
import ast
import uuid
from datetime import datetime, timedelta, timezone
from decimal import Decimal

import pytest

import orvane.pyfigura as f
from test_managed_drawing import PROBE_ENV


@pytest.fixture
def bitmap():
    with f.Bitmap(2, 2) as image:
        yield image


class TestImageTagRoundTrip:
    @pytest.mark.parametrize("value", [
        0, 2**31 - 1, -2**31, 2**31, -2**31 - 1, 2**63 - 1, -2**63, 2**63, 2**64 - 1,
        1.25, -0.0, float("inf"), "", "plain", "astral \U0001F600\U00010348 and \u00e9",
        True, False, None, Decimal("1.25"), Decimal("-79228162514264337593543950335"),
        uuid.UUID("12345678-1234-5678-9abc-def012345678"), timedelta(hours=-3, microseconds=9),
        datetime(2001, 2, 3, 4, 5, 6, 7), datetime(2001, 2, 3, 4, 5, tzinfo=timezone(timedelta(hours=9)))],
        ids=repr)
    def test_value_comes_back_equal_and_of_the_same_type(self, bitmap, value):
        bitmap.tag = value
        back = bitmap.tag
        assert type(back) is type(value)
        assert back == value or (back != back and value != value)

    def test_wrapper_comes_back_as_its_registered_type(self, bitmap):
        with f.Bitmap(3, 4) as other:
            bitmap.tag = other
            back = bitmap.tag
            assert type(back) is f.Bitmap and back == other and back.width == 3

    def test_decimal_tuple_is_read_as_a_decimal(self, bitmap):
        bitmap.tag = Decimal("-0.0625").as_tuple()
        assert bitmap.tag == Decimal("-0.0625")

    def test_bytes_like_values_come_back_as_bytearray_copies(self, bitmap):
        for value in (b"abc", bytearray(b"abc"), memoryview(b"abc")):
            bitmap.tag = value
            assert bitmap.tag == bytearray(b"abc") and type(bitmap.tag) is bytearray

    def test_each_read_makes_a_new_object(self, bitmap):
        bitmap.tag = "text"
        assert bitmap.tag is not bitmap.tag


class TestRefusals:
    @pytest.mark.parametrize("value", [{}, {1}, object(), f.Point(1, 2)], ids=repr)
    def test_values_without_a_variant_code(self, bitmap, value):
        with pytest.raises(TypeError, match="^unknown variant type$"):
            bitmap.tag = value

    def test_integer_beyond_64_bits(self, bitmap):
        with pytest.raises(RuntimeError, match="TypeError: can't build integer value from 'int'"):
            bitmap.tag = 2**64

    def test_decimal_beyond_the_managed_range(self, bitmap):
        with pytest.raises(RuntimeError, match="OverflowError: value too large for .Net decimal"):
            bitmap.tag = Decimal("1e40")

    def test_item_of_a_list_without_a_variant_code(self, bitmap):
        with pytest.raises(RuntimeError, match=r"^Proxy error\(Orvane.WrpGen.Interop.PythonException\): "
                                               r"TypeError: unknown variant type\n$"):
            bitmap.tag = [1, object()]

    def test_nesting_deeper_than_python_allows_is_a_recursion_error(self, bitmap):
        looped = []
        looped.append(looped)
        deep = [1]
        for _ in range(20000):
            deep = [deep]
        bitmap.tag = "kept"
        for value in (looped, (1, looped), deep):
            with pytest.raises(RecursionError, match="while passing a nested list or tuple to managed code"):
                bitmap.tag = value
        assert bitmap.tag == "kept"  # nothing crossed
        bitmap.tag = [1, (2, [3.5, "x"])]  # ordinary nesting still crosses

    def test_refused_values_leave_the_tag_as_it_was(self, bitmap):
        bitmap.tag = "kept"
        with pytest.raises(RuntimeError):
            bitmap.tag = (1, {})
        assert bitmap.tag == "kept"


CODES = r'''
import collections, decimal, enum, uuid, datetime as dt, orvane.pyfigura as f, callback_probe as cp

class Colour(enum.IntEnum):
    RED = 4

Pair = collections.namedtuple("Pair", "a b")
values = [None, f.Bitmap(1, 1), f.CharacterRange(1, 2), "s", b"b", True, 7, 1.5, decimal.Decimal("2.5"),
          decimal.Decimal("2.5").as_tuple(), dt.datetime(2020, 1, 2), dt.date(2020, 1, 2), dt.time(3, 4),
          dt.timedelta(5), uuid.UUID(int=1), [1], (1,), Colour.RED, bytearray(b"x"), 2**40, 2**63]
codes = [cp.row("get", values, index=i)[0:2] for i in range(len(values))]
codes = [(status, made[0] if made else None) for status, made in codes]
refused = [str(cp.row("get", [v])[2]) for v in (Pair(1, 2), f.Point(1, 2), type("Items", (list,), {})())]
lists = [cp.row("get", [v])[1][1] for v in ([1, "a", [2.5, None, True]], (1, (2**40, "b")), [], ())]
print(repr((codes, refused, lists)))
'''


class TestCodesAndManagedValues:
    @pytest.fixture(scope="class")
    def probed(self):
        from conftest import run_python
        run = run_python(CODES, env=PROBE_ENV)
        assert run.returncode == 0, run
        return ast.literal_eval(run.stdout.decode().strip().splitlines()[-1])

    def test_classification_order_settles_overlaps(self, probed):
        codes, _, _ = probed
        assert codes == [(0, c) for c in (0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 6, 4, 6, 6)]

    def test_named_tuples_and_value_types_are_refused(self, probed):
        _, refused, _ = probed
        assert refused == ["unknown variant type"] * 3

    def test_lists_and_tuples_become_managed_collections_item_by_item(self, probed):
        _, _, lists = probed
        assert lists == ["List`1[Int32 1, String a, List`1[Double 2.5, null, Boolean True]]",
                         "Object[][Int32 1, Object[][Int64 1099511627776, String b]]",
                         "List`1[]", "Object[][]"]
