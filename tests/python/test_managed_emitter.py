"""Checks of the managed emitter: the C# interop classes it writes from the API description."""
import copy
import os
import re
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[2]
sys.path.insert(0, str(ROOT / "generator"))

import api_model  # noqa: E402
import managed_emitter  # noqa: E402

MODEL = api_model.load()
ENTRY = re.compile(r"\[UnmanagedCallersOnly\]\n(?:\s+\[MethodImpl\(MethodImplOptions\.AggressiveOptimization\)\]\n)?"
                   r"\s+public static (\S+) (\w+)\(([^)]*)\)")


def emit(model, out_dir):
    managed_emitter.emit_managed(model, out_dir)
    files = {}
    for root, _, names in os.walk(out_dir):
        for name in names:
            path = os.path.join(root, name)
            with open(path, encoding="utf-8") as f:
                files[os.path.relpath(path, out_dir)] = f.read()
    return files


class Generated:
    """One emission into a temporary directory, shared by the tests of a case."""
    _files = None

    @classmethod
    def files(cls):
        if cls._files is None:
            with tempfile.TemporaryDirectory() as d:
                cls._files = emit(MODEL, d)
        return cls._files


# Interop class -> the Python name of its type, which names its file.
READABLE = {t["entry_class" if "entry_class" in t else "interop_class"]: t["name"]
            for t in MODEL.classes + MODEL.values + MODEL.enums}


def text_of(interop_class):
    namespace, _, cls = interop_class.rpartition(".")
    rel = os.path.join(*[p[len("WrpNs_"):] for p in namespace.split(".")],
                       READABLE[interop_class].replace(".", "+") + ".cs")
    text = Generated.files()[rel]
    assert "namespace " + namespace + "\n" in text, rel
    assert "public static unsafe class " + cls + "\n" in text, rel
    return text


def signatures(text):
    """Entry name -> (return type, wire parameter list)."""
    found = {}
    for ret, name, params in ENTRY.findall(text):
        assert name not in found, "entry %s appears twice" % name
        found[name] = (ret, params)
    return found


def entry_body(text, name):
    start = text.index(" " + name + "(")
    end = text.find("[UnmanagedCallersOnly]", start)
    return text[start:end if end >= 0 else len(text)]


class LayoutTest(unittest.TestCase):
    def test_one_file_per_interop_class(self):
        self.assertEqual(len(Generated.files()), len(MODEL.classes) + len(MODEL.values) + len(MODEL.enums))

    def test_every_class_has_exactly_its_entries_in_table_order(self):
        for owner in MODEL.classes + MODEL.values:
            with self.subTest(owner["name"]):
                names = [n for _, n, _ in ENTRY.findall(text_of(owner["entry_class"]))]
                self.assertEqual(names, owner["entries"])

    def test_enum_accessors_follow_the_members(self):
        total = 0
        for enum in MODEL.enums:
            with self.subTest(enum["name"]):
                found = signatures(text_of(enum["interop_class"]))
                self.assertEqual(list(found), [m["accessor"] for m in enum["members"]])
                self.assertTrue(all(sig == ("int", "") for sig in found.values()))
                total += len(found)
        self.assertEqual(total, 951)

    def test_no_reflection(self):
        for rel, text in Generated.files().items():
            for banned in ("System.Reflection", "typeof(", "GetMethod(", "Activator."):
                self.assertNotIn(banned, text, rel)

    def test_every_class_entry_drains_and_reports(self):
        for owner in MODEL.classes + MODEL.values:
            text = text_of(owner["entry_class"])
            for name in owner["entries"]:
                body = entry_body(text, name)
                with self.subTest(entry=owner["name"] + "." + name):
                    self.assertIn("PendingReleases.DrainIfAny();", body)
                    self.assertIn("ProxyErrors.Report(", body)

    def test_generation_is_deterministic(self):
        with tempfile.TemporaryDirectory() as d:
            again = emit(api_model.load(), d)
        self.assertEqual(again, Generated.files())


