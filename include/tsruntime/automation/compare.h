// String and Variant comparison as the host runtime makes them.
//
// Binary compare is ordinal by UTF-16 code unit. Text compare is case-insensitive in
// the thread's locale (ICU collation at secondary strength: case is ignored, accents
// are not; "ё" sorts with "е"). Scripts keep one order in every locale, Latin before
// Cyrillic: "Zebra" < "арбуз". Database compare behaves as text compare.
#pragma once

#include <cstdint>
#include <string>

#include "tsruntime/automation/variant.h"

namespace tsruntime {

enum CompareMethod : int32_t {
  vbBinaryCompare = 0,
  vbTextCompare = 1,
  vbDatabaseCompare = 2,
};

// -1, 0 or +1, as `StrComp` gives.
int CompareStrings(StringView a, StringView b, int32_t mode);

// Simple case folding, `TextFold` applied to each code unit: the result has the length
// of `text`, and two strings that differ only in letter case fold to the same string.
// Suits hash keys for case-blind lookup.
String FoldCase(StringView text);

// First position (1-based) of `what` in `text` at or after `start` under `mode`, or 0;
// an empty `what` is found at `start` when `start` <= length + 1, as `InStr` does.
int64_t FindString(StringView text, StringView what, int64_t start, int32_t mode);

// Whether `set` contains the character `ch` under `mode`.
bool ContainsChar(StringView set, char16_t ch, int32_t mode);

// A UTF-16 code unit as the text mode matches it: its simple case fold (surrogates stay
// as they are). Text-mode `FindString` and `ContainsChar` compare code units through it,
// so a matcher that folds both sides with it finds exactly what they find.
char16_t TextFold(char16_t ch);

// A key whose byte order is the text compare order of the thread's locale: computed
// once per string, it lets sorts compare with memcmp instead of a locale lookup.
std::string TextSortKey(StringView text);

// The first eight bytes of TextSortKey(text), zeros past its end, as one big-endian
// number: two keys whose prefixes differ order as these numbers do. Made without a
// copy of the whole key for most texts.
uint64_t TextSortKeyPrefix(StringView text);

// The host runtime's comparison of two Variants (numbers numerically, strings by
// `mode`, a number below a string, Empty as 0 or "", an object as its default member,
// see `DefaultValue`). Raises type mismatch (13) for values that cannot be compared;
// Null cannot be ordered (invalid use of Null, 94).
int CompareVariants(const Variant& a, const Variant& b, int32_t mode = vbBinaryCompare);

// The host runtime's `=` on two Variants: False for values that cannot be compared,
// Null on either side is not equal.
bool VariantEquals(const Variant& a, const Variant& b, int32_t mode = vbBinaryCompare);

}  // namespace tsruntime
