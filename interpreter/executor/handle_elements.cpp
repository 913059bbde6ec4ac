// Handlers that reach the elements of arrays.
#include "interpreter/executor/numbers.h"

namespace vl::handlers {

namespace {

// What stands for an element: its value, or where it would be made. Gives false when a member follows the element,
// which then is the source.
void ReadElement(CExecutor& x, CValue* S, uint32_t k, const int32_t* subscripts, uint32_t count, uint32_t flags) {
  CValue& slot = S[k];
  CValue& variable = *slot.lvalue;
  CArrayStore& store = x.i.ArrayOf(variable);
  const uint32_t index = store.Address(subscripts, count);
  CValue* element = flags & kPlaceWanted ? store.Place(index) : store.Cell(index);
  if (element) {
    if (flags & kMemberFollows) {
      x.source = element;
      return;
    }
    slot.Assign(*element);
    slot.lvalue = element;
    return;
  }
  x.scratch.Release();
  const bool isNumber = store.ReadNumber(index, x.scratch);
  if (isNumber && flags & kMemberFollows) {
    x.source = &x.scratch;
  } else if (isNumber && !(flags & kPlaceByIndex)) {
    slot.Assign(x.scratch);
    slot.lvalue = nullptr;
  } else {
    slot.SetNewElement(index, &variable);
    slot.level = isNumber;
    if (!isNumber && !(flags & kAssignFollows)) x.i.RaiseError(ERR_UNDEFINED);
  }
}

VL_NOINLINE void FindElementAt(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  x.StandAt(S, i->k, i->at);
  CValue* variable = x.FindName(*i->a.name, L);
  if (!variable) {
    slot.SetNew(VT_NEW_ARRAY, i->a.name->token);
    // Nothing is evaluated; only an assignment may follow.
    if (!(i->n & kAssignFollows)) x.i.RaiseError(ERR_UNDEFINED);
    return;
  }
  slot.SetInt(0);
  slot.lvalue = variable;
  CValue& above = S[i->k + 1];
  LoadOperand(x, above, static_cast<OperandKind>(i->n >> 8 & 3), i->b, L);
  // The subscript's own number is read where its bracket stands.
  x.i.readCursor = x.i.At(i->at - kPlainRecord);
  const int32_t subscript = above.GetInt();
  x.i.readCursor = x.i.At(i->at);
  ReadElement(x, S, i->k, &subscript, 1, i->n & 0xFF);
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

// The same for an element with a cell, which need not be a number.
template <Traces T>
VL_NOINLINE const Instruction* ElementWithCell(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  const CValue* variable = ReadAny(i->n >> 12, i->a, i->offsetA, nullptr, L);
  const CValue* subscript = ReadAny(i->n >> 8 & 3, i->b, i->offsetB, nullptr, L);
  if (variable->type == VT_ARRAY && subscript->type == VT_INTEGER && (T == kNoTraces || S[i->k + 1].IsPlain())) {
    const CArrayStore& store = *variable->data.array;
    const int32_t index = subscript->data.integer;
    if (CValue* element = store.Cell(store.InsideOfOne(static_cast<uint32_t>(index)))) {
      if constexpr (T == kAllTraces) {
        PutInteger(S[i->k + 1], index);
        S[i->k + 1].lvalue = nullptr;
      }
      if (i->n & kMemberFollows) {
        slot.SetInt(0);
        x.source = element;
      } else {
        slot.Assign(*element);
      }
      slot.lvalue = element;
      VL_GO(i + 1);
    }
  }
  return ElementAtSlow(x, i, S, L);
}

// Where something wants the element's place, the slot tells it; where nothing does, nothing asks.
template <Traces T, OperandKind N, OperandKind B>
const Instruction* ElementAt(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  const CValue* variable = Read<N>(i->a, i->offsetA, nullptr, L);
  const CValue* subscript = Read<B>(i->b, i->offsetB, nullptr, L);
  if (variable->type == VT_ARRAY && subscript->type == VT_INTEGER && slot.IsPlain() &&
      (T == kNoTraces || S[i->k + 1].IsPlain()) && (i->n & (kMemberFollows | kPlaceWanted | kPlaceByIndex)) == 0)
      [[likely]] {
    const CArrayStore& store = *variable->data.array;
    const int32_t index = subscript->data.integer;
    if (store.dimensions == 1 && store.ReadNumber(static_cast<uint32_t>(index), slot)) [[likely]] {
      if constexpr (T == kAllTraces) PutInteger(S[i->k + 1], index);
      VL_GO(i + 1);
    }
  }
  return ElementWithCell<T>(x, i, S, L);
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

// `name[b, target]`; over `at` instructions where it is a number, or an element to be assigned to.
const Instruction* ElementAtPair(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const uint32_t kinds = i->n;
  const CValue* variable = ReadAny(kinds >> 8 & 3, i->a, i->offsetA, nullptr, L);
  const CValue* first = ReadAny(kinds >> 10 & 3, i->b, i->offsetB, nullptr, L);
  const CValue* second = ReadAny(kinds >> 12 & 3, i->target, i->offsetTarget, nullptr, L);
  CValue& slot = S[i->k];
  if (variable->type == VT_ARRAY && (first->type | second->type) == VT_INTEGER && slot.IsPlain() &&
      S[i->k + 1].IsPlain()) [[likely]] {
    const CArrayStore& store = *variable->data.array;
    const uint32_t index =
        store.InsideOfTwo(static_cast<uint32_t>(first->data.integer), static_cast<uint32_t>(second->data.integer));
    if (store.ReadNumber(index, slot)) {
      slot.lvalue = nullptr;
      if (kinds & kPlaceByIndex) {
        slot.type = VT_NEW_ELEMENT;
        slot.data.token = index;
        slot.lvalue = const_cast<CValue*>(variable);
        slot.level = true;
      }
      VL_GO(i + i->at);
    }
  }
  VL_GO(i + 1);
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

namespace {

// The rest of storing a number: into a cell, or behind the last element.
VL_NOINLINE bool PutElementSlow(CArrayStore& store, uint32_t index, const CValue& number) {
  if (CValue* cell = store.Cell(index)) {
    if (cell->type > VT_FLOAT) return false;
    PutNumber(*cell, number);
    return true;
  }
  return store.AppendNumber(index, number);
}

// The statement's slots are free: what the walker would leave there are numbers.
template <Traces T>
inline bool IsFreeOf(const CValue* S, int count) {
  if (T == kNoTraces) return true;
  for (int k = 1; k <= count; ++k) {
    if (!S[k].IsPlain()) return false;
  }
  return true;
}

// Behind the quick way; `i` is the first of its instructions.
VL_NOINLINE const Instruction* StoreElementSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L,
                                                uint32_t index, const CValue* number) {
  CArrayStore& store = *Read<kName>(i->a, i->offsetA, nullptr, L)->data.array;
  if (PutElementSlow(store, index, *number)) VL_END_STATEMENT(i + i->at);
  VL_GO(i + i->n);
}

template <Traces T, OperandKind N, OperandKind B, OperandKind V>
const Instruction* StoreElement(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue* variable = Read<N>(i->a, i->offsetA, nullptr, L);
  const CValue* subscript = Read<B>(i->b, i->offsetB, nullptr, L);
  const CValue* value = Read<V>(i->target, i->offsetTarget, nullptr, L);
  if (variable->type == VT_ARRAY && subscript->type == VT_INTEGER && value->type <= VT_FLOAT && IsFreeOf<T>(S, 2))
      [[likely]] {
    CArrayStore& store = *variable->data.array;
    if (store.dimensions == 1) [[likely]] {
      if (store.WriteNumber(static_cast<uint32_t>(subscript->data.integer), *value)) [[likely]]
        VL_END_STATEMENT(i + i->at);
      return StoreElementSlow(x, i, S, L, static_cast<uint32_t>(subscript->data.integer), value);
    }
  }
  VL_GO(i + 1);
}

// The operator on two numbers, into the first slot, which owns nothing.
template <uint16_t Op>
VL_ALWAYS_INLINE bool Calculate(CValue& result, const CValue& a, const CValue& b) {
  if ((a.type | b.type) == VT_INTEGER) {
    int32_t number;
    if (!OnIntegers<Op>(a.data.integer, b.data.integer, number)) return false;
    PutInteger(result, number);
    return true;
  }
  if constexpr (IsArithmetic(Op)) {
    if ((a.type | b.type) != VT_FLOAT) return false;
    PutReal(result, Arithmetic<Op>(RealOf(a), RealOf(b)));
    return true;
  }
  return false;
}

// `a[b] = target op more`; `more` is in the instruction behind.
template <Traces T, uint16_t Op, OperandKind N, OperandKind B, OperandKind V, OperandKind W>
const Instruction* StoreElementOf(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue* variable = Read<N>(i->a, i->offsetA, nullptr, L);
  const CValue* subscript = Read<B>(i->b, i->offsetB, nullptr, L);
  const CValue* left = Read<V>(i->target, i->offsetTarget, nullptr, L);
  const CValue* right = Read<W>(i[1].a, i[1].offsetA, nullptr, L);
  if (variable->type == VT_ARRAY && subscript->type == VT_INTEGER && S[1].IsPlain() && IsFreeOf<T>(S, 3)) [[likely]] {
    CArrayStore& store = *variable->data.array;
    if (store.dimensions == 1 && Calculate<Op>(S[1], *left, *right)) [[likely]] {
      const auto index = static_cast<uint32_t>(subscript->data.integer);
      if (store.WriteNumber(index, S[1])) [[likely]]
        VL_END_STATEMENT(i + i->at);
      return StoreElementSlow(x, i, S, L, index, &S[1]);
    }
  }
  VL_GO(i + 2);
}

// `a[b] op= target`, and `++` as the adding of 1.
template <Traces T, uint16_t Op, OperandKind N, OperandKind B, OperandKind V>
const Instruction* ChangeElement(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue* variable = Read<N>(i->a, i->offsetA, nullptr, L);
  const CValue* subscript = Read<B>(i->b, i->offsetB, nullptr, L);
  const CValue* value = Read<V>(i->target, i->offsetTarget, nullptr, L);
  if (variable->type == VT_ARRAY && subscript->type == VT_INTEGER && S[1].IsPlain() && IsFreeOf<T>(S, 2)) [[likely]] {
    CArrayStore& store = *variable->data.array;
    const uint32_t index = store.InsideOfOne(static_cast<uint32_t>(subscript->data.integer));
    if (store.ReadNumber(index, S[1]) && Calculate<Op>(S[1], S[1], *value) && store.WriteNumber(index, S[1]))
        [[likely]] {
      VL_END_STATEMENT(i + i->at);
    }
  }
  VL_GO(i + 1);
}

template <Traces T, OperandKind N>
Handler StoreRow(bool isConstB, bool isConstTarget) {
  static constexpr Handler kTable[2][2] = {
      {StoreElement<T, N, N, N>, StoreElement<T, N, N, kConstant>},
      {StoreElement<T, N, kConstant, N>, StoreElement<T, N, kConstant, kConstant>}};
  return kTable[isConstB][isConstTarget];
}

template <Traces T, uint16_t Op, OperandKind N>
Handler ChangeRow(bool isConstB, bool isConstTarget) {
  static constexpr Handler kTable[2][2] = {
      {ChangeElement<T, Op, N, N, N>, ChangeElement<T, Op, N, N, kConstant>},
      {ChangeElement<T, Op, N, kConstant, N>, ChangeElement<T, Op, N, kConstant, kConstant>}};
  return kTable[isConstB][isConstTarget];
}

template <Traces T, uint16_t Op, OperandKind N>
Handler StoreOfRow(bool isConstB, bool isConstTarget, bool isConstMore) {
  static constexpr Handler kTable[2][2][2] = {
      {{StoreElementOf<T, Op, N, N, N, N>, StoreElementOf<T, Op, N, N, N, kConstant>},
       {StoreElementOf<T, Op, N, N, kConstant, N>, StoreElementOf<T, Op, N, N, kConstant, kConstant>}},
      {{StoreElementOf<T, Op, N, kConstant, N, N>, StoreElementOf<T, Op, N, kConstant, N, kConstant>},
       {StoreElementOf<T, Op, N, kConstant, kConstant, N>, StoreElementOf<T, Op, N, kConstant, kConstant, kConstant>}}};
  return kTable[isConstB][isConstTarget][isConstMore];
}

template <Traces T, OperandKind N>
Handler ElementStore(uint16_t op, bool b, bool target, bool more) {
  switch (op) {
    case TK_ASSIGN:
      return StoreRow<T, N>(b, target);
    case TK_ADD_ASSIGN:
    case TK_INCREMENT:
      return ChangeRow<T, TK_ADD, N>(b, target);
    case TK_SUB_ASSIGN:
    case TK_DECREMENT:
      return ChangeRow<T, TK_SUB, N>(b, target);
    case TK_MUL_ASSIGN:
      return ChangeRow<T, TK_MUL, N>(b, target);
    case TK_ADD:
      return StoreOfRow<T, TK_ADD, N>(b, target, more);
    case TK_SUB:
      return StoreOfRow<T, TK_SUB, N>(b, target, more);
    case TK_MUL:
      return StoreOfRow<T, TK_MUL, N>(b, target, more);
    case TK_AND:
      return StoreOfRow<T, TK_AND, N>(b, target, more);
    default:
      return StoreOfRow<T, TK_MOD, N>(b, target, more);
  }
}

}  // namespace

bool HasElementForm(uint16_t op) {
  return (op >= TK_ADD_ASSIGN && op <= TK_MUL_ASSIGN) || op == TK_ADD || op == TK_SUB || op == TK_MUL || op == TK_AND ||
         op == TK_MOD;
}

Handler ElementStoreOf(Traces traces, uint16_t op, OperandKind name, bool isConstB, bool isConstTarget,
                       bool isConstMore) {
  if (traces == kNoTraces) {
    return name == kLocal ? ElementStore<kNoTraces, kLocal>(op, isConstB, isConstTarget, isConstMore)
                          : ElementStore<kNoTraces, kName>(op, isConstB, isConstTarget, isConstMore);
  }
  return name == kLocal ? ElementStore<kObjectTraces, kLocal>(op, isConstB, isConstTarget, isConstMore)
                        : ElementStore<kObjectTraces, kName>(op, isConstB, isConstTarget, isConstMore);
}

}  // namespace vl::handlers
