"""Class attributes: the static member classes and the static properties and fields of other classes."""
import json
import os

import pytest

from conftest import REPO

import orvane.pyfigura as pyfigura

imaging = pyfigura.imaging


def class_attributes(name):
    with open(os.path.join(REPO, "api", "drawing.json"), encoding="utf-8") as f:
        classes = {c["name"]: c for c in json.load(f)["classes"]}
    return [a["name"] for a in classes[name]["class_attributes"]]


STATIC_CLASSES = [
    ("Brushes", 141, pyfigura.Brush),
    ("Pens", 141, pyfigura.Pen),
    ("SystemBrushes", 33, pyfigura.Brush),
    ("SystemPens", 33, pyfigura.Pen),
    ("SystemColors", 33, None),
    ("SystemFonts", 8, pyfigura.Font),
    ("SystemIcons", 10, pyfigura.Icon),
]


class TestStaticMemberClasses:
    @pytest.mark.parametrize("name, count, _", STATIC_CLASSES, ids=[c[0] for c in STATIC_CLASSES])
    def test_descriptors_in_table_order(self, name, count, _):
        cls = getattr(pyfigura, name)
        descriptors = [key for key, value in vars(cls).items() if type(value) is pyfigura._FieldDescrType]
        assert descriptors == class_attributes(name)
        assert len(descriptors) == count

    @pytest.mark.parametrize("name, _, result", [c for c in STATIC_CLASSES if c[2]],
                             ids=[c[0] for c in STATIC_CLASSES if c[2]])
    def test_every_attribute_wraps_its_class(self, name, _, result):
        cls = getattr(pyfigura, name)
        for attribute in class_attributes(name):
            assert type(getattr(cls, attribute)) is result, attribute

    @pytest.mark.parametrize("name", [c[0] for c in STATIC_CLASSES])
    def test_no_constructor(self, name):
        with pytest.raises(TypeError, match="^type has no available constructor$"):
            getattr(pyfigura, name)()

    def test_each_read_makes_a_new_wrapper_of_the_same_object(self):
        first, second = pyfigura.Brushes.red, pyfigura.Brushes.red
        assert first is not second
        assert first == second

    def test_first_and_last_colour_rows(self):
        assert isinstance(pyfigura.Brushes.transparent, pyfigura.Brush)
        assert isinstance(pyfigura.Pens.yellow_green, pyfigura.Pen)
        with pytest.raises(AttributeError):
            pyfigura.Brushes.rebecca_purple

    def test_pens_have_managed_defaults(self):
        assert pyfigura.Pens.red.width == 1.0
        assert pyfigura.Pens.red.pen_type == pyfigura.drawing2d.PenType.SOLID_COLOR

    def test_attributes_cannot_be_replaced(self):
        with pytest.raises(TypeError):
            pyfigura.Brushes.red = None

    def test_static_methods(self):
        assert type(pyfigura.SystemFonts.get_font_by_name("DefaultFont")) is pyfigura.Font
        assert pyfigura.SystemFonts.get_font_by_name("NoSuchFont") is None

    def test_system_font_is_a_usable_font(self):
        font = pyfigura.SystemFonts.default_font
        assert font.size > 0
        assert font.is_system_font


class TestClassAttributesOfOtherClasses:
    def test_upper_case_static_fields(self):
        quality = imaging.Encoder.QUALITY
        assert type(quality) is imaging.Encoder
        assert quality is not imaging.Encoder.QUALITY
        assert quality == imaging.Encoder.QUALITY

    def test_lower_case_static_properties(self):
        assert type(imaging.ImageFormat.png) is imaging.ImageFormat
        assert str(imaging.ImageFormat.png) == "Png"
        assert imaging.ImageFormat.png != imaging.ImageFormat.jpeg
        assert type(pyfigura.FontFamily.generic_sans_serif) is pyfigura.FontFamily
        assert type(pyfigura.StringFormat.generic_typographic) is pyfigura.StringFormat
        assert type(imaging.FrameDimension.page) is imaging.FrameDimension
