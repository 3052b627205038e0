"""Solution vectors, whole solutions, statuses, summaries and violations."""
import pytest

from conftest import doubles, dv, ints, iv, raises, sized

ITR, BAS, ITG = 0, 1, 2
UNDEFINED, BAD_WHICH, SLICE = 2001, 2000, 1103
CON_VECTORS = ["xc", "y", "slc", "suc"]
VAR_VECTORS = ["xx", "slx", "sux", "snx"]


@pytest.fixture
def lp(task):
    """minimize x0 + 2 x1 + 5, x0 + x1 >= 1, x0 - x1 <= 2, 0 <= x0 <= 3, x1 >= 0,
    with its optimal basic solution put by hand: x = (1, 0), y = (1, 0)."""
    sized(task, 2, 2)
    assert task.putaijlist64_OOO_4(iv(0, 0, 1, 1), iv(0, 1, 0, 1), dv(1, 1, 1, -1))[0] == 0
    assert task.putconboundslice_iiOOO_6(0, 2, iv(1, 2), dv(1, -1e30), dv(1e30, 2))[0] == 0
    assert task.putvarboundslice_iiOOO_6(0, 2, iv(4, 1), dv(0, 0), dv(3, 1e30))[0] == 0
    assert task.putcslice_iiO_4(0, 2, dv(1, 2))[0] == 0
    assert task.putcfix_d_2(5.0)[0] == 0
    assert task.putsolution_iOOOOOOOOOOO_13(BAS, iv(3, 1), iv(1, 3), None, dv(1, 1), dv(1, 0), dv(1, 0),
                                             dv(1, 0), dv(0, 0), dv(0, 1), dv(0, 0), dv(0, 0)) == (0, None)
    return task


def test_every_vector_round_trips_in_both_variants(task):
    sized(task, 2, 3)
    for k, name in enumerate(CON_VECTORS + VAR_VECTORS):
        n = 2 if name in CON_VECTORS else 3
        values = [k + 0.5 + j for j in range(n)]
        assert getattr(task, f"put{name}_iO_3")(ITR, dv(*values)) == (0, None)
        out = dv(*[0.0] * n)
        assert getattr(task, f"get{name}_iO_3")(ITR, out) == (0, None)
        assert list(out) == values
        b = bytearray()
        assert getattr(task, f"get{name}_iO_2")(ITR, b) == (0, None)
        assert doubles(b) == values
        # slices: write the last entry, read it back both ways
        assert getattr(task, f"put{name}slice_iiiO_5")(ITR, n - 1, n, dv(-1.0)) == (0, None)
        out = dv(0.0, 0.0)
        assert getattr(task, f"get{name}slice_iiiO_5")(ITR, n - 2, n, out) == (0, None)
        assert list(out) == [values[-2], -1.0]
        assert getattr(task, f"get{name}slice_iiiO_4")(ITR, n - 1, n, b) == (0, None)
        assert doubles(b) == [-1.0]
        assert getattr(task, f"get{name}slice_iiiO_4")(ITR, 1, n + 1, b) == (SLICE, None)
    for name, n in (("skc", 2), ("skx", 3)):
        assert getattr(task, f"put{name}_iO_3")(BAS, iv(*[1] * n)) == (0, None)
        assert getattr(task, f"put{name}slice_iiiO_5")(BAS, 0, 1, iv(4)) == (0, None)
        out = iv(*[0] * n)
        assert getattr(task, f"get{name}_iO_3")(BAS, out) == (0, None)
        assert list(out) == [4] + [1] * (n - 1)
        b = bytearray()
        assert getattr(task, f"get{name}_iO_2")(BAS, b) == (0, None)
        assert ints(b) == [4] + [1] * (n - 1)
        assert getattr(task, f"get{name}slice_iiiO_4")(BAS, 1, 2, b) == (0, None)
        assert ints(b) == [1]
        assert getattr(task, f"get{name}slice_iiiO_5")(BAS, 0, 1, out[:1]) == (0, None)
    # a bad key or NaN is refused and changes nothing
    assert task.putskx_iO_3(BAS, iv(1, 2, 7)) == (2003, None)
    assert task.putxx_iO_3(BAS, dv(0, float("nan"), 0)) == (1108, None)
    b = bytearray()
    assert task.getskx_iO_2(BAS, b) == (0, None) and ints(b) == [4, 1, 1]


