"""Streams in both directions: Python files as managed streams, _StreamWrapper, and orvane.pyio's BufferStream."""
import array
import io
import sys

import pytest
from PIL import Image as PILImage

import orvane.pyfigura as f
from orvane.pyio import BufferStream

PNG = f.imaging.ImageFormat.png
StreamWrapper = f._wrpgen._interop._StreamWrapper


@pytest.fixture(scope="module")
def small_png():
    out = io.BytesIO()
    f.Bitmap(40, 30).save(out, PNG)
    return out.getvalue()


class RawReader(io.RawIOBase):
    """A forward-only reader over bytes."""

    def __init__(self, data):
        self._source = io.BytesIO(data)

    def readable(self):
        return True

    def readinto(self, target):
        return self._source.readinto(target)


class Writer(io.RawIOBase):
    """A raw writer that takes at most `most` bytes per call, as raw files may."""

    def __init__(self, most=7):
        self.data, self.most = bytearray(), most

    def writable(self):
        return True

    def write(self, data):
        taken = bytes(data)[:self.most]
        self.data += taken
        return len(taken) or None


def failing(base, method, text, at=1):
    """A subclass of `base` whose `method` raises OSError(text) on its `at`-th call."""
    calls = []

    def fail(self, *args):
        calls.append(args)
        if len(calls) == at:
            raise OSError(text)
        return getattr(base, method)(self, *args)
    return type("Failing", (base,), {method: fail})


def raises_each(table):
    """Every call of the (call, exception type, pattern) rows raises as its row says."""
    for call, error, pattern in table:
        with pytest.raises(error, match=pattern):
            call()


def test_objects_that_are_not_binary_files_are_refused_and_null_streams_are_managed_errors():
    read_write = type("ReadWrite", (), {"read": lambda s, n=-1: b"", "write": lambda s, d: len(d)})()
    for stream, name in [(read_write, "ReadWrite"), (io.StringIO("text"), "_io.StringIO"),
                         (f.Bitmap(1, 1), "orvane.pyfigura.Bitmap")]:
        raises_each([(lambda: f.Image.from_stream(stream), TypeError, f"can't build Stream from '{name}'"),
                     (lambda: f.Bitmap(2, 2).save(stream, PNG), TypeError, f"can't build Stream from '{name}'")])
    raises_each([(lambda: f.Image.from_stream(s), RuntimeError, r"^Proxy error\(System\.ArgumentNullException\)")
                 for s in (None, StreamWrapper.__new__(StreamWrapper))])


def test_round_trips_through_every_kind_of_python_file(small_png, tmp_path):
    assert PILImage.open(io.BytesIO(small_png)).size == (40, 30)
    f.Bitmap(20, 10).save(open(tmp_path / "small.png", "wb"), PNG)  # released after the call: closed and flushed
    with open(tmp_path / "small.png", "rb") as file:
        assert f.Image.from_stream(file).width == 20
    f.Bitmap(12, 8).save(stream := BufferStream(), PNG)
    stream.seek(0)
    assert f.Image.from_stream(stream).height == 8
    f.Bitmap(RawReader(small_png)).save(writer := Writer(), PNG)  # a writer taking few bytes per call gets them all
    assert PILImage.open(io.BytesIO(writer.data)).size == (40, 30)


def test_errors_of_the_file_surface_as_themselves_and_leave_nothing_pending(small_png):
    # Read by System.Drawing (forward-only) or called back by libgdiplus (seekable), the file's exception comes back.
    f.Bitmap(5, 5).save(tiff := io.BytesIO(), f.imaging.ImageFormat.tiff)
    writer = failing(Writer, "write", "disk on fire")()
    before = sys.getrefcount(writer)
    for call, text in ((lambda: f.Bitmap(failing(RawReader, "readinto", "cannot read")(small_png)), "cannot read"),
                       (lambda: f.Bitmap(failing(io.BytesIO, "readinto", "cannot read")(small_png)), "cannot read"),
                       (lambda: f.Image.from_stream(failing(io.BytesIO, "seek", "third seek", 3)(tiff.getvalue())),
                        "third seek"),
                       (lambda: f.Bitmap(4, 4).save(writer, PNG), "disk on fire")):
        with pytest.raises(OSError, match=f"^{text}$") as caught:
            call()
        assert caught.traceback[-1].name == "fail" and f.Bitmap(2, 2).width == 2
    del caught
    assert sys.getrefcount(writer) == before  # a failed call keeps no reference
    closed = io.BytesIO(small_png)
    closed.close()
    raises_each([(lambda: f.Bitmap(4, 4).save(Writer(most=0), PNG), RuntimeError,
                  r"Proxy error\(System\.IO\.IOException\): the Python file reported writing 0 of \d+ bytes")] + [
        (call, RuntimeError, r"ObjectDisposedException\): Cannot access a closed file\.")
        for call in (lambda: f.Bitmap(closed), lambda: f.Bitmap(4, 4).save(closed, PNG))])


