// clsZKString: searching, replacing, filtering, cutting, trimming, case and packed arrays.
#include <random>

#include "text/text_test_util.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {
namespace {

using testing::ExpectError;
using testing::ExpectRuntimeError;

class StringOps : public ::testing::Test {
 protected:
  ScopedLocale locale_{"ru_RU"};
  Ref<clsZKString> s = New<clsZKString>();
};

TEST_F(StringOps, InstrRightFindsTheLastOccurrenceInTheSearchedPart) {
  const struct {
    const char* what;
    String text, search;
    int32_t len, mode, expected;
  } cases[] = {
      {"last of two", u"abcabc", u"bc", -1, 0, 5},
      {"within the first four characters", u"abcabc", u"bc", 4, 0, 2},
      {"SearchLen 0 searches nothing", u"abcabc", u"bc", 0, 0, 0},
      {"empty search gives the length", u"abcabc", u"", -1, 0, 6},
      {"empty search gives SearchLen when smaller", u"abcabc", u"", 3, 0, 3},
      {"overlapping occurrences count", u"aaa", u"aa", -1, 0, 2},
      {"an occurrence must lie wholly inside", u"abcabc", u"ca", 3, 0, 0},
      {"text compare ignores case in Cyrillic", u"ПриВЕТ привет", u"ВЕТ", -1, 1, 11},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(s->InstrRight(c.text, c.search, c.len, c.mode), c.expected) << c.what;
  }
  for (int32_t len : {-2, INT32_MIN}) {  // checked before anything else
    ExpectError([&] { s->InstrRight(u"", u"", len); }, xcZKERR_STRING_INSTRRIGHT,
                u"ZKRuntimeLib.clsZKString.InstrRight",
                u"SearchLen = " + FromAscii(std::to_string(len)), std::to_string(len));
  }
}

TEST_F(StringOps, ReplaceRescansWhatItProduced) {
  const struct {
    const char* what;
    String text, search, replacement;
    int32_t mode;
    String expected;
  } cases[] = {
      {"replacement forms an occurrence with what follows", u"aabb", u"ab", u"a", 0, u"aa"},
      {"deletion re-scans at the deletion point", u"aabbb", u"ab", u"", 0, u"abb"},
      {"deletion never looks back", u"abab", u"ba", u"", 0, u"ab"},
      {"replacement containing the search resumes after it", u"aXa", u"a", u"aa", 0, u"aaXaa"},
      {"occurrence starting inside the replacement", u"abbb", u"ab", u"ca", 0, u"ccca"},
      {"empty search returns the input", u"abc", u"", u"x", 0, u"abc"},
      {"text compare keeps the inserted text as given", u"ПРИВЕТ", u"привет", u"Мир", 1, u"Мир"},
      {"containment is tested with the compare mode", u"bb", u"b", u"B", 1, u"BB"},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(ToUtf8(s->Replace(c.text, c.search, c.replacement, c.mode)), ToUtf8(c.expected))
        << c.what;
  }
  EXPECT_EQ(s->Replace(u"a-b--c", u"-"), u"abc") << "missing ReplaceStr deletes";
  // A hundred thousand cascading replacements in one call: no rebuilding per step.
  EXPECT_EQ(s->Replace(u"aa" + String(100000, u'B'), u"aab", u"aA", 1), u"aA");
}

// Replace and InstrRight exactly as defined, one occurrence at a time.
String ReplaceByDefinition(String result, StringView search, StringView replacement, int mode) {
  if (search.empty()) return result;
  const auto step = FindString(replacement, search, 1, mode) > 0 ? replacement.size() : 0;
  for (int64_t start = 1, at; (at = FindString(result, search, start, mode)) > 0;) {
    result = result.substr(0, at - 1) + String(replacement) + result.substr(at - 1 + search.size());
    start = at + static_cast<int64_t>(step);
  }
  return result;
}

int64_t InstrRightByDefinition(StringView work, StringView search, int32_t len, int mode) {
  if (len == 0) return 0;
  if (len > 0) work = work.substr(0, static_cast<size_t>(len));
  if (search.empty()) return static_cast<int64_t>(work.size());
  int64_t pos = 0;
  for (int64_t at; (at = FindString(work, search, pos + 1, mode)) > 0;) pos = at;
  return pos;
}

TEST_F(StringOps, ReplaceInstrRightAndFilterAgreeWithTheirDefinitionsOnGeneratedInputs) {
  std::mt19937 rng(2024);
  auto text = [&](size_t min, size_t max, StringView alphabet) {
    String t(min + rng() % (max - min + 1), u'a');
    for (char16_t& c : t) c = alphabet[rng() % alphabet.size()];
    return t;
  };
  for (int i = 0; i < 30000; ++i) {
    // Small alphabets make occurrences, and occurrences formed by replacements, frequent.
    const StringView abc = i % 3 ? StringView(u"abA") : StringView(u"ab");
    const int32_t mode = static_cast<int32_t>(rng() % 2), len = static_cast<int32_t>(rng() % 30) - 1;
    const String expression = text(0, 24, abc), search = text(1, 4, abc);
    const int kind = static_cast<int>(rng() % 4);  // deletion, contains the search, or other
    const String replacement = kind == 0   ? String()
                               : kind == 1 ? text(0, 6, abc) + search + text(0, 2, abc)
                                           : text(1, 6, abc);
    const std::string what = ToUtf8(expression) + " / " + ToUtf8(search) + " / " +
                             ToUtf8(replacement) + " mode " + std::to_string(mode);
    ASSERT_EQ(s->Replace(expression, search, replacement, mode),
              ReplaceByDefinition(expression, search, replacement, mode))
        << what;
    ASSERT_EQ(s->InstrRight(expression, search, len, mode),
              InstrRightByDefinition(expression, search, len, mode))
        << what << " len " << len;
    // Sets below and above the size at which Filter switches to a bitmap.
    const String chars = text(0, 12, u"aAbBёЁ-1 "), set = text(0, i % 2 ? 4 : 40, u"aAbBёЁ-1 ");
    String kept;
    for (char16_t c : chars) {
      if (!ContainsChar(set, c, mode)) kept.push_back(c);
    }
    ASSERT_EQ(s->Filter(chars, set, false, mode), kept) << ToUtf8(chars) << " / " << ToUtf8(set);
  }
}

TEST_F(StringOps, FilterKeepsOrDropsMembersAndMovesTheCaret) {
  const struct {
    const char* what;
    String text, set;
    bool include;
    int32_t mode, caret, caret_after;
    String expected;
  } cases[] = {
      {"members dropped by default", u"a-b-c", u"-", false, 0, 4, 2, u"abc"},
      {"members kept with Iclude", u"a-b-c", u"-", true, 0, 3, 1, u"--"},
      {"caret beyond the end", u"a-b", u"-", false, 0, 10, 9, u"ab"},
      {"text compare in Cyrillic", u"ЁёжЖ", u"ё", true, 1, 0, 0, u"Ёё"},
  };
  for (const auto& c : cases) {
    int32_t caret = c.caret;
    EXPECT_EQ(ToUtf8(s->Filter(c.text, c.set, c.include, c.mode, &caret)), ToUtf8(c.expected))
        << c.what;
    EXPECT_EQ(caret, c.caret_after) << c.what;
  }
}

TEST_F(StringOps, TrimStripsSetCharactersFromTheChosenEndsAndMovesTheCaret) {
  const struct {
    const char* what;
    String text, set;
    int32_t type, mode, caret, caret_after;
    String expected;
  } cases[] = {
      {"both ends", u"xxabcxx", u"x", xcZK_TRIM_BOTH, 0, 4, 2, u"abc"},
      {"left only", u"xxabcxx", u"x", xcZK_TRIM_LEFT, 0, 0, 0, u"abcxx"},
      {"right only, caret pulled back to the end", u"xxabcxx", u"x", xcZK_TRIM_RIGHT, 0, 7, 5,
       u"xxabc"},
      {"neither bit returns the text", u"xxabcxx", u"x", 0, 0, 5, 5, u"xxabcxx"},
      {"only trim characters", u"xyxy", u"xy", xcZK_TRIM_BOTH, 0, 3, 0, u""},
      {"empty set trims nothing", u" a ", u"", xcZK_TRIM_BOTH, 0, 2, 2, u" a "},
      {"caret 1 with two stripped on the left ends at 0", u"xxab", u"x", xcZK_TRIM_LEFT, 0, 1,
       0, u"ab"},
      {"caret beyond the end without right stripping", u"abc", u"x", xcZK_TRIM_BOTH, 0, 9, 9,
       u"abc"},
      {"binary compare is case-sensitive", u"XxaxX", u"x", xcZK_TRIM_BOTH, 0, 0, 0, u"XxaxX"},
      {"text compare ignores case", u"XxaxX", u"x", xcZK_TRIM_BOTH, 1, 0, 0, u"a"},
      {"empty text keeps the caret", u"", u"x", xcZK_TRIM_BOTH, 0, 5, 5, u""},
  };
  for (const auto& c : cases) {
    int32_t caret = c.caret;
    EXPECT_EQ(s->Trim(c.text, c.set, static_cast<xeZK_TRIM_TYPE>(c.type), c.mode, &caret),
              c.expected)
        << c.what;
    EXPECT_EQ(caret, c.caret_after) << c.what;
  }
}

TEST_F(StringOps, ChangeCaseConvertsTheWholeTextAndPassesOtherValuesThrough) {
  const struct {
    const char* what;
    String text;
    int32_t type;
    String delimiters, expected;
  } cases[] = {
      {"first up, rest down", u"hELLO wORLD", xcZK_CASE_FIRSTUP, u"", u"Hello world"},
      {"delimiters do not capitalise words", u"пРИВЕТ мИР", xcZK_CASE_FIRSTUP, u" ,", u"Привет мир"},
      {"all down", u"AbC", xcZK_CASE_ALLDOWN, u"", u"abc"},
      {"all up keeps the length", u"straße", xcZK_CASE_ALLUP, u"", u"STRAßE"},
      {"unknown case type leaves the text", u"hELLO", 7, u" ", u"hELLO"},
  };
  for (const auto& c : cases) {
    const Variant r = s->ChangeCase(Variant(c.text), static_cast<xeZK_CHANGE_CASE>(c.type), c.delimiters);
    EXPECT_EQ(r, Variant(c.expected)) << c.what;
  }
  for (const Variant& v : {Variant(int32_t{5}), Variant(), Variant::Null(), Variant(Date{45000.5}),
                           Variant(SafeArray::FromStrings({u"a"}))}) {
    const Variant r = s->ChangeCase(v, xcZK_CASE_ALLUP, u" ");
    EXPECT_TRUE(r.type() == v.type() && r == v) << ToUtf8(TypeName(v.type()));
  }
  ScopedLocale turkish("tr_TR");
  EXPECT_EQ(s->ChangeCase(Variant(u"istanbul"), xcZK_CASE_FIRSTUP), Variant(u"İstanbul"));
}

TEST_F(StringOps, GetLeftAndGetRightCutAtTheSeparator) {
  const struct {
    const char* what;
    bool right;
    String text, separator;
    bool other_end, include, all_if_no_match;
    String expected;
  } cases[] = {
      {"left: first separator", false, u"a.b.c", u".", false, false, false, u"a"},
      {"left: last with InstrRight", false, u"a.b.c", u".", true, false, false, u"a.b"},
      {"left: separator kept", false, u"a.b.c", u".", true, true, false, u"a.b."},
      {"left: no match gives the text with AllIfNoMatch", false, u"abc", u".", false, false, true,
       u"abc"},
      {"left: no match gives nothing", false, u"abc", u".", false, false, false, u""},
      {"left: empty separator never matches", false, u"abc", u"", false, false, false, u""},
      {"left: separator at the start", false, u".abc", u".", false, false, true, u""},
      {"left: always binary", false, u"aXb", u"x", false, false, true, u"aXb"},
      {"right: last separator by default", true, u"a.b.c", u".", false, false, false, u"c"},
      {"right: first with InstrLeft", true, u"a::b::c", u"::", true, false, false, u"b::c"},
      {"right: separator kept", true, u"a.b.c", u".", false, true, false, u".c"},
      {"right: empty separator with AllIfNoMatch", true, u"abc", u"", false, false, true, u"abc"},
      {"right: separator at the end", true, u"abc.", u".", false, false, true, u""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.right ? s->GetRight(c.text, c.separator, c.other_end, c.include, c.all_if_no_match)
                      : s->GetLeft(c.text, c.separator, c.other_end, c.include, c.all_if_no_match),
              c.expected)
        << c.what;
  }
}

TEST_F(StringOps, ArrayJoinWritesALengthHeaderBeforeEachElement) {
  const struct {
    const char* what;
    SafeArray array;
    String expected;
  } cases[] = {
      {"three elements", SafeArray::FromStrings({u"ab", u"", u"xyz"}),
       u"000000011ab000000009000000012xyz"},
      {"digits and line breaks travel as they are", SafeArray::FromStrings({u"000000009", u"\r\n"}),
       u"000000018000000009000000011\r\n"},
      {"bounds -1 to -1", SafeArray(VarType::kString, {Bounds{-1, -1}}), u""},
      {"elements below index 0 are skipped", SafeArray::FromStrings({u"p", u"q", u"a"}, -2),
       u"000000010a"},
      {"a Variant array's values are written as text",
       SafeArray::FromVariants({Variant(int32_t{12})}), u"00000001112"},
  };
  for (const auto& c : cases) EXPECT_EQ(ToUtf8(s->ArrayJoin(c.array)), ToUtf8(c.expected)) << c.what;
  ExpectRuntimeError([&] { s->ArrayJoin(SafeArray(VarType::kString)); },
                     RuntimeError::kSubscriptOutOfRange, "never dimensioned");
  ExpectRuntimeError([&] { s->ArrayJoin(SafeArray::FromStrings({u"a"}, 1)); },
                     RuntimeError::kSubscriptOutOfRange, "lower bound 1");
}

TEST_F(StringOps, ArraySplitReadsRecordsByTheirHeadersAndUndoesArrayJoin) {
  const struct {
    const char* what;
    String text;
    int32_t lower;
    std::vector<String> expected;
  } cases[] = {
      {"three elements", u"000000011ab000000009000000012xyz", 0, {u"ab", u"", u"xyz"}},
      {"empty text gives bounds -1 to -1", u"", -1, {u""}},
      {"a single character gives one empty element", u"7", 0, {u""}},
      {"a record running past the end is cut short", u"000000020abc", 0, {u"abc"}},
      {"a header at the very end gives an empty element", u"000000010a000000012", 0, {u"a", u""}},
      {"the last character alone is not read", u"000000010ax", 0, {u"a"}},
      {"headers convert as the host converts text", u" 00000011ab+00000010c", 0, {u"ab", u"c"}},
  };
  for (const auto& c : cases) {
    const SafeArray a = s->ArraySplit(c.text);
    EXPECT_EQ(a.elementType(), VarType::kString) << c.what;
    EXPECT_EQ(a.lbound(), c.lower) << c.what;
    EXPECT_EQ(a.ToStrings(), c.expected) << c.what;
  }
  ExpectRuntimeError([&] { s->ArraySplit(u"000000011ab00000000x"); }, RuntimeError::kTypeMismatch,
                     "second header not a number");
  ExpectRuntimeError([&] { s->ArraySplit(u"000000005abcd"); }, RuntimeError::kInvalidCall,
                     "header below 9");
  std::mt19937 rng(5);
  for (int i = 0; i < 500; ++i) {
    std::vector<String> items(1 + rng() % 6);
    for (String& item : items) {
      item.resize(rng() % 25);
      for (char16_t& c : item) c = u"0123456789ab\r\n ё"[rng() % 16];
    }
    const SafeArray a = s->ArraySplit(s->ArrayJoin(SafeArray::FromStrings(items)));
    ASSERT_EQ(a.lbound(), 0);
    ASSERT_EQ(a.ToStrings(), items) << "round trip " << i;
  }
}

}  // namespace
}  // namespace tsruntime
