// CIQuaternion: the runtime class Quaternion, four floats that change in place.
#pragma once

#include "engine3d/quaternion.h"
#include "interpreter/class_base.h"

namespace vl {

class CIQuaternion : public CIBaseClassImpl {
 public:
  explicit CIQuaternion(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_QUATERNION, Listing::Listed) {}
  void Construct() override;

  void SetW();
  void SetX();
  void SetY();
  void SetZ();
  void GetW();
  void GetX();
  void GetY();
  void GetZ();
  void SetFromAngle();
  void GetAngleAngle();
  void GetAngleX();
  void GetAngleY();
  void GetAngleZ();
  void SetValue();
  void SetIdentity();
  void Reset();
  void Add();
  void Subtract();
  void Multiply();
  void Divide();
  void Square();
  void Sqrt();
  void GetLength();
  void DotProductUniformized();
  void DotProduct();
  void Scale();
  void Rescale();
  void IsEqual();
  void Normalize();
  void Inverse();
  void Negate();
  void Exp();
  void Log();
  void LnDif();
  void Slerp();
  void MakeMatrix();
  void MakeInvertedMatrix();

  L3DQuaternion value;

 private:
  // Error 14 for anything but a Quaternion.
  const L3DQuaternion& QuaternionArgument(int argument);
  // Changed to argument 0, if it is given.
  void SetComponent(float& component);
  // Leaves a new Matrix object as the result.
  void ResultMatrix(const L3DMatrix& matrix);
};

}  // namespace vl
