"""Per-call cost of a few _qrn methods, each against a baseline timed in the same run.

Small calls (10 non-zeros) are compared with _qrn_baseline, a bare wrapper of
the same shape around the same library (bench/baseline.c); calls that move
10**6 non-zeros are compared with a plain memory copy of the same bytes, and
also with the bare wrapper.

    python bench/run.py                     # configure and build in a scratch dir, then run
    python bench/run.py --build DIR         # use (and update) an existing build directory
    python bench/run.py --build DIR --no-build --json results.json

The build directory may also be given in the environment variable QRN_BUILD_DIR.
"""
import argparse
import ctypes
import glob
import importlib
import importlib.machinery
import json
import os
import platform
import subprocess
import sys
import tempfile
import time
import timeit
from array import array

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SMALL = 10
LARGE = 10**6
# Seconds that one timed run of a case should last, at least.
RUN_TIME = 0.005


# ---------------------------------------------------------------- building

def build(build_dir):
    configure = ["cmake", "-S", ROOT, "-B", build_dir, "-DQRN_BENCH=ON",
                 "-DPython_EXECUTABLE=" + sys.executable]
    if not os.path.exists(os.path.join(build_dir, "CMakeCache.txt")):
        configure.append("-DCMAKE_BUILD_TYPE=Release")
    for cmd in (configure,
                ["cmake", "--build", build_dir, "--config", "Release",
                 "--target", "_qrn", "_qrn_baseline"]):
        done = subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            sys.exit("command failed: %s\n%s" % (" ".join(cmd), done.stdout))


def find_module(build_dir, name):
    """The directory holding extension module `name` under build_dir."""
    for suffix in importlib.machinery.EXTENSION_SUFFIXES:
        for pattern in (name + suffix, os.path.join("*", name + suffix)):
            hits = glob.glob(os.path.join(build_dir, pattern))
            if hits:
                return os.path.dirname(hits[0])
    sys.exit("%s is not built in %s (build with -DQRN_BENCH=ON, or drop --no-build)"
             % (name, build_dir))


def find_library(build_dir):
    for pattern in ("lib/libquarn64_10_2.*", "lib/*/quarn64_10_2.dll", "lib/quarn64_10_2.dll",
                    "*/quarn64_10_2.dll"):
        hits = sorted(glob.glob(os.path.join(build_dir, pattern)), key=len)
        if hits:
            return hits[0]
    sys.exit("the library is not built in " + build_dir)


def load(build_dir):
    """Imports _qrn and _qrn_baseline from build_dir; returns them and the
    library functions that are missing (their cases are skipped)."""
    libpath = find_library(build_dir)
    lib = ctypes.CDLL(libpath)
    wanted = ("QRN_getnumvar", "QRN_appendcons", "QRN_appendvars", "QRN_putacol",
              "QRN_getacol", "QRN_getacolnumnz")
    missing = {name for name in wanted if not hasattr(lib, name)}
    if hasattr(os, "add_dll_directory"):
        os.add_dll_directory(os.path.dirname(libpath))
    if missing and hasattr(os, "RTLD_LAZY"):
        # Lets the modules load while parts of the library are still missing.
        sys.setdlopenflags(os.RTLD_LAZY)
    for name in ("_qrn", "_qrn_baseline"):
        path = find_module(build_dir, name)
        if path not in sys.path:
            sys.path.insert(0, path)
    return importlib.import_module("_qrn"), importlib.import_module("_qrn_baseline"), missing


# ---------------------------------------------------------------- timing

def per_call(timers, repeat):
    """Best seconds per call of each timer. Many short runs, interleaved so that
    the machine's drift touches every timer alike; the best run is the one least
    disturbed by other work on the machine."""
    numbers = []
    for t in timers:
        n = 1
        while t.timeit(n) < RUN_TIME:
            n *= 2
        numbers.append(n)
    best = [float("inf")] * len(timers)
    for _ in range(repeat):
        for k, t in enumerate(timers):
            best[k] = min(best[k], t.timeit(numbers[k]) / numbers[k])
    return best


def ints(values):
    return array("i", values)


def reals(values):
    return array("d", values)


def expect(result, code_and_payload, what):
    if tuple(result) != code_and_payload:
        sys.exit("%s returned %r, expected %r" % (what, result, code_and_payload))


class Cases:
    """The tasks and buffers of every case, made once."""

    def __init__(self, qrn, base, can_put):
        self.env = qrn.Env()
        self.small = qrn.Task(self.env)
        self.large = qrn.Task(self.env)
        for t, numcon in ((self.small, SMALL), (self.large, LARGE)):
            expect(t.appendcons_i_2(numcon), (0, None), "appendcons_i_2")
            expect(t.appendvars_i_2(2), (0, None), "appendvars_i_2")
        self.base_small = base.Task(SMALL, 2)
        self.base_large = base.Task(LARGE, 2)

        self.sub = memoryview(ints(range(SMALL)))
        self.val = memoryview(reals(1.0 + k for k in range(SMALL)))
        self.sub_out = memoryview(ints([0] * SMALL))
        self.val_out = memoryview(reals([0.0] * SMALL))
        self.sub_bytes, self.val_bytes = bytearray(), bytearray()

        src_i, src_d = ints(range(LARGE)), reals(1.0 + k for k in range(LARGE))
        dst_i, dst_d = ints([0]) * LARGE, reals([0.0]) * LARGE
        self.big_sub, self.big_val = memoryview(src_i), memoryview(src_d)
        self.big_sub_out, self.big_val_out = memoryview(dst_i), memoryview(dst_d)
        # The memory copy moves the same bytes between the same kind of buffers.
        self.copy_args = [(dst.buffer_info()[0], src.buffer_info()[0], src.itemsize * len(src))
                          for dst, src in ((dst_i, src_i), (dst_d, src_d))]
        self.memmove = ctypes.memmove

        # Column 1 is what the readers read back.
        if can_put:
            for t, s, v in ((self.small, self.sub, self.val), (self.base_small, self.sub, self.val),
                            (self.large, self.big_sub, self.big_val),
                            (self.base_large, self.big_sub, self.big_val)):
                expect(t.putacol_iOO_4(1, s, v), (0, None), "putacol_iOO_4")

    def copy(self):
        for dst, src, n in self.copy_args:
            self.memmove(dst, src, n)


