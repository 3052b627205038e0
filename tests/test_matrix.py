"""The constraint matrix through _qrn: every way of writing and reading A
checked against a model, the in-place and allocating variants, the argument
messages of the matrix methods, and library failures as response codes."""
import random
from array import array

import pytest

from conftest import doubles, dv, ints, iv, qv

ERR_NULL_POINTER, ERR_TOO_SMALL = 1002, 1006
ERR_INDEX_CON, ERR_INDEX_VAR, ERR_SLICE, ERR_DUP_INDEX = 1100, 1101, 1103, 1104
ERR_NEGATIVE_COUNT, ERR_PTR_RANGE, ERR_MAX_CAPACITY, ERR_VALUE_NAN = 1105, 1106, 1107, 1108
ERR_BOUND_KEY = 1200
FREE, LOWER, UPPER, FIXED, RANGED = range(5)
INF = float("inf")

# A = [1 0 2 0; 0 3 0 0; 4 0 5 6], as {(i, j): value}
A = {(0, 0): 1.0, (2, 0): 4.0, (1, 1): 3.0, (0, 2): 2.0, (2, 2): 5.0, (2, 3): 6.0}


def raises(msg):
    return pytest.raises(TypeError, match="^" + msg + "$")


def zeros(code, n):
    return array(code, [0] * n)


@pytest.fixture
def a(task):
    task.appendcons_i_2(3)
    task.appendvars_i_2(4)
    # columns in compressed form; the pointers leave a gap that is never read
    assert task.putacolslice64_iiOOOO_7(
        0, 4, qv(0, 2, 3, 6), qv(2, 3, 5, 7), iv(0, 2, 1, 0, 2, 99, 2), dv(1, 4, 3, 2, 5, 99, 6)) == (0, None)
    return task


def read_all(t):
    """A read back by triplets, by rows and by columns; all three must agree."""
    numcon, numvar = t.getnumcon__1()[1], t.getnumvar__1()[1]
    si, sj, sv = bytearray(), bytearray(), bytearray()
    assert t.getatrip_OOO_1(si, sj, sv) == (0, None)
    trips = list(zip(ints(si), ints(sj), doubles(sv)))
    assert trips == sorted(trips, key=lambda e: (e[1], e[0]))  # column order
    by_trip = {(i, j): v for i, j, v in trips}
    by_row = {}
    for i in range(numcon):
        sub, val = bytearray(), bytearray()
        code, nz = t.getarow_iOO_2(i, sub, val)
        assert code == 0 and ints(sub) == sorted(ints(sub)) and nz == len(sub) // 4
        by_row.update({(i, j): v for j, v in zip(ints(sub), doubles(val))})
    by_col = {}
    for j in range(numvar):
        sub, val = bytearray(), bytearray()
        assert t.getacol_iOO_2(j, sub, val)[0] == 0
        by_col.update({(i, j): v for i, v in zip(ints(sub), doubles(val))})
    assert by_trip == by_row == by_col
    assert t.getnumanz64__1() == (0, len(by_trip)) and t.getnumanz__1() == (0, len(by_trip))
    return by_trip


def test_reading_in_place_with_arrays(a):
    t = a
    assert read_all(t) == A
    sub, val = zeros("i", 3), zeros("d", 3)
    assert t.getarow_iOO_4(2, memoryview(sub), memoryview(val)) == (0, 3)
    assert list(sub) == [0, 2, 3] and list(val) == [4.0, 5.0, 6.0]
    assert t.getaij_ii_3(2, 2) == (0, 5.0) and t.getaij_ii_3(1, 2) == (0, 0.0)

    ptrb, ptre, sub, val = zeros("q", 2), zeros("q", 2), zeros("i", 4), zeros("d", 4)
    views = [memoryview(x) for x in (ptrb, ptre, sub, val)]
    assert t.getarowslice64_iiOOOO_7(1, 3, *views) == (0, None)
    assert (list(ptrb), list(ptre)) == ([0, 1], [1, 4])
    assert list(sub) == [1, 0, 2, 3] and list(val) == [3.0, 4.0, 5.0, 6.0]
    ptrb, ptre, sub, val = zeros("q", 2), zeros("q", 2), zeros("i", 3), zeros("d", 3)
    views = [memoryview(x) for x in (ptrb, ptre, sub, val)]
    assert t.getacolslice64_iiOOOO_7(2, 4, *views) == (0, None)
    assert (list(ptrb), list(ptre), list(sub)) == ([0, 2], [2, 3], [0, 2, 2])

    si, sj, sv = zeros("i", 4), zeros("i", 4), zeros("d", 4)
    assert t.getarowslicetrip_iiOOO_6(1, 3, memoryview(si), memoryview(sj), memoryview(sv)) == (0, None)
    assert list(zip(si, sj, sv)) == [(1, 1, 3.0), (2, 0, 4.0), (2, 2, 5.0), (2, 3, 6.0)]  # row order
    si, sj, sv = zeros("i", 3), zeros("i", 3), zeros("d", 3)
    assert t.getacolslicetrip_iiOOO_6(0, 2, memoryview(si), memoryview(sj), memoryview(sv)) == (0, None)
    assert list(zip(si, sj, sv)) == [(0, 0, 1.0), (2, 0, 4.0), (1, 1, 3.0)]  # column order

    assert t.getacolslicenumnz64_ii_3(1, 4) == (0, 4)
    assert t.getarowslicenumnz64_ii_3(0, 2) == (0, 3)
    assert t.getapiecenumnz_iiii_5(0, 3, 2, 4) == (0, 3)
    assert t.getacolnumnz_i_2(0) == (0, 2) and t.getarownumnz_i_2(1) == (0, 1)


