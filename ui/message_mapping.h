// Qt events as the original platform's window messages (the table in WindowMessages.h).
#pragma once

#include <cstdint>
#include <vector>

class QEvent;
class QWidget;

namespace tsruntime::subclass_detail {

struct Message {
  int32_t msg = 0;
  int32_t wParam = 0;
  int32_t lParam = 0;
};

// The messages an event on `widget` stands for, in order: none for an event outside the
// table, two or more for a key press with text (256 then one 258 per character code, see
// key_codes.h).
std::vector<Message> MessagesFor(const QWidget& widget, QEvent& event);

// Low word x, high word y, each cut to 16 bits as the platform packs them.
int32_t MakeLong(int32_t low, int32_t high);

}  // namespace tsruntime::subclass_detail
