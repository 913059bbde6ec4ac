// Handlers of calls, members and New. A call takes two instructions: one in front of its arguments, which finds what
// is called and holds it, and one behind them.
#include "interpreter/executor/numbers.h"

namespace vl::handlers {

namespace {

VL_NOINLINE const Instruction* ArgumentSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  const auto kind = static_cast<OperandKind>(i->n & 3);
  const uint32_t place = i->n >> 2;
  if (kind != kSlot) LoadOperand(x, slot, kind, i->b, L);
  if (slot.type >= VT_NEW_NAME && slot.type <= VT_NEW_ELEMENT) x.StandAt(S, i->k - 1u, i->at);
  x.bank[place].Assign(slot);
  const auto used = static_cast<int32_t>(x.argBase * limits::kArgumentsPerLevel + place + 1);
  x.i.highWater = std::max(x.i.highWater, used);
  VL_GO(i + 1);
}

template <Traces T, OperandKind B>
const Instruction* Argument(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  CValue& argument = At(x.bank, i->offsetA);
  const CValue* value = Read<B>(i->b, i->offsetB, &slot, L);
  if (value->type <= VT_FLOAT && argument.IsPlain() && (T == kNoTraces || B == kSlot || slot.IsPlain())) [[likely]] {
    PutNumber(argument, *value);
    if (T == kAllTraces && B != kSlot) PutNumber(slot, *value);
    VL_GO(i + 1);
  }
  return ArgumentSlow(x, i, S, L);
}

// A member of a class on the object; where the cursor went on behind an event, so do we.
const Instruction* RunMember(CExecutor& x, const Instruction* i, CValue* S, CValue* L, CIBaseClassImpl& object,
                             const MemberRow& row, uint32_t id, uint32_t level, uint32_t count) {
  x.Invoke(object, row, id, level, count);
  if (i->target.target && x.i.readCursor != x.i.At(i->at)) VL_GO(i->target.target);
  VL_GO(i + 1);
}

[[noreturn]] void RaiseNotPart(CExecutor& x, const CIBaseClassImpl& object, Token token) {
  x.i.RaiseError(ERR_UNKNOWN_MEMBER, kNoArgument,
                 std::string(object.classInfo->name) + "." + x.i.NameOf(token) + " isn't part of this player yet");
}

// The object whose member comes next; null when it is a text, which then lies in the slot.
CIBaseClassImpl* ObjectOf(CExecutor& x, MemberFrom from, CValue* S, uint32_t k) {
  CValue& slot = S[k];
  switch (from) {
    case MemberFrom::This:
      slot.ForgetTarget();
      return x.i.thisObject;
    case MemberFrom::CurWindow:
      slot.ForgetTarget();
      return x.i.currentWindow;
    case MemberFrom::SlotText:
      return nullptr;
    case MemberFrom::Inner:
      return slot.type == VT_OBJECT ? slot.data.object : nullptr;
    case MemberFrom::Source:
      break;
  }
  const CValue& source = *x.source;
  if (source.type == VT_OBJECT) {
    if (!source.data.object) x.i.RaiseError(ERR_NULL_OBJECT);
    return source.data.object;
  }
  if (source.type != VT_STRING) x.i.RaiseError(ERR_NO_MEMBERS);
  slot.Assign(source);
  return nullptr;
}

}  // namespace

Handler ArgumentOf(Traces traces, OperandKind b) {
#define VL_ARGUMENT(T) \
  { Argument<T, kLocal>, Argument<T, kName>, Argument<T, kConstant>, Argument<T, kSlot> }
  static constexpr Handler kTable[kTraceKinds][4] = {VL_ARGUMENT(kNoTraces), VL_ARGUMENT(kObjectTraces),
                                                     VL_ARGUMENT(kAllTraces)};
  return kTable[traces][b];
}

const Instruction* CheckLevel(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  if (x.argBase + i->n >= limits::kArgumentLevels) {
    x.StandAt(S, i->k, i->at);
    x.i.RaiseError(ERR_TOO_MANY, kNoArgument, "argument lists nested more than 16 deep");
  }
  VL_GO(i + 1);
}

