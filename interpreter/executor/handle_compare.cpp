// Comparisons that jump: conditions, and the ends of loops.
#include "interpreter/executor/numbers.h"

namespace vl::handlers {

namespace {

bool DecideSlowly(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const auto a = static_cast<OperandKind>(i->n >> 8 & 3);
  const auto b = static_cast<OperandKind>(i->n >> 10 & 3);
  bool holds;
  if (DecideTexts(x, i, S, L, i->n & 0xFF, a, b, holds)) return holds;
  ReduceSlowly(x, i, S, L, 1, i->n & 0xFF, a, b);
  return S[1].GetInt() != 0;
}

VL_NOINLINE const Instruction* CompareUnlessSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const bool holds = DecideSlowly(x, i, S, L);
  VL_END_STATEMENT(holds ? i + 1 : i->target.target);
}

VL_NOINLINE const Instruction* CompareLoopSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  if (!DecideSlowly(x, i, S, L)) VL_GO(i + 1);
  VL_END_STATEMENT(i->target.target);
}

// What isn't two integers: two numbers with their traces in the slots, or more. Apart, so that the common way needs few
// registers.
template <Traces T, uint16_t Op, OperandKind A, OperandKind B>
VL_ALWAYS_INLINE bool DecideReals(const Instruction* i, CValue* S, CValue* L, bool& holds) {
  CValue& left = S[1];
  CValue& right = S[2];
  const CValue* a = Read<A>(i->a, i->offsetA, &left, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  if ((a->type | b->type) != VT_FLOAT || (T != kNoTraces && !AreFree<T, A, B>(left, right))) return false;
  holds = Holds<Op>(RealOf(*a), RealOf(*b));
  if (T == kAllTraces && B != kSlot) PutNumber(right, *b);
  if (T == kAllTraces) PutInteger(left, holds);
  return true;
}

template <Traces T, uint16_t Op, OperandKind A, OperandKind B>
VL_NOINLINE const Instruction* CompareUnlessReals(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  bool holds;
  if (!DecideReals<T, Op, A, B>(i, S, L, holds)) return CompareUnlessSlow(x, i, S, L);
  if (holds) VL_END_STATEMENT(i + 1);
  VL_END_STATEMENT(i->target.target);
}

template <Traces T, uint16_t Op, OperandKind A, OperandKind B>
VL_NOINLINE const Instruction* CompareLoopReals(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  bool holds;
  if (!DecideReals<T, Op, A, B>(i, S, L, holds)) return CompareLoopSlow(x, i, S, L);
  if (!holds) VL_GO(i + 1);
  VL_END_STATEMENT(i->target.target);
}

// The comparison of two integers with its traces. False when it takes more than that.
template <Traces T, uint16_t Op, OperandKind A, OperandKind B>
VL_ALWAYS_INLINE bool Decide(const Instruction* i, CValue* S, CValue* L, bool& holds) {
  CValue& left = S[1];
  CValue& right = S[2];
  const CValue* a = Read<A>(i->a, i->offsetA, &left, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  if ((a->type | b->type) != VT_INTEGER || (T != kNoTraces && !AreFree<T, A, B>(left, right))) return false;
  holds = Holds<Op>(a->data.integer, b->data.integer);
  if (T == kAllTraces && B != kSlot) PutInteger(right, b->data.integer);
  if (T == kAllTraces) PutInteger(left, holds);
  return true;
}

template <Traces T, uint16_t Op, OperandKind A, OperandKind B>
const Instruction* CompareUnless(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  bool holds;
  if (!Decide<T, Op, A, B>(i, S, L, holds)) [[unlikely]]
    return CompareUnlessReals<T, Op, A, B>(x, i, S, L);
  if (holds) VL_END_STATEMENT(i + 1);
  VL_END_STATEMENT(i->target.target);
}

template <Traces T, uint16_t Op, OperandKind A, OperandKind B>
const Instruction* CompareLoop(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  bool holds;
  if (!Decide<T, Op, A, B>(i, S, L, holds)) [[unlikely]]
    return CompareLoopReals<T, Op, A, B>(x, i, S, L);
  if (!holds) VL_GO(i + 1);
  VL_END_STATEMENT(i->target.target);
}

template <Traces T, uint16_t Op, OperandKind A, OperandKind B>
const Instruction* CountLoop(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[1];
  CValue& right = S[2];
  CValue* a = Read<A>(i->a, i->offsetA, &left, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  if ((a->type | b->type) != VT_INTEGER || (T != kNoTraces && !AreFree<T, A, B>(left, right))) [[unlikely]]
    VL_GO(i + 1);
  const auto counter = static_cast<int32_t>(static_cast<uint32_t>(a->data.integer) + 1u);
  a->data.integer = counter;
  const int32_t limit = b->data.integer;
  const bool holds = Holds<Op>(counter, limit);
  if constexpr (T == kAllTraces) {
    PutInteger(left, holds);
    PutInteger(right, limit);
  }
  if (!holds) VL_GO(i + 3);
  VL_END_STATEMENT(i->target.target);
}

template <Traces T>
constexpr Handler kUnless[][3][4] = {
    VL_OF_AB(CompareUnless, T, TK_GREATER_EQUAL), VL_OF_AB(CompareUnless, T, TK_LESS_EQUAL),
    VL_OF_AB(CompareUnless, T, TK_EQUAL),         VL_OF_AB(CompareUnless, T, TK_LESS),
    VL_OF_AB(CompareUnless, T, TK_GREATER),       VL_OF_AB(CompareUnless, T, TK_NOT_EQUAL)};
template <Traces T>
constexpr Handler kLoop[][3][4] = {VL_OF_AB(CompareLoop, T, TK_GREATER_EQUAL), VL_OF_AB(CompareLoop, T, TK_LESS_EQUAL),
                                   VL_OF_AB(CompareLoop, T, TK_EQUAL),         VL_OF_AB(CompareLoop, T, TK_LESS),
                                   VL_OF_AB(CompareLoop, T, TK_GREATER),       VL_OF_AB(CompareLoop, T, TK_NOT_EQUAL)};
template <Traces T>
constexpr Handler kCount[][3][4] = {VL_OF_AB(CountLoop, T, TK_GREATER_EQUAL), VL_OF_AB(CountLoop, T, TK_LESS_EQUAL),
                                    VL_OF_AB(CountLoop, T, TK_EQUAL),         VL_OF_AB(CountLoop, T, TK_LESS),
                                    VL_OF_AB(CountLoop, T, TK_GREATER),       VL_OF_AB(CountLoop, T, TK_NOT_EQUAL)};

}  // namespace

Handler CompareUnlessOf(Traces traces, uint16_t op, OperandKind a, OperandKind b) {
  return (traces == kNoTraces       ? kUnless<kNoTraces>
          : traces == kObjectTraces ? kUnless<kObjectTraces>
                                    : kUnless<kAllTraces>)[op - TK_GREATER_EQUAL][IndexOfA(a)][b];
}
Handler CompareLoopOf(Traces traces, uint16_t op, OperandKind a, OperandKind b) {
  return (traces == kNoTraces       ? kLoop<kNoTraces>
          : traces == kObjectTraces ? kLoop<kObjectTraces>
                                    : kLoop<kAllTraces>)[op - TK_GREATER_EQUAL][IndexOfA(a)][b];
}
Handler CountLoopOf(Traces traces, uint16_t op, OperandKind a, OperandKind b) {
  return (traces == kNoTraces       ? kCount<kNoTraces>
          : traces == kObjectTraces ? kCount<kObjectTraces>
                                    : kCount<kAllTraces>)[op - TK_GREATER_EQUAL][IndexOfA(a)][b];
}

}  // namespace vl::handlers
