"""Affine expressions, domains, affine conic and disjunctive constraints and
their solution values through _qrn: round trips in both variants, the argument
messages, and the guards that keep the library inside the caller's views. The
library's own rules are tested in lib/tests."""
from array import array

import pytest

from conftest import doubles, dv, ints, iv, qv, raises, sized

ERR_NULL_POINTER, ERR_DOMAIN_DIMENSION, ERR_ACC_SIZE, ERR_NO_SOLUTION = 1002, 1706, 1709, 2001


def longs(b):
    return list(memoryview(b).cast("q"))


def zeros(code, n):
    return array(code, [0] * n)


@pytest.fixture
def afe(task):
    """4 variables and 3 affine expressions."""
    sized(task, 0, 4)
    assert task.appendafes_L_2(3) == (0, None)
    return task


def test_f_and_g_round_trips(afe):
    t = afe
    # rows 0 and 2 from one list; the gap (99) in varidx/val is never read
    assert t.putafefrowlist_OOOOO_6(qv(2, 0), iv(1, 2), qv(0, 2), iv(3, 99, 0, 1), dv(5, 99, 1, 2)) == (0, None)
    assert t.putafefcol_iOO_4(2, qv(1), dv(7)) == (0, None)
    assert t.putafefentrylist_OOO_4(qv(1, 1), iv(0, 0), dv(3, 4)) == (0, None)  # the later one wins
    assert t.getafefnumnz__1() == (0, 5) and t.getafefrownumnz_L_2(0) == (0, 2)
    sub, val = zeros("i", 2), zeros("d", 2)
    assert t.getafefrow_LOO_4(1, memoryview(sub), memoryview(val)) == (0, 2)
    assert list(sub) == [0, 2] and list(val) == [4, 7]
    sub, val = bytearray(b"old"), bytearray()
    assert t.getafefrow_LOO_2(0, sub, val) == (0, 2) and ints(sub) == [0, 1] and doubles(val) == [1, 2]
    assert t.getafefrow_LOO_4(0, None, None) == (0, 2)
    r, j, v = bytearray(), bytearray(), bytearray()
    assert t.getafeftrip_OOO_1(r, j, v) == (0, None)
    assert list(zip(longs(r), ints(j), doubles(v))) == [(0, 0, 1), (0, 1, 2), (1, 0, 4), (1, 2, 7), (2, 3, 5)]
    r, j, v = zeros("q", 5), zeros("i", 5), zeros("d", 5)
    assert t.getafeftrip_OOO_4(*map(memoryview, (r, j, v))) == (0, None) and list(r) == [0, 0, 1, 1, 2]
    assert t.emptyafefcollist_O_2(iv(0)) == (0, None) and t.emptyafefrowlist_O_2(qv(2)) == (0, None)
    assert t.getafefnumnz__1() == (0, 2) and t.emptyafefrow_L_2(0) == (0, None) and t.emptyafefcol_i_2(2) == (0, None)
    assert t.getafefnumnz__1() == (0, 0)

    assert t.putafeglist_OO_3(qv(2, 0), dv(3, 1)) == (0, None) and t.putafeg_Ld_3(1, 2.5) == (0, None)
    assert t.putafegslice_LLO_4(2, 3, dv(8)) == (0, None) and t.getafeg_L_2(2) == (0, 8.0)
    g = bytearray()
    assert t.getafegslice_LLO_3(0, 3, g) == (0, None) and doubles(g) == [1, 2.5, 8]
    g = zeros("d", 2)
    assert t.getafegslice_LLO_4(1, 3, memoryview(g)) == (0, None) and list(g) == [2.5, 8]
    assert t.getafegslice_LLO_4(1, 1, dv()) == (0, None)
    assert t.putmaxnumafe_L_2(10) == (0, None) and t.getnumafe__1() == (0, 3)


