"""The seven native value types: construction, fields, equality, managed operations, and crossing with classes."""
import math
import struct

import pytest

import orvane.pyfigura as f

FIELDS = {"Point": "xy", "PointF": "xy", "Size": ("width", "height"), "SizeF": ("width", "height"),
          "Rectangle": ("x", "y", "width", "height"), "RectangleF": ("x", "y", "width", "height"), "Color": "argb"}


def shown(value):
    """The type name and the fields, read one by one."""
    return (type(value).__name__, *(getattr(value, field) for field in FIELDS[type(value).__name__]))


def run(source):
    return eval(source, vars(f))


@pytest.mark.parametrize("source, text", [
    ("Point(1, -2)", "Point(1, -2)"), ("PointF(0.1, 2)", "PointF(0.1, 2.0)"), ("Size(3, 4)", "Size(3, 4)"),
    ("SizeF(1e300, -0.0)", "SizeF(1e+300, -0.0)"), ("Rectangle(1, 2, 3, 4)", "Rectangle(1, 2, 3, 4)"),
    ("RectangleF(0.5, 0.5, 1.0, 2.0)", "RectangleF(0.5, 0.5, 1.0, 2.0)"), ("Color.red", "Color.red"),
    ("Color(7, 1, 2, 3)", "Color.from_argb(7, 1, 2, 3)"), ("Color()", "Color.empty()"),
    ("Color.from_known_color(KnownColor.ACTIVE_BORDER)", "Color.from_known_color(KnownColor.ACTIVE_BORDER)")])
def test_repr_shows_the_data_and_evaluates_to_an_equal_value(source, text):
    assert repr(run(source)) == text and run(text) == run(source)


@pytest.mark.parametrize("source, expected", [
    # constructor forms, positional and by field keywords
    ("Color(1, 2, 3)", ("Color", 255, 1, 2, 3)), ("Color(a=9, r=1, g=2, b=3)", ("Color", 9, 1, 2, 3)),
    ("Color()", ("Color", 0, 0, 0, 0)), ("Point(7)", ("Point", 7, 7)), ("Point(Size(2, 3))", ("Point", 2, 3)),
    ("Point(1, y=2)", ("Point", 1, 2)), ("Size(Point(2, 3))", ("Size", 2, 3)),
    ("SizeF(PointF(1.5, 2.5))", ("SizeF", 1.5, 2.5)),
    ("RectangleF(PointF(1, 2), SizeF(3, 4))", ("RectangleF", 1, 2, 3, 4)),
    # colours of the managed side: both ends of the named table, read through the class or an instance
    ("Color.transparent", ("Color", 0, 255, 255, 255)), ("Color().yellow_green", ("Color", 255, 154, 205, 50)),
    ("Color.from_argb(-16711165)", ("Color", 255, 1, 2, 3)), ("Color.from_argb(7, Color.red)", ("Color", 7, 255, 0, 0)),
    ("Color.from_argb(red=1, green=2, blue=3)", ("Color", 255, 1, 2, 3)),
    ("Color.from_name('Blue')", ("Color", 255, 0, 0, 255)),
    # managed operations return new values
    ("Point.subtract(pt=Point(1, 2), sz=Size(1, 1))", ("Point", 0, 1)),
    ("Point.round(value=PointF(1.4, 2.6))", ("Point", 1, 3)),
    ("PointF.subtract(PointF(0.5, 1), Size(1, 1))", ("PointF", -0.5, 0)),
    ("SizeF(1.5, 2.5).to_point_f()", ("PointF", 1.5, 2.5)), ("SizeF(1.5, 2.5).to_size()", ("Size", 1, 2)),
    ("Rectangle.inflate(Rectangle(0, 0, 10, 10), 1, 2)", ("Rectangle", -1, -2, 12, 14)),
    # value attributes
    ("Rectangle(1, 2, 3, 4).location", ("Point", 1, 2)), ("Bitmap(5, 3).size", ("Size", 5, 3)),
])
def test_values_built_and_computed(source, expected):
    assert shown(run(source)) == expected


