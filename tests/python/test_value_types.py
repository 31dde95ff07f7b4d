"""The seven native value types: construction, fields, equality, managed operations, and crossing with classes."""
import json
import math
import os
import struct

import pytest

from conftest import REPO

import orvane.pyfigura as f

VALUE_TYPES = [f.Point, f.PointF, f.Size, f.SizeF, f.Rectangle, f.RectangleF, f.Color]


def fields(value, names):
    return tuple(getattr(value, n) for n in names)


class TestTypeShape:
    @pytest.mark.parametrize("cls", VALUE_TYPES, ids=lambda c: c.__name__)
    def test_not_subclassable_unhashable_no_instance_dict(self, cls):
        with pytest.raises(TypeError):
            type("Sub", (cls,), {})
        with pytest.raises(TypeError, match="unhashable"):
            hash(cls())
        with pytest.raises(AttributeError):
            cls().anything = 1
        assert "_orvane_clr_host" not in vars(cls)

    @pytest.mark.parametrize("cls", VALUE_TYPES, ids=lambda c: c.__name__)
    def test_only_equality(self, cls):
        value = cls()
        with pytest.raises(TypeError):
            value < cls()
        assert (value == 5) is False and (value != 5) is True


class TestReprAndKeywords:
    @pytest.mark.parametrize("source, shown", [
        ("Point(1, -2)", "Point(1, -2)"),
        ("PointF(0.1, 2)", "PointF(0.1, 2.0)"),
        ("Size(3, 4)", "Size(3, 4)"),
        ("SizeF(1e300, -0.0)", "SizeF(1e+300, -0.0)"),
        ("Rectangle(1, 2, 3, 4)", "Rectangle(1, 2, 3, 4)"),
        ("RectangleF(0.5, 0.5, 1.0, 2.0)", "RectangleF(0.5, 0.5, 1.0, 2.0)"),
        ("Color.from_argb(255, 1, 2, 3)", "Color.from_argb(255, 1, 2, 3)"),
        ("Color(7, 1, 2, 3)", "Color.from_argb(7, 1, 2, 3)"),
        ("Color.red", "Color.red"),
        ("Color.alice_blue", "Color.alice_blue"),
        ("Color.from_known_color(KnownColor.ACTIVE_BORDER)", "Color.from_known_color(KnownColor.ACTIVE_BORDER)"),
        ("Color()", "Color.empty()"),
    ])
    def test_repr_shows_the_data_and_evaluates_to_an_equal_value(self, source, shown):
        value = eval(source, vars(f))
        assert repr(value) == shown
        assert eval(repr(value), vars(f)) == value

    @pytest.mark.parametrize("keyword_call, positional", [
        ("Point(x=1, y=2)", "Point(1, 2)"),
        ("Point(1, y=2)", "Point(1, 2)"),
        ("PointF(y=2, x=0.5)", "PointF(0.5, 2.0)"),
        ("Size(width=3, height=4)", "Size(3, 4)"),
        ("SizeF(width=3, height=4.5)", "SizeF(3.0, 4.5)"),
        ("Rectangle(x=1, y=2, width=3, height=4)", "Rectangle(1, 2, 3, 4)"),
        ("RectangleF(x=0.5, y=0.5, width=1.0, height=2.0)", "RectangleF(0.5, 0.5, 1.0, 2.0)"),
        ("Color(r=1, g=2, b=3)", "Color(1, 2, 3)"),
        ("Color(a=9, r=1, g=2, b=3)", "Color(9, 1, 2, 3)"),
    ])
    def test_field_keywords_build_the_positional_value(self, keyword_call, positional):
        assert eval(keyword_call, vars(f)) == eval(positional, vars(f))

    @pytest.mark.parametrize("call, error, text", [
        ("Point(z=1)", TypeError, "unexpected keyword argument 'z'"),
        ("Point(1, x=2)", TypeError, "multiple values for argument 'x'"),
        ("Point(x=1)", TypeError, "complete none of its constructor forms"),
        ("Rectangle(x=1, y=2, width=3, size=4)", TypeError, "unexpected keyword argument 'size'"),
        ("Color(r=1, g=2)", TypeError, "complete none"),
        ("Color(red=1, green=2, blue=3)", TypeError, "unexpected keyword argument"),
        ("Size(width=1.5, height=2)", TypeError, "integer"),
        ("Color(r=256, g=0, b=0)", OverflowError, "greater than maximum"),
    ])
    def test_keyword_refusals_match_the_positional_conversions(self, call, error, text):
        with pytest.raises(error, match=text):
            eval(call, vars(f))


