// The vocabulary of game inputs: every key, button, axis and hat that a settings text can name.
#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vl {

// In the order in which actions hold their bindings.
enum class DeviceKind : uint8_t { None = 0, Mouse = 1, Joystick = 2, Keyboard = 3 };
inline constexpr int kDeviceKinds = 3;

// "Mouse", "Joystick", "Keyboard"; "" for None.
std::string_view NameOfKind(DeviceKind kind);
// None for another word; case doesn't count.
DeviceKind KindOfName(std::string_view name);

// How an input is read.
enum class InputGroup : uint8_t {
  Button = 1,            // index: button, or virtual key
  AxisNegative = 2,      // index: axis
  AxisPositive = 3,      // index: axis
  RotationNegative = 4,  // index: rotation axis
  RotationPositive = 5,  // index: rotation axis
  Hat = 6,               // index: hat
};

struct InputRow {
  DeviceKind kind = DeviceKind::None;
  char name[23] = {};
  uint8_t length = 0;  // of name
  uint8_t id = 0;      // within the kind, from 1
  InputGroup group = InputGroup::Button;
  uint8_t index = 0;

  constexpr std::string_view Name() const { return {name, length}; }
};

inline constexpr int kUnknownInput = -1;

std::span<const InputRow> InputTable();
// The row of that whole name, case not counting; kUnknownInput when there is none.
int FindInput(std::string_view name);
// The row that reads `index` of a group of a device; kUnknownInput when there is none.
int FindInput(DeviceKind kind, InputGroup group, int index);

}  // namespace vl
