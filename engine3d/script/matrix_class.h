// CIMatrix: the runtime class Matrix, the engine's transform in a script's hands.
//
// A new one is all 0, not the identity. Only the first three rows carry data; row 3 is always 0.
#pragma once

#include "engine3d/matrix.h"
#include "interpreter/class_base.h"

namespace vl {

// The matrix in the arguments from `first` on: a Matrix, four Vectors (the columns), an array of 3 by 4, or up to 12
// numbers column by column; all 0 without any. Error 14 for anything else.
L3DMatrix MatrixArgument(CInterpretor& interpreter, int first);

class CIMatrix : public CIBaseClassImpl {
 public:
  explicit CIMatrix(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_MATRIX, Listing::Listed) {}
  void Construct() override;

  void Reset();
  void SetIdentity();
  void Set();
  void AddMatrix();
  void SubMatrix();
  void MulMatrix();
  void Transpose();
  void Invert();
  void Normalize();
  void MakeTranslationMatrix();
  void MakeScaleMatrix();
  void MakeRotationMatrix();
  void SetValue();
  void GetValue();
  void GetEulerAngleX();
  void GetEulerAngleY();
  void GetEulerAngleZ();
  void AddAngle();

  L3DVector translation;  // of the last MakeRotationMatrix that gave one
  L3DMatrix matrix;

 private:
  // Three angles from argument 0 on.
  L3DVector Angles();
  // The element that two arguments from `first` on name.
  float& ElementArgument(int first);
};

}  // namespace vl
