// clsZKString: the library's text operations, in one stateless service object.
//
//   auto s = tsruntime::New<tsruntime::clsZKString>();
//   s->Replace(u"aabb", u"ab", u"a");      // u"aa": text a replacement forms is replaced again
//   s->InWords(Currency::FromUnits(21));   // u"двадцать один рубль 00 копеек"
//
// What it offers:
//   - searching, replacing, filtering, cutting, trimming and case changes (`InstrRight`,
//     `Replace`, `Filter`, `GetLeft`, `GetRight`, `Trim`, `ChangeCase`);
//   - the packed-array text that lists of strings travel in (`ArrayJoin`, `ArraySplit`);
//   - money amounts in Russian words for payment documents (`InWords`);
//   - DOS-era helpers: numbers packed into fixed-length byte strings and back
//     (`ConvMK...`, `ConvCV...`), ANSI to OEM text (`ConvWin2Dos`), and two helpers for
//     database values (`IsVarEQ`, `StrToVarNull`).
//
// Conventions shared by every member:
//   - Positions are 1-based and count UTF-16 code units.
//   - `CompareType` is the host's compare method: 0 binary (ordinal by code unit), any
//     other value text (case-insensitive in the thread's locale, see compare.h). Left
//     out, it is 0.
//   - Arguments are never changed, except those documented as written back: `SelStart`
//     of `Filter` and `Trim`, the `Expression` of `ConvCV...`, and both strings of
//     `ConvWin2Dos`. Late-bound callers see those written into their variables too.
//   - Failures: only `InstrRight` raises an error of its own. Elsewhere the host
//     runtime's errors reach the caller unchanged where the member says so; `IsVarEQ`,
//     `StrToVarNull` and `ConvWin2Dos` never raise.
//
// Several members keep odd behaviour that hosts were written against (the re-scanning
// `Replace`, the lost last character of `ConvWin2Dos`, `ArraySplit` of "" giving bounds
// -1 to -1); each is described below and kept on purpose.
#pragma once

#include <cstdint>

#include "tsruntime/automation/compare.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/automation/safearray.h"
#include "tsruntime/errors.h"

namespace tsruntime {

// Which ends `Trim` strips; used as a set of bits.
enum xeZK_TRIM_TYPE : int32_t {
  xcZK_TRIM_LEFT = 1,
  xcZK_TRIM_RIGHT = 2,
  xcZK_TRIM_BOTH = 3,
};

// The case `ChangeCase` gives.
enum xeZK_CHANGE_CASE : int32_t {
  xcZK_CASE_FIRSTUP = 0,  // first character upper case, the rest lower case
  xcZK_CASE_ALLDOWN = 1,
  xcZK_CASE_ALLUP = 2,
};

class clsZKString : public Object {
 public:
  TSRUNTIME_CLASS_INFO;

  // --- Searching, replacing, cutting ---------------------------------------------------

  // Position of the last occurrence of `SearchStr` lying wholly inside the first
  // `SearchLen` characters of `Expression` (all of it for -1), or 0. Occurrences may
  // overlap: in "aaa" the last "aa" is at 2. An empty `SearchStr` gives the length of
  // the searched part; `SearchLen` 0 gives 0.
  // Raises xcZKERR_STRING_INSTRRIGHT, description "SearchLen = " + value, for a
  // `SearchLen` below -1.
  //   InstrRight(u"abcabc", u"bc") == 5;   InstrRight(u"abcabc", u"bc", 4) == 2
  int32_t InstrRight(const String& Expression, const String& SearchStr,
                     int32_t SearchLen = -1, int32_t CompareType = vbBinaryCompare) const;

  // Replaces every occurrence of `SearchStr`, re-scanning what a replacement produced.
  // Scanning goes on from the start of the inserted text, so an occurrence that the
  // replacement forms with the following text is replaced too:
  //   Replace(u"aabb", u"ab", u"a") == u"aa"        (a single pass would give "aab")
  // When `ReplaceStr` itself contains `SearchStr` (by `CompareType`), scanning goes on
  // after the inserted text instead, so the call always ends:
  //   Replace(u"aXa", u"a", u"aa") == u"aaXaa"
  // An empty `SearchStr` returns `Expression`; an empty `ReplaceStr` deletes. Runs in
  // time linear in the input and the output, however many replacements there are.
  String Replace(const String& Expression, const String& SearchStr,
                 const String& ReplaceStr = {}, int32_t CompareType = vbBinaryCompare) const;

  // Keeps (`Iclude` True) or drops (`Iclude` False) the characters of `Expression` that
  // `FilteringStr` contains. `SelStart`, a caret position in `Expression`, is written
  // back as the matching position in the result; left out (null) it counts as 0.
  //   Filter(u"a-b-c", u"-") == u"abc";   Filter(u"a-b-c", u"-", true) == u"--"
  String Filter(const String& Expression, const String& FilteringStr, bool Iclude = false,
                int32_t CompareType = vbBinaryCompare, int32_t* SelStart = nullptr) const;

  // The text before `SepStr`: its first occurrence, or its last with `InstrRight` True
  // (always a binary search). With `SepInclude` True the separator is kept. When
  // `SepStr` is empty or absent: `Expression` with `AllIfNoMatch` True, else "".
  //   GetLeft(u"a.b.c", u".") == u"a";   GetLeft(u"a.b.c", u".", true) == u"a.b"
  String GetLeft(const String& Expression, const String& SepStr, bool InstrRight = false,
                 bool SepInclude = false, bool AllIfNoMatch = false) const;

