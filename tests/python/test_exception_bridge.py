"""Errors across the bridge: proxy errors, pending exceptions as text, start-up failures, versions, dependencies."""
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

NOTHING = (-1, None, -7, -7, False)  # what catch_and_clear_error gives when no exception is pending


def raised(function, *args, **kwargs):  # the exception the call raises, with its traceback
    with pytest.raises(BaseException) as caught:
        function(*args, **kwargs)
    return caught.value


@contextlib.contextmanager
def unraisable_reports():  # what reaches sys.unraisablehook inside the block (pytest's own hook is set per call)
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


def test_proxy_error_texts_replace_a_pending_error_and_take_over_both_references():
    for name, message in [("System.ArgumentException", "bad width"), (None, "bad width"),
                          ("System.Exception", None), (None, None)]:  # a missing part reads <unknown>
        error = raised(probe.raise_proxy_error, name, message)
        assert type(error) is RuntimeError
        assert str(error) == f"Proxy error({name or '<unknown>'}): {message or '<unknown>'}"
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
    for message, kind in [("x", 1), ("\u20ac", 2), ("\U0001F600", 4)]:  # no traceback; the view has the text's width
        text = f"ValueError: {message}\n"
        assert probe.catch_and_clear_error(ValueError(message)) == (0, text, len(text), kind, True)


@pytest.mark.parametrize("break_traceback, error, text, reported", [
    (lambda mp: mp.delattr(traceback, "format_exception"), fail, "ValueError: x", [AttributeError]),
    (lambda mp: mp.setattr(traceback, "format_exception_only", "not callable"), KeyError("k"), "KeyError: 'k'", []),
    (lambda mp: mp.setitem(sys.modules, "traceback", None), NESTED("x"), "Outer.Nested: x", [ModuleNotFoundError]),
    (lambda mp: mp.setitem(sys.modules, "traceback", None), Unprintable(), None, [LookupError])],
    ids=["no format function", "uncallable formatter", "no traceback module", "both formatters fail"])
def test_catch_and_clear_falls_back_when_the_traceback_module_fails(monkeypatch, break_traceback, error, text,
                                                                    reported):
    break_traceback(monkeypatch)
    with unraisable_reports() as unraisable:
        result = probe.catch_and_clear_error(error)
    assert result[:3] == ((0, text, len(text)) if text else NOTHING[:3])
    assert [u.exc_type for u in unraisable] == reported
    assert all(u.object == "FormatCallbackException" for u in unraisable if u.exc_type is not ModuleNotFoundError)


DEPENDENCY = "orvane.pygc"
PREFIX = f"Unable to import module dependencies. Cannot import the {DEPENDENCY} module. "
NOT_FOUND = "The module not found or errors occurred while initializing it."
NO_MODULE = "Unable to import the specified module {}. " + NOT_FOUND
NO_TYPE = "Unable to import the specified type {} from the module {}. The type not found or errors occurred while " \
          "initializing it."
INTERNAL = [(probe.raise_module_failure, "Module", -1012, ("orvane.pyfigura", "orvane.pyfigura._C_APIT_Pen")),
            (probe.raise_type_failure, "Type", -1015, ("orvane.pyfigura.Bitmap",))]
FAMILY = [(function, (code, *names), f"{kind} initialization internal error ({code}) <{','.join(names)}>")
          for function, kind, code, names in INTERNAL] + [
    (probe.raise_import_failure, ("uuid",), NO_MODULE.format("uuid")),
    (probe.raise_attribute_failure, ("UUID", "uuid"), NO_TYPE.format("UUID", "uuid"))]


@pytest.mark.parametrize("function, args, text", FAMILY)
def test_family_texts_alone_and_chained_over_a_pending_error(function, args, text):
    pending = raised({}.__getitem__, "first")
    for before in (None, pending):
        error = raised(function, *args, **({"pending": before} if before else {}))
        assert type(error) is ImportError and str(error) == text
        assert error.__cause__ is before and error.__context__ is before


def test_enum_failure_and_chain_and_raise():
    error = raised(probe.raise_enum_failure, "accessor missing", "drawing2d.FillMode")
    assert type(error) is ImportError and str(error) == "enum type 'drawing2d.FillMode' is not initialized"
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


def test_version_text_read_only_fields_and_fnv1a_hash_and_both_modules_publish_theirs():
    import orvane.pygc as pygc
    version = make((22, -9, 2147483647, -2147483648), "one-two")
    assert (str(version), version.view) == ("one-two", "one-two")
    assert tuple(getattr(version, f) for f in FIELDS) == (22, -9, 2147483647, -2147483648)
    for field in FIELDS + ("view",):
        with pytest.raises(AttributeError):
            setattr(version, field, 1)
    with pytest.raises(TypeError):
        version_probe._ModuleVersionType()
    # FNV-1a over the four fields as little-endian 32-bit words, sign-extended from 32 bits; the view is not hashed.
    assert [hash(make(n)) for n in [(0, 0, 0, 0), (22, 9, 1, 0), (-1, 255, 65536, 7)]] == [
        1768495365, 1822599435, -1850520464]
    assert hash(make((22, 9, 1, 0), "a")) == hash(make((22, 9, 1, 0), "b"))
    assert hash(make((1, 8, 0, 1217457877))) == -2  # its FNV-1a is 0xFFFFFFFF: the error marker is never returned
    for module in (pyfigura, pygc):  # each has its own static type of the same layout
        assert (repr(module.VERSION), tuple(getattr(module.VERSION, f) for f in FIELDS), hash(module.VERSION),
                str(module._BACKWARD_COMPATIBILITY_THRESHOLD)) == (
            "<orvane.pyfigura._ModuleVersionType: 22.9.1.0>", (22, 9, 1, 0), 1822599435, "22.6.0.0")


