// Event and EventQueue: everything asynchronous reaches the core here, and here only it may block.
#pragma once

#include <cstdint>
#include <string>

namespace vl {

enum class EventType : int32_t {
  None,
  KeyDown,     // code: virtual key (platform/keys.h), best that of the side; x: 1 for an auto-repeat
  KeyUp,       // code: virtual key
  Char,        // ch: byte of code page 1252
  MouseMove,   // x, y: client pixels of the window; with ch 1 a movement instead, as a held mouse gives it
  MouseDown,   // code: MouseButton; x, y; ch: 1, or 2 for the second press of a double click
  MouseUp,     // code: MouseButton; x, y
  MouseWheel,  // code: delta, 120 a notch; x, y
  Resize,      // x, y: new client size
  Move,        // x, y: new client position on the screen
  Close,       // the person asked to close the window
  Focus,
  Blur,
  Expose,  // the window lost pixels: present it again
  MouseLeave,
  Minimize,
  Maximize,
  Restore,
  DropFile,       // id: takeBlob() gives the path; x, y
  DisplayChange,  // x, y: new size of the screen; code: its depth
  HostStop,       // the host wants the run to end: the orderly close comes first
  // Joysticks; code: the joystick's number, below kMaxJoysticks (platform/device_state.h).
  JoystickAttach,    // id: takeBlob() gives its description, see ReadJoystickDescription
  JoystickDetach,    // -
  JoystickAxis,      // x: axis; y: position, -65535 to 65535
  JoystickRotation,  // x: rotation axis; y: as above
  JoystickButton,    // x: button; y: 1 down, 0 up
  JoystickHat,       // x: hat; y: hundredths of a degree clockwise from forward, -1 in the centre
};

// The fourth button makes no window messages; it counts as key and as game input only.
enum MouseButton : int32_t { kMouseLeft = 1, kMouseMiddle = 2, kMouseRight = 3, kMouseFourth = 4 };

// Modifier bits of Event::mods; the buttons are those held at the time.
enum EventMods : int32_t {
  kModShift = 1,
  kModControl = 2,
  kModAlt = 4,
  kModLeftButton = 8,
  kModMiddleButton = 16,
  kModRightButton = 32,
};

// Fixed size and plain, so that a page can pass it through shared memory.
struct Event {
  EventType type = EventType::None;
  uint32_t window = 0;  // NativeWindow, 0 when none is concerned
  int32_t code = 0;
  int32_t mods = 0;
  int32_t x = 0;
  int32_t y = 0;
  int32_t ch = 0;
  uint32_t id = 0;
};
static_assert(sizeof(Event) == 32);

class EventQueue {
 public:
  virtual ~EventQueue() = default;
  // Takes the next event, waiting at most timeoutMs (0 polls, -1 for ever). The only call of the seam that
  // blocks. False when the time passed without one, or earlier when sockets have news.
  virtual bool waitEvent(Event& event, int timeoutMs) = 0;
  // The content that belongs to event.id; empty when it was taken before.
  virtual std::string takeBlob(uint32_t id) = 0;
  // True when no event will ever come: what only a person's input can end must then end by itself.
  virtual bool isExhausted() { return false; }
};

}  // namespace vl
