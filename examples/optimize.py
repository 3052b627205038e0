"""Optimizing with _qrn: a mixed-integer problem, a quadratic one, and a progress
callable that stops a run. Results are read from the information items.

    .venv/bin/python examples/optimize.py
"""
from array import array

import _qrn

# Constants of lib/include/quarn.h used here.
BK_UPPER, BK_RANGED, BK_FREE = 2, 4, 0
VAR_TYPE_INTEGER = 1
OBJECTIVE_SENSE_MAXIMIZE = 1
IPAR_LOG_LEVEL, IPAR_PRESOLVE, DPAR_CALLBACK_INTERVAL = 0, 4, 26
DINF_INTERIOR_PRIMAL_OBJ, DINF_MIP_OBJ, DINF_MIP_OBJ_BOUND = 72, 52, 53
IINF_SPX_ITER, IINF_INTEGER_SOL_STATUS = 9, 90
CALLBACK_NEW_INT_SOLUTION, CALLBACK_SIMPLEX_ITERATION = 30, 21
RES_TRM_USER_CALLBACK = 2055
INF = float("inf")


def mv(code, values):
    return memoryview(array(code, values))


def knapsack(env, n=30):
    """max sum v_j x_j subject to sum w_j x_j <= 4n, x binary."""
    t = _qrn.Task(env)
    v = [10 + (j * 37) % 23 for j in range(n)]
    w = [5 + (j * 53) % 19 for j in range(n)]
    t.inputdata64_iiOdOOOOOOOOOO_15(1, n, mv("d", v), 0.0, mv("q", range(n)), mv("q", range(1, n + 1)),
                                    mv("i", [0] * n), mv("d", w), mv("i", [BK_UPPER]), mv("d", [-INF]),
                                    mv("d", [4.0 * n]), mv("i", [BK_RANGED] * n), mv("d", [0.0] * n),
                                    mv("d", [1.0] * n))
    t.putobjsense_i_2(OBJECTIVE_SENSE_MAXIMIZE)
    t.putvartypelist_OO_3(mv("i", range(n)), mv("i", [VAR_TYPE_INTEGER] * n))
    return t


def mip(env):
    t = knapsack(env)
    found = []
    t.set_Progress(lambda code: found.append(code) if code == CALLBACK_NEW_INT_SOLUTION else None)
    code, trm = t.optimizetrm__1()
    print(f"MIP: response {code}, termination {trm}, status {t.getintinf_i_2(IINF_INTEGER_SOL_STATUS)[1]}, "
          f"best {t.getdouinf_i_2(DINF_MIP_OBJ)[1]:g}, bound {t.getdouinf_i_2(DINF_MIP_OBJ_BOUND)[1]:g}, "
          f"{len(found)} improving solutions")
    t.dispose()


def qp(env):
    """min x^2 + y^2 - x - y subject to x + y <= 0.5: x = y = 0.25, objective -0.375."""
    t = _qrn.Task(env)
    t.inputdata64_iiOdOOOOOOOOOO_15(1, 2, mv("d", [-1.0, -1.0]), 0.0, mv("q", [0, 1]), mv("q", [1, 2]),
                                    mv("i", [0, 0]), mv("d", [1.0, 1.0]), mv("i", [BK_UPPER]), mv("d", [-INF]),
                                    mv("d", [0.5]), mv("i", [BK_FREE] * 2), mv("d", [-INF] * 2), mv("d", [INF] * 2))
    t.putqobj_OOO_4(mv("i", [0, 1]), mv("i", [0, 1]), mv("d", [2.0, 2.0]))  # lower triangle of Q, 1/2 x'Qx
    t.set_Stream(0, lambda text: print("  | " + text, end=""))
    print("QP:", t.optimizetrm__1(), "objective", round(t.getdouinf_i_2(DINF_INTERIOR_PRIMAL_OBJ)[1], 9))
    t.dispose()


def stopped(env):
    t = knapsack(env, 200)
    t.putintparam_ii_3(IPAR_PRESOLVE, 0)
    t.putdouparam_id_3(DPAR_CALLBACK_INTERVAL, 0.0)
    t.putvartypelist_OO_3(mv("i", range(200)), mv("i", [0] * 200))  # continuous again: an LP

    def info(code, douinf, intinf, lintinf):
        return code == CALLBACK_SIMPLEX_ITERATION  # enough after the first iteration

    t.set_InfoCallback(info)
    code, trm = t.optimizetrm__1()
    print(f"Stopped: response {code}, termination {trm} (stopped by the callback: {trm == RES_TRM_USER_CALLBACK}), "
          f"after {t.getintinf_i_2(IINF_SPX_ITER)[1]} iterations")
    t.dispose()


if __name__ == "__main__":
    env = _qrn.Env()
    mip(env)
    qp(env)
    stopped(env)
    env.dispose()
