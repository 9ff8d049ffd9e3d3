"""clsZKRegistry and clsZKSystem driven from Python, as scripts use them."""

import os
import re

import pytest

from tsruntime import Dispatch, constants


@pytest.fixture
def store(tmp_path, monkeypatch):
    monkeypatch.setenv("TSRUNTIME_REGISTRY_DIR", str(tmp_path))
    return tmp_path


def test_registry_round_trips_and_writes_blnerror_back(store):
    reg = Dispatch("TSRuntimeLib.clsZKRegistry")
    hkcu = constants.HKEY_CURRENT_USER
    assert reg.SetString(hkcu, "Software\\Tessaly", "Имя", "значение") is True
    assert reg.GetString(hkcu, "SOFTWARE\\tessaly", "имя", "нет", False) == ("значение", False)
    assert reg.GetString(hkcu, "Software\\Tessaly", "Missing", "нет", False) == ("нет", True)
    assert reg.SetLong(hkcu, "Software\\Tessaly", "N", -7)
    assert reg.GetLong(hkcu, "Software\\Tessaly", "N") == (-7, None)  # blnError left out
    assert reg.SetBinary(hkcu, "Software\\Tessaly", "B", b"\x00\xff")
    data, error = reg.GetBinary(hkcu, "Software\\Tessaly", "B", True)
    assert (data, error) == (b"\x00\xff", False)  # a byte array comes back as bytes
    assert reg.DeleteKey(hkcu, "Software") is False  # it has a subkey
    assert os.stat(store / "user.db").st_mode & 0o777 == 0o600


def test_system_objects_from_their_addresses_guids_and_user_name():
    system = Dispatch("TSRuntimeLib.clsZKRunTimeLib").GetObjSystem
    d = Dispatch("TSRuntimeLib.clsZKDictionary")
    d.Add("k", 1)
    same = system.ObjectFromPtr(system.ObjPtr(d))
    assert same.Count == 1 and same.Data("k") == 1
    same.Add("j", 2)
    assert d.Count == 2
    assert system.ObjectFromPtr(0) is None
    assert re.fullmatch(r"[0-9A-F]{8}(-[0-9A-F]{4}){3}-[0-9A-F]{12}", system.CreateGUID())
    assert system.GetUserName().endswith("\0") and not system.GetComputerName().endswith("\0")
