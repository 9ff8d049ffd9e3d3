"""Help strings from the type information in help(), the enumerations as IntEnums, and the
generated stubs checked by mypy."""

import inspect
import os
import pydoc
import subprocess
import sys

import tsruntime
from tsruntime import constants

def help_of(progid, name):
    return next(m.help for m in tsruntime.members(progid) if m.name == name)


def test_help_shows_each_member_with_its_declaration_and_help_string():
    s = tsruntime.Dispatch("TSRuntimeLib.clsZKString")
    in_words, language = help_of("clsZKString", "InWords"), help_of("clsZKRunTimeLib", "Language")
    assert s.InWords.__doc__ == s.inwords.__doc__ == in_words and in_words.startswith("The amount")
    assert str(inspect.signature(s.Filter)) == (
        "(Expression: str, FilteringStr: str, Iclude: bool = False, CompareType: int = 0, "
        "SelStart: int = tsruntime.Missing) -> tuple[str, int | None]")
    declaration = "InWords(Expression: Decimal | float, IncludeUnitNames: bool = True) -> str\n"
    pages = [  # what help() is given, what its page shows
        (s.InWords, f"{declaration}    {in_words}"),
        (s, f"{declaration.replace('(', '(self, ')} |      {in_words}"),
        (tsruntime.Dispatch("clsZKRunTimeLib"),
         f"Language\n |      Language: int  (read/write)\n |      \n |      {language}"),
        (tsruntime.Dispatch("clsZKDictionary"), "Event OnChanged(ChangedItem): Raised by assigning"),
    ]
    for shown, part in pages:
        assert part in pydoc.render_doc(shown, renderer=pydoc.plaintext), part


def test_enumerations_are_int_enums_whose_members_the_library_takes():
    trim = constants.xeZK_TRIM_TYPE
    assert trim.xcZK_TRIM_BOTH == 3 and constants.xcZK_TRIM_BOTH is trim.xcZK_TRIM_BOTH
    assert issubclass(trim, int) and trim.__doc__.startswith("The ends of the text")
    assert trim.xcZK_TRIM_LEFT.__doc__ == "Trim strips the start of the text."
    assert tsruntime.Dispatch("clsZKString").Trim("xxaxx", "x", trim.xcZK_TRIM_RIGHT) == ("xxa", None)
    for name, members in tsruntime.enums().items():
        assert {m.name: m.value for m in getattr(constants, name)} == members


def test_mypy_accepts_the_classes_used_correctly_and_reports_each_misuse():
    package = os.path.dirname(os.path.dirname(tsruntime.__file__))
    run = subprocess.run(
        [sys.executable, "-m", "mypy", "--no-incremental", "--cache-dir", os.devnull,
         "--show-error-codes", "--no-error-summary",
         "uses_classes_correctly.py", "misuses_classes.py"],
        cwd=os.path.join(os.path.dirname(__file__), "typing"), capture_output=True, text=True,
        env=dict(os.environ, MYPYPATH=package))
    errors = sorted(line for line in run.stdout.splitlines() if ": error:" in line)
    assert run.returncode == 1 and len(errors) == 2, run.stdout + run.stderr
    assert errors[0].startswith('misuses_classes.py:5: error: Argument 1 to "InstrRight"')
    assert errors[0].endswith("[arg-type]") and errors[1].startswith(
        'misuses_classes.py:6: error: "clsZKString" has no attribute "InWrods"')
