// Qt events on a hooked widget reach clients as the platform's message numbers, with its
// wParam/lParam packing: sent directly, and as a person at the desktop sends keys and
// moves (XTest) under the us and ru layouts, where key messages name the key, not the
// character, and carry the character in code page 1251. The bookkeeping's trace lines go
// to a logging category.
#include <gtest/gtest.h>

#include <QKeyEvent>
#include <QLoggingCategory>
#include <regex>

#include "tsruntime/WindowMessages.h"
#include "ui_support.h"

namespace tsruntime {
namespace {

using testing::Recorder;
using testing::TestWindow;

// A client on `messages` of the window that journals "msg,wParam,lParam" each.
struct Listener {
  Listener(int32_t h, std::vector<int32_t> msgs) : handle(h), messages(std::move(msgs)) {
    client->with_message = client->with_params = true;
    for (int32_t m : messages) sub->AttachMessage(client, handle, m);
  }
  ~Listener() { for (int32_t m : messages) sub->DetachMessage(client, handle, m); }
  int32_t handle;
  std::vector<int32_t> messages;
  std::string journal;
  Ref<GSubclass> sub = New<GSubclass>();
  Ref<Recorder> client = New<Recorder>("", &journal);
};

QMouseEvent* Mouse(QEvent::Type type, QPoint at, Qt::MouseButton button, Qt::MouseButtons held,
                   Qt::KeyboardModifiers keys = Qt::NoModifier) {
  return new QMouseEvent(type, at, at + QPoint(100, 100), button, held, keys);
}
// A key press as the xcb platform delivers it: the X keycode is the Linux input code + 8.
QKeyEvent* Key(int key, Qt::KeyboardModifiers held, quint32 input_code, const char8_t* text) {
  return new QKeyEvent(QEvent::KeyPress, key, held, input_code + 8, 0, 0, QString::fromUtf8(text));
}
QKeyEvent* Plain(QEvent::Type type, int key, Qt::KeyboardModifiers held, const QString& text = {},
                 bool repeated = false) {
  return new QKeyEvent(type, key, held, text, repeated);
}

TEST(MessageMapping, QtEventsArriveAsThePlatformsMessages) {
  constexpr auto kNone = Qt::NoModifier;
  constexpr auto kPress = QEvent::KeyPress;
  constexpr auto kCtrl = Qt::ControlModifier;
  constexpr auto kLeft = Qt::LeftButton;
  const struct {
    const char* what;
    std::function<QEvent*()> event;
    std::string messages;  // "msg,wParam,lParam" each
  } rows[] = {
      {"a move to (10, 20)", [] { return new QMoveEvent({10, 20}, {}); }, "3,0,1310730"},
      {"a move to (-1, 2) packs 16 bits each", [] { return new QMoveEvent({-1, 2}, {}); }, "3,0,196607"},
      {"a resize to 300 x 200", [] { return new QResizeEvent({300, 200}, {}); }, "5,0,13107500"},
      {"focus in", [] { return new QFocusEvent(QEvent::FocusIn); }, "7,0,0"},
      {"focus out", [] { return new QFocusEvent(QEvent::FocusOut); }, "8,0,0"},
      {"paint", [] { return new QPaintEvent(QRect(0, 0, 5, 5)); }, "15,0,0"},
      {"close", [] { return new QCloseEvent(); }, "16,0,0"},
      {"show", [] { return new QShowEvent(); }, "24,1,0"},
      {"hide", [] { return new QHideEvent(); }, "24,0,0"},
      {"key A with text: key down then char", [] { return Plain(kPress, Qt::Key_A, kNone, "a"); }, "256,65,1 258,97,1"},
      // An auto-repeated Cyrillic key without a scan code: no code, the character in 1251.
      {"repeated ж", [] { return Plain(kPress, 0, kNone, u"ж"_qs, true); }, "256,0,1073741825 258,230,1073741825"},
      {"Ctrl+[ gives ESC", [] { return Key(Qt::Key_BracketLeft, kCtrl, 26, u8"\x1b"); }, "256,219,1703937 258,27,1703937"},
      {"AltGr (Ctrl+Alt) keeps the layout's character", [] { return Key(Qt::Key_E, kCtrl | Qt::AltModifier, 18, u8"€"); },
       "256,69,1179649 258,136,1179649"},
      {"a character 1251 lacks is '?'", [] { return Key(Qt::Key_A, kNone, 30, u8"ä"); }, "256,65,1966081 258,63,1966081"},
      {"keypad 7: its Qt key", [] { return Key(Qt::Key_7, Qt::KeypadModifier, 71, u8"7"); }, "256,103,4653057 258,55,4653057"},
      {"F5 has no text", [] { return Plain(kPress, Qt::Key_F5, kNone); }, "256,116,1"},
      {"key up of Escape", [] { return Plain(QEvent::KeyRelease, Qt::Key_Escape, kNone); }, "257,27,-1073741823"},
      {"an auto-repeated key up is not the platform's", [] { return Plain(QEvent::KeyRelease, Qt::Key_A, kNone, "a", true); }, ""},
      {"timer 7", [] { return new QTimerEvent(7); }, "275,7,0"},
      {"move, left held, shift", [] { return Mouse(QEvent::MouseMove, {5, 6}, Qt::NoButton, kLeft, Qt::ShiftModifier); }, "512,5,393221"},
      {"left press", [] { return Mouse(QEvent::MouseButtonPress, {1, 2}, kLeft, kLeft); }, "513,1,131073"},
      {"left release", [] { return Mouse(QEvent::MouseButtonRelease, {1, 2}, kLeft, {}); }, "514,0,131073"},
      {"left double click", [] { return Mouse(QEvent::MouseButtonDblClick, {1, 2}, kLeft, kLeft); }, "515,1,131073"},
      {"right press with ctrl", [] { return Mouse(QEvent::MouseButtonPress, {}, Qt::RightButton, Qt::RightButton, kCtrl); }, "516,10,0"},
      {"middle press", [] { return Mouse(QEvent::MouseButtonPress, {}, Qt::MiddleButton, Qt::MiddleButton); }, "519,16,0"},
      {"a wheel notch towards the user, at screen (30, 40)", [] {
         return new QWheelEvent(QPointF(1, 1), QPointF(30, 40), QPoint(), QPoint(0, -120), Qt::NoButton, kNone, Qt::NoScrollPhase, false);
       }, "522,-7864320,2621470"},
  };
  TestWindow window;
  Listener listener(window.handle(), {3, 5, 7, 8, 15, 16, 24, 256, 257, 258, 275, 512, 513, 514,
                                      515, 516, 517, 518, 519, 520, 521, 522});
  for (const auto& row : rows) {
    listener.journal.clear();
    std::unique_ptr<QEvent> event(row.event());
    QCoreApplication::sendEvent(window.widget, event.get());
    EXPECT_EQ(listener.journal, row.messages) << row.what;
  }
}

TEST(MessageMapping, KeysFromTheDesktopNameThePhysicalKeyWhateverTheLayout) {
  TestWindow window;
  ASSERT_TRUE(testing::ShowActive(*window.widget));
  Listener listener(window.handle(), {wm::kKeyDown, wm::kKeyUp, wm::kChar});
  const struct {
    const char* what;
    int group;  // 0 us, 1 ru
    std::vector<unsigned> keys;
    std::string messages;
  } rows[] = {
      {"ф is typed on the key of A: A's code, 0xF4", 1, {30}, "256,65,1966081 258,244,1966081 257,65,-1071775743"},
      {"a under the US layout", 0, {30}, "256,65,1966081 258,97,1966081 257,65,-1071775743"},
      // Ctrl (input code 29) and C (46): the codes, the control character, the scan codes.
      {"Ctrl+С under the Russian layout is Ctrl+C", 1, {29, 46},
       "256,17,1900545 256,67,3014657 258,3,3014657 257,67,-1070727167 257,17,-1071841279"},
      {"ё on the key left of 1: its code, 0xB8", 1, {41}, "256,192,2686977 258,184,2686977 257,192,-1071054847"},
      {"Shift+3 under the Russian layout types № (0xB9) on the key of 3", 1, {42, 4},
       "256,16,2752513 256,51,262145 258,185,262145 257,51,-1073479679 257,16,-1070989311"},
  };
  for (const auto& row : rows) {
    ASSERT_TRUE(testing::LockGroup(row.group)) << row.what;
    listener.journal.clear();
    testing::Chord(row.keys);
    const auto commas = [](const std::string& s) { return std::count(s.begin(), s.end(), ','); };
    testing::PumpUntil([&] { return commas(listener.journal) >= commas(row.messages); });
    testing::PumpFor(50);  // nothing more comes
    EXPECT_EQ(listener.journal, row.messages) << row.what;
  }
  testing::LockGroup(0);
}

// A widget that does not track the mouse itself, and one that does and keeps doing so.
// Each moves to another point: Qt drops a move to where the pointer last was.
TEST(MessageMapping, MouseMovesFromTheDesktopReachAClientWithoutAButtonHeld) {
  for (const bool tracking_of_its_own : {false, true}) {
    TestWindow window;
    window.widget->setMouseTracking(tracking_of_its_own);
    window.widget->resize(200, 150);
    ASSERT_TRUE(testing::ShowActive(*window.widget));
    const std::string message = tracking_of_its_own ? "512,0,2687007" : "512,0,2621470";  // (31, 41), (30, 40)
    {
      Listener listener(window.handle(), {wm::kMouseMove});
      testing::MovePointer(0, 0, 0);
      testing::PumpFor(50);
      testing::MovePointer(window.widget->winId(), 30 + tracking_of_its_own, 40 + tracking_of_its_own);
      EXPECT_TRUE(testing::PumpUntil([&] { return listener.journal.find(message) != std::string::npos; }))
          << "tracking " << tracking_of_its_own << ": no move without a button held in \"" << listener.journal << "\"";
    }
    EXPECT_EQ(window.widget->hasMouseTracking(), tracking_of_its_own);
  }
}

TEST(MessageMapping, AKeyPressIsHandledByTheWidgetOnceWhicheverMessageLetsItThrough) {
  const struct {
    const char* what;
    EMsgResponse key_down, chr;
    int widget_saw_it;
  } rows[] = {
      {"both consumed", emrConsume, emrConsume, 0},
      {"key down preprocessed", emrPreprocess, emrConsume, 1},
      {"both let through: still once", emrPreprocess, emrPostProcess, 1},
  };
  struct Counter : QWidget {
    int seen = 0;
    void keyPressEvent(QKeyEvent*) override { ++seen; }
  };
  for (const auto& row : rows) {
    Counter widget;
    const int32_t h = static_cast<int32_t>(widget.winId());
    std::string journal;
    auto sub = New<GSubclass>();
    auto down = New<Recorder>("down", &journal, 0, row.key_down), chr = New<Recorder>("char", &journal, 0, row.chr);
    sub->AttachMessage(down, h, wm::kKeyDown);
    sub->AttachMessage(chr, h, wm::kChar);
    QKeyEvent key(QEvent::KeyPress, Qt::Key_B, Qt::NoModifier, "b");
    QCoreApplication::sendEvent(&widget, &key);
    EXPECT_EQ(journal, "down char") << row.what;
    EXPECT_EQ(widget.seen, row.widget_saw_it) << row.what;
  }
}

TEST(MessageMapping, EveryPropertyWriteMakesATraceLine) {
  static std::string trace;
  QLoggingCategory::setFilterRules("tsruntime.subclass.debug=true");
  const QtMessageHandler previous = qInstallMessageHandler([](QtMsgType, const QMessageLogContext& c, const QString& text) {
    if (std::string(c.category) == "tsruntime.subclass") trace += text.toStdString() + "\n";
  });
  TestWindow window;
  std::string journal;
  auto sub = New<GSubclass>();
  auto a = New<Recorder>("A", &journal);
  sub->AttachMessage(a, window.handle(), 15);
  sub->DetachMessage(a, window.handle(), 15);
  qInstallMessageHandler(previous);
  QLoggingCategory::setFilterRules("tsruntime.subclass.debug=false");
  const std::string hex = QByteArray::number(window.handle(), 16).toUpper().toStdString();
  const std::string c = QByteArray::number(reinterpret_cast<quintptr>(a.get()), 16).toUpper().toStdString();
  const std::string w = "Changed message count for " + hex;
  // The procedure's address is not 0.
  EXPECT_EQ(std::regex_replace(trace, std::regex("(Proc for " + hex + " to )[1-9A-F][0-9A-F]*"), "$1P"),
            w + " Message 15 to 1\nChanged message class for " + hex + " Message 15 Index 1 to " + c +
                "\nChanged Window Proc for " + hex + " to P\n" + w + " to 1\nChanged message class for " + hex +
                " Message 15 Index 1 to 0\n" + w + " Message 15 to 0\nChanged Window Proc for " + hex + " to 0\n" + w +
                " to 0\n");
}

}  // namespace
}  // namespace tsruntime
