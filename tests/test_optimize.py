"""Optimization through _qrn: statuses, MIP, QP, callbacks, the log, the
analyses (basis, sensitivity, repair, infeasible subproblem) and threads.

Most statuses are read back through the information items (the summary values
of each stored solution); the last tests read whole solutions."""
import pathlib
import re
import threading
from array import array

import pytest

import _qrn
from conftest import dv, iv, qv, doubles, ints, raises


def header_constants():
    text = (pathlib.Path(__file__).parents[1] / "lib" / "include" / "quarn.h").read_text()
    names = dict((m[0], int(m[1])) for m in re.findall(r"\b(QRN_\w+) = (-?\d+)", text))
    names.update((m[0], int(m[1])) for m in re.findall(r"X\((QRN_\w+), (\d+),", text))
    return names


C = header_constants()
INF = 1e30


def c(name):
    return C["QRN_" + name]


def load(task, rows, cost, cons, vars_, maximize=False):
    """rows: dense rows of A; cons/vars_: (key name, lower, upper) per item."""
    m, n = len(rows), len(cost)
    ptrb, ptre, sub, val = [], [], [], []
    for j in range(n):
        ptrb.append(len(sub))
        for i in range(m):
            if rows[i][j]:
                sub.append(i)
                val.append(rows[i][j])
        ptre.append(len(sub))
    bkc = iv(*(c("BK_" + k) for k, _, _ in cons))
    bkx = iv(*(c("BK_" + k) for k, _, _ in vars_))
    res = task.inputdata64_iiOdOOOOOOOOOO_15(
        m, n, dv(*cost), 0.0, qv(*ptrb), qv(*ptre), iv(*sub), dv(*val),
        bkc, dv(*(b[1] for b in cons)), dv(*(b[2] for b in cons)),
        bkx, dv(*(b[1] for b in vars_)), dv(*(b[2] for b in vars_)))
    assert res == (0, None)
    sense = c("OBJECTIVE_SENSE_MAXIMIZE" if maximize else "OBJECTIVE_SENSE_MINIMIZE")
    assert task.putobjsense_i_2(sense) == (0, None)
    return task


def small_lp(task, maximize=False):
    """min -3x - 2y + z, x + y + z <= 4, x + 3y <= 9, 0 <= x <= 3, y, z >= 0: -11 at (3, 1, 0)."""
    s = -1 if maximize else 1
    return load(task, [[1, 1, 1], [1, 3, 0]], [-3 * s, -2 * s, s],
                [("UPPER", -INF, 4), ("UPPER", -INF, 9)],
                [("RANGED", 0, 3), ("LOWER", 0, INF), ("LOWER", 0, INF)], maximize)


def infeasible_lp(task):
    """x + y >= 5 and x + y <= 3 with 0 <= x, y <= 10."""
    return load(task, [[1, 1], [1, 1]], [1, 1], [("LOWER", 5, INF), ("UPPER", -INF, 3)],
                [("RANGED", 0, 10), ("RANGED", 0, 10)])


def dinf(task, name):
    code, value = task.getdouinf_i_2(c("DINF_" + name))
    assert code == 0
    return value


def iinf(task, name):
    code, value = task.getintinf_i_2(c("IINF_" + name))
    assert code == 0
    return value


def optimize(task):
    code, trm = task.optimizetrm__1()
    assert code == 0
    return trm


# ---- statuses --------------------------------------------------------------------

@pytest.mark.parametrize("algorithm", ["AUTO", "PRIMAL_SIMPLEX", "DUAL_SIMPLEX", "IPM"])
@pytest.mark.parametrize("maximize", [False, True])
def test_lp_optimum(task, algorithm, maximize):
    small_lp(task, maximize)
    task.putintparam_ii_3(c("IPAR_ALGORITHM"), c("ALGORITHM_" + algorithm))
    assert optimize(task) == c("RES_OK")
    assert iinf(task, "BASIC_SOL_STATUS") == c("SOL_STA_OPTIMAL")
    expect = 11 if maximize else -11
    assert dinf(task, "BASIC_PRIMAL_OBJ") == pytest.approx(expect)
    assert dinf(task, "BASIC_DUAL_OBJ") == pytest.approx(expect)
    if algorithm == "IPM":
        assert iinf(task, "INTERIOR_SOL_STATUS") == c("SOL_STA_OPTIMAL")
        assert dinf(task, "INTERIOR_PRIMAL_OBJ") == pytest.approx(expect, rel=1e-7)


