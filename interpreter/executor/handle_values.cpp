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
  if (local.type > VT_FLOAT || !slot.IsPlain()) [[unlikely]]
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

void AssignSlowly(CExecutor& x, const Instruction* i, CValue* S) {
  x.StandAt(S, i->k, i->at);
  x.Assign(S, i->k, static_cast<uint16_t>(i->offsetA));
}

}  // namespace

const Instruction* Assign(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[i->k];
  if (IsLateArray(left) && i->target.target) VL_GO(i->target.target);
  if (!AssignNumber(left, S[i->k + 1])) AssignSlowly(x, i, S);
  VL_GO(i + 1);
}

namespace {

VL_NOINLINE const Instruction* AssignStatementSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  AssignSlowly(x, i, S);
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
  AssignSlowly(x, i, S);
  VL_END_STATEMENT(i + 1);
}

template <OperandKind B>
const Instruction* AssignAway(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue& left = S[i->k];
  const CValue& above = S[i->k + 1];
  const CValue& right = *Read<B>(i->b, i->offsetB, &S[i->k + 1], L);
  CValue* const target = left.lvalue;
  if ((left.type | right.type) > VT_FLOAT || !above.IsPlain() || !target || target->type > VT_FLOAT) [[unlikely]]
    return AssignAwaySlow(x, i, S, L);
  PutNumber(*target, right);
  VL_END_STATEMENT(i + 1);
}

}  // namespace

Handler AssignAwayOf(OperandKind b) {
  static constexpr Handler kTable[] = {AssignAway<kLocal>, AssignAway<kName>, AssignAway<kConstant>, AssignAway<kSlot>};
  return kTable[b];
}

const Instruction* ReduceAny(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.StandAt(S, i->k, i->at);
  x.i.Reduce(i->n);
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

namespace {

// What stands for an element: its value, or where it would be made. Gives false when a member follows the element,
// which then is the source.
void ReadElement(CExecutor& x, CValue* S, uint32_t k, const int32_t* subscripts, uint32_t count, uint32_t flags) {
  CValue& slot = S[k];
  CValue& variable = *slot.lvalue;
  CArrayStore& store = x.i.ArrayOf(variable);
  const uint32_t index = store.Address(subscripts, count);
  if (CValue* element = store.Element(index)) {
    if (flags & 2) {
      x.source = element;
      return;
    }
    slot.Assign(*element);
    slot.lvalue = element;
    return;
  }
  slot.SetNewElement(index, &variable);
  if (!(flags & 1)) x.i.RaiseError(ERR_UNDEFINED);
}

VL_NOINLINE void FindElementAt(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  x.StandAt(S, i->k, i->at);
  CValue* variable = x.FindName(*i->a.name, L);
  if (!variable) {
    slot.SetNew(VT_NEW_ARRAY, i->a.name->token);
    // Nothing is evaluated; only an assignment may follow.
    if (!(i->n & 1)) x.i.RaiseError(ERR_UNDEFINED);
    return;
  }
  slot.SetInt(0);
  slot.lvalue = variable;
  CValue& above = S[i->k + 1];
  LoadOperand(x, above, static_cast<OperandKind>(i->n >> 8), i->b, L);
  // The subscript's own number is read where its bracket stands.
  x.i.readCursor = x.i.At(i->at - kPlainRecord);
  const int32_t subscript = above.GetInt();
  x.i.readCursor = x.i.At(i->at);
  ReadElement(x, S, i->k, &subscript, 1, i->n & 3);
}

VL_NOINLINE const Instruction* ElementAtSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  FindElementAt(x, i, S, L);
  VL_GO(i + 1);
}

// The subscripts that were evaluated last.
uint32_t TakeSubscripts(CExecutor& x, uint32_t count, int32_t* subscripts) {
  std::copy(x.subscripts.end() - count, x.subscripts.end(), subscripts);
  x.subscripts.resize(x.subscripts.size() - count);
  return count;
}

VL_NOINLINE void EndElement(CExecutor& x, const Instruction* i, CValue* S) {
  int32_t subscripts[CArrayStore::kMaxDimensions];
  const uint32_t count = TakeSubscripts(x, i->n & 0xFF, subscripts);
  x.StandAt(S, i->k, i->at);
  ReadElement(x, S, i->k, subscripts, count, i->n >> 8);
}

VL_NOINLINE void StoreInArray(CExecutor& x, const Instruction* i, CValue* S) {
  int32_t subscripts[CArrayStore::kMaxDimensions];
  const uint32_t count = TakeSubscripts(x, i->n, subscripts);
  CValue& left = S[i->k];
  x.StandAt(S, i->k, i->at);
  CValue* variable = left.lvalue;
  if (variable->type != VT_ARRAY) x.i.RaiseError(ERR_UNDEFINED);
  CArrayStore& store = *variable->data.array;
  store.Store(store.Address(subscripts, count), S[i->k + 1]);
  left.Assign(S[i->k + 1]);
  left.lvalue = nullptr;
}

template <Traces T, OperandKind N, OperandKind B>
const Instruction* ElementAt(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  CValue& above = S[i->k + 1];
  const CValue* variable = Read<N>(i->a, i->offsetA, nullptr, L);
  CValue* subscript = Read<B>(i->b, i->offsetB, nullptr, L);
  if (variable->type == VT_ARRAY && subscript->type == VT_INTEGER && slot.IsPlain() &&
      (T == kNoTraces || above.IsPlain())) [[likely]] {
    CValue* element = variable->data.array->OfOneDimension(static_cast<uint32_t>(subscript->data.integer));
    if (element) {
      if constexpr (T == kAllTraces) {
        PutInteger(above, subscript->data.integer);
        above.lvalue = nullptr;
      }
      if (i->n & 2) {
        PutInteger(slot, 0);
        x.source = element;
      } else {
        if (element->type <= VT_FLOAT) [[likely]] {
          PutNumber(slot, *element);
        } else {
          slot.Assign(*element);
        }
        slot.lvalue = element;
      }
      VL_GO(i + 1);
    }
  }
  return ElementAtSlow(x, i, S, L);
}

}  // namespace

