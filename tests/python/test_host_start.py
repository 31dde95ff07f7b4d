"""The process around the runtime: start-up tracing and failures, roots, memory, fork, and what would end it
(members that refuse instead, null references and native crashes under faulthandler)."""
import faulthandler
import os
import signal
import subprocess
import textwrap

import pytest

import orvane.pyfigura as f
from conftest import PYTHON, TEST_ASSETS, _clean_environment
from orvane.pyfigura import drawing2d, imaging

ASSEMBLIES = "NETCORE_WRAPPER_ASSEMBLY_DIR_orvane"
IMPORT_ERROR = "try:\n    import orvane.pyfigura\nexcept ImportError as e:\n    print(e)\n"
TRACE_ORDER = [
    "CLR host tracing enabled", "Initializing .NET Core host...", "NETCORE_DIR: '", "PRODUCT_ASSEMBLY_DIR: '",
    "Loading: '", "Try get module...", "No existed module...", "wrap dll loaded", "Loading2: '",
    ".NET Core host ready.", "Creating default AppDomain...", "APP_PATH: '", "APP_NI_PATHS: '",
    "NATIVE_DLL_SEARCH_DIRECTORIES: '", "Default AppDomain ready.", "after import",
    "Shutdowning .NET Core host...", ".NET Core host is down: 0"]


def output(run):
    assert run.returncode == 0, run
    return run.stdout.decode()


def test_trace_lines_in_order_with_crlf_and_sub_modules_only_through_the_package(fresh_python):
    text = output(fresh_python(
        "import sys, orvane.pyfigura\n"
        "assert 'orvane.pyfigura.drawing2d' not in sys.modules\n"
        "try:\n"
        "    import orvane.pyfigura.drawing2d\n"
        "except ModuleNotFoundError as e:\n"
        "    print('after import, refused', e.name, flush=True)\n", env={"COREHOST_TRACE": "1"}))
    lines = text.splitlines()
    found = [next(i for i, line in enumerate(lines) if line.startswith(prefix)) for prefix in TRACE_ORDER]
    assert found[0] == 0 and found == sorted(found)
    assert "after import, refused orvane.pyfigura.drawing2d" in lines
    assert all(lines[i] + "\r\n" in text for i in found if not lines[i].startswith("after import"))
    netcore = lines[found[2]][len("NETCORE_DIR: '"):-1]
    assert os.path.basename(netcore).startswith("netcore")
    app_path = lines[found[11]][len("APP_PATH: '"):-1].split(":")
    assert app_path[0].endswith("/assemblies/pyfigura") and app_path[-1] == netcore


def test_missing_dependency_fails_with_1008_before_the_host_starts(fresh_python):
    text = output(fresh_python("import sys\nsys.modules['orvane.pygc'] = None\n" + IMPORT_ERROR + "    print(e.__cause__)\n",
                               env={"COREHOST_TRACE": "1"}))
    assert "Initializing .NET Core host..." not in text
    assert text.endswith("One or more errors occurred while loading the module 'orvane.pyfigura' (-1008)\n"
                         "Unable to import module dependencies. Cannot import the orvane.pygc module. "
                         "The module not found or errors occurred while initializing it.\n")


# The starts below switch tracing off in other ways ("0", "-1", "abc", ""): their exact output shows nothing else.
def test_missing_exchange_entry_chains_the_binding_error_under_1007(fresh_python):
    text = output(fresh_python(
        IMPORT_ERROR + "    print(type(e.__cause__).__name__, e.__cause__)\n    print(e.__cause__ is e.__context__)\n",
        env={ASSEMBLIES: os.path.join(TEST_ASSETS, "no-boxstctarget"), "COREHOST_TRACE": "0"}))
    message, cause, same = text.splitlines()
    assert message == "One or more errors occurred while loading the module 'orvane.pyfigura' (-1007)"
    assert cause.startswith(
        "TypeError While initializing the host for the 'Orvane.WrpGen.Interop.ExchangeHost "
        "(Assembly=WrpInterop.Orvane.PyFigura)' type, an error occurred - Method 'BoxStcTarget' not found (error=")
    assert cause.endswith(")") and same == "True"


