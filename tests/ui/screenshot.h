// Pictures of the windows the tests show, for the documentation: with
// TSRUNTIME_SCREENSHOTS naming a folder, Photograph saves the window as a person sees it on
// the test's desktop (frame and title bar included) as <folder>/<name>.png.
#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QGuiApplication>
#include <QScreen>
#include <QWidget>
#include <QWindow>
#include <cstdlib>

namespace tsruntime::testing {

inline void Photograph(QWidget& window, const char* name) {
  const char* folder = std::getenv("TSRUNTIME_SCREENSHOTS");
  if (!folder || !*folder) return;
  // On the screen, painted, and framed by the window manager.
  QElapsedTimer clock;
  clock.start();
  auto shown = [&] {
    return window.windowHandle() && window.windowHandle()->isExposed() &&
           window.frameGeometry() != window.geometry();
  };
  while (!shown() && clock.elapsed() < 3000) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
  clock.restart();
  while (clock.elapsed() < 300) QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
  const QRect frame = window.frameGeometry();
  QGuiApplication::primaryScreen()
      ->grabWindow(0, frame.x(), frame.y(), frame.width(), frame.height())
      .save(QDir(QString::fromLocal8Bit(folder)).filePath(QString::fromLatin1(name) + QStringLiteral(".png")));
}

}  // namespace tsruntime::testing