@pytest.mark.parametrize("statement, error, text", [
    ("Color(1, 2)", AttributeError, r"^0, 3 or 4 arguments is required \(2 given\)$"),
    ("Color(256, 0, 0)", OverflowError, "greater than maximum"), ("Color(-1, 0, 0)", OverflowError, "less than"),
    ("Point('a')", TypeError, r"^integer or \"Size\" is required \(got type 'str'\)$"),
    ("Point(2**31)", OverflowError, ""), ("Size(width=1.5, height=2)", TypeError, "integer"),
    ("Point(1, 2, 3)", AttributeError, r"^0, 1 or 2 arguments is required \(3 given\)$"),
    ("Point(z=1)", TypeError, "unexpected keyword argument 'z'"), ("Point(1, x=2)", TypeError, "multiple values for"),
    ("Color(r=1, g=2)", TypeError, "complete none of its constructor forms"),
    ("SizeF(Size(1, 2))", TypeError, r"^\"SizeF\" or \"PointF\" is required \(got type 'orvane.pyfigura.Size'\)$"),
    ("Rectangle(1, 2)", TypeError, r"^\"Point\" and \"Size\" is required \(got type 'int and int'\)$"),
    ("RectangleF(1)", AttributeError, r"^function takes 0 \(\) or 4 \(x y width height\) arguments \(1 given\)$"),
    ("Point.add(Point(), SizeF())", TypeError, r"^argument should be Size, not 'orvane.pyfigura.SizeF'$"),
    ("Color.from_argb(300, 0, 0, 0)", RuntimeError, r"^Proxy error\(System.ArgumentException\)"),
    ("Color.rebecca_purple", AttributeError, ""),
    # the types are final and unhashable, and know only equality
    ("type('Sub', (Point,), {})", TypeError, "is not an acceptable base type"),
    ("hash(Color())", TypeError, "unhashable"), ("SizeF() < SizeF()", TypeError, "'<' not supported"),
    # assignments
    ("Point().x = 2**31", OverflowError, ""),
    ("Point().y = 1.0", TypeError, r"^integer is required \(got type 'float'\)$"),
    ("PointF().x = '1'", TypeError, r"^real is required \(got type 'str'\)$"), ("del PointF().x", TypeError, ""),
    ("Color(1, 2, 3).r = 5", AttributeError, ""), ("Color.red = Color()", TypeError, ""),
    ("Rectangle().left = 1", AttributeError, ""), ("RectangleF().anything = 1", AttributeError, ""),  # no instance dict
    ("RectangleF().size = Size()", TypeError, r"^\"SizeF\" is required \(got type 'orvane.pyfigura.Size'\)$"),
    ("Pen(Color.red).color = Point()", TypeError, r"^argument should be Color, not 'orvane.pyfigura.Point'$"),
])
def test_refusals(statement, error, text):
    with pytest.raises(error, match=text):
        exec(statement, vars(f))


def test_colour_equality_takes_the_state_word_and_managed_colours_keep_their_names():
    assert f.Color() == f.Color.empty() and f.Color(0, 0, 0, 0) != f.Color()
    assert f.Color.empty().is_empty and not f.Color(0, 0, 0, 0).is_empty
    c = f.Color()
    c.__init__(1, 2, 3)  # re-initialising keeps the state word: still the empty colour's state
    assert c != f.Color(1, 2, 3) and c.is_empty
    red = f.Color.red
    assert red.name == "Red" and red.to_known_color() == f.KnownColor.RED and red.is_named_color
    assert red == f.Color.red and red is not f.Color.red and red != f.Color(255, 0, 0) and not red.is_system_color
    assert f.Color.from_name("alice_blue").is_known_color is False and f.SystemColors.control.is_system_color


