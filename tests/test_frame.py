"""The call frame through real methods: argument messages, the length-group
rule, count queries, resizing of bytearrays, buffer exports released on every
path, pending exceptions, and the interpreter lock released during a call."""
import threading
import time
from array import array

import pytest

import _qrn
from conftest import doubles, dv, ints, iv, qv, raises, sized


@pytest.fixture
def column(task):
    sized(task, 5, 2)
    assert task.putacol_iOO_4(1, iv(0, 2, 4), dv(1.0, 2.0, 3.0)) == (0, None)
    return task


def test_view_type_and_stride_messages(column):
    t = column
    with raises("Expected a memoryview object for argument subj"):
        t.putacol_iOO_4(0, [0, 1], dv(1.0, 2.0))
    with raises("Expected a memoryview object for argument valj"):
        t.putacol_iOO_4(0, iv(0, 1), bytearray(16))  # a bytearray is not a memoryview
    with raises("Expected a continuous memoryview object for argument subj"):
        t.putacol_iOO_4(0, dv(0.0, 1.0), dv(1.0, 2.0))
    with raises("Expected a continuous memoryview object for argument valj"):
        t.putacol_iOO_4(0, iv(0, 1), dv(1.0, 0.0, 2.0, 0.0)[::2])  # stride 16
    with raises("Expected a continuous memoryview object for argument valj"):
        t.putacol_iOO_4(0, iv(0, 1), memoryview(array("d", [1.0])).cast("B").cast("d", shape=[]))
    # only the stride counts: 64-bit integers pass where doubles are expected
    assert t.putacol_iOO_4(0, iv(0), memoryview(array("q", [0]))) == (0, None)
    # type is checked before stride, argument by argument
    with raises("Expected a continuous memoryview object for argument subj"):
        t.putacol_iOO_4(0, dv(0.0), "not a view")
    with pytest.raises(TypeError):
        t.putacol_iOO_4(0.5, iv(0), dv(1.0))  # the parser's own message
    with pytest.raises(OverflowError):
        t.getacolnumnz_i_2(2**40)


def test_length_group_rule(column):
    t = column
    with raises("Mismatching lengths of arguments subj,valj"):
        t.putacol_iOO_4(0, iv(0, 1, 2), dv(1.0, 2.0))
    assert t.getacolnumnz_i_2(0) == (0, 0)  # unchanged
    # the first given view fixes the count: a null subj with two values reaches the library
    code, _ = t.putacol_iOO_4(0, None, dv(1.0, 2.0))
    assert code != 0
    assert t.putacol_iOO_4(0, None, None) == (0, None)
    with raises("Mismatching lengths of arguments subi,subj,valij"):
        t.putaijlist64_OOO_4(None, iv(0, 1), dv(1.0))
    # a later failing check replaces a recorded mismatch
    with raises("Array is too short in argument aval"):
        t.putarowlist64_OOOOO_6(iv(0, 1), qv(0, 2), qv(2), iv(0, 1), dv(1.0))


def test_output_views_and_count_queries(column):
    t = column
    sub, val = array("i", [0] * 3), array("d", [0.0] * 3)
    assert t.getacol_iOO_4(1, memoryview(sub), memoryview(val)) == (0, 3)
    assert list(sub) == [0, 2, 4] and list(val) == [1.0, 2.0, 3.0]
    with raises("Array is too short in argument subj"):
        t.getacol_iOO_4(1, iv(0, 0, 0, 0), dv(0, 0, 0))  # one too many fails too
    with raises("Array is too short in argument valj"):
        t.getacol_iOO_4(1, iv(0, 0, 0), dv(0, 0))
    assert t.getacol_iOO_4(1, None, None) == (0, 3)  # queries and call still made
    with pytest.raises(BufferError):  # the library never writes into read-only memory
        t.getacol_iOO_4(1, memoryview(bytes(12)).cast("i"), None)
    code, payload = t.getacol_iOO_4(7, None, None)  # failing count query
    assert code != 0 and payload is None
    np = pytest.importorskip("numpy")
    a, b = np.zeros(3, np.int32), np.zeros(3)
    assert t.getacol_iOO_4(1, memoryview(a), memoryview(b)) == (0, 3)
    assert a.tolist() == [0, 2, 4] and b.tolist() == [1.0, 2.0, 3.0]


