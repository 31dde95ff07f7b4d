"""The generator is tested like the code it writes: small descriptions in, exact text out.

A golden file holds what an emitter must write for the description beside it in this file. After a
deliberate change of the generated code, ORVANE_UPDATE_GOLDEN=1 rewrites them; the diff is then read
like any other change.
"""
import copy
import os
import sys
from pathlib import Path

import pytest

ROOT = Path(__file__).resolve().parents[2]
GOLDEN = ROOT / "tests" / "golden"
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

# One small class with what the native emitter knows how to write: a constructor, an overloaded method
# whose trials fall apart by argument kind, a call that gives up the interpreter lock, a path parameter,
# a settable and a read-only attribute.
WIDGET = {
    "name": "Widget", "module": "orvane.pyfigura", "qualified_name": "orvane.pyfigura.Widget",
    "managed_name": "System.Drawing.Widget", "entry_class": "WrpNs_System.WrpNs_Drawing.WrpCs_Widget_0000CAFE",
    "shape": "class", "outer": None, "base": None, "interfaces": [], "host_mark": "None",
    "context_manager": True, "no_constructor": False, "capsule": "_C_APIT_Widget",
    "collection": None, "managed_kind": "sealed class",
    "constructors": [{"entry": "ctor_000_Widget", "managed_name": ".ctor",
                      "params": [{"name": "width", "type": "Int32", "kind": "value", "clr": "System.Int32"}]}],
    "methods": [{"name": "paint", "form": "instance", "trials": [
        {"entry": "call_000_Paint", "managed_name": "Paint", "releases_gil": True, "result": "None",
         "result_clr": "System.Void", "params": [
             {"name": "file_name", "type": "String", "kind": "value", "clr": "System.String", "path": True},
             {"name": "scale", "type": "Single", "kind": "value", "clr": "System.Single"}]},
        {"entry": "call_001_Paint", "managed_name": "Paint", "result": "Rectangle", "result_clr": "System.Drawing.Rectangle",
         "params": [{"name": "area", "type": "Rectangle", "kind": "value", "clr": "System.Drawing.Rectangle"},
                    {"name": "scale", "type": "Single", "kind": "value", "clr": "System.Single"}]}]}],
    "attributes": [
        {"name": "width", "type": "int", "getter": "get_Width", "setter": "set_Width", "clr": "System.Int32"},
        {"name": "tag", "type": "object", "getter": "get_Tag", "setter": None, "clr": "System.String"}],
    "class_attributes": [],
    "entries": ["ctor_000_Widget", "call_000_Paint", "call_001_Paint", "get_Width", "set_Width", "get_Tag",
                "btp_IsAssignableTo"],
}

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


def model_with_widget():
    model = copy.deepcopy(api_model.load())
    model.classes.append(WIDGET)
    model.class_by_name["Widget"] = WIDGET
    return model


def outputs():
    model = model_with_widget()
    forms = native_forms.Forms(model)
    generic = model.modules["wrpgen"]["generic"]
    pointf = next(i for i in generic["instantiations"] if generic_emitter.element_of(i) == "PointF")
    callbacks = {os.path.basename(k): v for k, v in callback_emitter.emit(SMALL_TABLES, "").items()}
    records = {os.path.basename(k): v for k, v in record_emitter.emit(SMALL_TABLES, "").items()}
    managed = managed_emitter.ManagedEmitter(model)
    enum = {"name": "Shade", "qualified_name": "orvane.pyfigura.Shade", "member_count": 2, "module": "orvane.pyfigura",
            "managed_name": "System.Drawing.Shade",
            "interop_class": "WrpNs_System.WrpNs_Drawing.WrpCs_Shade_0000BEEF",
            "members": [{"name": "LIGHT", "accessor": "getsa_Light"}, {"name": "DARK", "accessor": "getsa_Dark"}]}
    return {
        "widget.cpp": native_emitter.ClassEmitter(model, forms, WIDGET).emit(),
        "widget.cs": managed.class_file(WIDGET, managed.class_entries(WIDGET), WIDGET["managed_name"]),
        "size_value.cpp": value_emitter.ValueEmitter(model, forms, model.value_by_name["Size"]).emit(),
        "shade_enum.cpp": enum_emitter.emit_enum(enum),
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
    text = OUTPUTS[name]
    path = GOLDEN / (name + ".golden")
    if os.environ.get("ORVANE_UPDATE_GOLDEN") == "1":
        path.write_text(text, encoding="utf-8")
    assert path.read_text(encoding="utf-8") == text, f"{name}: the emitter's text changed (see the module doc)"
