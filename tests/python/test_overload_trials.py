"""Overload trials on the real runtime: order of trial, the aggregated TypeError, keywords, truncation, out lists."""
import io
import sys

import pytest

import dispatch_probe
import orvane.pyfigura as f
from orvane.pyfigura import drawing2d, imaging

TOO_LARGE = "Python int too large to convert to C long"
NOT_A_LIST = "argument should be empty list or list contains default value, not '{}'"


def failed_trials(call):
    """The texts of every failed trial, in trial order, which a TypeError carries as its one argument."""
    with pytest.raises(TypeError) as info:
        call()
    texts = info.value.args[0]
    assert len(info.value.args) == 1 and type(texts) is list and all(type(t) is str for t in texts)
    assert str(info.value) == str(texts)
    return texts


def test_when_every_trial_fails_each_one_gives_its_text():
    firsts = ["filename", "filename", "stream", "width", "width", "width", "original", "original", "original", "stream"]
    assert failed_trials(lambda: f.Bitmap()) == [f"function missing required argument '{n}' (pos 1)" for n in firsts]
    texts = failed_trials(lambda: f.Bitmap("name.png", 1))  # bool refuses int
    assert len(texts) == 10 and texts[0] == texts[6] == "function takes at most 1 argument (2 given)" and texts[1] == (
        "can't build bool from 'int'") and texts[3] == texts[4] == texts[5] == "can't build 'Int32' from 'str'"
    texts = failed_trials(lambda: f.Bitmap(2 ** 40, 1))  # an overflow is collected like any other failure
    assert texts[3] == texts[4] == texts[5] == TOO_LARGE
    texts = failed_trials(lambda: f.Bitmap(stream=3))  # keywords decide which trials get to convert
    assert texts[0] == texts[1] == "function missing required argument 'filename' (pos 1)"
    assert texts[2] == texts[9] == "can't build Stream from 'int'"
    assert failed_trials(lambda: f.Bitmap(2, 2).make_transparent(1)) == [
        "function takes at most 0 arguments (1 given)", "argument should be Color, not 'int'"]


def test_overflow_of_a_single_trial_names_its_parameter_attribute_or_field():
    for call, text in [(lambda: f.Bitmap(4, 4).set_pixel(0, color=f.Color.red, y=-2**40),
                        "parameter 'y': " + TOO_LARGE),
                       (lambda: setattr(f.StringFormat(), "alignment", 2**40), "attribute 'alignment': " + TOO_LARGE),
                       (lambda: f.Point(1, 2**31), "field 'y': signed integer is greater than maximum")]:
        with pytest.raises(OverflowError) as info:
            call()
        assert str(info.value) == text
    with pytest.raises(TypeError, match="^can't build 'Int32' from 'str'$"):  # other failures as they were
        f.Bitmap(4, 4).set_pixel("0", 0, f.Color.red)


def test_the_first_trial_that_parses_wins_and_its_managed_error_is_not_collected():
    for args in [(0, 0), (-3, 5), ("missing.png",), ("missing.png", True)]:
        with pytest.raises(RuntimeError, match=r"^Proxy error\(System.ArgumentException\): Parameter is not valid\.$"):
            f.Bitmap(*args)
    f.Bitmap(3, 2).save(png := io.BytesIO(), imaging.ImageFormat.png)
    data = png.getvalue()  # a file object fails the file-name trial and matches a stream trial
    for b in (f.Bitmap(io.BytesIO(data)), f.Bitmap(stream=io.BytesIO(data)), f.Bitmap(io.BytesIO(data), False),
              f.Bitmap(f.Bitmap(8, 8), width=3, height=2)):
        assert (b.width, b.height) == (3, 2)
    # Byte refuses None; the first overload with a reference parameter is EncoderParameter(encoder, String).
    with pytest.raises(RuntimeError, match=r"^Proxy error\(System.NullReferenceException\)"):
        imaging.EncoderParameter(imaging.Encoder.QUALITY, None)
    # Byte, then Int16, then Int64: the first whose range holds the value wins (ValueType 1, 3, 4).
    assert [imaging.EncoderParameter(imaging.Encoder.QUALITY, v).value_type for v in (200, -2, 2**40)] == [1, 3, 4]
    # Bitmap(width, height, g) comes before Bitmap(width, height, format): an int passes on to the latter.
    assert f.Bitmap(3, 2, imaging.PixelFormat.FORMAT_24BPP_RGB).pixel_format == imaging.PixelFormat.FORMAT_24BPP_RGB
    g = f.Graphics.from_image(f.Bitmap(1, 1))
    refs = sys.getrefcount(g)
    with g as entered:  # __enter__ gives the object itself with a reference of its own (and __exit__ holds one)
        assert entered is g and sys.getrefcount(g) == refs + 2
        assert f.Bitmap(3, 2, g).pixel_format == imaging.PixelFormat.FORMAT_32BPP_P_ARGB
    with pytest.raises(RuntimeError) as info:
        f.Bitmap(3, 2, None)  # a null Graphics
    assert str(info.value) == "Proxy error(System.ArgumentNullException): Value cannot be null. (Parameter 'g')"


