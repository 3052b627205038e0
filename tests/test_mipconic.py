"""The mixed-integer conic optimizer through _qrn: a semidefinite variable
riding along with an integer one fills barx of the integer solution; the
example's two portfolios agree with enumeration of the held assets."""
import pathlib
import re
import subprocess
import sys

import pytest

import conicmodel as cm
from conftest import dv, iv, qv
from test_optimize import c

ITG = 2


def test_semidefinite_variable_with_an_integer_one(env):
    """min <C, X> s.t. trace X = x, x >= 1.3 integer: x = 2, X = 2 vv' for C's
    eigenvector v = (1, -1)/sqrt 2 of eigenvalue 1."""
    t = cm.new_task(env, 1, [0.0], free=False)
    assert t.putvarbound_iidd_5(0, c("BK_RANGED"), 1.3, 5.0) == (0, None)
    assert t.putvartype_ii_3(0, c("VAR_TYPE_INTEGER")) == (0, None)
    assert t.appendbarvars_O_2(iv(2)) == (0, None)
    _, cmat = t.appendsparsesymmat_iOOO_5(2, iv(0, 1, 1), iv(0, 0, 1), dv(2, 1, 2))
    _, eye = t.appendsparsesymmat_iOOO_5(2, iv(0, 1), iv(0, 1), dv(1, 1))
    assert t.putbarcj_iOO_4(0, qv(cmat), dv(1.0)) == (0, None)
    cm.add_rows(t, [[-1.0]], ["fx"], [0], [0])
    assert t.putbaraij_iiOO_5(0, 0, qv(eye), dv(1.0)) == (0, None)
    assert t.optimizetrm__1() == (0, 0)
    assert t.getsolsta_i_2(ITG) == (0, c("SOL_STA_INTEGER_OPTIMAL"))
    assert t.getprimalobj_i_2(ITG)[1] == pytest.approx(2.0, abs=1e-6)
    barx, bars = bytearray(), bytearray()
    assert t.getbarxj_iiO_3(ITG, 0, barx) == (0, None) and t.getbarsj_iiO_3(ITG, 0, bars) == (0, None)
    assert cm.vec(barx) == pytest.approx([1, -1, 1], abs=1e-6)
    assert not cm.vec(bars).any()
    assert t.getsolsta_i_2(0)[0] != 0  # no interior solution


def test_example_agrees_with_enumeration():
    example = pathlib.Path(__file__).parents[1] / "examples" / "mixed_integer_conic.py"
    out = subprocess.run([sys.executable, str(example)], capture_output=True, text=True, timeout=120, check=True).stdout
    assert out.count("integer solution status 9") == 2, out
    diffs = re.search(r"differences: (\S+) and (\S+)", out)
    assert diffs and max(float(diffs[1]), float(diffs[2])) < 1e-7, out
