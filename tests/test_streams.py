"""Streams and writing a task to an object with a `write` method."""
import io

import pytest

import _qrn
from conftest import dv, iv

TEXT = 1  # the library's own text format


@pytest.fixture
def small(task):
    task.appendcons_i_2(2)
    task.appendvars_i_2(3)
    task.putacol_iOO_4(0, iv(0, 1), dv(1.5, -2.0))
    return task


def test_task_streams_forward_text(task):
    lines = {s: [] for s in range(4)}
    for s in range(4):
        task.set_Stream(s, lines[s].append)
    task.appendvars_i_2(-5)
    assert len(lines[2]) == 1 and "-5" in lines[2][0] and isinstance(lines[2][0], str)
    task.remove_Stream(2)
    task.appendvars_i_2(-5)
    assert len(lines[2]) == 1


def test_writedatastream_to_bytesio(small):
    out = io.BytesIO()
    assert small.writedatastream(TEXT, 0, out) == 0
    text = out.getvalue().decode()
    assert "1.5" in text and "-2" in text
    # unknown formats and compressions are the library's codes, as plain integers
    assert small.writedatastream(12345, 0, io.BytesIO()) != 0
    assert small.writedatastream(TEXT, 777, io.BytesIO()) != 0


def test_write_gets_read_only_views_of_exact_size(small):
    sizes, kept = [], []

    class Sink:
        def write(self, view):
            assert isinstance(view, memoryview) and view.readonly
            sizes.append(view.nbytes)
            with pytest.raises(TypeError):
                view[0] = 0
            kept.append(view)  # a kept view stays valid after the call

    assert small.writedatastream(TEXT, 0, Sink()) == 0
    whole = io.BytesIO()
    small.writedatastream(TEXT, 0, whole)
    assert sum(sizes) == len(whole.getvalue())
    assert b"".join(bytes(v) for v in kept) == whole.getvalue()


def test_write_exceptions_come_out_of_the_method(small):
    class Broken:
        def write(self, view):
            raise OSError("disk full")

    with pytest.raises(OSError, match="disk full"):
        small.writedatastream(TEXT, 0, Broken())
    with pytest.raises(AttributeError):
        small.writedatastream(TEXT, 0, object())
    with pytest.raises(TypeError):
        small.writedatastream("1", 0, io.BytesIO())


def test_stream_callable_exception_during_writedatastream(small):
    def boom(text):
        raise RuntimeError("stream")

    small.set_Stream(2, boom)
    with pytest.raises(RuntimeError):
        small.writedatastream(12345, 0, io.BytesIO())  # the failure is reported on stream 2


def test_progress_and_info_registration(task):
    seen = []
    task.set_Progress(seen.append)
    task.set_InfoCallback(lambda *a: seen.append(a))
    task.remove_Progress()
    task.remove_InfoCallback()
    task.remove_Progress()  # removing twice is fine
    assert seen == []


BEGIN_WRITE, END_WRITE, STOPPED = 3, 4, 1012  # callback codes and response code of the library


def test_progress_and_info_callbacks_around_a_write(small):
    calls = []
    small.set_Progress(lambda caller: calls.append(("progress", caller)))
    small.set_InfoCallback(lambda caller, d, i, l: calls.append(("info", caller, len(d), len(i), len(l),
                                                                 type(d[0]), type(i[0]), type(l[0]))))
    assert small.writedatastream(TEXT, 0, io.BytesIO()) == 0
    assert calls == [("progress", BEGIN_WRITE), ("info", BEGIN_WRITE, 111, 117, 21, float, int, int),
                     ("progress", END_WRITE), ("info", END_WRITE, 111, 117, 21, float, int, int)]


def test_callbacks_stop_the_work(small):
    infos = []
    small.set_InfoCallback(lambda *a: infos.append(a[0]))
    small.set_Progress(lambda caller: True)  # asks to stop: the info callable is not called
    out = io.BytesIO()
    assert small.writedatastream(TEXT, 0, out) == STOPPED
    assert out.getvalue() == b"" and infos == []
    small.set_Progress(lambda caller: 0)
    small.set_InfoCallback(lambda caller, *lists: caller == END_WRITE)
    out = io.BytesIO()
    assert small.writedatastream(TEXT, 0, out) == STOPPED
    assert out.getvalue().startswith(b"qrntext")  # stopped after the text was written
    assert small.getlasterror()[0] == STOPPED


def test_callback_exceptions_come_out_of_the_method(small):
    def progress(caller):
        raise ZeroDivisionError("in progress")

    infos = []
    small.set_Progress(progress)
    small.set_InfoCallback(lambda *a: infos.append(a))
    with pytest.raises(ZeroDivisionError):
        small.writedatastream(TEXT, 0, io.BytesIO())
    assert infos == []

    class Undecided:
        def __bool__(self):
            raise ValueError("no truth")

    small.set_Progress(lambda caller: Undecided())
    with pytest.raises(ValueError, match="no truth"):
        small.writedatastream(TEXT, 0, io.BytesIO())
    small.remove_Progress()
    small.remove_InfoCallback()
    assert small.writedatastream(TEXT, 0, io.BytesIO()) == 0


def test_write_copies_are_freed(small):
    import gc
    import sys

    class Discard:
        def write(self, view):
            pass

    sink = Discard()

    def write_many():
        for _ in range(1000):
            small.writedatastream(TEXT, 0, sink)

    write_many()  # warm up the interpreter's own caches
    gc.collect()
    before = sys.getallocatedblocks()
    write_many()
    gc.collect()
    assert sys.getallocatedblocks() - before < 100  # a leak would be 1000 blocks or more
