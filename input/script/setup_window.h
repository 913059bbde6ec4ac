// The set-up dialog of game input in a window of the tree.
#pragma once

#include <cstdint>

namespace vl {

class CInterpretor;
class GameInputLibrary;

// Shows the dialog until the person has answered, or the run is to end. True for OK; otherwise the settings are as
// they were. No setting may run. Script functions don't run meanwhile; what is queued for them stays queued.
bool RunSetupDialog(CInterpretor& interpreter, GameInputLibrary& library, uint32_t owner);

}  // namespace vl
