"""A short run of the hostile-image harness (the long one is `make fuzz`): no crash or hang of the module."""
import os
import re
import subprocess

from conftest import PYTHON, REPO, _clean_environment


def test_mutated_images_never_crash_or_hang_the_module():
    done = subprocess.run([PYTHON, os.path.join(REPO, "tools", "fuzz", "image_fuzz.py"), "--files", "400",
                           "--seed", "5"], capture_output=True, text=True, timeout=600, env=_clean_environment({}))
    assert done.returncode == 0, done.stdout + done.stderr
    counts = {name.strip(): int(n) for name, n in re.findall(r"([A-Za-z' ]+): (\d+)", done.stdout)}
    assert counts["loaded"] > 0 and counts["refused with a Python exception"] > 0
    assert counts["the module's"] == 0, done.stdout