def described_values():
    with open(os.path.join(REPO, "api", "values.json"), encoding="utf-8") as stream:
        return {v["name"]: v for v in json.load(stream)["value_types"]}


class TestSurfaceAndRegistration:
    @pytest.mark.parametrize("name", [c.__name__ for c in VALUE_TYPES])
    def test_every_described_member_exists(self, name):
        cls, described = getattr(f, name), described_values()[name]
        members = set(vars(cls))
        assert {m["name"] for m in described["methods"]} <= members
        assert {a["name"] for a in described["attributes"]} <= members
        for mixed in described["mixed_methods"]:
            assert type(vars(cls)[mixed]) is f._MixMethodDescrType

    def test_named_colours_are_field_descriptors_in_table_order(self):
        names = [k for k, v in vars(f.Color).items() if type(v) is f._FieldDescrType]
        assert names == [a["name"] for a in described_values()["Color"]["class_attributes"]]
        assert len(names) == 141

    def test_value_sequence_follows_the_classes(self):
        keys = list(vars(f))
        start = keys.index("Point")
        expected = []
        for name in ["Point", "PointF", "Rectangle", "RectangleF", "Size", "SizeF", "Color"]:
            expected += [name, f"_C_APITV1_{name}", f"_C_APIT_{name}"]
        assert keys[start:start + len(expected)] == expected
        assert keys.index("_C_APIT_Bitmap") < start


class TestColor:
    def test_channels_of_the_constructor_forms(self):
        assert fields(f.Color(1, 2, 3), "argb") == (255, 1, 2, 3)
        assert fields(f.Color(9, 1, 2, 3), "argb") == (9, 1, 2, 3)
        assert fields(f.Color(), "argb") == (0, 0, 0, 0)

    @pytest.mark.parametrize("args, error, text", [
        ((1, 2), AttributeError, r"^0, 3 or 4 arguments is required \(2 given\)$"),
        ((1,), AttributeError, r"^0, 3 or 4 arguments is required \(1 given\)$"),
        ((256, 0, 0), OverflowError, "greater than maximum"),
        ((-1, 0, 0), OverflowError, "less than minimum"),
        (("a", 0, 0), TypeError, ""),
    ])
    def test_constructor_refusals(self, args, error, text):
        with pytest.raises(error, match=text):
            f.Color(*args)

    def test_empty_and_state_word_take_part_in_equality(self):
        assert f.Color() == f.Color.empty()
        assert f.Color(0, 0, 0, 0) != f.Color()
        assert f.Color.empty().is_empty and not f.Color(0, 0, 0, 0).is_empty
        # Re-initialising keeps the state word: still the empty colour's state, now with channels.
        c = f.Color()
        c.__init__(1, 2, 3)
        assert c != f.Color(1, 2, 3)

    def test_channels_are_read_only(self):
        with pytest.raises(AttributeError):
            f.Color(1, 2, 3).r = 5

    def test_named_colour_from_the_managed_side(self):
        red = f.Color.red
        assert type(red) is f.Color
        assert fields(red, "argb") == (255, 255, 0, 0)
        assert red.name == "Red"
        assert red.is_known_color and red.is_named_color and not red.is_system_color
        assert red == f.Color.red and red is not f.Color.red

    def test_named_colour_table_ends_and_reads_through_instances(self):
        assert f.Color.transparent.a == 0
        assert fields(f.Color.yellow_green, "rgb") == (154, 205, 50)
        assert f.Color().white == f.Color.white
        with pytest.raises(AttributeError):
            f.Color.rebecca_purple
        with pytest.raises(TypeError):
            f.Color.red = f.Color()

    def test_to_argb_is_signed(self):
        assert f.Color(255, 1, 2, 3).to_argb() == -16711165
        assert f.Color(0x7F, 1, 2, 3).to_argb() == 0x7F010203

    def test_from_argb_trials(self):
        assert fields(f.Color.from_argb(-16711165), "argb") == (255, 1, 2, 3)
        assert fields(f.Color.from_argb(9, 1, 2, 3), "argb") == (9, 1, 2, 3)
        assert fields(f.Color.from_argb(7, f.Color.red), "argb") == (7, 255, 0, 0)
        assert fields(f.Color.from_argb(red=1, green=2, blue=3), "argb") == (255, 1, 2, 3)

    def test_from_argb_without_a_fitting_trial_lists_every_message(self):
        with pytest.raises(TypeError) as caught:
            f.Color.from_argb(True)
        messages = caught.value.args[0]
        assert isinstance(messages, list) and len(messages) == 4

    def test_managed_exception_passes_through(self):
        with pytest.raises(RuntimeError, match=r"^Proxy error\(System.ArgumentException\)"):
            f.Color.from_argb(300, 0, 0, 0)

    def test_name_and_known_colour_round_trips(self):
        assert f.Color.from_name("Blue") == f.Color.blue
        assert f.Color.from_name("alice_blue").is_known_color is False
        assert f.Color.from_known_color(f.KnownColor.RED) == f.Color.red
        assert f.Color.red.to_known_color() == f.KnownColor.RED

    def test_hue_saturation_brightness_are_single_precision(self):
        c = f.Color(10, 200, 30)
        assert c.get_hue() == pytest.approx(126.3158, abs=1e-3)
        for value in (c.get_hue(), c.get_saturation(), c.get_brightness()):
            assert type(value) is float
            assert struct.unpack("f", struct.pack("f", value))[0] == value

    def test_system_colours_are_colours(self):
        control = f.SystemColors.control
        assert type(control) is f.Color
        assert control.is_system_color