def test_incomplete_runtime_layout_and_missing_interop_assembly_are_import_errors(fresh_python, tmp_path):
    (tmp_path / "orvane.embed.coreclrwrap.so").write_bytes(b"")  # beside, not in a netcoreX.Y directory
    text = output(fresh_python(IMPORT_ERROR, env={"NETCORE_WRAPPER_NETCORE_DIR_orvane": str(tmp_path),
                                                  "COREHOST_TRACE": "-1"}))
    assert text.startswith("cannot load orvane.pyfigura") and str(tmp_path) in text and "netcoreX.Y" in text
    assert len(text.splitlines()) == 1
    (tmp_path / "empty").mkdir()
    text = output(fresh_python(IMPORT_ERROR, env={ASSEMBLIES: str(tmp_path), "COREHOST_TRACE": "abc"}))
    assert "WrpInterop.Orvane.PyFigura.dll" in text and len(text.splitlines()) == 1


def test_relative_roots_in_the_environment_are_made_absolute(fresh_python):
    # Relative roots would reach the runtime as relative assembly paths, which it refuses at start.
    root = os.path.relpath(os.path.join(os.path.dirname(__file__), "..", "..", "build", "python", "orvane", "assemblies"))
    text = output(fresh_python(f"import os, orvane.pyfigura as f\nprint(os.path.isabs(os.environ[{ASSEMBLIES!r}]), "
                               "f.Bitmap(2, 3).height)", env={ASSEMBLIES: root, "COREHOST_TRACE": ""}))
    assert text == "True 3\n"


@pytest.mark.skipif("libasan" in os.environ.get("LD_PRELOAD", ""),
                    reason="the sanitizer's allocator holds freed memory in quarantine")
def test_native_memory_of_dropped_bitmaps_comes_back(fresh_python):
    run = fresh_python(textwrap.dedent("""
        import gc, resource, orvane.pyfigura as f
        def rss():
            return int(open('/proc/self/statm').read().split()[1]) * 4096 // 2**20
        for _ in range(400):  # 400 x 4 MB of touched pixels: about 1.6 GB if the managed collector never ran
            f.Bitmap(1000, 1000).set_pixel(0, 0, f.Color.red)
        print(resource.getrusage(resource.RUSAGE_SELF).ru_maxrss // 1024)
        keep = [f.Bitmap(1000, 1000) for _ in range(60)]
        del keep
        before = rss()
        gc.collect()  # also collects the managed side
        print(before - rss())
    """))
    assert run.returncode == 0, run
    peak, returned = map(int, run.stdout.split())
    assert peak < 600 and returned > 150, run  # the 240 MB of pixels went back at once


FORKED = textwrap.dedent("""
    import os, sys, multiprocessing as mp
    import orvane.pyfigura as f

    def width(n):
        return f.Bitmap(n, 1).width

    def refused(call):
        try:
            call()
        except RuntimeError as e:
            return "spawn" in str(e) and "forked" in str(e)
        return False

    if __name__ == "__main__":
        bitmap = f.Bitmap(3, 3)
        pid = os.fork()
        if pid == 0:
            # Color.red was never used in the parent: its entries would be bound here, in the child.
            ok = all(refused(c) for c in (lambda: f.Bitmap(1, 1), lambda: bitmap.width,
                                          lambda: bitmap.get_pixel(0, 0), lambda: f.Color.red.name))
            del bitmap  # dropping a wrapper in the child must not enter the runtime
            sys.exit(0 if ok else 3)  # a normal exit: no shutdown of the parent's runtime
        _, status = os.waitpid(pid, 0)
        print("child", os.waitstatus_to_exitcode(status))
        for method in ("spawn", "forkserver"):
            with mp.get_context(method).Pool(2) as pool:
                print(method, pool.map(width, [5, 6, 7]))
        bitmap.set_pixel(1, 1, f.Color.blue)  # the parent is unharmed
        print("parent", bitmap.get_pixel(1, 1).to_argb() == f.Color.blue.to_argb(), f.Bitmap(8, 8).width)
""")


def test_forked_children_are_refused_and_spawned_workers_draw(tmp_path):
    script = tmp_path / "forked.py"
    script.write_text(FORKED)
    done = subprocess.run([PYTHON, str(script)], capture_output=True, text=True, timeout=120,
                          env=_clean_environment({}))
    assert done.returncode == 0, done.stderr
    assert done.stdout.split("\n")[:-1] == ["child 0", "spawn [5, 6, 7]",
                                            "forkserver [5, 6, 7]", "parent True 8"], done


NULL_REFERENCE = "Proxy error(System.NullReferenceException): Object reference not set to an instance of an object."


def raised_texts(calls):
    texts = []
    for call in calls:
        with pytest.raises(RuntimeError) as caught:
            call()
        texts.append(str(caught.value))
    return texts


