// L3DMatrix: a rotation (with or without scale) and a translation, the transform of the whole engine.
//
// Left-handed: +X right, +Y up, +Z forward. A point is a column multiplied from the right. Columns 0 to 2 are the
// right, up and forward axis in the parent's space, column 3 is the translation. Row 3 carries no meaning: no
// operation of this file reads it, and products and inverses leave it 0.
#pragma once

namespace vl {

struct L3DVector {
  float x = 0, y = 0, z = 0;
  bool operator==(const L3DVector&) const = default;
};

struct L3DMatrix {
  float m[4][4] = {};

  float* operator[](int row) { return m[row]; }
  const float* operator[](int row) const { return m[row]; }
  L3DVector Column(int column) const { return {m[0][column], m[1][column], m[2][column]}; }
  void SetColumn(int column, const L3DVector& v) {
    m[0][column] = v.x;
    m[1][column] = v.y;
    m[2][column] = v.z;
  }
  // Column 3.
  L3DVector Translation() const { return Column(3); }
  void SetTranslation(const L3DVector& v) { SetColumn(3, v); }
  bool operator==(const L3DMatrix&) const = default;
};

L3DMatrix IdentityMatrix();

// Rz(az)·Ry(-ay)·Rx(ax): a positive ax pitches forward down, ay yaws to the left, az rolls right upwards.
L3DMatrix MatrixFromAngles(float ax, float ay, float az, const L3DVector& translation = {});
inline L3DMatrix MatrixFromAngles(const L3DVector& angles) { return MatrixFromAngles(angles.x, angles.y, angles.z); }

// The angles that MatrixFromAngles makes this rotation of, each from 0 to 2π.
L3DVector AnglesFromMatrix(const L3DMatrix& matrix);

// left·right as affine transforms.
L3DMatrix MatrixProduct(const L3DMatrix& left, const L3DMatrix& right);

// The inverse of a rotation with scale. False, and the identity, when a row is 0.
bool MatrixInverse(const L3DMatrix& matrix, L3DMatrix& out);

// The rotation block times v.
L3DVector RotateVector(const L3DMatrix& matrix, const L3DVector& v);
// The rotation block times v, plus `translation`, rounded once.
L3DVector TransformPoint(const L3DMatrix& matrix, const L3DVector& v, const L3DVector& translation);

// A vertex of an object in the world: (local + hotSpot)·scale, turned by the rotation block, at `position`.
L3DVector VertexToWorld(const L3DVector& local, const L3DVector& hotSpot, const L3DVector& scale,
                        const L3DMatrix& worldMatrix, const L3DVector& position);

// A point of the world as a camera sees it; `inverse` is the inverse of the camera's world matrix.
L3DVector WorldToView(const L3DVector& world, const L3DMatrix& inverse, const L3DVector& cameraPosition);

}  // namespace vl
