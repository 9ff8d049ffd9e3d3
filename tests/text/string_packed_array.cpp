// clsZKString: ArrayJoin and ArraySplit, the packed-array text.
#include <random>

#include "string_test_support.h"

namespace tsruntime {
namespace {

using string_test::ExpectRuntimeError;
using string_test::NewString;

void ExpectStrings(const SafeArray& a, int32_t lower, const std::vector<String>& expected,
                   const std::string& what) {
  ASSERT_EQ(a.elementType(), VarType::kString) << what;
  ASSERT_EQ(a.dimensions(), 1) << what;
  EXPECT_EQ(a.lbound(), lower) << what;
  EXPECT_EQ(a.ubound(), lower + static_cast<int32_t>(expected.size()) - 1) << what;
  EXPECT_EQ(a.ToStrings(), expected) << what;
}

TEST(ArrayJoin, WritesALengthHeaderBeforeEachElement) {
  struct Case {
    const char* what;
    SafeArray array;
    String expected;
  } cases[] = {
      {"three elements", SafeArray::FromStrings({u"ab", u"", u"xyz"}),
       u"000000011ab000000009000000012xyz"},
      {"one empty element", SafeArray::FromStrings({u""}), u"000000009"},
      {"digits and line breaks travel as they are",
       SafeArray::FromStrings({u"000000009", u"a\r\nb"}), u"000000018000000009000000013a\r\nb"},
      {"dimensioned but empty", SafeArray(VarType::kString, {Bounds{0, -1}}), u""},
      {"bounds -1 to -1", SafeArray(VarType::kString, {Bounds{-1, -1}}), u""},
      {"elements below index 0 are skipped", SafeArray::FromStrings({u"p", u"q", u"a"}, -2),
       u"000000010a"},
      {"a Variant array's values are written as text",
       SafeArray::FromVariants({Variant(int32_t{12}), Variant(u"x")}), u"00000001112000000010x"},
  };
  auto s = NewString();
  for (const auto& c : cases) EXPECT_EQ(ToUtf8(s->ArrayJoin(c.array)), ToUtf8(c.expected)) << c.what;
}

TEST(ArrayJoin, LetsSubscriptErrorsThrough) {
  auto s = NewString();
  ExpectRuntimeError([&] { s->ArrayJoin(SafeArray(VarType::kString)); },
                     RuntimeError::kSubscriptOutOfRange, "never dimensioned");
  ExpectRuntimeError([&] { s->ArrayJoin(SafeArray::FromStrings({u"a", u"b"}, 1)); },
                     RuntimeError::kSubscriptOutOfRange, "lower bound 1");
  ExpectRuntimeError([&] { s->ArrayJoin(SafeArray(VarType::kString, {Bounds{5, 4}})); },
                     RuntimeError::kSubscriptOutOfRange, "empty, lower bound 5");
  ExpectRuntimeError(
      [&] { s->ArrayJoin(SafeArray(VarType::kString, {Bounds{0, 1}, Bounds{0, 1}})); },
      RuntimeError::kSubscriptOutOfRange, "two dimensions");
}

TEST(ArraySplit, ReadsRecordsByTheirHeaders) {
  struct Case {
    const char* what;
    String text;
    int32_t lower;
    std::vector<String> expected;
  } cases[] = {
      {"three elements", u"000000011ab000000009000000012xyz", 0, {u"ab", u"", u"xyz"}},
      {"one empty element", u"000000009", 0, {u""}},
      {"empty text gives bounds -1 to -1", u"", -1, {u""}},
      {"a single character gives one empty element", u"7", 0, {u""}},
      {"a record running past the end is cut short", u"000000020abc", 0, {u"abc"}},
      {"a header at the very end gives an empty element", u"000000010a000000012", 0,
       {u"a", u""}},
      {"the last character alone is not read", u"000000010ax", 0, {u"a"}},
      {"headers convert as the host runtime converts text", u" 00000011ab+00000010c", 0,
       {u"ab", u"c"}},
  };
  auto s = NewString();
  for (const auto& c : cases) ExpectStrings(s->ArraySplit(c.text), c.lower, c.expected, c.what);
}

TEST(ArraySplit, LetsConversionErrorsThrough) {
  auto s = NewString();
  ExpectRuntimeError([&] { s->ArraySplit(u"abcdefghiXYZ"); }, RuntimeError::kTypeMismatch,
                     "letters in the header");
  ExpectRuntimeError([&] { s->ArraySplit(u"000000011ab00000000x"); },
                     RuntimeError::kTypeMismatch, "second header not a number");
  ExpectRuntimeError([&] { s->ArraySplit(u"000000005abcd"); }, RuntimeError::kInvalidCall,
                     "header below 9");
  ExpectRuntimeError([&] { s->ArraySplit(u"-00000001"); }, RuntimeError::kInvalidCall,
                     "negative header");
  ExpectRuntimeError([&] { s->ArraySplit(u"00000000"); }, RuntimeError::kInvalidCall,
                     "short zero header");
}

TEST(ArraySplit, MalformedTextGivesElementsOrAHostErrorNeverACrash) {
  std::mt19937 rng(9);
  const StringView alphabet = u"0000000119-+ a.";
  auto s = NewString();
  for (int i = 0; i < 3000; ++i) {
    String text(rng() % 40, u'0');
    for (char16_t& c : text) c = alphabet[rng() % alphabet.size()];
    try {
      const SafeArray a = s->ArraySplit(text);
      EXPECT_GE(a.size(), 1) << ToUtf8(text);
    } catch (const Error& e) {
      EXPECT_TRUE(e.number() == 5 || e.number() == 6 || e.number() == 13) << ToUtf8(text);
    }
  }
}

TEST(ArraySplit, UndoesArrayJoin) {
  std::mt19937 rng(5);
  const StringView alphabet = u"0123456789ab\r\n ё";
  auto s = NewString();
  for (int i = 0; i < 500; ++i) {
    std::vector<String> items(1 + rng() % 6);
    for (String& item : items) {
      item.resize(rng() % 25);
      for (char16_t& c : item) c = alphabet[rng() % alphabet.size()];
    }
    ExpectStrings(s->ArraySplit(s->ArrayJoin(SafeArray::FromStrings(items))), 0, items,
                  "round trip " + std::to_string(i));
  }
  EXPECT_EQ(s->ArrayJoin(s->ArraySplit(u"")), u"") << "the -1 to -1 shape packs to nothing";
}

}  // namespace
}  // namespace tsruntime
