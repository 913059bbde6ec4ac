#include "engine3d/quaternion.h"

#include <cmath>

#include "engine3d/angle.h"

namespace vl {

namespace {

constexpr double kSmallSine = 1e-6;
constexpr double kSmallArc = 1e-6;
constexpr double kHalfTurn = 3.14159265359;

// What a computation holds before it is rounded into a quaternion.
struct Wide {
  double w, x, y, z;

  explicit Wide(const L3DQuaternion& q) : w(double{q.w}), x(double{q.x}), y(double{q.y}), z(double{q.z}) {}
  Wide(double w, double x, double y, double z) : w(w), x(x), y(y), z(z) {}

  Wide Conjugate() const { return {w, -x, -y, -z}; }
  Wide Times(double k) const { return {w * k, x * k, y * k, z * k}; }
  Wide Over(double k) const { return {w / k, x / k, y / k, z / k}; }
  double VectorLength() const { return std::sqrt(x * x + y * y + z * z); }
  double Norm() const { return w * w + x * x + y * y + z * z; }
  L3DQuaternion Rounded() const {
    return {static_cast<float>(w), static_cast<float>(x), static_cast<float>(y), static_cast<float>(z)};
  }
};

Wide Product(const Wide& a, const Wide& b) {
  return {a.w * b.w - a.x * b.x - a.y * b.y - a.z * b.z, a.w * b.x + a.x * b.w + a.y * b.z - a.z * b.y,
          a.w * b.y - a.x * b.z + a.y * b.w + a.z * b.x, a.w * b.z + a.x * b.y - a.y * b.x + a.z * b.w};
}

// n exactly 1 divides by nothing, which changes no value.
Wide Inverse(const Wide& q) { return q.Conjugate().Over(q.Norm()); }

double ArcTangent(double numerator, double denominator) {
  return denominator == 0.0 ? double{kL3DHalfPi} : std::atan(numerator / denominator);
}

}  // namespace

L3DQuaternion QuaternionFromAngle(float angle, const L3DVector& axis) {
  const double half = double{angle} / 2.0;
  const double s = std::sin(half);
  return Wide(std::cos(half), double{axis.x} * s, double{axis.y} * s, double{axis.z} * s).Rounded();
}

L3DQuaternion QuaternionFromMatrix(const L3DMatrix& matrix) {
  const auto m = [&](int row, int column) { return double{matrix[row][column]}; };
  const double trace = m(0, 0) + m(1, 1) + m(2, 2);
  if (trace > 0.0) {
    const double s = std::sqrt(trace + 1.0);
    const double u = 0.5 / s;
    return Wide(s / 2.0, (m(1, 2) - m(2, 1)) * u, (m(2, 0) - m(0, 2)) * u, (m(0, 1) - m(1, 0)) * u).Rounded();
  }
  int i = m(1, 1) > m(0, 0) ? 1 : 0;
  if (m(2, 2) > m(i, i)) i = 2;
  const int j = (i + 1) % 3;
  const int k = (j + 1) % 3;
  const double s = std::sqrt(m(i, i) - (m(j, j) + m(k, k)) + 1.0);
  const double u = s == 0.0 ? s : 0.5 / s;
  double axis[3] = {};
  axis[i] = s / 2.0;
  axis[j] = (m(i, j) + m(j, i)) * u;
  axis[k] = (m(i, k) + m(k, i)) * u;
  return Wide((m(j, k) - m(k, j)) * u, axis[0], axis[1], axis[2]).Rounded();
}

L3DMatrix MatrixFromQuaternion(const L3DQuaternion& quaternion) {
  const auto [w, x, y, z] = Wide(quaternion);
  const double block[3][3] = {
      {1.0 - (2.0 * z * z + 2.0 * y * y), 2.0 * x * y + 2.0 * z * w, 2.0 * x * z - 2.0 * y * w},
      {2.0 * x * y - 2.0 * z * w, 1.0 - (2.0 * z * z + 2.0 * x * x), 2.0 * y * z + 2.0 * x * w},
      {2.0 * x * z + 2.0 * y * w, 2.0 * y * z - 2.0 * x * w, 1.0 - (2.0 * y * y + 2.0 * x * x)}};
  L3DMatrix r;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) r[i][j] = static_cast<float>(block[i][j]);
  }
  return r;
}

L3DMatrix InvertedMatrixFromQuaternion(const L3DQuaternion& q) {
  const L3DMatrix m = MatrixFromQuaternion(q);
  L3DMatrix r;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) r[i][j] = m[j][i];
  }
  return r;
}

double QuaternionAngle(const L3DQuaternion& q) { return 2.0 * std::acos(double{QuaternionNormalized(q).w}); }

L3DVector QuaternionAxis(const L3DQuaternion& q) {
  const Wide n(QuaternionNormalized(q));
  const double sine = std::sin(std::acos(n.w));
  if (!(std::fabs(sine) > kSmallSine)) return {};
  return {static_cast<float>(n.x / sine), static_cast<float>(n.y / sine), static_cast<float>(n.z / sine)};
}

