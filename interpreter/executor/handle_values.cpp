// Handlers that put values into slots, assign them, and reach the elements of arrays.
#include "interpreter/executor/numbers.h"

namespace vl::handlers {

void LoadOperand(CExecutor& x, CValue& slot, OperandKind kind, const Operand& operand, CValue* L) {
  if (kind == kConstant) {
    slot.Assign(*operand.constant);
    slot.lvalue = nullptr;
  } else {
    x.LoadName(slot, *operand.name, L);
  }
}

namespace {

VL_NOINLINE const Instruction* LoadLocalSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.LoadName(S[i->k], *i->a.name, L);
  VL_GO(i + 1);
}

}  // namespace

const Instruction* LoadLocal(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  CValue& local = At(L, i->offsetA);
  if ((local.type | slot.type) > VT_FLOAT) [[unlikely]]
    return LoadLocalSlow(x, i, S, L);
  PutNumber(slot, local);
  slot.lvalue = &local;
  VL_GO(i + 1);
}

const Instruction* LoadNamed(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.LoadName(S[i->k], *i->a.name, L);
  VL_GO(i + 1);
}

const Instruction* LoadConstant(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  slot.Assign(*i->a.constant);
  slot.lvalue = nullptr;
  VL_GO(i + 1);
}

const Instruction* LoadDefault(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  slot.SetDefault();
  slot.lvalue = nullptr;
  VL_GO(i + 1);
}

const Instruction* ForgetTarget(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  S[i->k].ForgetTarget();
  VL_GO(i + 1);
}

const Instruction* Unary(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  x.StandAt(S, i->k, i->at);
  if (i->n == TK_NOT) {
    ValueNot(slot);
  } else if (i->n == TK_COMPLEMENT) {
    ValueComplement(slot);
  } else {
    ValueNegate(slot);
  }
  VL_GO(i + 1);
}

// The value of a parenthesis moves down to its slot; what was there moves up.
const Instruction* SwapDown(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  CValue& inner = S[i->k + 1];
  if (slot.type <= VT_FLOAT && inner.type <= VT_FLOAT) [[likely]] {
    const ValueType type = slot.type;
    const CValue::Data data = slot.data;
    PutNumber(slot, inner);
    slot.lvalue = inner.lvalue;
    inner.type = type;
    inner.data = data;
    inner.lvalue = nullptr;
    VL_GO(i + 1);
  }
  slot.ForgetTarget();
  CExecutor::SwapSlots(slot, inner);
  VL_GO(i + 1);
}

namespace {

// A number to a number's place: the common assignment.
inline bool AssignNumber(CValue& left, CValue& right) {
  if (left.type > VT_FLOAT || right.type > VT_FLOAT || !left.lvalue || left.lvalue->type > VT_FLOAT) return false;
  left.lvalue->type = right.type;
  left.lvalue->data = right.data;
  std::swap(left.type, right.type);
  std::swap(left.data, right.data);
  std::swap(left.lvalue, right.lvalue);
  return true;
}

inline bool IsLateArray(const CValue& left) { return left.type == VT_NEW_ARRAY || left.type == VT_NEW_MEMBER_ARRAY; }

void AssignSlowly(CExecutor& x, const Instruction* i, CValue* S, bool keepsPlace) {
  x.StandAt(S, i->k, i->at);
  x.Assign(S, i->k, static_cast<uint16_t>(i->offsetA), keepsPlace);
}

}  // namespace

const Instruction* Assign(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[i->k];
  if (IsLateArray(left) && i->target.target) VL_GO(i->target.target);
  if (!AssignNumber(left, S[i->k + 1])) AssignSlowly(x, i, S, true);
  VL_GO(i + 1);
}

namespace {

VL_NOINLINE const Instruction* AssignStatementSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  AssignSlowly(x, i, S, false);
  VL_END_STATEMENT(i + 1);
}

}  // namespace

// The values change places; behind a statement nobody asks for the slots' variables.
const Instruction* AssignStatement(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[i->k];
  CValue& right = S[i->k + 1];
  CValue* const target = left.lvalue;
  if ((left.type | right.type) > VT_FLOAT || !target || target->type > VT_FLOAT) [[unlikely]]
    return AssignStatementSlow(x, i, S, L);
  const ValueType type = right.type;
  const CValue::Data data = right.data;
  target->type = type;
  target->data = data;
  right.type = left.type;
  right.data = left.data;
  left.type = type;
  left.data = data;
  VL_END_STATEMENT(i + 1);
}

