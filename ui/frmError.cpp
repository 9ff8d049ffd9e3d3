#include "frmError.h"

#include <algorithm>
#include <cmath>

#include <QApplication>
#include <QFontMetricsF>
#include <QHBoxLayout>
#include <QLabel>
#include <QMessageBox>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QVBoxLayout>

#include "error_picture.h"
#include "gui_session.h"
#include "qt_text.h"
#include "report_file_name.h"
#include "tsruntime/clsZKCDL.h"
#include "tsruntime/clsZKFileSystem.h"
#include "tsruntime/clsZKString.h"
#include "tsruntime/error_report.h"

namespace tsruntime::ui_detail {
namespace {

constexpr int kPictureSize = 32;

QPushButton* Button(QWidget* parent, const char* object_name, const QString& text) {
  auto* button = new QPushButton(text, parent);
  button->setObjectName(QString::fromLatin1(object_name));
  button->setAutoDefault(false);
  return button;
}

// The tab stop distance that starts the values after the report's labels in one column,
// as soon after the widest label as the stops allow. Every tab lands a space's width or more
// past its text, so that the few pixels by which a face's rendering may differ from its
// metrics never move a value to another stop.
qreal ReportTabDistance(const QFontMetricsF& metrics) {
  const qreal gap = metrics.horizontalAdvance(u' ');
  qreal widest = 0;
  for (const ErrorReportLabel& label : kErrorReportLabels)
    widest = std::max(widest, metrics.horizontalAdvance(QString::fromUtf16(label.text)));
  qreal best_distance = widest + gap;
  qreal best_column = -1;
  constexpr qreal kStep = 0.5;
  for (qreal distance = 2 * gap; distance <= widest + gap; distance += kStep) {
    qreal column = -1;
    bool lined_up = true;
    for (const ErrorReportLabel& label : kErrorReportLabels) {
      const qreal width = metrics.horizontalAdvance(QString::fromUtf16(label.text));
      const qreal first_stop = (std::floor(width / distance) + 1) * distance;
      const qreal at = first_stop + (label.tabs - 1) * distance;
      lined_up = lined_up && first_stop - width >= gap && (column < 0 || std::abs(at - column) < 0.01);
      column = at;
    }
    if (lined_up && (best_column < 0 || column <= best_column + 0.01)) {
      best_column = column;
      best_distance = distance;
    }
  }
  return best_distance;
}

}  // namespace

frmError::frmError() {
  setObjectName(QStringLiteral("frmError"));
  setWindowTitle(QStringLiteral("Ошибка"));
  setWindowFlag(Qt::WindowContextHelpButtonHint, false);
  QFont face(QStringLiteral("MS Sans Serif"));
  face.setStyleHint(QFont::SansSerif);  // fontconfig picks the nearest sans face
  setFont(face);

  Image1_ = new QLabel(this);
  Image1_->setObjectName(QStringLiteral("Image1"));
  Image1_->setPixmap(ErrorPicture(kPictureSize, devicePixelRatioF()));
  lblHeader_ = new QLabel(QStringLiteral("В процессе выполнения программы возникла ошибка!"), this);
  lblHeader_->setObjectName(QStringLiteral("lblHeader"));
  QFont header = lblHeader_->font();
  header.setBold(true);
  lblHeader_->setFont(header);

  boxError_ = new QPlainTextEdit(this);
  boxError_->setObjectName(QStringLiteral("boxError"));
  boxError_->setLineWrapMode(QPlainTextEdit::NoWrap);
  UpdateTabStops();

  btnSend_ = Button(this, "btnSend", QStringLiteral("&Отправить"));
  btnSave_ = Button(this, "btnSave", QStringLiteral("&Сохранить"));
  btnClose_ = Button(this, "btnClose", QStringLiteral("&Закрыть"));
  // Sending is not offered: the button stays greyed out.
  btnSend_->setEnabled(false);
  connect(btnSave_, &QPushButton::clicked, this, [this] { SaveReport(); });
  connect(btnClose_, &QPushButton::clicked, this, &QDialog::accept);

  auto* top = new QHBoxLayout;
  top->addWidget(Image1_);
  top->addWidget(lblHeader_, 1);
  auto* buttons = new QHBoxLayout;
  buttons->addWidget(btnSend_);
  buttons->addStretch(1);
  buttons->addWidget(btnSave_);
  buttons->addWidget(btnClose_);
  auto* layout = new QVBoxLayout(this);
  layout->addLayout(top);
  layout->addWidget(boxError_, 1);
  layout->addLayout(buttons);
  resize(560, 340);
}

void frmError::changeEvent(QEvent* event) {
  QDialog::changeEvent(event);
  if (event->type() == QEvent::FontChange) UpdateTabStops();
}

void frmError::UpdateTabStops() {
  if (boxError_) boxError_->setTabStopDistance(ReportTabDistance(QFontMetricsF(boxError_->font())));
}

void frmError::SetReport(const String& caption, const String& text) {
  setWindowTitle(ToQString(caption));
  boxError_->setPlainText(ToQString(text));
  QTextCursor caret = boxError_->textCursor();
  caret.setPosition(0);
  boxError_->setTextCursor(caret);
}

void frmError::SaveReport() {
  const Ref<clsZKCDL> dialog = New<clsZKCDL>();
  const Ref<clsZKFileSystem> files = New<clsZKFileSystem>();
  const Ref<clsZKString> strings = New<clsZKString>();

  dialog->LethwndOwner(static_cast<int32_t>(winId()));
  dialog->LetFileDialogTitle(u"Сохранение отчёта об ошибке");
  dialog->LetFileFilter(strings->Replace(u"Текстовые файлы (*.txt)|*.txt|Все файлы (*.*)|*.*",
                                         u"|", String(1, u'\0')));
  dialog->LetFileFullName(ProposedReportNameNow());
  dialog->ShowSaveFile();
  if (dialog->APIReturn() != 1) return;

  const String file = ReportFileName(*strings, dialog->FileFullName());
  // The editor keeps one break per line; the file gets the report's CR LF back.
  const String report = strings->Replace(FromQString(boxError_->toPlainText()), u"\n", u"\r\n");
  if (files->StringWrite(report, file, xcZK_FILEWRITE_REPLACE))
    return;
  // A message box that names no title takes its owner's.
  QMessageBox box(QMessageBox::Information, windowTitle(),
                  ToQString(u"Ошибка записи в файл:\r\n'" + file + u"'"), QMessageBox::Ok, this);
  box.exec();
}

bool ShowReportWindow(const String& caption, const String& text) {
  if (!EnsureGuiSession()) return false;
  frmError form;
  form.SetReport(caption, text);
  form.exec();
  return true;
}

namespace {

// Loading the module is what makes the report window the library's presenter.
[[maybe_unused]] const bool report_window_installed =
    (SetErrorReportPresenter(&ShowReportWindow), true);

}  // namespace

}  // namespace tsruntime::ui_detail
