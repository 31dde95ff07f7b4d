"""The 59 enumerations: IntEnum types in their modules, members and values read from the managed side."""
import enum
import functools
import json
import os
import subprocess

import pytest

from conftest import BUILD, REPO, TEST_ASSETS

import orvane.pyfigura as pyfigura

ENUMS = json.load(open(os.path.join(REPO, "api", "enums.json"), encoding="utf-8"))["enums"]


def enum_type(description):  # orvane.pyfigura.imaging.PixelFormat is pyfigura.imaging.PixelFormat
    return functools.reduce(getattr, description["module"].split(".")[2:] + [description["name"]], pyfigura)


@pytest.mark.parametrize("description", ENUMS, ids=lambda d: d["name"])
def test_members_in_description_order(description):
    assert issubclass(enum_type(description), enum.IntEnum)
    assert list(enum_type(description).__members__) == [m["name"] for m in description["members"]]


def test_types_aliases_placement_and_plain_int_results():
    assert not hasattr(pyfigura, "DashStyle") and not hasattr(pyfigura.imaging, "GraphicsUnit")
    hatch = pyfigura.drawing2d.HatchStyle  # the first name of a value is canonical, later ones are aliases
    assert hatch.MIN is hatch.HORIZONTAL and hatch(0).name == "HORIZONTAL" and hatch.MAX is hatch.LARGE_GRID
    with pyfigura.Bitmap(4, 4) as bitmap, pyfigura.Graphics.from_image(bitmap) as graphics:
        graphics.page_unit = pyfigura.imaging.MetafileFrameUnit.INCH  # members pass as their numbers
        assert type(graphics.page_unit) is int and graphics.page_unit == pyfigura.GraphicsUnit.INCH


def test_every_value_equals_the_managed_member():
    output = os.path.join(BUILD, "test-assets", "enum-values")
    subprocess.run(["dotnet", "build", os.path.join(REPO, "tests", "support", "enum-values", "EnumValues.csproj"),
                    "-c", "Release", "-o", output, "--nologo", "-v", "quiet"], check=True, capture_output=True)
    lines = "".join(f"{e['managed_name']} {m['accessor'][len('getsa_'):]}\n" for e in ENUMS for m in e["members"])
    expected = subprocess.run(["dotnet", os.path.join(output, "EnumValues.dll")], input=lines, text=True,
                              capture_output=True, check=True).stdout.split()
    assert [enum_type(e)[m["name"]].value for e in ENUMS for m in e["members"]] == [int(v) for v in expected]


def test_a_missing_accessor_fails_the_import_naming_the_enumeration(fresh_python):
    run = fresh_python("try:\n    import orvane.pyfigura\nexcept ImportError as e:\n    while e is not None:\n"
                       "        print(type(e).__name__, e, e.__cause__ is e.__context__)\n        e = e.__cause__\n",
                       env={"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": os.path.join(TEST_ASSETS, "no-enum-accessor")})
    assert run.returncode == 0, run
    lines = run.stdout.decode().splitlines()
    assert lines[1:3] == [
        "ImportError Type initialization internal error (-1013) <orvane.pyfigura.drawing2d.DashStyle> True",
        "ImportError enum type 'orvane.pyfigura.drawing2d.DashStyle' is not initialized True"]
    assert len(lines) == 4 and "WrpCs_DashStyl_31847E9A" in lines[3] and "Method 'getsa_DashDot' not found" in lines[3]
