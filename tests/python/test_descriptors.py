"""Computed static fields, mixed static/instance methods and method objects, through a probe type."""

import gc
import sys
import weakref

import pytest

import descriptor_probe as probe
from descriptor_probe import Probe, Target

MASK = (1 << 64) - 1


def signed(value):
    value &= MASK
    return value - (1 << 64) if value >> 63 else value


def pointer_hash(address):
    """The interpreter's hash of an address: rotated right by 4 bits, -1 taken as -2."""
    value = signed((address >> 4) | (address << 60))
    return -2 if value == -1 else value


def method_hash(function_address, self_address):
    value = signed(pointer_hash(function_address) ^ pointer_hash(self_address))
    return -2 if value == -1 else value


class Sub(Probe):
    pass


@pytest.fixture
def calls():
    """Clears the call record; the returned function gives the last row call since then, or None."""
    probe.last_call()
    return probe.last_call


class TestTypes:
    @pytest.mark.parametrize("obtain, name", [
        (lambda: Probe.__dict__["counter"], "orvane.pyfigura._FieldDescrType"),
        (lambda: Probe.__dict__["m"], "orvane.pyfigura._MixMethodDescrType"),
        (lambda: Probe().m, "orvane.pyfigura._MethodObjectType"),
        (lambda: Probe.m, "orvane.pyfigura._MethodObjectType"),
    ])
    def test_names(self, obtain, name):
        kind = type(obtain())
        assert f"{kind.__module__}.{kind.__qualname__}" == name

    @pytest.mark.parametrize("name", ["counter", "m"])
    def test_descriptor_types_cannot_be_instantiated(self, name):
        with pytest.raises(TypeError):
            type(Probe.__dict__[name])()


class TestFieldDescriptor:
    def test_computed_on_each_access_through_type_and_instance(self):
        first = Probe.counter
        assert Probe.counter == first + 1
        assert Probe().counter == first + 2
        assert probe.reads() == first + 2

    def test_getter_gets_a_null_object_and_the_row_closure(self):
        assert Probe.origin == ("null", "closure of origin")
        assert Probe().origin == ("null", "closure of origin")

    def test_getter_failure_propagates(self):
        with pytest.raises(ValueError, match="^getter failed$"):
            Probe.broken
        with pytest.raises(ValueError, match="^getter failed$"):
            getattr(Probe(), "broken", None)

    def test_repr(self):
        assert repr(Probe.__dict__["counter"]) == "<attribute 'counter' of 'descriptor_probe.Probe' objects>"

    @pytest.mark.parametrize("name, doc", [
        ("counter", "Number of reads so far."), ("origin", None), ("broken", None)])
    def test_doc_is_the_row_doc_or_none(self, name, doc):
        assert Probe.__dict__[name].__doc__ == doc

    def test_get_with_a_non_type_as_arg_2(self):
        descriptor = Probe.__dict__["counter"]
        reads = probe.reads()
        with pytest.raises(TypeError) as caught:
            descriptor.__get__(None, 5)
        assert str(caught.value) == "descriptor 'counter' needs a type, not 'int', as arg 2"
        with pytest.raises(TypeError, match="^descriptor 'counter' needs a type, not 'str', as arg 2$"):
            descriptor.__get__(Probe(), "Probe")
        assert probe.reads() == reads

    def test_get_with_the_instance_alone_reads_the_value(self):
        reads = probe.reads()
        assert Probe.__dict__["counter"].__get__(Probe()) == reads + 1

    def test_assignment_is_refused_on_the_type_and_on_an_instance(self):
        descriptor = Probe.__dict__["counter"]
        with pytest.raises(TypeError):
            Probe.counter = 1
        with pytest.raises(AttributeError):
            Probe().counter = 1
        assert Probe.__dict__["counter"] is descriptor and Probe.counter != 1


