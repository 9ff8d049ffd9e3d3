#include "tsruntime/WindowMessages.h"

#include <QDebug>
#include <QMetaObject>

#include "subclass_chain.h"
#include "window_lookup.h"
#include "window_properties.h"

namespace tsruntime {

using namespace subclass_detail;

int32_t SendMessage(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) {
  QWidget* widget = WidgetOf(hwnd);
  if (!widget) return 0;
  if (WindowProperties(*widget, hwnd).PreviousProcedure() == 0) {
    return DefaultProcedure(*widget, iMsg, wParam, lParam);
  }
  PreviousProcedure previous(*widget, nullptr);
  return Dispatch(*widget, hwnd, Message{iMsg, wParam, lParam}, previous);
}

bool PostMessage(int32_t hwnd, int32_t iMsg, int32_t wParam, int32_t lParam) {
  QWidget* widget = WidgetOf(hwnd);
  if (!widget) return false;
  // Queued on the widget: dropped if the widget goes first.
  QMetaObject::invokeMethod(
      widget,
      [hwnd, iMsg, wParam, lParam] {
        try {
          SendMessage(hwnd, iMsg, wParam, lParam);
        } catch (const std::exception& e) {
          qWarning("tsruntime: a window procedure failed: %s", e.what());
        }
      },
      Qt::QueuedConnection);
  return true;
}

bool DestroyWindow(int32_t hwnd) {
  QWidget* widget = WidgetOf(hwnd);
  if (!widget) return false;
  DeleteWidget(*widget);
  return true;
}

}  // namespace tsruntime
