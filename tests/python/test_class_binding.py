"""Generated classes on the real runtime: calls, class converters, and what each module holds after import."""
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


def test_constructors_methods_and_properties(tmp_path):
    f.Bitmap(5, 3).save(png := str(tmp_path / "five-by-three.png"))
    assert f.Bitmap(png).size == f.Size(5, 3)
    assert type(f.Bitmap(png)) is f.Bitmap and f.Bitmap(png).size == f.Bitmap(f.Image.from_file(png)).size
    assert f.Bitmap(10.5, 20.5).size == f.Size(10, 20)  # floats are truncated to the integer overload
    with pytest.raises(RuntimeError) as info:
        f.Bitmap(None)  # None is a null file name for the first overload
    assert str(info.value) == "Proxy error(System.ArgumentNullException): Value cannot be null. (Parameter 'path')"
    font = f.Font("DejaVu Sans", 12.0, f.FontStyle.BOLD, f.GraphicsUnit.POINT, 200)
    assert (font.gdi_char_set, f.Font("DejaVu Sans", 12).gdi_char_set) == (200, 1)  # a Byte result is unsigned
    assert f.SystemFonts.get_font_by_name("NoSuchFont") is None and type(imaging.Encoder.QUALITY) is imaging.Encoder
    b = f.Bitmap(6, 2)
    b.set_resolution(y_dpi=72, x_dpi=300.5)
    assert (b.horizontal_resolution, b.vertical_resolution, f.Image.width.__get__(b)) == (300.5, 72.0, 6)
    sf = f.StringFormat()
    sf.format_flags = 0x1000
    with pytest.raises(TypeError):
        del sf.format_flags
    assert sf.format_flags == 0x1000


def capsule_converter(name):
    """The class's ArgConverter, as a sister module reaches it through the _C_APIT_ capsule: object -> handle."""
    get_pointer = ctypes.pythonapi.PyCapsule_GetPointer
    get_pointer.restype, get_pointer.argtypes = ctypes.c_void_p, [ctypes.py_object, ctypes.c_char_p]
    record = get_pointer(getattr(f, f"_C_APIT_{name}"), f"orvane.pyfigura._C_APIT_{name}".encode())
    convert = ctypes.PYFUNCTYPE(ctypes.c_int, ctypes.py_object, ctypes.POINTER(ctypes.c_uint64))(
        ctypes.c_void_p.from_address(record).value)

    def handle_for(obj):
        out = ctypes.c_uint64(0xDEAD)
        assert convert(obj, out) == 1
        return out.value
    return handle_for


def test_class_converter_takes_none_subtypes_and_what_the_managed_side_calls_assignable(tmp_path):
    f.Bitmap(5, 3).save(png := str(tmp_path / "small.png"))
    as_bitmap = capsule_converter("Bitmap")
    assert as_bitmap(None) == 0
    image = f.Image.from_file(png)  # an Image wrapper around a managed Bitmap, after btp_IsAssignableTo
    assert as_bitmap(image) != 0 and as_bitmap(image) == capsule_converter("Image")(image)
    assert capsule_converter("SolidBrush")(red := f.Brushes.red) == capsule_converter("Brush")(red)
    for obj, name in [(f.StringFormat(), "orvane.pyfigura.StringFormat"), (3, "int"),
                      (f.Image.__new__(f.Image), "orvane.pyfigura.Image")]:  # another class, no wrapper, an empty base
        with pytest.raises(TypeError) as info:
            as_bitmap(obj)
        assert info.value.args == (f"can't build Bitmap value from '{name}'",)


@pytest.mark.parametrize("name", CLASSES)
def test_every_described_class_stands_in_its_module_with_its_base_mark_interfaces_and_capsule(name):
    t, cls = python_type(name), CLASSES[name]
    assert f"{t.__module__}.{t.__name__}" == cls["qualified_name"]  # a nested class is reached through its outer one
    assert t.__base__ is (python_type(cls["base"]) if cls["base"] else object)
    assert t.__dict__["_orvane_clr_host"] is (Ellipsis if cls["host_mark"] == "Ellipsis" else None)
    interfaces = {python_type(n) for n in cls["interfaces"]}
    if interfaces:
        assert t.__dict__["_additional_interfaces"] == t.__dict__["_implicit_interfaces"] == interfaces
    else:
        assert "_additional_interfaces" not in t.__dict__
    assert f"{cls['module']}.{cls['capsule']}" in repr(getattr(MODULES[cls["module"]], cls["capsule"]))


# name: (struct layout of the record, an instance, its fields in record order)
VALUES = {
    "Point": ("<ii", f.Point(3, -4), (3, -4)), "PointF": ("<dd", f.PointF(0.1, -2.5), (0.1, -2.5)),
    "Size": ("<ii", f.Size(5, 6), (5, 6)), "SizeF": ("<dd", f.SizeF(1.25, 1e300), (1.25, 1e300)),
    "Rectangle": ("<iiii", f.Rectangle(1, 2, 3, 4), (1, 2, 3, 4)),
    "RectangleF": ("<dddd", f.RectangleF(0.5, 1.5, 2.5, 3.5), (0.5, 1.5, 2.5, 3.5)),
    "Color": ("<BBBBi", f.Color(9, 1, 2, 3), (9, 1, 2, 3, 0)),
}


def test_modules_hold_no_more_than_described():
    assert not hasattr(f, "FontNameConverter") and "_orvane_clr_host" not in INTEROP._ShlBufferView.__dict__
    assert INTEROP._ColBaseWrapper.__dict__["_additional_interfaces"] == {
        INTEROP._IterableWrapper, INTEROP._IColWrapper, INTEROP._IListWrapper}
    assert len([n for n in vars(f) if n.startswith("_C_APIT")]) == 2 * len(VALUES) + sum(  # classes have one capsule
        cls["module"] == f.__name__ for cls in CLASSES.values())


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
