"""Results of managed type object come back as their registered wrapper type, found once per managed type."""
import os

import pytest

import orvane.pyfigura as f
from orvane.pyfigura import drawing2d, imaging
from conftest import TEST_ASSETS

PROBE_ENV = {"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": os.path.join(TEST_ASSETS, "assemblies")}


class TestObjectResults:
    def test_clone_of_a_bitmap_is_a_bitmap(self):
        b = f.Bitmap(3, 2)
        copy = b.clone()
        assert type(copy) is f.Bitmap
        assert (copy.width, copy.height) == (3, 2)
        assert copy != b

    def test_clone_of_an_image_wrapper_is_the_most_derived_type(self, tmp_path):
        path = str(tmp_path / "i.png")
        f.Bitmap(4, 1).save(path)
        image = f.Image.from_file(path)
        assert type(image) is f.Image  # declared result type: no lookup
        assert type(image.clone()) is f.Bitmap

    @pytest.mark.parametrize("make, cls", [
        (lambda: f.Bitmap(2, 3), f.Bitmap),
        (lambda: f.StringFormat(), f.StringFormat),
        (lambda: f.Font("DejaVu Sans", 8), f.Font),
        (lambda: f.Brushes.red, f.SolidBrush),
        (lambda: drawing2d.GraphicsPath(), drawing2d.GraphicsPath),
        (lambda: imaging.Encoder.QUALITY, imaging.Encoder)])
    def test_tag_gives_back_the_registered_type(self, make, cls):
        holder = f.Bitmap(1, 1)
        holder.tag = make()
        assert type(holder.tag) is cls

    def test_empty_wrapper_is_not_an_object_value(self):
        holder = f.Bitmap(1, 1)
        with pytest.raises(TypeError) as info:
            holder.tag = f.SolidBrush.__new__(f.SolidBrush)
        assert info.value.args == ("unknown variant type",)
        holder.tag = None
        assert holder.tag is None

    def test_tag_holds_the_same_managed_object(self):
        holder = f.Bitmap(1, 1)
        inner = f.Bitmap(5, 6)
        holder.tag = inner
        back = holder.tag
        assert back is not inner
        assert back == inner
        inner.set_resolution(33, 44)
        assert back.horizontal_resolution == 33.0

    def test_nested_type_result(self):
        # A nested managed type is registered under its name with '+'.
        printers = f.printing.PrinterSettings.installed_printers
        holder = f.Bitmap(1, 1)
        holder.tag = printers
        assert type(holder.tag) is f.printing.PrinterSettings.StringCollection
        holder.tag = f.printing.PrinterSettings()
        assert type(holder.tag) is f.printing.PrinterSettings


LOOKUPS = """
import orvane.pyfigura as f, host_probe
count = host_probe.type_name_lookups
holder = f.Bitmap(2, 2)
base = count()
holder.tag = f.Bitmap(3, 3)
tags = [holder.tag for _ in range(50)]
print("bitmap-tags", count() - base)
clones = [holder.clone() for _ in range(20)]
print("bitmap-clones", count() - base)
holder.tag = f.StringFormat()
formats = [holder.tag for _ in range(30)]
print("string-formats", count() - base)
holder.tag = f.Bitmap(1, 1)
print("bitmap-again", type(holder.tag).__name__, count() - base)
"""


def test_one_name_lookup_per_managed_type(fresh_python):
    run = fresh_python(LOOKUPS, env=PROBE_ENV)
    assert run.returncode == 0, run
    lines = [line.split() for line in run.stdout.decode().splitlines()]
    assert lines == [["bitmap-tags", "1"], ["bitmap-clones", "1"], ["string-formats", "2"],
                     ["bitmap-again", "Bitmap", "2"]]
