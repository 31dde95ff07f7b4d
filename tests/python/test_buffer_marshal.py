"""Byte-array leases: the converter and its element form, and the buffers rows the managed side leases through."""

import array

import pytest

import marshal_probe as probe


def lease(value, **options):
    result, acquired, length, content, error = probe.lease_byte_array(value, **options)
    return result, acquired, length, content, error and (type(error), str(error))


@pytest.fixture(params=[False, True], ids=["converter", "element"])
def element(request):
    return request.param


class TestAccepted:
    @pytest.mark.parametrize("value", [b"abc", bytearray(b"abcd"), memoryview(b"xyz"), array.array("i", [1, -2]),
                                       memoryview(bytearray(b"0123456789"))[2:5]])
    def test_buffer_exporters(self, value, element):
        expected = bytes(value)
        assert lease(value, element=element) == (1, 1, len(expected), expected, None)

    def test_none_is_the_null_array(self, element):
        assert lease(None, element=element) == (1, 0, -1, None, None)

    def test_empty_bytes_has_length_zero(self, element):
        assert lease(b"", element=element) == (1, 1, 0, b"", None)

    def test_data_is_the_objects_own_memory(self):
        target = bytearray(4)
        lease(target, write=b"xy")
        assert target == b"xy\0\0"

    def test_longest_length(self):
        assert lease(probe.Exporter(2**31 - 1), read=False)[:3] == (1, 1, 2**31 - 1)


class TestRefused:
    @pytest.mark.parametrize("value, name", [("abc", "str"), (5, "int"), ([1], "list")])
    def test_non_exporters(self, value, name, element):
        assert lease(value, element=element) == (0, 0, -1, None, (TypeError, f"can't build byte[] from '{name}'"))

    def test_strided_memoryview_is_refused_by_its_exporter(self):
        base = bytearray(b"abcdef")
        strided = memoryview(base)[::2]
        assert lease(strided)[:2] == (0, 0)
        assert lease(strided)[4] == (BufferError, "can't get internal buffer")
        strided.release()  # raises while an export of it is still held
        base.extend(b"g")

    @pytest.mark.parametrize("exporter, message", [
        ((4, 2), "buffer is not contiguous"),
        ((2**31,), "buffer is too long"),
    ])
    def test_acquired_exports_are_held_until_release(self, exporter, message, element):
        source = probe.Exporter(*exporter)
        assert lease(source, element=element) == (0, 1, -1, None, (BufferError, message))
        assert source.exports == 0


class TestLeaseSpan:
    def test_bytearray_is_not_resizable_during_the_lease_only(self):
        target = bytearray(b"abc")
        with pytest.raises(BufferError):
            lease(target, during=lambda: target.extend(b"d"))
        target.extend(b"d")
        assert target == b"abcd"

    def test_exporter_is_released_after_success(self):
        source = probe.Exporter(3)
        seen = []
        lease(source, during=lambda: seen.append(source.exports))
        assert (seen, source.exports) == ([1], 0)


class TestBufferRows:
    def test_record_size_zeroing_and_acquire(self):
        assert probe.buffer_group(b"abc") == (80, True, (1, 1, 3, b"abc", None))

    def test_acquire_skips_the_type_test(self):
        size, zeroed, report = probe.buffer_group("abc")
        assert report[:3] == (0, 0, -1)
        assert (type(report[4]), str(report[4])) == (BufferError, "can't get internal buffer")

    def test_failed_acquire_keeps_the_export_for_release(self):
        source = probe.Exporter(4, 2)
        size, zeroed, report = probe.buffer_group(source)
        assert report[:2] == (0, 1) and str(report[4]) == "buffer is not contiguous"
        assert source.exports == 0
