"""Runs every benchmark of the project and prints its figures."""
import os
import runpy

HERE = os.path.dirname(os.path.abspath(__file__))

BENCHES = ["import_time.py", "call_bench.py", "lifecycle_bench.py", "memory_bench.py", "array_bench.py",
           "pixels_bench.py", "threads_bench.py", "gallery_bench.py"]

for name in BENCHES:
    print(f"== {name}")
    runpy.run_path(os.path.join(HERE, name), run_name="__main__")
