"""Surface walk: every described call with made arguments (a managed refusal is fine; a TypeError, another exception
or a result not of the described type is not), then with hostile ones (which may raise); a crash or hang fails the call
(one child per class, surface_fixtures.py)."""
import collections
import json
import os
import subprocess
from concurrent.futures import ThreadPoolExecutor

import pytest

import surface_fixtures as sf
from conftest import PACKAGE_ROOT, PROBES, PYTHON

CLASS_TIMEOUT = 300  # seconds the walk of one class may take before it counts as a hang
WORKERS = 4

PLAN = sf.plan()
CASES = [(owner, call) for owner, (_, calls) in PLAN.items() for call in calls]
INTERFACES = {c["name"] for _, c in sf.load_description()[0] if c["shape"] == "interface"}  # nothing makes one


def walk_class(owner, count, tmp):
    """{index: record} for the calls of one class; after a crash or a hang the walker restarts past that call."""
    env = {k: v for k, v in os.environ.items() if not k.startswith("NETCORE_WRAPPER_")}
    env.update(PYTHONPATH=os.pathsep.join([PACKAGE_ROOT, PROBES, os.path.dirname(sf.__file__)]), DISPLAY="")
    records, start = {}, 0
    while start < count:
        command = [PYTHON, sf.__file__, owner, str(start), tmp]
        try:
            run = subprocess.run(command, capture_output=True, cwd=tmp, env=env, timeout=CLASS_TIMEOUT)
            out, err, failure = run.stdout, run.stderr, None
        except subprocess.TimeoutExpired as e:
            out, err, failure = e.stdout or b"", e.stderr or b"", ("hang", f"no end within {CLASS_TIMEOUT} s")
        current, started = None, False
        for line in out.decode(errors="replace").splitlines():
            try:
                record = json.loads(line)
            except ValueError:
                continue  # a line cut short
            if "start" in record:
                current, started = record["start"], True
            else:
                records[record["index"]], current = record, None
        if failure is None and (current is not None or run.returncode != 0):
            failure = ("crash", f"walker exited with {run.returncode}")
        if failure is None:
            break
        # A walker that crashed before its first call fails every remaining call with that output.
        failed = [start if current is None else current] if started or failure[0] == "hang" else range(start, count)
        for index in failed:
            records[index] = {"outcome": failure[0], "message": failure[1], "index": index,
                              "stderr": err.decode(errors="replace")[-3000:]}
        start = failed[-1] + 1
    return records


@pytest.fixture(scope="module")
def walk(tmp_path_factory):
    """{call id: record} over the whole surface, WORKERS classes at a time."""
    tmp = {owner: str(tmp_path_factory.mktemp(owner)) for owner in PLAN}  # here: the factory is not thread-safe

    def run(owner):
        return walk_class(owner, len(PLAN[owner][1]), tmp[owner])
    with ThreadPoolExecutor(WORKERS) as pool:
        results = dict(zip(PLAN, pool.map(run, PLAN)))
    return {call["id"]: results[owner].get(index, {"outcome": "lost"})
            for owner, (_, calls) in PLAN.items() for index, call in enumerate(calls)}


def explain(call, record):
    details = [f"{key}: {record[key]}" for key in ("arguments", "problem", "trace", "stderr") if record.get(key)]
    return "\n".join([f"{call['id']} ({call['kind']}): {record['outcome']}: {record.get('message', '')}"] + details)


@pytest.mark.parametrize("owner,call", CASES, ids=[call["id"] for _, call in CASES])
def test_call(walk, owner, call):
    record = walk[call["id"]]
    outcome = record["outcome"]
    if outcome == "unavailable":
        assert owner in INTERFACES, explain(call, record)
        pytest.skip(record["message"])
    if call["unmatched"]:
        assert outcome == "typeerror" and record["message"] == sf.UNMATCHED_TEXT, explain(call, record)
        return
    assert outcome in ("ok", "refused") and "problem" not in record, explain(call, record)
    if call["shadowed_by"]:
        pytest.skip(f"its arguments are taken by the earlier trial {call['shadowed_by']}")


def test_most_calls_answer_and_each_is_followed_by_hostile_ones(walk):
    counts = collections.Counter(r["outcome"] for r in walk.values())
    assert counts["ok"] > 2 * counts["refused"]  # refusals are libgdiplus gaps and the missing printer
    assert sum(r.get("hostile", 0) for r in walk.values()) > 4 * len(walk)


def test_without_a_printer_printing_is_refused_with_the_managed_exception(walk):
    from orvane.pyfigura import printing
    if printing.PrinterSettings().printer_name != "":
        pytest.skip("this host has a default printer")
    calls = ["PrintDocument.print[call_000_Print]", "PrinterSettings.paper_sizes[get_PaperSizes]",
             "PrinterSettings.paper_sources[get_PaperSources]",
             "PrinterSettings.printer_resolutions[get_PrinterResolutions]"]
    assert {walk[call].get("message") for call in calls} == {
        "Proxy error(System.Drawing.Printing.InvalidPrinterException): No printers are installed."}
