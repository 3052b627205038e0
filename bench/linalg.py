"""Env linear algebra through _qrn against the same operations called from Python, in the same run.

Each dense routine is timed through _qrn and through two baselines on the same
arrays: SciPy's direct wrapper of the same BLAS/LAPACK routine (in place where
the routine updates an operand; NumPy's own function where it has one, e.g.
np.dot), and the routine of the very OpenBLAS/LAPACKE that _qrn's library runs
on, called through ctypes. NumPy and SciPy bring their own OpenBLAS builds, so
the first ratio also holds the difference between two OpenBLAS builds; the
ctypes ratio holds only what _qrn adds (plus ctypes' own call cost, a few
microseconds, which dominates for small operands). Every OpenBLAS in the
process runs on one thread.

The sparse Cholesky factorization of a 2-D Laplacian is timed through _qrn
(building the matrix, factorizing, copying the factor into bytearrays) against
scikit-sparse on the same CHOLMOD (simplicial, AMD), with and without taking
the factor out as a SciPy matrix.

    python bench/linalg.py                    # installs the benchmark packages, builds, runs
    python bench/linalg.py --build DIR --no-build --json out.json

Benchmark-only packages (scipy, threadpoolctl, scikit-sparse pinned to the
release that builds against Debian 12's SuiteSparse) are installed into the
running interpreter unless --no-install is given; the Cholesky comparison is
skipped when scikit-sparse cannot be had.
"""
import argparse
import ctypes
import ctypes.util
import importlib
import json
import os
import platform
import subprocess
import sys
import tempfile
import time
import timeit

os.environ.setdefault("OPENBLAS_NUM_THREADS", "1")  # before any OpenBLAS is loaded

HERE = os.path.dirname(os.path.abspath(__file__))
sys.path.insert(0, HERE)
import run  # noqa: E402  (build helpers and the timing loop)

BENCH_PACKAGES = {"scipy": "scipy", "threadpoolctl": "threadpoolctl", "sksparse": "scikit-sparse==0.4.16"}
NO, YES, LO = 0, 1, 0


def ensure_packages(install):
    missing = []
    for module, requirement in BENCH_PACKAGES.items():
        try:
            importlib.import_module(module)
        except ImportError:
            missing.append((module, requirement))
    for module, requirement in missing:
        if not install:
            continue
        print("installing %s (benchmark only) ..." % requirement, flush=True)
        done = subprocess.run([sys.executable, "-m", "pip", "install", "-q", requirement],
                              stdout=subprocess.PIPE, stderr=subprocess.STDOUT, text=True)
        if done.returncode != 0:
            print("  could not install %s; its comparisons are skipped" % requirement)
    importlib.invalidate_caches()


def load_qrn(build_dir):
    path = run.find_module(build_dir, "_qrn")
    sys.path.insert(0, path)
    return importlib.import_module("_qrn")


def system_blas():
    """The OpenBLAS and LAPACKE that _qrn's library is linked with (already
    loaded by the process: the same sonames give the same libraries)."""
    blas = ctypes.CDLL("libopenblas.so.0")
    lapacke = ctypes.CDLL("liblapacke.so.3")
    blas.cblas_ddot.restype = ctypes.c_double
    return blas, lapacke


def fortran(a):
    import numpy as np
    return np.asfortranarray(a)


def flat(a):
    """Memoryview over a Fortran-ordered matrix's memory: the library's storage."""
    return memoryview(a.ravel(order="K"))


def ptr(a):
    return ctypes.c_void_p(a.ctypes.data)