def test_out_lists_receive_the_values_in_their_first_element_and_must_be_lists():
    path = drawing2d.GraphicsPath()  # two figures: three points closed, then two open
    path.add_lines([f.Point(0, 0), f.Point(10, 10), f.Point(20, 0)])
    path.close_figure()
    path.add_line(30, 30, 40, 40)
    iterator = drawing2d.GraphicsPathIterator(path)
    assert failed_trials(lambda: iterator.next_subpath(["a"], [], []))[0] == "can't build 'Int32' from 'str'"
    for bad in [(), (0,), {}, "x", type("MyList", (list,), {})()]:
        assert failed_trials(lambda: iterator.next_subpath(bad, [], []))[0] == NOT_A_LIST.format(type(bad).__name__)
    start, end, closed = [], [], []
    assert iterator.next_subpath(start, end, closed) == 3 and (start, end, closed) == ([0], [2], [True])
    start, end, closed = [None], [7, "x"], [False, "keep", 9]  # None acts as empty; the rest is kept
    assert iterator.next_subpath(start, end, closed) == 2
    assert (start, end, closed) == ([3], [4, "x"], [False, "keep", 9])
    unit = [f.GraphicsUnit.INCH, "rest"]  # a ref value goes in; the managed side overwrites it
    bounds = f.Bitmap(7, 5).get_bounds(unit)
    assert unit == [f.GraphicsUnit.PIXEL, "rest"] and type(unit[0]) is int
    assert (type(bounds), bounds.x, bounds.y, bounds.width, bounds.height) == (f.RectangleF, 0, 0, 7, 5)
    with pytest.raises(TypeError) as info:  # a single overload: its own text
        f.Bitmap(2, 2).get_bounds(())
    assert info.value.args == (NOT_A_LIST.format("tuple"),)


def test_dispatcher_quick_look_and_second_pass():
    """The dispatcher on its own, over three synthetic trials (text | number | a, b); runs() counts trial runs."""
    d = dispatch_probe
    d.runs()
    assert d.call("abc") == ("text", 3) and d.runs() == (1, 0, 0)
    assert d.call(None) == ("text", -1) and d.runs() == (1, 0, 0)
    # a number never reaches the text trial: the quick look leaves it for a second pass that never comes
    assert d.call(7) == ("number", 7) and d.runs() == (0, 1, 0)
    assert d.call(number=2.9) == ("number", 2) and d.runs() == (1, 1, 0)  # keywords get no quick look
    assert d.call(1, 2) == ("pair", 1, 2) and d.runs() == (0, 0, 1)
    with pytest.raises(ArithmeticError, match="negative -1"):
        d.call(-1, 2)  # parsed: final, its error is raised as it is
    assert d.runs() == (0, 0, 1)
    texts = failed_trials(lambda: d.call(b"raw"))
    assert texts[:2] == ["can't build String from 'bytes'", "can't build 'Int32' from 'bytes'"] and len(texts) == 3
    assert d.runs() == (1, 1, 1)  # each trial ran once: for its message
    assert len(failed_trials(lambda: d.call(1, 2, 3))) == 3
