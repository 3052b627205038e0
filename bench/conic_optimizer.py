"""The conic optimizer through _qrn (optimizetrm__1: reading the task, the
engine, the solution back) against Clarabel on the same random instances,
in the same run: time and iterations, and the agreement of the optima.

    .venv/bin/python bench/conic_optimizer.py [--scale 1.0] [--repeat 1] [--json FILE]
    .venv/bin/python bench/conic_optimizer.py --full

Instances (planted strictly feasible primal and dual points, sparse A with
about 6 non-zeros per row plus a unit diagonal): SOCP with n variables and
cones of dimension 2-5, an SDP with one d x d PSD block (svec rows) and n
variables, an exponential-cone problem with n/2 cones, and a maximum-entropy
problem with as many exponential cones (and n/10 linear rows). --scale multiplies
the sizes (SOCP 3000 variables, SDP 40 x 40 with 200 variables, 500
exponential cones at 1.0); --full runs the reference sizes: SOCP with 10^4
variables, an SDP with a 100 x 100 block, 10^3 exponential cones (both kinds).

Per case: both times and their ratio, both iteration counts, the engine's
time per iteration and per factorization (one factorization per iteration),
and the relative difference of the optima, with Clarabel's status when it is
not "Solved"; then the mean time ratio and the mean iterations of both. Needs numpy, scipy and clarabel (the test extra
installs them).
"""
import argparse
import json
import math
import os
import sys
import time

import numpy as np
import scipy.sparse as sp

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "tests"))
import _qrn  # noqa: E402
import conicmodel as cm  # noqa: E402
from conftest import dv, iv, qv  # noqa: E402


def sparse_instance(rng, cones, n):
    """(cones, None, c, A, b) with A sparse (about 6 entries a row plus a unit
    diagonal) and b - A x0 = s0 in K, c = -A'z0 with z0 in K*."""
    m = sum(d for _, d, _ in cones)
    A = sp.random(m, n, density=min(1.0, 6.0 / n), format="csr", random_state=rng,
                  data_rvs=lambda k: rng.normal(size=k))
    k = min(m, n)
    A = (A + sp.csr_matrix((np.ones(k), (np.arange(k), np.arange(k))), shape=(m, n))).tocsr()
    x0 = rng.normal(size=n)
    s0 = np.concatenate([cm.interior(rng, kk, d, a, False) for kk, d, a in cones])
    z0 = np.concatenate([cm.interior(rng, kk, d, a, True) for kk, d, a in cones])
    return cones, None, -(A.T @ z0), A, A @ x0 + s0


def entropy_instance(rng, k, p):
    """Maximum entropy: max sum -x_j log x_j  s.t.  F x = F x0, sum x = 1 (F p x k,
    about 20 entries a row, x0 > 0 planted), as min -sum t with (1, x_j, t_j) in the
    exponential cone; variables (x, t)."""
    F = sp.random(p, k, density=min(1.0, 20.0 / k), format="csr", random_state=rng,
                  data_rvs=lambda q: rng.normal(size=q))
    F = sp.vstack([F, sp.csr_matrix(np.ones((1, k)))]).tocsr()
    x0 = rng.uniform(0.5, 1.5, k)
    x0 /= x0.sum()
    rows = np.concatenate([3 * np.arange(k) + 1, 3 * np.arange(k) + 2])
    cols = np.concatenate([np.arange(k), k + np.arange(k)])
    E = sp.csr_matrix((-np.ones(2 * k), (rows, cols)), shape=(3 * k, 2 * k))
    A = sp.vstack([sp.hstack([F, sp.csr_matrix((p + 1, k))]), E]).tocsr()
    b = np.concatenate([F @ x0, np.tile([1.0, 0.0, 0.0], k)])
    c = np.concatenate([np.zeros(k), -np.ones(k)])
    return [("zero", p + 1, None)] + [("exp", 3, None)] * k, None, c, A, b


