"""Checks of the API description in api/*.json.

The description drives the native and managed generators, so it is checked here for the
totals that the design states and for the internal consistency a generator relies on.
"""
import json
import re
import unittest
from pathlib import Path

API = Path(__file__).resolve().parents[2] / "api"
CLASS_FILES = ["drawing.json", "drawing2d.json", "imaging.json", "printing.json", "text.json", "design.json"]


def load(name):
    with open(API / name, encoding="utf-8") as f:
        return json.load(f)


CLASSES = [c for f in CLASS_FILES for c in load(f)["classes"]]
BY_NAME = {c["name"]: c for c in CLASSES}
VALUES = load("values.json")["value_types"]
VALUE_BY_NAME = {v["name"]: v for v in VALUES}
ENUMS = load("enums.json")["enums"]
MODULES = load("modules.json")
INTEROP = {t["name"] for t in MODULES["wrpgen"]["interop"]["types"]}

PARAM_PRIMITIVES = {"Int32", "Int16", "Int64", "Byte", "Single", "Double", "bool", "String", "Guid", "byte[]",
                    "object", "Stream"}
RESULT_PRIMITIVES = {"int", "uint", "float", "bool", "object", "None"}
CLR_OF = {"Int32": "System.Int32", "Int16": "System.Int16", "Int64": "System.Int64", "Byte": "System.Byte",
          "byte": "System.Byte", "Single": "System.Single", "Double": "System.Double", "bool": "System.Boolean",
          "String": "System.String", "Guid": "System.Guid", "object": "System.Object",
          "Stream": "System.IO.Stream"}


def pascal(snake):
    return "".join(p[:1].upper() + p[1:].lower() for p in snake.split("_"))


def snake(managed):
    return re.sub(r"(?<!^)([A-Z])", r"_\1", managed).lower()


def all_trials(owner):
    for t in owner.get("constructors", []):
        yield None, t
    for m in owner["methods"]:
        for t in m["trials"]:
            yield m, t


def known_type(name):
    return name in BY_NAME or name in VALUE_BY_NAME


def param_type_ok(t):
    if t.endswith("[]") and t != "byte[]":
        return param_type_ok(t[:-2])
    return t in PARAM_PRIMITIVES or known_type(t)


def result_type_ok(t):
    if t.endswith("[]"):
        return param_type_ok(t[:-2])
    return t in RESULT_PRIMITIVES or known_type(t)


def derived_entries(c):
    """Table order: constructors, methods with their overloads in a row, properties with the getter
    before the setter, static accessors, collection entries, then btp_IsAssignableTo."""
    out = [t["entry"] for t in c["constructors"]]
    for m in c["methods"]:
        for t in m["trials"]:
            if "owner" not in t and not t.get("shared_entry"):
                out.append(t["entry"])
    for a in c["attributes"]:
        out.append(a["getter"])
        if a["setter"]:
            out.append(a["setter"])
    out += [a["entry"] for a in c["class_attributes"]]
    if c["collection"]:
        out += c["collection"]["entries"]
    return out + ["btp_IsAssignableTo"]


