"""The 59 enumerations: IntEnum types in their modules, members and values read from the managed side."""
import enum
import json
import os
import shutil
import subprocess

import pytest

from conftest import BUILD, REPO, TEST_ASSETS

import orvane.pyfigura as pyfigura


def load_api(name):
    with open(os.path.join(REPO, "api", name), encoding="utf-8") as f:
        return json.load(f)


ENUMS = load_api("enums.json")["enums"]
MODULES = load_api("modules.json")
ORDERS = [("orvane.pyfigura", MODULES["root"]["enumerations"])] + [
    (sub["module"], sub["enumerations"]) for sub in MODULES["submodules"]]
SUBMODULES = {"orvane.pyfigura": pyfigura, "orvane.pyfigura.text": pyfigura.text,
              "orvane.pyfigura.drawing2d": pyfigura.drawing2d, "orvane.pyfigura.design": pyfigura.design,
              "orvane.pyfigura.printing": pyfigura.printing, "orvane.pyfigura.imaging": pyfigura.imaging}


def enum_type(description):
    return getattr(SUBMODULES[description["module"]], description["name"])


def enum_ids(description):
    return description["name"]


class TestModules:
    @pytest.mark.parametrize("module, names", ORDERS, ids=[m for m, _ in ORDERS])
    def test_each_module_holds_its_enumerations_in_order(self, module, names):
        found = [name for name, value in vars(SUBMODULES[module]).items()
                 if isinstance(value, type) and issubclass(value, enum.IntEnum)]
        assert found == names

    def test_sub_module_enumerations_stay_in_their_module(self):
        assert pyfigura.drawing2d.DashStyle.DASH_DOT == 3
        assert not hasattr(pyfigura, "DashStyle")
        assert not hasattr(pyfigura.imaging, "GraphicsUnit")

    def test_type_is_made_by_the_functional_call_under_its_simple_name(self):
        assert repr(pyfigura.ContentAlignment) == "<enum 'ContentAlignment'>"
        assert pyfigura.imaging.PixelFormat.__qualname__ == "PixelFormat"
        assert repr(pyfigura.GraphicsUnit.PIXEL) == "<GraphicsUnit.PIXEL: 2>"


class TestMembers:
    @pytest.mark.parametrize("description", ENUMS, ids=enum_ids)
    def test_members_in_description_order_with_their_count(self, description):
        members = enum_type(description).__members__
        assert list(members) == [m["name"] for m in description["members"]]
        assert len(members) == description["member_count"]

    def test_first_name_of_a_value_is_canonical_and_later_ones_are_aliases(self):
        hatch = pyfigura.drawing2d.HatchStyle
        assert hatch.MIN is hatch.HORIZONTAL
        assert hatch(0).name == "HORIZONTAL"
        assert hatch.MAX is hatch.LARGE_GRID
        assert pyfigura.imaging.PixelFormat(0).name == "UNDEFINED"

    @pytest.mark.parametrize("owner, name, value", [
        (pyfigura, "GraphicsUnit.PIXEL", 2),
        (pyfigura, "ContentAlignment.BOTTOM_RIGHT", 1024),
        (pyfigura, "RotateFlipType.ROTATE_90_FLIP_NONE", 1),
        (pyfigura, "CopyPixelOperation.SOURCE_COPY", 0xCC0020),
        (pyfigura, "StringFormatFlags.NO_WRAP", 4096),
        (pyfigura, "KnownColor.MENU_HIGHLIGHT", 174),
        (pyfigura.imaging, "PixelFormat.FORMAT_32BPP_ARGB", 2498570),
        (pyfigura.imaging, "EmfPlusRecordType.MAX", 16438),
        (pyfigura.printing, "PaperKind.A4", 9),
        (pyfigura.printing, "PaperKind.PRC_32K_BIG_ROTATED", 108),
    ])
    def test_known_values(self, owner, name, value):
        type_name, member = name.split(".")
        assert getattr(owner, type_name)[member] == value

    def test_every_value_equals_the_managed_member(self, managed_values):
        pairs = [(e["managed_name"], m["accessor"][len("getsa_"):]) for e in ENUMS for m in e["members"]]
        expected = managed_values(pairs)
        assert "missing" not in expected
        actual = [enum_type(e)[m["name"]].value for e in ENUMS for m in e["members"]]
        assert actual == [int(v) for v in expected]


