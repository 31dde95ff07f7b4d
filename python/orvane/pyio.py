"""Sister module orvane.pyio: an in-memory binary stream usable wherever a managed Stream is asked for."""

import io

__all__ = ["BufferStream"]


class BufferStream(io.RawIOBase):
    """A readable, writable and seekable binary stream held in memory.

    The stream keeps one growable byte buffer and a position. Reads return bytes from the
    position on; writes overwrite from the position and grow the buffer, filling any gap left by a
    seek past the end with zero bytes. ``getvalue`` copies the contents out, ``getbuffer`` lends a
    view of them without a copy; while such a view is alive the stream cannot change its size.
    """

    def __init__(self, initial_bytes=b""):
        """Creates the stream with a copy of ``initial_bytes`` and the position at 0."""
        super().__init__()
        self._buffer = bytearray(initial_bytes)
        self._position = 0

    def _check_open(self):
        if self.closed:
            raise ValueError("I/O operation on closed file.")

    def readable(self):
        """True: the stream can always be read while open."""
        self._check_open()
        return True

    def writable(self):
        """True: the stream can always be written while open."""
        self._check_open()
        return True

    def seekable(self):
        """True: the position can be moved freely while open."""
        self._check_open()
        return True

    def read(self, size=-1):
        """Returns up to ``size`` bytes from the position (all remaining when ``size`` is negative or None)."""
        self._check_open()
        start = min(self._position, len(self._buffer))
        end = len(self._buffer) if size is None or size < 0 else min(start + size, len(self._buffer))
        self._position = max(self._position, end)
        return bytes(self._buffer[start:end])

    def readall(self):
        """Returns everything from the position to the end."""
        return self.read(-1)

    def readinto(self, buffer):
        """Fills the writable bytes-like ``buffer`` from the position; returns the count, 0 at the end."""
        self._check_open()
        with memoryview(buffer) as view, view.cast("B") as target:
            start = min(self._position, len(self._buffer))
            count = min(len(target), len(self._buffer) - start)
            target[:count] = self._buffer[start:start + count]
        self._position = start + count
        return count

    def write(self, data):
        """Writes the bytes-like ``data`` at the position, grows the buffer as needed, returns the count."""
        self._check_open()
        with memoryview(data) as view, view.cast("B") as source:
            count = len(source)
            if count == 0:
                return 0
            end = self._position + count
            if self._position > len(self._buffer):
                self._buffer.extend(bytes(self._position - len(self._buffer)))
            self._buffer[self._position:end] = source
        self._position = end
        return count

    def seek(self, offset, whence=io.SEEK_SET):
        """Moves the position relative to the start, the current position or the end; returns it."""
        self._check_open()
        if whence == io.SEEK_SET:
            base = 0
        elif whence == io.SEEK_CUR:
            base = self._position
        elif whence == io.SEEK_END:
            base = len(self._buffer)
        else:
            raise ValueError(f"invalid whence ({whence}, should be 0, 1 or 2)")
        position = base + offset
        if position < 0:
            raise ValueError(f"negative seek value {position}")
        self._position = position
        return position

    def tell(self):
        """Returns the current position."""
        self._check_open()
        return self._position

    def truncate(self, size=None):
        """Cuts (or zero-extends) the contents to ``size`` bytes, the position by default; the position stays."""
        self._check_open()
        size = self._position if size is None else size
        if size < 0:
            raise ValueError(f"negative size value {size}")
        if size < len(self._buffer):
            del self._buffer[size:]
        else:
            self._buffer.extend(bytes(size - len(self._buffer)))
        return size

    def getvalue(self):
        """Returns a copy of the whole contents as bytes."""
        self._check_open()
        return bytes(self._buffer)

    def getbuffer(self):
        """Returns a writable memoryview over the contents, without a copy."""
        self._check_open()
        return memoryview(self._buffer)

    def close(self):
        """Closes the stream and releases its contents; views from getbuffer keep theirs alive."""
        if not self.closed:
            self._buffer = bytearray()
        super().close()
