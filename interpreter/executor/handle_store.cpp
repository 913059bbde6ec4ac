// Statements that assign a number to a name. `k` is the function's block that may get it as a new local.
#include "interpreter/executor/numbers.h"

namespace vl::handlers {

namespace {

// `target = b`: slot 1 keeps the value, slot 2 what the target was.
// The same for any value where no trace is needed.
VL_NOINLINE const Instruction* StoreAny(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const auto kind = static_cast<OperandKind>(i->n >> 3 & 3);
  CValue* value = &S[2];
  if (kind == kConstant) {
    value = const_cast<CValue*>(i->b.constant);
  } else if (kind != kSlot) {
    value = x.FindName(*i->b.name, L);
  }
  x.StandAt(S, 1, i->at);
  if (!value || (value->type >= VT_NEW_NAME && value->type <= VT_NEW_ELEMENT)) x.i.RaiseError(ERR_UNDEFINED);
  CValue* target = x.FindName(*i->a.name, L);
  if (!target) target = &x.MakeNamed(*i->a.name, i->k);
  if (kind == kSlot) {
    MoveValue(*target, *value);
  } else {
    target->Assign(*value);
  }
  if (i->n & 1) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

VL_NOINLINE const Instruction* StoreSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const auto b = static_cast<OperandKind>(i->n >> 3 & 3);
  CValue& local = At(L, i->offsetA);
  if (x.traces != kAllTraces && b == kSlot && i->a.name->declared && i->a.name->isLocal && local.type == VT_NEW_NAME &&
      (S[2].type < VT_NEW_NAME || S[2].type > VT_NEW_ELEMENT)) {
    // Behind Var: it is made here.
    local.type = VT_INTEGER;
    local.level = i->k;
    local.Assign(S[2]);
    S[1].SetNew(VT_NEW_NAME, i->a.name->token);
    CExecutor::SwapSlots(S[1], S[2]);
    if (i->n & 1) VL_END_STATEMENT(i + 1);
    VL_GO(i + 1);
  }
  x.LoadName(S[1], *i->a.name, L);
  if (b != kSlot) LoadOperand(x, S[2], b, i->b, L);
  x.StandAt(S, 1, i->at);
  x.Assign(S, 1, i->k, false);
  if (i->n & 1) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

// A local behind Var that doesn't exist: the statement makes it.
template <Traces T, OperandKind V>
inline bool IsMadeHere(const Operand& name, const CValue& target) {
  return T != kAllTraces && V == kLocal && target.type == VT_NEW_NAME && name.name->declared;
}

template <Traces T, OperandKind V, OperandKind B>
const Instruction* Store(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[1];
  CValue& right = S[2];
  CValue* target = Read<V>(i->a, i->offsetA, nullptr, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  if ((target->type > VT_FLOAT && !IsMadeHere<T, V>(i->a, *target)) || b->type > VT_FLOAT) [[unlikely]]
    return T != kNoTraces ? StoreSlow(x, i, S, L) : StoreAny(x, i, S, L);
  if (T != kNoTraces && (!left.IsPlain() || (B != kSlot && !right.IsPlain()))) [[unlikely]]
    return StoreSlow(x, i, S, L);
  if (T != kAllTraces && V == kLocal && target->type == VT_NEW_NAME) target->level = i->k;
  const ValueType type = b->type;
  const CValue::Data data = b->data;
  if constexpr (T == kAllTraces) {
    PutNumber(right, *target);
    left.type = type;
    left.data = data;
  }
  target->type = type;
  target->data = data;
  if (i->n & 1) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

// `target = a + b`: the slots 1 to 3 hold the value, the target's old one, and b.
// The same where no trace is needed.
VL_NOINLINE const Instruction* BinaryStoreAny(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const auto a = static_cast<OperandKind>(i->n >> 8 & 3);
  const auto b = static_cast<OperandKind>(i->n >> 10 & 3);
  if (!AppendToTarget(x, i, S, L, i->n & 0xFF, a, b)) {
    ReduceSlowly(x, i, S, L, 2, i->n & 0xFF, a, b);
    CValue* target = x.FindName(*i->target.name, L);
    if (!target) target = &x.MakeNamed(*i->target.name, i->k);
    MoveValue(*target, S[2]);
  }
  if (i->n & 0x4000) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

VL_NOINLINE const Instruction* BinaryStoreSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const uint16_t op = i->n & 0xFF;
  const auto a = static_cast<OperandKind>(i->n >> 8 & 3);
  const auto b = static_cast<OperandKind>(i->n >> 10 & 3);
  if (!AppendToTarget(x, i, S, L, op, a, b)) {
    x.LoadName(S[1], *i->target.name, L);
    ReduceSlowly(x, i, S, L, 2, op, a, b);
    x.StandAt(S, 1, i->at);
    x.Assign(S, 1, i->k, false);
  }
  if (i->n & 0x4000) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

// What isn't two integers, or makes its target.
template <Traces T, uint16_t Op, OperandKind V, OperandKind A, OperandKind B>
VL_NOINLINE const Instruction* BinaryStoreReals(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& first = S[1];
  CValue& left = S[2];
  CValue& right = S[3];
  CValue* target = Read<V>(i->target, i->offsetTarget, nullptr, L);
  const CValue* a = Read<A>(i->a, i->offsetA, &left, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  const int types = a->type | b->type;
  if (types > VT_FLOAT || (target->type > VT_FLOAT && !IsMadeHere<T, V>(i->target, *target)) ||
      (T != kNoTraces && (!first.IsPlain() || !AreFree<T, A, B>(left, right)))) [[unlikely]] {
    return T != kNoTraces ? BinaryStoreSlow(x, i, S, L) : BinaryStoreAny(x, i, S, L);
  }
  if (T != kAllTraces && V == kLocal && target->type == VT_NEW_NAME) target->level = i->k;
  if (types == VT_INTEGER) {
    if (T == kAllTraces) return BinaryStoreSlow(x, i, S, L);
    int32_t sum;
    OnIntegers<Op>(a->data.integer, b->data.integer, sum);
    PutInteger(*target, sum);
    if (i->n & 0x4000) VL_END_STATEMENT(i + 1);
    VL_GO(i + 1);
  }
  const double result = Arithmetic<Op>(RealOf(*a), RealOf(*b));
  if constexpr (T == kAllTraces) {
    if (B != kSlot) PutNumber(right, *b);
    PutNumber(left, *target);
    PutReal(first, result);
  }
  PutReal(*target, result);
  if (i->n & 0x4000) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

template <Traces T, uint16_t Op, OperandKind V, OperandKind A, OperandKind B>
const Instruction* BinaryStore(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& first = S[1];
  CValue& left = S[2];
  CValue& right = S[3];
  CValue* target = Read<V>(i->target, i->offsetTarget, nullptr, L);
  const CValue* a = Read<A>(i->a, i->offsetA, &left, L);
  const CValue* b = Read<B>(i->b, i->offsetB, &right, L);
  if ((a->type | b->type) != VT_INTEGER || target->type > VT_FLOAT ||
      (T != kNoTraces && (!first.IsPlain() || !AreFree<T, A, B>(left, right)))) [[unlikely]] {
    return BinaryStoreReals<T, Op, V, A, B>(x, i, S, L);
  }
  const int32_t v = b->data.integer;
  int32_t result;
  OnIntegers<Op>(a->data.integer, v, result);
  if constexpr (T == kAllTraces) {
    if (B != kSlot) PutInteger(right, v);
    PutNumber(left, *target);
    PutInteger(first, result);
  }
  PutInteger(*target, result);
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

template <Traces T, uint16_t Op, OperandKind A>
const Instruction* Step(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[1];
  CValue& right = S[2];
  CValue* a = Read<A>(i->a, i->offsetA, nullptr, L);
  if (a->type != VT_INTEGER || (T != kNoTraces && (!left.IsPlain() || !right.IsPlain()))) [[unlikely]]
    return StepSlow(x, i, S, L);
  const int32_t old = a->data.integer;
  if constexpr (T == kAllTraces) {
    PutInteger(left, old);
    right.type = VT_DEFAULT;
    right.data.integer = kDefaultInt;
  }
  a->data.integer = static_cast<int32_t>(static_cast<uint32_t>(old) + (Op == TK_INCREMENT ? 1u : ~0u));
  if (i->n & 1) VL_END_STATEMENT(i + 1);
  VL_GO(i + 1);
}

#define VL_STORE(T, V) \
  { Store<T, V, kLocal>, Store<T, V, kName>, Store<T, V, kConstant>, Store<T, V, kSlot> }
template <Traces T>
constexpr Handler kStore[2][4] = {VL_STORE(T, kLocal), VL_STORE(T, kName)};

#define VL_BS_B(T, Op, V, A)                                                                                \
  {                                                                                                         \
    BinaryStore<T, Op, V, A, kLocal>, BinaryStore<T, Op, V, A, kName>, BinaryStore<T, Op, V, A, kConstant>, \
        BinaryStore<T, Op, V, A, kSlot>                                                                     \
  }
#define VL_BS_A(T, Op, V) \
  { VL_BS_B(T, Op, V, kLocal), VL_BS_B(T, Op, V, kName), VL_BS_B(T, Op, V, kSlot) }
#define VL_BS(T, Op) \
  { VL_BS_A(T, Op, kLocal), VL_BS_A(T, Op, kName) }
template <Traces T>
constexpr Handler kBinaryStore[][2][3][4] = {VL_BS(T, TK_ADD), VL_BS(T, TK_SUB), VL_BS(T, TK_MUL)};

template <Traces T>
constexpr Handler kStep[2][2] = {{Step<T, TK_INCREMENT, kLocal>, Step<T, TK_INCREMENT, kName>},
                                 {Step<T, TK_DECREMENT, kLocal>, Step<T, TK_DECREMENT, kName>}};

}  // namespace

Handler StoreOf(Traces traces, OperandKind target, OperandKind b) {
  return (traces == kNoTraces       ? kStore<kNoTraces>
          : traces == kObjectTraces ? kStore<kObjectTraces>
                                    : kStore<kAllTraces>)[target][b];
}
Handler BinaryStoreOf(Traces traces, uint16_t op, OperandKind target, OperandKind a, OperandKind b) {
  const int row = op == TK_ADD ? 0 : op == TK_SUB ? 1 : 2;
  return (traces == kNoTraces       ? kBinaryStore<kNoTraces>
          : traces == kObjectTraces ? kBinaryStore<kObjectTraces>
                                    : kBinaryStore<kAllTraces>)[row][target][IndexOfA(a)][b];
}
Handler StepOf(Traces traces, uint16_t op, OperandKind a) {
  return (traces == kNoTraces       ? kStep<kNoTraces>
          : traces == kObjectTraces ? kStep<kObjectTraces>
                                    : kStep<kAllTraces>)[op == TK_INCREMENT ? 0 : 1][a];
}

}  // namespace vl::handlers
