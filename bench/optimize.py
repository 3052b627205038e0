"""Cost of optimizetrm__1 through _qrn against Clp called directly on the same LP.

Two generated LPs: a large one (about 10**5 matrix non-zeros), where the
solver's own work dominates and the ratio shows what the library and the
module add, and a small one (2 x 3), where the fixed cost of a call shows.
The baseline is bench/clp_direct.cpp, built here with the system's C++
compiler against Clp (pkg-config clp); it loads the same data and solves it
with the settings of the library's default optimizer (dual simplex, presolve
on, automatic scaling, tolerances 1e-8). Runs of the two alternate, and the
best time of each counts.

    .venv/bin/python bench/optimize.py [--repeat N] [--json FILE]

Run it with the _qrn of the virtual environment (scripts/setup.sh installs it).
"""
import argparse
import json
import os
import random
import shlex
import struct
import subprocess
import sys
import tempfile
import time
from array import array

import _qrn

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
INF = 1e30


def generate(m, n, per_col, seed):
    """A feasible, bounded LP: max c'x, A x <= A x0 + slack, 0 <= x <= 1 (stated as a minimization)."""
    rnd = random.Random(seed)
    start, index, value = [0], [], []
    x0 = [rnd.random() for _ in range(n)]
    act = [0.0] * m
    for j in range(n):
        rows = sorted(rnd.sample(range(m), per_col))
        for i in rows:
            v = rnd.uniform(0.1, 1.0)
            index.append(i)
            value.append(v)
            act[i] += v * x0[j]
        start.append(len(index))
    rowub = [a + rnd.uniform(0.0, 0.5) for a in act]
    obj = [-rnd.uniform(0.5, 1.5) for _ in range(n)]
    return dict(m=m, n=n, start=start, index=index, value=value, collb=[0.0] * n, colub=[1.0] * n,
                obj=obj, rowlb=[-INF] * m, rowub=rowub)


def small():
    return dict(m=2, n=3, start=[0, 2, 4, 5], index=[0, 1, 0, 1, 0], value=[1.0, 1.0, 1.0, 3.0, 1.0],
                collb=[0.0] * 3, colub=[3.0, INF, INF], obj=[-3.0, -2.0, 1.0], rowlb=[-INF, -INF], rowub=[4.0, 9.0])


def write(lp, path):
    with open(path, "wb") as f:
        f.write(struct.pack("<iiq", lp["m"], lp["n"], len(lp["index"])))
        f.write(array("i", lp["start"]).tobytes())
        f.write(array("i", lp["index"]).tobytes())
        for key in ("value", "collb", "colub", "obj", "rowlb", "rowub"):
            f.write(array("d", lp[key]).tobytes())


def build_harness(out):
    flags = subprocess.run(["pkg-config", "--cflags", "--libs", "clp"], capture_output=True, text=True, check=True)
    cmd = ["c++", "-O2", "-std=c++17", os.path.join(ROOT, "bench", "clp_direct.cpp"), "-o", out]
    cmd += shlex.split(flags.stdout)
    subprocess.run(cmd, check=True)


def make_task(env, lp):
    t = _qrn.Task(env)
    m, n = lp["m"], lp["n"]
    mv = lambda code, values: memoryview(array(code, values))
    bkx = [4 if lp["colub"][j] < INF else 1 for j in range(n)]  # RANGED or LOWER
    bkc = [2] * m  # UPPER
    code, _ = t.inputdata64_iiOdOOOOOOOOOO_15(
        m, n, mv("d", lp["obj"]), 0.0, mv("q", lp["start"][:-1]), mv("q", lp["start"][1:]),
        mv("i", lp["index"]), mv("d", lp["value"]), mv("i", bkc), mv("d", lp["rowlb"]), mv("d", lp["rowub"]),
        mv("i", bkx), mv("d", lp["collb"]), mv("d", lp["colub"]))
    assert code == 0
    t.putintparam_ii_3(0, 0)  # QRN_IPAR_LOG_LEVEL: silent
    return t


def measure(name, lp, harness, repeat, inner, workdir):
    path = os.path.join(workdir, name + ".bin")
    write(lp, path)
    env = _qrn.Env()
    task = make_task(env, lp)
    best_qrn = best_clp = float("inf")
    obj_qrn = obj_clp = None
    for _ in range(repeat):
        out = subprocess.run([harness, path, str(inner)], capture_output=True, text=True, check=True).stdout
        for line in out.split("\n"):
            if line:
                sec, obj = map(float, line.split())
                best_clp = min(best_clp, sec)
                obj_clp = obj
        for _ in range(inner):
            t0 = time.perf_counter()
            res = task.optimizetrm__1()
            best_qrn = min(best_qrn, time.perf_counter() - t0)
        assert res == (0, 0), res
        obj_qrn = task.getdouinf_i_2(82)[1]  # QRN_DINF_BASIC_PRIMAL_OBJ
    task.dispose()
    env.dispose()
    assert abs(obj_qrn - obj_clp) <= 1e-6 * (1 + abs(obj_clp)), (obj_qrn, obj_clp)
    return dict(case=name, nnz=len(lp["index"]), qrn_s=best_qrn, clp_s=best_clp, ratio=best_qrn / best_clp,
                objective=obj_qrn)


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--repeat", type=int, default=5, help="alternating rounds (default 5)")
    ap.add_argument("--json", help="also write the results to this file")
    a = ap.parse_args()
    with tempfile.TemporaryDirectory() as workdir:
        harness = os.path.join(workdir, "clp_direct")
        build_harness(harness)
        results = [measure("large", generate(200, 20000, 5, 7), harness, a.repeat, 1, workdir),
                   measure("small", small(), harness, a.repeat, 200, workdir)]
    print("%-6s %8s %12s %12s %7s" % ("case", "nnz", "_qrn (s)", "Clp (s)", "ratio"))
    for r in results:
        print("%-6s %8d %12.6f %12.6f %7.3f" % (r["case"], r["nnz"], r["qrn_s"], r["clp_s"], r["ratio"]))
    if a.json:
        with open(a.json, "w") as f:
            json.dump(results, f, indent=1)


if __name__ == "__main__":
    sys.exit(main())
