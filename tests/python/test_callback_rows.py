"""The rows of the iteration, containers, lists, sequences and generic callback tables, called from managed code.

A probe entry in the probe assembly calls each row the way the collection protocols do and reports its result,
what it made, and the Python exception it left. All scenarios run in one fresh interpreter that loads the probe.
"""
import ast

import pytest

from test_managed_drawing import PROBE_ENV

SCENARIOS = r'''
import orvane.pyfigura as f, callback_probe as cp
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
    if isinstance(value, bytearray):
        return ("bytearray", bytes(value))
    if isinstance(value, list):
        return [show(v) for v in value]
    if isinstance(value, (tuple, int, float, str, bytes)) or value is None:
        return value
    return type(value).__name__

def run(op, target, item=None, index=0):
    status, result, error = cp.row(op, target, item, index)
    return (status, show(result), type(error).__name__ if error else None, str(error) if error else None)

out = {}
base = [1, "two", 3.5]
L = list(base)
out["sizes"] = [run(op, L)[0] for op in ("list_size", "list_size64", "seq_size", "seq_size64", "size")]
out["size_of_dict"] = run("size", {"a": 1, "b": 2})
out["list_size_of_tuple"] = run("list_size", (1,))
out["pop_past_end"] = run("pop", L, index=3) + (list(L),)
out["pop_last"] = run("pop", L, index=-1) + (list(L),)
out["clear"] = run("clear", L) + (list(L),)

L = list(base)
out["get"] = run("get", L, index=1)
out["get_negative"] = run("get", L, index=-1)
out["get_past_end"] = run("get", L, index=3)
out["get_unknown"] = run("get", [object()], index=0)
out["set"] = run("set", L, "new", 0) + (list(L),)
out["set_past_end"] = run("set", L, "x", 5) + (list(L),)
out["append"] = run("append", L, "tail") + (list(L),)
out["insert_far"] = run("insert", L, "head", -100) + (list(L),)
out["remove"] = run("remove", L, "tail") + (list(L),)
out["remove_missing"] = run("remove", L, "zzz") + (list(L),)
out["remove_missing_caught"] = run("caught:remove", L, "zzz")
out["remove_grumpy"] = run("remove", Grumpy([1]), 1)
out["remove_grumpy_caught"] = run("caught:remove", Grumpy([1]), 1)
try:
    cp.row("remove", Grumpy([1]), 1, raising=True)
    out["remove_grumpy_raised"] = None
except Boom as e:
    out["remove_grumpy_raised"] = ("Boom", str(e))
out["contains"] = [run("contains", L, x)[0] for x in ("two", 3.5, "zzz")]
out["index"] = [run("index", L, x)[0] for x in ("head", 3.5, "zzz")]

out["new_list"] = run("new_list", None, index=3)
out["new_list64"] = run("new_list64", None, index=2)
out["new_list_empty"] = run("new_list", None, index=0)
out["char"] = [run("char", c) for c in ("a", "\u20ac", 5)]
out["iter"] = run("iter", [1])
out["iter_refused"] = run("iter", 5)
out["iterate"] = run("iterate", (1, "two", None))
out["iterate_generator_fails"] = run("iterate", ticking())
out["iterate_unknown_item"] = run("iterate", [object()])
out["wrap"] = [run(op, None)[1] for op in ("wrap_ilist", "wrap_arrlist", "wrap_array")]

T = (1, "t", None, f.Bitmap(1, 1))
out["seq_get"] = [run("seq_get", T, index=i) for i in range(4)]
out["seq_get_past_end"] = run("seq_get", T, index=4)
out["seq_get_of_str"] = run("seq_get", "abc", index=2)
out["seq_contains"] = [run("seq_contains", T, x)[0] for x in ("t", None, 7)]
out["seq_contains_null"] = run("seq_contains_null", T)
out["seq_index"] = [run("seq_index", T, x)[0] for x in (1, None, 7)]
out["seq_index_range"] = run("seq_index", range(0, 2**33, 2**31), 2**32)

samples = {0: b"ab", 1: f.CharacterRange(2, 3), 3: imaging.ColorMap(), 4: imaging.EncoderParameter(imaging.Encoder.QUALITY, 5),
           7: printing.PaperSize("Custom", 100, 200), 8: printing.PaperSource(), 9: printing.PrinterResolution(),
           12: -7, 13: 2**31 - 1, 14: -2**63, 15: 0.5, 17: "s\U0001F600"}
generic = {}
for kind, sample in samples.items():
    for half in (0, 18):
        target = [sample] if half == 0 else (sample,)
        generic[kind + half] = (run("generic:%d" % (kind + half), target), run("generic:%d" % (kind + half), target, index=1),
                                run("generic:%d" % (kind + half), [[]] if half == 0 else ([],)))
out["generic"] = generic
out["generic_none"] = [run("generic:0", [None]), run("generic:17", [None])]
out["generic_int16_overflow"] = run("generic:12", [40000])
out["generic_bytearray_seq"] = run("generic:18", [bytearray(b"xyz")])
del T, samples, generic, L
import gc; gc.collect()
out["live_handles"] = cp.live_handles()
out["wire_layout_mismatches"] = cp.wire_layout_mismatches()
print(repr(out))
'''