def test_f_messages_and_guards(afe):
    t = afe
    with raises("Mismatching lengths of arguments afeidx,varidx,val"):
        t.putafefentrylist_OOO_4(qv(0, 1), iv(0), dv(1, 2))
    with raises("Mismatching lengths of arguments varidx,val"):
        t.putafefrow_LOO_4(0, iv(0, 1), dv(1))
    with raises("Mismatching lengths of arguments afeidx,numnzrow,ptrrow"):
        t.putafefrowlist_OOOOO_6(qv(0, 1), iv(1), qv(0), iv(0), dv(1))
    # rows reach position 3 of varidx/val: three entries are enough, two are not
    assert t.putafefrowlist_OOOOO_6(qv(0, 1), iv(1, 2), qv(0, 1), iv(0, 1, 2), dv(1, 2, 3)) == (0, None)
    with raises("Array is too short in argument varidx"):
        t.putafefrowlist_OOOOO_6(qv(0, 1), iv(1, 2), qv(0, 1), iv(0, 1), dv(1, 2))
    with raises("Array is too short in argument val"):
        t.putafefrowlist_OOOOO_6(qv(0, 1), iv(1, 2), qv(0, 1), iv(0, 1, 2), dv(1, 2))
    with raises("Array is too short in argument varidx"):
        t.putafefrowlist_OOOOO_6(qv(2), iv(1), qv(0), None, None)
    assert t.putafefrowlist_OOOOO_6(qv(2), iv(0), qv(0), None, None) == (0, None)  # an empty row reaches nothing
    assert t.putafefentrylist_OOO_4(None, None, None) == (0, None)
    with raises("Array is too short in argument varidx"):
        t.getafefrow_LOO_4(1, iv(0, 0, 0), None)
    with raises("Array is too short in argument g"):
        t.getafegslice_LLO_4(0, 2, dv(1))
    with raises("Array is too short in argument slice"):
        t.putafegslice_LLO_4(0, 2, dv(1, 2, 3))
    with raises("Expected a continuous memoryview object for argument afeidx"):
        t.emptyafefrowlist_O_2(iv(0, 1))
    with raises("Bytearray object for argument val"):
        t.getafefrow_LOO_2(0, bytearray(), None)
    assert t.putafefrow_LOO_4(0, iv(1, 1), dv(1, 2))[0] == 1104  # a repeated variable
    assert t.getafefrow_LOO_4(0, None, None) == (0, 1)  # unchanged


@pytest.fixture
def sdp(afe):
    """afe plus a 2x2 semidefinite variable and two store matrices of dimension 2."""
    t = afe
    assert t.appendbarvars_O_2(iv(2)) == (0, None)
    assert t.appendsparsesymmat_iOOO_5(2, iv(0, 1), iv(0, 1), dv(1, 1)) == (0, 0)  # identity
    assert t.appendsparsesymmat_iOOO_5(2, iv(1), iv(0), dv(1)) == (0, 1)
    return t


def test_barf_round_trips_and_guards(sdp):
    t = sdp
    assert t.putafebarfentry_LiOO_5(0, 0, qv(0, 1), dv(2, 3)) == (0, None)
    assert t.putafebarfentrylist_OOOOOO_7(qv(1, 2), iv(0, 0), qv(1, 1), qv(1, 0), qv(0, 1), dv(5, 6)) == (0, None)
    assert t.getafebarfrowinfo_L_2(0) == (0, (1, 2)) and t.getafebarfnumrowentries_L_2(2) == (0, 1)
    b, p, n, ti, tw = (bytearray() for _ in range(5))
    assert t.getafebarfrow_LOOOOO_2(0, b, p, n, ti, tw) == (0, None)
    assert (ints(b), longs(p), longs(n), longs(ti), doubles(tw)) == ([0], [0], [2], [0, 1], [2, 3])
    b, p, n, ti, tw = zeros("i", 1), zeros("q", 1), zeros("q", 1), zeros("q", 1), zeros("d", 1)
    assert t.getafebarfrow_LOOOOO_7(1, *map(memoryview, (b, p, n, ti, tw))) == (0, None)
    assert list(ti) == [1] and list(tw) == [6]
    with raises("Array is too short in argument termidx"):
        t.getafebarfrow_LOOOOO_7(0, None, None, None, qv(0), None)
    # block triplets: expression 0 holds 2*I + 3*E10, 1 holds 6*E10, 2 holds 5*I
    assert t.getafebarfnumblocktriplets__1() == (0, 6)
    out = [bytearray() for _ in range(5)]
    assert t.getafebarfblocktriplet_OOOOO_1(*out) == (0, 6)
    assert list(zip(longs(out[0]), ints(out[2]), ints(out[3]), doubles(out[4])))[:3] == \
        [(0, 0, 0, 2), (0, 1, 0, 3), (0, 1, 1, 2)]
    assert t.putafebarfblocktriplet_OOOOO_6(qv(0, 0), iv(0, 0), iv(1, 1), iv(0, 0), dv(1, 1)) == (0, None)
    arrays = zeros("q", 4), zeros("i", 4), zeros("i", 4), zeros("i", 4), zeros("d", 4)
    assert t.getafebarfblocktriplet_OOOOO_6(*map(memoryview, arrays)) == (0, 4)
    assert list(arrays[4]) == [2, 6, 5, 5]  # expression 0 is now 2 at (1, 0)
    with raises("Array is too short in argument subk"):
        t.putafebarfblocktriplet_OOOOO_6(qv(0, 0), iv(0, 0), iv(1), iv(0, 0), dv(1, 1))
    # ranges of ptrterm/numterm must lie inside termidx/termweight
    with raises("Array is too short in argument termidx"):
        t.putafebarfentrylist_OOOOOO_7(qv(1), iv(0), qv(2), qv(1), qv(0, 1), dv(5, 6))
    with raises("Array is too short in argument termweight"):
        t.putafebarfrow_LOOOOO_7(1, iv(0), qv(2), qv(0), qv(0, 1), dv(5))
    with raises("Mismatching lengths of arguments barvaridx,numterm,ptrterm"):
        t.putafebarfrow_LOOOOO_7(1, iv(0), qv(1, 1), qv(0), qv(0), dv(5))
    assert t.putafebarfrow_LOOOOO_7(1, iv(0), qv(2), qv(0), qv(0, 1), dv(5, 6)) == (0, None)
    assert t.getafebarfrowinfo_L_2(1) == (0, (1, 2))
    assert t.emptyafebarfrowlist_O_2(qv(1, 2)) == (0, None) and t.emptyafebarfrow_L_2(0) == (0, None)
    assert t.getafebarfnumblocktriplets__1() == (0, 0)
    assert t.putafebarfentry_LiOO_5(0, 1, qv(0), dv(1))[0] == 1704  # no semidefinite variable 1


