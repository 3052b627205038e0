"""The portfolio of examples/conic.py with two rules a fund manager might add,
each solved by the mixed-integer conic optimizer (a branch and bound over the
conic interior-point optimizer):

1. at most two assets held: binary z_j with x_j <= z_j and sum(z) <= 2;
2. a minimum buy-in: each x_j is either 0 or at least 0.3, stated as a
   disjunctive constraint per asset (x_j = 0) or (x_j - 0.3 >= 0), which needs
   no binary variable and no big-M.

Both keep the risk bound ||G'x|| <= gamma as an affine conic constraint over a
quadratic cone. The integer solution is printed, and checked against every
choice of held assets solved as a continuous problem. A termination code of
2052 says the search ended when the relative gap tolerance was met.

    .venv/bin/python examples/mixed_integer_conic.py
"""
from array import array
from itertools import combinations

import _qrn

MU = [0.10, 0.07, 0.05, 0.03]          # expected returns
G = [[0.30, 0.00, 0.00],                # Sigma = G G'
     [0.05, 0.20, 0.00],
     [0.02, 0.03, 0.10],
     [0.00, 0.01, 0.02]]
GAMMA = 0.15                            # largest standard deviation allowed
BUY_IN = 0.3
N, K = len(MU), len(G[0])
INF = 1e30
SOL_ITG = 2                             # the integer solution
BK_LOWER, BK_UPPER, BK_FIXED, BK_RANGED = 1, 2, 3, 4


def d(*v):
    return memoryview(array("d", v))


def i32(*v):
    return memoryview(array("i", v))


def i64(*v):
    return memoryview(array("q", v))


def portfolio(env, held=None, least=0.0):
    """Budget, returns and the risk cone over x_0..x_{N-1}; with `held`, those
    assets are at least `least` and the others fixed at 0."""
    task = _qrn.Task(env)
    task.putintparam_ii_3(0, 0)                                # no log
    task.appendvars_i_2(N)
    for j in range(N):
        if held is None or j in held:
            task.putvarbound_iidd_5(j, BK_LOWER, least if held is not None else 0.0, INF)
        else:
            task.putvarbound_iidd_5(j, BK_FIXED, 0.0, 0.0)
    task.putcslice_iiO_4(0, N, d(*MU))
    task.putobjsense_i_2(1)                                    # maximize
    task.appendcons_i_2(1)
    task.putarow_iOO_4(0, i32(*range(N)), d(*[1.0] * N))
    task.putconbound_iidd_5(0, BK_FIXED, 1.0, 1.0)
    # (gamma, G'x) in the quadratic cone
    task.appendafes_L_2(1 + K)
    task.putafeg_Ld_3(0, GAMMA)
    for k in range(K):
        for j in range(N):
            if G[j][k]:
                task.putafefentry_Lid_4(1 + k, j, G[j][k])
    _, dom = task.appendquadraticconedomain_L_2(1 + K)
    task.appendacc_LOO_4(dom, i64(*range(1 + K)), None)
    return task


def at_most_two(env):
    task = portfolio(env)
    task.appendvars_i_2(N)                                     # z_j, binary
    for j in range(N):
        task.putvarbound_iidd_5(N + j, BK_RANGED, 0.0, 1.0)
        task.putvartype_ii_3(N + j, 1)                         # integer
        _, i = task.getnumcon__1()
        task.appendcons_i_2(1)
        task.putarow_iOO_4(i, i32(j, N + j), d(1.0, -1.0))       # x_j - z_j <= 0
        task.putconbound_iidd_5(i, BK_UPPER, -INF, 0.0)
    _, i = task.getnumcon__1()
    task.appendcons_i_2(1)
    task.putarow_iOO_4(i, i32(*range(N, 2 * N)), d(*[1.0] * N))
    task.putconbound_iidd_5(i, BK_UPPER, -INF, 2.0)
    return task


def buy_in(env):
    task = portfolio(env)
    _, first = task.getnumafe__1()
    task.appendafes_L_2(2 * N)                                 # x_j and x_j - BUY_IN
    for j in range(N):
        task.putafefentry_Lid_4(first + 2 * j, j, 1.0)
        task.putafefentry_Lid_4(first + 2 * j + 1, j, 1.0)
        task.putafeg_Ld_3(first + 2 * j + 1, -BUY_IN)
    _, zero = task.appendrzerodomain_L_2(1)
    _, plus = task.appendrplusdomain_L_2(1)
    task.appenddjcs_L_2(N)
    for j in range(N):
        task.putdjc_LOOOO_6(j, i64(zero, plus), i64(first + 2 * j, first + 2 * j + 1), None, i64(1, 1))
    return task


def weights(task, which):
    xx = bytearray()
    task.getxx_iO_2(which, xx)
    return list(memoryview(xx).cast("d"))[:N]


def solve(name, task):
    code, trm = task.optimizetrm__1()
    _, solsta = task.getsolsta_i_2(SOL_ITG)
    _, pobj = task.getprimalobj_i_2(SOL_ITG)
    _, nodes = task.getlintinf_i_2(3)                          # QRN_LIINF_MIP_NODES
    print(f"{name}: response {code}, termination {trm}, integer solution status {solsta}, {nodes} nodes")
    print(f"  return {pobj:.6f}, weights " + " ".join(f"{v:.4f}" for v in weights(task, SOL_ITG)))
    return pobj


def best_by_enumeration(env, most, least):
    """The best return over every set of at most `most` held assets, each held
    one at least `least`, each set solved as a continuous problem."""
    best = -INF
    for size in range(1, most + 1):
        for held in combinations(range(N), size):
            task = portfolio(env, set(held), least)
            task.optimizetrm__1()
            _, sta = task.getsolsta_i_2(0)                     # interior solution
            if sta == 1:                                       # optimal
                best = max(best, task.getprimalobj_i_2(0)[1])
            task.dispose()
    return best


def main():
    env = _qrn.Env()
    a = solve("at most two assets", at_most_two(env))
    b = solve("buy-in of at least 0.3", buy_in(env))
    ea = best_by_enumeration(env, 2, 0.0)
    eb = best_by_enumeration(env, N, BUY_IN)
    print(f"by enumeration of the held assets: {ea:.6f} and {eb:.6f}")
    print(f"differences: {abs(a - ea):.1e} and {abs(b - eb):.1e}")


if __name__ == "__main__":
    main()