def test_numpy_arrays_both_ways(a):
    np = pytest.importorskip("numpy")
    t = a
    si, sj, sv = np.zeros(6, np.int32), np.zeros(6, np.int32), np.zeros(6)
    assert t.getatrip_OOO_4(memoryview(si), memoryview(sj), memoryview(sv)) == (0, None)
    assert {(i, j): v for i, j, v in zip(si.tolist(), sj.tolist(), sv.tolist())} == A
    assert t.putarow_iOO_4(1, memoryview(np.array([3, 0], np.int32)), memoryview(np.array([7.0, 8.0]))) == (0, None)
    # a larger column, written in random order, comes back sorted
    t.appendcons_i_2(100_000)
    rows = np.random.default_rng(5).permutation(100_003).astype(np.int32)
    vals = rows.astype(np.float64) + 0.5
    assert t.putacol_iOO_4(3, memoryview(rows), memoryview(vals)) == (0, None)
    sub, val = np.zeros(100_003, np.int32), np.zeros(100_003)
    assert t.getacol_iOO_4(3, memoryview(sub), memoryview(val)) == (0, 100_003)
    assert (sub == np.arange(100_003)).all() and (val == sub + 0.5).all()
    sub, val = bytearray(), bytearray()
    assert t.getarow_iOO_2(1, sub, val) == (0, 2)  # column 3 was replaced as a whole
    assert ints(sub) == [0, 3] and doubles(val) == [8.0, 1.5]
    model = {k: v for k, v in A.items() if k != (1, 1) and k[1] != 3}
    model[(1, 0)] = 8.0
    assert t.getnumanz64__1() == (0, len(model) + 100_003)


def test_allocating_variants(a):
    t = a
    sub, val = bytearray(b"stale"), bytearray(3)
    assert t.getacol_iOO_2(2, sub, val) == (0, 2)
    assert ints(sub) == [0, 2] and doubles(val) == [2.0, 5.0]
    ptrb, ptre, sub, val = bytearray(), bytearray(), bytearray(), bytearray()
    assert t.getacolslice64_iiOOOO_3(0, 4, ptrb, ptre, sub, val) == (0, None)
    assert list(memoryview(ptrb).cast("q")) == [0, 2, 3, 5]
    assert list(memoryview(ptre).cast("q")) == [2, 3, 5, 6] and ints(sub) == [0, 2, 1, 0, 2, 2]
    assert t.getarowslice64_iiOOOO_3(0, 1, ptrb, ptre, sub, val) == (0, None)
    assert len(ptrb) == 8 and ints(sub) == [0, 2] and doubles(val) == [1.0, 2.0]
    si, sj, sv = bytearray(), bytearray(), bytearray()
    assert t.getarowslicetrip_iiOOO_3(2, 3, si, sj, sv) == (0, None)
    assert ints(si) == [2, 2, 2] and ints(sj) == [0, 2, 3]
    assert t.getacolslicetrip_iiOOO_3(3, 4, si, sj, sv) == (0, None)
    assert (ints(si), ints(sj), doubles(sv)) == ([2], [3], [6.0])
    tol = bytearray()
    assert t.getatruncatetol_O_1(tol) == (0, None) and doubles(tol) == [0.0]


