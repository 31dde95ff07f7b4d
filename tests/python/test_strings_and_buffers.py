"""Strings of every width and bytes-like objects reach managed System.Drawing code intact and come back."""
import array
import os

import pytest
from PIL import Image as PilImage

import orvane.pyfigura as f
from orvane.pyfigura import drawing2d, imaging, printing

TEXTS = {
    "ascii": "plain ascii",
    "latin1": "caf\u00e9 \u00ff\u00e0",
    "bmp": "\u4e2d\u6587 \u20ac \u0416",
    "astral": "smile \U0001F600 \U00010348",
    "mixed": "a\u00e9\u4e2d\U0001F600z",
    "empty": "",
}


@pytest.fixture(params=sorted(TEXTS), ids=sorted(TEXTS))
def text(request):
    return TEXTS[request.param]


class TestStringsRoundTrip:
    def test_constructor_argument_and_property(self, text):
        assert printing.PaperSize(text, 100, 200).paper_name == text

    def test_property_setter_and_getter(self, text):
        doc = printing.PrintDocument()
        doc.document_name = text
        back = doc.document_name
        assert type(back) is str
        assert back == text

    def test_object_property_holds_a_str(self, text):
        holder = f.Bitmap(1, 1)
        holder.tag = text
        assert holder.tag == text

    def test_managed_to_string_builds_the_text(self, text):
        size = printing.PaperSize(text, 100, 200)
        assert repr(size) == f"[PaperSize {text} Kind=Custom Height=200 Width=100]"

    def test_str_subclass_is_accepted(self):
        class Name(str):
            pass
        assert printing.PaperSize(Name("sub\u00e9"), 1, 1).paper_name == "sub\u00e9"

    def test_file_names_reach_the_file_system(self, tmp_path):
        names = [TEXTS[k] + ".png" for k in ("latin1", "bmp", "astral", "mixed")]
        for i, name in enumerate(names):
            f.Bitmap(i + 1, 2).save(str(tmp_path / name))
        assert sorted(os.listdir(tmp_path)) == sorted(names)
        for i, name in enumerate(names):
            assert f.Image.from_file(str(tmp_path / name)).width == i + 1


class TestStringEdges:
    def test_none_is_the_null_string(self):
        size = printing.PaperSize(None, 1, 2)
        assert size.paper_name is None
        size.paper_name = "x"
        size.paper_name = None
        assert size.paper_name is None

    @pytest.mark.parametrize("value", [b"bytes", bytearray(b"x"), 3, 1.5])
    def test_non_str_is_refused(self, value):
        doc = printing.PrintDocument()
        with pytest.raises(TypeError) as info:
            doc.document_name = value
        assert info.value.args == (f"can't build String from '{type(value).__name__}'",)

    @pytest.mark.parametrize("bad", ["a\ud800b", "\U0001F600\udfff"], ids=["ucs2", "ucs4"])
    def test_lone_surrogate_is_refused_as_python_would(self, bad):
        doc = printing.PrintDocument()
        calls = [lambda: setattr(doc, "document_name", bad), lambda: f.Font(bad, 9.0),  # setter, one trial
                 lambda: f.Graphics.from_image(f.Bitmap(2, 2)).draw_string(bad, f.Font("DejaVu Sans", 9.0),
                                                                          f.Brushes.red, 0.0, 0.0)]  # six trials
        for call in calls:
            with pytest.raises(UnicodeEncodeError, match="surrogates not allowed") as info:
                call()
            assert info.value.start == next(i for i, c in enumerate(bad) if 0xD800 <= ord(c) <= 0xDFFF)
        assert doc.document_name == printing.PrintDocument().document_name

    def test_nul_in_a_file_name_is_refused_as_open_does(self, tmp_path):
        target = str(tmp_path / "a\x00b.png")
        calls = [lambda: f.Bitmap(2, 2).save(target), lambda: f.Bitmap(target),
                 lambda: setattr(printing.PrinterSettings(), "print_file_name", target)]
        for call in calls:
            with pytest.raises(ValueError, match="^embedded null character$"):
                call()
        assert list(tmp_path.iterdir()) == []
        f.Bitmap(2, 2).save(str(tmp_path / "ok.png"))  # the same converter passes a clean name
        # A NUL inside text that is not a file name still crosses whole.
        doc = printing.PrintDocument()
        doc.document_name = "a\x00b"
        assert doc.document_name == "a\x00b"

    def test_long_string(self):
        long_text = ("\u00e9\U0001F600x" * 20000)
        doc = printing.PrintDocument()
        doc.document_name = long_text
        assert doc.document_name == long_text


QUALITY = imaging.Encoder.QUALITY


