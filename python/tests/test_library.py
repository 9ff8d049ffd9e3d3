"""The library's own classes driven through Dispatch, one test per class, as scripts use them."""

import datetime
import threading

from conftest import raised

import tsruntime
from tsruntime import Dispatch, DispatchWithEvents, SafeArray

STRING = 8


def test_every_registered_class_is_created_and_offers_its_members():
    for progid in tsruntime.classes():
        obj, members = Dispatch(progid), tsruntime.members(progid)
        assert {m.name for m in members if m.kind in ("method", "get")} <= set(dir(obj)), progid
        assert all(callable(getattr(obj, m.name)) for m in members if m.kind == "method"), progid


def test_root_language_is_per_thread_and_reset_by_every_new_root(russian):
    first = Dispatch("TSRuntimeLib.clsZKRunTimeLib")
    first.Language = 7  # stored unchecked
    worker = threading.Thread(target=lambda: Dispatch("clsZKRunTimeLib").SetLanguage(1))
    worker.start()
    worker.join()
    assert (first.Init(), first.Language) == (True, 7)
    Dispatch("TSRuntimeLib.clsZKRunTimeLib")
    assert first.Language == 0 and first.GetObjString != first.GetObjString


def test_string_written_back_and_named_arguments_errors_and_odd_bounds():
    s = Dispatch("TSRuntimeLib.clsZKString")
    assert s.Filter("a-b-c", "-", Iclude=True, SelStart=4) == ("--", 2)
    assert raised(lambda: s.InstrRight("abcabc", "bc", -5)) == (
        -2147220803, "ZKRuntimeLib.clsZKString.InstrRight", "SearchLen = -5", "", 0)
    odd = s.ArraySplit("")
    assert (odd.bounds, odd.tolist(), odd.typename) == ([(-1, -1)], [""], "String()")
    assert s.ArrayJoin(odd) == ""  # passed back in with its bounds


def test_string_concat_counts_and_lets_the_runtime_errors_through():
    c = Dispatch("TSRuntimeLib.clsZKStringConcat")
    c.Add("abc ")
    assert (c.CharsUsed, c.CharsAllocated, c.GetStr()) == (4, 1000, "abc ")
    c.AllocSize = 0
    c.Add("x" * 996)
    assert raised(lambda: c.Add("y"))[0] == 11 and c.CharsUsed == 1000


def test_array_sorts_write_back_a_new_array_and_arrays_passed_in_keep_their_shape():
    a = Dispatch("TSRuntimeLib.clsZKArray")
    words = SafeArray(["b", "C", "a"], lbound=-1, vartype=STRING)
    ok, ordered = a.SortBubble(words, ComareMethod=1)
    assert (ok, ordered.tolist(), ordered.bounds) == (True, ["a", "b", "C"], [(-1, 1)])
    assert words.tolist() == ["b", "C", "a"]  # the argument itself is left as it was
    assert a.FindInArray(ordered, "B", RowIndexBuf=0, CompareMethod=1) == (True, 0)
    for value, nothing in [(SafeArray.undimensioned(STRING), True), (SafeArray([]), True),
                           (SafeArray(["x"], lbound=-1), False), (["x"], False), ("x", True)]:
        assert a.IsArrayNothing(value) is nothing, value


def test_md5_of_text_and_of_bytes():
    m = Dispatch("TSRuntimeLib.clsZKmd5")
    assert m.DigestStrToHexStr("abc") == "900150983CD24FB0D6963F7D28E17F72"
    m.MD5Init()
    assert m.RegisterB == "-271733879"
    m.MD5Update(3, b"abc")
    m.MD5Final()
    assert m.GetValues() == "900150983CD24FB0D6963F7D28E17F72"


def test_dictionary_keys_data_references_errors_and_on_changed():
    class Handler:
        def __init__(self):
            self.changed = []

        def OnChanged(self, ChangedItem):  # calls back into the object
            self.changed.append((ChangedItem, [self.Key(i) for i in range(self.Count)]))

    d = DispatchWithEvents("TSRuntimeLib.clsZKDictionary", Handler)
    for key, value in [("a", 1), ("b", "два"), ("c", d)]:
        d.Add(key, value)
    assert (d.changed, d.Data(0), d("c"), d.Exists("B"), d.Exists(4)) == ([], 1, d, True, False)
    d["a"] = 3.5
    d.SetKey(0, "x")
    assert d.changed == [("a", ["b", "c", "a"]), (0, ["c", "a", "x"])]
    assert raised(lambda: d.SetData("missing", 2))[0] == 5  # a failed lookup inside a let


def test_storage_items_values_errors_in_the_interface_language_and_nodes_by_reference(russian):
    node, child = Dispatch("TSRuntimeLib.clsZKStorage"), Dispatch("TSRuntimeLib.clsZKStorage")
    items, source = node.Items, "ZKRuntimeLib.clsZKStorageItems.Item"
    assert raised(lambda: items(-1)) == (-2147220201, source, "Нет данных в хранилище", "", 0)
    values = [True, datetime.datetime(2024, 3, 5, 14, 7, 9), "текст", b"\x00\xff", tsruntime.Null]
    assert all(items.Add(v) for v in values) and not items.Add(node)
    assert [items(i) for i in range(5)] == values
    assert raised(lambda: items(5)) == (-2147220202, source, "Недопустимый индекс элемента", "", 0)
    Dispatch("TSRuntimeLib.clsZKRunTimeLib").Language = 1
    assert raised(lambda: items(-1))[2] == "Storage is Empty"
    node.Nodes.Add(child)
    child.Items = node.Items  # a part replaced by reference
    assert (node.Nodes(0), list(node.Nodes), child.Items(2)) == (child, [child], "текст")