def test_domains(task):
    t = task
    assert [t.appendrplusdomain_L_2(2), t.appendrminusdomain_L_2(1), t.appendrdomain_L_2(3),
            t.appendrzerodomain_L_2(1), t.appendquadraticconedomain_L_2(3), t.appendrquadraticconedomain_L_2(3),
            t.appendprimalexpconedomain__1(), t.appenddualexpconedomain__1(),
            t.appendprimalgeomeanconedomain_L_2(3), t.appenddualgeomeanconedomain_L_2(3),
            t.appendsvecpsdconedomain_L_2(6)] == [(0, k) for k in range(11)]
    assert t.appendprimalpowerconedomain_LO_3(3, dv(1, 3)) == (0, 11)
    assert t.appenddualpowerconedomain_LO_3(3, None)[0] == 1707  # no weights
    assert t.appendsvecpsdconedomain_L_2(5) == (ERR_DOMAIN_DIMENSION, None)
    assert t.getnumdomain__1() == (0, 12) and t.getdomaintype_L_2(11) == (0, 8) and t.getdomainn_L_2(6) == (0, 3)
    assert t.getpowerdomaininfo_L_2(11) == (0, (3, 2))
    alpha = bytearray()
    assert t.getpowerdomainalpha_LO_2(11, alpha) == (0, None) and doubles(alpha) == [0.25, 0.75]
    with raises("Array is too short in argument alpha"):
        t.getpowerdomainalpha_LO_3(11, dv(0, 0, 0))
    assert t.getpowerdomainalpha_LO_3(11, None) == (0, None)
    assert t.getpowerdomainalpha_LO_3(0, None)[0] == 1708
    assert t.putmaxnumdomain_L_2(20) == (0, None)
    assert t.putdomainname_Ls_3(4, "soc") == (0, None) and t.getdomainnamelen_L_2(4) == (0, 3)
    name = bytearray()
    assert t.getdomainname_LO_2(4, name) == (0, None) and name == b"soc\0"


@pytest.fixture
def accs(sdp):
    """sdp plus F = [I | 0] over 3 expressions, g = (0, 0, 10), and two ACCs:
    a quadratic cone on expressions (2, 0, 1) and R^1 on expression 1."""
    t = sdp
    for r in range(3):
        assert t.putafefentry_Lid_4(r, r, 1.0) == (0, None)
    assert t.putafeg_Ld_3(2, 10.0) == (0, None)
    assert t.appendquadraticconedomain_L_2(3) == (0, 0) and t.appendrdomain_L_2(1) == (0, 1)
    assert t.appendacc_LOO_4(0, qv(2, 0, 1), None) == (0, None)
    assert t.appendaccs_OOO_4(qv(1), qv(1), dv(0.5)) == (0, None)
    return t


