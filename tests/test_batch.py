"""Batch optimization: Env.optimizebatch_idiOOO_7 / _5."""
import random
import threading
import time
from array import array

import pytest

import _qrn
from conftest import dv, ints, iv, qv, raises
from test_optimize import INF, c, infeasible_lp, load, small_lp, transport_lp

ITR, BAS, ITG = c("SOL_ITR"), c("SOL_BAS"), c("SOL_ITG")


def knapsack(task, n=25):
    rows = [[5 + (j * 53) % 19 for j in range(n)]]
    load(task, rows, [10 + (j * 37) % 23 for j in range(n)], [("UPPER", -INF, 4.0 * n)],
         [("RANGED", 0, 1)] * n, maximize=True)
    assert task.putvartypelist_OO_3(iv(*range(n)), iv(*[c("VAR_TYPE_INTEGER")] * n)) == (0, None)
    task.putdouparam_id_3(c("DPAR_MIP_REL_GAP"), 0.0)
    return task


def qp(task):
    load(task, [[1, 1]], [-1, -1], [("UPPER", -INF, 0.5)], [("FREE", -INF, INF)] * 2)
    assert task.putqobj_OOO_4(iv(0, 1), iv(0, 1), dv(2.0, 2.0)) == (0, None)
    return task


def unbounded(task):
    return load(task, [[1, -1]], [-1, -1], [("UPPER", -INF, 1)], [("LOWER", 0, INF)] * 2)


def transport(task, k):
    transport_lp(task, k)
    return task


def ipm_transport(task):
    transport_lp(task, 12)
    task.putintparam_ii_3(c("IPAR_ALGORITHM"), c("ALGORITHM_IPM"))
    return task


def nonconcave(task):  # refused by the optimizer: a response code of its own
    knapsack(task, 3)
    assert task.putqobj_OOO_4(iv(0), iv(0), dv(1.0)) == (0, None)
    return task


KINDS = [small_lp, lambda t: small_lp(t, maximize=True), qp, knapsack, infeasible_lp, unbounded,
         ipm_transport, nonconcave]


def solutions(task):
    """Everything the solution getters tell about each defined solution."""
    out = {}
    for which in (ITR, BAS, ITG):
        code, defined = task.solutiondef_i_2(which)
        assert code == 0
        if not defined:
            continue
        xx, y = bytearray(), bytearray()
        assert task.getxx_iO_2(which, xx) == (0, None)
        assert task.gety_iO_2(which, y) == (0, None)
        out[which] = (task.getprosta_i_2(which), task.getsolsta_i_2(which),
                      list(memoryview(xx).cast("d")), list(memoryview(y).cast("d")))
    return out


def same(a, b):
    assert a.keys() == b.keys()
    for which in a:
        assert a[which][:2] == b[which][:2]
        for u, v in zip(a[which][2:], b[which][2:]):
            assert u == pytest.approx(v, rel=1e-9, abs=1e-9)


@pytest.mark.parametrize("threads", [0, 1, 2, 3])
def test_eight_tasks_of_different_kinds_match_one_by_one(env, threads):
    alone = [make(_qrn.Task(env)) for make in KINDS]
    expect = [t.optimizetrm__1() for t in alone]
    batch = [make(_qrn.Task(env)) for make in KINDS]
    trm, rc = bytearray(b"junk"), bytearray()
    assert env.optimizebatch_idiOOO_5(0, 0.0, threads, batch, trm, rc) == (0, None)
    assert len(trm) == len(rc) == 4 * len(KINDS)
    assert [(0, t) if r == 0 else (r, None) for t, r in zip(ints(trm), ints(rc))] == expect
    assert expect[-1][0] == c("RES_ERR_OPT_NONCONVEX") and all(e == (0, 0) for e in expect[:-1])
    for a, b in zip(alone, batch):
        same(solutions(a), solutions(b))
    # the in-place variant writes the same codes into views
    trm7, rc7 = memoryview(array("i", [-1] * 8)), memoryview(array("i", [-1] * 8))
    assert env.optimizebatch_idiOOO_7(0, 0.0, threads, batch, trm7, rc7) == (0, None)
    assert list(trm7) == ints(trm) and list(rc7) == ints(rc)


