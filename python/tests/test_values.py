"""Python values into the library and back, through the conversion alone and through a real
call (a dictionary stores the Variant and hands it back); SafeArray, the library's arrays."""

import datetime
from decimal import Decimal

import pytest

import tsruntime
from tsruntime import Dispatch, Empty, ErrorValue, Missing, Nothing, Null, SafeArray, _roundtrip

dt = datetime.datetime
STRING, LONG, BYTE = 8, 3, 17

ROUND_TRIPS = [
    # value, comes back as, type code, what the row shows
    (None, None, 0, "None is Empty"),
    (Empty, None, 0, "the Empty marker is Empty"),
    (Null, Null, 1, "Null stays Null"),
    (Nothing, None, 9, "Nothing is a reference to no object"),
    (True, True, 11, "a bool is Boolean, not an integer"),
    (-2 ** 31, -2 ** 31, 3, "an int is a Long down to -2^31"),
    (2 ** 31 - 1, 2 ** 31 - 1, 3, "and up to 2^31 - 1"),
    (type("Index", (), {"__index__": lambda _: 9})(), 9, 3, "a value with __index__ is a Long"),
    (2 ** 31, 2.0 ** 31, 5, "an int beyond a Long is a Double"),
    (-2 ** 53, -2.0 ** 53, 5, "ints down to -2^53 are exact as Doubles"),
    (-0.0, -0.0, 5, "a float is a Double, negative zero kept"),
    ("\ufeffещё\U0001F600\ud800\0", "\ufeffещё\U0001F600\ud800\0", 8,
     "text comes back exactly: byte-order mark, Cyrillic, beyond the BMP, lone surrogate, NUL"),
    (Decimal("-922337203685477.5808"), Decimal("-922337203685477.5808"), 6, "a Decimal is Currency, down to it"),
    (Decimal("0.00025"), Decimal("0.0002"), 6, "Currency keeps four decimals, halves to even"),
    (Decimal("0.00014" + "9" * 70), Decimal("0.0001"), 6, "rounding looks at the exact value"),
    (datetime.date(2024, 3, 5), dt(2024, 3, 5), 7, "a date is a Date at midnight"),
    (dt(1899, 12, 29, 6, 0, 0, 6 * 10 ** 5), dt(1899, 12, 29, 6, 0, 1), 7,
     "before 30 December 1899 the time of day still counts forward, to the second"),
    (dt(100, 1, 1), dt(100, 1, 1), 7, "the first date"),
    (dt(9999, 12, 31, 23, 59, 59, 4 * 10 ** 5), dt(9999, 12, 31, 23, 59, 59), 7, "the last date"),
    (dt(2024, 1, 1, 0, 0, 0, 6 * 10 ** 5), dt(2024, 1, 1, 0, 0, 1), 7, "dates round to the second"),
    (bytearray(b"\x00\xff"), b"\x00\xff", 8209, "bytes and bytearrays are byte arrays from 0"),
    (SafeArray([1], lbound=1, vartype=BYTE), SafeArray([1], 1, BYTE), 8209, "a byte array not from 0 stays one"),
    ([1, ("a", None)], SafeArray([1, SafeArray(["a", None])]), 8204, "lists and tuples are Variant arrays from 0"),
    (ErrorValue(0x800A0005), ErrorValue(-2146828283), 10, "an Error value keeps its SCODE"),
]


def through_a_call(value):
    d = Dispatch("clsZKDictionary")
    d.Add("k", value)
    return d("k")


@pytest.mark.parametrize("path", [_roundtrip, through_a_call], ids=["conversion", "call"])
@pytest.mark.parametrize("value, back, vartype, rule", ROUND_TRIPS, ids=[r[3] for r in ROUND_TRIPS])
def test_values_round_trip_as_their_type_code(path, value, back, vartype, rule):
    got = path(value)
    assert (type(got), repr(got)) == (type(back), repr(back)), rule  # repr tells -0.0 from 0.0
    assert tsruntime._vartype(value) == vartype, rule


def test_markers_and_error_values():
    assert _roundtrip(ErrorValue(0x80020004)) is Missing and tsruntime._vartype(Missing) == 10
    assert [bool(m) for m in (Null, Empty, Missing, Nothing)] == [False] * 4
    assert repr(ErrorValue(5)) == "tsruntime.ErrorValue(0x00000005)" and ErrorValue(5) != 5
    assert len({ErrorValue(5), ErrorValue(5), ErrorValue(6)}) == 2


