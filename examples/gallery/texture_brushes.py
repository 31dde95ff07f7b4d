"""Gallery scene: texture brushes cut from a small tile, hatch brushes and a textured pen.

    PYTHONPATH=build/python /usr/bin/python3 examples/gallery/texture_brushes.py [out.png]
"""
import os
import sys

from orvane.pyfigura import (Bitmap, Brushes, Color, Font, FontFamily, FontStyle, Graphics, Pen, Pens,
                             Rectangle, RectangleF, StringAlignment, StringFormat, TextureBrush)
from orvane.pyfigura import drawing2d, text

WIDTH, HEIGHT = 640, 420
HATCHES = [drawing2d.HatchStyle.DIAGONAL_CROSS, drawing2d.HatchStyle.HORIZONTAL_BRICK,
           drawing2d.HatchStyle.WEAVE, drawing2d.HatchStyle.SHINGLE, drawing2d.HatchStyle.ZIG_ZAG,
           drawing2d.HatchStyle.SPHERE, drawing2d.HatchStyle.PLAID, drawing2d.HatchStyle.DIVOT]


def make_tile():
    """A 40x40 tile: a quarter-checked square with a disc in one corner."""
    tile = Bitmap(40, 40)
    with Graphics.from_image(tile) as g:
        g.smoothing_mode = drawing2d.SmoothingMode.ANTI_ALIAS
        g.clear(Color.lemon_chiffon)
        g.fill_rectangle(Brushes.light_coral, 0, 0, 20, 20)
        g.fill_rectangle(Brushes.light_coral, 20, 20, 20, 20)
        g.fill_ellipse(Brushes.teal, 4, 4, 16, 16)
        g.draw_line(Pens.dark_slate_gray, 0, 39, 39, 0)
    return tile


def draw(path):
    with make_tile() as tile, Bitmap(WIDTH, HEIGHT) as bitmap:
        with Graphics.from_image(bitmap) as g:
            g.clear(Color.white)
            g.smoothing_mode = drawing2d.SmoothingMode.ANTI_ALIAS
            g.text_rendering_hint = text.TextRenderingHint.ANTI_ALIAS

            # The tile repeated as it is.
            with TextureBrush(tile) as plain:
                g.fill_rectangle(plain, 20, 20, 180, 150)

            # Mirrored on every other repeat: the seams meet edge to edge.
            with TextureBrush(tile, drawing2d.WrapMode.TILE_FLIP_XY) as mirrored:
                g.fill_ellipse(mirrored, 230, 20, 180, 150)

            # Turned and shrunk by the brush's own transform.
            with TextureBrush(tile) as turned:
                turned.rotate_transform(30)
                turned.scale_transform(0.6, 0.6)
                g.fill_pie(turned, 440, 20, 180, 180, 180, 270)

            # Letters filled with the tile, and a thick pen that paints with it.
            with TextureBrush(tile, drawing2d.WrapMode.TILE_FLIP_X) as ink, \
                    Font(FontFamily.generic_sans_serif, 54.0, FontStyle.BOLD) as font:
                g.draw_string("Texture", font, ink, 14, 190)
                with Pen(ink, 14) as ribbon:
                    ribbon.start_cap = drawing2d.LineCap.ROUND
                    ribbon.end_cap = drawing2d.LineCap.ROUND
                    g.draw_bezier(ribbon, 340, 280, 420, 170, 520, 340, 610, 230)

            # A row of hatch patterns with their names.
            with Font(FontFamily.generic_sans_serif, 7.0) as small, StringFormat() as centred:
                centred.alignment = StringAlignment.CENTER
                for i, style in enumerate(HATCHES):
                    cell = Rectangle(20 + i * 76, 320, 66, 66)
                    with drawing2d.HatchBrush(style, Color.navy, Color.alice_blue) as hatch:
                        g.fill_rectangle(hatch, cell)
                    g.draw_rectangle(Pens.navy, cell)
                    label = style.name.lower().replace("_", " ")
                    g.draw_string(label, small, Brushes.black, RectangleF(15 + i * 76, 389, 76, 30), centred)
        bitmap.save(path)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default = os.path.join(here, "..", "..", "build", "gallery", "texture_brushes.png")
    out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else default)
    os.makedirs(os.path.dirname(out), exist_ok=True)
    draw(out)
    print(out)


if __name__ == "__main__":
    main()
