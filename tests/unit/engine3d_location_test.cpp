// Locations: movements, angles, looking, following, orbits and links. Expected values come from geometry.
#include <cmath>
#include <limits>

#include "engine3d/angle.h"
#include "engine3d/follow.h"
#include "engine3d/link.h"
#include "engine3d/location.h"

namespace vl {
namespace {

constexpr float kQuarter = kL3DHalfPi;

void ExpectNear(const L3DVector& actual, const L3DVector& wanted, float tolerance, const char* what) {
  EXPECT_NEAR(actual.x, wanted.x, tolerance) << what;
  EXPECT_NEAR(actual.y, wanted.y, tolerance) << what;
  EXPECT_NEAR(actual.z, wanted.z, tolerance) << what;
}

void ExpectNear(const L3DMatrix& actual, const L3DMatrix& wanted, float tolerance) {
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 4; ++j) EXPECT_NEAR(actual[i][j], wanted[i][j], tolerance) << i << "," << j;
  }
}

// Counts the calls that a descendant sees, and can stand still.
class Watched : public L3DLocation {
 public:
  using L3DLocation::L3DLocation;
  bool CanMove() const override { return movable; }
  void OnPositionChanged() override { ++positions; }
  void OnRotationChanged() override { ++rotations; }
  void BeforeRotation() override { ++before; }

  bool movable = true;
  int positions = 0;
  int rotations = 0;
  int before = 0;
};

TEST(Angle, Normalized) {
  struct Case {
    float angle, wanted;
  };
  constexpr Case kCases[] = {
      {0.0f, 0.0f},          {0.0009f, 0.0f},        {-0.0009f, 0.0f},   {0.0011f, 0.0011f},       {1.5f, 1.5f},
      {-1.0f, 5.2831855f},   {kL3DTwoPi, kL3DTwoPi}, {-kL3DTwoPi, 0.0f}, {7.0f, 7.0f - kL3DTwoPi}, {-7.0f, 5.566371f},
      {kL3DTwoPi * 4, 0.0f}, {-kL3DPi, kL3DPi},
  };
  for (const Case& c : kCases) EXPECT_FLOAT_EQ(NormalizeAngle(c.angle), c.wanted) << c.angle;
  for (const float wild : {1e30f, -1e30f, 12345.678f, -99999.0f}) {
    EXPECT_GE(NormalizeAngle(wild), 0.0f) << wild;
    EXPECT_LE(NormalizeAngle(wild), kL3DTwoPi) << wild;
  }
  EXPECT_TRUE(std::isnan(NormalizeAngle(std::numeric_limits<float>::infinity())));
}

TEST(Angle, BlendTakesTheShorterArc) {
  struct Case {
    float current, target, divisor, wanted;
  };
  constexpr Case kCases[] = {
      {1.0f, 2.0f, 4.0f, 1.25f},
      {2.0f, 1.0f, 4.0f, 1.75f},
      {6.0f, 0.5f, 2.0f, 6.0f + 0.39159274f},  // beyond the full turn
      {0.5f, 6.0f, 2.0f, 0.5f - 0.39159274f},
      {0.1f, 6.0f, 2.0f, 0.1f - 0.19159274f + kL3DTwoPi},
      {1.0f, 1.0f, 3.0f, 1.0f},
      {-1.0f, 1.0f, 1.0f, 1.0f},
  };
  for (const Case& c : kCases) {
    const double wanted = c.wanted >= kL3DTwoPi ? c.wanted - kL3DTwoPi : c.wanted;
    EXPECT_NEAR(AngleBlend(c.current, c.target, c.divisor), wanted, 2e-6) << c.current << " " << c.target;
  }
}

TEST(MatrixOfAngles, AnglesComeBack) {
  for (const float ax : {0.0f, 0.4f, 1.2f, 5.9f}) {
    for (const float ay : {0.0f, 0.3f, 1.4f, 5.0f}) {
      for (const float az : {0.0f, 0.9f, 3.0f, 4.4f}) {
        const L3DMatrix m = MatrixFromAngles(ax, ay, az, {1, 2, 3});
        ExpectNear(AnglesFromMatrix(m), {ax, ay, az}, 4e-6f, "angles");
        L3DMatrix inverse;
        ASSERT_TRUE(MatrixInverse(m, inverse));
        ExpectNear(MatrixProduct(m, inverse), IdentityMatrix(), 1e-6f);
      }
    }
  }
}

