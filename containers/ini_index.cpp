// clsZKIniFile: loading the text and building the sorted "section.key" index.
#include <new>

#include "../system/file_stamp.h"
#include "ini_lines.h"
#include "tsruntime/clsZKArray.h"
#include "tsruntime/clsZKFileSystem.h"
#include "tsruntime/clsZKIniFile.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {

using namespace ini_detail;

namespace {

const String kBlanks = u" \t";
const String kLineEnds = u"\r\n\t ";
const String kHeaderMarks = u"[] \t";

}  // namespace

bool clsZKIniFile::BuildIndex() {
  try {
    LoadStamp now;
    if (!from_string_) {
      const auto time = system_detail::FileModificationTime(full_name_);
      if (!time) return false;
      now = LoadStamp{0, true, time->seconds, time->nanoseconds};
    }
    if (now == stamp_) return true;
    // Stored before reading: a load that fails now is not tried again until the file
    // changes. Hosts poll GetData and rely on that.
    stamp_ = now;
    if (!from_string_) {
      String text;
      if (!fs_->StringRead(text, full_name_)) return false;
      text = str_->Replace(str_->Trim(text, kLineEnds, xcZK_TRIM_BOTH), String(kContinued),
                           String(kContinuedTurned));
      if (text.empty()) return false;
      lines_ = SplitAt(text, kLineBreak);
    }
    std::vector<String> entries;  // three per row: "section.key", value, line number
    String section;
    for (size_t i = 0; i < lines_.size(); ++i) IndexLine(i, section, entries);
    const int32_t rows = static_cast<int32_t>(entries.size() / 3);
    SafeArray index(VarType::kString, {Bounds{0, 2}, Bounds{0, rows > 0 ? rows - 1 : 0}});
    for (size_t k = 0; k < entries.size(); ++k) {
      index.elements()[k] = Variant(std::move(entries[k]));
    }
    if (rows > 0) arr_->SortBubble(index, Variant(int32_t{0}), false, vbBinaryCompare);
    index_ = std::move(index);
    return true;
  } catch (const Error&) {
    return false;
  } catch (const std::bad_alloc&) {
    return false;
  }
}

void clsZKIniFile::IndexLine(size_t line, String& section, std::vector<String>& entries) {
  String& raw = lines_[line];
  String logical;
  if (raw.find(kContinuedTurned) == String::npos) {
    logical = str_->Trim(raw, kBlanks, xcZK_TRIM_BOTH);
  } else {
    for (const String& piece : SplitAt(raw, kContinuedTurned)) {
      logical += str_->Trim(piece, kBlanks, xcZK_TRIM_LEFT);
    }
    logical = str_->Trim(logical, kBlanks, xcZK_TRIM_BOTH);
    raw = str_->Replace(raw, String(kContinuedTurned), String(kContinued));
  }
  if (logical.size() >= 2 && logical.front() == u'[' && logical.back() == u']') {
    section = str_->Trim(logical, kHeaderMarks, xcZK_TRIM_BOTH);
    return;
  }
  const String data =
      str_->Trim(str_->GetLeft(logical, sep_comment_, false, false, true), kBlanks, xcZK_TRIM_BOTH);
  // An empty separator is found at once in any text but the empty one.
  if (data.empty() || (!sep_data_.empty() && data.find(sep_data_) == String::npos)) return;
  entries.push_back(section + u"." +
                    str_->Trim(str_->GetLeft(data, sep_data_), kBlanks, xcZK_TRIM_BOTH));
  entries.push_back(str_->Trim(str_->GetRight(data, sep_data_, true), kBlanks, xcZK_TRIM_BOTH));
  entries.push_back(FromAscii(std::to_string(line)));
}

int32_t clsZKIniFile::FindRow(const String& KeyName, const String& SectionName) {
  // Before any index was built (the first load failed) there is nothing to find.
  if (!index_.isDimensioned()) return -1;
  int32_t row = 0;
  const bool found = arr_->FindInArray(index_, SectionName + u"." + KeyName, &row, false,
                                       vbBinaryCompare, Variant(int16_t{0}));
  return found ? row : -1;
}

String clsZKIniFile::Row(int32_t column, int32_t row) const {
  return index_.at(column, row).asString();
}

}  // namespace tsruntime
