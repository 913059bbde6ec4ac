#include "engine3d/angle.h"

#include <cmath>

namespace vl {

namespace {

constexpr double kTwoPi = double{kL3DTwoPi};
constexpr double kPi = double{kL3DPi};
constexpr double kSnap = 0.001;

}  // namespace

float NormalizeAngle(float a) {
  if (a > kL3DTwoPi || a < -kL3DTwoPi) a = static_cast<float>(std::fmod(double{a}, kTwoPi));
  if (double{a} >= -kSnap && double{a} <= kSnap) return 0.0f;
  if (a < 0.0f) a = static_cast<float>(double{a} + kTwoPi);
  return a;
}

float AngleBlend(float current, float target, float divisor) {
  const double from = double{NormalizeAngle(current)};
  double d = double{NormalizeAngle(target)} - from;
  const double part = double{divisor};
  double result;
  if (d > 0.0 && d < kPi) {
    result = from + d / part;
    if (result >= kTwoPi) result -= kTwoPi;
  } else if (d <= -kPi) {
    d += kTwoPi;
    result = from + d / part;
    if (result >= kTwoPi) result -= kTwoPi;
  } else if (d <= 0.0) {
    result = from + d / part;
    if (result < 0.0) result += kTwoPi;
  } else {
    result = from - (kTwoPi - d) / part;
    if (result < 0.0) result += kTwoPi;
  }
  return static_cast<float>(result);
}

}  // namespace vl