class TestPoints:
    def test_constructor_forms(self):
        assert fields(f.Point(7), "xy") == (7, 7)
        assert fields(f.Point(True), "xy") == (1, 1)
        assert fields(f.Point(f.Size(2, 3)), "xy") == (2, 3)
        assert fields(f.Point(1, 2), "xy") == (1, 2)
        assert fields(f.PointF(1, 2), "xy") == (1.0, 2.0)
        assert type(f.PointF(1, 2).x) is float

    @pytest.mark.parametrize("cls, args, error, text", [
        (f.Point, ("a",), TypeError, r"^integer or \"Size\" is required \(got type 'str'\)$"),
        (f.Point, (1.5, 2), TypeError, "integer"),
        (f.Point, (1, 2, 3), AttributeError, r"^0, 1 or 2 arguments is required \(3 given\)$"),
        (f.Point, (2**31,), OverflowError, ""),
        (f.PointF, (1,), AttributeError, r"^0 or 2 arguments is required \(1 given\)$"),
    ])
    def test_constructor_refusals(self, cls, args, error, text):
        with pytest.raises(error, match=text):
            cls(*args)

    def test_setters(self):
        p = f.Point()
        p.x = -2**31
        assert p.x == -2**31
        with pytest.raises(OverflowError):
            p.x = 2**31
        with pytest.raises(TypeError, match=r"^integer is required \(got type 'float'\)$"):
            p.y = 1.0
        q = f.PointF()
        q.x = 1
        q.y = 0.1
        assert (q.x, q.y) == (1.0, 0.1)  # doubles natively, no rounding to single precision
        with pytest.raises(TypeError, match=r"^real is required \(got type 'str'\)$"):
            q.x = "1"
        with pytest.raises(TypeError):
            del q.x

    def test_equality(self):
        assert f.Point.empty() == f.Point()
        assert f.Point(1, 2) != f.Point(1, 3)
        assert (f.Point(1, 2) == f.PointF(1, 2)) is False
        nan = f.PointF(float("nan"), 0)
        assert not (nan == nan) and nan != nan

    def test_managed_arithmetic_returns_new_objects(self):
        p = f.Point(1, 2)
        moved = f.Point.add(p, f.Size(3, 4))
        assert fields(moved, "xy") == (4, 6) and fields(p, "xy") == (1, 2)
        assert fields(f.Point.subtract(pt=p, sz=f.Size(1, 1)), "xy") == (0, 1)
        assert fields(f.Point.round(value=f.PointF(1.4, 2.6)), "xy") == (1, 3)
        assert fields(f.Point.ceiling(f.PointF(1.1, -1.1)), "xy") == (2, -1)
        assert fields(f.Point.truncate(f.PointF(1.9, -1.9)), "xy") == (1, -1)
        assert fields(f.PointF.add(f.PointF(0.5, 1), f.SizeF(1, 1)), "xy") == (1.5, 2.0)
        assert fields(f.PointF.subtract(f.PointF(0.5, 1), f.Size(1, 1)), "xy") == (-0.5, 0.0)

    def test_offset_works_on_a_copy(self):
        p = f.Point(1, 2)
        assert p.offset(3, 4) is None
        assert p.offset(f.Point(1, 1)) is None
        assert fields(p, "xy") == (1, 2)

    def test_is_empty_is_managed(self):
        assert f.Point().is_empty and not f.Point(0, 1).is_empty
        assert f.PointF().is_empty and not f.PointF(0.5, 0).is_empty

    def test_wrong_value_type_argument(self):
        with pytest.raises(TypeError, match=r"^argument should be Size, not 'orvane.pyfigura.SizeF'$"):
            f.Point.add(f.Point(), f.SizeF())
        with pytest.raises(TypeError, match=r"^argument should be Point, not 'NoneType'$"):
            f.Point.add(None, f.Size())


