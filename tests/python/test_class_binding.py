"""Generated classes on the real runtime: constructors, methods, properties, the construction gate, converters."""
import ctypes

import pytest

import orvane.pyfigura as f
from orvane.pyfigura import imaging


@pytest.fixture
def png(tmp_path):
    path = str(tmp_path / "five-by-three.png")
    f.Bitmap(5, 3).save(path)
    return path


def capsule_converter(name):
    """The class's ArgConverter, as a sister module reaches it through the _C_APIT_ capsule."""
    api = ctypes.pythonapi
    api.PyCapsule_GetPointer.restype = ctypes.c_void_p
    api.PyCapsule_GetPointer.argtypes = [ctypes.py_object, ctypes.c_char_p]
    record = api.PyCapsule_GetPointer(getattr(f, f"_C_APIT_{name}"), f"orvane.pyfigura._C_APIT_{name}".encode())
    function = ctypes.c_void_p.from_address(record).value
    convert = ctypes.PYFUNCTYPE(ctypes.c_int, ctypes.py_object, ctypes.c_void_p)(function)

    def handle_for(obj):
        out = ctypes.c_uint64(0xDEAD)
        assert convert(obj, ctypes.addressof(out)) == 1
        return out.value

    return handle_for


class TestConstructors:
    def test_width_and_height(self):
        b = f.Bitmap(640, 480)
        assert (b.width, b.height) == (640, 480)

    def test_floats_are_truncated_to_the_integer_overload(self):
        b = f.Bitmap(10.5, 20.5)
        assert (b.width, b.height) == (10, 20)

    def test_keywords(self):
        b = f.Bitmap(width=7, height=3)
        assert (b.width, b.height) == (7, 3)
        b = f.Bitmap(height=3, width=7)
        assert (b.width, b.height) == (7, 3)

    def test_from_file_name(self, png):
        b = f.Bitmap(png)
        assert type(b) is f.Bitmap
        assert (b.width, b.height) == (5, 3)

    def test_from_an_image(self, png):
        copy = f.Bitmap(f.Image.from_file(png))
        assert (copy.width, copy.height) == (5, 3)
        resized = f.Bitmap(f.Bitmap(5, 3), 9, 4)
        assert (resized.width, resized.height) == (9, 4)

    def test_none_is_a_null_file_name_for_the_first_overload(self):
        with pytest.raises(RuntimeError) as info:
            f.Bitmap(None)
        assert str(info.value) == "Proxy error(System.ArgumentNullException): Value cannot be null. (Parameter 'path')"

    def test_missing_file_is_a_managed_error(self):
        with pytest.raises(RuntimeError) as info:
            f.Bitmap("missing.png")
        assert str(info.value) == "Proxy error(System.ArgumentException): Parameter is not valid."

    @pytest.mark.parametrize("cls", [f.Image, f.Graphics, f.Brushes, f.Pens, f.Brush])
    def test_class_without_public_constructor(self, cls):
        with pytest.raises(TypeError) as info:
            cls()
        assert info.value.args == ("type has no available constructor",)

    def test_class_without_public_constructor_refuses_arguments_too(self):
        with pytest.raises(TypeError, match="^type has no available constructor$"):
            f.Image("x.png")


