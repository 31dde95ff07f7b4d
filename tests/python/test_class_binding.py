"""Generated classes on the real runtime: constructors, methods, properties, static members, class converters,
and what each module holds after import: classes where they belong, host marks, interface sets, capsules."""
import ctypes
import functools
import json
import os
import struct

import pytest

import capsule_user
import orvane.pyfigura as f
from conftest import REPO
from orvane.pyfigura import imaging

INTEROP = f._wrpgen._interop
MODULES = {m.__name__: m for m in (f, f.text, f.drawing2d, f.design, f.printing, f.imaging, INTEROP)}


CLASSES = {c["name"]: c for n in ["drawing", "drawing2d", "imaging", "printing", "text", "design"]
           for c in json.load(open(os.path.join(REPO, "api", n + ".json"), encoding="utf-8"))["classes"]}


def python_type(name):
    """A described class (or an interop type) in its module; a nested name is reached through its outer type."""
    module = CLASSES[name]["module"] if name in CLASSES else INTEROP.__name__
    return functools.reduce(getattr, name.split("."), MODULES[module])


@pytest.fixture
def png(tmp_path):
    f.Bitmap(5, 3).save(path := str(tmp_path / "five-by-three.png"))
    return path


def size(image):
    return image.width, image.height


def test_constructor_overloads(png):
    assert size(f.Bitmap(640, 480)) == (640, 480)
    assert size(f.Bitmap(10.5, 20.5)) == (10, 20)  # floats are truncated to the integer overload
    assert size(f.Bitmap(width=7, height=3)) == size(f.Bitmap(height=3, width=7)) == (7, 3)
    assert type(f.Bitmap(png)) is f.Bitmap and size(f.Bitmap(png)) == (5, 3)
    assert size(f.Bitmap(f.Image.from_file(png))) == (5, 3)
    assert size(f.Bitmap(f.Bitmap(5, 3), 9, 4)) == (9, 4)
    font = f.Font("DejaVu Sans", 12.0, f.FontStyle.BOLD, f.GraphicsUnit.POINT, 200)
    assert (font.gdi_char_set, f.Font("DejaVu Sans", 12).gdi_char_set) == (200, 1)  # a Byte result is unsigned
    for args, text in [((None,), "Proxy error(System.ArgumentNullException): Value cannot be null. (Parameter 'path')"),
                       (("missing.png",), "Proxy error(System.ArgumentException): Parameter is not valid.")]:
        with pytest.raises(RuntimeError) as info:
            f.Bitmap(*args)  # None is a null file name for the first overload
        assert str(info.value) == text


def test_methods_and_properties():
    b = f.Bitmap(6, 2)
    b.set_resolution(96, 96)
    assert (b.horizontal_resolution, b.vertical_resolution) == (96.0, 96.0)
    b.set_resolution(x_dpi=300.5, y_dpi=72)
    assert (b.horizontal_resolution, b.vertical_resolution) == (300.5, 72.0)
    # A single-overload method raises its converter's own error, not a list.
    for args, kwargs, text in [(("a", 1), {}, "can't build 'Single' from 'str'"),
                               ((1, 2, 3), {}, "function takes at most 2 arguments (3 given)"),
                               ((1,), {"dpi": 2}, "function missing required argument 'y_dpi' (pos 2)")]:
        with pytest.raises(TypeError) as info:
            b.set_resolution(*args, **kwargs)
        assert info.value.args == (text,)
    assert f.Image.width.__get__(b) == 6  # the base's property on a derived wrapper
    sf = f.StringFormat()
    sf.format_flags = 0x1000
    with pytest.raises(TypeError):
        sf.format_flags = "x"
    with pytest.raises(TypeError):
        del sf.format_flags
    assert sf.format_flags == 0x1000


def capsule_converter(name):
    """The class's ArgConverter, as a sister module reaches it through the _C_APIT_ capsule: object -> handle."""
    api = ctypes.pythonapi
    api.PyCapsule_GetPointer.restype = ctypes.c_void_p
    api.PyCapsule_GetPointer.argtypes = [ctypes.py_object, ctypes.c_char_p]
    record = api.PyCapsule_GetPointer(getattr(f, f"_C_APIT_{name}"), f"orvane.pyfigura._C_APIT_{name}".encode())
    convert = ctypes.PYFUNCTYPE(ctypes.c_int, ctypes.py_object, ctypes.c_void_p)(
        ctypes.c_void_p.from_address(record).value)

    def handle_for(obj):
        out = ctypes.c_uint64(0xDEAD)
        assert convert(obj, ctypes.addressof(out)) == 1
        return out.value

    return handle_for


def test_class_converter_takes_none_subtypes_and_what_the_managed_side_calls_assignable(png):
    as_bitmap = capsule_converter("Bitmap")
    assert as_bitmap(None) == 0
    image = f.Image.from_file(png)  # an Image wrapper around a managed Bitmap, after btp_IsAssignableTo
    assert as_bitmap(image) != 0 and as_bitmap(image) == capsule_converter("Image")(image)
    red = f.Brushes.red
    assert capsule_converter("SolidBrush")(red) == capsule_converter("Brush")(red)
    for obj, name in [(f.StringFormat(), "orvane.pyfigura.StringFormat"), (3, "int"),
                      (f.Image.__new__(f.Image), "orvane.pyfigura.Image")]:  # another class, no wrapper, an empty base
        with pytest.raises(TypeError) as info:
            as_bitmap(obj)
        assert info.value.args == (f"can't build Bitmap value from '{name}'",)
    with pytest.raises(TypeError) as info:
        f.Graphics.from_image(f.StringFormat())
    assert info.value.args == ("can't build Image value from 'orvane.pyfigura.StringFormat'",)
    with pytest.raises(RuntimeError, match=r"^Proxy error\(System.ArgumentNullException\)"):
        f.Graphics.from_image(None)


