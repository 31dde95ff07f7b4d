"""Callback rows (iteration, containers, lists, sequences, generic elements) as a probe calls them from managed code."""
import ast
import os

import pytest

from conftest import TEST_ASSETS, run_python


def ok(status, result=None, *after):
    return (status, result, None, None) + after


def error(status, kind, text, *after):
    return (status, None, kind, text) + after


BEFORE, AFTER = [1, "two", 3.5], ["head", "new", "two", 3.5]
WIDTHS = ("List`1[Int32 2147483647, Int64 2147483648, Int32 -2147483648, Int64 -2147483649, "  # the integer row's codes
          "Int64 -9223372036854775808, UInt64 9223372036854775808, UInt64 18446744073709551615]")
ROWS = [  # op, target, item (both evaluated in the child, in order), index; then (status, result, error, text[, list])
    *[(op, "L", "None", 0, ok(3)) for op in ("list_size", "list_size64", "seq_size", "seq_size64", "size")],
    ("size", "{'a': 1, 'b': 2}", "None", 0, ok(2)),
    ("pop", "L", "None", 3, error(-2, "IndexError", "pop index out of range", BEFORE)),
    ("pop", "L", "None", -1, ok(0, None, [1, "two"])),
    ("clear", "L", "None", 0, ok(0, None, [])),
    ("get", "M", "None", 1, ok(0, [3, "two"])),  # the variant kind, then the item
    ("get", "M", "None", 3, error(-2, "IndexError", "list index out of range")),
    ("get", "[[2**31 - 1, 2**31, -2**31, -2**31 - 1, -2**63, 2**63, 2**64 - 1]]", "None", 0, ok(0, [15, WIDTHS])),
    ("set", "M", "'new'", 0, ok(0, None, ["new", "two", 3.5])),
    ("set", "M", "'x'", 5, error(-2, "IndexError", "list assignment index out of range", ["new", "two", 3.5])),
    ("append", "M", "'tail'", 0, ok(4, None, ["new", "two", 3.5, "tail"])),  # the new size
    ("insert", "M", "'head'", -100, ok(0, None, AFTER + ["tail"])),  # clamped to the start
    ("remove", "M", "'tail'", 0, ok(0, None, AFTER)),
    ("remove", "M", "'zzz'", 0, error(-1, "ValueError", "list.remove(x): x not in list", AFTER)),
    ("remove", "Grumpy([1])", "1", 0, error(-1, "Boom", "no removing 1", [1])),  # left pending: reaches Python as is
    *[("contains", "M", item, 0, ok(found)) for item, found in (("'two'", 1), ("3.5", 1), ("'zzz'", 0))],
    *[("index", "M", item, 0, ok(at)) for item, at in (("'head'", 0), ("3.5", 3), ("'zzz'", -1))],  # ValueError: -1
    ("new_list", "None", "None", 3, ok(0, [0, 10, 20])), ("new_list64", "None", "None", 2, ok(0, [0, 10])),
    *[("char", text, "None", 0, ok(1, units)) for text, units in (("'a'", 1), ("'\u20ac'", 1), ("'\U0001F600'", 2))],
    ("char", "5", "None", 0, error(0, "TypeError", "can't build Char from 'int'")),
    ("iter", "[1]", "None", 0, ok(0, "list_iterator")),
    ("iter", "5", "None", 0, error(-1, "TypeError", "'int' object is not iterable")),
    ("iterate", "(1, 'two', None)", "None", 0, ok(1, [1, "two", None])),
    ("iterate", "ticking()", "None", 0, error(2, "Boom", "third item broke")),
    ("iterate", "[object()]", "None", 0, error(2, "TypeError", "unknown variant type")),
    *[(op, "None", "None", 0, ok(0, name)) for op, name in (
        ("wrap_ilist", "_IListWrapper"), ("wrap_arrlist", "_ArrListWrapper"), ("wrap_array", "_ArrayWrapper"))],
    *[("seq_get", "T", "None", i, ok(0, item)) for i, item in enumerate(([6, 1], [3, "t"], [0, None], [1, "Bitmap"]))],
    ("seq_get", "T", "None", 4, error(-2, "IndexError", "tuple index out of range")),
    *[("seq_contains", "T", item, 0, ok(found)) for item, found in (("'t'", 1), ("None", 1), ("7", 0))],
    ("seq_contains_null", "T", "None", 0, error(-1, "IndexError", "item is null")),
    *[("seq_index", "T", item, 0, ok(at)) for item, at in (("1", 0), ("None", 2), ("7", -1))],  # by equality
    ("seq_index", "range(0, 2**33, 2**31)", "2**32", 0, ok(2)),  # any sequence type
    ("generic:17", "[None]", "None", 0, ok(0)),  # the null string
    ("generic:12", "[40000]", "None", 0, error(-1, "OverflowError", "value too big to convert to 'Int16'")),
]
GENERIC = {1: ("f.CharacterRange(2, 3)", "2,3"), 3: ("imaging.ColorMap()", "ColorMap"),
           4: ("imaging.EncoderParameter(imaging.Encoder.QUALITY, 5)", "EncoderParameter"),
           7: ("printing.PaperSize('Custom', 100, 200)", "PaperSize"), 8: ("printing.PaperSource()", "PaperSource"),
           9: ("printing.PrinterResolution()", "PrinterResolution"), 12: ("-7", -7), 13: ("2**31 - 1", 2**31 - 1),
           14: ("-2**63", -2**63), 15: ("0.5", 0.5), 17: ("'s\\U0001F600'", "s\U0001F600")}

