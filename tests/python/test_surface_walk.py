"""Surface walk: every described constructor, method trial, attribute and class attribute, called with made arguments.

Each class is walked in a child (surface_fixtures.py), so a crash or hang fails one call and the walk goes on.
A managed refusal is fine (libgdiplus gaps, no printer); a converter's TypeError, a crash, a hang, any other
exception or a result of another type than the described one is not.
"""
import collections
import json
import os
import queue
import subprocess
import threading
from concurrent.futures import ThreadPoolExecutor

import pytest

import surface_fixtures as sf
from conftest import PACKAGE_ROOT, PROBES, PYTHON

CALL_TIMEOUT = 15.0  # seconds one call may take before it counts as a hang
WORKERS = 4

PLAN = sf.plan()
CASES = [(owner, call) for owner, (_, calls) in PLAN.items() for call in calls]


def line_queue(stream):
    """A queue of the stream's lines, then None, filled by a daemon thread."""
    lines = queue.Queue()
    threading.Thread(target=lambda: [lines.put(line) for line in stream] + [lines.put(None)], daemon=True).start()
    return lines


def walk_class(owner, count, tmp):
    """{index: record} for the calls of one class; after a crash or a hang the walker restarts past that call."""
    env = {k: v for k, v in os.environ.items() if not k.startswith("NETCORE_WRAPPER_")}
    env["PYTHONPATH"] = os.pathsep.join([PACKAGE_ROOT, PROBES, os.path.dirname(sf.__file__)])
    records, start = {}, 0
    while start < count:
        err_path = os.path.join(tmp, f"stderr_{start}.txt")
        with open(err_path, "wb") as err:
            proc = subprocess.Popen([PYTHON, sf.__file__, owner, str(start), tmp], stdout=subprocess.PIPE,
                                    stderr=err, cwd=tmp, env=env)
        lines, current, started, failure = line_queue(proc.stdout), None, False, None
        while failure is None:
            try:
                line = lines.get(timeout=CALL_TIMEOUT)
            except queue.Empty:
                proc.kill()
                failure = ("hang", f"no answer within {CALL_TIMEOUT} s")
                continue
            if line is None:
                break
            try:
                record = json.loads(line)
            except ValueError:
                continue  # the walker keeps its own stdout for records; anything else is not one
            if "start" in record:
                current, started = record["start"], True
            else:
                records[record["index"]], current = record, None
        rc = proc.wait()
        if failure is None and (current is not None or rc != 0):
            failure = ("crash", f"walker exited with {rc}" if started else f"walker failed to start ({rc})")
        if failure is None:
            break
        with open(err_path, errors="replace") as err:
            output = err.read()[-3000:]
        # A walker that failed before its first call fails every remaining call with that output.
        failed = range(start, count) if not started and failure[0] == "crash" else [
            start if current is None else current]
        for index in failed:
            records[index] = {"outcome": failure[0], "message": failure[1], "stderr": output, "index": index}
        start = failed[-1] + 1
    return records


def walk_all(root):
    """{call id: record} over the whole surface, WORKERS classes at a time."""
    def run(owner):
        (root / owner).mkdir()
        return walk_class(owner, len(PLAN[owner][1]), str(root / owner))
    with ThreadPoolExecutor(WORKERS) as pool:
        results = dict(zip(PLAN, pool.map(run, PLAN)))
    return {call["id"]: results[owner].get(index, {"outcome": "lost"})
            for owner, (_, calls) in PLAN.items() for index, call in enumerate(calls)}


@pytest.fixture(scope="module")
def walk(tmp_path_factory):
    return walk_all(tmp_path_factory.mktemp("surface"))


def explain(call, record):
    lines = [f"{call['id']} ({call['kind']}): {record['outcome']}: {record.get('message', '')}"]
    for key in ("arguments", "problem", "trace", "stderr"):
        if record.get(key):
            lines.append(f"{key}: {record[key]}")
    return "\n".join(lines)


@pytest.mark.parametrize("owner,call", CASES, ids=[call["id"] for _, call in CASES])
def test_call(walk, owner, call):
    record = walk[call["id"]]
    outcome = record["outcome"]
    assert outcome not in ("crash", "hang", "lost", "error"), explain(call, record)
    if outcome == "unavailable":
        assert owner in sf.NO_INSTANCE, explain(call, record)
        pytest.skip(sf.NO_INSTANCE[owner])
    if call["unmatched"]:
        assert outcome == "typeerror" and record["message"] == sf.UNMATCHED_TEXT, explain(call, record)
        return
    assert outcome in ("ok", "refused") and "problem" not in record, explain(call, record)
    if call["shadowed_by"]:
        pytest.skip(f"its arguments are taken by the earlier trial {call['shadowed_by']}")


def test_every_described_call_has_an_outcome_and_most_answer(walk):
    counts = collections.Counter(r["outcome"] for r in walk.values())
    assert len(walk) == len(CASES) and counts["lost"] == 0
    assert counts["ok"] > 2 * counts["refused"]  # refusals are libgdiplus gaps and the missing printer


def test_without_a_printer_printing_refuses_with_the_managed_exception():
    from orvane.pyfigura import printing
    settings = printing.PrinterSettings()
    if settings.printer_name != "":
        pytest.skip("this host has a default printer")
    refused = r"^Proxy error\(System\.Drawing\.Printing\.InvalidPrinterException\)"
    with pytest.raises(RuntimeError, match=refused + r": No printers are installed\.$"):
        printing.PrintDocument().print()
    for name in ("paper_sizes", "paper_sources", "printer_resolutions"):
        with pytest.raises(RuntimeError, match=refused):
            getattr(settings, name)
    assert (settings.is_valid, settings.maximum_copies) == (False, 0)
    settings.printer_name = "nowhere"
    assert (settings.printer_name, settings.is_valid) == ("nowhere", False)
    document = printing.PrintDocument()
    document.printer_settings = settings
    with pytest.raises(RuntimeError, match=refused):
        document.print()
    assert "printer 'nowhere' are not valid" in repr(printing.InvalidPrinterException(settings))
