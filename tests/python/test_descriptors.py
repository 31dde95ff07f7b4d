"""Computed static fields, mixed static/instance methods and method objects, through a probe type."""
import gc
import sys
import weakref

import pytest

import descriptor_probe as probe
from descriptor_probe import Probe


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
    for descriptor_type in (type(field), type(Probe.__dict__["m"])):  # made by the module alone
        assert refused(descriptor_type).startswith("cannot create ")
    first = Probe.counter
    assert (Probe.counter, Probe().counter, field.__get__(Probe())) == (first + 1, first + 2, first + 3)
    assert refused(lambda: field.__get__(None, 5)) == "descriptor 'counter' needs a type, not 'int', as arg 2"
    assert Probe.counter == first + 4  # refused before reading
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
    assert Probe.m is Probe.m is Sub.m and repr(Probe.m) == "<extension function m>"
    r, s = Probe(), Sub()
    assert r.m is not r.m and repr(r.m) == f"<extension method m of descriptor_probe.Probe object at {hex(id(r))}>"
    assert repr(s.m).startswith("<extension method m of Sub object at ") and s.m() == "noargs"
    assert calls()["self"] == id(s)
    assert repr(mix) == "<method 'm' of 'descriptor_probe.Probe' objects>"
    assert mix.__doc__ == r.m.__doc__ == "Instance form of m." and Probe.m.__doc__ == "Static form of m."
    assert refused(lambda: mix.__get__(None, 5)) == "descriptor 'm' needs a type, not 'int', as arg 2"
    assert refused(lambda: mix.__get__(5, Probe)) == (
        "descriptor 'm' for 'descriptor_probe.Probe' objects doesn't apply to a 'int' object")


def test_calls_pass_self_args_and_kwargs_by_row_kind_and_noargs_refuses_arguments_after_running(calls):
    r = Probe()
    for call, result, record in [
            (lambda: Probe.m(1, 2, a=3), ("static", (1, 2), {"a": 3}), ("static", None, (1, 2), {"a": 3})),
            (lambda: Probe.k(7), ("static", (7,), None), ("static", None, (7,), None)),  # no METH_STATIC: no self
            (lambda: r.k(1, b=2), ("instance", (1,), {"b": 2}), ("instance", id(r), (1,), {"b": 2})),
            (lambda: r.m(), "noargs", ("noargs", id(r), (), None)),
            (lambda: r.m(1, 2), "m() takes no arguments (2 given)", ("noargs", id(r), (1, 2), None, TypeError)),
            (lambda: r.m(x=1), "m() takes no keyword arguments", ("noargs", id(r), (), {"x": 1}, TypeError)),
            (lambda: r.m(1, x=1), "m() takes no keyword arguments", ("noargs", id(r), (1,), {"x": 1}, TypeError))]:
        try:
            assert call() == result
        except TypeError as e:
            assert str(e) == result
        assert calls() == dict(zip(("function", "self", "args", "kwargs", "pending"), record + (None,)))


def test_equality_and_hash_of_method_objects():
    r, other = Probe(), Probe()
    assert r.m == r.m and not (r.m != r.m) and hash(r.m) == hash(r.m) and len({r.m, r.m, r.k}) == 2
    assert r.m != other.m and not (r.m == other.m) and r.m != r.k and r.m != Probe.m
    assert r.m.__eq__(5) is NotImplemented and r.m.__ne__(r.m) is False and (r.m == 5) is False
    assert refused(lambda: r.m < r.m).startswith("'<' not supported")


def test_garbage_collection_tracks_traverses_and_releases():
    s = Sub()
    assert all(gc.is_tracked(o) for o in (Probe.__dict__["counter"], Probe.__dict__["m"], Probe.m, s.m))
    assert gc.get_referents(Probe.__dict__["counter"]) == [Probe]
    assert gc.get_referents(Probe.__dict__["m"]) == [Probe, Probe.m]
    assert gc.get_referents(Probe.m) == [Probe] and gc.get_referents(s.m) == [Probe, s]
    alive, bound = weakref.ref(s), s.k
    del s
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
    probe.install(b"late")
    assert Probe.late + 1 == Probe.counter  # another field over the counter row
    before = sys.getrefcount(Probe)
    with pytest.raises(ImportError) as caught:  # a failed store drops the descriptor
        probe.install(b"bad\xff")
    assert str(caught.value) == "Type initialization internal error (-1020) <descriptor_probe.Probe,bad\ufffd>"
    assert isinstance(caught.value.__cause__, UnicodeDecodeError)
    del caught
    assert sys.getrefcount(Probe) == before
    with pytest.raises(ImportError) as caught:  # a failed creation: -1020 over the creation error
        probe.install(b"never", True)
    assert isinstance(caught.value.__cause__, RuntimeError) and "never" not in Probe.__dict__
