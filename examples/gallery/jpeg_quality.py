"""Gallery scene: load a PNG, resize it, rotate it and save it as a JPEG of a chosen quality.

The script first draws and saves the PNG it then loads, so it needs no input file.

    PYTHONPATH=build/python /usr/bin/python3 examples/gallery/jpeg_quality.py [out.jpg]
"""
import os
import sys

from orvane.pyfigura import Bitmap, Brushes, Color, Font, FontFamily, FontStyle, Graphics, Pen, Rectangle, RotateFlipType
from orvane.pyfigura import drawing2d, imaging, text

QUALITY = 85          # JPEG quality, 0 (smallest) to 100 (best)
SCALE = 0.5           # the picture is resized to half its size


def make_source(path):
    """Draw a 480x320 picture and save it as PNG."""
    with Bitmap(480, 320) as picture:
        with Graphics.from_image(picture) as g:
            g.smoothing_mode = drawing2d.SmoothingMode.ANTI_ALIAS
            g.text_rendering_hint = text.TextRenderingHint.ANTI_ALIAS
            with drawing2d.LinearGradientBrush(Rectangle(0, 0, 480, 320), Color.dark_cyan, Color.navy,
                                               drawing2d.LinearGradientMode.FORWARD_DIAGONAL) as fill:
                g.fill_rectangle(fill, 0, 0, 480, 320)
            with Pen(Color.white, 4) as ring:
                for i in range(6):
                    g.draw_ellipse(ring, 40 + i * 25, 40 + i * 15, 240 - i * 30, 240 - i * 30)
            g.fill_rectangle(Brushes.orange, 300, 60, 140, 90)
            with Font(FontFamily.generic_sans_serif, 28.0, FontStyle.BOLD) as font:
                g.draw_string("JPEG", font, Brushes.white, 310, 200)
        picture.save(path, imaging.ImageFormat.png)


def jpeg_codec():
    """The installed encoder whose MIME type is image/jpeg."""
    for codec in imaging.ImageCodecInfo.get_image_encoders():
        if codec.mime_type == "image/jpeg":
            return codec
    raise LookupError("no JPEG encoder")


def draw(path):
    source = os.path.splitext(path)[0] + "_source.png"
    make_source(source)

    with Bitmap(source) as original:
        # Resize with a high-quality filter onto a new bitmap.
        width, height = int(original.width * SCALE), int(original.height * SCALE)
        with Bitmap(width, height) as small:
            with Graphics.from_image(small) as g:
                g.interpolation_mode = drawing2d.InterpolationMode.HIGH_QUALITY_BICUBIC
                g.pixel_offset_mode = drawing2d.PixelOffsetMode.HIGH_QUALITY
                g.draw_image(original, Rectangle(0, 0, width, height))
            # Turn it a quarter clockwise: width and height swap.
            small.rotate_flip(RotateFlipType.ROTATE_90_FLIP_NONE)

            # Save as JPEG with an explicit quality setting.
            with imaging.EncoderParameters(1) as settings:
                settings.param = [imaging.EncoderParameter(imaging.Encoder.QUALITY, QUALITY)]
                small.save(path, jpeg_codec(), settings)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default = os.path.join(here, "..", "..", "build", "gallery", "jpeg_quality.jpg")
    out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else default)
    os.makedirs(os.path.dirname(out), exist_ok=True)
    draw(out)
    print(out)


if __name__ == "__main__":
    main()