class Dense:
    """Operands of one size n, made once."""

    def __init__(self, np, qrn, env, n):
        rng = np.random.default_rng(1)
        self.np, self.env, self.n = np, env, n
        self.x, self.y = rng.standard_normal(n), rng.standard_normal(n)
        self.xv, self.yv = memoryview(self.x), memoryview(self.y)
        self.a = fortran(rng.standard_normal((n, n)))
        self.b = fortran(rng.standard_normal((n, n)))
        self.c = fortran(np.zeros((n, n)))
        s = self.a @ self.a.T + n * np.eye(n)
        self.spd = fortran(s)
        self.work = fortran(s.copy())
        self.av, self.bv, self.cv = flat(self.a), flat(self.b), flat(self.c)
        self.spdv, self.workv = flat(self.spd), flat(self.work)
        self.w = np.zeros(n)
        self.wv = memoryview(self.w)

    def restore(self):
        self.np.copyto(self.work, self.spd)


def dense_cases(np, sp_blas, sp_lapack, blas, lapacke):
    """(name, needs restore, ours, scipy/numpy, system library via ctypes) as callables of d."""
    c_int, c_double, c_char = ctypes.c_int, ctypes.c_double, ctypes.c_char
    CM, NT, TR, LOW = 102, 111, 112, 122  # cblas / LAPACKE constants

    return [
        ("axpy", False,
         lambda d: d.env.axpy_idOO_5(d.n, 1e-9, d.xv, d.yv),
         lambda d: sp_blas.daxpy(d.x, d.y, a=1e-9),
         lambda d: blas.cblas_daxpy(c_int(d.n), c_double(1e-9), ptr(d.x), 1, ptr(d.y), 1)),
        ("dot", False,
         lambda d: d.env.dot_iOO_4(d.n, d.xv, d.yv),
         lambda d: np.dot(d.x, d.y),
         lambda d: blas.cblas_ddot(c_int(d.n), ptr(d.x), 1, ptr(d.y), 1)),
        ("gemv", False,
         lambda d: d.env.gemv_iiidOOdO_9(NO, d.n, d.n, 1.0, d.av, d.xv, 0.0, d.wv),
         lambda d: sp_blas.dgemv(1.0, d.a, d.x, 0.0, d.w, overwrite_y=1),
         lambda d: blas.cblas_dgemv(CM, NT, c_int(d.n), c_int(d.n), c_double(1.0), ptr(d.a), c_int(d.n),
                                    ptr(d.x), 1, c_double(0.0), ptr(d.w), 1)),
        ("gemm", False,
         lambda d: d.env.gemm_iiiiidOOdO_11(NO, NO, d.n, d.n, d.n, 1.0, d.av, d.bv, 0.0, d.cv),
         lambda d: sp_blas.dgemm(1.0, d.a, d.b, 0.0, d.c, overwrite_c=1),
         lambda d: blas.cblas_dgemm(CM, NT, NT, c_int(d.n), c_int(d.n), c_int(d.n), c_double(1.0), ptr(d.a),
                                    c_int(d.n), ptr(d.b), c_int(d.n), c_double(0.0), ptr(d.c), c_int(d.n))),
        ("syrk", False,
         lambda d: d.env.syrk_iiiidOdO_9(LO, NO, d.n, d.n, 1.0, d.av, 0.0, d.cv),
         lambda d: sp_blas.dsyrk(1.0, d.a, 0.0, d.c, lower=1, overwrite_c=1),
         lambda d: blas.cblas_dsyrk(CM, LOW, NT, c_int(d.n), c_int(d.n), c_double(1.0), ptr(d.a), c_int(d.n),
                                    c_double(0.0), ptr(d.c), c_int(d.n))),
        ("potrf", True,
         lambda d: (d.restore(), d.env.potrf_iiO_4(LO, d.n, d.workv)),
         lambda d: (d.restore(), sp_lapack.dpotrf(d.work, lower=1, clean=0, overwrite_a=1)),
         lambda d: (d.restore(), lapacke.LAPACKE_dpotrf(CM, c_char(b"L"), c_int(d.n), ptr(d.work), c_int(d.n)))),
        ("syeig", False,
         lambda d: d.env.syeig_iiOO_5(LO, d.n, d.spdv, d.wv),
         lambda d: sp_lapack.dsyev(d.spd, compute_v=0, lower=1),
         lambda d: (d.restore(), lapacke.LAPACKE_dsyev(CM, c_char(b"N"), c_char(b"L"), c_int(d.n), ptr(d.work),
                                                       c_int(d.n), ptr(d.w)))),
        ("syevd", True,
         lambda d: (d.restore(), d.env.syevd_iiOO_5(LO, d.n, d.workv, d.wv)),
         lambda d: (d.restore(), sp_lapack.dsyevd(d.work, compute_v=1, lower=1, overwrite_a=1)),
         lambda d: (d.restore(), lapacke.LAPACKE_dsyevd(CM, c_char(b"V"), c_char(b"L"), c_int(d.n), ptr(d.work),
                                                        c_int(d.n), ptr(d.w)))),
    ]


