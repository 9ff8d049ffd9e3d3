// clsZKIniFile: the source of the text, lookups and the one-line rewrite.
#include "../system/file_stamp.h"
#include "ini_lines.h"
#include "tsruntime/clsZKArray.h"
#include "tsruntime/clsZKFileSystem.h"
#include "tsruntime/clsZKIniFile.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {

using namespace ini_detail;

namespace {

constexpr std::string_view kClass = "clsZKIniFile";
const String kBlanks = u" \t";

[[noreturn]] void RaiseLoad(std::string_view operation, const String& full_name) {
  RaiseOwn(xcZKERR_INI_FILELOAD, kClass, operation, u"Ошибка загрузки INI-файла: " + full_name);
}

}  // namespace

clsZKIniFile::clsZKIniFile()
    : fs_(New<clsZKFileSystem>()), str_(New<clsZKString>()), arr_(New<clsZKArray>()) {}

clsZKIniFile::~clsZKIniFile() = default;

void clsZKIniFile::LetFullName(const String& RHS) {
  if (!fs_->IsFileExists(RHS))
    RaiseOwn(xcZKERR_INI_NOFILE, kClass, "FullName", u"FullName = '" + RHS + u"'");
  full_name_ = RHS;
  from_string_ = false;
}

void clsZKIniFile::LetSourceString(const String& RHS) {
  from_string_ = false;
  const String text = str_->Trim(RHS, u"\r\n\t ", xcZK_TRIM_BOTH);
  if (text.empty()) {
    RaiseOwn(xcZKERR_INI_NOFILE, kClass, "SourceString",
             u"Попытка присвоить пустую строку в качестве источника ini-данных");
  }
  lines_ = SplitAt(text, kLineBreak);
  stamp_ = LoadStamp{1.0};
  from_string_ = true;
}

String clsZKIniFile::SourceString() const { return JoinWith(lines_, kLineBreak); }

bool clsZKIniFile::GetData(const String& KeyName, String& ValueBuf, const String& SectionName) {
  ValueBuf.clear();
  if (!BuildIndex()) RaiseLoad("GetData", full_name_);
  const int32_t row = FindRow(KeyName, SectionName);
  if (row < 0) return false;
  ValueBuf = Row(1, row);
  return true;
}

bool clsZKIniFile::PutData(const String& KeyName, String DataValue, const String& SectionName) {
  if (!BuildIndex()) RaiseLoad("PutData", full_name_);
  const int32_t row = FindRow(KeyName, SectionName);
  if (row < 0) {
    // The source names GetData: hosts match on it.
    RaiseOwn(xcZKERR_INI_KEYMISSING, kClass, "GetData",
             u"Ключ не найден: " + (SectionName.empty() ? String() : SectionName + u".") + KeyName);
  }
  const int32_t line = ToLong(Variant(Row(2, row)));
  // The lines may have been replaced since the index was built by a load that failed.
  if (line < 0 || static_cast<size_t>(line) >= lines_.size()) {
    RaiseRuntime(RuntimeError::kSubscriptOutOfRange);
  }
  String& raw = lines_[static_cast<size_t>(line)];
  DataValue = str_->Trim(DataValue, kBlanks, xcZK_TRIM_BOTH);
  const String comment = str_->GetRight(raw, sep_comment_, true, true);
  const String after = str_->GetRight(raw, sep_data_, true);
  String rewritten = str_->GetLeft(raw, sep_data_, false, true);
  rewritten.append(after, 0, after.size() - str_->Trim(after, kBlanks, xcZK_TRIM_LEFT).size());
  rewritten += DataValue;
  if (!comment.empty()) rewritten += u"\t" + comment;
  raw = std::move(rewritten);
  if (!from_string_) {
    if (!fs_->StringWrite(JoinWith(lines_, kLineBreak), full_name_, xcZK_FILEWRITE_REPLACE)) {
      RaiseOwn(xcZKERR_INI_FILESAVE, kClass, "PutData", u"Ошибка записи в INI-файл: " + full_name_);
    }
    // The file just written is what the index describes: no reload for it.
    if (const auto time = system_detail::FileModificationTime(full_name_)) {
      stamp_ = LoadStamp{0, true, time->seconds, time->nanoseconds};
    }
  }
  index_.at(1, row) = Variant(std::move(DataValue));
  return true;
}

TSRUNTIME_DEFINE_CLASS(clsZKIniFile) {
  static const ClassInfo info = ClassBuilder<clsZKIniFile>("clsZKIniFile")
                                    .Help(u"Values of INI-style text from a file or a string, "
                                          u"read by section and key and changed in place, every "
                                          u"other line kept.")
                                    .Let("FullName", &clsZKIniFile::LetFullName, {"RHS"})
                                    .Help(u"The INI file to work on; setting it needs an "
                                          u"existing, readable file (else xcZKERR_INI_NOFILE).")
                                    .Get("FullName", &clsZKIniFile::FullName)
                                    .Let("SepData", &clsZKIniFile::LetSepData, {"RHS"})
                                    .Help(u"The separator of key and value, \"=\" at first; "
                                          u"write-only.")
                                    .Let("SepComment", &clsZKIniFile::LetSepComment, {"RHS"})
                                    .Help(u"Where a comment starts, \"'\" at first; write-only.")
                                    .Let("SourceString", &clsZKIniFile::LetSourceString, {"RHS"})
                                    .Help(u"INI text to work on instead of a file, split at CR "
                                          u"LF; reads back the lines as they now are. Empty text "
                                          u"raises xcZKERR_INI_NOFILE.")
                                    .Get("SourceString", &clsZKIniFile::SourceString)
                                    .Method("GetData", &clsZKIniFile::GetData,
                                            {"KeyName", "ValueBuf", Opt("SectionName", String())})
                                    .Help(u"Looks up KeyName in SectionName: True with its value "
                                          u"in ValueBuf, False when absent; xcZKERR_INI_FILELOAD "
                                          u"when the text cannot be loaded.")
                                    .Method("PutData", &clsZKIniFile::PutData,
                                            {"KeyName", "DataValue", Opt("SectionName", String())})
                                    .Help(u"Stores DataValue as the value of the existing key "
                                          u"KeyName in SectionName, rewriting that line and the "
                                          u"file; True when stored.")
                                    .Build();
  return info;
}

}  // namespace tsruntime