def test_acc_round_trips(accs):
    t = accs
    assert t.getnumacc__1() == (0, 2) and t.getaccntot__1() == (0, 4) and t.getaccn_L_2(1) == (0, 1)
    assert t.getaccdomain_L_2(1) == (0, 1) and t.getaccfnumnz__1() == (0, 4)
    a, b = bytearray(), bytearray()
    assert t.getaccafeidxlist_LO_2(0, a) == (0, None) and longs(a) == [2, 0, 1]
    assert t.getaccb_LO_2(1, b) == (0, None) and doubles(b) == [0.5]
    d, a, b = zeros("q", 2), zeros("q", 4), zeros("d", 4)
    assert t.getaccs_OOO_4(*map(memoryview, (d, a, b))) == (0, None)
    assert list(d) == [0, 1] and list(a) == [2, 0, 1, 1] and list(b) == [0, 0, 0, 0.5]
    d, a, b = bytearray(), bytearray(), bytearray()
    assert t.getaccs_OOO_1(d, a, b) == (0, None) and longs(a) == [2, 0, 1, 1]
    fr, fc, fv = bytearray(), bytearray(), bytearray()
    assert t.getaccftrip_OOO_1(fr, fc, fv) == (0, None)
    assert list(zip(longs(fr), ints(fc))) == [(0, 2), (1, 0), (2, 1), (3, 1)]
    g = zeros("d", 4)
    assert t.getaccgvector_O_2(memoryview(g)) == (0, None) and list(g) == [10, 0, 0, -0.5]
    assert t.putafebarfentry_LiOO_5(1, 0, qv(1), dv(2)) == (0, None)
    out = [bytearray() for _ in range(5)]
    assert t.getaccbarfnumblocktriplets__1() == (0, 2)
    assert t.getaccbarfblocktriplet_OOOOO_1(*out) == (0, 2) and longs(out[0]) == [2, 3]  # rows of expression 1
    # rewriting: ACC 1 gets two rows; b checked against the expressions
    assert t.appendrplusdomain_L_2(2) == (0, 2)
    assert t.putacc_LLOO_5(1, 2, qv(0, 1), dv(1, 2)) == (0, None) and t.getaccntot__1() == (0, 5)
    assert t.putacclist_OOOO_5(qv(1), qv(1), qv(0), None) == (0, None) and t.getaccntot__1() == (0, 4)
    assert t.putaccb_LO_3(1, dv(3)) == (0, None) and t.putaccbj_LLd_4(1, 0, 4.0) == (0, None)
    assert t.putaccb_LO_3(1, dv(3, 4)) == (ERR_ACC_SIZE, None)
    assert t.appendaccseq_LLO_4(0, 0, dv(1, 2, 3)) == (0, None) and t.getaccn_L_2(2) == (0, 3)
    assert t.appendaccsseq_OLLO_5(qv(1, 1), 2, 1, dv(0, 0)) == (0, None) and t.getnumacc__1() == (0, 5)
    assert t.putmaxnumacc_L_2(9) == (0, None)
    assert t.putaccname_Ls_3(0, "cone") == (0, None) and t.getaccnamelen_L_2(0) == (0, 4)
    name = bytearray()
    assert t.getaccname_LO_2(0, name) == (0, None) and name == b"cone\0"
    offs, text = qv(0, 2), memoryview(bytearray(b"a\0b\0"))
    assert t.generateaccnames_OsOOOOO_7(qv(3, 4), "c[{}]", iv(2), None, iv(0), offs, text) == (0, None)
    assert t.getaccname_LO_2(4, name) == (0, None) and name == b"c[b]\0"
    assert t.getprobtype__1() == (0, 2)


