"""SafeArray: the library's arrays keep their bounds on the way out and on the way in."""

import pytest

from tsruntime import AutomationError, SafeArray

STRING, LONG, BYTE, VARIANT = 8, 3, 17, 12


def error_number(call):
    with pytest.raises(AutomationError) as caught:
        call()
    return caught.value.number


class TestShape:
    def test_an_array_with_odd_bounds_is_read_by_position_and_by_host_index(self):
        a = SafeArray(["x", "y"], lbound=-1, vartype=STRING)
        assert (a.dims, a.bounds, a.lbound(), a.ubound(), len(a)) == (1, [(-1, 0)], -1, 0, 2)
        assert (a[0], a[1], a[-1]) == ("x", "y", "y")
        assert (a.get(-1), a.get(0)) == ("x", "y")
        assert list(a) == a.tolist() == a[:] == ["x", "y"]
        assert a.typename == "String()" and a.vartype == STRING

    def test_a_table_is_indexed_column_then_row(self):
        t = SafeArray.dimensioned([(0, 1), (1, 3)], vartype=STRING)
        t.set(1, 3, "z")
        assert (t.dims, len(t), t.lbound(2), t.ubound(2)) == (2, 6, 1, 3)
        assert t.get(1, 3) == "z" and t.get(0, 1) == ""
        assert t.tolist()[1][2] == "z"
        assert t[5] == "z"  # storage runs first index fastest: (1, 3) is the last element

    def test_more_dimensions_nest_in_tolist(self):
        cube = SafeArray.dimensioned([(0, 1), (0, 0), (5, 6)], vartype=LONG)
        assert cube.tolist() == [[[0, 0]], [[0, 0]]]

    def test_never_dimensioned_differs_from_empty(self):
        never, empty = SafeArray.undimensioned(STRING), SafeArray([], vartype=STRING)
        assert (never.dims, len(never), never.tolist()) == (0, 0, [])
        assert (empty.dims, empty.bounds) == (1, [(0, -1)])
        assert never != empty
        assert error_number(never.lbound) == 9 and error_number(never.ubound) == 9

    def test_elements_are_converted_to_the_element_type(self):
        assert SafeArray([1, "2", 3.5], vartype=LONG).tolist() == [1, 2, 4]
        assert error_number(lambda: SafeArray(["x"], vartype=LONG)) == 13
        a = SafeArray([0], vartype=LONG)
        a.set(0, "41")
        assert a[0] == 41
        assert error_number(lambda: a.set(0, 2 ** 40)) == 6

    def test_equality_is_type_bounds_and_elements(self):
        assert SafeArray([1]) == SafeArray([1])
        assert SafeArray([1]) != SafeArray([1], lbound=1)
        assert SafeArray([1]) != SafeArray([1], vartype=LONG)
        assert SafeArray([1]) != [1]
        with pytest.raises(TypeError):
            hash(SafeArray([1]))

    def test_repr_shows_type_bounds_and_elements(self):
        assert repr(SafeArray(["a"], lbound=-1, vartype=STRING)) == "SafeArray(String, [(-1, -1)], ['a'])"


class TestBadUse:
    @pytest.mark.parametrize("call, number", [
        (lambda a: a.get(2), 9),
        (lambda a: a.get(-2), 9),
        (lambda a: a.get(0, 0), 9),
        (lambda a: a.get(0, 0, 0), 9),
        (lambda a: a.get(2 ** 40), 9),
        (lambda a: a.ubound(2), 9),
        (lambda a: a.lbound(0), 9),
        (lambda a: a.set(5, "x"), 9),
    ], ids=["above the upper bound", "below the lower bound", "two indexes on a list",
            "three indexes", "an index beyond 32 bits", "a second dimension", "dimension 0",
            "storing out of range"])
    def test_host_indexes_outside_the_bounds_raise_9(self, call, number):
        a = SafeArray(["x", "y"], lbound=-1, vartype=STRING)
        assert error_number(lambda: call(a)) == number

    def test_positions_outside_the_array_are_index_errors(self):
        a = SafeArray(["x"])
        with pytest.raises(IndexError):
            a[1]
        with pytest.raises(IndexError):
            a[-2]
        with pytest.raises(TypeError):
            a.set("x")

    @pytest.mark.parametrize("make, number", [
        (lambda: SafeArray.dimensioned([(5, 2)]), 9),
        (lambda: SafeArray.dimensioned([(0, 2 ** 31)]), 6),
        (lambda: SafeArray([1, 2], lbound=2 ** 31 - 1), 6),
        (lambda: SafeArray.dimensioned([(0, 2 ** 31 - 2), (0, 2 ** 31 - 2)]), 7),
    ], ids=["upper far below lower", "bound beyond 32 bits", "last index beyond 32 bits",
            "more elements than memory"])
    def test_impossible_shapes_raise_the_runtime_errors(self, make, number):
        assert error_number(make) == number

    @pytest.mark.parametrize("make", [
        lambda: SafeArray.dimensioned([]),
        lambda: SafeArray.dimensioned([(0, 0)] * 61),
        lambda: SafeArray([1], vartype=99),
        lambda: SafeArray.undimensioned(8192),
    ], ids=["no dimensions", "61 dimensions", "unknown element type", "array of arrays"])
    def test_shapes_no_array_can_have_are_value_errors(self, make):
        with pytest.raises(ValueError):
            make()


class TestThroughTheLibrary:
    @pytest.mark.parametrize("value, shape", [
        (SafeArray(["a"], lbound=-1, vartype=STRING), "-1..-1:1"),
        (SafeArray([], lbound=5), "5..4:0"),
        (SafeArray.undimensioned(STRING), "undimensioned"),
        (SafeArray.dimensioned([(0, 1), (1, 3)], vartype=STRING), "0..1:2 1..3:3"),
        ([1, 2, 3], "0..2:3"),
        (b"ab", "0..1:2"),
    ], ids=["bounds -1 to -1", "empty from 5", "never dimensioned", "table", "list", "bytes"])
    def test_arrays_passed_in_keep_their_shape(self, probe, value, shape):
        assert probe.Shape(value) == shape

    @pytest.mark.parametrize("lower, upper, items", [
        (-1, -1, [-10]),
        (0, 2, [0, 10, 20]),
        (5, 4, []),
    ], ids=["bounds -1 to -1", "from 0", "empty from 5"])
    def test_arrays_returned_keep_their_bounds(self, probe, lower, upper, items):
        a = probe.Span(lower, upper)
        assert (a.bounds, a.tolist(), a.typename) == ([(lower, upper)], items, "Long()")

    def test_an_array_returned_goes_back_in_unchanged(self, probe):
        a = probe.Span(-1, -1)
        assert probe.Echo(a) == a and probe.Shape(a) == "-1..-1:1"

    def test_byte_arrays_are_bytes_only_when_they_start_at_0(self, probe):
        odd = SafeArray([1, 2], lbound=1, vartype=BYTE)
        back = probe.Echo(odd)
        assert isinstance(back, SafeArray) and back.bounds == [(1, 2)]
        assert back.tobytes() == b"\x01\x02"
        assert probe.Echo(SafeArray([1, 2], vartype=BYTE)) == b"\x01\x02"
        with pytest.raises(TypeError):
            SafeArray(["x"]).tobytes()
