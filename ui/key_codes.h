// Keys as the platform's key messages carry them: virtual-key codes that name the key
// rather than its character, and characters in the ANSI code page.
#pragma once

#include <cstdint>
#include <vector>

class QKeyEvent;

namespace tsruntime::subclass_detail {

// The virtual-key code of a key event; 0 for a key the platform has no code for.
//
// A key of the main block that types a character (letters, digits, punctuation) is
// named by where it sits, as on a US keyboard, whatever the active layout: under the
// Russian layout "ф" is 0x41 (A) and "с" 0x43 (C), so Ctrl+С is Ctrl+C. The position comes
// from the native scan code (an X keycode: the Linux input code + 8). Other keys (function,
// navigation, keypad, modifiers), and events without a scan code, are named by Qt's key.
int32_t VirtualKey(const QKeyEvent& event);

// The character messages a key press sends to a window subclassed through the ANSI
// calls: one per byte of its text in the ANSI code page (a character the code page lacks
// is '?'). With Ctrl held (and not Alt, which with Ctrl types AltGr's characters), a
// letter key gives its control character (Ctrl+C and Ctrl+С are 3), and "[", "\" and
// "]" give 27, 28 and 29, whatever the layout.
std::vector<int32_t> CharacterCodes(const QKeyEvent& event, int32_t virtual_key);

}  // namespace tsruntime::subclass_detail