def test_exception_from_a_callable_of_any_task_comes_out_of_the_batch(env):
    def boom(code):
        raise KeyError("from the progress callable")

    tasks = [transport(_qrn.Task(env), 10) for _ in range(4)]
    tasks[2].set_Progress(boom)
    with pytest.raises(KeyError, match="from the progress callable") as info:
        env.optimizebatch_idiOOO_5(0, 0.0, 2, tasks, bytearray(), bytearray())
    assert "boom" in [f.name for f in info.traceback]  # raised intact, with its traceback
    tasks[2].remove_Progress()
    # nothing stays behind: the same tasks solve again without an exception
    trm, rc = bytearray(), bytearray()
    assert env.optimizebatch_idiOOO_5(0, 0.0, 2, tasks, trm, rc) == (0, None)
    assert ints(trm) == ints(rc) == [0] * 4

    # a stream callable's exception does not stop anything but still comes out
    def bad_line(text):
        raise ValueError("from a log line")

    tasks[1].set_Stream(c("STREAM_LOG"), bad_line)
    with pytest.raises(ValueError, match="from a log line"):
        env.optimizebatch_idiOOO_7(0, 0.0, 2, tasks, memoryview(array("i", [0] * 4)),
                                   memoryview(array("i", [0] * 4)))
    assert tasks[1].getsolsta_i_2(BAS) == (0, c("SOL_STA_OPTIMAL"))


def test_exceptions_on_several_threads_at_once_stay_apart(env):
    """Every task raises its own exception on its own thread; exactly one comes out, intact."""
    tasks = [transport(_qrn.Task(env), 10) for _ in range(4)]
    gate = threading.Barrier(2, timeout=20)

    def raiser(k):
        def progress(code):
            if code == c("CALLBACK_BEGIN") and k < 2:
                gate.wait()  # the first two raise while both are running
            raise LookupError(f"task {k}", k)

        return progress

    for k, t in enumerate(tasks):
        t.set_Progress(raiser(k))
    for _ in range(5):
        with pytest.raises(LookupError) as info:
            env.optimizebatch_idiOOO_5(0, 0.0, 2, tasks, bytearray(), bytearray())
        k = info.value.args[1]
        assert info.value.args == (f"task {k}", k) and k in (0, 1)
        gate.reset()
    for t in tasks:
        t.remove_Progress()
    assert env.optimizebatch_idiOOO_5(0, 0.0, 2, tasks, bytearray(), bytearray()) == (0, None)


def test_callables_that_dispose_tasks_during_the_batch_are_safe(env):
    tasks = [transport(_qrn.Task(env), 10) for _ in range(4)]
    listed = list(tasks)
    seen = []

    def dispose_own(code):
        if code == c("CALLBACK_BEGIN"):
            tasks[1].dispose()  # its own task, while the library runs it
            tasks[3].dispose()  # another task, running or not yet started
            listed.clear()  # the list loses its references: the tasks live on
            seen.append(code)
        return False

    tasks[1].set_Progress(dispose_own)
    trm, rc = bytearray(), bytearray()
    assert env.optimizebatch_idiOOO_5(0, 0.0, 2, listed, trm, rc) == (0, None)
    assert seen == [c("CALLBACK_BEGIN")]
    # the batch took every handle before it began: a task disposed meanwhile
    # still runs, on its detached library task, deleted after the batch
    assert ints(rc) == [0] * 4
    assert tasks[0].getsolsta_i_2(BAS) == (0, c("SOL_STA_OPTIMAL"))
    assert tasks[1].getnumvar__1() == (c("RES_ERR_NULL_TASK"), None)
    # a disposed task in a later batch only fails on its own
    assert env.optimizebatch_idiOOO_5(0, 0.0, 2, tasks, trm, rc) == (0, None)
    assert ints(rc) == [0, c("RES_ERR_NULL_TASK"), 0, c("RES_ERR_NULL_TASK")]


