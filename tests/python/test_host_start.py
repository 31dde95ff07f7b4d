"""The process around the runtime: start-up tracing, failures and roots, memory, fork, null references, crashes."""
import fnmatch
import os
import signal
import subprocess
import textwrap

import pytest

import orvane.pyfigura as f
from conftest import PACKAGE_ROOT, PYTHON, TEST_ASSETS, _clean_environment
from orvane.pyfigura import drawing2d, imaging

ASSEMBLIES = "NETCORE_WRAPPER_ASSEMBLY_DIR_orvane"
IMPORT_ERROR = ("try:\n    import orvane.pyfigura\nexcept ImportError as e:\n    print(e)\n"
                "    print(type(e.__cause__).__name__, e.__cause__, e.__cause__ is e.__context__)\n")
TRACE_ORDER = [
    "CLR host tracing enabled", "Initializing .NET Core host...", "NETCORE_DIR: '", "PRODUCT_ASSEMBLY_DIR: '",
    "Loading: '", "Try get module...", "No existed module...", "wrap dll loaded", "Loading2: '",
    ".NET Core host ready.", "Creating default AppDomain...", "APP_PATH: '", "APP_NI_PATHS: '",
    "NATIVE_DLL_SEARCH_DIRECTORIES: '", "Default AppDomain ready.", "after import",
    "Shutdowning .NET Core host...", ".NET Core host is down: 0"]


def output(run):
    assert run.returncode == 0, run
    return run.stdout.decode()


def test_trace_lines_in_order_absolute_roots_and_sub_modules_only_through_the_package(fresh_python):
    # A relative root would reach the runtime as a relative assembly path, which it refuses at start.
    root = os.path.relpath(os.path.join(PACKAGE_ROOT, "orvane", "assemblies"))
    text = output(fresh_python(textwrap.dedent(f"""
        import os, sys, orvane.pyfigura as f
        assert 'orvane.pyfigura.drawing2d' not in sys.modules
        try:
            import orvane.pyfigura.drawing2d
        except ModuleNotFoundError as e:
            print('after import, refused', e.name, os.path.isabs(os.environ[{ASSEMBLIES!r}]), f.Bitmap(2, 3).height)
    """), env={"COREHOST_TRACE": "1", ASSEMBLIES: root}))
    lines = text.splitlines()
    found = [next(i for i, line in enumerate(lines) if line.startswith(prefix)) for prefix in TRACE_ORDER]
    assert found[0] == 0 and found == sorted(found)
    assert "after import, refused orvane.pyfigura.drawing2d True 3" in lines
    netcore = lines[found[2]][len("NETCORE_DIR: '"):-1]
    assert os.path.basename(netcore).startswith("netcore")
    app_path = lines[found[11]][len("APP_PATH: '"):-1].split(":")
    assert app_path[0].startswith("/") and app_path[0].endswith("/assemblies/pyfigura") and app_path[-1] == netcore


CANNOT_LOAD = "cannot load orvane.pyfigura: no {} (set by NETCORE_WRAPPER_{}_DIR_orvane){}\nNoneType None True\n"
FAILED_STARTS = {  # environment, with tracing off in every way but one -> the import error, its cause, chained or not
    "dependency": ({"COREHOST_TRACE": "1"}, "One or more errors occurred while loading the module 'orvane.pyfigura' "
                   "(-1008)\nImportError Unable to import module dependencies. Cannot import the orvane.pygc module. "
                   "The module not found or errors occurred while initializing it. True\n"),  # before the host starts
    "exchange entry": ({ASSEMBLIES: os.path.join(TEST_ASSETS, "no-boxstctarget"), "COREHOST_TRACE": "0"},
                       "One or more errors occurred while loading the module 'orvane.pyfigura' (-1007)\nTypeError "
                       "While initializing the host for the 'Orvane.WrpGen.Interop.ExchangeHost (Assembly=WrpInterop."
                       "Orvane.PyFigura)' type, an error occurred - Method 'BoxStcTarget' not found (error=*) True\n"),
    "runtime layout": ({"NETCORE_WRAPPER_NETCORE_DIR_orvane": "{tmp}", "COREHOST_TRACE": "-1"}, CANNOT_LOAD.format(
        "'netcoreX.Y' directory holding orvane.embed.coreclrwrap.so under '{tmp}'", "NETCORE", "")),
    "interop assembly": ({ASSEMBLIES: "{tmp}", "COREHOST_TRACE": "abc"}, CANNOT_LOAD.format(
        "sub-directory of '{tmp}'", "ASSEMBLY", " holds WrpInterop.Orvane.PyFigura.dll")),
}