namespace {

VL_NOINLINE const Instruction* CallBeginSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const NameInfo& name = *i->a.name;
  CValue& slot = S[i->k];
  const CVariable* variable = nullptr;
  if (x.i.thisObject != &x.i) variable = x.i.thisObject->variables.Find(name.nameId);
  if (!variable) variable = *name.cell;
  if (variable->type != VT_FUNCTION) {
    x.StandAt(S, i->k, i->at);
    x.i.RaiseNoFunction(x.i.At(i->at), variable == &x.absent ? nullptr : variable);
  }
  slot.ForgetTarget();
  const CodeKind kind = x.i.thisObject == &x.i ? CodeKind::Function : CodeKind::Method;
  const Code* callee = x.CodeOf(*variable->data.function, kind);
  if (!callee) x.i.RaiseError(ERR_INTERNAL);
  slot.lvalue = reinterpret_cast<CValue*>(const_cast<Code*>(callee));
  if (kind == CodeKind::Function) {
    auto* known = const_cast<Instruction*>(i);
    known->b.pointer = variable->data.function;
    known->target.pointer = callee;
  }
  VL_GO(i + 1);
}

VL_NOINLINE const Instruction* CallEndSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  const auto& callee = *reinterpret_cast<const Code*>(slot.lvalue);
  const uint32_t level = x.argBase + (i->n >> 8);
  const uint32_t count = i->n & 0xFF;
  x.StandAt(S, i->k, i->at);
  x.i.argCounts[level] = static_cast<int32_t>(count);
  slot.SetInt(0);
  slot.lvalue = nullptr;
  const Instruction* first =
      x.Enter(*callee.block, callee.kind, *x.i.thisObject, nullptr, &slot, i + 1, level, count, false);
  VL_GO_ANEW(first);
}

}  // namespace

// The function waits where the slot keeps its target: a value that isn't there yet has none.
const Instruction* CallBegin(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CVariable* variable = *i->a.name->cell;
  CValue& slot = S[i->k];
  // As the last time: the same function of the program's own.
  if (variable->type == VT_FUNCTION && variable->data.function == i->b.pointer && x.i.thisObject == &x.i &&
      slot.type <= VT_FLOAT) [[likely]] {
    slot.lvalue = static_cast<CValue*>(const_cast<void*>(i->target.pointer));
    VL_GO(i + 1);
  }
  return CallBeginSlow(x, i, S, L);
}

const Instruction* CallEnd(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  const auto& callee = *reinterpret_cast<const Code*>(slot.lvalue);
  const uint32_t level = x.argBase + (i->n >> 8);
  const uint32_t count = i->n & 0xFF;
  if (!slot.IsPlain()) [[unlikely]]
    return CallEndSlow(x, i, S, L);
  const Instruction* first = x.EnterPlain(callee, &slot, i + 1, level, count);
  if (!first) [[unlikely]]
    return CallEndSlow(x, i, S, L);
  x.i.argCounts[level] = static_cast<int32_t>(count);
  PutInteger(slot, 0);
  slot.lvalue = nullptr;
  VL_GO_ANEW(first);
}

const Instruction* NewScriptBegin(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CVariable* variable = *i->a.name->cell;
  x.StandAt(S, i->k, i->at);
  if (variable->type != VT_FUNCTION) {
    x.i.RaiseError(ERR_UNKNOWN_FUNCTION, kNoArgument, "no function " + x.i.NameOf(x.i.At(i->at)));
  }
  CExecutor::Pending call;
  call.block = variable->data.function;
  auto* object = new CIBaseObjectVar(x.i, CIBaseClassImpl::Listing::Listed);
  object->Hold();
  ++object->pins;
  call.object = object;
  call.made = true;
  x.pending.push_back(call);
  VL_GO(i + 1);
}

const Instruction* NewScriptEnd(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  const uint32_t level = x.argBase + (i->n >> 8);
  const uint32_t count = i->n & 0xFF;
  x.StandAt(S, i->k, i->at);
  x.i.argCounts[level] = static_cast<int32_t>(count);
  const CExecutor::Pending call = x.pending.back();
  auto* object = static_cast<CIBaseObjectVar*>(call.object);
  slot.SetInt(0);
  slot.lvalue = nullptr;
  const Instruction* first = x.Enter(*call.block, CodeKind::Method, *object, object, &slot, i + 1, level, count, true);
  // Now the frame holds it.
  x.pending.pop_back();
  VL_GO_ANEW(first);
}

