"""clsZKCDL from a script: loaded by ProgID with the user-interface module, its property
conversions, and dialogs that stay unshown where no display is."""

import pytest

from conftest import raised

from tsruntime import Dispatch


@pytest.fixture
def no_display(monkeypatch):
    for name in ("DISPLAY", "WAYLAND_DISPLAY", "QT_QPA_PLATFORM"):
        monkeypatch.delenv(name, raising=False)


def test_properties_keep_the_platform_forms():
    cdl = Dispatch("TSRuntimeLib.clsZKCDL")
    cdl.FileFilter = "Text (*.txt)|*.txt"
    assert cdl.FileFilter == "Text (*.txt)\0*.txt\0"
    cdl.ColorsCustom = "255\0&HFF00\0junk"
    assert cdl.ColorsCustom.split("\0") == ["255", "-256", "0"] + ["0"] * 13
    cdl.FileMaxSize = 0
    assert cdl.FileMaxSize == 0
    assert raised(lambda: setattr(cdl, "ColorsCustom", "1e10"))[0] == 6


def test_without_a_display_nothing_waits_and_nothing_is_raised(no_display):
    cdl = Dispatch("TSRuntimeLib.clsZKCDL")
    cdl.CancelError = True
    cdl.FileFullName = "/tmp/kept.txt"
    cdl.ShowOpenFile()
    assert (cdl.APIReturn, cdl.ExtendedError, cdl.FileFullName) == (0, 2, "/tmp/kept.txt")
    cdl.ShowColor()
    assert cdl.APIReturn == 0 and cdl.ColorsCustom.split("\0") == ["16777215"] * 16
    cdl.FolderPath = "/tmp"
    cdl.ShowFolder()
    assert cdl.FolderPath == ""
