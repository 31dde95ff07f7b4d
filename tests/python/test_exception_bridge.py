"""Proxy errors for managed exceptions, and pending Python exceptions turned into text."""

import contextlib
import sys
import traceback

import pytest

import failure_probe as probe


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


class TestProxyError:
    @pytest.mark.parametrize("type_name, message, text", [
        ("System.ArgumentException", "bad width", "Proxy error(System.ArgumentException): bad width"),
        (None, "bad width", "Proxy error(<unknown>): bad width"),
        ("System.Exception", None, "Proxy error(System.Exception): <unknown>"),
        (None, None, "Proxy error(<unknown>): <unknown>"),
    ])
    def test_texts(self, type_name, message, text):
        with pytest.raises(RuntimeError) as caught:
            probe.raise_proxy_error(type_name, message)
        assert str(caught.value) == text

    def test_replaces_a_pending_error(self):
        with pytest.raises(RuntimeError) as caught:
            probe.raise_proxy_error("T", "m", pending=ValueError("old"))
        assert caught.value.__cause__ is None

    def test_takes_over_both_references(self):
        type_name, message = "".join(["Sys", "tem.T"]), "".join(["mes", "sage"])
        before = sys.getrefcount(type_name), sys.getrefcount(message)
        for _ in range(20):
            with pytest.raises(RuntimeError):
                probe.raise_proxy_error(type_name, message)
        assert (sys.getrefcount(type_name), sys.getrefcount(message)) == before


class TestCatchAndClear:
    def test_with_traceback_gives_the_full_formatted_text(self):
        with unraisable_reports() as unraisable:
            code, text, length, kind, same_storage = probe.catch_and_clear_error(fail)
        try:
            fail()
        except ValueError as error:
            expected = "".join(traceback.format_exception(ValueError, error, error.__traceback__.tb_next))
        assert (code, text) == (0, expected)
        assert text.startswith("Traceback (most recent call last):") and "in fail" in text
        assert (length, kind, same_storage) == (len(text), 1, True)
        assert sys.exc_info() == (None, None, None) and unraisable == []

    def test_without_traceback_formats_the_exception_only(self):
        code, text, length, kind, _ = probe.catch_and_clear_error(ValueError("x"))
        assert (code, text, length, kind) == (0, "ValueError: x\n", 14, 1)

    @pytest.mark.parametrize("message, kind", [("\u20ac", 2), ("\U0001F600", 4)])
    def test_view_has_the_width_of_the_text(self, message, kind):
        code, text, length, got_kind, same_storage = probe.catch_and_clear_error(ValueError(message))
        assert (code, text) == (0, f"ValueError: {message}\n")
        assert (length, got_kind, same_storage) == (len(text), kind, True)

    def test_nothing_pending_returns_minus_one_and_touches_nothing(self):
        with unraisable_reports() as unraisable:
            assert probe.catch_and_clear_error(None) == (-1, None, -7, -7, False)
            assert probe.catch_and_clear_error(lambda: None) == (-1, None, -7, -7, False)
        assert unraisable == []

    def test_missing_format_function_falls_back_and_reports_the_lookup(self, monkeypatch):
        monkeypatch.delattr(traceback, "format_exception")
        with unraisable_reports() as unraisable:
            code, text, length, _, _ = probe.catch_and_clear_error(fail)
        assert (code, text, length) == (0, "ValueError: x", 13)
        assert len(unraisable) == 1
        assert unraisable[0].exc_type is AttributeError
        assert unraisable[0].object == "FormatCallbackException"

    def test_uncallable_format_function_falls_back_silently(self, monkeypatch):
        monkeypatch.setattr(traceback, "format_exception_only", "not callable")
        with unraisable_reports() as unraisable:
            assert probe.catch_and_clear_error(KeyError("k"))[:2] == (0, "KeyError: 'k'")
        assert unraisable == []

    def test_missing_traceback_module_falls_back(self, monkeypatch):
        monkeypatch.setitem(sys.modules, "traceback", None)
        with unraisable_reports() as unraisable:
            assert probe.catch_and_clear_error(ValueError("x"))[:2] == (0, "ValueError: x")
        assert [u.exc_type for u in unraisable] == [ModuleNotFoundError]

    def test_failure_of_both_formatters_is_reported_not_raised(self, monkeypatch):
        class Unprintable(Exception):
            def __str__(self):
                raise LookupError("no text")

        monkeypatch.setitem(sys.modules, "traceback", None)
        with unraisable_reports() as unraisable:
            assert probe.catch_and_clear_error(Unprintable()) == (-1, None, -7, -7, False)
        assert [u.exc_type for u in unraisable] == [LookupError]
        assert unraisable[0].object == "FormatCallbackException"


class OddQualname(type):
    def __getattribute__(cls, name):
        return 42 if name == "__qualname__" else super().__getattribute__(name)


class FailingQualname(type):
    def __getattribute__(cls, name):
        if name == "__qualname__":
            raise RuntimeError("no name")
        return super().__getattribute__(name)


class TextOf:
    """Stand-in traceback whose str is given, or raises when given None."""

    def __init__(self, text):
        self.text = text

    def __str__(self):
        if self.text is None:
            raise RuntimeError("no text")
        return self.text


class TestFallbackFormatter:
    @pytest.mark.parametrize("value, traceback_object, text", [
        (None, None, "ValueError:"),
        (ValueError("x"), None, "ValueError: x"),
        (ValueError("x"), TextOf("<traceback object>"), "ValueError: x"),
        (ValueError("x"), TextOf(""), "ValueError: x\n"),
        (ValueError("x"), TextOf(None), "ValueError: x\n"),
    ])
    def test_forms(self, value, traceback_object, text):
        assert probe.format_pending_exception(ValueError, value, traceback_object) == (True, text)

    def test_uses_the_qualified_name(self):
        class Inner(Exception):
            pass
        ok, text = probe.format_pending_exception(Inner, Inner("y"), None)
        assert text == f"{Inner.__qualname__}: y" and "<locals>" in text

    @pytest.mark.parametrize("meta", [OddQualname, FailingQualname])
    def test_type_without_str_qualname_is_named_by_its_str(self, meta):
        odd = meta("Odd", (Exception,), {})
        assert probe.format_pending_exception(odd, odd("z"), None) == (True, f"{odd}: z")

    def test_value_whose_str_fails_ends_with_that_error(self):
        class Unprintable(Exception):
            def __str__(self):
                raise LookupError("no text")
        with pytest.raises(LookupError):
            probe.format_pending_exception(Unprintable, Unprintable(), None)

    def test_bridge_uses_it_when_the_traceback_module_chokes_on_the_name(self):
        odd = OddQualname("Odd", (Exception,), {"__module__": "somewhere"})
        with unraisable_reports() as unraisable:
            code, text, *_ = probe.catch_and_clear_error(odd("z"))
        assert (code, text) == (0, f"{odd}: z")
        assert [u.exc_type for u in unraisable] == [TypeError]
