"""Remote against local optimization on loopback, and the throughput of small asynchronous jobs.

    .venv/bin/python bench/remote.py [--quick]

Starts its own qrn-optserver processes on 127.0.0.1 (port 0) and stops them. Measures:

1. A small LP (3 x 3) solved locally (optimizetrm__1) and remotely (optimizermt_ss_3), many times:
   mean and best time per solve and the remote overhead per solve.
2. An LP with about 10^5 non-zeros (a 224 x 224 transportation problem): local against remote, and, as
   the yardstick of what the transfer costs, writing and reading back the binary task file.
3. 1000 small asynchronous jobs (asyncoptimize, then asyncpoll/asyncgetresult of each) against a
   server with 1, 2 and 4 workers: jobs per second.

Figures are printed as a table; ratios are against the local run of the same problem in the same
run (the machine's load changes absolute times).
"""
import argparse
import random
import re
import shutil
import subprocess
import sys
import tempfile
import time
from array import array
from pathlib import Path

import _qrn

INF = 1e30
SERVER = shutil.which("qrn-optserver", path=str(Path(sys.executable).parent)) or shutil.which("qrn-optserver")
BK_UP, BK_RA, BK_LO = 2, 4, 1


def start(*args):
    proc = subprocess.Popen([SERVER, "--port", "0", *args], stdout=subprocess.PIPE, text=True)
    m = re.fullmatch(r"listening on (\S+)\n", proc.stdout.readline())
    assert m, "the server did not start"
    return proc, m[1]


def stop(proc):
    proc.terminate()
    proc.wait(timeout=30)


def lp(task, m, n, per_col, seed=1, frac=0.9):
    """min -c'x, A x <= b, 0 <= x <= 1, A >= 0 random sparse (per_col entries a column)."""
    rnd = random.Random(seed)
    ptrb, ptre, sub, val = [], [], [], []
    rows = [0.0] * m
    for j in range(n):
        ptrb.append(len(sub))
        for i in sorted(rnd.sample(range(m), per_col)):
            a = rnd.uniform(0.1, 1.0)
            sub.append(i)
            val.append(a)
            rows[i] += a
        ptre.append(len(sub))
    c = [-rnd.uniform(0.5, 1.5) for _ in range(n)]
    r = task.inputdata64_iiOdOOOOOOOOOO_15(
        m, n, memoryview(array("d", c)), 0.0, memoryview(array("q", ptrb)), memoryview(array("q", ptre)),
        memoryview(array("i", sub)), memoryview(array("d", val)),
        memoryview(array("i", [BK_UP] * m)), memoryview(array("d", [-INF] * m)),
        memoryview(array("d", [frac * s for s in rows])),
        memoryview(array("i", [BK_RA] * n)), memoryview(array("d", [0.0] * n)), memoryview(array("d", [1.0] * n)))
    assert r == (0, None), r
    return task


