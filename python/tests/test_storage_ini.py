"""The storage text and files, and INI data, driven through Dispatch as scripts use them."""

from conftest import raised

from tsruntime import Dispatch


def test_storage_text_writes_err_flag_back_and_files_round_trip(tmp_path):
    node = Dispatch("TSRuntimeLib.clsZKStorage")
    node.Name = "A"
    node.Items.Add("B")
    assert node.ToString(True) == ("000000010A0000000090000000230000000140008B", False)
    path = str(tmp_path / "tree.dat")
    assert node.Save(path)
    assert (tmp_path / "tree.dat").read_bytes() == "000000010A0000000090000000230000000140008B".encode("utf-16-le")
    copy = Dispatch("TSRuntimeLib.clsZKStorage")
    assert copy.Load(path) and copy.Name == "A" and copy.Items(0) == "B"
    assert not copy.Load(str(tmp_path / "missing.dat")) and copy.Name == "A"
    assert not copy.ToObject("") and copy.Nodes.ToObject("") and copy.Items.ToObject("")


def test_ini_get_data_writes_value_back_and_put_data_rewrites_one_line(tmp_path):
    (tmp_path / "a.ini").write_bytes(b"top = 1\r\n[S]\r\nk = v ' note\r\n\xc0 = \xff")
    ini = Dispatch("TSRuntimeLib.clsZKIniFile")
    ini.FullName = str(tmp_path / "a.ini")
    assert ini.GetData("top", "") == (True, "1")
    assert ini.GetData("k", "stale", SectionName="S") == (True, "v")
    assert ini.GetData("k", "stale") == (False, "")
    assert ini.PutData("k", " x ", "S")
    assert (tmp_path / "a.ini").read_bytes() == b"top = 1\r\n[S]\r\nk = x\t' note\r\n\xc0 = \xff"
    assert raised(lambda: ini.PutData("none", "x", "S")) == (
        -2147220301, "ZKRuntimeLib.clsZKIniFile.GetData", "Ключ не найден: S.none", "", 0)
    mem = Dispatch("TSRuntimeLib.clsZKIniFile")
    mem.SourceString = "\r\n a = 1 _\r\n2 \r\n"
    assert mem.GetData("a", "") == (True, "1 _") and mem.SourceString == "a = 1 _\r\n2"
