// frmError, the error report window, as clsTSErrors.ShowErrorMessage shows it: its fixed
// texts, its tab stops, and the save flow driven through the save dialog.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QTextBlock>
#include <filesystem>
#include <fstream>

#include "report_file_name.h"
#include "support/outcome.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsTSErrors.h"
#include "tsruntime/error_report.h"
#include "ui_support.h"

namespace tsruntime {
namespace {

namespace fs = std::filesystem;
using testing::ModalScript;
using testing::U8;

std::string Text(const QString& s) { return s.toStdString(); }

// The folder reports are saved into, removed afterwards.
struct ReportFolder {
  ReportFolder() { fs::create_directories(path); }
  ~ReportFolder() { fs::remove_all(path); }
  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(path)) names.push_back(entry.path().filename());
    return names;
  }
  static inline int counter = 0;
  const fs::path path = fs::temp_directory_path() / ("reports-" + std::to_string(getpid()) + "-" + std::to_string(counter++));
};

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

// The steps of one save: the report's Save button, `in_dialog` on the save dialog, then
// `after` (a message box's step, when given), then Close on the report.
void SaveThrough(ModalScript& script, std::function<void(QFileDialog&)> in_dialog,
                 std::function<void(QMessageBox&)> after = nullptr, bool* still_open = nullptr) {
  script.On<QDialog>([](QDialog& form) { Click(form, "btnSave"); }, "frmError").On<QFileDialog>(in_dialog);
  if (after) script.On<QMessageBox>(after);
  script.On<QDialog>([=](QDialog& form) {
    if (still_open) *still_open = form.isVisible();
    Click(form, "btnClose");
  }, "frmError");
}

TEST(ReportWindow, ShowsTheReportWithItsFixedTexts) {
  const struct {
    const char* what;
    String program;
    std::string caption;
  } rows[] = {
      {"a program name goes into the caption", u"Склад", "Ошибка: Склад"},
      {"without one the caption is plain", u"", "Ошибка"},
  };
  for (const auto& row : rows) {
    auto errors = SampleErrors(row.program);
    std::string seen, report;
    ModalScript script;
    script.On<QDialog>([&](QDialog& form) {
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
      if (!row.program.empty()) testing::Photograph(form, "frmError");
      Click(form, "btnClose");
    }, "frmError");
    errors->ShowErrorMessage(u"Импорт прерван", 5);
    ASSERT_TRUE(script.Done()) << row.what << script.Trace();
    EXPECT_EQ(seen, row.caption + "\nВ процессе выполнения программы возникла ошибка!\npicture\n"
                                  "&Отправить (disabled), &Сохранить, &Закрыть\ncaret at 0, modal, no owner") << row.what;
    String expected;  // the editor shows each CR LF as one line break
    for (char16_t c : ErrorReportText(*errors, u"Импорт прерван", 5)) {
      if (c != u'\r') expected.push_back(c);
    }
    EXPECT_EQ(report, U8(expected)) << row.what;
  }
}

TEST(ReportWindow, SavesTheReportUnderTheChosenNameWithTheExtensionRule) {
  const struct {
    const char* what;
    std::string typed, written;
  } rows[] = {
      {"a bare name gets .txt", "report", "report.txt"},
      {"an extension of three characters is kept", "report.log", "report.log"},
      {"one of one character is kept", "report.c", "report.c"},
      {"one of four characters gets .txt after it", "report.text", "report.text.txt"},
      {"a trailing dot gets .txt after it", "report.", "report..txt"},
  };
  for (const auto& row : rows) {
    ReportFolder folder;
    std::ofstream(folder.path / row.written) << "old content, longer than nothing at all";
    auto errors = SampleErrors(u"Склад");
    std::string dialog;
    ModalScript script;
    SaveThrough(script, [&](QFileDialog& d) {
      dialog = Text(d.windowTitle()) + " | " + Text(d.nameFilters().join(u',')) + " | " +
               (d.parentWidget() && d.parentWidget()->objectName() == u"frmError" ? "over the report" : "ownerless");
      Child<QLineEdit>(d, "fileNameEdit")->setText(QString::fromStdString((folder.path / row.typed).string()));
      static_cast<QDialog&>(d).accept();
    });
    errors->ShowErrorMessage();
    ASSERT_TRUE(script.Done()) << row.what << script.Trace();
    EXPECT_EQ(script.Trace().find("unexpected"), std::string::npos) << script.Trace();
    EXPECT_EQ(dialog, "Сохранение отчёта об ошибке | Текстовые файлы (*.txt) (*.txt),Все файлы (*.*) (*.*) | over the report")
        << row.what;
    EXPECT_EQ(folder.Files(), std::vector<std::string>{row.written}) << row.what;
    const std::vector<uint8_t> ansi = StringToAnsi(ErrorReportText(*errors, u"", 0));
    std::ifstream in(folder.path / row.written, std::ios::binary);
    EXPECT_EQ(std::string(std::istreambuf_iterator<char>(in), {}), std::string(ansi.begin(), ansi.end()))
        << row.what << ": the whole report, CR LF line ends, code page 1251, replacing";
  }
}

