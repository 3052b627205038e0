"""The constraint matrix through _qrn: reading and writing A in every form and
variant, the argument messages of the matrix methods, and library failures as
response codes. The library's own rules are tested in lib/tests."""
import random
from array import array

import pytest

from conftest import doubles, dv, ints, iv, qv, raises, sized

ERR_NULL_POINTER, ERR_INDEX_CON, ERR_INDEX_VAR, ERR_SLICE = 1002, 1100, 1101, 1103
ERR_DUP_INDEX, ERR_PTR_RANGE, ERR_VALUE_NAN, ERR_BOUND_KEY = 1104, 1106, 1108, 1200
UPPER, RANGED = 2, 4

# A = [1 0 2 0; 0 3 0 0; 4 0 5 6] as {(i, j): value}
A = {(0, 0): 1.0, (2, 0): 4.0, (1, 1): 3.0, (0, 2): 2.0, (2, 2): 5.0, (2, 3): 6.0}


def views(*arrays):
    return [memoryview(x) for x in arrays]


@pytest.fixture
def a(task):
    sized(task, 3, 4)
    # columns in compressed form, with a gap (99) that is never read
    assert task.putacolslice64_iiOOOO_7(
        0, 4, qv(0, 2, 3, 6), qv(2, 3, 5, 7), iv(0, 2, 1, 0, 2, 99, 2), dv(1, 4, 3, 2, 5, 99, 6)) == (0, None)
    return task


def read_all(t):
    """A by triplets (allocating), by row slice and by column slice (in place); all must agree."""
    numcon, numvar = t.getnumcon__1()[1], t.getnumvar__1()[1]
    code, nnz = t.getnumanz64__1()
    si, sj, sv = bytearray(), bytearray(), bytearray()
    assert t.getatrip_OOO_1(si, sj, sv) == (0, None)
    trips = list(zip(ints(si), ints(sj), doubles(sv)))
    assert trips == sorted(trips, key=lambda e: (e[1], e[0]))  # column order
    found = []
    for first, last, read, key in ((0, numcon, t.getarowslice64_iiOOOO_7, lambda k, x: (k, x)),
                                   (0, numvar, t.getacolslice64_iiOOOO_7, lambda k, x: (x, k))):
        ptrb, ptre = array("q", [0] * (last - first)), array("q", [0] * (last - first))
        sub, val = array("i", [0] * nnz), array("d", [0.0] * nnz)
        assert read(first, last, *views(ptrb, ptre, sub, val)) == (0, None)
        found.append({key(k, sub[p]): val[p] for k in range(last - first) for p in range(ptrb[k], ptre[k])})
    assert found[0] == found[1] == {(i, j): v for i, j, v in trips}
    return found[0]


def test_readers_in_every_variant(a):
    t = a
    assert read_all(t) == A
    sub, val = array("i", [0] * 3), array("d", [0.0] * 3)
    assert t.getarow_iOO_4(2, *views(sub, val)) == (0, 3)
    assert list(sub) == [0, 2, 3] and list(val) == [4.0, 5.0, 6.0]
    sub, val = bytearray(b"stale"), bytearray(3)
    assert t.getacol_iOO_2(2, sub, val) == (0, 2)
    assert ints(sub) == [0, 2] and doubles(val) == [2.0, 5.0]
    ptrb, ptre, sub, val = bytearray(), bytearray(), bytearray(), bytearray()
    assert t.getarowslice64_iiOOOO_3(1, 3, ptrb, ptre, sub, val) == (0, None)
    assert list(memoryview(ptre).cast("q")) == [1, 4] and ints(sub) == [1, 0, 2, 3]
    si, sj, sv = array("i", [0] * 4), array("i", [0] * 4), array("d", [0.0] * 4)
    assert t.getarowslicetrip_iiOOO_6(1, 3, *views(si, sj, sv)) == (0, None)
    assert list(zip(si, sj, sv)) == [(1, 1, 3.0), (2, 0, 4.0), (2, 2, 5.0), (2, 3, 6.0)]  # row order
    si, sj, sv = bytearray(), bytearray(), bytearray()
    assert t.getacolslicetrip_iiOOO_3(0, 2, si, sj, sv) == (0, None)
    assert list(zip(ints(si), ints(sj))) == [(0, 0), (2, 0), (1, 1)]  # column order
    assert t.getapiecenumnz_iiii_5(0, 3, 2, 4) == (0, 3) and t.getacolslicenumnz64_ii_3(1, 4) == (0, 4)
    assert t.getaij_ii_3(2, 2) == (0, 5.0) and t.getnumanz__1() == (0, 6)
    tol = bytearray()
    assert t.getatruncatetol_O_1(tol) == (0, None) and doubles(tol) == [0.0]