def test_allocating_variants_resize_exactly(column):
    t = column
    sub, val = bytearray(b"junk"), bytearray(100)
    assert t.getacol_iOO_2(1, sub, val) == (0, 3)
    assert len(sub) == 12 and len(val) == 24
    assert ints(sub) == [0, 2, 4] and doubles(val) == [1.0, 2.0, 3.0]

    class Sub(bytearray):
        pass

    s = Sub()
    assert t.getacol_iOO_2(0, s, bytearray()) == (0, 0) and len(s) == 0
    with raises("Bytearray object for argument subj"):
        t.getacol_iOO_2(1, None, bytearray())
    with raises("Bytearray object for argument valj"):
        t.getacol_iOO_2(1, bytearray(), memoryview(bytearray(24)))
    tol = bytearray(3)
    assert t.getatruncatetol_O_1(tol) == (0, None) and len(tol) == 8
    ptrb, ptre, sub, val = bytearray(8), bytearray(8), bytearray(), bytearray()
    assert t.getarowslice64_iiOOOO_3(2, 2, ptrb, ptre, sub, val) == (0, None)
    assert (len(ptrb), len(ptre), len(sub), len(val)) == (0, 0, 0, 0)


def test_bytearrays_stay_resizable_after_every_failure(column):
    t = column
    sub, val = bytearray(), bytearray()
    # a failing count query
    assert t.getacol_iOO_2(9, sub, val)[0] != 0
    # an argument failure after the first bytearray was resized and exported
    with raises("Bytearray object for argument valj"):
        t.getacol_iOO_2(1, sub, "nope")
    assert len(sub) == 12
    # an exception raised by a stream callable while the library ran
    def boom(text):
        raise KeyError("from the stream")
    t.set_Stream(2, boom)
    with pytest.raises(KeyError):
        t.getarow_iOO_2(99, sub, val)  # the failing call reports on the error stream
    t.remove_Stream(2)
    for b in (sub, val):
        b.extend(b"x")  # no export left: resizing works
        del b[:]
    # a bytearray the caller still exports cannot be resized: the interpreter's error
    held = bytearray()
    view = memoryview(held)
    with pytest.raises(BufferError):
        t.getacol_iOO_2(1, held, val)
    view.release()
    assert t.getacol_iOO_2(1, held, val) == (0, 3)


def test_failure_gives_code_and_none_payload(column):
    t = column
    code, payload = t.getaij_ii_3(99, 0)
    assert code != 0 and payload is None
    code, payload = t.getacolnumnz_i_2(-1)
    assert code != 0 and payload is None
    assert t.getaij_ii_3(2, 1) == (0, 2.0)


def test_stream_exception_raised_by_the_running_method(column):
    t = column
    seen = []
    t.set_Stream(2, seen.append)
    assert t.getaij_ii_3(99, 0)[0] != 0
    assert seen and "99" in seen[-1]
    t.set_Stream(2, None)  # None is stored: calling it raises, and the method reports it
    with pytest.raises(TypeError):
        t.getaij_ii_3(99, 0)
    t.remove_Stream(2)
    assert t.getaij_ii_3(99, 0)[0] != 0


def test_released_views_are_refused(column):
    v = iv(0, 1)
    v.release()
    with pytest.raises(ValueError):
        column.putacol_iOO_4(0, v, dv(1.0, 2.0))


def test_lock_released_during_a_long_call(task):
    n = 2_000_000
    task.appendcons_i_2(n)
    task.appendvars_i_2(1)
    sub = memoryview(array("i", range(n)))
    val = memoryview(array("d", [1.0]) * n)
    stamps, stop = [], threading.Event()

    def worker():
        while not stop.is_set():
            stamps.append(time.perf_counter())

    th = threading.Thread(target=worker)
    th.start()
    try:
        time.sleep(0.01)
        t0 = time.perf_counter()
        assert task.putacol_iOO_4(0, sub, val) == (0, None)
        t1 = time.perf_counter()
    finally:
        stop.set()
        th.join()
    middle = [s for s in stamps if t0 + 0.3 * (t1 - t0) < s < t1 - 0.2 * (t1 - t0)]
    assert middle, "no other thread ran while the library worked"
