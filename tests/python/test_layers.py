"""The source folders form one order of layers: a file includes only its own folder and the folders below it."""
import os
import re
from pathlib import Path

SRC = Path(__file__).resolve().parents[2] / "src"
ORDER = ["common", "host", "marshal", "bridge", "values", "interop", "enums", "module"]
INCLUDE = re.compile(r'^#include "([a-z_]+/|generated_[a-z_]+)', re.M)
# Generated headers: the wire records and callback positions are ground; the generated classes sit on top.
GENERATED_GROUND = {"generated_wire_records", "generated_callback_rows"}
FILE_SCOPE = re.compile(r"^(?!const |constexpr |extern |using |struct |class |enum |template|namespace|return )"
                        r"(?!Py\w*(Def|Methods|Procs|Object) )(?![\w:<>,*& ]*\* const )"
                        r"[A-Za-z_][\w:<>,*& ]*?[\s*&](\w+)(\[[^\]]*\])?\s*(=|;|\{)", re.M)
FUNCTION_STATIC = re.compile(
    r"^\s+static (?!const |constexpr )(?:thread_local )?[\w:<>,*& ]+?[\s*&](\w+)\s*(=|;|\{|\[)", re.M)


def sources():
    """(layer, file name, text) of every source file."""
    for path in sorted(p for p in SRC.rglob("*") if p.is_file()):
        yield path.relative_to(SRC).parts[0], path.name, path.read_text(encoding="utf-8")


def test_includes_go_down_the_layers_only():
    upward = []
    for layer, name, text in sources():
        for target in INCLUDE.findall(text):
            if target.startswith("generated_"):
                target = "common" if target in GENERATED_GROUND else "module"
            if ORDER.index(target.rstrip("/")) > ORDER.index(layer):
                upward.append(f"{layer}/{name} includes {target}")
    assert upward == [] and sorted(os.listdir(SRC)) == sorted(ORDER)


def test_process_wide_state_is_all_listed_in_one_place():
    listed = set(re.findall(r"\w+", (SRC / "common" / "process_state.h").read_text(encoding="utf-8")))
    unlisted = []
    for _, name, text in sources():
        if name.endswith(".cpp"):
            found = [m.group(2) for m in FILE_SCOPE.finditer(text)] + [m[1] for m in FUNCTION_STATIC.finditer(text)]
            unlisted += [f"{name}: {v}" for v in found if v not in listed]
    assert unlisted == []
