"""Problem files solved: one LP stated in MPS and in LP gives one optimum, a
small conic problem read from CBF solves to its known optimum, the reports
that describe a solved task reach a stream callable, and the example that
solves a file."""
import math
import pathlib
import subprocess
import sys

import pytest

import _qrn
from test_optimize import c

SOL_ITR, SOL_BAS = 0, 1

# maximize 3x + 2y + 4z  s.t.  x + y + 2z <= 4,  2x + z <= 5 (named cap),
# x + 3y >= 1 (ranged to 9), 0 <= x <= 3, y free but <= 10, z >= 0: optimum 10.5
MPS = """NAME          SMALL
OBJSENSE
    MAX
ROWS
 N  profit
 L  c1
 L  cap
 G  c3
COLUMNS
    x         profit    3.0          c1        1.0
    x         cap       2.0          c3        1.0
    y         profit    2.0          c1        1.0
    y         c3        3.0
    z         profit    4.0          c1        2.0
    z         cap       1.0
RHS
    rhs       c1        4.0          cap       5.0
    rhs       c3        1.0
RANGES
    rng       c3        8.0
BOUNDS
 UP bnd       x         3.0
 MI bnd       y
 UP bnd       y         10.0
ENDATA
"""
LP = """maximize
 profit: 3 x + 2 y + 4 z
subject to
 c1: x + y + 2 z <= 4
 cap: 2 x + z <= 5
 c3: 1 <= x + 3 y <= 9
bounds
 0 <= x <= 3
 -inf <= y <= 10
end
"""

# minimize t + u  s.t.  (t, 3, 4) in Q (t >= 5)  and  (u, 1, v) in EXP with v = 1
# (u >= e): optimum 5 + e. Rows are affine in x = (t, u, v).
CBF = """VER
3
OBJSENSE
MIN
VAR
3 1
F 3
CON
7 3
Q 3
EXP 3
L= 1
OBJACOORD
2
0 1
1 1
ACOORD
4
0 0 1
3 1 1
5 2 1
6 2 1
BCOORD
4
1 3
2 4
4 1
6 -1
"""


def solve(task):
    code, trm = task.optimizetrm__1()
    assert code == 0 and trm == 0
    return task.getprimalobj_i_2(SOL_BAS)[1]


def test_mps_and_lp_give_one_optimum(env, tmp_path):
    objs = []
    for name, text in [("small.mps", MPS), ("small.lp.gz", None), ("small.lp", LP)]:
        path = tmp_path / name
        if text is None:
            import gzip
            path.write_bytes(gzip.compress(LP.encode()))
        else:
            path.write_text(text)
        t = _qrn.Task(env)
        assert t.readdataautoformat_s_2(str(path)) == (0, None), name
        objs.append(solve(t))
        assert t.getsolsta_i_2(SOL_BAS) == (0, c("SOL_STA_OPTIMAL"))
        t.dispose()
    assert objs[0] == pytest.approx(10.5) and objs[1] == pytest.approx(objs[0]) and objs[2] == pytest.approx(objs[0])


def test_cbf_conic_problem_solves_to_its_optimum(task, tmp_path):
    (tmp_path / "small.cbf").write_text(CBF)
    assert task.readdataautoformat_s_2(str(tmp_path / "small.cbf")) == (0, None)
    assert task.getnumacc__1() == (0, 2) and task.getnumcon__1() == (0, 1)
    assert task.optimizetrm__1()[0] == 0
    assert task.getprimalobj_i_2(SOL_ITR)[1] == pytest.approx(5 + math.e, rel=1e-6)


def test_reports_of_a_solved_task_reach_the_stream(task, env):
    assert task.readlpstring_s_2(LP) == (0, None)
    lines = []
    task.set_Stream(1, lines.append)
    assert task.sensitivityreport_i_2(1)[0] == c("RES_ERR_NO_BASIS")  # not solved yet
    solve(task)
    for call in [lambda: task.sensitivityreport_i_2(1), lambda: task.solutionsummary_i_2(1),
                 lambda: task.optimizersummary_i_2(1), lambda: task.analyzesolution_ii_3(1, SOL_BAS)]:
        assert call() == (0, None)
    text = "".join(lines)
    assert "Sensitivity report" in text and "Objective coefficients" in text and "cap" in text
    assert "Solution status : OPTIMAL" in text and "Primal objective: 10.5" in text and "Largest dual violations  : constraints 0.0e+00, variables 0.0e+00" in text
    assert "Termination         : QRN_RES_OK" in text
    assert task.infeasibilityreport_ii_3(1, SOL_BAS)[0] == c("RES_ERR_NO_CERTIFICATE")
    # An infeasible problem: x + y >= 5 and x + y <= 3; the report names both rows.
    bad = _qrn.Task(env)
    assert bad.readlpstring_s_2("minimize\n obj: x\nsubject to\n lo: x + y >= 5\n hi: x + y <= 3\n"
                                "bounds\n x <= 10\n y <= 10\nend\n") == (0, None)
    out = []
    bad.set_Stream(1, out.append)
    assert bad.optimizetrm__1()[0] == 0
    assert bad.getsolsta_i_2(SOL_BAS) == (0, c("SOL_STA_PRIM_INFEAS_CER"))
    assert bad.infeasibilityreport_ii_3(1, SOL_BAS) == (0, None)
    report = "".join(out)
    assert "Infeasibility report" in report and "lo" in report and "hi" in report
    assert bad.infeasibilityreport_ii_3(9, SOL_BAS)[0] == c("RES_ERR_STREAM")
    bad.dispose()


def test_example_solves_a_file(tmp_path):
    (tmp_path / "small.mps").write_text(MPS)
    example = pathlib.Path(__file__).parents[1] / "examples" / "solve_file.py"
    run = subprocess.run([sys.executable, str(example), str(tmp_path / "small.mps")], capture_output=True, text=True,
                         timeout=60)
    assert run.returncode == 0, run.stderr
    assert "Sensitivity report" in run.stdout
    sol = (tmp_path / "small.sol").read_text()
    assert sol.startswith("sol 1\nsolution basic\n") and "solsta OPTIMAL" in sol