def test_every_writer_against_a_model(a):
    t, model = a, dict(A)

    def check():
        assert read_all(t) == {k: v for k, v in model.items() if v != 0.0}

    assert t.putaij_iid_4(1, 3, -1.0) == (0, None)
    model[(1, 3)] = -1.0
    check()
    assert t.putarow_iOO_4(2, iv(1, 3), dv(7.0, 0.0)) == (0, None)  # an explicit zero is not stored
    for j in range(4):
        model.pop((2, j), None)
    model[(2, 1)] = 7.0
    check()
    assert t.putacol_iOO_4(0, iv(2, 1), dv(9.0, 8.0)) == (0, None)
    model.update({(0, 0): 0.0, (1, 0): 8.0, (2, 0): 9.0})
    check()
    assert t.putaijlist64_OOO_4(iv(0, 1, 0), iv(3, 3, 3), dv(1.0, 2.0, 3.0)) == (0, None)  # last (0, 3) wins
    model.update({(0, 3): 3.0, (1, 3): 2.0})
    check()
    assert t.putarowlist64_OOOOO_6(iv(1, 0), qv(2, 0), qv(3, 2), iv(0, 2, 1), dv(5.0, 6.0, 7.0)) == (0, None)
    for i in (0, 1):
        for j in range(4):
            model.pop((i, j), None)
    model.update({(0, 0): 5.0, (0, 2): 6.0, (1, 1): 7.0})
    check()
    assert t.putacollist64_OOOOO_6(iv(3), qv(0), qv(1), iv(1), dv(4.0)) == (0, None)
    for i in range(3):
        model.pop((i, 3), None)
    model[(1, 3)] = 4.0
    check()
    assert t.putarowslice64_iiOOOO_7(0, 2, qv(0, 1), qv(1, 1), iv(3), dv(2.5)) == (0, None)
    for i in (0, 1):
        for j in range(4):
            model.pop((i, j), None)
    model[(0, 3)] = 2.5
    check()
    assert t.putacol_iOO_4(1, None, None) == (0, None)  # empties the column
    for i in range(3):
        model.pop((i, 1), None)
    check()


def test_truncation_tolerance_and_capacity(a):
    t = a
    assert t.putatruncatetol_d_2(0.01) == (0, None)
    tol = array("d", [0.0])
    assert t.getatruncatetol_O_2(memoryview(tol)) == (0, None) and tol[0] == 0.01
    assert t.putaij_iid_4(2, 3, 0.005) == (0, None)  # removes the stored 6.0
    assert t.putarow_iOO_4(1, iv(0, 1), dv(-0.01, 2.0)) == (0, None)
    assert read_all(t) == {(0, 0): 1.0, (2, 0): 4.0, (1, 1): 2.0, (0, 2): 2.0, (2, 2): 5.0}
    assert t.putmaxnumanz_L_2(100) == (0, None)
    assert t.getmaxnumanz64__1() == (0, 100)
    assert t.putmaxnumanz_L_2(4) == (ERR_MAX_CAPACITY, None)


def test_removal_and_appending_keep_the_matrix(a):
    t = a
    assert t.removecons_O_2(iv(0)) == (0, None)
    assert t.removevars_O_2(iv(2, 1)) == (0, None)
    assert read_all(t) == {(1, 0): 4.0, (1, 1): 6.0}
    assert t.appendcons_i_2(1) == (0, None) and t.appendvars_i_2(1) == (0, None)
    assert t.putaij_iid_4(2, 2, 1.0) == (0, None)
    assert read_all(t) == {(1, 0): 4.0, (1, 1): 6.0, (2, 2): 1.0}
    assert t.removecons_O_2(None) == (0, None)