def test_static_members_are_read_anew_each_time():
    first, second = f.Brushes.red, f.Brushes.red
    assert first is not second and first == second and f.Pens.red.width == 1.0
    with pytest.raises(TypeError):
        f.Brushes.red = None
    assert type(f.SystemFonts.get_font_by_name("DefaultFont")) is f.Font
    assert f.SystemFonts.get_font_by_name("NoSuchFont") is None
    # Upper-case static fields and lower-case static properties of other classes.
    assert type(imaging.Encoder.QUALITY) is imaging.Encoder and imaging.Encoder.QUALITY == imaging.Encoder.QUALITY
    assert type(f.FontFamily.generic_sans_serif) is f.FontFamily and str(imaging.ImageFormat.png) == "Png"


def test_package_tree_and_capsules_with_full_dotted_names():
    assert list(MODULES) == ["orvane.pyfigura"] + [f"orvane.pyfigura.{n}" for n in (
        "text", "drawing2d", "design", "printing", "imaging", "_wrpgen._interop")]
    # Nested classes live in their outer type only.
    assert f.FontConverter.FontNameConverter.__name__ == "FontNameConverter" and not hasattr(f, "FontNameConverter")
    assert issubclass(f.Bitmap, f.Image) and issubclass(f.SolidBrush, f.Brush)
    assert imaging.EncoderParameter.__module__ == "orvane.pyfigura.imaging"
    assert "_orvane_clr_host" not in INTEROP._ShlBufferView.__dict__  # interop types carry no mark
    assert INTEROP._ColBaseWrapper.__dict__["_additional_interfaces"] == {
        INTEROP._IterableWrapper, INTEROP._IColWrapper, INTEROP._IListWrapper}
    assert "orvane.pyfigura._C_APIT_FontConverter+FontNameConverter" in repr(
        getattr(f, "_C_APIT_FontConverter+FontNameConverter"))
    assert "orvane.pyfigura.drawing2d._C_APIT_Matrix" in repr(f.drawing2d._C_APIT_Matrix)
    # Classes have one capsule, value types two (below): 49 in all.
    assert hasattr(f, "_C_APIT_Bitmap") and not hasattr(f, "_C_APITV1_Bitmap")
    assert len([n for n in vars(f) if n.startswith("_C_APIT")]) == 49


@pytest.mark.parametrize("name", CLASSES)
def test_every_described_class_stands_in_its_module_with_its_mark(name):
    t, cls = python_type(name), CLASSES[name]
    assert t.__name__ == name.split(".")[-1]
    assert t.__dict__["_orvane_clr_host"] is (Ellipsis if cls["host_mark"] == "Ellipsis" else None)
    interfaces = {python_type(n) for n in cls["interfaces"]}
    if interfaces:
        assert t.__dict__["_additional_interfaces"] == t.__dict__["_implicit_interfaces"] == interfaces
    else:
        assert "_additional_interfaces" not in t.__dict__


# name: (struct layout of the record, an instance, its fields in record order)
VALUES = {
    "Point": ("<ii", f.Point(3, -4), (3, -4)), "PointF": ("<dd", f.PointF(0.1, -2.5), (0.1, -2.5)),
    "Size": ("<ii", f.Size(5, 6), (5, 6)), "SizeF": ("<dd", f.SizeF(1.25, 1e300), (1.25, 1e300)),
    "Rectangle": ("<iiii", f.Rectangle(1, 2, 3, 4), (1, 2, 3, 4)),
    "RectangleF": ("<dddd", f.RectangleF(0.5, 1.5, 2.5, 3.5), (0.5, 1.5, 2.5, 3.5)),
    "Color": ("<BBBBi", f.Color(9, 1, 2, 3), (9, 1, 2, 3, 0)),
}


@pytest.mark.parametrize("name", VALUES)
def test_value_capsules_used_by_a_module_that_links_no_value_code(name):
    layout, obj, record = VALUES[name]
    assert all(f"orvane.pyfigura.{p}{name}" in repr(getattr(f, p + name)) for p in ("_C_APIT_", "_C_APITV1_"))
    assert struct.unpack(layout, capsule_user.to_bytes(name, obj)) == record
    for reference in (False, True):  # the wrap function of either capsule
        made = capsule_user.from_bytes(name, struct.pack(layout, *record), reference)
        assert type(made) is type(obj) and made == obj and made is not obj
    with pytest.raises(TypeError, match=rf"^argument should be {name}, not 'str'$"):
        capsule_user.to_bytes(name, "x")


def test_reference_converter_points_into_the_object_and_the_colour_state_crosses_untouched():
    p = f.Point(1, 2)
    capsule_user.overwrite("Point", p, struct.pack("<ii", 70, 80))
    assert (p.x, p.y) == (70, 80)
    empty = capsule_user.from_bytes("Color", struct.pack("<BBBBi", 0, 0, 0, 0, 1))
    assert empty == f.Color.empty() and empty.is_empty
    assert struct.unpack("<BBBBi", capsule_user.to_bytes("Color", f.Color.empty())) == (0, 0, 0, 0, 1)
    assert capsule_user.from_bytes("Color", capsule_user.to_bytes("Color", f.Color.red)).name == "Red"
