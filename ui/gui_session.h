// Whether a dialog or window shown now can be seen by a user.
#pragma once

namespace tsruntime::ui_detail {

// True when a modal window may be shown: a QApplication runs on this thread (the host's,
// or one made now) on a platform a user can see, or on the one the host chose through
// QT_QPA_PLATFORM (tests choose "offscreen"). False on the offscreen platform the module
// falls back to without a display, so that nothing waits for a user who cannot see it.
bool EnsureGuiSession();

}  // namespace tsruntime::ui_detail
