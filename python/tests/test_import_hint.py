"""An interpreter that finds the package but cannot load its extension is told where the
package is and how to reach a working one."""

import os
import shutil
import subprocess
import sys

import tsruntime


def test_a_package_whose_extension_does_not_load_names_its_folder_and_the_remedy(tmp_path):
    package = tmp_path / "tsruntime"
    package.mkdir()
    shutil.copy(tsruntime.__file__, package / "__init__.py")  # no extension beside it
    run = subprocess.run(
        [sys.executable, "-I", "-c",
         f"import sys; sys.path.insert(0, {str(tmp_path)!r}); import tsruntime"],
        capture_output=True, text=True)
    assert run.returncode != 0
    message = run.stderr.strip().splitlines()[-1]
    assert message.startswith("ImportError: tsruntime: the package in " + str(package))
    for remedy in ("PYTHONPATH", ".pth", "tsrt --python-path", sys.executable):
        assert remedy in message


def tsrt(option):
    return subprocess.run([os.environ["TSRT"], option], capture_output=True, text=True,
                          check=True).stdout.strip()


def test_tsrt_names_the_folder_another_interpreter_imports_the_same_version_from():
    folder = tsrt("--python-path")
    run = subprocess.run(
        [sys.executable, "-I", "-c",
         f"import sys; sys.path.insert(0, {folder!r}); import tsruntime; "
         "print(tsruntime.__file__, tsruntime.Dispatch('clsZKRunTimeLib').Init())"],
        capture_output=True, text=True, check=True)
    assert run.stdout.split() == [os.path.join(folder, "tsruntime", "__init__.py"), "True"]
    assert tsruntime.__version__ == tsrt("--version").split()[-1]
