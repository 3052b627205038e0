"""Building a model from arrays: _qrn against a peer binding and a memory copy, and reading one item.

Two benchmarks, each in its own child processes so that resident memory is
measured in a fresh interpreter:

  build   A random LP (m = n/2 constraints, 10 non-zeros per column, bounds and
          objective) at 10^4, 10^5 and 10^6 non-zeros, stated through
          - inputdata64 (one call),
          - appendcons/appendvars then putacolslice64, the bound slices and putcslice,
          - the same with putarowslice64 (rows in compressed form), alone and
            followed by the first column read (which brings the columns up to
            date from the rows: the deferred part of the row write),
          - the same with putaijlist64 (triplets),
          - highspy's passModel with arrays (HiGHS),
          - a memory copy of our input arrays (numpy.copyto into preallocated arrays).
          Per case: best build time (wall clock, and process CPU time, the steadier
          on a busy machine), each with its ratio to the memory copy, the CPU time
          of the first build (in fresh memory: the later ones reuse pages), the resident
          memory kept after the first build (RSS after minus RSS before, input
          arrays already made) and the time to delete the task.
  read    One row, one column, one name and one bound read at a time from
          models of growing size, and the first row read after a bulk column
          write (which rebuilds the row index once), and the first column read
          after a bulk row write (which rebuilds the columns once).

    .venv/bin/python bench/build.py                 # both, all sizes
    .venv/bin/python bench/build.py build --sizes 1e6 --json out.json
    .venv/bin/python bench/build.py read

Uses the _qrn installed in the interpreter running it (bash scripts/setup.sh
installs it in .venv). numpy and highspy are benchmark-only dependencies: the
script installs them with pip when they are missing.
"""
import argparse
import json
import os
import subprocess
import sys
import time

RUNS = 7  # timed builds per case and size; the best counts


def ensure(*modules):
    missing = []
    for m in modules:
        try:
            __import__(m)
        except ImportError:
            missing.append(m)
    if missing:
        subprocess.check_call([sys.executable, "-m", "pip", "install", "-q"] + missing)


def rss():
    """Resident bytes of this process (Linux /proc; 0 where unavailable)."""
    try:
        with open("/proc/self/statm") as f:
            return int(f.read().split()[1]) * os.sysconf("SC_PAGE_SIZE")
    except OSError:
        return 0


def trim():
    """Gives freed heap memory back to the system (glibc), so that memory the
    model's construction freed is not silently reused by the build measured."""
    try:
        import ctypes
        ctypes.CDLL(None).malloc_trim(0)
    except (OSError, AttributeError):
        pass


# ---------------------------------------------------------------- the model