const Instruction* NewClass(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const uint32_t level = x.argBase + (i->n >> 8);
  x.StandAt(S, i->k, i->at);
  x.i.argDepth = level;
  x.i.argCounts[level] = i->n & 0xFF;
  x.Publish();
  x.i.MakeClassObject(static_cast<uint16_t>(i->a.number));
  x.i.argDepth = x.argBase;
  x.Adopt();
  VL_GO(i + 1);
}

namespace {

VL_NOINLINE const Instruction* FixedCallSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const auto& row = *static_cast<const MemberRow*>(i->a.pointer);
  auto& object = *static_cast<CIBaseClassImpl*>(const_cast<void*>(i->b.pointer));
  x.StandAt(S, i->k, i->at);
  S[i->k].ForgetTarget();
  return RunMember(x, i, S, L, object, row, row.id, x.argBase + (i->n >> 8), i->n & 0xFF);
}

}  // namespace

const Instruction* FixedCall(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const auto& row = *static_cast<const MemberRow*>(i->a.pointer);
  CValue& slot = S[i->k];
  const uint32_t nest = i->n >> 8;
  const uint32_t count = i->n & 0xFF;
  if (row.onNumbers && slot.IsPlain() &&
      row.onNumbers(x.bank + nest * limits::kArgumentsPerLevel, static_cast<int>(count), slot)) {
    x.i.argCounts[x.argBase + nest] = static_cast<int32_t>(count);
    slot.lvalue = nullptr;
    VL_GO(i + 1);
  }
  return FixedCallSlow(x, i, S, L);
}

const Instruction* ThisValue(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  slot.ForgetTarget();
  slot.SetObject(x.i.thisObject);
  slot.lvalue = nullptr;
  VL_GO(i + 1);
}

// `n`: only looks whether there is one.
const Instruction* WindowValue(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  slot.ForgetTarget();
  if (!x.i.currentWindow) {
    x.StandAt(S, i->k, i->at);
    x.i.RaiseError(ERR_NO_WINDOW);
  }
  if (!i->n) slot.SetObject(x.i.currentWindow);
  slot.lvalue = nullptr;
  VL_GO(i + 1);
}

// A member behind a parenthesis: its value must be an object, which the slot then keeps alive, or a text.
const Instruction* InnerMember(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue& slot = S[i->k];
  CValue& inner = S[i->k + 1];
  slot.ForgetTarget();
  if (inner.type == VT_OBJECT) {
    x.StandAt(S, i->k, i->at);
    slot.SetObject(inner.GetObjectNotNull());
    slot.lvalue = nullptr;
    VL_GO(i + 1);
  }
  if (inner.type == VT_STRING) {
    slot.Assign(inner);
    VL_GO(i + 1);
  }
  CExecutor::SwapSlots(slot, inner);
  VL_GO(i->target.target);
}

namespace {

VL_NOINLINE void BeginMemberCall(CExecutor& x, const Instruction* i, CValue* S) {
  const uint32_t k = i->k;
  const Token token = x.i.At(i->at);
  if (i->b.pointer) {
    const auto from = static_cast<MemberFrom>(i->n);
    const CValue& text = from == MemberFrom::Source ? *x.source : S[k];
    if (from != MemberFrom::This && from != MemberFrom::CurWindow && text.type == VT_STRING) {
      BeginTextCall(x, i, S);
      return;
    }
  }
  x.StandAt(S, k, i->at);
  CIBaseClassImpl* object = ObjectOf(x, static_cast<MemberFrom>(i->n), S, k);
  if (!object) {
    x.i.RequireTexts();
    x.BeginText(S[k]);
    CExecutor::Pending& call = x.pending.back();
    call.row = x.Resolve(*call.object, token, call.id);
    S[k].ForgetTarget();
    return;
  }
  CExecutor::Pending call;
  if (object->classInfo) {
    call.row = x.Resolve(*object, token, call.id);
    S[k].ForgetTarget();
  } else {
    const CVariable* variable = static_cast<CIBaseObjectVar*>(object)->variables.Find(TokenNameId(token));
    if (!variable || variable->type != VT_FUNCTION) x.i.RaiseNoFunction(token, variable);
    call.block = variable->data.function;
    S[k].ForgetTarget();
  }
  ++object->pins;
  call.object = object;
  x.pending.push_back(call);
}

void EndClassCall(CExecutor& x, const Instruction* i, CValue* S, const CExecutor::Pending& call, Token token) {
  const uint32_t level = x.argBase + (i->n >> 8);
  const uint32_t count = i->n & 0xFF;
  x.i.argCounts[level] = static_cast<int32_t>(count);
  if (call.object->destroyed) x.i.RaiseError(ERR_NULL_OBJECT);
  if (call.row && call.row->function) {
    x.Invoke(*call.object, *call.row, call.id, level, count);
  } else if (call.row && call.row->kind == MemberKind::Constant) {
    SetConstant(S[i->k], *call.row);
  } else {
    RaiseNotPart(x, *call.object, token);
  }
  x.pending.pop_back();
  if (call.text) {
    x.EndText(call);
  } else {
    x.i.Unpin(call.object);
  }
}

}  // namespace