class StatedTotals(unittest.TestCase):
    def test_classes(self):
        # 83 classes are described one by one, and 7 more are the static-member classes;
        # all 90 are registered with their managed names.
        self.assertEqual(len(CLASSES), 90)
        self.assertEqual(sum(c["shape"] != "static_only" for c in CLASSES), 83)
        self.assertEqual(sorted(c["name"] for c in CLASSES if c["shape"] == "static_only"),
                         ["Brushes", "Pens", "SystemBrushes", "SystemColors", "SystemFonts", "SystemIcons",
                          "SystemPens"])
        self.assertEqual(len({c["managed_name"] for c in CLASSES}), 90)

    def test_enumerations(self):
        self.assertEqual(len(ENUMS), 59)
        self.assertEqual(sum(len(e["members"]) for e in ENUMS), 951)
        for e in ENUMS:
            self.assertEqual(len(e["members"]), e["member_count"], e["name"])
        counts = {e["name"]: len(e["members"]) for e in ENUMS}
        self.assertEqual(counts["EmfPlusRecordType"], 253)
        self.assertEqual(counts["KnownColor"], 174)
        irregular = sum(m["accessor"] != "getsa_" + pascal(m["name"]) for e in ENUMS for m in e["members"])
        self.assertEqual(irregular, 27)  # accessors whose managed name the member name doesn't spell

    def test_value_types_and_colours(self):
        self.assertEqual([v["name"] for v in VALUES], MODULES["root"]["value_types"])
        self.assertEqual(len(VALUES), 7)
        colours = VALUE_BY_NAME["Color"]["class_attributes"]
        self.assertEqual(len(colours), 141)
        self.assertEqual((colours[0]["name"], colours[-1]["name"]), ("transparent", "yellow_green"))
        self.assertNotIn("rebecca_purple", [c["name"] for c in colours])

    def test_capsules(self):
        per_module = {}
        for c in CLASSES:
            per_module.setdefault(c["module"], set()).add(c["capsule"])
        for v in VALUES:
            per_module.setdefault(v["module"], set()).update(v["capsules"].values())
        self.assertEqual(sum(len(s) for s in per_module.values()), 104)
        self.assertEqual(len(per_module["orvane.pyfigura"]), 49)
        self.assertIn("_C_APIT_FontConverter+FontNameConverter", per_module["orvane.pyfigura"])
        self.assertNotIn("_C_APITV1_Bitmap", per_module["orvane.pyfigura"])

    def test_graphics_size(self):
        g = BY_NAME["Graphics"]
        self.assertEqual(len(g["entries"]), 196)
        self.assertEqual(len(g["methods"]), 53)
        self.assertEqual(len(g["attributes"]), 18)
        trials = {m["name"]: len(m["trials"]) for m in g["methods"]}
        self.assertEqual(trials["draw_image"], 22)
        self.assertEqual(max(trials.values()), 22)
        self.assertEqual(trials["measure_string"], 7)

    def test_value_type_tables(self):
        self.assertEqual(len(VALUE_BY_NAME["Color"]["entries"]), 157)
        self.assertEqual(len(VALUE_BY_NAME["Rectangle"]["entries"]), 17)
        self.assertEqual(len(VALUE_BY_NAME["RectangleF"]["entries"]), 14)
        self.assertEqual(VALUE_BY_NAME["Color"]["entries"][16:],
                         [a["entry"] for a in VALUE_BY_NAME["Color"]["class_attributes"]])

    def test_bitmap_slots(self):
        self.assertEqual(BY_NAME["Bitmap"]["entries"],
                         [f"ctor_{i:03d}_Bitmap" for i in range(10)] +
                         ["call_000_Clone", "call_001_Clone", "call_000_MakeTransparent",
                          "call_001_MakeTransparent", "call_000_LockBits", "call_001_LockBits",
                          "call_000_UnlockBits", "call_000_GetPixel", "call_000_SetPixel",
                          "call_000_SetResolution", "btp_IsAssignableTo"])


class ModuleOrders(unittest.TestCase):
    def module_lists(self):
        yield MODULES["root"]["module"], MODULES["root"]["classes"], MODULES["root"]["enumerations"]
        for s in MODULES["submodules"]:
            yield s["module"], s["classes"], s["enumerations"]

    def test_every_listed_class_exists_in_its_module_and_vice_versa(self):
        listed = []
        for module, classes, _ in self.module_lists():
            for name in classes:
                self.assertIn(name, BY_NAME)
                self.assertEqual(BY_NAME[name]["module"], module, name)
            listed += classes
        self.assertEqual(len(listed), len(set(listed)))
        self.assertEqual(set(listed), set(BY_NAME))

    def test_every_listed_enum_exists_in_its_module_and_vice_versa(self):
        by_name = {e["name"]: e for e in ENUMS}
        listed = []
        for module, _, enums in self.module_lists():
            for name in enums:
                self.assertEqual(by_name[name]["module"], module, name)
            listed += enums
        self.assertEqual(sorted(listed), sorted(by_name))
        self.assertEqual([e["name"] for e in ENUMS], listed, "enums.json keeps the registration order")

    def test_root_ready_order_covers_the_root_types(self):
        ready = MODULES["root"]["ready_order"]
        self.assertEqual(ready[0], "_IDisposableWrapper")
        self.assertEqual(len(ready), len(set(ready)))
        self.assertEqual(set(ready[1:]), set(MODULES["root"]["classes"]) | set(MODULES["root"]["value_types"]))
        self.assertLess(ready.index("Bitmap"), ready.index("Image"))

    def test_shared_types_cover_the_interfaces_of_each_submodule(self):
        for s in MODULES["submodules"]:
            used = {i for n in s["classes"] for i in BY_NAME[n]["interfaces"]}
            self.assertTrue(used <= set(s["shared_types_readied_first"]), s["name"])
            self.assertTrue(set(s["shared_types_readied_first"]) <= INTEROP)
        self.assertEqual(MODULES["root"]["submodules"], [s["name"] for s in MODULES["submodules"]])

    def test_generic_instantiations(self):
        g = MODULES["wrpgen"]["generic"]
        full = [i for i in g["instantiations"] if i["kind"] == "full"]
        self.assertEqual(len(full), 13)
        self.assertEqual(sum(i["argument_converter"] for i in g["instantiations"]), 18)
        self.assertIn("SqSetItemNoChek", g["tables"]["array_entries"])
        for i in g["instantiations"]:
            for e in [i["element"]] if i["element"] else i["element_choices"]:
                self.assertTrue(param_type_ok(e), e)

    def test_array_types_have_an_instantiation(self):
        elements = {}
        for i in MODULES["wrpgen"]["generic"]["instantiations"]:
            for e in [i["element"]] if i["element"] else i["element_choices"]:
                elements.setdefault(e, []).append(i)
        arrays_in, arrays_out = set(), set()
        for c in CLASSES:
            for _, t in all_trials(c):
                arrays_in |= {p["type"] for p in t["params"] if p["type"].endswith("[]") and p["type"] != "byte[]"}
                if t.get("result", "").endswith("[]"):
                    arrays_out.add(t["result"])
            for a in c["attributes"]:
                if a["type"].endswith("[]"):
                    arrays_out.add(a["type"])
                    if a["setter"]:
                        arrays_in.add(a.get("setter_type", a["type"]))
            arrays_out |= {a["type"] for a in c["class_attributes"] if a["type"].endswith("[]")}
        for t in arrays_in:
            self.assertTrue(any(i["argument_converter"] for i in elements.get(t[:-2], [])), t)
        for t in arrays_out:
            self.assertTrue(any(i["kind"] == "full" for i in elements.get(t[:-2], [])), t)