def test_an_array_is_read_by_position_and_by_host_index():
    a = SafeArray(["x", "y"], lbound=-1, vartype=STRING)
    assert (a.dims, a.bounds, a.lbound(), a.ubound(), len(a)) == (1, [(-1, 0)], -1, 0, 2)
    assert (a[0], a[-1], a.get(-1), a.get(0), a[:], list(a)) == (*"xyxy", ["x", "y"], ["x", "y"])
    t = SafeArray.dimensioned([(0, 1), (1, 3)], vartype=STRING)  # column, row
    t.set(1, 3, "z")
    assert (t.dims, len(t), t.lbound(2), t.ubound(2), t.get(1, 3), t[5]) == (2, 6, 1, 3, "z", "z")
    assert t.tolist() == [["", "", ""], ["", "", "z"]] and t.typename == "String()"
    never, empty = SafeArray.undimensioned(STRING), SafeArray([], vartype=STRING)
    assert (never.dims, never.tolist(), empty.dims, empty.bounds) == (0, [], 1, [(0, -1)])
    n = SafeArray([1, "2", 3.5], vartype=LONG)  # elements take the element type
    n.set(0, "41")
    assert n.tolist() == [41, 2, 4] and n != SafeArray([41, 2, 4])  # nor is it a Variant array
    assert SafeArray([1]) == SafeArray([1]) != SafeArray([1], lbound=1)


ODD = SafeArray(["x", "y"], lbound=-1, vartype=STRING)
LOOP = []
LOOP.append(LOOP)
REFUSED = [
    # what is tried, the error number or exception, what the row shows
    (lambda: _roundtrip(2 ** 53 + 1), 6, "an int a Double cannot hold exactly"),
    (lambda: _roundtrip(Decimal("922337203685477.5808")), 6, "an amount above the Currency range"),
    (lambda: _roundtrip(Decimal("1E+400000000")), 6, "an enormous Decimal"),
    (lambda: _roundtrip(Decimal("NaN")), 6, "a Decimal NaN"),
    (lambda: _roundtrip(dt(99, 12, 31)), 5, "a date before the year 100"),
    (lambda: _roundtrip(object()), TypeError, "a value with no counterpart"),
    (lambda: _roundtrip(LOOP), ValueError, "a list that contains itself"),
    (lambda: ErrorValue(2 ** 32), ValueError, "an SCODE beyond 32 bits"),
    (lambda: ODD.get(2 ** 40), 9, "an index beyond 32 bits"),
    (lambda: SafeArray(["x"], vartype=LONG), 13, "text that is no number in a Long array"),
    (lambda: SafeArray([0], vartype=LONG).set(0, 2 ** 40), 6, "an element that overflows"),
    (lambda: SafeArray.dimensioned([(0, 2 ** 31)]), 6, "a bound beyond 32 bits"),
    (lambda: SafeArray([1, 2], lbound=2 ** 31 - 1), 6, "a last index beyond 32 bits"),
    (lambda: SafeArray.dimensioned([(0, 0)] * 61), ValueError, "61 dimensions"),
    (lambda: SafeArray([1], vartype=99), ValueError, "an unknown element type"),
]


@pytest.mark.parametrize("attempt, error, rule", REFUSED, ids=[r[2] for r in REFUSED])
def test_what_the_library_cannot_hold_is_refused(attempt, error, rule):
    with pytest.raises(tsruntime.AutomationError if isinstance(error, int) else error) as caught:
        attempt()
    assert getattr(caught.value, "number", error) == error, rule


def test_byte_arrays_cross_as_arguments_and_come_back_written(tmp_path):
    fs, path = Dispatch("clsZKRunTimeLib").GetObjFileSystem, tmp_path / "файл.bin"
    # an array from 5 writes all its bytes; Empty reads back as bytes
    assert fs.BinaryWrite(str(path), SafeArray([7, 8, 9], lbound=5, vartype=BYTE)) is True
    assert (path.read_bytes(), fs.BinaryRead(str(path), None)) == (b"\x07\x08\x09", (True, b"\x07\x08\x09"))
    # an array never dimensioned leaves an empty file; a failed read leaves bytes as they were
    assert fs.BinaryWrite(str(path), SafeArray.undimensioned(BYTE)) is True
    assert (path.read_bytes(), fs.BinaryRead(str(path), b"kept")) == (b"", (False, b"kept"))
