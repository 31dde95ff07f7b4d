"""Iteration over managed enumerables: _IterableWrapper hands out enumerators, _IterWrapper walks them.

The enumerables come from the probe assembly; all cases run in one fresh interpreter that loads it.
"""
import ast

import pytest

import orvane.pyfigura as f
from test_managed_drawing import PROBE_ENV

SCENARIOS = r'''
import sys, orvane.pyfigura as f, collection_probe as cp
I = f._wrpgen._interop
out = {}

def case(name, fn):
    try:
        out[name] = ("ok", fn())
    except Exception as e:
        out[name] = (type(e).__name__, str(e))

def walk(it, steps):
    seen = []
    for _ in range(steps):
        try:
            seen.append(next(it))
        except StopIteration:
            seen.append("<end>")
    return seen

x = cp.make("with-null", I._IterableWrapper)
case("for_loop", lambda: [v for v in x])
case("iterator_type", lambda: type(iter(x)).__name__)
case("fresh_enumerators", lambda: iter(x) is iter(x))
it = iter(x)
case("iter_of_iterator", lambda: (lambda before: (iter(it) is it, sys.getrefcount(it) - before))(sys.getrefcount(it)))
case("end_repeats", lambda: walk(it, 5))
case("single_pass", lambda: (lambda i: (list(i), list(i)))(iter(x)))
case("enumerator_handle", lambda: list(cp.make("enumerator", I._IterWrapper)))
case("failing_walk", lambda: walk(iter(cp.make("failing", I._IterableWrapper)), 3))
lst = cp.make("objects", I._IListWrapper)
lst.extend([1, 2, 3])
def modified():
    i = iter(lst)
    first = next(i)
    lst.append(4)
    return [first, next(i)]
case("modified_during_walk", modified)
case("unbound_item", lambda: list(cp.make("unbound-item", I._IterableWrapper)))
case("set_walk", lambda: sorted(cp.make("set", I._IterableWrapper)))
i1 = iter(x)
i2 = iter(x)
next(i2)
case("compare", lambda: [i1 == i1, i1 == i2, i1 != i2, i1 == 1, x == x, x == cp.make("with-null", I._IterableWrapper)])
case("hash", lambda: hash(i1) == hash(i1))
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


class TestWalk:
    def test_elements_arrive_as_python_objects_null_as_none(self, out):
        assert out["for_loop"] == ok(["a", None, "b"])
        assert out["set_walk"] == ok([1, 2, 3])

    def test_iter_gives_a_new_enumerator_wrapper(self, out):
        assert out["iterator_type"] == ok("_IterWrapper")
        assert out["fresh_enumerators"] == ok(False)

    def test_an_iterator_is_its_own_iterator(self, out):
        assert out["iter_of_iterator"] == ok((True, 0))

    def test_the_end_is_told_again_on_every_next(self, out):
        assert out["end_repeats"] == ok(["a", None, "b", "<end>", "<end>"])

    def test_an_enumerator_is_single_pass(self, out):
        assert out["single_pass"] == ok((["a", None, "b"], []))

    def test_an_enumerator_handed_out_whole_walks(self, out):
        assert out["enumerator_handle"] == ok([1, 2])


class TestFailures:
    def test_a_managed_failure_during_the_walk_reaches_the_script(self, out):
        assert out["failing_walk"] == ("RuntimeError", "Proxy error(System.InvalidOperationException): the walk broke")

    def test_a_collection_modified_during_the_walk(self, out):
        kind, text = out["modified_during_walk"]
        assert kind == "RuntimeError" and text.startswith("Proxy error(System.InvalidOperationException)")

    def test_an_element_of_no_bound_type(self, out):
        assert out["unbound_item"] == ("TypeError", "unknown wrapper type")


class TestIdentity:
    def test_comparison_is_by_handle_and_only_between_the_same_type(self, out):
        assert out["compare"] == ok([True, False, True, False, True, False])
        assert out["hash"] == ok(True)


@pytest.mark.parametrize("name", ["_IterableWrapper", "_IterWrapper"])
def test_scripts_cannot_construct(name):
    with pytest.raises(TypeError, match="^type has no available constructor$"):
        getattr(f._wrpgen._interop, name)()
