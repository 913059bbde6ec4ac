// Virtual key numbers that events carry: letters and digits are their upper-case ASCII codes.
#pragma once

#include <cstdint>

namespace vl {

enum VirtualKey : int32_t {
  kKeyLeftButton = 0x01,  // the buttons of the mouse are keys too
  kKeyRightButton = 0x02,
  kKeyMiddleButton = 0x04,
  kKeyFourthButton = 0x05,
  kKeyBack = 0x08,
  kKeyTab = 0x09,
  kKeyClear = 0x0C,  // 5 on the number pad without Num Lock
  kKeyReturn = 0x0D,
  kKeyShift = 0x10,
  kKeyControl = 0x11,
  kKeyMenu = 0x12,
  kKeyPause = 0x13,
  kKeyCapital = 0x14,
  kKeyEscape = 0x1B,
  kKeySpace = 0x20,
  kKeyPrior = 0x21,
  kKeyNext = 0x22,
  kKeyEnd = 0x23,
  kKeyHome = 0x24,
  kKeyLeft = 0x25,
  kKeyUp = 0x26,
  kKeyRight = 0x27,
  kKeyDown = 0x28,
  kKeySnapshot = 0x2C,
  kKeyInsert = 0x2D,
  kKeyDelete = 0x2E,
  kKeyHelp = 0x2F,
  kKeyLeftWindows = 0x5B,
  kKeyRightWindows = 0x5C,
  kKeyApps = 0x5D,
  kKeyNumpad0 = 0x60,
  kKeyMultiply = 0x6A,
  kKeyAdd = 0x6B,
  kKeySubtract = 0x6D,
  kKeyDecimal = 0x6E,
  kKeyDivide = 0x6F,
  kKeyF1 = 0x70,
  kKeyNumLock = 0x90,
  kKeyScroll = 0x91,
  kKeyLeftShift = 0xA0,  // a key of one side is down together with the key of either side
  kKeyRightShift = 0xA1,
  kKeyLeftControl = 0xA2,
  kKeyRightControl = 0xA3,
  kKeyLeftMenu = 0xA4,
  kKeyRightMenu = 0xA5,
  kKeyOem1 = 0xBA,       // ;
  kKeyOemPlus = 0xBB,    // =
  kKeyOemComma = 0xBC,   // ,
  kKeyOemMinus = 0xBD,   // -
  kKeyOemPeriod = 0xBE,  // .
  kKeyOem2 = 0xBF,       // /
  kKeyOem3 = 0xC0,       // `
  kKeyOem4 = 0xDB,       // [
  kKeyOem5 = 0xDC,       // backslash
  kKeyOem6 = 0xDD,       // ]
  kKeyOem7 = 0xDE,       // '
  kKeyOem102 = 0xE2,     // the key between left Shift and Z
};

// The key of either side that belongs to a key of one side (kKeyLeftShift gives kKeyShift); others as they are.
constexpr int32_t EitherSideOf(int32_t key) {
  return key >= kKeyLeftShift && key <= kKeyRightMenu ? kKeyShift + (key - kKeyLeftShift) / 2 : key;
}

// The key that types a character of code page 1252, whether with Shift, Control or without; 0xFF for none. Letters
// stand on the key of their name, the rest as on the keyboard of which keys have their numbers.
int32_t KeyOfCharacter(uint8_t character);

}  // namespace vl
