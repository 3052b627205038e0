"""Shared fixtures and small helpers for the _qrn tests."""
import re
from array import array

import pytest

import _qrn


@pytest.fixture
def env():
    e = _qrn.Env()
    yield e
    e.dispose()


@pytest.fixture
def task(env):
    t = _qrn.Task(env)
    yield t
    t.dispose()


def sized(task, numcon, numvar):
    """The task after appending numcon constraints and numvar variables."""
    assert task.appendcons_i_2(numcon) == (0, None)
    assert task.appendvars_i_2(numvar) == (0, None)
    return task


def raises(msg):
    """Expects a TypeError whose message is exactly msg."""
    return pytest.raises(TypeError, match="^" + re.escape(msg) + "$")


def iv(*values):
    """A memoryview of 32-bit integers."""
    return memoryview(array("i", values))


def qv(*values):
    """A memoryview of 64-bit integers."""
    return memoryview(array("q", values))


def dv(*values):
    """A memoryview of doubles."""
    return memoryview(array("d", values))


def ints(b):
    return list(memoryview(b).cast("i"))


def doubles(b):
    return list(memoryview(b).cast("d"))
