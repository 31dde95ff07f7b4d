"""Heavy calls run without the interpreter lock; objects shared between threads stay safe and correct."""
import io
import threading
import time
from concurrent.futures import ThreadPoolExecutor

import numpy as np
import pytest

import orvane.pyfigura as f
from orvane.pyfigura import drawing2d, imaging as im

COLORS = [f.Color.from_argb(255, 30 * i, 255 - 30 * i, (70 * i) % 256) for i in range(8)]


def band(bitmap, graphics, index, until=0.0):
    """What one thread does: fills its own band of the shared picture and checks it, again until `until`."""
    brush, pen, own = f.SolidBrush(COLORS[index]), f.Pen(COLORS[index], 3.0), f.Bitmap(64, 64)
    while True:
        graphics.fill_rectangle(brush, 0, index * 16, 256, 16)  # 64 x 64 in area: released
        graphics.draw_line(pen, 0, index * 16 + 8, 255, index * 16 + 8)
        assert bitmap.get_pixel(5, index * 16 + 2) == COLORS[index]
        with f.Graphics.from_image(own) as g:
            g.fill_ellipse(brush, 0, 0, 64, 64)
        own.save(out := io.BytesIO(), im.ImageFormat.png)  # stream callbacks into Python from a released call
        assert out.getvalue()[:4] == b"\x89PNG"
        gone = f.SolidBrush(COLORS[index])
        gone.dispose()
        with pytest.raises(RuntimeError, match="ArgumentException"):
            graphics.fill_rectangle(gone, 0, 0, 64, 64)  # the managed error crosses back from a released call
        if time.monotonic() > until:
            return


def scene(threads):
    bitmap = f.Bitmap(256, 128)
    graphics, until = f.Graphics.from_image(bitmap), time.monotonic() + 3
    with ThreadPoolExecutor(8) as pool:  # an error in a thread is raised here; a hung thread times out
        list(pool.map(lambda i: band(bitmap, graphics, i, until), range(8 if threads else 0), timeout=60))
    for i in range(0 if threads else 8):  # the same bands, one after the other
        band(bitmap, graphics, i)
    graphics.dispose()
    return bitmap.to_array()


def test_eight_threads_sharing_one_graphics_draw_what_one_thread_draws():
    np.testing.assert_array_equal(scene(threads=True), scene(threads=False))


def test_a_call_on_an_object_waits_for_the_released_call_using_it():
    bitmap, inside, go_on = f.Bitmap(200, 200), threading.Event(), threading.Event()

    class SlowFile(io.BytesIO):
        def write(self, data):
            inside.set()
            go_on.wait(10)  # the save holds the bitmap until this returns
            return super().write(data)

    out, graphics, brush = SlowFile(), f.Graphics.from_image(bitmap), f.SolidBrush(f.Color.red)
    with ThreadPoolExecutor(5) as pool:
        saving = pool.submit(bitmap.save, out, im.ImageFormat.png)
        assert inside.wait(10)
        # A draw through a Graphics of the bitmap waits too, whether it gives up the lock (64 x 64) or
        # keeps it (1 x 1): the graphics has the bitmap as its partner.
        others = [pool.submit(call) for call in (lambda: graphics.fill_rectangle(brush, 0, 0, 64, 64),
                                                  lambda: graphics.fill_rectangle(brush, 0, 0, 1, 1),
                                                  lambda: bitmap.get_pixel(0, 0), bitmap.dispose)]
        time.sleep(0.3)
        assert not any(other.done() for other in others)  # all wait for the save to end
        go_on.set()
        assert saving.result(10) is None
        # the dispose may come first: then the other calls are refused cleanly
        assert all(isinstance(other.exception(10), (type(None), RuntimeError)) for other in others)
    assert f.Image.from_stream(io.BytesIO(out.getvalue())).width == 200


def test_a_nested_call_on_the_same_object_does_not_end_the_outer_ones_hold():
    path, tried, seen = drawing2d.GraphicsPath(), threading.Event(), []
    path.add_line(0, 0, 1, 1)
    other = threading.Thread(target=lambda: (tried.wait(10), path.add_line(2, 2, 3, 3), seen.append("other")))
    other.start()

    class Points:  # read while add_lines holds the path; its first item calls the path again
        def __len__(self):
            return 2

        def __getitem__(self, i):
            if i == 0:
                path.get_last_point()
                tried.set()
                time.sleep(0.3)  # the other thread's call must still be waiting when this returns
                seen.append("outer")
            return f.PointF(i, i)

    path.add_lines(Points())
    other.join(10)
    assert seen == ["outer", "other"]


def test_a_graphics_keeps_its_image_alive_and_goes_with_it():
    graphics, brush = f.Graphics.from_image(f.Bitmap(32, 32)), f.SolidBrush(f.Color.red)
    f._wrpgen._interop._collect_managed()  # runs managed finalizers: an unreferenced image would go
    graphics.fill_rectangle(brush, 0, 0, 32, 32)  # the image is still there
    drawing = f.Graphics.from_image(bitmap := f.Bitmap(32, 32))
    bitmap.dispose()  # libgdiplus frees the pixels: the graphics is disposed first, not left to draw into them
    with pytest.raises(RuntimeError, match="ArgumentException"):
        drawing.fill_rectangle(brush, 0, 0, 32, 32)
