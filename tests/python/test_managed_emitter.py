"""Checks of the managed emitter on the whole description: the C# interop classes and their wire signatures."""
import copy
import os
import re
import sys
import tempfile
from pathlib import Path

import pytest

sys.path.insert(0, str(Path(__file__).resolve().parents[2] / "generator"))

import api_model  # noqa: E402
import managed_emitter  # noqa: E402

MODEL = api_model.load()
ENTRY = re.compile(r"\[UnmanagedCallersOnly\]\n(?:\s+\[MethodImpl\(MethodImplOptions\.AggressiveOptimization\)\]\n)?"
                   r"\s+public static (\S+) (\w+)\(([^)]*)\)")


def emit(model):
    """{relative path: text} of what the emitter writes into an empty folder."""
    with tempfile.TemporaryDirectory() as out:
        managed_emitter.emit_managed(model, out)
        return {os.path.relpath(os.path.join(root, name), out): Path(root, name).read_text(encoding="utf-8")
                for root, _, names in os.walk(out) for name in names}


@pytest.fixture(scope="module")
def files():
    return emit(MODEL)


def text_of(files, owner):
    """The file of a class, value or enum: named after the type, in its namespace's folder."""
    namespace, _, cls = (owner.get("entry_class") or owner["interop_class"]).rpartition(".")
    rel = os.path.join(*[p[len("WrpNs_"):] for p in namespace.split(".")], owner["name"].replace(".", "+") + ".cs")
    assert f"namespace {namespace}\n" in files[rel] and f"public static unsafe class {cls}\n" in files[rel]
    return files[rel]


def entry_body(text, name):
    start = text.index(" " + name + "(")
    end = text.find("[UnmanagedCallersOnly]", start)
    return text[start:end if end >= 0 else len(text)]


def test_every_type_has_one_file_with_its_entries_in_table_order(files):
    assert len(files) == len(MODEL.classes) + len(MODEL.values) + len(MODEL.enums)
    for owner in MODEL.classes + MODEL.values:
        text = text_of(files, owner)
        assert [n for _, n, _ in ENTRY.findall(text)] == owner["entries"], owner["name"]
        for name in owner["entries"]:
            body = entry_body(text, name)
            assert "PendingReleases.DrainIfAny();" in body and "ProxyErrors.Report(" in body, name
    accessors = [(n, r, p) for enum in MODEL.enums for r, n, p in ENTRY.findall(text_of(files, enum))]
    assert accessors == [(m["accessor"], "int", "") for enum in MODEL.enums for m in enum["members"]]
    assert len(accessors) == 951
    assert not [rel for rel, text in files.items()
                if any(b in text for b in ("System.Reflection", "typeof(", "GetMethod(", "Activator."))]
    assert emit(api_model.load()) == files, "generation is deterministic"


@pytest.mark.parametrize("owner, entry, ret, params, body", [
    ("Bitmap", "call_000_GetPixel", "void", "IntPtr __self, int x, int y, ColorValue* __result", None),
    ("Bitmap", "ctor_005_Bitmap", "IntPtr", "int width, int height, int format",
     "(global::System.Drawing.Imaging.PixelFormat)format"),
    ("Graphics", "get_PageUnit", "int", "IntPtr __self", None),
    ("Image", "call_000_GetBounds", "void",
     "IntPtr __self, int page_unit, int* page_unit__out, RectangleFValue* __result",
     "*page_unit__out = (int)page_unit__v;"),  # an enumeration passed by reference
    ("Bitmap", "ctor_001_Bitmap", "IntPtr", "StringArg* filename, byte use_icm", "use_icm != 0"),
    ("IDeviceContext", "btp_IsAssignableTo", "byte", "InstanceArg* arg", None),
    ("CharacterRange", "btp_IsAssignableTo", "byte", "IntPtr handle", None),
    ("Brushes", "getsa_AliceBlue", "IntPtr", "", None),
    ("Image", "get_Tag", "IntPtr", "IntPtr __self", "ObjectResults.From("),
    ("Image", "set_Tag", "void", "IntPtr __self, VariantArg* value", None),
    ("Point", "call_000_Offset", "void", "PointValue* __self, int dx, int dy",
     "*__self = PointValue.From(__self_value);"),
    ("CharacterRange", "set_First", "void", "IntPtr __self, int value",
     "Unsafe.Unbox<global::System.Drawing.CharacterRange>(InstanceHandles.Get(__self)).First = value;"),
])
def test_wire_signatures(files, owner, entry, ret, params, body):
    text = text_of(files, MODEL.class_by_name.get(owner) or MODEL.value_by_name[owner])
    assert {n: (r, p) for r, n, p in ENTRY.findall(text)}[entry] == (ret, params)
    assert body is None or body in entry_body(text, entry)


def test_rare_description_cases(tmp_path):
    model = copy.deepcopy(MODEL)
    bitmap = model.class_by_name["Bitmap"]
    trial = bitmap["methods"][-1]["trials"][0]
    trial.update(unmatched=True, reason="no such overload here")
    text = managed_emitter.ManagedEmitter(model).class_entries(bitmap)[trial["entry"]]
    assert 'throw new NotSupportedException("no such overload here");' in text
    bitmap["entries"].insert(0, "call_000_Missing")
    with pytest.raises(ValueError, match="call_000_Missing"):
        managed_emitter.emit_managed(model, str(tmp_path / "refused"))
    stale, foreign = tmp_path / "System" / "WrpCs_Gone_00000000.cs", tmp_path / "Handwritten.cs"
    stale.parent.mkdir()
    stale.write_text(managed_emitter.HEADER + "\n")
    foreign.write_text("// kept\n")
    managed_emitter.emit_managed(MODEL, str(tmp_path))  # removes what it wrote before, keeps other files
    assert not stale.exists() and foreign.exists()