  // The text after `SepStr`. Note the default opposite to `GetLeft`: the last occurrence
  // is used unless `InstrLeft` is True. `SepInclude` and `AllIfNoMatch` as in `GetLeft`.
  //   GetRight(u"a.b.c", u".") == u"c";   GetRight(u"a.b.c", u".", true) == u"b.c"
  String GetRight(const String& Expression, const String& SepStr, bool InstrLeft = false,
                  bool SepInclude = false, bool AllIfNoMatch = false) const;

  // Strips the characters that `CharsTrim` contains from the ends `TrimType` names (bit
  // 1 left, bit 2 right; a value with neither returns the text unchanged). `SelStart`
  // is written back: one less for each character stripped on the left while it is 1 or
  // more, and no more than the remaining length after stripping on the right.
  //   Trim(u"xxabcxx", u"x", xcZK_TRIM_BOTH) == u"abc"
  String Trim(const String& Expression, const String& CharsTrim, xeZK_TRIM_TYPE TrimType,
              int32_t CompareType = vbBinaryCompare, int32_t* SelStart = nullptr) const;

  // Changes the case of a string in the thread's locale, keeping its length. A
  // `SourceString` holding anything but a string comes back unchanged, with its type.
  // `xcZK_CASE_FIRSTUP` upper-cases the first character and lower-cases the rest of the
  // whole text; `WordDelimiters` does not make words start in upper case (the result is
  // the same with or without them). An unknown `CaseType` returns the text unchanged.
  //   ChangeCase(u"hELLO wORLD", xcZK_CASE_FIRSTUP, u" ") == Variant(u"Hello world")
  Variant ChangeCase(const Variant& SourceString, xeZK_CHANGE_CASE CaseType,
                     const String& WordDelimiters = {}) const;

  // --- Packed-array text -----------------------------------------------------------------
  //
  // Each element becomes a record: nine zero-padded decimal digits giving the element's
  // length + 9, then the element. ("ab", "", "xyz") packs to
  // "000000011ab000000009000000012xyz".

  // Packs the elements from index 0 (not from the lower bound) to the upper bound; an
  // upper bound of -1 gives "". Subscript out of range (9) for a never-dimensioned
  // array or one whose lower bound is above 0; overflow (6) beyond 2^31 - 1 characters.
  String ArrayJoin(const SafeArray& DataArray) const;

  // Unpacks into a String array with lower bound 0. "" gives one empty element with
  // bounds -1 to -1 (`ArrayJoin` of that gives "" again); a one-character text gives
  // one empty element at 0. A record running past the end is cut short. Type mismatch
  // (13) for a header that is not a number, invalid argument (5) for a header below 9.
  SafeArray ArraySplit(const String& DataString) const;

  // --- Amounts in words ----------------------------------------------------------------

  // The amount in Russian words as on payment documents: roubles in words by groups of
  // thousands, then the kopecks as two digits and the kopeck word, every unit word in
  // its proper form. The amount is rounded to whole kopecks, halves upward; the sign is
  // dropped. Amounts of 10^12 roubles or more give "".
  //   InWords(1234.56@)        "одна тысяча двести тридцать четыре рубля 56 копеек"
  //   InWords(0.5@)            "ноль рублей 50 копеек"
  // With `IncludeUnitNames` False the kopecks are dropped after that rounding (0.99 gives
  // "ноль", not "один") and no unit word but thousands, millions and billions is
  // written; the text then ends in a space, except for "ноль":
  //   InWords(1234.56@, False) "одна тысяча двести тридцать четыре "
  String InWords(const Currency& Expression, bool IncludeUnitNames = true) const;

  // --- Legacy conversions and comparisons ------------------------------------------------
  //
  // Packed numbers are byte strings: each character carries one byte through the ANSI
  // code page (codepage.h), in the little-endian memory layout of the value.

  // A Double, Integer, Long or Single packed into 8, 2, 4 or 4 characters.
  //   ConvMKL(65) == String(u"A\0\0\0", 4)
  String ConvMKD(double Expression) const;
  String ConvMKI(int16_t Expression) const;
  String ConvMKL(int32_t Expression) const;
  String ConvMKS(float Expression) const;

  // The value packed in the first bytes of `Expression`; bytes missing from a short
  // string count as zero. `Expression` is written back as its trip through the ANSI
  // code page (characters the code page lacks become '?').
  double ConvCVD(String& Expression) const;
  int16_t ConvCVI(String& Expression) const;
  int32_t ConvCVL(String& Expression) const;
  float ConvCVS(String& Expression) const;

  // Converts `SourceString` from the ANSI to the OEM code page into `DestString`, whose
  // characters carry the OEM bytes as ANSI characters (written out through the ANSI code
  // page they give the OEM bytes). The last character is always lost: "Привет" gives
  // the OEM codes of "Приве". `SourceString` is written back as its ANSI round trip.
  // Returns True; False for an empty `SourceString` (`DestString` is then ""). Never
  // raises.
  bool ConvWin2Dos(String& SourceString, String& DestString) const;

  // Equality with Empty and Null as ordinary values: Empty equals only Empty, Null only
  // Null, a string only an equal string (binary); other values follow the host's `=`
  // (1 equals 1.0) and are never equal to Empty or Null. Never raises.
  bool IsVarEQ(const Variant& Expression0, const Variant& Expression1) const;

  // Null for anything but a non-empty string, for storing into database fields;
  // otherwise the string, cut to its first `TrimLen` characters when `TrimLen` is 1 or
  // more. Never Empty, never raises.
  Variant StrToVarNull(const Variant& Expression, int32_t TrimLen = 0) const;
};

}  // namespace tsruntime
