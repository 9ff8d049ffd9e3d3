// frmError, the error report window, as clsTSErrors.ShowErrorMessage shows it: its fixed
// texts, the save flow driven through the save dialog, and the fallback without a display.
#include <gtest/gtest.h>
#include <unistd.h>

#include <QFileDialog>
#include <QGuiApplication>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QScreen>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "support/child_process.h"
#include "x_server.h"
#include "modal_script.h"
#include "report_file_name.h"
#include "support/outcome.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/clsTSErrors.h"
#include "tsruntime/error_report.h"

namespace tsruntime {
namespace {

namespace fs = std::filesystem;
using testing::ModalScript;
using testing::U8;

std::string Text(const QString& s) { return s.toStdString(); }

// The folder reports are saved into, removed afterwards.
struct ReportFolder {
  ReportFolder()
      : path(fs::temp_directory_path() / ("reports-" + std::to_string(getpid()) + "-" +
                                          std::to_string(counter++))) {
    fs::create_directories(path);
  }
  ~ReportFolder() { fs::remove_all(path); }
  std::vector<std::string> Files() const {
    std::vector<std::string> names;
    for (const auto& entry : fs::directory_iterator(path)) names.push_back(entry.path().filename());
    std::sort(names.begin(), names.end());
    return names;
  }
  static inline int counter = 0;
  fs::path path;
};

std::string FileBytes(const fs::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream bytes;
  bytes << in.rdbuf();
  return bytes.str();
}

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

void TypeAndAccept(QFileDialog& d, const std::string& name) {
  Child<QLineEdit>(d, "fileNameEdit")->setText(QString::fromStdString(name));
  static_cast<QDialog&>(d).accept();
}

// What the window shows, one element a line.
std::string Describe(QWidget& form) {
  auto* box = Child<QPlainTextEdit>(form, "boxError");
  auto button = [&](const char* name) {
    auto* b = Child<QPushButton>(form, name);
    return Text(b->text()) + (b->isEnabled() ? "" : " (disabled)");
  };
  return Text(form.windowTitle()) + "\n" + Text(Child<QLabel>(form, "lblHeader")->text()) +
         "\n" + (Child<QLabel>(form, "Image1")->pixmap().isNull() ? "no picture" : "picture") +
         "\n" + button("btnSend") + ", " + button("btnSave") + ", " + button("btnClose") +
         "\ncaret at " + std::to_string(box->textCursor().position()) +
         (form.isModal() && !form.parentWidget() ? ", modal, no owner" : "");
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
    std::string seen;
    std::string report;
    ModalScript script;
    script.On<QDialog>(
        [&](QDialog& form) {
          seen = Describe(form);
          report = Text(Child<QPlainTextEdit>(form, "boxError")->toPlainText());
          Click(form, "btnClose");
        },
        "frmError");
    errors->ShowErrorMessage(u"Импорт прерван", 5);
    ASSERT_TRUE(script.Done()) << row.what << script.Trace();
    EXPECT_EQ(seen, row.caption +
                        "\nВ процессе выполнения программы возникла ошибка!\npicture\n"
                        "&Отправить (disabled), &Сохранить, &Закрыть\ncaret at 0, modal, no owner")
        << row.what;
    // The editor shows each CR LF as one line break.
    String expected;
    for (char16_t c : ErrorReportText(*errors, u"Импорт прерван", 5))
      if (c != u'\r') expected.push_back(c);
    EXPECT_EQ(report, U8(expected)) << row.what;
  }
}

// Saves through the window: the rows give what the user types, the file that appears.
TEST(ReportWindow, SavesTheReportUnderTheChosenNameWithTheExtensionRule) {
  const struct {
    const char* what;
    std::string typed;
    std::string written;
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
    script
        .On<QDialog>([](QDialog& form) { Click(form, "btnSave"); }, "frmError")
        .On<QFileDialog>([&](QFileDialog& d) {
          dialog = Text(d.windowTitle()) + " | " + Text(d.nameFilters().join(u',')) + " | " +
                   (d.parentWidget() && d.parentWidget()->objectName() == u"frmError"
                        ? "over the report"
                        : "ownerless");
          TypeAndAccept(d, (folder.path / row.typed).string());
        })
        .On<QDialog>([](QDialog& form) { Click(form, "btnClose"); }, "frmError");
    errors->ShowErrorMessage();
    ASSERT_TRUE(script.Done()) << row.what << script.Trace();
    EXPECT_EQ(script.Trace().find("unexpected"), std::string::npos) << script.Trace();
    EXPECT_EQ(dialog, "Сохранение отчёта об ошибке | Текстовые файлы (*.txt) (*.txt),"
                      "Все файлы (*.*) (*.*) | over the report")
        << row.what;
    EXPECT_EQ(folder.Files(), std::vector<std::string>{row.written}) << row.what;
    const std::vector<uint8_t> ansi = StringToAnsi(ErrorReportText(*errors, u"", 0));
    EXPECT_EQ(FileBytes(folder.path / row.written), std::string(ansi.begin(), ansi.end()))
        << row.what << ": the whole report, CR LF line ends, code page 1251, replacing";
  }
}

TEST(ReportWindow, ProposesANameWithTheLocalDateAndTime) {
  std::string proposed;
  const String before = ui_detail::ProposedReportNameNow();
  ModalScript script;
  script.On<QDialog>([](QDialog& form) { Click(form, "btnSave"); }, "frmError")
      .On<QFileDialog>([&](QFileDialog& d) {
        proposed = Text(Child<QLineEdit>(d, "fileNameEdit")->text());
        d.reject();
      })
      .On<QDialog>([](QDialog& form) { Click(form, "btnClose"); }, "frmError");
  SampleErrors(u"")->ShowErrorMessage();
  const String after = ui_detail::ProposedReportNameNow();
  ASSERT_TRUE(script.Done()) << script.Trace();
  EXPECT_TRUE(proposed == U8(before) || proposed == U8(after)) << proposed;
}

TEST(ReportWindow, ProposedNamesFollowTheStampPattern) {
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
}

TEST(ReportWindow, ExtensionRuleReadsTheTextAfterTheLastDotEvenAcrossFolders) {
  auto strings = New<clsZKString>();
  EXPECT_EQ(ui_detail::ReportFileName(*strings, u"/tmp/a.b/c"), u"/tmp/a.b/c")
      << "\"b/c\" counts as an extension of three characters";
  EXPECT_EQ(ui_detail::ReportFileName(*strings, u"/tmp/v1.0/report"), u"/tmp/v1.0/report.txt");
}

TEST(ReportWindow, CancellingTheSaveDialogWritesAndShowsNothing) {
  ReportFolder folder;
  ModalScript script;
  script.On<QDialog>([](QDialog& form) { Click(form, "btnSave"); }, "frmError")
      .On<QFileDialog>([&](QFileDialog& d) {
        Child<QLineEdit>(d, "fileNameEdit")->setText(QString::fromStdString((folder.path / "r").string()));
        d.reject();
      })
      .On<QDialog>([](QDialog& form) { Click(form, "btnClose"); }, "frmError");
  SampleErrors(u"Склад")->ShowErrorMessage();
  ASSERT_TRUE(script.Done()) << script.Trace();
  EXPECT_EQ(script.Trace().find("unexpected"), std::string::npos) << "no message box";
  EXPECT_TRUE(folder.Files().empty());
}

TEST(ReportWindow, AFailedWriteShowsTheFileNameInAnInformationBox) {
  ReportFolder folder;
  const std::string target = (folder.path / "missing" / "report").string();
  std::string box;
  bool still_open = false;
  ModalScript script;
  script.On<QDialog>([](QDialog& form) { Click(form, "btnSave"); }, "frmError")
      .On<QFileDialog>([&](QFileDialog& d) { TypeAndAccept(d, target); })
      .On<QMessageBox>([&](QMessageBox& m) {
        box = Text(m.text()) + (m.icon() == QMessageBox::Information ? " (information)" : "");
        m.accept();
      })
      .On<QDialog>(
          [&](QDialog& form) {
            still_open = form.isVisible();
            Click(form, "btnClose");
          },
          "frmError");
  SampleErrors(u"Склад")->ShowErrorMessage();
  ASSERT_TRUE(script.Done()) << script.Trace();
  EXPECT_EQ(box, "Ошибка записи в файл:\r\n'" + target + ".txt' (information)");
  EXPECT_TRUE(still_open) << "the window stays open after a failed save";
}

// Under a real X server: the window is shown on the xcb platform, saved from and
// photographed (into TSRUNTIME_SCREENSHOT when set).
TEST(ReportWindow, OnAnXServerSavesThroughTheSaveDialog) {
  if (!testing::IsXcbChild()) {
    testing::Xvfb x;
    ASSERT_FALSE(x.display().empty()) << "Xvfb did not start";
    const std::string output = x.RunChild("ReportWindow.OnAnXServerSavesThroughTheSaveDialog");
    EXPECT_TRUE(output.ends_with("exit 0")) << output;
    return;
  }
  ReportFolder folder;
  std::string platform;
  ModalScript script;
  script
      .On<QDialog>(
          [&](QDialog& form) {
            platform = Text(QGuiApplication::platformName());
            if (const char* shot = std::getenv("TSRUNTIME_SCREENSHOT")) {
              QCoreApplication::processEvents();
              QGuiApplication::primaryScreen()
                  ->grabWindow(0, form.x(), form.y(), form.frameGeometry().width(),
                               form.frameGeometry().height())
                  .save(QString::fromLocal8Bit(shot));
            }
            Click(form, "btnSave");
          },
          "frmError")
      .On<QFileDialog>([&](QFileDialog& d) { TypeAndAccept(d, (folder.path / "report").string()); })
      .On<QDialog>([](QDialog& form) { Click(form, "btnClose"); }, "frmError");
  auto errors = SampleErrors(u"Склад");
  errors->ShowErrorMessage(u"Импорт прерван", 5);
  ASSERT_TRUE(script.Done()) << script.Trace();
  EXPECT_EQ(platform, "xcb");
  const std::vector<uint8_t> ansi = StringToAnsi(ErrorReportText(*errors, u"Импорт прерван", 5));
  EXPECT_EQ(FileBytes(folder.path / "report.txt"), std::string(ansi.begin(), ansi.end()));
}

// Without a display nothing waits for a user: the report goes to standard error.
TEST(ReportWindow, WithoutADisplayTheReportGoesToStandardError) {
  if (!testing::InTestChild()) {
    const testing::ChildResult child =
        testing::RunTestInChild("ReportWindow.WithoutADisplayTheReportGoesToStandardError",
                                {{"DISPLAY", std::nullopt},
                                 {"QT_QPA_PLATFORM", std::nullopt},
                                 {"WAYLAND_DISPLAY", std::nullopt},
                                 {"TSRUNTIME_TEST_XCB_CHILD", "1"}});
    EXPECT_EQ(child.exit_code, 0) << child.output;
    EXPECT_NE(child.output.find("Программа:\tСклад"), std::string::npos) << child.output;
    EXPECT_NE(child.output.find("  --> [53] Нет файла"), std::string::npos) << child.output;
    return;
  }
  SampleErrors(u"Склад")->ShowErrorMessage();
  EXPECT_EQ(QApplication::activeModalWidget(), nullptr);
}

}  // namespace
}  // namespace tsruntime
