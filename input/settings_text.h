// The text form of game input settings: lines whose depth is the number of tabs before them.
//
//   setting / PreferredDevices=... and Player N / action / device / binding, an input and its modifiers
//
// Texts are content: what a line may mean is told where it is read, and nothing of it can fail but a line at depth 1
// that is neither of the two.
#pragma once

#include <string>

#include "host/appfile/stream.h"
#include "input/game_setting.h"

namespace vl {

// Adds the settings of a text to the list. False when a line stopped the reading or the text is longer than
// limits::kMaxInputSettingsBytes; what was read until then stays.
bool ReadSettingsText(CStream& text, GameSettings& settings);
std::string WriteSettingsText(const GameSettings& settings);

}  // namespace vl
