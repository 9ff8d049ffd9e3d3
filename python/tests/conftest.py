"""Shared set-up of the Python host's tests.

The test-only class PyProbe lives in a library of its own, named by TSRUNTIME_PROBE;
loading it registers the class. Tests of library classes that a build may not hold yet
are marked with `needs(class name)`.
"""

import ctypes
import os

import pytest

import tsruntime

if os.environ.get("TSRUNTIME_PROBE"):
    ctypes.CDLL(os.environ["TSRUNTIME_PROBE"], mode=ctypes.RTLD_GLOBAL)


def registered(name):
    try:
        tsruntime.members(name)
        return True
    except KeyError:
        return False


def needs(*names):
    absent = [n for n in names if not registered(n)]
    return pytest.mark.skipif(bool(absent), reason=f"not registered in this build: {absent}")


@pytest.fixture
def probe():
    if not registered("PyProbe"):
        pytest.skip("the probe class is not loaded (set TSRUNTIME_PROBE)")
    return tsruntime.Dispatch("PyProbe")


@pytest.fixture
def russian():
    """The thread's interface language back to Russian after the test (creating a root
    object resets it)."""
    yield
    tsruntime.Dispatch("TSRuntimeLib.clsZKRunTimeLib")
