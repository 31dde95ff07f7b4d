"""A short run of the hostile-image harness: mutated files of every format end in a Python exception or
load, never in a crash or hang of the module (the long run is `make fuzz`)."""
import os
import re
import subprocess

from conftest import PYTHON, REPO, _clean_environment


def test_mutated_images_never_crash_or_hang_the_module():
    done = subprocess.run([PYTHON, os.path.join(REPO, "tools", "fuzz", "image_fuzz.py"), "--files", "400",
                           "--seed", "5"], capture_output=True, text=True, timeout=600, env=_clean_environment({}))
    assert done.returncode == 0, done.stdout + done.stderr
    counts = {name.strip(): int(n) for name, n in re.findall(r"([A-Za-z' ]+): (\d+)", done.stdout)}
    assert done.stdout.startswith("files tried: 400 (bmp, emf, gif, ico, jpeg, png, tiff, wmf)")
    assert counts["loaded"] > 0 and counts["refused with a Python exception"] > 0
    assert counts["loaded"] + counts["refused with a Python exception"] + counts["crashes"] + counts["hangs"] == 400
    assert counts["the module's"] == 0, done.stdout