@pytest.fixture(scope="module")
def rows():
    from conftest import run_python
    run = run_python(SCENARIOS, env=PROBE_ENV)
    assert run.returncode == 0, run
    return ast.literal_eval(run.stdout.decode().strip().splitlines()[-1])


class TestContainers:
    def test_the_five_sizes_count_the_list(self, rows):
        assert rows["sizes"] == [3, 3, 3, 3, 3]
        assert rows["size_of_dict"][0] == 2

    def test_list_size_of_a_non_list_fails(self, rows):
        assert rows["list_size_of_tuple"][:3] == (-1, None, "SystemError")

    def test_pop_past_the_end_is_an_index_miss(self, rows):
        assert rows["pop_past_end"] == (-2, None, "IndexError", "pop index out of range", [1, "two", 3.5])

    def test_pop_and_clear_change_the_list(self, rows):
        assert rows["pop_last"] == (0, None, None, None, [1, "two"])
        assert rows["clear"] == (0, None, None, None, [])

    def test_new_lists_are_filled_through_raw_stores(self, rows):
        assert rows["new_list"][:2] == (0, [0, 10, 20])
        assert rows["new_list64"][:2] == (0, [0, 10])
        assert rows["new_list_empty"][:2] == (0, [])

    def test_one_character_string_for_char(self, rows):
        assert [r[:2] for r in rows["char"][:2]] == [(1, 1), (1, 1)]
        assert rows["char"][2] == (0, None, "TypeError", "can't build Char from 'int'")

    def test_iterator_of_an_iterable_and_refusal(self, rows):
        assert rows["iter"][:3] == (0, "list_iterator", None)
        assert rows["iter_refused"] == (-1, None, "TypeError", "'int' object is not iterable")


class TestIteration:
    def test_items_come_with_their_references_until_exhausted(self, rows):
        assert rows["iterate"] == (1, [1, "two", None], None, None)

    def test_a_raising_iterator_reports_failure(self, rows):
        assert rows["iterate_generator_fails"] == (2, None, "Boom", "third item broke")

    def test_an_item_without_variant_fails(self, rows):
        assert rows["iterate_unknown_item"] == (2, None, "TypeError", "unknown variant type")


class TestLists:
    def test_get_types_the_item(self, rows):
        assert rows["get"] == (0, [3, "two"], None, None)
        assert rows["get_negative"][2] == "IndexError"  # PyList_GetItem takes no negative index

    def test_get_past_the_end_is_an_index_miss(self, rows):
        assert rows["get_past_end"] == (-2, None, "IndexError", "list index out of range")

    def test_get_of_an_unclassifiable_item_fails(self, rows):
        assert rows["get_unknown"] == (-1, None, "TypeError", "unknown variant type")

    def test_set_replaces_in_place_and_misses_past_the_end(self, rows):
        assert rows["set"] == (0, None, None, None, ["new", "two", 3.5])
        assert rows["set_past_end"] == (-2, None, "IndexError", "list assignment index out of range",
                                        ["new", "two", 3.5])

    def test_append_gives_the_new_size_and_insert_clamps(self, rows):
        assert rows["append"] == (4, None, None, None, ["new", "two", 3.5, "tail"])
        assert rows["insert_far"] == (0, None, None, None, ["head", "new", "two", 3.5, "tail"])

    def test_remove_and_its_value_error(self, rows):
        assert rows["remove"][0] == 0 and rows["remove"][4] == ["head", "new", "two", 3.5]
        assert rows["remove_missing"][:4] == (-1, None, "ValueError", "list.remove(x): x not in list")

    def test_contains_and_index_read_a_value_error_as_not_found(self, rows):
        assert rows["contains"] == [1, 1, 0]
        assert rows["index"] == [0, 3, -1]


    def test_wrappers_of_the_exact_interop_types(self, rows):
        assert rows["wrap"] == ["_IListWrapper", "_ArrListWrapper", "_ArrayWrapper"]


