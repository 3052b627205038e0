"""Batch optimization on threads against optimizing the same tasks one after the other.

Eight tasks hold the same generated LP (150 x 5000, 5 non-zeros per column,
about 0.2 s each with the default dual simplex). One round times:

- one by one: `optimizetrm__1` on each task in turn (the baseline);
- batch, 1 thread: `optimizebatch_idiOOO_5` with one worker (what the batch
  machinery costs);
- batch, N threads: the same with N workers (2 by default).

Rounds alternate, and the best time of each counts. The speed-up is one by
one / batch. Beside each batch time the script prints the process's CPU time
over wall time for that run (2.0 means two cores busy all along) and the
machine's load average before and after, since on a shared machine another
process's work takes cores away from the batch.

    .venv/bin/python bench/batch.py [--repeat N] [--threads N] [--tasks N] [--json FILE]
"""
import argparse
import json
import os
import sys
import time

import _qrn

sys.path.insert(0, os.path.dirname(os.path.abspath(__file__)))
from optimize import generate, make_task  # noqa: E402

BASIC_PRIMAL_OBJ = 82  # QRN_DINF_BASIC_PRIMAL_OBJ


def timed(fn):
    c0, t0 = time.process_time(), time.perf_counter()
    fn()
    wall = time.perf_counter() - t0
    return wall, (time.process_time() - c0) / wall


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--repeat", type=int, default=3, help="alternating rounds (default 3)")
    ap.add_argument("--threads", type=int, default=2, help="worker threads of the batch (default 2)")
    ap.add_argument("--tasks", type=int, default=8, help="number of equal tasks (default 8)")
    ap.add_argument("--json", help="also write the results to this file")
    a = ap.parse_args()

    lp = generate(150, 5000, 5, 7)
    env = _qrn.Env()
    tasks = [make_task(env, lp) for _ in range(a.tasks)]

    def one_by_one():
        for t in tasks:
            assert t.optimizetrm__1() == (0, 0)

    def batch(threads):
        def run():
            trm, rc = bytearray(), bytearray()
            assert env.optimizebatch_idiOOO_5(0, 0.0, threads, tasks, trm, rc) == (0, None)
            assert not any(trm) and not any(rc)
        return run

    cases = [("one by one", one_by_one), ("batch, 1 thread", batch(1)),
             (f"batch, {a.threads} threads", batch(a.threads))]
    best = {name: (float("inf"), 0.0) for name, _ in cases}
    load_before = os.getloadavg()
    for _ in range(a.repeat):
        for name, fn in cases:
            wall, cpu = timed(fn)
            if wall < best[name][0]:
                best[name] = (wall, cpu)
    load_after = os.getloadavg()
    objs = {t.getdouinf_i_2(BASIC_PRIMAL_OBJ)[1] for t in tasks}
    assert max(objs) - min(objs) <= 1e-9 * (1 + abs(min(objs))), objs
    for t in tasks:
        t.dispose()
    env.dispose()

    base = best["one by one"][0]
    print(f"{a.tasks} equal LPs ({lp['m']} x {lp['n']}, {len(lp['index'])} non-zeros), "
          f"{os.cpu_count()} cores, best of {a.repeat} rounds")
    print("%-20s %9s %9s %9s" % ("case", "wall (s)", "cpu/wall", "speed-up"))
    results = []
    for name, _ in cases:
        wall, cpu = best[name]
        print("%-20s %9.3f %9.2f %9.2f" % (name, wall, cpu, base / wall))
        results.append(dict(case=name, wall_s=wall, cpu_per_wall=cpu, speedup=base / wall))
    print("load average before: %.2f %.2f %.2f, after: %.2f %.2f %.2f" % (*load_before, *load_after))
    if a.json:
        with open(a.json, "w") as f:
            json.dump(dict(results=results, load_before=load_before, load_after=load_after,
                           per_task_s=base / a.tasks), f, indent=1)


if __name__ == "__main__":
    sys.exit(main())
