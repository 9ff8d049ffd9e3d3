// The Qt application the module's windows and timers run on.
#pragma once

namespace tsruntime::ui_detail {

// Makes sure a QApplication exists when called on the process's main thread: a host
// with its own keeps it; one without (a script, tsrt) gets one, on the platform that
// QT_QPA_PLATFORM names, else xcb when a display is set; whichever platform cannot start
// (no display, no such plugin) gives way to offscreen, so that nothing aborts the host.
// Qt's translations for the user's locale are loaded into the application once.
// True when the calling thread can run Qt timers and events: any thread once the
// application exists (a host thread gets an event dispatcher of its own here). A thread
// other than the main one that finds no application is left untouched, so that Qt
// never takes it for the main thread, and gets false.
bool EnsureApplication();

// True on the thread that runs the QApplication.
bool OnApplicationThread();

}  // namespace tsruntime::ui_detail