def test_acc_messages(accs):
    t = accs
    with raises("Array is too short in argument b"):
        t.appendacc_LOO_4(0, None, dv(1))
    assert t.appendacc_LOO_4(0, None, None) == (ERR_ACC_SIZE, None)  # k = 0 does not fit a cone of 3
    with raises("Array is too short in argument b"):
        t.appendaccseq_LLO_4(0, 0, dv(1, 2))  # the domain has dimension 3
    assert t.appendaccseq_LLO_4(7, 0, None) == (1701, None)  # the count query fails first
    with raises("Array is too short in argument b"):
        t.appendaccsseq_OLLO_5(qv(1), 2, 0, dv(0))  # b follows k = 2, not the domains
    assert t.appendaccsseq_OLLO_5(qv(1), 2, 0, dv(0, 0)) == (ERR_ACC_SIZE, None)
    with raises("Mismatching lengths of arguments domidxs,accidxs"):
        t.putacclist_OOOO_5(qv(0, 1), qv(1), qv(1), None)
    with raises("Array is too short in argument b"):
        t.putacclist_OOOO_5(qv(0, 1), qv(1), qv(1), dv(1, 2))
    assert t.putacclist_OOOO_5(qv(1), None, qv(1), None) == (ERR_NULL_POINTER, None)  # m from accidxs
    with raises("Array is too short in argument afeidxlist"):
        t.getaccafeidxlist_LO_3(0, qv(0, 0))
    with raises("Array is too short in argument g"):
        t.getaccgvector_O_2(dv(0, 0, 0, 0, 0))


def test_djc_round_trips_and_messages(accs):
    t = accs
    djcs = [bytearray() for _ in range(5)]
    assert t.getdjcs_OOOOO_1(*djcs) == (0, None) and [len(b) for b in djcs] == [0] * 5
    assert t.appenddjcs_L_2(3) == (0, None) and t.appendrzerodomain_L_2(1) == (0, 2)
    assert t.putdjc_LOOOO_6(0, qv(2, 1), qv(0, 1), dv(1, 0), qv(1, 1)) == (0, None)
    with raises("Array is too short in argument b"):
        t.putdjc_LOOOO_6(0, qv(2), qv(0), dv(1, 0), qv(1))
    assert t.putdjc_LOOOO_6(0, qv(2), qv(0), None, qv(2)) == (1710, None)  # terms ask for 2 of 1 domain
    with raises("Array is too short in argument termsindjc"):
        t.putdjcslice_LLOOOOO_8(1, 3, qv(2, 2), qv(0, 1), dv(0, 0), qv(1, 1), qv(1))
    assert t.putdjcslice_LLOOOOO_8(1, 3, qv(2, 2), qv(0, 1), dv(0, 5), qv(1, 1), qv(1, 1)) == (0, None)
    assert t.putdjcslice_LLOOOOO_8(1, 1, None, None, None, None, qv()) == (0, None)
    assert t.getdjcnumdomaintot__1() == (0, 4) and t.getdjcnumafetot__1() == (0, 4)
    assert t.getdjcnumtermtot__1() == (0, 4) and t.getnumdjc__1() == (0, 3)
    assert t.getdjcnumdomain_L_2(0) == (0, 2) and t.getdjcnumafe_L_2(2) == (0, 1) and t.getdjcnumterm_L_2(0) == (0, 2)
    d, a, b, s = bytearray(), bytearray(), bytearray(), bytearray()
    assert t.getdjcdomainidxlist_LO_2(0, d) == (0, None) and longs(d) == [2, 1]
    assert t.getdjcafeidxlist_LO_2(2, a) == (0, None) and longs(a) == [1]
    assert t.getdjcb_LO_2(2, b) == (0, None) and doubles(b) == [5]
    assert t.getdjctermsizelist_LO_2(0, s) == (0, None) and longs(s) == [1, 1]
    with raises("Array is too short in argument b"):
        t.getdjcb_LO_3(0, dv(0))
    arrays = zeros("q", 4), zeros("q", 4), zeros("d", 4), zeros("q", 4), zeros("q", 3)
    assert t.getdjcs_OOOOO_6(*map(memoryview, arrays)) == (0, None)
    assert list(arrays[1]) == [0, 1, 0, 1] and list(arrays[4]) == [2, 1, 1]
    assert t.putmaxnumdjc_L_2(5) == (0, None)
    assert t.putdjcname_Ls_3(1, "either") == (0, None) and t.getdjcnamelen_L_2(1) == (0, 6)
    name = bytearray()
    assert t.getdjcname_LO_2(1, name) == (0, None) and name == b"either\0"
    assert t.generatedjcnames_OsOOOOO_7(qv(0, 2), "d{}", iv(2), None, None, None, None) == (0, None)
    assert t.getdjcname_LO_2(2, name) == (0, None) and name == b"d1\0"
    with raises("Array is too short in argument sp"):
        t.generatedjcnames_OsOOOOO_7(qv(0, 2), "d{}", iv(2), qv(0), None, None, None)


