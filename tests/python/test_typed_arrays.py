"""Typed arrays through real System.Drawing calls: array arguments from lists, sequences and wrappers,
array results and attributes as the _ArrayWrapper_XXXXXXXX types of _wrpgen._generic, their iterators."""
import uuid

import pytest

import orvane.pyfigura as f
from orvane.pyfigura import drawing2d, imaging

generic = f._wrpgen._generic
interop = f._wrpgen._interop
FULL = ["2A1D6ECF", "0B12C88A", "8A028265", "91E140D8", "A4A29720", "ADFCB9C9", "FCB07591", "3D48B6B2",
        "59F49626", "8606C0B8", "37056592", "90ED2467", "B0C6ACAA"]
RED = 0xFFFF0000


def argb(color):
    return color.to_argb() & 0xFFFFFFFF


@pytest.fixture
def canvas():
    bitmap = f.Bitmap(12, 12)
    graphics = f.Graphics.from_image(bitmap)
    graphics.clear(f.Color.white)
    return bitmap, graphics


def path_points(*xy):
    path = drawing2d.GraphicsPath()
    path.add_lines([f.PointF(x, y) for x, y in xy])
    return path.path_points


class TestModule:
    def test_types_in_order_with_interfaces_and_marks(self):
        names = [n for n in vars(generic) if n.startswith("_") and not n.startswith("__")]
        assert names == [f"_ArrayWrapper_{s}" for s in FULL] + [f"_IterWrapper_{s}" for s in FULL]
        array, iterator = generic._ArrayWrapper_2A1D6ECF, generic._IterWrapper_2A1D6ECF
        assert array.__dict__["_orvane_clr_host"] is None
        assert array.__dict__["_additional_interfaces"] == {
            interop._IListWrapper, interop._IColWrapper, interop._IterableWrapper}
        assert iterator.__dict__["_implicit_interfaces"] == {interop._IterWrapper, interop._IDisposableWrapper}

    def test_no_script_constructs_them(self):
        for name in ("_ArrayWrapper_2A1D6ECF", "_IterWrapper_FCB07591"):
            with pytest.raises(TypeError, match="type has no available constructor"):
                getattr(generic, name)()


class TestArguments:
    def test_list_of_points_draws(self, canvas):
        bitmap, graphics = canvas
        graphics.draw_lines(f.Pen(f.Color.red), [f.Point(0, 0), f.Point(5, 5)])
        assert argb(bitmap.get_pixel(3, 3)) == RED
        assert argb(bitmap.get_pixel(3, 6)) == 0xFFFFFFFF

    def test_tuple_of_pointf_draws(self, canvas):
        bitmap, graphics = canvas
        graphics.draw_lines(f.Pen(f.Color.red), (f.PointF(0, 9), f.PointF(11, 9)))
        assert argb(bitmap.get_pixel(6, 9)) == RED

    def test_typed_wrapper_passes_by_handle(self, canvas):
        bitmap, graphics = canvas
        graphics.draw_polygon(f.Pen(f.Color.red), path_points((1, 1), (10, 1), (10, 10)))
        assert argb(bitmap.get_pixel(5, 1)) == RED

    def test_rectangles_widen_in_a_rectanglef_array(self, canvas):
        bitmap, graphics = canvas
        graphics.fill_rectangles(f.SolidBrush(f.Color.red), [f.Rectangle(2, 2, 3, 3)])
        assert argb(bitmap.get_pixel(3, 3)) == RED

    def test_iterator_is_refused_by_name(self, canvas):
        _, graphics = canvas
        with pytest.raises(TypeError) as info:
            graphics.draw_lines(f.Pen(f.Color.red), iter([f.Point(0, 0)]))
        assert info.value.args[0] == ["can't build Array value from 'list_iterator'"] * 2

    def test_wrong_element_keeps_its_converter_text(self, canvas):
        _, graphics = canvas
        with pytest.raises(TypeError, match="argument should be PointF, not 'int'"):
            graphics.draw_lines(f.Pen(f.Color.red), [f.PointF(0, 0), 5])

    def test_wrapper_of_another_element_type_is_refused(self, canvas):
        _, graphics = canvas
        singles = f.Pen(f.Color.red)
        singles.dash_pattern = [1, 2]
        with pytest.raises(TypeError) as info:
            graphics.draw_lines(f.Pen(f.Color.red), singles.dash_pattern)
        assert info.value.args[0][0] == ("can't build Array value from "
                                         "'orvane.pyfigura._wrpgen._generic._ArrayWrapper_FCB07591'")

    def test_list_subclass_is_read_as_a_list(self):
        class Sneaky(list):
            def __getitem__(self, index):
                raise AssertionError("read through the subclass")

        pen = f.Pen(f.Color.red)
        pen.dash_pattern = Sneaky([2, 3])
        assert list(pen.dash_pattern) == [2.0, 3.0]

    @pytest.mark.parametrize("value", [[1, 2.5], (1, 2.5), range(1, 3)], ids=["list", "tuple", "range"])
    def test_single_array_from_sequences(self, value):
        pen = f.Pen(f.Color.red)
        pen.dash_pattern = value
        assert list(pen.dash_pattern) == [float(v) for v in value]

    def test_none_is_a_null_array(self):
        blend = drawing2d.ColorBlend()
        blend.colors = None
        assert blend.colors is None

    def test_the_list_is_left_as_it_was(self):
        points = [f.PointF(1, 2), f.PointF(3, 4)]
        path = drawing2d.GraphicsPath()
        path.add_lines(points)
        assert [(p.x, p.y) for p in points] == [(1, 2), (3, 4)]

    def test_nested_single_arrays_reach_color_matrix(self):
        rows = [[1, 0, 0, 0, 0], [0, 1, 0, 0, 0], [0, 0, 1, 0, 0], [0, 0, 0, 0.5, 0], (0, 0, 0, 0, 1)]
        matrix = imaging.ColorMatrix(rows)
        assert matrix.matrix33 == 0.5
        assert matrix.matrix44 == 1.0

    def test_shrinking_sequence_ends_with_its_index_error(self):
        class Liar:
            def __len__(self):
                return 3

            def __getitem__(self, index):
                if index >= 2:
                    raise IndexError("gone")
                return 1.0

        with pytest.raises(IndexError, match="gone"):
            f.Pen(f.Color.red).dash_pattern = Liar()


