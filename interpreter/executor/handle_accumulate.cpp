// Statements like `sum = sum + a * b` on locals, where no slot is looked at. Each passes over the two instructions
// behind it, which do the same for anything else.
#include "interpreter/executor/numbers.h"

namespace vl::handlers {

namespace {

// Some of the three is a float.
template <uint16_t Outer, uint16_t Inner, OperandKind B>
VL_NOINLINE const Instruction* AccumulateReals(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& sum = At(L, i->offsetTarget);
  const CValue& a = At(L, i->offsetA);
  const CValue& b = *Read<B>(i->b, i->offsetB, nullptr, L);
  if constexpr (IsArithmetic(Inner)) {
    if ((sum.type | a.type | b.type) == VT_FLOAT) {
      double value;
      if ((a.type | b.type) == VT_INTEGER) {
        int32_t result;
        OnIntegers<Inner>(a.data.integer, b.data.integer, result);
        value = result;
      } else {
        value = Arithmetic<Inner>(RealOf(a), RealOf(b));
      }
      PutReal(sum, Arithmetic<Outer>(RealOf(sum), value));
      VL_END_STATEMENT(i + 3);
    }
  }
  VL_GO(i + 1);
}

template <uint16_t Outer, uint16_t Inner, OperandKind B>
const Instruction* Accumulate(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& sum = At(L, i->offsetTarget);
  const CValue& a = At(L, i->offsetA);
  const CValue& b = *Read<B>(i->b, i->offsetB, nullptr, L);
  int32_t value;
  if ((sum.type | a.type | b.type) != VT_INTEGER || !OnIntegers<Inner>(a.data.integer, b.data.integer, value))
      [[unlikely]] {
    return AccumulateReals<Outer, Inner, B>(x, i, S, L);
  }
  OnIntegers<Outer>(sum.data.integer, value, sum.data.integer);
  VL_END_STATEMENT(i + 3);
}

#define VL_ACCUMULATE_B(Outer, Inner) \
  { Accumulate<Outer, Inner, kLocal>, Accumulate<Outer, Inner, kConstant> }
#define VL_ACCUMULATE(Outer)                                                                        \
  {                                                                                                 \
    VL_ACCUMULATE_B(Outer, TK_ADD), VL_ACCUMULATE_B(Outer, TK_SUB), VL_ACCUMULATE_B(Outer, TK_MUL), \
        VL_ACCUMULATE_B(Outer, TK_AND), VL_ACCUMULATE_B(Outer, TK_MOD)                              \
  }
constexpr Handler kAccumulate[3][5][2] = {VL_ACCUMULATE(TK_ADD), VL_ACCUMULATE(TK_SUB), VL_ACCUMULATE(TK_MUL)};

}  // namespace

Handler AccumulateOf(uint16_t outer, uint16_t inner, OperandKind b) {
  const int row = outer == TK_ADD ? 0 : outer == TK_SUB ? 1 : outer == TK_MUL ? 2 : -1;
  const int column = inner == TK_ADD   ? 0
                     : inner == TK_SUB ? 1
                     : inner == TK_MUL ? 2
                     : inner == TK_AND ? 3
                     : inner == TK_MOD ? 4
                                       : -1;
  if (row < 0 || column < 0 || (b != kLocal && b != kConstant)) return nullptr;
  return kAccumulate[row][column][b == kLocal ? 0 : 1];
}

}  // namespace vl::handlers
