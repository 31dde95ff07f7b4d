"""The consistency of api/*.json that the generators rely on and do not check themselves: module lists and their
orders, entry tables, trial names and managed types, mirrored colour tables, generic element kinds."""
import json
import re
from pathlib import Path

import pytest

API = Path(__file__).resolve().parents[2] / "api"


def load(name):
    with open(API / name, encoding="utf-8") as f:
        return json.load(f)


CLASSES = [c for f in ("drawing", "drawing2d", "imaging", "printing", "text", "design")
           for c in load(f + ".json")["classes"]]
BY_NAME = {c["name"]: c for c in CLASSES}
VALUES = load("values.json")["value_types"]
VALUE_BY_NAME = {v["name"]: v for v in VALUES}
ENUMS = load("enums.json")["enums"]
ENUM_NAMES = {e["managed_name"] for e in ENUMS}
MODULES = load("modules.json")
INTEROP = {t["name"] for t in MODULES["wrpgen"]["interop"]["types"]}
CLR_OF = {**{t: "System." + t for t in ("Int32", "Int16", "Int64", "Byte", "Single", "Double", "String", "Guid")},
          "bool": "System.Boolean", "object": "System.Object", "Stream": "System.IO.Stream", "byte[]": "System.Byte[]"}


def all_trials(owner):  # (None, constructor trial) and (method, trial) pairs
    return [(None, t) for t in owner.get("constructors", [])] + [(m, t) for m in owner["methods"] for t in m["trials"]]


def clr_fits(table, clr):
    if table.endswith("[]") and table != "byte[]":
        return clr.endswith("[]") and clr_fits(table[:-2], clr[:-2])
    if table in CLR_OF:
        return clr == CLR_OF[table] or (table == "Int32" and clr in ENUM_NAMES)
    target = BY_NAME.get(table) or VALUE_BY_NAME.get(table)
    return target is not None and target["managed_name"] == clr


def test_module_lists_in_registration_order():
    assert len({c["managed_name"] for c in CLASSES}) == len(CLASSES)
    for e in ENUMS:  # by namespace: System.Drawing is the root module, System.Drawing.X its submodule x
        ns = e["managed_name"].rsplit(".", 1)[0]
        assert e["module"] == "orvane.pyfigura" + ("" if ns == "System.Drawing" else "." + ns.split(".")[-1].lower())
    lists = [MODULES["root"]] + MODULES["submodules"]
    classes = [(n, s["module"]) for s in lists for n in s["classes"]]
    assert sorted(n for n, _ in classes) == sorted(BY_NAME) and all(BY_NAME[n]["module"] == m for n, m in classes)
    assert [(e["name"], e["module"]) for e in ENUMS] == [(n, s["module"]) for s in lists for n in s["enumerations"]]
    assert [v["name"] for v in VALUES] == MODULES["root"]["value_types"]
    assert MODULES["root"]["submodules"] == [s["name"] for s in MODULES["submodules"]]
    ready = MODULES["root"]["ready_order"]
    assert ready[0] == "_IDisposableWrapper" and len(ready) == len(set(ready))
    assert set(ready[1:]) == set(MODULES["root"]["classes"]) | set(MODULES["root"]["value_types"])
    for s in MODULES["submodules"]:
        used = {i for n in s["classes"] for i in BY_NAME[n]["interfaces"]}
        assert used <= set(s["shared_types_readied_first"]) <= INTEROP, s["name"]


@pytest.mark.parametrize("c", CLASSES, ids=lambda c: c["name"])
def test_class_entries_and_placement(c):
    # table order: constructors, method overloads in a row, getter then setter, static accessors, collection entries
    entries = [t["entry"] for t in c["constructors"]]
    entries += [t["entry"] for m in c["methods"] for t in m["trials"] if "owner" not in t and not t.get("shared_entry")]
    entries += [e for a in c["attributes"] for e in (a["getter"], a["setter"]) if e]
    entries += [a["entry"] for a in c["class_attributes"]] + (c["collection"] or {"entries": []})["entries"]
    assert c["entries"] == entries + ["btp_IsAssignableTo"] and len(set(c["entries"])) == len(c["entries"])
    if c["outer"]:
        assert BY_NAME[c["outer"]]["module"] == c["module"]
        assert c["managed_name"] == BY_NAME[c["outer"]]["managed_name"] + "+" + c["name"].split(".")[-1]
    assert not c["base"] or c["base"] in BY_NAME or c["base"] in INTEROP
    assert all(i in INTEROP or BY_NAME.get(i, {}).get("shape") == "interface" for i in c["interfaces"])
    assert c["context_manager"] == ("_IDisposableWrapper" in c["interfaces"])
    assert (c["collection"] is not None) == ("_IColWrapper" in c["interfaces"])
    if c["shape"] == "managed_struct":
        assert c["constructors"][-1]["params"] == [] and c["constructors"][-1].get("implicit_default")
    if c["shape"] == "static_only":
        assert c["no_constructor"] and all(m["form"] == "static" for m in c["methods"])
    lineage, base = [c["name"]], c["base"]
    while base in BY_NAME:
        lineage, base = lineage + [base], BY_NAME[base]["base"]
    for _, t in all_trials(c):
        owner = t.get("owner", c["name"])  # an inherited trial names an entry of a base class
        assert owner in lineage and t["entry"] in BY_NAME[owner]["entries"]


@pytest.mark.parametrize("owner", CLASSES + VALUES, ids=lambda o: o["name"])
def test_trials_name_their_members_and_managed_types(owner):
    for m in owner["methods"]:
        forms = {t.get("form") for t in m["trials"]}
        assert forms - {None} == ({"static", "instance"} if m["form"] == "mixed" else set()), m["name"]
    for m, t in all_trials(owner):
        kind, member = re.fullmatch(r"(ctor|call)_\d{3}_(\w+)", t["entry"]).groups()
        assert t["managed_name"] == (".ctor" if kind == "ctor" else member) and (kind == "ctor") == (m is None)
        if t.get("unmatched"):
            assert t.get("reason")
            continue
        for p in t["params"]:
            assert (p["kind"] == "list") == (p["type"] == "list")
            if p["kind"] == "list":
                assert p["clr"].endswith("&") and p["direction"] in ("ref", "out")
            elif not t.get("implicit_default"):
                assert clr_fits(p["type"], p["clr"]) and "direction" not in p, p
            if "clr" in p:  # an enumeration passes as Int32 and names its managed type
                clr = p["clr"].rstrip("&")
                assert p.get("managed_type") == (clr if clr in ENUM_NAMES else None), p


def test_static_member_classes_mirror_their_colour_tables_and_generic_kinds_are_named_once():
    colours = [(a["name"], a["entry"]) for a in VALUE_BY_NAME["Color"]["class_attributes"]]
    system = [a["name"] for a in BY_NAME["SystemColors"]["class_attributes"]]
    assert VALUE_BY_NAME["Color"]["entries"][-len(colours):] == [entry for _, entry in colours]
    assert all([(a["name"], a["entry"]) for a in BY_NAME[n]["class_attributes"]] == colours
               for n in ("Brushes", "Pens"))
    assert all([a["name"] for a in BY_NAME[n]["class_attributes"]] == system for n in ("SystemBrushes", "SystemPens"))
    kinds = [k["element"] for k in load("callbacks.json")["generic_kinds"]]  # found by element: each once
    assert len(set(kinds)) == len(kinds)
