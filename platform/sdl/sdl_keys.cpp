#include "platform/sdl/sdl_keys.h"

#include "platform/events.h"
#include "platform/keys.h"

namespace vl {
namespace {

struct KeyPair {
  SDL_Scancode scancode;
  int32_t key;
};

constexpr KeyPair kKeys[] = {
    {SDL_SCANCODE_BACKSPACE, kKeyBack},
    {SDL_SCANCODE_TAB, kKeyTab},
    {SDL_SCANCODE_RETURN, kKeyReturn},
    {SDL_SCANCODE_KP_ENTER, kKeyReturn},
    {SDL_SCANCODE_LSHIFT, kKeyLeftShift},
    {SDL_SCANCODE_RSHIFT, kKeyRightShift},
    {SDL_SCANCODE_LCTRL, kKeyLeftControl},
    {SDL_SCANCODE_RCTRL, kKeyRightControl},
    {SDL_SCANCODE_LALT, kKeyLeftMenu},
    {SDL_SCANCODE_RALT, kKeyRightMenu},
    {SDL_SCANCODE_PAUSE, kKeyPause},
    {SDL_SCANCODE_CAPSLOCK, kKeyCapital},
    {SDL_SCANCODE_ESCAPE, kKeyEscape},
    {SDL_SCANCODE_SPACE, kKeySpace},
    {SDL_SCANCODE_PAGEUP, kKeyPrior},
    {SDL_SCANCODE_PAGEDOWN, kKeyNext},
    {SDL_SCANCODE_END, kKeyEnd},
    {SDL_SCANCODE_HOME, kKeyHome},
    {SDL_SCANCODE_LEFT, kKeyLeft},
    {SDL_SCANCODE_UP, kKeyUp},
    {SDL_SCANCODE_RIGHT, kKeyRight},
    {SDL_SCANCODE_DOWN, kKeyDown},
    {SDL_SCANCODE_PRINTSCREEN, kKeySnapshot},
    {SDL_SCANCODE_INSERT, kKeyInsert},
    {SDL_SCANCODE_DELETE, kKeyDelete},
    {SDL_SCANCODE_HELP, kKeyHelp},
    {SDL_SCANCODE_LGUI, kKeyLeftWindows},
    {SDL_SCANCODE_RGUI, kKeyRightWindows},
    {SDL_SCANCODE_APPLICATION, kKeyApps},
    {SDL_SCANCODE_KP_MULTIPLY, kKeyMultiply},
    {SDL_SCANCODE_KP_PLUS, kKeyAdd},
    {SDL_SCANCODE_KP_MINUS, kKeySubtract},
    {SDL_SCANCODE_KP_DIVIDE, kKeyDivide},
    {SDL_SCANCODE_NUMLOCKCLEAR, kKeyNumLock},
    {SDL_SCANCODE_SCROLLLOCK, kKeyScroll},
    {SDL_SCANCODE_SEMICOLON, kKeyOem1},
    {SDL_SCANCODE_EQUALS, kKeyOemPlus},
    {SDL_SCANCODE_COMMA, kKeyOemComma},
    {SDL_SCANCODE_MINUS, kKeyOemMinus},
    {SDL_SCANCODE_PERIOD, kKeyOemPeriod},
    {SDL_SCANCODE_SLASH, kKeyOem2},
    {SDL_SCANCODE_GRAVE, kKeyOem3},
    {SDL_SCANCODE_LEFTBRACKET, kKeyOem4},
    {SDL_SCANCODE_BACKSLASH, kKeyOem5},
    {SDL_SCANCODE_RIGHTBRACKET, kKeyOem6},
    {SDL_SCANCODE_APOSTROPHE, kKeyOem7},
    {SDL_SCANCODE_NONUSBACKSLASH, kKeyOem102},
};

// What the digits of the number pad are without Num Lock, from 0.
constexpr int32_t kPadKeys[10] = {kKeyInsert, kKeyEnd,   kKeyDown, kKeyNext, kKeyLeft,
                                  kKeyClear,  kKeyRight, kKeyHome, kKeyUp,   kKeyPrior};

}  // namespace

int32_t VirtualKeyOf(const SDL_Keysym& key) {
  const SDL_Scancode code = key.scancode;
  if (key.sym >= 'a' && key.sym <= 'z') return key.sym - 'a' + 'A';
  if (code >= SDL_SCANCODE_1 && code <= SDL_SCANCODE_9) return '1' + (code - SDL_SCANCODE_1);
  if (code == SDL_SCANCODE_0) return '0';
  if (code >= SDL_SCANCODE_F1 && code <= SDL_SCANCODE_F12) return kKeyF1 + (code - SDL_SCANCODE_F1);
  if (code >= SDL_SCANCODE_F13 && code <= SDL_SCANCODE_F24) return kKeyF1 + 12 + (code - SDL_SCANCODE_F13);
  const bool hasNumLock = (key.mod & KMOD_NUM) != 0;
  if (code == SDL_SCANCODE_KP_0 || (code >= SDL_SCANCODE_KP_1 && code <= SDL_SCANCODE_KP_9)) {
    const int digit = code == SDL_SCANCODE_KP_0 ? 0 : 1 + (code - SDL_SCANCODE_KP_1);
    return hasNumLock ? kKeyNumpad0 + digit : kPadKeys[digit];
  }
  if (code == SDL_SCANCODE_KP_PERIOD) return hasNumLock ? kKeyDecimal : kKeyDelete;
  for (const KeyPair& pair : kKeys) {
    if (pair.scancode == code) return pair.key;
  }
  // Layouts without Latin letters: by the place on the keyboard.
  if (code >= SDL_SCANCODE_A && code <= SDL_SCANCODE_Z) return 'A' + (code - SDL_SCANCODE_A);
  return 0;
}

int32_t ControlCharOf(const SDL_Keysym& key) {
  switch (key.scancode) {
    case SDL_SCANCODE_RETURN:
    case SDL_SCANCODE_KP_ENTER:
      return 13;
    case SDL_SCANCODE_BACKSPACE:
      return 8;
    case SDL_SCANCODE_TAB:
      return 9;
    case SDL_SCANCODE_ESCAPE:
      return 27;
    default:
      break;
  }
  const bool isControlled = (key.mod & KMOD_CTRL) != 0 && (key.mod & KMOD_ALT) == 0;
  const int32_t letter = VirtualKeyOf(key);
  return isControlled && letter >= 'A' && letter <= 'Z' ? letter - 'A' + 1 : 0;
}

int32_t CurrentMods() { return ModsOf(SDL_GetModState()); }

int32_t ModsOf(int keys) {
  int32_t mods = 0;
  if (keys & KMOD_SHIFT) mods |= kModShift;
  if (keys & KMOD_CTRL) mods |= kModControl;
  if (keys & KMOD_ALT) mods |= kModAlt;
  const Uint32 buttons = SDL_GetMouseState(nullptr, nullptr);
  if (buttons & SDL_BUTTON_LMASK) mods |= kModLeftButton;
  if (buttons & SDL_BUTTON_MMASK) mods |= kModMiddleButton;
  if (buttons & SDL_BUTTON_RMASK) mods |= kModRightButton;
  return mods;
}

}  // namespace vl
