"""The interpreter lock around heavy calls: two threads drawing and saving 2400x2400 PNGs against the same
work done one after the other, a pure-Python counter's progress during long saves, and what giving up
the lock would cost a cheap call (the no-hop floor's get_pixel with and without it)."""
import os
import tempfile
import threading
import time
import timeit

import call_floor
import orvane.pyfigura as f
from orvane.pyfigura import imaging as im

SIDE = 2400


def draw_and_save(path):
    bitmap = f.Bitmap(SIDE, SIDE)
    with f.Graphics.from_image(bitmap) as g, f.SolidBrush(f.Color.steel_blue) as brush:
        g.clear(f.Color.white)
        for k in range(60):
            brush.color = f.Color.from_argb(255, (k * 37) % 256, (k * 91) % 256, 160)
            g.fill_ellipse(brush, k * 30, k * 20, 900, 700)
    bitmap.save(path, im.ImageFormat.png)
    bitmap.dispose()


def two_threads_ratio(folder):
    paths = [os.path.join(folder, f"{i}.png") for i in range(2)]
    draw_and_save(paths[0])  # warm
    start = time.perf_counter()
    for p in paths:
        draw_and_save(p)
    serial = time.perf_counter() - start
    threads = [threading.Thread(target=draw_and_save, args=(p,)) for p in paths]
    start = time.perf_counter()
    for t in threads:
        t.start()
    for t in threads:
        t.join()
    parallel = time.perf_counter() - start
    return serial, parallel


def counter_share(folder, seconds=1.5):
    """Counts reached by a pure-Python loop in `seconds`, alone and while another thread saves PNGs."""
    def count(stop):
        n = 0
        while not stop.is_set():
            n += 1
        return n

    def timed_count(busy):
        stop, result = threading.Event(), []
        counter = threading.Thread(target=lambda: result.append(count(stop)))
        worker = None
        if busy:
            bitmap = f.Bitmap(SIDE, SIDE)
            with f.Graphics.from_image(bitmap) as g:
                g.clear(f.Color.coral)

            def saves():
                while not stop.is_set():
                    bitmap.save(os.path.join(folder, "busy.png"), im.ImageFormat.png)
            worker = threading.Thread(target=saves)
            worker.start()
        counter.start()
        time.sleep(seconds)
        stop.set()
        counter.join()
        if worker:
            worker.join()
        return result[0]

    alone = timed_count(False)
    during = timed_count(True)
    return alone, during


def main():
    with tempfile.TemporaryDirectory() as folder:
        serial, parallel = two_threads_ratio(folder)
        print(f"two threads drawing + saving {SIDE}x{SIDE} PNG: one after the other {serial:.3f} s, "
              f"in threads {parallel:.3f} s, ratio {parallel / serial:.2f} (goal <= 0.60)")
        alone, during = counter_share(folder)
        print(f"pure-Python counter during long saves: {during / alone:.2f} of its progress alone (goal >= 0.80)")
    floor = call_floor.Floor(640, 480)
    bitmap = f.Bitmap(640, 480)
    env = {"f": floor, "b": bitmap}

    def ns(stmt):
        return min(timeit.Timer(stmt, globals=env).repeat(5, 200_000)) / 200_000 * 1e9
    held, released, bound = ns("f.get_pixel(3, 4)"), ns("f.get_pixel_released(3, 4)"), ns("b.get_pixel(3, 4)")
    print(f"giving up the lock around a cheap call: floor get_pixel {held:.0f} ns, released {released:.0f} ns "
          f"(+{released - held:.0f} ns); bound get_pixel {bound:.0f} ns would pay "
          f"+{100 * (released - held) / bound:.0f}%: cheap calls keep the lock")


if __name__ == "__main__":
    main()
