#include "engine3d/script/matrix_class.h"

#include <cmath>

#include "engine3d/script/engine3d_classes.h"
#include "engine3d/script/vector_class.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {

constexpr int kRowCount = 3;
constexpr int kColumnCount = 4;

L3DMatrix MatrixOfVectors(CInterpretor& interpreter, int first) {
  if (interpreter.GetArgCount() - first != kColumnCount) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  L3DMatrix m;
  for (int column = 0; column < kColumnCount; ++column) {
    const CValue& value = *interpreter.GetArg(first + column);
    if (!value.IsObjectOfClass(CLASS_VECTOR)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    const Vector4& v = static_cast<const CIVector*>(value.data.object)->value;
    m.SetColumn(column, {v.x, v.y, v.z});
  }
  return m;
}

L3DMatrix MatrixOfArray(CInterpretor& interpreter, const CArrayStore* store) {
  if (!store || store->dimensions != 2 || store->sizes[0] != kRowCount || store->sizes[1] != kColumnCount) {
    interpreter.RaiseError(ERR_BAD_ARGUMENT);
  }
  L3DMatrix m;
  CValue number(&interpreter);
  for (int column = 0; column < kColumnCount; ++column) {
    for (int row = 0; row < kRowCount; ++row) {
      const CValue* element = store->Element(static_cast<uint32_t>(row + kRowCount * column), number);
      if (!element || element->IsDefault()) continue;
      if (element->type != VT_INTEGER && element->type != VT_FLOAT) interpreter.RaiseError(ERR_BAD_ARGUMENT);
      m[row][column] = static_cast<float>(element->GetDouble());
    }
  }
  return m;
}

L3DMatrix MatrixOfNumbers(CInterpretor& interpreter, int first) {
  const int count = interpreter.GetArgCount() - first;
  if (count > kRowCount * kColumnCount) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  L3DMatrix m;
  for (int i = 0; i < count; ++i) {
    const CValue& value = *interpreter.GetArg(first + i);
    if (value.IsDefault()) continue;
    if (value.type != VT_INTEGER && value.type != VT_FLOAT) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    m[i % kRowCount][i / kRowCount] = static_cast<float>(value.GetDouble());
  }
  return m;
}

}  // namespace

L3DMatrix MatrixArgument(CInterpretor& interpreter, int first) {
  const int count = interpreter.GetArgCount() - first;
  if (count <= 0) return {};
  const CValue& value = *interpreter.GetArg(first);
  if (value.IsObjectOfClass(CLASS_VECTOR)) return MatrixOfVectors(interpreter, first);
  if (value.type != VT_ARRAY && !value.IsObjectOfClass(CLASS_MATRIX)) return MatrixOfNumbers(interpreter, first);
  if (count != 1) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  if (value.type == VT_ARRAY) return MatrixOfArray(interpreter, value.data.array);
  return static_cast<const CIMatrix*>(value.data.object)->matrix;
}

void CIMatrix::Construct() {
  Set();
  Create();
}

void CIMatrix::Reset() { matrix = {}; }
void CIMatrix::SetIdentity() { matrix = IdentityMatrix(); }
void CIMatrix::Set() { matrix = MatrixArgument(interpreter, 0); }

void CIMatrix::AddMatrix() {
  const L3DMatrix other = MatrixArgument(interpreter, 0);
  for (int i = 0; i < kRowCount; ++i) {
    for (int j = 0; j < kColumnCount; ++j) matrix[i][j] += other[i][j];
  }
}

void CIMatrix::SubMatrix() {
  const L3DMatrix other = MatrixArgument(interpreter, 0);
  for (int i = 0; i < kRowCount; ++i) {
    for (int j = 0; j < kColumnCount; ++j) matrix[i][j] -= other[i][j];
  }
}

void CIMatrix::MulMatrix() { matrix = MatrixProduct(matrix, MatrixArgument(interpreter, 0)); }

void CIMatrix::Transpose() {
  const L3DMatrix old = matrix;
  for (int i = 0; i < 3; ++i) {
    for (int j = 0; j < 3; ++j) matrix[i][j] = old[j][i];
  }
}

void CIMatrix::Invert() { MatrixInverse(matrix, matrix); }

void CIMatrix::Normalize() {
  for (int i = 0; i < kRowCount; ++i) {
    double squares = 0.0;
    for (int j = 0; j < 3; ++j) squares += double{matrix[i][j]} * double{matrix[i][j]};
    const double length = std::sqrt(squares);
    if (length == 0.0) continue;
    for (int j = 0; j < 3; ++j) matrix[i][j] = static_cast<float>(double{matrix[i][j]} / length);
  }
}

void CIMatrix::MakeTranslationMatrix() {
  const Vector4 v = VectorArgument(interpreter, 0);
  matrix = IdentityMatrix();
  matrix.SetTranslation({v.x, v.y, v.z});
}

void CIMatrix::MakeScaleMatrix() {
  const Vector4 v = VectorArgument(interpreter, 0);
  matrix = {};
  matrix[0][0] = v.x;
  matrix[1][1] = v.y;
  matrix[2][2] = v.z;
}