def random_lp(task, m, n, seed):
    """max c'x, A x <= A x0 + slack, 0 <= x <= 1, 5 non-zeros per column: some hundred iterations."""
    rnd = random.Random(seed)
    ptrb, ptre, sub, val, act = [], [], [], [], [0.0] * m
    for j in range(n):
        ptrb.append(len(sub))
        x0 = rnd.random()
        for i in sorted(rnd.sample(range(m), 5)):
            sub.append(i)
            val.append(rnd.uniform(0.1, 1.0))
            act[i] += val[-1] * x0
        ptre.append(len(sub))
    res = task.inputdata64_iiOdOOOOOOOOOO_15(
        m, n, dv(*(-rnd.uniform(0.5, 1.5) for _ in range(n))), 0.0, qv(*ptrb), qv(*ptre), iv(*sub), dv(*val),
        iv(*[c("BK_UPPER")] * m), dv(*[-INF] * m), dv(*(a + rnd.uniform(0, 0.5) for a in act)),
        iv(*[c("BK_RANGED")] * n), dv(*[0.0] * n), dv(*[1.0] * n))
    assert res == (0, None)
    return task


def test_the_interpreter_runs_other_threads_during_a_batch(env):
    # each run keeps a core busy for a while (about 0.05 s on an idle machine)
    tasks = [random_lp(_qrn.Task(env), 100, 2000, k) for k in range(4)]
    count, done = [0], threading.Event()

    def spin():
        while not done.is_set():
            count[0] += 1

    marks = {}

    def marker(k):
        def progress(code):
            if code in (c("CALLBACK_BEGIN"), c("CALLBACK_END")):
                marks.setdefault(k, []).append(count[0])

        return progress

    for k, t in enumerate(tasks):
        t.set_Progress(marker(k))
    spinner = threading.Thread(target=spin)
    spinner.start()
    try:
        assert env.optimizebatch_idiOOO_5(0, 0.0, 2, tasks, bytearray(), bytearray()) == (0, None)
    finally:
        done.set()
        spinner.join()
    # the spinning thread ran while the library optimized, between a task's
    # first and last callback
    assert any(m[1] > m[0] for m in marks.values())


def test_race_mode(env):
    tasks = [small_lp(_qrn.Task(env)) for _ in range(3)]
    trm, rc = bytearray(), bytearray()
    assert env.optimizebatch_idiOOO_5(1, 0.0, 1, tasks, trm, rc) == (0, None)
    assert ints(trm) == [0] + [c("RES_TRM_BATCH_RACE")] * 2
    assert ints(rc) == [0] + [c("RES_ERR_BATCH_NOT_STARTED")] * 2
    assert tasks[1].solutiondef_i_2(BAS) == (0, 0)  # never run
    # two threads: a slow task (its callable sleeps once the quick one ended)
    # loses while it runs
    quick, slow = small_lp(_qrn.Task(env)), transport(_qrn.Task(env), 15)
    slow.putintparam_ii_3(c("IPAR_PRESOLVE"), c("OFF"))
    slow.putdouparam_id_3(c("DPAR_CALLBACK_INTERVAL"), 0.0)
    ended = threading.Event()
    quick.set_Progress(lambda code: code == c("CALLBACK_END") and ended.set())

    def crawl(code):
        if code == c("CALLBACK_BEGIN"):
            ended.wait(20)
        else:
            time.sleep(0.02)

    slow.set_Progress(crawl)
    assert env.optimizebatch_idiOOO_5(1, 0.0, 2, [slow, quick], trm, rc) == (0, None)
    assert ints(trm) == [c("RES_TRM_BATCH_RACE"), 0] and ints(rc) == [0, 0]


