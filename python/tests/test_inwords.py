"""Amounts in words: Python and the tsrt command-line host give the same texts, and both
give the texts a payment document expects."""

import os
import shutil
import subprocess
from decimal import Decimal

import pytest
from conftest import needs

from tsruntime import Dispatch

AMOUNTS = [
    # amount, with unit names, expected text
    ("1234.56", True, "одна тысяча двести тридцать четыре рубля 56 копеек"),
    ("1234.56", False, "одна тысяча двести тридцать четыре "),
    ("21", True, "двадцать один рубль 00 копеек"),
    ("5000", True, "пять тысяч рублей 00 копеек"),
    ("2000000.01", True, "два миллиона рублей 01 копейка"),
    ("11002.03", True, "одиннадцать тысяч два рубля 03 копейки"),
    ("0.5", True, "ноль рублей 50 копеек"),
    ("0.5", False, "ноль"),
    ("-7", True, "семь рублей 00 копеек"),
    ("1000000000000", True, ""),
    ("0.994", True, "ноль рублей 99 копеек"),
    ("0.995", True, "один рубль 00 копеек"),
    ("21000", True, "двадцать одна тысяча рублей 00 копеек"),
    ("0.99", False, "ноль"),
]


def tsrt_path():
    path = os.environ.get("TSRT") or shutil.which("tsrt")
    if not path:
        pytest.fail("set TSRT to the tsrt program (ctest does)")
    return path


def literal_text(line):
    """The text of a string literal as tsrt prints results: "text", a quote doubled."""
    if len(line) >= 2 and line[0] == line[-1] == '"':
        return line[1:-1].replace('""', '"')
    return line


def tsrt_in_words(amount, include):
    run = subprocess.run(
        [tsrt_path(), "call", "clsZKString", "InWords", f"{amount}@", str(include)],
        capture_output=True, encoding="utf-8", check=False)
    assert run.returncode == 0, run.stderr
    return literal_text(run.stdout.split("\n")[0].rstrip("\r"))


@needs("clsZKString")
@pytest.mark.parametrize("amount, include, expected", AMOUNTS,
                         ids=[f"{a} {'with' if i else 'without'} units" for a, i, _ in AMOUNTS])
def test_python_and_tsrt_write_the_same_words(amount, include, expected):
    s = Dispatch("TSRuntimeLib.clsZKString")
    in_python = s.InWords(Decimal(amount), include)
    assert in_python == expected
    assert tsrt_in_words(amount, include) == in_python


@needs("clsZKString")
def test_unit_names_are_included_unless_said_otherwise():
    s = Dispatch("TSRuntimeLib.clsZKString")
    assert s.InWords(Decimal("21")) == "двадцать один рубль 00 копеек"
    assert s.InWords(Expression=Decimal("21"), IncludeUnitNames=False) == "двадцать один "
