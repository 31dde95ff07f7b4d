"""Gallery scene: text placed with StringFormat (alignment, wrapping, trimming) and measured with measure_string.

    PYTHONPATH=build/python /usr/bin/python3 examples/gallery/text_layout.py [out.png]
"""
import os
import sys

from orvane.pyfigura import (Bitmap, Brushes, Color, Font, FontFamily, FontStyle, Graphics, Pen, RectangleF,
                             SizeF, StringAlignment, StringFormat, StringFormatFlags, StringTrimming)
from orvane.pyfigura import text

WIDTH, HEIGHT = 640, 420
PARAGRAPH = ("StringFormat decides where text goes inside its layout rectangle: which edge it "
             "hugs, where lines break and what happens to the words that do not fit. "
             "measure_string tells how much room a text needs before it is drawn.")
LONG_LINE = "/usr/share/fonts/truetype/dejavu/DejaVuSans-Bold.ttf holds the bold sans-serif face"
ALIGNMENTS = [("near", StringAlignment.NEAR), ("center", StringAlignment.CENTER), ("far", StringAlignment.FAR)]
TRIMMINGS = [("character", StringTrimming.ELLIPSIS_CHARACTER), ("word", StringTrimming.ELLIPSIS_WORD),
             ("path", StringTrimming.ELLIPSIS_PATH)]


def draw(path):
    with Bitmap(WIDTH, HEIGHT) as bitmap:
        with Graphics.from_image(bitmap) as g, \
                Font(FontFamily.generic_sans_serif, 9.0) as small, \
                Font(FontFamily.generic_serif, 11.0) as body, \
                Font(FontFamily.generic_sans_serif, 16.0, FontStyle.BOLD) as heading, \
                Pen(Color.silver, 1) as guide:
            g.clear(Color.white)
            g.text_rendering_hint = text.TextRenderingHint.ANTI_ALIAS
            g.draw_string("Text layout", heading, Brushes.dark_slate_blue, 20, 12)

            # Nine cells: every pairing of horizontal and vertical alignment.
            for row, (vertical_name, vertical) in enumerate(ALIGNMENTS):
                for column, (horizontal_name, horizontal) in enumerate(ALIGNMENTS):
                    cell = RectangleF(20 + column * 96, 50 + row * 60, 90, 54)
                    g.draw_rectangle(guide, cell.x, cell.y, cell.width, cell.height)
                    with StringFormat() as layout:
                        layout.alignment = horizontal
                        layout.line_alignment = vertical
                        g.draw_string(f"{horizontal_name}\n{vertical_name}", small, Brushes.black, cell, layout)

            # A paragraph wrapped to a width: measure_string gives the box it needs.
            with StringFormat() as wrapped:
                size = g.measure_string(PARAGRAPH, body, 280, wrapped)
                g.fill_rectangle(Brushes.lavender, 330, 50, size.width, size.height)
                g.draw_string(PARAGRAPH, body, Brushes.black, RectangleF(330, 50, size.width, size.height), wrapped)
                g.draw_string(f"measured {size.width:.1f} x {size.height:.1f}", small, Brushes.dim_gray,
                              330, 54 + size.height)

            # A box too small for the paragraph: the out arguments report what fits.
            box = SizeF(280, 48)
            fitted, lines = [0], [0]
            with StringFormat() as clipped:
                clipped.format_flags = StringFormatFlags.LINE_LIMIT
                g.measure_string(PARAGRAPH, body, box, clipped, fitted, lines)
                g.draw_rectangle(guide, 330, 250, box.width, box.height)
                g.draw_string(PARAGRAPH, body, Brushes.black, RectangleF(330, 250, box.width, box.height), clipped)
            g.draw_string(f"{fitted[0]} of {len(PARAGRAPH)} characters fit on {lines[0]} lines", small,
                          Brushes.dim_gray, 330, 302)

            # Trimming a line that is too long for its one-line box, three ways.
            for i, (name, trimming) in enumerate(TRIMMINGS):
                y = 250 + i * 44
                with StringFormat() as line:
                    line.trimming = trimming
                    g.draw_rectangle(guide, 20, y + 14, 280, 20)
                    g.draw_string(f"ellipsis {name}", small, Brushes.dim_gray, 20, y)
                    g.draw_string(LONG_LINE, body, Brushes.black, RectangleF(20, y + 16, 280, 18), line)

            # A word picked out with a highlight of exactly its measured size.
            word = "measure_string"
            with Font(FontFamily.generic_monospace, 12.0) as code:
                size = g.measure_string(word, code)
                g.fill_rectangle(Brushes.yellow, 330, 350, size.width, size.height)
                g.draw_string(word, code, Brushes.black, 330, 350)
                g.draw_string("sized its highlight", body, Brushes.black, 334 + size.width, 351)
        bitmap.save(path)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default = os.path.join(here, "..", "..", "build", "gallery", "text_layout.png")
    out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else default)
    os.makedirs(os.path.dirname(out), exist_ok=True)
    draw(out)
    print(out)


if __name__ == "__main__":
    main()