def transport(task, k, seed=1):
    """A k x k transportation LP (supplies <= 5..15, demands >= 5, random costs): 2k rows, k^2
    columns, 2 k^2 non-zeros; easy for the simplex method, so transfer costs stand out."""
    rnd = random.Random(seed)
    n, m = k * k, 2 * k
    ptrb, ptre, sub, val = [], [], [], []
    for j in range(n):
        ptrb.append(len(sub))
        sub += [j // k, k + j % k]
        val += [1.0, 1.0]
        ptre.append(len(sub))
    c = [rnd.uniform(1, 10) for _ in range(n)]
    sup = [float(rnd.randint(5, 15)) for _ in range(k)]
    r = task.inputdata64_iiOdOOOOOOOOOO_15(
        m, n, memoryview(array("d", c)), 0.0, memoryview(array("q", ptrb)), memoryview(array("q", ptre)),
        memoryview(array("i", sub)), memoryview(array("d", val)),
        memoryview(array("i", [BK_UP] * k + [BK_LO] * k)), memoryview(array("d", [-INF] * k + [5.0] * k)),
        memoryview(array("d", sup + [INF] * k)),
        memoryview(array("i", [BK_LO] * n)), memoryview(array("d", [0.0] * n)), memoryview(array("d", [INF] * n)))
    assert r == (0, None), r
    return task


def timed(fn, reps):
    best, total = float("inf"), 0.0
    for _ in range(reps):
        t0 = time.perf_counter()
        fn()
        dt = time.perf_counter() - t0
        best, total = min(best, dt), total + dt
    return total / reps, best


def solve_local(task):
    code, trm = task.optimizetrm__1()
    assert (code, trm) == (0, 0)


def solve_remote(task, addr):
    code, trm = task.optimizermt_ss_3(addr, "")
    assert (code, trm) == (0, 0), task.getlasterror()


def compare(env, addr, make, reps):
    t = make(_qrn.Task(env))
    nnz = t.getnumanz64__1()[1]
    local = timed(lambda: solve_local(t), reps)
    obj_local = t.getprimalobj_i_2(1)[1]
    remote = timed(lambda: solve_remote(t, addr), reps)
    assert abs(t.getprimalobj_i_2(1)[1] - obj_local) <= 1e-9 * (1 + abs(obj_local))
    sent = t.getlintinf_i_2(18)[1]  # QRN_LIINF_REMOTE_BYTES_SENT
    with tempfile.TemporaryDirectory(dir="/dev/shm" if Path("/dev/shm").is_dir() else None) as d:
        path = str(Path(d) / "p.task")
        u = _qrn.Task(env)

        def roundtrip():
            assert t.writetask_s_2(path) == (0, None)
            assert u.readtask_s_2(path) == (0, None)
        serial = timed(roundtrip, reps)
        u.dispose()
    t.dispose()
    return {"nnz": nnz, "bytes": sent, "local": local, "remote": remote, "serial": serial}


def throughput(env, workers, jobs):
    proc, addr = start("--workers", str(workers))
    try:
        tasks = [lp(_qrn.Task(env), 3, 4, 2, seed=k) for k in range(20)]
        t0 = time.perf_counter()
        tokens = []
        for k in range(jobs):
            tok = bytearray()
            assert tasks[k % 20].asyncoptimize_ssO_3(addr, "", tok) == (0, None)
            tokens.append(tok[:tok.index(0)].decode())
        done = 0
        pending = list(enumerate(tokens))
        while pending:
            rest = []
            for k, token in pending:
                code, (avail, resp, trm) = tasks[k % 20].asyncgetresult_sss_4(addr, "", token)
                assert code == 0 and resp == 0
                if avail:
                    done += 1
                else:
                    rest.append((k, token))
            pending = rest
        dt = time.perf_counter() - t0
        for t in tasks:
            t.dispose()
        return dt, jobs / dt
    finally:
        stop(proc)


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--quick", action="store_true", help="fewer repetitions and jobs")
    args = ap.parse_args()
    if SERVER is None:
        sys.exit("qrn-optserver is not installed (pip install .)")
    env = _qrn.Env()
    proc, addr = start("--workers", "1")
    try:
        small = compare(env, addr, lambda t: lp(t, 3, 3, 2), 20 if args.quick else 200)
        big = compare(env, addr, lambda t: transport(t, 224), 5 if args.quick else 20)
    finally:
        stop(proc)
    print("remote against local optimization on loopback (mean / best of the runs, ms)")
    print(f"{'problem':<28}{'bytes sent':>11}{'local':>16}{'remote':>16}{'overhead':>10}{'ratio':>7}"
          f"{'task file w+r':>15}")
    for name, r in (("small LP (3x3)", small), (f"transport LP {r_nnz(big)} nz", big)):
        lo, re_, se = r["local"], r["remote"], r["serial"]
        print(f"{name:<28}{r['bytes']:>11}{lo[0]*1e3:>9.2f} /{lo[1]*1e3:>5.1f}{re_[0]*1e3:>9.2f} /{re_[1]*1e3:>5.1f}"
              f"{(re_[0]-lo[0])*1e3:>10.2f}{re_[0]/lo[0]:>7.2f}{se[0]*1e3:>15.2f}")
    jobs = 200 if args.quick else 1000
    print(f"\nthroughput of {jobs} small asynchronous jobs (one client thread; submit all, then collect)")
    print(f"{'workers':>8}{'seconds':>10}{'jobs/s':>10}")
    for w in (1, 2, 4):
        dt, rate = throughput(env, w, jobs)
        print(f"{w:>8}{dt:>10.2f}{rate:>10.0f}")
    env.dispose()


def r_nnz(r):
    return f"{r['nnz']:.0f}"


if __name__ == "__main__":
    main()