TEST(MatrixInverseTest, OfScaleAndOfAZeroRow) {
  L3DMatrix m;
  m[0][1] = 2;
  m[1][2] = 2;
  m[2][0] = -2;
  m.SetTranslation({2, 4, 6});
  L3DMatrix inverse;
  ASSERT_TRUE(MatrixInverse(m, inverse));
  ExpectNear(MatrixProduct(inverse, m), IdentityMatrix(), 0);
  m[1][2] = 0;
  EXPECT_FALSE(MatrixInverse(m, inverse));
  EXPECT_EQ(inverse, IdentityMatrix());
}

TEST(TransformChain, HotSpotThenScaleThenTurnThenCamera) {
  // (1 + 1) * 2, (0 + 0) * 3, (2 - 1) * 4 = 4, 0, 4; a quarter to the left brings right to forward, forward to left.
  const L3DMatrix world = MatrixFromAngles(0, kQuarter, 0);
  const L3DVector at = VertexToWorld({1, 0, 2}, {1, 0, -1}, {2, 3, 4}, world, {10, 20, 30});
  ExpectNear(at, {6, 20, 34}, 2e-6f, "world");
  L3DMatrix inverse;
  ASSERT_TRUE(MatrixInverse(MatrixFromAngles(0, -kQuarter, 0), inverse));  // the camera looks right
  ExpectNear(WorldToView(at, inverse, {6, 20, 30}), {-4, 0, 0}, 2e-6f, "view");
}

TEST(Location, Starts) {
  const L3DLocation a(1, 2, 3);
  EXPECT_EQ(a.Position, (L3DVector{1, 2, 3}));
  EXPECT_EQ(a.PreviousPosition, a.Position);
  EXPECT_EQ(a.Flags, 0x1Cu);
  EXPECT_EQ(a.Scale, (L3DVector{1, 1, 1}));
  EXPECT_EQ(a.RotMatrix, IdentityMatrix());
  L3DLocation b(7, 8, 9);
  b.SetAngle(0.1f, 0.2f, 0.3f, false);
  b.DirectionInverted = true;
  b.Scale = {2, 2, 2};
  b.HotSpot = {1, 1, 1};
  b.PreviousPosition = {};
  const L3DLocation copy(b);
  EXPECT_EQ(copy.Position, b.Position);
  EXPECT_EQ(copy.PreviousPosition, b.Position);
  EXPECT_EQ(copy.Angles, b.Angles);
  EXPECT_TRUE(copy.DirectionInverted);
  EXPECT_EQ(copy.RotMatrix, MatrixFromAngles(0.1f, 0.2f, 0.3f));
  EXPECT_EQ(copy.Scale, a.Scale);
  EXPECT_EQ(copy.HotSpot, a.HotSpot);
  L3DLocation taken(0, 0, 0);
  taken.CopyFrom(b);
  EXPECT_EQ(taken.Scale, b.Scale);
  EXPECT_EQ(taken.HotSpot, b.HotSpot);
  EXPECT_EQ(taken.PreviousPosition, b.PreviousPosition);
  EXPECT_EQ(taken.RotMatrix, b.RotMatrix);
}

