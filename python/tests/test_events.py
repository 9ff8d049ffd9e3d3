"""Events reach a handler class synchronously, inside the call that raised them."""

import gc
import weakref

import pytest

import tsruntime
from tsruntime import CDispatch, DispatchWithEvents


class Recorder:
    def __init__(self):
        self.seen = []

    def OnChanged(self, key):  # the event "Changed"
        self.seen.append(("changed", key))

    def OnRemoved(self, key, count):  # the event "OnRemoved" keeps its name
        self.seen.append(("removed", key, count))


@pytest.fixture
def events(probe):
    return DispatchWithEvents("TSRuntimeLib.PyProbe", Recorder)


def test_each_event_calls_its_handler_with_the_arguments(events):
    events["a"] = 1
    events.SetItem("b", 2)
    events.Remove("a")
    assert events.seen == [("changed", "a"), ("changed", "b"), ("removed", "a", 1)]


def test_the_result_is_both_the_object_and_the_handler(events):
    assert isinstance(events, CDispatch) and isinstance(events, Recorder)
    events["a"] = "x"
    assert events("a") == "x" and events.Count == 1
    events.Caption = "t"  # a property of the object still goes to the object
    assert events.Caption == "t" and "Caption" not in vars(events)
    events.note = "mine"  # any other name is the handler's own attribute
    assert events.note == "mine"


def test_events_without_a_handler_method_are_ignored(probe):
    class NoHandlers:
        pass

    quiet = DispatchWithEvents("PyProbe", NoHandlers)
    quiet["a"] = 1
    quiet.Remove("a")
    assert quiet.Count == 0


def test_a_handler_may_call_back_into_the_object(probe):
    class Counting:
        def __init__(self):
            self.counts = []

        def OnChanged(self, key):
            self.counts.append((key, self.Count, self(key)))

    obj = DispatchWithEvents("PyProbe", Counting)
    obj["a"], obj["b"] = 1, 2
    assert obj.counts == [("a", 1, 1), ("b", 2, 2)]


def test_a_failing_handler_raises_from_the_call_after_the_call_completes(probe):
    class Failing:
        def OnChanged(self, key):
            raise LookupError(key)

    obj = DispatchWithEvents("PyProbe", Failing)
    with pytest.raises(LookupError, match="a"):
        obj["a"] = 1
    assert obj("a") == 1  # the library finished its work
    obj.Remove("a")  # no handler for this event, and the earlier failure is not raised again


def test_an_existing_object_can_be_connected_and_the_connection_ends_with_the_handler(probe):
    seen = []

    class Watcher:
        def OnChanged(self, key):
            seen.append(key)

    watcher = DispatchWithEvents(probe, Watcher)
    probe["a"] = 1
    gone = weakref.ref(watcher)
    del watcher
    gc.collect()
    assert gone() is None
    probe["b"] = 2
    assert seen == ["a"]


def test_pumping_finds_nothing_waiting_because_events_are_delivered_at_once(events):
    events["a"] = 1
    assert events.seen == [("changed", "a")]
    assert tsruntime.PumpWaitingMessages() == 0
    assert events.seen == [("changed", "a")]
