// Keys and characters: from what SDL reports to virtual keys and bytes of code page 1252.
#pragma once

#include <SDL.h>

#include <cstdint>

namespace vl {

// The virtual key of a pressed key, 0 for one that programs of the period don't know. Letters follow the
// keyboard's layout; digits and punctuation stand where they are on the keyboard.
int32_t VirtualKeyOf(const SDL_Keysym& key);

// The control character that a key gives besides its key event, 0 for none: Return, Backspace, Tab, Escape, and
// letters with Control.
int32_t ControlCharOf(const SDL_Keysym& key);

// EventMods of keyboard and mouse buttons as they are now.
int32_t CurrentMods();

}  // namespace vl
