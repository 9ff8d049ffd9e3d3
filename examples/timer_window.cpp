// A Qt host that opens a window, subclasses it and runs a timer:
//   - a CTimer ticks every 200 ms and the window shows the count;
//   - an ISubclass client watches the window's mouse clicks and key presses, and keeps
//     the window from closing the first time (it consumes WM_CLOSE once).
//
//   timer_window                      runs until the window is closed twice
//   timer_window --screenshot out.png takes a picture of the screen after a few ticks
#include <QApplication>
#include <QGuiApplication>
#include <QLabel>
#include <QPixmap>
#include <QScreen>
#include <QTimer>
#include <QVBoxLayout>
#include <QWidget>
#include <cstring>

#include <tsruntime/CTimer.h>
#include <tsruntime/GSubclass.h>
#include <tsruntime/WindowMessages.h>

namespace {

using namespace tsruntime;

class Watcher : public ISubclass {
 public:
  explicit Watcher(QLabel* log) : log_(log) {}

  int32_t WindowProc(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) override {
    switch (iMsg) {
      case wm::kLButtonDown:
        Show("left click at (" + QString::number(lParam & 0xFFFF) + ", " +
             QString::number(lParam >> 16) + ")");
        break;
      case wm::kKeyDown:
        Show("key down, virtual key " + QString::number(wParam));
        break;
      case wm::kClose:
        if (++closes_ == 1) {
          Show("close refused once: close again to quit");
          return 0;  // consumed: the window stays
        }
        return CallOld(hwnd, iMsg, wParam, lParam);
    }
    return 0;
  }

 private:
  void Show(const QString& text) { log_->setText("Subclassed: " + text); }
  int32_t CallOld(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) {
    return New<GSubclass>()->CallOldWindowProc(hwnd, iMsg, wParam, lParam);
  }
  QLabel* log_;
  int closes_ = 0;
};

}  // namespace

int main(int argc, char** argv) {
  QApplication app(argc, argv);
  const char* screenshot = argc == 3 && std::strcmp(argv[1], "--screenshot") == 0 ? argv[2] : nullptr;

  QWidget window;
  window.setWindowTitle("TSRuntimeLib: timer and subclassing");
  window.setStyleSheet("QWidget { background: #f4f1e8; } QLabel { font-size: 16px; }");
  auto* layout = new QVBoxLayout(&window);
  auto* ticks = new QLabel("CTimer: not started");
  auto* log = new QLabel("Subclassed: click or type in this window");
  auto* handle = new QLabel;
  for (QLabel* l : {ticks, log, handle}) layout->addWidget(l);
  window.resize(460, 160);
  window.move(40, 40);
  window.show();
  const auto hwnd = static_cast<int32_t>(window.winId());
  handle->setText("Window handle: " + QString::number(hwnd) + " (0x" +
                  QString::number(hwnd, 16).toUpper() + ")");

  auto sub = New<GSubclass>();
  auto watcher = New<Watcher>(log);
  for (int32_t msg : {wm::kLButtonDown, wm::kKeyDown, wm::kClose}) sub->AttachMessage(watcher, hwnd, msg);

  auto timer = New<CTimer>();
  int count = 0;
  timer->OnThatTime([&] {
    ticks->setText("CTimer: ThatTime #" + QString::number(++count) + " every " +
                   QString::number(timer->Interval()) + " ms");
    if (screenshot && count == 5) {
      // A click and a key, as a user would give them, through the subclassed window.
      SendMessage(hwnd, wm::kLButtonDown, 1, 120 | 30 << 16);
      QTimer::singleShot(300, &app, [&] {  // once the labels have been painted
        QGuiApplication::primaryScreen()->grabWindow(0).save(screenshot);
        app.quit();
      });
    }
  });
  timer->LetInterval(200);

  const int status = app.exec();
  timer->LetInterval(0);
  for (int32_t msg : {wm::kLButtonDown, wm::kKeyDown, wm::kClose}) sub->DetachMessage(watcher, hwnd, msg);
  return status;
}
