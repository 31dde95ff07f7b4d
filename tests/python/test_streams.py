"""Streams in both directions: Python files as managed streams for System.Drawing, and _StreamWrapper."""
import io
import os
import sys

import pytest
from PIL import Image as PILImage

import orvane.pyfigura as f
from orvane.pyio import BufferStream

PNG_SIGNATURE = b"\x89PNG\r\n\x1a\n"
StreamWrapper = f._wrpgen._interop._StreamWrapper


@pytest.fixture(scope="module")
def png():
    return f.imaging.ImageFormat.png


@pytest.fixture(scope="module")
def small_png(png):
    out = io.BytesIO()
    f.Bitmap(40, 30).save(out, png)
    return out.getvalue()


@pytest.fixture(scope="module")
def noisy_png():
    """A PNG of a few megabytes that does not compress: random RGB pixels."""
    image = PILImage.frombytes("RGB", (1200, 1000), os.urandom(1200 * 1000 * 3))
    out = io.BytesIO()
    image.save(out, "PNG")
    return image, out.getvalue()


def reload(data):
    return PILImage.open(io.BytesIO(data))


class RawReader(io.RawIOBase):
    """A forward-only reader over bytes."""

    def __init__(self, data):
        self._data, self._at = data, 0

    def readable(self):
        return True

    def readinto(self, target):
        with memoryview(target) as view:
            count = min(len(view), len(self._data) - self._at)
            view[:count] = self._data[self._at:self._at + count]
        self._at += count
        return count


class TrickleWriter(io.RawIOBase):
    """A raw writer that takes at most seven bytes per call, as raw files may."""

    def __init__(self):
        self.data = bytearray()

    def writable(self):
        return True

    def write(self, data):
        taken = bytes(data)[:7]
        self.data += taken
        return len(taken)


class TestConverter:
    def test_object_with_only_read_and_write_is_refused(self, png):
        class ReadWrite:
            def read(self, size=-1):
                return b""

            def write(self, data):
                return len(data)

        with pytest.raises(TypeError) as caught:
            f.Image.from_stream(ReadWrite())
        assert "can't build Stream from 'ReadWrite'" in caught.value.args[0]
        with pytest.raises(TypeError) as caught:
            f.Bitmap(2, 2).save(ReadWrite(), png)
        assert "can't build Stream from 'ReadWrite'" in caught.value.args[0]

    def test_text_file_is_refused(self):
        with pytest.raises(TypeError) as caught:
            f.Image.from_stream(io.StringIO("text"))
        assert "can't build Stream from '_io.StringIO'" in caught.value.args[0]

    def test_wrapper_of_another_managed_type_is_refused(self):
        with pytest.raises(TypeError) as caught:
            f.Image.from_stream(f.Bitmap(1, 1))
        assert "can't build Stream from 'orvane.pyfigura.Bitmap'" in caught.value.args[0]

    @pytest.mark.parametrize("stream", [None, StreamWrapper.__new__(StreamWrapper)], ids=["None", "empty wrapper"])
    def test_none_and_stream_wrapper_reach_managed_code_as_a_null_stream(self, stream):
        with pytest.raises(RuntimeError, match=r"Proxy error\(System\.ArgumentNullException\)"):
            f.Image.from_stream(stream)


