"""Gallery scene: linear and path gradients filling shapes built with GraphicsPath.

    PYTHONPATH=build/python /usr/bin/python3 examples/gallery/gradients_and_paths.py [out.png]
"""
import math
import os
import sys

from orvane.pyfigura import (Bitmap, Color, FontFamily, FontStyle, Graphics, Pen, PointF, Rectangle,
                             RectangleF, StringFormat)
from orvane.pyfigura import drawing2d

WIDTH, HEIGHT = 640, 420


def rounded_rectangle(x, y, width, height, radius):
    """A closed path with quarter-circle corners."""
    path = drawing2d.GraphicsPath()
    d = radius * 2
    path.add_arc(x, y, d, d, 180, 90)
    path.add_arc(x + width - d, y, d, d, 270, 90)
    path.add_arc(x + width - d, y + height - d, d, d, 0, 90)
    path.add_arc(x, y + height - d, d, d, 90, 90)
    path.close_figure()
    return path


def star(cx, cy, outer, inner, points=5):
    """A star as a polygon: corners alternate between the outer and the inner radius."""
    corners = []
    for i in range(points * 2):
        radius = outer if i % 2 == 0 else inner
        angle = math.pi * i / points - math.pi / 2
        corners.append(PointF(cx + radius * math.cos(angle), cy + radius * math.sin(angle)))
    path = drawing2d.GraphicsPath()
    path.add_polygon(corners)
    return path


def draw(path):
    with Bitmap(WIDTH, HEIGHT) as bitmap:
        with Graphics.from_image(bitmap) as g:
            g.smoothing_mode = drawing2d.SmoothingMode.ANTI_ALIAS

            # Background: a vertical gradient through three colours (a ColorBlend replaces the two
            # colours given to the constructor).
            with drawing2d.LinearGradientBrush(Rectangle(0, 0, WIDTH, HEIGHT), Color.black, Color.black,
                                               drawing2d.LinearGradientMode.VERTICAL) as sky:
                blend = drawing2d.ColorBlend(3)
                blend.colors = [Color.midnight_blue, Color.dark_slate_blue, Color.medium_purple]
                blend.positions = [0.0, 0.7, 1.0]
                sky.interpolation_colors = blend
                g.fill_rectangle(sky, 0, 0, WIDTH, HEIGHT)

            # A rounded card with a diagonal gradient. A float after the colours would be taken
            # as the integer gradient mode, so the angle is passed by keyword.
            card_bounds = RectangleF(30, 30, 280, 180)
            with rounded_rectangle(30, 30, 280, 180, 24) as card, \
                    drawing2d.LinearGradientBrush(card_bounds, Color.orange, Color.crimson, angle=45.0) as fill, \
                    Pen(Color.white, 3) as edge:
                fill.set_sigma_bell_shape(0.5)
                g.fill_path(fill, card)
                g.draw_path(edge, card)

            # A glowing disc: a path gradient from a bright centre to the colour of the path's edge.
            with drawing2d.GraphicsPath() as disc:
                disc.add_ellipse(360, 30, 240, 180)
                with drawing2d.PathGradientBrush(disc) as glow:
                    glow.center_color = Color.white
                    glow.surround_colors = [Color.deep_sky_blue]
                    glow.center_point = PointF(440, 90)
                    g.fill_path(glow, disc)

            # A star with a gradient running from its top to its bottom.
            with star(170, 315, 90, 38) as shape, \
                    drawing2d.LinearGradientBrush(PointF(170, 225), PointF(170, 405), Color.yellow,
                                                  Color.dark_orange) as fill, \
                    Pen(Color.saddle_brown, 2) as edge:
                edge.line_join = drawing2d.LineJoin.ROUND
                g.fill_path(fill, shape)
                g.draw_path(edge, shape)

            # Text converted to a path: filled with a gradient and outlined like any shape.
            with drawing2d.GraphicsPath() as letters:
                letters.add_string("Paths", FontFamily.generic_sans_serif, FontStyle.BOLD, 96.0,
                                   PointF(300, 250), StringFormat.generic_default)
                bounds = letters.get_bounds()
                with drawing2d.LinearGradientBrush(bounds, Color.aquamarine, Color.medium_orchid,
                                                   drawing2d.LinearGradientMode.HORIZONTAL) as ink, \
                        Pen(Color.white, 2) as outline:
                    g.fill_path(ink, letters)
                    g.draw_path(outline, letters)
        bitmap.save(path)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default = os.path.join(here, "..", "..", "build", "gallery", "gradients_and_paths.png")
    out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else default)
    os.makedirs(os.path.dirname(out), exist_ok=True)
    draw(out)
    print(out)


if __name__ == "__main__":
    main()
