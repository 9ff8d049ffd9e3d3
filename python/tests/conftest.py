import ctypes
import os

import pytest

import tsruntime

# Loading this library registers the test-only class PyProbe.
ctypes.CDLL(os.environ["TSRUNTIME_PROBE"], mode=ctypes.RTLD_GLOBAL)


def raised(call):
    """The five fields of the error that `call` raises."""
    with pytest.raises(tsruntime.AutomationError) as caught:
        call()
    e = caught.value
    return e.number, e.source, e.description, e.helpfile, e.helpcontext

