// clsZKCDL: the desktop's standard dialogs without a form (colour, font, open file, save
// file, folder, help).
//
//   auto cdl = tsruntime::New<tsruntime::clsZKCDL>();
//   cdl->LetFileFilter(u"Text (*.txt)|*.txt");  // stored as u"Text (*.txt)\0*.txt\0"
//   cdl->ShowOpenFile();
//   if (cdl->APIReturn() == 1) Open(cdl->FileFullName());
//
// The host sets properties, calls one `Show...` operation and reads the results back from
// the same properties. Every property is a plain field: zero, False or empty at creation,
// read back as stored. `APIReturn` is 1 when the user confirmed.
//
// Cancelling reports an error only when `CancelError` is True, and the dialogs report it
// two ways that hosts tell apart:
//   - file and font dialogs: number 2001, no source, no description;
//   - colour dialog: number 0x8004037E (-2147220610) with "Cancel Pressed", source
//     "ZKRuntimeLib.clsZKCDL.ShowColor".
//
// The class lives in the user-interface module (libtsruntime-ui.so): late-bound hosts get
// it loaded with the class, C++ hosts link `tsruntime::ui`. The dialogs are Qt's, modal;
// the properties work without a display. When no dialog can be seen (no display),
// `APIReturn` is 0, the file dialogs set `ExtendedError` to 2, and nothing is raised. The
// mapping onto Qt's dialogs (flags, font, filters, help) is in docs/ui.md.
#pragma once

#include <cstdint>
#include <vector>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKString.h"

namespace tsruntime {

class clsZKCDL : public Object {
 public:
  clsZKCDL();
  ~clsZKCDL() override;
  TSRUNTIME_CLASS_INFO;

  // --- Results ----------------------------------------------------------------------

  // The last dialog's result: 1 confirmed, 0 cancelled or failed. Set by every `Show...`
  // except `ShowFolder`, which only ever sets it to 1 (a cancelled folder dialog leaves
  // the previous value).
  int32_t APIReturn() const { return api_return_; }
  // Kept for the host; never set: always 0.
  int16_t Action() const { return action_; }
  // Why a file dialog failed when it was not cancelled: 2 (no dialog could be shown),
  // 0x3003 (the chosen name is longer than `FileMaxSize`). 0 otherwise; reset by each
  // file dialog.
  int32_t ExtendedError() const { return extended_error_; }

  // --- Shared settings --------------------------------------------------------------

  // When True, a cancelled colour, font or file dialog raises (see above).
  bool CancelError() const { return cancel_error_; }
  void LetCancelError(bool value) { cancel_error_ = value; }
  // The platform flags, passed to the colour and file dialogs (mapping in docs/ui.md).
  int32_t flags() const { return flags_; }
  void Letflags(int32_t value) { flags_ = value; }
  // The owner's window handle: a widget's native window id; 0 or an unknown id shows the
  // dialog without an owner.
  int32_t hwndOwner() const { return hwnd_owner_; }
  void LethwndOwner(int32_t value) { hwnd_owner_ = value; }
  int32_t Max() const { return max_; }
  void LetMax(int32_t value) { max_ = value; }
  int32_t Min() const { return min_; }
  void LetMin(int32_t value) { min_ = value; }

  // --- Colour -----------------------------------------------------------------------

  // The initial and chosen colour as an RGB value (red in the low byte).
  int32_t Color() const { return color_; }
  void LetColor(int32_t value) { color_ = value; }
  // The custom colours (sixteen, or more after a longer let) in decimal, joined by NUL:
  // a new object gives sixteen "0". The let splits at each NUL and reads piece k with the
  // host's `Val` into custom colour k, growing the list as needed and keeping the entries
  // past the last piece; a value outside 32 bits is overflow (6).
  //   LetColorsCustom(u"255") -> ColorsCustom() == u"255\0" u"0\0" ... u"0" (sixteen)
  String ColorsCustom() const;
  void LetColorsCustom(const String& value);

  // Cuts the custom colours to sixteen and turns each 0 into white (16777215), for good:
  // the first step of `ShowColor`, done before any dialog shows.
  void PrepareCustomColors();

  // --- Files ------------------------------------------------------------------------

  String FileDialogTitle() const { return file_dialog_title_; }
  void LetFileDialogTitle(const String& value) { file_dialog_title_ = value; }
  // The chosen file's name without its folder.
  String FileName() const { return file_name_; }
  void LetFileName(const String& value) { file_name_ = value; }
  // The file dialogs' initial folder; afterwards the chosen file's folder: `FileFullName`
  // up to its last "/", separator left out ("" for "/a.txt" and for "a.txt").
  String FilePath() const { return file_path_; }
  void LetFilePath(const String& value) { file_path_ = value; }
  // The proposed and then the chosen full name.
  String FileFullName() const { return file_full_name_; }
  void LetFileFullName(const String& value) { file_full_name_ = value; }
  // Descriptions and patterns alternating, "|" between them. Stored with every "|" made a
  // NUL and one NUL appended; read back in that stored form.
  //   LetFileFilter(u"Text (*.txt)|*.txt") -> FileFilter() == u"Text (*.txt)\0*.txt\0"
  String FileFilter() const { return file_filter_; }
  void LetFileFilter(const String& value);
  // The selected filter, from 1; the dialog writes back the one the user left selected.
  int16_t FileFilterIndex() const { return file_filter_index_; }
  void LetFileFilterIndex(int16_t value) { file_filter_index_ = value; }
  // Appended, after a dot, to a chosen name that has no extension.
  String FileDefaultExt() const { return file_default_ext_; }
  void LetFileDefaultExt(const String& value) { file_default_ext_ = value; }
  // The longest name the file dialogs accept, in characters; read back as stored, and
  // below 1 it means 255.
  int32_t FileMaxSize() const { return file_max_size_; }
  void LetFileMaxSize(int32_t value) { file_max_size_ = value; }

