// Angles: radians in floats, kept from 0 to 2π.
#pragma once

namespace vl {

inline constexpr float kL3DTwoPi = 6.2831855f;
inline constexpr float kL3DPi = 3.1415927f;
inline constexpr float kL3DHalfPi = 1.5707964f;
inline constexpr float kL3DThreeHalfPi = 4.712389f;

// The same direction within 0 to 2π; exactly 0 for what is within 0.001 of it. Not a number stays so, infinity
// becomes not a number.
float NormalizeAngle(float a);

// `current` moved the divisor's part of the way along the shorter arc to `target`; both in any range.
float AngleBlend(float current, float target, float divisor);

}  // namespace vl