namespace {

VL_NOINLINE const Instruction* AssignAwaySlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& right = S[i->k + 1];
  const auto kind = static_cast<OperandKind>(i->n);
  if (kind != kSlot) LoadOperand(x, right, kind, i->b, L);
  if (IsLateArray(S[i->k]) && i->target.target) VL_GO(i->target.target);
  AssignSlowly(x, i, S, false);
  VL_END_STATEMENT(i + 1);
}

// A number to an element that is known by its array and index.
template <OperandKind B>
const Instruction* AssignElement(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue& left = S[i->k];
  const CValue& right = *Read<B>(i->b, i->offsetB, &S[i->k + 1], L);
  if (left.type != VT_NEW_ELEMENT || !S[i->k + 1].IsPlain() || right.type > VT_FLOAT || left.lvalue->type != VT_ARRAY ||
      !left.lvalue->data.array->WriteNumber(left.data.token, right)) {
    return AssignAwaySlow(x, i, S, L);
  }
  VL_END_STATEMENT(i + 1);
}

template <OperandKind B>
const Instruction* AssignAway(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue& left = S[i->k];
  const CValue& above = S[i->k + 1];
  const CValue& right = *Read<B>(i->b, i->offsetB, &S[i->k + 1], L);
  CValue* const target = left.lvalue;
  if ((above.type | left.type | right.type) > VT_FLOAT || !target || target->type > VT_FLOAT) [[unlikely]]
    return AssignElement<B>(x, i, S, L);
  PutNumber(*target, right);
  VL_END_STATEMENT(i + 1);
}

}  // namespace

Handler AssignAwayOf(OperandKind b) {
  static constexpr Handler kTable[] = {AssignAway<kLocal>, AssignAway<kName>, AssignAway<kConstant>, AssignAway<kSlot>};
  return kTable[b];
}

namespace {

// A compound assignment, `++` or `--` on an element that is known by its array and index.
VL_NOINLINE void ReduceElement(CExecutor& x, uint16_t op, CValue& left) {
  CArrayStore& store = *left.lvalue->data.array;
  const uint32_t index = left.data.token;
  x.scratch.Release();
  if (!store.ReadNumber(index, x.scratch)) x.i.RaiseError(ERR_INTERNAL);
  PutNumber(left, x.scratch);
  left.lvalue = &x.scratch;
  x.i.Reduce(op);
  store.Store(index, x.scratch);
  left.lvalue = nullptr;
}

}  // namespace

const Instruction* ReduceAny(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[i->k];
  x.StandAt(S, i->k, i->at);
  if (left.type == VT_NEW_ELEMENT && left.level) {
    ReduceElement(x, i->n, left);
  } else {
    x.i.Reduce(i->n);
  }
  VL_GO(i + 1);
}

// `?`: the first branch's value waits among the locals while the second is evaluated.
const Instruction* KeepFirst(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.StandAt(S, i->k, i->at);
  At(L, i->offsetA).Assign(S[i->k + 1]);
  VL_GO(i + 1);
}

const Instruction* Select(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[i->k];
  CValue& first = At(L, i->offsetA);
  x.StandAt(S, i->k, i->at);
  if (left.GetInt() != 0) {
    left.Assign(first);
  } else {
    left.Assign(S[i->k + 1]);
  }
  first.Release();
  first.type = VT_NEW_NAME;
  VL_GO(i + 1);
}

const Instruction* KeepSwitch(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.StandAt(S, 0, i->at);
  At(L, i->offsetA).Assign(S[1]);
  VL_GO(i + 1);
}

const Instruction* JumpUnlessCase(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.StandAt(S, 0, i->at);
  if (ValueIsEqual(At(L, i->offsetA), S[1])) VL_GO(i + 1);
  VL_GO(i->target.target);
}

const Instruction* DropKept(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& kept = At(L, i->offsetA);
  kept.Release();
  kept.type = VT_NEW_NAME;
  VL_GO(i + 1);
}

const Instruction* SourceOf(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  if (CValue* variable = x.FindName(*i->a.name, L)) {
    x.source = variable;
    VL_GO(i + 1);
  }
  S[i->k].SetNew(VT_NEW_NAME, i->a.name->token);
  VL_GO(i->target.target);
}

}  // namespace vl::handlers