class ClassConsistency(unittest.TestCase):
    def test_entry_tables(self):
        for c in CLASSES:
            with self.subTest(c["name"]):
                self.assertEqual(c["entries"], derived_entries(c))
                self.assertEqual(len(c["entries"]), len(set(c["entries"])))
                self.assertEqual(c["entries"][-1], "btp_IsAssignableTo")
                self.assertEqual(c["entries"].count("btp_IsAssignableTo"), 1)

    def test_trial_numbers_start_at_000_and_are_contiguous(self):
        for owner in CLASSES + VALUES:
            seqs = {}
            for e in owner["entries"]:
                m = re.fullmatch(r"(ctor|call)_(\d{3})_(\w+)", e)
                if m:
                    seqs.setdefault((m.group(1), m.group(3)), []).append(int(m.group(2)))
            for key, nums in seqs.items():
                self.assertEqual(nums, list(range(len(nums))), (owner["name"], key))
            short = owner["managed_name"].rsplit(".", 1)[-1].split("+")[-1]
            self.assertTrue(all(k[1] == short for k in seqs if k[0] == "ctor"), owner["name"])

    def test_entry_names_follow_their_members(self):
        for owner in CLASSES + VALUES:
            for m, t in all_trials(owner):
                m2 = re.fullmatch(r"(ctor|call)_\d{3}_(\w+)", t["entry"])
                self.assertIsNotNone(m2, t["entry"])
                if m2.group(1) == "ctor":
                    self.assertEqual(t["managed_name"], ".ctor")
                    self.assertIsNone(m)
                else:
                    self.assertEqual(t["managed_name"], m2.group(2), t["entry"])
            for a in owner["attributes"]:
                if a["getter"]:
                    self.assertRegex(a["getter"], r"^get_\w+$")
                    if a["setter"]:
                        self.assertEqual(a["setter"], "set_" + a["getter"][4:])
            for a in owner["class_attributes"]:
                self.assertEqual(a["entry"], "getsa_" + a["managed_name"])
                self.assertEqual(a["member"] == "field", a["name"].isupper(), a["name"])

    def test_trials_reach_an_entry_of_their_own_or_of_a_base_class(self):
        for c in CLASSES:
            for m, t in all_trials(c):
                if "owner" in t:
                    base, chain = c["base"], []
                    while base in BY_NAME:
                        chain.append(base)
                        base = BY_NAME[base]["base"]
                    self.assertIn(t["owner"], chain, (c["name"], t["entry"]))
                    self.assertIn(t["entry"], BY_NAME[t["owner"]]["entries"])
                else:
                    self.assertIn(t["entry"], c["entries"], (c["name"], t["entry"]))

    def test_types_name_known_classes_values_enums_or_primitives(self):
        for owner in CLASSES + VALUES:
            for m, t in all_trials(owner):
                for p in t["params"]:
                    self.assertTrue(p["type"] == "list" or param_type_ok(p["type"]), (owner["name"], p))
                    self.assertEqual(p["kind"] == "list", p["type"] == "list")
                if m is not None:
                    self.assertTrue(result_type_ok(t["result"]), (owner["name"], t["entry"], t["result"]))
            for a in owner["attributes"] + owner["class_attributes"]:
                self.assertTrue(result_type_ok(a["type"]), (owner["name"], a))
                if "setter_type" in a:
                    self.assertTrue(param_type_ok(a["setter_type"]), (owner["name"], a))

    def test_placement_base_and_interfaces(self):
        for c in CLASSES:
            with self.subTest(c["name"]):
                if c["outer"]:
                    outer = BY_NAME[c["outer"]]
                    self.assertEqual(outer["module"], c["module"])
                    self.assertTrue(c["name"].startswith(c["outer"] + "."))
                    self.assertEqual(c["managed_name"], outer["managed_name"] + "+" + c["name"].split(".")[-1])
                else:
                    self.assertNotIn(".", c["name"])
                self.assertEqual(c["qualified_name"], f'{c["module"]}.{c["name"]}')
                if c["base"]:
                    self.assertTrue(c["base"] in BY_NAME or c["base"] in INTEROP, c["base"])
                for i in c["interfaces"]:
                    self.assertTrue(i in INTEROP or BY_NAME.get(i, {}).get("shape") == "interface", i)
                self.assertEqual(c["context_manager"], "_IDisposableWrapper" in c["interfaces"])
                self.assertEqual(c["host_mark"] == "Ellipsis", c["shape"] == "managed_struct")
                self.assertEqual(c["no_constructor"], not c["constructors"])
                self.assertEqual(c["collection"] is not None, "_IColWrapper" in c["interfaces"])
                self.assertEqual(c["capsule"], "_C_APIT_" + c["managed_name"].rsplit(".", 1)[-1])

    def test_method_forms(self):
        for owner in CLASSES + VALUES:
            for m in owner["methods"]:
                self.assertIn(m["form"], ("instance", "static", "mixed"))
                forms = {t.get("form") for t in m["trials"]}
                if m["form"] == "mixed":
                    self.assertEqual(forms, {"static", "instance"}, (owner["name"], m["name"]))
                else:
                    self.assertEqual(forms - {None}, set(), (owner["name"], m["name"]))
                self.assertRegex(m["name"], r"^[a-z][a-z0-9_]*$")

    def test_managed_struct_default_constructor_comes_last(self):
        for c in CLASSES:
            if c["shape"] == "managed_struct":
                self.assertEqual(c["constructors"][-1]["params"], [])
                self.assertTrue(c["constructors"][-1].get("implicit_default"))

    def test_static_member_classes(self):
        colours = [(a["name"], a["entry"]) for a in VALUE_BY_NAME["Color"]["class_attributes"]]
        for name in ("Brushes", "Pens"):
            self.assertEqual([(a["name"], a["entry"]) for a in BY_NAME[name]["class_attributes"]], colours)
        for name in ("SystemBrushes", "SystemPens"):
            self.assertEqual([a["name"] for a in BY_NAME[name]["class_attributes"]],
                             [a["name"] for a in BY_NAME["SystemColors"]["class_attributes"]])
        for c in CLASSES:
            if c["shape"] == "static_only":
                self.assertTrue(c["no_constructor"])
                self.assertTrue(all(m["form"] == "static" for m in c["methods"]))
                self.assertTrue(all(a["name"] == snake(a["managed_name"]) for a in c["class_attributes"]))


