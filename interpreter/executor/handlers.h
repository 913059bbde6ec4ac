// The handlers that a compiler of code may put into instructions. What each takes stands at its definition.
#pragma once

#include "interpreter/executor/executor.h"

namespace vl::handlers {

const Instruction* LoadLocal(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* LoadNamed(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* LoadConstant(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* LoadDefault(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* Unary(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* SwapDown(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* ForgetTarget(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* Assign(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* AssignStatement(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* ReduceAny(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* KeepFirst(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* Select(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* KeepSwitch(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* JumpUnlessCase(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* DropKept(CExecutor& x, const Instruction* i, CValue* S, CValue* L);

const Instruction* SourceOf(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* ElementOf(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* Subscript(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* ElementAtPair(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* ElementEnd(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* MemberElementOf(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* MakeArray(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* StoreArray(CExecutor& x, const Instruction* i, CValue* S, CValue* L);

const Instruction* CheckLevel(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* CallBegin(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* PlainLevel(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* ResetArguments(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* CallEnd(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* NewScriptBegin(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* NewScriptEnd(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* NewClass(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* MemberCallBegin(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* MemberCallEnd(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* MemberGet(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* OwnMember(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* LoadOwn(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* FixedCall(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* ThisValue(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* WindowValue(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* InnerMember(CExecutor& x, const Instruction* i, CValue* S, CValue* L);

const Instruction* OpenScope(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* CloseScope(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* CloseLocals(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* EndStatement(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* Jump(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* JumpStatement(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* JumpUnless(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* LoopIf(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* EndEvent(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* LeaveRest(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* LeaveMethod(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* LeaveLevel(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* ReturnZero(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* EndWalk(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* Delete(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* SetPart(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* Fail(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* Stop(CExecutor& x, const Instruction* i, CValue* S, CValue* L);
const Instruction* StopExpression(CExecutor& x, const Instruction* i, CValue* S, CValue* L);

// Each in three forms, by the traces that it leaves in slots.
// The operators by the kinds of their operands: a is of kLocal, kName or kSlot, b of any. `n` is the operator.
Handler BinaryOf(Traces traces, uint16_t op, OperandKind a, OperandKind b);
// A comparison that jumps: JumpUnless and LoopIf with the comparison in them.
Handler CompareUnlessOf(Traces traces, uint16_t op, OperandKind a, OperandKind b);
Handler CompareLoopOf(Traces traces, uint16_t op, OperandKind a, OperandKind b);
// `a++` and the comparison of a with b, at the end of a loop.
Handler CountLoopOf(Traces traces, uint16_t op, OperandKind a, OperandKind b);
// Statements: `target = b`, `target = a + b` and the like, `a++`.
Handler StoreOf(Traces traces, OperandKind target, OperandKind b);
Handler BinaryStoreOf(Traces traces, uint16_t op, OperandKind target, OperandKind a, OperandKind b);
Handler StepOf(Traces traces, uint16_t op, OperandKind a);
Handler ReturnOf(CodeKind code, Traces traces, OperandKind b);
// With an operator; null when there is none for it.
Handler ReturnOfTwoOf(uint16_t op, OperandKind a, OperandKind b);
Handler ArgumentOf(Traces traces, OperandKind b);
// The same for a call whose arguments run no code: straight to the parameter. With an operator, or 0 for `b` alone.
Handler ParameterOf(Traces traces, uint16_t op, OperandKind a, OperandKind b);
// Such a call: passes over what does the same for anything else. Of a function's name, as code of that kind sees it.
Handler PlainCallOf(Traces traces, CodeKind code, bool isNested);
// Of a method of the script object that a name holds, or of This.
Handler PlainMethodOf(Traces traces, OperandKind name);
Handler PlainOwnMethodOf(Traces traces);
// `name[b]` for reading or as the left side of an assignment.
Handler ElementAtOf(Traces traces, OperandKind name, OperandKind b);
// Whether ElementStoreOf has a form with the operator.
bool HasElementForm(uint16_t op);
// A whole statement on an element of numbers: `a[b] = target`, `a[b] op= target`, `a[b]++`, and with a second operand
// in the instruction behind it `a[b] = target op more`. Goes over `at` instructions where it can do that, and to those
// behind its own otherwise. Names are read as `name` tells, unless they are constants.
Handler ElementStoreOf(Traces traces, uint16_t op, OperandKind name, bool isConstB, bool isConstTarget,
                       bool isConstMore);
// A statement on numbers whose terms are names, constants and variables of script objects: `target`, `a`, `b`, and `c`
// in the instruction behind it, whose `n` is the count of slots that the walk would write; `n` tells their kinds, 2
// bits each from `target` on. Goes over `at` instructions where it can do that, and to those behind its own otherwise.
Handler TermsOf(Traces traces, TermForm form, TermTarget target, uint16_t first, uint16_t second);
// `target = target outer (a inner b)` on locals; null when there is none for it.
Handler AccumulateOf(uint16_t outer, uint16_t inner, OperandKind b);
// A variable of a script object: passes over the two instructions behind it, which do the same for anything else.
Handler MemberReadOf(OperandKind name);
// `=` as a statement with the right side as an operand, where a slot's rest need not be kept.
Handler AssignAwayOf(OperandKind b);

}  // namespace vl::handlers
