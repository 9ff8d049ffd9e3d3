// The desktop's dialogs on Qt's standard ones. Each dialog is modal over the owner named
// by its window id, or over nothing; the property rules stay in cdl_show.cpp.
#include <QApplication>
#include <QColorDialog>
#include <QComboBox>
#include <QDesktopServices>
#include <QFileDialog>
#include <QFileInfo>
#include <QFontDatabase>
#include <QFontDialog>
#include <QFontInfo>
#include <QGridLayout>
#include <QLabel>
#include <QLocale>
#include <QUrl>
#include <QWidget>
#include <tuple>

#include "dialog_requests.h"
#include "gui_session.h"
#include "qt_text.h"

namespace tsruntime::ui_detail {
namespace {

// The platform's file-dialog flags that have a meaning here.
constexpr int32_t kOverwritePrompt = 0x2;
constexpr int32_t kFileMustExist = 0x1000;
constexpr int32_t kNoDereferenceLinks = 0x100000;
// The colour dialog starts from `Color` only when asked to.
constexpr int32_t kColorInitFromRgb = 0x1;

QWidget* Owner(int32_t window_id) {
  if (window_id == 0) return nullptr;
  return QWidget::find(static_cast<WId>(static_cast<uint32_t>(window_id)));
}

QColor FromRgbValue(int32_t rgb) {
  return QColor(rgb & 0xFF, (rgb >> 8) & 0xFF, (rgb >> 16) & 0xFF);
}
int32_t ToRgbValue(const QColor& c) { return c.red() | (c.green() << 8) | (c.blue() << 16); }

// Qt reads the patterns from the last parentheses of a filter and, with the details
// hidden, shows the rest: the host's description appears exactly as it wrote it.
QString QtNameFilter(const FileFilterEntry& entry) {
  QString patterns = ToQString(entry.patterns);
  patterns.replace(u';', u' ');
  return ToQString(entry.description) + QStringLiteral(" (") + patterns + u')';
}

// The writing system whose letters the font dialog's sample shows the user: the one of
// the user's language, Latin when nothing more fitting is known.
QFontDatabase::WritingSystem UsersWritingSystem() {
  switch (QLocale().script()) {
    case QLocale::CyrillicScript: return QFontDatabase::Cyrillic;
    case QLocale::GreekScript: return QFontDatabase::Greek;
    case QLocale::HebrewScript: return QFontDatabase::Hebrew;
    case QLocale::ArabicScript: return QFontDatabase::Arabic;
    default: return QFontDatabase::Any;
  }
}

// Selects a writing system in the font dialog's list of them, as a user picking it would:
// the sample shows its letters, and the families are those that can write it.
void SelectWritingSystem(QFontDialog& dialog, QFontDatabase::WritingSystem system) {
  if (system == QFontDatabase::Any) return;
  auto* systems = dialog.findChild<QComboBox*>();
  const int index = systems ? systems->findText(QFontDatabase::writingSystemName(system)) : -1;
  if (index < 0) return;
  systems->setCurrentIndex(index);
  emit systems->activated(index);
}

// The family's own name of the face for this weight and slant ("Bold Italic"), the
// plainest of those that fit. The dialog finds the face by its style name, and without
// one it looks for a name of its own, which it translates and then finds in no family.
QString FaceStyleName(const QFont& font) {
  QString best;
  const QStringList styles = QFontDatabase::styles(font.family());
  for (const QString& style : styles) {
    if (QFontDatabase::bold(font.family(), style) != font.bold() ||
        QFontDatabase::italic(font.family(), style) != font.italic())
      continue;
    if (best.isEmpty() || style.size() < best.size()) best = style;
  }
  return best;
}

// Puts `prompt` above everything else in the dialog, wrapped over its whole width.
void ShowPromptAbove(QFileDialog& dialog, const QString& prompt) {
  auto* grid = qobject_cast<QGridLayout*>(dialog.layout());
  if (!grid) return;
  std::vector<std::tuple<QLayoutItem*, int, int, int, int>> items;
  while (grid->count() > 0) {
    int row = 0, column = 0, rows = 0, columns = 0;
    grid->getItemPosition(0, &row, &column, &rows, &columns);
    items.emplace_back(grid->takeAt(0), row, column, rows, columns);
  }
  for (auto& [item, row, column, rows, columns] : items) grid->addItem(item, row + 1, column, rows, columns);
  auto* label = new QLabel(prompt, &dialog);
  label->setObjectName(QStringLiteral("folderPrompt"));
  label->setTextFormat(Qt::PlainText);
  label->setWordWrap(true);
  grid->addWidget(label, 0, 0, 1, grid->columnCount());
}

}  // namespace

FileDialogOutcome RunFileDialog(const FileDialogRequest& request) {
  FileDialogOutcome outcome;
  outcome.filter_index = request.filter_index;
  if (!EnsureGuiSession()) {
    outcome.end = DialogEnd::kUnavailable;
    return outcome;
  }
  QFileDialog dialog(Owner(request.owner));
  if (!request.title.empty()) dialog.setWindowTitle(ToQString(request.title));
  dialog.setAcceptMode(request.save ? QFileDialog::AcceptSave : QFileDialog::AcceptOpen);
  dialog.setFileMode(!request.save && (request.flags & kFileMustExist) ? QFileDialog::ExistingFile
                                                                       : QFileDialog::AnyFile);
  dialog.setOption(QFileDialog::DontConfirmOverwrite, !(request.flags & kOverwritePrompt));
  dialog.setOption(QFileDialog::DontResolveSymlinks, request.flags & kNoDereferenceLinks);
  dialog.setOption(QFileDialog::HideNameFilterDetails, true);

  QStringList filters;
  for (const FileFilterEntry& entry : request.filters) filters << QtNameFilter(entry);
  if (!filters.isEmpty()) {
    dialog.setNameFilters(filters);
    const int index = request.filter_index >= 1 && request.filter_index <= filters.size()
                          ? request.filter_index - 1
                          : 0;
    dialog.selectNameFilter(filters[index]);
  }
  QString suffix = ToQString(request.default_ext);
  while (suffix.startsWith(u'.')) suffix.remove(0, 1);
  dialog.setDefaultSuffix(suffix);
  if (!request.initial_folder.empty()) dialog.setDirectory(ToQString(request.initial_folder));
  if (!request.initial_name.empty()) dialog.selectFile(ToQString(request.initial_name));

  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return outcome;
  outcome.end = DialogEnd::kConfirmed;
  outcome.chosen = FromQString(dialog.selectedFiles().constFirst());
  if (!filters.isEmpty()) {
    // With the details hidden the dialog may answer with the description alone.
    const QString selected = dialog.selectedNameFilter();
    int index = 0;
    while (index < filters.size() && selected != filters[index] &&
           selected != ToQString(request.filters[index].description))
      ++index;
    outcome.filter_index = index < filters.size() ? index + 1 : 1;
  }
  return outcome;
}

ColorDialogOutcome RunColorDialog(const ColorDialogRequest& request) {
  ColorDialogOutcome outcome;
  if (!EnsureGuiSession()) {
    outcome.end = DialogEnd::kUnavailable;
    return outcome;
  }
  // Qt keeps the custom colours per application; each dialog brings its own.
  const int count = std::min<int>(QColorDialog::customCount(), request.custom.size());
  for (int i = 0; i < count; ++i) QColorDialog::setCustomColor(i, FromRgbValue(request.custom[i]));
  const QColor initial =
      request.flags & kColorInitFromRgb ? FromRgbValue(request.initial) : QColor(Qt::black);
  QColorDialog dialog(initial, Owner(request.owner));
  if (dialog.exec() != QDialog::Accepted) return outcome;
  outcome.end = DialogEnd::kConfirmed;
  outcome.chosen = ToRgbValue(dialog.selectedColor());
  outcome.custom = request.custom;
  for (int i = 0; i < count; ++i) outcome.custom[i] = ToRgbValue(QColorDialog::customColor(i));
  return outcome;
}

FontDialogOutcome RunFontDialog(int32_t owner, const FontChoice& initial) {
  FontDialogOutcome outcome;
  if (!EnsureGuiSession()) {
    outcome.end = DialogEnd::kUnavailable;
    return outcome;
  }
  QFont font = QApplication::font();
  if (!initial.name.empty()) font.setFamily(ToQString(initial.name));
  if (initial.size > 0) font.setPointSize(initial.size);
  font.setWeight(initial.bold ? QFont::Bold : QFont::Normal);
  font.setItalic(initial.italic);
  font.setStrikeOut(initial.strikeout);
  font.setUnderline(initial.underline);
  // A name that fontconfig stands in for ("Sans Serif", "MS Sans Serif") is shown as the
  // family it gives: the dialog lists only real ones.
  font.setFamily(QFontInfo(font).family());
  font.setStyleName(FaceStyleName(font));
  QFontDialog dialog(Owner(owner));
  SelectWritingSystem(dialog, UsersWritingSystem());
  dialog.setCurrentFont(font);
  if (dialog.exec() != QDialog::Accepted) return outcome;
  const QFont chosen = dialog.selectedFont();
  outcome.end = DialogEnd::kConfirmed;
  outcome.chosen.name = FromQString(chosen.family());
  outcome.chosen.size = chosen.pointSizeF() > 0 ? qRound(chosen.pointSizeF())
                                                : qRound(chosen.pixelSize() * 72.0 / 96.0);
  outcome.chosen.bold = chosen.weight() >= QFont::DemiBold;
  outcome.chosen.italic = chosen.italic();
  outcome.chosen.strikeout = chosen.strikeOut();
  outcome.chosen.underline = chosen.underline();
  return outcome;
}

FolderDialogOutcome RunFolderDialog(int32_t owner, const String& prompt, const String& start) {
  FolderDialogOutcome outcome;
  if (!EnsureGuiSession()) {
    outcome.end = DialogEnd::kUnavailable;
    return outcome;
  }
  QFileDialog dialog(Owner(owner));
  dialog.setFileMode(QFileDialog::Directory);
  dialog.setOption(QFileDialog::ShowDirsOnly, true);
  if (!prompt.empty()) {
    // A desktop's own folder chooser has no place for the prompt.
    dialog.setOption(QFileDialog::DontUseNativeDialog, true);
    ShowPromptAbove(dialog, ToQString(prompt));
  }
  if (!start.empty() && QFileInfo(ToQString(start)).isDir()) dialog.setDirectory(ToQString(start));
  if (dialog.exec() != QDialog::Accepted || dialog.selectedFiles().isEmpty()) return outcome;
  outcome.end = DialogEnd::kConfirmed;
  outcome.chosen = FromQString(dialog.selectedFiles().constFirst());
  return outcome;
}

bool OpenWithDesktop(const String& path) {
  const QString file = ToQString(path);
  if (!QFileInfo(file).isFile() || !EnsureGuiSession()) return false;
  return QDesktopServices::openUrl(QUrl::fromLocalFile(QFileInfo(file).absoluteFilePath()));
}

}  // namespace tsruntime::ui_detail
