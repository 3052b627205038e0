"""Conic problems for the optimizer tests: stating them in a task, solving
and reading the interior solution back, random instances of each cone family
in the form  min c'x + 1/2 x'Px  s.t.  b - A x in K  (with a planted strictly
feasible primal and dual point, or a planted certificate), and the same
instance solved by Clarabel and SCS (independent oracles).

Oracle cone conventions: both take the exponential cone as (x, y, z) with
y exp(x/y) <= z (ours reversed); Clarabel's PSD triangle is the upper one by
columns (ours the lower); the dual cones go through the linear maps that take
them to the primal ones; rotated cones through T(u0, u1, w) = ((u0+u1)/r2,
(u0-u1)/r2, w)."""
import math
from array import array

import numpy as np

import _qrn
from conftest import dv, iv, qv

INF = 1e30
R2 = math.sqrt(2.0)
DOMAINS = {
    "zero": lambda t, d, a: t.appendrzerodomain_L_2(d),
    "nonneg": lambda t, d, a: t.appendrplusdomain_L_2(d),
    "nonpos": lambda t, d, a: t.appendrminusdomain_L_2(d),
    "free": lambda t, d, a: t.appendrdomain_L_2(d),
    "soc": lambda t, d, a: t.appendquadraticconedomain_L_2(d),
    "rsoc": lambda t, d, a: t.appendrquadraticconedomain_L_2(d),
    "psd": lambda t, d, a: t.appendsvecpsdconedomain_L_2(d),
    "exp": lambda t, d, a: t.appendprimalexpconedomain__1(),
    "dexp": lambda t, d, a: t.appenddualexpconedomain__1(),
    "pow": lambda t, d, a: t.appendprimalpowerconedomain_LO_3(d, dv(*a)),
    "dpow": lambda t, d, a: t.appenddualpowerconedomain_LO_3(d, dv(*a)),
    "gmean": lambda t, d, a: t.appendprimalgeomeanconedomain_L_2(d),
    "dgmean": lambda t, d, a: t.appenddualgeomeanconedomain_L_2(d),
}
SYMMETRIC = {"zero", "nonneg", "soc", "rsoc", "psd"}


def vec(b):
    return np.frombuffer(bytes(b), dtype=float) if len(b) else np.zeros(0)


def add_acc(task, kind, F, g, alpha=None):
    """Appends the ACC  F x + g in domain kind (F dense rows over the task's variables)."""
    F = np.atleast_2d(np.asarray(F, float))
    d = F.shape[0]
    code, first = task.getnumafe__1()
    assert code == 0
    assert task.appendafes_L_2(d) == (0, None)
    rows, cols, vals = [], [], []
    for i in range(d):
        for j in np.nonzero(F[i])[0]:
            rows.append(first + i), cols.append(int(j)), vals.append(float(F[i, j]))
    if vals:
        assert task.putafefentrylist_OOO_4(qv(*rows), iv(*cols), dv(*vals)) == (0, None)
    assert task.putafegslice_LLO_4(first, first + d, dv(*map(float, g))) == (0, None)
    code, dom = DOMAINS[kind](task, d, alpha)
    assert code == 0, code
    assert task.appendacc_LOO_4(dom, qv(*range(first, first + d)), None) == (0, None)


def new_task(env, n, c, free=True, maximize=False, P=None, cfix=0.0):
    t = _qrn.Task(env)
    assert t.appendvars_i_2(n) == (0, None)
    if free:
        assert t.putvarboundsliceconst_iiidd_6(0, n, 0, -INF, INF) == (0, None)
    assert t.putcslice_iiO_4(0, n, dv(*map(float, c))) == (0, None)
    assert t.putcfix_d_2(cfix) == (0, None)
    if maximize:
        assert t.putobjsense_i_2(1) == (0, None)
    if P is not None:
        P = np.asarray(P, float)
        qi, qj = np.nonzero(np.tril(P))
        assert t.putqobj_OOO_4(iv(*map(int, qi)), iv(*map(int, qj)), dv(*P[qi, qj])) == (0, None)
    return t


def add_rows(task, A, keys, lo, hi):
    """Appends constraints lo <= A x <= hi with bound keys by name."""
    A = np.atleast_2d(np.asarray(A, float))
    code, m0 = task.getnumcon__1()
    assert task.appendcons_i_2(A.shape[0]) == (0, None)
    for i, row in enumerate(A):
        nz = np.nonzero(row)[0]
        assert task.putarow_iOO_4(m0 + i, iv(*map(int, nz)), dv(*row[nz])) == (0, None)
        key = {"fr": 0, "lo": 1, "up": 2, "fx": 3, "ra": 4}[keys[i]]
        assert task.putconbound_iidd_5(m0 + i, key, float(lo[i]), float(hi[i])) == (0, None)


