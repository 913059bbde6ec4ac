// Recorded input: one JSON object a line, {"at":ms,"type":"key|char|mouse|wheel|close|resize|focus|joystick|...",...}.
//
//   key     "code": virtual key number, or "key": a letter, digit or name such as "LEFT"; "down": true or false
//   char    "char": one character, or "code": its byte in code page 1252
//   mouse   "x", "y"; with "button": "left", "middle", "right" or "fourth" also "down" and, for a double click,
//           "double"; or "dx", "dy": a movement, as a mouse gives that a game holds
//   wheel   "delta": 120 a notch; "x", "y"
//   resize  "width", "height"
//   focus   "down": true when gained
//   joystick  "joystick": its number, 0 when missing; and one of
//           "attach": its name, with "axes", "rotations", "buttons", "hats": how many it has, 0 when missing
//           "detach": true
//           "axis": number, "value": -65535 to 65535        "rotation": number, "value"
//           "button": number from 0, "down": true or false
//           "hat": number, "value": hundredths of a degree clockwise from forward, -1 in the centre
//   minimize, maximize, restore: what the desktop did with the window
//   move    "x", "y": where its client area is now
//   display "width", "height", "depth": of the screen from now on
// All may have "mods": a list of "shift", "control", "alt".
#pragma once

#include <string>
#include <vector>

#include "include/vorlane.h"

namespace vl {

struct TimedInput {
  uint64_t atMs = 0;
  vl_input_event event{};
  std::string text;  // what Event() hands out as event.text, when it isn't empty

  vl_input_event Event() const {
    vl_input_event e = event;
    if (!text.empty()) e.text = text.c_str();
    return e;
  }
};

// False with "line N: what is wrong".
bool ParseInputLines(const std::string& text, std::vector<TimedInput>& input, std::string& error);
// Of event and its text; TimedInput::text isn't used when event.text is there.
std::string FormatInputLine(const TimedInput& input);

}  // namespace vl