def check_dense(np, d):
    """One call of each _qrn routine, checked, before timing."""
    n = d.n
    d.restore()
    assert d.env.potrf_iiO_4(LO, n, d.workv) == (0, None)
    assert np.allclose(np.tril(d.work), np.linalg.cholesky(d.spd))
    assert d.env.syeig_iiOO_5(LO, n, d.spdv, d.wv) == (0, None)
    assert np.allclose(d.w, np.linalg.eigvalsh(d.spd))
    assert d.env.gemm_iiiiidOOdO_11(NO, NO, n, n, n, 1.0, d.av, d.bv, 0.0, d.cv) == (0, None)
    assert np.allclose(d.c, d.a @ d.b)


def run_dense(np, qrn, sizes, vector_sizes, repeat_small, repeat_large):
    import scipy.linalg.blas as sp_blas
    import scipy.linalg.lapack as sp_lapack
    blas, lapacke = system_blas()
    env = qrn.Env()
    rows = []
    cases = dense_cases(np, sp_blas, sp_lapack, blas, lapacke)
    for n in sorted(set(sizes) | set(vector_sizes)):
        d = Dense(np, qrn, env, n) if n <= max(sizes) else None
        if d is None:  # a long vector only
            d = Dense.__new__(Dense)
            rng = np.random.default_rng(1)
            d.np, d.env, d.n = np, env, n
            d.x, d.y = rng.standard_normal(n), rng.standard_normal(n)
            d.xv, d.yv = memoryview(d.x), memoryview(d.y)
        else:
            check_dense(np, d)
        for name, _, ours, base, same in cases:
            vector = name in ("axpy", "dot")
            if (vector and n not in vector_sizes) or (not vector and n not in sizes):
                continue
            g = {"d": d, "ours": ours, "base": base, "same": same}
            timers = [timeit.Timer("ours(d)", globals=g), timeit.Timer("base(d)", globals=g),
                      timeit.Timer("same(d)", globals=g)]
            times = run.per_call(timers, repeat_small if n <= 64 else repeat_large)
            rows.append({"routine": name, "n": n, "ours_s": times[0], "scipy_numpy_s": times[1],
                         "same_openblas_s": times[2], "ratio_scipy_numpy": times[0] / times[1],
                         "ratio_same_openblas": times[0] / times[2]})
            print("%-6s n=%-7d ours %s  scipy/numpy %s (x%5.2f)  same OpenBLAS %s (x%5.2f)"
                  % (name, n, run.show(times[0]), run.show(times[1]), times[0] / times[1],
                     run.show(times[2]), times[0] / times[2]), flush=True)
    return rows


# ---------------------------------------------------------------- sparse Cholesky

def laplacian(np, sparse, g):
    one = sparse.diags([-np.ones(g - 1), 2 * np.ones(g), -np.ones(g - 1)], [-1, 0, 1])
    eye = sparse.identity(g)
    return (sparse.kron(one, eye) + sparse.kron(eye, one) + 1e-3 * sparse.identity(g * g)).tocsc()


