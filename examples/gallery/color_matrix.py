"""Gallery scene: one picture drawn through six colour matrices (grayscale, sepia, negative, ...).

    PYTHONPATH=build/python /usr/bin/python3 examples/gallery/color_matrix.py [out.png]
"""
import os
import sys

from orvane.pyfigura import (Bitmap, Brushes, Color, Font, FontFamily, FontStyle, Graphics, GraphicsUnit,
                             Rectangle, RectangleF, SolidBrush, StringAlignment, StringFormat)
from orvane.pyfigura import drawing2d, imaging, text

PANEL_W, PANEL_H = 180, 135
COLUMNS, GAP, LABEL = 3, 16, 22
WHEEL = [Color.red, Color.orange, Color.yellow, Color.yellow_green, Color.lime, Color.spring_green,
         Color.cyan, Color.deep_sky_blue, Color.blue, Color.blue_violet, Color.magenta, Color.deep_pink]

# Five rows of five numbers. Output channel j = sum over i of input i times row i, column j, where
# the inputs are R, G, B, A and a constant 1 (row 4 adds a fixed amount to each channel).
FILTERS = [
    ("original", [[1, 0, 0, 0, 0], [0, 1, 0, 0, 0], [0, 0, 1, 0, 0], [0, 0, 0, 1, 0], [0, 0, 0, 0, 1]]),
    ("grayscale", [[0.299, 0.299, 0.299, 0, 0], [0.587, 0.587, 0.587, 0, 0], [0.114, 0.114, 0.114, 0, 0],
                   [0, 0, 0, 1, 0], [0, 0, 0, 0, 1]]),
    ("sepia", [[0.393, 0.349, 0.272, 0, 0], [0.769, 0.686, 0.534, 0, 0], [0.189, 0.168, 0.131, 0, 0],
               [0, 0, 0, 1, 0], [0, 0, 0, 0, 1]]),
    ("negative", [[-1, 0, 0, 0, 0], [0, -1, 0, 0, 0], [0, 0, -1, 0, 0], [0, 0, 0, 1, 0], [1, 1, 1, 0, 1]]),
    ("brighter", [[1.2, 0, 0, 0, 0], [0, 1.2, 0, 0, 0], [0, 0, 1.2, 0, 0], [0, 0, 0, 1, 0],
                  [0.1, 0.1, 0.1, 0, 1]]),
    ("40% opaque", [[1, 0, 0, 0, 0], [0, 1, 0, 0, 0], [0, 0, 1, 0, 0], [0, 0, 0, 0.4, 0], [0, 0, 0, 0, 1]]),
]


def make_picture():
    """The picture every panel shows: a colour wheel, a gradient bar and a word."""
    picture = Bitmap(PANEL_W, PANEL_H)
    with Graphics.from_image(picture) as g:
        g.smoothing_mode = drawing2d.SmoothingMode.ANTI_ALIAS
        g.text_rendering_hint = text.TextRenderingHint.ANTI_ALIAS
        g.clear(Color.ivory)
        for i, colour in enumerate(WHEEL):
            with SolidBrush(colour) as brush:
                g.fill_pie(brush, 10, 12, 110, 110, i * 30, 30)
        with drawing2d.LinearGradientBrush(Rectangle(130, 12, 40, 110), Color.black, Color.white,
                                           drawing2d.LinearGradientMode.VERTICAL) as bar:
            g.fill_rectangle(bar, 130, 12, 40, 110)
        with Font(FontFamily.generic_serif, 20.0, FontStyle.BOLD) as font:
            g.draw_string("Aa", font, Brushes.white, 44, 50)
    return picture


def draw(path):
    rows = (len(FILTERS) + COLUMNS - 1) // COLUMNS
    width = COLUMNS * PANEL_W + (COLUMNS + 1) * GAP
    height = rows * (PANEL_H + LABEL) + (rows + 1) * GAP
    with make_picture() as picture, Bitmap(width, height) as canvas:
        with Graphics.from_image(canvas) as g, Font(FontFamily.generic_sans_serif, 10.0) as font, \
                StringFormat() as centred, \
                drawing2d.HatchBrush(drawing2d.HatchStyle.LARGE_CHECKER_BOARD, Color.light_gray, Color.white) as checks:
            g.clear(Color.white)
            g.text_rendering_hint = text.TextRenderingHint.ANTI_ALIAS
            centred.alignment = StringAlignment.CENTER
            for n, (name, rows_of_five) in enumerate(FILTERS):
                x = GAP + (n % COLUMNS) * (PANEL_W + GAP)
                y = GAP + (n // COLUMNS) * (PANEL_H + LABEL + GAP)
                cell = Rectangle(x, y, PANEL_W, PANEL_H)
                # A checkerboard behind each panel shows where the filter lets it through.
                g.fill_rectangle(checks, cell)
                with imaging.ImageAttributes() as attributes:
                    # Nested lists make the matrix; single elements are properties too (matrix.matrix33).
                    attributes.set_color_matrix(imaging.ColorMatrix(rows_of_five))
                    g.draw_image(picture, cell, 0, 0, PANEL_W, PANEL_H, GraphicsUnit.PIXEL, attributes)
                g.draw_string(name, font, Brushes.black, RectangleF(x, y + PANEL_H + 3, PANEL_W, LABEL), centred)
        canvas.save(path)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default = os.path.join(here, "..", "..", "build", "gallery", "color_matrix.png")
    out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else default)
    os.makedirs(os.path.dirname(out), exist_ok=True)
    draw(out)
    print(out)


if __name__ == "__main__":
    main()
