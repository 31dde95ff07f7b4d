"""Errors across the bridge: proxy errors for managed exceptions, pending Python exceptions turned into text,
the start-up failure family (texts, codes, chaining), version objects and the version-checked dependency import."""

import contextlib
import decimal
import operator
import sys
import traceback
import types

import pytest

import failure_probe as probe
import orvane.pyfigura as pyfigura
import version_probe


def raised(function, *args, **kwargs):
    """The exception the call raises, caught: it carries its traceback."""
    with pytest.raises(BaseException) as caught:
        function(*args, **kwargs)
    return caught.value


NOTHING = (-1, None, -7, -7, False)  # what catch_and_clear_error gives when no exception is pending


@contextlib.contextmanager
def unraisable_reports():
    """Collects what reaches sys.unraisablehook inside the block (pytest's own hook is set per call)."""
    seen = []
    previous, sys.unraisablehook = sys.unraisablehook, seen.append
    try:
        yield seen
    finally:
        sys.unraisablehook = previous


def fail():
    raise ValueError("x")


NESTED = type("Nested", (Exception,), {"__qualname__": "Outer.Nested"})  # named by its qualified name


class Unprintable(Exception):
    def __str__(self):
        raise LookupError("no text")


@pytest.mark.parametrize("type_name, message, text", [
    ("System.ArgumentException", "bad width", "Proxy error(System.ArgumentException): bad width"),
    (None, "bad width", "Proxy error(<unknown>): bad width"),
    ("System.Exception", None, "Proxy error(System.Exception): <unknown>"),
    (None, None, "Proxy error(<unknown>): <unknown>")])
def test_proxy_error_texts(type_name, message, text):
    error = raised(probe.raise_proxy_error, type_name, message)
    assert type(error) is RuntimeError and str(error) == text


def test_proxy_error_replaces_a_pending_error_and_takes_over_both_references():
    assert raised(probe.raise_proxy_error, "T", "m", pending=ValueError("old")).__cause__ is None
    type_name, message = "".join(["Sys", "tem.T"]), "".join(["mes", "sage"])
    before = sys.getrefcount(type_name), sys.getrefcount(message)
    for _ in range(20):
        with pytest.raises(RuntimeError):
            probe.raise_proxy_error(type_name, message)
    assert (sys.getrefcount(type_name), sys.getrefcount(message)) == before


def test_catch_and_clear_formats_the_pending_exception_and_clears_it():
    with unraisable_reports() as unraisable:
        code, text, length, kind, same_storage = probe.catch_and_clear_error(fail)
        assert probe.catch_and_clear_error(None) == probe.catch_and_clear_error(lambda: None) == NOTHING
    try:
        fail()
    except ValueError as error:
        expected = "".join(traceback.format_exception(ValueError, error, error.__traceback__.tb_next))
    assert text == expected and text.startswith("Traceback (most recent call last):") and "in fail" in text
    assert (code, length, kind, same_storage) == (0, len(text), 1, True)
    assert sys.exc_info() == (None, None, None) and unraisable == []
    assert probe.catch_and_clear_error(ValueError("x"))[:4] == (0, "ValueError: x\n", 14, 1)  # no traceback
    for message, kind in [("\u20ac", 2), ("\U0001F600", 4)]:  # the view has the width of the text
        text = f"ValueError: {message}\n"
        assert probe.catch_and_clear_error(ValueError(message)) == (0, text, len(text), kind, True)


@pytest.mark.parametrize("break_traceback, error, text, reported", [
    (lambda mp: mp.delattr(traceback, "format_exception"), fail, "ValueError: x", [AttributeError]),
    (lambda mp: mp.setattr(traceback, "format_exception_only", "not callable"), KeyError("k"), "KeyError: 'k'", []),
    (lambda mp: mp.setitem(sys.modules, "traceback", None), NESTED("x"), "Outer.Nested: x", [ModuleNotFoundError]),
    (lambda mp: mp.setitem(sys.modules, "traceback", None), Unprintable(), None, [LookupError])],
    ids=["no format function", "uncallable formatter", "no traceback module", "both formatters fail"])
def test_catch_and_clear_falls_back_when_the_traceback_module_fails(monkeypatch, break_traceback, error, text, reported):
    break_traceback(monkeypatch)
    with unraisable_reports() as unraisable:
        result = probe.catch_and_clear_error(error)
    assert result[:3] == ((0, text, len(text)) if text else NOTHING[:3])
    assert [u.exc_type for u in unraisable] == reported
    assert all(u.object == "FormatCallbackException" for u in unraisable if u.exc_type is not ModuleNotFoundError)


