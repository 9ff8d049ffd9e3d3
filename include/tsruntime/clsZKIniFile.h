// clsZKIniFile: values of INI-style configuration text, read and changed in place.
//
// The text comes from a file (`FullName`) or from a string (`SourceString`). It is kept
// as its raw lines, split only at CR LF, and a sorted index of "section.key" entries is
// built over them when first needed. `GetData` answers from the index; `PutData`
// rewrites the one raw line that holds a key and, for a file, writes the whole file
// again at once, so every other line (comments, blank lines, odd spacing, bytes in
// another code page, a stray CR or LF) survives as it was. Keys are never added.
//
//   ; settings.ini
//   [Main]
//   name = value ' note
//
//   auto ini = tsruntime::New<tsruntime::clsZKIniFile>();
//   ini->LetFullName(u"/etc/app/settings.ini");
//   String v;
//   ini->GetData(u"name", v, u"Main");     // True, v == "value"
//   ini->PutData(u"name", u"x", u"Main");  // the line becomes "name = x" TAB "' note"
//
// Reading the text, line by line:
//   - a line ending in blank + underscore continues on the next one, but only in text
//     loaded from a file: "key = abc _" then "   def" is the value "abcdef". Text set
//     through `SourceString` is not joined ("abc _", and the next line stands alone);
//   - the logical line (continuations joined, blanks and TABs stripped from both ends)
//     is a section header when it starts with "[" and ends with "]"; the section is
//     the line with "[", "]", blanks and TABs stripped from both ends ("[[Main]]" and
//     "[ Main ]" both name "Main"). "[Main] ' note" is not a header, because the test
//     is made on the whole line;
//   - otherwise the line is cut at the first `SepComment` ("'" by default), and if what
//     is left holds `SepData` ("=" by default) it is an entry: the key before the first
//     separator, the value after it ("key = a = b" is the value "a = b"), both with
//     blanks and TABs stripped. Other lines are not looked at.
// Keys before the first header belong to the empty section. Sections and keys keep
// their case and are compared by code unit: "Main" and "main" differ. A key twice in a
// section is found once, whichever the binary search meets.
//
// The index is rebuilt only when the load stamp changes: for a file, its modification
// time, compared to the nanosecond; for a string, once after each assignment. The stamp
// is stored before the file is read, so a load that fails is not retried until the
// file changes: the first `GetData` on an empty file raises xcZKERR_INI_FILELOAD, the
// next one returns False quietly. Setting `FullName` does not reset the stamp, so a
// second file with the very same modification time as the one loaded before is not
// read. Changing the separators takes effect at the next rebuild.
//
// Errors (Russian only; the source is "ZKRuntimeLib.clsZKIniFile." + the operation):
//   xcZKERR_INI_NOFILE      FullName, no such file:    "FullName = '<path>'"
//   xcZKERR_INI_NOFILE      SourceString, empty text:  "Попытка присвоить пустую строку
//                                                       в качестве источника ini-данных"
//   xcZKERR_INI_FILELOAD    GetData, PutData:          "Ошибка загрузки INI-файла: <FullName>"
//   xcZKERR_INI_KEYMISSING  PutData, source GetData:   "Ключ не найден: [<section>.]<key>"
//   xcZKERR_INI_FILESAVE    PutData:                   "Ошибка записи в INI-файл: <FullName>"
#pragma once

#include <cstdint>
#include <vector>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/errors.h"

namespace tsruntime {

class clsZKFileSystem;
class clsZKString;
class clsZKArray;

class clsZKIniFile : public Object {
 public:
  clsZKIniFile();
  ~clsZKIniFile() override;
  TSRUNTIME_CLASS_INFO;

  // The INI file to work on. Setting it needs an existing, readable file (else
  // xcZKERR_INI_NOFILE, and nothing changes) and leaves string mode.
  String FullName() const { return full_name_; }
  void LetFullName(const String& RHS);

  // The separator of key and value, "=" at first; write-only to hosts.
  void LetSepData(const String& RHS) { sep_data_ = RHS; }
  // Where a comment starts, "'" at first; write-only to hosts.
  void LetSepComment(const String& RHS) { sep_comment_ = RHS; }

  // INI text to work on instead of a file. CR, LF, TAB and blanks are trimmed from both
  // ends; the rest is split at CR LF and the index is rebuilt at the next access. An
  // empty text raises xcZKERR_INI_NOFILE (the string code is never used) and leaves
  // the object working on `FullName` again, the old lines kept.
  void LetSourceString(const String& RHS);
  // The raw lines joined with CR LF, changes by `PutData` included; "" before any text.
  String SourceString() const;

  // Sets `ValueBuf` to "" and looks up `KeyName` in `SectionName` ("" for the keys
  // before the first header). True, with the value in `ValueBuf`, when found; False
  // when not. Raises xcZKERR_INI_FILELOAD when the index cannot be built: no file, a
  // file that cannot be read, or one holding only blanks, TABs and line breaks.
  bool GetData(const String& KeyName, String& ValueBuf, const String& SectionName = String());

  // Stores `DataValue` (blanks and TABs stripped from both ends) as the value of an
  // existing key. Its raw line becomes: the text up to and including the first
  // `SepData`, the blanks and TABs that followed it, the value, and, when the line had
  // a comment, a TAB and the comment (from the first `SepComment` to the end):
  //   "name = value ' note"  ->  "name = x\t' note"
  // A continued line becomes one line. In string mode only the text held changes. For
  // a file the whole text is written at once, replacing the file (the old one stays
  // whole until the new one is complete); its new modification time becomes the stamp.
  // True when stored. Raises xcZKERR_INI_FILELOAD as `GetData` does;
  // xcZKERR_INI_KEYMISSING, with the source naming GetData, for a key that is not
  // there; xcZKERR_INI_FILESAVE when the file cannot be written (the line stays
  // changed in memory).
  bool PutData(const String& KeyName, String DataValue, const String& SectionName = String());

 private:
  // The stamp of what the index was built from: a date for the string states (0 after
  // a build from a string, 1.0 right after one is assigned, which no build gives) or a
  // file's modification time.
  struct LoadStamp {
    double date = 0;
    bool is_file = false;
    int64_t seconds = 0;
    int64_t nanoseconds = 0;
    bool operator==(const LoadStamp&) const = default;
  };

  bool BuildIndex();
  void IndexLine(size_t line, String& section, std::vector<String>& entries);
  // The index row holding "section.key", or -1.
  int32_t FindRow(const String& KeyName, const String& SectionName);
  String Row(int32_t column, int32_t row) const;

  Ref<clsZKFileSystem> fs_;
  Ref<clsZKString> str_;
  Ref<clsZKArray> arr_;
  String full_name_;
  bool from_string_ = false;
  LoadStamp stamp_;
  String sep_comment_ = u"'";
  String sep_data_ = u"=";
  std::vector<String> lines_;
  SafeArray index_{VarType::kString};  // (column, row): "section.key", value, line number
};

}  // namespace tsruntime
