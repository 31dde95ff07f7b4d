"""The in-memory BufferStream of the sister module orvane.pyio."""

import array
import io

import pytest

from orvane.pyio import BufferStream


class TestReadWrite:
    def test_is_a_raw_stream_that_reads_writes_and_seeks(self):
        stream = BufferStream()
        assert isinstance(stream, io.RawIOBase)
        assert stream.readable() and stream.writable() and stream.seekable()

    def test_write_then_read_back(self):
        stream = BufferStream()
        assert stream.write(b"hello ") == 6
        assert stream.write(memoryview(b"world")) == 5
        assert stream.tell() == 11
        stream.seek(0)
        assert stream.read(5) == b"hello"
        assert stream.read() == b" world"
        assert stream.read() == b""

    def test_initial_bytes_are_copied_and_read_from_the_start(self):
        source = bytearray(b"abc")
        stream = BufferStream(source)
        source[0] = ord("z")
        assert stream.tell() == 0 and stream.read() == b"abc"

    def test_readinto_fills_any_writable_buffer(self):
        stream = BufferStream(b"\x01\x02\x03\x04\x05")
        target = bytearray(3)
        assert stream.readinto(target) == 3 and target == b"\x01\x02\x03"
        words = array.array("H", [0, 0])
        assert stream.readinto(words) == 2
        assert words.tobytes()[:2] == b"\x04\x05"
        assert stream.readinto(bytearray(4)) == 0

    def test_overwrite_in_the_middle_keeps_the_rest(self):
        stream = BufferStream(b"0123456789")
        stream.seek(3)
        stream.write(b"ab")
        assert stream.getvalue() == b"012ab56789" and stream.tell() == 5

    def test_write_past_the_end_fills_the_gap_with_zeros(self):
        stream = BufferStream(b"ab")
        stream.seek(5)
        stream.write(b"z")
        assert stream.getvalue() == b"ab\x00\x00\x00z"

    def test_read_past_the_end_is_empty(self):
        stream = BufferStream(b"ab")
        stream.seek(10)
        assert stream.read() == b"" and stream.readinto(bytearray(2)) == 0


class TestPositionAndSize:
    @pytest.mark.parametrize("offset, whence, expected", [
        (2, io.SEEK_SET, 2), (3, io.SEEK_CUR, 7), (-1, io.SEEK_END, 9), (5, io.SEEK_END, 15),
    ])
    def test_seek_origins(self, offset, whence, expected):
        stream = BufferStream(b"0123456789")
        stream.seek(4)
        assert stream.seek(offset, whence) == expected == stream.tell()

    def test_seek_errors(self):
        stream = BufferStream(b"abc")
        with pytest.raises(ValueError, match="negative seek value -1"):
            stream.seek(-4, io.SEEK_END)
        with pytest.raises(ValueError):
            stream.seek(0, 3)

    def test_truncate_cuts_at_the_position_and_keeps_it(self):
        stream = BufferStream(b"0123456789")
        stream.seek(4)
        assert stream.truncate() == 4
        assert stream.getvalue() == b"0123" and stream.tell() == 4
        assert stream.truncate(6) == 6 and stream.getvalue() == b"0123\x00\x00"
        with pytest.raises(ValueError):
            stream.truncate(-1)


class TestBuffersAndClosing:
    def test_getbuffer_lends_the_contents_and_blocks_resizing(self):
        stream = BufferStream(b"abc")
        view = stream.getbuffer()
        view[0] = ord("X")
        assert stream.getvalue() == b"Xbc"
        with pytest.raises(BufferError):
            stream.write(b"longer than three")
        view.release()
        stream.seek(0, io.SEEK_END)
        stream.write(b"d")
        assert stream.getvalue() == b"Xbcd"

    def test_closed_stream_refuses_operations(self):
        stream = BufferStream(b"abc")
        stream.close()
        assert stream.closed
        for operation in (stream.read, stream.getvalue, stream.tell, stream.readable,
                          lambda: stream.write(b"x"), lambda: stream.seek(0)):
            with pytest.raises(ValueError):
                operation()
        stream.close()

    def test_buffered_reader_and_context_manager(self):
        with BufferStream(b"line one\nline two\n") as stream:
            reader = io.BufferedReader(stream)
            assert reader.readline() == b"line one\n"
            assert list(reader) == [b"line two\n"]
        assert stream.closed
