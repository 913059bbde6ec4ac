// The steps of L3DLocation that move it about another location.
#include "engine3d/follow.h"

#include "engine3d/angle.h"
#include "engine3d/location.h"

namespace vl {

namespace {

constexpr double kOrbitPart = 0.25;  // of the way to the goal, a step

float Towards(float current, float goal, double part) {
  return static_cast<float>(double{current} + (double{goal} - double{current}) * part);
}

void Swing(OrbitState::Axis& axis) {
  axis.angle = NormalizeAngle(static_cast<float>(double{axis.angle} + double{axis.speed}));
  if (axis.angle < axis.minimum) {
    axis.speed = -axis.speed;
    axis.angle = axis.minimum;
  }
  if (axis.angle > axis.maximum) {
    axis.speed = -axis.speed;
    axis.angle = axis.maximum;
  }
}

}  // namespace

uint32_t L3DLocation::MoveAround(OrbitState* state) {
  if (!state) return 2;
  if (!state->target || !CanMove()) return 0;
  state->active = 1;
  L3DLocation& target = *state->target;
  target.BeforeRotation();
  const L3DMatrix turn = MatrixFromAngles(state->x.angle, state->y.angle, state->z.angle);
  const L3DVector direction = MatrixProduct(target.RotMatrix, turn).Column(2);
  const double distance = double{DirectionInverted ? -state->distance : state->distance};
  const auto goal = [distance](float from, float part) {
    return static_cast<float>(double{from} + double{part} * distance);
  };
  Position.x = Towards(Position.x, goal(target.Position.x, direction.x), kOrbitPart);
  Position.y = Towards(Position.y, goal(target.Position.y, direction.y), kOrbitPart);
  Position.z = Towards(Position.z, goal(target.Position.z, direction.z), kOrbitPart);
  PositionDone();

  BeforeRotation();
  RotMatrix = target.RotMatrix;
  Rotate(NormalizeAngle(static_cast<float>(double{state->x.angle} + double{kL3DPi})), NormalizeAngle(state->y.angle),
         NormalizeAngle(state->z.angle), true);
  RotationDone();

  Swing(state->x);
  Swing(state->y);
  Swing(state->z);
  return 0;
}

void L3DLocation::FollowStep(FollowState& state) {
  if (!state.target || !CanMove()) return;
  L3DLocation& target = *state.target;
  target.BeforeRotation();
  state.active = 1;
  const L3DVector look = TransformPoint(target.RotMatrix, state.lookOffset, target.Position);
  const L3DVector goal = TransformPoint(target.RotMatrix, state.positionOffset, target.Position);
  const double smoothing = double{state.smoothing};
  if (smoothing <= 0.0) {
    Position = goal;
  } else {
    const auto step = [smoothing](float& current, float wanted) {
      if (current != wanted) {
        current = static_cast<float>(double{current} + (double{wanted} - double{current}) / smoothing);
      }
    };
    step(Position.x, goal.x);
    step(Position.y, goal.y);
    step(Position.z, goal.z);
  }
  SetPositionChanged(true);

  L3DVector angles = AnglesFromDirection(&target, static_cast<float>(double{look.x} - double{Position.x}),
                                         static_cast<float>(double{look.y} - double{Position.y}),
                                         static_cast<float>(double{look.z} - double{Position.z}));
  if (smoothing > 0.0) {
    const auto divisor = static_cast<float>(smoothing * 0.5);
    angles.x = AngleBlend(Angles.x, angles.x, divisor);
    angles.y = AngleBlend(Angles.y, angles.y, divisor);
  }
  BeforeRotation();
  ResetRotation();
  Rotate(angles.x, angles.y, angles.z, false);
  RotationDone();
}

}  // namespace vl
