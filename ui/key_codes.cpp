#include "key_codes.h"

#include <QKeyEvent>
#include <array>

#include "qt_text.h"
#include "tsruntime/automation/codepage.h"

namespace tsruntime::subclass_detail {
namespace {

constexpr int32_t kVkOemOpenBracket = 0xDB, kVkOemBackslash = 0xDC,
                  kVkOemCloseBracket = 0xDD;

// Linux input codes of the main block's character keys, with the code of the key at that
// place on a US keyboard.
struct PhysicalKey {
  uint32_t input_code;
  int32_t virtual_key;
};
constexpr std::array<PhysicalKey, 48> kPhysicalKeys{{
    {2, '1'},   {3, '2'},   {4, '3'},   {5, '4'},   {6, '5'},   {7, '6'},   {8, '7'},
    {9, '8'},   {10, '9'},  {11, '0'},  {12, 0xBD}, {13, 0xBB},  // - =
    {16, 'Q'},  {17, 'W'},  {18, 'E'},  {19, 'R'},  {20, 'T'},  {21, 'Y'},  {22, 'U'},
    {23, 'I'},  {24, 'O'},  {25, 'P'},  {26, kVkOemOpenBracket}, {27, kVkOemCloseBracket},
    {30, 'A'},  {31, 'S'},  {32, 'D'},  {33, 'F'},  {34, 'G'},  {35, 'H'},  {36, 'J'},
    {37, 'K'},  {38, 'L'},  {39, 0xBA}, {40, 0xDE}, {41, 0xC0},  // ; ' `
    {43, kVkOemBackslash},
    {44, 'Z'},  {45, 'X'},  {46, 'C'},  {47, 'V'},  {48, 'B'},  {49, 'N'},  {50, 'M'},
    {51, 0xBC}, {52, 0xBE}, {53, 0xBF},  // , . /
    {86, 0xE2},  // the key between left Shift and Z on 102-key keyboards
}};

constexpr uint32_t kXKeycodeOffset = 8;

int32_t PhysicalVirtualKey(uint32_t native_scan_code) {
  if (native_scan_code < kXKeycodeOffset) return 0;
  const uint32_t input_code = native_scan_code - kXKeycodeOffset;
  for (const PhysicalKey& k : kPhysicalKeys) {
    if (k.input_code == input_code) return k.virtual_key;
  }
  return 0;
}

// By Qt's key alone: letters and digits, F1-F24, navigation and editing keys, the keypad's
// digits when `keypad`, modifiers and the US punctuation keys.
int32_t VirtualKeyOfQtKey(int key, bool keypad) {
  if (keypad && key >= Qt::Key_0 && key <= Qt::Key_9) return 0x60 + (key - Qt::Key_0);
  if ((key >= Qt::Key_A && key <= Qt::Key_Z) || (key >= Qt::Key_0 && key <= Qt::Key_9)) {
    return key;  // the platform's codes for letters and digits are their ASCII codes
  }
  if (key >= Qt::Key_F1 && key <= Qt::Key_F24) return 0x70 + (key - Qt::Key_F1);
  switch (key) {
    case Qt::Key_Backspace: return 0x08;
    case Qt::Key_Tab: case Qt::Key_Backtab: return 0x09;
    case Qt::Key_Return: case Qt::Key_Enter: return 0x0D;
    case Qt::Key_Shift: return 0x10;
    case Qt::Key_Control: return 0x11;
    case Qt::Key_Alt: return 0x12;
    case Qt::Key_Pause: return 0x13;
    case Qt::Key_CapsLock: return 0x14;
    case Qt::Key_Escape: return 0x1B;
    case Qt::Key_Space: return 0x20;
    case Qt::Key_PageUp: return 0x21;
    case Qt::Key_PageDown: return 0x22;
    case Qt::Key_End: return 0x23;
    case Qt::Key_Home: return 0x24;
    case Qt::Key_Left: return 0x25;
    case Qt::Key_Up: return 0x26;
    case Qt::Key_Right: return 0x27;
    case Qt::Key_Down: return 0x28;
    case Qt::Key_Print: return 0x2C;
    case Qt::Key_Insert: return 0x2D;
    case Qt::Key_Delete: return 0x2E;
    case Qt::Key_Meta: return 0x5B;
    case Qt::Key_Menu: return 0x5D;
    case Qt::Key_NumLock: return 0x90;
    case Qt::Key_ScrollLock: return 0x91;
    case Qt::Key_Semicolon: case Qt::Key_Colon: return 0xBA;
    case Qt::Key_Equal: case Qt::Key_Plus: return 0xBB;
    case Qt::Key_Comma: case Qt::Key_Less: return 0xBC;
    case Qt::Key_Minus: case Qt::Key_Underscore: return 0xBD;
    case Qt::Key_Period: case Qt::Key_Greater: return 0xBE;
    case Qt::Key_Slash: case Qt::Key_Question: return 0xBF;
    case Qt::Key_QuoteLeft: case Qt::Key_AsciiTilde: return 0xC0;
    case Qt::Key_BracketLeft: case Qt::Key_BraceLeft: return kVkOemOpenBracket;
    case Qt::Key_Backslash: case Qt::Key_Bar: return kVkOemBackslash;
    case Qt::Key_BracketRight: case Qt::Key_BraceRight: return kVkOemCloseBracket;
    case Qt::Key_Apostrophe: case Qt::Key_QuoteDbl: return 0xDE;
    default: return 0;
  }
}

}  // namespace

int32_t VirtualKey(const QKeyEvent& event) {
  const bool keypad = event.modifiers() & Qt::KeypadModifier;
  if (!keypad) {
    if (const int32_t physical = PhysicalVirtualKey(event.nativeScanCode())) return physical;
  }
  return VirtualKeyOfQtKey(event.key(), keypad);
}

std::vector<int32_t> CharacterCodes(const QKeyEvent& event, int32_t virtual_key) {
  const Qt::KeyboardModifiers held = event.modifiers();
  if ((held & Qt::ControlModifier) && !(held & Qt::AltModifier)) {
    if (virtual_key >= 'A' && virtual_key <= 'Z') return {virtual_key - 'A' + 1};
    if (virtual_key >= kVkOemOpenBracket && virtual_key <= kVkOemCloseBracket)
      return {virtual_key - kVkOemOpenBracket + 0x1B};
  }
  std::vector<int32_t> codes;
  for (uint8_t byte : StringToAnsi(ui_detail::FromQString(event.text()))) codes.push_back(byte);
  return codes;
}

}  // namespace tsruntime::subclass_detail
