"""Problem files: our MPS reader and writer against CoinUtils' CoinMpsIO, and
the binary task file against a plain copy of the same bytes, in one run.

    python bench/formats.py                 # configure and build (Release) in a scratch dir, then run
    python bench/formats.py --build DIR     # use (and update) an existing build directory
    python bench/formats.py --repeat 5      # best of 5 runs of each case (default 3)

The work is done by qrn_formats_bench (bench/formats_bench.cpp, built with
-DQRN_BENCH=ON); its temporary files go to a scratch directory.
"""
import argparse
import os
import subprocess
import sys
import tempfile

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def build(build_dir):
    configure = ["cmake", "-S", ROOT, "-B", build_dir, "-DQRN_BENCH=ON", "-DPython_EXECUTABLE=" + sys.executable]
    if not os.path.exists(os.path.join(build_dir, "CMakeCache.txt")):
        configure.append("-DCMAKE_BUILD_TYPE=Release")
    for cmd in (configure, ["cmake", "--build", build_dir, "-j", "2", "--target", "qrn_formats_bench"]):
        done = subprocess.run(cmd, stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            sys.exit("command failed: %s\n%s" % (" ".join(cmd), done.stdout))
    return os.path.join(build_dir, "qrn_formats_bench")


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--build", default=os.environ.get("QRN_BUILD_DIR"))
    ap.add_argument("--repeat", type=int, default=3)
    args = ap.parse_args()
    build_dir = args.build or os.path.join(tempfile.gettempdir(), "qrn-bench-build")
    exe = build(build_dir)
    with tempfile.TemporaryDirectory() as work:
        sys.exit(subprocess.run([exe, work, str(args.repeat)]).returncode)


if __name__ == "__main__":
    main()
