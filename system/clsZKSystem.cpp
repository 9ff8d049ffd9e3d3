#include "tsruntime/clsZKSystem.h"

#include <pwd.h>
#include <unistd.h>
#include <uuid/uuid.h>

#include <cmath>
#include <cstring>

#include "keyboard_layouts.h"
#include "object_addresses.h"
#include "tsruntime/automation/codepage.h"
#include "tsruntime/errors.h"
#include "x11_display.h"

namespace tsruntime {
namespace {

// The largest integer a Double holds exactly, and so the largest address it carries.
constexpr double kLargestExactDouble = 9007199254740992.0;

// The active layout's name, as the platform reports it; nothing when it cannot be read.
std::optional<String> ActiveLayoutName(x11::Display& display,
                                       const std::vector<std::string>& layouts) {
  const std::optional<int> group = display.ActiveGroup();
  if (!group) return std::nullopt;
  const auto g = static_cast<size_t>(*group);
  return KeyboardLayoutName(g < layouts.size() ? layouts[g] : std::string());
}

// A name the platform keeps in UTF-8, as the ANSI call hands it over: characters the
// ANSI code page lacks become "?".
String PlatformName(const char* name) { return AnsiRoundTrip(FromUtf8(name)); }

bool EndsWith(StringView text, StringView tail) {
  return text.size() >= tail.size() && text.substr(text.size() - tail.size()) == tail;
}

}  // namespace

bool clsZKSystem::SetKeyboardLayout(int32_t LayoutID) {
  return WithErrorTrap(xcZKERR_SYSTEM_KBDL, "clsZKSystem", "SetKeyboardLayout", [&] {
    const std::unique_ptr<x11::Display> display = x11::Display::Open();
    if (!display) return false;
    const std::vector<std::string> layouts = display->GroupLayouts();
    std::optional<String> name = ActiveLayoutName(*display, layouts);
    if (!name) return false;
    const String start = *name;
    // The identifier is only tested for zero; hosts rely on that.
    const StringView target = LayoutID != 0 ? u"00000419" : u"00000409";
    const int groups = std::max<int>(1, static_cast<int>(layouts.size()));
    // The platform's list is a ring that always leads back to the starting name. Here the
    // active group may lie outside the named ones (a keymap changed under it), and the
    // start then never comes back: one round through the groups is the limit.
    for (int step = 0; step <= groups; ++step) {
      if (EndsWith(*name, target)) return true;
      const std::optional<int> group = display->ActiveGroup();
      if (!group || !display->LockGroup((*group + groups - 1) % groups)) return false;
      name = ActiveLayoutName(*display, layouts);
      if (!name || *name == start) return false;
    }
    return false;
  });
}

Ref<Object> clsZKSystem::ObjectFromPtr(const Variant& lPtr) const {
  const double address = ToDouble(lPtr);
  if (address == 0) return {};
  if (!(address > 0 && address < kLargestExactDouble) || std::trunc(address) != address) {
    return {};
  }
  return Ref<Object>(RememberedObject(static_cast<uintptr_t>(address)));
}

double clsZKSystem::ObjPtr(const Ref<Object>& obj) const {
  return obj ? static_cast<double>(RememberAddress(*obj)) : 0.0;
}

String clsZKSystem::CreateGUID() const {
  uuid_t id;
  uuid_generate(id);
  char text[37];
  uuid_unparse_upper(id, text);
  return FromAscii(text);
}

void clsZKSystem::GetMousePos(int32_t& x, int32_t& Y) const {
  const std::unique_ptr<x11::Display> display = x11::Display::Open();
  if (!display) return;
  if (const auto position = display->Pointer()) {
    x = position->first;
    Y = position->second;
  }
}

String clsZKSystem::GetComputerName() const {
  char name[256] = {};
  if (gethostname(name, sizeof name - 1) != 0) return {};
  return PlatformName(name);
}

String clsZKSystem::GetUserName() const {
  std::vector<char> buffer(16384);
  passwd entry;
  passwd* found = nullptr;
  if (getpwuid_r(geteuid(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found) {
    return {};
  }
  // The platform counts the terminating zero in the length it reports, and hosts get it.
  return PlatformName(found->pw_name) + u'\0';
}

TSRUNTIME_DEFINE_CLASS(clsZKSystem) {
  static const ClassInfo info =
      ClassBuilder<clsZKSystem>("clsZKSystem")
          .Help(u"Services around the running desktop: the keyboard layout, objects from their "
                u"addresses, GUIDs, the pointer position, computer and user names.")
          .Method("SetKeyboardLayout", &clsZKSystem::SetKeyboardLayout,
                  {Opt("LayoutID", int32_t{xcZKKBDL_ENGLISH})})
          .Help(u"Steps back through the keyboard layouts to English for LayoutID 0 or Russian "
                u"for any other value; False without a match or a display.")
          .Get("ObjectFromPtr", &clsZKSystem::ObjectFromPtr, {Typed("lPtr", VarType::kVariant)})
          .Help(u"The object at the address lPtr that ObjPtr gave on this thread, with a new "
                u"reference; Nothing for 0 or an unknown address.")
          .Method("ObjPtr", &clsZKSystem::ObjPtr, {"obj"})
          .Help(u"The address of obj as ObjectFromPtr takes it, a Double holding an integer; 0 "
                u"for Nothing. Adds no reference.")
          .Method("CreateGUID", &clsZKSystem::CreateGUID)
          .Help(u"A new random GUID as 36 upper-case characters in hyphenated groups, no braces.")
          .Method("GetMousePos", &clsZKSystem::GetMousePos, {"x", "Y"})
          .Help(u"The pointer's screen position in pixels into x and Y; both kept when there is "
                u"no display.")
          .Method("GetComputerName", &clsZKSystem::GetComputerName)
          .Help(u"The host name; \"\" on failure.")
          .Method("GetUserName", &clsZKSystem::GetUserName)
          .Help(u"The user's login name followed by one zero character; \"\" on failure.")
          .Build();
  return info;
}

namespace {
const EnumInfo kKeyboardLayouts{
    u"xeZK_KEYBOARD_LAYOUT",
    {{u"xcZKKBDL_ENGLISH", xcZKKBDL_ENGLISH,
      u"The English layout's identifier 409; SetKeyboardLayout selects Russian for it."},
     {u"xcZKKBDL_RUSSIAN", xcZKKBDL_RUSSIAN, u"The Russian layout's identifier 419."}},
    u"Keyboard layout identifiers for clsZKSystem.SetKeyboardLayout."};
[[maybe_unused]] const bool registered = RegisterEnum(kKeyboardLayouts);
}  // namespace

}  // namespace tsruntime