@pytest.fixture(scope="module")
def managed_values():
    """Values of managed enum members by reflection over System.Drawing, as printed texts."""
    dotnet = shutil.which("dotnet")
    if dotnet is None:
        pytest.skip("dotnet is not installed")
    output = os.path.join(BUILD, "test-assets", "enum-values")
    subprocess.run([dotnet, "build", os.path.join(REPO, "tests", "support", "enum-values", "EnumValues.csproj"),
                    "-c", "Release", "-o", output, "--nologo", "-v", "quiet"], check=True, capture_output=True)

    def read(pairs):
        lines = "".join(f"{type_name} {member}\n" for type_name, member in pairs)
        done = subprocess.run([dotnet, os.path.join(output, "EnumValues.dll")], input=lines, text=True,
                              capture_output=True, check=True)
        return done.stdout.split()
    return read


class TestAsArguments:
    def test_flags_combine_into_a_plain_int_accepted_as_the_enum(self):
        style = pyfigura.FontStyle.BOLD | pyfigura.FontStyle.ITALIC
        assert type(style) is int and style == 3
        with pyfigura.Font(pyfigura.FontFamily.generic_sans_serif, 12.0, style) as font:
            assert font.style == 3
            assert font.bold and font.italic and not font.underline

    def test_results_are_plain_ints_equal_to_members(self):
        with pyfigura.Bitmap(4, 4) as bitmap, pyfigura.Graphics.from_image(bitmap) as graphics:
            graphics.page_unit = pyfigura.GraphicsUnit.POINT
            unit = graphics.page_unit
            assert type(unit) is int
            assert unit == pyfigura.GraphicsUnit.POINT
            assert unit is not pyfigura.GraphicsUnit.POINT

    def test_a_member_of_another_enumeration_passes_as_its_number(self):
        with pyfigura.Bitmap(4, 4) as bitmap, pyfigura.Graphics.from_image(bitmap) as graphics:
            graphics.page_unit = pyfigura.imaging.MetafileFrameUnit.INCH
            assert graphics.page_unit == pyfigura.GraphicsUnit.INCH


class TestMissingAccessor:
    def test_import_fails_naming_the_enumeration(self, fresh_python):
        broken = os.path.join(TEST_ASSETS, "no-enum-accessor")
        run = fresh_python(
            "try:\n"
            "    import orvane.pyfigura\n"
            "except ImportError as e:\n"
            "    while e is not None:\n"
            "        print(type(e).__name__, e, e.__cause__ is e.__context__)\n"
            "        e = e.__cause__\n",
            env={"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": broken})
        assert run.returncode == 0, run
        lines = run.stdout.decode().splitlines()
        assert lines[:3] == [
            "ImportError One or more errors occurred while loading the module 'orvane.pyfigura' (-1006) True",
            "ImportError Type initialization internal error (-1013) <orvane.pyfigura.drawing2d.DashStyle> True",
            "ImportError enum type 'orvane.pyfigura.drawing2d.DashStyle' is not initialized True",
        ]
        assert lines[3].startswith(
            "TypeError While initializing the host for the 'WrpNs_System.WrpNs_Drawing.WrpNs_Drawing2D."
            "WrpCs_DashStyl_31847E9A (Assembly=WrpInterop.Orvane.PyFigura)' type, an error occurred - "
            "Method 'getsa_DashDot' not found (error=")
        assert len(lines) == 4
