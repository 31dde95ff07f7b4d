"""Gallery scene: a mosaic painted one pixel at a time, 100,000 fill_rectangle calls.

A stress test of many small calls more than a way to draw: for real pixel work, draw shapes or
use set_pixel/lock_bits.

    PYTHONPATH=build/python /usr/bin/python3 examples/gallery/dot_mosaic.py [out.png]
"""
import contextlib
import math
import os
import sys

from orvane.pyfigura import Bitmap, Color, Graphics, SolidBrush

WIDTH, HEIGHT = 400, 250          # 100,000 pixels, one call each
PALETTE = [Color.midnight_blue, Color.royal_blue, Color.deep_sky_blue, Color.aquamarine,
           Color.gold, Color.orange, Color.orange_red, Color.crimson]


def draw(path):
    with contextlib.ExitStack() as stack:
        # One brush per colour, all disposed together when the stack closes.
        brushes = [stack.enter_context(SolidBrush(colour)) for colour in PALETTE]
        bitmap = stack.enter_context(Bitmap(WIDTH, HEIGHT))
        with Graphics.from_image(bitmap) as g:
            for y in range(HEIGHT):
                for x in range(WIDTH):
                    # Rings around the centre, shifted one colour every 50 columns.
                    ring = int(math.sqrt((x - WIDTH // 2) ** 2 + (y - HEIGHT // 2) ** 2)) // 12
                    g.fill_rectangle(brushes[(ring + x // 50) % len(brushes)], x, y, 1, 1)
        bitmap.save(path)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default = os.path.join(here, "..", "..", "build", "gallery", "dot_mosaic.png")
    out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else default)
    os.makedirs(os.path.dirname(out), exist_ok=True)
    draw(out)
    print(out)


if __name__ == "__main__":
    main()
