// Recorded input: one JSON object a line, {"at":ms,"type":"key|char|mouse|wheel|close|resize|focus",...}.
//
//   key     "code": virtual key number, or "key": a letter, digit or name such as "LEFT"; "down": true or false
//   char    "char": one character, or "code": its byte in code page 1252
//   mouse   "x", "y"; with "button": "left", "middle" or "right" also "down" and, for a double click, "double"
//   wheel   "delta": 120 a notch; "x", "y"
//   resize  "width", "height"
//   focus   "down": true when gained
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
};

// False with "line N: what is wrong".
bool ParseInputLines(const std::string& text, std::vector<TimedInput>& input, std::string& error);
std::string FormatInputLine(const TimedInput& input);

}  // namespace vl
