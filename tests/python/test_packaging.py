"""The wheel: built once by pip from this tree, installed into a fresh venv, drawing from elsewhere."""
import os
import subprocess
import zipfile

import pytest

from conftest import PYTHON, REPO

EXT = ".cpython-311-x86_64-linux-gnu.so"
# The lookup module is replaced before the package imports it, as on a machine without the runtime or libgdiplus.
WITHOUT = """import importlib.util, os, sys
path = os.path.join(importlib.util.find_spec('orvane').submodule_search_locations[0], '_dotnet.py')
lookup = importlib.util.spec_from_file_location('orvane._dotnet', path)
module = sys.modules['orvane._dotnet'] = importlib.util.module_from_spec(lookup)
lookup.loader.exec_module(module)
module.{patch}
try:
    import orvane.pyfigura
except ImportError as e:
    print('ImportError', e)
"""


@pytest.fixture(scope="module")
def installed(tmp_path_factory):
    """(wheel path, run(code) in the venv that has it installed, with a private cache home)."""
    root = tmp_path_factory.mktemp("wheel")
    subprocess.run([PYTHON, "-m", "pip", "wheel", "-q", "--no-build-isolation", "--no-deps", "-w", str(root), REPO],
                   check=True, capture_output=True)
    wheel, python = next(root.glob("orvane_pyfigura-*.whl")), str(root / "venv" / "bin" / "python")
    subprocess.run([PYTHON, "-m", "venv", "--system-site-packages", str(root / "venv")], check=True)
    subprocess.run([python, "-m", "pip", "install", "-q", "--no-deps", str(wheel)], check=True, capture_output=True)
    env = {k: v for k, v in os.environ.items() if not k.startswith("NETCORE_WRAPPER_") and k != "PYTHONPATH"}
    env["XDG_CACHE_HOME"] = str(root / "cache")
    return wheel, lambda code: subprocess.run([python, "-c", code], capture_output=True, text=True, env=env, cwd="/",
                                              timeout=120)


def test_wheel_holds_the_whole_package_and_draws_installed_from_another_directory(installed, tmp_path):
    wheel, run_in_venv = installed
    names = zipfile.ZipFile(wheel).namelist()  # the whole package, and no links into a build tree
    assert {"orvane/__init__.py", "orvane/pyio.py", "orvane/py.typed", f"orvane/pyfigura{EXT}", f"orvane/pygc{EXT}",
            "orvane/pyfigura/__init__.pyi", "orvane/pyfigura/drawing2d.pyi",
            "orvane/assemblies/pyfigura/WrpInterop.Orvane.PyFigura.dll",
            "orvane/assemblies/pyfigura/System.Drawing.Common.dll"} <= set(names)
    assert any(n.startswith("orvane/runtime/netcore") and n.endswith("orvane.embed.coreclrwrap.so") for n in names)
    assert not any(n.endswith("libcoreclr.so") for n in names)
    assert wheel.name.endswith("-cp311-cp311-linux_x86_64.whl")
    out = tmp_path / "x.png"
    run = run_in_venv(f"import orvane.pyfigura as f, orvane.pygc, orvane.pyio\nf.Bitmap(8, 8).save({str(out)!r})\n"
                      "print(f.__file__, f.Point(x=1, y=2))")
    assert run.returncode == 0, run.stderr
    assert "site-packages/orvane/" in run.stdout and REPO not in run.stdout and "Point(1, 2)" in run.stdout
    assert out.read_bytes()[:4] == b"\x89PNG"


@pytest.mark.parametrize("patch, named", [("dotnet_roots = lambda: []", "dotnet-runtime-"),
                                          ("has_gdiplus = lambda: False", "install libgdiplus")])
def test_missing_runtime_or_libgdiplus_is_an_import_error_naming_the_package(installed, patch, named):
    run = installed[1](WITHOUT.format(patch=patch))
    assert run.returncode == 0 and run.stdout.startswith("ImportError cannot load orvane.pyfigura"), run
    assert named in run.stdout
