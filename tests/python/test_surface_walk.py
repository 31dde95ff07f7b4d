"""Surface walk: every described constructor, method trial, attribute and class attribute, called with made arguments.

Each class is walked in a child interpreter (surface_fixtures.py), one JSON line per call, so that a crash
or a hang fails that one call with its output and the walk goes on after it. A managed refusal
("Proxy error(...)") is a fine outcome: libgdiplus leaves many paths unimplemented and a build host has
no printer. A TypeError from a converter that should have taken the argument is not, nor is a crash,
a hang, any other exception, or a result of another type than the described one.
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

# Classes of which no Python script can hold an instance; their instance members can't be walked.
NO_INSTANCE = {"IDeviceContext": "no call returns an IDeviceContext and it has no constructor"}


class ClassWalk:
    """Runs the walker over the calls of one class, restarting it after a crash or a hang."""

    def __init__(self, owner, count, tmp):
        self.owner, self.count, self.tmp = owner, count, tmp
        self.records = {}

    def run(self):
        start = 0
        while start < self.count:
            start = self.run_from(start)
        return self.records

    def run_from(self, start):
        env = {k: v for k, v in os.environ.items() if not k.startswith("NETCORE_WRAPPER_")}
        env["PYTHONPATH"] = os.pathsep.join([PACKAGE_ROOT, PROBES, os.path.dirname(sf.__file__)])
        err_path = os.path.join(self.tmp, f"stderr_{self.owner}_{start}.txt")
        with open(err_path, "wb") as err:
            proc = subprocess.Popen([PYTHON, sf.__file__, self.owner, str(start), self.tmp],
                                    stdout=subprocess.PIPE, stderr=err, cwd=self.tmp, env=env)
        lines = queue.Queue()
        reader = threading.Thread(target=lambda: [lines.put(line) for line in proc.stdout] + [lines.put(None)],
                                  daemon=True)
        reader.start()
        current, started = None, False
        while True:
            try:
                line = lines.get(timeout=CALL_TIMEOUT)
            except queue.Empty:
                proc.kill()
                proc.wait()
                return self.fail_current(current, start, "hang", f"no answer within {CALL_TIMEOUT} s", err_path)
            if line is None:
                break
            try:
                record = json.loads(line)
            except ValueError:
                continue  # the walker keeps its own stdout for records; anything else is not one
            if "start" in record:
                current, started = record["start"], True
            else:
                self.records[record["index"]] = record
                current = None
        rc = proc.wait()
        if not started and rc != 0:
            # The walker failed before its first call: every remaining call shares that output.
            for index in range(start, self.count):
                self.fail_current(index, start, "crash", f"walker failed to start ({rc})", err_path)
            return self.count
        if current is not None or rc != 0:
            return self.fail_current(current, start, "crash", f"walker exited with {rc}", err_path)
        return self.count

    def fail_current(self, current, start, outcome, message, err_path):
        with open(err_path, errors="replace") as err:
            output = err.read()[-3000:]
        index = start if current is None else current
        self.records[index] = {"outcome": outcome, "message": message, "stderr": output, "index": index}
        return index + 1


class Walk:
    def __init__(self, tmp_root):
        jobs = []
        for owner, (_, calls) in PLAN.items():
            tmp = tmp_root / owner
            tmp.mkdir()
            jobs.append(ClassWalk(owner, len(calls), str(tmp)))
        with ThreadPoolExecutor(WORKERS) as pool:
            results = list(pool.map(ClassWalk.run, jobs))
        self.records = {}
        for job, records in zip(jobs, results):
            for index, call in enumerate(PLAN[job.owner][1]):
                self.records[call["id"]] = records.get(index, {"outcome": "lost"})


@pytest.fixture(scope="module")
def walk(tmp_path_factory):
    return Walk(tmp_path_factory.mktemp("surface"))


def explain(call, record):
    lines = [f"{call['id']} ({call['kind']}): {record['outcome']}: {record.get('message', '')}"]
    for key in ("arguments", "problem", "trace", "stderr"):
        if record.get(key):
            lines.append(f"{key}: {record[key]}")
    return "\n".join(lines)


@pytest.mark.parametrize("owner,call", CASES, ids=[call["id"] for _, call in CASES])
def test_call(walk, owner, call):
    record = walk.records[call["id"]]
    outcome = record["outcome"]
    assert outcome not in ("crash", "hang", "lost", "error"), explain(call, record)
    if outcome == "unavailable":
        if owner in NO_INSTANCE:
            pytest.skip(NO_INSTANCE[owner])
        pytest.fail(explain(call, record))
    if call["unmatched"]:
        assert outcome == "typeerror" and record["message"] == sf.UNMATCHED_TEXT, explain(call, record)
        return
    assert outcome != "typeerror", explain(call, record)
    assert "problem" not in record, explain(call, record)
    assert outcome in ("ok", "refused")
    if call["shadowed_by"]:
        pytest.skip(f"its arguments are taken by the earlier trial {call['shadowed_by']}")


class TestTheWalk:
    def test_every_described_call_has_an_outcome(self, walk):
        counts = collections.Counter(r["outcome"] for r in walk.records.values())
        assert len(walk.records) == len(CASES)
        assert counts["lost"] == 0
        # Most of the surface answers; refusals are libgdiplus and the missing printer.
        assert counts["ok"] > 2 * counts["refused"]

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