class TestRoundTrips:
    def test_save_to_bytesio_makes_a_png(self, png):
        out = io.BytesIO()
        f.Bitmap(40, 30).save(out, png)
        assert out.getvalue().startswith(PNG_SIGNATURE)
        assert reload(out.getvalue()).size == (40, 30)

    def test_load_from_bytesio_and_from_an_open_file(self, small_png, tmp_path):
        assert (f.Bitmap(io.BytesIO(small_png)).width, f.Bitmap(io.BytesIO(small_png)).height) == (40, 30)
        path = tmp_path / "small.png"
        path.write_bytes(small_png)
        with open(path, "rb") as file:
            assert f.Image.from_stream(file).width == 40

    def test_save_to_a_file_opened_for_the_call(self, png, tmp_path):
        path = tmp_path / "out.png"
        f.Bitmap(20, 10).save(open(path, "wb"), png)  # released after the call: CPython closes and flushes it
        assert reload(path.read_bytes()).size == (20, 10)

    def test_buffer_stream_both_ways(self, png):
        stream = BufferStream()
        f.Bitmap(12, 8).save(stream, png)
        assert stream.getvalue().startswith(PNG_SIGNATURE)
        stream.seek(0)
        assert f.Image.from_stream(stream).height == 8

    def test_forward_only_reader(self, small_png):
        assert f.Bitmap(RawReader(small_png)).width == 40

    def test_writer_taking_few_bytes_per_call_gets_them_all(self, png, small_png):
        writer = TrickleWriter()
        f.Bitmap(io.BytesIO(small_png)).save(writer, png)
        assert reload(bytes(writer.data)).size == (40, 30)

    def test_megabytes_round_trip_without_loss(self, png, noisy_png):
        image, data = noisy_png
        assert len(data) > 3_000_000
        bitmap = f.Bitmap(io.BytesIO(data))
        out = io.BytesIO()
        bitmap.save(out, png)
        assert len(out.getvalue()) > 3_000_000
        assert reload(out.getvalue()).convert("RGB").tobytes() == image.tobytes()


class TestCallbackErrors:
    def test_write_error_surfaces_as_itself(self, png):
        class FailingWriter(io.RawIOBase):
            def writable(self):
                return True

            def write(self, data):
                raise OSError("disk on fire")

        with pytest.raises(OSError, match="disk on fire"):
            f.Bitmap(4, 4).save(FailingWriter(), png)
        assert f.Bitmap(2, 2).width == 2  # nothing is left pending for the next call

    def test_read_error_surfaces_as_itself(self, small_png):
        # Whether System.Drawing reads the file itself (forward-only) or libgdiplus calls back (seekable),
        # the file's own exception is not thrown through native code and is not lost.
        class FailingReader(RawReader):
            def readinto(self, target):
                raise OSError("cannot read")

        class FailingSeekableReader(io.BytesIO):
            def readinto(self, target):
                raise OSError("cannot read")

        class ThirdSeekFails(io.BytesIO):
            seeks = 0

            def seek(self, *args):
                ThirdSeekFails.seeks += 1
                if ThirdSeekFails.seeks == 3:
                    raise OSError("third seek")
                return super().seek(*args)

        tiff = io.BytesIO()
        f.Bitmap(5, 5).save(tiff, f.imaging.ImageFormat.tiff)
        for load, text in ((lambda: f.Bitmap(FailingReader(small_png)), "cannot read"),
                           (lambda: f.Bitmap(FailingSeekableReader(small_png)), "cannot read"),
                           (lambda: f.Image.from_stream(ThirdSeekFails(tiff.getvalue())), "third seek")):
            with pytest.raises(OSError, match=f"^{text}$") as caught:
                load()
            assert any(entry.name in ("readinto", "seek") for entry in caught.traceback)
            assert f.Bitmap(2, 2).width == 2  # nothing is left pending for the next call

    def test_writer_that_accepts_nothing_fails_the_call(self, png):
        class StuckWriter(io.RawIOBase):
            def writable(self):
                return True

            def write(self, data):
                return None

        with pytest.raises(RuntimeError, match=r"Proxy error\(System\.IO\.IOException\): the Python file "
                                               r"reported writing 0 of \d+ bytes"):
            f.Bitmap(4, 4).save(StuckWriter(), png)

    def test_closed_file_is_refused_both_ways(self, png, small_png):
        closed = io.BytesIO(small_png)
        closed.close()
        message = r"Proxy error\(System\.ObjectDisposedException\): Cannot access a closed file\."
        with pytest.raises(RuntimeError, match=message):
            f.Bitmap(closed)
        with pytest.raises(RuntimeError, match=message):
            f.Bitmap(4, 4).save(closed, png)


