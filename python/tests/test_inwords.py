"""Amounts in words: Python and the tsrt command-line host give the same texts."""

import os
import shutil
import subprocess
from decimal import Decimal

import pytest

from tsruntime import Dispatch

AMOUNTS = [  # the grammar itself is pinned by the library's own tests
    # amount, with unit names, expected text
    ("1234.56", True, "одна тысяча двести тридцать четыре рубля 56 копеек"),
    ("1234.56", False, "одна тысяча двести тридцать четыре "),
    ("-7", True, "семь рублей 00 копеек"),
    ("1000000000000", True, ""),
]


TSRT = os.environ.get("TSRT") or shutil.which("tsrt") or "set TSRT to the tsrt program"


def tsrt_in_words(amount, include):
    run = subprocess.run([TSRT, "call", "clsZKString", "InWords", f"{amount}@", str(include)],
                         capture_output=True, encoding="utf-8", check=False)
    assert run.returncode == 0, run.stderr
    return run.stdout.splitlines()[0][1:-1].replace('""', '"')  # printed as a string literal


@pytest.mark.parametrize("amount, include, expected", AMOUNTS)
def test_python_and_tsrt_write_the_same_words(amount, include, expected):
    in_python = Dispatch("TSRuntimeLib.clsZKString").InWords(Decimal(amount), include)
    assert in_python == expected
    assert tsrt_in_words(amount, include) == in_python