def model(nnz, seed=1):
    import numpy as np
    rng = np.random.default_rng(seed)
    n = max(nnz // 10, 1)
    m = max(n // 2, 10)
    per = nnz // n
    # 10 distinct rows per column: one in each of 10 bands of m // 10 rows after a
    # random start (mod m), sorted.
    stride = m // per
    start = rng.integers(0, m, size=(n, 1))
    sub = (start + np.arange(per) * stride + rng.integers(0, stride, size=(n, per))) % m
    sub = np.sort(sub, axis=1)
    asub = np.ascontiguousarray(sub.reshape(-1), dtype=np.int32)
    aval = rng.uniform(-1, 1, size=asub.size) + np.sign(rng.uniform(-1, 1, size=asub.size)) * 0.5
    aptrb = np.arange(0, n * per, per, dtype=np.int64)
    aptre = aptrb + per
    c = rng.uniform(-1, 1, n)
    bkc = np.full(m, 4, dtype=np.int32)  # ranged
    blc = -rng.uniform(1, 2, m)
    buc = rng.uniform(1, 2, m)
    bkx = np.full(n, 4, dtype=np.int32)
    blx = np.zeros(n)
    bux = np.full(n, 10.0)
    return dict(m=m, n=n, c=c, aptrb=aptrb, aptre=aptre, asub=asub, aval=aval,
                bkc=bkc, blc=blc, buc=buc, bkx=bkx, blx=blx, bux=bux)


def input_bytes(d):
    return sum(d[k].nbytes for k in ("c", "aptrb", "aptre", "asub", "aval", "bkc", "blc", "buc",
                                      "bkx", "blx", "bux"))


# ---------------------------------------------------------------- builders

def qrn_builders(d):
    import numpy as np
    import _qrn
    env = _qrn.Env()
    mv = {k: memoryview(v) for k, v in d.items() if hasattr(v, "nbytes")}
    m, n = d["m"], d["n"]
    extra = {}

    def need(pair, what):
        if pair[0] != 0:
            raise SystemExit("%s returned %r" % (what, pair))

    def inputdata():
        t = _qrn.Task(env, 0, 0)
        need(t.inputdata64_iiOdOOOOOOOOOO_15(m, n, mv["c"], 0.0, mv["aptrb"], mv["aptre"], mv["asub"],
                                             mv["aval"], mv["bkc"], mv["blc"], mv["buc"], mv["bkx"],
                                             mv["blx"], mv["bux"]), "inputdata64")
        return t

    def sized():
        t = _qrn.Task(env, 0, 0)
        need(t.appendcons_i_2(m), "appendcons")
        need(t.appendvars_i_2(n), "appendvars")
        need(t.putconboundslice_iiOOO_6(0, m, mv["bkc"], mv["blc"], mv["buc"]), "putconboundslice")
        need(t.putvarboundslice_iiOOO_6(0, n, mv["bkx"], mv["blx"], mv["bux"]), "putvarboundslice")
        need(t.putcslice_iiO_4(0, n, mv["c"]), "putcslice")
        return t

    def colslice():
        t = sized()
        need(t.putacolslice64_iiOOOO_7(0, n, mv["aptrb"], mv["aptre"], mv["asub"], mv["aval"]),
             "putacolslice64")
        return t

    # Rows in compressed form and triplets, made once outside the timing.
    cols = np.repeat(np.arange(n, dtype=np.int32), np.diff(np.append(d["aptrb"], d["aptre"][-1])))
    order = np.lexsort((cols, d["asub"]))
    rsub = np.ascontiguousarray(cols[order])
    rval = np.ascontiguousarray(d["aval"][order])
    counts = np.bincount(d["asub"], minlength=m)
    rptre = np.cumsum(counts).astype(np.int64)
    rptrb = rptre - counts
    extra.update(rsub=memoryview(rsub), rval=memoryview(rval), rptrb=memoryview(rptrb),
                 rptre=memoryview(rptre), tsubj=memoryview(cols))

    def rowslice():
        t = sized()
        need(t.putarowslice64_iiOOOO_7(0, m, extra["rptrb"], extra["rptre"], extra["rsub"],
                                       extra["rval"]), "putarowslice64")
        return t

    col_out = (bytearray(4 * m), bytearray(8 * m))

    def rowslice_col():
        t = rowslice()
        need(t.getacol_iOO_2(0, col_out[0], col_out[1]), "getacol")
        return t

    def aijlist():
        t = sized()
        need(t.putaijlist64_OOO_4(mv["asub"], extra["tsubj"], mv["aval"]), "putaijlist64")
        return t

    def delete(t):
        t.dispose()

    return {"inputdata64": inputdata, "putacolslice64": colslice, "putarowslice64": rowslice,
            "putarowslice64+col": rowslice_col, "putaijlist64": aijlist}, delete, (env, cols, rsub, rval, rptrb, rptre)


def highs_builder(d):
    import numpy as np
    import highspy
    m, n = d["m"], d["n"]
    a_start = np.append(d["aptrb"], d["aptre"][-1]).astype(np.int32)
    integrality = np.zeros(n, dtype=np.int32)

    def build():
        h = highspy.Highs()
        h.setOptionValue("output_flag", False)
        st = h.passModel(n, m, int(d["asub"].size), 1, 1, 0.0, d["c"], d["blx"], d["bux"], d["blc"],
                         d["buc"], a_start, d["asub"], d["aval"], integrality)
        if st != highspy.HighsStatus.kOk:
            raise SystemExit("passModel: %r" % st)
        return h

    def delete(h):
        del h

    return build, delete, (a_start,)


def copy_builder(d):
    import numpy as np
    keys = ("c", "aptrb", "aptre", "asub", "aval", "bkc", "blc", "buc", "bkx", "blx", "bux")
    dst = {k: np.empty_like(d[k]) for k in keys}
    for k in keys:
        dst[k][:] = 1  # touch the pages before timing

    def build():
        for k in keys:
            np.copyto(dst[k], d[k])
        return dst

    return build, (lambda x: None), (dst,)


# ---------------------------------------------------------------- child: one case

def child_build(case, nnz):
    import gc
    d = model(nnz)
    if case == "highspy":
        build, delete, keep = highs_builder(d)
    elif case == "memcpy":
        build, delete, keep = copy_builder(d)
    else:
        builders, delete, keep = qrn_builders(d)
        build = builders[case]
    gc.collect()
    gc.disable()
    trim()
    before = rss()
    t0, c0 = time.perf_counter(), time.process_time()
    obj = build()
    first, first_cpu = time.perf_counter() - t0, time.process_time() - c0
    kept = rss() - before
    t0 = time.perf_counter()
    delete(obj)
    del obj
    deleted = time.perf_counter() - t0
    best, best_cpu, best_del = first, first_cpu, deleted
    for _ in range(RUNS - 1):
        t0, c0 = time.perf_counter(), time.process_time()
        obj = build()
        best = min(best, time.perf_counter() - t0)
        best_cpu = min(best_cpu, time.process_time() - c0)
        t0 = time.perf_counter()
        delete(obj)
        del obj
        best_del = min(best_del, time.perf_counter() - t0)
    return {"case": case, "nnz": nnz, "input_bytes": input_bytes(d), "build_s": best,
            "first_s": first, "cpu_s": best_cpu,
            "first_cpu_s": first_cpu, "kept_bytes": kept, "delete_s": best_del}


def child_read(nnz):
    import numpy as np
    import _qrn
    d = model(nnz)
    builders, delete, keep = qrn_builders(d)
    t = builders["inputdata64"]()
    m, n = d["m"], d["n"]
    for j in (0, n // 2, n - 1):
        t.putvarname_is_3(j, "x%d" % j)
    sub_out = bytearray(4 * m)
    val_out = bytearray(8 * m)
    i, j = m // 2, n // 2

    t0 = time.process_time()
    assert t.getarow_iOO_2(i, sub_out, val_out)[0] == 0
    first_row = time.process_time() - t0

    def per_call(fn, count=2000):
        best = float("inf")
        for _ in range(5):
            t0 = time.perf_counter()
            for _ in range(count):
                fn()
            best = min(best, (time.perf_counter() - t0) / count)
        return best

    res = {"nnz": nnz, "first_row_s": first_row}
    res["row_s"] = per_call(lambda: t.getarow_iOO_2(i, sub_out, val_out))
    res["col_s"] = per_call(lambda: t.getacol_iOO_2(j, sub_out, val_out))
    name = bytearray()
    res["name_s"] = per_call(lambda: t.getvarname_iO_2(j, name))
    res["bound_s"] = per_call(lambda: t.getconbound_i_2(i))
    res["putaij_s"] = per_call(lambda: t.putaij_iid_4(i, j, 0.5))
    res["putconbound_s"] = per_call(lambda: t.putconbound_iidd_5(i, 4, -1.0, 1.0))
    # one bulk column write, then the first row read pays the rebuild of the row index once
    t.putacolslice64_iiOOOO_7(0, n, memoryview(d["aptrb"]), memoryview(d["aptre"]),
                              memoryview(d["asub"]), memoryview(d["aval"]))
    t0 = time.process_time()
    t.getarow_iOO_2(i, sub_out, val_out)
    res["row_after_bulk_s"] = time.process_time() - t0
    # one bulk row write, then the first column read brings the columns up to date once
    _, _, rsub, rval, rptrb, rptre = keep
    t.putarowslice64_iiOOOO_7(0, m, memoryview(rptrb), memoryview(rptre), memoryview(rsub), memoryview(rval))
    t0 = time.process_time()
    t.getacol_iOO_2(j, sub_out, val_out)
    res["col_after_bulk_rows_s"] = time.process_time() - t0
    t.dispose()
    return res


def spawn(args):
    # numpy's BLAS threads would spin beside whatever is measured next
    env = dict(os.environ, OPENBLAS_NUM_THREADS="1")
    out = subprocess.run([sys.executable, os.path.abspath(__file__), "--child"] + args,
                         stdout=subprocess.PIPE, text=True, check=True, env=env)
    return json.loads(out.stdout.strip().splitlines()[-1])


def show_t(s):
    return "%8.2f ms" % (s * 1e3) if s >= 1e-3 else "%8.1f us" % (s * 1e6)


def run_build(sizes):
    cases = ["memcpy", "highspy", "inputdata64", "putacolslice64", "putarowslice64", "putarowslice64+col",
             "putaijlist64"]
    rows = []
    for nnz in sizes:
        res = {c: spawn(["build", c, str(nnz)]) for c in cases}
        copy = res["memcpy"]["build_s"]
        copy_cpu = res["memcpy"]["cpu_s"]
        print("\n%d non-zeros, input arrays %.1f MB" % (nnz, res["memcpy"]["input_bytes"] / 1e6))
        print("  %-16s %11s %8s %11s %8s %11s %9s %8s %11s" % ("case", "build", "x copy", "build cpu", "x copy",
                                                              "1st cpu", "kept MB", "x input", "delete"))
        for c in cases:
            r = res[c]
            print("  %-16s %s %8.1f %s %8.1f %s %9.1f %8.2f %s" % (
                c, show_t(r["build_s"]), r["build_s"] / copy, show_t(r["cpu_s"]),
                r["cpu_s"] / max(copy_cpu, 1e-9), show_t(r["first_cpu_s"]), r["kept_bytes"] / 1e6,
                r["kept_bytes"] / r["input_bytes"], show_t(r["delete_s"]) if c != "memcpy" else "         -"))
            rows.append(r)
    return rows


def run_read(sizes):
    rows = []
    print("\nreading one item (per call), against problem size")
    print("  %9s %11s %11s %11s %11s %11s %11s %13s %13s %13s" % (
        "nnz", "getarow", "getacol", "getvarname", "getconbound", "putaij", "putconbound",
        "1st row (cpu)", "row after", "col after"))
    print("  %9s %11s %11s %11s %11s %11s %11s %13s %13s %13s" % (
        "", "", "", "", "", "", "", "", "cols (cpu)", "rows (cpu)"))
    for nnz in sizes:
        r = spawn(["read", str(nnz)])
        print("  %9d %s %s %s %s %s %s   %s   %s   %s" % (
            nnz, show_t(r["row_s"]), show_t(r["col_s"]), show_t(r["name_s"]), show_t(r["bound_s"]),
            show_t(r["putaij_s"]), show_t(r["putconbound_s"]), show_t(r["first_row_s"]),
            show_t(r["row_after_bulk_s"]), show_t(r["col_after_bulk_rows_s"])))
        rows.append(r)
    return rows


def main():
    if len(sys.argv) > 1 and sys.argv[1] == "--child":
        kind = sys.argv[2]
        if kind == "build":
            print(json.dumps(child_build(sys.argv[3], int(sys.argv[4]))))
        else:
            print(json.dumps(child_read(int(sys.argv[3]))))
        return
    p = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    p.add_argument("what", nargs="?", choices=("build", "read", "all"), default="all")
    p.add_argument("--sizes", default="1e4,1e5,1e6", help="non-zeros, comma separated")
    p.add_argument("--json", metavar="FILE", help="also write the results to FILE")
    a = p.parse_args()
    ensure("numpy", "highspy")
    sizes = [int(float(s)) for s in a.sizes.split(",")]
    out = {}
    if a.what in ("build", "all"):
        out["build"] = run_build(sizes)
    if a.what in ("read", "all"):
        out["read"] = run_read(sizes)
    if a.json:
        with open(a.json, "w") as f:
            json.dump(out, f, indent=2)


if __name__ == "__main__":
    main()
