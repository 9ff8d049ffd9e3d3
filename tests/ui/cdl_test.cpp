// clsZKCDL: its properties with their conversions, early and late bound; its dialogs,
// driven as a user would drive them (ModalScript), with what each is shown with and what
// confirming or cancelling leaves in the properties.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QColorDialog>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QUrl>
#include <filesystem>
#include <fstream>

#include "support/outcome.h"
#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKCDL.h"
#include "ui_support.h"

namespace tsruntime {
namespace {

namespace fs = std::filesystem;
using testing::ModalScript;
using testing::Outcome;
using testing::RaisedFields;
using testing::U8;

const String kNul(1, u'\0');
std::string Text(const QString& s) { return s.toStdString(); }
String Wide(const fs::path& p) { return FromUtf8(p.string()); }

// Custom colours as the get writes them: `first`, then zeros up to sixteen.
String Joined(std::vector<int32_t> values) {
  values.resize(std::max<size_t>(16, values.size()), 0);
  String text;
  for (size_t i = 0; i < values.size(); ++i) text += (i ? kNul : String()) + FromAscii(std::to_string(values[i]));
  return text;
}

TEST(CdlProperties, ANewObjectHoldsZerosFalseAndEmpty) {
  auto cdl = New<clsZKCDL>();
  EXPECT_EQ(std::to_string(cdl->APIReturn()) + std::to_string(cdl->ExtendedError()) + std::to_string(cdl->CancelError()) +
                std::to_string(cdl->FileMaxSize()) + std::to_string(cdl->FileFilterIndex()) + std::to_string(cdl->FontSize()) +
                U8(cdl->FileFilter()) + (cdl->Object() ? "object" : ""),
            "000000") << "FileMaxSize 0: 255 is applied by the dialogs, not stored";
  EXPECT_EQ(cdl->ColorsCustom(), Joined({})) << "sixteen zeros joined by NUL";
}

TEST(CdlProperties, FileFilterIsStoredInThePlatformForm) {
  const struct {
    const char* what;
    String given, stored;
  } rows[] = {
      {"each bar becomes NUL and one NUL ends it", u"Text (*.txt)|*.txt", u"Text (*.txt)" + kNul + u"*.txt" + kNul},
      {"two pairs", u"A|*.a|B|*.b;*.c", u"A" + kNul + u"*.a" + kNul + u"B" + kNul + u"*.b;*.c" + kNul},
      {"an empty filter is a lone NUL", u"", kNul},
      {"NULs already there are kept", u"A" + kNul + u"*.a", u"A" + kNul + u"*.a" + kNul},
      {"neighbouring bars give neighbouring NULs", u"a||b", u"a" + kNul + kNul + u"b" + kNul},
  };
  for (const auto& row : rows) {
    auto cdl = New<clsZKCDL>();
    cdl->LetFileFilter(row.given);
    EXPECT_EQ(cdl->FileFilter(), row.stored) << row.what;
  }
}

TEST(CdlProperties, ColorsCustomReadsEachPieceWithVal) {
  String eighteen;
  for (int i = 1; i <= 18; ++i) eighteen += (i > 1 ? kNul : String()) + FromAscii(std::to_string(i));
  const struct {
    const char* what;
    String given;
    std::string expected;  // the get afterwards, or the error
  } rows[] = {
      {"one value sets the first and leaves fifteen zeros", u"255", U8(Joined({255}))},
      {"pieces fill colours in order", u"1" + kNul + u"2" + kNul + u"3", U8(Joined({1, 2, 3}))},
      {"a piece without a number is 0", u"7" + kNul + u"red", U8(Joined({7, 0}))},
      {"a piece is read up to its first stray character", u"12px", U8(Joined({12}))},
      {"hexadecimal", u"&HFF00", U8(Joined({-256}))},
      {"halves round to even", u"2.5" + kNul + u"3.5", U8(Joined({2, 4}))},
      {"negative values are kept", u"-1", U8(Joined({-1}))},
      {"an empty piece in the middle is 0", u"1" + kNul + kNul + u"3", U8(Joined({1, 0, 3}))},
      {"a trailing NUL makes one more, empty, piece", u"5" + kNul, U8(Joined({5, 0}))},
      {"eighteen pieces grow the list to eighteen", eighteen,
       U8(Joined({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18}))},
      {"a value beyond 32 bits is overflow", u"1e10", "error 6"},
  };
  for (const auto& row : rows) {
    auto cdl = New<clsZKCDL>();
    EXPECT_EQ(Outcome([&] { return cdl->LetColorsCustom(row.given), U8(cdl->ColorsCustom()); }), row.expected) << row.what;
  }
  auto cdl = New<clsZKCDL>();
  cdl->LetColorsCustom(u"1" + kNul + u"2" + kNul + u"3");
  cdl->LetColorsCustom(u"9");
  EXPECT_EQ(cdl->ColorsCustom(), Joined({9, 2, 3})) << "colours past the last piece are kept";
  cdl->LetColorsCustom(u"");
  EXPECT_EQ(cdl->ColorsCustom(), Joined({9, 2, 3})) << "the empty text has no pieces";
}

TEST(CdlProperties, LateBoundPropertiesReadBackWhatWasLetAndResultsAreReadOnly) {
  Ref<Object> cdl = CreateObject(u"TSRuntimeLib.clsZKCDL");
  const struct {
    const char* name;
    Variant given;
    std::string read;  // the get, as text
  } rows[] = {
      {"CancelError", Variant(true), "True"},
      {"hwndOwner", Variant(int32_t{77}), "77"},
      {"Color", Variant(String(u"255")), "255"},
      {"FileFullName", Variant(String(u"/tmp/a.txt")), "/tmp/a.txt"},
      {"FileFilter", Variant(String(u"A|*.a")), std::string("A\0*.a\0", 6)},
      {"FileFilterIndex", Variant(int32_t{2}), "2"},
      {"FileMaxSize", Variant(int32_t{-5}), "-5"},
      {"FolderPrompt", Variant(String(u"Куда?")), "Куда?"},
      {"FontStrikethru", Variant(true), "True"},
      {"FontPrinterHdc", Variant(int32_t{3}), "3"},
      {"HelpKey", Variant(String(u"key")), "key"},
      {"PrintCopies", Variant(int32_t{2}), "2"},
      {"ColorsCustom", Variant(String(u"5")), U8(Joined({5}))},
  };
  const auto invoke = [&](const char* name, InvokeKind kind, std::vector<Argument> args) {
    return Invoke(*cdl, FromAscii(name), kind, args);
  };
  for (const auto& row : rows) {
    invoke(row.name, InvokeKind::kLet, {{{}, row.given}});
    EXPECT_EQ(U8(ToString(invoke(row.name, InvokeKind::kCall, {}))), row.read) << row.name;
  }
  for (const char* name : {"APIReturn", "ExtendedError", "Action"}) {
    EXPECT_EQ(Outcome([&] { invoke(name, InvokeKind::kLet, {{{}, Variant(int32_t{1})}}); }), "error 438") << name;
  }
  invoke("Object", InvokeKind::kSet, {{{}, Variant(cdl)}});
  EXPECT_EQ(invoke("Object", InvokeKind::kCall, {}).asObject(), cdl);
  invoke("Object", InvokeKind::kSet, {{{}, Variant::Nothing()}});  // the object held itself
}

// A fresh folder with two files and a subfolder, removed afterwards.
struct Folder {
  Folder() {
    fs::create_directories(path / "sub");
    std::ofstream(path / "a.txt") << "a";
    std::ofstream(path / "b.log") << "b";
  }
  ~Folder() { fs::remove_all(path); }
  static inline int counter = 0;
  const fs::path path = fs::temp_directory_path() / ("cdl-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
};

// QFileDialog hides accept(); it is QDialog's public one, as the OK button calls it.
void Accept(QDialog& d) { d.accept(); }
// Types a name into a file dialog's name box, as a user would, and confirms.
void TypeAndAccept(QFileDialog& d, const std::string& name) {
  d.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QString::fromStdString(name));
  Accept(d);
}

// Every dialog in the language of a ru_RU desktop, Qt's own texts included; photographed
// for the documentation.
TEST(CdlDialogs, DialogsSpeakTheUsersLanguage) {
  Folder folder;
  const struct {
    void (clsZKCDL::*show)();
    const char* picture;
    std::string seen;  // title | buttons
  } rows[] = {
      {&clsZKCDL::ShowOpenFile, "cdl-open", "Открыть | &Открыть, Отмена"},
      {&clsZKCDL::ShowSaveFile, "cdl-save", "Сохранить как | &Сохранить, Отмена"},
      {&clsZKCDL::ShowColor, "cdl-color", "Выбор цвета | OK, Отмена"},
      {&clsZKCDL::ShowFont, "cdl-font", "Выбор шрифта | OK, Отмена"},
      {&clsZKCDL::ShowFolder, "cdl-folder", "Найти каталог | &Выбрать, Отмена"},
  };
  for (const auto& row : rows) {
    auto cdl = New<clsZKCDL>();
    cdl->LetFileFilter(u"Текстовые файлы (*.txt)|*.txt|Все файлы|*");
    cdl->LetFilePath(Wide(folder.path));
    cdl->LetFolderPath(Wide(folder.path));
    cdl->LetFolderPrompt(u"Выберите папку, в которую программа будет сохранять ежемесячные отчёты, журналы "
                         u"работы и резервные копии настроек");
    cdl->LetFileFullName(Wide(folder.path / "отчёт.txt"));
    std::string seen;
    ModalScript script;
    script.On<QDialog>([&](QDialog& d) {
      seen = Text(d.windowTitle()) + " |";
      for (QAbstractButton* b : d.findChild<QDialogButtonBox*>()->buttons()) seen += " " + Text(b->text()) + ",";
      seen.pop_back();
      testing::Photograph(d, row.picture);
      d.reject();
    });
    ((*cdl).*row.show)();
    ASSERT_TRUE(script.Done()) << row.picture << script.Trace();
    EXPECT_EQ(seen, row.seen) << row.picture;
  }
}

TEST(CdlDialogs, OpenFileShowsTheSettingsAndSplitsTheChoice) {
  Folder folder;
  QWidget owner;
  auto cdl = New<clsZKCDL>();
  cdl->LethwndOwner(static_cast<int32_t>(owner.winId()));
  cdl->LetFileDialogTitle(u"Выбор файла");
  cdl->LetFileFilter(u"Тексты|*.txt|Журналы и тексты|*.log;*.txt");
  cdl->LetFileFilterIndex(2);
  cdl->LetFilePath(Wide(folder.path));
  cdl->Letflags(0x1000);
  std::string seen;
  ModalScript script;
  script.On<QFileDialog>([&](QFileDialog& d) {
    seen = Text(d.windowTitle()) + " | " + Text(d.nameFilters().join(u',')) + " | " + Text(d.selectedNameFilter()) +
           " | " + Text(d.directory().absolutePath()) + (d.parentWidget() == &owner ? " | owned" : " | not owned") +
           (d.fileMode() == QFileDialog::ExistingFile ? " | must exist" : " | any file");
    d.selectNameFilter(d.nameFilters().at(0));
    TypeAndAccept(d, (folder.path / "a.txt").string());
  });
  cdl->ShowOpenFile();
  ASSERT_TRUE(script.Done()) << script.Trace();
  EXPECT_EQ(seen, "Выбор файла | Тексты (*.txt),Журналы и тексты (*.log *.txt) | Журналы и тексты | " +
                      folder.path.string() + " | owned | must exist");
  EXPECT_EQ(cdl->APIReturn(), 1);
  EXPECT_EQ(U8(cdl->FileFullName()), (folder.path / "a.txt").string());
  EXPECT_EQ(cdl->FileName(), u"a.txt");
  EXPECT_EQ(U8(cdl->FilePath()), folder.path.string()) << "up to the last /, without it";
  EXPECT_EQ(cdl->FileFilterIndex(), 1) << "the filter left selected, from 1";
}

TEST(CdlDialogs, SaveFileAddsTheDefaultExtensionAndChecksTheNameCapacity) {
  Folder folder;
  const std::string dir = folder.path.string();
  // The capacity counts the whole name; names are made to the length each row needs.
  auto name_of_length = [&](size_t n) { return dir + "/" + std::string(n - dir.size() - 1, 'n'); };
  const struct {
    const char* what;
    int32_t max_size;
    std::string typed, default_ext;
    std::string expected;  // APIReturn, ExtendedError, FileFullName
  } rows[] = {
      {"the default extension is added to a bare name", 0, dir + "/report", "txt", "1 0 " + dir + "/report.txt"},
      {"a leading dot of the default extension is not doubled", 0, dir + "/report", ".md", "1 0 " + dir + "/report.md"},
      {"a name with an extension keeps it", 0, dir + "/report.log", "txt", "1 0 " + dir + "/report.log"},
      {"FileMaxSize 0 accepts 255 characters", 0, name_of_length(255), "", "1 0 " + name_of_length(255)},
      {"FileMaxSize 0 refuses 256 characters", 0, name_of_length(256), "", "0 12291 before"},
      {"a negative FileMaxSize means 255 too", -7, name_of_length(256), "", "0 12291 before"},
      {"FileMaxSize is the longest name accepted", 60, name_of_length(60), "", "1 0 " + name_of_length(60)},
      {"one character more is refused", 60, name_of_length(61), "", "0 12291 before"},
  };
  for (const auto& row : rows) {
    auto cdl = New<clsZKCDL>();
    cdl->LetFileFullName(u"before");
    cdl->LetFileMaxSize(row.max_size);
    cdl->LetFileDefaultExt(FromUtf8(row.default_ext));
    cdl->LetCancelError(true);  // a refused name is no cancellation: nothing is raised
    ModalScript script;
    script.On<QFileDialog>([&](QFileDialog& d) { TypeAndAccept(d, row.typed); });
    EXPECT_EQ(RaisedFields([&] { cdl->ShowSaveFile(); }), "nothing raised") << row.what;
    ASSERT_TRUE(script.Done()) << row.what << script.Trace();
    EXPECT_EQ(std::to_string(cdl->APIReturn()) + " " + std::to_string(cdl->ExtendedError()) + " " +
                  U8(cdl->FileFullName()), row.expected) << row.what;
  }
}

// A cancelled colour dialog still cuts the custom colours to sixteen and makes zeros white,
// for good.
TEST(CdlDialogs, CancellingReportsAnErrorOnlyWithCancelError) {
  const std::string bare = "2001\n\n\n\n0";
  const std::string color = "-2147220610\nZKRuntimeLib.clsZKCDL.ShowColor\nCancel Pressed\n\n0";
  const struct {
    const char* what;
    void (clsZKCDL::*show)();
    bool cancel_error;
    std::string raised;
  } rows[] = {
      {"open, quietly", &clsZKCDL::ShowOpenFile, false, "nothing raised"},
      {"open, with CancelError: 2001 and nothing else", &clsZKCDL::ShowOpenFile, true, bare},
      {"save, quietly", &clsZKCDL::ShowSaveFile, false, "nothing raised"},
      {"save, with CancelError", &clsZKCDL::ShowSaveFile, true, bare},
      {"font, quietly", &clsZKCDL::ShowFont, false, "nothing raised"},
      {"font, with CancelError: as the file dialogs", &clsZKCDL::ShowFont, true, bare},
      {"colour, quietly", &clsZKCDL::ShowColor, false, "nothing raised"},
      {"colour, with CancelError: its own number and text", &clsZKCDL::ShowColor, true, color},
  };
  String seventeen = u"0" + kNul + u"1";
  for (int i = 2; i < 17; ++i) seventeen += kNul + u"2";
  for (const auto& row : rows) {
    auto cdl = New<clsZKCDL>();
    cdl->LetCancelError(row.cancel_error);
    cdl->LetFileFullName(u"/kept");
    cdl->LetColor(123);
    cdl->LetFontName(u"Kept");
    cdl->LetColorsCustom(seventeen);
    ModalScript script;
    script.On<QDialog>([](QDialog& d) { d.reject(); });
    EXPECT_EQ(RaisedFields([&] { ((*cdl).*row.show)(); }), row.raised) << row.what;
    ASSERT_TRUE(script.Done()) << row.what << script.Trace();
    EXPECT_EQ(cdl->APIReturn(), 0) << row.what;
    EXPECT_EQ(cdl->FileFullName() + cdl->FontName(), u"/keptKept") << row.what;
    EXPECT_EQ(cdl->Color(), 123) << row.what;
    if (row.show == &clsZKCDL::ShowColor) {
      EXPECT_EQ(cdl->ColorsCustom(), Joined({16777215, 1, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2, 2})) << row.what;
    }
  }
}

TEST(CdlDialogs, ColorDialogTradesColoursBothWays) {
  const struct {
    const char* what;
    int32_t flags;
    std::string initial;  // as the dialog shows it
  } rows[] = {
      {"flag 1 starts from Color", 1, "#ff0000"},
      {"without it the dialog starts from black", 0, "#000000"},
  };
  for (const auto& row : rows) {
    auto cdl = New<clsZKCDL>();
    cdl->LetColor(0x0000FF);  // red: red is the low byte
    cdl->Letflags(row.flags);
    cdl->LetColorsCustom(u"0" + kNul + u"65280");
    std::string seen;
    ModalScript script;
    script.On<QColorDialog>([&](QColorDialog& d) {
      seen = Text(d.currentColor().name());
      for (int i : {0, 1, 15}) seen += " " + Text(QColorDialog::customColor(i).name());
      d.setCurrentColor(QColor(0, 0, 255));
      QColorDialog::setCustomColor(3, QColor(1, 2, 3));
      Accept(d);
    });
    cdl->ShowColor();
    ASSERT_TRUE(script.Done()) << row.what << script.Trace();
    EXPECT_EQ(seen, row.initial + " #ffffff #00ff00 #ffffff") << row.what << ": unset custom colours show white";
    EXPECT_EQ(cdl->APIReturn(), 1);
    EXPECT_EQ(cdl->Color(), 0xFF0000) << "blue is the high byte";
    std::vector<int32_t> custom(16, 16777215);
    custom[1] = 65280;
    custom[3] = 0x030201;
    EXPECT_EQ(cdl->ColorsCustom(), Joined(custom)) << row.what;
  }
}

TEST(CdlDialogs, FontDialogMapsTheFontPropertiesBothWays) {
  auto cdl = New<clsZKCDL>();
  cdl->LetFontName(u"DejaVu Serif");
  cdl->LetFontSize(14);
  cdl->LetFontBold(true);
  cdl->LetFontItalic(true);
  cdl->LetFontColor(0x123456);
  std::string seen;
  ModalScript script;
  script.On<QFontDialog>([&](QFontDialog& d) {
    const QFont f = d.currentFont();
    const QString sample = d.findChild<QLineEdit*>(QStringLiteral("qt_fontDialog_sampleEdit"))->text();
    const bool cyrillic = !sample.isEmpty() && std::all_of(sample.begin(), sample.end(), [](QChar c) {
      return c.script() == QChar::Script_Cyrillic;
    });
    seen = (cyrillic ? "Cyrillic sample, " : "sample " + Text(sample) + ", ") + Text(f.family()) + " " +
           std::to_string(f.pointSize()) + (f.weight() >= QFont::Bold ? " bold" : "") + (f.italic() ? " italic" : "") +
           (f.underline() ? " underline" : "") + (f.strikeOut() ? " strikeout" : "");
    QFont chosen(QStringLiteral("DejaVu Sans"), 10);
    chosen.setUnderline(true);
    chosen.setStrikeOut(true);
    chosen.setStyleName(QStringLiteral("Book"));  // the plain face, as picked in the style list
    d.setCurrentFont(chosen);
    Accept(d);
  });
  cdl->ShowFont();
  ASSERT_TRUE(script.Done()) << script.Trace();
  EXPECT_EQ(seen, "Cyrillic sample, DejaVu Serif 14 bold italic");
  EXPECT_EQ(std::to_string(cdl->APIReturn()) + " " + U8(cdl->FontName()) + " " + std::to_string(cdl->FontSize()) +
                (cdl->FontBold() ? " bold" : "") + (cdl->FontItalic() ? " italic" : "") +
                (cdl->FontUnderline() ? " underline" : "") + (cdl->FontStrikethru() ? " strikethru" : ""),
            "1 DejaVu Sans 10 underline strikethru");
  EXPECT_EQ(cdl->FontColor(), 0x123456) << "the dialog offers no colour; it is kept";
}

TEST(CdlDialogs, FolderDialogStartsInFolderPathAndCancellingClearsIt) {
  Folder folder;
  auto cdl = New<clsZKCDL>();
  const std::string prompt =
      "Выберите папку, в которую программа сохранит отчёты, журналы и копии настроек за "
      "прошедший месяц; её можно будет сменить позже";
  cdl->LetFolderPrompt(FromUtf8(prompt));
  cdl->LetFolderPath(Wide(folder.path));
  std::string seen;
  ModalScript confirm;
  confirm.On<QFileDialog>([&](QFileDialog& d) {
    auto* label = d.findChild<QLabel*>(QStringLiteral("folderPrompt"));
    auto* list = d.findChild<QWidget*>(QStringLiteral("splitter"));
    ASSERT_TRUE(label && list);
    // Shown whole: as tall as its text needs at its width, within the dialog, above the list.
    const int needed = label->heightForWidth(label->width());
    const bool whole = label->isVisible() && label->height() >= needed && label->geometry().right() <= d.width() &&
                       needed > label->fontMetrics().height();
    seen = Text(d.windowTitle()) + " | " + Text(label->text()) + (whole ? " | whole, wrapped" : " | cut") +
           (label->geometry().bottom() < list->geometry().top() ? ", above the list" : ", not above") + " | " +
           Text(d.directory().absolutePath()) + (d.fileMode() == QFileDialog::Directory ? " | folders" : " | files");
    TypeAndAccept(d, (folder.path / "sub").string());
  });
  cdl->ShowFolder();
  ASSERT_TRUE(confirm.Done()) << confirm.Trace();
  EXPECT_EQ(seen, "Найти каталог | " + prompt + " | whole, wrapped, above the list | " + folder.path.string() + " | folders");
  EXPECT_EQ(U8(cdl->FolderPath()), (folder.path / "sub").string());
  EXPECT_EQ(cdl->APIReturn(), 1);
  ModalScript cancel;
  cancel.On<QFileDialog>([](QFileDialog& d) { d.reject(); });
  cdl->ShowFolder();
  ASSERT_TRUE(cancel.Done()) << cancel.Trace();
  EXPECT_EQ(cdl->FolderPath(), u"");
  EXPECT_EQ(cdl->APIReturn(), 1) << "a cancelled folder dialog leaves APIReturn as it was";
}

// Stands in for the desktop's handler of local files.
class FileOpener : public QObject {
  Q_OBJECT
 public:
  std::string opened;
 public slots:
  void Open(const QUrl& url) { opened += url.toString().toStdString() + ";"; }
};

TEST(CdlDialogs, HelpOpensTheFileWithTheDesktopHandler) {
  Folder folder;
  const std::string help = (folder.path / "a.txt").string();
  FileOpener opener;
  QDesktopServices::setUrlHandler(QStringLiteral("file"), &opener, "Open");
  const struct {
    const char* what;
    std::string file;
    int32_t command;
    std::string expected;  // APIReturn, then what was opened
  } rows[] = {
      {"an existing file is handed over", help, 1, "1 file://" + help + ";"},
      {"a missing file opens nothing", help + ".missing", 1, "0 "},
      {"no file opens nothing", "", 257, "0 "},
      {"quit has no window to close and succeeds", "", 2, "1 "},
  };
  for (const auto& row : rows) {
    opener.opened.clear();
    auto cdl = New<clsZKCDL>();
    cdl->LetHelpFileFullName(FromUtf8(row.file));
    cdl->LetHelpCommand(row.command);
    cdl->ShowHelp();
    EXPECT_EQ(std::to_string(cdl->APIReturn()) + " " + opener.opened, row.expected) << row.what;
  }
  QDesktopServices::unsetUrlHandler(QStringLiteral("file"));
}

}  // namespace
}  // namespace tsruntime

#include "cdl_test.moc"
