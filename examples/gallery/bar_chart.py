"""Gallery scene: a bar chart with a line series, axes, grid lines, labels and a legend.

    PYTHONPATH=build/python /usr/bin/python3 examples/gallery/bar_chart.py [out.png]
"""
import os
import sys

from orvane.pyfigura import (Bitmap, Brushes, Color, Font, FontFamily, FontStyle, Graphics, Pen, Pens,
                             PointF, RectangleF, SolidBrush, StringAlignment, StringFormat)
from orvane.pyfigura import drawing2d, text

WIDTH, HEIGHT = 640, 420
MONTHS = ["Jan", "Feb", "Mar", "Apr", "May", "Jun", "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"]
SALES = [42, 55, 61, 48, 72, 90, 84, 95, 70, 66, 58, 77]    # the bars
TARGET = [50, 52, 58, 60, 65, 75, 80, 85, 78, 60, 65, 70]   # the line
TOP = 100                                                   # value at the top of the axis

# The plot area inside the canvas.
LEFT, RIGHT, PLOT_TOP, BOTTOM = 70, 610, 70, 360


def to_y(value):
    """Canvas y of a value on the vertical axis."""
    return BOTTOM - (BOTTOM - PLOT_TOP) * value / TOP


def draw(path):
    slot = (RIGHT - LEFT) / len(SALES)   # horizontal room per month
    with Bitmap(WIDTH, HEIGHT) as bitmap:
        with Graphics.from_image(bitmap) as g, \
                Font(FontFamily.generic_sans_serif, 9.0) as small, \
                Font(FontFamily.generic_sans_serif, 16.0, FontStyle.BOLD) as heading, \
                StringFormat() as centred, StringFormat() as right_aligned:
            g.clear(Color.white)
            g.smoothing_mode = drawing2d.SmoothingMode.ANTI_ALIAS
            g.text_rendering_hint = text.TextRenderingHint.ANTI_ALIAS
            centred.alignment = StringAlignment.CENTER
            centred.line_alignment = StringAlignment.CENTER
            right_aligned.alignment = StringAlignment.FAR
            right_aligned.line_alignment = StringAlignment.CENTER

            g.draw_string("Monthly sales against target", heading, Brushes.black,
                          RectangleF(0, 16, WIDTH, 30), centred)

            # Horizontal grid lines with their values on the left.
            with Pen(Color.gainsboro, 1) as grid:
                for value in range(0, TOP + 1, 20):
                    y = to_y(value)
                    g.draw_line(grid, PointF(LEFT, y), PointF(RIGHT, y))
                    g.draw_string(str(value), small, Brushes.dim_gray,
                                  RectangleF(0, y - 8, LEFT - 8, 16), right_aligned)

            # Bars, each with its value above it and its month below the axis.
            with SolidBrush(Color.from_argb(255, 70, 130, 180)) as bar:
                for i, value in enumerate(SALES):
                    x = LEFT + i * slot + slot * 0.2
                    g.fill_rectangle(bar, x, to_y(value), slot * 0.6, BOTTOM - to_y(value))
                    g.draw_string(str(value), small, Brushes.steel_blue,
                                  RectangleF(x - 6, to_y(value) - 16, slot * 0.6 + 12, 14), centred)
                    g.draw_string(MONTHS[i], small, Brushes.black,
                                  RectangleF(LEFT + i * slot, BOTTOM + 4, slot, 16), centred)

            # The target line with round markers.
            with Pen(Color.orange_red, 2.5) as line:
                line.line_join = drawing2d.LineJoin.ROUND
                centres = [PointF(LEFT + (i + 0.5) * slot, to_y(v)) for i, v in enumerate(TARGET)]
                for a, b in zip(centres, centres[1:]):
                    g.draw_line(line, a, b)
                for c in centres:
                    g.fill_ellipse(Brushes.white, c.x - 4, c.y - 4, 8, 8)
                    g.draw_ellipse(line, c.x - 4, c.y - 4, 8, 8)

            # Axes over everything else.
            with Pen(Color.black, 1.5) as axis:
                g.draw_line(axis, PointF(LEFT, PLOT_TOP - 10), PointF(LEFT, BOTTOM))
                g.draw_line(axis, PointF(LEFT, BOTTOM), PointF(RIGHT, BOTTOM))

            # The vertical axis title, turned a quarter to the left.
            g.translate_transform(18, (PLOT_TOP + BOTTOM) / 2)
            g.rotate_transform(-90)
            g.draw_string("units sold", small, Brushes.dim_gray, RectangleF(-60, -8, 120, 16), centred)
            g.reset_transform()

            # Legend.
            with SolidBrush(Color.from_argb(255, 70, 130, 180)) as bar:
                g.fill_rectangle(bar, 400, 385, 14, 14)
            g.draw_string("sales", small, Brushes.black, 418, 385)
            g.draw_line(Pens.orange_red, PointF(480, 392), PointF(500, 392))
            g.draw_string("target", small, Brushes.black, 504, 385)
        bitmap.save(path)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default = os.path.join(here, "..", "..", "build", "gallery", "bar_chart.png")
    out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else default)
    os.makedirs(os.path.dirname(out), exist_ok=True)
    draw(out)
    print(out)


if __name__ == "__main__":
    main()
