"""Late binding from Python: creating objects, finding and calling members, written-back
arguments, default members, enumeration, errors both ways, type information and events."""

import gc
import weakref
from decimal import Decimal

import pytest
from conftest import raised

import tsruntime
from tsruntime import CDispatch, Dispatch, DispatchWithEvents, SafeArray

ROOT = "TSRuntimeLib.clsZKRunTimeLib"


def test_objects_are_of_their_named_class_with_members_found_in_any_case():
    lib, concat = Dispatch("tsruntimelib.CLSZKRUNTIMELIB"), Dispatch("clsZKStringConcat")
    assert repr(lib) == "<tsruntime.CDispatch clsZKRunTimeLib>" and type(lib).__name__ == "clsZKRunTimeLib"
    assert type(lib.GetObjString) is type(Dispatch("clsZKString")) and issubclass(type(lib), CDispatch)
    assert Dispatch(lib) is lib and lib.Init() is lib.init() is lib.INIT() is True
    assert ROOT in tsruntime.classes() and "TSRuntimeLib.Enumerator" not in tsruntime.classes()
    for attempt in [lambda: lib.NoSuchMember, lambda: setattr(lib, "Nope", 1),
                    lambda: setattr(concat, "CharsUsed", 3), lambda: Dispatch("clsZKIniFile").SepData]:
        with pytest.raises(AttributeError):
            attempt()
    for progid in tsruntime.classes():
        obj, members = Dispatch(progid), tsruntime.members(progid)
        assert {m.name for m in members if m.kind in ("method", "get")} <= set(dir(obj)), progid
        assert all(callable(getattr(obj, m.name)) for m in members if m.kind == "method"), progid


class Raises(int):
    """An error number expected in place of a result."""


S, PROBE = Dispatch("clsZKString"), Dispatch("PyProbe")
WORDS = SafeArray(["b", "C", "a"], lbound=-1, vartype=8)
CALLS = [
    # call, result or error number, what the row shows
    (lambda: Dispatch("TSRuntimeLib.NoSuchClass"), Raises(429), "an unknown class"),
    (lambda: Dispatch(ROOT)(), Raises(438), "the default member of a class without one"),
    (lambda: S.InstrRight("a", "b", Nope=1), Raises(448), "an unknown named argument"),
    (lambda: S.InWords(Decimal("1.5"), False), "один ", "a Decimal for a Currency parameter"),
    (lambda: S.Filter("a-b-c", "-"), ("abc", None), "a written-back argument left out is None"),
    (lambda: S.Filter("a-b-c", "-", SelStart=4), ("abc", 2), "a written-back argument by name"),
    (lambda: S.Filter("a-b-c", "-", iclude=0, selstart=5), ("abc", 3), "names in any case"),
    (lambda: Dispatch("clsZKmd5").LongLeftRotate(1, 33), (2, 2, 1), "written back in order"),
    (lambda: PROBE.Twice(21), 42, "no result: the one written value alone"),
    (lambda: PROBE.Bump(), (True, 11), "left out: its default as the member left it"),
    (lambda: (Dispatch("clsZKArray").SortBubble(WORDS, ComareMethod=1)[1], WORDS[:]),
     (SafeArray(list("abC"), -1, 8), list("bCa")), "an array written back keeps its bounds; the one passed in stays"),
    (lambda: S.ArrayJoin(S.ArraySplit("")), "", "an array from -1 returned and passed back"),
]


@pytest.mark.parametrize("call, expected, rule", CALLS, ids=[c[2] for c in CALLS])
def test_calls_bind_their_arguments_and_return_the_written_back_ones(call, expected, rule):
    if isinstance(expected, Raises):
        assert raised(call)[0] == expected, rule
    else:
        assert call() == expected, rule


def test_default_member_indexed_properties_and_enumeration():
    d = Dispatch("clsZKDictionary")
    for key in ["a", "b", "self"]:
        d.Add(key)
    d["b"] = "x"
    d.SetData("a", 2)
    d["self"] = d  # an object goes to the Set and comes back as the same object
    back = d("self")
    assert (d("a"), d["b"], d.Data("b"), d("absent"), back) == (2, "x", "x", None, d)
    assert isinstance(back, CDispatch) and back is not d and hash(back) == hash(d)
    assert back != Dispatch("clsZKDictionary") and (list(d), len(d)) == (["x", 2, d], 3)
    items = d.NewEnum()
    assert (items.Next(None), list(items), items.Next(None)) == ((True, "x"), [2, d], (False, None))


def test_errors_carry_their_five_fields_both_ways():
    assert raised(lambda: PROBE.Fail(-2147220803)) == (
        -2147220803, "PyProbe.Fail", "Failed on purpose", "probe.chm", 42)
    with pytest.raises(tsruntime.AutomationError, match=r"^Error 450 \(ZKRuntimeLib\): Wrong"):
        Dispatch(ROOT).Init(1)
    # A caught error passed back in is the host's Err object.
    errors = Dispatch("TSRuntimeLib.clsTSErrors")
    try:
        S.InstrRight("abc", "b", -5)
    except tsruntime.AutomationError as caught:
        errors.AddAsError(caught)
    errors.AddAsError(tsruntime.AutomationError(53, "host", "Нет файла"))
    assert errors.GetAsText("") == "[-2147220803] SearchLen = -5\r\n[53] Нет файла\r\n"


def test_type_information():
    assert ("method Filter(Expression As String, FilteringStr As String, Optional Iclude As Boolean"
            " = False, Optional CompareType As Long = 0, Optional ByRef SelStart As Long) As String"
            in map(repr, tsruntime.members("clsZKString")))
    assert {"get Data(Item As Variant) As Variant [default]", "event OnChanged(ChangedItem As Variant)"
            } <= set(map(repr, tsruntime.members("TSRuntimeLib.clsZKDictionary")))
    with pytest.raises(KeyError):
        tsruntime.members("TSRuntimeLib.NoSuchClass")


class Recorder:
    def __init__(self):
        self.seen = []

    def OnChanged(self, item):  # the event OnChanged keeps its name; calls back into the object
        self.seen.append((item, [self.Key(i) for i in range(self.Count)]))

    def OnDoubled(self, value):  # the event Doubled
        self.seen.append(value)


def test_events_call_the_handler_on_plus_their_name_and_a_failing_one_raises_after_the_call():
    probe, d = (DispatchWithEvents(name, Recorder) for name in ["PyProbe", "clsZKDictionary"])
    assert isinstance(d, CDispatch) and isinstance(d, Recorder)
    assert probe.Twice(4) == 8 and probe.seen == [8]
    d.Add("a")
    d.Add("b")
    d["a"] = 1
    d.SortMode = 1  # a property of the object still goes to the object
    d.note = "mine"  # any other name is the handler's own attribute
    assert (d.seen, d.SortMode, d.note, "SortMode" in vars(d)) == ([("a", ["b", "a"])], 0, "mine", False)
    quiet = DispatchWithEvents(d, type("NoHandlers", (), {}))
    quiet["a"] = 2  # no handler method: ignored
    assert len(d.seen) == 2
    failing = DispatchWithEvents(d, type("Failing", (), {"OnChanged": lambda _, key: {}[key]}))
    with pytest.raises(KeyError, match="b"):  # raised by the handler once the call completes
        d["b"] = 1
    assert d("b") == 1
    gone = weakref.ref(failing)
    del failing
    gc.collect()
    d["b"] = 2  # the connection ended with the handler object
    assert gone() is None
