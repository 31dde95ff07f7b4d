"""Typed arrays in System.Drawing calls: arguments from sequences and wrappers, results as _wrpgen._generic types."""
import uuid

import pytest

import orvane.pyfigura as f
from orvane.pyfigura import drawing2d, imaging

generic = f._wrpgen._generic
RED = 0xFFFF0000


class Sneaky(list):  # read as the list it is, never through its own __getitem__
    def __getitem__(self, index):
        raise AssertionError("read through the subclass")


def path_points(*xy):
    path = drawing2d.GraphicsPath()
    path.add_lines([f.PointF(x, y) for x, y in xy])
    return path.path_points


def dashes(values):
    pen = f.Pen(f.Color.red)
    pen.dash_pattern = values
    return pen.dash_pattern


@pytest.mark.parametrize("draw, pixel", [
    (lambda g: g.draw_lines(f.Pen(f.Color.red), [f.Point(0, 0), f.Point(5, 5)]), (3, 3)),
    (lambda g: g.draw_lines(f.Pen(f.Color.red), (f.PointF(0, 9), f.PointF(11, 9))), (6, 9)),
    (lambda g: g.draw_polygon(f.Pen(f.Color.red), path_points((1, 1), (10, 1), (10, 10))), (5, 1)),
    (lambda g: g.fill_rectangles(f.SolidBrush(f.Color.red), [f.Rectangle(2, 2, 3, 3)]), (3, 3)),
    (lambda g: g.draw_line(f.Pen(f.Color.red), f.Point(0, 2), f.Point(7, 2)), (4, 2)),  # values pick their overload
    (lambda g: g.draw_line(f.Pen(f.Color.red), f.PointF(0, 5), f.PointF(7, 5)), (4, 5)),
], ids=["list", "tuple", "wrapper-by-handle", "rectangles-widened", "point-values", "pointf-values"])
def test_arrays_and_values_reach_the_drawing(draw, pixel):
    bitmap = f.Bitmap(12, 12)
    graphics = f.Graphics.from_image(bitmap)
    graphics.clear(f.Color.white)
    draw(graphics)
    assert [bitmap.get_pixel(*p).to_argb() & 0xFFFFFFFF for p in (pixel, (3, 6))] == [RED, 0xFFFFFFFF]


@pytest.mark.parametrize("value", [[1, 2.5], (1, 2.5), range(1, 3), Sneaky([1, 2.5])], ids=repr)
def test_single_array_from_sequences(value):
    assert list(dashes(value)) == [float(v) for v in list(value)]


def test_refusals_name_the_array_or_keep_the_element_text():
    graphics, pen = f.Graphics.from_image(f.Bitmap(2, 2)), f.Pen(f.Color.red)
    for points, name in [(iter([f.Point(0, 0)]), "list_iterator"),
                         (dashes([1, 2]), f"{generic.__name__}._ArrayWrapper_FCB07591")]:
        with pytest.raises(TypeError) as info:  # from both overloads, Point[] and PointF[]
            graphics.draw_lines(pen, points)
        assert info.value.args[0] == [f"can't build Array value from '{name}'"] * 2
    with pytest.raises(TypeError, match="argument should be PointF, not 'int'"):
        graphics.draw_lines(pen, [f.PointF(0, 0), 5])
    shrinking = type("Shrinking", (), {"__len__": lambda s: 3, "__getitem__": lambda s, i: (1.0, 2.0)[i]})()
    with pytest.raises(IndexError, match="tuple index out of range"):  # tells three items, has two
        dashes(shrinking)


def test_none_nested_and_ref_arrays():
    blend = drawing2d.ColorBlend()
    blend.colors = None
    assert blend.colors is None
    matrix = imaging.ColorMatrix([[1, 0, 0, 0, 0], [0, 1, 0, 0, 0], [0, 0, 1, 0, 0], [0, 0, 0, 0.5, 0], range(5)])
    assert (matrix.matrix33, matrix.matrix43, matrix.matrix44) == (0.5, 3.0, 4.0)
    path = drawing2d.GraphicsPath()
    path.add_lines([f.PointF(0, 0), f.PointF(3, 4), f.PointF(6, 0)])
    points, types = [[f.PointF()] * 3], [bytearray(3)]  # ref arrays: one-item lists that are filled
    assert drawing2d.GraphicsPathIterator(path).enumerate(points, types) == 3
    assert type(points[0]) is generic._ArrayWrapper_2A1D6ECF
    assert [(p.x, p.y) for p in points[0]] == [(0, 0), (3, 4), (6, 0)] and bytes(types[0]) == b"\x00\x01\x01"


def test_result_arrays_of_objects_colours_and_guids():
    encoders = imaging.ImageCodecInfo.get_image_encoders()
    items = list(encoders)
    assert type(encoders) is generic._ArrayWrapper_0B12C88A and isinstance(items[0], imaging.ImageCodecInfo)
    assert len(encoders) == len(items) > 2 and encoders.index(items[1]) == 1  # elements compare through Equals
    assert [e.mime_type for e in (encoders[-1], *encoders[1:3])] == [e.mime_type for e in (items[-1], *items[1:3])]
    with pytest.raises(IndexError, match="^list index out of range$"):  # as list says it, however far out
        encoders[2**40]
    blend = drawing2d.ColorBlend(2)
    blend.colors = [f.Color.red, f.Color.blue]
    assert type(blend.colors) is generic._ArrayWrapper_ADFCB9C9
    assert [c.to_argb() & 0xFFFFFFFF for c in blend.colors] == [RED, 0xFF0000FF]
    dimensions = f.Bitmap(2, 2).frame_dimensions_list
    assert type(dimensions) is generic._ArrayWrapper_59F49626 and all(isinstance(d, uuid.UUID) for d in dimensions)


def test_writes_and_sorting_reach_the_managed_array():
    points = path_points((0, 0), (1, 1), (2, 2))
    points[0] = f.PointF(9, 9)
    points[::2] = (f.PointF(5, 5), f.PointF(6, 6))
    assert [(p.x, p.y) for p in points] == [(5, 5), (1, 1), (6, 6)]
    points[:] = path_points((7, 7), (8, 8), (9, 9))  # another wrapper is copied whole
    assert [p.x for p in points] == [7, 8, 9]
    values = dashes([3, 1, 2])
    values.sort(reverse=True)
    assert list(values) == [3.0, 2.0, 1.0]


def test_iterator_is_single_pass_and_a_context_manager():
    iterator = iter(path_points((0, 0), (1, 1)))
    assert type(iterator) is generic._IterWrapper_2A1D6ECF and iter(iterator) is iterator
    with iterator as it:
        assert [p.x for p in it] == [0, 1] and next(iterator, "done") == "done"