class WireSignatureTest(unittest.TestCase):
    """Representative entries against the wire contract of generator/WIRE.md."""

    def sig(self, owner, entry):
        model_owner = MODEL.class_by_name.get(owner) or MODEL.value_by_name[owner]
        return signatures(text_of(model_owner["entry_class"]))[entry]

    def test_value_result_goes_through_a_last_record_pointer(self):
        self.assertEqual(self.sig("Bitmap", "call_000_GetPixel"),
                         ("void", "IntPtr __self, int x, int y, ColorValue* __result"))

    def test_enum_parameter_is_an_int_cast_to_the_enum(self):
        self.assertEqual(self.sig("Bitmap", "ctor_005_Bitmap"), ("IntPtr", "int width, int height, int format"))
        body = entry_body(text_of(MODEL.class_by_name["Bitmap"]["entry_class"]), "ctor_005_Bitmap")
        self.assertIn("(global::System.Drawing.Imaging.PixelFormat)format", body)

    def test_enum_result_is_an_int(self):
        self.assertEqual(self.sig("Graphics", "get_PageUnit"), ("int", "IntPtr __self"))

    def test_ref_parameter_takes_value_and_output_address(self):
        self.assertEqual(self.sig("Image", "call_000_GetBounds"),
                         ("void", "IntPtr __self, int page_unit, int* page_unit__out, RectangleFValue* __result"))
        body = entry_body(text_of(MODEL.class_by_name["Image"]["entry_class"]), "call_000_GetBounds")
        self.assertIn("GetBounds(ref page_unit__v)", body)
        self.assertIn("*page_unit__out = (int)page_unit__v;", body)

    def test_scalar_and_string_forms(self):
        self.assertEqual(self.sig("Bitmap", "call_000_SetResolution"), ("void", "IntPtr __self, float x_dpi, float y_dpi"))
        self.assertEqual(self.sig("Bitmap", "ctor_001_Bitmap"), ("IntPtr", "StringArg* filename, byte use_icm"))
        body = entry_body(text_of(MODEL.class_by_name["Bitmap"]["entry_class"]), "ctor_001_Bitmap")
        self.assertIn("use_icm != 0", body)

    def test_is_assignable_takes_a_record_only_for_interfaces(self):
        self.assertEqual(self.sig("IDeviceContext", "btp_IsAssignableTo"), ("byte", "InstanceArg* arg"))
        self.assertEqual(self.sig("CharacterRange", "btp_IsAssignableTo"), ("byte", "IntPtr handle"))
        self.assertEqual(self.sig("Bitmap", "btp_IsAssignableTo"), ("byte", "IntPtr handle"))

    def test_static_accessors(self):
        self.assertEqual(self.sig("Brushes", "getsa_AliceBlue"), ("IntPtr", ""))
        self.assertEqual(self.sig("Color", "getsa_AliceBlue"), ("void", "ColorValue* __result"))

    def test_object_results_are_python_references(self):
        self.assertEqual(self.sig("Image", "get_Tag"), ("IntPtr", "IntPtr __self"))
        self.assertEqual(self.sig("Image", "set_Tag"), ("void", "IntPtr __self, VariantArg* value"))
        self.assertIn("ObjectResults.From(", entry_body(text_of(MODEL.class_by_name["Image"]["entry_class"]), "get_Tag"))

    def test_value_type_instance_entry_takes_its_record_and_writes_back(self):
        self.assertEqual(self.sig("Point", "call_000_Offset"), ("void", "PointValue* __self, int dx, int dy"))
        body = entry_body(text_of(MODEL.value_by_name["Point"]["entry_class"]), "call_000_Offset")
        self.assertIn("*__self = PointValue.From(__self_value);", body)

    def test_value_type_static_entry_has_no_self(self):
        self.assertEqual(self.sig("Rectangle", "call_002_Inflate"),
                         ("void", "RectangleValue* rect, int x, int y, RectangleValue* __result"))

    def test_managed_struct_members_work_on_the_boxed_value(self):
        body = entry_body(text_of(MODEL.class_by_name["CharacterRange"]["entry_class"]), "set_First")
        self.assertIn("Unsafe.Unbox<global::System.Drawing.CharacterRange>(InstanceHandles.Get(__self)).First = value;", body)


class DescriptionCasesTest(unittest.TestCase):
    """How the emitter treats the rarer cases of the description, on edited copies of it."""

    def test_unmatched_trial_with_its_own_entry_refuses_with_the_reason(self):
        model = copy.deepcopy(MODEL)
        trial = model.class_by_name["Bitmap"]["methods"][-1]["trials"][0]
        trial.update(unmatched=True, reason="no such overload here")
        text = managed_emitter.ManagedEmitter(model).class_entries(model.class_by_name["Bitmap"])[trial["entry"]]
        self.assertIn('throw new NotSupportedException("no such overload here");', text)

    def test_an_entry_without_a_source_fails_generation(self):
        model = copy.deepcopy(MODEL)
        model.class_by_name["Bitmap"]["entries"].insert(0, "call_000_Missing")
        with tempfile.TemporaryDirectory() as d, self.assertRaisesRegex(ValueError, "call_000_Missing"):
            managed_emitter.emit_managed(model, d)

    def test_stale_generated_files_go_and_foreign_files_stay(self):
        with tempfile.TemporaryDirectory() as d:
            stale = os.path.join(d, "System", "WrpCs_Gone_00000000.cs")
            foreign = os.path.join(d, "Handwritten.cs")
            os.makedirs(os.path.dirname(stale))
            with open(stale, "w") as f:
                f.write(managed_emitter.HEADER + "\n")
            with open(foreign, "w") as f:
                f.write("// kept\n")
            managed_emitter.emit_managed(MODEL, d)
            self.assertFalse(os.path.exists(stale))
            self.assertTrue(os.path.exists(foreign))


if __name__ == "__main__":
    unittest.main()
