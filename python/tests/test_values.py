"""Python values into the library and back: each row is a value, what comes back and the
type code it travels as. Rows run through the module's conversion alone and through a
real call (PyProbe.Echo hands its Variant argument back)."""

import datetime
import enum
import math
from decimal import Decimal

import pytest

import tsruntime
from tsruntime import AutomationError, Empty, ErrorValue, Missing, Nothing, Null, SafeArray

dt = datetime.datetime

ROUND_TRIPS = [
    # value, comes back as, type code, what the row shows
    (None, None, 0, "None is Empty"),
    (Empty, None, 0, "the Empty marker is Empty, which comes back as None"),
    (Null, Null, 1, "Null stays Null"),
    (Nothing, None, 9, "Nothing is an object reference to no object"),
    (True, True, 11, "True is Boolean, not an integer"),
    (False, False, 11, "False is Boolean"),
    (0, 0, 3, "an int is a Long"),
    (-2 ** 31, -2 ** 31, 3, "the smallest Long"),
    (2 ** 31 - 1, 2 ** 31 - 1, 3, "the largest Long"),
    (2 ** 31, 2.0 ** 31, 5, "an int beyond a Long becomes a Double"),
    (-2 ** 53, -2.0 ** 53, 5, "ints down to -2^53 are exact as Doubles"),
    (1.5, 1.5, 5, "a float is a Double"),
    (-0.0, -0.0, 5, "negative zero survives"),
    ("", "", 8, "the empty string is a String"),
    ("Съешь же ещё", "Съешь же ещё", 8, "Cyrillic text"),
    ("\U0001F600", "\U0001F600", 8, "characters beyond the BMP travel as surrogate pairs"),
    ("a\ud800b", "a\ud800b", 8, "a lone surrogate survives"),
    ("\ufeffx", "\ufeffx", 8, "a leading byte-order mark is text"),
    ("a\0b", "a\0b", 8, "an embedded NUL is text"),
    (Decimal("1234.56"), Decimal("1234.56"), 6, "a Decimal is Currency"),
    (Decimal("0.00015"), Decimal("0.0002"), 6, "Currency keeps four decimals, halves to even"),
    (Decimal("0.00025"), Decimal("0.0002"), 6, "halves go to the even neighbour"),
    (Decimal("0.00014" + "9" * 70), Decimal("0.0001"), 6, "rounding looks at the exact value"),
    (Decimal("-922337203685477.5808"), Decimal("-922337203685477.5808"), 6, "the smallest Currency"),
    (Decimal("922337203685477.5807"), Decimal("922337203685477.5807"), 6, "the largest Currency"),
    (dt(2024, 3, 5, 14, 7, 9), dt(2024, 3, 5, 14, 7, 9), 7, "a datetime is a Date"),
    (datetime.date(2024, 3, 5), dt(2024, 3, 5), 7, "a date is a Date at midnight"),
    (dt(1899, 12, 29, 6, 0), dt(1899, 12, 29, 6, 0), 7, "dates before 30 December 1899 keep their time"),
    (dt(100, 1, 1), dt(100, 1, 1), 7, "the first date"),
    (dt(9999, 12, 31, 23, 59, 59), dt(9999, 12, 31, 23, 59, 59), 7, "the last date"),
    (dt(2024, 1, 1, 0, 0, 0, 600000), dt(2024, 1, 1, 0, 0, 1), 7, "dates come back to the second"),
    (b"\x00\xff", b"\x00\xff", 8209, "bytes are a byte array"),
    (bytearray(b"ab"), b"ab", 8209, "a bytearray is a byte array"),
    (b"", b"", 8209, "empty bytes are an empty byte array"),
    (ErrorValue(0x800A0005), ErrorValue(0x800A0005), 10, "an Error value keeps its SCODE"),
]

CONVERSION_ONLY = [
    # The dispatch layer reads Missing as an argument left out, so it cannot go through a call.
    (Missing, Missing, 10, "Missing is the missing-argument Error"),
    (ErrorValue(0x80020004), Missing, 10, "the missing-argument SCODE is Missing"),
]


@pytest.fixture(params=["conversion", "call"])
def roundtrip(request):
    if request.param == "conversion":
        return tsruntime._roundtrip
    probe = request.getfixturevalue("probe")
    return probe.Echo


def same(a, b):
    if isinstance(a, float) and isinstance(b, float):
        return a == b and math.copysign(1, a) == math.copysign(1, b)
    return type(a) is type(b) and a == b or a is b


