// InputDevices: what the core asks of the machine's mouse and joysticks.
//
// Everything that a device does arrives as an event; DeviceQueue makes the present state of all devices of it. Calls
// return at once.
#pragma once

namespace vl {

class InputDevices {
 public:
  virtual ~InputDevices() = default;
  // A held mouse shows no pointer, stays in the window and can move without end, for games that steer with it.
  virtual void holdMouse(bool held) = 0;
  // True: while it is held, the mouse gives movements (MouseMove with ch 1), and positions mean nothing.
  virtual bool givesMovements() const { return false; }
};

}  // namespace vl
