"""Timers and window subclassing from Python: ThatTime through DispatchWithEvents while
pumping, and Python objects as subclassing clients of a PlainWindow."""

import gc
import os
import subprocess
import sys
import threading
import time
import weakref

import pytest
from conftest import raised

import tsruntime
from tsruntime import Dispatch, DispatchWithEvents, PumpWaitingMessages, constants

SOURCE = "tsruntime.WindowProc"


def pump_until(done, seconds=5):
    deadline = time.monotonic() + seconds
    while not done() and time.monotonic() < deadline:
        PumpWaitingMessages()
    return done()


class Ticks:
    def __init__(self):
        self.count = 0

    def OnThatTime(self):
        self.count += 1


def test_thattime_arrives_through_dispatchwithevents_while_pumping():
    timer = DispatchWithEvents("TSRuntimeLib.CTimer", Ticks)
    timer.Item = "mine"
    timer.Interval = 5
    assert (timer.Enabled, timer.Interval) == (False, 5)
    assert pump_until(lambda: timer.count >= 3)
    timer.Enabled = False
    seen = timer.count
    pump_until(lambda: False, seconds=0.05)
    assert (timer.count, timer.Interval, timer.Item) == (seen, 0, "mine")
    timer.PulseTimer()
    assert timer.count == seen + 1


class FailingTicks:
    def OnThatTime(self):
        raise KeyError("tick")


def test_a_failing_tick_handler_raises_from_the_pump():
    timer = DispatchWithEvents("TSRuntimeLib.CTimer", FailingTicks)
    timer.Interval = 1
    with pytest.raises(KeyError, match="tick"):
        pump_until(lambda: False, seconds=5)
    timer.Interval = 0


def test_the_101st_timer_fails():
    timers = [Dispatch("TSRuntimeLib.CTimer") for _ in range(101)]
    for t in timers[:100]:
        t.Interval = 60000
    assert raised(lambda: setattr(timers[100], "Interval", 60000)) == (
        -2147207853, SOURCE, "No more than 10 timers allowed per class", "", 0)
    for t in timers:
        t.Interval = 0


TWO_THREADS = """
import threading, time
import tsruntime

def run(seen, index, both_full):
    ticks = []
    quick = tsruntime.DispatchWithEvents("TSRuntimeLib.CTimer", type("T", (), {
        "OnThatTime": lambda self: ticks.append(threading.get_ident())}))
    quick.Interval = 5
    slow = [tsruntime.Dispatch("TSRuntimeLib.CTimer") for _ in range(99)]
    for t in slow:
        t.Interval = 60000
    both_full.wait()
    try:
        tsruntime.Dispatch("TSRuntimeLib.CTimer").Interval = 60000
        extra = "started"
    except tsruntime.AutomationError as e:
        extra = e.number
    deadline = time.monotonic() + 5
    while len(ticks) < 3 and time.monotonic() < deadline:
        tsruntime.PumpWaitingMessages()
    quick.Interval = 0
    for t in slow:
        t.Interval = 0
    seen[index] = (extra, len(ticks) >= 3, set(ticks) == {threading.get_ident()})

seen, both_full = [None, None], threading.Barrier(2)
threads = [threading.Thread(target=run, args=(seen, i, both_full)) for i in range(2)]
for t in threads:
    t.start()
for t in threads:
    t.join()
print(seen)
"""


@pytest.mark.parametrize("first", ["in a fresh process", "after the main thread's timers"])
def test_two_host_threads_run_timers_at_once_each_with_its_own_table(first):
    code = TWO_THREADS
    if first != "in a fresh process":
        code = ("import tsruntime\nt = tsruntime.Dispatch('CTimer')\n"
                "t.Interval = 1000\nt.Interval = 0\n") + code
    out = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True,
                         env=dict(os.environ), timeout=60, check=True).stdout
    assert out == "[(-2147207853, True, True), (-2147207853, True, True)]\n"


class Client:
    """A subclassing client written in Python: WindowProc and MsgResponse by name."""

    def __init__(self, name, journal, result=0, response=0):
        self.name, self.journal, self.result = name, journal, result
        self.MsgResponse = response

    def WindowProc(self, hwnd, iMsg, wParam, lParam):
        self.journal.append((self.name, iMsg, wParam, lParam))
        return self.result