  // --- Folder -----------------------------------------------------------------------

  // Shown as the folder dialog's title.
  String FolderPrompt() const { return folder_prompt_; }
  void LetFolderPrompt(const String& value) { folder_prompt_ = value; }
  // The chosen folder, trailing "/" trimmed (the root "/" gives ""); cleared when the
  // folder dialog is cancelled. The folder dialog starts in it when it exists.
  String FolderPath() const { return folder_path_; }
  void LetFolderPath(const String& value) { folder_path_ = value; }

  // --- Font -------------------------------------------------------------------------

  bool FontBold() const { return font_bold_; }
  void LetFontBold(bool value) { font_bold_ = value; }
  bool FontItalic() const { return font_italic_; }
  void LetFontItalic(bool value) { font_italic_ = value; }
  bool FontStrikethru() const { return font_strikethru_; }
  void LetFontStrikethru(bool value) { font_strikethru_ = value; }
  bool FontUnderline() const { return font_underline_; }
  void LetFontUnderline(bool value) { font_underline_ = value; }
  // Kept through the font dialog, which offers no colour.
  int32_t FontColor() const { return font_color_; }
  void LetFontColor(int32_t value) { font_color_ = value; }
  String FontName() const { return font_name_; }
  void LetFontName(const String& value) { font_name_ = value; }
  // In points; 0 leaves the dialog at the desktop's default size.
  int32_t FontSize() const { return font_size_; }
  void LetFontSize(int32_t value) { font_size_ = value; }
  // Kept for the host; there are no printer fonts.
  int16_t FontPrinterHdc() const { return font_printer_hdc_; }
  void LetFontPrinterHdc(int16_t value) { font_printer_hdc_ = value; }

  // --- Help -------------------------------------------------------------------------

  int32_t HelpCommand() const { return help_command_; }
  void LetHelpCommand(int32_t value) { help_command_ = value; }
  String HelpContext() const { return help_context_; }
  void LetHelpContext(const String& value) { help_context_ = value; }
  String HelpFileFullName() const { return help_file_full_name_; }
  void LetHelpFileFullName(const String& value) { help_file_full_name_ = value; }
  String HelpKey() const { return help_key_; }
  void LetHelpKey(const String& value) { help_key_ = value; }

  // --- Kept for the host ------------------------------------------------------------

  int32_t PrintFromPage() const { return print_from_page_; }
  void LetPrintFromPage(int32_t value) { print_from_page_ = value; }
  int32_t PrintToPage() const { return print_to_page_; }
  void LetPrintToPage(int32_t value) { print_to_page_ = value; }
  int32_t PrintCopies() const { return print_copies_; }
  void LetPrintCopies(int32_t value) { print_copies_ = value; }
  Ref<::tsruntime::Object> Object() const { return object_; }
  void SetObject(Ref<::tsruntime::Object> value) { object_ = std::move(value); }

  // --- Dialogs ----------------------------------------------------------------------

  // The colour dialog: custom colours prepared (`PrepareCustomColors`), the initial colour
  // `Color` when `flags` has 1 (else black). Confirmed: `Color` and the custom colours
  // take the dialog's. Cancelled with `CancelError`: 0x8004037E "Cancel Pressed".
  void ShowColor();
  // The font dialog from the font properties; confirmed: the properties take the chosen
  // font. Cancelled with `CancelError`: 2001.
  void ShowFont();
  // The open and save dialogs, from `FileFullName`, `FilePath`, `FileFilter`,
  // `FileFilterIndex`, `FileDialogTitle`, `FileDefaultExt`, `flags`. Confirmed:
  // `FileFullName`, `FileName`, `FilePath`, `FileFilterIndex` take the choice.
  // `APIReturn` and `ExtendedError` are reset first. Cancelled with `CancelError`: 2001.
  void ShowOpenFile();
  void ShowSaveFile();
  // The folder dialog (see `FolderPath`); `APIReturn` becomes 1 when a folder is chosen.
  void ShowFolder();
  // Opens `HelpFileFullName` with the desktop's handler; `APIReturn` 1 when it did. The
  // command 2 (quit) opens nothing and returns 1.
  void ShowHelp();

  // Implementation details only, past this point.
  struct FileRequest;
  enum class FileKind { kOpen, kSave };

 private:
  void ShowFile(FileKind kind);

  int32_t api_return_ = 0;
  int16_t action_ = 0;
  bool cancel_error_ = false;
  int32_t extended_error_ = 0;
  int32_t flags_ = 0;
  int32_t hwnd_owner_ = 0;
  int32_t max_ = 0;
  int32_t min_ = 0;
  int32_t color_ = 0;
  std::vector<int32_t> colors_custom_;
  String file_dialog_title_;
  String file_name_;
  String file_path_;
  String file_full_name_;
  String file_filter_;
  int16_t file_filter_index_ = 0;
  String file_default_ext_;
  int32_t file_max_size_ = 0;
  String folder_prompt_;
  String folder_path_;
  bool font_bold_ = false;
  bool font_italic_ = false;
  bool font_strikethru_ = false;
  bool font_underline_ = false;
  int32_t font_color_ = 0;
  String font_name_;
  int32_t font_size_ = 0;
  int16_t font_printer_hdc_ = 0;
  int32_t help_command_ = 0;
  String help_context_;
  String help_file_full_name_;
  String help_key_;
  int32_t print_from_page_ = 0;
  int32_t print_to_page_ = 0;
  int32_t print_copies_ = 0;
  Ref<::tsruntime::Object> object_;
  Ref<clsZKString> strings_;  // cuts the dialogs' results, as every object's companion
};

}  // namespace tsruntime
