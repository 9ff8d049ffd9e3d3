// clsZKCDL's dialogs: what each takes from the properties and writes back. The dialogs
// are shown by qt_dialogs.cpp.
#include "dialog_requests.h"
#include "tsruntime/clsZKCDL.h"
#include "tsruntime/errors.h"

namespace tsruntime {

using namespace ui_detail;

namespace {

constexpr int32_t kDefaultNameCapacity = 255;
// The platform's extended errors that have a cause here.
constexpr int32_t kDialogCouldNotStart = 0x0002;
constexpr int32_t kNameBufferTooSmall = 0x3003;
// Hosts tell the colour dialog's cancellation from the others by this number.
constexpr int32_t kColorCancelled = static_cast<int32_t>(0x8004037E);
constexpr int32_t kHelpQuit = 2;

// File and font dialogs report a cancellation as a bare number.
[[noreturn]] void RaiseCancelled() { throw Error(2001, String(), String()); }

}  // namespace

void clsZKCDL::ShowOpenFile() { ShowFile(FileKind::kOpen); }
void clsZKCDL::ShowSaveFile() { ShowFile(FileKind::kSave); }

void clsZKCDL::ShowFile(FileKind kind) {
  api_return_ = 0;
  extended_error_ = 0;
  const int32_t capacity = file_max_size_ < 1 ? kDefaultNameCapacity : file_max_size_;

  FileDialogRequest request;
  request.save = kind == FileKind::kSave;
  request.owner = hwnd_owner_;
  request.filters = ParseFileFilter(file_filter_);
  request.filter_index = file_filter_index_;
  request.initial_name = file_full_name_;
  request.initial_folder = file_path_;
  request.title = file_dialog_title_;
  request.flags = flags_;
  request.default_ext = file_default_ext_;
  const FileDialogOutcome outcome = RunFileDialog(request);

  switch (outcome.end) {
    case DialogEnd::kConfirmed:
      if (outcome.chosen.size() > static_cast<size_t>(capacity)) {
        extended_error_ = kNameBufferTooSmall;
        return;
      }
      api_return_ = 1;
      file_full_name_ = outcome.chosen;
      file_name_ = strings_->GetRight(outcome.chosen, u"/", false, false, true);
      file_path_ = strings_->GetLeft(file_full_name_, u"/", true);
      file_filter_index_ = static_cast<int16_t>(outcome.filter_index);
      return;
    case DialogEnd::kCancelled:
      if (cancel_error_) RaiseCancelled();
      return;
    case DialogEnd::kUnavailable:
      extended_error_ = kDialogCouldNotStart;
      return;
  }
}

void clsZKCDL::ShowColor() {
  PrepareCustomColors();
  const ColorDialogOutcome outcome =
      RunColorDialog({hwnd_owner_, color_, colors_custom_, flags_});
  api_return_ = outcome.end == DialogEnd::kConfirmed ? 1 : 0;
  if (outcome.end == DialogEnd::kCancelled && cancel_error_)
    RaiseOwn(kColorCancelled, "clsZKCDL", "ShowColor", u"Cancel Pressed");
  if (outcome.end != DialogEnd::kConfirmed) return;
  colors_custom_ = outcome.custom;
  color_ = outcome.chosen;
}

void clsZKCDL::ShowFont() {
  const FontChoice initial{font_name_,       font_size_,      font_bold_,
                           font_italic_,     font_strikethru_, font_underline_};
  const FontDialogOutcome outcome = RunFontDialog(hwnd_owner_, initial);
  api_return_ = outcome.end == DialogEnd::kConfirmed ? 1 : 0;
  if (outcome.end == DialogEnd::kCancelled && cancel_error_) RaiseCancelled();
  if (outcome.end != DialogEnd::kConfirmed) return;
  font_name_ = outcome.chosen.name;
  font_size_ = outcome.chosen.size;
  font_bold_ = outcome.chosen.bold;
  font_italic_ = outcome.chosen.italic;
  font_strikethru_ = outcome.chosen.strikeout;
  font_underline_ = outcome.chosen.underline;
}

void clsZKCDL::ShowFolder() {
  const FolderDialogOutcome outcome = RunFolderDialog(hwnd_owner_, folder_prompt_, folder_path_);
  if (outcome.end != DialogEnd::kConfirmed) {
    folder_path_.clear();
    return;
  }
  if (outcome.chosen.empty()) return;
  folder_path_ = strings_->Trim(outcome.chosen, u"/", xcZK_TRIM_RIGHT);
  api_return_ = 1;
}

void clsZKCDL::ShowHelp() {
  if (help_command_ == kHelpQuit) {
    api_return_ = 1;  // there is no help window to close
    return;
  }
  api_return_ = !help_file_full_name_.empty() && OpenWithDesktop(help_file_full_name_) ? 1 : 0;
}

}  // namespace tsruntime
