// Statements on numbers whose terms are variables of script objects.
#include "interpreter/executor/numbers.h"

namespace vl::handlers {

namespace {

// The variable that the term reads; null when there is none at the place where it was the last time.
VL_ALWAYS_INLINE CVariable* FindMember(const MemberInfo& member, CValue* L) {
  const CValue* source = &At(L, member.offset);
  if (source->type == VT_NEW_NAME) source = *member.cell;
  if (source->type != VT_OBJECT || !source->data.object || source->data.object->classInfo) return nullptr;
  return static_cast<const CIBaseObjectVar*>(source->data.object)->variables.Made(member.place, member.nameId);
}

VL_ALWAYS_INLINE CValue* ReadTerm(uint32_t kind, const Operand& operand, int64_t offset, CValue* L) {
  if (kind == kMemberTerm) return FindMember(*operand.member, L);
  return kind == kConstant ? const_cast<CValue*>(operand.constant) : Read<kName>(operand, offset, nullptr, L);
}

void NotePlace(uint32_t kind, const Operand& operand, CValue* L) {
  if (kind != kMemberTerm) return;
  const MemberInfo& member = *operand.member;
  const CValue* source = &At(L, member.offset);
  if (source->type == VT_NEW_NAME) source = *member.cell;
  if (source->type != VT_OBJECT || !source->data.object || source->data.object->classInfo) return;
  const CVarTable& table = static_cast<const CIBaseObjectVar*>(source->data.object)->variables;
  if (const CVariable* variable = table.Find(member.nameId)) member.place = table.PlaceOf(variable);
}

// Looks for all members anew, for the next time; this time the instructions behind do it.
VL_NOINLINE const Instruction* NotePlaces(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const uint32_t kinds = i->n;
  NotePlace(kinds & 3, i->target, L);
  NotePlace(kinds >> 2 & 3, i->a, L);
  NotePlace(kinds >> 4 & 3, i->b, L);
  NotePlace(kinds >> 6 & 3, i[1].a, L);
  VL_GO(i + 2);
}

struct Number {
  ValueType type;
  CValue::Data data;
};

template <uint16_t Op, typename A, typename B>
VL_ALWAYS_INLINE Number On(const A& a, const B& b) {
  Number result;
  if ((a.type | b.type) == VT_INTEGER) {
    result.type = VT_INTEGER;
    OnIntegers<Op>(a.data.integer, b.data.integer, result.data.integer);
    return result;
  }
  const double u = a.type == VT_FLOAT ? a.data.real : a.data.integer;
  const double v = b.type == VT_FLOAT ? b.data.real : b.data.integer;
  result.type = VT_FLOAT;
  result.data.real = Arithmetic<Op>(u, v);
  return result;
}

// `target = a`, `target = a op b`, `target = a op (b op c)` and `target = (a op b) op c`, by the operators' precedence.
template <Traces T, TermForm F, uint16_t First, uint16_t Second>
const Instruction* Terms(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const uint32_t kinds = i->n;
  CValue* target = kinds & kMakesTarget ? &At(L, i->offsetTarget) : ReadTerm(kinds & 3, i->target, i->offsetTarget, L);
  const CValue* a = ReadTerm(kinds >> 2 & 3, i->a, i->offsetA, L);
  const CValue* b = F == TermForm::One ? a : ReadTerm(kinds >> 4 & 3, i->b, i->offsetB, L);
  const CValue* c = F <= TermForm::Two ? a : ReadTerm(kinds >> 6 & 3, i[1].a, i[1].offsetA, L);
  if (!target || !a || !b || !c) [[unlikely]]
    return NotePlaces(x, i, S, L);
  if ((a->type | b->type | c->type) > VT_FLOAT) [[unlikely]]
    VL_GO(i + 2);
  if (target->type > VT_FLOAT && !(kinds & kMakesTarget && target->type == VT_NEW_NAME)) [[unlikely]]
    VL_GO(i + 2);
  if (T != kNoTraces && !(S[1].IsPlain() && S[2].IsPlain() && S[3].IsPlain() && S[4].IsPlain())) [[unlikely]]
    VL_GO(i + 2);
  if (kinds & kMakesTarget && target->type == VT_NEW_NAME) target->level = i->k;
  if constexpr (F == TermForm::One) {
    PutNumber(*target, *a);
  } else {
    Number result;
    if constexpr (F == TermForm::Two) {
      result = On<First>(*a, *b);
    } else if constexpr (F == TermForm::RightFirst) {
      result = On<First>(*a, On<Second>(*b, *c));
    } else {
      result = On<Second>(On<First>(*a, *b), *c);
    }
    target->type = result.type;
    target->data = result.data;
  }
  VL_END_STATEMENT(i + i->at);
}

template <Traces T>
Handler TermsFor(TermForm form, uint16_t first, uint16_t second) {
  switch (form) {
    case TermForm::One:
      return Terms<T, TermForm::One, TK_ADD, TK_ADD>;
    case TermForm::Two:
      return first == TK_ADD   ? Terms<T, TermForm::Two, TK_ADD, TK_ADD>
             : first == TK_SUB ? Terms<T, TermForm::Two, TK_SUB, TK_ADD>
                               : Terms<T, TermForm::Two, TK_MUL, TK_ADD>;
    case TermForm::RightFirst:
      return first == TK_ADD ? Terms<T, TermForm::RightFirst, TK_ADD, TK_MUL>
                             : Terms<T, TermForm::RightFirst, TK_SUB, TK_MUL>;
    default:
      return second == TK_ADD ? Terms<T, TermForm::LeftFirst, TK_MUL, TK_ADD>
                              : Terms<T, TermForm::LeftFirst, TK_MUL, TK_SUB>;
  }
}

}  // namespace

Handler TermsOf(Traces traces, TermForm form, uint16_t first, uint16_t second) {
  return traces == kNoTraces ? TermsFor<kNoTraces>(form, first, second) : TermsFor<kObjectTraces>(form, first, second);
}

}  // namespace vl::handlers
