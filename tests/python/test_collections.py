"""The read-only collection protocol: _IColWrapper, _RoColBaseWrapper and the collection classes of the surface.

Length and membership are managed; concatenation, repetition and copy are built natively from the walk
of the enumerator and give plain lists. Probe collections run in one fresh interpreter; the surface
classes run here.
"""
import ast

import pytest

import orvane.pyfigura as f
from orvane.pyfigura import design, printing
from test_managed_drawing import PROBE_ENV

SCENARIOS = r'''
import orvane.pyfigura as f, collection_probe as cp
I = f._wrpgen._interop
out = {}

def case(name, fn):
    try:
        out[name] = ("ok", fn())
    except Exception as e:
        out[name] = (type(e).__name__, str(e))

s = cp.make("set", I._IColWrapper)
case("size_and_members", lambda: [len(s), s.length, 2 in s, 2.0 in s, 9 in s, s.contains(3), s.contains("3"), s.count(1), s.count(7)])
case("copy", lambda: (type(s.copy()).__name__, sorted(s.copy())))
case("concat", lambda: [sorted(s + [9])[-1], len(s + (8, 9)), (s + "ab")[-2:], (s + iter([7]))[-1], len(s + range(2))])
case("concat_number", lambda: s + 5)
case("concat_left_list", lambda: [0] + s)
case("repeat", lambda: [len(s * 2), s * 0, s * -3, sorted(2 * s)])
case("no_item_access", lambda: s[0])
case("no_mutation", lambda: s.append(1))
case("unconvertible", lambda: object() in s)
case("compare", lambda: [s == s, s == sorted(s), s != [1]])
e = cp.make("objects", I._IColWrapper)
case("empty", lambda: [e.copy(), e + [1], e * 5, len(e)])
case("claims_more_copy", lambda: cp.make("claims-more", I._IColWrapper).copy())
case("claims_more_concat", lambda: cp.make("claims-more", I._IColWrapper) + [1])
case("claims_more_repeat", lambda: cp.make("claims-more", I._IColWrapper) * 2)
case("claims_fewer_copy", lambda: cp.make("claims-fewer", I._IColWrapper).copy())
case("claims_fewer_repeat", lambda: cp.make("claims-fewer", I._IColWrapper) * 2)
case("claims_fewer_concat", lambda: cp.make("claims-fewer", I._IColWrapper) + iter([1]))
n = cp.make("names", I._RoColBaseWrapper)
case("read_only_base", lambda: [list(n), len(n), n.count("x"), n.copy(), "y" in n, n + ["z"], n * 2])
print(repr(out))
'''


@pytest.fixture(scope="module")
def out():
    from conftest import run_python
    run = run_python(SCENARIOS, env=PROBE_ENV)
    assert run.returncode == 0, run
    return ast.literal_eval(run.stdout.decode().strip().splitlines()[-1])


def ok(value):
    return ("ok", value)


SURPLUS = ("ValueError", "argument must be iterable or sequence")


class TestReadOnlyCollection:
    def test_length_membership_and_counting_are_managed(self, out):
        assert out["size_and_members"] == ok([3, 3, True, True, False, True, False, 1, 0])

    def test_copy_concatenation_and_repetition_give_lists(self, out):
        assert out["copy"] == ok(("list", [1, 2, 3]))
        assert out["concat"] == ok([9, 5, ["a", "b"], 7, 5])
        assert out["repeat"] == ok([6, [], [], [1, 1, 2, 2, 3, 3]])

    def test_an_empty_collection(self, out):
        assert out["empty"] == ok([[], [1], [], 0])

    def test_refusals(self, out):
        assert out["concat_number"] == SURPLUS
        assert out["concat_left_list"][0] == "TypeError"
        assert out["no_item_access"][0] == "TypeError"
        assert out["no_mutation"][0] == "AttributeError"
        assert out["unconvertible"] == ("TypeError", "unknown variant type")

    def test_comparison_is_by_handle_only(self, out):
        assert out["compare"] == ok([True, False, True])

    def test_the_read_only_base(self, out):
        assert out["read_only_base"] == ok([["x", "y", "x"], 3, 2, ["x", "y", "x"], True, ["x", "y", "x", "z"],
                                            ["x", "y", "x", "x", "y", "x"]])


class TestWalkAgainstLength:
    """A collection whose enumerator gives more or fewer elements than its length tells."""

    def test_surplus_is_an_error_everywhere(self, out):
        assert out["claims_fewer_copy"] == SURPLUS
        assert out["claims_fewer_repeat"] == SURPLUS
        assert out["claims_fewer_concat"] == SURPLUS

    def test_shortage_shortens_a_copy_and_fails_a_concatenation(self, out):
        assert out["claims_more_copy"] == ok([0, 1, 2])
        assert out["claims_more_repeat"] == ok([0, 1, 2, 0, 1, 2])
        assert out["claims_more_concat"] == SURPLUS


@pytest.mark.parametrize("name", ["_IColWrapper", "_RoColBaseWrapper"])
def test_scripts_cannot_construct(name):
    with pytest.raises(TypeError, match="^type has no available constructor$"):
        getattr(f._wrpgen._interop, name)()


COLLECTION_CLASSES = [design.CategoryNameCollection, printing.PrinterSettings.StringCollection]


@pytest.fixture(params=COLLECTION_CLASSES, ids=lambda t: t.__name__)
def names(request):
    return request.param(["b", "a", "c", "a"])


class TestSurfaceCollections:
    def test_the_protocol_members_stand_beside_the_own_ones(self, names):
        for member in ("contains", "count", "copy", "length", "copy_to"):
            assert hasattr(names, member)

    def test_category_names_derive_from_the_read_only_base(self):
        assert design.CategoryNameCollection.__base__ is f._wrpgen._interop._RoColBaseWrapper

    def test_iteration_length_and_membership(self, names):
        assert list(names) == ["b", "a", "c", "a"]
        assert (len(names), names.length) == (4, 4)
        assert ("c" in names, "z" in names, names.contains("a")) == (True, False, True)
        assert names.count("a") == 2

    def test_items_by_index_and_slice(self, names):
        assert (names[0], names[3], names[-1], names[-4]) == ("b", "a", "a", "b")
        assert names[1:3] == ["a", "c"]
        assert names[::-2] == ["a", "a"]
        for bad in (4, -5):
            with pytest.raises(IndexError, match="^list index out of range$"):
                names[bad]
        with pytest.raises(TypeError, match="^list indices must be integers or slices, not str$"):
            names["0"]

    def test_copies_are_plain_lists(self, names):
        assert names.copy() == ["b", "a", "c", "a"]
        assert names + ["d"] == ["b", "a", "c", "a", "d"]
        assert names * 2 == ["b", "a", "c", "a"] * 2
        assert type(names.copy()) is list

    def test_the_collection_stays_read_only(self, names):
        with pytest.raises(TypeError):
            names[0] = "x"
        with pytest.raises(TypeError):
            del names[0]


def test_installed_printers_iterate_to_strings():
    printers = printing.PrinterSettings.installed_printers
    assert type(printers) is printing.PrinterSettings.StringCollection
    assert all(type(name) is str for name in printers)
    assert len(printers) == len(list(printers))


def test_paper_sizes_iterate_or_name_the_missing_printer():
    try:
        sizes = printing.PrinterSettings().paper_sizes
    except RuntimeError as error:
        assert str(error).startswith("Proxy error(")
        return
    assert [type(s) for s in sizes] == [printing.PaperSize] * len(sizes)
