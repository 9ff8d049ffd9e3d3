// The Qt application the module's windows and timers run on.
#pragma once

namespace tsruntime::ui_detail {

// Makes sure a QApplication exists when called on the process's main thread: a host
// with its own keeps it; one without (a script, tsrt) gets one, on the platform that
// QT_QPA_PLATFORM names, else xcb when a display is set (offscreen when it cannot be
// reached), else offscreen. True when the calling thread can run Qt timers and events.
bool EnsureApplication();

// True on the thread that runs the QApplication.
bool OnApplicationThread();

}  // namespace tsruntime::ui_detail
