// Calls of script functions and methods whose arguments are numbers that no code had to run for: their values go
// straight to the parameters. Each passes over the instructions behind it, which do the same for anything else.
#include "interpreter/executor/numbers.h"

namespace vl::handlers {

namespace {

// The walker would have overwritten these on its way.
template <Traces T, OperandKind A, OperandKind B>
inline bool IsWayFree(const CExecutor& x, const Instruction* i, CValue* S) {
  return T == kNoTraces || (x.bank[i->n].IsPlain() && AreFree<T, A, B>(S[i->k], S[i->k + 1]));
}

// `target` is where the call is made in the common way.
template <Traces T, OperandKind B>
const Instruction* Parameter(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue* b = Read<B>(i->b, i->offsetB, nullptr, L);
  if (b->type > VT_FLOAT || !IsWayFree<T, kLocal, kSlot>(x, i, S)) [[unlikely]]
    VL_GO(i->target.target);
  PutNumber(At(L, i->offsetTarget), *b);
  if constexpr (T == kAllTraces) {
    PutNumber(x.bank[i->n], *b);
    PutNumber(S[i->k], *b);
  }
  VL_GO(i + 1);
}

template <Traces T>
inline void PutTraces(CExecutor& x, const Instruction* i, CValue* S, const CValue& value, const CValue& right) {
  if constexpr (T == kAllTraces) {
    PutNumber(S[i->k + 1], right);
    PutNumber(S[i->k], value);
    PutNumber(x.bank[i->n], value);
  }
}

template <Traces T, uint16_t Op, OperandKind A, OperandKind B>
VL_NOINLINE const Instruction* ParameterOfReals(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue* a = Read<A>(i->a, i->offsetA, nullptr, L);
  const CValue* b = Read<B>(i->b, i->offsetB, nullptr, L);
  if constexpr (IsArithmetic(Op)) {
    if ((a->type | b->type) == VT_FLOAT && IsWayFree<T, A, B>(x, i, S)) {
      CValue& parameter = At(L, i->offsetTarget);
      PutReal(parameter, Arithmetic<Op>(RealOf(*a), RealOf(*b)));
      PutTraces<T>(x, i, S, parameter, *b);
      VL_GO(i + 1);
    }
  }
  VL_GO(i->target.target);
}

template <Traces T, uint16_t Op, OperandKind A, OperandKind B>
const Instruction* ParameterOfTwo(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue* a = Read<A>(i->a, i->offsetA, nullptr, L);
  const CValue* b = Read<B>(i->b, i->offsetB, nullptr, L);
  if ((a->type | b->type) != VT_INTEGER || !IsWayFree<T, A, B>(x, i, S)) [[unlikely]]
    return ParameterOfReals<T, Op, A, B>(x, i, S, L);
  CValue& parameter = At(L, i->offsetTarget);
  int32_t result;
  OnIntegers<Op>(a->data.integer, b->data.integer, result);
  PutInteger(parameter, result);
  PutTraces<T>(x, i, S, parameter, *b);
  VL_GO(i + 1);
}

// What is called, with what it was the last time: `b` the function, `offsetB` its code.
inline const Code& CalleeOf(const Instruction* i) { return *reinterpret_cast<const Code*>(i->offsetB); }

template <Traces T = kAllTraces>
inline bool HasRoom(const CExecutor& x, const CValue* slot, const CValue* locals) {
  return x.top != x.lastFrame && slot <= x.slotsSafe && locals <= x.localsSafe && IsFree<T>(*slot);
}

template <Traces T>
inline CExecutor::Frame& Push(CExecutor& x, const Instruction* i, CValue* S, CValue* L, CValue* slot, CValue* locals) {
  CExecutor::Frame& frame = *++x.top;
  frame.S = S;
  frame.L = L;
  frame.code = x.code;
  x.code = &CalleeOf(i);
  x.S = slot;
  x.L = locals;
  slot->type = VT_INTEGER;
  if (T == kAllTraces) slot->data.integer = 0;
  slot->lvalue = nullptr;
  return frame;
}

// Notes what is called for the next time. False when it takes the common way.
bool Link(CExecutor& x, const Instruction* i, CValue* S, const BlockRecord& block, CodeKind kind) {
  const Code* callee = x.CodeOf(block, kind);
  if (!callee || callee->parameterCount != (i->n & 0xFF) || !x.IsPlainCallee(*callee)) return false;
  auto* known = const_cast<Instruction*>(i);
  known->b.pointer = &block;
  known->offsetB = reinterpret_cast<int64_t>(callee);
  // A number there is what the quick way looks for.
  if (S[i->k].IsPlain()) S[i->k].SetInt(0);
  // As much room as several such calls need, so that deep ones seldom come here.
  const CValue* wanted = &S[i->k] + 4 * CExecutor::kPlainCells;
  if (&S[i->k] > x.slotsSafe && wanted < x.slots + limits::kMaxValues) x.NeedSlots(wanted);
  return true;
}

// Whether a bare name means the function of the program's own.
template <CodeKind K>
inline bool SeesGlobals(const CExecutor& x, const Instruction* i) {
  if constexpr (K == CodeKind::Function) return true;
  if constexpr (K == CodeKind::Global) return x.i.thisObject == &x.i;
  return !x.i.thisObject->variables.Find(static_cast<uint32_t>(i->offsetA));
}

inline const CVariable& GlobalOf(const Instruction* i) { return **static_cast<CVariable* const*>(i->a.pointer); }

// Goes once more by the quick way when that is open now.
template <CodeKind K>
VL_NOINLINE const Instruction* PlainCallSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CVariable& variable = GlobalOf(i);
  constexpr CodeKind kCallee = K == CodeKind::Method ? K : CodeKind::Function;
  if (variable.type == VT_FUNCTION && SeesGlobals<K>(x, i) && Link(x, i, S, *variable.data.function, kCallee) &&
      HasRoom(x, &S[i->k], &At(L, i->offsetTarget))) {
    VL_GO(i);
  }
  VL_GO(i + 1);
}

template <Traces T, CodeKind K>
const Instruction* PlainCall(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CVariable& variable = GlobalOf(i);
  CValue* const slot = &S[i->k];
  CValue* const locals = &At(L, i->offsetTarget);
  if (variable.type != VT_FUNCTION || variable.data.function != i->b.pointer || !SeesGlobals<K>(x, i) ||
      !HasRoom<T>(x, slot, locals)) [[unlikely]] {
    return PlainCallSlow<K>(x, i, S, L);
  }
  Push<T>(x, i, S, L, slot, locals).back = i->target.target;
  if (T != kNoTraces) x.i.argCounts[x.argBase] = i->n;
  VL_GO_WITH(CalleeOf(i).first, slot, locals);
}

// The same among the arguments of another call: `n` above 8 bits is how deep.
template <Traces T, CodeKind K>
const Instruction* PlainNestedCall(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CVariable& variable = GlobalOf(i);
  CValue* const slot = &S[i->k];
  CValue* const locals = &At(L, i->offsetTarget);
  const uint32_t level = x.argBase + (i->n >> 8);
  if (variable.type != VT_FUNCTION || variable.data.function != i->b.pointer || !SeesGlobals<K>(x, i) ||
      !HasRoom<T>(x, slot, locals)) [[unlikely]] {
    return PlainCallSlow<K>(x, i, S, L);
  }
  CExecutor::Frame& frame = Push<T>(x, i, S, L, slot, locals);
  x.TakeLevel(frame, i->target.target, level);
  if (T != kNoTraces) x.i.argCounts[level] = i->n & 0xFF;
  VL_GO_WITH(CalleeOf(i).first, slot, locals);
}

// `at` is where the method's name stands, `n` above 8 bits the place of its variable in the object.
inline uint32_t MethodName(const CExecutor& x, const Instruction* i) { return TokenNameId(x.i.At(i->at)); }

// The script object of a value, but not the interpreter; null for anything else.
inline CIBaseObjectVar* ScriptObject(const CExecutor& x, const CValue& value) {
  if (value.type != VT_OBJECT || !value.data.object || value.data.object->classInfo || value.data.object == &x.i) {
    return nullptr;
  }
  return static_cast<CIBaseObjectVar*>(value.data.object);
}

VL_NOINLINE const Instruction* PlainMethodSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L,
                                               CIBaseObjectVar* object) {
  const uint32_t nameId = MethodName(x, i);
  const CVariable* method = object ? object->variables.Find(nameId) : nullptr;
  if (method && method->type == VT_FUNCTION && Link(x, i, S, *method->data.function, CodeKind::Method) &&
      HasRoom(x, &S[i->k], &At(L, i->offsetTarget))) {
    const uint32_t place = object->variables.PlaceOf(method);
    if (object->variables.Made(place, nameId) == method) {
      const_cast<Instruction*>(i)->n = static_cast<uint16_t>((i->n & 0xFF) | place << 8);
      VL_GO(i);
    }
  }
  VL_GO(i + 1);
}