def test_file_is_borrowed_for_the_call_only_and_views_kept_past_it_hold_a_copy(small_png):
    source, target = io.BytesIO(small_png), io.BytesIO()
    before = sys.getrefcount(source), sys.getrefcount(target)
    f.Bitmap(source).save(target, PNG)
    assert (sys.getrefcount(source), sys.getrefcount(target)) == before

    class Keeper(io.BytesIO):
        kept = []

        def readinto(self, b):
            self.kept.append((b, memoryview(b)))
            return super().readinto(b)

        def write(self, b):
            self.kept.append((b, memoryview(b)))
            return super().write(b)

    for _ in range(200):  # freed native buffers would be reused and overwritten by now
        f.Bitmap(Keeper(small_png)).save(Keeper(), PNG)
    assert len(Keeper.kept) > 400
    for lent, view in Keeper.kept:
        if not view.readonly:
            view[:] = b"\xff" * len(view)  # lands in the kept copy, not in freed memory
        with pytest.raises(BufferError, match="no longer valid after the call"):
            memoryview(lent)


def test_stream_wrapper_checks_arguments_and_closing_natively():  # on an empty wrapper: it holds no managed stream
    stream = StreamWrapper.__new__(StreamWrapper)
    raises_each([(StreamWrapper, TypeError, "type has no available constructor"),
                 (lambda: stream.seek(0, 3), ValueError, r"invalid whence \(3, should be 0, 1 or 2\)"),
                 (lambda: stream.write("text"), TypeError, "write argument must be bytes-like object, not 'str'"),
                 (lambda: stream.readinto(b"abc"), TypeError, "readinto argument must be read-write bytes-like object"),
                 (stream.fileno, ValueError, "fileno method is not supported"),
                 (stream.readable, RuntimeError, r"InvalidOperationException\): the wrapper holds no managed stream")])
    assert stream.closed is False
    with pytest.raises(RuntimeError):  # the managed close fails, the flag is set all the same
        stream.close()
    assert stream.closed is True and stream.close() is None  # silent the second time
    raises_each([(stream.read, ValueError, "I/O operation on closed stream"),
                 (lambda: stream.seek(-1), ValueError, "negative seek value -1")])  # argument checks still come first


def test_buffer_stream_reads_writes_positions_truncates_lends_and_closes():
    stream = BufferStream(source := bytearray(b"hello "))  # read and written from the start
    source[0] = ord("j")  # the stream holds a copy
    assert isinstance(stream, io.RawIOBase) and stream.readable() and stream.writable() and stream.seekable()
    stream.seek(0, io.SEEK_END)
    assert stream.write(memoryview(b"world")) == 5 and stream.tell() == 11
    stream.seek(0)
    assert (stream.read(5), stream.tell(), stream.read(), stream.read(), stream.tell()) == (
        b"hello", 5, b" world", b"", 11)
    stream.seek(3)
    stream.write(b"ab")  # overwrites in the middle, keeps the rest
    assert stream.getvalue() == b"helab world" and stream.tell() == 5
    assert [stream.seek(o, w) for o, w in [(2, io.SEEK_SET), (3, io.SEEK_CUR), (-1, io.SEEK_END), (2, io.SEEK_END)]
            ] == [2, 5, 10, 13]
    stream.write(b"z")  # past the end: the gap is zeros
    assert stream.getvalue() == b"helab world\x00\x00z"
    stream.seek(20)
    assert stream.read() == b"" and stream.tell() == 20 and stream.readinto(bytearray(2)) == 0
    stream.seek(1)
    assert stream.readinto(words := array.array("H", [0])) == 2 and words.tobytes() == b"el"
    raises_each([(lambda: stream.seek(-15, io.SEEK_END), ValueError, "negative seek value -1"),
                 (lambda: stream.seek(-15, 3), ValueError, "invalid whence")])
    stream = BufferStream(b"0123456789")
    stream.seek(4)
    assert stream.truncate() == 4 and stream.getvalue() == b"0123" and stream.tell() == 4
    assert stream.truncate(6) == 6 and stream.getvalue() == b"0123\x00\x00"
    view = stream.getbuffer()  # lends the contents; no resizing meanwhile
    view[0] = ord("X")
    with pytest.raises(BufferError):
        stream.write(b"longer than six")
    view.release()
    stream.write(b"!")
    stream.seek(0)
    with stream:
        assert list(io.BufferedReader(stream)) == [b"X123!\x00"]
    with pytest.raises(ValueError):
        stream.read()
