"""A small portfolio problem solved twice with the conic optimizer:

    maximize   mu'x
    subject to sum(x) = 1,  x >= 0,  ||G'x|| <= gamma   (risk: x'Sigma x = ||G'x||^2)

first with the risk bound as an affine conic constraint over a quadratic cone,
(gamma, G'x) in Q, then with a semidefinite variable X of order k + 1 that must
equal [[gamma, (G'x)'], [G'x, gamma I]] (PSD exactly when ||G'x|| <= gamma, a
Schur complement). Both give the same optimal return.

    .venv/bin/python examples/conic.py
"""
from array import array

import _qrn

MU = [0.10, 0.07, 0.05, 0.03]          # expected returns
G = [[0.30, 0.00, 0.00],                # Sigma = G G'
     [0.05, 0.20, 0.00],
     [0.02, 0.03, 0.10],
     [0.00, 0.01, 0.02]]
GAMMA = 0.15                            # largest standard deviation allowed
N, K = len(MU), len(G[0])
INF = 1e30


def d(*v):
    return memoryview(array("d", v))


def i32(*v):
    return memoryview(array("i", v))


def i64(*v):
    return memoryview(array("q", v))


def budget(task):
    """n variables x >= 0, sum x = 1, maximize mu'x."""
    task.appendvars_i_2(N)
    task.putvarboundsliceconst_iiidd_6(0, N, 1, 0.0, INF)   # QRN_BK_LOWER
    task.putcslice_iiO_4(0, N, d(*MU))
    task.putobjsense_i_2(1)                                  # maximize
    task.appendcons_i_2(1)
    task.putarow_iOO_4(0, i32(*range(N)), d(*[1.0] * N))
    task.putconbound_iidd_5(0, 3, 1.0, 1.0)                  # QRN_BK_FIXED


def with_quadratic_cone(env):
    task = _qrn.Task(env)
    budget(task)
    # expressions: 0 is gamma (g only), 1..K are (G'x)_k
    task.appendafes_L_2(1 + K)
    task.putafeg_Ld_3(0, GAMMA)
    afe, var, val = [], [], []
    for k in range(K):
        for j in range(N):
            if G[j][k]:
                afe.append(1 + k), var.append(j), val.append(G[j][k])
    task.putafefentrylist_OOO_4(i64(*afe), i32(*var), d(*val))
    _, dom = task.appendquadraticconedomain_L_2(1 + K)
    task.appendacc_LOO_4(dom, i64(*range(1 + K)), None)
    return task


def with_semidefinite_variable(env):
    task = _qrn.Task(env)
    budget(task)
    task.appendbarvars_O_2(i32(K + 1))
    # one equation per lower-triangle entry of X: <E_rs, X> - [r > 0 = s] (G'x)_(r-1) = value
    for s in range(K + 1):
        for r in range(s, K + 1):
            _, i = task.getnumcon__1()
            task.appendcons_i_2(1)
            w = 1.0 if r == s else 0.5           # <E, X> = X_rs for the symmetric E with E_rs = E_sr = 1/2
            _, mat = task.appendsparsesymmat_iOOO_5(K + 1, i32(r), i32(s), d(w))
            task.putbaraij_iiOO_5(i, 0, i64(mat), d(1.0))
            value = GAMMA if r == s else 0.0
            if s == 0 and r > 0:
                cols = [j for j in range(N) if G[j][r - 1]]
                task.putarow_iOO_4(i, i32(*cols), d(*[-G[j][r - 1] for j in cols]))
            task.putconbound_iidd_5(i, 3, value, value)
    return task


def report(name, task):
    code, trm = task.optimizetrm__1()
    _, solsta = task.getsolsta_i_2(0)           # interior solution
    xx = bytearray()
    task.getxx_iO_2(0, xx)
    x = list(memoryview(xx).cast("d"))
    _, pobj = task.getprimalobj_i_2(0)
    _, dobj = task.getdualobj_i_2(0)
    print(f"{name}: response {code}, termination {trm}, solution status {solsta}")
    print(f"  return {pobj:.8f} (dual bound {dobj:.8f})")
    print("  weights " + " ".join(f"{v:.4f}" for v in x))
    return pobj


def main():
    env = _qrn.Env()
    a = report("quadratic cone", with_quadratic_cone(env))
    b = report("semidefinite variable", with_semidefinite_variable(env))
    print(f"difference of the two optima: {abs(a - b):.1e}")


if __name__ == "__main__":
    main()