def test_numpy_arrays_and_a_large_column(a):
    np = pytest.importorskip("numpy")
    t = a
    t.appendcons_i_2(100_000)
    rows = np.random.default_rng(5).permutation(100_003).astype(np.int32)
    assert t.putacol_iOO_4(3, memoryview(rows), memoryview(rows + 0.5)) == (0, None)  # unsorted input
    sub, val = np.zeros(100_003, np.int32), np.zeros(100_003)
    assert t.getacol_iOO_4(3, memoryview(sub), memoryview(val)) == (0, 100_003)
    assert (sub == np.arange(100_003)).all() and (val == sub + 0.5).all()
    assert t.getarow_iOO_4(2, memoryview(sub[:3]), memoryview(val[:3])) == (0, 3)
    assert sub[:3].tolist() == [0, 2, 3] and val[:3].tolist() == [4.0, 5.0, 2.5]


def test_every_writer_against_a_model(a):
    t, model, rng = a, dict(A), random.Random(7)

    def replace(line, entries, by_row):
        nonlocal model
        model = {k: v for k, v in model.items() if k[0 if by_row else 1] != line}
        model.update({((line, x) if by_row else (x, line)): v for x, v in entries})

    assert t.putaijlist64_OOO_4(iv(0, 1, 0), iv(3, 3, 3), dv(1.0, 2.0, 3.0)) == (0, None)  # last (0, 3) wins
    model.update({(0, 3): 3.0, (1, 3): 2.0})
    assert t.putarowlist64_OOOOO_6(iv(1, 0), qv(2, 0), qv(3, 2), iv(0, 2, 1), dv(5.0, 6.0, 7.0)) == (0, None)
    replace(1, [(1, 7.0)], True)
    replace(0, [(0, 5.0), (2, 6.0)], True)
    assert t.putacollist64_OOOOO_6(iv(3), qv(0), qv(1), iv(1), dv(4.0)) == (0, None)
    replace(3, [(1, 4.0)], False)
    assert t.putarowslice64_iiOOOO_7(0, 2, qv(0, 1), qv(1, 1), iv(3), dv(2.5)) == (0, None)
    replace(0, [(3, 2.5)], True)
    replace(1, [], True)
    assert read_all(t) == model
    for _ in range(200):  # single entries, rows and columns, zeros included
        line, idx = rng.randrange(3), rng.sample(range(3), rng.randrange(4))
        vals = [rng.choice([0.0, rng.random()]) for _ in idx]
        kind = rng.randrange(3)
        if kind == 0:
            assert t.putaij_iid_4(line, idx[0] if idx else 0, vals[0] if idx else 0.0) == (0, None)
            model[(line, idx[0] if idx else 0)] = vals[0] if idx else 0.0
        elif kind == 1:
            assert t.putarow_iOO_4(line, iv(*idx), dv(*vals)) == (0, None)
            replace(line, zip(idx, vals), True)
        else:
            assert t.putacol_iOO_4(line, iv(*idx), dv(*vals)) == (0, None)
            replace(line, zip(idx, vals), False)
    assert read_all(t) == {k: v for k, v in model.items() if v != 0.0}


