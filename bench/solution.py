"""Cost of reading a whole solution through _qrn against a plain memory copy of the same bytes,
timed in the same run.

    python bench/solution.py [--numvar 1000000] [--repeat 7] [--json FILE]

A task with numvar variables and numvar/2 constraints (no matrix) gets a basic solution written with
putsolution; then getsolution_iOOOOOOOOOOO_2 (allocating: fresh bytearrays each time, whose new
pages the system must provide, and the same bytearrays again, already of the right size),
getsolution_iOOOOOOOOOOO_13 (in place, into preallocated views) and getxx_iO_3 are timed against
ctypes.memmove of the bytes they deliver.
"""
import argparse
import ctypes
import json
import time
from array import array

import _qrn

SOL_BAS = 1


def best(fn, repeat):
    times = []
    for _ in range(repeat):
        t0 = time.perf_counter()
        fn()
        times.append(time.perf_counter() - t0)
    return min(times)


def memcpy_time(nbytes, repeat):
    src, dst = ctypes.create_string_buffer(nbytes), ctypes.create_string_buffer(nbytes)
    return best(lambda: ctypes.memmove(dst, src, nbytes), repeat)


def main():
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--numvar", type=int, default=1_000_000)
    ap.add_argument("--repeat", type=int, default=7)
    ap.add_argument("--json")
    a = ap.parse_args()
    n, m = a.numvar, a.numvar // 2
    env = _qrn.Env()
    task = _qrn.Task(env)
    task.appendcons_i_2(m)
    task.appendvars_i_2(n)
    keys_c, keys_x = array("i", [1]) * m, array("i", [1]) * n
    dc, dx = array("d", [0.5]) * m, array("d", [0.25]) * n
    assert task.putsolution_iOOOOOOOOOOO_13(SOL_BAS, memoryview(keys_c), memoryview(keys_x), None, memoryview(dc),
                                           memoryview(dx), memoryview(dc), memoryview(dc), memoryview(dc),
                                           memoryview(dx), memoryview(dx), memoryview(dx))[0] == 0
    nbytes = 4 * (m + n) + 8 * (4 * m + 4 * n)
    results = {}

    def alloc():
        arrays = [bytearray() for _ in range(11)]
        assert task.getsolution_iOOOOOOOOOOO_2(SOL_BAS, *arrays)[0] == 0

    kept = [bytearray() for _ in range(11)]

    def alloc_reused():  # the bytearrays already have their size: no fresh pages
        assert task.getsolution_iOOOOOOOOOOO_2(SOL_BAS, *kept)[0] == 0

    views = [memoryview(array("i", bytes(4 * m))), memoryview(array("i", bytes(4 * n))), memoryview(array("i"))]
    views += [memoryview(array("d", bytes(8 * k))) for k in (m, n, m, m, m, n, n, n)]

    def inplace():
        assert task.getsolution_iOOOOOOOOOOO_13(SOL_BAS, *views)[0] == 0

    xx = memoryview(array("d", bytes(8 * n)))
    for name, fn, size in [("getsolution (allocating)", alloc, nbytes),
                           ("getsolution (alloc., reused)", alloc_reused, nbytes), ("getsolution (in place)", inplace, nbytes),
                           ("getxx (in place)", lambda: task.getxx_iO_3(SOL_BAS, xx), 8 * n)]:
        ours, copy = best(fn, a.repeat), memcpy_time(size, a.repeat)
        results[name] = {"seconds": ours, "memcpy_seconds": copy, "ratio": ours / copy, "bytes": size}
        print(f"{name:28s} {ours * 1e3:8.2f} ms   memcpy {copy * 1e3:7.2f} ms   ratio {ours / copy:5.2f}"
              f"   ({size / 1e6:.1f} MB)")
    task.dispose()
    env.dispose()
    if a.json:
        with open(a.json, "w") as f:
            json.dump(results, f, indent=2)


if __name__ == "__main__":
    main()
