"""Arrays of byte arrays: every element leases its own buffer, None stays a null element."""
import pytest

import orvane.pyfigura as f


@pytest.fixture
def codec():
    return f.imaging.ImageCodecInfo.get_image_encoders()[0]


def test_list_and_tuple_elements_of_every_buffer_kind(codec):
    codec.signature_patterns = [None, b"ab", bytearray(b"xyz"), memoryview(b"q")]
    assert list(codec.signature_patterns) == [None, bytearray(b"ab"), bytearray(b"xyz"), bytearray(b"q")]
    codec.signature_patterns = (b"1", None)
    assert list(codec.signature_patterns) == [bytearray(b"1"), None]


def test_leases_are_given_back_after_the_copy(codec):
    data = bytearray(b"zz")
    codec.signature_masks = [data, data]
    data.extend(b"more")  # a held export would refuse the resize
    assert list(codec.signature_masks) == [bytearray(b"zz"), bytearray(b"zz")]


def test_an_element_that_is_no_buffer_is_refused_by_its_converter(codec):
    with pytest.raises(TypeError, match="can't build byte\\[\\] from 'int'"):
        codec.signature_patterns = [b"ok", 5]
