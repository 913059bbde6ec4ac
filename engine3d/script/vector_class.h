// CIVector: the runtime class Vector, four floats that change in place.
//
// w is 0 in a vector that a program gives by numbers; most members change or read x, y and z only.
#pragma once

#include "engine3d/matrix.h"
#include "interpreter/class_base.h"

namespace vl {

struct Vector4 {
  float x = 0, y = 0, z = 0, w = 0;
};

// The vector in the arguments from `first` on: a Vector, an array of three numbers, or up to three numbers in a row.
// What is absent is 0. Raises what reading a number raises.
Vector4 VectorArgument(CInterpretor& interpreter, int first);

// A number that may be left out. Raises 18 for an object.
bool IsNumberAbsent(CInterpretor& interpreter, int argument);
// A number that may not: error 14.
float NumberArgument(CInterpretor& interpreter, int argument);

class CIVector : public CIBaseClassImpl {
 public:
  explicit CIVector(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_VECTOR, Listing::Listed) {}
  void Construct() override;

  void Set();
  void Reset();
  void AddVector();
  void SubVector();
  void MulVector();
  void Scale();
  void Rescale();
  void Negate();
  void IsEqual();
  void GetLength();
  void Distance();
  void DotProductUniformized();
  void DotProduct();
  void CrossProduct();
  void Normalize();
  void Average();
  void Lerp();
  void Combine();
  void GetX();
  void GetY();
  void GetZ();
  void SetX();
  void SetY();
  void SetZ();
  void MulVectorMatrix();
  void MulNormalMatrix();

  Vector4 value;

 private:
  // Each component of the result is f(own, other).
  template <typename F>
  void Combine4(const Vector4& other, F f);
  // The same for x, y and z.
  template <typename F>
  void Combine3(const Vector4& other, F f);
  // Argument `argument`: error 14 when it is absent, a text or an object.
  float PlainNumber(int argument);
};

}  // namespace vl
