"""Overload trials on the real runtime: order of trial, the aggregated TypeError, keywords, truncation, out lists."""
import io

import pytest
from PIL import Image as PilImage

import orvane.pyfigura as f
from orvane.pyfigura import drawing2d, imaging

BITMAP_TRIALS = 10


def failed_trials(call):
    with pytest.raises(TypeError) as info:
        call()
    assert len(info.value.args) == 1
    texts = info.value.args[0]
    assert type(texts) is list
    assert all(type(t) is str for t in texts)
    return texts


class TestAllTrialsFail:
    def test_no_arguments_lists_the_first_parameter_of_each_constructor_in_order(self):
        texts = failed_trials(lambda: f.Bitmap())
        firsts = ["filename", "filename", "stream", "width", "width", "width",
                  "original", "original", "original", "stream"]
        assert texts == [f"function missing required argument '{name}' (pos 1)" for name in firsts]

    def test_str_of_the_error_prints_the_list(self):
        with pytest.raises(TypeError) as info:
            f.Bitmap()
        assert str(info.value) == str(info.value.args[0])

    def test_bool_refuses_int_so_every_trial_fails(self):
        texts = failed_trials(lambda: f.Bitmap("name.png", 1))
        assert len(texts) == BITMAP_TRIALS
        assert texts[0] == "function takes at most 1 argument (2 given)"
        assert texts[1] == "can't build bool from 'int'"
        assert texts[3] == texts[4] == texts[5] == "can't build 'Int32' from 'str'"
        assert texts[6] == "function takes at most 1 argument (2 given)"
        assert texts[7] == texts[8] == "can't build Image value from 'str'"

    def test_overflow_is_collected_like_any_other_failure(self):
        texts = failed_trials(lambda: f.Bitmap(2 ** 40, 1))
        assert len(texts) == BITMAP_TRIALS
        assert texts[3] == texts[4] == texts[5] == "Python int too large to convert to C long"

    def test_overflow_of_a_single_trial_or_a_setter_names_its_parameter(self):
        b = f.Bitmap(4, 4)
        cases = [(lambda: b.set_pixel(2**33, 0, f.Color.red), "parameter 'x'"),
                 (lambda: b.set_pixel(0, color=f.Color.red, y=-2**40), "parameter 'y'"),
                 (lambda: setattr(f.StringFormat(), "alignment", 2**40), "attribute 'alignment'")]
        for call, name in cases:
            with pytest.raises(OverflowError) as info:
                call()
            assert str(info.value) == name + ": Python int too large to convert to C long"
        with pytest.raises(TypeError, match="can't build 'Int32' from 'str'"):  # other failures as they were
            b.set_pixel("0", 0, f.Color.red)
        # Value constructors name the field, positional or keyword.
        for call, text in ((lambda: f.Point(1, 2**31), "field 'y': signed integer is greater than maximum"),
                           (lambda: f.Color(a=1, r=2, g=3, b=300), "field 'b': unsigned byte integer is greater than maximum")):
            with pytest.raises(OverflowError) as info:
                call()
            assert str(info.value) == text

    def test_method_with_two_overloads(self):
        b = f.Bitmap(2, 2)
        texts = failed_trials(lambda: b.make_transparent(1))
        assert len(texts) == 2
        assert texts[0] == "function takes at most 0 arguments (1 given)"

    def test_unknown_keyword_fails_every_trial(self):
        texts = failed_trials(lambda: f.Bitmap(4, 4, colour=1))
        assert len(texts) == BITMAP_TRIALS
        assert texts[4] == "function missing required argument 'g' (pos 3)"

    def test_many_overloads(self):
        texts = failed_trials(lambda: imaging.EncoderParameter(imaging.Encoder.QUALITY, object()))
        assert len(texts) == 16
        assert texts[0] == "can't build 'Byte' from 'object'"
        assert texts[7] == "can't build String from 'object'"
        assert texts[8] == "can't build byte[] from 'object'"


