"""Wrapper objects on the real runtime: hash, repr and equality through managed code, `with`, handle return."""
import os
import re

import pytest

import orvane.pyfigura as f
from conftest import TEST_ASSETS

PROBE_ENV = {"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": os.path.join(TEST_ASSETS, "assemblies")}


def empty(cls):
    return cls.__new__(cls)


class TestPrinting:
    def test_repr_is_the_managed_text(self):
        sf = f.StringFormat()
        assert repr(sf) == "[StringFormat, FormatFlags=0]"
        sf.format_flags = 4
        assert repr(sf) == "[StringFormat, FormatFlags=FitBlackBox]"
        assert str(sf) == repr(sf)

    def test_object_without_override_prints_its_managed_type_name(self):
        assert repr(f.Bitmap(2, 2)) == "System.Drawing.Bitmap"

    @pytest.mark.parametrize("cls, name", [(f.StringFormat, "orvane.pyfigura.StringFormat"),
                                           (f.Bitmap, "orvane.pyfigura.Bitmap")])
    def test_empty_wrapper_prints_the_fallback_text(self, cls, name):
        w = empty(cls)
        match = re.fullmatch(r"<(.+) object at 0x([0-9a-f]+)>", repr(w))
        assert match, repr(w)
        assert match.group(1) == name
        assert int(match.group(2), 16) == id(w)

    def test_managed_failure_in_repr_propagates(self):
        with f.StringFormat() as sf:
            pass
        # ToString of a disposed StringFormat reads its flags from a released native object.
        with pytest.raises(RuntimeError, match=r"^Proxy error\(System.ArgumentException\)"):
            repr(sf)


class TestHash:
    def test_hash_comes_from_the_managed_object(self):
        a = f.Font("DejaVu Sans", 12)
        b = f.Font("DejaVu Sans", 12)
        # Two managed objects that are equal by value hash alike.
        assert a is not b
        assert hash(a) == hash(b)

    def test_wrappers_of_one_managed_object_hash_alike(self):
        holder = f.Bitmap(1, 1)
        sf = f.StringFormat()
        holder.tag = sf
        again = holder.tag
        assert again is not sf
        assert hash(again) == hash(sf)

    def test_distinct_objects_without_value_equality_hash_by_identity(self):
        hashes = {hash(f.StringFormat()) for _ in range(20)}
        assert len(hashes) > 1

    def test_empty_wrapper_hashes_through_the_managed_side(self):
        assert hash(empty(f.StringFormat)) == 0


class TestEquality:
    def test_same_wrapper_is_equal_to_itself(self):
        sf = f.StringFormat()
        assert sf == sf
        assert not (sf != sf)

    def test_equality_asks_the_managed_side(self):
        a, b, c = f.Font("DejaVu Sans", 12), f.Font("DejaVu Sans", 12), f.Font("DejaVu Sans", 13)
        assert a == b and not (a != b)
        assert a != c and not (a == c)

    def test_reference_types_without_equals_compare_by_identity(self):
        a, b = f.StringFormat(), f.StringFormat()
        assert a != b and not (a == b)
        holder = f.Bitmap(1, 1)
        holder.tag = a
        assert holder.tag == a

    @pytest.mark.parametrize("other", [3, "x", None, object()])
    def test_comparison_with_a_non_wrapper_is_false(self, other):
        sf = f.StringFormat()
        assert (sf == other) is False
        assert (sf != other) is True

    def test_a_failing_instance_check_is_raised_not_taken_for_a_match(self):
        class Shifty:
            @property
            def __class__(self):
                raise LookupError("no class today")

        with pytest.raises(LookupError, match="no class today"):
            f.Bitmap(1, 1) == Shifty()

    def test_ordering_is_not_defined(self):
        a, b = f.StringFormat(), f.StringFormat()
        for op in ("<", "<=", ">", ">="):
            with pytest.raises(TypeError, match="not supported between instances of"):
                eval(f"a {op} b")

    def test_base_and_derived_wrappers_compare_through_the_base(self, tmp_path):
        image = empty(f.Image)
        bitmap = empty(f.Bitmap)
        # Both are empty (handle 0): the base side accepts the derived object and the handles match.
        assert image == bitmap and bitmap == image
        path = str(tmp_path / "b.png")
        f.Bitmap(2, 2).save(path)
        loaded = f.Image.from_file(path)
        copy = f.Bitmap(loaded)
        assert loaded == loaded and copy == copy
        assert copy != loaded and loaded != copy

    def test_empty_wrappers_are_equal_to_each_other_not_to_bound_ones(self):
        assert empty(f.StringFormat) == empty(f.StringFormat)
        assert empty(f.StringFormat) != f.StringFormat()


