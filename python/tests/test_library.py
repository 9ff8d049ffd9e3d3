"""The library's own classes driven from Python through Dispatch, as scripts use them."""

import datetime
import threading

import pytest
from conftest import needs

import tsruntime
from tsruntime import AutomationError, CDispatch, Dispatch, DispatchWithEvents, SafeArray

STRING, LONG = 8, 3


def raised(call):
    with pytest.raises(AutomationError) as caught:
        call()
    e = caught.value
    return e.number, e.source, e.description, e.helpfile, e.helpcontext


def test_every_registered_class_is_created_and_exposes_its_members():
    for progid in tsruntime.classes():
        obj = Dispatch(progid)
        name = progid.split(".", 1)[1]
        assert repr(obj) == f"<tsruntime.CDispatch {name}>"
        for member in tsruntime.members(progid):
            if member.kind == "method":
                assert callable(getattr(obj, member.name)), f"{name}.{member.name}"
            if member.kind != "event":
                assert member.name in dir(obj) or "Set" + member.name in dir(obj), member


class TestRoot:
    def test_init_is_always_true(self):
        lib = Dispatch("TSRuntimeLib.clsZKRunTimeLib")
        assert [lib.Init() for _ in range(3)] == [True, True, True]

    def test_language_is_stored_unchecked_and_reset_by_every_new_root(self, russian):
        first = Dispatch("TSRuntimeLib.clsZKRunTimeLib")
        assert first.Language == 0
        first.Language = 7
        assert first.Language == 7
        second = Dispatch("TSRuntimeLib.clsZKRunTimeLib")
        assert (first.Language, second.Language) == (0, 0)

    def test_language_belongs_to_the_thread(self, russian):
        lib = Dispatch("TSRuntimeLib.clsZKRunTimeLib")
        seen = []

        def other_thread():
            mine = Dispatch("TSRuntimeLib.clsZKRunTimeLib")
            mine.Language = 1
            seen.append(mine.Language)

        worker = threading.Thread(target=other_thread)
        worker.start()
        worker.join()
        assert seen == [1] and lib.Language == 0

    @needs("clsZKString")
    def test_get_obj_string_hands_out_a_new_object_on_every_read(self):
        lib = Dispatch("TSRuntimeLib.clsZKRunTimeLib")
        a, b = lib.GetObjString, lib.GetObjString
        assert isinstance(a, CDispatch) and repr(a) == "<tsruntime.CDispatch clsZKString>"
        assert a != b


@needs("clsZKString")
class TestString:
    @pytest.fixture
    def s(self):
        return Dispatch("TSRuntimeLib.clsZKString")

    def test_filter_writes_the_caret_back_and_takes_iclude_by_name(self, s):
        assert s.Filter("a-b-c", "-", SelStart=4) == ("abc", 2)
        assert s.Filter("a-b-c", "-", Iclude=True)[0] == "--"
        assert s.Filter("a-b-c", "-", iclude=False, selstart=5) == ("abc", 3)

    def test_instr_right_error_carries_five_fields(self, s):
        assert s.InstrRight("abcabc", "bc") == 5 and s.InstrRight("abcabc", "bc", SearchLen=4) == 2
        assert raised(lambda: s.InstrRight("abcabc", "bc", -5)) == (
            -2147220803, "ZKRuntimeLib.clsZKString.InstrRight", "SearchLen = -5", "", 0)

    def test_array_split_of_nothing_has_bounds_minus_one_to_minus_one(self, s):
        odd = s.ArraySplit("")
        assert (odd.bounds, odd.tolist(), odd.typename) == ([(-1, -1)], [""], "String()")
        assert odd.get(-1) == ""
        assert s.ArrayJoin(odd) == ""  # passed back in with its bounds

    def test_packed_text_round_trips(self, s):
        packed = "000000011ab000000009000000012xyz"
        parts = s.ArraySplit(packed)
        assert parts.bounds == [(0, 2)] and parts.tolist() == ["ab", "", "xyz"]
        assert s.ArrayJoin(SafeArray(["ab", "", "xyz"], vartype=STRING)) == packed
        assert raised(lambda: s.ArrayJoin(SafeArray.undimensioned(STRING)))[0] == 9