class TestSizes:
    def test_constructor_forms(self):
        assert fields(f.Size(f.Point(2, 3)), ("width", "height")) == (2, 3)
        assert fields(f.SizeF(f.PointF(1.5, 2.5)), ("width", "height")) == (1.5, 2.5)
        assert fields(f.SizeF(f.SizeF(1.5, 2.5)), ("width", "height")) == (1.5, 2.5)

    @pytest.mark.parametrize("cls, args, error, text", [
        (f.Size, (5,), TypeError, r"^\"Point\" is required \(got type 'int'\)$"),
        (f.SizeF, (f.Size(1, 2),), TypeError, r"^\"SizeF\" or \"PointF\" is required \(got type 'orvane.pyfigura.Size'\)$"),
        (f.SizeF, (1, 2, 3), AttributeError, r"^0, 1 or 2 arguments is required \(3 given\)$"),
    ])
    def test_constructor_refusals(self, cls, args, error, text):
        with pytest.raises(error, match=text):
            cls(*args)

    def test_equality_is_per_type(self):
        assert f.Size(1, 2) == f.Size(1, 2) and f.Size(1, 2) != f.Size(1, 3)
        assert (f.Size(1, 2) == f.Point(1, 2)) is False

    def test_managed_operations(self):
        assert fields(f.Size.add(f.Size(1, 2), f.Size(3, 4)), ("width", "height")) == (4, 6)
        assert fields(f.Size.round(f.SizeF(1.4, 1.6)), ("width", "height")) == (1, 2)
        s = f.SizeF(1.5, 2.5)
        assert type(s.to_point_f()) is f.PointF and fields(s.to_point_f(), "xy") == (1.5, 2.5)
        assert type(s.to_size()) is f.Size and fields(s.to_size(), ("width", "height")) == (1, 2)


class TestRectangles:
    def test_fields_and_derived_attributes(self):
        r = f.Rectangle(1, 2, 3, 4)
        assert (r.left, r.top, r.right, r.bottom) == (1, 2, 4, 6)
        assert r.location == f.Point(1, 2) and r.size == f.Size(3, 4)
        assert f.Rectangle(2147483647, 0, 1, 0).right == -2147483648
        rf = f.RectangleF(0.5, 1, 2, 3.25)
        assert (rf.right, rf.bottom) == (2.5, 4.25)
        with pytest.raises(AttributeError):
            r.left = 1

    def test_location_and_size_are_copies_both_ways(self):
        r = f.Rectangle(1, 2, 3, 4)
        r.location.x = 9
        r.size.width = 9
        assert fields(r, ("x", "y", "width", "height")) == (1, 2, 3, 4)
        r.location = f.Point(9, 8)
        r.size = f.Size(7, 6)
        assert fields(r, ("x", "y", "width", "height")) == (9, 8, 7, 6)
        with pytest.raises(TypeError, match=r"^\"Point\" is required \(got type 'orvane.pyfigura.PointF'\)$"):
            f.Rectangle().location = f.PointF()
        with pytest.raises(TypeError, match=r"^\"SizeF\" is required \(got type 'orvane.pyfigura.Size'\)$"):
            f.RectangleF().size = f.Size()

    @pytest.mark.parametrize("cls, args, error, text", [
        (f.Rectangle, (1, 2), TypeError, r"^\"Point\" and \"Size\" is required \(got type 'int and int'\)$"),
        (f.Rectangle, (1, 2, 3), AttributeError, r"^0, 2 or 4 arguments is required \(3 given\)$"),
        (f.RectangleF, (1,), AttributeError,
         r"^function takes 0 \(\) or 4 \(x y width height\) arguments \(1 given\)$"),
        (f.RectangleF, (f.Point(), f.SizeF()), TypeError,
         r"^\"PointF\" and \"SizeF\" is required \(got type 'orvane.pyfigura.Point and orvane.pyfigura.SizeF'\)$"),
    ])
    def test_constructor_refusals(self, cls, args, error, text):
        with pytest.raises(error, match=text):
            cls(*args)

    def test_two_argument_constructor(self):
        r = f.RectangleF(f.PointF(1, 2), f.SizeF(3, 4))
        assert fields(r, ("x", "y", "width", "height")) == (1.0, 2.0, 3.0, 4.0)

    def test_static_forms_return_new_rectangles(self):
        a, b = f.Rectangle(0, 0, 10, 10), f.Rectangle(5, 5, 10, 10)
        assert Rectangle_fields(f.Rectangle.intersect(a, b)) == (5, 5, 5, 5)
        assert Rectangle_fields(f.Rectangle.union(a, b)) == (0, 0, 15, 15)
        assert Rectangle_fields(f.Rectangle.inflate(a, 1, 2)) == (-1, -2, 12, 14)
        assert Rectangle_fields(f.Rectangle.from_ltrb(1, 2, 4, 6)) == (1, 2, 3, 4)
        assert Rectangle_fields(f.Rectangle.round(f.RectangleF(0.4, 0.6, 1.4, 1.6))) == (0, 1, 1, 2)
        assert Rectangle_fields(a) == (0, 0, 10, 10)

    def test_instance_forms_work_on_a_copy(self):
        a, b = f.Rectangle(0, 0, 10, 10), f.Rectangle(5, 5, 10, 10)
        assert a.intersect(b) is None
        assert a.inflate(1, 1) is None and a.inflate(f.Size(1, 1)) is None
        assert a.offset(1, 1) is None and a.offset(f.Point(1, 1)) is None
        assert Rectangle_fields(a) == (0, 0, 10, 10)

    def test_mixed_method_objects(self):
        r = f.Rectangle()
        assert repr(f.Rectangle.inflate).startswith("<extension function")
        assert repr(r.inflate).startswith("<extension method")
        assert type(vars(f.Rectangle)["intersect"]) is f._MixMethodDescrType

    def test_queries(self):
        r = f.Rectangle(0, 0, 10, 10)
        assert r.contains(5, 5) and not r.contains(10, 10)
        assert r.contains(f.Point(0, 0)) and r.contains(rect=f.Rectangle(1, 1, 2, 2))
        assert r.intersects_with(f.Rectangle(9, 9, 5, 5))
        assert not r.is_empty and f.Rectangle().is_empty
        with pytest.raises(TypeError) as caught:
            r.contains(f.PointF())
        assert len(caught.value.args[0]) == 3

    def test_single_scalars_are_rounded_on_the_way_in_but_not_in_the_record(self):
        r = f.RectangleF(0.1, 0, 1, 1)
        assert r.x == 0.1
        # 1.1 - 1e-9 is inside as a double but becomes the right edge itself as a single.
        assert not r.contains(1.1 - 1e-9, 0.5)
        assert r.contains(1.1 - 1e-6, 0.5)


