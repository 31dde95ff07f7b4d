"""Wrapper objects on the real runtime: repr, hash and equality through managed code, `with`, result types, handles."""
import ast
import os
import sys

import pytest

import orvane.pyfigura as f
from orvane.pyfigura import drawing2d
from conftest import TEST_ASSETS

DISPOSED = r"^Proxy error\(System.ArgumentException\)"


def empty(cls):
    return cls.__new__(cls)


def holding(value):
    """A Bitmap whose tag (a managed object property) holds `value`."""
    holder = f.Bitmap(1, 1)
    holder.tag = value
    return holder


def test_repr_and_hash_come_from_the_managed_object():
    sf = f.StringFormat()
    assert repr(sf) == str(sf) == "[StringFormat, FormatFlags=0]"
    sf.format_flags = 4
    assert repr(sf) == "[StringFormat, FormatFlags=FitBlackBox]"
    assert repr(f.Bitmap(2, 2)) == "System.Drawing.Bitmap"  # no ToString override: the managed type name
    assert hash(f.Font("DejaVu Sans", 12)) == hash(f.Font("DejaVu Sans", 12))  # equal by value
    assert hash(holding(sf).tag) == hash(sf)  # two wrappers of one managed object
    assert len({hash(f.StringFormat()) for _ in range(20)}) > 1  # identity hashes
    assert hash(empty(f.StringFormat)) == 0
    sf.dispose()
    with pytest.raises(RuntimeError, match=DISPOSED):  # ToString of a disposed StringFormat reads released state
        repr(sf)


def test_equality_asks_the_managed_side_unless_the_handles_match():
    a, b, c = f.Font("DejaVu Sans", 12), f.Font("DejaVu Sans", 12), f.Font("DejaVu Sans", 13)
    assert a == b and not (a != b) and a != c and not (a == c)
    s, t = f.StringFormat(), f.StringFormat()
    assert s == s and not (s != s) and s != t and not (s == t)  # no Equals override: identity
    assert holding(s).tag == s
    assert empty(f.StringFormat) == empty(f.StringFormat) and empty(f.StringFormat) != s
    assert (s == 3, s == None, s != "x") == (False, False, True)  # noqa: E711
    with pytest.raises(TypeError, match="not supported between instances of"):
        s <= t

    class Shifty:
        @property
        def __class__(self):
            raise LookupError("no class today")

    with pytest.raises(LookupError, match="no class today"):  # a failing instance check is not taken for a match
        f.Bitmap(1, 1) == Shifty()


def test_with_returns_the_object_disposes_on_leaving_and_lets_exceptions_through():
    sf = f.StringFormat()
    before = sys.getrefcount(sf)
    with sf as inside:
        assert inside is sf
    del inside
    assert sys.getrefcount(sf) == before  # __enter__ gave a new reference, which `with` dropped
    with pytest.raises(RuntimeError, match=DISPOSED):
        sf.format_flags
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


CHILD = """
import contextlib, gc, orvane.pyfigura as f, host_probe, collection_probe as cp
out, live = {}, host_probe.live_handles
start = live()
objs = [f.StringFormat() for _ in range(500)]
out["made"] = live() - start
del objs
out["dropped"] = live() - start
with f.Bitmap(4, 4) as b:
    pass
out["after-with"] = live() - start  # __exit__ disposes but keeps the handle
del b
out["after-del"] = live() - start
for args in [()] * 50 + [("no-such-file.png",)] * 50:
    with contextlib.suppress(TypeError, RuntimeError):
        f.Bitmap(*args)
f.StringFormat.__new__(f.StringFormat)
out["failed-ctors"] = live() - start
holder = f.Bitmap(2, 2)
holder.tag = f.StringFormat()
results = [holder.tag for _ in range(100)] + [holder.clone() for _ in range(10)]
out["results"] = live() - start  # the holder and one per result; the tag is kept by the managed side alone
del results, holder
gc.collect()
out["end"] = live() - start
# The disposable protocol on an interop wrapper: cp.log tells how often the managed object was disposed.
d = cp.make("disposable", f._wrpgen._interop._IDisposableWrapper)
with d as entered:
    inside = cp.log(d)
out["with"] = (entered is d, inside, cp.log(d))
try:
    with d:
        raise KeyError("body")
except KeyError as e:
    out["body-raises"] = (str(e), cp.log(d))
out["exit-any-arguments"] = (d.__exit__(), d.__exit__(None, None, None, "any", "thing"), cp.log(d))
try:
    cp.make("disposable-failing", type(d)).__exit__(KeyError, None, None)
except RuntimeError as e:
    out["dispose-fails"] = str(e).split(":")[0]
print(repr(out))
"""


def test_handles_and_disposal_in_a_fresh_process(fresh_python):
    run = fresh_python(CHILD, env={"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": os.path.join(TEST_ASSETS, "assemblies")})
    assert run.returncode == 0, run
    assert ast.literal_eval(run.stdout.decode().splitlines()[-1]) == {
        "made": 500, "dropped": 0, "after-with": 1, "after-del": 0, "failed-ctors": 0, "results": 1 + 100 + 10,
        "end": 0, "with": (True, "disposed 0", "disposed 1"), "body-raises": ("'body'", "disposed 2"),
        "exit-any-arguments": (None, None, "disposed 4"),
        "dispose-fails": "Proxy error(System.ObjectDisposedException)"}