@pytest.mark.parametrize("value, back, vartype, rule", ROUND_TRIPS, ids=[r[3] for r in ROUND_TRIPS])
def test_values_round_trip(roundtrip, value, back, vartype, rule):
    assert same(roundtrip(value), back), rule


@pytest.mark.parametrize("value, back, vartype, rule", ROUND_TRIPS + CONVERSION_ONLY,
                         ids=[r[3] for r in ROUND_TRIPS + CONVERSION_ONLY])
def test_values_travel_as_their_type_code(value, back, vartype, rule):
    assert tsruntime._vartype(value) == vartype, rule


@pytest.mark.parametrize("value, back, vartype, rule", CONVERSION_ONLY,
                         ids=[r[3] for r in CONVERSION_ONLY])
def test_markers_convert_back_to_themselves(value, back, vartype, rule):
    assert tsruntime._roundtrip(value) is back, rule


def test_the_type_code_a_member_sees_is_the_one_converted_to(probe):
    for value in [None, Null, True, 7, 2 ** 40, 1.5, "x", Decimal("1.5"), dt(2024, 1, 1), b"x",
                  [1], ErrorValue(5)]:
        assert probe.TypeOf(value) == tsruntime._vartype(value), repr(value)


def test_lists_and_tuples_are_variant_arrays_from_zero():
    back = tsruntime._roundtrip([1, "a", (2.5, None)])
    assert back.typename == "Variant()" and back.bounds == [(0, 2)]
    assert back[0] == 1 and back[1] == "a"
    assert back[2].bounds == [(0, 1)] and back[2].tolist() == [2.5, None]
    assert tsruntime._roundtrip(()).bounds == [(0, -1)]


def test_int_like_values_are_longs():
    class Colour(enum.IntEnum):
        RED = 2

    class Index:
        def __index__(self):
            return 9

    assert tsruntime._roundtrip(Colour.RED) == 2 and tsruntime._vartype(Colour.RED) == 3
    assert tsruntime._roundtrip(Index()) == 9


REFUSED_BY_THE_LIBRARY = [
    (2 ** 53 + 1, 6, "an int a Double cannot hold exactly"),
    (-2 ** 70, 6, "a huge negative int"),
    (Decimal("922337203685477.5808"), 6, "an amount above the Currency range"),
    (Decimal("-922337203685477.58086"), 6, "an amount that rounds below the Currency range"),
    (Decimal("1E+400000000"), 6, "an enormous Decimal"),
    (Decimal("NaN"), 6, "a Decimal NaN"),
    (Decimal("-Infinity"), 6, "a Decimal infinity"),
    (dt(99, 12, 31), 5, "a date before the year 100"),
]


@pytest.mark.parametrize("value, number, rule", REFUSED_BY_THE_LIBRARY,
                         ids=[r[2] for r in REFUSED_BY_THE_LIBRARY])
def test_values_the_library_cannot_hold_raise_its_error(value, number, rule):
    with pytest.raises(AutomationError) as caught:
        tsruntime._roundtrip(value)
    assert caught.value.number == number, rule


@pytest.mark.parametrize("value", [object(), {1: 2}, 1j, {1}, datetime.time(1, 2), memoryview(b"x")],
                         ids=["object", "dict", "complex", "set", "time", "memoryview"])
def test_python_values_without_counterpart_are_type_errors(value):
    with pytest.raises(TypeError):
        tsruntime._roundtrip(value)


def test_a_list_that_contains_itself_is_refused_not_followed_forever():
    loop = []
    loop.append(loop)
    with pytest.raises(ValueError):
        tsruntime._roundtrip(loop)


def test_markers_are_singletons_and_false():
    assert tsruntime._roundtrip(Null) is Null
    assert [bool(m) for m in (Null, Empty, Missing, Nothing)] == [False] * 4
    assert repr(Null) == "tsruntime.Null" and repr(Missing) == "tsruntime.Missing"


def test_error_values_compare_by_scode():
    assert ErrorValue(0x800A0005) == ErrorValue(-2146828283)
    assert ErrorValue(5) != ErrorValue(6) and ErrorValue(5) != 5
    assert ErrorValue(0x800A0005).scode == -2146828283
    assert repr(ErrorValue(5)) == "tsruntime.ErrorValue(0x00000005)"
    assert len({ErrorValue(5), ErrorValue(5)}) == 1
    with pytest.raises(ValueError):
        ErrorValue(2 ** 32)
