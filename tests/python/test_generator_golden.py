"""The generator: small descriptions in, golden text out (ORVANE_UPDATE_GOLDEN=1 rewrites it for review), and
the managed emitter on the whole description: one C# file per type, its entries and their wire signatures."""
import copy
import os
import re
import sys
import tempfile
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "generator"))

import api_model  # noqa: E402
import callback_emitter  # noqa: E402
import enum_emitter  # noqa: E402
import generic_emitter  # noqa: E402
import managed_emitter  # noqa: E402
import native_emitter  # noqa: E402
import native_forms  # noqa: E402
import record_emitter  # noqa: E402
import value_emitter  # noqa: E402

MODEL = api_model.load()


def value(name, kind, clr, **more):
    return {"name": name, "type": kind, "kind": "value", "clr": "System." + clr, **more}


SCALE, RECTANGLE = value("scale", "Single", "Single"), "System.Drawing.Rectangle"
# A small class: a constructor, an overloaded method (trials told apart by argument kind, calls that give up
# the interpreter lock always or for a large area only, a path parameter), a settable and a read-only attribute.
WIDGET = {
    "name": "Widget", "module": "orvane.pyfigura", "qualified_name": "orvane.pyfigura.Widget",
    "managed_name": "System.Drawing.Widget", "entry_class": "WrpNs_System.WrpNs_Drawing.WrpCs_Widget_0000CAFE",
    "shape": "class", "managed_kind": "sealed class", "context_manager": True,  # no base, interfaces or collection
    "constructors": [{"entry": "ctor_000_Widget", "managed_name": ".ctor",
                      "releases_gil": {"area_at_least": 1024}, "image_size": ["width", "height"],
                      "params": [value("width", "Int32", "Int32"), value("height", "Int32", "Int32")]}],
    "methods": [{"name": "paint", "form": "instance", "trials": [
        {"entry": "call_000_Paint", "managed_name": "Paint", "releases_gil": True, "result": "None",
         "result_clr": "System.Void", "params": [value("file_name", "String", "String", path=True), SCALE]},
        {"entry": "call_001_Paint", "managed_name": "Paint", "result": "Rectangle", "result_clr": RECTANGLE,
         "params": [value("area", "Rectangle", "Drawing.Rectangle"), SCALE]},
        {"entry": "call_002_Paint", "managed_name": "Paint", "result": "None", "result_clr": "System.Void",
         "releases_gil": {"area_at_least": 16, "of": ["width", "height"]},
         "params": [SCALE, value("width", "Single", "Single"), value("height", "Single", "Single")]}]}],
    "attributes": [
        {"name": "width", "type": "int", "getter": "get_Width", "setter": "set_Width", "clr": "System.Int32"},
        {"name": "tag", "type": "object", "getter": "get_Tag", "setter": None, "clr": "System.String"}],
    "class_attributes": [],
    "entries": ["ctor_000_Widget", "call_000_Paint", "call_001_Paint", "call_002_Paint", "get_Width", "set_Width",
                "get_Tag", "btp_IsAssignableTo"],
}
SHADE = {"name": "Shade", "qualified_name": "orvane.pyfigura.Shade", "member_count": 2, "module": "orvane.pyfigura",
         "managed_name": "System.Drawing.Shade", "interop_class": "WrpNs_System.WrpNs_Drawing.WrpCs_Shade_0000BEEF",
         "members": [{"name": "LIGHT", "accessor": "getsa_Light"}, {"name": "DARK", "accessor": "getsa_Dark"}]}
SMALL_TABLES = type("Tables", (), {
    "callbacks": {"native_headers": ["marshal/scalar_marshal.h"],
                  "static_groups": [{"name": "values_out", "rows": [{"name": "from_bool", "native": "out_bool"}]},
                                    {"name": "lists", "terminated": True,
                                     "rows": [{"name": "get_item", "native": "list_get"}]}],
                  "generic_kinds": [{"element": "byte[]", "native": "bytes"},
                                    {"element": "Int32", "converter": "convert_int32"}]},
    "records": {"records": [{"name": "MixedRecord", "doc": "Fields that need padding between them.",
                             "fields": [{"name": "flag", "type": "u8"}, {"name": "count", "type": "i32"},
                                        {"name": "padding", "type": "i32", "padding": True},
                                        {"name": "value", "type": "handle", "note": "a handle"}]}]},
})()


