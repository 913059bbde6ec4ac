#include "engine3d/script/quaternion_class.h"

#include "engine3d/script/engine3d_classes.h"
#include "engine3d/script/matrix_class.h"
#include "engine3d/script/vector_class.h"
#include "interpreter/interpretor.h"

namespace vl {

const L3DQuaternion& CIQuaternion::QuaternionArgument(int argument) {
  const CValue& v = *interpreter.GetArg(argument);
  if (!v.IsObjectOfClass(CLASS_QUATERNION)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  return static_cast<const CIQuaternion*>(v.data.object)->value;
}

void CIQuaternion::SetComponent(float& component) {
  if (!IsNumberAbsent(interpreter, 0)) component = NumberArgument(interpreter, 0);
}

void CIQuaternion::ResultMatrix(const L3DMatrix& matrix) {
  // A program whose application doesn't have the class couldn't do anything with the object.
  if (!interpreter.ClassInfo(CLASS_MATRIX)) {
    interpreter.RaiseError(ERR_UNKNOWN_MEMBER, kNoArgument, "the application doesn't use the class Matrix");
  }
  auto* object = new CIMatrix(interpreter);  // its class list owns it
  object->matrix = matrix;
  object->Create();
  interpreter.GetResult().SetObject(object);
  ++interpreter.newsSinceCollection;
}

void CIQuaternion::Construct() {
  SetValue();
  Create();
}

void CIQuaternion::SetW() { SetComponent(value.w); }
void CIQuaternion::SetX() { SetComponent(value.x); }
void CIQuaternion::SetY() { SetComponent(value.y); }
void CIQuaternion::SetZ() { SetComponent(value.z); }
void CIQuaternion::GetW() { interpreter.GetResult().SetFloat(double{value.w}); }
void CIQuaternion::GetX() { interpreter.GetResult().SetFloat(double{value.x}); }
void CIQuaternion::GetY() { interpreter.GetResult().SetFloat(double{value.y}); }
void CIQuaternion::GetZ() { interpreter.GetResult().SetFloat(double{value.z}); }

void CIQuaternion::SetFromAngle() {
  if (interpreter.GetArgCount() != 4) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  float numbers[4];
  for (int i = 0; i < 4; ++i) numbers[i] = NumberArgument(interpreter, i);
  value = QuaternionFromAngle(numbers[0], {numbers[1], numbers[2], numbers[3]});
}

void CIQuaternion::GetAngleAngle() { interpreter.GetResult().SetFloat(QuaternionAngle(value)); }
void CIQuaternion::GetAngleX() { interpreter.GetResult().SetFloat(double{QuaternionAxis(value).x}); }
void CIQuaternion::GetAngleY() { interpreter.GetResult().SetFloat(double{QuaternionAxis(value).y}); }
void CIQuaternion::GetAngleZ() { interpreter.GetResult().SetFloat(double{QuaternionAxis(value).z}); }

void CIQuaternion::SetValue() {
  const int count = interpreter.GetArgCount();
  if (count == 0) {
    value = {};
    return;
  }
  const CValue& first = *interpreter.GetArg(0);
  if (first.IsObjectOfClass(CLASS_QUATERNION)) {
    value = static_cast<const CIQuaternion*>(first.data.object)->value;
    return;
  }
  if (first.IsObjectOfClass(CLASS_MATRIX)) {
    value = QuaternionFromMatrix(static_cast<const CIMatrix*>(first.data.object)->matrix);
    return;
  }
  if (count != 4) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  float numbers[4];
  for (int i = 0; i < 4; ++i) numbers[i] = NumberArgument(interpreter, i);
  value = {numbers[0], numbers[1], numbers[2], numbers[3]};
}

void CIQuaternion::SetIdentity() { value = kIdentityQuaternion; }
void CIQuaternion::Reset() { value = {}; }
void CIQuaternion::Add() { value = QuaternionAdd(value, QuaternionArgument(0)); }
void CIQuaternion::Subtract() { value = QuaternionSubtract(value, QuaternionArgument(0)); }
void CIQuaternion::Multiply() { value = QuaternionProduct(value, QuaternionArgument(0)); }
void CIQuaternion::Divide() { value = QuaternionQuotient(value, QuaternionArgument(0)); }
void CIQuaternion::Square() { value = QuaternionSquare(value); }
void CIQuaternion::Sqrt() { value = QuaternionSqrt(value); }
void CIQuaternion::GetLength() { interpreter.GetResult().SetFloat(QuaternionLength(value)); }

void CIQuaternion::DotProductUniformized() {
  const L3DQuaternion& q = QuaternionArgument(0);
  const double lengths = QuaternionLength(value) * QuaternionLength(q);
  interpreter.GetResult().SetFloat(QuaternionDot(value, q) / lengths);
}

void CIQuaternion::DotProduct() { interpreter.GetResult().SetFloat(QuaternionDot(value, QuaternionArgument(0))); }

void CIQuaternion::Scale() { value = QuaternionScaled(value, double{NumberArgument(interpreter, 0)}); }
void CIQuaternion::Rescale() { value = QuaternionRescaled(value, NumberArgument(interpreter, 0)); }
void CIQuaternion::IsEqual() { interpreter.GetResult().SetInt(value == QuaternionArgument(0)); }
void CIQuaternion::Normalize() { value = QuaternionNormalized(value); }
void CIQuaternion::Inverse() { value = QuaternionInverse(value); }
void CIQuaternion::Negate() { value = QuaternionNegated(value); }
void CIQuaternion::Exp() { value = QuaternionExp(value); }
void CIQuaternion::Log() { value = QuaternionLog(value); }
void CIQuaternion::LnDif() { value = QuaternionLnDif(value, QuaternionArgument(0)); }

void CIQuaternion::Slerp() {
  const L3DQuaternion& q = QuaternionArgument(0);
  const float spin = NumberArgument(interpreter, 1);
  const float t = NumberArgument(interpreter, 2);
  value = QuaternionSlerp(value, q, spin, t);
}

void CIQuaternion::MakeMatrix() { ResultMatrix(MatrixFromQuaternion(value)); }
void CIQuaternion::MakeInvertedMatrix() { ResultMatrix(InvertedMatrixFromQuaternion(value)); }

namespace {

constexpr MemberRow kRows[] = {
    Row(1, "SetW", kMember<&CIQuaternion::SetW>, "SetW(n): a number"),
    Row(2, "SetX", kMember<&CIQuaternion::SetX>, "SetX(n): a number"),
    Row(3, "SetY", kMember<&CIQuaternion::SetY>, "SetY(n): a number"),
    Row(4, "SetZ", kMember<&CIQuaternion::SetZ>, "SetZ(n): a number"),
    Row(5, "GetW", kMember<&CIQuaternion::GetW>, "GetW(): a float"),
    Row(6, "GetX", kMember<&CIQuaternion::GetX>, "GetX(): a float"),
    Row(7, "GetY", kMember<&CIQuaternion::GetY>, "GetY(): a float"),
    Row(8, "GetZ", kMember<&CIQuaternion::GetZ>, "GetZ(): a float"),
    Row(9, "SetFromAngle", kMember<&CIQuaternion::SetFromAngle>,
        "SetFromAngle(angle, x, y, z): a turn by radians about an axis"),
    Row(10, "GetAngleAngle", kMember<&CIQuaternion::GetAngleAngle>, "GetAngleAngle(): the turn in radians"),
    Row(11, "GetAngleX", kMember<&CIQuaternion::GetAngleX>, "GetAngleX(): x of the turn's axis"),
    Row(12, "GetAngleY", kMember<&CIQuaternion::GetAngleY>, "GetAngleY(): y of the turn's axis"),
    Row(13, "GetAngleZ", kMember<&CIQuaternion::GetAngleZ>, "GetAngleZ(): z of the turn's axis"),
    Row(14, "SetValue", kMember<&CIQuaternion::SetValue>, "SetValue(q): a Quaternion, a Matrix, or w, x, y, z"),
    Row(15, "SetIdentity", kMember<&CIQuaternion::SetIdentity>, "SetIdentity(): 1, 0, 0, 0"),
    Row(16, "Reset", kMember<&CIQuaternion::Reset>, "Reset(): all components 0"),
    Row(17, "Add", kMember<&CIQuaternion::Add>, "Add(q): adds each component"),
    Row(18, "Subtract", kMember<&CIQuaternion::Subtract>, "Subtract(q): subtracts each component"),
    Row(19, "Multiply", kMember<&CIQuaternion::Multiply>, "Multiply(q): the product this q"),
    Row(20, "Divide", kMember<&CIQuaternion::Divide>,
        "Divide(q): the product with q's conjugate, by the w of the conjugate's square"),
    Row(21, "Square", kMember<&CIQuaternion::Square>, "Square(): the product with itself"),
    Row(22, "Sqrt", kMember<&CIQuaternion::Sqrt>, "Sqrt(): a square root of w, x, y; z stays"),
    Row(23, "GetLength", kMember<&CIQuaternion::GetLength>, "GetLength(): of all four components"),
    Row(24, "DotProductUniformized", kMember<&CIQuaternion::DotProductUniformized>,
        "DotProductUniformized(q): the dot product by both lengths"),
    Row(25, "DotProduct", kMember<&CIQuaternion::DotProduct>, "DotProduct(q): of all four components"),
    Row(26, "Scale", kMember<&CIQuaternion::Scale>, "Scale(k): each component times k"),
    Row(27, "Rescale", kMember<&CIQuaternion::Rescale>, "Rescale(length): with that length"),
    Row(28, "IsEqual", kMember<&CIQuaternion::IsEqual>, "IsEqual(q): 1 when all components are the same"),
    Row(29, "Normalize", kMember<&CIQuaternion::Normalize>, "Normalize(): length 1; the identity for length 0"),
    Row(30, "Inverse", kMember<&CIQuaternion::Inverse>, "Inverse(): of the product"),
    Row(31, "Negate", kMember<&CIQuaternion::Negate>, "Negate(): normalises and turns the other way"),
    Row(32, "Exp", kMember<&CIQuaternion::Exp>, "Exp(): the exponential of x, y, z"),
    Row(33, "Log", kMember<&CIQuaternion::Log>, "Log(): the arc, as x, y, z"),
    Row(34, "LnDif", kMember<&CIQuaternion::LnDif>, "LnDif(q): the logarithm of the turn that leads to q"),
    Row(35, "Slerp", kMember<&CIQuaternion::Slerp>,
        "Slerp(q, spin, t): along the arc to q, reached at t = 1, with half turns more on the way"),
    Row(36, "MakeMatrix", kMember<&CIQuaternion::MakeMatrix>, "MakeMatrix(): a new Matrix of this rotation"),
    Row(37, "MakeInvertedMatrix", kMember<&CIQuaternion::MakeInvertedMatrix>,
        "MakeInvertedMatrix(): a new Matrix of the opposite rotation"),
};

}  // namespace

const ClassTable kQuaternionClass = {CLASS_QUATERNION, kRows, &CreateObject<CIQuaternion>,
                                     "A rotation that its members change: New Quaternion(w, x, y, z)"};

}  // namespace vl
