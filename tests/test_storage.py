"""The problem storage seen through the module: capacity hints, and a model
written by columns, rows and triplets then read both ways."""

import pytest

from conftest import dv, iv, qv, sized

BIG = 2**31 - 1

def test_capacity_hints_are_accepted_and_cost_nothing(task):
    sized(task, 2, 3)
    for put, get, value in ((task.putmaxnumcon_i_2, task.getmaxnumcon__1, BIG),
                            (task.putmaxnumvar_i_2, task.getmaxnumvar__1, BIG),
                            (task.putmaxnumcone_i_2, task.getmaxnumcone__1, BIG),
                            (task.putmaxnumanz_L_2, task.getmaxnumanz64__1, BIG),
                            (task.putmaxnumqnz_L_2, task.getmaxnumqnz64__1, BIG)):
        assert put(value) == (0, None)
        assert get() == (0, value)
    code, _ = task.putmaxnumcon_i_2(1)  # below what the task holds: refused as before
    assert code != 0 and task.getmaxnumcon__1() == (0, BIG)
    assert task.appendcons_i_2(5) == (0, None) and task.getnumcon__1() == (0, 7)

def rows(task, m):
    out = []
    for i in range(m):
        sub, val = bytearray(), bytearray()
        code, nz = task.getarow_iOO_2(i, sub, val)
        assert code == 0
        out.append(list(zip(memoryview(sub).cast("i"), memoryview(val).cast("d"))))
    return out

@pytest.mark.parametrize("how", ["columns", "rows", "triplets"])
def test_one_model_three_ways(task, how):
    m, n = 4, 5
    sized(task, m, n)
    dense = {(i, j): float(1 + i + 10 * j) for i in range(m) for j in range(n) if (i + 2 * j) % 3 == 0}
    if how == "columns":
        sub = [i for j in range(n) for i in range(m) if (i, j) in dense]
        ptrb = [sum(1 for (i, jj) in dense if jj < j) for j in range(n)]
        ptre = ptrb[1:] + [len(sub)]
        val = [dense[i, j] for j in range(n) for i in range(m) if (i, j) in dense]
        assert task.putacolslice64_iiOOOO_7(0, n, qv(*ptrb), qv(*ptre), iv(*sub), dv(*val)) == (0, None)
    elif how == "rows":
        sub = [j for i in range(m) for j in range(n) if (i, j) in dense]
        ptrb = [sum(1 for (ii, j) in dense if ii < i) for i in range(m)]
        ptre = ptrb[1:] + [len(sub)]
        val = [dense[i, j] for i in range(m) for j in range(n) if (i, j) in dense]
        assert task.putarowslice64_iiOOOO_7(0, m, qv(*ptrb), qv(*ptre), iv(*sub), dv(*val)) == (0, None)
    else:
        keys = sorted(dense, key=lambda ij: (-ij[0], ij[1]))  # any order
        assert task.putaijlist64_OOO_4(iv(*[i for i, _ in keys]), iv(*[j for _, j in keys]),
                                       dv(*[dense[k] for k in keys])) == (0, None)
    assert rows(task, m) == [[(j, dense[i, j]) for j in range(n) if (i, j) in dense] for i in range(m)]
    # A row written after the columns, then a column read: both orientations agree.
    assert task.putarow_iOO_4(1, iv(4, 0), dv(7.0, 8.0)) == (0, None)
    sub, val = bytearray(), bytearray()
    assert task.getacol_iOO_2(4, sub, val) == (0, len([i for i in range(m) if (i, 4) in dense and i != 1]) + 1)
    assert (1, 7.0) in zip(memoryview(sub).cast("i"), memoryview(val).cast("d"))
    assert task.getaij_ii_3(1, 0) == (0, 8.0)
