// Errors: the library's error codes and the forms in which every class raises them; the
// error collection: records and their texts, the index rule, references, packing and
// unpacking against hand-made texts, late binding, and the report ShowErrorMessage builds.
#include <gtest/gtest.h>

#include <new>
#include <sstream>

#include "tsruntime/error_report.h"
#include "support/described_object.h"
#include "support/outcome.h"
#include "tsruntime/automation/err_object.h"
#include "tsruntime/clsTSErrors.h"
#include "tsruntime/errors.h"

namespace tsruntime {
namespace {

using testing::Num;
using testing::U8;

const String kBel(1, u'\a');

// "number|description" of a record, or "Nothing".
std::string Show(const Ref<clsTSError>& e) {
  return e ? std::to_string(e->Number()) + "|" + U8(e->Description()) : "Nothing";
}

// The collection's records as "number|description" lines.
std::string Records(const clsTSErrors& errors) {
  std::string out;
  for (int32_t i = 0; i < errors.Count(); ++i) out += Show(errors.Item(Variant(i))) + "\n";
  return out;
}

Ref<clsTSErrors> WithRecords(std::initializer_list<std::pair<int32_t, String>> records) {
  auto errors = New<clsTSErrors>();
  for (const auto& [number, description] : records) errors->Add(description, number);
  return errors;
}

// A record read from "number BEL description" into one that held 9|old: a piece that is
// missing or does not convert leaves the old value, a third piece is dropped, and the
// number reads as the host runtime reads numbers.
TEST(ErrorRecord, ReadsNumberBelDescription) {
  const std::pair<String, std::string> rows[] = {
      {u"", "9|old"}, {u"5" + kBel + u"Нет", "5|Нет"}, {u"12", "12|"},
      {u"5" + kBel + u"a" + kBel + u"b", "5|a"}, {u"x" + kBel + u"D", "9|D"},
      {u"2147483648" + kBel + u"D", "9|D"}, {u" &H10 " + kBel + u"D", "16|D"},
  };
  for (const auto& [data, record] : rows) {
    auto e = New<clsTSError>();
    e->LetNumber(9);
    e->LetDescription(u"old");
    EXPECT_TRUE(e->ToObject(data)) << U8(data);
    EXPECT_EQ(Show(e), record) << U8(data);
  }
}

TEST(ErrorCollection, RendersEachRecordOnItsOwnLineAndClearKeepsTheContext) {
  auto errors = WithRecords({{5, u"D"}, {0, u"Без номера"}});
  // The prefix as text (Null cannot be: left out), then the record's text: the number
  // in brackets unless it is 0 or left out.
  const std::tuple<Variant, bool, String> rows[] = {
      {Variant::Missing(), true, u"[5] D\r\nБез номера\r\n"},
      {Variant::Missing(), false, u"D\r\nБез номера\r\n"},
      {Variant(u"  --> "), true, u"  --> [5] D\r\n  --> Без номера\r\n"},
      {Variant(int32_t{1}), true, u"1[5] D\r\n1Без номера\r\n"},
      {Variant::Null(), true, u"[5] D\r\nБез номера\r\n"},
  };
  for (const auto& [prefix, include, text] : rows) {
    EXPECT_EQ(U8(errors->GetAsText(prefix, include)), U8(text));
  }
  EXPECT_TRUE(errors->HasErrors());
  errors->LetModuleName(u"M");
  errors->Clear();
  EXPECT_FALSE(errors->HasErrors());
  EXPECT_EQ(errors->GetAsText() + errors->ToString() + errors->ModuleName(), u"M");
}

TEST(ErrorCollection, TakesAnIndexThatIsNumericAndInRangeAndNothingElse) {
  auto errors = WithRecords({{10, u"ten"}, {20, u"twenty"}});
  // Numeric: numbers (a fraction rounds half to even), Booleans, Empty, text that reads
  // as a number; not Null, a date or an object.
  const std::pair<Variant, std::string> rows[] = {
      {Variant(int16_t{0}), "10|ten"}, {Variant(int32_t{2}), "Nothing"},
      {Variant(int32_t{-1}), "Nothing"}, {Variant(u"1"), "20|twenty"}, {Variant(u"x"), "Nothing"},
      {Variant(0.5), "10|ten"}, {Variant(1.5), "Nothing"}, {Variant(-0.4), "Nothing"},
      {Variant(), "10|ten"}, {Variant(false), "10|ten"}, {Variant(true), "Nothing"},
      {Variant::Null(), "Nothing"}, {Variant(Date{1.0}), "Nothing"},
      {Variant(Ref<Object>(errors)), "Nothing"},
  };
  for (size_t i = 0; i < std::size(rows); ++i) {
    SCOPED_TRACE(::testing::Message() << "row " << i);
    const auto& [index, record] = rows[i];
    EXPECT_EQ(Show(errors->Item(index)), record);
    EXPECT_EQ(std::to_string(errors->GetErrNumber(index)) + "|" +
                  U8(errors->GetErrDescription(index)),
              record == "Nothing" ? "0|" : record);
  }
}

TEST(ErrorCollection, HoldsRecordsByReference) {
  auto errors = New<clsTSErrors>();
  auto mine = New<clsTSError>();
  errors->AddAsObject(mine);
  mine->LetNumber(3);
  mine->LetDescription(u"later");
  EXPECT_EQ(errors->GetAsText(), u"[3] later\r\n") << "changes made later show";
  auto other = New<clsTSError>();
  errors->LetItem(Variant(int32_t{1}), other);
  EXPECT_EQ(errors->Count(), 1) << "an index past the end replaces nothing";
  errors->LetItem(Variant(u"0"), other);
  other->LetDescription(u"other");
  EXPECT_EQ(errors->Item(Variant(int32_t{0})), other) << "the caller's object itself";
  errors->AddAsObject(nullptr);
  EXPECT_EQ(errors->Count(), 2) << "Nothing is a record too";
  EXPECT_EQ(errors->GetAsText(), u"other\r\n") << "and renders as no line";
  EXPECT_EQ(errors->ToString(), u"0000000160" + kBel + u"other000000009")
      << "and packs as an empty text";
}

TEST(ErrorCollection, PacksRecordsAsTheStringFunctionsDoAndAppendsWhatItUnpacks) {
  auto errors = WithRecords({{5, u"D"}, {-1, u"Ошибка"}, {0, u""}});
  const String packed = u"0000000125" + kBel + u"D000000018-1" + kBel + u"Ошибка0000000110" + kBel;
  EXPECT_EQ(errors->ToString(), packed);
  // Records are appended after those held; a bad header appends nothing, a record cut
  // short keeps what is there, a BEL in a description loses the rest.
  const std::pair<String, std::string> rows[] = {
      {packed, "1|a\n5|D\n-1|Ошибка\n0|\n"}, {u"", "1|a\n"}, {u"abc", "1|a\n"},
      {u"000000001", "1|a\n"}, {u"000000009", "1|a\n0|\n"},
      {u"0000000207" + kBel + u"abc", "1|a\n7|abc\n"},
      {u"0000000155" + kBel + u"a" + kBel + u"bc", "1|a\n5|a\n"},
  };
  for (const auto& [text, records] : rows) {
    auto copy = WithRecords({{1, u"a"}});
    EXPECT_FALSE(copy->ToObject(text)) << U8(text) << ": False even when records were read";
    EXPECT_EQ(Records(*copy), records) << U8(text);
  }
}

// Late bound: defaults, named arguments, the default members, and a record where text is
// declared (its Description). Nothing cannot be text: Add fails with 91 before a record
// is made, GetAsText skips it as it skips any failure. A caught Error, or any object with
// Number and Description, adds a record; other values add nothing.
TEST(ErrorCollection, AddsErrorsAndTakesNamedArgumentsDefaultsAndARecordAsText) {
  auto errors = New<clsTSErrors>();
  auto call = [](Object& o, StringView member, std::vector<Argument> args,
                 InvokeKind kind = InvokeKind::kCall) { return Invoke(o, member, kind, args); };
  call(*errors, u"Add", {{u"Number", Variant(int32_t{4})}});
  call(*errors, u"Add", {{u"", testing::Described(u"D")}});
  EXPECT_EQ(testing::Outcome([&] { call(*errors, u"Add", {{u"", Variant::Nothing()}}); }),
            "error 91");
  std::vector<Argument> index{{u"", Variant(u"1")}}, none;
  const Ref<Object> second = InvokeDefault(*errors, index).asObject();
  call(*second, u"Description", {{u"", testing::Described(u"E")}}, InvokeKind::kLet);
  EXPECT_EQ(U8(ToString(InvokeDefault(*second, none))), "E");
  call(*errors, u"AddAsError", {{u"", Variant(New<ErrObject>(Error(9, u"", u"late")))}});
  errors->AddAsError(Error(-5, u"ZKRuntimeLib.clsZKString.InstrRight", u"caught", u"a.hlp", 12));
  for (const Variant& v : {testing::Described(u"F"), Variant(u"not an object"), Variant::Nothing(),
                           Variant(New<clsTSErrors>())}) {
    errors->AddAsError(v);
  }
  const std::pair<std::vector<Argument>, std::string> texts[] = {
      {{{u"IncludeNumber", Variant(false)}}, "\r\nE\r\nlate\r\ncaught\r\nF\r\n"},
      {{{u"Prefix", testing::Described(u">")}},
       ">[4] \r\n>E\r\n>[9] late\r\n>[-5] caught\r\n>F\r\n"},
      {{{u"Prefix", Variant::Nothing()}}, "[4] \r\nE\r\n[9] late\r\n[-5] caught\r\nF\r\n"},
  };
  for (const auto& [args, text] : texts) {
    EXPECT_EQ(U8(ToString(call(*errors, u"GetAsText", args))), text);
  }
}

// The report's lines, each record last; where it goes (the window, or standard error) is
// pinned with the window and with tsrt.
TEST(ErrorReport, BuildsItsLinesFromTheContextCodeMessageAndRecords) {
  const String record = u"  --> [5] Нет файла\r\n";
  const struct { String program, module, function, message; int32_t code; String text; } rows[] = {
      {u"", u"", u"", u"", 0, u"Программа:\t\r\n\r\n" + record},
      {u"Склад", u"modImport", u"Run", u"Сбой", -5,
       u"Программа:\tСклад\r\nМодуль:\t\tmodImport.Run\r\nКод ошибки: -5\r\nСбой\r\n" + record},
      {u"", u"M", u"", u"", 0, u"Программа:\t\r\nМодуль:\t\tM\r\n" + record},
      {u"", u"", u"F", u"", 0, u"Программа:\t\r\n.F\r\n" + record},
      {u"P", u"", u"", u"", 7, u"Программа:\tP\r\n\r\nКод ошибки: 7\r\n" + record},
  };
  for (const auto& r : rows) {
    auto errors = WithRecords({{5, u"Нет файла"}});
    errors->LetProgramName(r.program);
    errors->LetModuleName(r.module);
    errors->LetFunctionName(r.function);
    EXPECT_EQ(ErrorReportText(*errors, r.message, r.code), r.text) << U8(r.text);
    EXPECT_EQ(ErrorReportCaption(*errors), r.program.empty() ? u"Ошибка" : u"Ошибка: " + r.program);
  }
}

// The codes of a class start at its base and count up; the bases step by 100.
TEST(ErrorCodes, PublishAll29MembersInOrderWithTheirValues) {
  const char* const classes[] = {  // each class, then its members
      "STRING INSTRRIGHT", "SYSTEM KBDL",
      "FS DIRSMAKE DIRRENAME PATHSHORT2LONG DIRKILL FILEKILL FILERENAME DIRSCAN",
      "ARRAY SORTBUBBLE SORTQUICK SORTSEL", "REG", "INI NOFILE NOSTRING KEYMISSING FILELOAD FILESAVE",
      "STORAGE DATATYPE INDEX NOITEMS NAMEREQ ISROOT"};
  std::string expected, published;
  for (int32_t c = 0; c < 7; ++c) {
    std::istringstream words(classes[c]);
    std::string name, member;
    words >> name;
    int32_t code = -2147220804 + 100 * c;
    expected += "xcZKERR_START_CLASS_" + name + "=" + std::to_string(code++) + " ";
    while (words >> member) expected += "xcZKERR_" + name + "_" + member + "=" + std::to_string(code++) + " ";
  }
  for (const EnumInfo* e : RegisteredEnums()) {
    if (e->name != u"xeZK_ERROR_CODES") continue;
    for (const EnumMember& m : e->members) published += U8(m.name) + "=" + Num(m.value) + " ";
  }
  EXPECT_EQ(published, expected);
}

// Raises what `body` raises, through the error trap of clsZKFileSystem.DirKill.
std::function<void()> Trapped(std::function<void()> body) {
  return [body] { WithErrorTrap(xcZKERR_FS_DIRKILL, "clsZKFileSystem", "DirKill", body); };
}

TEST(RaiseConvention, EveryFormFillsAllFiveFields) {
  const Error caught(53, u"ZKRuntimeLib", u"File not found", u"runtime.chm", 1000053);
  const std::pair<std::function<void()>, const char*> rows[] = {
      {[] { RaiseOwn(xcZKERR_INI_KEYMISSING, "clsZKIniFile", "GetData", u"Нет ключа: a.b"); },
       "-2147220301\nZKRuntimeLib.clsZKIniFile.GetData\nНет ключа: a.b\n\n0"},
      // The wrapping form keeps the caught text and help, one line more per argument.
      {[&] {
         RaiseWrapped(xcZKERR_FS_FILERENAME, "clsZKFileSystem", "FileRename", caught,
                      {{"OldName", u"/tmp/нет"}, {"NewName", u""}});
       },
       "-2147220598\nZKRuntimeLib.clsZKFileSystem.FileRename\n"
       "File not found\r\nOldName = '/tmp/нет'\r\nNewName = ''\nruntime.chm\n1000053"},
      {[] { RaiseRuntime(RuntimeError::kTypeMismatch); }, "13\nZKRuntimeLib\nType mismatch\n\n0"},
      {Trapped([] { throw std::bad_alloc(); }),
       "-2147220600\nZKRuntimeLib.clsZKFileSystem.DirKill\nOut of memory\n\n0"},
      {Trapped([] { throw Error(70, u"elsewhere", u"inner", u"x.hlp", 7); }),
       "-2147220600\nZKRuntimeLib.clsZKFileSystem.DirKill\ninner\nx.hlp\n7"},
  };
  for (const auto& [body, fields] : rows) EXPECT_EQ(testing::RaisedFields(body), fields);
  EXPECT_EQ(WithErrorTrap(xcZKERR_FS_DIRKILL, "clsZKFileSystem", "DirKill", [] { return 5; }), 5);
  EXPECT_EQ(U8(RuntimeErrorText(12345)), "Application-defined or object-defined error");
}

}  // namespace
}  // namespace tsruntime
