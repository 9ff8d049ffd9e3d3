#include "application.h"

#include <sys/syscall.h>
#include <unistd.h>

#include <QAbstractEventDispatcher>
#include <QApplication>
#include <QEventLoop>
#include <QLibraryInfo>
#include <QLocale>
#include <QThread>
#include <QTranslator>
#include <cstdlib>
#include <cstring>
#include <string>

namespace tsruntime::ui_detail {
namespace {

bool OnMainThread() { return syscall(SYS_gettid) == getpid(); }

// The platforms Qt tries in order for an application we create: the host's choice, else
// xcb when a display is named; offscreen last, so that a platform that cannot start falls
// back instead of aborting the host.
const char* PlatformList() {
  static std::string list;
  const char* chosen = std::getenv("QT_QPA_PLATFORM");
  const char* display = std::getenv("DISPLAY");
  if (chosen && *chosen) {
    list = std::string(chosen) + ";offscreen";
  } else if (display && *display) {
    list = "xcb;offscreen";
  } else {
    list = "offscreen";
  }
  return list.c_str();
}

// Start-up noise means nothing to a host that never asked for Qt and would only clutter the
// standard error of scripts and tsrt: Qt's complaint about a missing XDG_RUNTIME_DIR, and
// the failure of a platform that the next one replaces.
QtMessageHandler previous_handler = nullptr;
void QuietStartup(QtMsgType type, const QMessageLogContext& context, const QString& text) {
  if (text.startsWith(QLatin1String("QStandardPaths: "))) return;
  if (type != QtFatalMsg && context.category && std::strncmp(context.category, "qt.qpa", 6) == 0)
    return;
  if (previous_handler) previous_handler(type, context, text);
}

// Qt 6 names file types ("Folder", "Drive") under a context of their own, which its
// translations do not have yet; they have the same texts under the file dialog's.
class FileTypeNames : public QTranslator {
 public:
  FileTypeNames(const QTranslator& qt, QObject* parent) : QTranslator(parent), qt_(qt) {}
  QString translate(const char* context, const char* source, const char* disambiguation,
                    int n) const override {
    if (std::strcmp(context, "QAbstractFileIconProvider") != 0) return QString();
    return qt_.translate("QFileDialog", source, disambiguation, n);
  }
  bool isEmpty() const override { return false; }

 private:
  const QTranslator& qt_;
};

// Qt's own texts (the standard dialogs' labels and buttons) in the user's language, as the
// platform's dialogs are; a host's translators installed later take precedence.
void LoadQtTranslations(QCoreApplication& app) {
  static bool loaded = false;
  if (loaded) return;
  loaded = true;
  auto* translator = new QTranslator(&app);
  if (!translator->load(QLocale(), QStringLiteral("qtbase"), QStringLiteral("_"),
                        QLibraryInfo::path(QLibraryInfo::TranslationsPath))) {
    delete translator;
    return;
  }
  QCoreApplication::installTranslator(translator);
  QCoreApplication::installTranslator(new FileTypeNames(*translator, &app));
}

}  // namespace

bool EnsureApplication() {
  if (!QCoreApplication::instance()) {
    if (!OnMainThread()) return false;
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
  if (OnApplicationThread()) LoadQtTranslations(*QCoreApplication::instance());
  // A thread Qt did not start has no event dispatcher until an event loop asks for one.
  if (!QAbstractEventDispatcher::instance(QThread::currentThread())) {
    QEventLoop make_dispatcher;
  }
  return QAbstractEventDispatcher::instance(QThread::currentThread()) != nullptr;
}

bool OnApplicationThread() {
  const QCoreApplication* app = QCoreApplication::instance();
  return app && app->thread() == QThread::currentThread();
}

}  // namespace tsruntime::ui_detail