class TestContextManager:
    def test_with_disposes_on_leaving_and_returns_the_object(self):
        sf = f.StringFormat()
        with sf as inside:
            assert inside is sf
            sf.format_flags = 4
            assert sf.format_flags == 4
        with pytest.raises(RuntimeError, match=r"^Proxy error\(System.ArgumentException\)"):
            sf.format_flags

    def test_exception_of_the_block_propagates(self):
        with pytest.raises(KeyError, match="inner"):
            with f.Bitmap(3, 3) as b:
                assert b.width == 3
                raise KeyError("inner")

    def test_object_stays_usable_as_an_object_after_dispose(self):
        with f.Bitmap(3, 3) as b:
            pass
        assert type(b) is f.Bitmap
        assert b == b
        assert isinstance(hash(b), int)
        assert repr(b) == "System.Drawing.Bitmap"
        # Calls still reach the disposed managed object, whose own exception comes back.
        with pytest.raises(RuntimeError, match=r"Parameter is not valid"):
            b.width

    def test_exit_can_be_called_again(self):
        b = f.Bitmap(2, 2)
        assert b.__exit__(None, None, None) is None
        assert b.__exit__(None, None, None) is None

    def test_empty_wrapper_enters_and_leaves(self):
        w = empty(f.StringFormat)
        with w as inside:
            assert inside is w


class TestEmptyWrapper:
    def test_method_call_passes_handle_zero_and_the_managed_error_comes_back(self):
        with pytest.raises(RuntimeError, match=r"^Proxy error\(System.NullReferenceException\)"):
            empty(f.StringFormat).format_flags

    def test_constructor_that_fails_every_trial_leaves_the_wrapper_empty(self):
        b = empty(f.Bitmap)
        with pytest.raises(TypeError):
            b.__init__()
        assert repr(b).startswith("<orvane.pyfigura.Bitmap object at 0x")
        b.__init__(5, 6)
        assert (b.width, b.height) == (5, 6)
        assert repr(b) == "System.Drawing.Bitmap"

    def test_types_cannot_be_subclassed(self):
        with pytest.raises(TypeError):
            type("Mine", (f.StringFormat,), {})


HANDLES = """
import gc, orvane.pyfigura as f, host_probe
live = host_probe.live_handles
def report(tag, value): print(tag, value)
start = live()
objs = [f.StringFormat() for _ in range(500)]
report("made", live() - start)
del objs
report("dropped", live() - start)
b = f.Bitmap(4, 4)
with b:
    pass
report("after-with", live() - start)
del b
report("after-del", live() - start)
for _ in range(50):
    try:
        f.Bitmap()
    except TypeError:
        pass
    try:
        f.Bitmap("no-such-file.png")
    except RuntimeError:
        pass
report("failed-ctors", live() - start)
e = f.StringFormat.__new__(f.StringFormat)
del e
holder = f.Bitmap(2, 2)
holder.tag = f.StringFormat()
results = [holder.tag for _ in range(100)] + [holder.clone() for _ in range(10)]
report("results", live() - start)
del results, holder
gc.collect()
report("end", live() - start)
"""


def test_handles_are_given_back_when_wrappers_die(fresh_python):
    run = fresh_python(HANDLES, env=PROBE_ENV)
    assert run.returncode == 0, run
    counts = dict(line.split() for line in run.stdout.decode().splitlines())
    counts = {k: int(v) for k, v in counts.items()}
    assert counts["made"] == 500
    assert counts["dropped"] == 0
    assert counts["after-with"] == 1  # __exit__ disposes but keeps the handle
    assert counts["after-del"] == 0
    assert counts["failed-ctors"] == 0
    # The holder, and one handle per result wrapper; the tag itself is kept by the managed side alone.
    assert counts["results"] == 1 + 100 + 10
    assert counts["end"] == 0
