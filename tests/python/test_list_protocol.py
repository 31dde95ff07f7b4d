"""Python's sequence behaviour over managed collections (probe assembly and surface): iteration, read-only and list
protocols, array wrappers; each case is an expression run in one fresh interpreter, with what it gives or raises."""
import ast
import os

import pytest

from conftest import TEST_ASSETS, run_python
from orvane.pyfigura import design, printing

PROBE_ENV = {"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": os.path.join(TEST_ASSETS, "assemblies")}

PRELUDE = r'''
import ast, sys, orvane.pyfigura as f, collection_probe as cp, callback_probe
from operator import delitem, iadd, imul, setitem
I, G = f._wrpgen._interop, f._wrpgen._generic

def new(items=(), kind="objects", wrapper=I._IListWrapper):
    x = cp.make(kind, wrapper)
    for item in items:
        x.append(item)
    return x

def after(fn, items=(0, 1, 2, 3, 4, 5), kind="objects"):  # what fn gives on a fresh list, and the list after
    x = new(items, kind)
    return (fn(x), x.copy())

def logged(fn):  # the removals fn makes on a list of 0..7 that logs them, and the list after
    x = new(range(8), "logged")
    fn(x)
    return (cp.log(x), x.copy())

def outcome(source):
    try:
        value = eval(source)
    except Exception as e:
        return (type(e).__name__, str(e))
    try:
        return ("ok", ast.literal_eval(repr(value)))
    except Exception:
        return ("ok", "<%s>" % type(value).__name__)

x = cp.make("with-null", I._IterableWrapper)
it, i1, i2 = iter(x), iter(x), iter(x)
next(i2)
abc, aba, z = new("abcde"), new("abaca"), new([1, 2])
s = cp.make("set", I._IColWrapper)
more, fewer = cp.make("claims-more", I._IColWrapper), cp.make("claims-fewer", I._IColWrapper)
fixed = cp.make("fixed", I._IListWrapper)
a = callback_probe.row("wrap_array", None, None, 0)[1]
al = callback_probe.row("wrap_arrlist", None, None, 0)[1]
'''


class raises(tuple):  # the exception type name and its text; a text ending in ... is a prefix
    def __new__(cls, kind, text="..."):
        return super().__new__(cls, (kind, text))


def each(expected, *sources):  # cases of several sources that give the same
    return [(source, expected) for source in sources]


NOT_ITERABLE = raises("ValueError", "argument must be iterable or sequence")
NO_VARIANT = raises("TypeError", "unknown variant type")
BAD_KEY = raises("TypeError", "list indices must be integers or slices, not str")
SIZE = "attempt to assign sequence of size {} to extended slice of size {}"
PROXY = "Proxy error(System.{}Exception)..."