def outputs():
    model = copy.deepcopy(MODEL)
    model.classes.append(WIDGET)
    model.class_by_name["Widget"] = WIDGET
    forms, managed = native_forms.Forms(model), managed_emitter.ManagedEmitter(model)
    generic = model.modules["wrpgen"]["generic"]
    pointf = next(i for i in generic["instantiations"] if i["element"] == "PointF")
    tables = {os.path.basename(path): text for emitter in (callback_emitter, record_emitter)
              for path, text in emitter.emit(SMALL_TABLES, "").items()}
    return {
        "widget.cpp": native_emitter.ClassEmitter(model, forms, WIDGET).emit(),
        "widget.cs": managed.class_file(WIDGET, managed.class_entries(WIDGET), WIDGET["managed_name"]),
        "size_value.cpp": value_emitter.ValueEmitter(model, forms, model.value_by_name["Size"]).emit(),
        "shade_enum.cpp": enum_emitter.emit_enum(SHADE),
        "pointf_array.cpp": generic_emitter.native_instantiation(model, generic, pointf),
        "callback_rows.h": tables["generated_callback_rows.h"],
        "callback_tables.cpp": tables["callback_tables.cpp"] + tables["generic_callbacks.cpp"],
        "CallbackRows.cs": tables["CallbackRows.cs"],
        "wire_records.h": tables["generated_wire_records.h"],
        "WireRecordFields.cs": tables["WireRecordFields.cs"],
    }


OUTPUTS = outputs()


@pytest.mark.parametrize("name", sorted(OUTPUTS))
def test_emitter_output_is_the_golden_text(name):
    path = ROOT / "tests" / "golden" / (name + ".golden")
    if os.environ.get("ORVANE_UPDATE_GOLDEN") == "1":
        path.write_text(OUTPUTS[name], encoding="utf-8")
    assert path.read_text(encoding="utf-8") == OUTPUTS[name], f"{name}: the emitter's text changed (see the module doc)"


ENTRY = re.compile(r"\[UnmanagedCallersOnly\]\n(?:\s+\[MethodImpl\(MethodImplOptions\.AggressiveOptimization\)\]\n)?"
                   r"\s+public static (\S+) (\w+)\(([^)]*)\)")


def emit(model):
    """{relative path: text} of what the emitter writes into an empty folder."""
    with tempfile.TemporaryDirectory() as out:
        managed_emitter.emit_managed(model, out)
        return {os.path.relpath(os.path.join(root, name), out): Path(root, name).read_text(encoding="utf-8")
                for root, _, names in os.walk(out) for name in names}


FILES = emit(MODEL)


def text_of(owner):
    """The file of a class, value or enum: named after the type, in its namespace's folder."""
    namespace, _, cls = (owner.get("entry_class") or owner["interop_class"]).rpartition(".")
    rel = os.path.join(*[p[len("WrpNs_"):] for p in namespace.split(".")], owner["name"].replace(".", "+") + ".cs")
    assert f"namespace {namespace}\n" in FILES[rel] and f"public static unsafe class {cls}\n" in FILES[rel]
    return FILES[rel]


def entry_body(text, name):
    start = text.index(" " + name + "(")
    end = text.find("[UnmanagedCallersOnly]", start)
    return text[start:end if end >= 0 else len(text)]


def test_every_type_has_one_file_with_its_entries_in_table_order():
    assert len(FILES) == len(MODEL.classes) + len(MODEL.values) + len(MODEL.enums)
    for owner in MODEL.classes + MODEL.values:
        text = text_of(owner)
        assert [n for _, n, _ in ENTRY.findall(text)] == owner["entries"], owner["name"]
        for name in owner["entries"]:
            body = entry_body(text, name)
            assert "PendingReleases.DrainIfAny();" in body and "ProxyErrors.Report(" in body, name
    accessors = [(n, r, p) for enum in MODEL.enums for r, n, p in ENTRY.findall(text_of(enum))]
    assert accessors == [(m["accessor"], "int", "") for enum in MODEL.enums for m in enum["members"]]
    assert not [rel for rel, text in FILES.items()
                if any(b in text for b in ("System.Reflection", "typeof(", "GetMethod(", "Activator."))]
    assert emit(api_model.load()) == FILES, "generation is deterministic"


# Wire forms that neither the golden Widget nor a call from Python shows.
@pytest.mark.parametrize("owner, entry, ret, params, body", [
    ("IDeviceContext", "btp_IsAssignableTo", "byte", "InstanceArg* arg", None),  # an interface
    ("Point", "call_000_Offset", "void", "PointValue* __self, int dx, int dy",  # the changed value is written back
     "*__self = PointValue.From(__self_value);"),
    ("CharacterRange", "set_First", "void", "IntPtr __self, int value",  # a boxed structure changed in place
     "Unsafe.Unbox<global::System.Drawing.CharacterRange>(InstanceHandles.Get(__self)).First = value;"),
])
def test_wire_signatures(owner, entry, ret, params, body):
    text = text_of(MODEL.class_by_name.get(owner) or MODEL.value_by_name[owner])
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
