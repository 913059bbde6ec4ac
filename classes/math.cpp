#include "classes/math.h"

#include <cmath>
#include <cstdlib>

#include "classes/core_classes.h"
#include "interpreter/interpretor.h"
#include "interpreter/number_text.h"

namespace vl {

namespace {

constexpr double kTwoPi = 6.283185307179586;
constexpr double kPi = 3.141592653589793;
constexpr double kHalfPi = 1.5707963267948966;
constexpr double kThreeHalfPi = 4.71238898038469;
constexpr double kSmallAngle = 1e-6;

// The angle that Sin, Cos and Tan look up among the quarter turns.
double ReduceAngle(double x) {
  if (std::fabs(x) <= kSmallAngle) return 0.0;
  if (x < 0) return x + kTwoPi;
  return std::fabs(x) <= kTwoPi ? x : std::fmod(x, kTwoPi);
}

uint32_t Wrap(int32_t v) { return static_cast<uint32_t>(v); }

}  // namespace

void RandomGenerator::Seed(int32_t seed) {
  seed1_ = seed & 0x55555555;
  seed2_ = seed & 0x2AAAAAAA;
}

double RandomGenerator::Next() {
  seed1_ = static_cast<int32_t>(Wrap(seed1_) * 40014u - Wrap(seed1_ / 53668) * 0x7FFFFFABu);
  if (seed1_ < 0) seed1_ = static_cast<int32_t>(Wrap(seed1_) + 0x7FFFFFABu);
  seed2_ = static_cast<int32_t>(Wrap(seed2_) * 40692u - Wrap(seed2_ / 52774) * 0x7FFFFF07u);
  if (seed2_ < 0) seed2_ = static_cast<int32_t>(Wrap(seed2_) + 0x80000BEBu);
  int32_t z = static_cast<int32_t>(Wrap(seed1_) - Wrap(seed2_));
  if (z < 1) z = static_cast<int32_t>(Wrap(z) + 0x7FFFFFAAu);
  const double r = std::fabs(z * 4.656613e-10);
  return r > 1.0 ? 1.0 / r : r;
}

void CIMath::Create() {
  CIBaseClassImpl::Create();
  generator_.Seed(static_cast<int32_t>(interpreter.services.clock->seed()));
}

double CIMath::Required(int argument) {
  if (interpreter.IsArgDefault(argument)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  return interpreter.GetArgDouble(argument);
}

void CIMath::Abs() {
  CValue& result = interpreter.GetResult();
  const CValue& v = *interpreter.GetArg(0);
  switch (v.type) {
    case VT_INTEGER:
      result.SetInt(v.data.integer < 0 ? static_cast<int32_t>(0u - Wrap(v.data.integer)) : v.data.integer);
      return;
    case VT_FLOAT:
      result.SetFloat(std::fabs(v.data.real));
      return;
    case VT_STRING:
      result.SetFloat(std::fabs(v.GetDouble()));
      return;
    default:
      result.Assign(v);
      return;
  }
}

void CIMath::Asin() {
  const double x = interpreter.GetArgDouble(0);
  interpreter.GetResult().SetFloat(std::asin(x < -1.0 ? -1.0 : x > 1.0 ? 1.0 : x));
}

void CIMath::Acos() { interpreter.GetResult().SetFloat(std::acos(interpreter.GetArgDouble(0))); }
void CIMath::Atan() { interpreter.GetResult().SetFloat(std::atan(interpreter.GetArgDouble(0))); }
void CIMath::Ceil() { interpreter.GetResult().SetFloat(std::ceil(interpreter.GetArgDouble(0))); }
void CIMath::Exp() { interpreter.GetResult().SetFloat(std::exp(interpreter.GetArgDouble(0))); }
void CIMath::Floor() { interpreter.GetResult().SetFloat(std::floor(interpreter.GetArgDouble(0))); }
void CIMath::Log() { interpreter.GetResult().SetFloat(std::log(interpreter.GetArgDouble(0))); }
void CIMath::Sqrt() { interpreter.GetResult().SetFloat(std::sqrt(interpreter.GetArgDouble(0))); }

void CIMath::Sin() {
  const double a = ReduceAngle(interpreter.GetArgDouble(0));
  double r;
  if (a == 0.0 || a == kPi || a == kTwoPi) {
    r = 0.0;
  } else if (a == kHalfPi) {
    r = 1.0;
  } else if (a == kThreeHalfPi) {
    r = -1.0;
  } else {
    r = std::sin(a);
  }
  interpreter.GetResult().SetFloat(r);
}

void CIMath::Cos() {
  const double a = ReduceAngle(interpreter.GetArgDouble(0));
  double r;
  if (a == 0.0 || a == kTwoPi) {
    r = 1.0;
  } else if (a == kPi) {
    r = -1.0;
  } else if (a == kHalfPi || a == kThreeHalfPi) {
    r = 0.0;
  } else {
    r = std::cos(a);
  }
  interpreter.GetResult().SetFloat(r);
}

void CIMath::Tan() {
  const double a = ReduceAngle(interpreter.GetArgDouble(0));
  interpreter.GetResult().SetFloat(a == 0.0 || a == kPi || a == kTwoPi ? 0.0 : std::tan(a));
}

void CIMath::CheckOrdered() {
  for (int i = 0; i < 2; ++i) {
    const CValue& v = *interpreter.GetArg(i);
    if (v.type == VT_OBJECT || v.type == VT_FUNCTION || v.type == VT_DEFAULT) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  }
}

void CIMath::Max() {
  CheckOrdered();
  const double a = interpreter.GetArgDouble(0);
  const double b = interpreter.GetArgDouble(1);
  interpreter.GetResult().Assign(*interpreter.GetArg(b < a ? 0 : 1));
}

void CIMath::Min() {
  CheckOrdered();
  const double a = interpreter.GetArgDouble(0);
  const double b = interpreter.GetArgDouble(1);
  interpreter.GetResult().Assign(*interpreter.GetArg(b < a ? 1 : 0));
}

void CIMath::Pow() {
  const double a = Required(0);
  const double b = Required(1);
  interpreter.GetResult().SetFloat(std::pow(a, b));
}

void CIMath::Atan2() {
  const double a = Required(0);
  const double b = Required(1);
  interpreter.GetResult().SetFloat(std::atan2(a, b));
}

void CIMath::Random() {
  const double r = generator_.Next();
  CValue& result = interpreter.GetResult();
  if (interpreter.IsArgDefault(0)) {
    result.SetFloat(r);
    return;
  }
  const int32_t n = interpreter.GetArgInt(0);
  const int32_t value = TruncateToInt(std::fabs(static_cast<double>(n)) * r);
  result.SetInt(n < 0 ? static_cast<int32_t>(0u - Wrap(value)) : value);
}

void CIMath::SetRandom() { generator_.Seed(interpreter.GetArgInt(0)); }

void CIMath::Round() {
  double whole = 0;
  const double fraction = std::modf(interpreter.GetArgDouble(0), &whole);
  const int32_t value = TruncateToInt(whole);
  interpreter.GetResult().SetInt(fraction >= 0.5 ? static_cast<int32_t>(Wrap(value) + 1u) : value);
}

void CIMath::Pi() { interpreter.GetResult().SetFloat(kPi); }
void CIMath::IsFloatFinite() { interpreter.GetResult().SetInt(std::isfinite(Required(0))); }
void CIMath::IsNotAFloatNumber() { interpreter.GetResult().SetInt(std::isnan(Required(0))); }
void CIMath::GetRadian() { interpreter.GetResult().SetFloat(Required(0) * kPi * 0.005555555555555556); }
void CIMath::GetDegree() { interpreter.GetResult().SetFloat(Required(0) * 180.0 * 0.3183098861837907); }

namespace {

// The one member without a result.
constexpr uint16_t kSetRandom = 21;

constexpr MemberRow Global(uint16_t id, const char* name, MemberFunction function, const char* help,
                           NumberFunction onNumbers = nullptr) {
  return {id, name, MemberKind::Member, function, 0, CLASS_MATH, help, nullptr, id != kSetRandom, onNumbers};
}

bool IsNumber(const CValue& v) { return v.type <= VT_FLOAT; }
double RealOf(const CValue& v) { return v.type == VT_FLOAT ? v.data.real : v.data.integer; }
void Put(CValue& result, double v) {
  result.type = VT_FLOAT;
  result.data.real = v;
}

bool AbsOfNumber(const CValue* a, int count, CValue& result) {
  if (count < 1 || !IsNumber(a[0])) return false;
  if (a[0].type == VT_FLOAT) {
    Put(result, std::fabs(a[0].data.real));
  } else {
    const int32_t v = a[0].data.integer;
    result.type = VT_INTEGER;
    result.data.integer = v < 0 ? static_cast<int32_t>(0u - Wrap(v)) : v;
  }
  return true;
}

// The smaller or the larger of two, as it is.
template <bool IsMax>
bool ChoiceOfNumbers(const CValue* a, int count, CValue& result) {
  if (count < 2 || !IsNumber(a[0]) || !IsNumber(a[1])) return false;
  const bool first = (RealOf(a[1]) < RealOf(a[0])) == IsMax;
  result.type = a[first ? 0 : 1].type;
  result.data = a[first ? 0 : 1].data;
  return true;
}

template <double (*F)(double)>
bool RealOfNumber(const CValue* a, int count, CValue& result) {
  if (count < 1 || !IsNumber(a[0])) return false;
  Put(result, F(RealOf(a[0])));
  return true;
}

double SquareRoot(double v) { return std::sqrt(v); }
double RoundDown(double v) { return std::floor(v); }
double RoundUp(double v) { return std::ceil(v); }

constexpr MemberRow kRows[] = {
    Global(1, "Abs", kMember<&CIMath::Abs>, "Abs(v): absolute value, of the type of v; a text counts as a float",
           AbsOfNumber),
    Global(2, "Asin", kMember<&CIMath::Asin>, "Asin(x): arc sine in radians of x limited to -1 to 1"),
    Global(3, "Atan", kMember<&CIMath::Atan>, "Atan(x): arc tangent in radians"),
    Global(4, "Ceil", kMember<&CIMath::Ceil>, "Ceil(x): smallest whole number not below x, as a float",
           RealOfNumber<RoundUp>),
    Global(5, "Cos", kMember<&CIMath::Cos>, "Cos(x): cosine of x radians, exact at the quarter turns"),
    Global(6, "Exp", kMember<&CIMath::Exp>, "Exp(x): e to the power of x"),
    Global(7, "Floor", kMember<&CIMath::Floor>, "Floor(x): largest whole number not above x, as a float",
           RealOfNumber<RoundDown>),
    Global(8, "Log", kMember<&CIMath::Log>, "Log(x): natural logarithm"),
    Global(9, "Max", kMember<&CIMath::Max>, "Max(a, b): the larger value, with its type", ChoiceOfNumbers<true>),
    Global(10, "Min", kMember<&CIMath::Min>, "Min(a, b): the smaller value, with its type", ChoiceOfNumbers<false>),
    Global(11, "Pow", kMember<&CIMath::Pow>, "Pow(a, b): a to the power of b"),
    Global(12, "Random", kMember<&CIMath::Random>,
           "Random(n): integer from 0 towards n; without n a float from 0 to 1"),
    Global(13, "Round", kMember<&CIMath::Round>, "Round(x): whole part of x, plus 1 when the fraction is 0.5 or more"),
    Global(14, "Sin", kMember<&CIMath::Sin>, "Sin(x): sine of x radians, exact at the quarter turns"),
    Global(15, "Sqrt", kMember<&CIMath::Sqrt>, "Sqrt(x): square root", RealOfNumber<SquareRoot>),
    Global(16, "Tan", kMember<&CIMath::Tan>, "Tan(x): tangent of x radians"),
    Global(17, "Pi", kMember<&CIMath::Pi>, "Pi(): 3.141592653589793"),
    Global(18, "Acos", kMember<&CIMath::Acos>, "Acos(x): arc cosine in radians"),
    Global(19, "IsFloatFinite", kMember<&CIMath::IsFloatFinite>,
           "IsFloatFinite(x): 1 unless x is infinite or no number"),
    Global(20, "IsNotAFloatNumber", kMember<&CIMath::IsNotAFloatNumber>, "IsNotAFloatNumber(x): 1 when x is no number"),
    Global(kSetRandom, "SetRandom", kMember<&CIMath::SetRandom>,
           "SetRandom(seed): starts the random sequence of that seed"),
    Global(22, "GetRadian", kMember<&CIMath::GetRadian>, "GetRadian(d): degrees to radians"),
    Global(23, "GetDegree", kMember<&CIMath::GetDegree>, "GetDegree(r): radians to degrees"),
    Global(24, "Atan2", kMember<&CIMath::Atan2>, "Atan2(a, b): arc tangent of a / b in the right quadrant"),
};

}  // namespace

const ClassTable kMathClass = {CLASS_MATH, kRows, &CreateObject<CIMath>, "Numbers; every member is a global name"};

}  // namespace vl
