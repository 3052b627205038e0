"""Shared fixtures and small array helpers for the _qrn tests."""
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
