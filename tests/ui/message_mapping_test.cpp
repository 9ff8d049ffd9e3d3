// Qt events on a hooked widget reach clients as the platform's message numbers, with its
// wParam/lParam packing; the trace lines of the bookkeeping go to a logging category.
#include <gtest/gtest.h>

#include <QCloseEvent>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLoggingCategory>
#include <QMouseEvent>
#include <QMoveEvent>
#include <QPaintEvent>
#include <QResizeEvent>
#include <QTimerEvent>
#include <QWheelEvent>
#include <memory>

#include "subclass_support.h"
#include "tsruntime/WindowMessages.h"

namespace tsruntime {
namespace {

using testing::Recorder;
using testing::TestWindow;

QMouseEvent* Mouse(QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons held,
                   Qt::KeyboardModifiers keys = Qt::NoModifier) {
  return new QMouseEvent(type, at, at + QPoint(100, 100), button, held, keys);
}

// A key press as the xcb platform delivers it: the X keycode is the Linux input code + 8.
QKeyEvent* Key(int key, Qt::KeyboardModifiers held, quint32 input_code, const char8_t* text) {
  return new QKeyEvent(QEvent::KeyPress, key, held, input_code + 8, 0, 0, QString::fromUtf8(text));
}

TEST(MessageMapping, QtEventsArriveAsThePlatformsMessages) {
  struct Row {
    const char* what;
    std::function<QEvent*()> event;
    std::string messages;  // "msg,wParam,lParam" each
  };
  const std::vector<Row> rows = {
      {"a move to (10, 20)", [] { return new QMoveEvent(QPoint(10, 20), QPoint()); },
       "3,0,1310730"},
      {"a move to (-1, 2) packs 16 bits each", [] { return new QMoveEvent(QPoint(-1, 2), QPoint()); },
       "3,0,196607"},
      {"a resize to 300 x 200", [] { return new QResizeEvent(QSize(300, 200), QSize()); },
       "5,0,13107500"},
      {"focus in", [] { return new QFocusEvent(QEvent::FocusIn); }, "7,0,0"},
      {"focus out", [] { return new QFocusEvent(QEvent::FocusOut); }, "8,0,0"},
      {"paint", [] { return new QPaintEvent(QRect(0, 0, 5, 5)); }, "15,0,0"},
      {"close", [] { return new QCloseEvent(); }, "16,0,0"},
      {"show", [] { return new QShowEvent(); }, "24,1,0"},
      {"hide", [] { return new QHideEvent(); }, "24,0,0"},
      {"key A with text: key down then char",
       [] { return new QKeyEvent(QEvent::KeyPress, Qt::Key_A, Qt::NoModifier, "a"); },
       "256,65,1 258,97,1"},
      {"an auto-repeated Cyrillic key without a scan code: no code, the character in 1251",
       [] { return new QKeyEvent(QEvent::KeyPress, 0, Qt::NoModifier, u8"ж", true); },
       "256,0,1073741825 258,230,1073741825"},
      {"Russian ф on the key of A (input code 30): A's code, 0xF4",
       [] { return Key(0x424, Qt::NoModifier, 30, u8"ф"); }, "256,65,1966081 258,244,1966081"},
      {"Russian с with Ctrl on the key of C: as Ctrl+C",
       [] { return Key(0x421, Qt::ControlModifier, 46, u8"с"); }, "256,67,3014657 258,3,3014657"},
      {"Ctrl+C under the US layout",
       [] { return Key(Qt::Key_C, Qt::ControlModifier, 46, u8"\x03"); }, "256,67,3014657 258,3,3014657"},
      {"Ctrl+[ gives ESC", [] { return Key(Qt::Key_BracketLeft, Qt::ControlModifier, 26, u8"\x1b"); },
       "256,219,1703937 258,27,1703937"},
      {"AltGr (Ctrl+Alt) keeps the layout's character",
       [] { return Key(Qt::Key_E, Qt::ControlModifier | Qt::AltModifier, 18, u8"€"); },
       "256,69,1179649 258,136,1179649"},
      {"№ (Shift+3 under ru) is 0xB9 on the key of 3",
       [] { return Key(Qt::Key_NumberSign, Qt::ShiftModifier, 4, u8"№"); }, "256,51,262145 258,185,262145"},
      {"a character 1251 lacks is '?'",
       [] { return Key(Qt::Key_A, Qt::NoModifier, 30, u8"ä"); }, "256,65,1966081 258,63,1966081"},
      {"the keypad's 7 is named by its Qt key", [] { return Key(Qt::Key_7, Qt::KeypadModifier, 71, u8"7"); },
       "256,103,4653057 258,55,4653057"},
      {"F5 has no text", [] { return new QKeyEvent(QEvent::KeyPress, Qt::Key_F5, Qt::NoModifier); },
       "256,116,1"},
      {"keypad 3", [] { return new QKeyEvent(QEvent::KeyPress, Qt::Key_3, Qt::KeypadModifier); },
       "256,99,1"},
      {"key up of Escape",
       [] { return new QKeyEvent(QEvent::KeyRelease, Qt::Key_Escape, Qt::NoModifier); },
       "257,27,-1073741823"},
      {"an auto-repeated key up is not the platform's",
       [] { return new QKeyEvent(QEvent::KeyRelease, Qt::Key_A, Qt::NoModifier, "a", true); }, ""},
      {"timer 7", [] { return new QTimerEvent(7); }, "275,7,0"},
      {"mouse move with left held and shift",
       [] { return Mouse(QEvent::MouseMove, {5, 6}, Qt::NoButton, Qt::LeftButton, Qt::ShiftModifier); },
       "512,5,393221"},
      {"left press", [] { return Mouse(QEvent::MouseButtonPress, {1, 2}, Qt::LeftButton, Qt::LeftButton); },
       "513,1,131073"},
      {"left release", [] { return Mouse(QEvent::MouseButtonRelease, {1, 2}, Qt::LeftButton, Qt::NoButton); },
       "514,0,131073"},
      {"left double click",
       [] { return Mouse(QEvent::MouseButtonDblClick, {1, 2}, Qt::LeftButton, Qt::LeftButton); },
       "515,1,131073"},
      {"right press with ctrl",
       [] { return Mouse(QEvent::MouseButtonPress, {0, 0}, Qt::RightButton, Qt::RightButton, Qt::ControlModifier); },
       "516,10,0"},
      {"middle press", [] { return Mouse(QEvent::MouseButtonPress, {0, 0}, Qt::MiddleButton, Qt::MiddleButton); },
       "519,16,0"},
      {"a wheel notch towards the user, at screen (30, 40)",
       [] {
         return new QWheelEvent(QPointF(1, 1), QPointF(30, 40), QPoint(), QPoint(0, -120),
                                Qt::NoButton, Qt::NoModifier, Qt::NoScrollPhase, false);
       },
       "522,-7864320,2621470"},
  };
  const std::vector<int32_t> all = {3, 5, 7, 8, 15, 16, 24, 256, 257, 258, 275, 512, 513,
                                    514, 515, 516, 517, 518, 519, 520, 521, 522};
  TestWindow window;
  std::string journal;
  auto sub = New<GSubclass>();
  auto client = New<Recorder>("", &journal);
  client->with_message = client->with_params = true;
  for (int32_t msg : all) sub->AttachMessage(client, window.handle(), msg);
  for (const Row& row : rows) {
    journal.clear();
    std::unique_ptr<QEvent> event(row.event());
    QCoreApplication::sendEvent(window.widget, event.get());
    std::string messages;  // the recorder writes ":msg,w,l" per message
    for (char c : journal) {
      if (c != ':') messages += c;
    }
    EXPECT_EQ(messages, row.messages) << row.what;
  }
  for (int32_t msg : all) sub->DetachMessage(client, window.handle(), msg);
}

TEST(MessageMapping, AKeyPressIsHandledByTheWidgetOnceWhicheverMessageLetsItThrough) {
  struct Row {
    const char* what;
    EMsgResponse key_down, chr;
    bool widget_saw_it;
  };
  const std::vector<Row> rows = {
      {"both consumed", emrConsume, emrConsume, false},
      {"key down preprocessed", emrPreprocess, emrConsume, true},
      {"both let through: still once", emrPreprocess, emrPostProcess, true},
  };
  for (const Row& row : rows) {
    int seen = 0;
    struct Counter : QWidget {
      int* seen;
      void keyPressEvent(QKeyEvent*) override { ++*seen; }
    };
    auto* widget = new Counter;
    widget->seen = &seen;
    const int32_t h = static_cast<int32_t>(widget->winId());
    std::string journal;
    auto sub = New<GSubclass>();
    auto down = New<Recorder>("down", &journal), chr = New<Recorder>("char", &journal);
    down->LetMsgResponse(row.key_down);
    chr->LetMsgResponse(row.chr);
    sub->AttachMessage(down, h, wm::kKeyDown);
    sub->AttachMessage(chr, h, wm::kChar);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_B, Qt::NoModifier, "b");
    QCoreApplication::sendEvent(widget, &key);
    EXPECT_EQ(journal, "down char") << row.what;
    EXPECT_EQ(seen, row.widget_saw_it ? 1 : 0) << row.what;
    delete widget;
  }
}

TEST(MessageMapping, EveryPropertyWriteMakesATraceLine) {
  static std::vector<std::string>* lines = nullptr;
  std::vector<std::string> captured;
  lines = &captured;
  QLoggingCategory::setFilterRules("tsruntime.subclass.debug=true");
  const QtMessageHandler previous = qInstallMessageHandler(
      [](QtMsgType, const QMessageLogContext& context, const QString& text) {
        if (lines && std::string(context.category) == "tsruntime.subclass") {
          lines->push_back(text.toStdString());
        }
      });
  TestWindow window;
  std::string journal;
  auto sub = New<GSubclass>();
  auto a = New<Recorder>("A", &journal);
  sub->AttachMessage(a, window.handle(), 15);
  sub->DetachMessage(a, window.handle(), 15);
  qInstallMessageHandler(previous);
  QLoggingCategory::setFilterRules("tsruntime.subclass.debug=false");
  lines = nullptr;

  const QByteArray hwnd = QByteArray::number(window.handle(), 16).toUpper();
  const QByteArray client = QByteArray::number(reinterpret_cast<quintptr>(a.get()), 16).toUpper();
  ASSERT_EQ(captured.size(), 8u);
  const std::string w = hwnd.toStdString(), c = client.toStdString();
  EXPECT_EQ(captured[0], "Changed message count for " + w + " Message 15 to 1");
  EXPECT_EQ(captured[1], "Changed message class for " + w + " Message 15 Index 1 to " + c);
  EXPECT_EQ(captured[2].rfind("Changed Window Proc for " + w + " to ", 0), 0u) << captured[2];
  EXPECT_NE(captured[2].substr(captured[2].size() - 2), " 0");
  EXPECT_EQ(captured[3], "Changed message count for " + w + " to 1");
  EXPECT_EQ(captured[4], "Changed message class for " + w + " Message 15 Index 1 to 0");
  EXPECT_EQ(captured[5], "Changed message count for " + w + " Message 15 to 0");
  EXPECT_EQ(captured[6], "Changed Window Proc for " + w + " to 0");
  EXPECT_EQ(captured[7], "Changed message count for " + w + " to 0");
}

}  // namespace
}  // namespace tsruntime
