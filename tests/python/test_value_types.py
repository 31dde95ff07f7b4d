"""The seven native value types: construction, fields, equality, managed operations and refusals."""
import pytest

import orvane.pyfigura as f

FIELDS = {"Point": "xy", "PointF": "xy", "Size": ("width", "height"), "SizeF": ("width", "height"),
          "Rectangle": ("x", "y", "width", "height"), "RectangleF": ("x", "y", "width", "height"), "Color": "argb"}


def shown(value):
    """A value type's name and fields, read one by one; any other result as it is."""
    name = type(value).__name__
    return (name, *(getattr(value, field) for field in FIELDS[name])) if name in FIELDS else value


@pytest.mark.parametrize("source, text", [(s, s) for s in (  # most values read as they are written
    "Point(1, -2)", "Size(3, 4)", "Rectangle(1, 2, 3, 4)", "RectangleF(0.5, 0.5, 1.0, 2.0)", "Color.red",
    "Color.from_known_color(KnownColor.ACTIVE_BORDER)")] + [("PointF(0.1, 2)", "PointF(0.1, 2.0)"),
    ("Color()", "Color.empty()"), ("SizeF(1e300, -0.0)", "SizeF(1e+300, -0.0)"),
    ("Color(7, 1, 2, 3)", "Color.from_argb(7, 1, 2, 3)")])
def test_repr_shows_the_data_and_evaluates_to_an_equal_value(source, text):
    assert repr(eval(source, vars(f))) == text and eval(text, vars(f)) == eval(source, vars(f))


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
    ("[Color(255, 1, 2, 3).to_argb(), Color(0x7F, 1, 2, 3).to_argb()]", [-16711165, 0x7F010203]),
    ("[round(Color(10, 200, 30).get_hue(), 3), Color(10, 200, 30).get_brightness()]",
     [126.316, 0.4117647111415863]),  # a Single result: 7/17 in single precision
    ("[Color.red.name, Color.red.to_known_color(), Color.red.is_named_color, Color.red.is_system_color]",
     ["Red", f.KnownColor.RED, True, False]),
    ("[Color.from_name('alice_blue').is_known_color, SystemColors.control.is_system_color]", [False, True]),
    # managed operations return new values
    ("Point.subtract(pt=Point(1, 2), sz=Size(1, 1))", ("Point", 0, 1)), ("SizeF(1.5, 2.5).to_size()", ("Size", 1, 2)),
    ("Point.round(value=PointF(1.4, 2.6))", ("Point", 1, 3)),
    ("Rectangle.inflate(Rectangle(0, 0, 10, 10), 1, 2)", ("Rectangle", -1, -2, 12, 14)),
    # queries: computed edges, emptiness, containment
    ("[Rectangle(1, 2, 3, 4).right, Rectangle(1, 2, 3, 4).bottom, RectangleF(0.5, 1, 2, 3.25).bottom]", [4, 6, 4.25]),
    ("[Point().is_empty, Point(0, 1).is_empty, Rectangle().is_empty]", [True, False, True]),
    ("(lambda r: [r.contains(5, 5), r.contains(10, 10), r.contains(Point(0, 0)),"
     " r.contains(rect=Rectangle(1, 1, 2, 2)), r.intersects_with(Rectangle(9, 9, 5, 5))])(Rectangle(0, 0, 10, 10))",
     [True, False, True, True, True]),
    # single arguments are rounded on the way in, not in the record: 1.1 - 1e-9 becomes the right edge itself
    ("(lambda r: [r.x, r.contains(1.1 - 1e-9, 0.5), r.contains(1.1 - 1e-6, 0.5)])(RectangleF(0.1, 0, 1, 1))",
     [0.1, False, True]),
    # equality is by type and fields; NaN is unequal to itself
    ("[Point.empty() == Point(), Point(1, 2) != Point(1, 3), Size(1, 2) != Size(1, 3), Point(1, 2) == PointF(1, 2),"
     " Color() == 5, Size() != 5]", [True, True, True, False, False, True]),
    ("(lambda nan: [nan == nan, nan != nan])(PointF(float('nan'), 0))", [False, True]),
    # value attributes
    ("Rectangle(1, 2, 3, 4).location", ("Point", 1, 2)), ("Bitmap(5, 3).size", ("Size", 5, 3)),
])
def test_values_built_and_computed(source, expected):
    assert shown(eval(source, vars(f))) == expected


