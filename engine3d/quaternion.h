// L3DQuaternion: four floats w, x, y, z, and the operations on them.
//
// A product is Hamilton's; the matrices of a quaternion are those of the engine (columns are axes). Nothing is
// checked: a division by a length of 0 gives infinities or not-a-number unless a function says otherwise.
#pragma once

#include "engine3d/matrix.h"

namespace vl {

struct L3DQuaternion {
  float w = 0, x = 0, y = 0, z = 0;
  bool operator==(const L3DQuaternion&) const = default;
};

inline constexpr L3DQuaternion kIdentityQuaternion = {1.0f, 0.0f, 0.0f, 0.0f};

// A turn by `angle` about the axis, which should have the length 1.
L3DQuaternion QuaternionFromAngle(float angle, const L3DVector& axis);
// Of the rotation block.
L3DQuaternion QuaternionFromMatrix(const L3DMatrix& matrix);
// The fourth column is 0.
L3DMatrix MatrixFromQuaternion(const L3DQuaternion& q);
// Its transpose.
L3DMatrix InvertedMatrixFromQuaternion(const L3DQuaternion& q);

// Angle and axis of the normalised quaternion; the axis is 0 for hardly any turn.
double QuaternionAngle(const L3DQuaternion& q);
L3DVector QuaternionAxis(const L3DQuaternion& q);

double QuaternionLength(const L3DQuaternion& q);
double QuaternionDot(const L3DQuaternion& a, const L3DQuaternion& b);

L3DQuaternion QuaternionAdd(const L3DQuaternion& a, const L3DQuaternion& b);
L3DQuaternion QuaternionSubtract(const L3DQuaternion& a, const L3DQuaternion& b);
L3DQuaternion QuaternionProduct(const L3DQuaternion& a, const L3DQuaternion& b);
// The product of a and b's conjugate, by the w of the conjugate's square (which isn't b's norm).
L3DQuaternion QuaternionQuotient(const L3DQuaternion& a, const L3DQuaternion& b);
L3DQuaternion QuaternionScaled(const L3DQuaternion& q, double factor);
// With the given length; the identity when q has none.
L3DQuaternion QuaternionRescaled(const L3DQuaternion& q, float length);
// Length 1; the identity when q has none.
L3DQuaternion QuaternionNormalized(const L3DQuaternion& q);
L3DQuaternion QuaternionInverse(const L3DQuaternion& q);
// Normalised, then turned round.
L3DQuaternion QuaternionNegated(const L3DQuaternion& q);
L3DQuaternion QuaternionSquare(const L3DQuaternion& q);
// A root with z left as it is.
L3DQuaternion QuaternionSqrt(const L3DQuaternion& q);
L3DQuaternion QuaternionExp(const L3DQuaternion& q);
L3DQuaternion QuaternionLog(const L3DQuaternion& q);
// The logarithm of the turn that leads from p to q.
L3DQuaternion QuaternionLnDif(const L3DQuaternion& p, const L3DQuaternion& q);
// From p (t = 0) to q (t = 1) along the arc, with `spin` half turns more on the way.
L3DQuaternion QuaternionSlerp(const L3DQuaternion& p, const L3DQuaternion& q, float spin, float t);

}  // namespace vl
