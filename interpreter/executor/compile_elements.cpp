// Elements of arrays in the code compiler.
#include "interpreter/executor/code_compiler.h"
#include "interpreter/executor/handlers.h"

namespace vl {

void CCodeCompiler::PrimaryElement(uint16_t k, Evaluation& e) {
  const uint32_t token = at_;
  NameInfo* name = NameAt(token);
  MayMake(name);
  Step1();
  uint32_t first = at_;
  while (KindAt(first) != TK_BRACKET_CLOSE) {
    if (KindAt(first) == TK_END) {
      Fail();
      return;
    }
    first = Next(first);
  }
  const uint32_t behind = Next(first);
  // One subscript that runs no code.
  const uint16_t kind = Kind();
  const bool isSimple = (kind == TK_NAME || kind == TK_DECIMAL) && Next(at_) == first;
  const bool isFree = code_.kind != CodeKind::Method || name->sure;
  if (isSimple && isFree && !(name->declared && !name->isLocal)) {
    Value subscript;
    if (kind == TK_DECIMAL) {
      CValue number(&i_);
      number.SetInt(static_cast<int32_t>(TokenWord(i_.At(at_))));
      subscript.kind = kConstant;
      subscript.constant = NumberConstant(number);
    } else {
      subscript.name = NameAt(at_);
      subscript.kind = subscript.name->sure ? kLocal : kName;
    }
    if (code_.kind != CodeKind::Method || subscript.kind != kName) {
      FlushOperands(e);
      at_ = behind;
      Value value;
      value.kind = name->sure ? kLocal : kName;
      value.name = name;
      const uint32_t flags = (Kind() == TK_ASSIGN ? 1 : 0) | (IsMemberToken(Kind()) ? 2 : 0);
      Instruction& i =
          Emit(handlers::ElementAtOf(x_.traces, value.kind, subscript.kind), k, flags | subscript.kind << 8);
      SetA(i, value);
      SetB(i, subscript);
      if (flags & 2) {
        Members(k, e, MemberFrom::Source);
        return;
      }
      PushSlot(k);
      if (flags & 1) values_.back().lateToken = token;
      return;
    }
  }
  Flush();
  const uint32_t unknown = Here();
  const bool assigns = KindAt(behind) == TK_ASSIGN;
  Instruction& i = Emit(handlers::ElementOf, k, assigns);
  i.a.name = name;
  i.at = behind;
  Subscripts(k, e, unknown, first, token);
}

// The subscripts at the cursor and the element; `unknown` is the instruction that goes past both when there is no
// variable.
void CCodeCompiler::Subscripts(uint16_t k, Evaluation& e, uint32_t unknown, uint32_t first, uint32_t token) {
  const bool assigns = KindAt(Next(first)) == TK_ASSIGN;
  const uint32_t count = ReadSubscripts(k);
  if (failed_) return;
  // An unknown array's subscripts end at the first bracket. When that is another's, the walker would go on there.
  if (assigns && at_ != Next(first)) {
    Fail();
    return;
  }
  const uint32_t flags = (Kind() == TK_ASSIGN ? 1 : 0) | (IsMemberToken(Kind()) ? 2 : 0);
  Emit(handlers::ElementEnd, k, count | flags << 8);
  const uint32_t label = NewLabel();
  Bind(label);
  JumpToLabel(unknown, label);
  if (flags & 2) {
    Members(k, e, MemberFrom::Source);
    return;
  }
  PushSlot(k);
  if (assigns) values_.back().lateToken = token;
}

uint32_t CCodeCompiler::ReadSubscripts(uint16_t base) {
  for (uint32_t count = 1;; ++count) {
    Value value = EvaluateNested(base, Use::Subscript);
    if (failed_) return 0;
    FlushOne(value);
    Emit(handlers::Subscript, base);
    const uint16_t kind = Kind();
    Step1();
    if (kind == TK_BRACKET_CLOSE) return count;
    if (kind != TK_COMMA || count >= CArrayStore::kMaxDimensions) {
      Fail();
      return 0;
    }
  }
}

}  // namespace vl
