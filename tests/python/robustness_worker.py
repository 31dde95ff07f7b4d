"""Child process of the robustness sweep: calls every member of one class with hostile arguments.

Each call may fail with any Python exception; the process must stay alive. Prints the call it is
about to make, so that a crash names its culprit, and "done" at the end.
"""
import json
import random
import sys
import tempfile

import surface_fixtures as sf


def hostile_values(f):
    return [None, 0, -1, 2**31 - 1, -2**31, 2**63, 1e30, float("nan"), "", "x" * 1000, b"", [], [None], (),
            f.Bitmap(1, 1), f.Color.red, f.Point(-5, -5), f.RectangleF(0, 0, -1, -1), f.Graphics.__new__(f.Graphics)]


def main(description):
    import orvane.pyfigura as f
    cls = json.loads(description)
    walker = sf.Walker(tempfile.mkdtemp())
    owner = walker.python_class(cls["name"])
    weird = hostile_values(f)
    rng = random.Random(cls["name"])

    def fresh():
        try:
            return walker.instance(cls["name"])
        except Exception:
            return None

    def attempt(label, call):
        print(label, flush=True)
        try:
            call()
        except Exception:
            pass

    for method in cls["methods"]:
        for trial in method.get("trials", []):
            instance = trial.get("form", method["form"]) == "instance"
            target = fresh() if instance else owner
            if target is None:
                continue
            bound = getattr(target, method["name"])
            params = trial["params"]
            # Valid arguments with one of them None, then random hostile arguments.
            for i, p in enumerate(params):
                try:
                    kwargs = {q["name"]: walker.argument(q, cls["name"]) for q in params}
                except Exception:
                    break
                kwargs[p["name"]] = None
                attempt(f"{trial['entry']} {p['name']}=None", lambda: bound(**kwargs))
            for _ in range(4):
                args = [rng.choice(weird) for _ in params]
                attempt(f"{trial['entry']} {args!r:.120}", lambda: bound(*args))
    for attribute in cls["attributes"]:
        target = fresh()
        if target is None:
            break
        attempt(f"get {attribute['name']}", lambda: getattr(target, attribute["name"]))
        if attribute.get("setter"):
            for value in weird:
                attempt(f"set {attribute['name']} = {value!r:.60}", lambda: setattr(target, attribute["name"], value))
    # An empty wrapper (handle 0) as self of every instance member.
    empty = owner.__new__(owner)
    for method in cls["methods"]:
        for trial in method.get("trials", []):
            if trial.get("form", method["form"]) == "instance":
                attempt(f"empty.{method['name']}", lambda: getattr(empty, method["name"])(*[None] * len(trial["params"])))
    print("done", flush=True)


if __name__ == "__main__":
    main(sys.argv[1])
