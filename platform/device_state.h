// DeviceState: the keys, the mouse and the joysticks as the events so far have left them.
//
// A portable model, fed by DeviceQueue alone, so that the same events always give the same state.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <string>
#include <string_view>

#include "platform/events.h"

namespace vl {

inline constexpr int kMaxJoysticks = 16;
inline constexpr int kMaxJoystickAxes = 8;
inline constexpr int kMaxJoystickRotations = 8;
inline constexpr int kMaxJoystickButtons = 128;
inline constexpr int kMaxJoystickHats = 4;
// Axes go from -kJoystickRange to kJoystickRange.
inline constexpr int32_t kJoystickRange = 65535;
inline constexpr int32_t kHatCentre = -1;

// What a joystick has; the counts are within the limits above.
struct JoystickDescription {
  std::string name;  // code page 1252
  int axes = 0;
  int rotations = 0;
  int buttons = 0;
  int hats = 0;
  bool operator==(const JoystickDescription&) const = default;
};

// The content of a JoystickAttach event: the four counts as decimal numbers and the name, parted by blanks.
std::string WriteJoystickDescription(const JoystickDescription& description);
// Counts beyond the limits are cut; a text that isn't one gives a joystick without anything.
JoystickDescription ReadJoystickDescription(std::string_view text);

struct JoystickState {
  bool isAttached = false;
  uint32_t attachments = 0;  // how often one was attached under this number
  JoystickDescription description;
  std::array<int32_t, kMaxJoystickAxes> axes{};
  std::array<int32_t, kMaxJoystickRotations> rotations{};
  std::bitset<kMaxJoystickButtons> buttons;
  std::array<int32_t, kMaxJoystickHats> hats{};
};

struct DeviceState {
  std::bitset<256> keys;  // by virtual key, the mouse's buttons among them
  bool hasFocus = true;   // one of the program's windows is the active one
  // The pointer, in pixels of the screen; beyond it while the mouse is held.
  int32_t cursorX = 0;
  int32_t cursorY = 0;
  int64_t wheel = 0;  // the sum of all movement, 120 a notch forward
  std::array<JoystickState, kMaxJoysticks> joysticks;

  bool IsKeyDown(int32_t key) const { return key >= 0 && key < 256 && keys[static_cast<size_t>(key)]; }
  // Takes over a key, a button, the wheel, the focus or a joystick. `description` is the content of a JoystickAttach.
  // Mouse positions are the caller's, who knows where the windows lie.
  void Apply(const Event& event, std::string_view description);

 private:
  void SetKey(int32_t key, bool isDown);
  void ApplyJoystick(const Event& event, std::string_view description);
};

}  // namespace vl