TEST(Location, MovesAlongItsAxes) {
  struct Case {
    const char* name;
    void (L3DLocation::*move)(float);
    L3DVector straight, pitchedDown, left, inverted;  // by 2, from 0
  };
  const Case kCases[] = {
      {"Move", &L3DLocation::Move, {0, 0, 2}, {0, -2, 0}, {-2, 0, 0}, {0, 0, -2}},
      {"MoveBack", &L3DLocation::MoveBack, {0, 0, -2}, {0, 2, 0}, {2, 0, 0}, {0, 0, 2}},
      {"MoveRight", &L3DLocation::MoveRight, {2, 0, 0}, {2, 0, 0}, {0, 0, 2}, {-2, 0, 0}},
      {"MoveLeft", &L3DLocation::MoveLeft, {-2, 0, 0}, {-2, 0, 0}, {0, 0, -2}, {2, 0, 0}},
      {"MoveUp", &L3DLocation::MoveUp, {0, 2, 0}, {0, 0, 2}, {0, 2, 0}, {0, 2, 0}},
      {"MoveDown", &L3DLocation::MoveDown, {0, -2, 0}, {0, 0, -2}, {0, -2, 0}, {0, -2, 0}},
  };
  for (const Case& c : kCases) {
    Watched a(0, 0, 0);
    (a.*c.move)(2);
    ExpectNear(a.Position, c.straight, 0, c.name);
    EXPECT_EQ(a.positions, 1) << c.name;
    a.SetPositionChanged(false);
    (a.*c.move)(0);  // tells of a move by nothing too
    EXPECT_EQ(a.positions, 2) << c.name;
    EXPECT_TRUE(a.Flags & LOC_MOVED) << c.name;
    L3DLocation down(0, 0, 0);
    down.TurnDown(kQuarter);
    (down.*c.move)(2);
    ExpectNear(down.Position, c.pitchedDown, 1e-6f, c.name);
    L3DLocation left(0, 0, 0);
    left.TurnLeft(kQuarter);
    (left.*c.move)(2);
    ExpectNear(left.Position, c.left, 1e-6f, c.name);
    L3DLocation inverted(0, 0, 0);
    inverted.DirectionInverted = true;
    (inverted.*c.move)(2);
    ExpectNear(inverted.Position, c.inverted, 0, c.name);
  }
}

TEST(Location, TurnsAboutItsOwnAxes) {
  struct Case {
    const char* name;
    void (L3DLocation::*turn)(float);
    L3DVector forward, right;  // after a quarter
  };
  const Case kCases[] = {
      {"TurnDown", &L3DLocation::TurnDown, {0, -1, 0}, {1, 0, 0}},
      {"TurnUp", &L3DLocation::TurnUp, {0, 1, 0}, {1, 0, 0}},
      {"TurnLeft", &L3DLocation::TurnLeft, {-1, 0, 0}, {0, 0, 1}},
      {"TurnRight", &L3DLocation::TurnRight, {1, 0, 0}, {0, 0, -1}},
      {"RollRight", &L3DLocation::RollRight, {0, 0, 1}, {0, 1, 0}},
      {"RollLeft", &L3DLocation::RollLeft, {0, 0, 1}, {0, -1, 0}},
  };
  for (const Case& c : kCases) {
    Watched a(0, 0, 0);
    a.SetRotationChanged(false);
    (a.*c.turn)(kQuarter);
    ExpectNear(a.RotMatrix.Column(2), c.forward, 1e-6f, c.name);
    ExpectNear(a.RotMatrix.Column(0), c.right, 1e-6f, c.name);
    EXPECT_EQ(a.rotations, 1) << c.name;
    EXPECT_EQ(a.before, 1) << c.name;
    EXPECT_TRUE(a.Flags & LOC_ROTATED) << c.name;
    (a.*c.turn)(-kQuarter);
    ExpectNear(a.RotMatrix, IdentityMatrix(), 1e-6f);
  }
  // Rolled by a quarter, the own X axis points up: turning down then goes to the side.
  L3DLocation a(0, 0, 0);
  a.RollRight(kQuarter);
  a.TurnDown(kQuarter);
  ExpectNear(a.RotMatrix.Column(2), {1, 0, 0}, 1e-6f, "own axis");
  L3DLocation b(0, 0, 0);
  b.TurnBack();
  ExpectNear(b.RotMatrix.Column(2), {0, 0, -1}, 1e-6f, "back");
}