# (name, library functions, our statement, bare wrapper statement, payload,
#  compare with the memory copy too)
READ = {"QRN_getacol", "QRN_getacolnumnz", "QRN_putacol"}  # putacol fills the column read
CASES = [
    ("getnumvar__1", {"QRN_getnumvar"},
     "c.small.getnumvar__1()", "c.base_small.getnumvar__1()", 2, False),
    ("putacol_iOO_4  10 nz", {"QRN_putacol"},
     "c.small.putacol_iOO_4(0, c.sub, c.val)", "c.base_small.putacol_iOO_4(0, c.sub, c.val)",
     None, False),
    ("getacol_iOO_4  10 nz", READ,
     "c.small.getacol_iOO_4(1, c.sub_out, c.val_out)",
     "c.base_small.getacol_iOO_4(1, c.sub_out, c.val_out)", SMALL, False),
    ("getacol_iOO_2  10 nz", READ,
     "c.small.getacol_iOO_2(1, c.sub_bytes, c.val_bytes)",
     "c.base_small.getacol_iOO_2(1, c.sub_bytes, c.val_bytes)", SMALL, False),
    ("putacol_iOO_4 1e6 nz", {"QRN_putacol"},
     "c.large.putacol_iOO_4(0, c.big_sub, c.big_val)",
     "c.base_large.putacol_iOO_4(0, c.big_sub, c.big_val)", None, True),
    ("getacol_iOO_4 1e6 nz", READ,
     "c.large.getacol_iOO_4(1, c.big_sub_out, c.big_val_out)",
     "c.base_large.getacol_iOO_4(1, c.big_sub_out, c.big_val_out)", LARGE, True),
]


def run(qrn, base, missing, repeat):
    c = Cases(qrn, base, "QRN_putacol" not in missing)
    rows = []
    for name, needs, ours, bare, payload, large in CASES:
        if needs & missing:
            print("%-22s skipped: the library lacks %s"
                  % (name, ", ".join(sorted(needs & missing))))
            continue
        g = {"c": c}
        for stmt in (ours, bare):
            expect(eval(stmt, g), (0, payload), stmt)
        timers = [timeit.Timer(ours, globals=g), timeit.Timer(bare, globals=g)]
        if large:
            timers.append(timeit.Timer("c.copy()", globals=g))
        times = per_call(timers, repeat)
        rows.append({"case": name, "ours_s": times[0], "baseline": "bare wrapper",
                     "baseline_s": times[1], "ratio": times[0] / times[1]})
        if large:
            rows.append({"case": name, "ours_s": times[0], "baseline": "memory copy",
                         "baseline_s": times[2], "ratio": times[0] / times[2]})
    return rows


def show(seconds):
    if seconds < 1e-5:
        return "%8.0f ns" % (seconds * 1e9)
    if seconds < 1e-2:
        return "%8.1f us" % (seconds * 1e6)
    return "%8.2f ms" % (seconds * 1e3)


def main():
    p = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    p.add_argument("--build", default=os.environ.get("QRN_BUILD_DIR"),
                   help="build directory (default: a scratch directory)")
    p.add_argument("--no-build", action="store_true", help="use the build directory as it is")
    p.add_argument("--json", metavar="FILE", help="also write the results to FILE")
    p.add_argument("--repeat", type=int, default=30, help="timed runs per case (best is kept)")
    a = p.parse_args()
    build_dir = os.path.abspath(a.build or os.path.join(tempfile.gettempdir(), "qrn-bench-build"))
    if not a.no_build:
        build(build_dir)
    qrn, base, missing = load(build_dir)

    started = time.perf_counter()
    rows = run(qrn, base, missing, a.repeat)
    print("%-22s %11s %11s  %-13s %6s" % ("case", "ours", "baseline", "(baseline)", "ratio"))
    for r in rows:
        print("%-22s %s %s  %-13s %6.2f" % (r["case"], show(r["ours_s"]), show(r["baseline_s"]),
                                             r["baseline"], r["ratio"]))
    print("(%.1f s; best of %d runs per case)" % (time.perf_counter() - started, a.repeat))
    if a.json:
        with open(a.json, "w") as f:
            json.dump({"python": sys.version.split()[0], "machine": platform.platform(),
                       "repeat": a.repeat, "skipped_for_missing": sorted(missing),
                       "results": rows}, f, indent=2)


if __name__ == "__main__":
    main()