class TestResults:
    def test_encoders_behave_as_a_fixed_length_sequence(self):
        encoders = imaging.ImageCodecInfo.get_image_encoders()
        assert type(encoders) is generic._ArrayWrapper_0B12C88A
        items = list(encoders)
        assert len(encoders) == encoders.length == len(items) > 2
        assert isinstance(encoders[0], imaging.ImageCodecInfo)
        assert encoders[-1].format_description == items[-1].format_description
        assert [e.mime_type for e in encoders[1:3]] == [e.mime_type for e in items[1:3]]
        assert type(encoders[::2]) is list
        assert items[1] in encoders and encoders.contains(items[1])
        assert encoders.count(items[1]) == 1 and encoders.index(items[1]) == 1
        assert [e.mime_type for e in encoders.copy()] == [e.mime_type for e in items]

    @pytest.mark.parametrize("index", [99, -99, 2 ** 40])
    def test_out_of_range_reads_as_list_does(self, index):
        encoders = imaging.ImageCodecInfo.get_image_encoders()
        with pytest.raises(IndexError) as mine:
            encoders[index]
        with pytest.raises(IndexError) as theirs:
            list(encoders)[index]
        assert str(mine.value) == str(theirs.value)

    def test_absent_value_in_index(self):
        with pytest.raises(ValueError, match="value is not in list"):
            imaging.ImageCodecInfo.get_image_encoders().index(None)

    def test_font_families_is_a_typed_array(self):
        families = f.FontFamily.families
        assert type(families) is generic._ArrayWrapper_3D48B6B2
        assert all(isinstance(family, f.FontFamily) for family in families)

    def test_attribute_reads_give_a_new_wrapper_each_time(self):
        pen = f.Pen(f.Color.red)
        pen.dash_pattern = [1, 2]
        first, second = pen.dash_pattern, pen.dash_pattern
        assert first is not second and list(first) == list(second) == [1.0, 2.0]


