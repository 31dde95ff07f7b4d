"""Checks of the API description in api/*.json: the totals the design states, and the consistency the generators rely on."""
import json
import re
from pathlib import Path

import pytest

API = Path(__file__).resolve().parents[2] / "api"
CLASS_FILES = ["drawing.json", "drawing2d.json", "imaging.json", "printing.json", "text.json", "design.json"]


def load(name):
    with open(API / name, encoding="utf-8") as f:
        return json.load(f)


CLASSES = [c for f in CLASS_FILES for c in load(f)["classes"]]
BY_NAME = {c["name"]: c for c in CLASSES}
VALUES = load("values.json")["value_types"]
VALUE_BY_NAME = {v["name"]: v for v in VALUES}
OWNERS = CLASSES + VALUES
ENUMS = load("enums.json")["enums"]
ENUM_NAMES = {e["managed_name"] for e in ENUMS}
MODULES = load("modules.json")
INTEROP = {t["name"] for t in MODULES["wrpgen"]["interop"]["types"]}
CLR_OF = {"Int32": "System.Int32", "Int16": "System.Int16", "Int64": "System.Int64", "Byte": "System.Byte",
          "Single": "System.Single", "Double": "System.Double", "bool": "System.Boolean", "String": "System.String",
          "Guid": "System.Guid", "object": "System.Object", "Stream": "System.IO.Stream", "byte[]": "System.Byte[]"}
RESULT_PRIMITIVES = {"int", "uint", "float", "bool", "object", "None"}


def pascal(snake):
    return "".join(p[:1].upper() + p[1:].lower() for p in snake.split("_"))


def all_trials(owner):
    yield from ((None, t) for t in owner.get("constructors", []))
    yield from ((m, t) for m in owner["methods"] for t in m["trials"])


def param_type_ok(t):
    if t.endswith("[]") and t != "byte[]":
        return param_type_ok(t[:-2])
    return t in CLR_OF or t in BY_NAME or t in VALUE_BY_NAME


def result_type_ok(t):
    return param_type_ok(t[:-2]) if t.endswith("[]") else t in RESULT_PRIMITIVES or param_type_ok(t)


def clr_fits(table, clr):
    if table.endswith("[]") and table != "byte[]":
        return clr.endswith("[]") and clr_fits(table[:-2], clr[:-2])
    if table in CLR_OF:
        return clr == CLR_OF[table] or (table == "Int32" and clr in ENUM_NAMES)
    target = BY_NAME.get(table) or VALUE_BY_NAME.get(table)
    return target is not None and target["managed_name"] == clr


def test_stated_totals():
    capsules = {}
    for c in CLASSES:
        capsules.setdefault(c["module"], set()).add(c["capsule"])
    for v in VALUES:
        capsules.setdefault(v["module"], set()).update(v["capsules"].values())
    graphics = {m["name"]: len(m["trials"]) for m in BY_NAME["Graphics"]["methods"]}
    colours = VALUE_BY_NAME["Color"]["class_attributes"]
    assert (len(CLASSES), len({c["managed_name"] for c in CLASSES})) == (90, 90)
    assert sorted(c["name"] for c in CLASSES if c["shape"] == "static_only") == [
        "Brushes", "Pens", "SystemBrushes", "SystemColors", "SystemFonts", "SystemIcons", "SystemPens"]
    assert (len(ENUMS), sum(len(e["members"]) for e in ENUMS)) == (59, 951)
    assert all(len(e["members"]) == e["member_count"] for e in ENUMS)
    assert [v["name"] for v in VALUES] == MODULES["root"]["value_types"] and len(VALUES) == 7
    assert (len(colours), colours[0]["name"], colours[-1]["name"]) == (141, "transparent", "yellow_green")
    assert VALUE_BY_NAME["Color"]["entries"][16:] == [a["entry"] for a in colours]
    assert (sum(map(len, capsules.values())), len(capsules["orvane.pyfigura"])) == (104, 49)
    assert (len(BY_NAME["Graphics"]["entries"]), len(graphics), graphics["draw_image"]) == (196, 53, 22)
    assert BY_NAME["Bitmap"]["entries"] == [f"ctor_{i:03d}_Bitmap" for i in range(10)] + [
        "call_000_Clone", "call_001_Clone", "call_000_MakeTransparent", "call_001_MakeTransparent",
        "call_000_LockBits", "call_001_LockBits", "call_000_UnlockBits", "call_000_GetPixel",
        "call_000_SetPixel", "call_000_SetResolution", "btp_IsAssignableTo"]


