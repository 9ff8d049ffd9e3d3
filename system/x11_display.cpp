#include "x11_display.h"

#include <X11/XKBlib.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <dlfcn.h>

namespace tsruntime::x11 {
namespace {

// The entry points used, resolved once per process from libX11.so.6.
struct Library {
  decltype(&::XOpenDisplay) OpenDisplay = nullptr;
  decltype(&::XCloseDisplay) CloseDisplay = nullptr;
  decltype(&::XDefaultRootWindow) RootWindowOf = nullptr;
  decltype(&::XInternAtom) InternAtom = nullptr;
  decltype(&::XGetWindowProperty) GetWindowProperty = nullptr;
  decltype(&::XFree) Free = nullptr;
  decltype(&::XQueryPointer) QueryPointer = nullptr;
  decltype(&::XSync) Sync = nullptr;
  decltype(&::XkbGetState) GetState = nullptr;
  decltype(&::XkbLockGroup) LockGroup = nullptr;
  bool loaded = false;
};

template <class F>
bool Resolve(void* handle, const char* name, F& fn) {
  fn = reinterpret_cast<F>(dlsym(handle, name));
  return fn != nullptr;
}

const Library& X() {
  static const Library lib = [] {
    Library l;
    // Kept loaded for the life of the process: unloading Xlib is not safe.
    void* h = dlopen("libX11.so.6", RTLD_NOW | RTLD_LOCAL);
    if (!h) return l;
    l.loaded =
        Resolve(h, "XOpenDisplay", l.OpenDisplay) && Resolve(h, "XCloseDisplay", l.CloseDisplay) &&
        Resolve(h, "XDefaultRootWindow", l.RootWindowOf) &&
        Resolve(h, "XInternAtom", l.InternAtom) &&
        Resolve(h, "XGetWindowProperty", l.GetWindowProperty) && Resolve(h, "XFree", l.Free) &&
        Resolve(h, "XQueryPointer", l.QueryPointer) && Resolve(h, "XSync", l.Sync) &&
        Resolve(h, "XkbGetState", l.GetState) && Resolve(h, "XkbLockGroup", l.LockGroup);
    return l;
  }();
  return lib;
}

::Display* D(void* c) { return static_cast<::Display*>(c); }

}  // namespace

std::unique_ptr<Display> Display::Open() {
  const Library& x = X();
  if (!x.loaded) return nullptr;
  ::Display* d = x.OpenDisplay(nullptr);
  if (!d) return nullptr;
  return std::unique_ptr<Display>(new Display(d));
}

Display::~Display() { X().CloseDisplay(D(connection_)); }

std::vector<std::string> Display::GroupLayouts() {
  const Library& x = X();
  // setxkbmap records its names on the root window: rules, model, layouts, variants,
  // options, each ending in a zero byte.
  const Atom names = x.InternAtom(D(connection_), "_XKB_RULES_NAMES", True);
  if (names == None) return {};
  Atom type = None;
  int format = 0;
  unsigned long count = 0, after = 0;
  unsigned char* data = nullptr;
  if (x.GetWindowProperty(D(connection_), x.RootWindowOf(D(connection_)), names, 0, 1024, False,
                          XA_STRING, &type, &format, &count, &after, &data) != Success ||
      !data) {
    return {};
  }
  const std::string all(reinterpret_cast<char*>(data), count);
  x.Free(data);
  size_t start = 0;
  for (int field = 0; field < 2 && start != std::string::npos; ++field) {
    start = all.find('\0', start);
    if (start != std::string::npos) ++start;
  }
  if (start == std::string::npos || start >= all.size()) return {};
  const std::string list = all.substr(start, all.find('\0', start) - start);
  std::vector<std::string> layouts;
  for (size_t from = 0;;) {
    const size_t comma = list.find(',', from);
    layouts.push_back(list.substr(from, comma - from));
    if (comma == std::string::npos) return layouts;
    from = comma + 1;
  }
}

std::optional<int> Display::ActiveGroup() {
  XkbStateRec state{};
  if (X().GetState(D(connection_), XkbUseCoreKbd, &state) != Success) return std::nullopt;
  return state.group;
}

bool Display::LockGroup(int group) {
  const Library& x = X();
  if (!x.LockGroup(D(connection_), XkbUseCoreKbd, static_cast<unsigned>(group))) return false;
  x.Sync(D(connection_), False);
  return true;
}

std::optional<std::pair<int, int>> Display::Pointer() {
  const Library& x = X();
  Window root = 0, child = 0;
  int root_x = 0, root_y = 0, win_x = 0, win_y = 0;
  unsigned mask = 0;
  if (!x.QueryPointer(D(connection_), x.RootWindowOf(D(connection_)), &root, &child, &root_x,
                      &root_y, &win_x, &win_y, &mask)) {
    return std::nullopt;
  }
  return std::pair{root_x, root_y};
}

}  // namespace tsruntime::x11
