"""The user-interface classes from Python: ThatTime through DispatchWithEvents while pumping,
and Python objects as subclassing clients of a PlainWindow."""

import gc
import os
import subprocess
import sys
import time
import weakref

import pytest

from tsruntime import Dispatch, DispatchWithEvents, PumpWaitingMessages, constants


def pump_until(done, seconds=5):
    deadline = time.monotonic() + seconds
    while not done() and time.monotonic() < deadline:
        PumpWaitingMessages()
    return done()


def test_thattime_arrives_while_pumping_and_a_failing_handler_raises_from_the_pump():
    ticks = []
    timer = DispatchWithEvents("TSRuntimeLib.CTimer", type("Ticks", (), {
        "OnThatTime": lambda _: ticks.append(1)}))
    timer.Interval = 5
    assert pump_until(lambda: len(ticks) >= 3)
    timer.Interval = 0
    failing = DispatchWithEvents("CTimer", type("Failing", (), {"OnThatTime": lambda _: {}["tick"]}))
    failing.Interval = 1
    with pytest.raises(KeyError, match="tick"):
        pump_until(lambda: False)
    failing.Interval = 0


class Client:
    """A subclassing client written in Python: WindowProc and MsgResponse by name."""

    def __init__(self, name, journal, result=0, response=0):
        self.name, self.journal, self.result = name, journal, result
        self.MsgResponse = response

    def WindowProc(self, hwnd, iMsg, wParam, lParam):
        self.journal.append((self.name, iMsg, wParam, lParam))
        return self.result


def test_python_objects_subclass_a_plain_window():
    window, sub, journal = Dispatch("TSRuntimeLib.PlainWindow"), Dispatch("GSubclass"), []
    h = window.Handle
    a, b = Client("a", journal, 1), Client("b", journal, 2)
    sub.AttachMessage(a, h, 0x401)
    sub.AttachMessage(b, h, 0x401)
    assert window.SendMessage(0x401, 7, -8) == 1, "the earliest client's result"
    assert journal == [("b", 0x401, 7, -8), ("a", 0x401, 7, -8)]

    failing = type("Failing", (), {"MsgResponse": 0, "WindowProc": lambda *_: {}["handler"]})()
    sub.AttachMessage(failing, h, 0x403)
    with pytest.raises(KeyError, match="handler"):
        window.SendMessage(0x403, 0, 0)

    window.Show()
    sub.AttachMessage(a, window.Handle, 16)
    sub.AttachMessage(b, window.Handle, 2)
    window.Close()
    assert window.Visible, "a consumed close leaves the window open"
    a.MsgResponse = constants.emrPostProcess  # read when the message comes, not when attached
    held = weakref.ref(a)
    del a, b  # the attachment keeps a late-bound client alive
    journal.clear()
    window.Close()
    assert (window.Visible, window.Handle, journal[-1][:2]) == (False, 0, ("b", 2))
    gc.collect()  # the errors caught above hold frames in cycles
    assert held() is None, "released with the window, not held until the widget goes"



def test_the_user_interface_module_loads_only_when_one_of_its_classes_is_made():
    probe = ("import tsruntime\n"
             "def ui(): return 'libtsruntime-ui.so' in open('/proc/self/maps').read()\n"
             "print('TSRuntimeLib.CTimer' in tsruntime.classes(), ui(), tsruntime.constants.emrPreprocess)\n"
             "tsruntime.Dispatch('CTimer')\n"
             "print(ui())\n")
    out = subprocess.run([sys.executable, "-c", probe], capture_output=True, text=True,
                         env=dict(os.environ), check=True).stdout
    assert out == "True False 2\nTrue\n"
