// The person's own files for the player.
#pragma once

#include <string>
#include <string_view>

namespace vl {

// The path of a file among the person's settings, $XDG_CONFIG_HOME/vorlane or ~/.config/vorlane, whether it is there
// or not; empty when the system names no such place.
std::string UserConfigFile(std::string_view name);

}  // namespace vl
