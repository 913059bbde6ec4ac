// The operators on two numbers. Whatever isn't plain numbers goes the long way: the operands are put into their slots,
// and the walker's own operator runs on them.
#include "interpreter/executor/numbers.h"

namespace vl::handlers {

namespace {

VL_NOINLINE const Instruction* BinarySlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  ReduceSlowly(x, i, S, L, i->k, i->n & 0xFF, static_cast<OperandKind>(i->n >> 8 & 3),
               static_cast<OperandKind>(i->n >> 10 & 3));
  VL_GO(i + 1);
}

template <Traces T, uint16_t Op, OperandKind A, OperandKind B>
const Instruction* Binary(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[i->k];
  CValue& right = S[i->k + 1];
  const CValue* a = Read<A>(i->a, i->offsetA, &left, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  const int types = a->type | b->type;
  if (types == VT_INTEGER) {
    int32_t result;
    if (AreFree<T, A, B>(left, right) && OnIntegers<Op>(a->data.integer, b->data.integer, result)) [[likely]] {
      if (T == kAllTraces && B != kSlot) PutInteger(right, b->data.integer);
      PutInteger(left, result);
      VL_GO(i + 1);
    }
  } else if (types == VT_FLOAT && AreFree<T, A, B>(left, right)) {
    if constexpr (IsArithmetic(Op) || IsComparison(Op)) {
      const double u = RealOf(*a);
      const double v = RealOf(*b);
      if (T == kAllTraces && B != kSlot) PutNumber(right, *b);
      if constexpr (IsComparison(Op)) {
        PutInteger(left, Holds<Op>(u, v));
      } else {
        PutReal(left, Arithmetic<Op>(u, v));
      }
      VL_GO(i + 1);
    } else if constexpr (Op == TK_DIV) {
      const double u = RealOf(*a);
      const double v = RealOf(*b);
      if (v != 0.0) {
        if (T == kAllTraces && B != kSlot) PutNumber(right, *b);
        PutReal(left, u / v);
        VL_GO(i + 1);
      }
    }
  }
  return BinarySlow(x, i, S, L);
}

template <Traces T>
constexpr Handler kLogic[][3][4] = {VL_OF_AB(Binary, T, TK_LOGICAL_AND),   VL_OF_AB(Binary, T, TK_LOGICAL_OR),
                                    VL_OF_AB(Binary, T, TK_GREATER_EQUAL), VL_OF_AB(Binary, T, TK_LESS_EQUAL),
                                    VL_OF_AB(Binary, T, TK_EQUAL),         VL_OF_AB(Binary, T, TK_LESS),
                                    VL_OF_AB(Binary, T, TK_GREATER),       VL_OF_AB(Binary, T, TK_NOT_EQUAL)};
template <Traces T>
constexpr Handler kArithmetic[][3][4] = {
    VL_OF_AB(Binary, T, TK_ADD), VL_OF_AB(Binary, T, TK_SUB), VL_OF_AB(Binary, T, TK_DIV), VL_OF_AB(Binary, T, TK_MUL),
    VL_OF_AB(Binary, T, TK_AND), VL_OF_AB(Binary, T, TK_OR),  VL_OF_AB(Binary, T, TK_XOR), VL_OF_AB(Binary, T, TK_MOD),
    VL_OF_AB(Binary, T, TK_SHL), VL_OF_AB(Binary, T, TK_SHR)};

}  // namespace

Handler BinaryOf(Traces traces, uint16_t op, OperandKind a, OperandKind b) {
  const int row = IndexOfA(a);
  if (op >= TK_ADD)
    return (traces == kNoTraces       ? kArithmetic<kNoTraces>
            : traces == kObjectTraces ? kArithmetic<kObjectTraces>
                                      : kArithmetic<kAllTraces>)[op - TK_ADD][row][b];
  return (traces == kNoTraces       ? kLogic<kNoTraces>
          : traces == kObjectTraces ? kLogic<kObjectTraces>
                                    : kLogic<kAllTraces>)[op - TK_LOGICAL_AND][row][b];
}

}  // namespace vl::handlers
