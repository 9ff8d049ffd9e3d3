"""Late binding from Python: finding classes and members, calling, written-back
arguments, default members, enumeration and errors."""

import pytest

import tsruntime
from tsruntime import AutomationError, CDispatch, Dispatch

ROOT = "TSRuntimeLib.clsZKRunTimeLib"


def error_number(call):
    with pytest.raises(AutomationError) as caught:
        call()
    return caught.value.number


class TestCreation:
    @pytest.mark.parametrize("name", [ROOT, "clsZKRunTimeLib", "tsruntimelib.CLSZKRUNTIMELIB"])
    def test_a_class_is_found_by_progid_or_bare_name_in_any_case(self, name):
        assert repr(Dispatch(name)) == "<tsruntime.CDispatch clsZKRunTimeLib>"

    def test_a_wrapper_passed_to_dispatch_is_returned_as_it_is(self):
        obj = Dispatch(ROOT)
        assert Dispatch(obj) is obj

    @pytest.mark.parametrize("name", ["TSRuntimeLib.NoSuchClass", "", "TSRuntimeLib.Enumerator"],
                             ids=["unknown", "empty", "not creatable"])
    def test_a_class_that_cannot_be_created_raises_429(self, name):
        assert error_number(lambda: Dispatch(name)) == 429

    def test_dispatch_takes_only_names_and_wrappers(self):
        with pytest.raises(TypeError):
            Dispatch(42)

    def test_classes_lists_what_dispatch_can_create(self):
        found = tsruntime.classes()
        assert ROOT in found
        assert "TSRuntimeLib.Enumerator" not in found
        assert found == sorted(found, key=lambda p: p.split(".", 1)[1])


class TestMembers:
    def test_members_resolve_in_any_case(self):
        lib = Dispatch(ROOT)
        assert lib.Init() is True and lib.init() is True and lib.INIT() is True
        assert lib.language == lib.Language == 0

    def test_an_unknown_member_is_an_attribute_error(self):
        lib = Dispatch(ROOT)
        assert not hasattr(lib, "NoSuchMember")
        with pytest.raises(AttributeError):
            lib.NoSuchMember = 1
        with pytest.raises(AttributeError):
            lib._private

    def test_a_read_only_property_cannot_be_assigned(self, probe):
        with pytest.raises(AttributeError):
            probe.Count = 3

    def test_properties_are_read_and_assigned_as_attributes(self, probe):
        probe.Caption = "заголовок"
        assert probe.Caption == "заголовок"
        probe.caption = 5  # converted to the declared String
        assert probe.Caption == "5"

    def test_dir_offers_members_and_indexed_assignments(self, probe):
        names = dir(probe)
        for name in ["Wrap", "Caption", "Count", "Item", "SetItem", "NewEnum"]:
            assert name in names, name

    @pytest.mark.parametrize("call, number", [
        (lambda p: p.Wrap(), 449),
        (lambda p: p.Wrap("x", Nope=1), 448),
        (lambda p: p.Wrap("x", Text="y"), 448),
        (lambda p: p.Twice(1, 2), 450),
        (lambda p: p.Twice("abc"), 13),
        (lambda p: p.Twice(2 ** 40), 6),
        (lambda p: p.Span(0, 2 ** 60), 6),
    ], ids=["required argument left out", "unknown named argument",
            "argument given twice", "too many arguments", "text for a Long",
            "Long overflow", "integer beyond a Double"])
    def test_binding_failures_raise_the_runtime_errors(self, probe, call, number):
        assert error_number(lambda: call(probe)) == number


class TestWrittenBackArguments:
    # Each row: the call, what it returns, and the rule it shows.
    CASES = [
        (lambda p: p.Wrap("x"), (3, "[x]", None),
         "an optional written-back argument left out, with no default, comes back as None"),
        (lambda p: p.Wrap("x", After=">", Calls=4), (3, "[x>", 5),
         "named arguments fill their parameters and come back in parameter order"),
        (lambda p: p.Wrap("x", "<", ">", 0), (3, "<x>", 1),
         "positional arguments come back in parameter order"),
        (lambda p: p.Wrap(TEXT="x", calls=1), (3, "[x]", 2),
         "argument names match in any case"),
        (lambda p: p.Twice(21), 42,
         "a member with no result returns its one written value alone"),
        (lambda p: p.Bump(), (True, 11),
         "a written-back argument left out comes back as the member left its default"),
        (lambda p: p.Bump(5), (True, 6),
         "a written-back argument given comes back changed"),
        (lambda p: p.Echo("x"), "x",
         "a member that writes nothing back returns its result alone"),
    ]

    @pytest.mark.parametrize("call, expected, rule", CASES, ids=[c[2] for c in CASES])
    def test_written_back_values_follow_the_result(self, probe, call, expected, rule):
        assert call(probe) == expected, rule

    def test_written_back_arrays_come_back_new_and_the_argument_is_untouched(self, probe):
        original = tsruntime.SafeArray([1, 2], lbound=3, vartype=3)
        changed = probe.Increment(original)
        assert changed.bounds == [(3, 4)] and changed.tolist() == [2, 3]
        assert original.tolist() == [1, 2]


