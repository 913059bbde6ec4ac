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

// What the walk would leave in the slots are numbers: an object that lies there goes.
VL_NOINLINE const Instruction* FreeSlots(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  for (uint32_t k = 1; k <= i[1].n; ++k) S[k].SetInt(0);
  VL_GO(i);
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

template <TermForm F, uint16_t First, uint16_t Second, typename N, typename O>
VL_ALWAYS_INLINE auto Calculate(const N& a, const N& b, const N& c, const O& on) {
  if constexpr (F == TermForm::Two) {
    return on.template operator()<First>(a, b);
  } else if constexpr (F == TermForm::RightFirst) {
    return on.template operator()<First>(a, on.template operator()<Second>(b, c));
  } else {
    return on.template operator()<Second>(on.template operator()<First>(a, b), c);
  }
}

template <TermForm F>
constexpr int kSlotsOf = F == TermForm::One          ? 2
                         : F == TermForm::RightFirst ? 4
                                                     : 3;

template <int Count>
VL_ALWAYS_INLINE bool ArePlain(const CValue* S) {
  int types = S[1].type | S[2].type;
  if (Count > 2) types |= S[3].type;
  if (Count > 3) types |= S[4].type;
  if (types <= VT_FLOAT) [[likely]]
    return true;
  return S[1].IsPlain() && S[2].IsPlain() && (Count < 3 || S[3].IsPlain()) && (Count < 4 || S[4].IsPlain());
}

// `target = a`, `target = a op b`, `target = a op (b op c)` and `target = (a op b) op c`, by the operators' precedence.
template <Traces T, TermForm F, uint16_t First, uint16_t Second, TermTarget K>
const Instruction* Terms(CExecutor& x, const Instruction* i, CValue* S, CValue* L) {
  const uint32_t kinds = i->n;
  CValue* target = K == TermTarget::Made   ? &At(L, i->offsetTarget)
                   : K == TermTarget::Name ? Read<kName>(i->target, i->offsetTarget, nullptr, L)
                                           : FindMember(*i->target.member, L);
  const CValue* a = K == TermTarget::First ? target : ReadTerm(kinds >> 2 & 3, i->a, i->offsetA, L);
  const CValue* b = F == TermForm::One ? a : ReadTerm(kinds >> 4 & 3, i->b, i->offsetB, L);
  const CValue* c = F <= TermForm::Two ? b : ReadTerm(kinds >> 6 & 3, i[1].a, i[1].offsetA, L);
  if (!target || !a || !b || !c) [[unlikely]]
    return NotePlaces(x, i, S, L);
  const int types = a->type | b->type | c->type;
  if (types > VT_FLOAT) [[unlikely]]
    VL_GO(i + 2);
  if (target->type > VT_FLOAT && !(K == TermTarget::Made && target->type == VT_NEW_NAME)) [[unlikely]]
    VL_GO(i + 2);
  if (T != kNoTraces && !ArePlain<kSlotsOf<F>>(S)) [[unlikely]]
    return FreeSlots(x, i, S, L);
  if (K == TermTarget::Made && target->type == VT_NEW_NAME) target->level = i->k;
  if constexpr (F == TermForm::One) {
    PutNumber(*target, *a);
  } else if ((a->type & b->type & c->type) == VT_FLOAT) {
    const double result = Calculate<F, First, Second>(
        a->data.real, b->data.real, c->data.real, []<uint16_t Op>(double u, double v) { return Arithmetic<Op>(u, v); });
    PutReal(*target, result);
  } else {
    const Number result =
        Calculate<F, First, Second>(Number{a->type, a->data}, Number{b->type, b->data}, Number{c->type, c->data},
                                    []<uint16_t Op>(const Number& u, const Number& v) { return On<Op>(u, v); });
    target->type = result.type;
    target->data = result.data;
  }
  VL_END_STATEMENT(i + i->at);
}

template <Traces T, TermForm F, uint16_t First, uint16_t Second>
Handler TermsTo(TermTarget target) {
  static constexpr Handler kTable[] = {
      Terms<T, F, First, Second, TermTarget::Name>, Terms<T, F, First, Second, TermTarget::Made>,
      Terms<T, F, First, Second, TermTarget::Member>, Terms<T, F, First, Second, TermTarget::First>};
  return kTable[static_cast<int>(target)];
}

template <Traces T>
Handler TermsFor(TermForm form, TermTarget target, uint16_t first, uint16_t second) {
  switch (form) {
    case TermForm::One:
      return TermsTo<T, TermForm::One, TK_ADD, TK_ADD>(target);
    case TermForm::Two:
      return first == TK_ADD   ? TermsTo<T, TermForm::Two, TK_ADD, TK_ADD>(target)
             : first == TK_SUB ? TermsTo<T, TermForm::Two, TK_SUB, TK_ADD>(target)
                               : TermsTo<T, TermForm::Two, TK_MUL, TK_ADD>(target);
    case TermForm::RightFirst:
      return first == TK_ADD ? TermsTo<T, TermForm::RightFirst, TK_ADD, TK_MUL>(target)
                             : TermsTo<T, TermForm::RightFirst, TK_SUB, TK_MUL>(target);
    default:
      return second == TK_ADD ? TermsTo<T, TermForm::LeftFirst, TK_MUL, TK_ADD>(target)
                              : TermsTo<T, TermForm::LeftFirst, TK_MUL, TK_SUB>(target);
  }
}

}  // namespace

Handler TermsOf(Traces traces, TermForm form, TermTarget target, uint16_t first, uint16_t second) {
  return traces == kNoTraces ? TermsFor<kNoTraces>(form, target, first, second)
                             : TermsFor<kObjectTraces>(form, target, first, second);
}

}  // namespace vl::handlers
