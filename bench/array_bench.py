"""Typed arrays per element: walking a 10,000-element managed PointF[] and building one from a Python list or
tuple, each beside the same loop over a plain Python list."""
import time

import orvane.pyfigura as f
from orvane.pyfigura import drawing2d

N = 10_000
ROUNDS = 20


def per_element_ns(fn):
    """Best of ROUNDS runs of fn, in nanoseconds per element."""
    best = float("inf")
    for _ in range(ROUNDS):
        start = time.perf_counter_ns()
        fn()
        best = min(best, time.perf_counter_ns() - start)
    return best / N


def walk(sequence):
    for _ in sequence:
        pass


def index_all(sequence):
    for i in range(N):
        sequence[i]


def main():
    points = [f.PointF(i, i * 0.5) for i in range(N)]
    tuple_points = tuple(points)
    data = drawing2d.PathData()
    data.points = points
    managed = data.points  # a new wrapper of the managed PointF[]
    assert len(managed) == N

    rows = [
        ("for over managed PointF[]", per_element_ns(lambda: walk(managed))),
        ("for over Python list", per_element_ns(lambda: walk(points))),
        ("a[i] over managed PointF[]", per_element_ns(lambda: index_all(managed))),
        ("a[i] over Python list", per_element_ns(lambda: index_all(points))),
        ("list(managed PointF[])", per_element_ns(lambda: managed.copy())),
        ("PointF[] from list (setter)", per_element_ns(lambda: setattr(data, "points", points))),
        ("PointF[] from tuple (setter)", per_element_ns(lambda: setattr(data, "points", tuple_points))),
        ("PointF[] from wrapper (setter)", per_element_ns(lambda: setattr(data, "points", managed))),
        ("list(points) copy in Python", per_element_ns(lambda: list(points))),
    ]
    print(f"{'operation':34} ns/element  ({N} elements, best of {ROUNDS})")
    for label, ns in rows:
        print(f"{label:34} {ns:9.1f}")


if __name__ == "__main__":
    main()