class Result:
    """What the optimizer left: termination, statuses, vectors and the summary."""

    def __init__(self, task):
        code, self.trm = task.optimizetrm__1()
        assert code == 0, code
        _, self.prosta = task.getprosta_i_2(0)
        _, self.solsta = task.getsolsta_i_2(0)
        out = {}
        for name in ("xx", "xc", "y", "slc", "suc", "slx", "sux", "snx"):
            b = bytearray()
            assert getattr(task, f"get{name}_iO_2")(0, b) == (0, None)
            out[name] = vec(b)
        b = bytearray()
        assert task.getaccdotys_iO_2(0, b) == (0, None)
        out["doty"] = vec(b)
        self.__dict__.update(out)
        code, info = task.getsolutioninfonew_i_2(0)
        assert code == 0
        (self.pobj, self.pviolcon, self.pviolvar, self.pviolbarvar, self.pviolcone, self.pviolacc, _, _,
         self.dobj, self.dviolcon, self.dviolvar, self.dviolbarvar, self.dviolcone, self.dviolacc) = info

    def pviol(self):
        return max(self.pviolcon, self.pviolvar, self.pviolbarvar, self.pviolcone, self.pviolacc)

    def dviol(self):
        return max(self.dviolcon, self.dviolvar, self.dviolbarvar, self.dviolcone, self.dviolacc)


def check_optimal(r, obj=None, tol=1e-6):
    """Optimal, with the solution module's measures agreeing: feasible both ways, no gap."""
    assert r.trm == 0 and r.solsta == 1 and r.prosta == 1
    scale = 1 + abs(r.pobj)
    assert r.pviol() <= tol * scale and r.dviol() <= tol * scale, (r.pviol(), r.dviol())
    assert abs(r.pobj - r.dobj) <= tol * scale
    if obj is not None:
        assert r.pobj == __import__("pytest").approx(obj, rel=tol, abs=tol)


# ---------------------------------------------------------------- random instances

def psd_dim(k):
    return int(round((math.sqrt(8 * k + 1) - 1) / 2))


def svec(M):
    d = M.shape[0]
    return np.array([M[i, j] if i == j else M[i, j] * R2 for j in range(d) for i in range(j, d)])


def interior(rng, kind, dim, alpha, dual):
    """A random point strictly inside the cone (its dual when dual)."""
    if kind == "zero":
        return rng.normal(size=dim) if dual else np.zeros(dim)
    if kind == "nonneg":
        return rng.uniform(0.2, 2.0, dim)
    if kind == "soc":
        v = rng.normal(size=dim - 1)
        return np.concatenate([[np.linalg.norm(v) + rng.uniform(0.1, 1)], v])
    if kind == "rsoc":
        v = rng.normal(size=dim - 2)
        a = rng.uniform(0.5, 2)
        return np.concatenate([[a, (v @ v) / (2 * a) + rng.uniform(0.1, 1)], v])
    if kind == "psd":
        d = psd_dim(dim)
        R = rng.normal(size=(d, d))
        return svec(R @ R.T / d + 0.3 * np.eye(d))
    if kind in ("exp", "dexp"):
        if (kind == "exp") != dual:
            x1, x2 = rng.uniform(0.3, 2), rng.normal()
            return np.array([x1 * math.exp(x2 / x1) + rng.uniform(0.1, 1), x1, x2])
        x2, x1 = -rng.uniform(0.3, 2), rng.normal()
        return np.array([-x2 * math.exp(x1 / x2 - 1) + rng.uniform(0.1, 1), x1, x2])
    a = np.array(alpha) / np.sum(alpha)
    nl = len(a)
    left = rng.uniform(0.5, 2, nl)
    primal = (kind in ("pow", "gmean")) != dual
    scale = np.ones(nl) if primal else 1 / a
    bound = math.exp(np.sum(a * np.log(left * scale)))
    w = rng.normal(size=dim - nl)
    w *= rng.uniform(0.1, 0.9) * bound / max(np.linalg.norm(w), 1e-12)
    return np.concatenate([left, w])


