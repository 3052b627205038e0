"""The conic optimizer through _qrn (optimizetrm__1: reading the task, the
engine, the solution back) against Clarabel on the same random instances,
in the same run: time and iterations, and the agreement of the optima.

    .venv/bin/python bench/conic_optimizer.py [--scale 1.0] [--repeat 1] [--json FILE]

Instances (tests/conicmodel.py, planted strictly feasible primal and dual
points, A with about 6 non-zeros per row): SOCP with n variables and cones of
dimension 2-5, an SDP with one d x d PSD block (svec rows) and n variables,
an exponential-cone problem with n/2 cones. --scale multiplies the sizes.
Needs numpy, scipy and clarabel (the test extra installs them).
"""
import argparse
import json
import math
import os
import sys
import time

import numpy as np

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.abspath(__file__))), "tests"))
import _qrn  # noqa: E402
import conicmodel as cm  # noqa: E402


def sdp_instance(rng, n, d):
    cones = [("zero", 2, None), ("psd", d * (d + 1) // 2, None), ("nonneg", n, None)]
    m = sum(k for _, k, _ in cones)
    A = rng.normal(size=(m, n)) * (rng.uniform(size=(m, n)) < 6.0 / n)
    A[np.arange(min(m, n)), np.arange(min(m, n))] += 1.0
    x0 = rng.normal(size=n)
    s0 = np.concatenate([cm.interior(rng, k, dd, a, False) for k, dd, a in cones])
    z0 = np.concatenate([cm.interior(rng, k, dd, a, True) for k, dd, a in cones])
    return cones, None, -(A.T @ z0), A, A @ x0 + s0


def cases(scale, rng):
    n_socp = int(3000 * scale)
    n_exp = int(1000 * scale)
    d_sdp = max(4, int(40 * math.sqrt(scale)))
    yield "socp", f"n={n_socp}", cm.instance(rng, "socp", n_socp, density=6.0 / n_socp)
    yield "sdp", f"{d_sdp}x{d_sdp} block", sdp_instance(rng, int(200 * scale), d_sdp)
    yield "exp", f"{n_exp // 2} cones", cm.instance(rng, "exp", n_exp, density=6.0 / n_exp)


def run_ours(env, inst):
    t = cm.state(env, inst, variety=False)
    t.putintparam_ii_3(0, 0)  # no log
    t0 = time.perf_counter()
    code, trm = t.optimizetrm__1()
    dt = time.perf_counter() - t0
    _, it = t.getintinf_i_2(0)  # QRN_IINF_IPM_ITER
    _, sta = t.getsolsta_i_2(0)
    _, pobj = t.getprimalobj_i_2(0)
    _, factor = t.getdouinf_i_2(7)  # QRN_DINF_TIME_IPM_FACTOR
    t.dispose()
    return {"time": dt, "iterations": it, "status": sta, "pobj": pobj, "factor_time": factor}


def run_clarabel(inst):
    t0 = time.perf_counter()
    status, obj = cm.clarabel_solve(inst)
    return {"time": time.perf_counter() - t0, "status": status, "pobj": obj}


def clarabel_iterations(inst):
    import clarabel
    import scipy.sparse as sp
    cones, P, c, A, b = inst
    Ac, bc, kc = cm.to_clarabel(cones, A, b)
    st = clarabel.DefaultSettings()
    st.verbose = False
    st.tol_gap_abs = st.tol_gap_rel = st.tol_feas = 1e-10
    n = A.shape[1]
    sol = clarabel.DefaultSolver(sp.csc_matrix((n, n)), np.asarray(c, float), sp.csc_matrix(Ac), bc, kc, st).solve()
    return sol.iterations


def main():
    ap = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    ap.add_argument("--scale", type=float, default=1.0)
    ap.add_argument("--repeat", type=int, default=1)
    ap.add_argument("--seed", type=int, default=1)
    ap.add_argument("--json")
    args = ap.parse_args()
    env = _qrn.Env()
    rng = np.random.default_rng(args.seed)
    rows = []
    print(f"{'case':6} {'size':>14} {'ours s':>8} {'clarabel s':>10} {'ratio':>6} {'ours it':>7} {'clar it':>7} "
          f"{'factor share':>12} {'rel diff':>9}")
    for name, size, inst in cases(args.scale, rng):
        ours = min((run_ours(env, inst) for _ in range(args.repeat)), key=lambda r: r["time"])
        ref = min((run_clarabel(inst) for _ in range(args.repeat)), key=lambda r: r["time"])
        cit = clarabel_iterations(inst)
        rel = abs(ours["pobj"] - ref["pobj"]) / max(1.0, abs(ref["pobj"]))
        row = dict(case=name, size=size, ours=ours, clarabel=dict(ref, iterations=cit), rel=rel)
        rows.append(row)
        print(f"{name:6} {size:>14} {ours['time']:8.3f} {ref['time']:10.3f} {ours['time'] / ref['time']:6.2f} "
              f"{ours['iterations']:7d} {cit:7d} {ours['factor_time'] / ours['time']:12.2f} {rel:9.1e}", flush=True)
    if args.json:
        with open(args.json, "w") as f:
            json.dump(rows, f, indent=1)


if __name__ == "__main__":
    main()