def test_modules_list_every_class_and_enum_once_in_registration_order():
    lists = [MODULES["root"]] + MODULES["submodules"]
    classes = [(n, s["module"]) for s in lists for n in s["classes"]]
    enums = [(n, s["module"]) for s in lists for n in s["enumerations"]]
    assert sorted(n for n, _ in classes) == sorted(BY_NAME)
    assert all(BY_NAME[n]["module"] == m for n, m in classes)
    assert [(e["name"], e["module"]) for e in ENUMS] == enums
    ready = MODULES["root"]["ready_order"]
    assert ready[0] == "_IDisposableWrapper" and len(ready) == len(set(ready))
    assert set(ready[1:]) == set(MODULES["root"]["classes"]) | set(MODULES["root"]["value_types"])
    assert ready.index("Bitmap") < ready.index("Image")
    assert MODULES["root"]["submodules"] == [s["name"] for s in MODULES["submodules"]]
    for s in MODULES["submodules"]:
        used = {i for n in s["classes"] for i in BY_NAME[n]["interfaces"]}
        assert used <= set(s["shared_types_readied_first"]) <= INTEROP, s["name"]


def test_every_array_type_has_a_generic_instantiation():
    elements = {}
    for i in MODULES["wrpgen"]["generic"]["instantiations"]:
        for e in [i["element"]] if i["element"] else i["element_choices"]:
            assert param_type_ok(e), e
            elements.setdefault(e, []).append(i)
    arrays_in, arrays_out = set(), set()
    for c in CLASSES:
        for _, t in all_trials(c):
            arrays_in |= {p["type"] for p in t["params"] if p["type"].endswith("[]") and p["type"] != "byte[]"}
            arrays_out |= {t["result"]} if t.get("result", "").endswith("[]") else set()
        for a in c["attributes"] + c["class_attributes"]:
            if a["type"].endswith("[]"):
                arrays_out.add(a["type"])
                if a.get("setter"):
                    arrays_in.add(a.get("setter_type", a["type"]))
    assert all(any(i["argument_converter"] for i in elements.get(t[:-2], [])) for t in arrays_in)
    assert all(any(i["kind"] == "full" for i in elements.get(t[:-2], [])) for t in arrays_out)


def derived_entries(c):
    """Table order: constructors, methods with their overloads in a row, properties with the getter
    before the setter, static accessors, collection entries, then btp_IsAssignableTo."""
    out = [t["entry"] for t in c["constructors"]]
    out += [t["entry"] for m in c["methods"] for t in m["trials"] if "owner" not in t and not t.get("shared_entry")]
    for a in c["attributes"]:
        out += [a["getter"]] + ([a["setter"]] if a["setter"] else [])
    out += [a["entry"] for a in c["class_attributes"]]
    return out + (c["collection"]["entries"] if c["collection"] else []) + ["btp_IsAssignableTo"]


@pytest.mark.parametrize("c", CLASSES, ids=lambda c: c["name"])
def test_class_entries_and_placement(c):
    assert c["entries"] == derived_entries(c) and len(set(c["entries"])) == len(c["entries"])
    if c["outer"]:
        assert BY_NAME[c["outer"]]["module"] == c["module"]
        assert c["managed_name"] == BY_NAME[c["outer"]]["managed_name"] + "+" + c["name"].split(".")[-1]
    else:
        assert "." not in c["name"]
    assert c["qualified_name"] == f'{c["module"]}.{c["name"]}'
    assert not c["base"] or c["base"] in BY_NAME or c["base"] in INTEROP
    assert all(i in INTEROP or BY_NAME.get(i, {}).get("shape") == "interface" for i in c["interfaces"])
    assert c["context_manager"] == ("_IDisposableWrapper" in c["interfaces"])
    assert (c["host_mark"] == "Ellipsis") == (c["shape"] == "managed_struct")
    assert c["no_constructor"] == (not c["constructors"])
    assert (c["collection"] is not None) == ("_IColWrapper" in c["interfaces"])
    assert c["capsule"] == "_C_APIT_" + c["managed_name"].rsplit(".", 1)[-1]
    if c["shape"] == "managed_struct":
        assert c["constructors"][-1]["params"] == [] and c["constructors"][-1].get("implicit_default")
    if c["shape"] == "static_only":
        assert c["no_constructor"] and all(m["form"] == "static" for m in c["methods"])
    for m, t in all_trials(c):
        if "owner" in t:
            chain, base = [], c["base"]
            while base in BY_NAME:
                chain, base = chain + [base], BY_NAME[base]["base"]
            assert t["owner"] in chain and t["entry"] in BY_NAME[t["owner"]]["entries"]
        else:
            assert t["entry"] in c["entries"]


