"""Byte-array leases: the converter and its element form, and the buffers rows the managed side leases through."""
import array

import pytest

import marshal_probe as probe


def lease(value, **options):
    """(result, acquired, length, content, (error type, text) or None) of one lease."""
    result, acquired, length, content, error = probe.lease_byte_array(value, **options)
    return result, acquired, length, content, error and (type(error), str(error))


@pytest.mark.parametrize("element", [False, True], ids=["converter", "element"])
@pytest.mark.parametrize("value, report", [
    (b"abc", (1, 1, 3, b"abc", None)), (bytearray(b"abcd"), (1, 1, 4, b"abcd", None)),
    (array.array("i", [1, -2]), (1, 1, 8, bytes(array.array("i", [1, -2])), None)),
    (memoryview(bytearray(b"0123456789"))[2:5], (1, 1, 3, b"234", None)), (b"", (1, 1, 0, b"", None)),
    (None, (1, 0, -1, None, None)), ("abc", (0, 0, -1, None, (TypeError, "can't build byte[] from 'str'"))),
    ([1], (0, 0, -1, None, (TypeError, "can't build byte[] from 'list'"))),
    (memoryview(b"abcdef")[::2], (0, 0, -1, None, (BufferError, "can't get internal buffer"))),  # its exporter refuses
    # exports refused after they were made are still released
    (probe.Exporter(4, 2), (0, 1, -1, None, (BufferError, "buffer is not contiguous"))),
    (probe.Exporter(2**31), (0, 1, -1, None, (BufferError, "buffer is too long")))])
def test_what_a_lease_reports(value, report, element):
    assert lease(value, element=element) == report
    assert getattr(value, "exports", 0) == 0


def test_the_lease_is_the_objects_own_memory_held_for_the_call_only():
    target = bytearray(4)
    lease(target, write=b"xy")
    assert target == b"xy\0\0"
    with pytest.raises(BufferError):
        lease(target, during=lambda: target.extend(b"d"))
    target.extend(b"d")
    source, seen = probe.Exporter(3), []
    lease(source, during=lambda: seen.append(source.exports))
    assert (seen, source.exports) == ([1], 0)
    assert lease(probe.Exporter(2**31 - 1), read=False)[:3] == (1, 1, 2**31 - 1)


def test_buffers_rows_record_size_and_acquire_without_the_type_test():
    assert probe.buffer_group(b"abc") == (80, True, (1, 1, 3, b"abc", None))
    report = probe.buffer_group("abc")[2]
    assert report[:3] == (0, 0, -1) and (type(report[4]), str(report[4])) == (BufferError, "can't get internal buffer")
    source = probe.Exporter(4, 2)
    assert probe.buffer_group(source)[2][:2] == (0, 1) and source.exports == 0