def test_inputdata64(a):
    t = a
    bkc, blc, buc = iv(UPPER, RANGED), dv(0.0, -1.0), dv(4.0, 1.0)
    c, bkx, blx, bux = dv(1.0, 0.0, -2.0), iv(LOWER, FREE, FIXED), dv(0.0, 0.0, 3.0), dv(0.0, 0.0, 3.0)
    aptrb, aptre = qv(0, 2, 2), qv(2, 2, 3)
    assert t.inputdata64_iiOdOOOOOOOOOO_15(
        8, 0, c, 1.5, aptrb, aptre, iv(1, 0, 1), dv(2.0, 3.0, 4.0), bkc, blc, buc, bkx, blx, bux) == (0, None)
    assert (t.getnumcon__1(), t.getnumvar__1()) == ((0, 2), (0, 3))
    assert t.getmaxnumcon__1()[1] >= 8
    assert read_all(t) == {(0, 0): 3.0, (1, 0): 2.0, (1, 2): 4.0}
    assert t.getconbound_i_2(1) == (0, (RANGED, -1.0, 1.0))
    assert t.getvarbound_i_2(2) == (0, (FIXED, 3.0, 3.0))
    assert t.getcfix__1() == (0, 1.5)
    # everything absent: sizes from nothing, free bounds, empty A
    assert t.inputdata64_iiOdOOOOOOOOOO_15(0, 0, None, 0.0, None, None, None, None,
                                           None, None, None, None, None, None) == (0, None)
    assert (t.getnumcon__1(), t.getnumvar__1(), t.getnumanz64__1()) == ((0, 0), (0, 0), (0, 0))
    # a failing call changes nothing
    assert t.inputdata64_iiOdOOOOOOOOOO_15(0, 0, None, 0.0, None, None, None, None,
                                           iv(9), None, None, None, None, None) == (ERR_BOUND_KEY, None)
    assert t.getnumcon__1() == (0, 0)


def test_length_group_messages(a):
    t = a
    with raises("Mismatching lengths of arguments subj,valj"):
        t.putacol_iOO_4(0, iv(0, 1, 2), dv(1.0, 2.0))
    with raises("Mismatching lengths of arguments subi,vali"):
        t.putarow_iOO_4(0, iv(0), dv(1.0, 2.0))
    with raises("Mismatching lengths of arguments subi,subj,valij"):
        t.putaijlist64_OOO_4(iv(0, 1), iv(0), None)
    for method in (t.putarowlist64_OOOOO_6, t.putacollist64_OOOOO_6):
        with raises("Mismatching lengths of arguments sub,ptrb,ptre"):
            method(iv(0, 1), qv(0, 1), qv(1), iv(0, 0), dv(1.0, 1.0))
    with raises("Mismatching lengths of arguments buc,blc,bkc"):
        t.inputdata64_iiOdOOOOOOOOOO_15(0, 0, None, 0.0, None, None, None, None,
                                        iv(FREE), None, dv(1.0, 2.0), None, None, None)
    with raises("Mismatching lengths of arguments c,bux,blx,bkx,aptrb,aptre"):
        t.inputdata64_iiOdOOOOOOOOOO_15(0, 0, dv(0, 0, 0, 0), 0.0, qv(0, 0, 0, 0), qv(0, 0, 0, 0), None, None,
                                        None, None, None, None, None, dv(0, 0, 0, 0, 0))
    assert read_all(t) == A and t.getnumcon__1() == (0, 3)


def test_extent_guards_of_the_compressed_writers(a):
    t = a
    ptrb, ptre = qv(0, 1), qv(1, 3)  # the pointers reach position 3
    sub3, val3, sub2, val2 = iv(0, 1, 2), dv(1, 2, 3), iv(0, 1), dv(1, 2)
    for method in (t.putarowlist64_OOOOO_6, t.putacollist64_OOOOO_6):
        with raises("Array is too short in argument asub"):
            method(iv(0, 1), ptrb, ptre, sub2, val3)
        with raises("Array is too short in argument aval"):
            method(iv(0, 1), ptrb, ptre, sub3, val2)
    for method in (t.putarowslice64_iiOOOO_7, t.putacolslice64_iiOOOO_7):
        with raises("Array is too short in argument asub"):
            method(0, 2, ptrb, ptre, None, val3)
        with raises("Array is too short in argument aval"):
            method(0, 2, ptrb, ptre, sub3, val2)
        # an empty line reaches nowhere, wherever it points
        assert method(0, 2, qv(0, 50), qv(1, 50), iv(0), dv(1.0)) == (0, None)
    with raises("Array is too short in argument asub"):
        t.inputdata64_iiOdOOOOOOOOOO_15(0, 0, None, 0.0, ptrb, ptre, sub2, val3,
                                        None, None, None, None, None, None)
    with raises("Array is too short in argument aval"):
        t.inputdata64_iiOdOOOOOOOOOO_15(0, 0, None, 0.0, ptrb, ptre, sub3, val2,
                                        None, None, None, None, None, None)
    assert t.getnumvar__1() == (0, 4)