TEST(Location, CoordinatesThatStay) {
  Watched a(1, 2, 3);
  a.SetPositionChanged(false);
  a.SetPosition(kKeepCoordinate, 5, kKeepCoordinate);
  EXPECT_EQ(a.Position, (L3DVector{1, 5, 3}));
  EXPECT_TRUE(a.Flags & LOC_MOVED);
  a.SetPositionChanged(false);
  a.SetPosition(1, kKeepCoordinate, 3);  // nothing differs, but it tells
  EXPECT_FALSE(a.Flags & LOC_MOVED);
  EXPECT_EQ(a.positions, 2);
  a.SetX(9);
  a.SetY(kKeepCoordinate);
  EXPECT_EQ(a.Position, (L3DVector{9, 5, 3}));
  EXPECT_TRUE(a.Flags & LOC_MOVED);
  a.AddPosition(L3DLocation(1, 1, 1));
  a.SubPosition(L3DLocation(0, 4, -2));
  EXPECT_EQ(a.Position, (L3DVector{10, 2, 6}));
  a.SetHotSpot(1, kKeepCoordinate, 2);
  EXPECT_EQ(a.HotSpot, (L3DVector{1, 0, 2}));
  EXPECT_EQ(a.Position, (L3DVector{9, 2, 4}));
  a.SetHotSpotRaw(3, 3, kKeepCoordinate);
  EXPECT_EQ(a.HotSpot, (L3DVector{3, 3, 2}));
  EXPECT_EQ(a.Position, (L3DVector{9, 2, 4}));
  a.Set(0.5f, kKeepCoordinate, kKeepCoordinate, kKeepCoordinate, 7, kKeepCoordinate);
  EXPECT_EQ(a.Position, (L3DVector{9, 7, 4}));
  EXPECT_EQ(a.Angles, (L3DVector{0.5f, 0, 0}));
  EXPECT_EQ(a.RotMatrix, MatrixFromAngles(0.5f, 0, 0));
}

TEST(Location, StandsStill) {
  Watched a(1, 2, 3);
  a.movable = false;
  const uint32_t flags = a.Flags = 0;
  L3DLocation other(4, 5, 6);
  other.SetAngle(1, 1, 1, false);
  OrbitState orbit;
  orbit.target = &other;
  FollowState follow;
  follow.target = &other;
  a.SetX(9);
  a.SetPosition(9, 9, 9);
  a.SetPosition(other);
  a.AddPosition(other);
  a.SubPosition(other);
  a.Set(1, 1, 1, 9, 9, 9);
  a.Set(other);
  a.SetAngleX(1, false);
  a.SetAngleY(1, true);
  a.SetAngleZ(1, false);
  a.SetAngle(1, 2, 3, false);
  a.SetAngle(other, true);
  a.AddAngle(other);
  a.Move(1);
  a.MoveRight(1);
  a.MoveUp(1);
  a.TurnLeft(1);
  a.RollLeft(1);
  a.TurnBack();
  a.LookAt(other, 0, LOC_AXIS_ALL);
  a.SetHotSpot(1, 1, 1);
  a.SetHotSpotRaw(1, 1, 1);
  a.FollowStep(follow);
  EXPECT_EQ(a.MoveAround(&orbit), 0u);
  EXPECT_FALSE(a.SetRotMatrix(other.RotMatrix));
  EXPECT_EQ(a.Position, (L3DVector{1, 2, 3}));
  EXPECT_EQ(a.Angles, L3DVector{});
  EXPECT_EQ(a.HotSpot, L3DVector{});
  EXPECT_EQ(a.RotMatrix, IdentityMatrix());
  EXPECT_EQ(a.Flags, flags);
  EXPECT_EQ(a.positions + a.rotations, 0);
}

TEST(Location, Angles) {
  L3DLocation a(0, 0, 0);
  a.SetAngleX(0.0005f, false);
  EXPECT_EQ(a.Angles.x, 0.0f);
  a.SetAngle(0.1f, -0.2f, 0.3f, false);
  EXPECT_FLOAT_EQ(a.GetYAngle(), kL3DTwoPi - 0.2f);
  a.SetAngleY(0.2f, false);
  EXPECT_EQ(a.RotMatrix, MatrixFromAngles(0.1f, 0.2f, 0.3f));
  const L3DMatrix before = a.RotMatrix;
  EXPECT_FALSE(a.Rotate(0.1f, 0.2f, 0.3f, false));
  EXPECT_EQ(a.RotMatrix, before);
  a.SetAngleX(0.25f, true);
  ExpectNear(a.RotMatrix, MatrixProduct(before, MatrixFromAngles(0.25f, 0, 0)), 0);
  ExpectNear(a.Angles, {0.35f, 0.2f, 0.3f}, 1e-6f, "X is the innermost turn");

  // A sum of angles turns the present matrix by the difference about the parent's axes.
  L3DLocation b(0, 0, 0);
  b.SetAngle(0.5f, 0, 0, false);
  L3DLocation more(0, 0, 0);
  more.SetAngle(0, 0, 0.75f, false);
  b.AddAngle(more);
  EXPECT_EQ(b.Angles, (L3DVector{0.5f, 0, 0.75f}));
  ExpectNear(b.RotMatrix, MatrixProduct(MatrixFromAngles(0, 0, 0.75f), MatrixFromAngles(0.5f, 0, 0)), 1e-7f);
  b.SubAngle(more);
  EXPECT_EQ(b.Angles, (L3DVector{0.5f, 0, 0}));
  ExpectNear(b.RotMatrix, MatrixFromAngles(0.5f, 0, 0), 1e-6f);

  Watched c(0, 0, 0);
  EXPECT_TRUE(c.SetRotMatrix(MatrixFromAngles(0.5f, 1, 0)));
  ExpectNear(c.Angles, {0.5f, 1, 0}, 1e-6f, "of the matrix");
  EXPECT_FALSE(c.SetRotMatrix(MatrixFromAngles(0.5f, 1, 0)));
  EXPECT_EQ(c.rotations, 1);
  c.SetAngle(more, false);
  c.SetAngle(more, false);
  EXPECT_EQ(c.rotations, 2);
  EXPECT_EQ(c.RotMatrix, more.RotMatrix);
}