def test_infeasible_and_unbounded_lps_carry_certificates(task, env):
    infeasible_lp(task)
    assert optimize(task) == 0
    assert iinf(task, "BASIC_SOL_STATUS") == c("SOL_STA_PRIM_INFEAS_CER")
    assert dinf(task, "BASIC_DUAL_OBJ") > 0  # the certificate's value
    t = load(_qrn.Task(env), [[1, -1]], [-1, -1], [("UPPER", -INF, 1)], [("LOWER", 0, INF)] * 2)
    t.putintparam_ii_3(c("IPAR_ALGORITHM"), c("ALGORITHM_IPM"))
    assert optimize(t) == 0
    assert iinf(t, "INTERIOR_SOL_STATUS") == c("SOL_STA_DUAL_INFEAS_CER")
    assert dinf(t, "INTERIOR_PRIMAL_OBJ") < 0  # c'd of the ray


def test_qp_optimum_against_hand_solution(task):
    # min x^2 + y^2 - x - y, x + y <= 0.5: x = y = 1/4, objective -3/8
    load(task, [[1, 1]], [-1, -1], [("UPPER", -INF, 0.5)], [("FREE", -INF, INF)] * 2)
    assert task.putqobj_OOO_4(iv(0, 1), iv(0, 1), dv(2.0, 2.0)) == (0, None)
    assert optimize(task) == 0
    assert iinf(task, "INTERIOR_SOL_STATUS") == c("SOL_STA_OPTIMAL")
    assert dinf(task, "INTERIOR_PRIMAL_OBJ") == pytest.approx(-0.375, abs=1e-7)
    task.putintparam_ii_3(c("IPAR_ALGORITHM"), c("ALGORITHM_DUAL_SIMPLEX"))
    assert task.optimizetrm__1() == (c("RES_ERR_OPT_COMBINATION"), None)


def test_mip_optimum_and_incumbents(task):
    n = 25
    rows = [[5 + (j * 53) % 19 for j in range(n)]]
    load(task, rows, [10 + (j * 37) % 23 for j in range(n)], [("UPPER", -INF, 4.0 * n)],
         [("RANGED", 0, 1)] * n, maximize=True)
    assert task.putvartypelist_OO_3(iv(*range(n)), iv(*[c("VAR_TYPE_INTEGER")] * n)) == (0, None)
    task.putdouparam_id_3(c("DPAR_MIP_REL_GAP"), 0.0)
    codes = []
    task.set_Progress(codes.append)
    assert optimize(task) == 0
    assert iinf(task, "INTEGER_SOL_STATUS") == c("SOL_STA_INTEGER_OPTIMAL")
    assert codes.count(c("CALLBACK_NEW_INT_SOLUTION")) >= 1
    assert codes[0] == c("CALLBACK_BEGIN") and codes[-1] == c("CALLBACK_END")
    best = dinf(task, "MIP_OBJ")
    assert dinf(task, "INTEGER_PRIMAL_OBJ") == pytest.approx(best)
    assert dinf(task, "MIP_OBJ_BOUND") >= best - 1e-6
    assert dinf(task, "INTEGER_INT_VIOL") < 1e-6


# ---- callbacks and the log -----------------------------------------------------------