template <Traces T>
VL_ALWAYS_INLINE const Instruction* CallMethod(CExecutor& x, const Instruction* i, CValue* S, CValue* L,
                                               CIBaseObjectVar* object) {
  CValue* const slot = &S[i->k];
  CValue* const locals = &At(L, i->offsetTarget);
  const CVariable* method = object ? object->variables.Made(i->n >> 8, MethodName(x, i)) : nullptr;
  if (!method || method->type != VT_FUNCTION || method->data.function != i->b.pointer || !HasRoom<T>(x, slot, locals))
      [[unlikely]] {
    return PlainMethodSlow(x, i, S, L, object);
  }
  CExecutor::Frame& frame = Push<T>(x, i, S, L, slot, locals);
  frame.back = &x.leaveMethod;
  frame.then = i->target.target;
  frame.self = x.i.thisObject;
  frame.held = object;
  if (T != kNoTraces) x.i.argCounts[x.argBase] = i->n & 0xFF;
  ++object->pins;
  x.i.thisObject = object;
  VL_GO_WITH(CalleeOf(i).first, slot, locals);
}

template <Traces T, OperandKind N>
const Instruction* PlainMethod(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  return CallMethod<T>(x, i, S, L, ScriptObject(x, *Read<N>(i->a, i->offsetA, nullptr, L)));
}

