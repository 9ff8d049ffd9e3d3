// The error collection: records and their texts, the index rule, references, packing
// and unpacking against hand-made texts, and the report that ShowErrorMessage builds.
#include <gtest/gtest.h>

#include <functional>

#include "tsruntime/error_report.h"
#include "support/described_object.h"
#include "support/outcome.h"
#include "tsruntime/automation/err_object.h"
#include "tsruntime/clsTSErrors.h"

namespace tsruntime {
namespace {

using testing::U8;

const String kBel(1, u'\a');

// "number|description" of a record, or "Nothing".
std::string Show(const Ref<clsTSError>& e) {
  if (!e) return "Nothing";
  return std::to_string(e->Number()) + "|" + U8(e->Description());
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

TEST(ErrorRecord, RendersItsTextWithTheNumberInBracketsUnlessItIsZero) {
  struct Row { const char* what; int32_t number; String description; bool include; std::string text;
      } rows[] = {
      {"a number is shown in brackets", 5, u"Нет файла", true, "[5] Нет файла"},
      {"a negative number too", -2147220803, u"D", true, "[-2147220803] D"},
      {"number 0 shows the description alone", 0, u"D", true, "D"},
      {"IncludeNumber False drops the number", 5, u"D", false, "D"},
      {"an empty description keeps the bracket and space", 7, u"", true, "[7] "},
  };
  for (const Row& r : rows) {
    auto e = New<clsTSError>();
    e->LetNumber(r.number);
    e->LetDescription(r.description);
    EXPECT_EQ(U8(e->GetText(r.include)), r.text) << r.what;
    EXPECT_EQ(e->ToString(), FromAscii(std::to_string(r.number)) + kBel + r.description) << r.what;
  }
}

TEST(ErrorRecord, ReadsNumberBelDescriptionKeepingWhatDoesNotConvert) {
  struct Row {
    const char* what;
    String data;
    std::string record;  // starting from 9|old
  } rows[] = {
      {"an empty text changes nothing", u"", "9|old"},
      {"number and description", u"5" + kBel + u"Нет", "5|Нет"},
      {"no BEL: the description becomes empty", u"12", "12|"},
      {"a third piece is dropped", u"5" + kBel + u"a" + kBel + u"b", "5|a"},
      {"a number that is not one keeps the old number", u"x" + kBel + u"D", "9|D"},
      {"a number beyond a Long keeps the old number", u"2147483648" + kBel + u"D", "9|D"},
      {"numbers read as the host runtime reads them", u" &H10 " + kBel + u"D", "16|D"},
      {"a leading BEL leaves the number alone", kBel + u"D", "9|D"},
  };
  for (const Row& r : rows) {
    auto e = New<clsTSError>();
    e->LetNumber(9);
    e->LetDescription(u"old");
    EXPECT_TRUE(e->ToObject(r.data)) << r.what;
    EXPECT_EQ(Show(e), r.record) << r.what;
  }
}

TEST(ErrorCollection, StartsEmptyAndRendersEachRecordOnItsOwnLine) {
  auto errors = New<clsTSErrors>();
  EXPECT_FALSE(errors->HasErrors());
  EXPECT_EQ(errors->Count(), 0);
  EXPECT_EQ(errors->GetAsText(), u"");
  EXPECT_EQ(errors->ToString(), u"");

  errors->Add(u"D", 5);
  errors->Add(u"Без номера");
  EXPECT_TRUE(errors->HasErrors());
  struct Row { const char* what; Variant prefix; bool include; String text; } rows[] = {
      {"no prefix", Variant::Missing(), true, u"[5] D\r\nБез номера\r\n"},
      {"without numbers", Variant::Missing(), false, u"D\r\nБез номера\r\n"},
      {"the report's prefix", Variant(u"  --> "), true, u"  --> [5] D\r\n  --> Без номера\r\n"},
      {"a number prefix as text", Variant(int32_t{1}), true, u"1[5] D\r\n1Без номера\r\n"},
      {"a Null prefix cannot be text and is left out", Variant::Null(), true,
       u"[5] D\r\nБез номера\r\n"},
  };
  for (const Row& r : rows) EXPECT_EQ(errors->GetAsText(r.prefix, r.include), r.text) << r.what;
}

TEST(ErrorCollection, TakesAnIndexThatIsNumericAndInRangeAndNothingElse) {
  auto errors = WithRecords({{10, u"ten"}, {20, u"twenty"}});
  struct Row { const char* what; Variant index; std::string record; } rows[] = {
      {"index 0 is the first record", Variant(int16_t{0}), "10|ten"},
      {"index 1 the second", Variant(int32_t{1}), "20|twenty"},
      {"Count is past the end", Variant(int32_t{2}), "Nothing"},
      {"-1 is before the start", Variant(int32_t{-1}), "Nothing"},
      {"text that reads as a number counts", Variant(u"1"), "20|twenty"},
      {"text that does not is no index", Variant(u"x"), "Nothing"},
      {"a fraction picks the record it rounds to", Variant(0.5), "10|ten"},
      {"1.4 rounds down to 1", Variant(1.4), "20|twenty"},
      {"1.5 rounds to 2, where there is no record", Variant(1.5), "Nothing"},
      {"-0.4 is below 0", Variant(-0.4), "Nothing"}, {"Empty counts as 0", Variant(), "10|ten"},
      {"False counts as 0", Variant(false), "10|ten"}, {"True is -1", Variant(true), "Nothing"},
      {"Null is not numeric", Variant::Null(), "Nothing"},
      {"a date is not numeric", Variant(Date{1.0}), "Nothing"},
      {"an object is not numeric", Variant(Ref<Object>(errors)), "Nothing"},
  };
  for (const Row& r : rows) {
    EXPECT_EQ(Show(errors->Item(r.index)), r.record) << r.what;
    const bool found = r.record != "Nothing";
    EXPECT_EQ(errors->GetErrNumber(r.index), found ? std::stoi(r.record) : 0) << r.what;
    EXPECT_EQ(U8(errors->GetErrDescription(r.index)),
              found ? r.record.substr(r.record.find('|') + 1) : "")
        << r.what;
  }
}

TEST(ErrorCollection, HoldsRecordsByReference) {
  auto errors = New<clsTSErrors>();
  auto mine = New<clsTSError>();
  errors->AddAsObject(mine);
  mine->LetNumber(3);
  mine->LetDescription(u"later");
  EXPECT_EQ(errors->Item(Variant(int32_t{0})), mine) << "the caller's object itself";
  EXPECT_EQ(errors->GetAsText(), u"[3] later\r\n") << "changes made later show";

  auto other = New<clsTSError>();
  other->LetDescription(u"other");
  errors->LetItem(Variant(int32_t{1}), other);
  EXPECT_EQ(Records(*errors), "3|later\n") << "an index past the end replaces nothing";
  errors->LetItem(Variant(u"0"), other);
  EXPECT_EQ(errors->Item(Variant(int32_t{0})), other);

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

  auto copy = WithRecords({{1, u"a"}, {2, u"b"}});
  EXPECT_FALSE(copy->ToObject(packed)) << "False even when records were read";
  EXPECT_EQ(Records(*copy), "1|a\n2|b\n5|D\n-1|Ошибка\n0|\n") << "appended after those held";

  struct Row { const char* what; String text; std::string records; } rows[] = {
      {"an empty text appends nothing", u"", ""},
      {"a header that is not a number appends nothing", u"abc", ""},
      {"a header below 9 appends nothing", u"000000001", ""},
      {"one empty record", u"000000009", "0|\n"},
      {"a record cut short keeps what is there", u"0000000207" + kBel + u"abc", "7|abc\n"},
      {"a BEL in a description loses the rest", u"0000000155" + kBel + u"a" + kBel + u"bc",
       "5|a\n"},
  };
  for (const Row& r : rows) {
    auto fresh = New<clsTSErrors>();
    EXPECT_FALSE(fresh->ToObject(r.text)) << r.what;
    EXPECT_EQ(Records(*fresh), r.records) << r.what;
  }
}

TEST(ErrorCollection, ClearEmptiesTheRecordsAndKeepsTheContext) {
  auto errors = WithRecords({{1, u"a"}});
  errors->LetProgramName(u"P");
  errors->LetModuleName(u"M");
  errors->LetFunctionName(u"F");
  errors->Clear();
  EXPECT_EQ(errors->Count(), 0);
  EXPECT_FALSE(errors->HasErrors());
  EXPECT_EQ(errors->Item(Variant(int32_t{0})), nullptr);
  EXPECT_EQ(U8(errors->ProgramName() + errors->ModuleName() + errors->FunctionName()), "PMF");
  errors->Add(u"again", 2);
  EXPECT_EQ(Records(*errors), "2|again\n");
}

TEST(ErrorCollection, AddsACaughtErrorsNumberAndDescription) {
  auto errors = New<clsTSErrors>();
  const Error caught(-2147220803, u"ZKRuntimeLib.clsZKString.InstrRight", u"SearchLen = -5",
                     u"help.hlp", 12);
  errors->AddAsError(caught);
  errors->AddAsError(Variant(New<ErrObject>(Error(53, u"src", u"File not found"))));
  auto record = New<clsTSError>();
  record->LetNumber(8);
  record->LetDescription(u"any object with the two properties");
  errors->AddAsError(Variant(record));
  errors->AddAsError(Variant(u"not an object"));
  errors->AddAsError(Variant::Nothing());
  errors->AddAsError(Variant(New<clsTSErrors>()));  // has neither property
  EXPECT_EQ(Records(*errors),
            "-2147220803|SearchLen = -5\n53|File not found\n8|any object with the two properties\n");

  std::vector<Argument> args{{u"", Variant(New<ErrObject>(Error(9, u"", u"late")))}};
  Invoke(*errors, u"AddAsError", InvokeKind::kCall, args);
  EXPECT_EQ(errors->GetErrNumber(Variant(int32_t{3})), 9) << "late bound as well";
}

TEST(ErrorCollection, LateBoundWithDefaultsAndTheDefaultMember) {
  Ref<Object> errors = CreateObject(u"TSRuntimeLib.clsTSErrors");
  auto call = [&](StringView member, std::vector<Argument> args = {}) {
    return Invoke(*errors, member, InvokeKind::kCall, args);
  };
  call(u"Add", {{u"Number", Variant(int32_t{4})}});
  call(u"Add", {{u"", Variant(u"D")}});
  EXPECT_EQ(ToString(call(u"GetAsText", {{u"IncludeNumber", Variant(false)}})), u"\r\nD\r\n");
  std::vector<Argument> index{{u"", Variant(u"1")}};
  const Variant second = InvokeDefault(*errors, index);
  std::vector<Argument> none;
  EXPECT_EQ(ToString(InvokeDefault(*second.asObject(), none)), u"D")
      << "the collection's default is Item, the record's Description";
}

// Where text is declared, a record passed late bound is its Description (the default
// member). Nothing fails to convert, which these members skip as they skip any failure.
TEST(ErrorCollection, TakesARecordWhereTextIsExpected) {
  const Variant d = testing::Described(u"D");
  auto call = [](Object& o, StringView member, std::vector<Argument> args,
                 InvokeKind kind = InvokeKind::kCall) { return Invoke(o, member, kind, args); };
  const struct {
    const char* what;
    std::function<void(clsTSErrors&)> run;
    std::string text;  // GetAsText afterwards, or with the prefix given
  } rows[] = {
      {"Add(record)", [&](clsTSErrors& e) { call(e, u"Add", {{u"", d}}); }, "[1] x\r\nD\r\n"},
      // Nothing has no default member to read: the call fails before a record is made.
      {"Add(Nothing)",
       [&](clsTSErrors& e) {
         EXPECT_EQ(testing::Outcome([&] { call(e, u"Add", {{u"", Variant::Nothing()}}); }), "error 91");
       },
       "[1] x\r\n"},
      {"Description = record",
       [&](clsTSErrors& e) { call(*e.Item(Variant(int16_t{0})), u"Description", {{u"", d}},
                                  InvokeKind::kLet); },
       "[1] D\r\n"},
      {"GetAsText(Prefix:=record)", nullptr, "D[1] x\r\n"},
  };
  for (const auto& r : rows) {
    auto errors = WithRecords({{1, u"x"}});
    if (r.run) r.run(*errors);
    std::vector<Argument> prefix;
    if (!r.run) prefix.push_back({u"Prefix", d});
    EXPECT_EQ(U8(ToString(call(*errors, u"GetAsText", prefix))), r.text) << r.what;
  }
  auto errors = WithRecords({{1, u"x"}});
  EXPECT_EQ(U8(ToString(call(*errors, u"GetAsText", {{u"Prefix", Variant::Nothing()}}))),
            "[1] x\r\n");
}

TEST(ErrorReport, BuildsItsLinesFromTheContextCodeMessageAndRecords) {
  struct Row { const char* what; String program, module, function, message; int32_t code;
      String text; } rows[] = {
      {"nothing at all still names the program", u"", u"", u"", u"", 0,
       u"Программа:\t\r\n\r\n"},
      {"everything", u"Склад", u"modImport", u"Run", u"Сбой", -5,
       u"Программа:\tСклад\r\nМодуль:\t\tmodImport.Run\r\nКод ошибки: -5\r\nСбой\r\n"},
      {"a module without a function", u"", u"M", u"", u"", 0,
       u"Программа:\t\r\nМодуль:\t\tM\r\n"},
      {"a function without a module", u"", u"", u"F", u"", 0, u"Программа:\t\r\n.F\r\n"},
      {"a code without a message", u"P", u"", u"", u"", 7,
       u"Программа:\tP\r\n\r\nКод ошибки: 7\r\n"},
  };
  for (const Row& r : rows) {
    auto errors = New<clsTSErrors>();
    errors->LetProgramName(r.program);
    errors->LetModuleName(r.module);
    errors->LetFunctionName(r.function);
    EXPECT_EQ(ErrorReportText(*errors, r.message, r.code), r.text) << r.what;
  }
  auto errors = WithRecords({{5, u"D"}, {0, u"E"}});
  EXPECT_EQ(ErrorReportText(*errors, u"", 0),
            u"Программа:\t\r\n\r\n  --> [5] D\r\n  --> E\r\n");
  EXPECT_EQ(ErrorReportCaption(*errors), u"Ошибка");
  errors->LetProgramName(u"Склад");
  EXPECT_EQ(ErrorReportCaption(*errors), u"Ошибка: Склад");
}

String shown_caption, shown_text;
bool Accepting(const String& caption, const String& text) {
  shown_caption = caption;
  shown_text = text;
  return true;
}
bool Declining(const String&, const String&) { return false; }

TEST(ErrorReport, GoesToTheWindowWhenOneIsInstalledElseToStandardError) {
  auto errors = WithRecords({{5, u"Нет файла"}});
  errors->LetProgramName(u"P");
  const String expected = u"Программа:\tP\r\n\r\nmsg\r\n  --> [5] Нет файла\r\n";

  ::testing::internal::CaptureStderr();
  errors->ShowErrorMessage(u"msg");
  EXPECT_EQ(FromUtf8(::testing::internal::GetCapturedStderr()), expected)
      << "no window: the report on standard error";

  const ErrorReportPresenter before = SetErrorReportPresenter(&Accepting);
  ::testing::internal::CaptureStderr();
  errors->ShowErrorMessage(u"msg");
  EXPECT_EQ(::testing::internal::GetCapturedStderr(), "");
  EXPECT_EQ(shown_caption, u"Ошибка: P");
  EXPECT_EQ(shown_text, expected);

  SetErrorReportPresenter(&Declining);
  ::testing::internal::CaptureStderr();
  errors->ShowErrorMessage(u"msg");
  EXPECT_EQ(FromUtf8(::testing::internal::GetCapturedStderr()), expected)
      << "a window that cannot be shown falls back to standard error";
  SetErrorReportPresenter(before);
}

}  // namespace
}  // namespace tsruntime