def test_colour_numbers_in_single_precision():
    assert f.Color(255, 1, 2, 3).to_argb() == -16711165 and f.Color(0x7F, 1, 2, 3).to_argb() == 0x7F010203
    c = f.Color(10, 200, 30)
    assert c.get_hue() == pytest.approx(126.3158, abs=1e-3)
    for value in (c.get_hue(), c.get_saturation(), c.get_brightness()):
        assert type(value) is float and struct.unpack("f", struct.pack("f", value))[0] == value


def test_geometry_fields_and_equality():
    p, q = f.Point(), f.PointF(1, 2)
    p.x, q.y = -2**31, 0.1
    assert p.x == -2**31 and type(q.x) is float and q.y == 0.1  # doubles natively, not single precision
    assert f.Point.empty() == f.Point() and f.Point(1, 2) != f.Point(1, 3) and f.Size(1, 2) != f.Size(1, 3)
    assert (f.Point(1, 2) == f.PointF(1, 2)) is False and (f.Color() == 5) is False and (f.Size() != 5) is True
    nan, r, rf = f.PointF(float("nan"), 0), f.Rectangle(1, 2, 3, 4), f.RectangleF(0.5, 1, 2, 3.25)
    assert not (nan == nan) and nan != nan
    assert (r.left, r.top, r.right, r.bottom, rf.right, rf.bottom) == (1, 2, 4, 6, 2.5, 4.25)


def test_instance_methods_and_attributes_work_on_copies():
    p, a = f.Point(1, 2), f.Rectangle(0, 0, 10, 10)
    assert p.offset(3, 4) is None and p.offset(f.Point(1, 1)) is None and shown(p) == ("Point", 1, 2)
    assert a.intersect(f.Rectangle(5, 5, 10, 10)) is None and a.offset(1, 1) is None
    a.location.x = 9
    assert shown(a) == ("Rectangle", 0, 0, 10, 10)
    a.location, a.size = f.Point(9, 8), f.Size(7, 6)
    assert shown(a) == ("Rectangle", 9, 8, 7, 6)


def test_managed_queries():
    assert [f.Point().is_empty, f.Point(0, 1).is_empty, f.Rectangle().is_empty] == [True, False, True]
    r = f.Rectangle(0, 0, 10, 10)
    assert r.contains(5, 5) and not r.contains(10, 10) and r.contains(f.Point(0, 0))
    assert r.contains(rect=f.Rectangle(1, 1, 2, 2)) and r.intersects_with(f.Rectangle(9, 9, 5, 5))
    # Single arguments are rounded on the way in, not in the record: 1.1 - 1e-9 is inside as a double
    # but becomes the right edge itself as a single.
    rf = f.RectangleF(0.1, 0, 1, 1)
    assert rf.x == 0.1 and not rf.contains(1.1 - 1e-9, 0.5) and rf.contains(1.1 - 1e-6, 0.5)


def test_values_cross_to_classes_and_pick_their_overloads():
    bitmap = f.Bitmap(8, 8)
    graphics = f.Graphics.from_image(bitmap)
    graphics.clear(f.Color.white)
    graphics.draw_line(f.Pens.black, f.Point(0, 2), f.Point(7, 2))
    graphics.draw_line(f.Pens.black, f.PointF(0, 5), f.PointF(7, 5))
    assert [shown(bitmap.get_pixel(4, row)) for row in (2, 3, 5, 6)] == [("Color", 255, 0, 0, 0),
                                                                        ("Color", 255, 255, 255, 255)] * 2
    bitmap.set_pixel(1, 1, f.Color.from_argb(255, 1, 2, 3))
    assert shown(bitmap.get_pixel(1, 1)) == ("Color", 255, 1, 2, 3)
    size = graphics.measure_string("Hi", f.SystemFonts.default_font)
    assert type(size) is f.SizeF and size.width > 0 and not math.isnan(size.height)
