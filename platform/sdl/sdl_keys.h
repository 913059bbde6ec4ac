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

// EventMods of a key event's SDL_Keymod, with the mouse buttons as they are now. A batch of events may be newer than
// its first key, so a key's own state counts for it.
int32_t ModsOf(int keys);
// Both as they are now.
int32_t CurrentMods();

}  // namespace vl
