// clsZKSystem: small services around the running desktop: the keyboard layout, objects
// from their addresses, GUIDs, the pointer position, the computer and user names.
//
//   auto sys = tsruntime::New<tsruntime::clsZKSystem>();
//   sys->SetKeyboardLayout(0);   // English active; True
//   sys->CreateGUID();           // "1B4E28BA-2FA1-4D2E-883F-0016D3CCA427"
//   sys->GetUserName();          // "ivanov" & Chr(0)
//
// The object has no state. On Linux the keyboard layouts are the X11 XKB groups of the
// display in $DISPLAY (as `setxkbmap -layout us,ru` sets them up), each named by its
// layout's 8-digit identifier ("us" "00000409", "ru" "00000419", others by their
// language, unknown ones "00000000"); the pointer is the X pointer. libX11 is loaded
// when first needed: without it, or without a display, the layout calls return False and
// `GetMousePos` leaves its arguments alone, and everything else works.
#pragma once

#include <cstdint>

#include "tsruntime/automation/dispatch.h"

namespace tsruntime {

enum xeZK_KEYBOARD_LAYOUT : int32_t {
  xcZKKBDL_ENGLISH = 409,
  xcZKKBDL_RUSSIAN = 419,
};

class clsZKSystem : public Object {
 public:
  TSRUNTIME_CLASS_INFO;

  // Steps back through the layouts until the active one ends in the target name, and
  // returns True then. The target is "00000419" (Russian) for every non-zero `LayoutID`
  // and "00000409" (English) only for 0: both members of `xeZK_KEYBOARD_LAYOUT`, and the
  // default 409, select Russian. Hosts rely on this, so it stays.
  //   Each step activates the previous group (from the first, the last); when the name
  //   read back equals the one the call started from, the list has been cycled without
  //   a match and the result is False (with one layout, after one step). False also
  //   without a display or XKB. An error raised on the way leaves as
  //   `xcZKERR_SYSTEM_KBDL` with the underlying description, help file and context.
  bool SetKeyboardLayout(int32_t LayoutID = xcZKKBDL_ENGLISH);

  // The object at `lPtr`, with a new counted reference, or Nothing for 0.
  //   An address does not fit the interface's 32 bits in a 64-bit process, so addresses
  //   travel as a Double holding the integer (exact below 2^53, which covers every user
  //   address on x86-64 and arm64); `lPtr` takes any number that holds it exactly
  //   (Long, Double, Currency, Decimal). Addresses come from `ObjPtr`. An address that
  //   `ObjPtr` did not give on this thread, or whose object has gone, gives Nothing
  //   instead of the undefined behaviour a raw pointer would have.
  Ref<Object> ObjectFromPtr(const Variant& lPtr) const;

  // The address of `obj` as `ObjectFromPtr` takes it; 0 for Nothing. Adds no reference.
  double ObjPtr(const Ref<Object>& obj) const;

  // A new random GUID as 36 characters: groups of 8, 4, 4, 4 and 12 upper-case
  // hexadecimal digits joined by hyphens, no braces. Empty when it cannot be made.
  String CreateGUID() const;

  // The pointer's screen position in pixels into `x` and `Y`; both left as they were
  // when there is no display.
  void GetMousePos(int32_t& x, int32_t& Y) const;

  // The host name, as `hostname` prints it; empty on failure. Names are read as the
  // platform's UTF-8 and handed over as an ANSI call would: "хост" stays "хост", a
  // character code page 1251 lacks becomes "?".
  String GetComputerName() const;

  // The user's login name from the password database, read as `GetComputerName` reads
  // the host name, followed by one zero character (code 0), which `GetComputerName` does
  // not have; hosts strip or keep it, so it stays. Empty on failure.
  String GetUserName() const;
};

}  // namespace tsruntime
