#include "application.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QThread>
#include <cstdlib>
#include <cstring>

#include "tsruntime/automation/modules.h"

namespace tsruntime::ui_detail {
namespace {

bool OnMainThread() { return syscall(SYS_gettid) == getpid(); }

bool platform_list_is_ours = false;

// The platform for an application we create: the host's choice when it made one, else a
// list Qt tries in order, so that a missing display falls back instead of aborting.
const char* PlatformList() {
  const char* chosen = std::getenv("QT_QPA_PLATFORM");
  if (chosen && *chosen) return chosen;
  platform_list_is_ours = true;
  const char* display = std::getenv("DISPLAY");
  if (display && *display) return "xcb;offscreen";
  return "offscreen";
}

// Start-up noise means nothing to a host that never asked for Qt and would only clutter the
// standard error of scripts and tsrt: Qt's complaint about a missing XDG_RUNTIME_DIR, and
// when the platform list is ours, the failure of a platform that the next one replaces.
QtMessageHandler previous_handler = nullptr;
void QuietStartup(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (text.startsWith(QLatin1String("QStandardPaths: "))) return;
  if (platform_list_is_ours && type != QtFatalMsg && context.category &&
      std::strncmp(context.category, "qt.qpa", 6) == 0) {
    return;
  }
  if (previous_handler) previous_handler(type, context, text);
}

void PumpEvents() {
  if (!QCoreApplication::instance() || !QAbstractEventDispatcher::instance()) return;
  QCoreApplication::sendPostedEvents();
  QCoreApplication::processEvents(QEventLoop::AllEvents);
  // Deletions asked for by deleteLater wait for a loop level that a pump never leaves.
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
}

[[maybe_unused]] const bool pump_installed = (SetMessagePump(&PumpEvents), true);

}  // namespace

bool EnsureApplication() {
  if (!QCoreApplication::instance() && OnMainThread()) {
    // Qt keeps references to argc and argv for the life of the application, which lives
    // as long as the process: never destroyed, since a host may still hold windows.
    static int argc = 3;
    static char name[] = "tsruntime";
    static char platform_flag[] = "-platform";
    static char* argv[] = {name, platform_flag, const_cast<char*>(PlatformList()), nullptr};
    previous_handler = qInstallMessageHandler(&QuietStartup);
    static QApplication* application = new QApplication(argc, argv);
    (void)application;
    qInstallMessageHandler(previous_handler);
  }
  return QAbstractEventDispatcher::instance(QThread::currentThread()) != nullptr;
}

bool OnApplicationThread() {
  const QCoreApplication* app = QCoreApplication::instance();
  return app && app->thread() == QThread::currentThread();
}

}  // namespace tsruntime::ui_detail