double QuaternionLength(const L3DQuaternion& q) { return std::sqrt(Wide(q).Norm()); }

double QuaternionDot(const L3DQuaternion& a, const L3DQuaternion& b) {
  const Wide p(a), q(b);
  return p.w * q.w + p.x * q.x + p.y * q.y + p.z * q.z;
}

L3DQuaternion QuaternionAdd(const L3DQuaternion& a, const L3DQuaternion& b) {
  const Wide p(a), q(b);
  return Wide(p.w + q.w, p.x + q.x, p.y + q.y, p.z + q.z).Rounded();
}

L3DQuaternion QuaternionSubtract(const L3DQuaternion& a, const L3DQuaternion& b) {
  const Wide p(a), q(b);
  return Wide(p.w - q.w, p.x - q.x, p.y - q.y, p.z - q.z).Rounded();
}

L3DQuaternion QuaternionProduct(const L3DQuaternion& a, const L3DQuaternion& b) {
  return Product(Wide(a), Wide(b)).Rounded();
}

L3DQuaternion QuaternionQuotient(const L3DQuaternion& a, const L3DQuaternion& b) {
  const Wide c = Wide(b).Conjugate();
  return Product(Wide(a), c).Over(Product(c, c).w).Rounded();
}

L3DQuaternion QuaternionScaled(const L3DQuaternion& q, double factor) { return Wide(q).Times(factor).Rounded(); }

L3DQuaternion QuaternionRescaled(const L3DQuaternion& q, float length) {
  const double own = QuaternionLength(q);
  return own == 0.0 ? kIdentityQuaternion : QuaternionScaled(q, double{length} / own);
}

L3DQuaternion QuaternionNormalized(const L3DQuaternion& q) {
  const double length = QuaternionLength(q);
  return length == 0.0 ? kIdentityQuaternion : Wide(q).Over(length).Rounded();
}

L3DQuaternion QuaternionInverse(const L3DQuaternion& q) { return Inverse(Wide(q)).Rounded(); }

L3DQuaternion QuaternionNegated(const L3DQuaternion& q) {
  const double length = QuaternionLength(q);
  return length == 0.0 ? kIdentityQuaternion : Wide(q).Over(length).Conjugate().Rounded();
}

L3DQuaternion QuaternionSquare(const L3DQuaternion& quaternion) {
  const auto [w, x, y, z] = Wide(quaternion);
  return Wide(w * w - x * x - y * y - z * z, 2.0 * w * x, 2.0 * w * y, 2.0 * w * z).Rounded();
}

L3DQuaternion QuaternionSqrt(const L3DQuaternion& quaternion) {
  const auto [w, x, y, z] = Wide(quaternion);
  const double l = std::sqrt(w * w + x * x + y * y);
  const double i = l == 0.0 ? 1.0 : 1.0 / l;
  const double a = i * w, b = i * x, c = i * z;
  const double s = std::sqrt(b * b + a * a);
  const double t = std::sqrt((1.0 - c) / 2.0);
  const double m = std::sqrt(i);
  const double k = m * t / s;
  return Wide(k * a, k * b, m * std::sqrt((1.0 + c) / 2.0), z).Rounded();
}

L3DQuaternion QuaternionExp(const L3DQuaternion& q) {
  const Wide v(q);
  const double t = v.VectorLength();
  const double s = t > 0.0 ? std::sin(t) / t : 1.0;
  return Wide(std::cos(t), s * v.x, s * v.y, s * v.z).Rounded();
}

L3DQuaternion QuaternionLog(const L3DQuaternion& q) {
  const Wide v(q);
  const double a = ArcTangent(v.VectorLength(), v.w);
  return Wide(0.0, a * v.x, a * v.y, a * v.z).Rounded();
}

L3DQuaternion QuaternionLnDif(const L3DQuaternion& p, const L3DQuaternion& q) {
  const Wide d = Product(Inverse(Wide(p)), Wide(q));
  const double c = QuaternionDot(p, q) / (QuaternionLength(p) * QuaternionLength(q));
  const double s = d.VectorLength();
  double a = ArcTangent(s, c);
  if (s != 0.0) a /= s;
  return Wide(0.0, a * d.x, a * d.y, a * d.z).Rounded();
}

L3DQuaternion QuaternionSlerp(const L3DQuaternion& p, const L3DQuaternion& q, float spin, float t) {
  double c = QuaternionDot(p, q);
  const bool opposite = c < 0.0;
  if (opposite) c = -c;
  double k0, k1;
  if (1.0 - c < kSmallArc) {
    k0 = 1.0 - double{t};
    k1 = double{t};
  } else {
    const double theta = std::acos(c);
    const double phi = (double{spin} * kHalfTurn + theta) * double{t};
    k0 = std::sin(theta - phi) / std::sin(theta);
    k1 = std::sin(phi) / std::sin(theta);
  }
  if (opposite) k1 = -k1;
  const Wide from = Wide(p).Times(k0), to = Wide(q).Times(k1);
  return Wide(from.w + to.w, from.x + to.x, from.y + to.y, from.z + to.z).Rounded();
}

}  // namespace vl