TEST(Location, Inverted) {
  L3DLocation a(0, 0, 0);
  a.DirectionInverted = true;
  a.SetAngle(0.5f, 1.0f, 1.5f, false);
  EXPECT_EQ(a.Angles, (L3DVector{kL3DTwoPi - 0.5f, 1.0f, kL3DTwoPi - 1.5f}));
  ExpectNear(a.ShownAngles(), {0.5f, 1.0f, 1.5f}, 1e-6f, "shown");
  ExpectNear(a.GetRotMatrix(), MatrixFromAngles(0.5f, 1.0f, 1.5f), 1e-6f);
  a.SetAngleX(0.25f, false);
  EXPECT_NEAR(a.GetXAngle(), 0.25f, 1e-6f);
  EXPECT_NEAR(a.GetZAngle(), 1.5f, 1e-6f);
  a.SetAngleXRaw(0.25f, false);
  EXPECT_EQ(a.Angles.x, 0.25f);
  L3DLocation plain(1, 1, 1);
  plain.SetAngle(0.5f, 0.5f, 0.5f, false);
  a.SetAngle(plain, false);
  EXPECT_EQ(a.Angles, (L3DVector{kL3DTwoPi - 0.5f, 0.5f, kL3DTwoPi - 0.5f}));
  L3DLocation other(a);
  other.SetAngle(a, false);
  EXPECT_EQ(other.Angles, a.Angles);
  const L3DMatrix turned = MatrixFromAngles(0.75f, 1, 0.25f);
  EXPECT_TRUE(a.SetRotMatrix(turned));
  ExpectNear(a.ShownAngles(), {0.75f, 1, 0.25f}, 2e-6f, "shown of the matrix");
  float direction[4];
  a.GetDirectionVector(turned, direction);
  for (int i = 0; i < 3; ++i) EXPECT_EQ(direction[i], -turned[i][2]);
  EXPECT_EQ(direction[3], 0.0f);
}

TEST(Location, SetTakesPlaceAndOrientation) {
  L3DLocation from(4, 5, 6);
  from.SetAngle(0.5f, 1, 1.5f, false);
  Watched a(0, 0, 0);
  a.Set(from);
  EXPECT_EQ(a.Position, from.Position);
  EXPECT_EQ(a.Angles, from.Angles);
  EXPECT_EQ(a.RotMatrix, from.RotMatrix);
  EXPECT_EQ(a.rotations, 1);
  a.Set(from);
  EXPECT_EQ(a.rotations, 1);
  EXPECT_EQ(a.positions, 2);
}

TEST(Location, DistanceOfNeighbours) {
  const L3DLocation a(1, 1, 1);
  EXPECT_EQ(a.GetDistance(L3DLocation(1.005f, 0.995f, 1.005f)), 0.0);
  EXPECT_NEAR(a.GetDistance(L3DLocation(1.02f, 1, 1)), 0.02, 1e-6);
  EXPECT_EQ(a.GetDistance(L3DLocation(3, 4, 7)), 7.0);
}

