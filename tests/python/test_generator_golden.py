"""The generator is tested like the code it writes: small descriptions in, exact text out. Golden files hold what
each emitter must write; after a deliberate change ORVANE_UPDATE_GOLDEN=1 rewrites them, and the diff is reviewed."""
import copy
import os
import sys
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


def value(name, kind, clr, **more):
    return {"name": name, "type": kind, "kind": "value", "clr": "System." + clr, **more}


SCALE, RECTANGLE = value("scale", "Single", "Single"), "System.Drawing.Rectangle"
# One small class with what the native emitter knows how to write: a constructor, an overloaded method
# whose trials fall apart by argument kind, a call that gives up the interpreter lock, a path parameter,
# a settable and a read-only attribute.
WIDGET = {
    "name": "Widget", "module": "orvane.pyfigura", "qualified_name": "orvane.pyfigura.Widget",
    "managed_name": "System.Drawing.Widget", "entry_class": "WrpNs_System.WrpNs_Drawing.WrpCs_Widget_0000CAFE",
    "shape": "class", "managed_kind": "sealed class", "context_manager": True,  # no base, interfaces or collection
    "constructors": [{"entry": "ctor_000_Widget", "managed_name": ".ctor",
                      "params": [value("width", "Int32", "Int32")]}],
    "methods": [{"name": "paint", "form": "instance", "trials": [
        {"entry": "call_000_Paint", "managed_name": "Paint", "releases_gil": True, "result": "None",
         "result_clr": "System.Void", "params": [value("file_name", "String", "String", path=True), SCALE]},
        {"entry": "call_001_Paint", "managed_name": "Paint", "result": "Rectangle", "result_clr": RECTANGLE,
         "params": [value("area", "Rectangle", "Drawing.Rectangle"), SCALE]}]}],
    "attributes": [
        {"name": "width", "type": "int", "getter": "get_Width", "setter": "set_Width", "clr": "System.Int32"},
        {"name": "tag", "type": "object", "getter": "get_Tag", "setter": None, "clr": "System.String"}],
    "class_attributes": [],
    "entries": ["ctor_000_Widget", "call_000_Paint", "call_001_Paint", "get_Width", "set_Width", "get_Tag",
                "btp_IsAssignableTo"],
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
    model = copy.deepcopy(api_model.load())
    model.classes.append(WIDGET)
    model.class_by_name["Widget"] = WIDGET
    forms, managed = native_forms.Forms(model), managed_emitter.ManagedEmitter(model)
    generic = model.modules["wrpgen"]["generic"]
    pointf = next(i for i in generic["instantiations"] if i["element"] == "PointF")
    callbacks = {os.path.basename(k): v for k, v in callback_emitter.emit(SMALL_TABLES, "").items()}
    records = {os.path.basename(k): v for k, v in record_emitter.emit(SMALL_TABLES, "").items()}
    return {
        "widget.cpp": native_emitter.ClassEmitter(model, forms, WIDGET).emit(),
        "widget.cs": managed.class_file(WIDGET, managed.class_entries(WIDGET), WIDGET["managed_name"]),
        "size_value.cpp": value_emitter.ValueEmitter(model, forms, model.value_by_name["Size"]).emit(),
        "shade_enum.cpp": enum_emitter.emit_enum(SHADE),
        "pointf_array.cpp": generic_emitter.native_instantiation(model, generic, pointf),
        "callback_rows.h": callbacks["generated_callback_rows.h"],
        "callback_tables.cpp": callbacks["callback_tables.cpp"] + callbacks["generic_callbacks.cpp"],
        "CallbackRows.cs": callbacks["CallbackRows.cs"],
        "wire_records.h": records["generated_wire_records.h"],
        "WireRecordFields.cs": records["WireRecordFields.cs"],
    }


OUTPUTS = outputs()


@pytest.mark.parametrize("name", sorted(OUTPUTS))
def test_emitter_output_is_the_golden_text(name):
    path = ROOT / "tests" / "golden" / (name + ".golden")
    if os.environ.get("ORVANE_UPDATE_GOLDEN") == "1":
        path.write_text(OUTPUTS[name], encoding="utf-8")
    assert path.read_text(encoding="utf-8") == OUTPUTS[name], f"{name}: the emitter's text changed (see the module doc)"
