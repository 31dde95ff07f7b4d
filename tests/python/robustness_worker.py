"""Child process of the robustness sweep: calls every member of one class with hostile arguments.

Each call may raise any Python exception; the process must stay alive. It prints the call it is about to make,
so that a crash names its culprit, and "done" at the end.
"""
import json
import random
import sys
import tempfile

import surface_fixtures as sf


def attempt(label, call):
    print(label, flush=True)
    try:
        call()
    except Exception:
        pass


def main(description):
    cls = json.loads(description)
    walker = sf.Walker(tempfile.mkdtemp())
    f, owner, rng = walker.f, walker.python_class(cls["name"]), random.Random(cls["name"])
    weird = [None, 0, -1, 2**31 - 1, -2**31, 2**63, 1e30, float("nan"), "", "x" * 1000, b"", [], [None], (),
             f.Bitmap(1, 1), f.Color.red, f.Point(-5, -5), f.RectangleF(0, 0, -1, -1), f.Graphics.__new__(f.Graphics)]

    def fresh():
        try:
            return walker.instance(cls["name"])
        except Exception:
            return None

    trials = [(m["name"], t, t.get("form", m["form"]) == "instance")
              for m in cls["methods"] for t in m.get("trials", [])]
    for name, trial, instance in trials:
        target = fresh() if instance else owner
        if target is None:
            continue
        bound, params = getattr(target, name), trial["params"]
        for p in params:  # valid arguments with one of them None, then random hostile arguments
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
        target, name = fresh(), attribute["name"]
        if target is None:
            break
        attempt(f"get {name}", lambda: getattr(target, name))
        for value in weird if attribute.get("setter") else []:
            attempt(f"set {name} = {value!r:.60}", lambda: setattr(target, name, value))
    empty = owner.__new__(owner)  # an empty wrapper (handle 0) as self of every instance member
    for name, trial, instance in trials:
        if instance:
            attempt(f"empty.{name}", lambda: getattr(empty, name)(*[None] * len(trial["params"])))
    print("done", flush=True)


if __name__ == "__main__":
    main(sys.argv[1])