class ManagedTypes(unittest.TestCase):
    ENUM_NAMES = {e["managed_name"] for e in ENUMS}

    def clr_fits(self, table, clr):
        if table.endswith("[]") and table != "byte[]":
            return clr.endswith("[]") and self.clr_fits(table[:-2], clr[:-2])
        if table in CLR_OF:
            return clr == CLR_OF[table] or (table == "Int32" and clr in self.ENUM_NAMES)
        if table == "byte[]":
            return clr == "System.Byte[]"
        target = BY_NAME.get(table) or VALUE_BY_NAME.get(table)
        return target is not None and target["managed_name"] == clr

    def test_every_trial_is_matched_or_says_why_not(self):
        for owner in CLASSES + VALUES:
            for m, t in all_trials(owner):
                with self.subTest(owner=owner["name"], entry=t["entry"]):
                    if t.get("unmatched"):
                        self.assertTrue(t.get("reason"))
                        continue
                    self.assertNotIn("reason", t)
                    if t.get("implicit_default"):
                        continue
                    for p in t["params"]:
                        if p["kind"] == "list":
                            self.assertTrue(p["clr"].endswith("&"))
                            self.assertIn(p["direction"], ("ref", "out"))
                        else:
                            self.assertTrue(self.clr_fits(p["type"], p["clr"]), p)
                            self.assertNotIn("direction", p)
                    if m is not None:
                        self.assertIn("result_clr", t)

    def test_enum_types_are_recorded_and_known(self):
        seen = set()
        for owner in CLASSES + VALUES:
            for _, t in all_trials(owner):
                for p in t["params"]:
                    if "managed_type" in p:
                        self.assertEqual(p["clr"].rstrip("&"), p["managed_type"])
                        seen.add(p["managed_type"])
                    elif "clr" in p:
                        self.assertNotIn(p["clr"].rstrip("&"), self.ENUM_NAMES, p)
                if "result_managed_type" in t:
                    self.assertEqual(t["result_clr"], t["result_managed_type"])
                    self.assertEqual(t["result"], "int")
                    seen.add(t["result_managed_type"])
            for a in owner["attributes"] + owner["class_attributes"]:
                if "managed_type" in a:
                    self.assertEqual(a["type"], "int", a)
                    self.assertIn(a.get("setter_type", "Int32"), ("Int32",))
                    seen.add(a["managed_type"])
        self.assertTrue(seen <= self.ENUM_NAMES, seen - self.ENUM_NAMES)
        self.assertIn("System.Drawing.RotateFlipType", seen)

    def test_rotate_flip_takes_its_enum(self):
        rotate = next(m for m in BY_NAME["Image"]["methods"] if m["name"] == "rotate_flip")
        p = rotate["trials"][0]["params"][0]
        self.assertEqual((p["type"], p["managed_type"]), ("Int32", "System.Drawing.RotateFlipType"))

    def test_attributes_and_class_attributes_are_reflected(self):
        for owner in CLASSES + VALUES:
            for a in owner["attributes"] + owner["class_attributes"]:
                if a.get("getter", "getsa") is None:
                    self.assertIn("native", a)
                    continue
                self.assertTrue(a.get("unmatched") or "clr" in a, (owner["name"], a["name"]))

    def test_enum_accessors(self):
        for e in ENUMS:
            self.assertEqual(e["qualified_name"], f'{e["module"]}.{e["name"]}')
            ns = e["managed_name"].rsplit(".", 1)[0]
            module = "orvane.pyfigura" + ("" if ns == "System.Drawing" else "." + ns.split(".")[-1].lower())
            self.assertEqual(e["module"], module, e["name"])
            self.assertRegex(e["interop_class"], r"^WrpNs_System\.WrpNs_Drawing\.(WrpNs_\w+\.)?WrpCs_\w{1,8}_[0-9A-F]{8}$")
            self.assertTrue(e["interop_class"].split("WrpCs_")[1].startswith(e["name"][:8]))
            names = [m["name"] for m in e["members"]]
            self.assertEqual(len(names), len(set(names)), e["name"])
            for m in e["members"]:
                rule = "getsa_" + pascal(m["name"])
                self.assertNotIn("unmatched", m, (e["name"], m))


if __name__ == "__main__":
    unittest.main()


class TestCallbackTables(unittest.TestCase):
    """The callback tables are a wire format: their shape is fixed, and every row names a function."""

    def test_groups_and_kinds_have_the_wire_shape(self):
        tables = load("callbacks.json")
        shape = [(g["name"], len(g["rows"]), bool(g.get("terminated"))) for g in tables["static_groups"]]
        self.assertEqual(shape, [("values_in", 11, False), ("values_out", 13, False), ("buffers", 4, False),
                                 ("references", 4, False), ("iteration", 1, False), ("containers", 11, True),
                                 ("lists", 11, True), ("sequences", 3, False), ("streams", 12, False)])
        for group in tables["static_groups"]:
            names = [r["name"] for r in group["rows"]]
            self.assertEqual(len(names), len(set(names)), group["name"])
        kinds = [k["element"] for k in tables["generic_kinds"]]
        self.assertEqual(len(kinds), 18)
        self.assertEqual(kinds[:2] + kinds[-2:], ["byte[]", "CharacterRange", "Single[]", "String"])
