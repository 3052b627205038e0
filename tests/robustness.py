"""Calls every method of _qrn.Env and _qrn.Task with bad kinds of every argument.

Methods are discovered from the types themselves, so new families are covered without being
listed. Run as a script it does the work in this process and prints one line per finding
(the tests run it in a child process, so that a crash is seen as a crash and a hang as a hang):

    python tests/robustness.py [--full] [--only NAME_REGEX]

A finding is: a SystemError, an exception without a message, an unexpected kind of exception, or
a result that is not what the method's kind returns. --full adds more bad values and runs each
method also on a disposed object and with callables that dispose the object during the call.
"""
from __future__ import annotations

import argparse
import gc
import os
import re
import sys
from array import array

import _qrn

GENERATED = re.compile(r"^(?P<fn>[a-z0-9]+)_(?P<fmt>[iLdsO]*)_(?P<count>\d+)$")
# What a malformed argument may raise: the parser's and the frame's own exceptions.
EXPECTED = (TypeError, ValueError, OverflowError, BufferError, UnicodeError, RuntimeError)
BASE = {"i": 0, "L": 0, "d": 0.0, "s": "x", "O": None}
LIMIT = 1 << 31
ERR_SPACE = 1003


def memoryviews(full: bool) -> list:
    d = array("d", [1.0, 2.0, 3.0, 4.0])
    views = [
        memoryview(array("i", [0, 1, 2])),          # 4-byte
        memoryview(array("q", [0, 1, 2])),          # 8-byte integers
        memoryview(d),                              # doubles
        memoryview(bytearray(b"ab\0")),             # bytes
        memoryview(d)[::2],                         # strided
        memoryview(d)[::-1],                        # reversed
        memoryview(bytes(32)).cast("d"),            # read-only
        memoryview(bytearray(32)).cast("B", (4, 8)),  # 2-D
        memoryview(array("i", [-1, LIMIT - 1, -LIMIT])),  # extreme indexes
        memoryview(array("q", [-1, 2**62, 2**63 - 1])),
        memoryview(array("d", [float("nan"), float("inf"), -1e300])),
    ]
    released = memoryview(bytearray(16))
    released.release()
    views.append(released)
    if full:
        views += [
            memoryview(bytearray(8)).cast("d", ()),  # 0-D
            memoryview(array("i")),                  # empty
            memoryview(array("q", [0, 10**12])),
            memoryview(array("i", [0] * 1000)),
        ]
    return views


def bad_values(letter: str, full: bool) -> list:
    if letter == "i":
        vals = [-1, LIMIT - 1, -LIMIT, LIMIT, 1.5, "0", None]
    elif letter == "L":
        vals = [-1, 2**62, 2**63 - 1, 2**63, 1.5, None]
    elif letter == "d":
        vals = [float("nan"), float("inf"), -float("inf"), "1", None]
    elif letter == "s":
        vals = ["a\0b", "\udc80", "", b"bytes", None, "x" * 100000]
    else:
        exported = bytearray(b"xyz")
        vals = [0, "text", [1, 2], [None], bytearray(), exported, bytes(8), array("d", [1.0])]
        vals += memoryviews(full)
        vals.append(memoryview(exported))  # keeps `exported` exported
        if full:
            vals += [type("Sub", (bytearray,), {})(), [_qrn.Task(None)], (1, 2)]
    return vals


class Findings:
    def __init__(self) -> None:
        self.lines: list[str] = []

    def add(self, what: str, args: tuple, problem: str) -> None:
        self.lines.append(f"{what}{tuple(type(a).__name__ for a in args)}: {problem}")


def check_call(findings: Findings, what: str, fn, args: tuple, result_kind: str) -> None:
    try:
        result = fn(*args)
    except SystemError as e:
        findings.add(what, args, f"SystemError {e}")
    except MemoryError as e:
        findings.add(what, args, f"MemoryError {e!s:.80}")  # a bad argument must not cost that much
    except EXPECTED as e:
        if not str(e):
            findings.add(what, args, f"{type(e).__name__} without a message")
    except Exception as e:  # noqa: BLE001 - anything else is a finding
        findings.add(what, args, f"unexpected {type(e).__name__}: {e!s:.80}")
    else:
        if result_kind == "pair" and not (isinstance(result, tuple) and len(result) == 2
                                          and isinstance(result[0], int)):
            findings.add(what, args, f"returned {result!r:.80}")
        elif result_kind == "pair" and result[0] == ERR_SPACE:
            findings.add(what, args, "the library ran out of memory on a bad argument")