@needs("clsZKArray")
class TestArray:
    @pytest.fixture
    def a(self):
        return Dispatch("TSRuntimeLib.clsZKArray")

    def test_sorts_write_the_array_back_and_take_the_compare_method_by_name(self, a):
        words = SafeArray(["b", "C", "a"], vartype=STRING)
        ok, ordered = a.SortBubble(words)
        assert ok is True and ordered.tolist() == ["C", "a", "b"]
        assert a.SortBubble(words, ComareMethod=1)[1].tolist() == ["a", "b", "C"]
        assert words.tolist() == ["b", "C", "a"]

    def test_find_in_array_writes_the_insertion_row_back(self, a):
        sorted_words = SafeArray(["a", "c", "e"], vartype=STRING)
        assert a.FindInArray(sorted_words, "c", RowIndexBuf=0) == (True, 1)
        assert a.FindInArray(sorted_words, "d", RowIndexBuf=0) == (False, 2)

    @pytest.mark.parametrize("value, nothing", [
        (SafeArray.undimensioned(STRING), True),
        (SafeArray([], vartype=STRING), True),
        (SafeArray(["x"], lbound=-1, vartype=STRING), False),
        (["x"], False),
        ("x", True),
    ], ids=["never dimensioned", "no elements", "bounds -1 to -1", "a list", "not an array"])
    def test_is_array_nothing(self, a, value, nothing):
        assert a.IsArrayNothing(value) is nothing


@needs("clsZKStringConcat")
def test_string_concat_counts_and_lets_the_runtime_errors_through():
    c = Dispatch("TSRuntimeLib.clsZKStringConcat")
    c.Add("abc ")
    assert (c.CharsUsed, c.CharsAllocated, c.GetStr()) == (4, 1000, "abc ")
    c.AllocSize = 0
    c.Add("x" * 996)
    assert raised(lambda: c.Add("y"))[0] == 11
    assert c.AllocSize == 0 and c.CharsUsed == 1000


@needs("clsZKmd5")
class TestMd5:
    def test_digests_of_text_and_of_bytes_agree(self):
        m = Dispatch("TSRuntimeLib.clsZKmd5")
        assert m.DigestStrToHexStr("abc") == "900150983CD24FB0D6963F7D28E17F72"
        m.MD5Init()
        assert m.RegisterB == "-271733879"
        m.MD5Update(3, b"abc")
        m.MD5Final()
        assert m.GetValues() == "900150983CD24FB0D6963F7D28E17F72"

    def test_long_left_rotate_writes_both_arguments_back(self):
        m = Dispatch("TSRuntimeLib.clsZKmd5")
        assert m.LongLeftRotate(1, 33) == (2, 2, 1)
        assert m.LongLeftRotate(5, -1) == (5, 5, -1)