const Instruction* MemberCallBegin(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  BeginMemberCall(x, i, S);
  VL_GO(i + 1);
}

namespace {

VL_NOINLINE const Instruction* EndMemberCall(CExecutor& x, const Instruction* i, CValue* S) {
  if (!x.pending.back().object && EndTextCall(x, i, S)) return i + 1;
  const CExecutor::Pending call = x.pending.back();
  x.StandAt(S, i->k, i->at);
  if (call.block) {
    CValue& slot = S[i->k];
    const uint32_t level = x.argBase + (i->n >> 8);
    const uint32_t count = i->n & 0xFF;
    x.i.argCounts[level] = static_cast<int32_t>(count);
    slot.SetInt(0);
    slot.lvalue = nullptr;
    auto* object = static_cast<CIBaseObjectVar*>(call.object);
    const CodeKind kind = object == &x.i ? CodeKind::Function : CodeKind::Method;
    const Instruction* first = x.Enter(*call.block, kind, *object, object, &slot, i + 1, level, count, false);
    x.pending.pop_back();
    return first;
  }
  EndClassCall(x, i, S, call, x.i.At(static_cast<uint32_t>(i->a.number)));
  return i->target.target && x.i.readCursor != x.i.At(i->at) ? i->target.target : i + 1;
}

}  // namespace

const Instruction* MemberCallEnd(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const Instruction* next = EndMemberCall(x, i, S);
  VL_GO_ANEW(next);
}

namespace {

VL_NOINLINE const Instruction* GetMember(CExecutor& x, const Instruction* i, CValue* S) {
  const uint32_t k = i->k;
  const Token token = x.i.At(i->at);
  const bool assigns = i->n & 0x100;
  const bool chains = i->n & 0x200;
  x.StandAt(S, k, i->at);
  CIBaseClassImpl* object = ObjectOf(x, static_cast<MemberFrom>(i->n & 0xFF), S, k);
  CValue& slot = S[k];
  if (object && !object->classInfo) {
    CVariable* variable = static_cast<CIBaseObjectVar*>(object)->variables.Find(TokenNameId(token));
    if (variable) {
      if (chains) {
        x.source = variable;
        return i + 1;
      }
      slot.Assign(*variable);
      slot.lvalue = variable;
      return i + 1;
    }
    x.i.readCursor = TokenNext(token);
    slot.SetNewOfObject(VT_NEW_MEMBER, x.i.OffsetOf(token), object);
    if (!assigns) x.i.RaiseError(ERR_UNDEFINED, kNoArgument, "the object has no " + x.i.NameOf(token));
    return i + 1;
  }
  if (!object) {
    x.i.RequireTexts();
    x.BeginText(slot);
    object = x.pending.back().object;
  }
  uint32_t id = 0;
  const MemberRow* row = x.Resolve(*object, token, id);
  const Token behind = TokenNext(token);
  x.i.readCursor = behind;
  slot.ForgetTarget();
  const uint32_t level = x.argBase + static_cast<uint32_t>(i->a.number);
  if (level >= limits::kArgumentLevels) x.i.RaiseError(ERR_TOO_MANY);
  const bool isText = !x.pending.empty() && x.pending.back().text && x.pending.back().object == object;
  if (row && row->function) {
    x.Invoke(*object, *row, id, level, 0);
  } else if (row && row->kind == MemberKind::Constant) {
    x.i.argCounts[level] = 0;
    SetConstant(slot, *row);
  } else {
    RaiseNotPart(x, *object, token);
  }
  if (isText) {
    const CExecutor::Pending call = x.pending.back();
    x.pending.pop_back();
    x.EndText(call);
  }
  // Behind a member of a class the evaluation ends at a further member, and behind an event's assignment.
  return chains || (assigns && x.i.readCursor != behind) ? i->target.target : i + 1;
}

}  // namespace

