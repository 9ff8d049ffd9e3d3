// clsZKString: Filter, Trim, ChangeCase.
#include <random>

#include "string_test_support.h"
#include "tsruntime/automation/locale.h"

namespace tsruntime {
namespace {

using string_test::NewString;

struct FilterCase {
  const char* what;
  String expression, set;
  bool include;
  int32_t mode;
  int32_t caret, expected_caret;
  String expected;
};

TEST(Filter, KeepsOrDropsMembersAndMovesTheCaret) {
  const FilterCase cases[] = {
      {"members dropped by default", u"a-b-c", u"-", false, 0, 0, 0, u"abc"},
      {"members kept with Iclude", u"a-b-c", u"-", true, 0, 0, 0, u"--"},
      {"caret after two dropped characters", u"a-b-c", u"-", false, 0, 4, 2, u"abc"},
      {"caret moves by dropped non-members with Iclude", u"a-b-c", u"-", true, 0, 3, 1, u"--"},
      {"caret beyond the end", u"a-b", u"-", false, 0, 10, 9, u"ab"},
      {"empty set drops nothing", u"abc", u"", false, 0, 3, 3, u"abc"},
      {"binary set is case-sensitive", u"aAbB", u"a", false, 0, 0, 0, u"AbB"},
      {"text set ignores case", u"aAbB", u"a", false, 1, 0, 0, u"bB"},
      {"text set in Cyrillic", u"ЁёжЖ", u"ё", true, 1, 0, 0, u"Ёё"},
      {"long set", u"a1b2c3-d4", u"0123456789-+*/().", false, 0, 9, 4, u"abcd"},
  };
  ScopedLocale locale("ru_RU");
  auto s = NewString();
  for (const auto& c : cases) {
    int32_t caret = c.caret;
    EXPECT_EQ(ToUtf8(s->Filter(c.expression, c.set, c.include, c.mode, &caret)),
              ToUtf8(c.expected))
        << c.what;
    EXPECT_EQ(caret, c.expected_caret) << c.what;
  }
  EXPECT_EQ(s->Filter(u"a-b-c", u"-"), u"abc") << "caret left out";
}

TEST(Filter, MembershipAgreesWithContainsCharForShortAndLongSets) {
  std::mt19937 rng(11);
  const StringView alphabet = u"aAbBёЁ-1 ";
  auto text = [&](size_t max_len) {
    String t(rng() % (max_len + 1), u'a');
    for (char16_t& c : t) c = alphabet[rng() % alphabet.size()];
    return t;
  };
  ScopedLocale locale("ru_RU");
  auto s = NewString();
  for (int i = 0; i < 2000; ++i) {
    const String expression = text(12);
    const String set = text(i % 2 ? 4 : 40);  // below and above the short-set limit
    const int32_t mode = static_cast<int32_t>(rng() % 2);
    String expected;
    for (char16_t c : expression) {
      if (!ContainsChar(set, c, mode)) expected.push_back(c);
    }
    ASSERT_EQ(s->Filter(expression, set, false, mode), expected)
        << ToUtf8(expression) << " / " << ToUtf8(set) << " mode " << mode;
  }
}

struct TrimCase {
  const char* what;
  String expression, set;
  int32_t type;
  int32_t mode;
  int32_t caret, expected_caret;
  String expected;
};

TEST(Trim, StripsSetCharactersFromTheChosenEnds) {
  const TrimCase cases[] = {
      {"both ends", u"xxabcxx", u"x", xcZK_TRIM_BOTH, 0, 0, 0, u"abc"},
      {"left only", u"xxabcxx", u"x", xcZK_TRIM_LEFT, 0, 0, 0, u"abcxx"},
      {"right only", u"xxabcxx", u"x", xcZK_TRIM_RIGHT, 0, 0, 0, u"xxabc"},
      {"neither bit returns the text", u"xxabcxx", u"x", 0, 0, 5, 5, u"xxabcxx"},
      {"only trim characters", u"xyxy", u"xy", xcZK_TRIM_BOTH, 0, 3, 0, u""},
      {"empty set trims nothing", u" a ", u"", xcZK_TRIM_BOTH, 0, 2, 2, u" a "},
      {"caret 1 with two stripped on the left ends at 0", u"xxab", u"x", xcZK_TRIM_LEFT, 0, 1,
       0, u"ab"},
      {"caret moves left with the text", u"xxabcxx", u"x", xcZK_TRIM_BOTH, 0, 4, 2, u"abc"},
      {"caret past the end is pulled back", u"xxabcxx", u"x", xcZK_TRIM_BOTH, 0, 7, 3, u"abc"},
      {"caret beyond the end without right stripping", u"abc", u"x", xcZK_TRIM_BOTH, 0, 9, 9,
       u"abc"},
      {"binary set is case-sensitive", u"XxabcxX", u"x", xcZK_TRIM_BOTH, 0, 0, 0, u"XxabcxX"},
      {"text set ignores case", u"XxabcxX", u"x", xcZK_TRIM_BOTH, 1, 0, 0, u"abc"},
      {"long set", u"0123abc4567", u"0123456789ABCDEFGH", xcZK_TRIM_BOTH, 0, 0, 0, u"abc"},
  };
  auto s = NewString();
  for (const auto& c : cases) {
    int32_t caret = c.caret;
    EXPECT_EQ(s->Trim(c.expression, c.set, static_cast<xeZK_TRIM_TYPE>(c.type), c.mode, &caret),
              c.expected)
        << c.what;
    EXPECT_EQ(caret, c.expected_caret) << c.what;
  }
}

TEST(Trim, EmptyTextStaysEmptyAndKeepsTheCaret) {
  auto s = NewString();
  int32_t caret = 5;
  EXPECT_EQ(s->Trim(u"", u"x", xcZK_TRIM_BOTH, 0, &caret), u"");
  EXPECT_EQ(caret, 5);
  EXPECT_EQ(s->Trim(u"xax", u"x", xcZK_TRIM_BOTH), u"a") << "caret left out";
}

struct CaseCase {
  const char* what;
  String text;
  int32_t type;
  String delimiters;
  String expected;
};

TEST(ChangeCase, ConvertsTheWholeText) {
  const CaseCase cases[] = {
      {"first up, rest down", u"hELLO wORLD", xcZK_CASE_FIRSTUP, u"", u"Hello world"},
      {"delimiters do not capitalise words", u"hELLO wORLD", xcZK_CASE_FIRSTUP, u" ",
       u"Hello world"},
      {"several delimiters", u"a,b c;d", xcZK_CASE_FIRSTUP, u", ;", u"A,b c;d"},
      {"all up with delimiters", u"he llo", xcZK_CASE_ALLUP, u" ", u"HE LLO"},
      {"Cyrillic first up", u"пРИВЕТ мИР", xcZK_CASE_FIRSTUP, u"", u"Привет мир"},
      {"one character", u"a", xcZK_CASE_FIRSTUP, u"", u"A"},
      {"unknown case type leaves the text", u"hELLO", 7, u" ", u"hELLO"},
      {"the length is kept", u"straße", xcZK_CASE_ALLUP, u"", u"STRAßE"},
  };
  ScopedLocale locale("ru_RU");
  auto s = NewString();
  for (const auto& c : cases) {
    const Variant r =
        s->ChangeCase(Variant(c.text), static_cast<xeZK_CHANGE_CASE>(c.type), c.delimiters);
    ASSERT_TRUE(r.isString()) << c.what;
    EXPECT_EQ(ToUtf8(r.asString()), ToUtf8(c.expected)) << c.what;
  }
}

TEST(ChangeCase, FollowsTheThreadLocale) {
  auto s = NewString();
  ScopedLocale locale("tr_TR");
  EXPECT_EQ(s->ChangeCase(Variant(u"istanbul"), xcZK_CASE_FIRSTUP), Variant(u"İstanbul"));
}

TEST(ChangeCase, ReturnsValuesThatAreNotStringsUnchanged) {
  auto s = NewString();
  const Variant values[] = {Variant(int32_t{5}),   Variant(2.5),     Variant(int16_t{-1}),
                            Variant(),             Variant::Null(),  Variant(true),
                            Variant(Date{45000.5}), Variant(Currency::FromRaw(12345)),
                            Variant(SafeArray::FromStrings({u"a"}))};
  for (const Variant& v : values) {
    const Variant r = s->ChangeCase(v, xcZK_CASE_ALLUP, u" ");
    EXPECT_EQ(r.type(), v.type()) << ToUtf8(TypeName(v.type()));
    EXPECT_TRUE(r == v) << ToUtf8(TypeName(v.type()));
  }
}

}  // namespace
}  // namespace tsruntime
