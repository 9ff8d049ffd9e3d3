"""An interpreter that finds the package but cannot load its extension is told where the
package is and how to reach a working one; tsrt names the folder of a working one."""

import os
import shutil
import subprocess
import sys

import tsruntime


def import_from(folder, then=""):
    code = f"import sys; sys.path.insert(0, {str(folder)!r}); import tsruntime; {then}"
    return subprocess.run([sys.executable, "-I", "-c", code], capture_output=True, text=True)


def test_a_package_whose_extension_does_not_load_names_its_folder_and_the_remedy(tmp_path):
    (tmp_path / "tsruntime").mkdir()
    shutil.copy(tsruntime.__file__, tmp_path / "tsruntime" / "__init__.py")  # no extension beside it
    message = import_from(tmp_path).stderr.strip().splitlines()[-1]
    assert message.startswith(f"ImportError: tsruntime: the package in {tmp_path / 'tsruntime'}")
    for remedy in ("PYTHONPATH", ".pth", "tsrt --python-path", sys.executable):
        assert remedy in message


def tsrt(option):
    return subprocess.run([os.environ["TSRT"], option], capture_output=True, text=True,
                          check=True).stdout.strip()


def test_tsrt_names_the_folder_another_interpreter_imports_the_same_version_from():
    folder = tsrt("--python-path")
    run = import_from(folder, "print(tsruntime.__file__, tsruntime.Dispatch('clsZKRunTimeLib').Init())")
    assert run.stdout.split() == [os.path.join(folder, "tsruntime", "__init__.py"), "True"]
    assert tsruntime.__version__ == tsrt("--version").split()[-1]