class TestFirstTrialThatParsesWins:
    def test_second_constructor_with_a_bool(self):
        # Filename and use_icm: the managed side then fails on the missing file, with its own exception.
        with pytest.raises(RuntimeError, match=r"^Proxy error\(System.ArgumentException\)"):
            f.Bitmap("missing.png", True)

    @pytest.mark.parametrize("args", [(0, 0), (-3, 5), ("missing.png",)])
    def test_managed_exception_of_a_parsed_trial_is_not_collected(self, args):
        with pytest.raises(RuntimeError) as info:
            f.Bitmap(*args)
        assert not isinstance(info.value.args[0], list)
        assert str(info.value) == "Proxy error(System.ArgumentException): Parameter is not valid."

    def test_keywords_pick_the_overload(self):
        texts = failed_trials(lambda: f.Bitmap(stream=3))
        # The file-name trials fail for their missing keyword; the stream trials get to convert.
        assert texts[0] == texts[1] == "function missing required argument 'filename' (pos 1)"
        assert texts[2] == texts[9] == "can't build Stream from 'int'"
        assert texts[3] == "function missing required argument 'width' (pos 1)"

    def test_file_object_fails_the_string_trial_and_matches_the_stream_trial(self, tmp_path):
        path = tmp_path / "s.png"
        f.Bitmap(3, 2).save(str(path))
        data = path.read_bytes()
        for b in (f.Bitmap(io.BytesIO(data)), f.Bitmap(stream=io.BytesIO(data))):
            assert (b.width, b.height) == (3, 2)
        b = f.Bitmap(io.BytesIO(data), False)
        assert (b.width, b.height) == (3, 2)

    def test_keywords_choose_between_overloads_of_equal_count(self):
        b = f.Bitmap(f.Bitmap(8, 8), width=3, height=2)
        assert (b.width, b.height) == (3, 2)

    def test_none_matches_the_first_trial_that_accepts_it(self):
        # Byte refuses None; the first overload with a reference parameter is EncoderParameter(encoder, String).
        with pytest.raises(RuntimeError, match=r"^Proxy error\(System.NullReferenceException\)"):
            imaging.EncoderParameter(imaging.Encoder.QUALITY, None)

    def test_class_before_int_at_one_position(self):
        # Bitmap(width, height, g) comes before Bitmap(width, height, format): an int passes on to the latter.
        b = f.Bitmap(3, 2, imaging.PixelFormat.FORMAT_24BPP_RGB)
        assert b.pixel_format == imaging.PixelFormat.FORMAT_24BPP_RGB
        with f.Graphics.from_image(f.Bitmap(1, 1)) as g:
            b = f.Bitmap(3, 2, g)
        assert b.pixel_format == imaging.PixelFormat.FORMAT_32BPP_P_ARGB
        with pytest.raises(RuntimeError) as info:
            f.Bitmap(3, 2, None)  # a null Graphics
        assert str(info.value) == "Proxy error(System.ArgumentNullException): Value cannot be null. (Parameter 'g')"

    @pytest.mark.parametrize("value, expected_type", [(200, 1), (-2, 3), (2 ** 40, 4)])
    def test_integer_overloads_in_declaration_order(self, value, expected_type):
        # Byte, then Int16, then Int64: the first whose range holds the value wins (ValueType 1, 3, 4).
        ep = imaging.EncoderParameter(imaging.Encoder.QUALITY, value)
        assert ep.value_type == expected_type


def set_pixels(bitmap, tmp_path):
    path = str(tmp_path / "drawn.png")
    bitmap.save(path)
    image = PilImage.open(path).convert("RGBA")
    return {(x, y) for y in range(image.height) for x in range(image.width) if image.getpixel((x, y))[3]}


class TestNumericTruncation:
    def draw_line(self, tmp_path, *coords):
        b = f.Bitmap(12, 12)
        with f.Graphics.from_image(b) as g:
            g.draw_line(f.Pens.red, *coords)
        return set_pixels(b, tmp_path)

    def test_floats_reach_the_int32_overload_truncated(self, tmp_path):
        drawn = self.draw_line(tmp_path, 1.9, 2.9, 1.9, 8.9)
        assert drawn == {(1, y) for y in range(2, 9)}
        assert drawn == self.draw_line(tmp_path, 1, 2, 1, 8)
        assert drawn != self.draw_line(tmp_path, 2, 3, 2, 9)

    def test_diagonal_with_halves(self, tmp_path):
        assert self.draw_line(tmp_path, 1.5, 2.5, 3.5, 4.5) == {(1, 2), (2, 3), (3, 4)}

    def test_ints_reach_the_single_overload_when_it_comes_first(self, tmp_path):
        b = f.Bitmap(12, 12)
        with f.Graphics.from_image(b) as g:
            g.draw_rectangle(f.Pens.red, 1, 1, 4, 3)
        drawn = set_pixels(b, tmp_path)
        assert (1, 1) in drawn and (5, 4) in drawn and (3, 2) not in drawn


