#include "engine3d/matrix.h"

#include <cmath>

#include "engine3d/angle.h"

namespace vl {

namespace {

// Below this the forward axis counts as straight up or down, where X and Z can't be told apart.
constexpr double kGimbal = 0.00001;

}  // namespace

L3DMatrix IdentityMatrix() {
  L3DMatrix r;
  r[0][0] = r[1][1] = r[2][2] = 1.0f;
  return r;
}

L3DMatrix MatrixFromAngles(float ax, float ay, float az, const L3DVector& translation) {
  const double sx = std::sin(double{ax}), cx = std::cos(double{ax});
  const double sy = std::sin(double{ay}), cy = std::cos(double{ay});
  const double sz = std::sin(double{az}), cz = std::cos(double{az});
  L3DMatrix r;
  r[0][0] = static_cast<float>(cy * cz);
  r[0][1] = static_cast<float>(-sz * cx - cz * sy * sx);
  r[0][2] = static_cast<float>(sz * sx - cz * sy * cx);
  r[1][0] = static_cast<float>(sz * cy);
  r[1][1] = static_cast<float>(cz * cx - sz * sy * sx);
  r[1][2] = static_cast<float>(-cz * sx - sz * sy * cx);
  r[2][0] = static_cast<float>(sy);
  r[2][1] = static_cast<float>(cy * sx);
  r[2][2] = static_cast<float>(cy * cx);
  r.SetTranslation(translation);
  return r;
}

L3DVector AnglesFromMatrix(const L3DMatrix& m) {
  double s = double{m[2][0]};
  if (s < -1.0) s = -1.0;
  if (s > 1.0) s = 1.0;
  const double t = 1.0 - s * s;
  double c = 0.0;
  if (t < kGimbal) {
    s = s >= 0.0 ? 1.0 : -1.0;
  } else {
    c = std::sqrt(t);
  }
  double ax, ay, az;
  if (c == 0.0) {
    const double sign = s == 1.0 ? -1.0 : 1.0;
    ax = std::atan2(sign * double{m[0][1]}, sign * double{m[0][2]});
    ay = std::asin(s);
    az = 0.0;
  } else {
    const double r = 1.0 / c;
    ax = std::atan2(r * double{m[2][1]}, r * double{m[2][2]});
    ay = std::atan2(s, c);
    az = std::atan2(r * double{m[1][0]}, r * double{m[0][0]});
  }
  return {NormalizeAngle(static_cast<float>(ax)), NormalizeAngle(static_cast<float>(ay)),
          NormalizeAngle(static_cast<float>(az))};
}

L3DMatrix MatrixProduct(const L3DMatrix& a, const L3DMatrix& b) {
  L3DMatrix r;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 4; ++j) {
      double sum = 0.0;
      for (int k = 0; k < 3; ++k) sum += double{a[i][k]} * double{b[k][j]};
      if (j == 3) sum += double{a[i][3]};
      r[i][j] = static_cast<float>(sum);
    }
  }
  return r;
}

bool MatrixInverse(const L3DMatrix& m, L3DMatrix& out) {
  L3DMatrix r;
  for (int i = 0; i < 3; ++i) {
    double q = 0.0;
    for (int j = 0; j < 3; ++j) q += double{m[i][j]} * double{m[i][j]};
    if (q == 0.0) {
      out = IdentityMatrix();
      return false;
    }
    for (int j = 0; j < 3; ++j) r[i][j] = static_cast<float>(double{m[j][i]} / q);
    r[i][3] = static_cast<float>(
        -(double{r[i][0]} * double{m[0][3]} + double{r[i][1]} * double{m[1][3]} + double{r[i][2]} * double{m[2][3]}));
  }
  out = r;
  return true;
}

L3DVector TransformPoint(const L3DMatrix& m, const L3DVector& v, const L3DVector& translation) {
  const auto row = [&](int i, float offset) {
    return static_cast<float>(double{m[i][0]} * double{v.x} + double{m[i][1]} * double{v.y} +
                              double{m[i][2]} * double{v.z} + double{offset});
  };
  return {row(0, translation.x), row(1, translation.y), row(2, translation.z)};
}

L3DVector RotateVector(const L3DMatrix& m, const L3DVector& v) { return TransformPoint(m, v, {}); }

L3DVector VertexToWorld(const L3DVector& local, const L3DVector& hotSpot, const L3DVector& scale,
                        const L3DMatrix& worldMatrix, const L3DVector& position) {
  const auto scaled = [](float value, float offset, float factor) {
    return static_cast<float>((double{value} + double{offset}) * double{factor});
  };
  const L3DVector placed = {scaled(local.x, hotSpot.x, scale.x), scaled(local.y, hotSpot.y, scale.y),
                            scaled(local.z, hotSpot.z, scale.z)};
  return TransformPoint(worldMatrix, placed, position);
}

L3DVector WorldToView(const L3DVector& world, const L3DMatrix& inverse, const L3DVector& cameraPosition) {
  const auto away = [](float a, float b) { return static_cast<float>(double{a} - double{b}); };
  return RotateVector(
      inverse, {away(world.x, cameraPosition.x), away(world.y, cameraPosition.y), away(world.z, cameraPosition.z)});
}

}  // namespace vl