def run_cholesky(np, qrn, grid, repeat):
    try:
        import scipy.sparse as sparse
        from sksparse.cholmod import cholesky
    except ImportError as e:
        print("cholesky: skipped (%s)" % e)
        return []
    a = laplacian(np, sparse, grid)
    low = sparse.tril(a).tocsc()
    low.sort_indices()
    n = a.shape[0]
    anzc = np.diff(low.indptr).astype(np.int32)
    aptrc = low.indptr[:-1].astype(np.int64)
    asubc = low.indices.astype(np.int32)
    avalc = low.data.astype(float)
    views = [memoryview(v) for v in (anzc, aptrc, asubc, avalc)]
    outs = [bytearray() for _ in range(6)]
    env = qrn.Env()

    def ours():
        return env.computesparsecholesky_iidOOOOOOOOOO_8(0, 0, 0.0, *views, *outs)

    def theirs():
        return cholesky(a, mode="simplicial", ordering_method="amd")

    def theirs_out():
        f = cholesky(a, mode="simplicial", ordering_method="amd")
        return f.L(), f.P()

    code, nnz = ours()
    assert code == 0
    factor = theirs()
    assert factor.L().nnz == nnz, (factor.L().nnz, nnz)  # the same ordering gives the same factor
    timers = [timeit.Timer(ours), timeit.Timer(theirs), timeit.Timer(theirs_out)]
    times = run.per_call(timers, repeat)
    row = {"routine": "cholesky", "n": n, "matrix_nnz": int(a.nnz), "factor_nnz": nnz, "ours_s": times[0],
           "sksparse_factor_s": times[1], "sksparse_factor_and_L_s": times[2],
           "ratio_factor": times[0] / times[1], "ratio_factor_and_L": times[0] / times[2]}
    print("cholesky n=%d (nnz A %d, L %d): ours %s  scikit-sparse %s (x%5.2f)  with L() and P() %s (x%5.2f)"
          % (n, a.nnz, nnz, run.show(times[0]), run.show(times[1]), times[0] / times[1], run.show(times[2]),
             times[0] / times[2]), flush=True)
    return [row]


def main():
    p = argparse.ArgumentParser(description=__doc__.split("\n\n")[0])
    p.add_argument("--build", default=os.environ.get("QRN_BUILD_DIR"),
                   help="build directory (default: a scratch directory)")
    p.add_argument("--no-build", action="store_true", help="use the build directory as it is")
    p.add_argument("--no-install", action="store_true", help="do not install the benchmark packages")
    p.add_argument("--json", metavar="FILE", help="also write the results to FILE")
    p.add_argument("--sizes", default="8,1000", help="matrix orders (default 8,1000)")
    p.add_argument("--vector-sizes", default="8,1000,1000000", help="vector lengths for axpy and dot")
    p.add_argument("--grid", type=int, default=150, help="side of the Laplacian grid of the Cholesky case")
    p.add_argument("--repeat", type=int, default=30, help="timed runs per small case (best is kept)")
    p.add_argument("--repeat-large", type=int, default=5, help="timed runs per large case")
    a = p.parse_args()
    ensure_packages(not a.no_install)
    build_dir = os.path.abspath(a.build or os.path.join(tempfile.gettempdir(), "qrn-bench-build"))
    if not a.no_build:
        run.build(build_dir)
    qrn = load_qrn(build_dir)
    import numpy as np
    try:
        from threadpoolctl import threadpool_limits
        threadpool_limits(1)
    except ImportError:
        pass

    started = time.perf_counter()
    sizes = [int(s) for s in a.sizes.split(",")]
    vector_sizes = [int(s) for s in a.vector_sizes.split(",")]
    rows = run_dense(np, qrn, sizes, vector_sizes, a.repeat, a.repeat_large)
    rows += run_cholesky(np, qrn, a.grid, a.repeat_large)
    print("(%.1f s; best of %d runs per small case, %d per large one)"
          % (time.perf_counter() - started, a.repeat, a.repeat_large))
    if a.json:
        with open(a.json, "w") as f:
            json.dump({"python": sys.version.split()[0], "machine": platform.platform(),
                       "numpy": np.__version__, "results": rows}, f, indent=2)


if __name__ == "__main__":
    main()