def test_inputdata64(a):
    t = a
    assert t.inputdata64_iiOdOOOOOOOOOO_15(
        8, 0, dv(1.0, 0.0, -2.0), 1.5, qv(0, 2, 2), qv(2, 2, 3), iv(1, 0, 1), dv(2.0, 3.0, 4.0),
        iv(UPPER, RANGED), dv(0.0, -1.0), dv(4.0, 1.0), None, None, None) == (0, None)
    assert (t.getnumcon__1(), t.getnumvar__1()) == ((0, 2), (0, 3))
    assert read_all(t) == {(0, 0): 3.0, (1, 0): 2.0, (1, 2): 4.0}
    assert t.getconbound_i_2(1) == (0, (RANGED, -1.0, 1.0)) and t.getcfix__1() == (0, 1.5)
    assert t.inputdata64_iiOdOOOOOOOOOO_15(0, 0, None, 0.0, None, None, None, None,
                                           iv(9), None, None, None, None, None) == (ERR_BOUND_KEY, None)
    assert t.getnumcon__1() == (0, 2)


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
                                        iv(0), None, dv(1.0, 2.0), None, None, None)
    with raises("Mismatching lengths of arguments c,bux,blx,bkx,aptrb,aptre"):
        t.inputdata64_iiOdOOOOOOOOOO_15(0, 0, dv(0, 0, 0, 0), 0.0, None, None, None, None,
                                        None, None, None, None, None, dv(0, 0, 0, 0, 0))
    assert read_all(t) == A and t.getnumvar__1() == (0, 4)


def test_pointer_and_extent_guards(a):
    t = a
    ptrb, ptre = qv(0, 1), qv(1, 3)  # the pointers reach position 3
    sub3, val3, sub2, val2 = iv(0, 1, 2), dv(1, 2, 3), iv(0, 1), dv(1, 2)
    writers = [lambda p, q, s, v, m=m: m(iv(0, 1), p, q, s, v)
               for m in (t.putarowlist64_OOOOO_6, t.putacollist64_OOOOO_6)]
    writers += [lambda p, q, s, v, m=m: m(0, 2, p, q, s, v)
                for m in (t.putarowslice64_iiOOOO_7, t.putacolslice64_iiOOOO_7)]
    writers.append(lambda p, q, s, v: t.inputdata64_iiOdOOOOOOOOOO_15(
        3, 2, None, 0.0, p, q, s, v, None, None, None, None, None, None))
    for write in writers:
        with raises("Array is too short in argument asub"):
            write(ptrb, ptre, sub2, val3)
        with raises("Array is too short in argument aval"):
            write(ptrb, ptre, sub3, None)
    for method in (t.putarowslice64_iiOOOO_7, t.putacolslice64_iiOOOO_7):
        with raises("Array is too short in argument ptrb"):
            method(0, 2, qv(0), qv(0, 0), None, None)
        with raises("Array is too short in argument ptre"):
            method(0, 2, qv(0, 0), qv(0, 0, 0), None, None)
        assert method(0, 2, None, None, None, None) == (ERR_NULL_POINTER, None)  # the library refuses
    assert read_all(t) == A
    for write in writers[:4]:  # an empty line reaches nowhere, wherever it points
        assert write(qv(0, 50), qv(1, 50), iv(0), dv(1.0)) == (0, None)


def test_library_errors_are_codes(a):
    t = a
    cases = [
        (t.putaij_iid_4, (3, 0, 1.0), ERR_INDEX_CON),
        (t.getaij_ii_3, (0, -1), ERR_INDEX_VAR),
        (t.putacol_iOO_4, (0, iv(0, 0), dv(1.0, 2.0)), ERR_DUP_INDEX),
        (t.putarow_iOO_4, (1, iv(1), dv(float("nan"))), ERR_VALUE_NAN),
        (t.putacollist64_OOOOO_6, (iv(1), qv(1), qv(0), iv(0), dv(1.0)), ERR_PTR_RANGE),
        (t.getacolslicenumnz64_ii_3, (2, 1), ERR_SLICE),
        (t.getacol_iOO_2, (9, bytearray(), bytearray()), ERR_INDEX_VAR),  # from the count query
        (t.getarowslice64_iiOOOO_3, (0, 4, bytearray(), bytearray(), bytearray(), bytearray()), ERR_SLICE),
    ]
    for method, args, code in cases:
        assert method(*args) == (code, None), (method, args)
        assert t.getlasterror()[0] == code
    assert read_all(t) == A
