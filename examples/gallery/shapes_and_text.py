"""Gallery scene: antialiased shapes, pens of several kinds and a caption.

    PYTHONPATH=build/python /usr/bin/python3 examples/gallery/shapes_and_text.py [out.png]
"""
import os
import sys

from orvane.pyfigura import Bitmap, Brushes, Color, Font, FontFamily, FontStyle, Graphics, Pen, Pens, SolidBrush
from orvane.pyfigura import drawing2d, text

WIDTH, HEIGHT = 640, 420


def draw(path):
    with Bitmap(WIDTH, HEIGHT) as bitmap:
        with Graphics.from_image(bitmap) as g:
            g.clear(Color.white)
            # Smooth edges for shapes and for glyphs.
            g.smoothing_mode = drawing2d.SmoothingMode.ANTI_ALIAS
            g.text_rendering_hint = text.TextRenderingHint.ANTI_ALIAS

            # A filled disc with a thick outline.
            g.fill_ellipse(Brushes.gold, 30, 90, 150, 150)
            with Pen(Color.dark_goldenrod, 6) as rim:
                g.draw_ellipse(rim, 30, 90, 150, 150)

            # Three translucent discs: the overlaps mix their colours.
            for i, base in enumerate([Color.red, Color.lime, Color.blue]):
                with SolidBrush(Color.from_argb(110, base)) as brush:
                    g.fill_ellipse(brush, 220 + i * 45, 90 + (i % 2) * 50, 120, 120)

            # A pie slice and an open arc with round caps.
            g.fill_pie(Brushes.medium_sea_green, 450, 90, 150, 150, -30, 300)
            with Pen(Color.dark_green, 10) as arc:
                arc.start_cap = drawing2d.LineCap.ROUND
                arc.end_cap = drawing2d.LineCap.ROUND
                g.draw_arc(arc, 465, 105, 120, 120, -30, -60)

            # Dashed and dotted pens, a bezier and a fan of thin lines.
            with Pen(Color.steel_blue, 3) as dashed:
                dashed.dash_style = drawing2d.DashStyle.DASH
                g.draw_rectangle(dashed, 30, 270, 180, 110)
                dashed.dash_style = drawing2d.DashStyle.DOT
                g.draw_bezier(dashed, 240, 380, 300, 240, 380, 420, 440, 270)
            fan = [Pens.crimson, Pens.dark_orange, Pens.purple]
            for i in range(15):
                g.draw_line(fan[i % 3], 470, 380, 470 + i * 10, 270)

            # The caption.
            with Font(FontFamily.generic_sans_serif, 20.0, FontStyle.BOLD) as title, \
                    Font(FontFamily.generic_serif, 12.0, FontStyle.ITALIC) as note:
                g.draw_string("Shapes, pens and text", title, Brushes.midnight_blue, 26, 14)
                g.draw_string("ellipses, translucent fills, pies, arcs, dashes and beziers", note,
                              Brushes.dim_gray, 30, 50)
        bitmap.save(path)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default = os.path.join(here, "..", "..", "build", "gallery", "shapes_and_text.png")
    out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else default)
    os.makedirs(os.path.dirname(out), exist_ok=True)
    draw(out)
    print(out)


if __name__ == "__main__":
    main()
