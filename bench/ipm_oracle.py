"""The interior-point engine against independent conic solvers on random instances.

Each family (LP, QP, quadratic and rotated quadratic cones, exponential and dual
exponential, power and dual power, geometric mean and its dual, semidefinite,
mixed, infeasible, unbounded) is generated with a known strictly feasible
primal and dual point, written in the text format of the test driver
(lib/tests/tools/ipm_driver.cpp), solved by the driver and by Clarabel (and SCS
where it has the cones), and the optima compared. Also reports iterations of
both, and the engine's time per iteration against its time per factorization.

    python bench/ipm_oracle.py --driver build/libtests/lib/qrn_ipm_driver [--count 5] [--size 40]

Needs numpy, scipy, clarabel and scs (benchmark-only; installed with pip when
missing). Cone conventions differ: Clarabel's exponential cone is (x, y, z)
with y exp(x/y) <= z, so our rows (x0, x1, x2) are passed reversed; its PSD
triangle is the upper triangle by columns (ours the lower); the dual cones are
passed through the linear maps that take them to the primal ones.
"""
import argparse
import math
import os
import subprocess
import sys
import tempfile
import time

try:
    import numpy as np
    import scipy.sparse as sp
    import clarabel
    import scs
except ImportError:  # benchmark-only dependencies
    subprocess.check_call([sys.executable, "-m", "pip", "install", "-q", "numpy", "scipy", "clarabel", "scs"])
    import numpy as np
    import scipy.sparse as sp
    import clarabel
    import scs

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
SYMMETRIC = {"zero", "nonneg", "soc", "rsoc", "psd"}


# ------------------------------------------------------------ cone points

# The planted interior points are the test suite's own (tests/conicmodel.py).
sys.path.insert(0, os.path.join(ROOT, "tests"))
from conicmodel import interior, psd_dim  # noqa: E402


def cone_alpha(kind, dim, alpha):
    if kind in ("gmean", "dgmean"):
        return [1.0 / (dim - 1)] * (dim - 1)
    return alpha


# ------------------------------------------------------------ instances