def family_cones(rng, family, size):
    if family in ("lp", "qp"):
        return [("zero", size // 4, None), ("nonneg", 2 * size, None)]
    if family == "socp":
        return [("zero", 2, None)] + [("soc", int(rng.integers(2, 6)), None) for _ in range(size // 3)]
    if family == "rsoc":
        return [("nonneg", 3, None)] + [("rsoc", int(rng.integers(3, 6)), None) for _ in range(size // 3)]
    if family in ("exp", "dexp"):
        return [("zero", 2, None)] + [(family, 3, None) for _ in range(size // 2)]
    if family in ("pow", "dpow"):
        out = [("zero", 2, None)]
        for _ in range(size // 3):
            nl = int(rng.integers(2, 4))
            out.append((family, nl + int(rng.integers(1, 3)), list(rng.uniform(0.2, 1.0, nl))))
        return out
    if family in ("gmean", "dgmean"):
        out = [("zero", 2, None)]
        for _ in range(size // 3):
            d = int(rng.integers(3, 6))
            out.append((family, d, [1.0] * (d - 1)))
        return out
    if family == "sdp":
        return [("zero", 2, None), ("psd", 10, None), ("psd", 6, None), ("nonneg", 3, None)]
    if family == "mixed":
        return [("zero", 2, None), ("nonneg", 5, None), ("soc", 4, None), ("rsoc", 4, None), ("psd", 6, None),
                ("exp", 3, None), ("dexp", 3, None), ("pow", 4, [0.3, 0.5]), ("dpow", 3, [0.6, 0.4]),
                ("gmean", 4, [1.0] * 3), ("dgmean", 3, [1.0] * 2)]
    raise ValueError(family)


def instance(rng, family, size, density=None):
    """(cones, P, c, A, b): b - A x in K solvable, with strictly feasible points planted."""
    cones = family_cones(rng, family, size)
    n = size
    m = sum(d for _, d, _ in cones)
    if density is None:
        density = min(1.0, 4.0 / n + 0.1)
    A = rng.normal(size=(m, n)) * (rng.uniform(size=(m, n)) < density)
    A[np.arange(min(m, n)), np.arange(min(m, n))] += 1.0
    x0 = rng.normal(size=n)
    s0 = np.concatenate([interior(rng, k, d, a, False) for k, d, a in cones])
    z0 = np.concatenate([interior(rng, k, d, a, True) for k, d, a in cones])
    P = None
    if family == "qp":
        G = rng.normal(size=(n // 2, n))
        P = G.T @ G / n
    b = A @ x0 + s0
    c = -(A.T @ z0) - (P @ x0 if P is not None else 0)
    return cones, P, c, A, b


def infeasible(rng, family, size):
    """A planted certificate y in K*, A'y = 0, b'y = -1."""
    cones, _, c, A, b = instance(rng, family, size)
    y = np.concatenate([interior(rng, k, d, a, True) for k, d, a in cones])
    A = A - np.outer(y, y @ A) / (y @ y)
    b = b - (b @ y + 1) * y / (y @ y)
    z0 = np.concatenate([interior(rng, k, d, a, True) for k, d, a in cones])
    return cones, None, -(A.T @ z0), A, b  # the dual stays feasible


def unbounded(rng, family, size):
    """A planted ray: A d = -s_d with s_d in K, c'd = -1; the primal stays feasible."""
    cones, _, c, A, b = instance(rng, family, size)
    n = A.shape[1]
    d = rng.normal(size=n)
    sd = np.concatenate([interior(rng, k, dd, a, False) for k, dd, a in cones])
    A = A + np.outer(-sd - A @ d, d) / (d @ d)
    c = c - (c @ d + 1) * d / (d @ d)
    b = A @ rng.normal(size=n) + np.concatenate([interior(rng, k, dd, a, False) for k, dd, a in cones])
    return cones, None, c, A, b


def state(env, inst, maximize=False, variety=True):
    """The instance in a task. Blocks become ACCs F = -A, g = b; with variety,
    orthant blocks become linear rows and the first PSD block a semidefinite
    variable tied to its rows by barA (svec(X) = b - A x)."""
    cones, P, c, A, b = inst
    n = A.shape[1]
    sgn = -1.0 if maximize else 1.0
    t = new_task(env, n, sgn * np.asarray(c), maximize=maximize, P=None if P is None else sgn * P)
    off = 0
    bar_done = False
    for kind, d, alpha in cones:
        Ab, bb = A[off:off + d], b[off:off + d]
        off += d
        if variety and kind in ("zero", "nonneg"):
            key = "fx" if kind == "zero" else "up"
            add_rows(t, Ab, [key] * d, bb, bb)
        elif variety and kind == "psd" and not bar_done:
            bar_done = True
            k = psd_dim(d)
            assert t.appendbarvars_O_2(iv(k)) == (0, None)
            code, m0 = t.getnumcon__1()
            add_rows(t, Ab, ["fx"] * d, bb, bb)
            pos = 0
            for col in range(k):
                for row in range(col, k):
                    w = 1.0 if row == col else 1.0 / R2
                    code, idx = t.appendsparsesymmat_iOOO_5(k, iv(row), iv(col), dv(w))
                    assert code == 0
                    assert t.putbaraij_iiOO_5(m0 + pos, 0, qv(idx), dv(1.0)) == (0, None)
                    pos += 1
        else:
            add_acc(t, kind, -Ab, bb, alpha)
    return t


def to_clarabel(cones, A, b):
    import clarabel
    rows, rhs, out = [], [], []
    off = 0
    for k, d, a in cones:
        Ab, bb = A[off:off + d].copy(), b[off:off + d].copy()
        off += d
        if k == "zero":
            out.append(clarabel.ZeroConeT(d))
        elif k == "nonneg":
            out.append(clarabel.NonnegativeConeT(d))
        elif k == "soc":
            out.append(clarabel.SecondOrderConeT(d))
        elif k == "rsoc":
            T = np.eye(d)
            T[:2, :2] = np.array([[1, 1], [1, -1]]) / R2
            Ab, bb = T @ Ab, T @ bb
            out.append(clarabel.SecondOrderConeT(d))
        elif k == "psd":
            kk = psd_dim(d)
            pos = {}
            for j in range(kk):
                for i in range(j, kk):
                    pos[(i, j)] = len(pos)
            p = [pos[(j, i)] for j in range(kk) for i in range(j + 1)]
            Ab, bb = Ab[p], bb[p]
            out.append(clarabel.PSDTriangleConeT(kk))
        elif k in ("exp", "dexp"):
            if k == "dexp":
                M = np.array([[1.0, 0, 0], [0, 0, -1], [0, -1, 1]])
                Ab, bb = M @ Ab, M @ bb
            Ab, bb = Ab[::-1], bb[::-1]
            out.append(clarabel.ExponentialConeT())
        else:
            al = np.array(a, float) / np.sum(a)
            nl = len(al)
            al[0] = 1.0 - math.fsum(al[1:])
            if k in ("dpow", "dgmean"):
                Ab[:nl] /= al[:, None]
                bb[:nl] /= al
            out.append(clarabel.GenPowerConeT(list(al), d - nl))
        rows.append(Ab)
        rhs.append(bb)
    return np.vstack(rows), np.concatenate(rhs), out


def clarabel_solve(inst):
    import clarabel
    import scipy.sparse as sp
    cones, P, c, A, b = inst
    Ac, bc, kc = to_clarabel(cones, A, b)
    n = A.shape[1]
    Pc = sp.csc_matrix(np.triu(P)) if P is not None else sp.csc_matrix((n, n))
    st = clarabel.DefaultSettings()
    st.verbose = False
    st.tol_gap_abs = st.tol_gap_rel = st.tol_feas = 1e-10
    try:
        sol = clarabel.DefaultSolver(Pc, np.asarray(c, float), sp.csc_matrix(Ac), bc, kc, st).solve()
    except BaseException as e:  # a panic of the Rust code arrives as BaseException
        if isinstance(e, (KeyboardInterrupt, SystemExit)):
            raise
        return "oracle failed", math.nan
    return str(sol.status), sol.obj_val


def scs_solve(inst):
    """SCS for the symmetric families (zero, nonneg, soc, psd); None when it has another cone."""
    import scipy.sparse as sp
    import scs
    cones, P, c, A, b = inst
    order = {"zero": 0, "nonneg": 1, "soc": 2, "psd": 3}
    if any(k not in order for k, _, _ in cones):
        return None
    idx, off = [], 0
    spans = []
    for k, d, _ in cones:
        spans.append((order[k], list(range(off, off + d)), d))
        off += d
    spans.sort(key=lambda s: s[0])
    rows = [r for _, r, _ in spans]
    perm = [i for r in rows for i in r]
    cone = {"z": sum(d for o, _, d in spans if o == 0), "l": sum(d for o, _, d in spans if o == 1),
            "q": [d for o, _, d in spans if o == 2], "s": [psd_dim(d) for o, _, d in spans if o == 3]}
    n = A.shape[1]
    data = {"A": sp.csc_matrix(A[perm]), "b": b[perm], "c": np.asarray(c, float),
            "P": sp.csc_matrix(np.triu(P)) if P is not None else None}
    if data["P"] is None:
        del data["P"]
    sol = scs.SCS(data, cone, eps_abs=1e-10, eps_rel=1e-10, max_iters=200000, verbose=False).solve()
    return sol["info"]["status"], sol["info"]["pobj"]
