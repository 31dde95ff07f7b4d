"""Python's list surface over managed lists: index and slice arithmetic, argument forms, list texts.

Managed lists come from the probe assembly wrapped as _IListWrapper or _ColBaseWrapper; every case runs
in one fresh interpreter that loads the probe, and the tests look at what each case gave or raised.
"""
import ast

import pytest

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

def new(items=(), kind="objects", wrapper=I._IListWrapper):
    x = cp.make(kind, wrapper)
    for item in items:
        x.append(item)
    return x

def after(fn, items=(0, 1, 2, 3, 4, 5), kind="objects"):
    x = new(items, kind)
    result = fn(x)
    return (result, x.copy())

def logged(fn):
    x = new(range(8), "logged")
    fn(x)
    return (cp.log(x), x.copy())

def delete(x, key):
    del x[key]

def assign(x, key, value):
    x[key] = value

# reading
x = new(["a", "b", "c", "d", "e"])
case("read", lambda: [x[0], x[4], x[-1], x[-5], x[True]])
case("read_past_end", lambda: x[5])
case("read_before_start", lambda: x[-6])
case("read_empty_last", lambda: new()[-1])
case("sq_item_direct", lambda: type(x).__getitem__(x, 2))
case("slices", lambda: [x[1:3], x[::2], x[::-1], x[-2:], x[3:1], x[10:], x[::-2]])
case("slice_is_list", lambda: type(x[:]).__name__)
case("bad_key", lambda: x["1"])
case("float_key", lambda: x[1.0])
case("length", lambda: [len(x), x.length])

# writing
case("set_item", lambda: after(lambda x: assign(x, 1, "one")))
case("set_negative", lambda: after(lambda x: assign(x, -1, "last")))
case("set_past_end", lambda: after(lambda x: assign(x, 6, "far")))
case("del_item", lambda: after(lambda x: delete(x, -2)))
case("del_past_end", lambda: after(lambda x: delete(x, 9)))
case("del_bad_key", lambda: after(lambda x: delete(x, "a")))
case("slice_assign", lambda: after(lambda x: assign(x, slice(1, 3), ["p", "q"])))
case("slice_assign_step", lambda: after(lambda x: assign(x, slice(None, None, 2), ("p", "q", "r"))))
case("slice_assign_reversed", lambda: after(lambda x: assign(x, slice(None, None, -3), ["p", "q"])))
case("slice_assign_str", lambda: after(lambda x: assign(x, slice(0, 2), "pq")))
case("slice_assign_shorter", lambda: after(lambda x: assign(x, slice(1, 3), [7])))
case("slice_assign_wrong_step_count", lambda: after(lambda x: assign(x, slice(None, None, 2), [1])))
case("slice_assign_iterator", lambda: after(lambda x: assign(x, slice(0, 2), iter([1, 2]))))
case("slice_assign_wrapper", lambda: after(lambda x: assign(x, slice(0, 6, 2), new(["p", "q", "r"]))))
case("slice_assign_bad_item", lambda: after(lambda x: assign(x, slice(0, 2), [9, object()])))
case("del_slice_order", lambda: logged(lambda x: delete(x, slice(None, None, 2))))
case("del_slice_reversed", lambda: logged(lambda x: delete(x, slice(None, None, -3))))
case("del_slice_range", lambda: logged(lambda x: delete(x, slice(2, 5))))
case("del_empty_slice", lambda: logged(lambda x: delete(x, slice(5, 2))))