L3DVector CIMatrix::Angles() {
  const float ax = NumberArgument(interpreter, 0);
  const float ay = NumberArgument(interpreter, 1);
  const float az = NumberArgument(interpreter, 2);
  return {ax, ay, az};
}

void CIMatrix::MakeRotationMatrix() {
  const int count = interpreter.GetArgCount();
  if (count != 3 && count != 6) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  const L3DVector angles = Angles();
  if (count == 6) {
    const float x = NumberArgument(interpreter, 3);
    const float y = NumberArgument(interpreter, 4);
    const float z = NumberArgument(interpreter, 5);
    translation = {x, y, z};
  }
  matrix = MatrixFromAngles(angles.x, angles.y, angles.z, translation);
}

float& CIMatrix::ElementArgument(int first) {
  if (interpreter.IsArgDefault(first) || interpreter.IsArgDefault(first + 1)) {
    interpreter.RaiseError(ERR_OBJECT_MISSING);
  }
  const int32_t row = interpreter.GetArgInt(first);
  const int32_t column = interpreter.GetArgInt(first + 1);
  if (row < 0 || row >= kRowCount || column < 0 || column >= kColumnCount) interpreter.RaiseError(ERR_MATRIX_ELEMENT);
  return matrix[row][column];
}

void CIMatrix::SetValue() {
  if (IsNumberAbsent(interpreter, 0)) interpreter.RaiseError(ERR_OBJECT_MISSING);
  float& element = ElementArgument(1);
  element = static_cast<float>(interpreter.GetArgDouble(0));
}

void CIMatrix::GetValue() {
  const float element = ElementArgument(0);
  interpreter.GetResult().SetFloat(double{element});
}

void CIMatrix::GetEulerAngleX() { interpreter.GetResult().SetFloat(double{AnglesFromMatrix(matrix).x}); }
void CIMatrix::GetEulerAngleY() { interpreter.GetResult().SetFloat(double{AnglesFromMatrix(matrix).y}); }
void CIMatrix::GetEulerAngleZ() { interpreter.GetResult().SetFloat(double{AnglesFromMatrix(matrix).z}); }

void CIMatrix::AddAngle() {
  if (interpreter.GetArgCount() != 3) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  matrix = MatrixProduct(matrix, MatrixFromAngles(Angles()));
}

namespace {

constexpr MemberRow kRows[] = {
    Row(1, "Reset", kMember<&CIMatrix::Reset>, "Reset(): all elements 0"),
    Row(2, "SetIdentity", kMember<&CIMatrix::SetIdentity>, "SetIdentity(): neither turns nor moves"),
    Row(3, "Set", kMember<&CIMatrix::Set>,
        "Set(m): a Matrix, four Vectors (columns), an array of 3 by 4, or up to 12 numbers column by column"),
    Row(4, "AddMatrix", kMember<&CIMatrix::AddMatrix>, "AddMatrix(m): adds each element"),
    Row(5, "SubMatrix", kMember<&CIMatrix::SubMatrix>, "SubMatrix(m): subtracts each element"),
    Row(6, "MulMatrix", kMember<&CIMatrix::MulMatrix>, "MulMatrix(m): this times m"),
    Row(7, "Transpose", kMember<&CIMatrix::Transpose>, "Transpose(): mirrors the 3 by 3 block"),
    Row(8, "Invert", kMember<&CIMatrix::Invert>,
        "Invert(): the inverse of a rotation with scale; the identity when a row is 0"),
    Row(9, "Normalize", kMember<&CIMatrix::Normalize>, "Normalize(): each row of the 3 by 3 block to length 1"),
    Row(10, "MakeTranslationMatrix", kMember<&CIMatrix::MakeTranslationMatrix>, "MakeTranslationMatrix(v): moves by v"),
    Row(11, "MakeScaleMatrix", kMember<&CIMatrix::MakeScaleMatrix>, "MakeScaleMatrix(v): scales each axis"),
    Row(12, "MakeRotationMatrix", kMember<&CIMatrix::MakeRotationMatrix>,
        "MakeRotationMatrix(ax, ay, az, tx, ty, tz): turns by radians and moves; without t as the last time"),
    Row(13, "SetValue", kMember<&CIMatrix::SetValue>, "SetValue(value, row, column): row 0 to 2, column 0 to 3"),
    Row(14, "GetValue", kMember<&CIMatrix::GetValue>, "GetValue(row, column): a float"),
    Row(15, "GetEulerAngleX", kMember<&CIMatrix::GetEulerAngleX>, "GetEulerAngleX(): radians, 0 to a full turn"),
    Row(16, "GetEulerAngleY", kMember<&CIMatrix::GetEulerAngleY>, "GetEulerAngleY(): radians, 0 to a full turn"),
    Row(17, "GetEulerAngleZ", kMember<&CIMatrix::GetEulerAngleZ>, "GetEulerAngleZ(): radians, 0 to a full turn"),
    Row(18, "AddAngle", kMember<&CIMatrix::AddAngle>, "AddAngle(ax, ay, az): this times a rotation by radians"),
};

}  // namespace

const ClassTable kMatrixClass = {CLASS_MATRIX, kRows, &CreateObject<CIMatrix>,
                                 "A transform of 3 rows and 4 columns that its members change; all 0 when new"};

}  // namespace vl