class TestByteArrayParameters:
    @pytest.mark.parametrize("value", [
        b"abc", bytearray(b"abcd"), memoryview(b"abcde"), memoryview(bytearray(b"xy")),
        array.array("B", b"xyz123"), b""], ids=["bytes", "bytearray", "memoryview", "memoryview-rw",
                                                 "array", "empty"])
    def test_bytes_like_objects_reach_a_byte_array_parameter(self, value):
        ep = imaging.EncoderParameter(QUALITY, value)
        assert ep.number_of_values == len(bytes(value))
        assert ep.value_type == imaging.EncoderParameterValueType.VALUE_TYPE_BYTE

    def test_the_bytes_arrive_intact(self):
        data = bytes(range(256))
        path = drawing2d.PathData()
        path.types = data
        assert path.types == bytearray(data)
        path.types = memoryview(data)[10:20]
        assert path.types == bytearray(data[10:20])

    def test_second_byte_array_overload(self):
        ep = imaging.EncoderParameter(QUALITY, b"ab", True)
        assert ep.number_of_values == 2
        assert ep.value_type == imaging.EncoderParameterValueType.VALUE_TYPE_UNDEFINED

    def test_none_is_a_null_array(self):
        path = drawing2d.PathData()
        path.types = b"\x01"
        path.types = None
        assert path.types is None

    @pytest.mark.parametrize("value", ["text", 5, [1, 2]])
    def test_objects_without_a_buffer_are_refused(self, value):
        path = drawing2d.PathData()
        with pytest.raises(TypeError) as info:
            path.types = value
        assert info.value.args == (f"can't build byte[] from '{type(value).__name__}'",)

    def test_strided_memoryview_is_refused_and_released(self):
        base = bytearray(b"abcdef")
        view = memoryview(base)[::2]
        with pytest.raises(TypeError) as info:
            imaging.EncoderParameter(QUALITY, view, True)  # alone, the view is a sequence for Int16[]
        assert info.value.args[0][9] == "can't get internal buffer"
        view.release()  # would raise BufferError if an export were still held
        base.extend(b"!")
        assert base == bytearray(b"abcdef!")


class TestLeases:
    def test_bytearray_can_be_resized_after_the_call(self):
        data = bytearray(b"abc")
        imaging.EncoderParameter(QUALITY, data)
        data.extend(b"defg")
        assert len(data) == 7

    def test_lease_of_a_failed_trial_is_released_before_the_next(self):
        data = bytearray(b"abc")
        # EncoderParameter(encoder, byte[], bool) leases the buffer, then refuses the int; so do all others.
        with pytest.raises(TypeError) as info:
            imaging.EncoderParameter(QUALITY, data, 1)
        assert info.value.args[0][9] == "can't build bool from 'int'"
        data.extend(b"more")
        assert data == bytearray(b"abcmore")

    def test_memoryview_export_is_released_after_a_property_set(self):
        base = bytearray(b"\x00\x01")
        view = memoryview(base)
        path = drawing2d.PathData()
        path.types = view
        view.release()
        base.append(2)
        # The managed array is a copy, unaffected by later changes of the source.
        assert path.types == bytearray(b"\x00\x01")

    def test_managed_exception_after_a_lease_releases_it(self):
        data = bytearray(b"x")
        with f.Graphics.from_image(f.Bitmap(2, 2)) as g:
            # Metafile comments are not implemented on this platform: the call fails with the lease held.
            with pytest.raises(RuntimeError, match=r"^Proxy error\(System\.NotImplementedException\)"):
                g.add_metafile_comment(data)
        data.extend(b"yz")
        assert data == bytearray(b"xyz")


class TestByteArrayResults:
    def test_result_is_a_fresh_bytearray(self):
        path = drawing2d.PathData()
        path.types = b"\x00\x01\x81"
        first = path.types
        assert type(first) is bytearray
        first[0] = 0x7F
        assert path.types == bytearray(b"\x00\x01\x81")
        assert path.types is not path.types

    def test_region_data_round_trip(self):
        shape = drawing2d.GraphicsPath()
        shape.add_line(0, 0, 5, 5)
        shape.add_line(5, 5, 9, 0)
        data = f.Region(shape).get_region_data().data
        assert type(data) is bytearray and len(data) > 16
        holder = f.Region().get_region_data()
        holder.data = bytes(data)
        rebuilt = f.Region(holder)
        assert rebuilt.get_region_data().data == data

    def test_property_item_value_of_a_real_image(self, tmp_path):
        path = str(tmp_path / "exif.jpg")
        exif = PilImage.Exif()
        exif[0x010E] = "a description"
        PilImage.new("RGB", (8, 8), "red").save(path, exif=exif.tobytes())
        item = f.Image.from_file(path).get_property_item(0x010E)
        assert (item.id, item.type, item.len) == (0x010E, 2, 14)
        assert item.value == bytearray(b"a description\x00")
