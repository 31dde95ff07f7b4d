"""The demo script draws its scene through the public API: checked pixel by pixel where it matters."""
import os

from PIL import Image

from conftest import REPO


def test_demo_draws_the_scene(fresh_python, tmp_path):
    out = tmp_path / "demo.png"
    run = fresh_python(f"import runpy, sys; sys.argv = ['demo', {str(out)!r}]; "
                       f"runpy.run_path({os.path.join(REPO, 'examples', 'demo.py')!r}, run_name='__main__')")
    assert run.returncode == 0 and f"drew a 640x360 image: {out}" in run.stdout.decode(), run
    image = Image.open(out).convert("RGB")
    # white margin, AliceBlue panel, orange disc, MediumSeaGreen pie
    assert image.size == (640, 360) and [image.getpixel(p) for p in ((5, 5), (600, 330), (490, 130), (470, 260))] == [
        (255, 255, 255), (240, 248, 255), (255, 165, 0), (60, 179, 113)]
    title = [image.getpixel((x, y)) for x in range(60, 360) for y in range(45, 80)]  # MidnightBlue text
    assert sum(1 for r, g, b in title if b > 80 and r < 60 and g < 60) > 200