@pytest.mark.parametrize("case", FAILED_STARTS)
def test_failed_starts_are_import_errors_with_their_cause(fresh_python, tmp_path, case):
    (tmp_path / "orvane.embed.coreclrwrap.so").write_bytes(b"")  # beside, not in a netcoreX.Y directory
    (tmp_path / "empty").mkdir()
    env, expected = FAILED_STARTS[case]
    script = ("import sys\nsys.modules['orvane.pygc'] = None\n" if case == "dependency" else "") + IMPORT_ERROR
    text = output(fresh_python(script, env={k: v.format(tmp=tmp_path) for k, v in env.items()}))
    assert fnmatch.fnmatchcase(text, expected.format(tmp=tmp_path)), text


@pytest.mark.skipif("libasan" in os.environ.get("LD_PRELOAD", ""),
                    reason="the sanitizer's allocator holds freed memory in quarantine")
def test_native_memory_of_dropped_bitmaps_comes_back(fresh_python):
    run = fresh_python(textwrap.dedent("""
        import gc, resource, orvane.pyfigura as f
        rss = lambda: int(open('/proc/self/statm').read().split()[1]) * 4096 // 2**20
        for _ in range(400):  # 400 x 4 MB of touched pixels: about 1.6 GB if the managed collector never ran
            f.Bitmap(1000, 1000).set_pixel(0, 0, f.Color.red)
        print(resource.getrusage(resource.RUSAGE_SELF).ru_maxrss // 1024)
        [f.Bitmap(1000, 1000) for _ in range(60)]  # made and dropped
        before = rss()
        gc.collect()  # also collects the managed side
        print(before - rss())
    """))
    assert run.returncode == 0, run
    peak, returned = map(int, run.stdout.split())
    assert peak < 600 and returned > 150, run  # the 240 MB of pixels went back at once


FORKED = textwrap.dedent("""
    import os, sys, multiprocessing as mp, orvane.pyfigura as f

    def width(n):
        return f.Bitmap(n, 1).width

    def refused(call):
        try:
            call()
        except RuntimeError as e:
            return "spawn" in str(e) and "forked" in str(e)

    if __name__ == "__main__":
        bitmap = f.Bitmap(3, 3)
        pid = os.fork()
        if pid == 0:
            # Color.red was never used in the parent: its entries would be bound here, in the child.
            ok = all(refused(c) for c in (lambda: f.Bitmap(1, 1), lambda: bitmap.width,
                                          lambda: bitmap.get_pixel(0, 0), lambda: f.Color.red.name))
            del bitmap  # dropping a wrapper in the child must not enter the runtime
            sys.exit(0 if ok else 3)  # a normal exit: no shutdown of the parent's runtime
        print("child", os.waitstatus_to_exitcode(os.waitpid(pid, 0)[1]))
        for method in ("spawn", "forkserver"):
            with mp.get_context(method).Pool(2) as pool:
                print(method, pool.map(width, [5, 6, 7]))
        bitmap.set_pixel(1, 1, f.Color.blue)  # the parent is unharmed
        print("parent", bitmap.get_pixel(1, 1).to_argb() == f.Color.blue.to_argb(), f.Bitmap(8, 8).width)
""")


def test_forked_children_are_refused_and_spawned_workers_draw(tmp_path):
    (script := tmp_path / "forked.py").write_text(FORKED)  # a file: spawned workers import their main module
    done = subprocess.run([PYTHON, str(script)], capture_output=True, text=True, timeout=120,
                          env=_clean_environment({}))
    assert (done.returncode, done.stdout.splitlines()) == (
        0, ["child 0", "spawn [5, 6, 7]", "forkserver [5, 6, 7]", "parent True 8"]), done