def Rectangle_fields(r):
    return fields(r, ("x", "y", "width", "height"))


class TestAcrossClasses:
    def test_pixels_and_clear(self):
        bitmap = f.Bitmap(8, 8)
        graphics = f.Graphics.from_image(bitmap)
        graphics.clear(f.Color.white)
        pixel = bitmap.get_pixel(3, 4)
        assert type(pixel) is f.Color and fields(pixel, "argb") == (255, 255, 255, 255)
        bitmap.set_pixel(1, 1, f.Color.from_argb(255, 1, 2, 3))
        assert fields(bitmap.get_pixel(1, 1), "argb") == (255, 1, 2, 3)

    def test_value_attributes_of_classes(self):
        bitmap = f.Bitmap(5, 3)
        size = bitmap.size
        assert type(size) is f.Size and fields(size, ("width", "height")) == (5, 3)
        assert bitmap.size is not size
        pen = f.Pen(f.Color.red)
        pen.color = f.Color.blue
        assert pen.color == f.Color.blue
        with pytest.raises(TypeError, match=r"^argument should be Color, not 'orvane.pyfigura.Point'$"):
            pen.color = f.Point()

    @pytest.mark.parametrize("a, b, row", [
        (f.Point(0, 2), f.Point(7, 2), 2), (f.PointF(0, 5), f.PointF(7, 5), 5)])
    def test_point_and_point_f_pick_their_overloads(self, a, b, row):
        bitmap = f.Bitmap(8, 8)
        graphics = f.Graphics.from_image(bitmap)
        graphics.clear(f.Color.white)
        graphics.draw_line(f.Pens.black, a, b)
        assert bitmap.get_pixel(4, row).to_argb() == f.Color.black.to_argb()
        assert bitmap.get_pixel(4, row + 1).to_argb() == f.Color.white.to_argb()

    def test_measure_string_returns_a_size_f(self):
        graphics = f.Graphics.from_image(f.Bitmap(8, 8))
        size = graphics.measure_string("Hi", f.SystemFonts.default_font)
        assert type(size) is f.SizeF and size.width > 0 and not math.isnan(size.height)
