"""Managed null references stay exceptions whatever faulthandler does; native crashes are still reported."""
import faulthandler
import signal
import subprocess

import pytest

import orvane.pyfigura as f
from orvane.pyfigura import drawing2d, imaging
from conftest import PYTHON, _clean_environment

NULL_REFERENCE = "Proxy error(System.NullReferenceException): Object reference not set to an instance of an object."


def null_dereferencing_calls():
    def clear_transform():
        f.Graphics.from_image(f.Bitmap(2, 2)).transform = None

    return [lambda: f.Pen(f.Color.red).multiply_transform(None), clear_transform,
            lambda: drawing2d.GraphicsPath().add_string(None, f.FontFamily.generic_monospace, 0, 10, f.Point(10, 10),
                                                        f.StringFormat.generic_default),
            lambda: f.Font(None, 9.0), lambda: imaging.ColorMatrix(None)]


def raised_texts():
    texts = []
    for call in null_dereferencing_calls():
        with pytest.raises(RuntimeError) as caught:
            call()
        texts.append(str(caught.value))
    return texts


def test_under_this_process_faulthandler_in_every_state():
    # pytest enabled faulthandler already; switch it around after the import, as scripts do.
    was_enabled = faulthandler.is_enabled()
    try:
        for switch in (faulthandler.enable, faulthandler.disable, faulthandler.enable, faulthandler.enable):
            switch()
            assert raised_texts() == [NULL_REFERENCE] * 5
    finally:
        (faulthandler.enable if was_enabled else faulthandler.disable)()


SCRIPT = """
import faulthandler, sys
order, crash = sys.argv[1], sys.argv[2] == "crash"
if order == "before":
    faulthandler.enable()
import orvane.pyfigura as f
if order == "after":
    faulthandler.enable()
try:
    f.Pen(f.Color.red).multiply_transform(None)
except RuntimeError as e:
    print(e, flush=True)
if crash:
    import ctypes
    ctypes.string_at(0)
"""


@pytest.mark.parametrize("order", ["never", "before", "after"])
@pytest.mark.parametrize("crash", ["crash", "calm"])
def test_in_a_fresh_process(order, crash):
    done = subprocess.run([PYTHON, "-c", SCRIPT, order, crash], capture_output=True, text=True, timeout=60,
                          env=_clean_environment({}))
    assert done.stdout == NULL_REFERENCE + "\n", done
    if crash == "calm":
        assert done.returncode == 0, done
        return
    # A genuine native crash dies by its signal, reported once by faulthandler when it is enabled.
    assert done.returncode == -signal.SIGSEGV, done
    reports = done.stderr.count("Fatal Python error: Segmentation fault")
    assert reports == (0 if order == "never" else 1), done.stderr
    assert order == "never" or "in string_at" in done.stderr
