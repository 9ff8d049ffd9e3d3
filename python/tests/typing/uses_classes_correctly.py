# Type-checked, never run: several library classes used as their stubs declare them.
import decimal

import tsruntime
from tsruntime.constants import xeZK_TRIM_TYPE, xcZKLANG_ENG

lib = tsruntime.Dispatch("TSRuntimeLib.clsZKRunTimeLib")
lib.Language = xcZKLANG_ENG
s = lib.GetObjString
words: str = s.InWords(decimal.Decimal("1234.56"), IncludeUnitNames=False)
kept, caret = s.Filter("a-b-c", "-", SelStart=4)
position: int | None = caret
trimmed, _ = s.Trim("xxabcxx", "x", xeZK_TRIM_TYPE.xcZK_TRIM_BOTH)
parts: tsruntime.SafeArray = s.ArraySplit(s.ArrayJoin(["a", "b"]))
d = tsruntime.Dispatch("clsZKDictionary")
d["k"] = 6
found: bool = d.Exists("k")
rotated, value, bits = tsruntime.Dispatch("TSRuntimeLib.clsZKmd5").LongLeftRotate(1, 33)
total: int = rotated + value + bits + len(d) + lib.Language + len(kept + trimmed)
