"""The value capsules, used by another native module that links none of the value code."""
import struct

import pytest

import capsule_user
import orvane.pyfigura as f

# name: (struct layout of the record, an instance, its fields in record order)
SAMPLES = {
    "Point": ("<ii", f.Point(3, -4), (3, -4)),
    "PointF": ("<dd", f.PointF(0.1, -2.5), (0.1, -2.5)),
    "Size": ("<ii", f.Size(5, 6), (5, 6)),
    "SizeF": ("<dd", f.SizeF(1.25, 1e300), (1.25, 1e300)),
    "Rectangle": ("<iiii", f.Rectangle(1, 2, 3, 4), (1, 2, 3, 4)),
    "RectangleF": ("<dddd", f.RectangleF(0.5, 1.5, 2.5, 3.5), (0.5, 1.5, 2.5, 3.5)),
    "Color": ("<BBBBi", f.Color(9, 1, 2, 3), (9, 1, 2, 3, 0)),
}
FIELDS = {"Point": "x y", "PointF": "x y", "Size": "width height", "SizeF": "width height",
          "Rectangle": "x y width height", "RectangleF": "x y width height", "Color": "a r g b"}


def field_values(obj, name):
    return tuple(getattr(obj, n) for n in FIELDS[name].split())


@pytest.mark.parametrize("name", SAMPLES)
class TestEveryValueType:
    def test_value_converter_copies_the_record_out(self, name):
        layout, obj, record = SAMPLES[name]
        assert struct.unpack(layout, capsule_user.to_bytes(name, obj)) == record

    @pytest.mark.parametrize("reference", [False, True])
    def test_wrap_function_of_either_capsule_makes_the_type(self, name, reference):
        layout, obj, record = SAMPLES[name]
        made = capsule_user.from_bytes(name, struct.pack(layout, *record), reference)
        assert type(made) is type(obj)
        assert made == obj and made is not obj

    def test_converter_refuses_another_type(self, name):
        with pytest.raises(TypeError, match=rf"^argument should be {name}, not 'str'$"):
            capsule_user.to_bytes(name, "x")

    def test_capsules_are_module_attributes_with_full_names(self, name):
        assert f"orvane.pyfigura._C_APIT_{name}" in repr(getattr(f, f"_C_APIT_{name}"))
        assert f"orvane.pyfigura._C_APITV1_{name}" in repr(getattr(f, f"_C_APITV1_{name}"))


def test_reference_converter_points_into_the_object():
    p = f.Point(1, 2)
    capsule_user.overwrite("Point", p, struct.pack("<ii", 70, 80))
    assert field_values(p, "Point") == (70, 80)


def test_colour_state_word_crosses_untouched():
    empty = capsule_user.from_bytes("Color", struct.pack("<BBBBi", 0, 0, 0, 0, 1))
    assert empty == f.Color.empty() and empty.is_empty
    assert struct.unpack("<BBBBi", capsule_user.to_bytes("Color", f.Color.empty())) == (0, 0, 0, 0, 1)
    red = capsule_user.from_bytes("Color", capsule_user.to_bytes("Color", f.Color.red))
    assert red.name == "Red"


def test_classes_have_one_capsule_and_value_types_two():
    assert hasattr(f, "_C_APIT_Bitmap") and not hasattr(f, "_C_APITV1_Bitmap")
    assert len([n for n in vars(f) if n.startswith("_C_APIT")]) == 49
