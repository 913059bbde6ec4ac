#include "engine3d/location.h"

#include <cmath>

#include "engine3d/angle.h"

namespace vl {

namespace {

constexpr double kSamePlace = 0.01;
constexpr double kHalfPi = 1.5707963267948966;

float Rounded(double v) { return static_cast<float>(v); }

L3DVector Normalized(const L3DVector& angles) {
  return {NormalizeAngle(angles.x), NormalizeAngle(angles.y), NormalizeAngle(angles.z)};
}

// Within a turn, without the snap to 0.
float Difference(float to, float from) { return Rounded(std::fmod(double{to} - double{from}, double{kL3DTwoPi})); }

void SetFlag(uint32_t& flags, uint32_t bit, bool on) { flags = on ? flags | bit : flags & ~bit; }

}  // namespace

L3DLocation::L3DLocation(float x, float y, float z) : PreviousPosition{x, y, z}, Position{x, y, z} {}

L3DLocation::L3DLocation(const L3DLocation& other)
    : DirectionInverted(other.DirectionInverted),
      WorldMatrix(other.WorldMatrix),
      PreviousPosition(other.Position),
      Position(other.Position),
      Angles(other.Angles) {
  L3DLocation::Rotate(Angles.x, Angles.y, Angles.z, false);
}

void L3DLocation::CopyFrom(const L3DLocation& other) {
  HotSpot = other.HotSpot;
  Scale = other.Scale;
  PreviousPosition = other.PreviousPosition;
  Position = other.Position;
  Angles = other.Angles;
  DirectionInverted = other.DirectionInverted;
  Rotate(Angles.x, Angles.y, Angles.z, false);
  SetRotationChanged(true);
}

void L3DLocation::SetPositionChanged(bool flag) { SetFlag(Flags, LOC_MOVED, flag); }
void L3DLocation::SetRotationChanged(bool flag) { SetFlag(Flags, LOC_ROTATED, flag); }

void L3DLocation::RequestFullRelight() {
  SetFlag(Flags, LOC_RELIGHT_FULL, true);
  SetFlag(Flags, LOC_RELIGHT_DYNAMIC, false);
}

void L3DLocation::RequestRelight() {
  if (!(Flags & LOC_RELIGHT_FULL)) SetFlag(Flags, LOC_RELIGHT_DYNAMIC, true);
}

L3DVector L3DLocation::Mirrored(const L3DVector& angles) {
  return {NormalizeAngle(-angles.x), angles.y, NormalizeAngle(-angles.z)};
}

L3DVector L3DLocation::AnglesOf(const L3DLocation& other) const {
  return other.DirectionInverted == DirectionInverted ? other.Angles : Mirrored(other.Angles);
}

void L3DLocation::PositionDone() {
  SetPositionChanged(true);
  OnPositionChanged();
}

void L3DLocation::RotationDone() {
  OnRotationChanged();
  SetRotationChanged(true);
}

void L3DLocation::ResetRotation() {
  RotMatrix = IdentityMatrix();
  LastAngles = {};
  RotValid = false;
}

bool L3DLocation::Rotate(float ax, float ay, float az, bool relative) {
  const L3DVector angles = {ax, ay, az};
  if (relative) {
    RotMatrix = MatrixProduct(RotMatrix, MatrixFromAngles(angles));
    Angles = LastAngles = AnglesFromMatrix(RotMatrix);
  } else {
    if (RotValid && angles == LastAngles) return false;
    const L3DMatrix turn =
        MatrixFromAngles(Difference(ax, LastAngles.x), Difference(ay, LastAngles.y), Difference(az, LastAngles.z));
    RotMatrix = MatrixProduct(turn, RotMatrix);
    Angles = LastAngles = angles;
  }
  RotValid = true;
  return true;
}

bool L3DLocation::SetRotMatrix(const L3DMatrix& matrix) {
  if (!CanMove()) return false;
  L3DVector angles = AnglesFromMatrix(matrix);
  if (DirectionInverted) angles = Mirrored(angles);
  if (angles == Angles) return false;
  BeforeRotation();
  RotMatrix = matrix;
  Angles = LastAngles = angles;
  RotValid = true;
  RotationDone();
  return true;
}

L3DMatrix L3DLocation::GetRotMatrix() {
  BeforeRotation();
  if (!DirectionInverted) return RotMatrix;
  return MatrixFromAngles(-Angles.x, Angles.y, -Angles.z);
}

// --- Position ---

bool L3DLocation::StoreCoordinates(float x, float y, float z) {
  const L3DVector old = Position;
  if (x != kKeepCoordinate) Position.x = x;
  if (y != kKeepCoordinate) Position.y = y;
  if (z != kKeepCoordinate) Position.z = z;
  if (Position == old) return false;
  SetPositionChanged(true);
  return true;
}

void L3DLocation::SetX(float v) {
  if (!CanMove() || v == kKeepCoordinate) return;
  Position.x = v;
  SetPositionChanged(true);
}

void L3DLocation::SetY(float v) {
  if (!CanMove() || v == kKeepCoordinate) return;
  Position.y = v;
  SetPositionChanged(true);
}

void L3DLocation::SetZ(float v) {
  if (!CanMove() || v == kKeepCoordinate) return;
  Position.z = v;
  SetPositionChanged(true);
}

void L3DLocation::SetPosition(float x, float y, float z) {
  if (!CanMove()) return;
  StoreCoordinates(x, y, z);
  OnPositionChanged();
}

void L3DLocation::SetPosition(const L3DLocation& other) {
  if (!CanMove()) return;
  Position = other.Position;
  PositionDone();
}

void L3DLocation::AddToPosition(const L3DVector& v, double factor) {
  Position.x = Rounded(double{Position.x} + double{v.x} * factor);
  Position.y = Rounded(double{Position.y} + double{v.y} * factor);
  Position.z = Rounded(double{Position.z} + double{v.z} * factor);
}

void L3DLocation::AddPosition(const L3DLocation& other) {
  if (!CanMove()) return;
  AddToPosition(other.Position, 1.0);
  PositionDone();
}

void L3DLocation::SubPosition(const L3DLocation& other) {
  if (!CanMove()) return;
  AddToPosition(other.Position, -1.0);
  PositionDone();
}

void L3DLocation::MoveAlong(int column, double d) {
  if (!CanMove()) return;
  BeforeRotation();
  AddToPosition(RotMatrix.Column(column), d);
  PositionDone();
}

void L3DLocation::Move(float d) { MoveAlong(2, double{DirectionInverted ? -d : d}); }
void L3DLocation::MoveRight(float d) { MoveAlong(0, double{DirectionInverted ? -d : d}); }
void L3DLocation::MoveUp(float d) { MoveAlong(1, double{d}); }

void L3DLocation::SetHotSpot(float x, float y, float z) {
  if (!CanMove()) return;
  const auto set = [](float value, float& hotSpot, float& position) {
    if (value == kKeepCoordinate) return;
    hotSpot = value;
    position = Rounded(double{position} - double{value});
  };
  set(x, HotSpot.x, Position.x);
  set(y, HotSpot.y, Position.y);
  set(z, HotSpot.z, Position.z);
  SetPositionChanged(true);
  SetRotationChanged(true);
  OnPositionChanged();
}

void L3DLocation::SetHotSpotRaw(float x, float y, float z) {
  if (!CanMove()) return;
  if (x != kKeepCoordinate) HotSpot.x = x;
  if (y != kKeepCoordinate) HotSpot.y = y;
  if (z != kKeepCoordinate) HotSpot.z = z;
  SetPositionChanged(true);
  SetRotationChanged(true);
}

double L3DLocation::GetDistance(const L3DLocation& other) const {
  const double x = std::fabs(double{Position.x} - double{other.Position.x});
  const double y = std::fabs(double{Position.y} - double{other.Position.y});
  const double z = std::fabs(double{Position.z} - double{other.Position.z});
  if (x <= kSamePlace && y <= kSamePlace && z <= kSamePlace) return 0.0;
  return std::sqrt(x * x + y * y + z * z);
}

// --- Both ---

void L3DLocation::Set(float ax, float ay, float az, float x, float y, float z) {
  if (!CanMove()) return;
  StoreCoordinates(x, y, z);
  const L3DVector shown = ShownAngles();
  const auto wanted = [](float given, float present) {
    return given == kKeepCoordinate ? present : NormalizeAngle(given);
  };
  const L3DVector angles = {wanted(ax, shown.x), wanted(ay, shown.y), wanted(az, shown.z)};
  if (!(angles == shown)) {
    const L3DVector stored = DirectionInverted ? Mirrored(angles) : angles;
    BeforeRotation();
    Angles = {};
    ResetRotation();
    Rotate(stored.x, stored.y, stored.z, false);
    SetRotationChanged(true);
  }
  OnPositionChanged();
}

void L3DLocation::Set(L3DLocation& other) {
  if (!CanMove()) return;
  const L3DVector angles = AnglesOf(other);
  Position = other.Position;
  PositionDone();
  if (angles == Angles) return;
  BeforeRotation();
  other.Rotate(angles.x, angles.y, angles.z, false);
  Angles = angles;
  LastAngles = other.LastAngles;
  RotMatrix = other.RotMatrix;
  RotValid = true;
  RotationDone();
}

// --- Angles ---

void L3DLocation::ApplyAngles(const L3DVector& angles, bool relative) {
  BeforeRotation();
  if (!relative) ResetRotation();
  Rotate(angles.x, angles.y, angles.z, relative);
  RotationDone();
}

void L3DLocation::SetAngleXRaw(float a, bool relative) {
  if (!CanMove()) return;
  const L3DVector rest = relative ? L3DVector{} : Angles;
  ApplyAngles({NormalizeAngle(a), rest.y, rest.z}, relative);
}

void L3DLocation::SetAngleZRaw(float a, bool relative) {
  if (!CanMove()) return;
  const L3DVector rest = relative ? L3DVector{} : Angles;
  ApplyAngles({rest.x, rest.y, NormalizeAngle(a)}, relative);
}

void L3DLocation::SetAngleX(float a, bool relative) {
  SetAngleXRaw(DirectionInverted ? NormalizeAngle(-a) : a, relative);
}

void L3DLocation::SetAngleZ(float a, bool relative) {
  SetAngleZRaw(DirectionInverted ? NormalizeAngle(-a) : a, relative);
}

void L3DLocation::SetAngleY(float a, bool relative) {
  if (!CanMove()) return;
  const L3DVector rest = relative ? L3DVector{} : Angles;
  ApplyAngles({rest.x, NormalizeAngle(a), rest.z}, relative);
}

void L3DLocation::SetAngle(float ax, float ay, float az, bool relative) {
  if (!CanMove()) return;
  const L3DVector angles = {ax, ay, az};
  ApplyAngles(Normalized(DirectionInverted ? Mirrored(angles) : angles), relative);
}

void L3DLocation::SetAngle(const L3DLocation& other, bool relative) {
  if (!CanMove()) return;
  const L3DVector angles = AnglesOf(other);
  if (!relative && angles == Angles) return;
  ApplyAngles(Normalized(angles), relative);
}

void L3DLocation::ApplySum(const L3DLocation& other, double sign) {
  if (!CanMove()) return;
  const L3DVector more = AnglesOf(other);
  const auto sum = [sign](float a, float b) { return NormalizeAngle(Rounded(double{a} + sign * double{b})); };
  const L3DVector angles = {sum(Angles.x, more.x), sum(Angles.y, more.y), sum(Angles.z, more.z)};
  BeforeRotation();
  Rotate(angles.x, angles.y, angles.z, false);
  RotationDone();
}

void L3DLocation::AddAngle(const L3DLocation& other) { ApplySum(other, 1.0); }
void L3DLocation::SubAngle(const L3DLocation& other) { ApplySum(other, -1.0); }

void L3DLocation::Turn(float ax, float ay, float az) {
  if (!CanMove()) return;
  ApplyAngles(Normalized({ax, ay, az}), true);
}

void L3DLocation::TurnBack() { TurnLeft(kL3DPi); }

// --- Looking ---

void L3DLocation::GetDirectionVector(const L3DMatrix& matrix, float out[4]) const {
  const L3DVector forward = matrix.Column(2);
  out[0] = DirectionInverted ? -forward.x : forward.x;
  out[1] = DirectionInverted ? -forward.y : forward.y;
  out[2] = DirectionInverted ? -forward.z : forward.z;
  out[3] = DirectionInverted ? -0.0f : 0.0f;
}

L3DVector L3DLocation::AnglesFromDirection(const L3DLocation* reference, float dx, float dy, float dz) const {
  if (DirectionInverted) {
    dx = -dx;
    dy = -dy;
    dz = -dz;
  }
  const double x = double{dx}, y = double{dy}, z = double{dz};
  const double length = std::sqrt(x * x + y * y + z * z);
  if (length == 0.0) return {dx, dy, dz};
  const double n = 1.0 / length;
  const double nx = n * x, ny = n * y, nz = n * z;
  // The pitch before it is rounded: its cosine decides on the yaw of a steep look, and half of the float's pi lies
  // beyond the vertical, where the cosine has the other sign.
  const double pitch = ny <= -1.0 ? kHalfPi : ny >= 1.0 ? -kHalfPi : -std::asin(ny);
  L3DVector angles = {NormalizeAngle(Rounded(pitch)), 0.0f, 0.0f};
  if (nx == 0.0 && nz == 0.0) {
    angles.y = reference ? reference->Angles.y : 0.0f;
    return angles;
  }
  const double cosine = nz / std::cos(pitch);
  const double sine = -nx / std::cos(pitch);
  if (cosine == 0.0) {
    angles.y = sine < 0.0 ? kL3DThreeHalfPi : kL3DHalfPi;
    return angles;
  }
  const bool right = sine < 0.0;
  if (cosine <= -1.0) {
    angles.y = kL3DPi;
  } else if (cosine >= 1.0) {
    angles.y = right ? kL3DTwoPi : 0.0f;
  } else {
    angles.y = Rounded(right ? double{kL3DTwoPi} - std::acos(cosine) : std::acos(cosine));
  }
  return angles;
}

L3DVector L3DLocation::GetLookAtAngles(const L3DLocation* reference, float dx, float dy, float dz) const {
  const L3DVector angles = AnglesFromDirection(reference, dx, dy, dz);
  return DirectionInverted ? Mirrored(angles) : angles;
}

void L3DLocation::LookAt(const L3DLocation& other, float smoothing, uint8_t axes) {
  if (axes == 0 || !CanMove()) return;
  L3DVector angles = AnglesFromDirection(this, Rounded(double{other.Position.x} - double{Position.x}),
                                         Rounded(double{other.Position.y} - double{Position.y}),
                                         Rounded(double{other.Position.z} - double{Position.z}));
  if (smoothing > 0.0f) {
    angles.x = AngleBlend(Angles.x, angles.x, smoothing);
    angles.y = AngleBlend(Angles.y, angles.y, smoothing);
  }
  if (!(axes & LOC_AXIS_X)) angles.x = Angles.x;
  if (!(axes & LOC_AXIS_Y)) angles.y = Angles.y;
  if (!(axes & LOC_AXIS_Z)) angles.z = Angles.z;
  ApplyAngles(angles, false);
}

}  // namespace vl
