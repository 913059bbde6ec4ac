// What the handlers on numbers share. Each comes in three forms (Traces).
#pragma once

#include "interpreter/executor/dispatch.h"

namespace vl::handlers {

template <uint16_t Op, typename T>
inline T Arithmetic(T a, T b) {
  if constexpr (Op == TK_ADD) return a + b;
  if constexpr (Op == TK_SUB) return a - b;
  if constexpr (Op == TK_MUL) return a * b;
}

template <uint16_t Op, typename T>
inline bool Holds(T a, T b) {
  if constexpr (Op == TK_GREATER_EQUAL) return a >= b;
  if constexpr (Op == TK_LESS_EQUAL) return a <= b;
  if constexpr (Op == TK_EQUAL) return a == b;
  if constexpr (Op == TK_LESS) return a < b;
  if constexpr (Op == TK_GREATER) return a > b;
  if constexpr (Op == TK_NOT_EQUAL) return a != b;
}

constexpr bool IsArithmetic(uint16_t op) { return op == TK_ADD || op == TK_SUB || op == TK_MUL; }
constexpr bool IsComparison(uint16_t op) { return op >= TK_GREATER_EQUAL && op <= TK_NOT_EQUAL; }

// The operator on two integers. False when it takes more than that.
template <uint16_t Op>
VL_ALWAYS_INLINE bool OnIntegers(int32_t a, int32_t b, int32_t& result) {
  if constexpr (IsArithmetic(Op)) {
    result = static_cast<int32_t>(Arithmetic<Op>(static_cast<uint32_t>(a), static_cast<uint32_t>(b)));
  } else if constexpr (IsComparison(Op)) {
    result = Holds<Op>(a, b);
  } else if constexpr (Op == TK_LOGICAL_AND) {
    result = a != 0 && b != 0;
  } else if constexpr (Op == TK_LOGICAL_OR) {
    result = (a | b) != 0;
  } else if constexpr (Op == TK_DIV) {
    if (b <= 0) return false;
    result = a / b;
  } else if constexpr (Op == TK_MOD) {
    if (b <= 0) return false;
    result = a % b;
  } else if constexpr (Op == TK_AND) {
    result = a & b;
  } else if constexpr (Op == TK_OR) {
    result = a | b;
  } else if constexpr (Op == TK_XOR) {
    result = a ^ b;
  } else if constexpr (Op == TK_SHL) {
    result = static_cast<int32_t>(static_cast<uint32_t>(a) << (b & 31));
  } else {
    static_assert(Op == TK_SHR);
    result = a >> (b & 31);
  }
  return true;
}

// An operand whose kind is only known here.
inline CValue* ReadAny(uint32_t kind, const Operand& operand, int64_t offset, CValue* slot, CValue* L) {
  switch (kind) {
    case kLocal:
      return Read<kLocal>(operand, offset, slot, L);
    case kName:
      return Read<kName>(operand, offset, slot, L);
    case kConstant:
      return Read<kConstant>(operand, offset, slot, L);
    default:
      return slot;
  }
}

// `+` and the comparisons where one side is a text and the other a text or a number, where no slot's rest is needed;
// the result goes to S[k]. False, with nothing done, for anything else.
bool ReduceTexts(CExecutor& x, const Instruction* i, CValue* S, CValue* L, uint32_t k, uint16_t op, OperandKind a,
                 OperandKind b);
// A comparison of that kind as a condition.
bool DecideTexts(CExecutor& x, const Instruction* i, CValue* S, CValue* L, uint16_t op, OperandKind a, OperandKind b,
                 bool& holds);
// `target = a + b` where a is the target itself and a text.
bool AppendToTarget(CExecutor& x, const Instruction* i, CValue* S, CValue* L, uint16_t op, OperandKind a,
                    OperandKind b);
// The value of a slot that nobody asks for any more, to a variable.
void MoveValue(CValue& target, CValue& slot);
// A member of the text in the slot, whose row has a quick way; its end, false when that takes a String after all.
void BeginTextCall(CExecutor& x, const Instruction* i, CValue* S);
bool EndTextCall(CExecutor& x, const Instruction* i, CValue* S);

// Whether a slot may be written. Where all traces are kept, omitted values stand in some.
template <Traces T>
inline bool IsFree(const CValue& slot) {
  return T == kAllTraces ? slot.IsPlain() : slot.type <= VT_FLOAT;
}

// Whether the slots of an operator may be written: they own nothing, or hold the operands themselves.
template <Traces T, OperandKind A, OperandKind B>
inline bool AreFree(const CValue& left, const CValue& right) {
  return (A == kSlot || IsFree<T>(left)) && (T == kNoTraces || B == kSlot || IsFree<T>(right));
}

// Puts the operands into their slots and runs the walker's operator.
inline void ReduceSlowly(CExecutor& x, const Instruction* i, CValue* S, CValue* L, uint32_t k, uint16_t op,
                         OperandKind a, OperandKind b) {
  if (ReduceTexts(x, i, S, L, k, op, a, b)) return;
  if (a != kSlot) LoadOperand(x, S[k], a, i->a, L);
  if (b != kSlot) LoadOperand(x, S[k + 1], b, i->b, L);
  x.StandAt(S, k, i->at);
  x.i.Reduce(op);
}

// The rows of a table of handlers, by the kinds of the operands.
#define VL_OF_B(F, T, Op, A) \
  { F<T, Op, A, kLocal>, F<T, Op, A, kName>, F<T, Op, A, kConstant>, F<T, Op, A, kSlot> }
#define VL_OF_AB(F, T, Op) \
  { VL_OF_B(F, T, Op, kLocal), VL_OF_B(F, T, Op, kName), VL_OF_B(F, T, Op, kSlot) }
inline int IndexOfA(OperandKind a) { return a == kSlot ? 2 : a; }

}  // namespace vl::handlers