# methods
case("append", lambda: after(lambda x: x.append(None)))
case("append_unconvertible", lambda: after(lambda x: x.append(object())))
case("insert", lambda: after(lambda x: x.insert(1, "i")))
case("insert_negative", lambda: after(lambda x: x.insert(-1, "i")))
case("insert_far", lambda: [after(lambda x: x.insert(-100, "h"))[1][0], after(lambda x: x.insert(100, "t"))[1][-1]])
case("insert_forms", lambda: after(lambda x: x.insert(1)))
case("extend_list_tuple_str", lambda: after(lambda x: [x.extend([7]), x.extend((8,)), x.extend("ab")][0], items=()))
case("extend_generator", lambda: after(lambda x: x.extend(i * i for i in range(3)), items=()))
case("extend_wrapper", lambda: after(lambda x: x.extend(new(["w", "v"])), items=(1,)))
case("extend_self", lambda: after(lambda x: x.extend(x), items=(1, 2)))
case("extend_number", lambda: after(lambda x: x.extend(5)))
case("extend_stops_at_bad_item", lambda: after(lambda x: x.extend([7, object(), 8]), items=()))
case("remove", lambda: after(lambda x: x.remove(3)))
case("remove_missing", lambda: after(lambda x: x.remove("zz")))
case("pop", lambda: after(lambda x: x.pop()))
case("pop_index", lambda: [after(lambda x: x.pop(1)), after(lambda x: x.pop(-2))])
case("pop_none", lambda: after(lambda x: x.pop(None)))
case("pop_empty", lambda: new().pop())
case("pop_out_of_range", lambda: after(lambda x: x.pop(6)))
case("pop_str", lambda: new([1]).pop("1"))
case("pop_two_args", lambda: new([1]).pop(1, 2))
case("pop_huge", lambda: new([1]).pop(2**70))
case("clear", lambda: after(lambda x: x.clear()))
y = new(["a", "b", "a", "c", "a"])
case("index", lambda: [y.index("a"), y.index("a", 1), y.index("a", 1, 3), y.index("a", -2), y.index("c", 0, -1)])
case("index_missing", lambda: y.index("a", 3, 4))
case("index_forms", lambda: y.index())
case("count", lambda: [y.count("a"), y.count("z"), y.count(None)])
case("contains", lambda: [y.contains("c"), y.contains("z"), "c" in y, "z" in y])
case("contains_unconvertible", lambda: object() in y)
case("sort", lambda: after(lambda x: x.sort(), items=(3, 1.5, 2, -7)))
case("sort_reverse_forms", lambda: [after(lambda x: x.sort(reverse=True), items=(3, 1, 2))[1],
                                    after(lambda x: x.sort(None, True), items=(3, 1, 2))[1],
                                    after(lambda x: x.sort(key=None, reverse=False), items=(3, 1, 2))[1]])
case("sort_key", lambda: after(lambda x: x.sort(key=lambda v: v)))
case("sort_positional_key", lambda: after(lambda x: x.sort(lambda v: v)))
case("sort_unknown_keyword", lambda: after(lambda x: x.sort(cmp=None)))
case("reverse", lambda: after(lambda x: x.reverse()))
case("copy", lambda: (lambda x: (type(x.copy()).__name__, x.copy(), x.copy() is x.copy()))(new([1, "2"])))

# operators
z = new([1, 2])
case("concat", lambda: [z + [3], z + (3,), z + "ab", z + iter([5]), z + new([9]), z + []])
case("concat_types", lambda: [type(z + [3]).__name__, type(z * 2).__name__])
case("concat_number", lambda: z + 5)
case("concat_left_list", lambda: [0] + z)
case("repeat", lambda: [z * 2, z * 0, z * -3, 2 * z, new() * 5])
case("inplace_concat", lambda: (lambda x: (lambda y: (y is x, x.copy()))(x.__iadd__([3])))(new([1])))
case("inplace_repeat", lambda: [after(lambda x: x.__imul__(2) is x, items=(1, 2)),
                                after(lambda x: x.__imul__(0) is x, items=(1, 2)),
                                after(lambda x: x.__imul__(-1) is x, items=(1, 2))])
case("compare", lambda: [z == [1, 2], z != [1, 2], z == z, z == new([1, 2])])

# typed and fixed-size managed lists
case("typed_list", lambda: after(lambda x: [x.append(4.0), x.count(3.0), 2.0 in x, x.index(1.0)], kind="ints", items=()))
case("typed_list_sort", lambda: after(lambda x: x.sort(), kind="ints", items=()))
case("typed_list_refuses", lambda: after(lambda x: x.append("x"), kind="ints", items=()))
a = cp.make("fixed", I._IListWrapper)
case("fixed_read_write", lambda: (assign(a, 0, "A"), a.copy(), len(a))[1:])
case("fixed_append", lambda: a.append("d"))

# the collection base
case("collection_base", lambda: (lambda b: ([b.extend([3, 1, 2]), b.sort(), b.pop(0)], b.copy(), type(b).__name__))(cp.make("bag", I._ColBaseWrapper)))
case("array_list", lambda: after(lambda x: [x.extend(range(3)), x.pop(), x.copy()], kind="arraylist", items=()))

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


OUT_OF_RANGE = ("IndexError", "list index out of range")
SIZE = "attempt to assign sequence of size {} to extended slice of size {}"


