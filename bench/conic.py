"""Cost of stating and reading back conic data through _qrn, as ratios to a
plain memory copy of the same bytes timed in the same run.

    python bench/conic.py [--afes 100000] [--nnz-per-row 10] [--repeat 5] [--json FILE]

Uses the _qrn importable from this interpreter (scripts/setup.sh installs it
into .venv). Cases:

- state: putafefrowlist_OOOOO_6 (all rows of F in one call), putafeglist_OO_3
  and appendaccs_OOO_4 (quadratic cones over all expressions) on a fresh task,
  against memmove of the bytes passed (afeidx, numnzrow, ptrrow, varidx, val,
  g, domidxs, afeidxlist).
- read: getafeftrip_OOO_4 and getaccs_OOO_4 into preallocated views, against
  memmove of the bytes read.
- row: getafefrow_LOO_4 of one row of nnz-per-row entries, per call, as F grows
  from 10^3 to --afes rows (the ratio to the smallest size should stay near 1).
"""
import argparse
import ctypes
import json
import time
from array import array

import _qrn


def best(fn, repeat, number=1):
    times = []
    for _ in range(repeat):
        t0 = time.perf_counter()
        for _ in range(number):
            fn()
        times.append((time.perf_counter() - t0) / number)
    return min(times)


def memcpy_time(nbytes, repeat):
    src, dst = ctypes.create_string_buffer(nbytes), ctypes.create_string_buffer(nbytes)
    return best(lambda: ctypes.memmove(dst, src, nbytes), repeat)


def problem(numafe, per_row, numvar):
    n = numafe * per_row
    afeidx = array("q", range(numafe))
    numnz = array("i", [per_row] * numafe)
    ptr = array("q", range(0, n, per_row))
    # distinct variables within a row: per_row consecutive strides of a prime
    varidx = array("i", [(r + k * (numvar // per_row)) % numvar for r in range(numafe) for k in range(per_row)])
    val = array("d", [1.0 + (i % 13) for i in range(n)])
    return afeidx, numnz, ptr, varidx, val


def state(env, numafe, per_row, numvar, arrays, cone):
    afeidx, numnz, ptr, varidx, val = arrays
    g = array("d", [0.5] * numafe)
    doms = array("q", [0] * (numafe // cone))
    t = _qrn.Task(env)
    t.appendvars_i_2(numvar)
    t.appendafes_L_2(numafe)
    t.appendquadraticconedomain_L_2(cone)
    views = [memoryview(a) for a in (afeidx, numnz, ptr, varidx, val, g, doms)]
    start = time.perf_counter()
    assert t.putafefrowlist_OOOOO_6(*views[:5]) == (0, None)
    assert t.putafeglist_OO_3(views[0], views[5]) == (0, None)
    assert t.appendaccs_OOO_4(views[6], views[0], None) == (0, None)
    elapsed = time.perf_counter() - start
    nbytes = sum(a.itemsize * len(a) for a in (afeidx, numnz, ptr, varidx, val, g, doms, afeidx))
    return t, elapsed, nbytes


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--afes", type=int, default=100_000)
    ap.add_argument("--nnz-per-row", type=int, default=10)
    ap.add_argument("--repeat", type=int, default=5)
    ap.add_argument("--json")
    a = ap.parse_args()
    env = _qrn.Env()
    numafe, per_row, cone = a.afes, a.nnz_per_row, 10
    numvar = max(per_row, numafe // 10)
    arrays = problem(numafe, per_row, numvar)
    results = {}

    times = []
    for _ in range(a.repeat):
        t, elapsed, nbytes = state(env, numafe, per_row, numvar, arrays, cone)
        times.append(elapsed)
        t.dispose()
    results["state"] = min(times) / memcpy_time(nbytes, a.repeat * 4)

    t, _, _ = state(env, numafe, per_row, numvar, arrays, cone)
    nnz = numafe * per_row
    r, j, v = array("q", [0] * nnz), array("i", [0] * nnz), array("d", [0] * nnz)
    d, al, b = array("q", [0] * (numafe // cone)), array("q", [0] * numafe), array("d", [0] * numafe)
    rv = [memoryview(x) for x in (r, j, v)]
    av = [memoryview(x) for x in (d, al, b)]

    def read():
        assert t.getafeftrip_OOO_4(*rv) == (0, None)
        assert t.getaccs_OOO_4(*av) == (0, None)

    read()
    assert list(j[:per_row]) == sorted(arrays[3][:per_row])
    nbytes = sum(x.itemsize * len(x) for x in (r, j, v, d, al, b))
    results["read"] = best(read, a.repeat) / memcpy_time(nbytes, a.repeat * 4)
    t.dispose()

    sub, val = array("i", [0] * per_row), array("d", [0] * per_row)
    sv, vv = memoryview(sub), memoryview(val)
    rows = {}
    size = 1000
    while size <= numafe:
        arr = problem(size, per_row, max(per_row, size // 10))
        t, _, _ = state(env, size, per_row, max(per_row, size // 10), arr, cone)
        mid = size // 2
        rows[size] = best(lambda: t.getafefrow_LOO_4(mid, sv, vv), a.repeat, number=2000)
        t.dispose()
        size *= 10
    smallest = min(rows)
    results["row_seconds"] = rows
    results["row_ratio"] = {n: rows[n] / rows[smallest] for n in rows}

    print(f"conic data: {numafe} affine expressions, {numafe * per_row} F non-zeros, "
          f"{numafe // cone} quadratic-cone ACCs")
    print(f"  state (putafefrowlist + putafeglist + appendaccs) / memcpy of the bytes: {results['state']:.1f}")
    print(f"  read (getafeftrip + getaccs) / memcpy of the bytes:                    {results['read']:.1f}")
    for n in rows:
        print(f"  getafefrow of one {per_row}-entry row with {n:>8} rows: {rows[n] * 1e9:7.0f} ns "
              f"(x{results['row_ratio'][n]:.2f} of the smallest)")
    if a.json:
        with open(a.json, "w") as f:
            json.dump(results, f, indent=1)


if __name__ == "__main__":
    main()
