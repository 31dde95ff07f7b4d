"""Peak memory of a loop of large bitmaps dropped without `with`, left by `with`, and disposed: one child each."""
import os
import subprocess
import sys

PYTHON = "/usr/bin/python3"
COUNT = 1500

LOOP = """
import resource, sys, orvane.pyfigura as f
mode, count = sys.argv[1], int(sys.argv[2])
for _ in range(count):
    b = f.Bitmap(1000, 1000)
    b.set_pixel(0, 0, f.Color.red)
    if mode == "with":
        with b:
            pass
    elif mode == "dispose":
        b.dispose()
    del b
print(resource.getrusage(resource.RUSAGE_SELF).ru_maxrss // 1024)
"""


def peak_mib(mode):
    done = subprocess.run([PYTHON, "-c", LOOP, mode, str(COUNT)], capture_output=True, text=True, timeout=900,
                          env=dict(os.environ))
    if done.returncode != 0:
        raise RuntimeError(done.stderr)
    return int(done.stdout)


if __name__ == "__main__":
    pixels = COUNT * 1000 * 1000 * 4 // 2**20
    print(f"{COUNT} x Bitmap(1000, 1000), {pixels} MiB of pixels in all; peak RSS of the process:")
    for mode, label in (("drop", "dropped without with"), ("with", "left by a with block"),
                        ("dispose", "dispose() called")):
        print(f"  {label:24s} {peak_mib(mode):6d} MiB")
    sys.stdout.flush()
