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
  const uint32_t subscriptAt = at_;
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
      const uint32_t flags = ElementUse(behind, k, e);
      // Nothing that waits can change before it is needed.
      if (x_.traces == kAllTraces || flags & kMemberFollows) FlushOperands(e);
      if (e.use == Use::Statement && k == 1 && e.ops.size() == 1 && !inUnary_ && x_.traces != kAllTraces) {
        EmitShortcut(name, subscriptAt, behind);
      }
      at_ = behind;
      Value value;
      value.kind = name->sure ? kLocal : kName;
      value.name = name;
      Instruction& i = Emit(handlers::ElementAtOf(x_.traces, value.kind, subscript.kind), k,
                            flags | subscript.kind << 8 | value.kind << 12);
      SetA(i, value);
      SetB(i, subscript);
      if (flags & kMemberFollows) {
        Members(k, e, MemberFrom::Source);
        return;
      }
      PushSlot(k);
      if (flags & kAssignFollows) values_.back().lateToken = token;
      return;
    }
  }
  Flush();
  const uint32_t pair = Here();
  const bool isPair = isFree && !name->declared && EmitPair(k, e, name, first);
  const uint32_t unknown = Here();
  const bool assigns = KindAt(behind) == TK_ASSIGN;
  Instruction& i = Emit(handlers::ElementOf, k, assigns);
  i.a.name = name;
  i.at = behind;
  Subscripts(k, e, unknown, first, token);
  if (isPair) code_.instructions[pair].at = Here() - pair;
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
  const uint32_t flags = ElementUse(at_, k, e);
  Emit(handlers::ElementEnd, k, count | flags << 8);
  const uint32_t label = NewLabel();
  Bind(label);
  JumpToLabel(unknown, label);
  if (flags & kMemberFollows) {
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

namespace {

bool Assigns(uint16_t kind) {
  return (kind >= TK_ASSIGN && kind <= TK_SHR_ASSIGN) || kind == TK_INCREMENT || kind == TK_DECREMENT;
}

// A scan ahead ends with the safe answer after so many tokens: a source may hold one endless statement.
constexpr int kLookAhead = 200;

// What opens a bracket that has its own token for its end.
bool Opens(uint16_t kind, uint16_t before) {
  switch (kind) {
    case TK_PAREN_OPEN:
    case TK_CALL:
    case TK_MEMBER_CALL:
    case TK_ELEMENT:
    case TK_MEMBER_ELEMENT:
      return true;
    default:
      return before == TK_NEW;  // a class, with its arguments
  }
}

}  // namespace

uint32_t CCodeCompiler::ElementUse(uint32_t behind, uint16_t k, const Evaluation& e) const {
  const uint16_t kind = KindAt(behind);
  if (IsMemberToken(kind)) return kMemberFollows;
  const uint32_t flags = kind == TK_ASSIGN ? kAssignFollows : 0;
  if (!Assigns(kind)) return MayBeAssigned(behind) ? kPlaceWanted : 0;
  const bool isWhole = (e.use == Use::Statement || e.use == Use::Increment) && k == 1 && e.ops.size() == 1 &&
                       !inUnary_ && x_.traces != kAllTraces;
  return flags | (isWhole && RunsNoCode(Next(behind)) ? kPlaceByIndex : kPlaceWanted);
}

// Whether an operator that assigns may come to the value in front of `behind`, which then must know its place.
bool CCodeCompiler::MayBeAssigned(uint32_t behind) const {
  uint32_t depth = 0;
  uint32_t around = parentheses_;
  uint16_t before = 0;
  for (int t = 0; t < kLookAhead; ++t) {
    const uint16_t kind = KindAt(behind);
    if (kind == TK_SEMICOLON || kind == TK_END) return false;
    if (depth == 0 && Assigns(kind)) return true;
    if (Opens(kind, before)) {
      ++depth;
    } else if (kind == TK_PAREN_CLOSE || kind == TK_BRACKET_CLOSE) {
      if (depth > 0) {
        --depth;
      } else if (kind == TK_PAREN_CLOSE && around > 0) {
        --around;
      } else {
        return false;
      }
    } else if (kind == TK_COMMA && depth == 0) {
      return false;
    }
    before = kind;
    behind = Next(behind);
  }
  return true;
}

// Whether the rest of the statement only reads: then an element that it assigns to may be found by its index behind
// it as well as in front.
bool CCodeCompiler::RunsNoCode(uint32_t at) const {
  uint32_t depth = 0;
  uint16_t before = 0;
  for (int t = 0; t < kLookAhead; ++t) {
    const uint16_t kind = KindAt(at);
    if (kind == TK_SEMICOLON) return depth == 0;
    if (Assigns(kind)) return false;
    switch (kind) {
      case TK_MEMBER_CALL:
        if (before != CLASS_MATH) return false;
        ++depth;
        break;
      case TK_MEMBER:
        if (before != CLASS_MATH && IsClassMember(at)) return false;
        break;
      case TK_MEMBER_ELEMENT:
      case TK_PAREN_OPEN:
      case TK_ELEMENT:
        ++depth;
        break;
      case TK_PAREN_CLOSE:
      case TK_BRACKET_CLOSE:
        if (depth == 0) return kind == TK_PAREN_CLOSE;
        --depth;
        break;
      case TK_NAME:
      case TK_THIS:
      case TK_COMMA:
      case CLASS_MATH:
        break;
      default:
        if (kind < TK_DECIMAL || (kind > TK_OFF && kind < TK_CONDITIONAL) || kind > TK_SHR) return false;
    }
    before = kind;
    at = Next(at);
  }
  return false;
}

// Whether anything is assigned to in the rest of the statement.
bool CCodeCompiler::AssignsBehind(uint32_t at) const {
  for (int t = 0; t < kLookAhead; ++t) {
    const uint16_t kind = KindAt(at);
    if (kind == TK_SEMICOLON) return false;
    if (Assigns(kind) || kind == TK_END) return true;
    at = Next(at);
  }
  return true;
}

// Whether any class in use has a member of that name.
bool CCodeCompiler::IsClassMember(uint32_t token) const {
  const std::string& name = i_.NameOf(i_.At(token));
  for (uint32_t id = 1; id <= kClassCount; ++id) {
    const CIClassInfo* info = i_.ClassInfo(id);
    if (info && info->keywords->Find(name)) return true;
  }
  return false;
}

// A number, or a name whose variable is found quickly.
bool CCodeCompiler::IsPlainOperand(uint32_t at) {
  switch (KindAt(at)) {
    case TK_DECIMAL:
    case TK_BASED:
    case TK_INTEGER:
    case TK_FLOAT:
      return true;
    case TK_NAME: {
      const NameInfo* name = NameAt(at);
      return !name->declared && (code_.kind != CodeKind::Method || name->sure);
    }
    default:
      return false;
  }
}

CCodeCompiler::Value CCodeCompiler::PlainOperand(uint32_t at) {
  Value value;
  if (KindAt(at) == TK_NAME) {
    value.name = NameAt(at);
    value.kind = value.name->sure ? kLocal : kName;
    return value;
  }
  CValue number(&i_);
  if (KindAt(at) == TK_FLOAT) {
    number.SetFloat(TokenFloat(i_.At(at)));
  } else {
    number.SetInt(static_cast<int32_t>(TokenWord(i_.At(at))));
  }
  value.kind = kConstant;
  value.constant = NumberConstant(number);
  return value;
}

void CCodeCompiler::SetTarget(Instruction& i, const Value& value) {
  if (value.kind == kConstant) {
    i.target.constant = value.constant;
  } else {
    i.target.name = value.name;
    i.offsetTarget = value.name->offset;
  }
}

// In front of a statement that assigns to `name[subscript]`: one instruction that does the whole of it on numbers, and
// goes on to the others for anything else.
void CCodeCompiler::EmitShortcut(NameInfo* name, uint32_t subscript, uint32_t behind) {
  const uint16_t op = KindAt(behind);
  Value array;
  array.name = name;
  array.kind = name->sure ? kLocal : kName;
  if (name->declared || (code_.kind == CodeKind::Method && !name->sure) || !Assigns(op)) return;
  const uint32_t at = Next(behind);
  uint16_t second = 0;
  Value left;
  Value right;
  if (op == TK_INCREMENT || op == TK_DECREMENT) {
    if (KindAt(at) != TK_SEMICOLON) return;
    CValue one(&i_);
    one.SetInt(1);
    left.kind = kConstant;
    left.constant = NumberConstant(one);
  } else {
    if (!IsPlainOperand(at)) return;
    uint32_t end = Next(at);
    if (KindAt(end) != TK_SEMICOLON) {
      second = KindAt(end);
      if (op != TK_ASSIGN || !handlers::HasElementForm(second)) return;
      const uint32_t last = Next(end);
      end = Next(last);
      if (!IsPlainOperand(last) || KindAt(end) != TK_SEMICOLON) return;
      right = PlainOperand(last);
    } else if (op != TK_ASSIGN && !handlers::HasElementForm(op)) {
      return;
    }
    left = PlainOperand(at);
  }
  const Value index = PlainOperand(subscript);
  const bool isSure = array.kind == kLocal && index.kind != kName && left.kind != kName && right.kind != kName;
  const uint16_t reduced = second ? second : op;
  shortcut_ = Here();
  Instruction& i = Emit(handlers::ElementStoreOf(x_.traces, reduced, isSure ? kLocal : kName, index.kind == kConstant,
                                                 left.kind == kConstant, second && right.kind == kConstant),
                        1, second ? 2 : 1);
  SetA(i, array);
  SetB(i, index);
  SetTarget(i, left);
  if (second) {
    Instruction& more = Emit(handlers::Jump, 1);
    SetA(more, right);
  }
}

// In front of the reading of `name[i, j]`: one instruction that does it where both are integers.
bool CCodeCompiler::EmitPair(uint16_t k, const Evaluation& e, NameInfo* name, uint32_t first) {
  const uint32_t comma = Next(at_);
  if (x_.traces == kAllTraces || KindAt(comma) != TK_COMMA || Next(Next(comma)) != first) return false;
  if (!IsPlainOperand(at_) || !IsPlainOperand(Next(comma)) || KindAt(at_) == TK_FLOAT ||
      KindAt(Next(comma)) == TK_FLOAT) {
    return false;
  }
  const uint32_t flags = ElementUse(Next(first), k, e);
  if (flags & (kMemberFollows | kPlaceWanted)) return false;
  Value array;
  array.name = name;
  array.kind = name->sure ? kLocal : kName;
  const Value one = PlainOperand(at_);
  const Value two = PlainOperand(Next(comma));
  Instruction& i = Emit(handlers::ElementAtPair, k, flags | array.kind << 8 | one.kind << 10 | two.kind << 12);
  SetA(i, array);
  SetB(i, one);
  SetTarget(i, two);
  return true;
}

}  // namespace vl
