// clsZKString: searching, replacing, filtering, cutting, trimming, case, packed arrays,
// amounts in words, packed numbers and the members by name.
#include <random>

#include "text/text_test_util.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/automation/locale.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {
namespace {

using testing::Call;
using testing::ExpectRuntimeError;
using testing::Words;

class StringOps : public ::testing::Test {
 protected:
  ScopedLocale locale_{"ru_RU"};
  Ref<clsZKString> s = New<clsZKString>();
};

TEST_F(StringOps, InstrRightAndReplaceKeepTheirDefinedCorners) {
  EXPECT_EQ(s->InstrRight(u"ПриВЕТ привет", u"ВЕТ", -1, 1), 11) << "text compare in Cyrillic";
  testing::ExpectError([&] { s->InstrRight(u"", u"", -2); }, xcZKERR_STRING_INSTRRIGHT,
                       u"ZKRuntimeLib.clsZKString.InstrRight", u"SearchLen = -2", "SearchLen -2");
  EXPECT_EQ(s->Replace(u"aXa", u"a", u"aa"), u"aaXaa") << "resumed after a replacement holding it";
  EXPECT_EQ(s->Replace(u"ПРИВЕТ", u"привет", u"Мир", 1), u"Мир") << "inserted as given";
  EXPECT_EQ(s->Replace(u"a-b--c", u"-"), u"abc") << "a missing ReplaceStr deletes";
  // A hundred thousand cascading replacements in one call: no rebuilding per step.
  EXPECT_EQ(s->Replace(u"aa" + String(100000, u'B'), u"aab", u"aA", 1), u"aA");
}

// Replace and InstrRight exactly as defined, one occurrence at a time.
String ReplaceByDefinition(String result, StringView search, StringView by, int32_t mode) {
  if (search.empty()) return result;
  const int64_t step = FindString(by, search, 1, mode) > 0 ? static_cast<int64_t>(by.size()) : 0;
  for (int64_t start = 1, at; (at = FindString(result, search, start, mode)) > 0;) {
    result = result.substr(0, at - 1) + String(by) + result.substr(at - 1 + search.size());
    start = at + step;
  }
  return result;
}

int64_t InstrRightByDefinition(StringView work, StringView search, int32_t len, int32_t mode) {
  if (len == 0) return 0;
  if (len > 0) work = work.substr(0, static_cast<size_t>(len));
  if (search.empty()) return static_cast<int64_t>(work.size());
  int64_t pos = 0;
  for (int64_t at; (at = FindString(work, search, pos + 1, mode)) > 0;) pos = at;
  return pos;
}

TEST_F(StringOps, GeneratedInputsAgreeWithTheDefinitions) {
  std::mt19937 rng(2024);
  auto text = [&](size_t min, size_t max, StringView alphabet) {
    String t(min + rng() % (max - min + 1), u'a');
    for (char16_t& c : t) c = alphabet[rng() % alphabet.size()];
    return t;
  };
  for (int i = 0; i < 30000; ++i) {
    // Small alphabets make occurrences, and occurrences formed by replacements, frequent;
    // the Kelvin sign folds to an ASCII k.
    const StringView abc = i % 4 == 0 ? StringView(u"ab") : i % 4 == 3 ? StringView(u"kK\u212Aж")
                                        : StringView(u"abA");
    const auto mode = static_cast<int32_t>(rng() % 2), len = static_cast<int32_t>(rng() % 30) - 1;
    const String text1 = text(0, 24, abc), search = text(0, 4, abc);
    const auto kind = rng() % 4;  // a deletion, a replacement holding the search, or another
    const String by = kind == 0 ? String()
                      : kind == 1 ? text(0, 6, abc) + search + text(0, 2, abc) : text(1, 6, abc);
    SCOPED_TRACE(ToUtf8(text1 + u" / " + search + u" / " + by) + " mode " +
                 std::to_string(mode) + " len " + std::to_string(len));
    ASSERT_EQ(s->Replace(text1, search, by, mode), ReplaceByDefinition(text1, search, by, mode));
    ASSERT_EQ(s->InstrRight(text1, search, len, mode), InstrRightByDefinition(text1, search, len, mode));
  }
}

TEST_F(StringOps, FilterAndTrimMoveTheCaretWithTheText) {
  enum { kFilterDrop = -2, kFilterKeep = -1 };  // Filter rows; the others are Trim types
  const struct { const char* what; String text, set; int32_t type, mode, caret, after;
                 String expected; } cases[] = {
      {"filter: two members dropped before the caret", u"a-b-c", u"-", kFilterDrop, 0, 4, 2, u"abc"},
      {"filter: members kept with Iclude", u"a-b-c", u"-", kFilterKeep, 0, 3, 1, u"--"},
      {"filter: text compare in Cyrillic", u"ЁёжЖ", u"ё", kFilterKeep, 1, 0, 0, u"Ёё"},
      {"right only, the caret pulled back", u"xxabcxx", u"x", xcZK_TRIM_RIGHT, 0, 7, 5, u"xxabc"},
      {"neither bit", u"xxabcxx", u"x", 0, 0, 5, 5, u"xxabcxx"},
      {"nothing but trim characters", u"xxx", u"x", xcZK_TRIM_BOTH, 0, 3, 0, u""},
      {"left only, nothing but trim characters", u"xxx", u"x", xcZK_TRIM_LEFT, 0, 2, 0, u""},
      {"caret 1, two stripped on the left", u"xxab", u"x", xcZK_TRIM_LEFT, 0, 1, 0, u"ab"},
      {"a caret beyond the end, nothing stripped", u"abc", u"x", xcZK_TRIM_BOTH, 0, 9, 9, u"abc"},
      {"text compare ignores case", u"XxaxX", u"x", xcZK_TRIM_BOTH, 1, 0, 0, u"a"}};
  for (const auto& c : cases) {
    int32_t caret = c.caret;
    EXPECT_EQ(c.type < 0 ? s->Filter(c.text, c.set, c.type == kFilterKeep, c.mode, &caret)
                         : s->Trim(c.text, c.set, xeZK_TRIM_TYPE(c.type), c.mode, &caret),
              c.expected) << c.what;
    EXPECT_EQ(caret, c.after) << c.what;
  }
}

TEST_F(StringOps, ChangeCaseConvertsTheWholeTextAndPassesOtherValuesThrough) {
  EXPECT_EQ(s->ChangeCase(u"hELLO wORLD", xcZK_CASE_FIRSTUP), Variant(u"Hello world"));
  EXPECT_EQ(s->ChangeCase(u"пРИВЕТ мИР", xcZK_CASE_FIRSTUP, u" ,"), Variant(u"Привет мир"))
      << "delimiters capitalise no words";
  EXPECT_EQ(s->ChangeCase(u"AbC", xcZK_CASE_ALLDOWN), Variant(u"abc"));
  EXPECT_EQ(s->ChangeCase(u"straße", xcZK_CASE_ALLUP), Variant(u"STRAßE")) << "length kept";
  EXPECT_EQ(s->ChangeCase(u"hELLO", xeZK_CHANGE_CASE(7)), Variant(u"hELLO")) << "unknown type";
  for (const Variant& v : {Variant(5), Variant(), Variant::Null(), Variant(Date{4.5})}) {
    const Variant r = s->ChangeCase(v, xcZK_CASE_ALLUP, u" ");
    EXPECT_TRUE(r.type() == v.type() && r == v) << ToUtf8(TypeName(v.type()));
  }
}

TEST_F(StringOps, GetLeftAndGetRightCutAtTheSeparator) {
  const struct { const char* what; bool right; String text, sep; bool other_end, include, all;
                 String expected; } cases[] = {
      {"left of the first", false, u"a.b.c", u".", false, false, false, u"a"},
      {"left of the last, separator kept", false, u"a.b.c", u".", true, true, false, u"a.b."},
      {"left, no match, AllIfNoMatch", false, u"abc", u".", false, false, true, u"abc"},
      {"left, an empty separator never matches", false, u"abc", u"", false, false, false, u""},
      {"left, always binary", false, u"aXb", u"x", false, false, true, u"aXb"},
      {"right of the first", true, u"a::b::c", u"::", true, false, false, u"b::c"},
      {"right, separator kept", true, u"a.b.c", u".", false, true, false, u".c"},
      {"right, the separator last", true, u"abc.", u".", false, false, true, u""}};
  for (const auto& c : cases) {
    EXPECT_EQ(c.right ? s->GetRight(c.text, c.sep, c.other_end, c.include, c.all)
                      : s->GetLeft(c.text, c.sep, c.other_end, c.include, c.all),
              c.expected) << c.what;
  }
}

TEST_F(StringOps, ArrayJoinWritesLengthHeadersAndArraySplitReadsThem) {
  EXPECT_EQ(s->ArrayJoin(SafeArray::FromStrings({u"ab", u"", u"xyz"})), u"000000011ab000000009000000012xyz");
  EXPECT_EQ(s->ArrayJoin(SafeArray::FromStrings({u"p", u"a"}, -1)), u"000000010a")
      << "elements below index 0 are skipped";
  EXPECT_EQ(s->ArrayJoin(SafeArray::FromVariants({12})), u"00000001112") << "values as text";
  ExpectRuntimeError([&] { s->ArrayJoin(SafeArray::FromStrings({u"a"}, 1)); },
                     RuntimeError::kSubscriptOutOfRange, "lower bound 1");
  const struct { const char* what; String text; int32_t lower; const char* items; } splits[] = {
      {"empty text gives bounds -1 to -1", u"", -1, ""},
      {"one character gives one empty element", u"7", 0, ""},
      {"a record past the end is cut short", u"000000020abc", 0, "abc"},
      {"the last character alone is not read", u"000000010ax", 0, "a"},
      {"headers convert as the host converts", u" 00000011ab+00000010c", 0, "ab c"}};
  for (const auto& c : splits) {
    const SafeArray a = s->ArraySplit(c.text);
    EXPECT_EQ(a.lbound(), c.lower) << c.what;
    EXPECT_EQ(a.ToStrings(), *c.items ? Words(c.items) : std::vector<String>{u""}) << c.what;
  }
  ExpectRuntimeError([&] { s->ArraySplit(u"000000011ab00000000x"); },
                     RuntimeError::kTypeMismatch, "a header not a number");
  ExpectRuntimeError([&] { s->ArraySplit(u"000000005abcd"); }, RuntimeError::kInvalidCall,
                     "a header below 9");
}

TEST_F(StringOps, InWordsWritesEachAmountWithItsGrammaticalForms) {
  const struct { const char* amount; const char* expected; bool unit_names = true; } cases[] = {
      {"1234.56", "одна тысяча двести тридцать четыре рубля 56 копеек"},
      {"21", "двадцать один рубль 00 копеек"}, {"5000", "пять тысяч рублей 00 копеек"},
      {"2000000.01", "два миллиона рублей 01 копейка"},
      {"11002.03", "одиннадцать тысяч два рубля 03 копейки"},
      {"0.5", "ноль рублей 50 копеек"}, {"-7", "семь рублей 00 копеек"},
      {"1000000000000", ""}, {"999999999999.995", ""}, {"-922337203685477.5808", ""},
      // Rounding to whole kopecks, halves up, before anything else.
      {"0.994", "ноль рублей 99 копеек"}, {"0.995", "один рубль 00 копеек"},
      {"0.005", "ноль рублей 01 копейка"}, {"-2.5051", "два рубля 51 копейка"},
      {"999999999999.99", "девятьсот девяносто девять миллиардов девятьсот девяносто девять миллионов девятьсот девяносто девять тысяч девятьсот девяносто девять рублей 99 копеек"},
      {"1.11", "один рубль 11 копеек"}, {"1.21", "один рубль 21 копейка"},
      // Unit forms, teens and the feminine thousands.
      {"10", "десять рублей 00 копеек"}, {"19", "девятнадцать рублей 00 копеек"},
      {"21000", "двадцать одна тысяча рублей 00 копеек"},
      {"1001001", "один миллион одна тысяча один рубль 00 копеек"},
      {"2002002", "два миллиона две тысячи два рубля 00 копеек"},
      {"11000000000", "одиннадцать миллиардов рублей 00 копеек"},
      {"101000011000", "сто один миллиард одиннадцать тысяч рублей 00 копеек"},
      // Without unit names: the kopecks are dropped first, and a space ends the words.
      {"1234.56", "одна тысяча двести тридцать четыре ", false}, {"0.99", "ноль", false},
      {"0.995", "один ", false}, {"2001000000", "два миллиарда один миллион ", false}};
  for (const auto& c : cases) {
    EXPECT_EQ(ToUtf8(s->InWords(testing::Amount(c.amount), c.unit_names)), c.expected)
        << c.amount << (c.unit_names ? "" : " without unit names");
  }
}

// The bit-for-bit round trip of every packed number is the legacy_conversions fuzz
// target's; here the byte order and the ANSI code page the bytes go through.
TEST_F(StringOps, LegacyConversionsGoThroughTheAnsiCodePageAndKeepTheirOddCorners) {
  EXPECT_EQ(s->ConvMKL(65), String(u"A\0\0\0", 4));
  EXPECT_EQ(s->ConvMKI(int16_t(0xC1C0)), u"АБ") << "bytes go through the ANSI code page";
  String shorter = u"A", unmapped = u"A中";
  EXPECT_EQ(s->ConvCVL(shorter), 65) << "missing bytes read as zero";
  EXPECT_EQ(s->ConvCVL(unmapped), 0x3F41) << "a character the code page lacks reads as '?'";
  EXPECT_EQ(unmapped, u"A?") << "the ANSI round trip is written back";
  String source = u"Привет", dest = u"old";
  EXPECT_TRUE(s->ConvWin2Dos(source, dest));
  EXPECT_EQ(StringToAnsi(dest), (std::vector<uint8_t>{0x8F, 0xE0, 0xA8, 0xA2, 0xA5}))
      << "written through the ANSI code page, the text gives the OEM codes of \"Приве\"";
  source = u"";
  EXPECT_TRUE(!s->ConvWin2Dos(source, dest) && dest.empty()) << "the empty string fails quietly";
  const Variant empty, null = Variant::Null(), array(SafeArray::FromStrings({u"a"}));
  EXPECT_TRUE(s->IsVarEQ(empty, empty) && s->IsVarEQ(null, null) && s->IsVarEQ(int16_t{1}, 1.0));
  EXPECT_FALSE(s->IsVarEQ(null, empty) || s->IsVarEQ(0, empty) || s->IsVarEQ(u"", empty));
  EXPECT_FALSE(s->IsVarEQ(u"a", u"A") || s->IsVarEQ(u"1", 1)) << "strings equal only strings";
  EXPECT_FALSE(s->IsVarEQ(array, array)) << "arrays cannot be compared";
  EXPECT_EQ(s->StrToVarNull(u"  "), Variant(u"  ")) << "spaces are not blank";
}

TEST(StringByName, TakesItsOwnParameterNamesAndWritesArgumentsBack) {
  Ref<Object> s = CreateObject(u"TSRuntimeLib.clsZKString");
  std::vector<Argument> args = {{u"Expression", u"a-b-c"}, {u"FilteringStr", u"-"},
                                {u"Iclude", true}, {u"SelStart", 3}};
  EXPECT_EQ(Call(s, u"Filter", args), Variant(u"--"));
  EXPECT_EQ(args[3].value, Variant(1));
  args = {{u"SourceString", u"中ab"}, {u"DestString", Variant()}};
  EXPECT_EQ(Call(s, u"ConvWin2Dos", args), Variant(true));
  EXPECT_EQ(args[0].value, Variant(u"?ab")) << "the ANSI round trip of the source";
  EXPECT_EQ(args[1].value, Variant(u"?a"));
  args = {{u"", u"abc"}, {u"", u"b"}, {u"Include", true}};
  ExpectRuntimeError([&] { Call(s, u"Filter", args); }, RuntimeError::kNamedArgumentNotFound,
                     "the parameter is Iclude");
}

}  // namespace
}  // namespace tsruntime
