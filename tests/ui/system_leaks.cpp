// fontconfig keeps its caches for the life of a process once any window has shown text;
// they are not the library's, and the leak checker of sanitized builds is told so. (The
// children under Xvfb get the session bus's buffer from lsan_suppressions.txt.)
extern "C" const char* __lsan_default_suppressions() { return "leak:libfontconfig.so\n"; }