def test_key_vectors_are_required_and_double_vectors_optional(task):
    sized(task, 2, 2)
    assert task.getxc_iO_3(ITR, None) == (UNDEFINED, None)
    assert task.putxc_iO_3(ITR, None) == (1002, None)  # numcon values are needed
    assert task.putxcslice_iiiO_5(ITR, 1, 1, None) == (0, None)  # defines the solution, all zeros
    assert task.getxc_iO_3(ITR, None) == (0, None)
    with raises("Expected a memoryview object for argument skc"):
        task.getskc_iO_3(ITR, None)
    with raises("Argument skx is too short"):
        task.getskx_iO_3(ITR, iv(0, 0, 0))
    with raises("Argument skc is too short"):
        task.putskc_iO_3(ITR, iv(0))
    with raises("Array is too short in argument snx"):
        task.putsnx_iO_3(ITR, dv(1, 2, 3))
    with raises("Array is too short in argument xx"):
        task.getxxslice_iiiO_5(ITR, 0, 1, dv(1, 2))
    with raises("Bytearray object for argument skn"):
        task.getskn_iO_2(ITR, None)
    b = bytearray(b"x" * 5)
    assert task.getxxslice_iiiO_4(ITR, 1, 1, b) == (0, None) and len(b) == 0


def test_putxc_from_a_bytearray_grows_it(task):
    sized(task, 3, 0)
    b = bytearray(dv(7.0).tobytes())
    assert task.putxc_iO_2(BAS, b) in ((0, None), (1108, None))  # the added bytes are not ours
    assert len(b) == 24
    b[:] = dv(1, 2, 3).tobytes()
    assert task.putxc_iO_2(BAS, b) == (0, None)
    assert task.getxc_iO_2(BAS, b) == (0, None) and doubles(b) == [1, 2, 3]


def test_whole_solution_views_are_checked_against_the_counts(task):
    sized(task, 2, 3)
    assert task.appendconeseq_idii_5(0, 0.0, 2, 0)[0] == 0
    with raises("Array is too short in argument xc"):
        task.putsolution_iOOOOOOOOOOO_13(ITR, None, None, None, dv(1, 2, 3), *[None] * 7)
    with raises("Argument skn is too short"):
        task.putsolution_iOOOOOOOOOOO_13(ITR, None, None, iv(0, 0), *[None] * 8)
    with raises("Array is too short in argument snx"):
        task.putsolution_iOOOOOOOOOOO_13(ITR, *[None] * 10, dv(1, 2))
    assert task.solutiondef_i_2(ITR) == (0, 0)
    assert task.putsolution_iOOOOOOOOOOO_13(ITR, iv(1, 1), None, iv(2), None, dv(1, 2, 3), *[None] * 6) == (0, None)
    assert task.solutiondef_i_2(ITR) == (0, 1)
    bufs = [bytearray() for _ in range(11)]
    assert task.getsolution_iOOOOOOOOOOO_2(ITR, *bufs) == (0, (0, 0))
    assert [len(b) for b in bufs] == [8, 12, 4, 16, 24, 16, 16, 16, 24, 24, 24]
    assert ints(bufs[0]) == [1, 1] and ints(bufs[1]) == [0, 0, 0] and ints(bufs[2]) == [2]
    assert doubles(bufs[4]) == [1, 2, 3]
    with raises("Expected a memoryview object for argument skx"):
        task.getsolution_iOOOOOOOOOOO_13(ITR, iv(0, 0), None, iv(0), *[None] * 8)
    skc, skx, skn, xx = iv(9, 9), iv(9, 9, 9), iv(9), dv(0, 0, 0)
    assert task.getsolution_iOOOOOOOOOOO_13(ITR, skc, skx, skn, None, xx, *[None] * 6) == (0, (0, 0))
    assert list(skc) == [1, 1] and list(xx) == [1, 2, 3]
    assert task.getsolution_iOOOOOOOOOOO_2(ITG, *bufs) == (UNDEFINED, None)
    assert task.getsolution_iOOOOOOOOOOO_2(5, *bufs) == (BAD_WHICH, None)


