// clsZKCDL's properties: plain fields with their conversions, early and late bound. No
// dialog is shown here.
#include <gtest/gtest.h>

#include "support/outcome.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKCDL.h"

namespace tsruntime {
namespace {

using testing::Outcome;
using testing::U8;

const String kNul(1, u'\0');

// Sixteen (or `n`) custom colours as the get writes them.
String Joined(std::vector<int32_t> values) {
  String text;
  for (size_t i = 0; i < values.size(); ++i)
    text += (i ? kNul : String()) + FromAscii(std::to_string(values[i]));
  return text;
}
std::vector<int32_t> Colors(std::initializer_list<int32_t> first, size_t n = 16) {
  std::vector<int32_t> v(first);
  v.resize(std::max(n, v.size()), 0);
  return v;
}

TEST(CdlProperties, ANewObjectHoldsZerosFalseAndEmpty) {
  auto cdl = New<clsZKCDL>();
  EXPECT_EQ(cdl->APIReturn(), 0);
  EXPECT_EQ(cdl->ExtendedError(), 0);
  EXPECT_FALSE(cdl->CancelError());
  EXPECT_EQ(cdl->FileMaxSize(), 0) << "255 is applied by the dialogs, not stored";
  EXPECT_EQ(cdl->FileFilter(), u"");
  EXPECT_EQ(cdl->FileFilterIndex(), 0);
  EXPECT_EQ(cdl->FontSize(), 0);
  EXPECT_FALSE(cdl->Object());
  EXPECT_EQ(cdl->ColorsCustom(), Joined(Colors({}))) << "sixteen zeros joined by NUL";
}

TEST(CdlProperties, FileFilterIsStoredInThePlatformForm) {
  const struct {
    const char* what;
    String given, stored;
  } rows[] = {
      {"each bar becomes NUL and one NUL ends it", u"Text (*.txt)|*.txt",
       u"Text (*.txt)" + kNul + u"*.txt" + kNul},
      {"two pairs", u"A|*.a|B|*.b;*.c", u"A" + kNul + u"*.a" + kNul + u"B" + kNul + u"*.b;*.c" + kNul},
      {"an empty filter is a lone NUL", u"", kNul},
      {"NULs already there are kept", u"A" + kNul + u"*.a", u"A" + kNul + u"*.a" + kNul},
      {"neighbouring bars give neighbouring NULs", u"a||b", u"a" + kNul + kNul + u"b" + kNul},
  };
  for (const auto& row : rows) {
    auto cdl = New<clsZKCDL>();
    cdl->LetFileFilter(row.given);
    EXPECT_EQ(cdl->FileFilter(), row.stored) << row.what;
  }
}

TEST(CdlProperties, ColorsCustomReadsEachPieceWithVal) {
  const struct {
    const char* what;
    String given;
    std::string expected;  // the get afterwards, or the error
  } rows[] = {
      {"one value sets the first and leaves fifteen zeros", u"255", U8(Joined(Colors({255})))},
      {"pieces fill colours in order", u"1" + kNul + u"2" + kNul + u"3",
       U8(Joined(Colors({1, 2, 3})))},
      {"a piece without a number is 0", u"7" + kNul + u"red", U8(Joined(Colors({7, 0})))},
      {"a piece is read up to its first stray character", u"12px", U8(Joined(Colors({12})))},
      {"hexadecimal", u"&HFF00", U8(Joined(Colors({-256})))},
      {"halves round to even", u"2.5" + kNul + u"3.5", U8(Joined(Colors({2, 4})))},
      {"negative values are kept", u"-1", U8(Joined(Colors({-1})))},
      {"an empty piece in the middle is 0", u"1" + kNul + kNul + u"3", U8(Joined(Colors({1, 0, 3})))},
      {"a trailing NUL makes one more, empty, piece", u"5" + kNul, U8(Joined(Colors({5, 0})))},
      {"eighteen pieces grow the list to eighteen", [] {
         String s;
         for (int i = 1; i <= 18; ++i) s += (i > 1 ? kNul : String()) + FromAscii(std::to_string(i));
         return s;
       }(),
       U8(Joined({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18}))},
      {"a value beyond 32 bits is overflow", u"1e10", "error 6"},
  };
  for (const auto& row : rows) {
    auto cdl = New<clsZKCDL>();
    EXPECT_EQ(Outcome([&] {
                cdl->LetColorsCustom(row.given);
                return U8(cdl->ColorsCustom());
              }),
              row.expected)
        << row.what;
  }
}

TEST(CdlProperties, ColorsCustomKeepsColoursPastTheLastPiece) {
  auto cdl = New<clsZKCDL>();
  cdl->LetColorsCustom(u"1" + kNul + u"2" + kNul + u"3");
  cdl->LetColorsCustom(u"9");
  EXPECT_EQ(cdl->ColorsCustom(), Joined(Colors({9, 2, 3})));
  cdl->LetColorsCustom(u"");
  EXPECT_EQ(cdl->ColorsCustom(), Joined(Colors({9, 2, 3}))) << "the empty text has no pieces";
}

TEST(CdlProperties, LateBoundPropertiesReadBackWhatWasLet) {
  Ref<Object> cdl = CreateObject(u"TSRuntimeLib.clsZKCDL");
  const struct {
    const char* name;
    Variant given;
    std::string read;  // the get, as text
  } rows[] = {
      {"CancelError", Variant(true), "True"},
      {"hwndOwner", Variant(int32_t{77}), "77"},
      {"Color", Variant(String(u"255")), "255"},
      {"FileFullName", Variant(String(u"/tmp/a.txt")), "/tmp/a.txt"},
      {"FileFilter", Variant(String(u"A|*.a")), std::string("A\0*.a\0", 6)},
      {"FileFilterIndex", Variant(int32_t{2}), "2"},
      {"FileMaxSize", Variant(int32_t{-5}), "-5"},
      {"FolderPrompt", Variant(String(u"Куда?")), "Куда?"},
      {"FontStrikethru", Variant(true), "True"},
      {"FontPrinterHdc", Variant(int32_t{3}), "3"},
      {"HelpKey", Variant(String(u"key")), "key"},
      {"PrintCopies", Variant(int32_t{2}), "2"},
      {"ColorsCustom", Variant(String(u"5")), U8(Joined(Colors({5})))},
  };
  for (const auto& row : rows) {
    std::vector<Argument> let{{{}, row.given}};
    Invoke(*cdl, FromAscii(row.name), InvokeKind::kLet, let);
    std::vector<Argument> none;
    EXPECT_EQ(U8(ToString(Invoke(*cdl, FromAscii(row.name), InvokeKind::kCall, none))), row.read)
        << row.name;
  }
}

TEST(CdlProperties, LateBoundResultsAreReadOnlyAndObjectIsSet) {
  Ref<Object> cdl = CreateObject(u"clsZKCDL");
  for (const char* name : {"APIReturn", "ExtendedError", "Action"}) {
    std::vector<Argument> let{{{}, Variant(int32_t{1})}};
    EXPECT_EQ(Outcome([&] { Invoke(*cdl, FromAscii(name), InvokeKind::kLet, let); }),
              "error 438")
        << name << " has no let";
  }
  std::vector<Argument> set{{{}, Variant(cdl)}};
  Invoke(*cdl, u"Object", InvokeKind::kSet, set);
  std::vector<Argument> none;
  EXPECT_EQ(Invoke(*cdl, u"Object", InvokeKind::kCall, none).asObject(), cdl);
  // The object now holds itself; release the cycle.
  std::vector<Argument> nothing{{{}, Variant::Nothing()}};
  Invoke(*cdl, u"Object", InvokeKind::kSet, nothing);
}

}  // namespace
}  // namespace tsruntime
