"""Probe modules in a fresh process: a sister module joins the shared host and its own assembly draws and fails;
the managed handles behind wrappers are counted while they are made, disposed and dropped."""
import ast
import os

import pytest
from PIL import Image

from conftest import TEST_ASSETS, run_python

SCRIPT = """
import contextlib, gc, orvane.pyfigura as f, host_probe, collection_probe as cp
sister = {"argb": host_probe.draw_sample(PATH, 'Hi') & 0xFFFFFFFF}
try:
    host_probe.fail('it broke: \\u00e9\\U0001F600')
except RuntimeError as e:
    sister["error"] = str(e)
out, live = {}, host_probe.live_handles
start = live()
objs = [f.StringFormat() for _ in range(500)]
out["made"] = live() - start
del objs
out["dropped"] = live() - start
with f.Bitmap(4, 4) as b:
    pass
out["after-with"] = live() - start  # __exit__ disposes but keeps the handle
del b
out["after-del"] = live() - start
for args in [()] * 50 + [("no-such-file.png",)] * 50:
    with contextlib.suppress(TypeError, RuntimeError):
        f.Bitmap(*args)
f.StringFormat.__new__(f.StringFormat)
out["failed-ctors"] = live() - start
holder = f.Bitmap(2, 2)
holder.tag = f.StringFormat()
results = [holder.tag for _ in range(100)] + [holder.clone() for _ in range(10)]
out["results"] = live() - start  # the holder and one per result; the tag is kept by the managed side alone
del results, holder
gc.collect()
out["end"] = live() - start
# The disposable protocol on an interop wrapper: cp.log tells how often the managed object was disposed.
d = cp.make("disposable", f._wrpgen._interop._IDisposableWrapper)
with d as entered:
    inside = cp.log(d)
out["with"] = (entered is d, inside, cp.log(d))
try:
    with d:
        raise KeyError("body")
except KeyError as e:
    out["body-raises"] = (str(e), cp.log(d))
out["exit-any-arguments"] = (d.__exit__(), d.__exit__(None, None, None, "any", "thing"), cp.log(d))
try:
    cp.make("disposable-failing", type(d)).__exit__(KeyError, None, None)
except RuntimeError as e:
    out["dispose-fails"] = str(e).split(":")[0]
print("RESULT", repr((sister, out)))
"""


@pytest.fixture(scope="module")
def probe(tmp_path_factory):
    """(the probe drawing's path, the stdout lines, the sister's results, the handle counts) of one traced run."""
    path = tmp_path_factory.mktemp("probe") / "probe.png"
    run = run_python(f"PATH = {str(path)!r}\n" + SCRIPT, env={
        "NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": os.path.join(TEST_ASSETS, "assemblies"), "COREHOST_TRACE": "1"})
    assert run.returncode == 0, run
    lines = run.stdout.decode().splitlines()
    return path, lines, *ast.literal_eval(next(line for line in lines if line.startswith("RESULT "))[7:])


def test_a_sister_module_draws_and_fails_through_the_shared_host(probe):
    path, lines, out, _ = probe
    # The sisters (host_probe, collection_probe) join the running runtime; only the first module starts and stops it.
    assert [lines.count(t) for t in ("Using existed module...", "No existed module...",
                                     "Shutdowning .NET Core host...")] == [2, 1, 1]
    assert out["error"] == "Proxy error(System.InvalidOperationException): it broke: \u00e9\U0001F600"
    assert out["argb"] == 0xFFFF0000  # the red line starts at (0, 0)
    image = Image.open(path).convert("RGB")  # saved under the path it was given, with the text it was given:
    assert image.size == (64, 32) and image.getpixel((63, 0)) == (255, 255, 255)  # dark pixels right of x=30
    assert sum(max(image.getpixel((x, y))) < 128 for x in range(30, 64) for y in range(16)) >= 10


def test_wrappers_hold_one_handle_each_until_dropped_and_interop_disposables_dispose_once_per_exit(probe):
    assert probe[3] == {
        "made": 500, "dropped": 0, "after-with": 1, "after-del": 0, "failed-ctors": 0, "results": 1 + 100 + 10,
        "end": 0, "with": (True, "disposed 0", "disposed 1"), "body-raises": ("'body'", "disposed 2"),
        "exit-any-arguments": (None, None, "disposed 4"),
        "dispose-fails": "Proxy error(System.ObjectDisposedException)"}
