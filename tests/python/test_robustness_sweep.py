"""No Python call ends the process: every member of every class, fed None, hostile values and empty wrappers,
works or raises. One child per class (robustness_worker.py), so a crash names its call."""
import json
import os
import subprocess

import pytest

import surface_fixtures as sf
from conftest import PACKAGE_ROOT, PROBES, PYTHON

CLASSES = [cls for _, cls in sf.load_description()[0]]
WORKER = os.path.join(os.path.dirname(os.path.abspath(__file__)), "robustness_worker.py")


@pytest.mark.parametrize("cls", CLASSES, ids=[c["name"] for c in CLASSES])
def test_hostile_calls_never_end_the_process(cls, tmp_path):
    env = {k: v for k, v in os.environ.items() if not k.startswith("NETCORE_WRAPPER_")}
    env.update(PYTHONPATH=os.pathsep.join([PACKAGE_ROOT, PROBES, os.path.dirname(WORKER)]), DISPLAY="")
    run = subprocess.run([PYTHON, WORKER, json.dumps(cls)], capture_output=True, timeout=300, env=env,
                         cwd=tmp_path)
    lines = run.stdout.decode(errors="replace").splitlines()
    assert run.returncode == 0 and lines[-1:] == ["done"], (
        f"exit {run.returncode} after: {lines[-1] if lines else '(nothing)'}\n{run.stderr.decode()[-500:]}")
