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
    f.Bitmap(40, 30).save(out := io.BytesIO(), PNG)
    return out.getvalue()


class Raw(io.BytesIO):
    """A file that cannot seek and takes at most `most` bytes per write, as raw files may."""

    def __init__(self, data=b"", most=7):
        super().__init__(data)
        self.most = most

    def seekable(self):
        return False

    def write(self, data):
        return super().write(bytes(data)[:self.most]) or None


def failing(base, method, at=1):
    """A subclass of `base` whose `method` raises OSError(method) on its `at`-th call."""
    calls = []

    def fail(self, *args):
        calls.append(args)
        if len(calls) == at:
            raise OSError(method)
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
    f.Bitmap(Raw(small_png)).save(writer := Raw(), PNG)  # a writer taking few bytes per call gets them all
    assert PILImage.open(io.BytesIO(writer.getvalue())).size == (40, 30)


def test_errors_of_the_file_surface_as_themselves_and_leave_nothing_pending(small_png):
    # Read by System.Drawing (forward-only) or called back by libgdiplus (seekable), the file's exception comes back.
    f.Bitmap(5, 5).save(tiff := io.BytesIO(), f.imaging.ImageFormat.tiff)
    writer = failing(Raw, "write")()
    before = sys.getrefcount(writer)
    for call, text in ((lambda: f.Bitmap(failing(Raw, "readinto")(small_png)), "readinto"),
                       (lambda: f.Bitmap(failing(io.BytesIO, "readinto")(small_png)), "readinto"),
                       (lambda: f.Image.from_stream(failing(io.BytesIO, "seek", 3)(tiff.getvalue())), "seek"),
                       (lambda: f.Bitmap(4, 4).save(writer, PNG), "write")):
        with pytest.raises(OSError, match=f"^{text}$") as caught:
            call()
        assert caught.traceback[-1].name == "fail" and f.Bitmap(2, 2).width == 2
    del caught
    assert sys.getrefcount(writer) == before  # a failed call keeps no reference
    closed = io.BytesIO(small_png)
    closed.close()
    raises_each([(lambda: f.Bitmap(4, 4).save(Raw(most=0), PNG), RuntimeError,
                  r"Proxy error\(System\.IO\.IOException\): the Python file reported writing 0 of \d+ bytes")] + [
        (call, RuntimeError, r"ObjectDisposedException\): Cannot access a closed file\.")
        for call in (lambda: f.Bitmap(closed), lambda: f.Bitmap(4, 4).save(closed, PNG))])


def test_file_is_borrowed_for_the_call_only_and_views_kept_past_it_hold_a_copy(small_png):
    source, target = io.BytesIO(small_png), io.BytesIO()
    before = sys.getrefcount(source), sys.getrefcount(target)
    f.Bitmap(source).save(target, PNG)
    assert (sys.getrefcount(source), sys.getrefcount(target)) == before

    kept = []  # every buffer lent to a file, and a view of it

    def keeping(method):
        def keep(self, b):
            kept.append((b, memoryview(b)))
            return getattr(io.BytesIO, method)(self, b)
        return keep
    keeper = type("Keeper", (io.BytesIO,), {"readinto": keeping("readinto"), "write": keeping("write")})
    for _ in range(200):  # freed native buffers would be reused and overwritten by now
        f.Bitmap(keeper(small_png)).save(keeper(), PNG)
    assert len(kept) > 400
    for lent, view in kept:
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


# Run on a BufferStream and on io.BytesIO, each step gives the same value or the same error.
STEPS = ("s.readable(); s.writable(); s.seekable(); s.seek(0, 2); s.write(memoryview(b'world')); s.tell(); s.seek(0); "
         "s.read(5); s.tell(); s.read(); s.read(); s.tell(); s.seek(3); s.write(b'ab'); s.getvalue(); s.tell(); "
         "s.seek(3, 1); s.seek(-1, 2); s.seek(2, 2); s.write(b'z'); s.getvalue(); s.seek(20); s.read(); s.tell(); "
         "s.readinto(bytearray(2)); s.seek(1); s.readinto(w := array.array('H', [0])); w.tobytes(); s.seek(-1); "
         "s.seek(0, 3); s.seek(4); s.truncate(); s.getvalue(); s.tell(); (v := s.getbuffer()).__setitem__(0, 88); "
         "s.write(b'longer than the rest'); v.release(); s.write(b'!'); s.getvalue(); s.close(); s.read()").split("; ")


def outcomes(stream):
    space = {"s": stream, "array": array}
    for step in STEPS:
        try:
            yield step, eval(step, space)
        except (ValueError, BufferError) as error:
            yield step, (type(error), str(error))


def test_buffer_stream_behaves_as_bytes_io_but_refuses_a_negative_end_seek_and_grows_on_truncate():
    source = bytearray(b"hello ")
    ours, reference = BufferStream(source), io.BytesIO(source)
    source[0] = ord("j")  # both hold a copy
    assert list(outcomes(ours)) == list(outcomes(reference))
    stream = BufferStream(b"0123")
    with pytest.raises(ValueError, match="^negative seek value -1$"):  # BytesIO would stop at 0
        stream.seek(-5, io.SEEK_END)
    assert stream.truncate(6) == 6 and stream.getvalue() == b"0123\x00\x00"
    with stream:
        assert list(io.BufferedReader(stream)) == [b"0123\x00\x00"]
    assert stream.closed