CHILD = r'''
import gc, orvane.pyfigura as f, callback_probe as cp, host_probe
from orvane.pyfigura import imaging, printing

class Boom(Exception):
    pass

class Grumpy(list):
    def remove(self, x):
        raise Boom("no removing " + repr(x))

def ticking():
    yield 1
    yield "two"
    raise Boom("third item broke")

def show(value):
    if isinstance(value, list):
        return [show(v) for v in value]
    return value if isinstance(value, (tuple, int, float, str, type(None))) else type(value).__name__

def run(op, target, item=None, index=0):
    status, result, error = cp.row(op, target, item, index)
    return (status, show(result), type(error).__name__ if error else None, str(error) if error else None)

L, M, T = [1, "two", 3.5], [1, "two", 3.5], (1, "t", None, f.Bitmap(1, 1))
out = {"rows": [], "generic": {}}
for op, target, item, index in ROWS:
    target = eval(target)
    changes = op in ("pop", "clear", "set", "append", "insert", "remove")
    out["rows"].append(run(op, target, eval(item), index) + ((show(target),) if changes else ()))
out["caught"] = run("caught:remove", Grumpy([1]), 1)
for kind, sample in GENERIC.items():
    for half, pack in ((0, list), (18, tuple)):
        row = "generic:%d" % (kind + half)
        out["generic"][kind + half] = [run(row, pack([eval(sample)])), run(row, pack([eval(sample)]), index=1),
                                       run(row, pack([[]]))]
del L, M, T
gc.collect()
out["live_handles"], out["wire_layout_mismatches"] = host_probe.live_handles(), cp.wire_layout_mismatches()
print(repr(out))
'''


@pytest.fixture(scope="module")
def out():
    script = f"ROWS = {[row[:4] for row in ROWS]!r}\nGENERIC = {({k: v[0] for k, v in GENERIC.items()})!r}\n" + CHILD
    run = run_python(script, env={"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": os.path.join(TEST_ASSETS, "assemblies")})
    assert run.returncode == 0, run
    return ast.literal_eval(run.stdout.decode().strip().splitlines()[-1])


@pytest.mark.parametrize("number", range(len(ROWS)), ids=[f"{r[0]}-{r[1]}-{r[3]}" for r in ROWS])
def test_row(out, number):
    assert out["rows"][number] == ROWS[number][4]


def test_python_exception_caught_by_managed_code_and_no_handles_left_or_records_amiss(out):
    status, _, kind, text = out["caught"]  # caught and cleared: it comes back in the proxy text
    assert (status, kind) == (-1, "RuntimeError") and text.endswith(", in remove\nBoom: no removing 1\n")
    assert text.startswith("Proxy error(Orvane.WrpGen.Interop.PythonException): Traceback (most recent call last):")
    assert (out["live_handles"], out["wire_layout_mismatches"]) == (0, 0)


@pytest.mark.parametrize("half", [0, 18], ids=["list", "sequence"])
def test_generic_elements_are_read_through_their_kind_converter(out, half):
    for kind, (_, value) in GENERIC.items():
        found, past_end, wrong = out["generic"][kind + half]
        assert found == ok(0, value)
        assert past_end == error(-2, "IndexError", ("list" if half == 0 else "tuple") + " index out of range")
        assert wrong[:3] == (-1, None, "TypeError")
