// Whether a dialog or window shown now can be seen, and so answered, by a person.
#pragma once

namespace tsruntime::ui_detail {

// True when a modal window may be shown: a QApplication runs on this thread (the host's,
// or one made now) on a platform that puts windows on a screen. False without a display,
// when the platform asked for could not start (the module's application then runs on
// offscreen), and on the offscreen and minimal platforms even when the host chose them:
// nobody could see, answer or close a window there, so nothing waits for one.
bool EnsureGuiSession();

}  // namespace tsruntime::ui_detail