class TestReading:
    def test_indices_count_from_either_end(self, out):
        assert out["read"] == ok(["a", "e", "e", "a", "b"])
        assert out["length"] == ok([5, 5])

    def test_out_of_range_uses_the_list_text(self, out):
        assert out["read_past_end"] == OUT_OF_RANGE
        assert out["read_before_start"] == OUT_OF_RANGE
        assert out["read_empty_last"] == OUT_OF_RANGE

    def test_sq_item_reads_by_position(self, out):
        assert out["sq_item_direct"] == ok("c")

    def test_slices_are_plain_lists_with_list_arithmetic(self, out):
        items = ["a", "b", "c", "d", "e"]
        assert out["slices"] == ok([items[1:3], items[::2], items[::-1], items[-2:], items[3:1], items[10:],
                                    items[::-2]])
        assert out["slice_is_list"] == ok("list")

    def test_keys_other_than_integers_and_slices_are_refused(self, out):
        assert out["bad_key"] == ("TypeError", "list indices must be integers or slices, not str")
        assert out["float_key"] == ("TypeError", "list indices must be integers or slices, not float")


class TestWriting:
    def test_item_assignment_and_deletion(self, out):
        assert out["set_item"] == ok((None, [0, "one", 2, 3, 4, 5]))
        assert out["set_negative"] == ok((None, [0, 1, 2, 3, 4, "last"]))
        assert out["del_item"] == ok((None, [0, 1, 2, 3, 5]))

    def test_out_of_range_writes_change_nothing(self, out):
        assert out["set_past_end"] == OUT_OF_RANGE
        assert out["del_past_end"] == OUT_OF_RANGE
        assert out["del_bad_key"] == ("TypeError", "list indices must be integers or slices, not str")

    def test_slice_assignment_keeps_the_length(self, out):
        assert out["slice_assign"] == ok((None, [0, "p", "q", 3, 4, 5]))
        assert out["slice_assign_step"] == ok((None, ["p", 1, "q", 3, "r", 5]))
        assert out["slice_assign_reversed"] == ok((None, [0, 1, "q", 3, 4, "p"]))
        assert out["slice_assign_str"] == ok((None, ["p", "q", 2, 3, 4, 5]))
        assert out["slice_assign_shorter"] == ("ValueError", SIZE.format(1, 2))
        assert out["slice_assign_wrong_step_count"] == ("ValueError", SIZE.format(1, 3))

    def test_slice_assignment_needs_a_sized_sequence(self, out):
        assert out["slice_assign_iterator"] == ("TypeError", "must assign iterable to extended slice")

    def test_a_managed_list_is_taken_whole(self, out):
        assert out["slice_assign_wrapper"] == ok((None, ["p", 1, "q", 3, "r", 5]))

    def test_element_failures_leave_earlier_writes(self, out):
        assert out["slice_assign_bad_item"] == ("TypeError", "unknown variant type")

    def test_slice_deletion_walks_downward_in_one_call(self, out):
        assert out["del_slice_order"] == ok(("remove 6;remove 4;remove 2;remove 0", [1, 3, 5, 7]))
        assert out["del_slice_reversed"] == ok(("remove 7;remove 4;remove 1", [0, 2, 3, 5, 6]))
        assert out["del_slice_range"] == ok(("remove 4;remove 3;remove 2", [0, 1, 5, 6, 7]))
        assert out["del_empty_slice"] == ok(("", list(range(8))))


