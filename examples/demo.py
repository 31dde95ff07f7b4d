"""Demo: .NET's System.Drawing, driven from Python, draws a small scene and saves it as PNG.

    PYTHONPATH=build/python /usr/bin/python3 examples/demo.py [out.png]
"""
import os
import sys

import orvane.pyfigura as fig
from orvane.pyfigura import Bitmap, Brushes, Font, FontFamily, Graphics, Pens, drawing2d, text


def draw(path):
    bitmap = Bitmap(640, 360)
    with Graphics.from_image(bitmap) as g:
        g.smoothing_mode = drawing2d.SmoothingMode.ANTI_ALIAS
        g.text_rendering_hint = text.TextRenderingHint.ANTI_ALIAS
        g.fill_rectangle(Brushes.white, 0, 0, 640, 360)
        g.fill_rectangle(Brushes.alice_blue, 20, 20, 600, 320)
        g.draw_rectangle(Pens.steel_blue, 20.0, 20.0, 600.0, 320.0)
        # A fan of lines and a few filled shapes.
        for i in range(0, 300, 12):
            g.draw_line(Pens.cornflower_blue, 40, 320, 40 + i * 2, 40 + i // 3)
        g.fill_ellipse(Brushes.orange, 420.0, 60.0, 140.0, 140.0)
        g.draw_ellipse(Pens.dark_orange, 420.0, 60.0, 140.0, 140.0)
        g.fill_pie(Brushes.medium_sea_green, 440.0, 210.0, 100.0, 100.0, 30.0, 300.0)
        with Font(FontFamily.generic_sans_serif, 28.0) as title, Font(FontFamily.generic_serif, 14.0) as body:
            g.draw_string("orvane.pyfigura", title, Brushes.midnight_blue, 60.0, 40.0)
            g.draw_string(f"System.Drawing from Python, version {fig.VERSION}", body, Brushes.dim_gray, 62.0, 84.0)
    bitmap.save(path)
    return bitmap.width, bitmap.height


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "build", "demo.png"))
    width, height = draw(out)
    print(f"drew a {width}x{height} image: {out}")


if __name__ == "__main__":
    main()
