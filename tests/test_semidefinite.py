"""Semidefinite variables, the symmetric matrix store, barC/barA and the
solution values of semidefinite variables through _qrn: round trips in both
variants, argument messages, and the guards on the views the library reads
through pointers and counts."""
from array import array

import pytest

from conftest import doubles, dv, ints, iv, qv, raises, sized

ERR_NO_SOLUTION, ERR_INDEX_BARVAR, ERR_TOO_SMALL = 2001, 1704, 1006


def longs(b):
    return list(memoryview(b).cast("q"))


@pytest.fixture
def sdp(task):
    """2 constraints, semidefinite variables of dimensions 2 and 3, store
    matrices 0 = I2, 1 = E10 (2x2) and 2 = E22 (3x3)."""
    sized(task, 2, 1)
    assert task.appendbarvars_O_2(iv(2, 3)) == (0, None)
    idx = bytearray()
    assert task.appendsparsesymmatlist_OOOOOO_6(iv(2, 2, 3), qv(2, 1, 1), iv(0, 1, 1, 2), iv(0, 1, 0, 2),
                                                dv(1, 1, 1, 1), idx) == (0, None)
    assert longs(idx) == [0, 1, 2]
    return task


def test_variables_and_store(sdp):
    t = sdp
    assert t.getnumbarvar__1() == (0, 2) and t.getdimbarvarj_i_2(1) == (0, 3) and t.getlenbarvarj_i_2(1) == (0, 6)
    assert t.putmaxnumbarvar_i_2(8) == (0, None) and t.getmaxnumbarvar__1() == (0, 8)
    assert t.getdimbarvarj_i_2(2) == (ERR_INDEX_BARVAR, None)
    assert t.getnumsymmat__1() == (0, 3) and t.getsymmatinfo_L_2(0) == (0, (2, 2, 0))
    si, sj, sv = bytearray(), bytearray(), bytearray()
    assert t.getsparsesymmat_LOOO_2(0, si, sj, sv) == (0, None)
    assert (ints(si), ints(sj), doubles(sv)) == ([0, 1], [0, 1], [1, 1])
    si, sj, sv = array("i", [0]), array("i", [0]), array("d", [0])
    assert t.getsparsesymmat_LOOO_5(2, *map(memoryview, (si, sj, sv))) == (0, None) and list(si) == [2]
    with raises("Array is too short in argument valij"):
        t.getsparsesymmat_LOOO_5(0, None, None, dv(0))
    assert t.appendsparsesymmat_iOOO_5(2, None, None, None) == (0, 3)
    assert t.appendsparsesymmat_iOOO_5(2, iv(0), iv(1), dv(1))[0] == 1711  # upper triangle
    with raises("Mismatching lengths of arguments subi,subj,valij"):
        t.appendsparsesymmat_iOOO_5(2, iv(0, 1), iv(0), dv(1))
    # the list's triplet views hold sum(nz) entries, no fewer and no more
    idx = array("q", [0, 0])
    with raises("Array is too short in argument subi"):
        t.appendsparsesymmatlist_OOOOOO_7(iv(2, 2), qv(1, 2), iv(0, 1), iv(0, 0, 1), dv(1, 2, 3), memoryview(idx))
    with raises("Array is too short in argument valij"):
        t.appendsparsesymmatlist_OOOOOO_7(iv(2, 2), qv(1, 2), iv(0, 1, 1), iv(0, 0, 1), dv(1, 2, 3, 4), None)
    with raises("Array is too short in argument idx"):
        t.appendsparsesymmatlist_OOOOOO_7(iv(2, 2), qv(1, 2), iv(0, 1, 1), iv(0, 0, 1), dv(1, 2, 3), qv(0))
    with raises("Array is too short in argument subi"):
        t.appendsparsesymmatlist_OOOOOO_7(iv(2), None, iv(0), None, None, None)
    with raises("Mismatching lengths of arguments dims,nz"):
        t.appendsparsesymmatlist_OOOOOO_7(iv(2, 2), qv(1), iv(0), iv(0), dv(1), None)
    assert t.appendsparsesymmatlist_OOOOOO_7(iv(2, 2), qv(1, 2), iv(0, 1, 1), iv(0, 0, 1), dv(1, 2, 3),
                                             memoryview(idx)) == (0, None)
    assert list(idx) == [4, 5] and t.getsymmatinfo_L_2(5) == (0, (2, 2, 0))
    assert t.appendsparsesymmatlist_OOOOOO_7(iv(2), qv(-1), None, None, None, None)[0] == 1105  # negative nz
    assert t.removebarvars_O_2(iv(0)) == (0, None) and t.getdimbarvarj_i_2(0) == (0, 3)
    assert t.putbarvarname_is_3(0, "X") == (0, None) and t.getbarvarnamelen_i_2(0) == (0, 1)
    name = bytearray()
    assert t.getbarvarname_iO_2(0, name) == (0, None) and name == b"X\0"
    assert t.getbarvarnameindex_s_2("X") == (0, (1, 0)) and t.getbarvarnameindex_s_2("Y") == (0, (0, -1))
    assert t.appendbarvars_O_2(iv(1, 1)) == (0, None)
    offs, text = qv(0, 2), memoryview(bytearray(b"p\0q\0"))
    assert t.generatebarvarnames_OsOOOOO_7(iv(1, 2), "S_{}", iv(2), None, iv(0), offs, text) == (0, None)
    assert t.getbarvarname_iO_2(2, name) == (0, None) and name == b"S_q\0"