def test_progress_and_info_callables_stop_the_run(task):
    small_lp(task)
    task.putdouparam_id_3(c("DPAR_CALLBACK_INTERVAL"), 0.0)
    task.putintparam_ii_3(c("IPAR_PRESOLVE"), c("OFF"))
    task.set_Progress(lambda code: code == c("CALLBACK_SIMPLEX_ITERATION"))
    assert task.optimizetrm__1() == (0, c("RES_TRM_USER_CALLBACK"))
    assert iinf(task, "STOPPED_BY_CALLBACK") == 1
    task.remove_Progress()
    seen = []

    def info(code, douinf, intinf, lintinf):
        seen.append((code, intinf[c("IINF_SPX_ITER")], douinf[c("DINF_TIME_TOTAL")]))
        return code == c("CALLBACK_SIMPLEX_ITERATION") and intinf[c("IINF_SPX_ITER")] >= 1

    task.set_InfoCallback(info)
    assert task.optimizetrm__1() == (0, c("RES_TRM_USER_CALLBACK"))
    stops = [s for s in seen if s[0] == c("CALLBACK_SIMPLEX_ITERATION")]
    assert stops and stops[-1][1] >= 1 and stops[-1][2] >= 0
    task.remove_InfoCallback()
    assert task.optimizetrm__1() == (0, 0)


def test_exception_from_a_callable_comes_out_of_optimizetrm(task):
    small_lp(task)

    def boom(code):
        raise KeyError("stop here")

    task.set_Progress(boom)
    with pytest.raises(KeyError, match="stop here"):
        task.optimizetrm__1()
    task.remove_Progress()
    assert task.optimizetrm__1() == (0, 0)  # the task is still usable


def test_log_reaches_a_stream_callable_and_level_0_is_silent(task):
    small_lp(task)
    lines = []
    task.set_Stream(c("STREAM_LOG"), lines.append)
    assert optimize(task) == 0
    log = "".join(lines)
    assert "Variables           : 3" in log and "dual simplex" in log
    assert "Optimizer terminated: normal" in log and "Basic solution" in log
    lines.clear()
    task.putintparam_ii_3(c("IPAR_LOG_LEVEL"), 0)
    assert optimize(task) == 0
    assert lines == []


# ---- analyses --------------------------------------------------------------------

def test_basis_services(task):
    small_lp(task)
    assert task.basiscond__1()[0] == c("RES_ERR_NO_BASIS")
    optimize(task)
    basis = bytearray()
    assert task.initbasissolve_O_1(basis) == (0, None)
    assert ints(basis) == [1, 3]  # the slack of row 1 and y (slacks first)
    with raises("Array is too short in argument basis"):
        task.initbasissolve_O_2(memoryview(array("i", [0, 0, 0])))
    sub, val = array("i", [0, 1]), array("d", [1.0, 2.0])
    assert task.solvewithbasis_iiOO_5(1, 2, memoryview(sub), memoryview(val)) == (0, 2)
    assert list(val) == pytest.approx([5.0, -1.0])  # B'x = (1, 2)
    with raises("Array is too short in argument val"):
        task.solvewithbasis_iiOO_5(0, 1, memoryview(sub), dv(1.0))
    assert task.basiscond__1() == (0, (pytest.approx(4.0), pytest.approx(4.0)))