def test_screen_copy_without_display_is_a_proxy_error_and_faulthandler_lets_the_process_end_normally(fresh_python):
    run = fresh_python(
        "import faulthandler, orvane.pyfigura as f\n"
        "faulthandler.enable()\n"
        "with f.Graphics.from_image(f.Bitmap(4, 4)) as g:\n"
        "    for args in [(f.Point(0, 0), f.Point(0, 0), f.Size(1, 1)), (0, 0, 0, 0, f.Size(1, 1))]:\n"
        "        try:\n"
        "            g.copy_from_screen(*args)\n"
        "        except RuntimeError as e:\n"
        "            print(e)\n", env={"DISPLAY": ""})
    assert run.returncode == 0 and run.stderr == b"", run
    assert run.stdout.decode().splitlines() == ["Proxy error(System.PlatformNotSupportedException): copying from the "
                                                "screen needs an X display, and DISPLAY is not set"] * 2


def test_states_and_containers_only_go_back_to_their_own_graphics():
    g1, g2 = f.Graphics.from_image(f.Bitmap(4, 4)), f.Graphics.from_image(f.Bitmap(4, 4))
    assert raised_texts([lambda: g1.restore(g2.save()), lambda: g1.end_container(g2.begin_container())]) == [
        f"Proxy error(System.ArgumentException): the {w} was saved by another Graphics" for w in ("state", "container")]
    g1.restore(g1.save())  # their own tokens still work, from every overload that makes one
    for args in ((), (f.RectangleF(0, 0, 2, 2), f.RectangleF(0, 0, 1, 1), 2),
                 (f.Rectangle(0, 0, 2, 2), f.Rectangle(0, 0, 1, 1), 2)):
        g1.end_container(g1.begin_container(*args))


def test_null_arguments_the_native_library_would_dereference_are_refused():
    path = drawing2d.GraphicsPath()
    path.add_rectangle(f.Rectangle(0, 0, 2, 2))
    iterator = drawing2d.GraphicsPathIterator(path)
    assert raised_texts([lambda: iterator.next_marker(None), lambda: iterator.next_subpath(None, []),
                         lambda: f.Bitmap(2, 2).save(stream=None, format=imaging.ImageFormat.png),
                         lambda: f.Image.from_stream(None)]) == [
        f"Proxy error(System.ArgumentNullException): Value cannot be null. (Parameter '{p}')"
        for p in ("path", "path", "stream", "stream")]
    # An empty iterator answers 0 before it would look at the path, as System.Drawing does.
    empty = drawing2d.GraphicsPathIterator(drawing2d.GraphicsPath())
    assert (empty.next_marker(None), empty.next_subpath(None, [])) == (0, 0)


def test_null_references_are_exceptions_in_this_process_in_every_faulthandler_state():
    calls = [lambda: f.Pen(f.Color.red).multiply_transform(None), lambda: f.Font(None, 9.0),
             lambda: setattr(f.Graphics.from_image(f.Bitmap(2, 2)), "transform", None),
             lambda: drawing2d.GraphicsPath().add_string(None, f.FontFamily.generic_monospace, 0, 10, f.Point(10, 10),
                                                         f.StringFormat.generic_default), lambda: imaging.ColorMatrix(None)]
    was_enabled = faulthandler.is_enabled()  # pytest enabled it already; switch it around as scripts do
    try:
        for switch in (faulthandler.enable, faulthandler.disable, faulthandler.enable, faulthandler.enable):
            switch()
            assert raised_texts(calls) == [NULL_REFERENCE] * 5
    finally:
        (faulthandler.enable if was_enabled else faulthandler.disable)()


CRASHING = """
import faulthandler, sys
if sys.argv[1] == "before":
    faulthandler.enable()
import orvane.pyfigura as f
if sys.argv[1] == "after":
    faulthandler.enable()
try:
    f.Pen(f.Color.red).multiply_transform(None)
except RuntimeError as e:
    print(e, flush=True)
import ctypes
ctypes.string_at(0)
"""


@pytest.mark.parametrize("order", ["never", "before", "after"])
def test_in_a_fresh_process_a_null_reference_is_raised_and_a_native_crash_still_reported(order):
    done = subprocess.run([PYTHON, "-c", CRASHING, order], capture_output=True, text=True, timeout=60,
                          env=_clean_environment({}))
    assert done.stdout == NULL_REFERENCE + "\n", done
    # A genuine native crash dies by its signal, reported once by faulthandler when it is enabled.
    assert done.returncode == -signal.SIGSEGV, done
    assert done.stderr.count("Fatal Python error: Segmentation fault") == (0 if order == "never" else 1), done.stderr
    assert order == "never" or "in string_at" in done.stderr
