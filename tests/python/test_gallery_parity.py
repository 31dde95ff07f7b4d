"""Gallery parity: every scene drawn from Python and by its C# twin gives the same pixels.

Each Python scene runs its draw(path) in a fresh interpreter, its twin runs in the C# gallery
console (examples/gallery/csharp). Both processes load the same libgdiplus, cairo, FreeType and
fontconfig, and the Python bridge only forwards the calls, so the comparison is exact: no
tolerance for shapes, gradients, antialiased text or images. JPEG output is compared exactly as
well: the same encoder at the same quality writes the same bytes.
"""
import os
import subprocess

import numpy as np
import pytest
from PIL import Image

from conftest import BUILD, REPO, run_python

GALLERY = os.path.join(REPO, "examples", "gallery")
CSHARP_PROJECT = os.path.join(GALLERY, "csharp", "Gallery.csproj")
CSHARP_OUT = os.path.join(BUILD, "test-assets", "gallery")
CSHARP_DLL = os.path.join(CSHARP_OUT, "Gallery.dll")

SCENES = sorted(name[:-3] for name in os.listdir(GALLERY) if name.endswith(".py"))
EXTENSION = {"jpeg_quality": ".jpg"}   # every other scene writes a PNG


@pytest.fixture(scope="module")
def csharp_gallery():
    """Path of the C# gallery, built on first use when `make test-assets` has not built it."""
    sources = [os.path.join(GALLERY, "csharp", name) for name in os.listdir(os.path.join(GALLERY, "csharp"))
               if name.endswith((".cs", ".csproj"))]
    stale = not os.path.exists(CSHARP_DLL) or max(map(os.path.getmtime, sources)) > os.path.getmtime(CSHARP_DLL)
    if stale:
        build = subprocess.run(["dotnet", "build", CSHARP_PROJECT, "-c", "Release", "-o", CSHARP_OUT,
                                "--nologo", "-v", "quiet"], capture_output=True, text=True, timeout=600)
        assert build.returncode == 0, build.stdout + build.stderr
    return CSHARP_DLL


def draw_python(scene, out):
    code = (f"import importlib.util\n"
            f"spec = importlib.util.spec_from_file_location({scene!r}, {os.path.join(GALLERY, scene + '.py')!r})\n"
            f"module = importlib.util.module_from_spec(spec)\n"
            f"spec.loader.exec_module(module)\n"
            f"module.draw({out!r})\n")
    run = run_python(code, timeout=300)
    assert run.returncode == 0, run


def draw_csharp(dll, scene, out):
    run = subprocess.run(["dotnet", dll, scene, out], capture_output=True, text=True, timeout=300)
    assert run.returncode == 0, run.stdout + run.stderr


def pixels(path):
    with Image.open(path) as image:
        return np.asarray(image.convert("RGBA"))


class TestSceneList:
    def test_every_python_scene_has_a_csharp_twin(self, csharp_gallery):
        listed = subprocess.run(["dotnet", csharp_gallery, "--list"], capture_output=True, text=True,
                                check=True).stdout.split()
        assert sorted(listed) == SCENES

    def test_a_scene_run_as_a_script_writes_to_its_argument(self, tmp_path):
        out = tmp_path / "nested" / "scene.png"
        run = run_python(f"import runpy, sys; sys.argv = ['shapes_and_text', {str(out)!r}]; "
                         f"runpy.run_path({os.path.join(GALLERY, 'shapes_and_text.py')!r}, run_name='__main__')")
        assert run.returncode == 0, run
        assert run.stdout.decode().strip() == str(out)
        assert pixels(out).shape == (420, 640, 4)


@pytest.mark.parametrize("scene", SCENES)
class TestParity:
    def test_python_and_csharp_draw_the_same_pixels(self, scene, csharp_gallery, tmp_path):
        name = scene + EXTENSION.get(scene, ".png")
        (tmp_path / "py").mkdir()
        (tmp_path / "cs").mkdir()
        draw_python(scene, str(tmp_path / "py" / name))
        draw_csharp(csharp_gallery, scene, str(tmp_path / "cs" / name))

        # Scenes that write a helper file beside their image (the JPEG scene's source PNG) are
        # compared on every file they write.
        written = sorted(os.listdir(tmp_path / "py"))
        assert written == sorted(os.listdir(tmp_path / "cs"))
        assert name in written
        for file in written:
            ours, theirs = pixels(tmp_path / "py" / file), pixels(tmp_path / "cs" / file)
            assert ours.shape == theirs.shape, file
            differing = int(np.count_nonzero(np.any(ours != theirs, axis=2)))
            assert differing == 0, f"{file}: {differing} pixels differ"

        if name.endswith(".jpg"):
            assert (tmp_path / "py" / name).read_bytes() == (tmp_path / "cs" / name).read_bytes()

        # A real picture, not a blank or single-colour canvas.
        image = pixels(tmp_path / "py" / name).reshape(-1, 4)
        colours, counts = np.unique(image, axis=0, return_counts=True)
        assert len(colours) >= 8, f"only {len(colours)} colours"
        assert counts.max() / len(image) < 0.8, "one colour covers most of the picture"
