"""Wrapper objects on the real runtime: repr, hash and equality through managed code, `with`, result types."""
import sys

import pytest

import orvane.pyfigura as f
from orvane.pyfigura import drawing2d

def empty(cls):
    return cls.__new__(cls)


def holding(value):
    """A Bitmap whose tag (a managed object property) holds `value`."""
    holder = f.Bitmap(1, 1)
    holder.tag = value
    return holder


def test_repr_hash_and_equality_come_from_the_managed_object_unless_the_handles_match():
    s, t = f.StringFormat(), f.StringFormat()
    assert repr(s) == str(s) == "[StringFormat, FormatFlags=0]"
    s.format_flags = 4
    assert repr(s) == "[StringFormat, FormatFlags=FitBlackBox]"
    assert repr(f.Bitmap(2, 2)) == "System.Drawing.Bitmap"  # no ToString override: the managed type name
    a, b, c = f.Font("DejaVu Sans", 12), f.Font("DejaVu Sans", 12), f.Font("DejaVu Sans", 13)
    assert hash(a) == hash(b) and a == b and not (a != b) and a != c and not (a == c)  # equal by value
    assert s == s and not (s != s) and s != t and not (s == t)  # no Equals override: identity
    assert holding(s).tag == s and hash(holding(s).tag) == hash(s)  # two wrappers of one managed object
    assert len({hash(f.StringFormat()) for _ in range(20)}) > 1  # identity hashes
    assert hash(empty(f.StringFormat)) == 0 and empty(f.StringFormat) == empty(f.StringFormat) != s
    assert (s == 3, s == None, s != "x") == (False, False, True)  # noqa: E711
    with pytest.raises(TypeError, match="not supported between instances of"):
        s <= t
    shifty = type("Shifty", (), {"__class__": property(lambda self: 1 / 0)})()
    with pytest.raises(ZeroDivisionError):  # a failing instance check is not taken for a match
        f.Bitmap(1, 1) == shifty
    s.dispose()
    with pytest.raises(RuntimeError, match=r"^Proxy error\(System.ArgumentException\)"):  # reads released state
        repr(s)


def test_with_returns_the_object_disposes_on_leaving_and_lets_exceptions_through():
    sf = f.StringFormat()
    before = sys.getrefcount(sf)
    with sf as inside:
        assert inside is sf
    del inside
    assert sys.getrefcount(sf) == before  # __enter__ gave a new reference, which `with` dropped
    with pytest.raises(KeyError, match="inner"):
        with f.Bitmap(3, 3) as b:
            raise KeyError("inner")
    # Still usable as an object; calls reach the disposed managed object, whose own exception comes back.
    assert type(b) is f.Bitmap and b == b and isinstance(hash(b), int) and repr(b) == "System.Drawing.Bitmap"
    with pytest.raises(RuntimeError, match=r"Parameter is not valid"):
        b.width
    assert b.dispose() is None and b.__exit__(None, None, None) is None  # again and again
    with empty(f.StringFormat) as inside:
        assert type(inside) is f.StringFormat


def test_empty_wrapper_passes_handle_zero_until_a_constructor_trial_succeeds():
    with pytest.raises(RuntimeError, match=r"^Proxy error\(System.NullReferenceException\)"):
        empty(f.StringFormat).format_flags
    b = empty(f.Bitmap)
    with pytest.raises(TypeError):
        b.__init__()
    assert repr(b) == f"<orvane.pyfigura.Bitmap object at {hex(id(b))}>"  # the fallback of an empty wrapper
    b.__init__(5, 6)
    assert (b.width, b.height, repr(b)) == (5, 6, "System.Drawing.Bitmap")
    with pytest.raises(TypeError):
        type("Mine", (f.StringFormat,), {})


def test_object_results_come_back_as_their_registered_type(tmp_path):
    b = f.Bitmap(3, 2)
    copy = b.clone()
    assert type(copy) is f.Bitmap and (copy.width, copy.height) == (3, 2) and copy != b
    b.save(path := str(tmp_path / "i.png"))
    image = f.Image.from_file(path)
    assert type(image) is f.Image and type(image.clone()) is f.Bitmap  # declared type, then looked up
    # Base and derived wrappers compare through the base; empty ones have handle 0 alike.
    assert image == image and copy != image and image != f.Bitmap(image)
    assert empty(f.Image) == empty(f.Bitmap) and empty(f.Bitmap) == empty(f.Image)
    for value, cls in [(f.StringFormat(), f.StringFormat), (f.Brushes.red, f.SolidBrush),
                       (drawing2d.GraphicsPath(), drawing2d.GraphicsPath),
                       (f.printing.PrinterSettings.installed_printers, f.printing.PrinterSettings.StringCollection)]:
        assert type(holding(value).tag) is cls  # a nested managed type is registered under its name with '+'
    with pytest.raises(TypeError, match="^unknown variant type$"):  # an empty wrapper holds no object
        holding(empty(f.SolidBrush))
