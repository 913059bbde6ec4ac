// CIMath: the fixed object Math, whose members are global names. It holds the random generator.
#pragma once

#include "interpreter/class_base.h"

namespace vl {

// The generator of Random and SetRandom: two 32-bit congruences over the seeds.
class RandomGenerator {
 public:
  void Seed(int32_t seed);
  // 0 up to 1, as a double.
  double Next();

 private:
  int32_t seed1_ = 1;
  int32_t seed2_ = 1;
};

class CIMath : public CIBaseClassImpl {
 public:
  explicit CIMath(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_MATH, Listing::Listed) {}
  void Create() override;

  void Abs();
  void Asin();
  void Atan();
  void Ceil();
  void Cos();
  void Exp();
  void Floor();
  void Log();
  void Max();
  void Min();
  void Pow();
  void Random();
  void Round();
  void Sin();
  void Sqrt();
  void Tan();
  void Pi();
  void Acos();
  void IsFloatFinite();
  void IsNotAFloatNumber();
  void SetRandom();
  void GetRadian();
  void GetDegree();
  void Atan2();

 private:
  double Required(int argument);
  void CheckOrdered();
  RandomGenerator generator_;
};

}  // namespace vl
