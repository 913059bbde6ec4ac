// L3DLocation: position and orientation of everything that stands in a world, and every movement of it.
//
// `Angles` is kept in the form in which RotMatrix is built from it. An inverted location (its forward direction is
// reversed) shows other angles to the outside: X and Z negated. Operations that take or give angles by number speak
// of the shown form; those with Raw in their name, and the fields, of the stored one.
//
// A movement asks CanMove first and does nothing on false; it ends by OnPositionChanged or OnRotationChanged, which a
// descendant replaces to follow. Coordinates given as numbers: kKeepCoordinate leaves one as it is. Distances have no
// unit, angles are radians in any range.
#pragma once

#include <cstdint>

#include "engine3d/matrix.h"

namespace vl {

class L3DWorld;
struct OrbitState;
struct FollowState;

enum LocationFlag : uint32_t {
  LOC_RELIGHT_DYNAMIC = 0x02,  // never together with the next
  LOC_RELIGHT_FULL = 0x04,
  LOC_MOVED = 0x08,    // since the last frame
  LOC_ROTATED = 0x10,  // orientation or scale, since the last frame
};

inline constexpr float kKeepCoordinate = -99999.0f;

// Axes of LookAt.
enum LocationAxis : uint8_t { LOC_AXIS_X = 0x02, LOC_AXIS_Y = 0x04, LOC_AXIS_Z = 0x08, LOC_AXIS_ALL = 0xFF };

class L3DLocation {
 public:
  L3DLocation(float x, float y, float z);
  // At the place and with the orientation of the other, in no world.
  explicit L3DLocation(const L3DLocation& other);
  L3DLocation& operator=(const L3DLocation&) = delete;
  virtual ~L3DLocation() = default;

  virtual void SetPositionChanged(bool flag);
  virtual void SetRotationChanged(bool flag);
  // Takes the orientation. False, with nothing changed, when its angles are the present ones.
  virtual bool SetRotMatrix(const L3DMatrix& matrix);
  // One step of an orbit. 2 for a null state, else 0.
  virtual uint32_t MoveAround(OrbitState* state);
  virtual bool CanMove() const { return true; }
  virtual void OnPositionChanged() {}
  virtual void OnRotationChanged() {}
  // Before RotMatrix is read or changed.
  virtual void BeforeRotation() {}
  virtual void RequestFullRelight();
  virtual void RequestRelight();
  // Absolute: turns by the difference from LastAngles about the parent's axes. Relative: about the own axes. False
  // when there is nothing to do.
  virtual bool Rotate(float ax, float ay, float az, bool relative);

  // RotMatrix as that of no angles, so that an absolute Rotate gives the plain matrix of its angles.
  void ResetRotation();
  // Scale and hot spot too; turns from the present orientation to that of the other.
  void CopyFrom(const L3DLocation& other);

  void SetX(float v);
  void SetY(float v);
  void SetZ(float v);
  void SetPosition(float x, float y, float z);
  void SetPosition(const L3DLocation& other);
  void AddPosition(const L3DLocation& other);
  void SubPosition(const L3DLocation& other);
  // Here kKeepCoordinate keeps an angle as well.
  void Set(float ax, float ay, float az, float x, float y, float z);
  // Brings the matrix of the other up to date with its angles.
  void Set(L3DLocation& other);

  // Shown angles.
  float GetXAngle() const { return ShownAngles().x; }
  float GetYAngle() const { return ShownAngles().y; }
  float GetZAngle() const { return ShownAngles().z; }
  L3DVector ShownAngles() const { return DirectionInverted ? Mirrored(Angles) : Angles; }
  // Relative: turns about one own axis. Absolute: the other two angles stay.
  void SetAngleX(float a, bool relative);
  void SetAngleY(float a, bool relative);
  void SetAngleZ(float a, bool relative);
  void SetAngleXRaw(float a, bool relative);
  void SetAngleZRaw(float a, bool relative);
  void SetAngle(float ax, float ay, float az, bool relative);
  void SetAngle(const L3DLocation& other, bool relative);
  void AddAngle(const L3DLocation& other);
  void SubAngle(const L3DLocation& other);

  void Move(float d);
  void MoveBack(float d) { Move(-d); }
  void MoveRight(float d);
  void MoveLeft(float d) { MoveRight(-d); }
  void MoveUp(float d);
  void MoveDown(float d) { MoveUp(-d); }
  void TurnDown(float a) { Turn(a, 0, 0); }
  void TurnUp(float a) { Turn(-a, 0, 0); }
  void TurnLeft(float a) { Turn(0, a, 0); }
  void TurnRight(float a) { Turn(0, -a, 0); }
  void RollRight(float a) { Turn(0, 0, a); }
  void RollLeft(float a) { Turn(0, 0, -a); }
  void TurnBack();
  // Turns to the other, by 1/smoothing of the way when smoothing is above 0. Axes that aren't asked for keep their
  // angle; axes 0 does nothing.
  void LookAt(const L3DLocation& other, float smoothing, uint8_t axes);
  // One step behind another location. A state without a target does nothing.
  void FollowStep(FollowState& state);

  // The position moves against it, so that what is drawn stays in its place.
  void SetHotSpot(float x, float y, float z);
  void SetHotSpotRaw(float x, float y, float z);

  // Exactly 0 when no axis differs by more than 0.01.
  double GetDistance(const L3DLocation& other) const;
  // The orientation as the outside sees it.
  L3DMatrix GetRotMatrix();
  // Forward in the matrix; the fourth element is 0.
  void GetDirectionVector(const L3DMatrix& matrix, float out[4]) const;
  // Stored angles at which this looks along (dx, dy, dz). Straight up or down it keeps the Y angle of `reference`, or
  // 0 when that is null. A vector of 0 gives itself. Y is from 0 to 2π inclusive.
  L3DVector AnglesFromDirection(const L3DLocation* reference, float dx, float dy, float dz) const;
  // The same, shown.
  L3DVector GetLookAtAngles(const L3DLocation* reference, float dx, float dy, float dz) const;

  bool DirectionInverted = false;
  L3DMatrix RotMatrix = IdentityMatrix();
  L3DMatrix WorldMatrix = IdentityMatrix();
  L3DVector HotSpot;            // added to a local vertex before scaling
  L3DVector Scale = {1, 1, 1};  // of local vertices
  L3DVector PreviousPosition;   // at the end of the last collision pass
  L3DVector Position;
  L3DVector Angles;
  bool RotValid = false;  // LastAngles describe RotMatrix
  L3DVector LastAngles;   // that RotMatrix was last built from
  uint32_t Flags = LOC_RELIGHT_FULL | LOC_MOVED | LOC_ROTATED;
  L3DWorld* World = nullptr;  // not owned; null for a free location

 private:
  // X and Z negated: from stored to shown angles of an inverted location, and back.
  static L3DVector Mirrored(const L3DVector& angles);
  // Stored angles of the other as stored angles of this.
  L3DVector AnglesOf(const L3DLocation& other) const;
  bool StoreCoordinates(float x, float y, float z);
  void PositionDone();
  void RotationDone();
  void AddToPosition(const L3DVector& v, double factor);
  void MoveAlong(int column, double d);
  void Turn(float ax, float ay, float az);
  // Stored, normalised angles.
  void ApplyAngles(const L3DVector& angles, bool relative);
  void ApplySum(const L3DLocation& other, double sign);
};

}  // namespace vl
