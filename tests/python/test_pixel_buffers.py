"""Locked pixels as buffers (memoryview, numpy) and the numpy / Pillow conversions of Bitmap."""
import gc
import io

import numpy as np
import pytest
from PIL import Image

import orvane.pyfigura as f
from orvane.pyfigura import imaging as im

PF = im.PixelFormat
MODE = im.ImageLockMode


def locked(bitmap, mode=MODE.READ_WRITE):
    return bitmap.lock_bits(f.Rectangle(0, 0, bitmap.width, bitmap.height), mode, bitmap.pixel_format)


@pytest.mark.parametrize("fmt, channels", [
    (PF.FORMAT_32BPP_ARGB, 4), (PF.FORMAT_32BPP_P_ARGB, 4), (PF.FORMAT_32BPP_RGB, 4), (PF.FORMAT_24BPP_RGB, 3),
    (PF.FORMAT_8BPP_INDEXED, None), (PF.FORMAT_1BPP_INDEXED, None), (PF.FORMAT_4BPP_INDEXED, None),
])
def test_view_shape_follows_the_pixel_format(fmt, channels):
    bitmap = f.Bitmap(5, 3, fmt)
    data = locked(bitmap)
    with memoryview(data) as view:
        assert (view.shape, view.strides) == (((3, 5, channels), (data.stride, channels, 1)) if channels
                                              else ((3, abs(data.stride)), (data.stride, 1)))
        assert view.format == "B" and not view.readonly
        assert np.asarray(data).__array_interface__["data"][0] == data.scan0
    bitmap.unlock_bits(data)


def test_a_read_only_lock_gives_read_only_views():  # writes through views: the numpy round trip below
    bitmap = f.Bitmap(6, 4)
    data = locked(bitmap, MODE.READ_ONLY)
    assert not np.asarray(data).flags.writeable
    with pytest.raises(TypeError, match="read-write"):
        io.BytesIO(b"x").readinto(data)  # asks for a writable buffer
    bitmap.unlock_bits(data)


def refused(call, text):
    with pytest.raises(BufferError, match=text):
        call()


def test_a_view_never_outlives_the_lock_and_the_lock_keeps_its_bitmap():
    bitmap = f.Bitmap(8, 8)
    data = locked(bitmap)
    view = memoryview(data)
    refused(lambda: bitmap.unlock_bits(data), "1 buffer view")
    refused(bitmap.dispose, "dispose")
    data.height = 10_000  # the view keeps the geometry of the lock
    assert memoryview(data).shape == (8, 8, 4)
    view.release()
    data.height = 8  # unlocking reads the fields back, as in .NET
    bitmap.unlock_bits(data)
    for unlocked in (data, im.BitmapData()):
        refused(lambda: memoryview(unlocked), "not locked")
    data = locked(bitmap)
    bitmap.dispose()  # a dispose ends the lock: its memory is gone, and so are new views of it
    refused(lambda: memoryview(data), "not locked")
    data = locked(f.Bitmap(16, 16))
    gc.collect()  # a collected bitmap would have ended the lock
    np.asarray(data)[:] = 7
    assert int(np.asarray(data).sum()) == 7 * 16 * 16 * 4


@pytest.mark.parametrize("channels", [3, 4])
def test_numpy_round_trip_is_pixel_identical(channels):
    pixels = np.random.default_rng(channels).integers(0, 256, size=(9, 13, channels), dtype=np.uint8)
    bitmap = f.Bitmap.from_array(pixels)
    assert bitmap.pixel_format == (PF.FORMAT_32BPP_ARGB if channels == 4 else PF.FORMAT_24BPP_RGB)
    back = bitmap.to_array()
    np.testing.assert_array_equal(back[..., :channels], pixels)
    assert channels == 4 or (back[..., 3] == 255).all()
    np.testing.assert_array_equal(np.asarray(bitmap), back)
    assert (bitmap.get_pixel(7, 4).r, bitmap.get_pixel(7, 4).b) == (pixels[4, 7, 2], pixels[4, 7, 0])
    # a strided (non-contiguous) source converts as well
    np.testing.assert_array_equal(f.Bitmap.from_array(pixels[::2, ::3]).to_array()[..., :channels], pixels[::2, ::3])


def test_pillow_round_trip_keeps_alpha():
    rgba = np.random.default_rng(1).integers(0, 256, size=(7, 11, 4), dtype=np.uint8)
    source = Image.fromarray(rgba, "RGBA")
    bitmap = f.Bitmap.from_pil(source)
    assert bitmap.get_pixel(3, 2) == f.Color.from_argb(*(int(v) for v in rgba[2, 3][[3, 0, 1, 2]]))
    image = bitmap.to_pil()
    assert (image.mode, image.size, image.tobytes()) == ("RGBA", (11, 7), source.tobytes())
    assert f.Bitmap.from_pil(Image.new("L", (3, 2), 90)).get_pixel(2, 1) == f.Color.from_argb(255, 90, 90, 90)


def test_conversions_refuse_what_they_cannot_convert():
    for bad in (np.zeros((4, 4), np.uint8), np.zeros((4, 4, 2), np.uint8), np.zeros((4, 4, 4), np.float32),
                np.zeros((0, 4, 4), np.uint8)):
        with pytest.raises(ValueError):
            f.Bitmap.from_array(bad)
    with pytest.raises(TypeError, match="PIL.Image.Image"):
        f.Bitmap.from_pil(b"not an image")