DEPENDENCY = "orvane.pygc"
PREFIX = f"Unable to import module dependencies. Cannot import the {DEPENDENCY} module. "
FAMILY = [
    (probe.raise_load_failure, ("orvane.pyfigura", -1008),
     "One or more errors occurred while loading the module 'orvane.pyfigura' (-1008)"),
    (probe.raise_module_failure, (-1003, "orvane.pyfigura.text"),
     "Module initialization internal error (-1003) <orvane.pyfigura.text>"),
    (probe.raise_module_failure, (-1012, "orvane.pyfigura", "orvane.pyfigura._C_APIT_Pen"),
     "Module initialization internal error (-1012) <orvane.pyfigura,orvane.pyfigura._C_APIT_Pen>"),
    (probe.raise_type_failure, (-1015, "orvane.pyfigura.Bitmap"),
     "Type initialization internal error (-1015) <orvane.pyfigura.Bitmap>"),
    (probe.raise_type_failure, (-1020, "orvane.pyfigura.Color", "RED"),
     "Type initialization internal error (-1020) <orvane.pyfigura.Color,RED>"),
    (probe.raise_dependency_failure, (DEPENDENCY,),
     PREFIX + "The module not found or errors occurred while initializing it."),
    (probe.raise_import_failure, ("uuid",),
     "Unable to import the specified module uuid. The module not found or errors occurred while initializing it."),
    (probe.raise_attribute_failure, ("UUID", "uuid"),
     "Unable to import the specified type UUID from the module uuid. "
     "The type not found or errors occurred while initializing it."),
]


@pytest.mark.parametrize("function, args, text", FAMILY)
def test_family_texts_alone_and_chained_over_a_pending_error(function, args, text):
    error = raised(function, *args)
    assert type(error) is ImportError and str(error) == text
    assert error.__cause__ is None and error.__context__ is None
    pending = raised({}.__getitem__, "first")
    error = raised(function, *args, pending=pending)
    assert type(error) is ImportError and str(error) == text
    assert error.__cause__ is pending and error.__context__ is pending


def test_enum_failure_and_chain_and_raise():
    error = raised(probe.raise_enum_failure, "accessor missing", "orvane.pyfigura.drawing2d.FillMode")
    assert type(error) is ImportError and str(error) == "enum type 'orvane.pyfigura.drawing2d.FillMode' is not initialized"
    assert type(error.__cause__) is TypeError and str(error.__cause__) == "accessor missing"
    assert error.__context__ is error.__cause__
    assert type(raised(probe.raise_enum_failure, "m", "E", pending=ValueError("old")).__cause__) is TypeError
    pending = raised(int, "low")
    error = raised(probe.chain_and_raise, RuntimeError, "high", pending=pending)
    assert type(error) is RuntimeError and str(error) == "high" and pending.__traceback__ is not None
    assert error.__cause__ is pending and error.__context__ is pending
    error = raised(probe.chain_and_raise, ImportError, "alone")
    assert error.__cause__ is None and error.__context__ is None


FIELDS = ("major", "minor", "patch", "sub")


def make(numbers, text=None):
    return version_probe.make(*numbers, text if text is not None else ".".join(map(str, numbers)))


def test_text_forms_and_read_only_int_fields():
    version = make((22, -9, 2147483647, -2147483648), "one-two")
    assert (str(version), version.view) == ("one-two", "one-two")
    assert tuple(getattr(version, f) for f in FIELDS) == (22, -9, 2147483647, -2147483648)
    for field in FIELDS + ("view",):
        with pytest.raises(AttributeError):
            setattr(version, field, 1)
    with pytest.raises(TypeError):
        version_probe._ModuleVersionType()


def test_hash_is_fnv1a_of_the_numbers_widened_as_signed_and_ignores_the_view():
    # FNV-1a over the four fields as little-endian 32-bit words, sign-extended from 32 bits.
    assert [hash(make(n)) for n in [(0, 0, 0, 0), (22, 9, 1, 0), (-1, 255, 65536, 7)]] == [
        1768495365, 1822599435, -1850520464]
    assert hash(make((22, 9, 1, 0), "a")) == hash(make((22, 9, 1, 0), "b"))
    assert hash(make((1, 8, 0, 1217457877))) == -2  # its FNV-1a is 0xFFFFFFFF: the error marker is never returned


def test_all_operators_follow_tuple_order_of_the_numbers_and_refuse_other_types():
    for left, right in [((22, 9, 1, 0), (22, 9, 1, 0)), ((22, 9, 1, 0), (22, 10, 0, 0)), ((23, 0, 0, 0), (22, 99, 99, 99)),
                        ((1, 2, 3, 4), (1, 2, 3, 5)), ((-1, 0, 0, 0), (0, 0, 0, 0))]:
        for op in (operator.lt, operator.le, operator.eq, operator.ne, operator.gt, operator.ge):
            assert op(make(left, "x"), make(right, "y")) is op(left, right), (op.__name__, left, right)
            assert op(make(right), make(left)) is op(right, left), (op.__name__, right, left)
    version = make((22, 9, 1, 0))
    assert version.__eq__(1) is NotImplemented and version.__lt__((22, 9, 1, 0)) is NotImplemented
    assert (version == 1) is False
    with pytest.raises(TypeError):
        version < 1
    for reference, found, expected in [((22, 9, 1, 0), (22, 9, 1, 0), 0), ((22, 9, 1, 0), (22, 10, 0, 0), -1),
                                       ((22, 9, 1, 0), (22, 9, 0, 0), 1), ((0, 0, 0, -1), (0, 0, 0, 0), -1)]:
        assert version_probe.compare(reference, make(found)) == expected


