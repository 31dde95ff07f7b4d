"""Leak check of the wrapper lifecycle: resident memory and live managed handles across create/drop cycles.

Live handles are read through the host probe, which needs the test assemblies beside the interop
assembly; the script re-runs itself in a child process with that environment when it lacks it.
"""
import gc
import os
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
BUILD = os.path.join(HERE, "..", "build")
ASSEMBLIES = os.path.abspath(os.path.join(BUILD, "test-assets", "assemblies"))
ASSEMBLY_VARIABLE = "NETCORE_WRAPPER_ASSEMBLY_DIR_orvane"
PYTHON = "/usr/bin/python3"


def rss_kib():
    with open("/proc/self/status") as status:
        for line in status:
            if line.startswith("VmRSS:"):
                return int(line.split()[1])
    raise RuntimeError("no VmRSS in /proc/self/status")


def run_cycles(make, cycles, checkpoints, live):
    """Creates and drops one object per cycle; returns (cycle, RSS KiB, live handles) at each checkpoint."""
    rows = [(0, rss_kib(), live())]
    step = cycles // checkpoints
    done = 0
    start = time.perf_counter()
    for _ in range(checkpoints):
        for _ in range(step):
            make()
        done += step
        rows.append((done, rss_kib(), live()))
    return rows, time.perf_counter() - start


def report(label, rows, seconds, collected):
    cycles = rows[-1][0]
    print(f"{label}: {cycles:,} create/drop cycles, {seconds * 1e9 / cycles:,.0f} ns per cycle")
    print(f"  {'cycles':>10}  {'RSS KiB':>9}  {'live handles':>12}")
    for done, rss, handles in rows:
        print(f"  {done:>10,}  {rss:>9,}  {handles:>12}")
    print(f"  {'collected':>10}  {collected[0]:>9,}  {collected[1]:>12}")
    print(f"  RSS change start->end {rows[-1][1] - rows[0][1]:+,} KiB, start->collected {collected[0] - rows[0][1]:+,} KiB; "
          f"live handles change {rows[-1][2] - rows[0][2]:+d}")


def disposed(make):
    def cycle():
        with make():
            pass
    return cycle


def measure(string_formats, bitmaps):
    import orvane.pyfigura as f
    import host_probe

    live = host_probe.live_handles
    for _ in range(10000):  # warm-up: JIT, class tables, allocator pools
        f.StringFormat()
        f.Bitmap(4, 4)
    gc.collect()  # the managed side is collected too, its finalizers run
    bitmap = lambda: f.Bitmap(4, 4)
    # Undisposed objects keep their native GDI+ memory until the managed finalizer runs, so their RSS
    # follows the managed collector's schedule, and the managed heap grows to a steady size during the
    # first pass. Each series therefore runs twice: a leak shows as growth in the second pass too.
    for label, make, cycles in [("StringFormat()", f.StringFormat, string_formats),
                                ("with StringFormat()", disposed(f.StringFormat), string_formats),
                                ("Bitmap(4, 4)", bitmap, bitmaps),
                                ("with Bitmap(4, 4)", disposed(bitmap), bitmaps)]:
        for run in (1, 2):
            rows, seconds = run_cycles(make, cycles, 10, live)
            gc.collect()
            report(f"{label}, pass {run}", rows, seconds, (rss_kib(), live()))


def main(argv):
    string_formats = int(argv[0]) if argv else 1_000_000
    bitmaps = int(argv[1]) if len(argv) > 1 else 100_000
    if os.environ.get(ASSEMBLY_VARIABLE) != ASSEMBLIES or "orvane.pyfigura" in sys.modules:
        env = dict(os.environ)
        env[ASSEMBLY_VARIABLE] = ASSEMBLIES
        env["PYTHONPATH"] = os.pathsep.join(
            [os.path.abspath(os.path.join(BUILD, "python")), os.path.abspath(os.path.join(BUILD, "native", "tests"))])
        sys.stdout.flush()
        subprocess.run([PYTHON, os.path.abspath(__file__), str(string_formats), str(bitmaps)],
                       env=env, check=True)
        return
    measure(string_formats, bitmaps)


if __name__ == "__main__":
    main(sys.argv[1:])