def test_all_operators_follow_tuple_order_of_the_numbers_and_refuse_other_types():
    for left, right in [((22, 9, 1, 0), (22, 9, 1, 0)), ((22, 9, 1, 0), (22, 10, 0, 0)),
                        ((23, 0, 0, 0), (22, 99, 99, 99)), ((1, 2, 3, 4), (1, 2, 3, 5)), ((-1, 0, 0, 0), (0, 0, 0, 0))]:
        for op in (operator.lt, operator.le, operator.eq, operator.ne, operator.gt, operator.ge):
            assert op(make(left, "x"), make(right, "y")) is op(left, right), (op.__name__, left, right)
            assert op(make(right), make(left)) is op(right, left), (op.__name__, right, left)
    version = make((22, 9, 1, 0))
    assert version.__eq__(1) is NotImplemented and version.__lt__((22, 9, 1, 0)) is NotImplemented
    for reference, found, expected in [((22, 9, 1, 0), (22, 9, 1, 0), 0), ((22, 9, 1, 0), (22, 10, 0, 0), -1),
                                       ((22, 9, 1, 0), (22, 9, 0, 0), 1), ((0, 0, 0, -1), (0, 0, 0, 0), -1)]:
        assert version_probe.compare(reference, make(found)) == expected


def check():
    return probe.import_versioned_dependency("orvane.pyfigura", DEPENDENCY, (22, 9, 1, 0))


def stand_in(monkeypatch, found, threshold):  # a stand-in orvane.pygc with these version texts (None: left out)
    module = types.ModuleType(DEPENDENCY)
    for name, value in (("VERSION", found), ("_BACKWARD_COMPATIBILITY_THRESHOLD", threshold)):
        if value is not None:
            setattr(module, name, make(tuple(map(int, value.split("."))), value))
    monkeypatch.setitem(sys.modules, DEPENDENCY, module)
    return module


@pytest.mark.parametrize("found, threshold, text", [
    ("22.10.0.0", "22.6.0.0", None), ("22.9.1.0", "22.9.1.0", None), ("100.0.0.0", "1.0.0.0", None),  # accepted
    (None, "22.6.0.0", "The {} module found does not have 'VERSION' attribute to check version compatibility."),
    ("22.9.0.0", "22.6.0.0", "The {} module found has a version ('22.9.0.0') that is lower than "
     "the referenced version of that module ('22.9.1.0')."),
    ("22.9.1.0", None, "The {} module found does not have 'BACKWARD_COMPATIBILITY_THRESHOLD' "
     "attribute to check version compatibility."),
    ("23.0.0.0", "23.0.0.0", "The installed version of the module ('23.0.0.0') is not compatible with the "
     "referenced vesion of the module ('22.9.1.0'). The installed version of the module is not compatible with the "
     "module versions < '23.0.0.0'. Update dendend module 'orvane.pyfigura' to a latest version.")])
def test_dependency_accepted_when_the_reference_lies_between_threshold_and_found(monkeypatch, found, threshold, text):
    module = stand_in(monkeypatch, found, threshold)
    if text is None:
        assert check() is module
        return
    error = raised(check)
    assert type(error) is ImportError and str(error) == PREFIX + text.format(DEPENDENCY)
    assert error.__cause__ is None and error.__context__ is None


def test_refusals_use_the_published_view_and_chain_the_import_error(monkeypatch):
    import orvane.pygc
    assert check() is orvane.pygc and probe.import_attribute("decimal", "Decimal") is decimal.Decimal
    stand_in(monkeypatch, "22.9.1.0", "22.6.0.0").VERSION = version_probe.make(1, 0, 0, 0, "old-build")
    with pytest.raises(ImportError, match=r"\('old-build'\)"):
        check()
    monkeypatch.setitem(sys.modules, DEPENDENCY, None)
    for call, text, cause in [(check, PREFIX + NOT_FOUND, ModuleNotFoundError),
                              (lambda: probe.import_attribute("no_such", "Decimal"), NO_MODULE.format("no_such"),
                               ModuleNotFoundError),
                              (lambda: probe.import_attribute("decimal", "No"), NO_TYPE.format("No", "decimal"),
                               AttributeError)]:
        error = raised(call)
        assert str(error) == text and type(error.__cause__) is cause and error.__context__ is error.__cause__
