// Handlers of statements and jumps.
#include "interpreter/executor/numbers.h"

namespace vl::handlers {

const Instruction* Housekeeping(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.Housekeep(S);
  if (x.IsSliceOver()) {
    x.resume = i;
    return nullptr;
  }
  VL_GO(i);
}

const Instruction* OpenScope(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  ++x.i.scopeDepth;
  VL_GO(i + 1);
}

// Closes `n` blocks; `b` is the level of the outermost among the function's, `a` what it may have made.
const Instruction* CloseScope(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.i.scopeDepth -= i->n;
  if (x.code->kind == CodeKind::Global) {
    x.i.variables.RemoveFromLevel(x.i.scopeDepth + 1, x.i.variablePool);
  } else {
    const auto& offsets = *static_cast<const std::vector<int64_t>*>(i->a.pointer);
    if (!offsets.empty()) x.CloseScope(offsets, static_cast<uint16_t>(i->b.number));
  }
  VL_GO(i + 1);
}

const Instruction* EndStatement(CExecutor& x, const Instruction* i, CValue* S, CValue* L) { VL_END_STATEMENT(i + 1); }

const Instruction* Jump(CExecutor& x, const Instruction* i, CValue* S, CValue* L) { VL_GO(i->target.target); }

const Instruction* JumpStatement(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  VL_END_STATEMENT(i->target.target);
}

const Instruction* JumpUnless(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue& value = S[1];
  if (value.type != VT_INTEGER) x.StandAt(S, 0, i->at);
  if (value.GetInt() != 0) VL_END_STATEMENT(i + 1);
  VL_END_STATEMENT(i->target.target);
}

const Instruction* LoopIf(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue& value = S[1];
  if (value.type != VT_INTEGER) x.StandAt(S, 0, i->at);
  if (value.GetInt() == 0) VL_GO(i + 1);
  VL_END_STATEMENT(i->target.target);
}

namespace {

// The value of a call; an event function's goes nowhere.
void TakeResult(CExecutor& x, const Instruction* i, CValue* S, CValue& value) {
  if (value.type >= VT_NEW_NAME && value.type <= VT_NEW_ELEMENT) {
    x.StandAt(S, 0, i->at);
    x.i.RaiseError(ERR_UNDEFINED);
  }
  if (x.code->kind != CodeKind::Global) S[0].Assign(value);
}

VL_NOINLINE const Instruction* LeaveSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const Instruction* next = x.Leave();
  VL_GO_ANEW(next);
}

VL_NOINLINE const Instruction* ReturnSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[1];
  const auto kind = static_cast<OperandKind>(i->n);
  if (kind != kSlot) LoadOperand(x, slot, kind, i->b, L);
  TakeResult(x, i, S, slot);
  return LeaveSlow(x, i, S, L);
}

template <Traces T, OperandKind B>
const Instruction* ReturnValue(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[1];
  const CValue* value = Read<B>(i->b, i->offsetB, &slot, L);
  if (value->type <= VT_FLOAT && x.code->kind != CodeKind::Global && S[0].IsPlain() &&
      (T == kNoTraces || B == kSlot || slot.IsPlain())) {
    PutNumber(S[0], *value);
    if (T == kAllTraces && B != kSlot) PutNumber(slot, *value);
    const Instruction* next = x.LeavePlain();
    if (!next) [[unlikely]]
      return LeaveSlow(x, i, S, L);
    VL_GO_ANEW(next);
  }
  return ReturnSlow(x, i, S, L);
}

}  // namespace

Handler ReturnOf(Traces traces, OperandKind b) {
#define VL_RETURN(T) \
  { ReturnValue<T, kLocal>, ReturnValue<T, kName>, ReturnValue<T, kConstant>, ReturnValue<T, kSlot> }
  static constexpr Handler kTable[kTraceKinds][4] = {VL_RETURN(kNoTraces), VL_RETURN(kObjectTraces),
                                                     VL_RETURN(kAllTraces)};
  return kTable[traces][b];
}

const Instruction* ReturnZero(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  if (x.code->kind != CodeKind::Global) S[0].SetInt(0);
  const Instruction* next = x.LeavePlain();
  if (!next) next = x.Leave();
  VL_GO_ANEW(next);
}

const Instruction* EndWalk(CExecutor& x, const Instruction* i, CValue* S, CValue* L) { return nullptr; }

const Instruction* Delete(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.StandAt(S, 0, i->at);
  CIBaseClassImpl* object = S[1].GetObjectNotNull();
  if (object == &x.i) x.i.RaiseError(ERR_DELETE_INTERPRETER);
  x.Publish();
  x.i.DeleteObject(object);
  x.Adopt();
  VL_GO(i + 1);
}

const Instruction* SetPart(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.i.SetPart(static_cast<int32_t>(i->a.number));
  VL_END_STATEMENT(i + 1);
}

const Instruction* Fail(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.StandAt(S, 0, i->at);
  x.i.RaiseError(i->n);
}

const Instruction* Stop(CExecutor& x, const Instruction* i, CValue* S, CValue* L) { return nullptr; }

const Instruction* StopExpression(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.i.readCursor = x.i.At(i->at);
  return nullptr;
}

}  // namespace vl::handlers
