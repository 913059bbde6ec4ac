#include "engine3d/script/vector_class.h"

#include <cmath>

#include "engine3d/script/engine3d_classes.h"
#include "engine3d/script/matrix_class.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {

float Rounded(double v) { return static_cast<float>(v); }

double Dot(const Vector4& a, const Vector4& b) {
  return double{a.x} * double{b.x} + double{a.y} * double{b.y} + double{a.z} * double{b.z};
}

double Length(const Vector4& v) { return std::sqrt(Dot(v, v)); }

}  // namespace

bool IsNumberAbsent(CInterpretor& interpreter, int argument) {
  return interpreter.GetArgDouble(argument) == kDefaultDouble;
}

float NumberArgument(CInterpretor& interpreter, int argument) {
  if (IsNumberAbsent(interpreter, argument)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  return Rounded(interpreter.GetArgDouble(argument));
}

Vector4 VectorArgument(CInterpretor& interpreter, int first) {
  const CValue& value = *interpreter.GetArg(first);
  if (value.IsObjectOfClass(CLASS_VECTOR)) return static_cast<const CIVector*>(value.data.object)->value;
  float xyz[3] = {};
  for (int i = 0; i < 3; ++i) {
    CValue scratch(&interpreter);
    const CValue* number;
    if (value.type == VT_ARRAY) {
      number = value.data.array ? value.data.array->Element(static_cast<uint32_t>(i), scratch) : nullptr;
    } else {
      number = interpreter.GetArg(first + i);
    }
    const double v = number ? number->GetDouble() : kDefaultDouble;
    if (v != kDefaultDouble) xyz[i] = Rounded(v);
  }
  return {xyz[0], xyz[1], xyz[2], 0.0f};
}

void CIVector::Construct() {
  Set();
  Create();
}

template <typename F>
void CIVector::Combine3(const Vector4& other, F f) {
  value.x = Rounded(f(double{value.x}, double{other.x}));
  value.y = Rounded(f(double{value.y}, double{other.y}));
  value.z = Rounded(f(double{value.z}, double{other.z}));
}

template <typename F>
void CIVector::Combine4(const Vector4& other, F f) {
  Combine3(other, f);
  value.w = Rounded(f(double{value.w}, double{other.w}));
}

float CIVector::PlainNumber(int argument) {
  const uint8_t type = interpreter.GetArg(argument)->type;
  if (type == VT_STRING || type == VT_OBJECT) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  return NumberArgument(interpreter, argument);
}

void CIVector::Set() { value = VectorArgument(interpreter, 0); }
void CIVector::Reset() { value = {}; }

void CIVector::AddVector() {
  Combine4(VectorArgument(interpreter, 0), [](double a, double b) { return a + b; });
}

void CIVector::SubVector() {
  Combine4(VectorArgument(interpreter, 0), [](double a, double b) { return a - b; });
}

void CIVector::MulVector() {
  Combine4(VectorArgument(interpreter, 0), [](double a, double b) { return a * b; });
}

void CIVector::Scale() {
  if (IsNumberAbsent(interpreter, 0)) return;
  const double k = double{NumberArgument(interpreter, 0)};
  Combine4(value, [k](double a, double) { return a * k; });
}

void CIVector::Rescale() {
  if (IsNumberAbsent(interpreter, 0)) return;
  const double wanted = double{NumberArgument(interpreter, 0)};
  const double length = Length(value);
  if (length == 0.0) {
    value = {};
    return;
  }
  const double k = wanted / length;
  Combine4(value, [k](double a, double) { return a * k; });
}

void CIVector::Negate() {
  Combine4(value, [](double a, double) { return -a; });
}

void CIVector::IsEqual() {
  const Vector4 v = VectorArgument(interpreter, 0);
  interpreter.GetResult().SetInt(value.x == v.x && value.y == v.y && value.z == v.z);
}

void CIVector::GetLength() { interpreter.GetResult().SetFloat(Length(value)); }

void CIVector::Distance() {
  const Vector4 v = VectorArgument(interpreter, 0);
  const double x = double{v.x} - double{value.x};
  const double y = double{v.y} - double{value.y};
  const double z = double{v.z} - double{value.z};
  interpreter.GetResult().SetFloat(std::sqrt(x * x + y * y + z * z));
}

void CIVector::DotProductUniformized() {
  const Vector4 v = VectorArgument(interpreter, 0);
  const double dot = Dot(value, v);
  const double lengths = Length(value) * Length(v);
  interpreter.GetResult().SetFloat(lengths == 0.0 ? dot : dot / lengths);
}

void CIVector::DotProduct() { interpreter.GetResult().SetFloat(Dot(value, VectorArgument(interpreter, 0))); }

void CIVector::CrossProduct() {
  const Vector4 a = value;
  const Vector4 b = VectorArgument(interpreter, 0);
  value.x = Rounded(double{a.y} * double{b.z} - double{a.z} * double{b.y});
  value.y = Rounded(double{a.z} * double{b.x} - double{a.x} * double{b.z});
  value.z = Rounded(double{a.x} * double{b.y} - double{a.y} * double{b.x});
}

void CIVector::Normalize() {
  const double length = Length(value);
  Combine3(value, [length](double a, double) { return length == 0.0 ? 0.0 : a / length; });
}

void CIVector::Average() {
  Combine4(VectorArgument(interpreter, 0), [](double a, double b) { return (a + b) * 0.5; });
}

void CIVector::Lerp() {
  const double t = double{NumberArgument(interpreter, 0)};
  Combine3(VectorArgument(interpreter, 1), [t](double a, double b) { return a + (b - a) * t; });
}

void CIVector::Combine() {
  const double own = double{PlainNumber(0)};
  const double others = double{PlainNumber(1)};
  Combine3(VectorArgument(interpreter, 2), [=](double a, double b) { return a * own + b * others; });
}

void CIVector::GetX() { interpreter.GetResult().SetFloat(double{value.x}); }
void CIVector::GetY() { interpreter.GetResult().SetFloat(double{value.y}); }
void CIVector::GetZ() { interpreter.GetResult().SetFloat(double{value.z}); }
void CIVector::SetX() { value.x = PlainNumber(0); }
void CIVector::SetY() { value.y = PlainNumber(0); }
void CIVector::SetZ() { value.z = PlainNumber(0); }

void CIVector::MulVectorMatrix() {
  const L3DMatrix m = MatrixArgument(interpreter, 0);
  const Vector4 v = value;
  const auto row = [&](int i) {
    return Rounded(double{m[i][0]} * double{v.x} + double{m[i][1]} * double{v.y} + double{m[i][2]} * double{v.z} +
                   double{m[i][3]} * double{v.w});
  };
  value = {row(0), row(1), row(2), row(3)};
}

void CIVector::MulNormalMatrix() {
  const L3DVector v = RotateVector(MatrixArgument(interpreter, 0), {value.x, value.y, value.z});
  value = {v.x, v.y, v.z, value.w};
}

namespace {

// v in the help: a Vector, an array of three numbers, or up to three numbers.
constexpr MemberRow kRows[] = {
    Row(1, "Set", kMember<&CIVector::Set>, "Set(v): a Vector, an array of three numbers, or up to three numbers"),
    Row(2, "Reset", kMember<&CIVector::Reset>, "Reset(): all components 0"),
    Row(3, "AddVector", kMember<&CIVector::AddVector>, "AddVector(v): adds each component"),
    Row(4, "SubVector", kMember<&CIVector::SubVector>, "SubVector(v): subtracts each component"),
    Row(5, "MulVector", kMember<&CIVector::MulVector>, "MulVector(v): multiplies each component"),
    Row(6, "Scale", kMember<&CIVector::Scale>, "Scale(k): each component times k"),
    Row(7, "Rescale", kMember<&CIVector::Rescale>, "Rescale(length): the same direction with that length"),
    Row(8, "Negate", kMember<&CIVector::Negate>, "Negate(): the opposite direction"),
    Row(9, "IsEqual", kMember<&CIVector::IsEqual>, "IsEqual(v): 1 when x, y and z are the same"),
    Row(10, "GetLength", kMember<&CIVector::GetLength>, "GetLength(): of x, y and z"),
    Row(11, "Distance", kMember<&CIVector::Distance>, "Distance(v): between the two points"),
    Row(12, "DotProductUniformized", kMember<&CIVector::DotProductUniformized>,
        "DotProductUniformized(v): cosine of the angle between the two"),
    Row(13, "DotProduct", kMember<&CIVector::DotProduct>, "DotProduct(v): of x, y and z"),
    Row(14, "CrossProduct", kMember<&CIVector::CrossProduct>, "CrossProduct(v): becomes this x v"),
    Row(15, "Normalize", kMember<&CIVector::Normalize>, "Normalize(): length 1; 0 stays 0"),
    Row(16, "Average", kMember<&CIVector::Average>, "Average(v): the middle of the two"),
    Row(17, "Lerp", kMember<&CIVector::Lerp>, "Lerp(t, v): moves towards v, which it reaches at t = 1"),
    Row(18, "Combine", kMember<&CIVector::Combine>, "Combine(a, b, v): this times a plus v times b"),
    Row(19, "GetX", kMember<&CIVector::GetX>, "GetX(): a float"),
    Row(20, "GetY", kMember<&CIVector::GetY>, "GetY(): a float"),
    Row(21, "GetZ", kMember<&CIVector::GetZ>, "GetZ(): a float"),
    Row(22, "SetX", kMember<&CIVector::SetX>, "SetX(n): a number"),
    Row(23, "SetY", kMember<&CIVector::SetY>, "SetY(n): a number"),
    Row(24, "SetZ", kMember<&CIVector::SetZ>, "SetZ(n): a number"),
    Row(25, "MulVectorMatrix", kMember<&CIVector::MulVectorMatrix>,
        "MulVectorMatrix(m): the matrix times this; it isn't moved by the translation"),
    Row(26, "MulNormalMatrix", kMember<&CIVector::MulNormalMatrix>,
        "MulNormalMatrix(m): turned by the 3 by 3 block of the matrix"),
};

}  // namespace

const ClassTable kVectorClass = {CLASS_VECTOR, kRows, &CreateObject<CIVector>,
                                 "A vector that its members change: New Vector(x, y, z), or of a Vector or an array"};

}  // namespace vl