class TestDefaultMemberAndIndexedProperties:
    def test_indexed_get_let_and_set(self, probe):
        probe.SetItem("a", 5)
        probe["b"] = "x"
        assert probe.Item("a") == 5 and probe.Item("b") == "x"
        assert probe("a") == 5 and probe["b"] == "x"
        assert probe("absent") is None  # a null object reference

    def test_an_object_assigned_goes_to_the_set_and_comes_back_as_the_same_object(self, probe):
        probe.SetItem("self", probe)
        back = probe("self")
        assert isinstance(back, CDispatch) and back == probe and back is not probe
        assert hash(back) == hash(probe)
        assert back != Dispatch("PyProbe")

    def test_a_class_without_default_member_cannot_be_called(self):
        with pytest.raises(AutomationError) as caught:
            Dispatch(ROOT)()
        assert caught.value.number == 438


class TestEnumeration:
    def test_iteration_walks_new_enum_and_len_reads_count(self, probe):
        for key, value in [("b", 2), ("a", 1), ("c", "три")]:
            probe[key] = value
        assert list(probe) == [1, 2, "три"]
        assert len(probe) == 3

    def test_an_enumerator_is_itself_iterable_and_next_writes_its_item_back(self, probe):
        probe["a"], probe["b"] = 1, 2
        items = probe.NewEnum()
        assert items.Next(None) == (True, 1)
        assert list(items) == [2]
        assert items.Next(None) == (False, None)
        items.Reset()
        assert list(items) == [1, 2]

    def test_objects_without_enumeration_or_count_say_so(self):
        lib = Dispatch(ROOT)
        with pytest.raises(TypeError):
            iter(lib)
        with pytest.raises(TypeError):
            len(lib)
        assert bool(lib) is True


class TestErrors:
    def test_an_error_carries_its_five_fields(self, probe):
        with pytest.raises(AutomationError) as caught:
            probe.Fail(-2147220803)
        e = caught.value
        assert (e.number, e.source, e.description, e.helpfile, e.helpcontext) == (
            -2147220803, "PyProbe.Fail", "Failed on purpose", "probe.chm", 42)
        assert str(e) == "Error -2147220803 (PyProbe.Fail): Failed on purpose"
        assert isinstance(e, Exception)

    def test_a_runtime_error_has_the_runtime_source_and_no_help(self):
        with pytest.raises(AutomationError) as caught:
            Dispatch(ROOT).Init(1)
        e = caught.value
        assert (e.number, e.source, e.helpfile, e.helpcontext) == (450, "ZKRuntimeLib", "", 0)
        assert e.description == "Wrong number of arguments or invalid property assignment"


class TestTypeInformation:
    def test_members_describe_parameters_results_and_events(self, probe):
        found = {(m.kind, m.name): m for m in tsruntime.members("PyProbe")}
        wrap = found["method", "Wrap"]
        assert [p.name for p in wrap.params] == ["Text", "Before", "After", "Calls"]
        assert [p.writes_back for p in wrap.params] == [True, False, False, True]
        assert [p.optional for p in wrap.params] == [False, True, True, True]
        assert wrap.params[1].default == "[" and wrap.params[3].default is tsruntime.Missing
        assert wrap.returns == "Long" and found["method", "Twice"].returns is None
        assert found["get", "Item"].default and not found["let", "Caption"].default
        assert [p.name for p in found["event", "OnRemoved"].params] == ["Key", "Count"]
        assert repr(wrap) == ("method Wrap(ByRef Text As String, Optional Before As String = '[', "
                              "Optional After As String = ']', Optional ByRef Calls As Long) As Long")

    def test_members_of_an_unknown_class_is_a_key_error(self):
        with pytest.raises(KeyError):
            tsruntime.members("TSRuntimeLib.NoSuchClass")

    def test_enumerations_and_constants(self):
        assert tsruntime.enums()["xeZK_INTERFACE_LANGUAGE"] == {"xcZKLANG_RUS": 0, "xcZKLANG_ENG": 1}
        assert tsruntime.constants.xcZKERR_STRING_INSTRRIGHT == -2147220803
        assert len(tsruntime.enums()["xeZK_ERROR_CODES"]) == 29