// The dialog proposes a name with the local date and time; cancelling it writes nothing
// and shows no message box.
TEST(ReportWindow, CancellingTheProposedNameWritesAndShowsNothing) {
  ReportFolder folder;
  std::string proposed;
  const String before = ui_detail::ProposedReportNameNow();
  ModalScript script;
  SaveThrough(script, [&](QFileDialog& d) {
    proposed = Text(Child<QLineEdit>(d, "fileNameEdit")->text());
    Child<QLineEdit>(d, "fileNameEdit")->setText(QString::fromStdString((folder.path / "r").string()));
    d.reject();
  });
  SampleErrors(u"Склад")->ShowErrorMessage();
  const String after = ui_detail::ProposedReportNameNow();
  ASSERT_TRUE(script.Done()) << script.Trace();
  EXPECT_TRUE(proposed == U8(before) || proposed == U8(after)) << proposed;
  EXPECT_EQ(script.Trace().find("unexpected"), std::string::npos) << "no message box";
  EXPECT_TRUE(folder.Files().empty());
}

TEST(ReportWindow, ProposedNamesFollowTheStampPatternAndTheExtensionRuleReadsPastFolders) {
  const struct {
    int year, month, day, hour, minute;
    String expected;
  } rows[] = {
      {2025, 2, 1, 9, 5, u"Отчёт об ошибке [2025-02-01 09-05].txt"},
      {1999, 12, 31, 23, 59, u"Отчёт об ошибке [1999-12-31 23-59].txt"},
      {2024, 3, 5, 0, 0, u"Отчёт об ошибке [2024-03-05 00-00].txt"},
  };
  for (const auto& row : rows) {
    std::tm local{};
    local.tm_year = row.year - 1900;
    local.tm_mon = row.month - 1;
    local.tm_mday = row.day;
    local.tm_hour = row.hour;
    local.tm_min = row.minute;
    EXPECT_EQ(ui_detail::ProposedReportName(local), row.expected);
  }
  auto strings = New<clsZKString>();
  EXPECT_EQ(ui_detail::ReportFileName(*strings, u"/tmp/a.b/c"), u"/tmp/a.b/c")
      << "\"b/c\" counts as an extension of three characters";
  EXPECT_EQ(ui_detail::ReportFileName(*strings, u"/tmp/v1.0/report"), u"/tmp/v1.0/report.txt");
}

TEST(ReportWindow, AFailedWriteShowsTheFileNameInAnInformationBox) {
  ReportFolder folder;
  // The save dialog starts in the working folder: one with nothing of the machine's in it.
  const fs::path working = fs::current_path();
  fs::current_path(folder.path);
  const std::string target = (folder.path / "missing" / "report").string();
  std::string box;
  bool still_open = false;
  ModalScript script;
  SaveThrough(script, [&](QFileDialog& d) {
    testing::Photograph(d, "frmError-save");
    Child<QLineEdit>(d, "fileNameEdit")->setText(QString::fromStdString(target));
    static_cast<QDialog&>(d).accept();
  }, [&](QMessageBox& m) {
    box = Text(m.windowTitle()) + " | " + Text(m.text()) + (m.icon() == QMessageBox::Information ? " (information)" : "");
    testing::Photograph(m, "frmError-write-failed");
    m.accept();
  }, &still_open);
  SampleErrors(u"Склад")->ShowErrorMessage();
  fs::current_path(working);
  ASSERT_TRUE(script.Done()) << script.Trace();
  EXPECT_EQ(box, "Ошибка: Склад | Ошибка записи в файл:\r\n'" + target + ".txt' (information)") << "titled as the report window";
  EXPECT_TRUE(still_open) << "the window stays open after a failed save";
}

// Where the values of the report's first two lines start, told as a verdict.
std::string Columns(QPlainTextEdit& box) {
  const QFontMetricsF metrics(box.font());
  std::vector<qreal> starts;
  for (int line = 0; line < 2; ++line) {
    const QTextBlock block = box.document()->findBlockByNumber(line);
    QTextCursor at(block);
    at.setPosition(block.position() + static_cast<int>(block.text().lastIndexOf(u'\t')) + 1);
    const qreal x = box.cursorRect(at).left();
    const qreal label = metrics.horizontalAdvance(block.text().left(block.text().indexOf(u'\t')));
    if (x - label < metrics.horizontalAdvance(u' ')) return "too close to its label";
    starts.push_back(x);
  }
  if (std::abs(starts[0] - starts[1]) > 1) return "apart: " + std::to_string(starts[0]) + " and " + std::to_string(starts[1]);
  return "lined up, clear of the labels";
}

// The values after "Программа:" (one tab) and "Модуль:" (two tabs) start in one column, a
// space at least after the wider label, in whatever font the window has.
TEST(ReportWindow, TabStopsLineUpTheValuesAfterTheLabels) {
  const struct {
    const char* what;
    QString family;
    int points;
  } rows[] = {
      {"the window's own face", QString(), 0},
      {"a wide face, large", QStringLiteral("DejaVu Serif"), 16},
      {"a narrow face, small", QStringLiteral("DejaVu Sans Condensed"), 7},
      {"a fixed-width face", QStringLiteral("DejaVu Sans Mono"), 10},
  };
  std::vector<std::string> seen;
  ModalScript script;
  script.On<QDialog>([&](QDialog& form) {
    for (const auto& row : rows) {
      if (!row.family.isEmpty()) form.setFont(QFont(row.family, row.points));
      seen.push_back(Columns(*Child<QPlainTextEdit>(form, "boxError")));
    }
    Click(form, "btnClose");
  }, "frmError");
  SampleErrors(u"Склад")->ShowErrorMessage();
  ASSERT_TRUE(script.Done()) << script.Trace();
  for (size_t i = 0; i < std::size(rows); ++i) EXPECT_EQ(seen.at(i), "lined up, clear of the labels") << rows[i].what;
}

}  // namespace
}  // namespace tsruntime
