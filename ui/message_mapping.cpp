#include "message_mapping.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QMoveEvent>
#include <QPlatformSurfaceEvent>
#include <QResizeEvent>
#include <QTimerEvent>
#include <QWheelEvent>
#include <QWidget>

#include "key_codes.h"
#include "tsruntime/WindowMessages.h"

namespace tsruntime::subclass_detail {
namespace {

constexpr int32_t kMkLeft = 0x01, kMkRight = 0x02, kMkShift = 0x04, kMkControl = 0x08,
                  kMkMiddle = 0x10;

int32_t MouseKeys(Qt::MouseButtons buttons, Qt::KeyboardModifiers modifiers) {
  int32_t keys = 0;
  if (buttons & Qt::LeftButton) keys |= kMkLeft;
  if (buttons & Qt::RightButton) keys |= kMkRight;
  if (buttons & Qt::MiddleButton) keys |= kMkMiddle;
  if (modifiers & Qt::ShiftModifier) keys |= kMkShift;
  if (modifiers & Qt::ControlModifier) keys |= kMkControl;
  return keys;
}

// Down, up, double click of the left button; right and middle follow at +3 and +6.
int32_t ButtonBase(Qt::MouseButton button) {
  switch (button) {
    case Qt::LeftButton: return 0;
    case Qt::RightButton: return 3;
    case Qt::MiddleButton: return 6;
    default: return -1;
  }
}

Message MouseMessage(const QMouseEvent& e, int32_t msg) {
  const QPoint at = e.position().toPoint();
  return {msg, MouseKeys(e.buttons(), e.modifiers()), MakeLong(at.x(), at.y())};
}

int32_t KeyLParam(const QKeyEvent& e, bool up) {
  const int32_t scan = static_cast<int32_t>(e.nativeScanCode() >= 8 ? e.nativeScanCode() - 8 : 0);
  int32_t l = 1 | (scan & 0xFF) << 16;
  if (up) return l | static_cast<int32_t>(0xC0000000u);
  if (e.isAutoRepeat()) l |= 1 << 30;
  return l;
}

int32_t SizeKind(const QWidget& w) {
  if (w.windowState() & Qt::WindowMinimized) return 1;
  if (w.windowState() & Qt::WindowMaximized) return 2;
  return 0;
}

}  // namespace

int32_t MakeLong(int32_t low, int32_t high) {
  return static_cast<int32_t>((static_cast<uint32_t>(low) & 0xFFFFu) |
                              (static_cast<uint32_t>(high) & 0xFFFFu) << 16);
}

std::vector<Message> MessagesFor(const QWidget& widget, QEvent& event) {
  switch (event.type()) {
    case QEvent::PlatformSurface:
      if (static_cast<QPlatformSurfaceEvent&>(event).surfaceEventType() ==
          QPlatformSurfaceEvent::SurfaceAboutToBeDestroyed) {
        return {{wm::kDestroy, 0, 0}};
      }
      return {};
    case QEvent::Move: {
      const QPoint at = static_cast<QMoveEvent&>(event).pos();
      return {{wm::kMove, 0, MakeLong(at.x(), at.y())}};
    }
    case QEvent::Resize: {
      const QSize size = static_cast<QResizeEvent&>(event).size();
      return {{wm::kSize, SizeKind(widget), MakeLong(size.width(), size.height())}};
    }
    case QEvent::FocusIn: return {{wm::kSetFocus, 0, 0}};
    case QEvent::FocusOut: return {{wm::kKillFocus, 0, 0}};
    case QEvent::Paint: return {{wm::kPaint, 0, 0}};
    case QEvent::Close: return {{wm::kClose, 0, 0}};
    case QEvent::Show: return {{wm::kShowWindow, 1, 0}};
    case QEvent::Hide: return {{wm::kShowWindow, 0, 0}};
    case QEvent::KeyPress: {
      const auto& key = static_cast<QKeyEvent&>(event);
      const int32_t l = KeyLParam(key, false);
      const int32_t vk = VirtualKey(key);
      std::vector<Message> out{{wm::kKeyDown, vk, l}};
      for (int32_t code : CharacterCodes(key, vk)) out.push_back({wm::kChar, code, l});
      return out;
    }
    case QEvent::KeyRelease: {
      const auto& key = static_cast<QKeyEvent&>(event);
      if (key.isAutoRepeat()) return {};  // the platform repeats key downs only
      return {{wm::kKeyUp, VirtualKey(key), KeyLParam(key, true)}};
    }
    case QEvent::Timer:
      return {{wm::kTimer, static_cast<QTimerEvent&>(event).timerId(), 0}};
    case QEvent::MouseMove:
      return {MouseMessage(static_cast<QMouseEvent&>(event), wm::kMouseMove)};
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick: {
      const auto& mouse = static_cast<QMouseEvent&>(event);
      const int32_t base = ButtonBase(mouse.button());
      if (base < 0) return {};
      const int32_t step = event.type() == QEvent::MouseButtonPress     ? 0
                           : event.type() == QEvent::MouseButtonRelease ? 1
                                                                        : 2;
      return {MouseMessage(mouse, wm::kLButtonDown + base + step)};
    }
    case QEvent::Wheel: {
      const auto& wheel = static_cast<QWheelEvent&>(event);
      const QPoint at = wheel.globalPosition().toPoint();
      return {{wm::kMouseWheel,
               MakeLong(MouseKeys(wheel.buttons(), wheel.modifiers()), wheel.angleDelta().y()),
               MakeLong(at.x(), at.y())}};
    }
    default: return {};
  }
}

}  // namespace tsruntime::subclass_detail
