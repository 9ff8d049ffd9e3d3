// Window handles: native window ids of this process's widgets, and of other X11 clients.
#pragma once

#include <cstdint>

class QWidget;

namespace tsruntime::subclass_detail {

// The widget of this process whose native window has this id, or null.
QWidget* WidgetOf(int32_t hwnd);

// True when `hwnd` names a window on the X server that is not one of this process's
// widgets; always false off X11.
bool IsForeignWindow(int32_t hwnd);

}  // namespace tsruntime::subclass_detail
