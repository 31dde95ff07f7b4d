"""Shared test set-up: paths of the build tree, and a runner for scripts that need a fresh interpreter."""
import os
import subprocess
import sys

import pytest

REPO = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
BUILD = os.environ.get("ORVANE_TEST_BUILD") or os.path.join(REPO, "build")  # another tree: make test-asan
PACKAGE_ROOT = os.path.join(BUILD, "python")
PROBES = os.path.join(BUILD, "native", "tests")
TEST_ASSETS = os.path.join(BUILD, "test-assets")
PYTHON = "/usr/bin/python3" if os.path.exists("/usr/bin/python3") else sys.executable

for path in (PACKAGE_ROOT, PROBES):
    if path not in sys.path:
        sys.path.insert(0, path)


class Run(subprocess.CompletedProcess):
    """Outcome of a script run in a fresh interpreter, shown in full when an assertion fails."""

    def __repr__(self):
        return f"<Run rc={self.returncode}\n--- stdout\n{self.stdout}\n--- stderr\n{self.stderr}>"


def _clean_environment(extra):
    env = {k: v for k, v in os.environ.items()
           if not k.startswith("NETCORE_WRAPPER_") and k != "COREHOST_TRACE"}
    env["PYTHONPATH"] = os.pathsep.join([PACKAGE_ROOT, PROBES])
    env.update({k: v for k, v in extra.items() if v is not None})
    return env


def run_python(code, env=None, timeout=120):
    done = subprocess.run([PYTHON, "-c", code], capture_output=True, timeout=timeout, env=_clean_environment(env or {}))
    return Run(done.args, done.returncode, done.stdout, done.stderr)


@pytest.fixture
def fresh_python():
    """run_python(code, env=None) -> Run, in a new interpreter with the build tree on its path."""
    return run_python