class TestReferences:
    def test_file_is_borrowed_for_the_call_only(self, png, small_png):
        source, target = io.BytesIO(small_png), io.BytesIO()
        before = sys.getrefcount(source), sys.getrefcount(target)
        bitmap = f.Bitmap(source)
        bitmap.save(target, png)
        assert (sys.getrefcount(source), sys.getrefcount(target)) == before

    def test_failed_calls_keep_no_reference(self, png):
        class FailingWriter(io.RawIOBase):
            def writable(self):
                return True

            def write(self, data):
                raise OSError("no")

        writer = FailingWriter()
        before = sys.getrefcount(writer)
        with pytest.raises(OSError):
            f.Bitmap(4, 4).save(writer, png)
        assert sys.getrefcount(writer) == before


    def test_views_kept_past_the_call_hold_a_copy_and_lend_nothing_new(self, png, small_png):
        class Keeper(io.BytesIO):
            kept = []

            def readinto(self, b):
                self.kept.append((b, memoryview(b)))
                return super().readinto(b)

            def write(self, b):
                self.kept.append((b, memoryview(b)))
                return super().write(b)

        for _ in range(200):  # freed native buffers would be reused and overwritten by now
            f.Bitmap(Keeper(small_png)).save(Keeper(), png)
        views = Keeper.kept
        assert len(views) > 400
        for lent, view in views:
            if not view.readonly:
                view[:] = b"\xff" * len(view)  # lands in the kept copy, not in freed memory
            with pytest.raises(BufferError, match="no longer valid after the call"):
                memoryview(lent)
        # The writes reached the files whole: the last saved PNG decodes.
        out = io.BytesIO()
        f.Bitmap(Keeper(small_png)).save(out, png)
        assert PILImage.open(io.BytesIO(out.getvalue())).size == (40, 30)


class TestStreamWrapperWithoutStream:
    """What the wrapper decides natively, shown on an empty wrapper: no managed stream is reachable here."""

    @pytest.fixture
    def stream(self):
        return StreamWrapper.__new__(StreamWrapper)

    def test_no_public_constructor(self):
        with pytest.raises(TypeError, match="type has no available constructor"):
            StreamWrapper()

    def test_argument_checks_come_before_managed_calls(self, stream):
        cases = [
            (lambda: stream.seek(-1), ValueError, "negative seek value -1"),
            (lambda: stream.seek(0, 3), ValueError, r"invalid whence \(3, should be 0, 1 or 2\)"),
            (lambda: stream.seek(0, -1), ValueError, r"invalid whence \(-1, should be 0, 1 or 2\)"),
            (lambda: stream.write(None), TypeError, "write argument must be bytes-like object, not 'None'"),
            (lambda: stream.write("text"), TypeError, "write argument must be bytes-like object, not 'str'"),
            (lambda: stream.readinto(b"abc"), TypeError,
             "readinto argument must be read-write bytes-like object, not 'bytes'"),
            (lambda: stream.read("x"), TypeError, "argument should be integer or None, not 'str'"),
            (lambda: stream.read(1, 2), TypeError, r"read\(\) takes at most 1 argument \(2 given\)"),
            (lambda: stream.truncate(1, 2), TypeError, r"truncate\(\) takes at most 1 argument \(2 given\)"),
            (lambda: stream.fileno(), ValueError, "fileno method is not supported"),
        ]
        for call, error, message in cases:
            with pytest.raises(error, match=message):
                call()

    def test_managed_calls_report_the_missing_stream(self, stream):
        with pytest.raises(RuntimeError, match=r"Proxy error\(System\.InvalidOperationException\): "
                                               r"the wrapper holds no managed stream"):
            stream.readable()

    def test_close_sets_the_flag_even_when_the_managed_close_fails(self, stream):
        assert stream.closed is False and stream.isatty() is False
        with pytest.raises(RuntimeError):
            stream.close()
        assert stream.closed is True
        assert stream.close() is None  # silent the second time

    def test_closed_stream_refuses_io_but_not_fileno(self, stream):
        with stream as entered:
            assert entered is stream
        assert stream.closed is True
        for call in (stream.read, stream.readall, stream.flush, stream.tell, stream.isatty, lambda: stream.write(b"x"),
                     lambda: stream.seek(0), stream.readline, lambda: iter(stream)):
            with pytest.raises(ValueError, match="I/O operation on closed stream"):
                call()
        with pytest.raises(ValueError, match="negative seek value -1"):
            stream.seek(-1)
        with pytest.raises(ValueError, match="fileno method is not supported"):
            stream.fileno()