@pytest.mark.parametrize("statement, error, text", [
    ("Color(1, 2)", AttributeError, r"^0, 3 or 4 arguments is required \(2 given\)$"),
    ("Color(256, 0, 0)", OverflowError, "greater than maximum"), ("Color(-1, 0, 0)", OverflowError, "less than"),
    ("Point('a')", TypeError, r"^integer or \"Size\" is required \(got type 'str'\)$"),
    ("Point(z=1)", TypeError, "unexpected keyword argument 'z'"), ("Point(1, x=2)", TypeError, "multiple values for"),
    ("Color(r=1, g=2)", TypeError, "complete none of its constructor forms"),
    ("SizeF(Size(1, 2))", TypeError, r"^\"SizeF\" or \"PointF\" is required \(got type 'orvane.pyfigura.Size'\)$"),
    ("Rectangle(1, 2)", TypeError, r"^\"Point\" and \"Size\" is required \(got type 'int and int'\)$"),
    ("RectangleF(1)", AttributeError, r"^function takes 0 \(\) or 4 \(x y width height\) arguments \(1 given\)$"),
    ("Point.add(Point(), SizeF())", TypeError, r"^argument should be Size, not 'orvane.pyfigura.SizeF'$"),
    # the types are final and unhashable, and know only equality
    ("type('Sub', (Point,), {})", TypeError, "is not an acceptable base type"),
    ("hash(Color())", TypeError, "unhashable"), ("SizeF() < SizeF()", TypeError, "'<' not supported"),
    # assignments
    ("Point().x = 2**31", OverflowError, ""), ("Color(1, 2, 3).r = 5", AttributeError, ""),
    ("Point().y = 1.0", TypeError, r"^integer is required \(got type 'float'\)$"), ("del PointF().x", TypeError, ""),
    ("PointF().x = '1'", TypeError, r"^real is required \(got type 'str'\)$"), ("Color.red = Color()", TypeError, ""),
    ("Rectangle().left = 1", AttributeError, ""), ("RectangleF().anything = 1", AttributeError, ""),  # no instance dict
    ("RectangleF().size = Size()", TypeError, r"^\"SizeF\" is required \(got type 'orvane.pyfigura.Size'\)$"),
    ("Pen(Color.red).color = Point()", TypeError, r"^argument should be Color, not 'orvane.pyfigura.Point'$"),
])
def test_refusals(statement, error, text):
    with pytest.raises(error, match=text):
        exec(statement, vars(f))


def test_colour_equality_takes_the_state_word():
    assert f.Color() == f.Color.empty() and f.Color(0, 0, 0, 0) != f.Color()
    assert f.Color.empty().is_empty and not f.Color(0, 0, 0, 0).is_empty
    c = f.Color()
    c.__init__(1, 2, 3)  # re-initialising keeps the state word: still the empty colour's state
    assert c != f.Color(1, 2, 3) and c.is_empty
    assert f.Color.red == f.Color.red and f.Color.red is not f.Color.red and f.Color.red != f.Color(255, 0, 0)


def test_fields_are_set_in_place_and_methods_and_attributes_work_on_copies():
    p, q = f.Point(), f.PointF(1, 2)
    p.x, q.y = -2**31, 0.1
    assert p.x == -2**31 and type(q.x) is float and q.y == 0.1  # doubles natively, not single precision
    p, a = f.Point(1, 2), f.Rectangle(0, 0, 10, 10)
    assert p.offset(3, 4) is None and p.offset(f.Point(1, 1)) is None and shown(p) == ("Point", 1, 2)
    assert a.intersect(f.Rectangle(5, 5, 10, 10)) is None and a.offset(1, 1) is None
    a.location.x = 9
    assert shown(a) == ("Rectangle", 0, 0, 10, 10)
    a.location, a.size = f.Point(9, 8), f.Size(7, 6)
    assert shown(a) == ("Rectangle", 9, 8, 7, 6)