def cases(args, rng):
    if args.full:
        n_socp, n_exp, d_sdp, n_sdp = 10000, 2000, 100, 1000
    else:
        s = args.scale
        n_socp, n_exp, d_sdp, n_sdp = int(3000 * s), int(1000 * s), max(4, int(40 * math.sqrt(s))), int(200 * s)
    socp = [("zero", 2, None)] + [("soc", int(rng.integers(2, 6)), None) for _ in range(n_socp // 3)]
    yield "socp", f"n={n_socp}", sparse_instance(rng, socp, n_socp)
    sdp = [("zero", 2, None), ("psd", d_sdp * (d_sdp + 1) // 2, None), ("nonneg", n_sdp, None)]
    yield "sdp", f"{d_sdp}x{d_sdp} block", sparse_instance(rng, sdp, n_sdp)
    exp = [("zero", 2, None)] + [("exp", 3, None)] * (n_exp // 2)
    yield "exp", f"{n_exp // 2} cones", sparse_instance(rng, exp, n_exp)
    yield "entr", f"{n_exp // 2} cones", entropy_instance(rng, n_exp // 2, max(2, n_exp // 10))


def task_of(env, inst):
    """The instance as a task: free variables, every cone block an ACC F x + g with F = -A, g = b."""
    cones, _, c, A, b = inst
    m, n = A.shape
    t = _qrn.Task(env)
    assert t.appendvars_i_2(n) == (0, None)
    assert t.putvarboundsliceconst_iiidd_6(0, n, 0, -cm.INF, cm.INF) == (0, None)
    assert t.putcslice_iiO_4(0, n, dv(*map(float, c))) == (0, None)
    assert t.appendafes_L_2(m) == (0, None)
    C = A.tocoo()
    assert t.putafefentrylist_OOO_4(qv(*map(int, C.row)), iv(*map(int, C.col)), dv(*map(float, -C.data))) == (0, None)
    assert t.putafegslice_LLO_4(0, m, dv(*map(float, b))) == (0, None)
    off = 0
    for kind, d, alpha in cones:
        code, dom = cm.DOMAINS[kind](t, d, alpha)
        assert code == 0, code
        assert t.appendacc_LOO_4(dom, qv(*range(off, off + d)), None) == (0, None)
        off += d
    return t


def run_ours(env, inst):
    t = task_of(env, inst)
    t.putintparam_ii_3(0, 0)  # no log
    t0 = time.perf_counter()
    code, trm = t.optimizetrm__1()
    dt = time.perf_counter() - t0
    assert code == 0, code
    _, it = t.getintinf_i_2(0)  # QRN_IINF_IPM_ITER
    _, sta = t.getsolsta_i_2(0)
    _, pobj = t.getprimalobj_i_2(0)
    _, ipm = t.getdouinf_i_2(5)  # QRN_DINF_TIME_IPM
    _, factor = t.getdouinf_i_2(7)  # QRN_DINF_TIME_IPM_FACTOR
    t.dispose()
    return {"time": dt, "iterations": it, "status": sta, "pobj": pobj, "ipm_time": ipm, "factor_time": factor}


def clarabel_data(inst):
    """Clarabel's rows: its PSD triangle is the upper one by columns, its
    exponential cone the reverse of ours (row permutations only here)."""
    import clarabel
    cones, _, c, A, b = inst
    perm, kc, off = [], [], 0
    for k, d, _ in cones:
        rows = list(range(off, off + d))
        if k == "zero":
            kc.append(clarabel.ZeroConeT(d))
        elif k == "nonneg":
            kc.append(clarabel.NonnegativeConeT(d))
        elif k == "soc":
            kc.append(clarabel.SecondOrderConeT(d))
        elif k == "psd":
            dd = cm.psd_dim(d)
            pos = {}
            for j in range(dd):
                for i in range(j, dd):
                    pos[(i, j)] = len(pos)
            rows = [off + pos[(j, i)] for j in range(dd) for i in range(j + 1)]
            kc.append(clarabel.PSDTriangleConeT(dd))
        elif k == "exp":
            rows = rows[::-1]
            kc.append(clarabel.ExponentialConeT())
        else:
            raise ValueError(k)
        perm += rows
        off += d
    return sp.csc_matrix(A[perm]), np.asarray(b)[perm], kc


def run_clarabel(inst):
    import clarabel
    Ac, bc, kc = clarabel_data(inst)
    n = Ac.shape[1]
    st = clarabel.DefaultSettings()
    st.verbose = False
    st.tol_gap_abs = st.tol_gap_rel = st.tol_feas = 1e-10
    t0 = time.perf_counter()
    sol = clarabel.DefaultSolver(sp.csc_matrix((n, n)), np.asarray(inst[2], float), Ac, bc, kc, st).solve()
    return {"time": time.perf_counter() - t0, "status": str(sol.status), "pobj": sol.obj_val,
            "iterations": sol.iterations}


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--scale", type=float, default=1.0)
    ap.add_argument("--full", action="store_true", help="the reference sizes (SOCP 10^4, SDP 100x100, 10^3 exp cones)")
    ap.add_argument("--repeat", type=int, default=1)
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--json")
    args = ap.parse_args()
    env = _qrn.Env()
    rng = np.random.default_rng(args.seed)
    rows = []
    print(f"{'case':5} {'size':>14} {'ours s':>8} {'clarabel s':>10} {'ratio':>6} {'ours it':>7} {'clar it':>7} "
          f"{'s/iter':>7} {'s/factor':>8} {'rel diff':>8}", flush=True)
    for name, size, inst in cases(args, rng):
        ours = min((run_ours(env, inst) for _ in range(args.repeat)), key=lambda r: r["time"])
        ref = min((run_clarabel(inst) for _ in range(args.repeat)), key=lambda r: r["time"])
        rel = abs(ours["pobj"] - ref["pobj"]) / max(1.0, abs(ref["pobj"]))
        it = max(ours["iterations"], 1)
        row = dict(case=name, size=size, ours=ours, clarabel=ref, rel=rel, ratio=ours["time"] / ref["time"],
                   per_iteration=ours["ipm_time"] / it, per_factorization=ours["factor_time"] / it)
        rows.append(row)
        print(f"{name:5} {size:>14} {ours['time']:8.2f} {ref['time']:10.2f} {row['ratio']:6.2f} "
              f"{ours['iterations']:7d} {ref['iterations']:7d} {row['per_iteration']:7.3f} "
              f"{row['per_factorization']:8.3f} {rel:8.1e}"
              + ("" if ref["status"] == "Solved" else f"  (Clarabel: {ref['status']})"), flush=True)
    print(f"mean time ratio {np.mean([r['ratio'] for r in rows]):.2f}; mean iterations: ours "
          f"{np.mean([r['ours']['iterations'] for r in rows]):.1f}, clarabel "
          f"{np.mean([r['clarabel']['iterations'] for r in rows]):.1f}")
    if args.json:
        with open(args.json, "w") as f:
            json.dump(rows, f, indent=1)


if __name__ == "__main__":
    main()