@pytest.mark.parametrize("owner", OWNERS, ids=lambda o: o["name"])
def test_trials_name_their_members_and_managed_types(owner):
    seqs = {}
    for e in owner["entries"]:
        m = re.fullmatch(r"(ctor|call)_(\d{3})_(\w+)", e)
        if m:
            seqs.setdefault((m.group(1), m.group(3)), []).append(int(m.group(2)))
    assert all(nums == list(range(len(nums))) for nums in seqs.values()), "trial numbers start at 000, no gaps"
    for m in owner["methods"]:
        forms = {t.get("form") for t in m["trials"]}
        assert forms - {None} == ({"static", "instance"} if m["form"] == "mixed" else set()), m["name"]
        assert re.fullmatch(r"[a-z][a-z0-9_]*", m["name"])
    for m, t in all_trials(owner):
        kind, member = re.fullmatch(r"(ctor|call)_\d{3}_(\w+)", t["entry"]).groups()
        assert t["managed_name"] == (".ctor" if kind == "ctor" else member) and (kind == "ctor") == (m is None)
        assert m is None or result_type_ok(t["result"]), t["entry"]
        if t.get("unmatched"):
            assert t.get("reason")
            continue
        assert "reason" not in t
        if not t.get("implicit_default") and m is not None:
            assert "result_clr" in t
        for p in t["params"]:
            assert (p["kind"] == "list") == (p["type"] == "list")
            if p["kind"] == "list":
                assert p["clr"].endswith("&") and p["direction"] in ("ref", "out")
            elif not t.get("implicit_default"):
                assert param_type_ok(p["type"]) and clr_fits(p["type"], p["clr"]) and "direction" not in p, p
            if "managed_type" in p:
                assert p["clr"].rstrip("&") == p["managed_type"] in ENUM_NAMES
            elif "clr" in p:
                assert p["clr"].rstrip("&") not in ENUM_NAMES, p
    for a in owner["attributes"] + owner["class_attributes"]:
        assert result_type_ok(a["type"]) and param_type_ok(a.get("setter_type", "Int32")), a["name"]
        assert a.get("getter", "getsa") is None and "native" in a or a.get("unmatched") or "clr" in a, a["name"]
        if "managed_type" in a:
            assert a["type"] == "int" and a["managed_type"] in ENUM_NAMES
        if a.get("getter") and a.get("setter"):
            assert a["setter"] == "set_" + a["getter"][4:]
    for a in owner["class_attributes"]:
        assert a["entry"] == "getsa_" + a["managed_name"] and (a["member"] == "field") == a["name"].isupper()


def test_static_member_classes_mirror_their_colour_tables():
    colours = [(a["name"], a["entry"]) for a in VALUE_BY_NAME["Color"]["class_attributes"]]
    system = [a["name"] for a in BY_NAME["SystemColors"]["class_attributes"]]
    assert all([(a["name"], a["entry"]) for a in BY_NAME[n]["class_attributes"]] == colours for n in ("Brushes", "Pens"))
    assert all([a["name"] for a in BY_NAME[n]["class_attributes"]] == system for n in ("SystemBrushes", "SystemPens"))


def test_enumerations_are_placed_by_namespace_with_unique_members():
    for e in ENUMS:
        ns = e["managed_name"].rsplit(".", 1)[0]
        assert e["module"] == "orvane.pyfigura" + ("" if ns == "System.Drawing" else "." + ns.split(".")[-1].lower())
        assert e["qualified_name"] == f'{e["module"]}.{e["name"]}'
        assert e["interop_class"].split("WrpCs_")[1].startswith(e["name"][:8])
        assert len({m["name"] for m in e["members"]}) == len(e["members"])
        assert not any("unmatched" in m for m in e["members"])
    irregular = sum(m["accessor"] != "getsa_" + pascal(m["name"]) for e in ENUMS for m in e["members"])
    assert irregular == 27  # accessors whose managed name the member name does not spell


def test_callback_groups_have_the_wire_shape():
    tables = load("callbacks.json")
    assert [(g["name"], len(g["rows"]), bool(g.get("terminated"))) for g in tables["static_groups"]] == [
        ("values_in", 11, False), ("values_out", 13, False), ("buffers", 4, False), ("references", 4, False),
        ("iteration", 1, False), ("containers", 11, True), ("lists", 11, True), ("sequences", 3, False),
        ("streams", 12, False)]
    assert all(len({r["name"] for r in g["rows"]}) == len(g["rows"]) for g in tables["static_groups"])
    kinds = [k["element"] for k in tables["generic_kinds"]]
    assert len(kinds) == 18 and kinds[:2] + kinds[-2:] == ["byte[]", "CharacterRange", "Single[]", "String"]
