"""clsZKFileSystem from Python: byte arrays with their bounds, text through code page 1251,
listing tables and the wrapped errors, as scripts use them."""

import pytest

from conftest import raised

import tsruntime
from tsruntime import Dispatch, SafeArray

BYTE, STRING = 17, 8
DIRSMAKE, FILEKILL = -2147220603, -2147220599


@pytest.fixture
def fs():
    return Dispatch("TSRuntimeLib.clsZKRunTimeLib").GetObjFileSystem


BYTE_ROUND_TRIPS = [
    # what is written, what the file then holds, what the row shows
    (b"\x00\x01\xfe\xff", b"\x00\x01\xfe\xff", "bytes go out and come back from index 0"),
    (bytearray(b"abc"), b"abc", "a bytearray is a byte array too"),
    (SafeArray([7, 8, 9], lbound=5, vartype=BYTE), b"\x07\x08\x09",
     "an array from 5 writes all its bytes; the read gives them back from 0"),
    (SafeArray.undimensioned(BYTE), b"", "an array never dimensioned leaves an empty file"),
]


@pytest.mark.parametrize("data, held, rule", BYTE_ROUND_TRIPS, ids=[r[2] for r in BYTE_ROUND_TRIPS])
def test_byte_arrays_round_trip_with_bounds_from_zero(fs, tmp_path, data, held, rule):
    name = str(tmp_path / "файл.bin")
    assert fs.BinaryWrite(name, data) is True, rule
    assert (tmp_path / "файл.bin").read_bytes() == held, rule
    ok, back = fs.BinaryRead(name, SafeArray.undimensioned(BYTE))
    if held:
        assert (ok, back) == (True, held), rule
    else:
        assert ok is False and back == SafeArray.undimensioned(BYTE), "an empty file fails the read"


def test_byte_reads_fail_quietly_and_reject_what_is_no_byte_array(fs, tmp_path):
    assert fs.BinaryRead(str(tmp_path / "none"), b"kept") == (False, b"kept")
    (tmp_path / "f").write_bytes(b"x")
    assert fs.BinaryRead(str(tmp_path / "f"), None) == (True, b"x")  # Empty: a new array
    assert raised(lambda: fs.BinaryRead(str(tmp_path / "f"), ["not", "bytes"]))[0] == 13
    assert raised(lambda: fs.BinaryWrite(str(tmp_path / "f"), "text"))[0] == 13


def test_the_root_hands_out_new_objects_and_the_enumerations_are_registered():
    root = Dispatch("TSRuntimeLib.clsZKRunTimeLib")
    assert root.GetObjFileSystem != root.GetObjFileSystem
    assert tsruntime.enums()["xeZK_GETSYSFOLDER"] == {
        "xcZK_GETSYSFOLDER_WINDOWS": 0, "xcZK_GETSYSFOLDER_SYSTEM": 1, "xcZK_GETSYSFOLDER_TEMP": 2}
    assert tsruntime.enums()["xeZK_FILEWRITEMODES"] == {
        "xcZK_FILEWRITE_IFEXISTS": 1, "xcZK_FILEWRITE_REPLACE": 4, "xcZK_FILEWRITE_APPEND": 8}


def test_text_goes_through_code_page_1251_and_the_write_modes(fs, tmp_path):
    name = str(tmp_path / "a.ini")
    assert fs.StringWrite("Ключ=значение", name) is True
    assert (tmp_path / "a.ini").read_bytes() == "Ключ=значение".encode("cp1251")
    assert fs.StringWrite("\r\nещё", name, 9) is True  # if-exists + append
    assert fs.StringRead(None, name) == (True, "Ключ=значение\r\nещё")
    assert fs.StringReadAsString(name) == "Ключ=значение\r\nещё"
    assert fs.StringWrite("x", str(tmp_path / "none.ini"), 9) is True
    assert not (tmp_path / "none.ini").exists()


def test_listings_fill_column_row_tables_and_a_dictionary(fs, tmp_path):
    (tmp_path / "sub").mkdir()
    (tmp_path / "a.txt").write_bytes(b"")
    ok, dirs, files = fs.DirScan(str(tmp_path), None, None)
    assert ok is True
    assert (dirs.bounds, dirs.get(0, 0), dirs.get(1, 0)) == ([(0, 1), (0, 0)], "sub", f"{tmp_path}/sub")
    assert (files.get(0, 0), files.typename) == ("a.txt", "String()")
    ok, dirs, files = fs.DirScan(str(tmp_path / "none"), dirs, files)
    assert ok is False and dirs.bounds == [(0, 1), (-1, -1)]
    paths = Dispatch("TSRuntimeLib.clsZKDictionary")
    (tmp_path / "sub" / "b.txt").write_bytes(b"")
    assert fs.DirScanFiles(str(tmp_path), paths) is True
    assert [paths.Key(i) for i in range(paths.Count)] == [f"{tmp_path}/a.txt", f"{tmp_path}/sub/b.txt"]
    assert fs.DirScanFiles(str(tmp_path), None) is False


def test_raising_operations_wrap_the_failure_and_name_their_arguments(fs, tmp_path, russian):
    missing = str(tmp_path / "none.txt")
    assert raised(lambda: fs.FileKill(missing)) == (
        FILEKILL, "ZKRuntimeLib.clsZKFileSystem.FileKill",
        f"File not found\r\nFileFullName = '{missing}'", "", 0)
    assert raised(lambda: fs.DirsMake("C:/data"))[1:3] == (
        "ZKRuntimeLib.clsZKFileSystem.DirsMake", "Диск не найден C:")
    Dispatch("clsZKRunTimeLib").Language = 1
    assert raised(lambda: fs.DirsMake("C:/data"))[2] == "Drive is not found C:"