class TestMixDescriptor:
    def test_type_gives_the_one_static_method_object(self):
        assert Probe.m is Probe.m
        assert Sub.m is Probe.m
        assert repr(Probe.m) == "<extension function m>"

    def test_instance_gives_a_new_bound_method_object(self):
        r = Probe()
        first, second = r.m, r.m
        assert first is not second
        assert repr(first) == f"<extension method m of descriptor_probe.Probe object at {hex(id(r))}>"

    def test_subtype_instance_is_accepted(self, calls):
        s = Sub()
        assert repr(s.m).startswith("<extension method m of Sub object at ")
        assert s.m() == "noargs"
        assert calls()["self"] == id(s)

    def test_repr(self):
        assert repr(Probe.__dict__["m"]) == "<method 'm' of 'descriptor_probe.Probe' objects>"

    def test_doc_comes_from_the_instance_row(self):
        assert Probe.__dict__["m"].__doc__ == "Instance form of m."
        assert Probe.__dict__["k"].__doc__ is None

    def test_get_with_a_non_type_as_arg_2(self):
        with pytest.raises(TypeError) as caught:
            Probe.__dict__["m"].__get__(None, 5)
        assert str(caught.value) == "descriptor 'm' needs a type, not 'int', as arg 2"

    @pytest.mark.parametrize("instance, kind", [(5, "int"), (Target, "type"), ("s", "str")])
    def test_foreign_instance_is_refused(self, instance, kind):
        with pytest.raises(TypeError) as caught:
            Probe.__dict__["m"].__get__(instance, Probe)
        assert str(caught.value) == (
            f"descriptor 'm' for 'descriptor_probe.Probe' objects doesn't apply to a '{kind}' object")


class TestCalls:
    def test_static_row_through_the_type(self, calls):
        assert Probe.m(1, 2, a=3) == ("static", (1, 2), {"a": 3})
        assert calls() == {"function": "static", "self": None, "args": (1, 2), "kwargs": {"a": 3},
                           "pending": None}

    def test_static_row_without_meth_static_gets_no_self_either(self, calls):
        assert Probe.k(7) == ("static", (7,), None)
        assert calls()["self"] is None

    def test_static_form_from_an_instance_type(self, calls):
        r = Probe()
        assert type(r).m("x") == ("static", ("x",), None)
        assert calls()["self"] is None

    def test_keywords_caller_passes_self_args_and_kwargs(self, calls):
        r = Probe()
        assert r.k(1, b=2) == ("instance", (1,), {"b": 2})
        assert calls() == {"function": "instance", "self": id(r), "args": (1,), "kwargs": {"b": 2},
                           "pending": None}

    def test_noargs_caller_without_arguments(self, calls):
        r = Probe()
        assert r.m() == "noargs"
        assert calls() == {"function": "noargs", "self": id(r), "args": (), "kwargs": None,
                           "pending": None}

    def test_positional_arguments_are_refused_after_the_function_ran(self, calls):
        r = Probe()
        with pytest.raises(TypeError) as caught:
            r.m(1, 2)
        assert str(caught.value) == "m() takes no arguments (2 given)"
        record = calls()
        assert record["function"] == "noargs" and record["self"] == id(r)
        assert record["args"] == (1, 2) and record["pending"] is TypeError

    def test_keyword_arguments_are_refused_after_the_function_ran(self, calls):
        with pytest.raises(TypeError) as caught:
            Probe().m(x=1)
        assert str(caught.value) == "m() takes no keyword arguments"
        record = calls()
        assert (record["args"], record["kwargs"], record["pending"]) == ((), {"x": 1}, TypeError)

    def test_both_kinds_of_arguments_leave_the_keyword_message(self, calls):
        with pytest.raises(TypeError) as caught:
            Probe().m(1, x=1)
        assert str(caught.value) == "m() takes no keyword arguments"
        assert calls()["pending"] is TypeError

    def test_names_in_the_message_are_cut_at_200_characters(self, calls):
        with pytest.raises(TypeError) as caught:
            probe.make_method("long_noargs", Probe())(0)
        assert str(caught.value) == "n" * 200 + "() takes no arguments (1 given)"
        assert calls()["function"] == "noargs"

    def test_method_object_from_a_row_without_self(self, calls):
        function = probe.make_method("instance_k")
        assert repr(function) == "<extension function k>"
        assert function(3) == ("instance", (3,), None)
        assert calls()["self"] is None


class TestEqualityAndHash:
    def test_same_self_and_function_are_equal_with_equal_hashes(self):
        r = Probe()
        assert r.m == r.m and not (r.m != r.m)
        assert hash(r.m) == hash(r.m)
        assert len({r.m, r.m, r.k}) == 2

    def test_same_function_from_another_row_is_equal(self):
        r = Probe()
        alias = probe.make_method("alias_k", r)
        assert alias == r.k and hash(alias) == hash(r.k)

    def test_different_selves_or_functions_are_unequal(self):
        r, other = Probe(), Probe()
        assert r.m != other.m and not (r.m == other.m)
        assert r.m != r.k
        assert r.m != Probe.m

    def test_other_types_and_orderings_are_not_implemented(self):
        r = Probe()
        assert r.m.__eq__(5) is NotImplemented
        assert r.m.__ne__(r.m) is False
        assert (r.m == 5) is False
        with pytest.raises(TypeError):
            r.m < r.m

    def test_hash_rotates_function_and_self_addresses(self):
        addresses = probe.function_addresses()
        r = Probe()
        assert hash(r.m) == method_hash(addresses["instance_m"], id(r))
        assert hash(r.k) == method_hash(addresses["instance_k"], id(r))
        assert hash(Probe.m) == method_hash(addresses["static_m"], 0)


