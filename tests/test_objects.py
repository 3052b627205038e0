"""Env and Task objects: construction rules, copies, disposal, last error,
reference counts of registered callables."""
import gc
import sys

import pytest

import _qrn


def test_module_surface():
    assert _qrn.__doc__ == "Low level QUARN optimizer API"
    assert _qrn.Env.__doc__ == "Env objects" and _qrn.Task.__doc__ == "Task objects"
    assert _qrn.Env.__name__ == "Env" and _qrn.Env.__module__ == "_qrn"
    assert [n for n in dir(_qrn) if not n.startswith("__")] == ["Env", "Task"]
    assert _qrn.Task.dispose.__doc__ == "dispose()"
    assert _qrn.Task.getlasterror.__doc__ == "getlasterror(lastmsg)"
    assert _qrn.Env.set_Stream.__doc__ == "set_Stream(whichstream,func)"
    assert _qrn.Task.getnumvar__1.__doc__ in ("", None)


def test_method_table_order():
    names = list(_qrn.Task.__dict__)
    tail = ["set_Stream", "set_Progress", "set_InfoCallback", "remove_Stream", "remove_Progress",
            "remove_InfoCallback", "writedatastream", "getlasterror", "dispose"]
    methods = [n for n in names if not n.startswith("__")]
    assert methods[-len(tail):] == tail
    # each in-place variant stands right before its allocating twin
    assert methods.index("getacol_iOO_2") == methods.index("getacol_iOO_4") + 1
    env_methods = [n for n in _qrn.Env.__dict__ if not n.startswith("__")]
    assert env_methods[:3] == ["set_Stream", "remove_Stream", "enablegarcolenv"]
    assert env_methods[-1] == "dispose"


def test_task_construction_rules():
    env = _qrn.Env()
    with pytest.raises(TypeError, match="^Expected a quarn.Env value or None$"):
        _qrn.Task()
    with pytest.raises(TypeError, match="^Expected a quarn.Env value or None$"):
        _qrn.Task(env=object())

    class SubEnv(_qrn.Env):
        pass

    with pytest.raises(TypeError, match="^Expected a quarn.Env value or None$"):
        _qrn.Task(env=SubEnv())
    with pytest.raises(TypeError):
        _qrn.Task(env, "5")  # numcon must be an int
    t = _qrn.Task(env=env, numcon=5, numvar=7)  # sizes are accepted and not used
    assert t.getnumcon__1() == (0, 0) and t.getnumvar__1() == (0, 0)
    g = _qrn.Task(None)  # the library's global environment
    assert g.appendvars_i_2(2) == (0, None) and g.getnumvar__1() == (0, 2)


def test_clone_is_a_deep_copy(env):
    t = _qrn.Task(env)
    t.appendvars_i_2(3)
    c = _qrn.Task(env=None, other=t)  # env ignored
    t.appendvars_i_2(1)
    assert c.getnumvar__1() == (0, 3) and t.getnumvar__1() == (0, 4)
    t.dispose()
    with pytest.raises(ValueError, match="^Failed to create Task object$"):
        _qrn.Task(other=t)  # a disposed task has nothing to copy


def test_env_options_and_dispose(tmp_path):
    g = _qrn.Env(globalenv=True)
    assert g.enablegarcolenv() == 0
    assert g.dispose() is None and g.dispose() is None
    e = _qrn.Env(dbgfile=str(tmp_path / "dbg.txt"))
    assert e.enablegarcolenv() == 0
    t = _qrn.Task(e)
    e.dispose()
    e.dispose()
    assert e.enablegarcolenv() == 0  # no handle: no library call
    assert t.appendcons_i_2(1) == (0, None)  # garbage collection keeps the environment for the task
    with pytest.raises(TypeError):
        _qrn.Env(dbgfile=None)
    with pytest.raises(ValueError, match="^Failed to create Env object$"):
        _qrn.Env(dbgfile=str(tmp_path / "missing" / "dbg.txt"))


