"""Runs the test suite against small deliberate faults, one at a time, and prints what it catches.

    /usr/bin/python3 tools/faults/run.py [--rev HEAD] [--work build/faults] [--only id,id]

The commit is checked out once into a worktree under --work and built (ccache keeps rebuilds short).
Each fault of tools/faults/faults.json replaces one snippet there; the changed parts are rebuilt and
`ctest` and `pytest -x` run. A fault is caught when a test fails, the suite crashes or it times out; a
fault whose build fails is reported apart (the compiler caught it, not the tests). The file is then
restored and the next fault runs. The table goes to stdout and to <work>/faults-<rev>.txt.
"""
import argparse
import json
import os
import shutil
import subprocess
import sys
import time

HERE = os.path.dirname(os.path.abspath(__file__))
REPO = os.path.dirname(os.path.dirname(HERE))
PY = "/usr/bin/python3"


def run(cmd, cwd, timeout, env=None):
    try:
        done = subprocess.run(cmd, cwd=cwd, shell=True, capture_output=True, text=True, timeout=timeout, env=env)
        return done.returncode, done.stdout[-2000:] + done.stderr[-2000:]
    except subprocess.TimeoutExpired:
        return "timeout", ""


def first_failure(output):
    """The first failing test named in ctest's or pytest's output, for the table."""
    for line in output.splitlines():
        line = line.strip()
        if line.startswith(("FAILED ", "ERROR ")):
            return line.split(" ")[1].split("::")[0].replace("tests/python/", "")
        if "***Failed" in line or "(Failed)" in line:
            return "ctest " + line.split(" - ")[-1].split()[0] if " - " in line else "ctest"
    return "a crash"


def main():
    parser = argparse.ArgumentParser(description=__doc__)
    parser.add_argument("--rev", default="HEAD")
    parser.add_argument("--work", default=os.path.join(REPO, "build", "faults"))
    parser.add_argument("--only", default="")
    args = parser.parse_args()
    args.work = os.path.abspath(args.work)  # ccache wants an absolute base directory
    with open(os.path.join(HERE, "faults.json"), encoding="utf-8") as f:
        faults = json.load(f)["faults"]
    if args.only:
        faults = [x for x in faults if x["id"] in args.only.split(",")]
    rev = subprocess.check_output(["git", "rev-parse", "--short", args.rev], cwd=REPO, text=True).strip()
    tree = os.path.join(args.work, rev)
    if not os.path.isdir(tree):
        os.makedirs(args.work, exist_ok=True)
        subprocess.check_call(["git", "worktree", "add", "--detach", tree, rev], cwd=REPO)
    env = dict(os.environ)
    if shutil.which("ccache"):
        env.update(CMAKE_CXX_COMPILER_LAUNCHER="ccache", CCACHE_BASEDIR=os.path.dirname(tree))
    build = "make layout test-assets JOBS=2"
    tests = (f"(cd build/native && ctest -j2 --timeout 120) && PYTHONPATH=build/python:build/native/tests {PY} -m "
             "pytest -x -q -p no:cacheprovider tests/python")
    code, out = run(build, tree, 3600, env)
    if code != 0:
        sys.exit("the unchanged tree does not build:\n" + out)
    code, out = run(tests, tree, 1200, env)
    if code != 0:
        sys.exit("the unchanged tree fails its tests, so no fault could be told apart:\n" + out)
    rows = []
    for fault in faults:
        path = os.path.join(tree, fault["file"])
        with open(path, encoding="utf-8") as f:
            original = f.read()
        if original.count(fault["find"]) != 1:
            rows.append((fault["id"], "not applicable", 0))
            continue
        start = time.time()
        with open(path, "w", encoding="utf-8") as f:
            f.write(original.replace(fault["find"], fault["replace"]))
        try:
            code, _ = run(build, tree, 1800, env)
            if code != 0:
                verdict = "build failed"
            else:
                code, out = run(tests, tree, 1200, env)
                verdict = "caught" if code != 0 else "MISSED"
                if code == "timeout":
                    verdict = "caught (timeout)"
                elif code != 0:
                    verdict += " by " + first_failure(out)
        finally:
            with open(path, "w", encoding="utf-8") as f:
                f.write(original)
        rows.append((fault["id"], verdict, time.time() - start))
        print(f"{fault['id']:28} {verdict:50} {rows[-1][2]:6.0f} s", flush=True)
    run(build, tree, 3600, env)  # leave the tree built as it is
    caught = sum(1 for _, v, _ in rows if v.startswith("caught"))
    tested = sum(1 for _, v, _ in rows if v in ("MISSED",) or v.startswith("caught"))
    summary = f"{rev}: {caught} of {tested} faults caught ({len(rows) - tested} not counted: build failed or not applicable)"
    print(summary)
    with open(os.path.join(args.work, f"faults-{rev}.txt"), "w", encoding="utf-8") as f:
        f.write("\n".join(f"{i:28} {v}" for i, v, _ in rows) + "\n" + summary + "\n")


if __name__ == "__main__":
    main()
