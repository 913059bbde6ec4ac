// Runs a program by the plain walk and from prepared instructions, and tells what differs in what they leave behind.
#pragma once

#include <cstdint>
#include <string>

namespace vl {

struct RunTrace {
  std::string error;    // code, place
  std::string globals;  // as JSON
  std::string rest;     // objects, events, time
  std::string counts;   // how often each object is referred to
  std::string slots;    // what slots and the argument bank hold
  bool compiled = false;
  bool outOfMemory = false;  // was refused some; the two ways hold locals elsewhere, so they are at different places
  bool prepared = false;     // ran from instructions
  bool allPrepared = true;   // and so did all its functions
  bool keepsSlots = true;    // which kept the slots as the walk does
};

RunTrace TraceRun(const std::string& program, bool plainWalk);

// Empty when both ways leave the same; else what differs.
std::string CompareRuns(const std::string& program, bool* wasPrepared = nullptr);

}  // namespace vl
