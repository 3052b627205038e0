"""Faults that a robustness campaign found, each kept fixed: disposing an object from inside a call
running on it, slices that the library refuses, check order, and concurrent use of one task."""
import io
import threading

import pytest

import _qrn
from conftest import dv, iv, qv, raises, sized

TEXT = 1
ERR_NULL_TASK = 1001
ERR_SLICE = 1103


@pytest.fixture
def small(task):
    sized(task, 2, 3)
    task.putacol_iOO_4(0, iv(0, 1), dv(1.5, -2.0))
    return task


def disposed(t):
    return t.getnumcon__1() == (ERR_NULL_TASK, None)


@pytest.mark.parametrize("path", ["write", "progress", "info", "stream"])
def test_dispose_from_a_callable_during_the_call(small, path):
    """The library keeps working on its task until the call returns; the object reads as disposed at
    once. (Under AddressSanitizer a wrong order shows as a use after free.)"""
    t = small
    seen = []

    def dispose_once(*args):
        seen.append(args)
        t.dispose()

    class Sink:
        def write(self, view):
            dispose_once()

    if path == "write":
        assert t.writedatastream(TEXT, 0, Sink()) == 0
    elif path == "progress":
        t.set_Progress(dispose_once)
        t.writedatastream(TEXT, 0, io.BytesIO())
    elif path == "info":
        t.set_InfoCallback(dispose_once)
        t.writedatastream(TEXT, 0, io.BytesIO())
    else:
        t.set_Stream(2, dispose_once)  # the error stream of a failing call
        assert t.getacolnumnz_i_2(99)[0] != 0
    assert seen and disposed(t)
    assert t.writedatastream(TEXT, 0, io.BytesIO()) == ERR_NULL_TASK
    t.dispose()  # a second dispose does nothing


def test_reinit_while_a_call_runs_is_refused(small, env):
    class Sink:
        def write(self, view):
            with pytest.raises(RuntimeError):
                small.__init__(env)

    assert small.writedatastream(TEXT, 0, Sink()) == 0
    assert small.getnumcon__1() == (0, 2)


@pytest.mark.parametrize("call", [
    lambda t, b: t.getcslice_iiO_3(0, 2**31 - 1, b),
    lambda t, b: t.getconboundslice_iiOOO_3(1, 2**31 - 1, b, bytearray(b"x"), bytearray()),
    lambda t, b: t.getvarboundslice_iiOOO_3(-5, 2, b, bytearray(), bytearray()),
    lambda t, b: t.getacolslice64_iiOOOO_3(0, 2**31 - 1, b, bytearray(), bytearray(), bytearray()),
    lambda t, b: t.getarowslice64_iiOOOO_3(2, 1, b, bytearray(), bytearray(), bytearray()),
])
def test_refused_slices_cost_no_memory(small, call):
    b = bytearray(b"kept")
    assert call(small, b) == (ERR_SLICE, None)
    assert b == b"kept"


def test_slice_readers_still_type_check_first(small):
    with raises("Bytearray object for argument c"):
        small.getcslice_iiO_3(0, 2**31 - 1, None)
    with raises("Bytearray object for argument bk"):
        small.getconboundslice_iiOOO_3(0, 2**31 - 1, None, bytearray(), bytearray())


def test_check_order(small):
    ro_bytes = memoryview(bytes(24))
    with raises("Expected a continuous memoryview object for argument subj"):
        small.getacol_iOO_4(0, ro_bytes.cast("d"), None)  # stride before read-only
    with pytest.raises(BufferError, match="^Read-only memoryview object for argument subj$"):
        small.getacol_iOO_4(0, ro_bytes[:8].cast("i"), None)
    # both groups of inputdata64 disagree: the later group is reported
    with raises("Mismatching lengths of arguments c,bux,blx,bkx,aptrb,aptre"):
        small.inputdata64_iiOdOOOOOOOOOO_15(0, 0, dv(0, 0), 0.0, qv(0), None, None, None,
                                            iv(0), dv(0, 0), None, None, None, None)


def test_concurrent_failing_reads_and_stream_changes(small):
    """Failing reads on one task from many threads write the last error at once, while other threads
    replace the stream callables that the library reads."""
    errors = []

    def reader():
        for _ in range(300):
            if small.getacolnumnz_i_2(99)[0] == 0:
                errors.append("accepted a bad column")
            small.getlasterror()

    def switcher():
        for k in range(300):
            small.set_Stream(2, len if k % 2 else str)
            small.remove_Stream(2)

    threads = [threading.Thread(target=reader) for _ in range(4)] + [threading.Thread(target=switcher)]
    for th in threads:
        th.start()
    for th in threads:
        th.join()
    assert not errors
    code, msg = small.getlasterror()
    assert code != 0 and "99" in msg
