"""Gallery parity: every scene run as a script from Python and by its C# twin (examples/gallery/csharp) gives
the same pixels. Both load the same libgdiplus, cairo and fonts and the bridge only forwards the calls, so the
comparison is exact, for antialiased text and JPEG bytes too.
"""
import os
import subprocess

import numpy as np
import pytest
from PIL import Image

from conftest import BUILD, REPO, run_python

GALLERY = os.path.join(REPO, "examples", "gallery")
CSHARP_OUT = os.path.join(BUILD, "test-assets", "gallery")
CSHARP_DLL = os.path.join(CSHARP_OUT, "Gallery.dll")
SCENES = sorted(name[:-3] for name in os.listdir(GALLERY) if name.endswith(".py"))
EXTENSION = {"jpeg_quality": ".jpg"}   # every other scene writes a PNG


@pytest.fixture(scope="module")
def csharp_gallery():
    """Path of the C# gallery, built on first use when `make test-assets` has not built it."""
    sources = [os.path.join(GALLERY, "csharp", name) for name in os.listdir(os.path.join(GALLERY, "csharp"))
               if name.endswith((".cs", ".csproj"))]
    if not os.path.exists(CSHARP_DLL) or max(map(os.path.getmtime, sources)) > os.path.getmtime(CSHARP_DLL):
        build = subprocess.run(["dotnet", "build", os.path.join(GALLERY, "csharp", "Gallery.csproj"), "-c",
                                "Release", "-o", CSHARP_OUT, "--nologo", "-v", "quiet"],
                               capture_output=True, text=True, timeout=600)
        assert build.returncode == 0, build.stdout + build.stderr
    return CSHARP_DLL


def pixels(path):
    with Image.open(path) as image:
        return np.asarray(image.convert("RGBA"))


@pytest.mark.parametrize("scene", SCENES)
def test_python_and_csharp_draw_the_same_pixels(scene, csharp_gallery, tmp_path):
    name = scene + EXTENSION.get(scene, ".png")
    ours, theirs = tmp_path / "py" / name, tmp_path / "cs" / name  # the script makes its missing folder
    run = run_python(f"import runpy, sys; sys.argv = [{scene!r}, {str(ours)!r}]; "
                     f"runpy.run_path({os.path.join(GALLERY, scene + '.py')!r}, run_name='__main__')", timeout=300)
    assert run.returncode == 0 and run.stdout.decode().strip() == str(ours), run
    theirs.parent.mkdir()
    run = subprocess.run(["dotnet", csharp_gallery, scene, str(theirs)], capture_output=True, text=True, timeout=300)
    assert run.returncode == 0, run.stdout + run.stderr
    # a scene that writes a helper file beside its image (the JPEG scene's source PNG) is compared on all of them
    written = sorted(os.listdir(ours.parent))
    assert name in written and written == sorted(os.listdir(theirs.parent))
    for file in written:
        a, b = pixels(ours.parent / file), pixels(theirs.parent / file)
        assert a.shape == b.shape, file
        differing = int(np.count_nonzero(np.any(a != b, axis=2)))
        assert differing == 0, f"{file}: {differing} pixels differ"
    assert not name.endswith(".jpg") or ours.read_bytes() == theirs.read_bytes()
    # a real picture, not a blank or single-colour canvas
    colours, counts = np.unique(pixels(ours).reshape(-1, 4), axis=0, return_counts=True)
    assert len(colours) >= 8 and counts.max() / counts.sum() < 0.8, f"{len(colours)} colours, {counts.max()} of one"