def test_disposed_task_gets_codes_not_crashes(env):
    t = _qrn.Task(env)
    t.dispose()
    t.dispose()
    code, payload = t.getnumvar__1()
    assert code != 0 and payload is None
    assert t.getlasterror() == (0, "")
    assert t.putacol_iOO_4(0, None, None)[0] != 0


def test_getlasterror(task):
    assert task.getlasterror() == (0, "")
    code, _ = task.appendvars_i_2(-1)
    assert code != 0
    last, msg = task.getlasterror()
    assert last == code and "-1" in msg


def test_second_init_releases_the_first_task(env):
    t = _qrn.Task(env)
    t.appendvars_i_2(4)
    f = lambda s: None
    t.set_Stream(0, f)
    before = sys.getrefcount(f)
    t.__init__(env)
    assert t.getnumvar__1() == (0, 0)
    assert sys.getrefcount(f) == before - 1


def test_callable_reference_counts(env):
    funcs = [lambda *a: None for _ in range(4)]

    def refs():
        return [sys.getrefcount(f) for f in funcs]

    base = refs()
    t = _qrn.Task(env)
    t.set_Stream(0, funcs[0])
    t.set_Stream(3, funcs[1])
    t.set_Progress(funcs[2])
    t.set_InfoCallback(funcs[3])
    assert [r - b for r, b in zip(refs(), base)] == [1, 1, 1, 1]
    t.set_Stream(0, funcs[1])  # replacing releases the old one
    assert sys.getrefcount(funcs[0]) == base[0] and sys.getrefcount(funcs[1]) == base[1] + 2
    t.remove_Stream(3)
    t.remove_Progress()
    assert sys.getrefcount(funcs[1]) == base[1] + 1 and sys.getrefcount(funcs[2]) == base[2]
    t.set_Stream(4, funcs[0])  # out of range: ignored
    t.set_Stream(-1, funcs[0])
    t.remove_Stream(9)
    assert sys.getrefcount(funcs[0]) == base[0]
    t.dispose()
    assert refs() == base
    t2 = _qrn.Task(env)
    t2.set_InfoCallback(funcs[3])
    del t2
    gc.collect()
    assert sys.getrefcount(funcs[3]) == base[3]
    e = _qrn.Env()
    e.set_Stream(1, funcs[0])
    e.set_Stream(1, funcs[0])
    assert sys.getrefcount(funcs[0]) == base[0] + 1
    del e
    assert sys.getrefcount(funcs[0]) == base[0]


def test_subclasses_work(env):
    class MyTask(_qrn.Task):
        def count(self):
            return self.getnumvar__1()[1]

    t = MyTask(env)
    t.appendvars_i_2(2)
    t.extra = "attribute"
    assert t.count() == 2
    c = _qrn.Task(other=t)
    assert c.getnumvar__1() == (0, 2)


def test_objects_do_not_leak(env):
    gc.collect()
    before = sys.getallocatedblocks()
    for _ in range(200):
        t = _qrn.Task(env)
        t.set_Stream(0, print)
        t.appendvars_i_2(3)
        c = _qrn.Task(other=t)
        t.dispose()
        del t, c
    gc.collect()
    assert sys.getallocatedblocks() - before < 50


def test_stub_describes_every_method():
    import ast
    from pathlib import Path

    stub = Path(_qrn.__file__).parent / "_qrn-stubs" / "__init__.pyi"
    if not stub.exists():
        pytest.skip("no stub package beside the module (not an installed build)")
    tree = ast.parse(stub.read_text())
    for cls in (c for c in tree.body if isinstance(c, ast.ClassDef)):
        described = {f.name for f in cls.body if isinstance(f, ast.FunctionDef)} - {"__init__"}
        actual = {n for n in getattr(_qrn, cls.name).__dict__ if not n.startswith("__")}
        assert described == actual, cls.name