CASES = [
    # iteration
    ("[list(x), type(iter(x)).__name__, iter(x) is iter(x)]", [["a", None, "b"], "_IterWrapper", False]),
    ("(lambda before: (iter(it) is it, sys.getrefcount(it) - before))(sys.getrefcount(it))", (True, 0)),
    ("[next(it, '<end>') for _ in range(5)]", ["a", None, "b", "<end>", "<end>"]),  # the end is told every time
    ("list(cp.make('enumerator', I._IterWrapper))", [1, 2]),
    ("list(cp.make('failing', I._IterableWrapper))",
     raises("RuntimeError", "Proxy error(System.InvalidOperationException): the walk broke")),
    ("list(cp.make('unbound-item', I._IterableWrapper))", raises("TypeError", "unknown wrapper type")),
    # comparison is by handle, and only between objects of the same type
    ("[i1 == i1, i1 == i2, i1 != i2, i1 == 1, x == x, x == cp.make('with-null', I._IterableWrapper)]",
     [True, False, True, False, True, False]),
    ("[s == s, s == sorted(s), s != [1], z == [1, 2], z == z, z == new([1, 2])]",
     [True, False, True, False, True, False]),
    # scripts cannot make the wrappers
    *each(raises("TypeError", "type has no available constructor"), "I._IColWrapper()", "I._RoColBaseWrapper()",
          "I._IterableWrapper()", "I._IterWrapper()", "G._ArrayWrapper_2A1D6ECF()", "G._IterWrapper_FCB07591()"),
    # read-only collections: length and membership are managed; copies, + and * walk the enumerator
    ("[len(s), s.length, 2 in s, 2.0 in s, 9 in s, s.contains(3), s.contains('3'), s.count(1), s.count(7),"
     " sorted(s.copy())]", [3, 3, True, True, False, True, False, 1, 0, [1, 2, 3]]),
    ("[sorted(s + [9])[-1], len(s + (8, 9)), (s + 'ab')[-2:], (s + iter([7]))[-1], len(s + range(2))]",
     [9, 5, ["a", "b"], 7, 5]),
    ("[len(s * 2), s * 0, s * -3, sorted(2 * s)]", [6, [], [], [1, 1, 2, 2, 3, 3]]),
    ("(lambda e: [e.copy(), e + [1], e * 5, len(e)])(cp.make('objects', I._IColWrapper))", [[], [1], [], 0]),
    *each(raises("TypeError"), "[0] + s", "s[0]", "[0] + z"),
    # an enumerator that gives fewer elements than the length tells shortens a copy; a surplus is an error
    ("[more.copy(), more * 2]", [[0, 1, 2], [0, 1, 2, 0, 1, 2]]),
    *each(NOT_ITERABLE, "s + 5", "more + [1]", "fewer.copy()", "fewer * 2", "fewer + iter([1])", "z + 5",
          "after(lambda x: x.extend(5))"),
    *each(NO_VARIANT, "object() in s", "object() in aba", "after(lambda x: x.extend([7, object(), 8]), items=())",
          "after(lambda x: setitem(x, slice(0, 2), [9, object()]))"),
    # the list protocol: reading
    ("[abc[0], abc[4], abc[-1], abc[-5], abc[True], type(abc).__getitem__(abc, 2), len(abc), abc.length]",
     ["a", "e", "e", "a", "b", "c", 5, 5]),
    ("[abc[1:3], abc[::2], abc[::-1], abc[-2:], abc[3:1], abc[10:], abc[::-2]]",
     [["b", "c"], ["a", "c", "e"], ["e", "d", "c", "b", "a"], ["d", "e"], [], [], ["e", "c", "a"]]),
    *each(raises("IndexError", "list index out of range"), "abc[5]", "abc[-6]", "after(lambda x: setitem(x, 6, 'far'))",
          "after(lambda x: delitem(x, 9))"),
    *each(BAD_KEY, "abc['1']", "after(lambda x: delitem(x, 'a'))"),
    # writing
    ("after(lambda x: [setitem(x, 1, 'one'), setitem(x, -1, 'last'), delitem(x, -2)])",
     ([None] * 3, [0, "one", 2, 3, "last"])),
    ("after(lambda x: setitem(x, slice(1, 3), ['p', 'q']))", (None, [0, "p", "q", 3, 4, 5])),
    ("after(lambda x: setitem(x, slice(None, None, -3), 'pq'))", (None, [0, 1, "q", 3, 4, "p"])),
    ("after(lambda x: setitem(x, slice(0, 6, 2), new(['p', 'q', 'r'])))", (None, ["p", 1, "q", 3, "r", 5])),
    ("after(lambda x: setitem(x, slice(1, 3), [7]))", raises("ValueError", SIZE.format(1, 2))),
    ("after(lambda x: setitem(x, slice(None, None, 2), 'a'))", raises("ValueError", SIZE.format(1, 3))),
    ("after(lambda x: setitem(x, slice(0, 2), iter([1, 2])))",
     raises("TypeError", "must assign iterable to extended slice")),
    # slice deletion walks downward, one managed removal per element
    ("logged(lambda x: delitem(x, slice(None, None, 2)))", ("remove 6;remove 4;remove 2;remove 0", [1, 3, 5, 7])),
    ("logged(lambda x: delitem(x, slice(None, None, -3)))", ("remove 7;remove 4;remove 1", [0, 2, 3, 5, 6])),
    ("logged(lambda x: delitem(x, slice(5, 2)))", ("", list(range(8)))),
    # methods
    ("after(lambda x: [x.append(None), x.insert(1, 'i'), x.insert(-1, 'j'), x.insert(-100, 'h'), x.insert(100, 't')])",
     ([None] * 5, ["h", 0, "i", 1, 2, 3, 4, 5, "j", None, "t"])),
    ("after(lambda x: [x.extend([7]), x.extend((8,)), x.extend('ab'), x.extend(i for i in (0, 1)), x.extend(x)],"
     " items=())", ([None] * 5, [7, 8, "a", "b", 0, 1, 7, 8, "a", "b", 0, 1])),
    ("after(lambda x: x.extend(new(['w', 'v'])), items=(1,))", (None, [1, "w", "v"])),
    ("after(lambda x: x.remove(3))", (None, [0, 1, 2, 4, 5])),
    ("after(lambda x: x.remove('zz'))", raises("ValueError", "list.remove(x): x not in list")),
    ("after(lambda x: [x.pop(), x.pop(1), x.pop(-2), x.pop(None)])", ([5, 1, 3, 0], [2, 4])),
    ("new().pop()", raises("IndexError", "pop from empty list")),
    ("after(lambda x: x.pop(6))", raises("IndexError", "pop index out of range")),
    ("new([1]).pop('1')", raises("TypeError", "argument should be integer or None, not 'str'")),
    ("[after(lambda x: x.clear()), after(lambda x: x.reverse())]", [(None, []), (None, [5, 4, 3, 2, 1, 0])]),
    ("[aba.index('a'), aba.index('a', 1), aba.index('a', 1, 3), aba.index('a', -2), aba.index('c', 0, -1)]",
     [0, 2, 2, 4, 3]),
    ("aba.index('a', 3, 4)", raises("ValueError", "value is not in list")),
    ("[aba.count('a'), aba.count('z'), aba.count(None), aba.contains('c'), aba.contains('z'), 'c' in aba, 'z' in aba]",
     [3, 0, 0, True, False, True, False]),
    ("after(lambda x: [x.sort(), x.copy(), x.sort(None, True), x.copy(), x.sort(key=None, reverse=False)],"
     " items=(3, 1.5, 2, -7))", ([None, [-7, 1.5, 2, 3], None, [3, 2, 1.5, -7], None], [-7, 1.5, 2, 3])),
    *each(raises("ValueError", "custom sorting key is not supported"), "after(lambda x: x.sort(key=lambda v: v))",
          "after(lambda x: x.sort(lambda v: v))"),
    # operators give lists, or keep the object in place
    ("[z + [3], z + (3,), z + 'ab', z + iter([5]), z + new([9]), z * 2, z * 0, z * -3, 2 * z, new() * 5]",
     [[1, 2, 3], [1, 2, 3], [1, 2, "a", "b"], [1, 2, 5], [1, 2, 9], [1, 2, 1, 2], [], [], [1, 2, 1, 2], []]),
    ("(lambda x: (iadd(x, [3]) is x, imul(x, 2) is x, x.copy(), imul(x, -1) is x, x.copy()))(new([1]))",
     (True, True, [1, 3, 1, 3], True, [])),
    # typed, fixed-size and base managed lists
    ("after(lambda x: [x.append(4.0), x.count(3.0), 2.0 in x, x.index(1.0), x.sort()], kind='ints', items=())",
     ([None, 1, True, 1, None], [1, 2, 3, 4])),
    ("after(lambda x: x.append('x'), kind='ints', items=())", raises("RuntimeError", PROXY.format("Format"))),
    ("fixed.append('d')", raises("RuntimeError", PROXY.format("NotSupported"))),
    ("(setitem(fixed, 0, 'A'), fixed.copy(), len(fixed))[1:]", (["A", "b", "c"], 3)),
    ("(lambda b: ([b.extend([3, 1, 2]), b.sort(), b.pop(0)], b.copy(), type(b).__name__))"
     "(cp.make('bag', I._ColBaseWrapper))", ([None, None, 1], [2, 3], "_ColBaseWrapper")),
    ("after(lambda x: [x.extend(range(3)), x.pop(), x.copy()], kind='arraylist', items=())",
     ([None, 2, [0, 1]], [0, 1])),
    # the fixed-length array wrapper over an Int32[]
    ("[type(a).__name__, type(iter(a)).__name__, list(a), len(a), a.length, a[-1], a[0:2], a[::-1], 2 in a,"
     " a.contains(9), a.index(3), a.count(1)]",
     ["_ArrayWrapper", "_IterWrapper", [1, 2, 3], 3, 3, 3, [1, 2], [3, 2, 1], True, False, 2, 1]),
    ("delitem(a, 0)", raises("ValueError", "elements removing not supported")),
    ("(setitem(a, 0, 7), setitem(a, slice(1, 3), (8, 9)), a.sort(reverse=True), list(a))[-1]", [9, 8, 7]),
    ("[a * 2, iadd(a, [1])]", [[9, 8, 7, 9, 8, 7], [9, 8, 7, 1]]),  # lists, the array keeps its length
    # the growable array-list wrapper over an ArrayList
    ("(al.append(2), al.extend([3, 4]), al.extend(iter([5])), al.insert(0, 0), list(al), type(al).__name__)[-2:]",
     ([0, 1, 2, 3, 4, 5], "_ArrListWrapper")),
    ("[al.pop(), al.pop(0), list(al), al.remove(3), delitem(al, 0), list(al)]",
     [5, 0, [1, 2, 3, 4], None, None, [2, 4]]),
    ("[al.clear(), iadd(al, [1, 2]) is al, imul(al, 2) is al, list(al), delitem(al, slice(None, None, 2)), list(al)]",
     [None, True, True, [1, 2, 1, 2], None, [2, 2]]),
]