class TestMethodsAndProperties:
    def test_set_resolution(self):
        b = f.Bitmap(4, 4)
        b.set_resolution(96, 96)
        assert (b.horizontal_resolution, b.vertical_resolution) == (96.0, 96.0)
        b.set_resolution(x_dpi=300.5, y_dpi=72)
        assert (b.horizontal_resolution, b.vertical_resolution) == (300.5, 72.0)

    def test_single_overload_method_raises_its_converters_own_error(self):
        b = f.Bitmap(4, 4)
        with pytest.raises(TypeError) as info:
            b.set_resolution("a", 1)
        assert info.value.args == ("can't build 'Single' from 'str'",)
        with pytest.raises(TypeError) as info:
            b.set_resolution(1, 2, 3)
        assert info.value.args == ("function takes at most 2 arguments (3 given)",)
        with pytest.raises(TypeError) as info:
            b.set_resolution(1, dpi=2)
        assert info.value.args == ("function missing required argument 'y_dpi' (pos 2)",)

    def test_property_setter_and_getter(self):
        sf = f.StringFormat()
        sf.format_flags = 0x1000
        assert sf.format_flags == 0x1000
        with pytest.raises(TypeError):
            sf.format_flags = "x"
        assert sf.format_flags == 0x1000

    def test_property_cannot_be_deleted(self):
        sf = f.StringFormat()
        with pytest.raises(TypeError):
            del sf.format_flags

    def test_inherited_property_on_a_derived_wrapper(self):
        b = f.Bitmap(6, 2)
        assert f.Image.width.__get__(b) == 6

    def test_static_method_and_instance_method_on_its_result(self, png):
        image = f.Image.from_file(png)
        assert type(image) is f.Image  # wrapped by declared type
        with f.Graphics.from_image(f.Bitmap(3, 3)) as g:
            assert type(g) is f.Graphics
            g.draw_image(image, 0, 0)

    def test_static_members_give_wrappers(self):
        assert type(f.Pens.red) is f.Pen
        assert f.Pens.red.width == 1.0
        assert type(f.Brushes.red) is f.Brush


class TestClassConverter:
    """A class parameter: None, its own type and subtypes, and wrappers the managed side calls assignable."""

    def test_none_is_handle_zero(self):
        assert capsule_converter("Bitmap")(None) == 0

    def test_image_wrapper_around_a_managed_bitmap_passes_as_bitmap(self, png):
        image = f.Image.from_file(png)
        assert type(image) is f.Image
        as_bitmap = capsule_converter("Bitmap")(image)
        # The Bitmap converter hands on the same handle as the Image converter, after asking btp_IsAssignableTo.
        assert as_bitmap != 0
        assert as_bitmap == capsule_converter("Image")(image)

    def test_brush_wrapper_around_a_solid_brush_passes_as_solid_brush(self):
        red = f.Brushes.red
        assert type(red) is f.Brush
        assert capsule_converter("SolidBrush")(red) == capsule_converter("Brush")(red)

    @pytest.mark.parametrize("make, name", [
        (lambda: f.StringFormat(), "orvane.pyfigura.StringFormat"),
        (lambda: f.Font("DejaVu Sans", 5), "orvane.pyfigura.Font"),
        (lambda: f.Image.__new__(f.Image), "orvane.pyfigura.Image"),
        (lambda: 3, "int"),
        (lambda: "x.png", "str")])
    def test_other_objects_are_refused(self, make, name):
        with pytest.raises(TypeError) as info:
            capsule_converter("Bitmap")(make())
        assert info.value.args == (f"can't build Bitmap value from '{name}'",)

    def test_wrong_class_in_a_single_overload_method(self):
        with pytest.raises(TypeError) as info:
            f.Graphics.from_image(f.StringFormat())
        assert info.value.args == ("can't build Image value from 'orvane.pyfigura.StringFormat'",)

    def test_subclass_passes_where_the_base_is_asked(self):
        with f.Graphics.from_image(f.Bitmap(2, 2)) as g:
            assert g.dpi_x > 0

    def test_null_reference_reaches_the_managed_side(self):
        with pytest.raises(RuntimeError, match=r"^Proxy error\(System.ArgumentNullException\)"):
            f.Graphics.from_image(None)


class TestSubModules:
    def test_class_of_a_sub_module(self):
        ep = imaging.EncoderParameter(imaging.Encoder.QUALITY, 42)
        assert type(ep).__name__ == "EncoderParameter"
        assert type(ep).__module__ == "orvane.pyfigura.imaging"
        assert ep.number_of_values == 1
        assert type(ep.encoder) is imaging.Encoder
