"""Strings of every width and bytes-like objects reach System.Drawing intact and come back; the string builders."""
import os
import sys

import pytest

import failure_probe
import orvane.pyfigura as f
from orvane.pyfigura import drawing2d, imaging, printing

TEXTS = {"ascii": "plain ascii", "latin1": "caf\u00e9 \u00ff\u00e0", "bmp": "\u4e2d\u6587 \u20ac \u0416",
         "astral": "smile \U0001F600 \U00010348", "mixed": "a\u00e9\u4e2d\U0001F600z", "empty": "",
         "subclass": type("Name", (str,), {})("sub\u00e9"), "long": "\u00e9\U0001F600x" * 20000, "nul": "a\x00b"}
QUALITY = imaging.Encoder.QUALITY


def utf16(text):
    return text.encode("utf-16-le", "surrogatepass")


def raised(call):
    with pytest.raises(Exception) as caught:
        call()
    return caught.type, caught.value.args


@pytest.mark.parametrize("text", TEXTS.values(), ids=TEXTS)
def test_arguments_properties_and_managed_texts_round_trip(text):
    size, doc = printing.PaperSize(text, 100, 200), printing.PrintDocument()
    assert size.paper_name == text and repr(size) == f"[PaperSize {text} Kind=Custom Height=200 Width=100]"
    doc.document_name = text
    assert type(doc.document_name) is str and doc.document_name == text


def test_file_names_reach_the_file_system_and_a_nul_in_one_is_refused_as_open_does(tmp_path):
    names = [TEXTS[k] + ".png" for k in ("latin1", "bmp", "astral", "mixed")]
    for i, name in enumerate(names):
        f.Bitmap(i + 1, 2).save(str(tmp_path / name))
    assert sorted(os.listdir(tmp_path)) == sorted(names)
    assert [f.Image.from_file(str(tmp_path / name)).width for name in names] == [1, 2, 3, 4]
    target = str(tmp_path / "a\x00b.png")  # text that is no file name keeps its NUL: TEXTS["nul"]
    for call in [lambda: f.Bitmap(2, 2).save(target), lambda: f.Bitmap(target),
                 lambda: setattr(printing.PrinterSettings(), "print_file_name", target)]:
        assert raised(call) == (ValueError, ("embedded null character",))
    assert len(os.listdir(tmp_path)) == len(names)


def test_none_is_the_null_string_and_other_objects_are_refused():
    size = printing.PaperSize(None, 1, 2)
    assert size.paper_name is None
    assert raised(lambda: setattr(size, "paper_name", b"x")) == (TypeError, ("can't build String from 'bytes'",))


@pytest.mark.parametrize("bad", ["a\ud800b", "\U0001F600\udfff"], ids=["ucs2", "ucs4"])
def test_lone_surrogate_is_refused_as_python_would(bad):
    doc, font = printing.PrintDocument(), f.Font("DejaVu Sans", 9.0)
    draw = f.Graphics.from_image(f.Bitmap(2, 2)).draw_string
    # a setter, a call of one trial and a call of six
    for call in [lambda: setattr(doc, "document_name", bad), lambda: f.Font(bad, 9.0),
                 lambda: draw(bad, font, f.Brushes.red, 0.0, 0.0)]:
        with pytest.raises(UnicodeEncodeError, match="surrogates not allowed") as info:
            call()
        assert info.value.start == next(i for i, c in enumerate(bad) if 0xD800 <= ord(c) <= 0xDFFF)
    assert doc.document_name == printing.PrintDocument().document_name


@pytest.mark.parametrize("text", ["", "\u00e9\u20ac", "a name longer than seven units \U0001F600"])
def test_builders_decode_and_copy_utf16(text):  # strings and bytes from managed results: the tests above
    assert failure_probe.build_py_string_quiet(utf16(text)) == text
    assert failure_probe.build_u16_string(utf16(text)) == utf16(text)


def test_lone_surrogate_fails_in_the_builder_and_the_quiet_one_reports_it(monkeypatch):
    with pytest.raises(LookupError, match="unknown error handler name ''"):
        failure_probe.build_py_string(utf16("a\ud800"))
    seen = []
    monkeypatch.setattr(sys, "unraisablehook", seen.append)  # inside the call phase, after pytest's own
    assert failure_probe.build_py_string_quiet(utf16("\udc00")) is None
    assert [(u.exc_type, u.object) for u in seen] == [(LookupError, "FormatCallbackException")]


def test_byte_properties_copy_in_and_out_and_none_is_a_null_array():
    data, path = bytes(range(256)), drawing2d.PathData()
    path.types = memoryview(data)[10:20]
    assert path.types == bytearray(data[10:20])
    path.types = data
    first = path.types
    first[0] = 0x7F  # a copy
    assert type(first) is bytearray and path.types == bytearray(data)
    path.types = None  # the null array
    assert path.types is None
    assert raised(lambda: setattr(path, "types", [1, 2])) == (TypeError, ("can't build byte[] from 'list'",))
    codec = imaging.ImageCodecInfo.get_image_encoders()[0]  # arrays of byte arrays: each element copied
    for pack in (list, tuple):  # the list and the sequence element readers
        codec.signature_patterns = pack([None, b"ab", memoryview(b"q")])
        assert list(codec.signature_patterns) == [None, bytearray(b"ab"), bytearray(b"q")]
        with pytest.raises(TypeError, match=r"can't build byte\[\] from 'int'"):
            codec.signature_patterns = pack([b"ok", 5])


def test_leases_are_given_back_after_success_a_failed_trial_and_a_managed_exception():
    data = bytearray(b"abc")
    codec = imaging.ImageCodecInfo.get_image_encoders()[0]
    codec.signature_patterns = [data]  # an element of an array
    imaging.EncoderParameter(QUALITY, data)
    data.extend(b"d")  # a held export would refuse the resize
    # EncoderParameter(encoder, byte[], bool) leases the buffer, then refuses the int; so do all others.
    with pytest.raises(TypeError) as info:
        imaging.EncoderParameter(QUALITY, data, 1)
    assert info.value.args[0][9] == "can't build bool from 'int'"
    data.extend(b"e")
    with f.Graphics.from_image(f.Bitmap(2, 2)) as g:
        # Metafile comments are not implemented on this platform: the call fails with the lease held.
        with pytest.raises(RuntimeError, match=r"^Proxy error\(System\.NotImplementedException\)"):
            g.add_metafile_comment(data)
    data.extend(b"f")
    assert data == bytearray(b"abcdef")