@needs("clsZKDictionary")
class TestDictionary:
    @pytest.fixture
    def d(self):
        return Dispatch("TSRuntimeLib.clsZKDictionary")

    def test_default_member_indexed_properties_and_enumeration(self, d):
        for key, value in [("a", 1), ("b", "два"), ("c", 3.5)]:
            d.Add(key, value)
        assert (len(d), d.Count) == (3, 3)
        assert (d("a"), d["b"], d.Data("c"), d.Data(0)) == (1, "два", 3.5, 1)
        assert d("absent") is None and d(5) is None
        assert [d.Key(i) for i in range(3)] == ["a", "b", "c"]
        assert list(d) == [1, "два", 3.5]
        assert d.Exists(1) and not d.Exists(4) and d.Exists("B")

    def test_let_moves_the_entry_and_key_let_renames(self, d):
        for key in "abc":
            d.Add(key, key.upper())
        d.SetData("a", 10)
        d["b"] = 20
        assert [d.Key(i) for i in range(3)] == ["c", "a", "b"] and list(d) == ["C", 10, 20]
        d.SetKey("c", "z")
        assert [d.Key(i) for i in range(3)] == ["a", "b", "z"]

    def test_objects_are_stored_by_reference(self, d):
        other = Dispatch("TSRuntimeLib.clsZKDictionary")
        d.Add("o", other)
        assert d("o") == other
        d["o"] = d  # an object assigned goes to the Data set
        assert d("o") == d and d("o") != other

    def test_sorted_mode_reads_zero_while_entries_exist(self, d):
        d.SortMode = 2
        for key in "bac":
            d.Add(key)
        assert [d.Key(i) for i in range(3)] == ["c", "b", "a"]
        assert d.SortMode == 0
        d.Clear()
        assert d.SortMode == 2

    def test_a_failed_lookup_in_a_let_reaches_python(self, d):
        d.Add("a", 1)
        assert raised(lambda: d.SetData("missing", 2))[0] == 5
        assert raised(lambda: d.SetData(7, 2))[0] == 9

    def test_on_changed_fires_once_with_the_item_given(self):
        class Handler:
            def __init__(self):
                self.changed = []

            def OnChanged(self, ChangedItem):
                self.changed.append((ChangedItem, [self.Key(i) for i in range(self.Count)]))

        d = DispatchWithEvents("TSRuntimeLib.clsZKDictionary", Handler)
        for key in "abc":
            d.Add(key, 0)
        assert d.changed == []  # Add raises no event
        d["a"] = 1
        d.SetKey(0, "x")
        assert d.changed == [("a", ["b", "c", "a"]), (0, ["c", "a", "x"])]


@needs("clsZKStorage", "clsZKStorageItems", "clsZKStorageNodes")
class TestStorage:
    @pytest.fixture
    def node(self):
        return Dispatch("TSRuntimeLib.clsZKStorage")

    def test_items_round_trip_their_values(self, node):
        items = node.Items
        when = datetime.datetime(2024, 3, 5, 14, 7, 9)
        for value in [True, False, when, "текст", b"\x00\xc0\xff", tsruntime.Null]:
            assert items.Add(value) is True, value
        assert [items(i) for i in range(6)] == [True, False, when, "текст", b"\x00\xc0\xff",
                                                 tsruntime.Null]
        assert items.Add(None) is False and items.Add(node) is False and items.Count == 6

    def test_item_errors_carry_five_fields_in_the_interface_language(self, node, russian):
        items = node.Items
        source = "ZKRuntimeLib.clsZKStorageItems.Item"
        assert raised(lambda: items.Item(0)) == (
            -2147220202, source, "Недопустимый индекс элемента", "", 0)
        assert raised(lambda: items.Item(-1)) == (-2147220201, source, "Нет данных в хранилище", "", 0)
        items.Add(SafeArray([1, 2], vartype=LONG))
        number, _, text, _, _ = raised(lambda: items(0))
        assert number == -2147220203 and "8195" in text and text.endswith(" не поддерживается")
        Dispatch("TSRuntimeLib.clsZKRunTimeLib").Language = 1
        assert raised(lambda: items(-1))[2] == "Storage is Empty"

    def test_children_are_held_by_reference_and_cleared_in_place(self, node):
        child = Dispatch("TSRuntimeLib.clsZKStorage")
        child.Name = "лист"
        child.Items.Add(1)
        node.Nodes.Add(child)
        node.Nodes.Add(child)
        assert node.Nodes.Count == 2 and node.Nodes(0) == child and list(node.Nodes) == [child, child]
        assert raised(lambda: node.Nodes.Item(5))[0] == 9
        node.Nodes.Clear()
        assert (child.Name, child.Items.Count, node.Nodes.Count) == ("", 0, 0)

    def test_parts_are_replaced_by_reference(self, node):
        other = Dispatch("TSRuntimeLib.clsZKStorage")
        node.Items = other.Items
        other.Items.Add("shared")
        assert node.Items == other.Items and node.Items(0) == "shared"