class TestOutLists:
    @pytest.fixture
    def iterator(self):
        path = drawing2d.GraphicsPath()
        path.add_line(0, 0, 10, 10)
        path.add_line(10, 10, 20, 0)
        path.close_figure()
        path.start_figure()
        path.add_line(30, 30, 40, 40)
        return drawing2d.GraphicsPathIterator(path)

    def test_empty_lists_receive_the_out_values(self, iterator):
        start, end, closed = [], [], []
        assert iterator.next_subpath(start, end, closed) == 3
        assert (start, end, closed) == ([0], [2], [True])
        assert iterator.next_subpath(start, end, closed) == 2
        assert (start, end, closed) == ([3], [4], [False])

    def test_none_acts_as_empty_and_other_elements_are_kept(self, iterator):
        start, end, closed = [None], [None, "x"], [False, "keep", 9]
        assert iterator.next_subpath(start, end, closed) == 3
        assert start == [0]
        assert end == [2, "x"]
        assert closed == [True, "keep", 9]

    def test_first_element_must_convert(self, iterator):
        texts = failed_trials(lambda: iterator.next_subpath(["a"], [], []))
        assert texts[0] == "can't build 'Int32' from 'str'"

    @pytest.mark.parametrize("bad", [(), (0,), {}, "x"])
    def test_only_a_list_is_accepted(self, iterator, bad):
        texts = failed_trials(lambda: iterator.next_subpath(bad, [], []))
        assert texts[0] == ("argument should be empty list or list contains default value, "
                            f"not '{type(bad).__name__}'")

    def test_list_subclass_is_refused(self, iterator):
        class MyList(list):
            pass
        texts = failed_trials(lambda: iterator.next_subpath(MyList(), [], []))
        assert texts[0].endswith("not 'MyList'")

    def test_out_values_of_a_single_overload_method(self):
        cap = drawing2d.CustomLineCap(None, drawing2d.GraphicsPath())
        cap.set_stroke_caps(drawing2d.LineCap.ROUND, drawing2d.LineCap.TRIANGLE)
        start, end = [], []
        cap.get_stroke_caps(start, end)
        assert (start, end) == ([drawing2d.LineCap.ROUND], [drawing2d.LineCap.TRIANGLE])
        with pytest.raises(TypeError) as info:
            cap.get_stroke_caps((), [])
        assert info.value.args == ("argument should be empty list or list contains default value, not 'tuple'",)

    def test_get_bounds_refuses_a_tuple(self):
        with pytest.raises(TypeError) as info:
            f.Bitmap(2, 2).get_bounds(())
        assert info.value.args == ("argument should be empty list or list contains default value, not 'tuple'",)

    def test_get_bounds_fills_the_unit(self):
        unit = []
        bounds = f.Bitmap(7, 5).get_bounds(unit)
        assert unit == [f.GraphicsUnit.PIXEL]
        assert type(unit[0]) is int
        assert type(bounds) is f.RectangleF
        assert (bounds.x, bounds.y, bounds.width, bounds.height) == (0, 0, 7, 5)
        unit = [f.GraphicsUnit.INCH, "rest"]  # a ref value goes in; the managed side overwrites it
        f.Bitmap(2, 3).get_bounds(unit)
        assert unit == [f.GraphicsUnit.PIXEL, "rest"]


class TestDispatcher:
    """The dispatcher on its own, over three synthetic trials (text | number | a, b) of tests/support."""

    def test_first_pass_quick_look_and_final_trials(self):
        import dispatch_probe as d
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

    def test_no_match_lists_every_trial_in_order(self):
        import dispatch_probe as d
        d.runs()
        with pytest.raises(TypeError) as caught:
            d.call(b"raw")
        texts = caught.value.args[0]
        assert texts[:2] == ["can't build String from 'bytes'", "can't build 'Int32' from 'bytes'"] and len(texts) == 3
        assert d.runs() == (1, 1, 1)  # each trial ran once: for its message
        with pytest.raises(TypeError) as caught:
            d.call(1, 2, 3)
        assert len(caught.value.args[0]) == 3
