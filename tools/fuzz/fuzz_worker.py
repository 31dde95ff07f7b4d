"""Child of the image fuzz harness: loads each file named on stdin three ways, reporting as it goes.

Prints "start N" before and "end N <outcome>" after each file, so that the harness can tell which
file a crash or a hang happened on. Outcomes: "loaded" (every load worked) or "refused" (at least one
raised a Python exception, which is what a bad file should do).
"""
import io
import sys

import orvane.pyfigura as f


def load_all(path):
    refused = False
    with open(path, "rb") as source:
        data = source.read()
    for load in (lambda: f.Bitmap(path).width, lambda: f.Image.from_stream(io.BytesIO(data)).width,
                 lambda: f.Icon(path).width):
        try:
            load()
        except Exception:
            refused = True
    return "refused" if refused else "loaded"


def main():
    for number, line in enumerate(sys.stdin):
        print(f"start {number}", flush=True)
        print(f"end {number} {load_all(line.rstrip(chr(10)))}", flush=True)


if __name__ == "__main__":
    main()
