"""Gallery scene: pictures encoded to PNG in memory, read back and laid out as a contact sheet.

Everything goes through io.BytesIO: a Python file object stands in wherever a Stream is expected.

    PYTHONPATH=build/python /usr/bin/python3 examples/gallery/thumbnails.py [out.png]
"""
import io
import os
import sys

from orvane.pyfigura import (Bitmap, Brushes, Color, Font, FontFamily, Graphics, Pen, Rectangle,
                             RectangleF, SolidBrush, StringAlignment, StringFormat)
from orvane.pyfigura import drawing2d, imaging

PHOTO_W, PHOTO_H = 320, 240        # size of each generated picture
THUMB_W, THUMB_H = 160, 120        # size of each thumbnail
COLUMNS, ROWS, GAP = 3, 2, 20
PALETTE = [(Color.dark_blue, Color.light_sky_blue), (Color.dark_green, Color.pale_green),
           (Color.dark_red, Color.light_salmon), (Color.indigo, Color.plum),
           (Color.saddle_brown, Color.wheat), (Color.dark_slate_gray, Color.light_cyan)]


def make_photo(index):
    """A picture encoded as PNG bytes: a gradient sky, a sun and a few hills."""
    dark, light = PALETTE[index]
    with Bitmap(PHOTO_W, PHOTO_H) as photo:
        with Graphics.from_image(photo) as g:
            g.smoothing_mode = drawing2d.SmoothingMode.ANTI_ALIAS
            with drawing2d.LinearGradientBrush(Rectangle(0, 0, PHOTO_W, PHOTO_H), light, dark,
                                               drawing2d.LinearGradientMode.VERTICAL) as sky:
                g.fill_rectangle(sky, 0, 0, PHOTO_W, PHOTO_H)
            g.fill_ellipse(Brushes.yellow, 40 + index * 40, 30, 60, 60)
            with SolidBrush(Color.from_argb(170, light)) as hills:
                for i in range(4):
                    g.fill_ellipse(hills, i * 100 - 60, 150 + (i + index) % 3 * 15, 200, 160)
        buffer = io.BytesIO()
        photo.save(buffer, imaging.ImageFormat.png)
    return buffer.getvalue()


def draw(path):
    photos = [make_photo(i) for i in range(COLUMNS * ROWS)]
    sheet_w = COLUMNS * THUMB_W + (COLUMNS + 1) * GAP
    sheet_h = ROWS * (THUMB_H + 24) + (ROWS + 1) * GAP
    with Bitmap(sheet_w, sheet_h) as sheet:
        with Graphics.from_image(sheet) as g, Font(FontFamily.generic_sans_serif, 9.0) as caption, \
                StringFormat() as centred, Pen(Color.gray, 1) as frame:
            g.clear(Color.white_smoke)
            g.interpolation_mode = drawing2d.InterpolationMode.HIGH_QUALITY_BICUBIC
            centred.alignment = StringAlignment.CENTER
            for i, data in enumerate(photos):
                x = GAP + (i % COLUMNS) * (THUMB_W + GAP)
                y = GAP + (i // COLUMNS) * (THUMB_H + 24 + GAP)
                # Decode the PNG from memory and scale it into its cell.
                with Bitmap(io.BytesIO(data)) as photo:
                    g.draw_image(photo, Rectangle(x, y, THUMB_W, THUMB_H))
                g.draw_rectangle(frame, Rectangle(x, y, THUMB_W, THUMB_H))
                g.draw_string(f"photo {i + 1}: {len(data)} bytes", caption, Brushes.black,
                              RectangleF(x, y + THUMB_H + 4, THUMB_W, 18), centred)
        # The sheet itself is encoded in memory too; only its bytes reach the file.
        encoded = io.BytesIO()
        sheet.save(encoded, imaging.ImageFormat.png)
    with open(path, "wb") as out:
        out.write(encoded.getvalue())


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    default = os.path.join(here, "..", "..", "build", "gallery", "thumbnails.png")
    out = os.path.abspath(sys.argv[1] if len(sys.argv) > 1 else default)
    os.makedirs(os.path.dirname(out), exist_ok=True)
    draw(out)
    print(out)


if __name__ == "__main__":
    main()
