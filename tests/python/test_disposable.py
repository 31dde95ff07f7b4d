"""The disposable protocol: `with obj:` disposes the managed object at the end and never hides an exception."""
import ast

import pytest

import orvane.pyfigura as f
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

def disposable(kind="disposable"):
    return cp.make(kind, I._IDisposableWrapper)

def with_block():
    d = disposable()
    with d as entered:
        inside = cp.log(d)
    return (entered is d, inside, cp.log(d))
case("with_block", with_block)

def body_raises():
    d = disposable()
    try:
        with d:
            raise KeyError("body")
    except KeyError as e:
        return (str(e), cp.log(d))
case("body_raises", body_raises)

def exit_twice():
    d = disposable()
    results = [d.__exit__(), d.__exit__(None, None, None, "any", "thing")]
    return (results, cp.log(d), d == d)
case("exit_twice", exit_twice)

def dispose_fails():
    d = disposable("disposable-failing")
    with d:
        raise KeyError("body")
case("dispose_fails", dispose_fails)
case("enter_forms", lambda: disposable().__enter__(1))
print(repr(out))
'''


@pytest.fixture(scope="module")
def out():
    from conftest import run_python
    run = run_python(SCENARIOS, env=PROBE_ENV)
    assert run.returncode == 0, run
    return ast.literal_eval(run.stdout.decode().strip().splitlines()[-1])


class TestWith:
    def test_enter_gives_the_object_and_exit_disposes_once(self, out):
        assert out["with_block"] == ("ok", (True, "disposed 0", "disposed 1"))

    def test_the_body_exception_propagates_after_the_dispose(self, out):
        assert out["body_raises"] == ("ok", ("'body'", "disposed 1"))

    def test_exit_takes_any_arguments_and_disposes_each_time(self, out):
        assert out["exit_twice"] == ("ok", ([None, None], "disposed 2", True))

    def test_a_failing_dispose_replaces_the_body_exception(self, out):
        kind, text = out["dispose_fails"]
        assert kind == "RuntimeError" and text.startswith("Proxy error(System.ObjectDisposedException)")

    def test_enter_takes_no_arguments(self, out):
        assert out["enter_forms"][0] == "TypeError"


def test_scripts_cannot_construct():
    with pytest.raises(TypeError, match="^type has no available constructor$"):
        f._wrpgen._interop._IDisposableWrapper()


def test_methods_are_the_context_pair_and_dispose():
    t = f._wrpgen._interop._IDisposableWrapper
    assert [n for n in ("__enter__", "__exit__", "dispose", "close") if n in t.__dict__] == \
        ["__enter__", "__exit__", "dispose"]