class TestCallbackExceptions:
    def test_exception_left_pending_reaches_python_as_itself(self, rows):
        assert rows["remove_grumpy"] == (-1, None, "Boom", "no removing 1")
        assert rows["remove_grumpy_raised"] == ("Boom", "no removing 1")

    def test_exception_caught_and_cleared_comes_back_inside_the_proxy_text(self, rows):
        status, _, kind, text = rows["remove_grumpy_caught"]
        assert kind == "RuntimeError"
        assert text.startswith("Proxy error(Orvane.WrpGen.Interop.PythonException): Traceback (most recent call last):")
        assert 'File "<string>", line 10, in remove\n' in text
        assert text.endswith("Boom: no removing 1\n")
        assert rows["remove_missing_caught"][3] == (
            "Proxy error(Orvane.WrpGen.Interop.PythonException): ValueError: list.remove(x): x not in list\n")


class TestSequences:
    def test_get_hands_over_typed_items(self, rows):
        assert [r[1] for r in rows["seq_get"]] == [[6, 1], [3, "t"], [0, None], [1, "Bitmap"]]

    def test_get_past_the_end_is_an_index_miss(self, rows):
        assert rows["seq_get_past_end"] == (-2, None, "IndexError", "tuple index out of range")
        assert rows["seq_get_of_str"][1] == [3, "c"]

    def test_search_by_equality(self, rows):
        assert rows["seq_contains"] == [1, 1, 0]
        assert rows["seq_index"] == [0, 2, -1]

    def test_null_item_is_an_index_error(self, rows):
        assert rows["seq_contains_null"] == (-1, None, "IndexError", "item is null")

    def test_any_sequence_type_is_searched(self, rows):
        assert rows["seq_index_range"][0] == 2


class TestGenericElements:
    EXPECTED = {0: ("bytearray", b"ab"), 1: "2,3", 3: "ColorMap", 4: "EncoderParameter", 7: "PaperSize",
                8: "PaperSource", 9: "PrinterResolution", 12: -7, 13: 2**31 - 1, 14: -2**63, 15: 0.5,
                17: "s\U0001F600"}

    @pytest.mark.parametrize("kind", sorted(EXPECTED))
    @pytest.mark.parametrize("half", [0, 18], ids=["list", "sequence"])
    def test_element_read_through_its_kind_converter(self, rows, kind, half):
        found, past_end, wrong = rows["generic"][kind + half]
        assert found == (0, self.EXPECTED[kind], None, None)
        assert past_end[0] == -2 and past_end[2] == "IndexError"
        assert wrong[0] == -1 and wrong[2] == "TypeError"

    def test_none_is_the_null_byte_array_and_string(self, rows):
        assert rows["generic_none"] == [(0, None, None, None), (0, None, None, None)]

    def test_conversion_errors_keep_their_type(self, rows):
        assert rows["generic_int16_overflow"][:3] == (-1, None, "OverflowError")

    def test_a_mutable_buffer_in_the_sequence_half(self, rows):
        assert rows["generic_bytearray_seq"] == (0, ("bytearray", b"xyz"), None, None)


def test_no_handle_outlives_its_wrapper(rows):
    assert rows["live_handles"] == 0


def test_the_runtime_lays_out_every_wire_record_as_described(rows):
    assert rows["wire_layout_mismatches"] == 0