def test_python_objects_subclass_a_plain_window():
    window, sub = Dispatch("TSRuntimeLib.PlainWindow"), Dispatch("TSRuntimeLib.GSubclass")
    h, journal = window.Handle, []
    a, b = Client("a", journal, 1), Client("b", journal, 2)
    sub.AttachMessage(a, h, 0x401)
    sub.AttachMessage(b, h, 0x401)
    assert raised(lambda: sub.AttachMessage(a, h, 0x401)) == (
        -2147208422, SOURCE, "Message already handled by another class", "", 0)
    assert window.WindowProperty(f"{h}#1025C") == 2 and window.WindowProperty(f"C{h}") == 2
    assert window.SendMessage(0x401, 7, -8) == 1
    assert journal == [("b", 0x401, 7, -8), ("a", 0x401, 7, -8)]
    assert sub.CurrentMessage == 0x401

    journal.clear()
    window.PostMessage(0x402, 3, 4)
    sub.AttachMessage(b, h, 0x402)
    assert journal == [] and pump_until(lambda: journal)
    assert journal == [("b", 0x402, 3, 4)]
    for client, msg in [(a, 0x401), (b, 0x401), (b, 0x402)]:
        sub.DetachMessage(client, h, msg)
    assert window.WindowProperty(str(h)) is None, "unhooked"
    assert sub.CallOldWindowProc(h, 16, 0, 0) == 0
    assert raised(lambda: sub.AttachMessage(a, 0, 16))[:3] == (-2147208421, SOURCE, "Invalid window")

    window.Show()
    h = window.Handle
    sub.AttachMessage(a, h, 16)
    window.Close()
    assert window.Visible and window.Handle == h, "a consumed close leaves the window open"
    a.MsgResponse = constants.emrPostProcess
    held = weakref.ref(a)
    del a
    window.Close()
    assert (window.Visible, window.Handle) == (False, 0), "closed: its native window is gone"
    gc.collect()  # the errors caught above hold frames in cycles
    assert held() is None, "released with the window, not held until the widget goes"
    assert raised(lambda: sub.AttachMessage(b, h, 16))[0] == -2147208421


def test_destroy_notice_and_failures_in_python_handlers():
    window, sub, journal = Dispatch("PlainWindow"), Dispatch("GSubclass"), []
    h = window.Handle

    class Failing:
        __slots__ = ()
        MsgResponse = 0

        def WindowProc(self, *args):
            raise ValueError(f"from the handler {args}")

    class Late:
        def WindowProc(self, hwnd, iMsg, wParam, lParam):
            return 5

    late = Late()
    sub.AttachMessage(late, h, 0x404)
    window.Show()
    late.MsgResponse = constants.emrPostProcess  # gained after it was attached
    assert window.SendMessage(0x404, 0, 0) == 0, "the previous procedure's result"
    sub.DetachMessage(late, h, 0x404)

    failing, watcher = Failing(), Client("w", journal)
    sub.AttachMessage(failing, h, 0x403)
    with pytest.raises(ValueError, match=rf"from the handler \({h}, 1027, 0, 0\)"):
        window.SendMessage(0x403, 0, 0)
    sub.DetachMessage(failing, h, 0x403)
    sub.AttachMessage(watcher, h, 2)
    del watcher  # the attachment keeps a late-bound client alive
    window.Destroy()
    assert journal == [("w", 2, 0, 0)] and window.Handle == 0
    PumpWaitingMessages()


def test_ui_classes_and_enums_are_listed_before_the_module_loads():
    probe = (
        "import tsruntime\n"
        "names = tsruntime.classes()\n"
        "loaded = 'libtsruntime-ui.so' in open('/proc/self/maps').read()\n"
        "print(all('TSRuntimeLib.' + c in names for c in ['CTimer', 'GSubclass', 'PlainWindow']),"
        " 'TSRuntimeLib.ISubclass' in names, loaded, tsruntime.constants.eeTooManyTimers,"
        " tsruntime.constants.emrPreprocess)\n"
        "tsruntime.Dispatch('CTimer')\n"
        "print('libtsruntime-ui.so' in open('/proc/self/maps').read())\n")
    out = subprocess.run([sys.executable, "-c", probe], capture_output=True, text=True,
                         env=dict(os.environ), check=True).stdout
    assert out == "True False False 13651 2\nTrue\n"
