"""_ArrayWrapper and _ArrListWrapper over real managed objects: an Int32[] and an ArrayList made by the probe
assembly and wrapped by the lists callback group, then used from Python as fixed-length and growable lists."""
import json

import pytest

from test_managed_drawing import PROBE_ENV

SCENARIOS = r'''
import json, orvane.pyfigura as f, callback_probe as cp

def fresh(kind):
    return cp.row(kind, None, None, 0)[1]

def outcome(fn):
    try:
        value = fn()
        return ["ok", value if isinstance(value, (int, list, bool, type(None))) else type(value).__name__]
    except Exception as e:
        return [type(e).__name__, str(e)]

out = {}
a = fresh("wrap_array")
out["array_type"] = type(a).__name__
out["array_read"] = [list(a), len(a), a.length, a[-1], a[0:2], a[::-1], 2 in a, a.contains(9), a.index(3),
                     a.count(1)]
out["array_past_end"] = outcome(lambda: a[3])
out["array_negative_past_start"] = outcome(lambda: a[-4])
out["array_del"] = outcome(lambda: a.__delitem__(0))
out["array_del_far"] = outcome(lambda: a.__delitem__(7))
out["array_del_empty_slice"] = outcome(lambda: a.__delitem__(slice(2, 2)))
out["array_append"] = outcome(lambda: a.append(1))
out["array_slice_size"] = outcome(lambda: a.__setitem__(slice(0, 2), [1, 2, 3]))
a[0] = 7
a[1:3] = (8, 9)
out["array_written"] = list(a)
a.sort(reverse=True)
out["array_sorted"] = list(a)
out["array_sort_key"] = outcome(lambda: a.sort(key=abs))
out["array_concat"] = [a + [1], a * 2, a * -1]
b = a
b += [1]
out["array_iadd_rebinds"] = [type(b).__name__, b]
out["array_iter"] = type(iter(a)).__name__

l = fresh("wrap_arrlist")
out["arrlist_type"] = type(l).__name__
l.append(2)
l.extend([3, 4])
l.extend(iter([5]))
l.insert(0, 0)
out["arrlist_grown"] = list(l)
out["arrlist_pop"] = [l.pop(), l.pop(0), list(l)]
l.remove(3)
del l[0]
out["arrlist_shrunk"] = list(l)
out["arrlist_remove_missing"] = outcome(lambda: l.remove(99))
out["arrlist_pop_empty"] = outcome(lambda: (l.clear(), l.pop()))
same = l
l += [1, 2]
l *= 2
out["arrlist_inplace"] = [same is l, list(l)]
del l[::2]
out["arrlist_del_step"] = list(l)
print(json.dumps(out))
'''


@pytest.fixture(scope="module")
def rows():
    from conftest import run_python
    run = run_python(SCENARIOS, env=PROBE_ENV)
    assert run.returncode == 0, run
    return json.loads(run.stdout.decode().strip().splitlines()[-1])


class TestArrayWrapper:
    def test_reads_as_a_list(self, rows):
        assert rows["array_type"] == "_ArrayWrapper"
        assert rows["array_read"] == [[1, 2, 3], 3, 3, 3, [1, 2], [3, 2, 1], True, False, 2, 1]
        assert rows["array_iter"] == "_IterWrapper"

    def test_out_of_range_in_list_words(self, rows):
        assert rows["array_past_end"] == ["IndexError", "list index out of range"]
        assert rows["array_negative_past_start"] == ["IndexError", "list index out of range"]

    def test_length_never_changes(self, rows):
        refused = ["ValueError", "elements removing not supported"]
        assert rows["array_del"] == rows["array_del_far"] == rows["array_del_empty_slice"] == refused
        assert rows["array_append"][0] == "AttributeError"
        assert rows["array_slice_size"] == ["ValueError",
                                            "attempt to assign sequence of size 3 to extended slice of size 2"]

    def test_writes_and_sorting_reach_the_managed_array(self, rows):
        assert rows["array_written"] == [7, 8, 9]
        assert rows["array_sorted"] == [9, 8, 7]
        assert rows["array_sort_key"] == ["ValueError", "custom sorting key is not supported"]

    def test_operators_give_lists(self, rows):
        assert rows["array_concat"] == [[9, 8, 7, 1], [9, 8, 7, 9, 8, 7], []]
        assert rows["array_iadd_rebinds"] == ["list", [9, 8, 7, 1]]


class TestArrListWrapper:
    def test_grows_and_shrinks_as_a_list(self, rows):
        assert rows["arrlist_type"] == "_ArrListWrapper"
        assert rows["arrlist_grown"] == [0, 1, 2, 3, 4, 5]
        assert rows["arrlist_pop"] == [5, 0, [1, 2, 3, 4]]
        assert rows["arrlist_shrunk"] == [2, 4]

    def test_list_messages(self, rows):
        assert rows["arrlist_remove_missing"] == ["ValueError", "list.remove(x): x not in list"]
        assert rows["arrlist_pop_empty"] == ["IndexError", "pop from empty list"]

    def test_in_place_operators_keep_the_object(self, rows):
        assert rows["arrlist_inplace"] == [True, [1, 2, 1, 2]]
        assert rows["arrlist_del_step"] == [2, 2]