template <Traces T>
const Instruction* PlainOwnMethod(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  return CallMethod<T>(x, i, S, L, x.i.thisObject == &x.i ? nullptr : x.i.thisObject);
}

#define VL_PARAMETER(T, Op)                                                       \
  {                                                                               \
    {ParameterOfTwo<T, Op, kLocal, kLocal>, ParameterOfTwo<T, Op, kLocal, kName>, \
     ParameterOfTwo<T, Op, kLocal, kConstant>},                                   \
    {                                                                             \
      ParameterOfTwo<T, Op, kName, kLocal>, ParameterOfTwo<T, Op, kName, kName>,  \
          ParameterOfTwo<T, Op, kName, kConstant>                                 \
    }                                                                             \
  }
template <Traces T>
constexpr Handler kParameter[3] = {Parameter<T, kLocal>, Parameter<T, kName>, Parameter<T, kConstant>};
template <Traces T>
constexpr Handler kParameterOfTwo[][2][3] = {VL_PARAMETER(T, TK_ADD), VL_PARAMETER(T, TK_SUB), VL_PARAMETER(T, TK_MUL),
                                             VL_PARAMETER(T, TK_AND)};
template <Traces T>
constexpr Handler kPlainCall[3] = {PlainCall<T, CodeKind::Global>, PlainCall<T, CodeKind::Function>,
                                   PlainCall<T, CodeKind::Method>};
template <Traces T>
constexpr Handler kPlainNestedCall[3] = {PlainNestedCall<T, CodeKind::Global>, PlainNestedCall<T, CodeKind::Function>,
                                         PlainNestedCall<T, CodeKind::Method>};
template <Traces T>
constexpr Handler kPlainMethod[2] = {PlainMethod<T, kLocal>, PlainMethod<T, kName>};

}  // namespace

// In front of the parameters of such a nested call: too deep a level is for the common way to tell.
const Instruction* PlainLevel(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  if (x.argBase + i->n >= limits::kArgumentLevels) [[unlikely]]
    VL_GO(i->target.target);
  VL_GO(i + 1);
}

// `n` parameters may have been written for a call that is made in the common way after all.
const Instruction* ResetArguments(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue* parameter = &At(L, i->offsetTarget) + 1;
  for (uint32_t p = 0; p < i->n; ++p) parameter[p].type = VT_NEW_NAME;
  VL_GO(i + 1);
}

// The row of a table with one for each kind of traces.
template <typename T>
const T& OfTraces(Traces traces, const T& none, const T& objects, const T& all) {
  return traces == kNoTraces ? none : traces == kObjectTraces ? objects : all;
}

Handler ParameterOf(Traces traces, uint16_t op, OperandKind a, OperandKind b) {
  if (op == 0) {
    return OfTraces(traces, kParameter<kNoTraces>, kParameter<kObjectTraces>, kParameter<kAllTraces>)[b];
  }
  const int row = op == TK_ADD ? 0 : op == TK_SUB ? 1 : op == TK_MUL ? 2 : 3;
  return OfTraces(traces, kParameterOfTwo<kNoTraces>, kParameterOfTwo<kObjectTraces>,
                  kParameterOfTwo<kAllTraces>)[row][a][b];
}

Handler PlainCallOf(Traces traces, CodeKind code, bool isNested) {
  const auto kind = static_cast<size_t>(code);
  if (isNested) {
    return OfTraces(traces, kPlainNestedCall<kNoTraces>, kPlainNestedCall<kObjectTraces>,
                    kPlainNestedCall<kAllTraces>)[kind];
  }
  return OfTraces(traces, kPlainCall<kNoTraces>, kPlainCall<kObjectTraces>, kPlainCall<kAllTraces>)[kind];
}

Handler PlainMethodOf(Traces traces, OperandKind name) {
  return OfTraces(traces, kPlainMethod<kNoTraces>, kPlainMethod<kObjectTraces>, kPlainMethod<kAllTraces>)[name];
}

Handler PlainOwnMethodOf(Traces traces) {
  return OfTraces<Handler>(traces, PlainOwnMethod<kNoTraces>, PlainOwnMethod<kObjectTraces>,
                           PlainOwnMethod<kAllTraces>);
}

}  // namespace vl::handlers
