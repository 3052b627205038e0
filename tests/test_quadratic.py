"""Quadratic terms and cones through _qrn: round trips in both variants, the
count queries of the readers, and the argument messages."""
from array import array

import pytest

from conftest import doubles, dv, ints, iv, qv, raises, sized

QUAD, RQUAD = 0, 1


@pytest.fixture
def qp(task):
    return sized(task, 3, 5)


def test_objective_terms_round_trip(qp):
    t = qp
    a, b, c = bytearray(b"x"), bytearray(), bytearray()
    assert t.getqobj64_OOO_1(a, b, c) == (0, 0) and len(a) == 0
    assert t.putqobj_OOO_4(iv(2, 1, 2), iv(0, 1, 0), dv(1.0, 4.0, 2.0)) == (0, None)
    assert t.getqobj64_OOO_1(a, b, c) == (0, 2)
    assert (ints(a), ints(b), doubles(c)) == ([1, 2], [1, 0], [4.0, 3.0])
    si, sv = array("i", [0, 0]), array("d", [0.0, 0.0])
    assert t.getqobj64_OOO_4(memoryview(si), None, memoryview(sv)) == (0, 2)
    assert (list(si), list(sv)) == ([1, 2], [4.0, 3.0])
    assert t.putqobjij_iid_4(4, 3, -1.0) == (0, None) and t.getqobjij_ii_3(3, 4) == (0, -1.0)
    assert t.getnumqobjnz64__1() == (0, 3) and t.getmaxnumqnz64__1() == (0, 3)
    assert t.putmaxnumqnz_L_2(2**33) == (0, None) and t.getmaxnumqnz64__1() == (0, 2**33)
    with raises("Array is too short in argument qosubj"):
        t.getqobj64_OOO_4(None, iv(0, 0, 0, 0), None)
    with raises("Mismatching lengths of arguments qosubi,qosubj,qoval"):
        t.putqobj_OOO_4(iv(0), None, dv(1.0, 2.0))
    assert t.putqobj_OOO_4(None, None, None) == (0, None)  # count 0 clears the objective
    assert t.getnumqobjnz64__1() == (0, 0)


def test_constraint_terms_round_trip(qp):
    t = qp
    assert t.putqconk_iOOO_5(1, iv(0, 3), iv(0, 1), dv(1.0, 2.0)) == (0, None)
    assert t.putqcon_OOOO_5(iv(2, 0, 2), iv(4, 1, 4), iv(4, 0, 4), dv(1.0, 2.0, 3.0)) == (0, None)
    a, b, c = bytearray(), bytearray(), bytearray()
    assert t.getqconk64_iOOO_2(2, a, b, c) == (0, 1) and (ints(a), doubles(c)) == ([4], [4.0])
    si, sj, sv = array("i", [0, 0]), array("i", [0, 0]), array("d", [0.0, 0.0])
    assert t.getqconk64_iOOO_5(1, memoryview(si), memoryview(sj), memoryview(sv)) == (0, 2)
    assert (list(si), list(sj), list(sv)) == ([0, 3], [0, 1], [1.0, 2.0])
    code, payload = t.getqconk64_iOOO_5(3, None, None, None)  # failing count query
    assert code != 0 and payload is None
    with raises("Array is too short in argument qcval"):
        t.getqconk64_iOOO_5(1, None, None, dv(0.0))
    with raises("Bytearray object for argument qcsubj"):
        t.getqconk64_iOOO_2(1, a, None, c)
    with raises("Mismatching lengths of arguments qcsubi,qcsubj,qcval"):
        t.putqconk_iOOO_5(0, iv(0, 1), iv(0, 0), dv(1.0, 2.0, 3.0))
    with raises("Array is too short in argument qcsubk"):  # one constraint per triplet
        t.putqcon_OOOO_5(iv(0), iv(0, 1), iv(0, 0), dv(1.0, 2.0))
    assert t.getnumqconknz64_i_2(0) == (0, 1)  # nothing reached the library


def test_cones_round_trip(qp):
    t = qp
    assert t.appendcone_idO_4(QUAD, 0.0, iv(4, 0)) == (0, None)
    assert t.appendconeseq_idii_5(RQUAD, 1.5, 2, 1) == (0, None)
    assert t.appendcone_idO_4(QUAD, 0.0, None)[0] != 0  # no members: the library refuses
    assert t.getnumcone__1() == (0, 2) and t.getnumconemem_i_2(0) == (0, 2)
    assert t.getconeinfo_i_2(1) == (0, (RQUAD, 1.5, 2))
    mem = array("i", [0, 0])
    assert t.getcone_iO_3(0, memoryview(mem)) == (0, (QUAD, 0.0, 2)) and list(mem) == [4, 0]
    assert t.getcone_iO_3(1, None) == (0, (RQUAD, 1.5, 2))
    out = bytearray(b"junk junk")
    assert t.putcone_iidO_5(1, QUAD, 2.0, iv(2, 3, 1)) == (0, None)
    assert t.getcone_iO_2(1, out) == (0, (QUAD, 2.0, 3)) and ints(out) == [2, 3, 1]
    assert t.removecones_O_2(iv(0)) == (0, None) and t.getnumcone__1() == (0, 1)
    assert t.getcone_iO_2(5, None)[0] != 0  # the count query fails before submem is looked at
    assert t.putmaxnumcone_i_2(8) == (0, None) and t.getmaxnumcone__1() == (0, 8)
    with raises("Array is too short in argument submem"):
        t.getcone_iO_3(0, iv(0, 0))
    with raises("Bytearray object for argument submem"):
        t.getcone_iO_2(0, None)


def test_cone_sequences(qp):
    t = qp
    with raises("Expected a memoryview object for argument ct"):
        t.appendconesseq_OOOi_5([QUAD, QUAD], dv(0.0, 0.0), iv(1, 2), 0)
    with raises("Expected a continuous memoryview object for argument ct"):
        t.appendconesseq_OOOi_5(qv(QUAD), dv(0.0), iv(1), 0)
    with raises("Mismatching lengths of arguments ct,conepar,nummem"):
        t.appendconesseq_OOOi_5(iv(QUAD, QUAD), dv(0.0), iv(1, 2), 0)
    assert t.appendconesseq_OOOi_5(iv(QUAD, RQUAD), dv(0.0, 0.0), iv(2, 3), 0) == (0, None)
    out = bytearray()
    assert t.getcone_iO_2(1, out) == (0, (RQUAD, 0.0, 3)) and ints(out) == [2, 3, 4]
