"""Cold import time of orvane.pyfigura: fresh interpreter processes, best and median.

The figure is measured inside each process (time around the import statement), so interpreter
start-up is not counted; the whole-process time is printed beside it for reference.
"""
import os
import statistics
import subprocess
import sys
import time

PYTHON = "/usr/bin/python3"
SCRIPT = ("import time; t = time.perf_counter(); import orvane.pyfigura; "
          "print(time.perf_counter() - t)")


def measure(runs, env):
    inside, whole = [], []
    for _ in range(runs):
        start = time.perf_counter()
        out = subprocess.run([PYTHON, "-c", SCRIPT], env=env, capture_output=True, check=True).stdout
        whole.append(time.perf_counter() - start)
        inside.append(float(out.decode().strip().splitlines()[-1]))
    return inside, whole


def main(runs=15):
    env = dict(os.environ)
    env.setdefault("PYTHONPATH", os.path.join(os.path.dirname(__file__), "..", "build", "python"))
    measure(2, env)  # warm the file cache
    inside, whole = measure(runs, env)
    ms = lambda v: f"{v * 1000:7.1f} ms"
    print(f"cold import of orvane.pyfigura over {runs} fresh processes")
    print(f"  import statement: best {ms(min(inside))}   median {ms(statistics.median(inside))}")
    print(f"  whole process:    best {ms(min(whole))}   median {ms(statistics.median(whole))}")
    print(f"  target 200 ms (goal 150 ms): median/goal = {statistics.median(inside) / 0.150:.2f}")


if __name__ == "__main__":
    main(int(sys.argv[1]) if len(sys.argv) > 1 else 15)
