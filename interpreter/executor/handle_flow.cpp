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

// Only the frame of the globals counts its blocks while it runs; what a function's block may make is known.
const Instruction* OpenScope(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  ++x.i.scopeDepth;
  VL_GO(i + 1);
}

// Closes `n` blocks of the frame of the globals.
const Instruction* CloseScope(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.i.scopeDepth -= i->n;
  x.i.variables.RemoveFromLevel(x.i.scopeDepth + 1, x.i.variablePool);
  VL_GO(i + 1);
}

// The same in a function: `b` is the level of the outermost, `a` what it may have made.
const Instruction* CloseLocals(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.CloseScope(*static_cast<const std::vector<int64_t>*>(i->a.pointer), static_cast<uint16_t>(i->b.number));
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

VL_NOINLINE const Instruction* LeaveSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const Instruction* next = x.Leave();
  VL_GO_ANEW(next);
}

// `offsetTarget` is where the locals end.
VL_ALWAYS_INLINE const Instruction* LeaveQuickly(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue* const end = &At(L, i->offsetTarget);
  for (CValue* local = L + 1; local != end; ++local) {
    if (!local->IsPlain()) [[unlikely]]
      return LeaveSlow(x, i, S, L);
    local->type = VT_NEW_NAME;
  }
  const CExecutor::Frame& frame = *x.top--;
  x.code = frame.code;
  x.S = frame.S;
  x.L = frame.L;
  VL_GO_WITH(frame.back, frame.S, frame.L);
}

VL_NOINLINE const Instruction* ReturnSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& value = S[1];
  const auto kind = static_cast<OperandKind>(i->n);
  if (kind != kSlot) LoadOperand(x, value, kind, i->b, L);
  if (value.type >= VT_NEW_NAME && value.type <= VT_NEW_ELEMENT) {
    x.StandAt(S, 0, i->at);
    x.i.RaiseError(ERR_UNDEFINED);
  }
  // An event function's value goes nowhere.
  if (x.code->kind != CodeKind::Global) S[0].Assign(value);
  return LeaveSlow(x, i, S, L);
}

template <Traces T, OperandKind B>
const Instruction* ReturnValue(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[1];
  const CValue* value = Read<B>(i->b, i->offsetB, &slot, L);
  // A call's slot holds a number, unless a call that was a statement has left something else there.
  if ((value->type | S[0].type) > VT_FLOAT || (T != kNoTraces && B != kSlot && !slot.IsPlain())) [[unlikely]]
    return ReturnSlow(x, i, S, L);
  PutNumber(S[0], *value);
  if (T == kAllTraces && B != kSlot) PutNumber(slot, *value);
  return LeaveQuickly(x, i, S, L);
}

// `Return a + b` of numbers where no slot is looked at; passes on to the two instructions behind it for anything else.
template <uint16_t Op, OperandKind A, OperandKind B>
const Instruction* ReturnOfTwo(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue* a = Read<A>(i->a, i->offsetA, &S[1], L);
  const CValue* b = Read<B>(i->b, i->offsetB, &S[2], L);
  if ((a->type | b->type | S[0].type) != VT_INTEGER) [[unlikely]]
    VL_GO(i + 1);
  int32_t result;
  OnIntegers<Op>(a->data.integer, b->data.integer, result);
  S[0].data.integer = result;
  return LeaveQuickly(x, i, S, L);
}

}  // namespace

Handler ReturnOfTwoOf(uint16_t op, OperandKind a, OperandKind b) {
#define VL_RETURN_B(Op, A) \
  { ReturnOfTwo<Op, A, kLocal>, nullptr, ReturnOfTwo<Op, A, kConstant>, ReturnOfTwo<Op, A, kSlot> }
#define VL_RETURN_AB(Op) \
  { VL_RETURN_B(Op, kLocal), VL_RETURN_B(Op, kSlot) }
  static constexpr Handler kTable[3][2][4] = {VL_RETURN_AB(TK_ADD), VL_RETURN_AB(TK_SUB), VL_RETURN_AB(TK_MUL)};
  if ((op != TK_ADD && op != TK_SUB && op != TK_MUL) || (a != kLocal && a != kSlot)) return nullptr;
  return kTable[op == TK_ADD ? 0 : op == TK_SUB ? 1 : 2][a == kLocal ? 0 : 1][b];
}

Handler ReturnOf(CodeKind code, Traces traces, OperandKind b) {
#define VL_RETURN(T) \
  { ReturnValue<T, kLocal>, ReturnValue<T, kName>, ReturnValue<T, kConstant>, ReturnValue<T, kSlot> }
  static constexpr Handler kTable[kTraceKinds][4] = {VL_RETURN(kNoTraces), VL_RETURN(kObjectTraces),
                                                     VL_RETURN(kAllTraces)};
  return code == CodeKind::Global ? ReturnSlow : kTable[traces][b];
}

const Instruction* ReturnZero(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  S[0].SetInt(0);
  return LeaveQuickly(x, i, S, L);
}

const Instruction* EndEvent(CExecutor& x, const Instruction* i, CValue* S, CValue* L) { return LeaveSlow(x, i, S, L); }

const Instruction* LeaveRest(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const Instruction* next = x.FinishLeave();
  VL_GO(next);
}

namespace {

VL_NOINLINE const Instruction* LeaveLevelSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const Instruction* next = x.FinishLevel();
  VL_GO(next);
}

VL_NOINLINE const Instruction* LeaveMethodSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const Instruction* next = x.FinishMethod();
  VL_GO(next);
}

}  // namespace

const Instruction* LeaveMethod(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CExecutor::Frame& frame = x.top[1];
  if (x.hiddenCount || frame.held->destroyed) [[unlikely]]
    return LeaveMethodSlow(x, i, S, L);
  --frame.held->pins;
  x.i.thisObject = frame.self;
  VL_GO(frame.then);
}

const Instruction* LeaveLevel(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  if (x.hiddenCount) [[unlikely]]
    return LeaveLevelSlow(x, i, S, L);
  x.SetLevel(x.top[1].argBase);
  VL_GO(x.top[1].then);
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
