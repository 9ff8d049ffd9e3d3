// frmError, the error report window, as clsTSErrors.ShowErrorMessage shows it: its fixed
// texts, its tab stops, and the save flow driven through the save dialog.
#include <gtest/gtest.h>

#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextBlock>
#include <filesystem>

#include "report_file_name.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsTSErrors.h"
#include "tsruntime/error_report.h"
#include "system/fs_fixture.h"
#include "ui_support.h"

namespace tsruntime {
namespace {

using ReportWindow = testing::FsTest;  // a scratch folder per test
using testing::ModalScript;
using testing::Text;
using testing::U8;


Ref<clsTSErrors> SampleErrors(const String& program) {
  auto errors = New<clsTSErrors>();
  errors->LetProgramName(program);
  errors->LetModuleName(u"Импорт");
  errors->LetFunctionName(u"Run");
  errors->Add(u"Нет файла", 53);
  errors->Add(u"Пустая строка");
  return errors;
}

template <class T>
T* Child(QWidget& window, const char* name) {
  return window.findChild<T*>(QString::fromLatin1(name));
}
void Click(QWidget& window, const char* button) { Child<QPushButton>(window, button)->click(); }

// Where the values of the report's first two lines start, told as a verdict.
std::string Columns(QPlainTextEdit& box) {
  const QFontMetricsF metrics(box.font());
  qreal starts[2];
  for (int line = 0; line < 2; ++line) {
    const QTextBlock block = box.document()->findBlockByNumber(line);
    QTextCursor at(block);
    at.setPosition(block.position() + static_cast<int>(block.text().lastIndexOf(u'\t')) + 1);
    starts[line] = box.cursorRect(at).left();
    const qreal label = metrics.horizontalAdvance(block.text().left(block.text().indexOf(u'\t')));
    if (starts[line] - label < metrics.horizontalAdvance(u' ')) return "too close to its label";
  }
  if (std::abs(starts[0] - starts[1]) > 1) return "apart: " + std::to_string(starts[0]) + " and " + std::to_string(starts[1]);
  return "lined up";
}

// The values after "Программа:" (one tab) and "Модуль:" (two tabs) start in one column, a
// space at least after the wider label, in whatever font the window has.
TEST_F(ReportWindow, ShowsTheReportWithItsFixedTextsAndLinesUpTheValues) {
  const std::pair<QString, int> faces[] = {{QString(), 0}, {QStringLiteral("DejaVu Serif"), 16},
                                            {QStringLiteral("DejaVu Sans Condensed"), 7}, {QStringLiteral("DejaVu Sans Mono"), 10}};
  for (const String& program : {String(u"Склад"), String()}) {  // a program name goes into the caption
    auto errors = SampleErrors(program);
    std::string seen, report;
    testing::PlayOn<QDialog>([&] { errors->ShowErrorMessage(u"Импорт прерван", 5); }, [&](QDialog& form) {
      auto button = [&](const char* name) {
        auto* b = Child<QPushButton>(form, name);
        return Text(b->text()) + (b->isEnabled() ? "" : " (disabled)");
      };
      auto* box = Child<QPlainTextEdit>(form, "boxError");
      seen = Text(form.windowTitle()) + "\n" + Text(Child<QLabel>(form, "lblHeader")->text()) + "\n" +
             (Child<QLabel>(form, "Image1")->pixmap().isNull() ? "no picture" : "picture") + "\n" +
             button("btnSend") + ", " + button("btnSave") + ", " + button("btnClose") + "\ncaret at " +
             std::to_string(box->textCursor().position()) + (form.isModal() && !form.parentWidget() ? ", modal, no owner" : "");
      report = Text(box->toPlainText());
      if (!program.empty()) testing::Photograph(form, "frmError");
      for (const auto& [family, points] : faces) {
        if (!family.isEmpty()) form.setFont(QFont(family, points));
        seen += "\n" + Text(family) + " " + Columns(*box);
      }
      Click(form, "btnClose");
    });
    EXPECT_EQ(seen, (program.empty() ? "Ошибка" : "Ошибка: Склад") +
                        std::string("\nВ процессе выполнения программы возникла ошибка!\npicture\n"
                                    "&Отправить (disabled), &Сохранить, &Закрыть\ncaret at 0, modal, no owner\n"
                                    " lined up\nDejaVu Serif lined up\nDejaVu Sans Condensed lined up\nDejaVu Sans Mono lined up"));
    // The editor shows each CR LF as one line break.
    EXPECT_EQ(report, Text(QString::fromStdU16String(ErrorReportText(*errors, u"Импорт прерван", 5)).remove(u'\r')));
  }
}

// The save dialog, over the report, proposes a name with the local date and time. The file
// is written whole (CR LF line ends, code page 1251), replacing one of that name; a failed
// write names the file in an information box titled as the report, which stays open.
TEST_F(ReportWindow, SavesTheReportUnderTheChosenNameWithTheExtensionRule) {
  const struct {
    const char* what;
    std::string typed;    // "" cancels the dialog
    std::string written;  // the only file in the folder afterwards, if any
  } rows[] = {
      {"a bare name gets .txt", "report", "report.txt"},
      {"an extension of three characters is kept", "report.log", "report.log"},
      {"one of one character is kept", "report.c", "report.c"},
      {"one of four characters gets .txt after it", "report.text", "report.text.txt"},
      {"a trailing dot gets .txt after it", "report.", "report..txt"},
      {"cancelled: nothing is written and nothing is shown", "", ""},
      {"a folder that does not exist: the write fails", "missing/report", ""},
  };
  const std::string shown = "Сохранение отчёта об ошибке | Текстовые файлы (*.txt) (*.txt),Все файлы (*.*) (*.*) | over the report | ";
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    const std::string folder = std::to_string(&row - rows);
    MakeFolder(folder);
    std::filesystem::current_path(Native(folder));  // where the save dialog starts: nothing of the machine's in it
    if (!row.written.empty()) Put(folder + "/" + row.written, "old content, longer than nothing at all");
    const bool fails = row.typed.find('/') != std::string::npos;
    auto errors = SampleErrors(u"Склад");
    std::string dialog, box;
    const String before = ui_detail::ProposedReportNameNow();
    ModalScript script;
    script.On<QDialog>([](QDialog& form) { Click(form, "btnSave"); }, "frmError").On<QFileDialog>([&](QFileDialog& d) {
      auto* name = Child<QLineEdit>(d, "fileNameEdit");
      dialog = Text(d.windowTitle()) + " | " + Text(d.nameFilters().join(u',')) + " | " +
               (d.parentWidget() && d.parentWidget()->objectName() == u"frmError" ? "over the report" : "ownerless") +
               " | " + Text(name->text());
      if (fails) testing::Photograph(d, "frmError-save");
      name->setText(QString::fromStdString(Native(folder + "/" + row.typed)));
      row.typed.empty() ? d.reject() : static_cast<QDialog&>(d).accept();
    });
    if (fails) {
      script.On<QMessageBox>([&](QMessageBox& m) {
        box = Text(m.windowTitle()) + " | " + Text(m.text()) + (m.icon() == QMessageBox::Information ? " (information)" : "");
        testing::Photograph(m, "frmError-write-failed");
        m.accept();
      });
    }
    script.On<QDialog>([](QDialog& form) { Click(form, "btnClose"); }, "frmError");  // still open
    testing::Play(script, [&] { errors->ShowErrorMessage(); });
    const String after = ui_detail::ProposedReportNameNow();
    EXPECT_TRUE(dialog == shown + U8(before) || dialog == shown + U8(after)) << dialog;
    EXPECT_EQ(box, fails ? "Ошибка: Склад | Ошибка записи в файл:\r\n'" + Native(folder + "/" + row.typed) + ".txt' (information)" : "");
    std::string files;  // each file's name and content
    for (const std::string& name : Listing(folder)) files += name + ": " + Get(folder + "/" + name);
    const std::vector<uint8_t> ansi = StringToAnsi(ErrorReportText(*errors, u"", 0));
    EXPECT_EQ(files, row.written.empty() ? "" : row.written + ": " + std::string(ansi.begin(), ansi.end()));
  }
}

TEST_F(ReportWindow, ProposedNamesFollowTheStampPatternAndTheExtensionRuleReadsPastFolders) {
  for (const auto& [hour, minute, name] : {std::tuple{9, 5, u"Отчёт об ошибке [2025-02-01 09-05].txt"},
                                           {23, 59, u"Отчёт об ошибке [2025-02-01 23-59].txt"}}) {  // hours 0 to 23
    const std::tm local{.tm_min = minute, .tm_hour = hour, .tm_mday = 1, .tm_mon = 1, .tm_year = 2025 - 1900};
    EXPECT_EQ(ui_detail::ProposedReportName(local), name);
  }
  auto strings = New<clsZKString>();
  EXPECT_EQ(ui_detail::ReportFileName(*strings, u"/tmp/a.b/c"), u"/tmp/a.b/c")
      << "\"b/c\" counts as an extension of three characters";
  EXPECT_EQ(ui_detail::ReportFileName(*strings, u"/tmp/v1.0/report"), u"/tmp/v1.0/report.txt");
}

}  // namespace
}  // namespace tsruntime