def generated(cls) -> list[tuple[str, str]]:
    out = []
    for name in dir(cls):
        m = GENERATED.match(name)
        if m:
            out.append((name, m["fmt"]))
    return sorted(out)


def new_task(env):
    t = _qrn.Task(env)
    t.appendcons_i_2(3)
    t.appendvars_i_2(3)
    return t


def run(full: bool, only: str | None) -> list[str]:
    findings = Findings()
    env = _qrn.Env()
    task = new_task(env)
    targets = [("Env", env, n, f) for n, f in generated(_qrn.Env)] + \
              [("Task", task, n, f) for n, f in generated(_qrn.Task)]
    bad = {letter: bad_values(letter, full) for letter in "iLdsO"}
    for owner, obj, name, fmt in targets:
        if only and not re.search(only, name):
            continue
        if name.startswith(("appendcons", "appendvars", "put", "input", "resizetask")) and owner == "Task":
            obj = new_task(env)  # writers get a task of their own each, so sizes stay small
        fn = getattr(obj, name)
        base = [BASE[c] for c in fmt]
        # arrays as None (views) and as fresh bytearrays (allocating variants), around each bad value
        for array_base in (None, bytearray):
            around = [BASE[c] if c != "O" or array_base is None else bytearray() for c in fmt]
            check_call(findings, name, fn, tuple(around), "pair")
            for pos, letter in enumerate(fmt):
                for value in bad[letter]:
                    args = [bytearray() if isinstance(a, bytearray) else a for a in around]
                    args[pos] = value
                    check_call(findings, name, fn, tuple(args), "pair")
        # wrong argument counts
        check_call(findings, name, fn, tuple(base) + (None,), "pair")
        if fmt:
            check_call(findings, name, fn, tuple(base[:-1]), "pair")
        if full and owner == "Task":
            doomed = new_task(env)
            for s in range(4):
                doomed.set_Stream(s, lambda text, t=doomed: t.dispose())
            check_call(findings, name + "[disposing]", getattr(doomed, name), tuple(base), "pair")
            check_call(findings, name + "[disposed]", getattr(doomed, name), tuple(base), "pair")
        if obj is not task and obj is not env:
            obj.dispose()
    # the hand-written members
    hand = [("set_Stream", (0, len)), ("remove_Stream", (0,)), ("set_Progress", (len,)),
            ("set_InfoCallback", (len,)), ("writedatastream", (1, 0, None))]
    for name, base in hand:
        for pos in range(len(base)):
            for value in [-1, 2**40, None, "x", 1.5, object()]:
                args = list(base)
                args[pos] = value
                check_call(findings, name, getattr(task, name), tuple(args), "any")
    for ctor_args in [(), (0,), (env, "x"), (None, -1, 2**40), (env, 0, 0, object())]:
        check_call(findings, "Task", _qrn.Task, ctor_args, "any")
    for ctor_args in [(None,), ("a\0b",), (1, 2, 3), ("\udc80",)]:
        check_call(findings, "Env", _qrn.Env, ctor_args, "any")
    task.dispose()
    env.dispose()
    gc.collect()
    return findings.lines


def main(argv: list[str]) -> int:
    ap = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    ap.add_argument("--full", action="store_true")
    ap.add_argument("--only")
    a = ap.parse_args(argv)
    # A bad argument must never cost gigabytes: make such an attempt fail visibly (not under the
    # sanitizers, which reserve address space of their own).
    if "san" not in os.environ.get("LD_PRELOAD", ""):
        try:
            import resource
            resource.setrlimit(resource.RLIMIT_AS, (8 << 30, resource.RLIM_INFINITY))
        except (ImportError, ValueError, OSError):
            pass
    # Methods that name files (a task file, a stream file) may create them: keep them out of the
    # caller's directory.
    import tempfile
    here = os.getcwd()
    with tempfile.TemporaryDirectory() as scratch:
        os.chdir(scratch)
        try:
            lines = run(a.full, a.only)
        finally:
            os.chdir(here)
    for line in lines:
        print(line)
    print(f"done: {len(lines)} findings")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