NULL_REFERENCE = "Proxy error(System.NullReferenceException): Object reference not set to an instance of an object."
NO_DISPLAY = ("Proxy error(System.PlatformNotSupportedException): copying from the screen needs an X display, and "
              "DISPLAY is not set")


def raised_text(call):
    with pytest.raises(RuntimeError) as caught:
        call()
    return str(caught.value)


def test_arguments_the_native_library_would_dereference_or_mix_up_are_refused():
    g1, g2 = f.Graphics.from_image(f.Bitmap(4, 4)), f.Graphics.from_image(f.Bitmap(4, 4))
    path = drawing2d.GraphicsPath()
    path.add_rectangle(f.Rectangle(0, 0, 2, 2))
    iterator = drawing2d.GraphicsPathIterator(path)
    assert [raised_text(call) for call in (
        lambda: g1.restore(g2.save()), lambda: g1.end_container(g2.begin_container()),
        lambda: iterator.next_marker(None), lambda: iterator.next_subpath(None, []), lambda: f.Image.from_stream(None),
        lambda: f.Bitmap(2, 2).save(stream=None, format=imaging.ImageFormat.png))] == [
        f"Proxy error(System.ArgumentException): the {w} was saved by another Graphics" for w in ("state", "container")
    ] + [f"Proxy error(System.ArgumentNullException): Value cannot be null. (Parameter '{p}')"
         for p in ("path", "path", "stream", "stream")]
    g1.restore(g1.save())  # their own tokens still work, from every overload that makes one
    for args in ((), (f.RectangleF(0, 0, 2, 2), f.RectangleF(0, 0, 1, 1), 2),
                 (f.Rectangle(0, 0, 2, 2), f.Rectangle(0, 0, 1, 1), 2)):
        g1.end_container(g1.begin_container(*args))
    # An empty iterator answers 0 before it would look at the path, as System.Drawing does.
    empty = drawing2d.GraphicsPathIterator(drawing2d.GraphicsPath())
    assert (empty.next_marker(None), empty.next_subpath(None, [])) == (0, 0)


SWITCHES = {"after": ["enable"], "toggled": ["enable", "disable", "enable", "enable"]}  # faulthandler, after the import
CRASHING = f"SWITCHES = {SWITCHES!r}\n" + """
import ctypes, faulthandler, sys
if sys.argv[1] == "before":
    faulthandler.enable()
import orvane.pyfigura as f
from orvane.pyfigura import drawing2d, imaging
g = f.Graphics.from_image(f.Bitmap(4, 4))
calls = [lambda: f.Pen(f.Color.red).multiply_transform(None), lambda: f.Font(None, 9.0),
         lambda: setattr(g, "transform", None), lambda: imaging.ColorMatrix(None),
         lambda: drawing2d.GraphicsPath().add_string(None, f.FontFamily.generic_monospace, 0, 10, f.Point(10, 10),
                                                     f.StringFormat.generic_default),
         lambda: g.copy_from_screen(f.Point(0, 0), f.Point(0, 0), f.Size(1, 1)),
         lambda: g.copy_from_screen(0, 0, 0, 0, f.Size(1, 1))]
for switch in SWITCHES.get(sys.argv[1], [None]):  # then every call, after each switch
    if switch:
        getattr(faulthandler, switch)()
    for call in calls:
        try:
            call()
        except RuntimeError as e:
            print(e, flush=True)
ctypes.string_at(0)
"""


@pytest.mark.parametrize("order", ["never", "before", "after", "toggled"])
def test_managed_exceptions_are_raised_in_every_faulthandler_state_and_a_native_crash_still_reported(order):
    done = subprocess.run([PYTHON, "-c", CRASHING, order], capture_output=True, text=True, timeout=60,
                          env=_clean_environment({"DISPLAY": ""}))
    rounds = len(SWITCHES.get(order, [None]))
    assert done.stdout.splitlines() == ([NULL_REFERENCE] * 5 + [NO_DISPLAY] * 2) * rounds, done
    # A genuine native crash dies by its signal, reported once by faulthandler when it is enabled.
    assert done.returncode == -signal.SIGSEGV, done
    reports = done.stderr.count("Fatal Python error: Segmentation fault")
    assert reports == (0 if order == "never" else 1) and (order == "never" or "in string_at" in done.stderr), done