def test_both_modules_publish_their_version_and_threshold():
    import orvane.pygc as pygc
    for module in (pyfigura, pygc):  # each has its own static type of the same layout
        assert repr(module.VERSION) == "<orvane.pyfigura._ModuleVersionType: 22.9.1.0>"
        assert tuple(getattr(module.VERSION, f) for f in FIELDS) == (22, 9, 1, 0) and hash(module.VERSION) == 1822599435
        assert str(module._BACKWARD_COMPATIBILITY_THRESHOLD) == "22.6.0.0"


def version(text):
    return make(tuple(map(int, text.split("."))), text)


@pytest.fixture
def pygc_with(monkeypatch):
    """Installs a stand-in orvane.pygc with the given VERSION and threshold texts (None leaves one out)."""
    def install(version_text, threshold_text):
        module = types.ModuleType(DEPENDENCY)
        for name, text in (("VERSION", version_text), ("_BACKWARD_COMPATIBILITY_THRESHOLD", threshold_text)):
            if text is not None:
                setattr(module, name, version(text))
        monkeypatch.setitem(sys.modules, DEPENDENCY, module)
        return module
    return install


def check():
    return probe.import_versioned_dependency("orvane.pyfigura", DEPENDENCY, (22, 9, 1, 0))


def test_dependency_accepted_when_the_reference_lies_between_threshold_and_found(pygc_with):
    import orvane.pygc
    assert check() is orvane.pygc
    for found, threshold in [("22.10.0.0", "22.6.0.0"), ("22.9.1.0", "22.9.1.0"), ("100.0.0.0", "1.0.0.0")]:
        module = pygc_with(found, threshold)
        assert check() is module


@pytest.mark.parametrize("found, threshold, text", [
    (None, "22.6.0.0", f"The {DEPENDENCY} module found does not have 'VERSION' attribute to check version compatibility."),
    ("22.9.0.0", "22.6.0.0", f"The {DEPENDENCY} module found has a version ('22.9.0.0') that is lower than "
     "the referenced version of that module ('22.9.1.0')."),
    ("22.9.1.0", None, f"The {DEPENDENCY} module found does not have 'BACKWARD_COMPATIBILITY_THRESHOLD' "
     "attribute to check version compatibility."),
    ("23.0.0.0", "23.0.0.0", "The installed version of the module ('23.0.0.0') is not compatible with the "
     "referenced vesion of the module ('22.9.1.0'). The installed version of the module is not compatible with the "
     "module versions < '23.0.0.0'. Update dendend module 'orvane.pyfigura' to a latest version.")])
def test_dependency_refused(pygc_with, found, threshold, text):
    pygc_with(found, threshold)
    error = raised(check)
    assert type(error) is ImportError and str(error) == PREFIX + text
    assert error.__cause__ is None and error.__context__ is None


def test_dependency_refusals_chain_the_import_error_and_use_the_published_view(monkeypatch, pygc_with):
    pygc_with("22.9.1.0", "22.6.0.0").VERSION = version_probe.make(1, 0, 0, 0, "old-build")
    with pytest.raises(ImportError, match=r"\('old-build'\)"):
        check()
    monkeypatch.setitem(sys.modules, DEPENDENCY, None)
    error = raised(check)
    assert str(error) == PREFIX + "The module not found or errors occurred while initializing it."
    assert isinstance(error.__cause__, ModuleNotFoundError) and error.__context__ is error.__cause__


def test_import_attribute_and_its_chained_failures():
    assert probe.import_attribute("decimal", "Decimal") is decimal.Decimal
    error = raised(probe.import_attribute, "orvane_no_such_module", "Decimal")
    assert str(error) == ("Unable to import the specified module orvane_no_such_module. "
                          "The module not found or errors occurred while initializing it.")
    assert isinstance(error.__cause__, ModuleNotFoundError)
    error = raised(probe.import_attribute, "decimal", "NoSuchType")
    assert str(error) == ("Unable to import the specified type NoSuchType from the module decimal. "
                          "The type not found or errors occurred while initializing it.")
    assert isinstance(error.__cause__, AttributeError) and error.__context__ is error.__cause__
