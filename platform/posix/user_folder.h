// The person's own files for the player.
#pragma once

#include <string>
#include <string_view>

namespace vl {

// The path of a file among the person's settings, $XDG_CONFIG_HOME/vorlane or ~/.config/vorlane, whether it is there
// or not; empty when the system names no such place.
std::string UserConfigFile(std::string_view name);
// The same of a file or folder of data, $XDG_DATA_HOME/vorlane or ~/.local/share/vorlane.
std::string UserDataFile(std::string_view name);
// With the folders above it, for the person alone. True when it is there.
bool MakeFolder(const std::string& path);

}  // namespace vl