class TestProtocol:
    def test_writes_reach_the_managed_array(self):
        points = path_points((0, 0), (1, 1), (2, 2))
        points[0] = f.PointF(9, 9)
        points[::2] = (f.PointF(5, 5), f.PointF(6, 6))
        assert [(p.x, p.y) for p in points] == [(5, 5), (1, 1), (6, 6)]

    def test_slice_assignment_keeps_the_length(self):
        points = path_points((0, 0), (1, 1), (2, 2))
        with pytest.raises(ValueError, match="attempt to assign sequence of size 3 to extended slice of size 2"):
            points[0:2] = [f.PointF(), f.PointF(), f.PointF()]
        with pytest.raises(TypeError, match="must assign iterable to extended slice"):
            points[0:1] = 5

    def test_slice_from_another_wrapper_is_copied_whole(self):
        points, others = path_points((0, 0), (1, 1)), path_points((7, 7), (8, 8))
        points[:] = others
        assert [p.x for p in points] == [7, 8]

    @pytest.mark.parametrize("key", [0, 9, slice(5, 5)])
    def test_removal_is_refused(self, key):
        points = path_points((0, 0), (1, 1))
        with pytest.raises(ValueError, match="elements removing not supported"):
            del points[key]

    def test_bad_key_before_removal(self):
        with pytest.raises(TypeError, match="list indices must be integers or slices, not str"):
            del path_points((0, 0))["x"]

    def test_element_type_is_checked_on_write(self):
        with pytest.raises(TypeError, match="argument should be PointF, not 'int'"):
            path_points((0, 0))[0] = 1

    def test_concatenation_and_repetition_give_lists(self):
        pen = f.Pen(f.Color.red)
        pen.dash_pattern = [1, 2]
        dashes = pen.dash_pattern
        assert dashes + [3] == [1.0, 2.0, 3] and dashes + "a" == [1.0, 2.0, "a"]
        assert dashes + iter([4]) == [1.0, 2.0, 4]
        assert dashes * 2 == [1.0, 2.0, 1.0, 2.0] and dashes * -1 == []
        with pytest.raises(ValueError, match="argument must be iterable or sequence"):
            dashes + 5
        dashes += [3]
        assert dashes == [1.0, 2.0, 3]

    def test_sort_and_reverse_in_place(self):
        pen = f.Pen(f.Color.red)
        pen.dash_pattern = [3, 1, 2]
        dashes = pen.dash_pattern
        dashes.sort(reverse=True)
        assert list(dashes) == [3.0, 2.0, 1.0]
        dashes.reverse()
        assert list(dashes) == [1.0, 2.0, 3.0]
        with pytest.raises(ValueError, match="custom sorting key is not supported"):
            dashes.sort(key=abs)

    def test_no_length_changing_methods(self):
        with pytest.raises(AttributeError):
            path_points((0, 0)).append(f.PointF())

    def test_iterator_is_single_pass_and_a_context_manager(self):
        points = path_points((0, 0), (1, 1))
        iterator = iter(points)
        assert type(iterator) is generic._IterWrapper_2A1D6ECF and iter(iterator) is iterator
        with iterator as it:
            assert [p.x for p in it] == [0, 1]
        with pytest.raises(StopIteration):
            next(iterator)


class TestElementKinds:
    def test_bytes_elements(self):
        parameter = imaging.EncoderParameter(imaging.Encoder.QUALITY, 50)
        parameters = imaging.EncoderParameters(1)
        parameters.param = [parameter]
        assert type(parameters.param) is generic._ArrayWrapper_91E140D8
        assert parameters.param[0].number_of_values == 1

    def test_colors_and_guid_elements(self):
        blend = drawing2d.ColorBlend(2)
        blend.colors = [f.Color.red, f.Color.blue]
        assert type(blend.colors) is generic._ArrayWrapper_ADFCB9C9
        assert [argb(c) for c in blend.colors] == [RED, 0xFF0000FF]
        bitmap = f.Bitmap(2, 2)
        dimensions = bitmap.frame_dimensions_list
        assert type(dimensions) is generic._ArrayWrapper_59F49626
        assert all(isinstance(d, uuid.UUID) for d in dimensions)

    def test_ref_array_lists_are_filled(self):
        path = drawing2d.GraphicsPath()
        path.add_lines([f.PointF(0, 0), f.PointF(3, 4), f.PointF(6, 0)])
        iterator = drawing2d.GraphicsPathIterator(path)
        points, types = [[f.PointF()] * 3], [bytearray(3)]
        assert iterator.enumerate(points, types) == 3
        assert type(points[0]) is generic._ArrayWrapper_2A1D6ECF
        assert [(p.x, p.y) for p in points[0]] == [(0, 0), (3, 4), (6, 0)]
        assert bytes(types[0]) == b"\x00\x01\x01"
