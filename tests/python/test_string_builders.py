"""String records going in (expose, converter) and the string and byte builders coming out."""

import sys

import pytest

import failure_probe as probe


class Text(str):
    pass


def utf16(text):
    return text.encode("utf-16-le", "surrogatepass")


class TestExpose:
    @pytest.mark.parametrize("text, kind", [
        ("plain ascii", 1),
        ("\u00e9", 1),
        ("caf\u00e9 \u20ac", 2),
        ("a\U0001F600b", 4),  # the astral character counts once
        ("", 1),
    ])
    def test_view_of_the_object_storage(self, text, kind):
        assert probe.expose_string(text) == (len(text), kind, True)


class TestConverter:
    def test_none_is_the_null_string(self):
        assert probe.convert_string(None) == (-1, 0, False)

    @pytest.mark.parametrize("text", ["abc", Text("sub\u0394")])
    def test_str_and_subclasses_are_exposed(self, text):
        assert probe.convert_string(text) == probe.expose_string(text)

    @pytest.mark.parametrize("value, name", [(b"abc", "bytes"), (3, "int"), (bytearray(), "bytearray")])
    def test_other_objects_are_refused(self, value, name):
        with pytest.raises(TypeError) as caught:
            probe.convert_string(value)
        assert str(caught.value) == f"can't build String from '{name}'"


class TestBuilders:
    @pytest.mark.parametrize("text", ["", "abc", "\u00e9\u20ac", "pair \U0001F600 end"])
    def test_python_string_decodes_utf16(self, text):
        assert probe.build_py_string(utf16(text)) == text
        assert probe.build_py_string_quiet(utf16(text)) == text

    def test_lone_surrogate_fails_with_the_handler_lookup(self):
        with pytest.raises(LookupError, match="unknown error handler name ''"):
            probe.build_py_string(utf16("a\ud800"))

    def test_quiet_builder_reports_instead_of_raising(self, monkeypatch):
        seen = []
        monkeypatch.setattr(sys, "unraisablehook", seen.append)  # inside the call phase, after pytest's own
        assert probe.build_py_string_quiet(utf16("\udc00")) is None
        assert [(u.exc_type, u.object) for u in seen] == [(LookupError, "FormatCallbackException")]

    @pytest.mark.parametrize("text", ["", "short", "a name longer than seven units \U0001F600"])
    def test_wide_string_copies_the_units(self, text):
        assert probe.build_u16_string(utf16(text)) == utf16(text)

    @pytest.mark.parametrize("data", [b"", b"\x00\xffpayload"])
    def test_bytes_builder_makes_a_bytearray(self, data):
        result = probe.build_py_bytes(data)
        assert type(result) is bytearray and result == data