def make(rng, family, size):
    """Returns (cones, P, c, A, b) with cones a list of (kind, dim, alpha)."""
    n = size
    cones = []
    if family == "lp":
        cones = [("zero", size // 4, None), ("nonneg", 2 * size, None)]
    elif family == "qp":
        cones = [("zero", size // 4, None), ("nonneg", 2 * size, None)]
    elif family == "socp":
        cones = [("zero", 2, None)] + [("soc", int(rng.integers(2, 8)), None) for _ in range(size // 3)]
    elif family == "rsoc":
        cones = [("nonneg", 4, None)] + [("rsoc", int(rng.integers(3, 8)), None) for _ in range(size // 3)]
    elif family in ("exp", "dexp"):
        cones = [("zero", 2, None)] + [(family, 3, None) for _ in range(size // 2)]
    elif family in ("pow", "dpow"):
        cones = [("zero", 2, None)]
        for _ in range(size // 3):
            nl = int(rng.integers(2, 4))
            cones.append((family, nl + int(rng.integers(1, 3)), list(rng.uniform(0.2, 1.0, nl))))
    elif family in ("gmean", "dgmean"):
        cones = [("zero", 2, None)] + [(family, int(rng.integers(3, 6)), None) for _ in range(size // 3)]
    elif family == "sdp":
        d = max(3, int(math.sqrt(size)))
        cones = [("zero", 3, None), ("psd", d * (d + 1) // 2, None), ("nonneg", 4, None)]
    elif family == "mixed":
        cones = [("zero", 2, None), ("nonneg", 5, None), ("soc", 4, None), ("rsoc", 4, None), ("psd", 6, None),
                 ("exp", 3, None), ("dexp", 3, None), ("pow", 4, [0.3, 0.5]), ("dpow", 3, [0.6, 0.4]),
                 ("gmean", 4, None), ("dgmean", 3, None)]
    else:
        raise ValueError(family)
    cones = [(k, d, cone_alpha(k, d, a)) for k, d, a in cones]
    m = sum(d for _, d, _ in cones)
    A = sp.random(m, n, density=min(1.0, 4.0 / n + 0.05), random_state=np.random.RandomState(rng.integers(1 << 30)),
                  data_rvs=lambda k: rng.normal(size=k)).tocsc()
    A = A + sp.csc_matrix((np.ones(min(m, n)), (np.arange(min(m, n)) % m, np.arange(min(m, n)))), shape=(m, n))
    x0 = rng.normal(size=n)
    s0 = np.concatenate([interior(rng, k, d, a, False) for k, d, a in cones])
    z0 = np.concatenate([interior(rng, k, d, a, True) for k, d, a in cones])
    P = None
    if family == "qp":
        F = rng.normal(size=(n // 2, n))
        P = sp.csc_matrix(F.T @ F / n)
    b = A @ x0 + s0
    c = -(A.T @ z0) - (P @ x0 if P is not None else 0)
    return cones, P, c, A, b


def make_infeasible(rng, family, size):
    """A primal infeasible instance: a certificate y in K*, A'y = 0, b'y = -1 is planted."""
    cones, P, c, A, b = make(rng, family, size)
    y = np.concatenate([interior(rng, k, d, a, True) for k, d, a in cones])
    A = A.toarray()
    A -= np.outer(y, y @ A) / (y @ y)  # A'y = 0
    b = b - (b @ y + 1) * y / (y @ y)  # b'y = -1
    z0 = np.concatenate([interior(rng, k, d, a, True) for k, d, a in cones])
    c = -(A.T @ z0)  # the dual stays feasible
    return cones, None, c, sp.csc_matrix(A), b


def make_unbounded(rng, family, size):
    """A dual infeasible instance: a ray x with A x in -K... planted: A d = -s_d, s_d in K, c'd < 0."""
    cones, P, c, A, b = make(rng, family, size)
    n = A.shape[1]
    d = rng.normal(size=n)
    sd = np.concatenate([interior(rng, k, dd, a, False) for k, dd, a in cones])
    A = A.toarray()
    # Make A d = -sd by a rank-one change.
    A += np.outer(-sd - A @ d, d) / (d @ d)
    c = c - (c @ d + 1) * d / (d @ d)
    x0 = rng.normal(size=n)
    s0 = np.concatenate([interior(rng, k, dd, a, False) for k, dd, a in cones])
    b = A @ x0 + s0  # the primal stays feasible
    return cones, None, c, sp.csc_matrix(A), b


# ------------------------------------------------------------ the engine

def write_problem(path, cones, P, c, A, b):
    n, m = A.shape[1], A.shape[0]
    with open(path, "w") as f:
        f.write(f"{n} {m}\n")
        f.write(" ".join(repr(float(v)) for v in c) + " 0\n")
        if P is None:
            f.write("0\n")
        else:
            U = sp.triu(P).tocoo()
            f.write(f"{U.nnz}\n")
            for i, j, v in zip(U.row, U.col, U.data):
                f.write(f"{i} {j} {float(v)!r}\n")
        C = A.tocoo()
        f.write(f"{C.nnz}\n")
        for i, j, v in zip(C.row, C.col, C.data):
            f.write(f"{i} {j} {float(v)!r}\n")
        f.write(" ".join(repr(float(v)) for v in b) + "\n")
        f.write(f"{len(cones)}\n")
        for k, d, a in cones:
            if k in ("pow", "dpow"):
                f.write(f"{k} {d} {len(a)} " + " ".join(repr(float(v)) for v in a) + "\n")
            else:
                f.write(f"{k} {d}\n")


def run_engine(driver, cones, P, c, A, b):
    with tempfile.NamedTemporaryFile("w", suffix=".txt", delete=False) as tf:
        path = tf.name
    try:
        write_problem(path, cones, P, c, A, b)
        out = subprocess.run([driver, path], capture_output=True, text=True, timeout=600).stdout
    finally:
        os.unlink(path)
    res = {}
    for line in out.splitlines():
        key, _, rest = line.partition(" ")
        if key in ("x", "s", "y"):
            res[key] = np.array([float(v) for v in rest.split()]) if rest else np.zeros(0)
        elif key == "status":
            res[key] = rest
        elif key:
            res[key] = float(rest)
    return res


# ------------------------------------------------------------ the oracles

def upper_from_lower_perm(d):
    """Index into our lower-by-columns svec for each entry of the upper-by-columns one."""
    pos = {}
    k = 0
    for j in range(d):
        for i in range(j, d):
            pos[(i, j)] = k
            k += 1
    return [pos[(j, i)] for j in range(d) for i in range(j + 1)]


EXP_MAP_DUAL = np.array([[1.0, 0, 0], [0, 0, -1], [0, -1, 1]])  # our dual cone -> primal cone


def to_clarabel(cones, A, b):
    """Rows transformed for Clarabel's cones; returns (A, b, cones)."""
    A = A.tocsr()
    rows, rhs, out = [], [], []
    off = 0
    for k, d, a in cones:
        Ab, bb = A[off:off + d].toarray(), b[off:off + d]
        if k == "zero":
            out.append(clarabel.ZeroConeT(d))
        elif k == "nonneg":
            out.append(clarabel.NonnegativeConeT(d))
        elif k == "soc":
            out.append(clarabel.SecondOrderConeT(d))
        elif k == "rsoc":  # to a quadratic cone through ((u0+u1)/r2, (u0-u1)/r2, w)
            T = np.eye(d)
            T[:2, :2] = np.array([[1, 1], [1, -1]]) / math.sqrt(2)
            Ab, bb = T @ Ab, T @ bb
            out.append(clarabel.SecondOrderConeT(d))
        elif k == "psd":
            p = upper_from_lower_perm(psd_dim(d))
            Ab, bb = Ab[p], bb[p]
            out.append(clarabel.PSDTriangleConeT(psd_dim(d)))
        elif k in ("exp", "dexp"):
            if k == "dexp":
                Ab, bb = EXP_MAP_DUAL @ Ab, EXP_MAP_DUAL @ bb
            Ab, bb = Ab[::-1], bb[::-1]
            out.append(clarabel.ExponentialConeT())
        elif k in ("pow", "dpow", "gmean", "dgmean"):
            al = np.array(a) / np.sum(a)
            nl = len(al)
            al[-1] = 1.0 - np.sum(al[:-1])  # Clarabel wants the sum exact
            if abs(1.0 - math.fsum(al)) > 0:
                al[0] = 1.0 - math.fsum(al[1:])
            if k in ("dpow", "dgmean"):
                Ab, bb = Ab.copy(), bb.copy()
                Ab[:nl] /= al[:, None]
                bb[:nl] /= al
            out.append(clarabel.GenPowerConeT(list(al), d - nl))
        rows.append(Ab)
        rhs.append(bb)
        off += d
    return sp.csc_matrix(np.vstack(rows)), np.concatenate(rhs), out


def run_clarabel(cones, P, c, A, b):
    Ac, bc, kc = to_clarabel(cones, A, b)
    n = A.shape[1]
    Pc = sp.triu(P).tocsc() if P is not None else sp.csc_matrix((n, n))
    st = clarabel.DefaultSettings()
    st.verbose = False
    st.tol_gap_abs = st.tol_gap_rel = 1e-10
    st.tol_feas = 1e-10
    t = time.perf_counter()
    try:
        sol = clarabel.DefaultSolver(Pc, np.asarray(c, float), Ac, bc, kc, st).solve()
    except BaseException as e:  # Rust panics arrive as BaseException
        if isinstance(e, KeyboardInterrupt):
            raise
        return {"status": "oracle failed", "pobj": float("nan"), "iterations": float("nan"), "time": 0.0}
    return {"status": str(sol.status), "pobj": sol.obj_val, "iterations": sol.iterations,
            "time": time.perf_counter() - t}


# ------------------------------------------------------------ main

def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--driver", default=os.path.join(ROOT, "build", "libtests", "lib", "qrn_ipm_driver"))
    ap.add_argument("--count", type=int, default=5)
    ap.add_argument("--size", type=int, default=40)
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--dump", help="write each failing instance into this folder")
    ap.add_argument("--families", help="comma-separated subset of the families")
    args = ap.parse_args()
    rng = np.random.default_rng(args.seed)
    families = ["lp", "qp", "socp", "rsoc", "sdp", "exp", "dexp", "pow", "dpow", "gmean", "dgmean", "mixed"]
    print(f"{'family':10} {'n':>3} {'max rel diff':>12} {'ours it':>8} {'clarabel it':>11} {'ours ms/it':>10} "
          f"{'ms/factor':>9} {'factor share':>12} {'time ratio':>10} {'failures':>8}")
    bad = 0
    chosen = families + ["infeasible", "unbounded"]
    if args.families:
        chosen = args.families.split(",")
    for fam in chosen:
        diffs, its, cits, per_it, share, per_f, ratio, fails = [], [], [], [], [], [], [], 0
        for _ in range(args.count):
            if fam == "infeasible":
                inst = make_infeasible(rng, str(rng.choice(["lp", "socp", "exp", "pow", "sdp"])), args.size)
            elif fam == "unbounded":
                inst = make_unbounded(rng, str(rng.choice(["lp", "socp", "exp", "pow"])), args.size)
            else:
                inst = make(rng, fam, args.size)
            ours = run_engine(args.driver, *inst)
            its.append(ours.get("iterations", float("nan")))
            if ours.get("iterations"):
                per_it.append(1e3 * ours["time"] / max(1, ours["iterations"]))
                share.append(ours["factor_time"] / max(ours["time"], 1e-12))
                per_f.append(1e3 * ours["factor_time"] / max(1, ours["factorizations"]))
            cl = run_clarabel(*inst)
            cits.append(cl["iterations"])
            if cl["time"] > 0 and "time" in ours:
                ratio.append(ours["time"] / cl["time"])
            if cl["status"] == "oracle failed":
                print(f"  {fam}: clarabel failed; ours {ours.get('status')} {ours.get('pobj')}")
                continue
            if fam == "infeasible":
                ok = ours.get("status") == "primal infeasible"
            elif fam == "unbounded":
                ok = ours.get("status") == "dual infeasible"
            else:
                ref = cl["pobj"]
                diff = abs(ours.get("pobj", float("nan")) - ref) / max(1.0, abs(ref))
                diffs.append(diff)
                kinds = {k for k, _, _ in inst[0]}
                tol = 1e-7 if kinds <= SYMMETRIC else 1e-6
                ok = ours.get("status") == "optimal" and diff <= tol and "Solved" in cl["status"]
            if not ok:
                fails += 1
                if args.dump:
                    os.makedirs(args.dump, exist_ok=True)
                    write_problem(os.path.join(args.dump, f"{fam}-{fails}.txt"), *inst)
                print(f"  {fam}: ours {ours.get('status')} {ours.get('pobj')}, clarabel {cl['status']} {cl['pobj']}")
        bad += fails
        md = f"{max(diffs):.1e}" if diffs else "-"
        print(f"{fam:10} {args.count:>3} {md:>12} {np.mean(its):>8.1f} {np.nanmean(cits):>11.1f} "
              f"{np.mean(per_it) if per_it else 0:>10.3f} {np.mean(per_f) if per_f else 0:>9.3f} "
              f"{np.mean(share) if share else 0:>12.2f} {np.exp(np.mean(np.log(ratio))) if ratio else 0:>10.2f} {fails:>8}")
    print(f"{'failures':10} {bad}")
    return 1 if bad else 0


if __name__ == "__main__":
    sys.exit(main())