def test_coefficients(sdp):
    t = sdp
    assert t.putbarcj_iOO_4(0, qv(0, 1), dv(2, 3)) == (0, None)
    assert t.putbarcj_iOO_4(1, qv(0), dv(1))[0] == 1714  # a 2x2 matrix for a 3x3 variable
    with raises("Mismatching lengths of arguments sub,weights"):
        t.putbarcj_iOO_4(0, qv(0), dv(1, 2))
    assert t.putbarcj_iOO_4(1, None, None) == (0, None)  # no terms: no coefficient
    assert t.putbaraij_iiOO_5(1, 1, qv(2), dv(4)) == (0, None)
    assert t.getnumbarcnz__1() == (0, 1) and t.getnumbaranz__1() == (0, 1)
    idx = bytearray()
    assert t.getbarcsparsity_O_1(idx) == (0, 1) and longs(idx) == [0]
    assert t.getbarasparsity_O_1(idx) == (0, 1)
    pos = longs(idx)[0]
    assert t.getbaraidxij_L_2(pos) == (0, (1, 1)) and t.getbaraidxinfo_L_2(pos) == (0, 1)
    assert t.getbarcidxinfo_L_2(0) == (0, 2) and t.getbarcidxj_L_2(0) == (0, 0)
    sub, w = bytearray(), bytearray()
    assert t.getbarcidx_LOO_2(0, sub, w) == (0, (0, 2)) and len(sub) == 16 and doubles(w) == [2, 3]
    sub, w = array("q", [0]), array("d", [0])
    assert t.getbaraidx_LOO_4(pos, memoryview(sub), memoryview(w)) == (0, (1, 1, 1)) and list(w) == [4]
    with raises("Array is too short in argument sub"):
        t.getbarcidx_LOO_4(0, qv(0), None)
    assert t.getbarcidx_LOO_4(5, None, None) == (1716, None)
    sparsity = array("q", [0])
    assert t.getbarasparsity_O_2(memoryview(sparsity)) == (0, 1)

    # putbaraijlist reads matidx/weights where alphaptrb/alphaptre point
    assert t.putbaraijlist_OOOOOO_7(iv(0, 1), iv(0, 1), qv(0, 1), qv(1, 2), qv(1, 2), dv(5, 6)) == (0, None)
    with raises("Array is too short in argument matidx"):
        t.putbaraijlist_OOOOOO_7(iv(0, 1), iv(0, 1), qv(0, 1), qv(1, 3), qv(1, 2), dv(5, 6, 7))
    with raises("Array is too short in argument weights"):
        t.putbaraijlist_OOOOOO_7(iv(0), iv(0), qv(2), qv(3), qv(0, 0, 1), dv(5, 6))
    with raises("Mismatching lengths of arguments subi,subj,alphaptrb,alphaptre"):
        t.putbaraijlist_OOOOOO_7(iv(0), iv(0, 1), qv(0), qv(1), qv(1), dv(5))
    assert t.getnumbaranz__1() == (0, 2)

    # putbararowlist: subj/nummat where ptrb/ptre point, matidx/weights sum(nummat)
    args = iv(0), qv(0), qv(2), iv(0, 1), qv(1, 1), qv(1, 2), dv(7, 8)
    assert t.putbararowlist_OOOOOOO_8(*args) == (0, None)
    with raises("Array is too short in argument subj"):
        t.putbararowlist_OOOOOOO_8(iv(0), qv(0), qv(3), iv(0, 1), qv(1, 1), qv(1, 2), dv(7, 8))
    with raises("Array is too short in argument nummat"):
        t.putbararowlist_OOOOOOO_8(iv(0), qv(0), qv(1), iv(0, 1), qv(1), qv(1), dv(7))
    with raises("Array is too short in argument nummat"):
        t.putbararowlist_OOOOOOO_8(None, None, None, None, qv(1), None, None)
    with raises("Array is too short in argument matidx"):
        t.putbararowlist_OOOOOOO_8(iv(0), qv(0), qv(2), iv(0, 1), qv(1, 2), qv(1, 2), dv(7, 8, 9))
    with raises("Array is too short in argument weights"):
        t.putbararowlist_OOOOOOO_8(iv(0), qv(0), qv(2), iv(0, 1), qv(1, 1), qv(1, 2), dv(7))
    with raises("Array is too short in argument matidx"):
        t.putbararowlist_OOOOOOO_8(None, None, None, None, None, qv(1), None)
    with raises("Mismatching lengths of arguments subi,ptrb,ptre"):
        t.putbararowlist_OOOOOOO_8(iv(0, 1), qv(0), qv(2), iv(0, 1), qv(1, 1), qv(1, 2), dv(7, 8))
    assert t.getnumbaranz__1() == (0, 3)  # row 0 now (0, 0) and (0, 1); row 1 kept

    # block triplets
    with raises("Array is too short in argument subk"):  # the first view that differs, not the group
        t.putbarcblocktriplet_OOOO_5(iv(0, 0), iv(1), iv(0, 0), dv(1, 2))
    with raises("Array is too short in argument subi"):
        t.putbarablocktriplet_OOOOO_6(iv(0), None, None, None, None)
    assert t.putbarcblocktriplet_OOOO_5(iv(1, 1), iv(2, 2), iv(0, 0), dv(1, 2)) == (0, None)
    assert t.getnumbarcblocktriplets__1() == (0, 4)  # 2*I + 3*E10 on variable 0, 3 at (2, 0) on variable 1
    out = [bytearray() for _ in range(4)]
    assert t.getbarcblocktriplet_OOOO_1(*out) == (0, 4)
    assert list(zip(ints(out[0]), ints(out[1]), ints(out[2]), doubles(out[3]))) == \
        [(0, 0, 0, 2), (0, 1, 0, 3), (0, 1, 1, 2), (1, 2, 0, 3)]
    assert t.putbarablocktriplet_OOOOO_6(iv(1), iv(0), iv(1), iv(1), dv(9)) == (0, None)
    # (0, 0): 7*E10; (0, 1): 8*E22; (1, 0): 9 at (1, 1); (1, 1): 6*E22
    out = [array("i", [0] * 4) for _ in range(4)] + [array("d", [0] * 4)]
    assert t.getnumbarablocktriplets__1() == (0, 4)
    assert t.getbarablocktriplet_OOOOO_6(*map(memoryview, out)) == (0, 4)
    assert list(out[0]) == [0, 0, 1, 1] and list(out[4]) == [7, 8, 9, 6]
    assert t.putbarablocktriplet_OOOOO_6(iv(1), iv(0), iv(0), iv(1), dv(9))[0] == 1711