def test_conic_solution_values(accs):
    t = accs
    assert t.getaccdoty_iLO_3(0, 0, bytearray()) == (ERR_NO_SOLUTION, None)
    assert t.getsolutioninfonew_i_2(0) == (ERR_NO_SOLUTION, None)
    with raises("Argument skc is too short"):
        t.putsolutionnew_iOOOOOOOOOOOO_14(0, iv(0), *[None] * 11)
    with raises("Array is too short in argument doty"):
        t.putsolutionnew_iOOOOOOOOOOOO_14(0, *[None] * 11, dv(1, 2, 3))
    xx, doty = dv(3, 4, 1, 0), dv(1, 2, 3, 4)
    assert t.putsolutionnew_iOOOOOOOOOOOO_14(0, None, iv(1, 1, 1, 1), None, None, xx,
                                             *[None] * 6, doty) == (0, None)
    arrays = [bytearray() for _ in range(12)]
    assert t.getsolutionnew_iOOOOOOOOOOOO_2(0, *arrays) == (0, (0, 0))
    assert [len(a) for a in arrays] == [0, 16, 0, 0, 32, 0, 0, 0, 32, 32, 32, 32]
    assert ints(arrays[1]) == [1, 1, 1, 1] and doubles(arrays[11]) == [1, 2, 3, 4]
    views = [memoryview(zeros("i", 4)), None, None, None, memoryview(zeros("d", 4))] + [None] * 6
    with raises("Expected a memoryview object for argument skc"):
        t.getsolutionnew_iOOOOOOOOOOOO_14(0, None, *views[1:], None)
    with raises("Array is too short in argument doty"):
        t.getsolutionnew_iOOOOOOOOOOOO_14(0, iv(), iv(0, 0, 0, 0), iv(), *[None] * 8, dv(0))
    # activities: ACC 0 is (x2 + 10, x0, x1) = (11, 3, 4), on the cone's boundary
    act = bytearray()
    assert t.evaluateacc_iLO_3(0, 0, act) == (0, None) and doubles(act) == [11, 3, 4]
    act = zeros("d", 4)
    assert t.evaluateaccs_iO_3(0, memoryview(act)) == (0, None) and list(act) == [11, 3, 4, 3.5]
    with raises("Array is too short in argument doty"):
        t.getaccdoty_iLO_4(0, 1, dv(0, 0))
    y = bytearray(b"\0" * 8)
    assert t.getaccdoty_iLO_3(0, 1, y) == (0, None) and doubles(y) == [4]
    y = bytearray(16)  # grown or cut to the ACC's size before the call
    assert t.putaccdoty_iLO_3(0, 1, y) == (0, None) and len(y) == 8
    assert t.putaccdoty_iLO_4(0, 0, memoryview(bytes(24)).cast("d")) == (0, None)  # read-only views are fine
    d = zeros("d", 4)
    assert t.getaccdotys_iO_3(0, memoryview(d)) == (0, None) and list(d) == [0, 0, 0, 0]
    viol = bytearray()
    assert t.getpviolacc_iOO_3(0, qv(0, 1), viol) == (0, None) and doubles(viol) == [0, 0]
    assert t.getpviolacc_iOO_3(0, None, viol) == (0, None) and len(viol) == 0
    # (11, 9, 12): ||(9, 12)|| = 15 exceeds 11 by 4, at distance 4/sqrt(2) from the cone
    assert t.putsolutionnew_iOOOOOOOOOOOO_14(0, None, None, None, None, dv(9, 12, 1, 0),
                                             *[None] * 7) == (0, None)
    v = zeros("d", 1)
    assert t.getpviolacc_iOO_4(0, qv(0), memoryview(v)) == (0, None)
    assert v[0] == pytest.approx(4 / 2 ** 0.5)
    assert t.getdviolacc_iOO_3(0, qv(0, 1), viol) == (0, None) and len(viol) == 16
    assert t.getpvioldjc_iOO_3(0, None, viol) == (0, None) and len(viol) == 0
    code, info = t.getsolutioninfonew_i_2(0)
    assert code == 0 and len(info) == 14 and all(isinstance(x, float) for x in info)
