// clsZKString::Replace: the re-scanning replace, checked by examples and against a direct
// transcription of its step-by-step definition.
#include <random>

#include "string_test_support.h"
#include "tsruntime/automation/locale.h"

namespace tsruntime {
namespace {

using string_test::NewString;

struct ReplaceCase {
  const char* what;
  String expression, search, replacement;
  int32_t mode;
  String expected;
};

TEST(Replace, ReplacesEveryOccurrenceAndRescansWhatItProduced) {
  const ReplaceCase cases[] = {
      {"plain replace", u"a.b.c", u".", u"/", 0, u"a/b/c"},
      {"replacement forms a new occurrence with the following text", u"aabb", u"ab", u"a", 0,
       u"aa"},
      {"deletion re-scans at the deletion point", u"aabbb", u"ab", u"", 0, u"abb"},
      {"deletion never looks back at the text before it", u"abab", u"ba", u"", 0, u"ab"},
      {"replacement containing the search resumes after it", u"aXa", u"a", u"aa", 0, u"aaXaa"},
      {"replacement containing the search, overlapping input", u"aaa", u"aa", u"aaa", 0,
       u"aaaa"},
      {"empty search returns the input", u"abc", u"", u"x", 0, u"abc"},
      {"no occurrence", u"abc", u"x", u"y", 0, u"abc"},
      {"the text before the scan position is not looked at again", u"aaaab", u"ab", u"b", 0,
       u"aaab"},
      {"cascade through the following text", u"abbbb", u"ab", u"a", 0, u"a"},
      {"occurrence starting inside the replacement", u"abbb", u"ab", u"ca", 0, u"ccca"},
      {"text compare ignores case", u"aAa", u"a", u"b", 1, u"bbb"},
      {"text compare keeps the inserted text as given", u"ПРИВЕТ", u"привет", u"Мир", 1,
       u"Мир"},
      {"containment is tested with the compare mode", u"aB", u"b", u"Bb", 1, u"aBb"},
      {"a replacement equal but for case counts as containing the search", u"bb", u"b", u"B", 1,
       u"BB"},
  };
  ScopedLocale locale("ru_RU");
  auto s = NewString();
  for (const auto& c : cases) {
    EXPECT_EQ(ToUtf8(s->Replace(c.expression, c.search, c.replacement, c.mode)),
              ToUtf8(c.expected))
        << c.what;
  }
}

TEST(Replace, MissingReplacementDeletes) {
  auto s = NewString();
  EXPECT_EQ(s->Replace(u"a-b--c", u"-"), u"abc");
}

// The operation exactly as defined: splice one replacement in at a time, resuming the
// scan at the inserted text, or after it when the replacement contains the search text.
String ReplaceByDefinition(String result, StringView search, StringView replacement,
                           int32_t mode) {
  if (search.empty()) return result;
  const int64_t step =
      FindString(replacement, search, 1, mode) > 0 ? static_cast<int64_t>(replacement.size()) : 0;
  int64_t start = 1;
  for (;;) {
    const int64_t found = FindString(result, search, start, mode);
    if (found == 0) return result;
    result = result.substr(0, found - 1) + String(replacement) +
             result.substr(found - 1 + search.size());
    start = found + step;
  }
}

// An ordinary left-to-right replace, to tell which inputs needed the re-scan.
String SinglePass(StringView text, StringView search, StringView replacement, int32_t mode) {
  String out;
  int64_t from = 1;
  for (int64_t found; (found = FindString(text, search, from, mode)) > 0;
       from = found + static_cast<int64_t>(search.size())) {
    out.append(text.substr(from - 1, found - from));
    out.append(replacement);
  }
  out.append(text.substr(from - 1));
  return out;
}

TEST(Replace, AgreesWithTheStepByStepDefinitionOnGeneratedInputs) {
  std::mt19937 rng(2024);
  // Small alphabets make occurrences, and occurrences formed by replacements, frequent.
  auto text = [&](size_t min_len, size_t max_len, StringView alphabet) {
    String t(min_len + rng() % (max_len - min_len + 1), u'a');
    for (char16_t& c : t) c = alphabet[rng() % alphabet.size()];
    return t;
  };
  auto s = NewString();
  int rescans = 0;
  for (int i = 0; i < 30000; ++i) {
    const StringView alphabet = (i % 3 == 0) ? StringView(u"ab") : StringView(u"abA");
    const int32_t mode = static_cast<int32_t>(rng() % 2);
    const String expression = text(0, 24, alphabet);
    const String search = text(1, 4, alphabet);
    String replacement;
    switch (rng() % 4) {
      case 0: break;  // deletion
      case 1: replacement = text(0, 6, alphabet) + search + text(0, 2, alphabet); break;
      default: replacement = text(1, 6, alphabet); break;
    }
    const String expected = ReplaceByDefinition(expression, search, replacement, mode);
    ASSERT_EQ(s->Replace(expression, search, replacement, mode), expected)
        << "expression " << ToUtf8(expression) << ", search " << ToUtf8(search)
        << ", replacement " << ToUtf8(replacement) << ", mode " << mode;
    if (expected != SinglePass(expression, search, replacement, mode)) ++rescans;
  }
  EXPECT_GT(rescans, 1000) << "the generated inputs should exercise re-scanning";
}

TEST(Replace, HandlesManyCascadingReplacementsInOneCall) {
  // Each replacement forms the next occurrence with the character after it, a hundred
  // thousand times over; rebuilding the string each time would take minutes.
  auto s = NewString();
  EXPECT_EQ(s->Replace(u"a" + String(100000, u'b'), u"ab", u"a"), u"a");
  EXPECT_EQ(s->Replace(u"aa" + String(100000, u'b'), u"aab", u"aa"), u"aa");
  EXPECT_EQ(s->Replace(u"aa" + String(100000, u'B'), u"aab", u"aA", 1), u"aA");
}

}  // namespace
}  // namespace tsruntime
