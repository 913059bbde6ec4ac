// Arithmetic, comparison and logic on values, with their coercions.
#include <cmath>
#include <string>

#include "interpreter/interpretor.h"
#include "interpreter/number_text.h"
#include "interpreter/value.h"

namespace vl {

namespace {

bool IsReference(const CValue& v) { return v.type == VT_OBJECT || v.type == VT_FUNCTION; }

[[noreturn]] void RaiseNotNumber(const CValue& left, const CValue& right) {
  CInterpretor& i = *left.owner;
  if (left.type == VT_STRING || right.type == VT_STRING) i.RaiseError(ERR_STRING_VALUE);
  if (IsReference(left) || IsReference(right)) i.RaiseError(ERR_OBJECT_VALUE);
  if (left.type == VT_ARRAY || right.type == VT_ARRAY) i.RaiseError(ERR_ARRAY_VALUE);
  i.RaiseError(ERR_UNDEFINED);
}

[[noreturn]] void RaiseNotNumber(const CValue& value) { RaiseNotNumber(value, value); }

bool BothNumbers(const CValue& a, const CValue& b) { return (a.type | b.type) <= VT_FLOAT; }

double AsReal(const CValue& v) { return v.type == VT_INTEGER ? v.data.integer : v.data.real; }

// One side is a string: the other one becomes a string in place.
void ToString(CValue& v) {
  char buffer[CInterpretor::kTemporaryBytes];
  switch (v.type) {
    case VT_STRING:
      return;
    case VT_INTEGER:
      v.SetString({buffer, FormatInteger(v.data.integer, buffer)});
      return;
    case VT_FLOAT:
      v.SetString({buffer, FormatDouble(v.data.real, buffer)});
      return;
    case VT_OBJECT:
    case VT_FUNCTION:
      v.owner->RaiseError(ERR_OBJECT_VALUE);
    case VT_ARRAY:
      v.owner->RaiseError(ERR_ARRAY_STRING);
    default:
      v.owner->RaiseError(ERR_UNDEFINED);
  }
}

enum class Pair { Integers, Reals, Strings };

Pair CoerceNumeric(CValue& left, CValue& right) {
  if (left.type == VT_INTEGER && right.type == VT_INTEGER) return Pair::Integers;
  if (!BothNumbers(left, right)) RaiseNotNumber(left, right);
  return Pair::Reals;
}

Pair CoerceNumericOrString(CValue& left, CValue& right) {
  if (left.type == VT_INTEGER && right.type == VT_INTEGER) return Pair::Integers;
  if (BothNumbers(left, right)) return Pair::Reals;
  if (left.type == VT_STRING || right.type == VT_STRING) {
    ToString(left);
    ToString(right);
    return Pair::Strings;
  }
  RaiseNotNumber(left, right);
}

// Both sides as integers for the bitwise operators.
void BitOperands(CValue& left, CValue& right, uint32_t& a, uint32_t& b) {
  if (!BothNumbers(left, right)) RaiseNotNumber(left, right);
  a = static_cast<uint32_t>(left.GetInt());
  b = static_cast<uint32_t>(right.GetInt());
}

int32_t ReferenceNumber(const CValue& v) {
  if (v.type == VT_OBJECT) return v.data.object ? static_cast<int32_t>(v.data.object->number) : 0;
  // A function's number: its place among the blocks.
  return v.data.function ? static_cast<int32_t>(v.data.function - v.owner->blocks.data()) : 0;
}

int CompareText(const CValue& left, const CValue& right) {
  const std::string_view a = left.StringView();
  const std::string_view b = right.StringView();
  return a.compare(b);
}

template <typename Compare>
void Order(CValue& left, CValue& right, Compare compare) {
  bool result = false;
  switch (CoerceNumericOrString(left, right)) {
    case Pair::Integers:
      result = compare(left.data.integer, right.data.integer);
      break;
    case Pair::Reals:
      result = compare(AsReal(left), AsReal(right));
      break;
    case Pair::Strings:
      result = compare(CompareText(left, right), 0);
      break;
  }
  left.SetInt(result);
}

}  // namespace

bool ValueIsEqual(CValue& left, CValue& right) {
  if (left.type == VT_INTEGER && right.type == VT_INTEGER) return left.data.integer == right.data.integer;
  if (BothNumbers(left, right)) return AsReal(left) == AsReal(right);
  if (left.type == VT_STRING || right.type == VT_STRING) {
    ToString(left);
    ToString(right);
    return CompareText(left, right) == 0;
  }
  const bool leftReference = IsReference(left);
  const bool rightReference = IsReference(right);
  if (leftReference && rightReference) {
    if (left.type == right.type) {
      return left.type == VT_OBJECT ? left.data.object == right.data.object : left.data.function == right.data.function;
    }
    return ReferenceNumber(left) == ReferenceNumber(right);
  }
  if (leftReference && right.type == VT_INTEGER) return ReferenceNumber(left) == right.data.integer;
  if (leftReference && right.type == VT_FLOAT) return ReferenceNumber(left) == right.data.real;
  if (rightReference && left.type == VT_INTEGER) return left.data.integer == ReferenceNumber(right);
  if (rightReference && left.type == VT_FLOAT) return left.data.real == ReferenceNumber(right);
  if (left.type == VT_ARRAY || right.type == VT_ARRAY) left.owner->RaiseError(ERR_ARRAY_VALUE);
  left.owner->RaiseError(ERR_UNDEFINED);
}

void ValueAdd(CValue& left, CValue& right) {
  switch (CoerceNumericOrString(left, right)) {
    case Pair::Integers:
      left.data.integer =
          static_cast<int32_t>(static_cast<uint32_t>(left.data.integer) + static_cast<uint32_t>(right.data.integer));
      return;
    case Pair::Reals:
      left.SetFloat(AsReal(left) + AsReal(right));
      return;
    case Pair::Strings: {
      if (!right.data.text) return;
      Text text = Text::Adopt(left.data.text);
      left.data.text = nullptr;
      const bool fits = text.Append(right.StringView(), &left.owner->budget);
      left.data.text = text.Detach();
      if (!fits) left.owner->RaiseError(ERR_MEMORY);
      return;
    }
  }
}

void ValueSubtract(CValue& left, CValue& right) {
  switch (CoerceNumericOrString(left, right)) {
    case Pair::Integers:
      left.data.integer =
          static_cast<int32_t>(static_cast<uint32_t>(left.data.integer) - static_cast<uint32_t>(right.data.integer));
      return;
    case Pair::Reals:
      left.SetFloat(AsReal(left) - AsReal(right));
      return;
    case Pair::Strings: {
      const std::string_view piece = right.StringView();
      const std::string_view whole = left.StringView();
      if (piece.empty() || whole.empty()) return;
      std::string rest;
      size_t at = 0;
      for (size_t hit = whole.find(piece); hit != std::string_view::npos; hit = whole.find(piece, at)) {
        rest.append(whole.substr(at, hit - at));
        at = hit + piece.size();
      }
      rest.append(whole.substr(at));
      left.SetString(rest);
      return;
    }
  }
}

void ValueMultiply(CValue& left, CValue& right) {
  if (CoerceNumeric(left, right) == Pair::Integers) {
    left.data.integer =
        static_cast<int32_t>(static_cast<uint32_t>(left.data.integer) * static_cast<uint32_t>(right.data.integer));
  } else {
    left.SetFloat(AsReal(left) * AsReal(right));
  }
}

void ValueDivide(CValue& left, CValue& right) {
  if (CoerceNumeric(left, right) == Pair::Integers) {
    const int32_t divisor = right.data.integer;
    if (divisor == 0) left.owner->RaiseError(ERR_DIVISION);
    // The one quotient without a 32-bit value wraps, as the other operators do.
    left.data.integer = divisor == -1 ? static_cast<int32_t>(0u - static_cast<uint32_t>(left.data.integer))
                                      : left.data.integer / divisor;
  } else {
    if (AsReal(right) == 0.0) left.owner->RaiseError(ERR_DIVISION);
    left.SetFloat(AsReal(left) / AsReal(right));
  }
}

void ValueModulo(CValue& left, CValue& right) {
  if (CoerceNumeric(left, right) == Pair::Integers) {
    const int32_t divisor = right.data.integer;
    if (divisor == 0) left.owner->RaiseError(ERR_DIVISION);
    left.data.integer = divisor == -1 ? 0 : left.data.integer % divisor;
  } else {
    if (AsReal(right) == 0.0) left.owner->RaiseError(ERR_DIVISION);
    left.SetFloat(std::fmod(AsReal(left), AsReal(right)));
  }
}

void ValueAnd(CValue& left, CValue& right) {
  uint32_t a, b;
  BitOperands(left, right, a, b);
  left.SetInt(static_cast<int32_t>(a & b));
}

void ValueOr(CValue& left, CValue& right) {
  uint32_t a, b;
  BitOperands(left, right, a, b);
  left.SetInt(static_cast<int32_t>(a | b));
}

void ValueXor(CValue& left, CValue& right) {
  uint32_t a, b;
  BitOperands(left, right, a, b);
  left.SetInt(static_cast<int32_t>(a ^ b));
}

void ValueShiftLeft(CValue& left, CValue& right) {
  uint32_t a, b;
  BitOperands(left, right, a, b);
  left.SetInt(static_cast<int32_t>(a << (b & 31)));
}

void ValueShiftRight(CValue& left, CValue& right) {
  uint32_t a, b;
  BitOperands(left, right, a, b);
  left.SetInt(static_cast<int32_t>(a) >> (b & 31));
}

void ValueLess(CValue& left, CValue& right) {
  Order(left, right, [](auto a, auto b) { return a < b; });
}
void ValueLessEqual(CValue& left, CValue& right) {
  Order(left, right, [](auto a, auto b) { return a <= b; });
}
void ValueGreater(CValue& left, CValue& right) {
  Order(left, right, [](auto a, auto b) { return a > b; });
}
void ValueGreaterEqual(CValue& left, CValue& right) {
  Order(left, right, [](auto a, auto b) { return a >= b; });
}
void ValueEqual(CValue& left, CValue& right) { left.SetInt(ValueIsEqual(left, right)); }
void ValueNotEqual(CValue& left, CValue& right) { left.SetInt(!ValueIsEqual(left, right)); }

void ValueNot(CValue& value) {
  switch (value.type) {
    case VT_INTEGER:
      value.data.integer = value.data.integer == 0;
      return;
    case VT_FLOAT:
      value.SetInt(value.data.real == 0.0);
      return;
    default:
      RaiseNotNumber(value);
  }
}

void ValueNegate(CValue& value) {
  switch (value.type) {
    case VT_INTEGER:
      value.data.integer = static_cast<int32_t>(0u - static_cast<uint32_t>(value.data.integer));
      return;
    case VT_FLOAT:
      value.data.real = -value.data.real;
      return;
    default:
      RaiseNotNumber(value);
  }
}

void ValueComplement(CValue& value) {
  if (value.type > VT_FLOAT) RaiseNotNumber(value);
  value.SetInt(~value.GetInt());
}

void ValueIncrement(CValue& variable, int32_t step) {
  switch (variable.type) {
    case VT_INTEGER:
      variable.data.integer =
          static_cast<int32_t>(static_cast<uint32_t>(variable.data.integer) + static_cast<uint32_t>(step));
      return;
    case VT_FLOAT:
      variable.data.real += step;
      return;
    default:
      RaiseNotNumber(variable);
  }
}

}  // namespace vl