def test_sensitivity(task):
    small_lp(task)
    optimize(task)
    outs = [bytearray() for _ in range(8)]
    res = task.primalsensitivity_OOOOOOOOOOOO_5(iv(0), iv(c("MARK_UP")), iv(0), iv(c("MARK_UP")), *outs)
    assert res == (0, None)
    lpi, rpi, lri, rri, lpj, rpj, lrj, rrj = map(doubles, outs)
    assert (lpi, rpi, lri, rri) == ([pytest.approx(-2)], [pytest.approx(-2)], [pytest.approx(1)], [pytest.approx(1)])
    assert (lpj, lrj, rrj) == ([pytest.approx(-1)], [pytest.approx(1.5)], [pytest.approx(1)])
    left, right = array("d", [0.0] * 3), array("d", [0.0] * 3)
    res = task.dualsensitivity_OOOOO_6(iv(0, 1, 2), None, None, memoryview(left), memoryview(right))
    assert res == (0, None)
    assert left[1] == pytest.approx(1) and right[1] == pytest.approx(2)  # c_y in [-3, 0]
    # lengths come from the index views; None gives zero-length outputs
    outs = [bytearray(b"xx") for _ in range(4)]
    assert task.dualsensitivity_OOOOO_2(None, *outs) == (0, None)
    assert all(len(b) == 0 for b in outs)
    outs = [bytearray() for _ in range(8)]
    code, _ = task.primalsensitivity_OOOOOOOOOOOO_5(None, iv(1, 1, 1), None, None, *outs)
    assert code != 0 and [len(b) for b in outs] == [24] * 4 + [0] * 4
    assert task.primalsensitivity_OOOOOOOOOOOO_13(*[None] * 12) == (0, None)
    with raises("Mismatching lengths of arguments subi,marki"):
        task.primalsensitivity_OOOOOOOOOOOO_13(iv(0), iv(1, 1), *[None] * 10)


def test_repair_and_infeasible_subproblem(task):
    infeasible_lp(task)
    assert task.putconname_is_3(0, "atleast") == (0, None)
    assert task.getinfeasiblesubproblem_i_2(c("SOL_BAS")) == (c("RES_ERR_NO_CERTIFICATE"), None)
    optimize(task)
    code, sub = task.getinfeasiblesubproblem_i_2(c("SOL_BAS"))
    assert code == 0 and isinstance(sub, _qrn.Task)
    assert sub.getconbound_i_2(0) == (0, (c("BK_LOWER"), 5.0, pytest.approx(float("inf"))))
    assert sub.getvarbound_i_2(0)[1][0] == c("BK_FREE")
    assert sub.getconname_iO_2(0, bytearray())[0] == 0
    lines = []
    sub.set_Stream(c("STREAM_LOG"), lines.append)  # the new Task forwards its streams
    assert sub.optimizetrm__1() == (0, 0) and lines
    sub.dispose()
    # weights: the lower side of row 0 is hard, so row 1 is relaxed to 5
    assert task.primalrepair_OOOO_5(dv(-1, 1), dv(1, 1), None, None) == (0, None)
    assert task.getconbound_i_2(1)[1][2] == pytest.approx(5)
    assert dinf(task, "REPAIR_PENALTY") == pytest.approx(2)
    assert iinf(task, "BASIC_SOL_STATUS") == c("SOL_STA_OPTIMAL")
    with raises("Array is too short in argument wlx"):
        task.primalrepair_OOOO_5(None, None, dv(1.0), None)


def test_task_wide_operations(task):
    task.appendcons_i_2(2)
    assert task.resizetask_iiiLL_6(10, 10, 3, 100, 100) == (0, None)
    assert task.getmaxnumcon__1() == (0, 10)
    assert task.resizetask_iiiLL_6(1, 10, 3, 100, 100) == (c("RES_ERR_MAX_CAPACITY"), None)
    assert task.commitchanges__1() == (0, None)
    task.putintparam_ii_3(c("IPAR_LOG_LEVEL"), 3)
    assert task.setdefaults__1() == (0, None)
    assert task.getintparam_i_2(c("IPAR_LOG_LEVEL")) == (0, 1)


# ---- threads ---------------------------------------------------------------------

