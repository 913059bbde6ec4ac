// States of the two movements about another location: L3DLocation::MoveAround and L3DLocation::FollowStep step them.
//
// The target isn't owned: who holds a state drops it when the target dies.
#pragma once

#include <cstdint>

#include "engine3d/matrix.h"

namespace vl {

class L3DLocation;

struct OrbitState {
  // Radians; the angle swings between minimum and maximum by `speed` a step.
  struct Axis {
    float angle = 0;
    float speed = 0;
    float minimum = 0;
    float maximum = 0;
  };

  uint32_t active = 0;
  L3DLocation* target = nullptr;
  float distance = 0;
  Axis x, y, z;
};

struct FollowState {
  uint32_t active = 0;
  L3DLocation* target = nullptr;
  float smoothing = 0;       // a step makes 1/smoothing of the way; all of it at 0 and below
  L3DVector lookOffset;      // from the target, in its own axes: the point that is looked at
  L3DVector positionOffset;  // and the place to be
};

}  // namespace vl
