"""Per-call cost of bound calls against their limit: the no-hop floor plus the same operation in C#.

floor:   the same call shape (keyword parsing with O& converters, same result kind) in a tiny C
         extension that makes no managed call;
managed: the same System.Drawing operation timed in a C# loop;
bound:   the call through orvane.pyfigura.
ratio = bound / (floor + managed); the project's aim is at most 1.25 (issue target: 2.0 of the floor).
"""
import os
import subprocess
import timeit

import call_floor
import orvane.pyfigura as fig

HERE = os.path.dirname(os.path.abspath(__file__))
BUILD = os.path.join(HERE, "..", "build")


def per_call_ns(stmt, globals_, number):
    timer = timeit.Timer(stmt, globals=globals_)
    return min(timer.repeat(repeat=5, number=number)) / number * 1e9


def managed_figures():
    exe = os.path.join(BUILD, "bench", "csharp", "ManagedCallBench.dll")
    if not os.path.exists(exe):
        return {}
    out = subprocess.run(["dotnet", exe], capture_output=True, text=True, check=True).stdout
    return {line.split()[0]: float(line.split()[1]) for line in out.splitlines() if line.strip()}


def main(number=200_000):
    bitmap = fig.Bitmap(640, 480)
    floor = call_floor.Floor(640, 480)
    managed = managed_figures()
    cases = [
        ("bitmap.width", "b.width", "f.width", number),
        ("bitmap.set_resolution", "b.set_resolution(96, 96)", "f.set_resolution(96, 96)", number),
        ("Bitmap(4,4)", "Bitmap(4, 4)", "Floor(4, 4)", number // 10),
        ("StringFormat()", "StringFormat()", "Floor(1, 1)", number),
        ("Color.from_argb", "Color.from_argb(255, 1, 2, 3)", "Floor.from_argb(255, 1, 2, 3)", number),
        ("bitmap.get_pixel", "b.get_pixel(3, 4)", "f.get_pixel(3, 4)", number),
        ("Point.add", "Point.add(p, s)", "Floor.add(fp, fs)", number),
        ("g.fill_rectangle(floats)", "g.fill_rectangle(br, 1.5, 2.5, 3.0, 4.0)",
         "f.fill_rectangle(f, 1.5, 2.5, 3.0, 4.0)", number),
    ]
    env = {"b": bitmap, "f": floor, "Bitmap": fig.Bitmap, "Floor": call_floor.Floor,
           "StringFormat": fig.StringFormat, "Color": fig.Color, "Point": fig.Point,
           "p": fig.Point(1, 2), "s": fig.Size(3, 4),
           "fp": call_floor.FloorPoint(1, 2), "fs": call_floor.FloorSize(3, 4),
           "g": fig.Graphics.from_image(bitmap), "br": fig.SolidBrush(fig.Color.steel_blue)}
    print(f"{'call':24} {'bound ns':>9} {'floor ns':>9} {'C# ns':>8} {'x floor':>8} {'x limit':>8}")
    for name, bound_stmt, floor_stmt, n in cases:
        bound = per_call_ns(bound_stmt, env, n)
        base = per_call_ns(floor_stmt, env, n)
        cs = managed.get(name)
        limit = base + cs if cs is not None else None
        limit_text = f"{bound / limit:8.2f}" if limit else "     n/a"
        cs_text = f"{cs:8.1f}" if cs is not None else "     n/a"
        print(f"{name:24} {bound:9.1f} {base:9.1f} {cs_text} {bound / base:8.2f} {limit_text}")


if __name__ == "__main__":
    main()