def test_solution_values(sdp):
    t = sdp
    assert t.getbarxj_iiO_3(0, 0, bytearray()) == (ERR_NO_SOLUTION, None)
    with raises("Array is too short in argument barxj"):
        t.putbarxj_iiO_4(0, 0, dv(1, 2))
    assert t.putbarxj_iiO_4(0, 0, dv(1, 2, 1)) == (0, None)  # [[1 2] [2 1]]: eigenvalues 3 and -1
    assert t.putbarsj_iiO_4(0, 1, dv(1, 0, 0, 1, 0, 1)) == (0, None)
    assert t.putbarxj_iiO_4(0, 5, None) == (ERR_INDEX_BARVAR, None)  # the count query fails
    x = bytearray()
    assert t.getbarxj_iiO_3(0, 0, x) == (0, None) and doubles(x) == [1, 2, 1]
    s = array("d", [9] * 6)
    assert t.getbarsj_iiO_4(0, 1, memoryview(s)) == (0, None) and list(s) == [1, 0, 0, 1, 0, 1]
    with raises("Array is too short in argument barsj"):
        t.getbarsj_iiO_4(0, 1, dv(0))
    sl = bytearray()
    assert t.getbarxslice_iiiLO_5(0, 0, 2, 9, sl) == (0, None) and doubles(sl)[:3] == [1, 2, 1]
    assert t.getbarxslice_iiiLO_5(0, 0, 2, 8, sl) == (ERR_TOO_SMALL, None)
    with raises("Array is too short in argument barsslice"):
        t.getbarsslice_iiiLO_6(0, 0, 2, 9, dv(0))
    assert t.getbarsslice_iiiLO_6(0, 1, 2, 6, memoryview(s)) == (0, None)
    viol = array("d", [0, 0])
    assert t.getpviolbarvar_iOO_4(0, iv(0, 1), memoryview(viol)) == (0, None)
    assert list(viol) == pytest.approx([1, 0])
    v = bytearray()
    assert t.getdviolbarvar_iOO_3(0, iv(1), v) == (0, None) and doubles(v) == pytest.approx([0])
    assert t.getpviolbarvar_iOO_3(0, None, v) == (0, None) and len(v) == 0
    with raises("Array is too short in argument viol"):
        t.getpviolbarvar_iOO_4(0, iv(0), dv(0, 0))
    # objective <barC_0, X_0> = 2*(1 + 1) + 3*(2 * 2): the off-diagonal counts twice
    assert t.putbarcj_iOO_4(0, qv(0, 1), dv(2, 3)) == (0, None)
    code, info = t.getsolutioninfonew_i_2(0)
    assert code == 0 and info[0] == 16 and info[3] == pytest.approx(1)
    assert t.getprobtype__1() == (0, 2)


def test_text_writer_covers_conic_data(sdp):
    t = sdp
    t.appendafes_L_2(1)
    t.putafebarfentry_LiOO_5(0, 0, qv(1), dv(2))
    t.appendrdomain_L_2(1)
    t.appendaccseq_LLO_4(0, 0, None)
    chunks = []

    class Sink:
        def write(self, data):
            chunks.append(bytes(data))
            return len(data)

    assert t.writedatastream(1, 0, Sink()) == 0
    text = b"".join(chunks).decode()
    for line in ("barvars 2", "1 \"\" 3", "symmats 3", "afebarf 1", "0 0 1 1 2", "domains 1", "0 \"\" r 1",
                 "accs 1", "0 \"\" 0 1 0 0"):
        assert line + "\n" in text
