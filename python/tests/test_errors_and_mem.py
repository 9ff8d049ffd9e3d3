"""The error collection and clsZKMem from Python: a caught AutomationError added as it is,
a record passed where text is expected, packed collections, and compressed blocks written
back as bytes."""

import zlib

import tsruntime
from conftest import raised
from tsruntime import Dispatch


def test_a_caught_automation_error_is_added_with_its_number_and_description():
    errors = Dispatch("TSRuntimeLib.clsTSErrors")
    try:
        Dispatch("TSRuntimeLib.clsZKString").InstrRight("abc", "b", -5)
    except tsruntime.AutomationError as caught:
        errors.AddAsError(caught)
    errors.AddAsError(tsruntime.AutomationError(53, "host", "Нет файла"))
    errors.AddAsError("not an error")  # appends nothing and raises nothing
    assert errors.Count == 2
    assert errors.GetAsText("  --> ") == (
        "  --> [-2147220803] SearchLen = -5\r\n  --> [53] Нет файла\r\n")
    assert (errors.Item(5), errors.GetErrNumber("1"), errors.GetErrDescription(-1)) == (None, 53, "")


def test_a_record_stands_for_its_description_where_text_is_expected():
    record = Dispatch("TSRuntimeLib.clsTSError")
    record.Description = "D"
    errors = Dispatch("TSRuntimeLib.clsTSErrors")
    errors.Add(record, "&H10")  # text "&H10" to the Long Number: 16
    copy = Dispatch("TSRuntimeLib.clsTSError")
    copy.Description = record
    assert errors.GetAsText(Prefix=copy) == "D[16] D\r\n"
    assert raised(lambda: errors.Add(Dispatch("TSRuntimeLib.clsZKString")))[0] == 438
    assert raised(lambda: setattr(copy, "Description", tsruntime.Nothing))[0] == 91


def test_a_packed_collection_reads_back_after_the_records_already_held():
    errors = Dispatch("TSRuntimeLib.clsTSErrors")
    errors.Add("D", 5)
    errors.Add("Е\x07хвост")
    packed = errors.ToString()
    assert packed == "0000000125\x07D0000000180\x07Е\x07хвост"
    assert errors.ToObject(packed) is False
    assert [errors.GetErrDescription(i) for i in range(errors.Count)] == ["D", "Е\x07хвост", "D", "Е"]


def test_compressed_blocks_are_zlib_streams_with_the_length_after_them():
    mem = Dispatch("TSRuntimeLib.clsZKRunTimeLib").GetObjMem
    data = "Программа: ошибка\r\n".encode("cp1251") * 50
    ok, block = mem.CompressData(data)
    assert ok and block[-4:] == len(data).to_bytes(4, "little")
    assert zlib.decompress(block[:-4]) == data
    assert (mem.OriginalSize, mem.CompressedSize) == (len(data), len(block))
    assert mem.DecompressData(block) == (True, data)
    assert (mem.OriginalSize, mem.CompressedSize) == (0, 0)
    assert mem.DecompressData(b"not a block") == (False, b"not a block")
    assert (mem.RShift(1, 31), mem.LShift(-1, 1), mem.DWord(-1, 0)) == (-2**31, 2**31 - 1, 65535)