@pytest.fixture(scope="module")
def results():
    sources = [source for source, _ in CASES]
    assert len(set(sources)) == len(sources), "each case is told apart by its source"
    run = run_python(PRELUDE + f"print(repr([outcome(source) for source in {sources!r}]))", env=PROBE_ENV)
    assert run.returncode == 0, run
    return dict(zip(sources, ast.literal_eval(run.stdout.decode().strip().splitlines()[-1]), strict=True))


@pytest.mark.parametrize("source, expected", CASES, ids=[source[:70] for source, _ in CASES])
def test_probe_case(results, source, expected):
    kind, text = expected if isinstance(expected, raises) else ("ok", expected)
    got_kind, got = results[source]
    if isinstance(expected, raises) and text.endswith("..."):
        got, text = got[:len(text) - 3], text[:-3]
    assert (got_kind, got) == (kind, text)


@pytest.mark.parametrize("cls", [design.CategoryNameCollection, printing.PrinterSettings.StringCollection])
def test_surface_collections_read_as_lists_and_stay_read_only(cls):
    names = cls(["b", "a", "c", "a"])
    assert (list(names), names.copy(), len(names), names.length, names.count("a"), "c" in names, "z" in names) == (
        ["b", "a", "c", "a"], ["b", "a", "c", "a"], 4, 4, 2, True, False)
    assert (names[0], names[-4], names[1:3], names[::-2]) == ("b", "b", ["a", "c"], ["a", "a"])
    assert names + ["d"] == list("bacad") and names * 2 == list("bacabaca")
    for statement, error, text in [("names[4]", IndexError, "^list index out of range$"),
                                   ("names[0] = 'x'", TypeError, "does not support item assignment"),
                                   ("del names[0]", TypeError, "doesn't support item deletion")]:
        with pytest.raises(error, match=text):
            exec(statement)