def test_slice_writers_check_their_pointer_lengths(a):
    t = a
    for method in (t.putarowslice64_iiOOOO_7, t.putacolslice64_iiOOOO_7):
        with raises("Array is too short in argument ptrb"):
            method(0, 2, qv(0), qv(0, 0), None, None)
        with raises("Array is too short in argument ptre"):
            method(0, 2, qv(0, 0), qv(0, 0, 0), None, None)
        # absent pointers reach the library, which refuses them
        assert method(0, 2, None, None, None, None) == (ERR_NULL_POINTER, None)
        assert method(1, 1, None, None, None, None) == (0, None)
    assert read_all(t) == A


def test_library_errors_are_codes(a):
    t = a
    nan = float("nan")
    cases = [
        (t.putaij_iid_4, (3, 0, 1.0), ERR_INDEX_CON),
        (t.putaij_iid_4, (0, 4, 1.0), ERR_INDEX_VAR),
        (t.putaij_iid_4, (0, 0, nan), ERR_VALUE_NAN),
        (t.getaij_ii_3, (0, -1), ERR_INDEX_VAR),
        (t.putacol_iOO_4, (0, iv(0, 0), dv(1.0, 2.0)), ERR_DUP_INDEX),
        (t.putacol_iOO_4, (0, iv(0, 5), dv(1.0, 2.0)), ERR_INDEX_CON),
        (t.putarow_iOO_4, (1, iv(1), dv(float("inf"))), ERR_VALUE_NAN),
        (t.putacol_iOO_4, (0, None, dv(1.0)), ERR_NULL_POINTER),
        (t.putaijlist64_OOO_4, (iv(0, 7), iv(0, 0), dv(1.0, 1.0)), ERR_INDEX_CON),
        (t.putarowlist64_OOOOO_6, (iv(0, 0), qv(0, 0), qv(0, 0), None, None), ERR_DUP_INDEX),
        (t.putacollist64_OOOOO_6, (iv(1), qv(1), qv(0), iv(0), dv(1.0)), ERR_PTR_RANGE),
        (t.putacolslice64_iiOOOO_7, (0, 1, qv(-1), qv(0), iv(0), dv(1.0)), ERR_PTR_RANGE),
        (t.putarowslice64_iiOOOO_7, (2, 4, qv(0, 0), qv(0, 0), None, None), ERR_SLICE),
        (t.getarownumnz_i_2, (3,), ERR_INDEX_CON),
        (t.getacolslicenumnz64_ii_3, (2, 1), ERR_SLICE),
        (t.getapiecenumnz_iiii_5, (0, 3, 0, 5), ERR_SLICE),
        (t.removevars_O_2, (iv(1, 1),), ERR_DUP_INDEX),
        (t.putmaxnumanz_L_2, (-1,), ERR_NEGATIVE_COUNT),
        (t.getacol_iOO_2, (9, bytearray(), bytearray()), ERR_INDEX_VAR),  # the count query fails
        (t.getarowslice64_iiOOOO_3, (0, 4, bytearray(), bytearray(), bytearray(), bytearray()), ERR_SLICE),
    ]
    for method, args, code in cases:
        assert method(*args) == (code, None), (method.__name__, args)
        assert t.getlasterror()[0] == code
    assert read_all(t) == A


def test_random_writes_against_a_model(a):
    """Many mixed writes keep rows, columns and triplets equal to a model."""
    t, model, rng = a, dict(A), random.Random(7)
    t.appendcons_i_2(7)
    t.appendvars_i_2(6)
    for _ in range(300):
        kind = rng.randrange(3)
        if kind == 0:
            i, j, v = rng.randrange(10), rng.randrange(10), rng.choice([0.0, 1.0, -2.5, rng.random()])
            assert t.putaij_iid_4(i, j, v) == (0, None)
            model[(i, j)] = v
        else:
            line, idx = rng.randrange(10), rng.sample(range(10), rng.randrange(5))
            vals = [rng.choice([0.0, rng.random()]) for _ in idx]
            if kind == 1:
                assert t.putarow_iOO_4(line, iv(*idx), dv(*vals)) == (0, None)
                model = {k: v for k, v in model.items() if k[0] != line}
                model.update({(line, j): v for j, v in zip(idx, vals)})
            else:
                assert t.putacol_iOO_4(line, iv(*idx), dv(*vals)) == (0, None)
                model = {k: v for k, v in model.items() if k[1] != line}
                model.update({(i, line): v for i, v in zip(idx, vals)})
    assert read_all(t) == {k: v for k, v in model.items() if v != 0.0}
