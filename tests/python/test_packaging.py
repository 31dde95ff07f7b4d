"""The wheel: built once by pip from this tree, installed into a fresh venv, drawing from elsewhere."""
import os
import subprocess
import zipfile

import pytest

from conftest import PYTHON, REPO


@pytest.fixture(scope="module")
def installed(tmp_path_factory):
    """(wheel path, venv python, environment) with the wheel installed and a private cache home."""
    root = tmp_path_factory.mktemp("wheel")
    subprocess.run([PYTHON, "-m", "pip", "wheel", "-q", "--no-build-isolation", "--no-deps", "-w", str(root), REPO],
                   check=True, capture_output=True)
    wheel = next(root.glob("orvane_pyfigura-*.whl"))
    venv = root / "venv"
    subprocess.run([PYTHON, "-m", "venv", "--system-site-packages", str(venv)], check=True)
    python = str(venv / "bin" / "python")
    subprocess.run([python, "-m", "pip", "install", "-q", "--no-deps", str(wheel)], check=True, capture_output=True)
    env = {k: v for k, v in os.environ.items() if not k.startswith("NETCORE_WRAPPER_") and k != "PYTHONPATH"}
    env["XDG_CACHE_HOME"] = str(root / "cache")
    return wheel, python, env


def run_in(python, env, code):
    return subprocess.run([python, "-c", code], capture_output=True, text=True, env=env, cwd="/", timeout=120)


def test_wheel_holds_the_whole_package_and_no_build_tree_links(installed):
    wheel, _, _ = installed
    names = zipfile.ZipFile(wheel).namelist()
    ext = ".cpython-311-x86_64-linux-gnu.so"
    for needed in ["orvane/__init__.py", "orvane/pyio.py", "orvane/py.typed", f"orvane/pyfigura{ext}",
                   f"orvane/pygc{ext}", "orvane/pyfigura/__init__.pyi", "orvane/pyfigura/drawing2d.pyi",
                   "orvane/assemblies/pyfigura/WrpInterop.Orvane.PyFigura.dll",
                   "orvane/assemblies/pyfigura/System.Drawing.Common.dll"]:
        assert needed in names
    assert any(n.startswith("orvane/runtime/netcore") and n.endswith("orvane.embed.coreclrwrap.so") for n in names)
    assert not any(n.endswith("libcoreclr.so") for n in names)
    assert wheel.name.endswith("-cp311-cp311-linux_x86_64.whl")


def test_installed_package_draws_from_another_directory(installed, tmp_path):
    _, python, env = installed
    out = tmp_path / "x.png"
    run = run_in(python, env, "import orvane.pyfigura as f, orvane.pygc, orvane.pyio\n"
                              f"f.Bitmap(8, 8).save({str(out)!r})\n"
                              "print(f.__file__, f.Point(x=1, y=2))")
    assert run.returncode == 0, run.stderr
    assert "site-packages/orvane/" in run.stdout and REPO not in run.stdout and "Point(1, 2)" in run.stdout
    assert out.read_bytes()[:4] == b"\x89PNG"


@pytest.mark.parametrize("missing, named", [("runtime", "dotnet-runtime-"), ("gdiplus", "install libgdiplus")])
def test_missing_runtime_or_libgdiplus_is_an_import_error_naming_the_package(installed, missing, named):
    _, python, env = installed
    # The lookup module is replaced before the package imports it, as on a machine without them.
    patch = ("dotnet_roots = lambda: []" if missing == "runtime" else "has_gdiplus = lambda: False")
    run = run_in(python, env, "import importlib.util, sys\n"
                              "spec = importlib.util.find_spec('orvane')\n"
                              "import os; path = os.path.join(spec.submodule_search_locations[0], '_dotnet.py')\n"
                              "lookup = importlib.util.spec_from_file_location('orvane._dotnet', path)\n"
                              "module = importlib.util.module_from_spec(lookup); lookup.loader.exec_module(module)\n"
                              f"module.{patch}\n"
                              "sys.modules['orvane._dotnet'] = module\n"
                              "try:\n    import orvane.pyfigura\nexcept ImportError as e:\n    print('ImportError', e)\n")
    assert run.returncode == 0 and run.stdout.startswith("ImportError cannot load orvane.pyfigura"), run
    assert named in run.stdout