def test_single_entries_slices_and_statuses(task):
    sized(task, 2, 2)
    assert task.getsolsta_i_2(BAS) == (UNDEFINED, None)
    assert task.putconsolutioni_iiiddd_7(1, BAS, 1, 2.0, 3.0, 0.5) == (0, None)
    assert task.putvarsolutionj_iiidddd_8(0, BAS, 3, 4.0, 5.0, 6.0, 7.0) == (0, None)
    assert task.putsolutionyi_iid_4(0, BAS, 9.0) == (0, None)
    assert task.putconsolutioni_iiiddd_7(2, BAS, 1, 0, 0, 0) == (1100, None)
    assert task.putvarsolutionj_iiidddd_8(0, BAS, 99, 0, 0, 0, 0) == (2003, None)
    assert (task.getsolsta_i_2(BAS), task.getprosta_i_2(BAS)) == ((0, 0), (0, 0))
    expect = {0: [0, 2], 1: [4, 0], 2: [9, 2.5], 3: [0, 3], 4: [0, 0.5], 5: [5, 0], 6: [6, 0], 7: [7, 0]}
    b = bytearray()
    for item, values in expect.items():
        assert task.getsolutionslice_iiiiO_5(BAS, item, 0, 2, b) == (0, None)
        assert doubles(b) == values
    out = dv(0)
    assert task.getsolutionslice_iiiiO_6(BAS, 2, 1, 2, out) == (0, None) and list(out) == [2.5]
    assert task.getsolutionslice_iiiiO_6(BAS, 2, 1, 2, None) == (0, None)
    assert task.getsolutionslice_iiiiO_5(BAS, 8, 0, 1, b) == (2002, None)
    assert task.getsolutionslice_iiiiO_5(BAS, 0, 1, 3, b) == (SLICE, None)
    assert task.getsolutionslice_iiiiO_5(BAS, 0, 2, 1, b) == (SLICE, None)
    assert task.deletesolution_i_2(BAS) == (0, None)
    assert task.solutiondef_i_2(BAS) == (0, 0)
    assert task.deletesolution_i_2(3) == (BAD_WHICH, None)


def test_objectives_violations_and_summaries_of_an_lp(lp):
    assert lp.getprimalobj_i_2(BAS) == (0, 6.0)
    assert lp.getdualobj_i_2(BAS) == (0, 6.0)
    assert lp.getsolutioninfo_i_2(BAS) == (0, (6.0, 0.0, 0.0, 0.0, 0.0, 0.0, 6.0, 0.0, 0.0, 0.0, 0.0))
    b = bytearray()
    assert lp.getreducedcosts_iiiO_4(BAS, 0, 2, b) == (0, None) and doubles(b) == [0.0, 1.0]
    assert lp.getprimalsolutionnorms_i_2(BAS) == (0, (1.0, 1.0, 0.0))
    assert lp.getdualsolutionnorms_i_2(BAS) == (0, (1.0, 1.0, 0.0, 1.0, 0.0, 0.0, 0.0))
    # x0 = 3.5 breaks its upper bound 3; xc then disagrees with A x
    assert lp.putxxslice_iiiO_5(BAS, 0, 1, dv(3.5)) == (0, None)
    viol = dv(-1, -1)
    assert lp.getpviolvar_iOO_4(BAS, iv(1, 0), viol) == (0, None) and list(viol) == [0.0, 0.5]
    assert lp.getpviolcon_iOO_3(BAS, iv(0, 1), b) == (0, None) and doubles(b) == [2.5, 2.5]
    assert lp.getdviolvar_iOO_3(BAS, iv(0), b) == (0, None) and doubles(b) == [0.0]
    assert lp.getdviolcon_iOO_3(BAS, None, b) == (0, None) and len(b) == 0
    assert lp.getpviolcones_iOO_3(BAS, iv(0), b) == (1102, None)
    assert lp.getdviolcones_iOO_4(BAS, None, None) == (0, None)
    with raises("Array is too short in argument viol"):
        lp.getpviolvar_iOO_4(BAS, iv(0), dv(0, 0))
    code, info = lp.getsolutioninfo_i_2(BAS)
    assert code == 0 and len(info) == 11 and info[0] == 3.5 + 5 and info[1] == 2.5 and info[2] == 0.5
    assert lp.updatesolutioninfo_i_2(BAS) == (0, None)
    assert lp.getdouinf_i_2(89 - 7) == (0, 8.5)  # QRN_DINF_BASIC_PRIMAL_OBJ
    assert lp.getprimalobj_i_2(ITR) == (UNDEFINED, None)


def test_analysis_goes_to_the_named_stream(lp):
    text = []
    lp.set_Stream(1, text.append)
    assert lp.analyzesolution_ii_3(1, BAS) == (0, None)
    report = "".join(text)
    assert "basic solution" in report and "primal objective 6.000000000000e+00" in report
    assert lp.analyzesolution_ii_3(9, BAS) == (1007, None)


def test_solutions_follow_removed_constraints(lp):
    assert lp.removecons_O_2(iv(0)) == (0, None)
    assert lp.appendvars_i_2(1) == (0, None)
    b = bytearray()
    assert lp.getskc_iO_2(BAS, b) == (0, None) and ints(b) == [1]
    assert lp.getxx_iO_2(BAS, b) == (0, None) and doubles(b) == [1.0, 0.0, 0.0]
