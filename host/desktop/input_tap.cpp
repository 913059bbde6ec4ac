#include "host/desktop/input_tap.h"

namespace vl {

bool ToEvent(const vl_input_event& input, Event& event) {
  event = Event{};
  event.mods = input.mods & (kModShift | kModControl | kModAlt);
  event.x = input.x;
  event.y = input.y;
  event.code = input.code;
  switch (input.type) {
    case VL_INPUT_KEY:
      event.type = input.down ? EventType::KeyDown : EventType::KeyUp;
      return true;
    case VL_INPUT_CHAR:
      event.type = EventType::Char;
      event.ch = input.code;
      return true;
    case VL_INPUT_MOUSE:
      if (input.code == 0) {
        event.type = EventType::MouseMove;
        event.ch = input.down == 1 ? 1 : 0;
      } else {
        event.type = input.down ? EventType::MouseDown : EventType::MouseUp;
        event.ch = input.down == 2 ? 2 : 1;
      }
      return input.code >= 0 && input.code <= kMouseFourth;
    case VL_INPUT_WHEEL:
      event.type = EventType::MouseWheel;
      return true;
    case VL_INPUT_CLOSE:
      event.type = EventType::Close;
      return true;
    case VL_INPUT_RESIZE:
      event.type = EventType::Resize;
      return true;
    case VL_INPUT_FOCUS:
      event.type = input.down ? EventType::Focus : EventType::Blur;
      return true;
    case VL_INPUT_JOYSTICK_ATTACH:
      event.type = EventType::JoystickAttach;
      return input.text != nullptr;
    case VL_INPUT_JOYSTICK_DETACH:
      event.type = EventType::JoystickDetach;
      return true;
    case VL_INPUT_JOYSTICK_AXIS:
      event.type = EventType::JoystickAxis;
      return true;
    case VL_INPUT_JOYSTICK_ROTATION:
      event.type = EventType::JoystickRotation;
      return true;
    case VL_INPUT_JOYSTICK_BUTTON:
      event.type = EventType::JoystickButton;
      event.y = input.down != 0;
      return true;
    case VL_INPUT_JOYSTICK_HAT:
      event.type = EventType::JoystickHat;
      return true;
    case VL_INPUT_MINIMIZE:
      event.type = EventType::Minimize;
      return true;
    case VL_INPUT_MAXIMIZE:
      event.type = EventType::Maximize;
      return true;
    case VL_INPUT_RESTORE:
      event.type = EventType::Restore;
      return true;
    case VL_INPUT_MOVE:
      event.type = EventType::Move;
      return true;
    case VL_INPUT_DISPLAY:
      event.type = EventType::DisplayChange;
      return true;
    default:
      return false;
  }
}

bool FromEvent(const Event& event, vl_input_event& input) {
  input = vl_input_event{};
  input.mods = event.mods & (kModShift | kModControl | kModAlt);
  input.x = event.x;
  input.y = event.y;
  input.code = event.code;
  switch (event.type) {
    case EventType::KeyDown:
    case EventType::KeyUp:
      input.type = VL_INPUT_KEY;
      input.down = event.type == EventType::KeyDown;
      input.x = 0;
      return true;
    case EventType::Char:
      input.type = VL_INPUT_CHAR;
      input.code = event.ch;
      return true;
    case EventType::MouseMove:
      input.type = VL_INPUT_MOUSE;
      input.code = 0;
      input.down = event.ch == 1;
      return true;
    case EventType::MouseDown:
    case EventType::MouseUp:
      input.type = VL_INPUT_MOUSE;
      input.down = event.type == EventType::MouseUp ? 0 : event.ch == 2 ? 2 : 1;
      return true;
    case EventType::MouseWheel:
      input.type = VL_INPUT_WHEEL;
      return true;
    case EventType::Close:
      input.type = VL_INPUT_CLOSE;
      return true;
    case EventType::Resize:
      input.type = VL_INPUT_RESIZE;
      return true;
    case EventType::Focus:
    case EventType::Blur:
      input.type = VL_INPUT_FOCUS;
      input.down = event.type == EventType::Focus;
      return true;
    case EventType::JoystickAttach:
      input.type = VL_INPUT_JOYSTICK_ATTACH;
      return true;
    case EventType::JoystickDetach:
      input.type = VL_INPUT_JOYSTICK_DETACH;
      return true;
    case EventType::JoystickAxis:
      input.type = VL_INPUT_JOYSTICK_AXIS;
      return true;
    case EventType::JoystickRotation:
      input.type = VL_INPUT_JOYSTICK_ROTATION;
      return true;
    case EventType::JoystickButton:
      input.type = VL_INPUT_JOYSTICK_BUTTON;
      input.down = event.y;
      input.y = 0;
      return true;
    case EventType::JoystickHat:
      input.type = VL_INPUT_JOYSTICK_HAT;
      return true;
    case EventType::Minimize:
      input.type = VL_INPUT_MINIMIZE;
      return true;
    case EventType::Maximize:
      input.type = VL_INPUT_MAXIMIZE;
      return true;
    case EventType::Restore:
      input.type = VL_INPUT_RESTORE;
      return true;
    case EventType::Move:
      input.type = VL_INPUT_MOVE;
      return true;
    case EventType::DisplayChange:
      input.type = VL_INPUT_DISPLAY;
      return true;
    default:
      return false;
  }
}

bool InputTap::waitEvent(Event& event, int timeoutMs) {
  if (!inner_.waitEvent(event, timeoutMs)) return false;
  Recorded recorded{clock_.nowMs() - startMs_, {}};
  if (!FromEvent(event, recorded.input)) return true;
  if (event.type == EventType::JoystickAttach) {
    texts_.push_back(inner_.takeBlob(event.id));
    recorded.input.text = texts_.back().c_str();
    unclaimed_[event.id] = texts_.back();
  }
  events_.push_back(recorded);
  return true;
}

std::string InputTap::takeBlob(uint32_t id) {
  const auto found = unclaimed_.extract(id);
  return found ? found.mapped() : inner_.takeBlob(id);
}

}  // namespace vl