def test_a_callable_asking_to_stop_stops_every_task(env):
    tasks = [small_lp(_qrn.Task(env)) for _ in range(3)]
    tasks[0].set_Progress(lambda code: True)
    trm, rc = bytearray(), bytearray()
    assert env.optimizebatch_idiOOO_5(0, 0.0, 1, tasks, trm, rc) == (0, None)
    assert ints(trm) == [c("RES_TRM_USER_CALLBACK")] * 3
    assert ints(rc) == [0] + [c("RES_ERR_BATCH_NOT_STARTED")] * 2


def test_bad_lists_and_result_arrays(env, task):
    small_lp(task)
    none4 = memoryview(array("i"))
    with pytest.raises(ValueError, match="^Expected a list object for argument task$"):
        env.optimizebatch_idiOOO_7(0, 0.0, 0, (task,), none4, none4)
    with pytest.raises(ValueError, match="^Expected a list object for argument task$"):
        env.optimizebatch_idiOOO_5(0, 0.0, 0, task, bytearray(), bytearray())
    # an item that is not exactly a Task, found before any view is looked at
    with pytest.raises(ValueError, match="^Expected a list of Tasks for argument task$"):
        env.optimizebatch_idiOOO_7(0, 0.0, 0, [task, 1], None, None)

    class Sub(_qrn.Task):
        pass

    with pytest.raises(ValueError, match="^Expected a list of Tasks for argument task$"):
        env.optimizebatch_idiOOO_5(0, 0.0, 0, [Sub(env)], 5, 5)
    with raises("Expected a memoryview object for argument trmcode"):
        env.optimizebatch_idiOOO_7(0, 0.0, 0, [task], None, iv(0))
    with raises("Expected a memoryview object for argument rcode"):
        env.optimizebatch_idiOOO_7(0, 0.0, 0, [task], iv(0), None)
    with raises("Argument trmcode is too short"):
        env.optimizebatch_idiOOO_7(0, 0.0, 0, [task], iv(0, 0), iv(0))
    with raises("Argument rcode is too short"):
        env.optimizebatch_idiOOO_7(0, 0.0, 0, [task], iv(0), iv())
    with raises("Expected a continuous memoryview object for argument rcode"):
        env.optimizebatch_idiOOO_7(0, 0.0, 0, [task], iv(0), dv(0))
    with raises("Bytearray object for argument rcode"):
        env.optimizebatch_idiOOO_5(0, 0.0, 0, [task], bytearray(), None)
    assert task.solutiondef_i_2(BAS) == (0, 0)  # nothing ran
    # None and an empty list: no tasks, empty results
    assert env.optimizebatch_idiOOO_7(0, 0.0, 0, None, none4, none4) == (0, None)
    trm, rc = bytearray(b"old"), bytearray(b"old")
    assert env.optimizebatch_idiOOO_5(0, 0.0, 0, [], trm, rc) == (0, None)
    assert trm == rc == bytearray()

    class Tasks(list):
        pass

    trm = bytearray()
    assert env.optimizebatch_idiOOO_5(0, 0.0, 0, Tasks([task, _qrn.Task(env), _qrn.Task(env)]), trm, rc) == (0, None)
    assert len(trm) == len(rc) == 12
    # the library's refusals come back as codes
    assert env.optimizebatch_idiOOO_5(0, 0.0, 0, [task, task], trm, rc) == (c("RES_ERR_BATCH_DUP_TASK"), None)
    assert env.optimizebatch_idiOOO_5(0, 0.0, -1, [task], trm, rc) == (c("RES_ERR_BATCH_NUM_THREADS"), None)
    assert env.optimizebatch_idiOOO_5(0, float("nan"), 0, [task], trm, rc) == (c("RES_ERR_BATCH_TIME"), None)