#define VL_ELEMENT_AT(T)                                                                            \
  {                                                                                                 \
    {ElementAt<T, kLocal, kLocal>, ElementAt<T, kLocal, kName>, ElementAt<T, kLocal, kConstant>}, { \
      ElementAt<T, kName, kLocal>, ElementAt<T, kName, kName>, ElementAt<T, kName, kConstant>       \
    }                                                                                               \
  }

Handler ElementAtOf(Traces traces, OperandKind name, OperandKind b) {
  static constexpr Handler kTable[kTraceKinds][2][3] = {VL_ELEMENT_AT(kNoTraces), VL_ELEMENT_AT(kObjectTraces),
                                                        VL_ELEMENT_AT(kAllTraces)};
  return kTable[traces][name][b];
}

// `name[`: finds the array before its subscripts are evaluated. Without one, nothing of them is.
const Instruction* ElementOf(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  if (CValue* variable = x.FindName(*i->a.name, L)) {
    slot.SetInt(0);
    slot.lvalue = variable;
    VL_GO(i + 1);
  }
  slot.SetNew(VT_NEW_ARRAY, i->a.name->token);
  if (!i->n) {
    x.StandAt(S, i->k, i->at);
    x.i.RaiseError(ERR_UNDEFINED);
  }
  VL_GO(i->target.target);
}

const Instruction* Subscript(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue& value = S[i->k + 1];
  if (value.type != VT_INTEGER) x.StandAt(S, i->k, i->at);
  x.subscripts.push_back(value.GetInt());
  VL_GO(i + 1);
}

const Instruction* ElementEnd(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  EndElement(x, i, S);
  VL_GO(i + 1);
}

// The assignment to an array that doesn't exist: it is made before its subscripts are evaluated.
const Instruction* MakeArray(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& left = S[i->k];
  const CValue& right = S[i->k + 1];
  x.StandAt(S, i->k, i->at);
  if (right.type >= VT_NEW_NAME && right.type <= VT_NEW_ELEMENT) x.i.RaiseError(ERR_UNDEFINED);
  const uint32_t nameId = TokenNameId(x.i.At(left.data.token));
  CValue* variable = nullptr;
  if (left.type == VT_NEW_ARRAY) {
    variable = &x.MakeVariable(nameId, static_cast<uint16_t>(i->offsetA));
  } else {
    variable = x.i.AddVariable(*static_cast<CIBaseObjectVar*>(left.lvalueObject), nameId, 0);
    left.SetInt(0);
  }
  variable->SetArray(x.i.NewArray());
  left.lvalue = variable;
  VL_GO(i + 1);
}

const Instruction* StoreArray(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  StoreInArray(x, i, S);
  VL_GO(i + 1);
}

}  // namespace vl::handlers