TEST(Location, LooksAlongEveryDirection) {
  const L3DVector kDirections[] = {{0, 0, 1},  {1, 0, 0},      {-1, 0, 0},    {0, 0, -1},     {1, 2, 3},
                                   {-3, 1, 2}, {2, -5, -1},    {-1, -1, -1},  {0.01f, 1, 0},  {0, -1, 0.01f},
                                   {5, 0, -5}, {-1e-3f, 0, 1}, {1, 1e-3f, 0}, {1e6f, 1e6f, 1}};
  for (const L3DVector& d : kDirections) {
    L3DLocation a(0, 0, 0);
    a.LookAt(L3DLocation(d.x, d.y, d.z), 0, LOC_AXIS_ALL);
    const float length = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
    ExpectNear(a.RotMatrix.Column(2), {d.x / length, d.y / length, d.z / length}, 1.1e-3f, "forward");
    EXPECT_EQ(a.Angles.z, 0.0f);
    L3DLocation inverted(0, 0, 0);
    inverted.DirectionInverted = true;
    inverted.LookAt(L3DLocation(d.x, d.y, d.z), 0, LOC_AXIS_ALL);
    ExpectNear(inverted.RotMatrix.Column(2), {-d.x / length, -d.y / length, -d.z / length}, 1.1e-3f, "inverted");
  }
}

TEST(Location, LooksAtTheEdges) {
  L3DLocation a(0, 0, 0);
  L3DLocation reference(0, 0, 0);
  reference.SetAngleY(1.25f, false);
  EXPECT_EQ(a.AnglesFromDirection(&reference, 0, 2, 0), (L3DVector{kL3DThreeHalfPi, 1.25f, 0}));
  EXPECT_EQ(a.AnglesFromDirection(nullptr, 0, -2, 0), (L3DVector{kL3DHalfPi, 0, 0}));
  EXPECT_EQ(a.AnglesFromDirection(&reference, 0, 0, 0), L3DVector{});
  EXPECT_EQ(a.AnglesFromDirection(nullptr, 3, 0, 0).y, kL3DThreeHalfPi);
  EXPECT_EQ(a.AnglesFromDirection(nullptr, -3, 0, 0).y, kL3DHalfPi);
  a.DirectionInverted = true;
  const L3DVector shown = a.GetLookAtAngles(nullptr, 0, 1, 1);
  const L3DVector stored = a.AnglesFromDirection(nullptr, 0, 1, 1);
  EXPECT_FLOAT_EQ(shown.x, kL3DTwoPi - stored.x);

  // Only the axes asked for, and only a part of the way.
  Watched b(0, 0, 0);
  b.SetAngle(0, 0, 0.5f, false);
  b.LookAt(L3DLocation(-1, -1, 0), 0, 0);
  EXPECT_EQ(b.rotations, 1);
  b.LookAt(L3DLocation(-1, -1, 0), 0, LOC_AXIS_Y);
  EXPECT_EQ(b.Angles, (L3DVector{0, kL3DHalfPi, 0.5f}));
  b.LookAt(L3DLocation(-1, -1, 0), 4, LOC_AXIS_X | LOC_AXIS_Z);
  ExpectNear(b.Angles, {kL3DPi / 16, kL3DHalfPi, 0}, 1e-6f, "a quarter of the pitch; no roll");
}

TEST(Location, RelightFlags) {
  L3DLocation a(0, 0, 0);
  a.Flags = 0;
  a.RequestRelight();
  EXPECT_EQ(a.Flags, uint32_t{LOC_RELIGHT_DYNAMIC});
  a.RequestFullRelight();
  EXPECT_EQ(a.Flags, uint32_t{LOC_RELIGHT_FULL});
  a.RequestRelight();
  EXPECT_EQ(a.Flags, uint32_t{LOC_RELIGHT_FULL});
}