namespace {

// Looks the variable up, notes its place for the next time, and reads a number. What is read otherwise is for the
// instructions behind; a number goes on at the one `Behind`.
template <int Behind>
VL_NOINLINE const Instruction* FindMember(CExecutor& x, const Instruction* i, CValue* S, CValue* L,
                                          const CVarTable& table) {
  CVariable* variable = table.Find(static_cast<uint32_t>(i->b.number));
  if (variable) const_cast<Instruction*>(i)->n = static_cast<uint16_t>(table.PlaceOf(variable));
  CValue& slot = S[i->k];
  if (!variable || variable->type > VT_FLOAT || !slot.IsPlain()) VL_GO(i + 1);
  PutNumber(slot, *variable);
  slot.lvalue = variable;
  VL_GO(i + Behind);
}

template <int Behind>
VL_ALWAYS_INLINE const Instruction* ReadMember(CExecutor& x, const Instruction* i, CValue* S, CValue* L,
                                               const CVarTable& table) {
  CValue& slot = S[i->k];
  CVariable* variable = table.Made(i->n, static_cast<uint32_t>(i->b.number));
  if (!variable || (variable->type | slot.type) > VT_FLOAT) [[unlikely]]
    return FindMember<Behind>(x, i, S, L, table);
  PutNumber(slot, *variable);
  slot.lvalue = variable;
  VL_GO(i + Behind);
}

template <OperandKind N>
const Instruction* MemberRead(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const CValue* source = Read<N>(i->a, i->offsetA, nullptr, L);
  if (source->type != VT_OBJECT || !source->data.object || source->data.object->classInfo) [[unlikely]]
    VL_GO(i + 1);
  return ReadMember<3>(x, i, S, L, static_cast<const CIBaseObjectVar*>(source->data.object)->variables);
}

VL_NOINLINE const Instruction* LoadOwnSlow(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  x.LoadName(S[i->k], *i->a.name, L);
  VL_GO(i + 1);
}

}  // namespace

// `This.variable` in a method: passes over the instruction behind it, which does the same for anything else.
const Instruction* OwnMember(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  return ReadMember<2>(x, i, S, L, x.i.thisObject->variables);
}

// A name in a method that may be a variable of its object.
const Instruction* LoadOwn(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  CValue* variable = &At(L, i->offsetA);
  CValue& slot = S[i->k];
  if (variable->type == VT_NEW_NAME) {
    const NameInfo& name = *i->a.name;
    const CVarTable& table = x.i.thisObject->variables;
    variable = table.Made(i->n, name.nameId);
    if (!variable) [[unlikely]] {
      CVariable* found = table.Find(name.nameId);
      if (found) const_cast<Instruction*>(i)->n = static_cast<uint16_t>(table.PlaceOf(found));
      return LoadOwnSlow(x, i, S, L);
    }
  }
  if ((variable->type | slot.type) > VT_FLOAT) [[unlikely]]
    return LoadOwnSlow(x, i, S, L);
  PutNumber(slot, *variable);
  slot.lvalue = variable;
  VL_GO(i + 1);
}

Handler MemberReadOf(OperandKind name) { return name == kLocal ? MemberRead<kLocal> : MemberRead<kName>; }

const Instruction* MemberGet(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const Instruction* next = GetMember(x, i, S);
  VL_GO(next);
}

const Instruction* MemberElementOf(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const uint32_t k = i->k;
  const Token token = x.i.At(i->at);
  x.StandAt(S, k, i->at);
  CIBaseClassImpl* object = ObjectOf(x, static_cast<MemberFrom>(i->n & 0xFF), S, k);
  if (!object || object->classInfo) {
    if (!object) x.i.RequireTexts();
    x.i.RaiseError(ERR_SYNTAX);
  }
  CValue& slot = S[k];
  if (CVariable* variable = static_cast<CIBaseObjectVar*>(object)->variables.Find(TokenNameId(token))) {
    slot.SetInt(0);
    slot.lvalue = variable;
    VL_GO(i + 1);
  }
  slot.SetNewOfObject(VT_NEW_MEMBER_ARRAY, x.i.OffsetOf(token), object);
  if (!(i->n & 0x100)) {
    x.i.readCursor = x.i.At(static_cast<uint32_t>(i->a.number));
    x.i.RaiseError(ERR_UNDEFINED);
  }
  VL_GO(i->target.target);
}

}  // namespace vl::handlers
