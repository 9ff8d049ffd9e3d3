#include "gui_session.h"

#include <QApplication>
#include <cstdlib>

#include "application.h"

namespace tsruntime::ui_detail {
namespace {

bool Named(const char* variable) {
  const char* value = std::getenv(variable);
  return value && *value;
}

}  // namespace

bool EnsureGuiSession() {
  // Without a display an application would only be made to be refused below.
  if (!QCoreApplication::instance() && !Named("QT_QPA_PLATFORM") && !Named("DISPLAY") &&
      !Named("WAYLAND_DISPLAY"))
    return false;
  if (!EnsureApplication() || !OnApplicationThread()) return false;
  if (!qobject_cast<QApplication*>(QCoreApplication::instance())) return false;  // no widgets
  const QString platform = QGuiApplication::platformName();
  return platform != u"offscreen" && platform != u"minimal";
}

}  // namespace tsruntime::ui_detail
