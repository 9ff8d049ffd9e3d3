// clsZKCDL's fields, their conversions and its type information. The dialogs themselves
// are in cdl_show.cpp.
#include "tsruntime/clsZKCDL.h"

#include <algorithm>

#include "tsruntime/automation/val.h"

namespace tsruntime {
namespace {

constexpr char16_t kNul = u'\0';
constexpr size_t kCustomColors = 16;
constexpr int32_t kWhite = 16777215;

}  // namespace

clsZKCDL::clsZKCDL() : colors_custom_(kCustomColors, 0), strings_(New<clsZKString>()) {}
clsZKCDL::~clsZKCDL() = default;

String clsZKCDL::ColorsCustom() const {
  String text;
  for (size_t i = 0; i < colors_custom_.size(); ++i) {
    if (i > 0) text += kNul;
    text += FromAscii(std::to_string(colors_custom_[i]));
  }
  return text;
}

void clsZKCDL::LetColorsCustom(const String& value) {
  if (value.empty()) return;  // splitting "" gives no pieces
  size_t k = 0;
  size_t start = 0;
  for (;;) {
    const size_t end = std::min(value.find(kNul, start), value.size());
    const int32_t colour = ToLong(Variant(Val(StringView(value).substr(start, end - start))));
    if (k >= colors_custom_.size()) colors_custom_.resize(k + 1, 0);
    colors_custom_[k++] = colour;
    if (end == value.size()) break;
    start = end + 1;
  }
}

void clsZKCDL::PrepareCustomColors() {
  colors_custom_.resize(kCustomColors, 0);
  std::replace(colors_custom_.begin(), colors_custom_.end(), 0, kWhite);
}

void clsZKCDL::LetFileFilter(const String& value) {
  file_filter_ = value;
  std::replace(file_filter_.begin(), file_filter_.end(), u'|', kNul);
  file_filter_ += kNul;
}

TSRUNTIME_DEFINE_CLASS(clsZKCDL) {
  static const ClassInfo info = [] {
    using C = clsZKCDL;
    const std::vector<Param> rhs{"RHS"};
    return ClassBuilder<C>("clsZKCDL")
        .Help(u"The desktop's standard dialogs without a form: colour, font, open and save file, "
              u"folder and help, set up and read back through properties.")
        .Get("APIReturn", &C::APIReturn)
        .Help(u"The last dialog's result: 1 confirmed, 0 cancelled or failed (a cancelled folder "
              u"dialog leaves it as it was).")
        .Get("Action", &C::Action)
        .Help(u"Kept for the host; always 0.")
        .Get("CancelError", &C::CancelError)
        .Help(u"When True, cancelling the colour, font or file dialog raises an error (2001, or "
              u"-2147220610 for colour).")
        .Let("CancelError", &C::LetCancelError, rhs)
        .Get("ExtendedError", &C::ExtendedError)
        .Help(u"Why a file dialog failed when not cancelled: 2 no dialog could be shown, 0x3003 "
              u"the name is longer than FileMaxSize; else 0.")
        .Get("flags", &C::flags)
        .Help(u"The platform flags passed to the colour and file dialogs.")
        .Let("flags", &C::Letflags, rhs)
        .Get("hwndOwner", &C::hwndOwner)
        .Help(u"The owner window's handle; 0 or an unknown one shows the dialog without an owner.")
        .Let("hwndOwner", &C::LethwndOwner, rhs)
        .Get("Max", &C::Max)
        .Help(u"Kept for the host; stored as given.")
        .Let("Max", &C::LetMax, rhs)
        .Get("Min", &C::Min)
        .Help(u"Kept for the host; stored as given.")
        .Let("Min", &C::LetMin, rhs)
        .Get("Color", &C::Color)
        .Help(u"The initial and the chosen colour as an RGB value, red in the low byte.")
        .Let("Color", &C::LetColor, rhs)
        .Get("ColorsCustom", &C::ColorsCustom)
        .Help(u"The custom colours in decimal joined by the zero character; assigning reads each "
              u"piece into its colour.")
        .Let("ColorsCustom", &C::LetColorsCustom, rhs)
        .Get("FileDialogTitle", &C::FileDialogTitle)
        .Help(u"The title of the open and save dialogs.")
        .Let("FileDialogTitle", &C::LetFileDialogTitle, rhs)
        .Get("FileName", &C::FileName)
        .Help(u"The chosen file's name without its folder.")
        .Let("FileName", &C::LetFileName, rhs)
        .Get("FilePath", &C::FilePath)
        .Help(u"The file dialogs' initial folder; afterwards the chosen file's folder.")
        .Let("FilePath", &C::LetFilePath, rhs)
        .Get("FileFullName", &C::FileFullName)
        .Help(u"The proposed and then the chosen full file name.")
        .Let("FileFullName", &C::LetFileFullName, rhs)
        .Get("FileFilter", &C::FileFilter)
        .Help(u"Descriptions and patterns alternating with \"|\" between them; read back with "
              u"each \"|\" a zero character and one appended.")
        .Let("FileFilter", &C::LetFileFilter, rhs)
        .Get("FileFilterIndex", &C::FileFilterIndex)
        .Help(u"The selected filter, from 1; the file dialog writes back the one left selected.")
        .Let("FileFilterIndex", &C::LetFileFilterIndex, rhs)
        .Get("FileDefaultExt", &C::FileDefaultExt)
        .Help(u"Appended after a dot to a chosen file name that has no extension.")
        .Let("FileDefaultExt", &C::LetFileDefaultExt, rhs)
        .Get("FileMaxSize", &C::FileMaxSize)
        .Help(u"The longest file name the dialogs accept, in characters; below 1 it means 255.")
        .Let("FileMaxSize", &C::LetFileMaxSize, rhs)
        .Get("FolderPrompt", &C::FolderPrompt)
        .Help(u"The folder dialog's title.")
        .Let("FolderPrompt", &C::LetFolderPrompt, rhs)
        .Get("FolderPath", &C::FolderPath)
        .Help(u"The folder dialog's start and then the chosen folder, trailing \"/\" trimmed; "
              u"cleared when cancelled.")
        .Let("FolderPath", &C::LetFolderPath, rhs)
        .Get("FontBold", &C::FontBold)
        .Help(u"Whether the font is bold; set by the font dialog.")
        .Let("FontBold", &C::LetFontBold, rhs)
        .Get("FontItalic", &C::FontItalic)
        .Help(u"Whether the font is italic; set by the font dialog.")
        .Let("FontItalic", &C::LetFontItalic, rhs)
        .Get("FontStrikethru", &C::FontStrikethru)
        .Help(u"Whether the font is struck through; set by the font dialog.")
        .Let("FontStrikethru", &C::LetFontStrikethru, rhs)
        .Get("FontUnderline", &C::FontUnderline)
        .Help(u"Whether the font is underlined; set by the font dialog.")
        .Let("FontUnderline", &C::LetFontUnderline, rhs)
        .Get("FontColor", &C::FontColor)
        .Help(u"The font colour, kept through the font dialog, which offers none.")
        .Let("FontColor", &C::LetFontColor, rhs)
        .Get("FontName", &C::FontName)
        .Help(u"The font's family name; set by the font dialog.")
        .Let("FontName", &C::LetFontName, rhs)
        .Get("FontSize", &C::FontSize)
        .Help(u"The font size in points; 0 leaves the dialog at the desktop's default size.")
        .Let("FontSize", &C::LetFontSize, rhs)
        .Get("FontPrinterHdc", &C::FontPrinterHdc)
        .Help(u"Kept for the host; there are no printer fonts.")
        .Let("FontPrinterHdc", &C::LetFontPrinterHdc, rhs)
        .Get("HelpCommand", &C::HelpCommand)
        .Help(u"The help command of ShowHelp; 2 (quit) opens nothing.")
        .Let("HelpCommand", &C::LetHelpCommand, rhs)
        .Get("HelpContext", &C::HelpContext)
        .Help(u"The help context of ShowHelp; kept for the host.")
        .Let("HelpContext", &C::LetHelpContext, rhs)
        .Get("HelpFileFullName", &C::HelpFileFullName)
        .Help(u"The help file ShowHelp opens.")
        .Let("HelpFileFullName", &C::LetHelpFileFullName, rhs)
        .Get("HelpKey", &C::HelpKey)
        .Help(u"The help keyword of ShowHelp; kept for the host.")
        .Let("HelpKey", &C::LetHelpKey, rhs)
        .Get("PrintFromPage", &C::PrintFromPage)
        .Help(u"Kept for the host; stored as given.")
        .Let("PrintFromPage", &C::LetPrintFromPage, rhs)
        .Get("PrintToPage", &C::PrintToPage)
        .Help(u"Kept for the host; stored as given.")
        .Let("PrintToPage", &C::LetPrintToPage, rhs)
        .Get("PrintCopies", &C::PrintCopies)
        .Help(u"Kept for the host; stored as given.")
        .Let("PrintCopies", &C::LetPrintCopies, rhs)
        .Get("Object", &C::Object)
        .Help(u"Kept for the host: an object reference stored as given.")
        .Set("Object", &C::SetObject, rhs)
        .Method("ShowColor", &C::ShowColor)
        .Help(u"Shows the colour dialog from Color and ColorsCustom; confirmed, both take the "
              u"choice.")
        .Method("ShowFont", &C::ShowFont)
        .Help(u"Shows the font dialog from the font properties; confirmed, they take the chosen "
              u"font.")
        .Method("ShowOpenFile", &C::ShowOpenFile)
        .Help(u"Shows the open file dialog from the file properties; confirmed, FileFullName, "
              u"FileName, FilePath and FileFilterIndex take the choice.")
        .Method("ShowSaveFile", &C::ShowSaveFile)
        .Help(u"Shows the save file dialog from the file properties; confirmed, FileFullName, "
              u"FileName, FilePath and FileFilterIndex take the choice.")
        .Method("ShowFolder", &C::ShowFolder)
        .Help(u"Shows the folder dialog titled FolderPrompt; the chosen folder goes to FolderPath "
              u"and APIReturn becomes 1.")
        .Method("ShowHelp", &C::ShowHelp)
        .Help(u"Opens HelpFileFullName with the desktop's handler; APIReturn is 1 when it did.")
        .Build();
  }();
  return info;
}

}  // namespace tsruntime
