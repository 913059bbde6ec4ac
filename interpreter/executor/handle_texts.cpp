// Operators and members of texts without the String and the copies that the plain walk makes for them.
#include "interpreter/executor/numbers.h"
#include "interpreter/number_text.h"

namespace vl::handlers {

namespace {

// A text, or a number as it is joined and compared. False for anything else.
bool ViewOf(const CValue& value, std::span<char> buffer, std::string_view& view) {
  switch (value.type) {
    case VT_STRING:
      view = value.StringView();
      return true;
    case VT_INTEGER:
      view = {buffer.data(), FormatInteger(value.data.integer, buffer)};
      return true;
    case VT_FLOAT:
      view = {buffer.data(), FormatDouble(value.data.real, buffer)};
      return true;
    default:
      return false;
  }
}

// The walk would leave numbers or texts in these slots. That is seen by nobody, unless an object goes by it.
bool AreFree(const CExecutor& x, const CValue* slots, int count) {
  if (x.traces == kNoTraces) return true;
  if (x.traces == kAllTraces) return false;
  for (int s = 0; s < count; ++s) {
    if (!slots[s].IsPlain() && slots[s].type != VT_STRING) return false;
  }
  return true;
}

bool HoldsOrder(uint16_t op, int order) {
  switch (op) {
    case TK_GREATER_EQUAL:
      return order >= 0;
    case TK_LESS_EQUAL:
      return order <= 0;
    case TK_EQUAL:
      return order == 0;
    case TK_LESS:
      return order < 0;
    case TK_GREATER:
      return order > 0;
    default:
      return order != 0;
  }
}

bool Compare(uint16_t op, const CValue& left, const CValue& right, bool& holds) {
  char buffer[CInterpretor::kTemporaryBytes];
  std::string_view a;
  std::string_view b;
  if ((left.type != VT_STRING && right.type != VT_STRING) || !ViewOf(left, buffer, a) || !ViewOf(right, buffer, b)) {
    return false;
  }
  if (op == TK_EQUAL || op == TK_NOT_EQUAL) {
    holds = (a == b) == (op == TK_EQUAL);
  } else {
    holds = HoldsOrder(op, a.compare(b));
  }
  return true;
}

// The text in `to` and what `right` is. `to` may be any value; false, and unchanged, when there is no memory.
bool Append(CExecutor& x, CValue& to, std::string_view right) {
  Text text = Text::Adopt(to.data.text);
  const bool fits = text.Append(right, &x.i.budget);
  to.data.text = text.Detach();
  return fits;
}

bool Join(CExecutor& x, CValue& slot, const CValue& left, const CValue& right) {
  char buffer[CInterpretor::kTemporaryBytes];
  std::string_view b;
  if (left.type == VT_STRING) {
    if (!left.data.text || (right.type == VT_STRING && !right.data.text) || !ViewOf(right, buffer, b)) return false;
    if (&left == &slot) return Append(x, slot, b);
    Text text = Text::Share(left.data.text);
    if (!text.Append(b, &x.i.budget)) return false;
    slot.SetTextBlock(text.Detach());
    return true;
  }
  std::string_view a;
  if (right.type != VT_STRING || !right.data.text || !ViewOf(left, buffer, a)) return false;
  Text text;
  if (!text.Assign(a, &x.i.budget) || !text.Append(right.StringView(), &x.i.budget)) return false;
  slot.SetTextBlock(text.Detach());
  return true;
}

}  // namespace

bool ReduceTexts(CExecutor& x, const Instruction* i, CValue* S, CValue* L, uint32_t k, uint16_t op, OperandKind a,
                 OperandKind b) {
  CValue& slot = S[k];
  const CValue& left = *ReadAny(a, i->a, i->offsetA, &slot, L);
  const CValue& right = *ReadAny(b, i->b, i->offsetB, &S[k + 1], L);
  if ((left.type != VT_STRING && right.type != VT_STRING) || !AreFree(x, &slot, 2)) return false;
  if (op == TK_ADD) return Join(x, slot, left, right);
  bool holds;
  if (!IsComparison(op) || !Compare(op, left, right, holds)) return false;
  slot.SetInt(holds);
  return true;
}

bool DecideTexts(CExecutor& x, const Instruction* i, CValue* S, CValue* L, uint16_t op, OperandKind a, OperandKind b,
                 bool& holds) {
  const CValue& left = *ReadAny(a, i->a, i->offsetA, &S[1], L);
  const CValue& right = *ReadAny(b, i->b, i->offsetB, &S[2], L);
  return AreFree(x, S + 1, 2) && Compare(op, left, right, holds);
}

bool AppendToTarget(CExecutor& x, const Instruction* i, CValue* S, CValue* L, uint16_t op, OperandKind a,
                    OperandKind b) {
  if (op != TK_ADD || a == kSlot) return false;
  CValue* left = ReadAny(a, i->a, i->offsetA, nullptr, L);
  if (left->type != VT_STRING || !left->data.text || !AreFree(x, S + 1, 3)) return false;
  const CValue& right = *ReadAny(b, i->b, i->offsetB, &S[3], L);
  char buffer[CInterpretor::kTemporaryBytes];
  std::string_view view;
  if ((right.type == VT_STRING && !right.data.text) || !ViewOf(right, buffer, view)) return false;
  return x.FindName(*i->target.name, L) == left && Append(x, *left, view);
}

void MoveValue(CValue& target, CValue& slot) {
  if (slot.type != VT_STRING) {
    target.Assign(slot);
    return;
  }
  Text::Block* const text = slot.data.text;
  slot.type = VT_INTEGER;
  target.SetTextBlock(text);
}

// The text waits in the slot while the arguments are evaluated above it.
void BeginTextCall(CExecutor& x, const Instruction* i, CValue* S) {
  CValue& slot = S[i->k];
  if (static_cast<MemberFrom>(i->n) == MemberFrom::Source) slot.Assign(*x.source);
  slot.ForgetTarget();
  x.ReserveText();
  ++x.heldTexts;
  CExecutor::Pending call;
  call.row = static_cast<const MemberRow*>(i->b.pointer);
  call.id = call.row->id;
  x.pending.push_back(call);
}

bool EndTextCall(CExecutor& x, const Instruction* i, CValue* S) {
  const CExecutor::Pending call = x.pending.back();
  CValue& slot = S[i->k];
  const uint32_t nest = i->n >> 8;
  const uint32_t count = i->n & 0xFF;
  x.pending.pop_back();
  --x.heldTexts;
  if (call.row->onNumbers(x.bank + nest * limits::kArgumentsPerLevel, static_cast<int>(count), slot)) {
    x.i.argCounts[x.argBase + nest] = static_cast<int32_t>(count);
    return true;
  }
  x.BeginText(slot);
  x.pending.back().row = call.row;
  x.pending.back().id = call.id;
  return false;
}

}  // namespace vl::handlers
