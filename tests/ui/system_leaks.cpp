// Libraries that keep memory for the life of a process, not the library's: fontconfig's
// caches once any window has shown text, and the buffer of the session bus that Qt's xcb
// platform opens. The leak checker of sanitized builds is told so.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\nleak:libdbus-1.so\n";
}