class TestDoc:
    def test_method_object_doc_is_its_row_doc(self):
        r = Probe()
        assert r.m.__doc__ == "Instance form of m."
        assert Probe.m.__doc__ == "Static form of m."
        assert r.k.__doc__ is None and Probe.k.__doc__ is None


class TestGarbageCollection:
    def test_objects_are_tracked(self):
        r = Probe()
        for obj in (Probe.__dict__["counter"], Probe.__dict__["m"], Probe.m, r.m):
            assert gc.is_tracked(obj)

    def test_traverse_visits_owner_static_method_and_self(self):
        r = Probe()
        assert gc.get_referents(Probe.__dict__["counter"]) == [Probe]
        assert gc.get_referents(Probe.__dict__["m"]) == [Probe, Probe.m]
        assert gc.get_referents(Probe.m) == [Probe]
        assert gc.get_referents(r.m) == [Probe, r]

    def test_method_object_keeps_self_alive_and_releases_it(self):
        r = Probe()
        alive = weakref.ref(r)
        bound = r.k
        del r
        assert alive() is not None
        assert bound(1)[0] == "instance"
        del bound
        assert alive() is None

    def test_weak_references_to_method_objects_are_cleared(self):
        bound = Probe().m
        cleared = []
        reference = weakref.ref(bound, cleared.append)
        assert reference() is bound
        del bound
        assert cleared == [reference] and reference() is None

    def test_cycle_through_a_method_object_is_collected(self):
        s = Sub()
        s.keep = s.m
        alive = weakref.ref(s)
        del s
        gc.collect()
        assert alive() is None


class TestReferenceCounts:
    def test_calls_and_accesses_leave_counts_unchanged(self, calls):
        r = Probe()
        argument = object()
        for _ in range(20):  # warm caches and the call record
            r.m(), r.k(argument, a=argument), Probe.m(argument)
        calls()
        static = Probe.m

        def counts():
            return [sys.getrefcount(obj) for obj in (r, Probe, argument, static)]

        before = counts()
        for _ in range(2000):
            r.m()
            r.k(argument, a=argument)
            Probe.m(argument, a=argument)
            Probe.counter
            hash(r.m)
            r.m == r.m
            repr(r.m)
            with pytest.raises(TypeError):
                r.m(argument)
            with pytest.raises(ValueError):
                Probe.broken
        calls()
        assert counts() == before


class TestInstallClassAttribute:
    def test_installed_field_is_readable_at_once(self):
        with pytest.raises(AttributeError):
            Target.late
        probe.install(b"late", "field")
        reads = probe.reads()
        assert Target.late == reads + 1
        assert repr(Target.__dict__["late"]) == "<attribute 'counter' of 'descriptor_probe.Target' objects>"

    def test_installed_mix_descriptor(self):
        probe.install(b"late_m", "mix")
        assert repr(Target.late_m) == "<extension function m>"
        assert gc.get_referents(Target.__dict__["late_m"]) == [Target, Target.late_m]

    def test_store_failure_raises_1020_and_drops_the_descriptor(self):
        before = sys.getrefcount(Target)
        with pytest.raises(ImportError) as caught:
            probe.install(b"bad\xff", "field")
        assert str(caught.value) == "Type initialization internal error (-1020) <descriptor_probe.Target,bad\ufffd>"
        assert isinstance(caught.value.__cause__, UnicodeDecodeError)
        del caught
        assert sys.getrefcount(Target) == before

    def test_failed_creation_raises_1020_over_the_creation_error(self):
        with pytest.raises(ImportError) as caught:
            probe.install(b"never", "failed")
        assert str(caught.value) == "Type initialization internal error (-1020) <descriptor_probe.Target,never>"
        assert isinstance(caught.value.__cause__, RuntimeError)
        assert "never" not in Target.__dict__
