"""Gallery scenes timed from Python and as their C# twins, as a ratio table.

Both sides loop in-process over the scene's draw(path) (file writing included) and keep the best
of several rounds after a round of warming up (JIT, tiering, first use). The figures are process
CPU time, which a busy machine disturbs less than wall time. The project's
goal is a ratio of at most 1.15. dot_mosaic is the scene of 100,000 small calls (one-pixel
fill_rectangle), where the per-call cost of the bridge shows most.
"""
import importlib.util
import os
import subprocess
import sys
import tempfile
import time

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(HERE)
GALLERY = os.path.join(REPO, "examples", "gallery")
PROJECT = os.path.join(GALLERY, "csharp", "Gallery.csproj")
CSHARP_OUT = os.path.join(REPO, "build", "bench", "gallery")
CSHARP_DLL = os.path.join(CSHARP_OUT, "Gallery.dll")
GOAL = 1.15
ROUNDS = 9
EXTENSION = {"jpeg_quality": ".jpg"}


def build_csharp():
    """Build the C# gallery unless it is newer than its sources."""
    folder = os.path.dirname(PROJECT)
    newest = max(os.path.getmtime(os.path.join(folder, name)) for name in os.listdir(folder)
                 if name.endswith((".cs", ".csproj")))
    if os.path.exists(CSHARP_DLL) and os.path.getmtime(CSHARP_DLL) >= newest:
        return
    subprocess.run(["dotnet", "build", PROJECT, "-c", "Release", "-o", CSHARP_OUT, "--nologo", "-v", "quiet"],
                   check=True, capture_output=True)


def load_scene(scene):
    spec = importlib.util.spec_from_file_location(f"gallery_{scene}", os.path.join(GALLERY, scene + ".py"))
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def python_ms(draw, path, n):
    """Milliseconds of CPU time per draw: best of ROUNDS rounds of n draws, after one round of warming up."""
    for _ in range(n):
        draw(path)
    best = float("inf")
    for _ in range(ROUNDS):
        start = time.process_time()
        for _ in range(n):
            draw(path)
        best = min(best, (time.process_time() - start) / n)
    return best * 1e3


def csharp_ms(scene, path, n):
    out = subprocess.run(["dotnet", CSHARP_DLL, "--bench", scene, str(n), path],
                         capture_output=True, text=True, check=True).stdout.split()
    return float(out[1])


def main(budget_s=0.15):
    build_csharp()
    scenes = sorted(name[:-3] for name in os.listdir(GALLERY) if name.endswith(".py"))
    if len(sys.argv) > 1 and __name__ == "__main__":
        scenes = [s for s in scenes if s in sys.argv[1:]]
    workdir = tempfile.mkdtemp(prefix="gallery-bench-")
    print(f"{'scene':20} {'n':>4} {'Python ms':>10} {'C# ms':>9} {'ratio':>7}")
    worst = 0.0
    for scene in scenes:
        path = os.path.join(workdir, scene + EXTENSION.get(scene, ".png"))
        try:
            draw = load_scene(scene).draw
            draw(path)                               # first use stays out of the figures
            start = time.process_time()
            draw(path)                               # a measure for the round size
            n = max(1, int(budget_s / max(time.process_time() - start, 1e-3)))
            ours = python_ms(draw, path, n)
        except Exception as error:                   # a scene the bridge cannot draw yet
            print(f"{scene:20} failed: {type(error).__name__}: {error}")
            continue
        theirs = csharp_ms(scene, path, n)
        worst = max(worst, ours / theirs)
        note = "" if ours / theirs <= GOAL else f"  above {GOAL}"
        print(f"{scene:20} {n:4d} {ours:10.2f} {theirs:9.2f} {ours / theirs:7.2f}{note}")
        if scene == "dot_mosaic":                    # ms per draw of 100,000 calls -> us per call
            print(f"{'':20} {'':4} {ours / 100:10.2f} {theirs / 100:9.2f}  us per call")
    print(f"worst ratio {worst:.2f} (goal {GOAL})")


if __name__ == "__main__":
    main()
