// clsZKString: InstrRight, GetLeft, GetRight.
#include <random>

#include "string_test_support.h"
#include "tsruntime/automation/locale.h"

namespace tsruntime {
namespace {

using string_test::ExpectError;
using string_test::NewString;

struct InstrRightCase {
  const char* what;
  String expression, search;
  int32_t search_len;
  int32_t mode;
  int32_t expected;
};

TEST(InstrRight, FindsTheLastOccurrenceWithinTheSearchedPart) {
  const InstrRightCase cases[] = {
      {"last of two", u"abcabc", u"bc", -1, 0, 5},
      {"only the first four characters", u"abcabc", u"bc", 4, 0, 2},
      {"SearchLen 0 searches nothing", u"abcabc", u"bc", 0, 0, 0},
      {"empty search gives the length", u"abcabc", u"", -1, 0, 6},
      {"empty search gives SearchLen when smaller", u"abcabc", u"", 3, 0, 3},
      {"overlapping occurrences count", u"aaa", u"aa", -1, 0, 2},
      {"absent", u"abcabc", u"x", -1, 0, 0},
      {"an occurrence must lie wholly inside", u"abcabc", u"ca", 3, 0, 0},
      {"an occurrence ending at the limit counts", u"abcabc", u"ca", 4, 0, 3},
      {"binary compare is case-sensitive", u"ABCabc", u"BC", -1, 0, 2},
      {"text compare ignores case", u"ABCabc", u"BC", -1, 1, 5},
      {"text compare in Cyrillic", u"ПриВЕТ привет", u"ВЕТ", -1, 1, 11},
  };
  ScopedLocale locale("ru_RU");
  auto s = NewString();
  for (const auto& c : cases) {
    EXPECT_EQ(s->InstrRight(c.expression, c.search, c.search_len, c.mode), c.expected) << c.what;
  }
}

TEST(InstrRight, SearchLenBelowMinusOneRaisesItsOwnError) {
  auto s = NewString();
  for (int32_t len : {-2, -5, INT32_MIN}) {
    ExpectError([&] { s->InstrRight(u"abc", u"b", len); }, xcZKERR_STRING_INSTRRIGHT,
                u"ZKRuntimeLib.clsZKString.InstrRight",
                u"SearchLen = " + FromAscii(std::to_string(len)),
                "SearchLen " + std::to_string(len));
  }
  // The check comes before anything else, even with nothing to search for.
  ExpectError([&] { s->InstrRight(u"", u"", -3); }, xcZKERR_STRING_INSTRRIGHT,
              u"ZKRuntimeLib.clsZKString.InstrRight", u"SearchLen = -3", "empty arguments");
}

// The operation as defined: step through every occurrence one character at a time.
int32_t InstrRightByDefinition(StringView expression, StringView search, int32_t search_len,
                               int32_t mode) {
  StringView work = expression;
  if (search_len == 0) return 0;
  if (search_len > 0) work = work.substr(0, static_cast<size_t>(search_len));
  if (search.empty()) return static_cast<int32_t>(work.size());
  int64_t pos = 0;
  for (;;) {
    const int64_t found = FindString(work, search, pos + 1, mode);
    if (found == 0) return static_cast<int32_t>(pos);
    pos = found;
  }
}

TEST(InstrRight, AgreesWithSteppingThroughEveryOccurrence) {
  std::mt19937 rng(7);
  auto text = [&](size_t max_len) {
    static constexpr char16_t kAlphabet[] = u"abAB";
    String t(rng() % (max_len + 1), u'a');
    for (char16_t& c : t) c = kAlphabet[rng() % 4];
    return t;
  };
  auto s = NewString();
  for (int i = 0; i < 5000; ++i) {
    const String expression = text(16), search = text(4);
    const int32_t len = static_cast<int32_t>(rng() % 20) - 1;
    const int32_t mode = static_cast<int32_t>(rng() % 2);
    ASSERT_EQ(s->InstrRight(expression, search, len, mode),
              InstrRightByDefinition(expression, search, len, mode))
        << ToUtf8(expression) << " / " << ToUtf8(search) << " len " << len << " mode " << mode;
  }
}

struct CutCase {
  const char* what;
  String expression, separator;
  bool from_other_end, include_separator, all_if_no_match;
  String expected;
};

TEST(GetLeft, ReturnsTheTextBeforeTheSeparator) {
  const CutCase cases[] = {
      {"first separator", u"a.b.c", u".", false, false, false, u"a"},
      {"last separator with InstrRight", u"a.b.c", u".", true, false, false, u"a.b"},
      {"separator kept with SepInclude", u"a.b.c", u".", false, true, false, u"a."},
      {"last separator kept", u"a.b.c", u".", true, true, false, u"a.b."},
      {"no separator with AllIfNoMatch", u"abc", u".", false, false, true, u"abc"},
      {"empty separator never matches", u"abc", u"", false, false, false, u""},
      {"separator at the start is a match", u".abc", u".", false, false, true, u""},
      {"always binary", u"aXb", u"x", false, false, true, u"aXb"},
      {"overlapping last separator", u"aaaa", u"aa", true, false, false, u"aa"},
  };
  auto s = NewString();
  for (const auto& c : cases) {
    EXPECT_EQ(s->GetLeft(c.expression, c.separator, c.from_other_end, c.include_separator,
                         c.all_if_no_match),
              c.expected)
        << c.what;
  }
}

TEST(GetRight, ReturnsTheTextAfterTheSeparator) {
  const CutCase cases[] = {
      {"last separator by default", u"a.b.c", u".", false, false, false, u"c"},
      {"first separator with InstrLeft", u"a.b.c", u".", true, false, false, u"b.c"},
      {"separator kept with SepInclude", u"a.b.c", u".", false, true, false, u".c"},
      {"first separator kept", u"a.b.c", u".", true, true, false, u".b.c"},
      {"no separator gives nothing", u"abc", u".", false, false, false, u""},
      {"no separator with AllIfNoMatch", u"abc", u".", false, false, true, u"abc"},
      {"empty separator with AllIfNoMatch", u"abc", u"", false, false, true, u"abc"},
      {"separator at the end is a match", u"abc.", u".", false, false, true, u""},
      {"long separator", u"a::b::c", u"::", true, false, false, u"b::c"},
      {"always binary", u"aXb", u"x", false, false, false, u""},
  };
  auto s = NewString();
  for (const auto& c : cases) {
    EXPECT_EQ(s->GetRight(c.expression, c.separator, c.from_other_end, c.include_separator,
                          c.all_if_no_match),
              c.expected)
        << c.what;
  }
}

}  // namespace
}  // namespace tsruntime
