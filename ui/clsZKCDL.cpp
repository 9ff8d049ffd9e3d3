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
        .Get("APIReturn", &C::APIReturn)
        .Get("Action", &C::Action)
        .Get("CancelError", &C::CancelError)
        .Let("CancelError", &C::LetCancelError, rhs)
        .Get("ExtendedError", &C::ExtendedError)
        .Get("flags", &C::flags)
        .Let("flags", &C::Letflags, rhs)
        .Get("hwndOwner", &C::hwndOwner)
        .Let("hwndOwner", &C::LethwndOwner, rhs)
        .Get("Max", &C::Max)
        .Let("Max", &C::LetMax, rhs)
        .Get("Min", &C::Min)
        .Let("Min", &C::LetMin, rhs)
        .Get("Color", &C::Color)
        .Let("Color", &C::LetColor, rhs)
        .Get("ColorsCustom", &C::ColorsCustom)
        .Let("ColorsCustom", &C::LetColorsCustom, rhs)
        .Get("FileDialogTitle", &C::FileDialogTitle)
        .Let("FileDialogTitle", &C::LetFileDialogTitle, rhs)
        .Get("FileName", &C::FileName)
        .Let("FileName", &C::LetFileName, rhs)
        .Get("FilePath", &C::FilePath)
        .Let("FilePath", &C::LetFilePath, rhs)
        .Get("FileFullName", &C::FileFullName)
        .Let("FileFullName", &C::LetFileFullName, rhs)
        .Get("FileFilter", &C::FileFilter)
        .Let("FileFilter", &C::LetFileFilter, rhs)
        .Get("FileFilterIndex", &C::FileFilterIndex)
        .Let("FileFilterIndex", &C::LetFileFilterIndex, rhs)
        .Get("FileDefaultExt", &C::FileDefaultExt)
        .Let("FileDefaultExt", &C::LetFileDefaultExt, rhs)
        .Get("FileMaxSize", &C::FileMaxSize)
        .Let("FileMaxSize", &C::LetFileMaxSize, rhs)
        .Get("FolderPrompt", &C::FolderPrompt)
        .Let("FolderPrompt", &C::LetFolderPrompt, rhs)
        .Get("FolderPath", &C::FolderPath)
        .Let("FolderPath", &C::LetFolderPath, rhs)
        .Get("FontBold", &C::FontBold)
        .Let("FontBold", &C::LetFontBold, rhs)
        .Get("FontItalic", &C::FontItalic)
        .Let("FontItalic", &C::LetFontItalic, rhs)
        .Get("FontStrikethru", &C::FontStrikethru)
        .Let("FontStrikethru", &C::LetFontStrikethru, rhs)
        .Get("FontUnderline", &C::FontUnderline)
        .Let("FontUnderline", &C::LetFontUnderline, rhs)
        .Get("FontColor", &C::FontColor)
        .Let("FontColor", &C::LetFontColor, rhs)
        .Get("FontName", &C::FontName)
        .Let("FontName", &C::LetFontName, rhs)
        .Get("FontSize", &C::FontSize)
        .Let("FontSize", &C::LetFontSize, rhs)
        .Get("FontPrinterHdc", &C::FontPrinterHdc)
        .Let("FontPrinterHdc", &C::LetFontPrinterHdc, rhs)
        .Get("HelpCommand", &C::HelpCommand)
        .Let("HelpCommand", &C::LetHelpCommand, rhs)
        .Get("HelpContext", &C::HelpContext)
        .Let("HelpContext", &C::LetHelpContext, rhs)
        .Get("HelpFileFullName", &C::HelpFileFullName)
        .Let("HelpFileFullName", &C::LetHelpFileFullName, rhs)
        .Get("HelpKey", &C::HelpKey)
        .Let("HelpKey", &C::LetHelpKey, rhs)
        .Get("PrintFromPage", &C::PrintFromPage)
        .Let("PrintFromPage", &C::LetPrintFromPage, rhs)
        .Get("PrintToPage", &C::PrintToPage)
        .Let("PrintToPage", &C::LetPrintToPage, rhs)
        .Get("PrintCopies", &C::PrintCopies)
        .Let("PrintCopies", &C::LetPrintCopies, rhs)
        .Get("Object", &C::Object)
        .Set("Object", &C::SetObject, rhs)
        .Method("ShowColor", &C::ShowColor)
        .Method("ShowFont", &C::ShowFont)
        .Method("ShowOpenFile", &C::ShowOpenFile)
        .Method("ShowSaveFile", &C::ShowSaveFile)
        .Method("ShowFolder", &C::ShowFolder)
        .Method("ShowHelp", &C::ShowHelp)
        .Build();
  }();
  return info;
}

}  // namespace tsruntime