class TestMethods:
    def test_append_insert_and_their_forms(self, out):
        assert out["append"] == ok((None, [0, 1, 2, 3, 4, 5, None]))
        assert out["append_unconvertible"] == ("TypeError", "unknown variant type")
        assert out["insert"] == ok((None, [0, "i", 1, 2, 3, 4, 5]))
        assert out["insert_negative"] == ok((None, [0, 1, 2, 3, 4, "i", 5]))
        assert out["insert_far"] == ok(["h", "t"])
        assert out["insert_forms"][0] == "TypeError"

    def test_extend_takes_sequences_iterables_and_managed_lists(self, out):
        assert out["extend_list_tuple_str"] == ok((None, [7, 8, "a", "b"]))
        assert out["extend_generator"] == ok((None, [0, 1, 4]))
        assert out["extend_wrapper"] == ok((None, [1, "w", "v"]))
        assert out["extend_self"] == ok((None, [1, 2, 1, 2]))

    def test_extend_refusals(self, out):
        assert out["extend_number"] == ("ValueError", "argument must be iterable or sequence")
        assert out["extend_stops_at_bad_item"] == ("TypeError", "unknown variant type")

    def test_remove(self, out):
        assert out["remove"] == ok((None, [0, 1, 2, 4, 5]))
        assert out["remove_missing"] == ("ValueError", "list.remove(x): x not in list")

    def test_pop(self, out):
        assert out["pop"] == ok((5, [0, 1, 2, 3, 4]))
        assert out["pop_index"] == ok([(1, [0, 2, 3, 4, 5]), (4, [0, 1, 2, 3, 5])])
        assert out["pop_none"] == ok((0, [1, 2, 3, 4, 5]))

    def test_pop_refusals(self, out):
        assert out["pop_empty"] == ("IndexError", "pop from empty list")
        assert out["pop_out_of_range"] == ("IndexError", "pop index out of range")
        assert out["pop_str"] == ("TypeError", "argument should be integer or None, not 'str'")
        assert out["pop_two_args"] == ("TypeError", "pop() takes at most 1 argument (2 given)")
        assert out["pop_huge"][0] == "OverflowError"

    def test_clear_reverse_copy(self, out):
        assert out["clear"] == ok((None, []))
        assert out["reverse"] == ok((None, [5, 4, 3, 2, 1, 0]))
        assert out["copy"] == ok(("list", [1, "2"], False))

    def test_index_reads_start_and_stop_as_list_does(self, out):
        assert out["index"] == ok([0, 2, 2, 4, 3])
        assert out["index_missing"] == ("ValueError", "value is not in list")
        assert out["index_forms"][0] == "TypeError"

    def test_count_and_membership(self, out):
        assert out["count"] == ok([3, 0, 0])
        assert out["contains"] == ok([True, False, True, False])
        assert out["contains_unconvertible"] == ("TypeError", "unknown variant type")

    def test_sort_is_managed_and_takes_no_key(self, out):
        assert out["sort"] == ok((None, [-7, 1.5, 2, 3]))
        assert out["sort_reverse_forms"] == ok([[3, 2, 1], [3, 2, 1], [1, 2, 3]])
        assert out["sort_key"] == ("ValueError", "custom sorting key is not supported")
        assert out["sort_positional_key"] == ("ValueError", "custom sorting key is not supported")
        assert out["sort_unknown_keyword"][0] == "TypeError"


class TestOperators:
    def test_concatenation_gives_a_list(self, out):
        assert out["concat"] == ok([[1, 2, 3], [1, 2, 3], [1, 2, "a", "b"], [1, 2, 5], [1, 2, 9], [1, 2]])
        assert out["concat_types"] == ok(["list", "list"])

    def test_concatenation_refusals(self, out):
        assert out["concat_number"] == ("ValueError", "argument must be iterable or sequence")
        assert out["concat_left_list"][0] == "TypeError"

    def test_repetition(self, out):
        assert out["repeat"] == ok([[1, 2, 1, 2], [], [], [1, 2, 1, 2], []])

    def test_in_place_operators_keep_the_object(self, out):
        assert out["inplace_concat"] == ok((True, [1, 3]))
        assert out["inplace_repeat"] == ok([(True, [1, 2, 1, 2]), (True, []), (True, [])])

    def test_comparison_is_by_handle_only(self, out):
        assert out["compare"] == ok([False, True, True, False])


class TestManagedLists:
    def test_typed_lists_take_fitting_python_numbers(self, out):
        assert out["typed_list"] == ok(([None, 1, True, 1], [3, 1, 2, 4]))
        assert out["typed_list_sort"] == ok((None, [1, 2, 3]))

    def test_managed_refusals_come_through_the_bridge(self, out):
        kind, text = out["typed_list_refuses"]
        assert kind == "RuntimeError" and text.startswith("Proxy error(System.FormatException)")
        kind, text = out["fixed_append"]
        assert kind == "RuntimeError" and text.startswith("Proxy error(System.NotSupportedException)")

    def test_fixed_size_lists_still_read_and_write(self, out):
        assert out["fixed_read_write"] == ok((["A", "b", "c"], 3))

    def test_collection_base_and_array_list(self, out):
        assert out["collection_base"] == ok(([None, None, 1], [2, 3], "_ColBaseWrapper"))
        assert out["array_list"] == ok(([None, 2, [0, 1]], [0, 1]))
