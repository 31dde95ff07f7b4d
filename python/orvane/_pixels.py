"""Bitmap conversions to and from numpy arrays and Pillow images, behind Bitmap.to_array and friends.

Pixels cross as 32 bits per pixel ARGB, whose bytes lie in memory as B, G, R, A: arrays have the
shape (height, width, 4) in that channel order (the order OpenCV uses). Each conversion locks the
bits once and copies them in one pass; numpy and Pillow are imported only when first needed.
"""


def _numpy():
    try:
        import numpy
    except ImportError as error:  # pragma: no cover - numpy is a declared optional dependency
        raise ImportError("Bitmap array conversions need numpy (apt-get install python3-numpy)") from error
    return numpy


def _pil_image():
    try:
        from PIL import Image
    except ImportError as error:  # pragma: no cover
        raise ImportError("Bitmap Pillow conversions need Pillow (apt-get install python3-pil)") from error
    return Image


def _drawing():
    from orvane import pyfigura
    from orvane.pyfigura import imaging
    return pyfigura, imaging


class _Locked:
    """Bits of the whole bitmap locked in 32 bpp ARGB (or `pixel_format`), unlocked on leaving."""

    def __init__(self, bitmap, mode, pixel_format=None):
        pyfigura, imaging = _drawing()
        self.bitmap = bitmap
        fmt = imaging.PixelFormat.FORMAT_32BPP_ARGB if pixel_format is None else pixel_format
        self.data = bitmap.lock_bits(pyfigura.Rectangle(0, 0, bitmap.width, bitmap.height), mode, fmt)

    def __enter__(self):
        return self.data

    def __exit__(self, *exc_info):
        self.bitmap.unlock_bits(self.data)


def bitmap_to_array(bitmap):
    """A new (height, width, 4) uint8 array of the pixels in B, G, R, A order, whatever the pixel format."""
    numpy = _numpy()
    _, imaging = _drawing()
    with _Locked(bitmap, imaging.ImageLockMode.READ_ONLY) as data:
        with memoryview(data) as view:
            return numpy.array(view, dtype=numpy.uint8, copy=True)


def bitmap_array(bitmap, dtype=None, copy=None):
    """numpy.asarray(bitmap): the array of to_array, in `dtype` if one is asked for."""
    array = bitmap_to_array(bitmap)
    return array if dtype is None else array.astype(dtype, copy=False)


def _checked_pixels(numpy, array):
    array = numpy.asarray(array)
    if array.dtype != numpy.uint8 or array.ndim != 3 or array.shape[2] not in (3, 4):
        raise ValueError("expected a uint8 array of shape (height, width, 3) or (height, width, 4), "
                         f"got {array.dtype} {array.shape}")
    if array.shape[0] == 0 or array.shape[1] == 0:
        raise ValueError(f"an image needs at least one pixel, got shape {array.shape}")
    return array


def bitmap_from_array(cls, array):
    """A new Bitmap of a uint8 array (height, width, 4) in B, G, R, A order, or (height, width, 3) in
    B, G, R order (24 bpp RGB, no alpha)."""
    numpy = _numpy()
    _, imaging = _drawing()
    pixels = _checked_pixels(numpy, array)
    height, width, channels = pixels.shape
    fmt = imaging.PixelFormat.FORMAT_32BPP_ARGB if channels == 4 else imaging.PixelFormat.FORMAT_24BPP_RGB
    bitmap = cls(width, height, fmt)
    with _Locked(bitmap, imaging.ImageLockMode.WRITE_ONLY, fmt) as data:
        target = numpy.asarray(data)
        try:
            numpy.copyto(target, pixels)
        finally:
            del target
    return bitmap


def bitmap_to_pil(bitmap):
    """A new Pillow image in mode RGBA (alpha kept) of the bitmap's pixels."""
    Image = _pil_image()
    _, imaging = _drawing()
    with _Locked(bitmap, imaging.ImageLockMode.READ_ONLY) as data:
        # Pillow's decoders refuse objects that need a buffer release (as BitmapData does), so they
        # read the locked bits through a ctypes array over scan0 that never leaves this block. The
        # raw decoder copies while it reorders B, G, R, A into R, G, B, A: the image owns its pixels.
        import ctypes
        bits = (ctypes.c_char * (data.stride * data.height)).from_address(data.scan0)
        return Image.frombuffer("RGBA", (data.width, data.height), bits, "raw", "BGRA", data.stride, 1)


def bitmap_from_pil(cls, image):
    """A new 32 bpp ARGB Bitmap of a Pillow image; images without alpha get an opaque one."""
    Image = _pil_image()
    if not isinstance(image, Image.Image):
        raise TypeError(f"expected a PIL.Image.Image, got {type(image).__name__}")
    if image.mode != "RGBA":
        image = image.convert("RGBA")
    _, imaging = _drawing()
    width, height = image.size
    if width == 0 or height == 0:
        raise ValueError(f"an image needs at least one pixel, got size {image.size}")
    bitmap = cls(width, height, imaging.PixelFormat.FORMAT_32BPP_ARGB)
    with _Locked(bitmap, imaging.ImageLockMode.WRITE_ONLY) as data:
        with memoryview(data) as view, view.cast("B") as flat:
            flat[:] = image.tobytes("raw", "BGRA", data.stride, 1)
    return bitmap
