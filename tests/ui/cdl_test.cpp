// clsZKCDL: its properties with their conversions, late bound as scripts use them; its
// dialogs, driven as a user would drive them (ModalScript), with what each is shown with
// and what confirming or cancelling leaves in the properties.
#include <gtest/gtest.h>

#include <QColorDialog>
#include <QDesktopServices>
#include <QDialogButtonBox>
#include <QFileDialog>
#include <QFontDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QUrl>
#include <QRegularExpression>

#include "tsruntime/automation/dispatch.h"
#include "tsruntime/clsZKCDL.h"
#include "system/fs_fixture.h"
#include "ui_support.h"

namespace tsruntime {
namespace {

using testing::ModalScript;
using testing::PlayOn;
using testing::Text;
using testing::U8;

// `text` with each '~' made a NUL.
String Z(std::string text) {
  std::replace(text.begin(), text.end(), '~', '\0');
  return FromUtf8(text);
}
// Custom colours as the get writes them: `values`, then `fill` up to sixteen.
std::string Joined(std::vector<int32_t> values, int32_t fill = 0) {
  values.resize(std::max<size_t>(16, values.size()), fill);
  std::string text;
  for (int32_t v : values) text += (text.empty() ? "" : std::string(1, '\0')) + std::to_string(v);
  return text;
}

TEST(CdlProperties, LateBoundPropertiesKeepThePlatformFormsAndResultsAreReadOnly) {
  Ref<Object> cdl = CreateObject(u"TSRuntimeLib.clsZKCDL");
  const auto invoke = [&](const char* name, InvokeKind kind, std::vector<Argument> args = {}) {
    return Invoke(*cdl, FromAscii(name), kind, args);
  };
  const auto let = [&](const char* name, Variant value) { invoke(name, InvokeKind::kLet, {{{}, std::move(value)}}); };
  const auto get = [&](const char* name) { return U8(ToString(invoke(name, InvokeKind::kCall))); };
  EXPECT_EQ(get("APIReturn") + get("ExtendedError") + get("CancelError") + get("FileMaxSize") +
                get("FileFilterIndex") + get("FontSize") + get("FileFilter") + "|" + get("ColorsCustom"),
            "00False000|" + Joined({})) << "a new object; FileMaxSize 0: the dialogs apply 255, it is not stored";
  const std::string eighteen = Joined({1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17, 18});
  const struct {
    const char* name;
    Variant given;
    std::string read;  // the get afterwards, or the error
  } rows[] = {
      {"FileFilter", Variant(Z("Text (*.txt)|*.txt")), U8(Z("Text (*.txt)~*.txt~"))},  // one NUL ends it
      {"FileFilter", Variant(Z("")), U8(Z("~"))},
      {"FileFilter", Variant(Z("A~*.a")), U8(Z("A~*.a~"))},  // NULs already there are kept
      {"ColorsCustom", Variant(Z("255")), Joined({255})},
      {"ColorsCustom", Variant(Z("7~red~12px")), Joined({7, 0, 12})},  // each piece read with Val
      {"ColorsCustom", Variant(Z("&HFF00~2.5~3.5~5~")), Joined({-256, 2, 4, 5, 0})},  // a trailing NUL: one more piece
      {"ColorsCustom", Variant(FromUtf8(eighteen)), eighteen},  // the list grows past sixteen
      {"ColorsCustom", Variant(Z("1e10")), "error 6"},
      {"CancelError", Variant(true), "True"},
      {"Color", Variant(Z("255")), "255"},
      {"FileMaxSize", Variant(int32_t{-5}), "-5"},
      {"FileFilterIndex", Variant(int32_t{2}), "2"},
      {"FolderPrompt", Variant(Z("Куда?")), "Куда?"},
  };
  for (const auto& row : rows) {
    cdl = CreateObject(u"TSRuntimeLib.clsZKCDL");
    EXPECT_EQ(testing::Outcome([&] { return let(row.name, row.given), get(row.name); }), row.read)
        << row.name << " = " << U8(ToString(row.given));
  }
  let("ColorsCustom", Variant(Z("1~2~3")));  // pieces in order
  let("ColorsCustom", Variant(Z("9")));
  EXPECT_EQ(get("ColorsCustom"), Joined({9, 2, 3})) << "colours past the last piece are kept";
  let("ColorsCustom", Variant(Z("")));
  EXPECT_EQ(get("ColorsCustom"), Joined({9, 2, 3})) << "the empty text has no pieces";
  for (const char* name : {"APIReturn", "ExtendedError", "Action"}) {
    EXPECT_EQ(testing::Outcome([&] { let(name, Variant(int32_t{1})); }), "error 438") << name;
  }
  invoke("Object", InvokeKind::kSet, {{{}, Variant(cdl)}});
  EXPECT_EQ(invoke("Object", InvokeKind::kCall).asObject(), cdl);
  invoke("Object", InvokeKind::kSet, {{{}, Variant::Nothing()}});  // the object held itself
}

// A scratch folder with two files and a subfolder.
class CdlDialogs : public testing::FsTest {
 protected:
  CdlDialogs() {
    Put("a.txt", "a");
    Put("b.log", "b");
    MakeFolder("sub");
  }
};

// QFileDialog hides accept(); it is QDialog's public one, as the OK button calls it.
void Accept(QDialog& d) { d.accept(); }
// Types a name into a file dialog's name box, as a user would, and confirms.
void TypeAndAccept(QFileDialog& d, const std::string& name) {
  d.findChild<QLineEdit*>(QStringLiteral("fileNameEdit"))->setText(QString::fromStdString(name));
  Accept(d);
}

// Every dialog in the language of a ru_RU desktop, Qt's own texts included (photographed
// for the documentation), then cancelled: the properties stay, except that the colour
// dialog cuts the custom colours to sixteen and makes zeros white for good, and the folder
// dialog empties FolderPath.
TEST_F(CdlDialogs, DialogsSpeakTheUsersLanguageAndCancellingRaisesOnlyWithCancelError) {
  const std::string bare = "2001\n\n\n\n0";  // file and font dialogs
  const struct {
    void (clsZKCDL::*show)();
    const char* picture;
    std::string seen;    // title | buttons
    std::string raised;  // with CancelError
  } rows[] = {
      {&clsZKCDL::ShowOpenFile, "cdl-open", "Открыть | &Открыть, Отмена", bare},
      {&clsZKCDL::ShowSaveFile, "cdl-save", "Сохранить как | &Сохранить, Отмена", bare},
      {&clsZKCDL::ShowColor, "cdl-color", "Выбор цвета | OK, Отмена",
       "-2147220610\nZKRuntimeLib.clsZKCDL.ShowColor\nCancel Pressed\n\n0"},
      {&clsZKCDL::ShowFont, "cdl-font", "Выбор шрифта | OK, Отмена", bare},
      {&clsZKCDL::ShowFolder, "cdl-folder", "Найти каталог | &Выбрать, Отмена", "nothing raised"},
  };
  const std::string seventeen = Joined({0, 255, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 7});
  for (const auto& row : rows) {
    for (const bool cancel_error : {true, false}) {
      auto cdl = New<clsZKCDL>();
      cdl->LetCancelError(cancel_error);
      cdl->LetFileFilter(u"Текстовые файлы (*.txt)|*.txt|Все файлы|*");
      cdl->LetFilePath(Path());
      cdl->LetFolderPath(Path());
      cdl->LetFolderPrompt(u"Выберите папку, в которую программа будет сохранять отчёты и журналы работы");
      cdl->LetFileFullName(Path("отчёт.txt"));
      cdl->LetColor(123);
      cdl->LetFontName(u"DejaVu Sans");
      cdl->LetColorsCustom(FromUtf8(seventeen));
      std::string seen;
      const std::string raised = PlayOn<QDialog>([&] { ((*cdl).*row.show)(); }, [&](QDialog& d) {
        seen = Text(d.windowTitle()) + " |";
        for (QAbstractButton* b : d.findChild<QDialogButtonBox*>()->buttons()) seen += " " + Text(b->text()) + ",";
        seen.pop_back();
        testing::Photograph(d, row.picture);
        d.reject();
      });
      SCOPED_TRACE(std::string(row.picture) + (cancel_error ? " with CancelError" : " quietly"));
      EXPECT_EQ(seen, row.seen);
      EXPECT_EQ(raised, cancel_error ? row.raised : "nothing raised");
      EXPECT_EQ(std::to_string(cdl->APIReturn()) + " " + U8(cdl->FileFullName()) + " " + U8(cdl->FontName()) + " " +
                    std::to_string(cdl->Color()) + " " + U8(cdl->FolderPath()),
                "0 " + Native("отчёт.txt") + " DejaVu Sans 123 " + (row.show == &clsZKCDL::ShowFolder ? "" : Native()));
      EXPECT_EQ(U8(cdl->ColorsCustom()), row.show == &clsZKCDL::ShowColor ? Joined({16777215, 255}, 16777215) : seventeen);
    }
  }
}

TEST_F(CdlDialogs, OpenFileShowsTheSettingsAndSplitsTheChoice) {
  QWidget owner;
  auto cdl = New<clsZKCDL>();
  cdl->LethwndOwner(static_cast<int32_t>(owner.winId()));
  cdl->LetFileDialogTitle(u"Выбор файла");
  cdl->LetFileFilter(u"Тексты|*.txt|Журналы и тексты|*.log;*.txt");
  cdl->LetFileFilterIndex(2);
  cdl->LetFilePath(Path());
  cdl->Letflags(0x1000);
  std::string seen;
  PlayOn<QFileDialog>([&] { cdl->ShowOpenFile(); }, [&](QFileDialog& d) {
    seen = Text(d.windowTitle()) + " | " + Text(d.nameFilters().join(u',')) + " | " + Text(d.selectedNameFilter()) +
           " | " + Text(d.directory().absolutePath()) + (d.parentWidget() == &owner ? " | owned" : " | not owned") +
           (d.fileMode() == QFileDialog::ExistingFile ? " | must exist" : " | any file");
    d.selectNameFilter(d.nameFilters().at(0));
    TypeAndAccept(d, Native("a.txt"));
  });
  const std::string dir = Native();
  EXPECT_EQ(seen, "Выбор файла | Тексты (*.txt),Журналы и тексты (*.log *.txt) | Журналы и тексты | " + dir +
                      " | owned | must exist");
  EXPECT_EQ(std::to_string(cdl->APIReturn()) + " " + U8(cdl->FileFullName()) + " | " + U8(cdl->FileName()) + " | " +
                U8(cdl->FilePath()) + " | " + std::to_string(cdl->FileFilterIndex()),
            "1 " + dir + "/a.txt | a.txt | " + dir + " | 1") << "FilePath without its last /; the filter left selected";
}

TEST_F(CdlDialogs, SaveFileAddsTheDefaultExtensionChecksTheCapacityAndAsksBeforeReplacing) {
  const std::string dir = Native();
  // The capacity counts the whole name; names are made to the length each row needs.
  auto name_of_length = [&](size_t n) { return dir + "/" + std::string(n - dir.size() - 1, 'n'); };
  const struct {
    const char* what;
    int32_t flags, max_size;
    std::string typed, default_ext;
    bool asked;  // whether the dialog asks before replacing the file
    std::string expected;  // APIReturn, ExtendedError, FileFullName
  } rows[] = {
      {"the default extension is added to a bare name", 0, 0, dir + "/report", "txt", false, "1 0 " + dir + "/report.txt"},
      {"a leading dot of it is not doubled", 0, 0, dir + "/report", ".md", false, "1 0 " + dir + "/report.md"},
      {"a name with an extension keeps it", 0, 0, dir + "/report.log", "txt", false, "1 0 " + dir + "/report.log"},
      {"FileMaxSize 0 accepts 255 characters", 0, 0, name_of_length(255), "", false, "1 0 " + name_of_length(255)},
      {"FileMaxSize 0 refuses 256 characters", 0, 0, name_of_length(256), "", false, "0 12291 before"},
      {"a negative FileMaxSize means 255 too", 0, -7, name_of_length(256), "", false, "0 12291 before"},
      {"FileMaxSize is the longest name accepted", 0, 60, name_of_length(60), "", false, "1 0 " + name_of_length(60)},
      {"one character more is refused", 0, 60, name_of_length(61), "", false, "0 12291 before"},
      {"flag 2 asks before replacing an existing file", 2, 0, dir + "/a.txt", "", true, "1 0 " + dir + "/a.txt"},
      {"without it (other bits set) the dialog does not ask", 0x1000, 0, dir + "/a.txt", "", false, "1 0 " + dir + "/a.txt"},
  };
  for (const auto& row : rows) {
    auto cdl = New<clsZKCDL>();
    cdl->LetFileFullName(u"before");
    cdl->Letflags(row.flags);
    cdl->LetFileMaxSize(row.max_size);
    cdl->LetFileDefaultExt(FromUtf8(row.default_ext));
    cdl->LetCancelError(true);  // a refused name is no cancellation: nothing is raised
    ModalScript script;
    script.On<QFileDialog>([&](QFileDialog& d) { TypeAndAccept(d, row.typed); });
    if (row.asked) script.On<QMessageBox>([](QMessageBox& m) { m.button(QMessageBox::Yes)->click(); });
    EXPECT_EQ(testing::Play(script, [&] { cdl->ShowSaveFile(); }), "nothing raised") << row.what;
    EXPECT_EQ(std::to_string(cdl->APIReturn()) + " " + std::to_string(cdl->ExtendedError()) + " " +
                  U8(cdl->FileFullName()), row.expected) << row.what;
  }
}

TEST_F(CdlDialogs, ColorDialogTradesColoursBothWays) {
  for (const int32_t flags : {1, 0}) {  // flag 1 starts from Color, else from black
    auto cdl = New<clsZKCDL>();
    cdl->LetColor(0x0000FF);  // red: red is the low byte
    cdl->Letflags(flags);
    cdl->LetColorsCustom(Z("0~65280"));
    std::string seen;
    PlayOn<QColorDialog>([&] { cdl->ShowColor(); }, [&](QColorDialog& d) {
      seen = Text(d.currentColor().name());
      for (int i : {0, 1, 15}) seen += " " + Text(QColorDialog::customColor(i).name());
      d.setCurrentColor(QColor(0, 0, 255));
      QColorDialog::setCustomColor(3, QColor(1, 2, 3));
      Accept(d);
    });
    EXPECT_EQ(seen, (flags ? "#ff0000" : "#000000") + std::string(" #ffffff #00ff00 #ffffff"))
        << "flags " << flags << ": unset custom colours show white";
    // Blue is the high byte.
    EXPECT_EQ(std::to_string(cdl->APIReturn()) + " " + std::to_string(cdl->Color()) + " " + U8(cdl->ColorsCustom()),
              "1 16711680 " + Joined({16777215, 65280, 16777215, 0x030201}, 16777215)) << "flags " << flags;
  }
}

TEST_F(CdlDialogs, FontDialogMapsTheFontPropertiesBothWays) {
  auto cdl = New<clsZKCDL>();
  cdl->LetFontName(u"DejaVu Serif");
  cdl->LetFontSize(14);
  cdl->LetFontBold(true);
  cdl->LetFontItalic(true);
  cdl->LetFontColor(0x123456);
  std::string seen;
  PlayOn<QFontDialog>([&] { cdl->ShowFont(); }, [&](QFontDialog& d) {
    const QFont f = d.currentFont();
    const QString sample = d.findChild<QLineEdit*>(QStringLiteral("qt_fontDialog_sampleEdit"))->text();
    const bool cyrillic = sample.contains(QRegularExpression(QStringLiteral("^\\p{Cyrillic}+$")));
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
  EXPECT_EQ(seen, "Cyrillic sample, DejaVu Serif 14 bold italic");
  EXPECT_EQ(std::to_string(cdl->APIReturn()) + " " + U8(cdl->FontName()) + " " + std::to_string(cdl->FontSize()) +
                (cdl->FontBold() ? " bold" : "") + (cdl->FontItalic() ? " italic" : "") +
                (cdl->FontUnderline() ? " underline" : "") + (cdl->FontStrikethru() ? " strikethru" : ""),
            "1 DejaVu Sans 10 underline strikethru");
  EXPECT_EQ(cdl->FontColor(), 0x123456) << "the dialog offers no colour; it is kept";
}

TEST_F(CdlDialogs, FolderDialogShowsThePromptWholeAndStartsInFolderPath) {
  auto cdl = New<clsZKCDL>();
  const std::string prompt =
      "Выберите папку, в которую программа сохранит отчёты, журналы и копии настроек за "
      "прошедший месяц; её можно будет сменить позже";
  cdl->LetFolderPrompt(FromUtf8(prompt));
  cdl->LetFolderPath(Path());
  std::string seen;
  PlayOn<QFileDialog>([&] { cdl->ShowFolder(); }, [&](QFileDialog& d) {
    auto* label = d.findChild<QLabel*>(QStringLiteral("folderPrompt"));
    auto* list = d.findChild<QWidget*>(QStringLiteral("splitter"));
    ASSERT_TRUE(label && list);
    // Shown whole: as tall as its text needs at its width, within the dialog, above the list.
    const int needed = label->heightForWidth(label->width());
    const bool whole = label->isVisible() && label->height() >= needed && label->geometry().right() <= d.width() &&
                       needed > label->fontMetrics().height();
    seen = Text(label->text()) + (whole ? " | whole, wrapped" : " | cut") +
           (label->geometry().bottom() < list->geometry().top() ? ", above the list" : ", not above") + " | " +
           Text(d.directory().absolutePath()) + (d.fileMode() == QFileDialog::Directory ? " | folders" : " | files");
    TypeAndAccept(d, Native("sub"));
  });
  EXPECT_EQ(seen, prompt + " | whole, wrapped, above the list | " + Native() + " | folders");
  EXPECT_EQ(U8(cdl->FolderPath()) + " " + std::to_string(cdl->APIReturn()), Native("sub") + " 1");
  PlayOn<QFileDialog>([&] { cdl->ShowFolder(); }, [](QFileDialog& d) { d.reject(); });
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

TEST_F(CdlDialogs, HelpOpensTheFileWithTheDesktopHandler) {
  const std::string help = Native("a.txt");
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
