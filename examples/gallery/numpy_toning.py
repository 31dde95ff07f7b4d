"""Gallery scene: shapes drawn with System.Drawing, then toned with numpy through the locked pixels.

The pixels are never copied: numpy works on the memory that lock_bits hands out, in the memory order
of 32 bpp ARGB (B, G, R, A), and unlock_bits puts the result back into the bitmap.

    PYTHONPATH=build/python /usr/bin/python3 examples/gallery/numpy_toning.py [out.png]
"""
import os
import sys

import numpy as np

from orvane.pyfigura import Bitmap, Color, Graphics, Pen, Rectangle, SolidBrush
from orvane.pyfigura import drawing2d, imaging

WIDTH, HEIGHT = 480, 320
FRAME = 14


def scene(g):
    g.clear(Color.white)
    g.smoothing_mode = drawing2d.SmoothingMode.ANTI_ALIAS
    for i, colour in enumerate([Color.crimson, Color.gold, Color.teal, Color.royal_blue]):
        with SolidBrush(colour) as brush:
            g.fill_ellipse(brush, 40 + i * 95, 60 + (i % 2) * 70, 150, 150)
    with Pen(Color.black, 5) as pen:
        g.draw_line(pen, 20, HEIGHT - 40, WIDTH - 20, 40)


def tone(pixels):
    """Sepia-like toning in integers, then a dark frame; pixels is (height, width, 4) in B, G, R, A."""
    b, g, r = (pixels[..., i].astype(np.uint16) for i in range(3))
    grey = (77 * r + 150 * g + 29 * b) >> 8
    pixels[..., 2] = np.minimum(grey + 40, 255)
    pixels[..., 1] = np.minimum(grey + 20, 255)
    pixels[..., 0] = grey
    frame = np.ones(pixels.shape[:2], dtype=bool)
    frame[FRAME:-FRAME, FRAME:-FRAME] = False
    pixels[frame] = (20, 30, 40, 255)


def draw(path):
    with Bitmap(WIDTH, HEIGHT) as bitmap:
        with Graphics.from_image(bitmap) as g:
            scene(g)
        data = bitmap.lock_bits(Rectangle(0, 0, WIDTH, HEIGHT), imaging.ImageLockMode.READ_WRITE,
                                imaging.PixelFormat.FORMAT_32BPP_ARGB)
        pixels = np.asarray(data)  # a view of the locked memory, not a copy
        tone(pixels)
        del pixels  # the view goes before the lock ends
        bitmap.unlock_bits(data)
        bitmap.save(path)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default = os.path.join(here, "..", "..", "build", "gallery", "numpy_toning.png")
    out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else default)
    os.makedirs(os.path.dirname(out), exist_ok=True)
    draw(out)
    print(out)


if __name__ == "__main__":
    main()
