#include "window_lookup.h"

#include <xcb/xcb.h>

#include <QGuiApplication>
#include <QWidget>
#include <cstdlib>

namespace tsruntime::subclass_detail {

QWidget* WidgetOf(int32_t hwnd) {
  if (hwnd == 0 || !QCoreApplication::instance()) return nullptr;
  return QWidget::find(static_cast<WId>(static_cast<uint32_t>(hwnd)));
}

bool IsForeignWindow(int32_t hwnd) {
  if (hwnd == 0 || WidgetOf(hwnd)) return false;
  auto* app = qGuiApp;
  if (!app) return false;
  auto* x11 = app->nativeInterface<QNativeInterface::QX11Application>();
  if (!x11 || !x11->connection()) return false;
  xcb_connection_t* connection = x11->connection();
  // Asking for the window's attributes fails with BadWindow for an id that names none.
  xcb_generic_error_t* error = nullptr;
  xcb_get_window_attributes_reply_t* reply = xcb_get_window_attributes_reply(
      connection, xcb_get_window_attributes(connection, static_cast<xcb_window_t>(hwnd)),
      &error);
  const bool exists = reply != nullptr;
  std::free(reply);
  std::free(error);
  return exists;
}

}  // namespace tsruntime::subclass_detail
