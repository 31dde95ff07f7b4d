"""Computed static fields, mixed static/instance methods and method objects, through a probe type."""
import gc
import sys
import weakref

import pytest

import descriptor_probe as probe
from descriptor_probe import Probe, Target


class Sub(Probe):
    pass


@pytest.fixture
def calls():
    """Clears the call record; the returned function gives the last row call since then, or None."""
    probe.last_call()
    return probe.last_call


def refused(call):
    with pytest.raises(TypeError) as caught:
        call()
    return str(caught.value)


def test_field_is_computed_on_each_access_through_type_and_instance_and_refuses_assignment():
    field = Probe.__dict__["counter"]
    with pytest.raises(TypeError):
        type(field)()
    first = Probe.counter
    assert (Probe.counter, Probe().counter, probe.reads()) == (first + 1, first + 2, first + 2)
    assert field.__get__(Probe()) == first + 3  # the instance alone
    assert refused(lambda: field.__get__(None, 5)) == "descriptor 'counter' needs a type, not 'int', as arg 2"
    assert probe.reads() == first + 3  # refused before reading
    assert Probe.origin == Probe().origin == ("null", "closure of origin")  # the getter's object and row closure
    with pytest.raises(ValueError, match="^getter failed$"):  # not an AttributeError that getattr would swallow
        getattr(Probe(), "broken", None)
    assert repr(field) == "<attribute 'counter' of 'descriptor_probe.Probe' objects>"
    with pytest.raises(TypeError):
        Probe.counter = 1
    with pytest.raises(AttributeError):
        Probe().counter = 1
    assert Probe.__dict__["counter"] is field


def test_mix_descriptor_gives_the_static_object_on_the_type_and_new_bound_objects_on_instances(calls):
    mix = Probe.__dict__["m"]
    with pytest.raises(TypeError):
        type(mix)()
    assert Probe.m is Probe.m is Sub.m and repr(Probe.m) == "<extension function m>"
    r, s = Probe(), Sub()
    assert r.m is not r.m and repr(r.m) == f"<extension method m of descriptor_probe.Probe object at {hex(id(r))}>"
    assert repr(s.m).startswith("<extension method m of Sub object at ") and s.m() == "noargs"
    assert calls()["self"] == id(s)
    assert repr(mix) == "<method 'm' of 'descriptor_probe.Probe' objects>"
    assert mix.__doc__ == r.m.__doc__ == "Instance form of m." and Probe.m.__doc__ == "Static form of m."
    assert refused(lambda: mix.__get__(None, 5)) == "descriptor 'm' needs a type, not 'int', as arg 2"
    for instance, kind in [(5, "int"), (Target, "type")]:
        assert refused(lambda: mix.__get__(instance, Probe)) == (
            f"descriptor 'm' for 'descriptor_probe.Probe' objects doesn't apply to a '{kind}' object")


def test_calls_pass_self_args_and_kwargs_by_row_kind_and_noargs_refuses_arguments_after_running(calls):
    r = Probe()
    for call, result, record in [
            (lambda: Probe.m(1, 2, a=3), ("static", (1, 2), {"a": 3}), ("static", None, (1, 2), {"a": 3})),
            (lambda: Probe.k(7), ("static", (7,), None), ("static", None, (7,), None)),  # no METH_STATIC: no self
            (lambda: type(r).m("x"), ("static", ("x",), None), ("static", None, ("x",), None)),
            (lambda: r.k(1, b=2), ("instance", (1,), {"b": 2}), ("instance", id(r), (1,), {"b": 2})),
            (lambda: r.m(), "noargs", ("noargs", id(r), (), None)),
            (lambda: probe.make_method("instance_k")(3), ("instance", (3,), None), ("instance", None, (3,), None)),
            (lambda: r.m(1, 2), "m() takes no arguments (2 given)", ("noargs", id(r), (1, 2), None, TypeError)),
            (lambda: r.m(x=1), "m() takes no keyword arguments", ("noargs", id(r), (), {"x": 1}, TypeError)),
            (lambda: r.m(1, x=1), "m() takes no keyword arguments", ("noargs", id(r), (1,), {"x": 1}, TypeError))]:
        try:
            assert call() == result
        except TypeError as e:
            assert str(e) == result
        assert calls() == dict(zip(("function", "self", "args", "kwargs", "pending"), record + (None,)))
    assert repr(probe.make_method("instance_k")) == "<extension function k>"
    assert refused(lambda: probe.make_method("long_noargs", r)(0)) == (
        "n" * 200 + "() takes no arguments (1 given)")  # names are cut at 200 characters


def test_equality_and_hash_of_method_objects():
    r, other = Probe(), Probe()
    assert r.m == r.m and not (r.m != r.m) and hash(r.m) == hash(r.m) and len({r.m, r.m, r.k}) == 2
    alias = probe.make_method("alias_k", r)  # the same function from another row
    assert alias == r.k and hash(alias) == hash(r.k)
    assert r.m != other.m and not (r.m == other.m) and r.m != r.k and r.m != Probe.m
    assert r.m.__eq__(5) is NotImplemented and r.m.__ne__(r.m) is False and (r.m == 5) is False
    with pytest.raises(TypeError):
        r.m < r.m


def test_garbage_collection_tracks_traverses_and_releases():
    r = Probe()
    assert all(gc.is_tracked(o) for o in (Probe.__dict__["counter"], Probe.__dict__["m"], Probe.m, r.m))
    assert gc.get_referents(Probe.__dict__["counter"]) == [Probe]
    assert gc.get_referents(Probe.__dict__["m"]) == [Probe, Probe.m]
    assert gc.get_referents(Probe.m) == [Probe] and gc.get_referents(r.m) == [Probe, r]
    alive, bound = weakref.ref(r), r.k
    del r
    assert alive() is not None and bound(1)[0] == "instance"  # the method object keeps self alive
    reference = weakref.ref(bound)
    del bound
    assert alive() is None and reference() is None
    s = Sub()
    s.keep, alive = s.m, weakref.ref(s)  # a cycle through a method object
    del s
    assert gc.collect() and alive() is None


def test_calls_and_accesses_leave_reference_counts_unchanged(calls):
    r, argument, static = Probe(), object(), Probe.m
    counts = []
    for repeat in (20, 2000):  # the first round warms caches and the call record
        for _ in range(repeat):
            r.m(), r.k(argument, a=argument), Probe.m(argument, a=argument), Probe.counter, r.m == r.m, hash(r.m)
            with pytest.raises(TypeError):
                r.m(argument)
            with pytest.raises(ValueError):
                Probe.broken
        calls()
        counts.append([sys.getrefcount(obj) for obj in (r, Probe, argument, static)])
    assert counts[0] == counts[1]


def test_installing_class_attributes_late_and_failing_to():
    probe.install(b"late", "field")
    reads = probe.reads()
    assert Target.late == reads + 1
    before = sys.getrefcount(Target)
    with pytest.raises(ImportError) as caught:  # a failed store drops the descriptor
        probe.install(b"bad\xff", "field")
    assert str(caught.value) == "Type initialization internal error (-1020) <descriptor_probe.Target,bad\ufffd>"
    assert isinstance(caught.value.__cause__, UnicodeDecodeError)
    del caught
    assert sys.getrefcount(Target) == before
    with pytest.raises(ImportError) as caught:  # a failed creation: -1020 over the creation error
        probe.install(b"never", "failed")
    assert isinstance(caught.value.__cause__, RuntimeError) and "never" not in Target.__dict__
