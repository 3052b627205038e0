"""Names through the module: UTF-8 round trips, empty names, lookups after
renames and removals, generated names (named axes, sparsity, string lists)
and the messages a caller can meet."""
from array import array

import pytest

from conftest import iv, qv, raises
from test_params import code


def name_of(task, j):
    out = bytearray()
    assert task.getvarname_iO_2(j, out) == (0, None)
    assert out.endswith(b"\0")
    return out[:-1].decode()


def names(task):
    return [name_of(task, j) for j in range(task.getnumvar__1()[1])]


def strlist(*texts):
    """A string list as the module takes it: 64-bit offsets and a byte buffer."""
    data, offsets = bytearray(), []
    for t in texts:
        offsets.append(len(data))
        data += t.encode() + b"\0"
    return qv(*offsets), memoryview(data)


@pytest.fixture
def vars6(task):
    task.appendvars_i_2(6)
    return task


def test_round_trip_and_empty_names(vars6):
    t = vars6
    assert t.putvarname_is_3(0, "\u03b1\u2192\U0001f600") == (0, None)  # 2-, 3- and 4-byte characters
    assert t.getvarnamelen_i_2(0) == (0, 9)
    assert name_of(t, 0) == "\u03b1\u2192\U0001f600"
    empty = bytearray(b"stale")
    assert t.getvarname_iO_2(1, empty) == (0, None)
    assert empty == b"\0"  # one byte, one zero

    class Sub(bytearray):
        pass

    assert t.puttaskname_s_2("t\u00e2che") == (0, None)
    out = Sub()
    assert t.gettaskname_O_1(out) == (0, None) and out == "t\u00e2che".encode() + b"\0"
    assert t.putobjname_s_2("") == (0, None)
    assert t.getobjnamelen__1() == (0, 0)
    with pytest.raises(ValueError):
        t.putvarname_is_3(0, "nul\0inside")


def test_bytearray_is_checked_before_the_library(vars6):
    t = vars6
    with raises("Bytearray object for argument name"):
        t.getvarname_iO_2(99, None)  # no such variable, but the type comes first
    with raises("Bytearray object for argument objname"):
        t.getobjname_O_1(memoryview(bytearray(3)))
    with raises("Bytearray object for argument taskname"):
        t.gettaskname_O_1(b"bytes")
    kept = bytearray(b"kept")
    assert t.getconname_iO_2(0, kept) == (code("ERR_INDEX_CON"), None)
    assert kept == b"kept"


def test_lookup_after_renames_and_removals(vars6):
    t = vars6
    for j, n in enumerate("abcdef"):
        assert t.putvarname_is_3(j, n) == (0, None)
    assert t.getvarnameindex_s_2("d") == (0, (1, 3))
    assert t.putvarname_is_3(3, "D") == (0, None)
    assert t.getvarnameindex_s_2("d") == (0, (0, -1))
    assert t.putvarname_is_3(5, "a") == (code("ERR_NAME_DUPLICATE"), None)
    assert t.removevars_O_2(iv(0, 2)) == (0, None)
    assert names(t) == ["b", "D", "e", "f"]
    assert [t.getvarnameindex_s_2(n)[1] for n in ("a", "b", "D", "f")] == [(0, -1), (1, 0), (1, 1), (1, 3)]
    t.appendcons_i_2(1)
    assert t.putconname_is_3(0, "b") == (0, None)  # kinds do not share names
    assert t.getconnameindex_s_2("b") == (0, (1, 0))


def test_generated_names(vars6):
    t = vars6
    assert t.generatevarnames_OsOOOOO_7(iv(*range(6)), "x[{},{}]", iv(2, 3), None, None, None, None) == (0, None)
    assert names(t) == ["x[0,0]", "x[0,1]", "x[0,2]", "x[1,0]", "x[1,1]", "x[1,2]"]

    # Named second axis, sparse positions, into the items that held the old names.
    offsets, text = strlist("lo", "mid", "hi")
    rc = t.generatevarnames_OsOOOOO_7(iv(4, 0), "y_{}_{}", iv(2, 3), qv(5, 1), iv(1), offsets, text)
    assert rc == (0, None)
    assert names(t)[0] == "y_0_mid" and names(t)[4] == "y_1_hi"
    assert t.getvarnameindex_s_2("y_1_hi") == (0, (1, 4))
    assert t.getvarnameindex_s_2("x[1,1]") == (0, (0, -1))

    t.appendcons_i_2(2)
    assert t.generateconnames_OsOOOOO_7(iv(0, 1), "c{}", iv(2), None, None, None, None) == (0, None)
    assert t.getconnameindex_s_2("c1") == (0, (1, 1))
    bad = t.generateconnames_OsOOOOO_7(iv(0, 1), "c{}{}", iv(2), None, None, None, None)
    assert bad == (code("ERR_NAME_FORMAT"), None)
    assert t.generatevarnames_OsOOOOO_7(iv(1), "z{}", iv(4), qv(4), None, None, None) == \
        (code("ERR_NAME_POSITION"), None)


def test_generate_argument_messages(vars6):
    t = vars6
    before = names(t)
    offsets, text = strlist("a", "b")
    # sp must have one entry per item, so two with subj None are too many.
    with raises("Array is too short in argument sp"):
        t.generatevarnames_OsOOOOO_7(None, "v{}", iv(2), qv(0, 1), None, None, None)
    with raises("Expected a continuous memoryview object for argument sp"):
        t.generatevarnames_OsOOOOO_7(iv(0), "v{}", iv(2), iv(0), None, None, None)
    with raises("Expected a memoryview object for argument names"):
        t.generatevarnames_OsOOOOO_7(iv(0), "v{}", iv(2), None, iv(0), [0, 2], text)
    with raises("Expected a continuous memoryview object for argument names"):
        t.generatevarnames_OsOOOOO_7(iv(0), "v{}", iv(2), None, iv(0), iv(0, 2), text)
    # The string list is checked before sp: its message wins.
    with raises("Array is too short in argument names"):
        t.generatevarnames_OsOOOOO_7(None, "v{}", iv(2), qv(0, 1), iv(0), qv(0, 4), text)
    with raises("Array is too short in argument names"):  # the last text has no zero byte
        t.generatevarnames_OsOOOOO_7(iv(0, 1), "v{}", iv(2), None, iv(0), qv(0), memoryview(b"abc"))
    assert names(t) == before
    # names without its text buffer passes no names at all.
    assert t.generatevarnames_OsOOOOO_7(iv(0, 1), "w{}", iv(2), None, None, offsets, None) == (0, None)
    assert names(t)[:2] == ["w0", "w1"]


def test_analyzenames_reports_on_a_stream(vars6):
    t = vars6
    lines = []
    t.set_Stream(1, lines.append)
    assert t.putvarname_is_3(2, "two words") == (0, None)
    assert t.analyzenames_ii_3(1, 1) == (0, None)
    report = "".join(lines)
    assert "1 not valid" in report and 'variable 2 "two words"' in report
    assert t.analyzenames_ii_3(9, 1) == (code("ERR_STREAM"), None)