TEST(Follow, StandsBehindTheTargetAndLooks) {
  L3DLocation target(10, 0, 0);
  target.TurnLeft(kQuarter);  // its forward is -X, its right +Z
  FollowState state;
  state.target = &target;
  state.positionOffset = {0, 0, -5};
  L3DLocation a(0, 0, 0);
  a.FollowStep(state);
  EXPECT_EQ(state.active, 1u);
  ExpectNear(a.Position, {15, 0, 0}, 1e-5f, "behind");
  ExpectNear(a.RotMatrix.Column(2), {-1, 0, 0}, 1e-5f, "looks at it");
  // Half of the way each step, and half of that divisor for the angles: all of the turn.
  state.smoothing = 2;
  state.positionOffset = {0, 0, -9};
  a.FollowStep(state);
  ExpectNear(a.Position, {17, 0, 0}, 1e-5f, "half of the way");
  state.target = nullptr;
  a.FollowStep(state);
  ExpectNear(a.Position, {17, 0, 0}, 1e-5f, "no target");
}

TEST(Follow, Orbit) {
  EXPECT_EQ(L3DLocation(0, 0, 0).MoveAround(nullptr), 2u);
  L3DLocation target(0, 0, 8);
  OrbitState state;
  state.target = &target;
  state.distance = 4;
  state.x = {1.0f, 0.0f, 1.5f, 2.0f};
  state.y = {0.0f, 0.5f, 0.0f, 0.75f};
  state.z = {0.0f, 0.0f, 0.0f, kL3DTwoPi};
  state.x.angle = 0.0f;
  state.x.speed = 0.25f;
  L3DLocation a(0, 0, 0);
  EXPECT_EQ(a.MoveAround(&state), 0u);
  ExpectNear(a.Position, {0, 0, 3}, 1e-6f, "a quarter of the way to 12");
  ExpectNear(a.RotMatrix.Column(2), {0, 0, -1}, 1e-6f, "turned back to the target");
  EXPECT_EQ(state.x.angle, 1.5f);  // below its minimum
  EXPECT_EQ(state.x.speed, -0.25f);
  EXPECT_EQ(state.y.angle, 0.5f);
  EXPECT_EQ(a.MoveAround(&state), 0u);
  EXPECT_EQ(state.y.angle, 0.75f);  // above its maximum
  EXPECT_EQ(state.y.speed, -0.5f);
  EXPECT_EQ(state.x.speed, 0.25f);
}

TEST(Link, AChildFollowsItsParent) {
  L3DLocation parent(10, 0, 0);
  parent.TurnLeft(kQuarter);
  L3DLink top;
  UpdateWorldMatrix(parent, nullptr, top, 0);
  EXPECT_EQ(parent.WorldMatrix.Translation(), parent.Position);
  L3DLocation child(10, 0, 3);
  child.TurnDown(0.5f);
  const L3DMatrix own = child.RotMatrix;
  L3DLink link;
  TakeLink(link, child, parent, 0);
  UpdateWorldMatrix(child, &parent, link, 0);  // nothing has changed
  ExpectNear(child.Position, {10, 0, 3}, 0, "at rest");
  EXPECT_EQ(child.WorldMatrix.Translation(), child.Position);

  parent.TurnLeft(kQuarter);
  parent.SetPosition(0, 5, 0);
  UpdateWorldMatrix(parent, nullptr, top, 0);
  UpdateWorldMatrix(child, &parent, link, 0);
  // The offset (0, 0, 3) turned by a quarter to the left.
  ExpectNear(child.Position, {-3, 5, 0}, 1e-5f, "carried along");
  L3DMatrix wanted = MatrixProduct(MatrixFromAngles(0, kQuarter, 0), own);
  wanted.SetTranslation({-3, 5, 0});
  ExpectNear(child.WorldMatrix, wanted, 1e-5f);
  ExpectNear(child.RotMatrix, wanted, 1e-5f);
  EXPECT_TRUE(child.RotValid);
}

TEST(Link, AMoveOfAChildMovesTheTop) {
  Watched top(1, 1, 1);
  L3DLocation child(5, 5, 5);
  child.Move(2);
  top.Flags = 0;
  HandMoveToTop(child, top);
  EXPECT_EQ(top.Position, (L3DVector{1, 1, 3}));
  EXPECT_EQ(top.Flags, uint32_t{LOC_MOVED});
  EXPECT_EQ(top.positions, 1);
  child.PreviousPosition = child.Position;
  top.Flags = 0;
  HandMoveToTop(child, top);
  EXPECT_EQ(top.Flags, uint32_t{LOC_ROTATED});
  EXPECT_EQ(top.positions, 1);
}

}  // namespace
}  // namespace vl
