// Handlers of the operators on numbers, of comparisons that jump, and of assignments to names. Whatever isn't plain
// numbers goes the long way: the operands are put into their slots, and the walker's own operator runs on them.
#include "interpreter/executor/dispatch.h"

namespace vl::handlers {

namespace {

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

// Whether the slots of an operator may be written: they own nothing, or hold the operands themselves.
template <OperandKind A, OperandKind B>
inline bool AreFree(const CValue& left, const CValue& right) {
  return (A == kSlot || left.IsPlain()) && (B == kSlot || right.IsPlain());
}

// Puts the operands into their slots and runs the walker's operator.
void ReduceSlowly(CExecutor& x, const Instruction* i, CValue* S, CValue* L, uint32_t k, uint16_t op, OperandKind a,
                  OperandKind b) {
  if (a != kSlot) LoadOperand(x, S[k], a, i->a, L);
  if (b != kSlot) LoadOperand(x, S[k + 1], b, i->b, L);
  x.StandAt(S, k, i->at);
  x.i.Reduce(op);
}

VL_NOINLINE const Instruction* BinarySlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  ReduceSlowly(x, i, S, L, i->k, i->n & 0xFF, static_cast<OperandKind>(i->n >> 8 & 3),
               static_cast<OperandKind>(i->n >> 10 & 3));
  VL_GO(i + 1);
}

template <uint16_t Op, OperandKind A, OperandKind B>
const Instruction* Binary(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[i->k];
  CValue& right = S[i->k + 1];
  const CValue* a = Read<A>(i->a, i->offsetA, &left, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  const int types = a->type | b->type;
  if (types == VT_INTEGER) {
    int32_t result;
    if (AreFree<A, B>(left, right) && OnIntegers<Op>(a->data.integer, b->data.integer, result)) [[likely]] {
      if (B != kSlot) PutInteger(right, b->data.integer);
      PutInteger(left, result);
      VL_GO(i + 1);
    }
  } else if (types == VT_FLOAT && AreFree<A, B>(left, right)) {
    if constexpr (IsArithmetic(Op) || IsComparison(Op)) {
      const double u = RealOf(*a);
      const double v = RealOf(*b);
      if (B != kSlot) PutNumber(right, *b);
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
        if (B != kSlot) PutNumber(right, *b);
        PutReal(left, u / v);
        VL_GO(i + 1);
      }
    }
  }
  return BinarySlow(x, i, S, L);
}

bool DecideSlowly(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  ReduceSlowly(x, i, S, L, 1, i->n & 0xFF, static_cast<OperandKind>(i->n >> 8 & 3),
               static_cast<OperandKind>(i->n >> 10 & 3));
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

// The comparison of two numbers with its traces in the slots. False when it takes more than that.
template <uint16_t Op, OperandKind A, OperandKind B>
VL_ALWAYS_INLINE bool Decide(const Instruction* i, CValue* S, CValue* L, bool& holds) {
  CValue& left = S[1];
  CValue& right = S[2];
  const CValue* a = Read<A>(i->a, i->offsetA, &left, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  const int types = a->type | b->type;
  if (types > VT_FLOAT || !AreFree<A, B>(left, right)) return false;
  if (types == VT_INTEGER) {
    holds = Holds<Op>(a->data.integer, b->data.integer);
    if (B != kSlot) PutInteger(right, b->data.integer);
  } else {
    holds = Holds<Op>(RealOf(*a), RealOf(*b));
    if (B != kSlot) PutNumber(right, *b);
  }
  PutInteger(left, holds);
  return true;
}

template <uint16_t Op, OperandKind A, OperandKind B>
const Instruction* CompareUnless(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  bool holds;
  if (!Decide<Op, A, B>(i, S, L, holds)) [[unlikely]]
    return CompareUnlessSlow(x, i, S, L);
  if (holds) VL_END_STATEMENT(i + 1);
  VL_END_STATEMENT(i->target.target);
}

template <uint16_t Op, OperandKind A, OperandKind B>
const Instruction* CompareLoop(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  bool holds;
  if (!Decide<Op, A, B>(i, S, L, holds)) [[unlikely]]
    return CompareLoopSlow(x, i, S, L);
  if (!holds) VL_GO(i + 1);
  VL_END_STATEMENT(i->target.target);
}

template <uint16_t Op, OperandKind A, OperandKind B>
const Instruction* CountLoop(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[1];
  CValue& right = S[2];
  CValue* a = Read<A>(i->a, i->offsetA, &left, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  if ((a->type | b->type) != VT_INTEGER || !AreFree<A, B>(left, right)) [[unlikely]]
    VL_GO(i + 1);
  const auto counter = static_cast<int32_t>(static_cast<uint32_t>(a->data.integer) + 1u);
  a->data.integer = counter;
  const int32_t limit = b->data.integer;
  const bool holds = Holds<Op>(counter, limit);
  PutInteger(left, holds);
  PutInteger(right, limit);
  if (!holds) VL_GO(i + 3);
  VL_END_STATEMENT(i->target.target);
}

// `target = b`: slot 1 keeps the value, slot 2 what the target was.
VL_NOINLINE const Instruction* StoreSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const auto b = static_cast<OperandKind>(i->n >> 3 & 3);
  x.LoadName(S[1], *i->a.name, L);
  if (b != kSlot) LoadOperand(x, S[2], b, i->b, L);
  x.StandAt(S, 1, i->at);
  x.Assign(S, 1);
  if (i->n & 1) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

template <OperandKind T, OperandKind B>
const Instruction* Store(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[1];
  CValue& right = S[2];
  CValue* target = Read<T>(i->a, i->offsetA, nullptr, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  if (target->type > VT_FLOAT || b->type > VT_FLOAT || !left.IsPlain() || (B != kSlot && !right.IsPlain())) [[unlikely]]
    return StoreSlow(x, i, S, L);
  const ValueType type = b->type;
  const CValue::Data data = b->data;
  PutNumber(right, *target);
  target->type = left.type = type;
  target->data = left.data = data;
  if (i->n & 1) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

// `target = a + b`: the slots 1 to 3 hold the value, the target's old one, and b.
VL_NOINLINE const Instruction* BinaryStoreSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const uint16_t op = i->n & 0xFF;
  x.LoadName(S[1], *i->target.name, L);
  ReduceSlowly(x, i, S, L, 2, op, static_cast<OperandKind>(i->n >> 8 & 3), static_cast<OperandKind>(i->n >> 10 & 3));
  x.StandAt(S, 1, i->at);
  x.Assign(S, 1);
  if (i->n & 0x4000) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

template <uint16_t Op, OperandKind T, OperandKind A, OperandKind B>
const Instruction* BinaryStore(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& first = S[1];
  CValue& left = S[2];
  CValue& right = S[3];
  CValue* target = Read<T>(i->target, i->offsetTarget, nullptr, L);
  const CValue* a = Read<A>(i->a, i->offsetA, &left, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  const int types = a->type | b->type;
  if (types > VT_FLOAT || target->type > VT_FLOAT || !first.IsPlain() || !AreFree<A, B>(left, right)) [[unlikely]]
    return BinaryStoreSlow(x, i, S, L);
  if (types == VT_INTEGER) {
    const int32_t v = b->data.integer;
    int32_t result;
    OnIntegers<Op>(a->data.integer, v, result);
    if (B != kSlot) PutInteger(right, v);
    PutNumber(left, *target);
    PutInteger(*target, result);
    PutInteger(first, result);
  } else {
    const double result = Arithmetic<Op>(RealOf(*a), RealOf(*b));
    if (B != kSlot) PutNumber(right, *b);
    PutNumber(left, *target);
    PutReal(*target, result);
    PutReal(first, result);
  }
  if (i->n & 0x4000) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

VL_NOINLINE const Instruction* StepSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.LoadName(S[1], *i->a.name, L);
  S[2].SetDefault();
  S[2].lvalue = nullptr;
  x.StandAt(S, 1, i->at);
  x.i.Reduce(i->n >> 1);
  if (i->n & 1) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

template <uint16_t Op, OperandKind A>
const Instruction* Step(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[1];
  CValue& right = S[2];
  CValue* a = Read<A>(i->a, i->offsetA, nullptr, L);
  if (a->type != VT_INTEGER || !left.IsPlain() || !right.IsPlain()) [[unlikely]]
    return StepSlow(x, i, S, L);
  const int32_t old = a->data.integer;
  PutInteger(left, old);
  right.type = VT_DEFAULT;
  right.data.integer = kDefaultInt;
  a->data.integer = static_cast<int32_t>(static_cast<uint32_t>(old) + (Op == TK_INCREMENT ? 1u : ~0u));
  if (i->n & 1) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

// The tables: one row an operator, by the kinds of the operands.
int IndexOfA(OperandKind a) { return a == kSlot ? 2 : a; }

#define VL_OF_B(F, Op, A) \
  { F<Op, A, kLocal>, F<Op, A, kName>, F<Op, A, kConstant>, F<Op, A, kSlot> }
#define VL_OF_AB(F, Op) \
  { VL_OF_B(F, Op, kLocal), VL_OF_B(F, Op, kName), VL_OF_B(F, Op, kSlot) }

constexpr uint16_t kFirstBinary = TK_LOGICAL_AND;
constexpr Handler kBinary[][3][4] = {VL_OF_AB(Binary, TK_LOGICAL_AND),   VL_OF_AB(Binary, TK_LOGICAL_OR),
                                     VL_OF_AB(Binary, TK_GREATER_EQUAL), VL_OF_AB(Binary, TK_LESS_EQUAL),
                                     VL_OF_AB(Binary, TK_EQUAL),         VL_OF_AB(Binary, TK_LESS),
                                     VL_OF_AB(Binary, TK_GREATER),       VL_OF_AB(Binary, TK_NOT_EQUAL)};
constexpr Handler kArithmetic[][3][4] = {VL_OF_AB(Binary, TK_ADD), VL_OF_AB(Binary, TK_SUB), VL_OF_AB(Binary, TK_DIV),
                                         VL_OF_AB(Binary, TK_MUL), VL_OF_AB(Binary, TK_AND), VL_OF_AB(Binary, TK_OR),
                                         VL_OF_AB(Binary, TK_XOR), VL_OF_AB(Binary, TK_MOD), VL_OF_AB(Binary, TK_SHL),
                                         VL_OF_AB(Binary, TK_SHR)};
constexpr Handler kCompareUnless[][3][4] = {
    VL_OF_AB(CompareUnless, TK_GREATER_EQUAL), VL_OF_AB(CompareUnless, TK_LESS_EQUAL),
    VL_OF_AB(CompareUnless, TK_EQUAL),         VL_OF_AB(CompareUnless, TK_LESS),
    VL_OF_AB(CompareUnless, TK_GREATER),       VL_OF_AB(CompareUnless, TK_NOT_EQUAL)};
constexpr Handler kCompareLoop[][3][4] = {VL_OF_AB(CompareLoop, TK_GREATER_EQUAL), VL_OF_AB(CompareLoop, TK_LESS_EQUAL),
                                          VL_OF_AB(CompareLoop, TK_EQUAL),         VL_OF_AB(CompareLoop, TK_LESS),
                                          VL_OF_AB(CompareLoop, TK_GREATER),       VL_OF_AB(CompareLoop, TK_NOT_EQUAL)};
constexpr Handler kCountLoop[][3][4] = {VL_OF_AB(CountLoop, TK_GREATER_EQUAL), VL_OF_AB(CountLoop, TK_LESS_EQUAL),
                                        VL_OF_AB(CountLoop, TK_EQUAL),         VL_OF_AB(CountLoop, TK_LESS),
                                        VL_OF_AB(CountLoop, TK_GREATER),       VL_OF_AB(CountLoop, TK_NOT_EQUAL)};

#define VL_STORE(T) \
  { Store<T, kLocal>, Store<T, kName>, Store<T, kConstant>, Store<T, kSlot> }
constexpr Handler kStore[2][4] = {VL_STORE(kLocal), VL_STORE(kName)};

#define VL_BS_B(Op, T, A)                                                                          \
  {                                                                                                \
    BinaryStore<Op, T, A, kLocal>, BinaryStore<Op, T, A, kName>, BinaryStore<Op, T, A, kConstant>, \
        BinaryStore<Op, T, A, kSlot>                                                               \
  }
#define VL_BS_A(Op, T) \
  { VL_BS_B(Op, T, kLocal), VL_BS_B(Op, T, kName), VL_BS_B(Op, T, kSlot) }
#define VL_BS(Op) \
  { VL_BS_A(Op, kLocal), VL_BS_A(Op, kName) }
constexpr Handler kBinaryStore[][2][3][4] = {VL_BS(TK_ADD), VL_BS(TK_SUB), VL_BS(TK_MUL)};

constexpr Handler kStep[2][2] = {{Step<TK_INCREMENT, kLocal>, Step<TK_INCREMENT, kName>},
                                 {Step<TK_DECREMENT, kLocal>, Step<TK_DECREMENT, kName>}};

}  // namespace

Handler BinaryOf(uint16_t op, OperandKind a, OperandKind b) {
  if (op >= TK_ADD) return kArithmetic[op - TK_ADD][IndexOfA(a)][b];
  return kBinary[op - kFirstBinary][IndexOfA(a)][b];
}
Handler CompareUnlessOf(uint16_t op, OperandKind a, OperandKind b) {
  return kCompareUnless[op - TK_GREATER_EQUAL][IndexOfA(a)][b];
}
Handler CompareLoopOf(uint16_t op, OperandKind a, OperandKind b) {
  return kCompareLoop[op - TK_GREATER_EQUAL][IndexOfA(a)][b];
}
Handler CountLoopOf(uint16_t op, OperandKind a, OperandKind b) {
  return kCountLoop[op - TK_GREATER_EQUAL][IndexOfA(a)][b];
}
Handler StoreOf(OperandKind target, OperandKind b) { return kStore[target][b]; }
Handler BinaryStoreOf(uint16_t op, OperandKind target, OperandKind a, OperandKind b) {
  const int row = op == TK_ADD ? 0 : op == TK_SUB ? 1 : 2;
  return kBinaryStore[row][target][IndexOfA(a)][b];
}
Handler StepOf(uint16_t op, OperandKind a) { return kStep[op == TK_INCREMENT ? 0 : 1][a]; }

}  // namespace vl::handlers
