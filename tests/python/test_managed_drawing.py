"""Managed code reached through the real host draws with System.Drawing; errors and strings cross back.

The probe module joins the runtime orvane.pyfigura started, as a sister module does, and calls a probe assembly
beside the interop assembly, all in one traced child interpreter."""
import json
import os

from PIL import Image

from conftest import TEST_ASSETS

TEXTS = {"plain ascii": 11, "Latin-1 \u00e9\u00ff": 10, "BMP \u4e2d\u6587\u20ac": 7,
         "astral \U0001F600\U00010348": 11, "": 0}
SCRIPT = """
import json, orvane.pyfigura, host_probe
out = {"argb": host_probe.draw_sample(PATH, 'Hi') & 0xFFFFFFFF}
state = host_probe.runtime_state()
out["state"] = [state["loaded_here"], state["domain_initialized"]]
try:
    host_probe.fail('it broke: \\u00e9\\U0001F600')
except RuntimeError as e:
    out["error"] = str(e)
out["echo"] = [[text, *host_probe.echo(text)] for text in TEXTS]
host_probe.live_handles()
print("RESULT " + json.dumps(out))
"""


def test_a_sister_module_draws_fails_and_echoes_through_the_shared_host(fresh_python, tmp_path):
    path = tmp_path / "probe.png"
    run = fresh_python(f"PATH = {str(path)!r}\nTEXTS = {list(TEXTS)!r}\n" + SCRIPT, env={
        "NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": os.path.join(TEST_ASSETS, "assemblies"), "COREHOST_TRACE": "1"})
    assert run.returncode == 0, run
    lines = run.stdout.decode().splitlines()
    out = json.loads(next(line for line in lines if line.startswith("RESULT "))[7:])
    # The sister joins the running runtime; only the first module starts and stops it.
    assert out["state"] == [False, True]
    assert [lines.count(t) for t in ("Using existed module...", "No existed module...",
                                     "Shutdowning .NET Core host...")] == [1, 1, 1]
    assert out["error"] == "Proxy error(System.InvalidOperationException): it broke: \u00e9\U0001F600"
    assert out["echo"] == [[text, text, units] for text, units in TEXTS.items()]
    assert out["argb"] == 0xFFFF0000  # the line starts at (0, 0)
    image = Image.open(path).convert("RGBA")
    assert image.size == (64, 32)
    assert [image.getpixel(p) for p in ((0, 0), (63, 31), (63, 0), (0, 31))] == [
        (255, 0, 0, 255), (255, 0, 0, 255), (255, 255, 255, 255), (255, 255, 255, 255)]
    # The text stands right of x=30 near the top: some dark, grey-ish pixels.
    dark = [p for x in range(30, 64) for y in range(16) for p in [image.getpixel((x, y))] if max(p[:3]) < 128]
    assert len(dark) >= 10