def transport_lp(task, k):
    """A k x k transportation problem (supplies = demands = k): optimum known in closed form."""
    rows, cost = [], []
    n = k * k
    for i in range(k):
        rows.append([1 if j // k == i else 0 for j in range(n)])
    for i in range(k):
        rows.append([1 if j % k == i else 0 for j in range(n)])
    cost = [1 + ((j // k) - (j % k)) ** 2 for j in range(n)]
    load(task, rows, cost, [("FIXED", k, k)] * (2 * k), [("LOWER", 0, INF)] * n)
    return k * k  # the diagonal, at cost 1 per unit


def test_two_threads_optimize_two_tasks_at_once(env):
    tasks = [_qrn.Task(env) for _ in range(2)]
    expect = [transport_lp(t, 30) for t in tasks]
    started = threading.Barrier(2)
    results = [None, None]

    def work(k):
        started.wait()
        for _ in range(3):
            results[k] = tasks[k].optimizetrm__1()

    threads = [threading.Thread(target=work, args=(k,)) for k in range(2)]
    for th in threads:
        th.start()
    for th in threads:
        th.join()
    for t, e, r in zip(tasks, expect, results):
        assert r == (0, 0)
        assert dinf(t, "BASIC_PRIMAL_OBJ") == pytest.approx(e)
        t.dispose()


# ---- solutions read back through the solution methods ---------------------------------

def vectors(task, which):
    arrays = [bytearray() for _ in range(11)]
    code, (prosta, solsta) = task.getsolution_iOOOOOOOOOOO_2(which, *arrays)
    assert code == 0
    keys = {k: ints(b) for k, b in zip(("skc", "skx", "skn"), arrays[:3])}
    vals = {k: doubles(b) for k, b in zip(("xc", "xx", "y", "slc", "suc", "slx", "sux", "snx"), arrays[3:])}
    return prosta, solsta, keys, vals


def test_optimal_lp_solution_satisfies_its_optimality_conditions(task):
    small_lp(task)
    assert optimize(task) == 0
    prosta, solsta, keys, v = vectors(task, c("SOL_BAS"))
    assert (prosta, solsta) == (c("PRO_STA_PRIM_AND_DUAL_FEAS"), c("SOL_STA_OPTIMAL"))
    assert v["xx"] == pytest.approx([3, 1, 0]) and v["xc"] == pytest.approx([4, 6])
    assert keys["skx"][0] == c("SK_AT_UPPER") and keys["skx"][1] == c("SK_BASIS")
    A, cost = [[1, 1, 1], [1, 3, 0]], [-3, -2, 1]
    # y = slc - suc and c - A'y - slx + sux = 0, with every multiplier >= 0
    assert [a - b for a, b in zip(v["slc"], v["suc"])] == pytest.approx(v["y"])
    for j in range(3):
        residual = cost[j] - sum(A[i][j] * v["y"][i] for i in range(2)) - v["slx"][j] + v["sux"][j]
        assert residual == pytest.approx(0, abs=1e-9)
    assert min(v["slc"] + v["suc"] + v["slx"] + v["sux"]) >= -1e-9
    assert task.getprimalobj_i_2(c("SOL_BAS")) == (0, pytest.approx(-11))
    redcosts = bytearray()
    assert task.getreducedcosts_iiiO_4(c("SOL_BAS"), 0, 3, redcosts) == (0, None)
    assert doubles(redcosts) == pytest.approx([a - b for a, b in zip(v["slx"], v["sux"])])
    # changing the problem keeps the values but forgets what they meant
    task.appendcons_i_2(1)
    assert task.getsolsta_i_2(c("SOL_BAS")) == (0, c("SOL_STA_UNKNOWN"))


def test_farkas_certificate_read_back_verifies(task):
    infeasible_lp(task)
    assert optimize(task) == 0
    _, solsta, _, v = vectors(task, c("SOL_BAS"))
    assert solsta == c("SOL_STA_PRIM_INFEAS_CER")
    # A'y = slx - sux, and the dual value of the bounds is positive
    y, slx, sux = v["y"], v["slx"], v["sux"]
    for j in range(2):
        assert y[0] + y[1] == pytest.approx(slx[j] - sux[j], abs=1e-9)
    lc, uc, lx, ux = [5, -INF], [INF, 3], [0, 0], [10, 10]
    value = (sum(s * b for s, b in zip(v["slc"], lc) if s) - sum(s * b for s, b in zip(v["suc"], uc) if s)
             + sum(s * b for s, b in zip(slx, lx)) - sum(s * b for s, b in zip(sux, ux)))
    assert value > 1e-9
