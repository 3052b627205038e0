"""Bounds, the linear objective and variable types through _qrn: round trips in
both variants, and the argument messages these methods can raise."""
from array import array

import pytest

from conftest import doubles, dv, ints, iv, qv, raises, sized

FREE, LOWER, UPPER, FIXED, RANGED = range(5)
INF = float("inf")


@pytest.fixture
def lp(task):
    return sized(task, 5, 4)


def test_bounds_round_trip(lp):
    t = lp
    assert t.putconbound_iidd_5(0, RANGED, -1.0, 2.0) == (0, None)
    assert t.getconbound_i_2(0) == (0, (RANGED, -1.0, 2.0))
    code, payload = t.getvarbound_i_2(4)
    assert code != 0 and payload is None
    assert t.putconboundlist_OOOO_5(iv(4, 2), iv(LOWER, FIXED), dv(1.0, 3.0), dv(0.0, 3.0)) == (0, None)
    assert t.putconboundslice_iiOOO_6(1, 2, iv(UPPER), None, dv(6.0)) == (0, None)
    bk, bu = array("i", [9] * 5), array("d", [0.0] * 5)
    assert t.getconboundslice_iiOOO_6(0, 5, memoryview(bk), None, memoryview(bu)) == (0, None)
    assert list(bk) == [RANGED, UPPER, FIXED, FREE, LOWER] and list(bu) == [2.0, 6.0, 3.0, INF, INF]
    bk, bl, bu = bytearray(b"xyz"), bytearray(), bytearray(64)
    assert t.getconboundslice_iiOOO_3(1, 3, bk, bl, bu) == (0, None)
    assert ints(bk) == [UPPER, FIXED] and doubles(bl) == [-INF, 3.0] and len(bu) == 16
    assert t.putvarboundlistconst_Oidd_5(iv(0, 3), FIXED, 1.0, 1.0) == (0, None)
    assert t.putvarboundsliceconst_iiidd_6(1, 3, LOWER, 2.0, 0.0) == (0, None)
    assert t.chgvarbound_iiid_5(2, 0, 1, 5.0) == (0, None)
    assert t.getvarboundslice_iiOOO_3(0, 4, bk, bl, bu) == (0, None)
    assert ints(bk) == [FIXED, LOWER, RANGED, FIXED] and doubles(bu) == [1.0, INF, 5.0, 1.0]


def test_bound_array_messages(lp):
    t = lp
    with raises("Expected a memoryview object for argument bkc"):
        t.putconboundslice_iiOOO_6(2, 5, None, dv(0, 0, 0), dv(0, 0, 0))
    with raises("Expected a memoryview object for argument bkc"):
        t.putconboundslice_iiOOO_6(2, 5, [FREE] * 3, None, None)
    with raises("Expected a continuous memoryview object for argument bkc"):
        t.putconboundslice_iiOOO_6(2, 5, qv(0, 0, 0), None, None)
    with raises("Argument bkc is too short"):
        t.putconboundslice_iiOOO_6(2, 5, iv(0, 0, 0, 0), None, None)
    with raises("Array is too short in argument blc"):
        t.putconboundslice_iiOOO_6(2, 5, iv(0, 0, 0), dv(0, 0), None)
    with raises("Array is too short in argument bux"):
        t.putvarboundslice_iiOOO_6(0, 1, iv(0), None, dv(0, 0))
    with raises("Mismatching lengths of arguments sub,bkx,blx,bux"):
        t.putvarboundlist_OOOO_5(None, iv(LOWER), dv(1.0), dv(1.0, 2.0))
    with raises("Argument bk is too short"):
        t.getvarboundslice_iiOOO_6(0, 1, iv(0, 0), None, None)
    with raises("Array is too short in argument bu"):
        t.getvarboundslice_iiOOO_6(0, 1, iv(0), None, dv())
    with raises("Bytearray object for argument bk"):
        t.getconboundslice_iiOOO_3(0, 1, memoryview(bytearray(4)), bytearray(), bytearray())
    with raises("Bytearray object for argument bl"):
        t.getconboundslice_iiOOO_3(0, 1, bytearray(), None, bytearray())
    assert t.getvarbound_i_2(0) == (0, (FREE, -INF, INF))  # nothing reached the library


def test_objective_round_trip(lp):
    t = lp
    assert t.putcslice_iiO_4(0, 4, dv(1.0, 2.0, 3.0, 4.0)) == (0, None)
    assert t.putclist_OO_3(iv(3, 0), dv(-4.0, -1.0)) == (0, None)
    assert t.putcj_id_3(1, 0.5) == (0, None) and t.getcj_i_2(1) == (0, 0.5)
    c = array("d", [0.0] * 4)
    assert t.getc_O_2(memoryview(c)) == (0, None) and list(c) == [-1.0, 0.5, 3.0, -4.0]
    out = bytearray(1)
    assert t.getc_O_1(out) == (0, None) and doubles(out) == [-1.0, 0.5, 3.0, -4.0]
    assert t.getclist_OO_2(iv(2, 2, 0), out) == (0, None) and doubles(out) == [3.0, 3.0, -1.0]
    assert t.getclist_OO_3(iv(1, 3), memoryview(c)[:2]) == (0, None) and list(c[:2]) == [0.5, -4.0]
    assert t.getcslice_iiO_3(1, 2, out) == (0, None) and doubles(out) == [0.5]
    assert t.putcfix_d_2(2.5) == (0, None) and t.getcfix__1() == (0, 2.5)
    assert t.putobjsense_i_2(1) == (0, None) and t.getobjsense__1() == (0, 1)
    assert t.putobjsense_i_2(7)[0] != 0
    with raises("Array is too short in argument c"):
        t.getc_O_2(dv(0.0, 0.0, 0.0))
    with raises("Array is too short in argument slice"):
        t.putcslice_iiO_4(0, 2, dv(1.0))
    with raises("Mismatching lengths of arguments subj,val"):
        t.putclist_OO_3(iv(0), dv(1.0, 2.0))


def test_variable_types(lp):
    t = lp
    assert t.putvartypelist_OO_3(iv(0, 2, 3), iv(1, 1, 1)) == (0, None)
    assert t.putvartype_ii_3(2, 0) == (0, None)
    assert t.getnumintvar__1() == (0, 2) and t.getvartype_i_2(3) == (0, 1)
    vt = array("i", [9, 9])
    assert t.getvartypelist_OO_3(iv(3, 2), memoryview(vt)) == (0, None) and list(vt) == [1, 0]
    out = bytearray(b"abc")
    assert t.getvartypelist_OO_2(iv(0, 1), out) == (0, None) and ints(out) == [1, 0]
    assert t.getvartypelist_OO_2(None, out) == (0, None) and len(out) == 0
    with raises("Mismatching lengths of arguments subj,vartype"):
        t.putvartypelist_OO_3(iv(0, 1, 2), iv(1, 1))
    with raises("Expected a memoryview object for argument vartype"):
        t.getvartypelist_OO_3(iv(0), None)
    with raises("Argument vartype is too short"):
        t.getvartypelist_OO_3(iv(0), iv(0, 0))
