"""The example scripts: each gallery scene draws its C# twin's pixels (examples/gallery/csharp), the demo its scene.
Both sides load the same libgdiplus, cairo and fonts and the bridge only forwards the calls: the comparison is exact."""
import os
import subprocess

import numpy as np
import pytest
from PIL import Image

from conftest import BUILD, REPO, run_python

GALLERY = os.path.join(REPO, "examples", "gallery")
CSHARP_DLL = os.path.join(BUILD, "test-assets", "gallery", "Gallery.dll")  # the C# twins, built by make test-assets
SCENES = sorted(name[:-3] for name in os.listdir(GALLERY) if name.endswith(".py"))


def run_script(path, out):
    """What the example script printed, run in a fresh interpreter as `script out`."""
    run = run_python(f"import runpy, sys; sys.argv = ['script', {str(out)!r}]; "
                     f"runpy.run_path({path!r}, run_name='__main__')", timeout=300)
    assert run.returncode == 0, run
    return run.stdout.decode()


def pixels(path):
    with Image.open(path) as image:
        return np.asarray(image.convert("RGBA"))


@pytest.mark.parametrize("scene", SCENES)
def test_python_and_csharp_draw_the_same_pixels(scene, tmp_path):
    name = scene + (".jpg" if scene == "jpeg_quality" else ".png")
    ours, theirs = tmp_path / "py" / name, tmp_path / "cs" / name  # the script makes its missing folder
    assert run_script(os.path.join(GALLERY, scene + ".py"), ours).strip() == str(ours)
    theirs.parent.mkdir()
    run = subprocess.run(["dotnet", CSHARP_DLL, scene, str(theirs)], capture_output=True, text=True, timeout=300)
    assert run.returncode == 0, run.stdout + run.stderr
    # a scene that writes a helper file beside its image (the JPEG scene's source PNG) is compared on all of them
    written = sorted(os.listdir(ours.parent))
    assert name in written and written == sorted(os.listdir(theirs.parent))
    for file in written:
        np.testing.assert_array_equal(pixels(ours.parent / file), pixels(theirs.parent / file), err_msg=file)
    assert not name.endswith(".jpg") or ours.read_bytes() == theirs.read_bytes()
    # a real picture, not a blank or single-colour canvas
    colours, counts = np.unique(pixels(ours).reshape(-1, 4), axis=0, return_counts=True)
    assert len(colours) >= 8 and counts.max() / counts.sum() < 0.8, f"{len(colours)} colours, {counts.max()} of one"


def test_demo_draws_its_scene(tmp_path):
    out = tmp_path / "demo.png"
    assert f"drew a 640x360 image: {out}" in run_script(os.path.join(REPO, "examples", "demo.py"), out)
    image = Image.open(out).convert("RGB")  # its calls draw as in the scenes above: a few pixels tell the scene
    # white margin, AliceBlue panel, orange disc, MediumSeaGreen pie
    assert image.size == (640, 360) and [image.getpixel(p) for p in ((5, 5), (600, 330), (490, 130), (470, 260))] == [
        (255, 255, 255), (240, 248, 255), (255, 165, 0), (60, 179, 113)]
