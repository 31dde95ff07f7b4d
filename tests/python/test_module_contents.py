"""What each module holds after import: classes where they belong, host marks, interface sets, capsules."""
import json
import os

import pytest

import orvane.pyfigura as fig
from conftest import REPO

MODULES = {
    "orvane.pyfigura": fig,
    "orvane.pyfigura.text": fig.text,
    "orvane.pyfigura.drawing2d": fig.drawing2d,
    "orvane.pyfigura.design": fig.design,
    "orvane.pyfigura.printing": fig.printing,
    "orvane.pyfigura.imaging": fig.imaging,
}
INTEROP = fig._wrpgen._interop


def described_classes():
    classes = []
    for name in ["drawing", "drawing2d", "imaging", "printing", "text", "design"]:
        with open(os.path.join(REPO, "api", name + ".json"), encoding="utf-8") as f:
            classes.extend(json.load(f)["classes"])
    return classes


CLASSES = described_classes()


def python_type(cls):
    holder = MODULES[cls["module"]]
    for part in cls["name"].split("."):
        holder = getattr(holder, part)
    return holder


@pytest.mark.parametrize("cls", CLASSES, ids=[c["name"] for c in CLASSES])
def test_every_described_class_stands_in_its_module_with_its_mark(cls):
    t = python_type(cls)
    assert t.__name__ == cls["name"].split(".")[-1]
    expected_mark = Ellipsis if cls["host_mark"] == "Ellipsis" else None
    assert "_orvane_clr_host" in t.__dict__ and t.__dict__["_orvane_clr_host"] is expected_mark
    interfaces = {getattr(INTEROP, n) if n.startswith("_") else python_type(
        next(c for c in CLASSES if c["name"] == n)) for n in cls["interfaces"]}
    if interfaces:
        assert t.__dict__["_additional_interfaces"] == interfaces
        assert t.__dict__["_implicit_interfaces"] == interfaces
    else:
        assert "_additional_interfaces" not in t.__dict__


def test_nested_classes_live_in_their_outer_type_only():
    assert fig.FontConverter.FontNameConverter.__name__ == "FontNameConverter"
    assert not hasattr(fig, "FontNameConverter")
    assert fig.printing.PrinterSettings.PaperSizeCollection.__name__ == "PaperSizeCollection"
    assert not hasattr(fig.printing, "PaperSizeCollection")


def test_capsules_carry_full_dotted_names_even_with_plus():
    capsule = getattr(fig, "_C_APIT_FontConverter+FontNameConverter")
    assert "orvane.pyfigura._C_APIT_FontConverter+FontNameConverter" in repr(capsule)
    assert "orvane.pyfigura.drawing2d._C_APIT_Matrix" in repr(fig.drawing2d._C_APIT_Matrix)


def test_class_tree_is_static_and_closed():
    assert issubclass(fig.Bitmap, fig.Image)
    assert issubclass(fig.SolidBrush, fig.Brush)
    with pytest.raises(TypeError):
        type("Derived", (fig.Bitmap,), {})


def test_interop_and_generic_modules_hold_the_protocol_types():
    names = ["_IDisposableWrapper", "_IterWrapper", "_IterableWrapper", "_IColWrapper", "_IListWrapper",
             "_RoColBaseWrapper", "_ColBaseWrapper", "_ArrayWrapper", "_ArrListWrapper", "_ShlBufferView",
             "_StreamWrapper"]
    for name in names:
        assert getattr(INTEROP, name).__name__ == name
    assert "_orvane_clr_host" not in INTEROP._ShlBufferView.__dict__
    assert INTEROP._ColBaseWrapper.__dict__["_additional_interfaces"] == {
        INTEROP._IterableWrapper, INTEROP._IColWrapper, INTEROP._IListWrapper}
