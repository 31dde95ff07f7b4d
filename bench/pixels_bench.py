"""Pixels in bulk: a 1024x1024 Bitmap to numpy and Pillow and back, and an effect through the buffer view,
each beside the plain numpy or Pillow operation on the same 4 MB, measured in this run."""
import time

import numpy as np
from PIL import Image

import orvane.pyfigura as f
from orvane.pyfigura import imaging as im

SIDE = 1024
ROUNDS = 30


def best_ms(fn):
    fn()
    best = float("inf")
    for _ in range(ROUNDS):
        start = time.perf_counter()
        fn()
        best = min(best, time.perf_counter() - start)
    return best * 1e3


def main():
    rng = np.random.default_rng(0)
    pixels = rng.integers(0, 256, size=(SIDE, SIDE, 4), dtype=np.uint8)
    bitmap = f.Bitmap.from_array(pixels)
    image = bitmap.to_pil()
    raw = pixels.tobytes()
    whole = f.Rectangle(0, 0, SIDE, SIDE)

    def from_array():
        f.Bitmap.from_array(pixels).dispose()  # disposed at once, as numpy frees its copy at once

    def from_pil():
        f.Bitmap.from_pil(image).dispose()

    def invert_in_place():
        data = bitmap.lock_bits(whole, im.ImageLockMode.READ_WRITE, im.PixelFormat.FORMAT_32BPP_ARGB)
        view = np.asarray(data)
        np.invert(view, out=view)
        del view
        bitmap.unlock_bits(data)

    rows = [
        ("Bitmap.to_array()", best_ms(bitmap.to_array), "numpy copy", best_ms(pixels.copy), 2.0),
        ("Bitmap.from_array(a)", best_ms(from_array), "numpy copy", best_ms(pixels.copy), 2.0),
        ("Bitmap.to_pil()", best_ms(bitmap.to_pil), "Image.frombuffer(BGRA)",
         best_ms(lambda: Image.frombuffer("RGBA", (SIDE, SIDE), raw, "raw", "BGRA", 0, 1)), 2.0),
        ("Bitmap.from_pil(img)", best_ms(from_pil), "img.tobytes(BGRA)",
         best_ms(lambda: image.tobytes("raw", "BGRA")), 2.0),
        ("invert via lock_bits view", best_ms(invert_in_place), "numpy invert in place",
         best_ms(lambda: np.invert(pixels, out=pixels)), 1.5),
    ]
    print(f"{'operation (1024x1024, 32 bpp)':30} {'ms':>7}   {'baseline':24} {'ms':>7} {'ratio':>6} {'goal':>5}")
    for name, ms, base_name, base_ms, goal in rows:
        print(f"{name:30} {ms:7.3f}   {base_name:24} {base_ms:7.3f} {ms / base_ms:6.2f} {goal:5.2f}")


if __name__ == "__main__":
    main()
