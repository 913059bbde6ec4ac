#include "platform/device_state.h"

#include <algorithm>
#include <charconv>

#include "platform/keys.h"

namespace vl {
namespace {

int32_t KeyOfButton(int32_t button) {
  switch (button) {
    case kMouseLeft:
      return kKeyLeftButton;
    case kMouseRight:
      return kKeyRightButton;
    case kMouseMiddle:
      return kKeyMiddleButton;
    case kMouseFourth:
      return kKeyFourthButton;
    default:
      return 0;
  }
}

template <typename Values>
void Set(Values& values, int count, int32_t index, int32_t value) {
  if (index >= 0 && index < count) values[static_cast<size_t>(index)] = value;
}

}  // namespace

std::string WriteJoystickDescription(const JoystickDescription& d) {
  std::string text;
  for (const int count : {d.axes, d.rotations, d.buttons, d.hats}) text += std::to_string(count) + " ";
  return text + d.name;
}

JoystickDescription ReadJoystickDescription(std::string_view text) {
  constexpr size_t kMaxName = 255;
  JoystickDescription d;
  const auto count = [&text](int limit) {
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    text.remove_prefix(static_cast<size_t>(end - text.data()));
    if (text.starts_with(' ')) text.remove_prefix(1);
    return error == std::errc() ? std::clamp(value, 0, limit) : 0;
  };
  d.axes = count(kMaxJoystickAxes);
  d.rotations = count(kMaxJoystickRotations);
  d.buttons = count(kMaxJoystickButtons);
  d.hats = count(kMaxJoystickHats);
  d.name = text.substr(0, kMaxName);
  return d;
}

// The key of either side is down while one of its two is.
void DeviceState::SetKey(int32_t key, bool isDown) {
  if (key <= 0 || key >= 256) return;
  // An event that knows no side is taken for the left one.
  if (key >= kKeyShift && key <= kKeyMenu) key = kKeyLeftShift + (key - kKeyShift) * 2;
  keys[static_cast<size_t>(key)] = isDown;
  const int32_t either = EitherSideOf(key);
  if (either == key) return;
  const auto left = static_cast<size_t>(kKeyLeftShift + (either - kKeyShift) * 2);
  keys[static_cast<size_t>(either)] = keys[left] || keys[left + 1];
}

void DeviceState::Apply(const Event& event, std::string_view description) {
  switch (event.type) {
    case EventType::KeyDown:
    case EventType::KeyUp:
      SetKey(event.code, event.type == EventType::KeyDown);
      return;
    case EventType::MouseDown:
    case EventType::MouseUp:
      SetKey(KeyOfButton(event.code), event.type == EventType::MouseDown);
      return;
    case EventType::MouseWheel:
      wheel += event.code;
      return;
    case EventType::Focus:
      hasFocus = true;
      return;
    case EventType::Blur:
      // What is let go elsewhere is never told.
      hasFocus = false;
      keys.reset();
      return;
    default:
      ApplyJoystick(event, description);
      return;
  }
}

void DeviceState::ApplyJoystick(const Event& event, std::string_view text) {
  if (event.code < 0 || event.code >= kMaxJoysticks) return;
  JoystickState& joystick = joysticks[static_cast<size_t>(event.code)];
  const JoystickDescription& has = joystick.description;
  const int32_t position = std::clamp(event.y, -kJoystickRange, kJoystickRange);
  switch (event.type) {
    case EventType::JoystickAttach: {
      const uint32_t before = joystick.attachments;
      joystick = {};
      joystick.isAttached = true;
      joystick.attachments = before + 1;
      joystick.description = ReadJoystickDescription(text);
      joystick.hats.fill(kHatCentre);
      return;
    }
    case EventType::JoystickDetach: {
      const uint32_t before = joystick.attachments;
      joystick = {};
      joystick.attachments = before;
      return;
    }
    case EventType::JoystickAxis:
      Set(joystick.axes, has.axes, event.x, position);
      return;
    case EventType::JoystickRotation:
      Set(joystick.rotations, has.rotations, event.x, position);
      return;
    case EventType::JoystickButton:
      if (event.x >= 0 && event.x < has.buttons) joystick.buttons[static_cast<size_t>(event.x)] = event.y != 0;
      return;
    case EventType::JoystickHat:
      Set(joystick.hats, has.hats, event.x, event.y < 0 ? kHatCentre : event.y % 36000);
      return;
    default:
      return;
  }
}

}  // namespace vl
