// Allocations that system libraries make once per process and never free: fontconfig's
// caches (any window that shows text) and the session bus connection (xcb). They are not
// the library's; the leak checker of sanitized builds is told so.
extern "C" const char* __lsan_default_suppressions() {
  return "leak:libfontconfig.so\n"
         "leak:libdbus-1.so\n";
}
