"""Managed code reached through the real host draws with System.Drawing; errors and strings cross back.

The probe module joins the runtime that orvane.pyfigura started, the way a sister module does, and
calls test entries of a probe assembly that sits beside the interop assembly.
"""
import os

import pytest
from PIL import Image

from conftest import TEST_ASSETS

PROBE_ENV = {"NETCORE_WRAPPER_ASSEMBLY_DIR_orvane": os.path.join(TEST_ASSETS, "assemblies")}

DRAW = """
import sys, orvane.pyfigura, host_probe
argb = host_probe.draw_sample(sys.argv[1] if len(sys.argv) > 1 else {path!r}, 'Hi')
print(argb & 0xFFFFFFFF)
"""


def test_bitmap_with_line_and_text_saved_as_png(fresh_python, tmp_path):
    path = tmp_path / "probe.png"
    run = fresh_python(DRAW.format(path=str(path)), env=PROBE_ENV)
    assert run.returncode == 0, run
    assert int(run.stdout.decode().strip()) == 0xFFFF0000  # the line starts at (0, 0)
    image = Image.open(path).convert("RGBA")
    assert image.size == (64, 32)
    assert image.getpixel((0, 0)) == (255, 0, 0, 255)
    assert image.getpixel((63, 31)) == (255, 0, 0, 255)
    assert image.getpixel((63, 0)) == (255, 255, 255, 255)
    assert image.getpixel((0, 31)) == (255, 255, 255, 255)
    # The text stands right of x=30 near the top: some dark, grey-ish pixels, none of them red.
    text_pixels = [image.getpixel((x, y)) for x in range(30, 64) for y in range(0, 16)]
    dark = [p for p in text_pixels if p[0] < 128 and p[1] < 128 and p[2] < 128]
    assert len(dark) >= 10


class TestThroughTheSharedHost:
    def script(self, body):
        return "import orvane.pyfigura, host_probe\n" + body

    def test_sister_module_joins_the_running_runtime(self, fresh_python):
        run = fresh_python(self.script(
            "state = host_probe.runtime_state()\n"
            "print(state['loaded_here'], state['domain_initialized'])\n"), env=PROBE_ENV)
        assert run.returncode == 0, run
        assert run.stdout.decode().split() == ["False", "True"]

    def test_only_the_first_module_stops_the_runtime(self, fresh_python):
        env = dict(PROBE_ENV, COREHOST_TRACE="1")
        run = fresh_python(self.script("host_probe.live_handles()\n"), env=env)
        assert run.returncode == 0, run
        lines = run.stdout.decode().split("\r\n")
        assert lines.count("Using existed module...") == 1
        assert lines.count("No existed module...") == 1
        assert lines.count("Shutdowning .NET Core host...") == 1

    def test_managed_exception_becomes_proxy_runtime_error(self, fresh_python):
        run = fresh_python(self.script(
            "try:\n"
            "    host_probe.fail('it broke: \\u00e9\\U0001F600')\n"
            "except RuntimeError as e:\n"
            "    print(ascii(str(e)))\n"), env=PROBE_ENV)
        assert run.returncode == 0, run
        assert run.stdout.decode().strip() == ascii(
            "Proxy error(System.InvalidOperationException): it broke: \u00e9\U0001F600")

    @pytest.mark.parametrize("text, units", [
        ("plain ascii", 11), ("Latin-1 \u00e9\u00ff", 10), ("BMP \u4e2d\u6587\u20ac", 7),
        ("astral \U0001F600\U00010348", 11), ("", 0)])
    def test_strings_of_every_width_cross_intact(self, fresh_python, text, units):
        run = fresh_python(self.script(
            f"back, n = host_probe.echo({text!r})\n"
            f"print(back == {text!r}, n)\n"), env=PROBE_ENV)
        assert run.returncode == 0, run
        assert run.stdout.decode().split() == ["True", str(units)]
