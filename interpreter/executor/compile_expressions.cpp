// Expressions of the code compiler: operators, assignments, names and elements.
#include "interpreter/executor/code_compiler.h"
#include "interpreter/executor/handlers.h"

namespace vl {

namespace {

uint16_t PrecedenceOf(uint16_t kind) { return kind >= TK_OPERATOR_FIRST && kind <= TK_OPERATOR_LAST ? kind : 0; }
bool IsComparison(uint16_t op) { return op >= TK_GREATER_EQUAL && op <= TK_NOT_EQUAL; }
bool Assigns(uint16_t kind) {
  return (kind >= TK_ASSIGN && kind <= TK_SHR_ASSIGN) || kind == TK_INCREMENT || kind == TK_DECREMENT;
}

}  // namespace

void CCodeCompiler::Push(const Value& value) {
  values_.push_back(value);
  if (value.k + 3u > code_.slots) code_.slots = value.k + 3u;
}

void CCodeCompiler::PushSlot(uint16_t k) {
  Value value;
  value.k = k;
  Push(value);
}

void CCodeCompiler::PushInteger(uint16_t k, int32_t v) {
  CValue number(&i_);
  number.SetInt(v);
  Value value;
  value.kind = kConstant;
  value.k = k;
  value.constant = NumberConstant(number);
  Push(value);
}

void CCodeCompiler::PushConstant(uint16_t k, const MemberRow& row) {
  code_.constants.emplace_back(&i_);
  SetConstant(code_.constants.back(), row);
  Value value;
  value.kind = kConstant;
  value.k = k;
  value.constant = &code_.constants.back();
  Push(value);
}

void CCodeCompiler::SetA(Instruction& i, const Value& value) {
  if (value.kind == kLocal || value.kind == kName) {
    i.a.name = value.name;
    i.offsetA = value.name->offset;
  } else if (value.kind == kConstant) {
    i.a.constant = value.constant;
  }
}

void CCodeCompiler::SetB(Instruction& i, const Value& value) {
  if (value.kind == kLocal || value.kind == kName) {
    i.b.name = value.name;
    i.offsetB = value.name->offset;
  } else if (value.kind == kConstant) {
    i.b.constant = value.constant;
  }
}

// Puts a value that still is where it came from into its slot.
void CCodeCompiler::FlushOne(Value& value) {
  if (value.isDefault) {
    Emit(handlers::LoadDefault, value.k);
  } else if (value.kind != kSlot) {
    Instruction& i = Emit(value.kind == kConstant ? handlers::LoadConstant
                          : value.kind == kLocal  ? handlers::LoadLocal
                                                  : handlers::LoadNamed,
                          value.k);
    SetA(i, value);
  }
  value.kind = kSlot;
  value.isDefault = false;
}

// Before anything that may change a variable or look at slots.
void CCodeCompiler::Flush() {
  for (Value& value : values_) FlushOne(value);
}

bool CCodeCompiler::KeepsTarget(const Evaluation& e) const {
  const bool isStatement = e.use == Use::Statement || e.use == Use::Increment;
  return x_.traces != kAllTraces && code_.kind != CodeKind::Method && isStatement && e.ops.size() > 1 &&
         e.ops[1] == TK_ASSIGN && !values_.empty() && values_[0].k == 1 && values_[0].name;
}

void CCodeCompiler::FlushOperands(const Evaluation& e) {
  const bool keepsTarget = KeepsTarget(e);
  for (size_t v = 0; v < values_.size(); ++v) {
    if (v > 0 || !keepsTarget) FlushOne(values_[v]);
  }
}

void CCodeCompiler::SideExit(uint32_t instruction, const Evaluation& e, uint16_t k, bool early) {
  Exit exit{};
  exit.instruction = instruction;
  exit.at = at_;
  exit.early = early;
  exit.target = !values_.empty() && values_[0].kind != kSlot ? values_[0].name : nullptr;
  const Evaluation* evaluation = &e;
  for (;;) {
    for (size_t o = evaluation->ops.size(); o-- > 1;) {
      --k;
      // What waits behind a conditional ends at the colon; here is none.
      const auto left = std::find_if(values_.begin(), values_.end(), [&](const Value& v) { return v.k == k; });
      exit.steps.push_back({evaluation->ops[o], k, 0, left != values_.end() ? left->lateToken : 0});
    }
    if (evaluation->use != Use::Branch || !early) break;
    k = evaluation->keptAt;
    exit.steps.push_back({TK_COLON, k, evaluation->kept, 0});
    evaluation = evaluation->outer;
  }
  exit.use = evaluation->use;
  exit.label = evaluation->label;
  exit.k = static_cast<uint16_t>(evaluation->base + 1);
  exit.place = evaluation->place;
  exit.nest = nest_;
  // What stands behind it may be evaluated by the member.
  if (Kind() == TK_ASSIGN) code_.levelAt[Next(at_)] = Level();
  exit.scopes = scopes_;
  exits_.push_back(std::move(exit));
}

CCodeCompiler::Value CCodeCompiler::Evaluate(Evaluation& e) {
  uint16_t k = e.base;
  e.ops = {0};
  for (;;) {
    ++k;
    Primary(k, e);
    if (failed_) return {};
    for (;;) {
      const uint16_t precedence = PrecedenceOf(Kind());
      const uint16_t op = e.ops.back();
      if (precedence > op) {
        e.ops.push_back(precedence);
        break;
      }
      if (op == 0) {
        const Value value = values_.back();
        values_.pop_back();
        return value;
      }
      e.ops.pop_back();
      --k;
      Reduce(op, k, e);
      if (failed_) return {};
    }
    Step1();
  }
}

// An evaluation whose value lies in its first slot when it may have ended in another way.
CCodeCompiler::Value CCodeCompiler::EvaluateNested(uint16_t base, Use use, bool parenthesis, uint32_t place) {
  Evaluation e;
  e.use = use;
  e.base = base;
  e.label = NewLabel();
  e.parenthesis = parenthesis;
  e.place = place;
  const size_t exits = exits_.size();
  const uint32_t around = parentheses_;
  const bool behindSign = inUnary_;
  parentheses_ = parenthesis ? around + 1 : 0;
  inUnary_ = false;
  Value value = Evaluate(e);
  parentheses_ = around;
  inUnary_ = behindSign;
  if (failed_) return value;
  if (exits_.size() != exits) {
    FlushOne(value);
    Bind(e.label);
  }
  return value;
}

// Whether what has just been computed may be assigned to: then its slot must know its variable.
bool CCodeCompiler::NeedsTarget(const Evaluation& e) const {
  if (Assigns(Kind())) return true;
  if (!e.parenthesis) return false;
  if (Kind() == TK_CONDITIONAL) return true;
  uint32_t at = at_;
  while (KindAt(at) == TK_PAREN_CLOSE) at = Next(at);
  return Assigns(KindAt(at)) || KindAt(at) == TK_CONDITIONAL;
}

// A statement, or the step of a loop, that is one assignment to a name.
bool CCodeCompiler::StoreStatement(uint16_t op, const Evaluation& e) {
  const bool isStatement = e.use == Use::Statement && Kind() == TK_SEMICOLON;
  const bool isStep = e.use == Use::Increment && Kind() == TK_PAREN_CLOSE;
  if ((!isStatement && !isStep) || e.ops.size() != 1 || values_.size() != 2) return false;
  Value& left = values_[0];
  Value& right = values_[1];
  if ((left.kind != kLocal && left.kind != kName) || left.isDefault) return false;
  if (code_.kind == CodeKind::Method && left.kind != kLocal) return false;
  const uint32_t flags = isStatement ? 1 : 0;
  if (op == TK_INCREMENT || op == TK_DECREMENT) {
    if (!right.isDefault) return false;
    Instruction& i = Emit(handlers::StepOf(x_.traces, op, left.kind), 1, op << 1 | flags);
    SetA(i, left);
  } else {
    if (right.isDefault) FlushOne(right);
    MayMake(left.name);
    std::vector<Instruction>& all = code_.instructions;
    const bool joins = right.kind == kSlot && lastBinary_ + 1 == Here() && all.back().k == 2;
    const uint16_t binary = joins ? all.back().n & 0xFF : 0;
    const bool isJoined = binary == TK_ADD || binary == TK_SUB || binary == TK_MUL;
    if (isJoined) {
      Instruction& i = all.back();
      const auto a = static_cast<OperandKind>(i.n >> 8 & 3);
      const auto b = static_cast<OperandKind>(i.n >> 10 & 3);
      i.run = handlers::BinaryStoreOf(x_.traces, binary, left.kind, a, b);
      i.n = static_cast<uint16_t>(i.n | left.kind << 12 | flags << 14);
      i.target.name = left.name;
      i.offsetTarget = left.name->offset;
    } else {
      Instruction& i =
          Emit(handlers::StoreOf(x_.traces, left.kind, right.kind), 1, flags | left.kind << 1 | right.kind << 3);
      SetA(i, left);
      SetB(i, right);
    }
    code_.instructions.back().k = Level();
    if (isJoined && isStatement) Accumulate(left);
  }
  values_.clear();
  PushSlot(1);
  statementDone_ = true;
  return true;
}

// `sum = sum + a * b`, whose two operators are the last instructions: one in front of them does both.
void CCodeCompiler::Accumulate(const Value& target) {
  std::vector<Instruction>& all = code_.instructions;
  if (x_.traces != kNoTraces || target.kind != kLocal || all.size() < 2) return;
  const Instruction& outer = all.back();
  const Instruction& inner = all[all.size() - 2];
  const auto kindOfA = [](const Instruction& i) { return static_cast<OperandKind>(i.n >> 8 & 3); };
  const auto kindOfB = [](const Instruction& i) { return static_cast<OperandKind>(i.n >> 10 & 3); };
  const auto op = static_cast<uint16_t>(inner.n & 0xFF);
  if (kindOfA(outer) != kLocal || kindOfB(outer) != kSlot || outer.offsetA != target.name->offset) return;
  if (inner.k != 3 || op < TK_ADD || op > TK_OPERATOR_LAST || kindOfA(inner) != kLocal ||
      inner.run != handlers::BinaryOf(x_.traces, op, kLocal, kindOfB(inner))) {
    return;
  }
  Instruction both = inner;
  both.run = handlers::AccumulateOf(outer.n & 0xFF, op, kindOfB(inner));
  both.offsetTarget = target.name->offset;
  if (both.run) all.insert(all.end() - 2, both);
}

// The end of a statement that assigns to an element or a member.
void CCodeCompiler::AssignStatement(uint16_t k) {
  Value& right = values_[1];
  FlushOne(values_[0]);
  if (right.isDefault) FlushOne(right);
  const uint32_t late = values_[0].lateToken;
  if (late) lateArrays_.push_back({Here(), late, k, at_, NewLabel(), nest_, scopes_});
  Instruction& i = Emit(handlers::AssignAwayOf(right.kind), k, right.kind);
  SetB(i, right);
  i.offsetA = Level();
  if (late) {
    // An array that was made late comes back here, in front of the end of the statement.
    const uint32_t over = NewLabel();
    JumpToLabel(Here(), over);
    Emit(handlers::Jump, 0);
    Bind(lateArrays_.back().back);
    Emit(handlers::EndStatement, 0);
    Bind(over);
  }
  values_.clear();
  PushSlot(k);
  statementDone_ = true;
}

void CCodeCompiler::Reduce(uint16_t op, uint16_t k, Evaluation& e) {
  if (values_.size() < 2) {
    Fail();
    return;
  }
  if (op == TK_CONDITIONAL) {
    Conditional(k, e);
    return;
  }
  if (op == TK_ASSIGN || op == TK_INCREMENT || op == TK_DECREMENT) {
    if (StoreStatement(op, e)) return;
    const bool isStatement = e.use == Use::Statement && Kind() == TK_SEMICOLON && e.ops.size() == 1 && k == 1;
    if (op == TK_ASSIGN && isStatement && x_.traces != kAllTraces && values_.size() == 2) {
      AssignStatement(k);
      return;
    }
    Flush();
    if (op == TK_ASSIGN) {
      const uint32_t late = values_[values_.size() - 2].lateToken;
      if (late) lateArrays_.push_back({Here(), late, k, at_, NewLabel(), nest_, scopes_});
      Emit(isStatement && !late ? handlers::AssignStatement : handlers::Assign, k).offsetA = Level();
      if (late) Bind(lateArrays_.back().back);
      statementDone_ = isStatement && !late;
    } else {
      Emit(handlers::ReduceAny, k, op);
    }
    values_.resize(values_.size() - 2);
    PushSlot(k);
    return;
  }
  const bool isBinary = op > TK_CONDITIONAL && op != TK_NOT && op != TK_COMPLEMENT;
  if (!isBinary || NeedsTarget(e)) Flush();
  Value& left = values_[values_.size() - 2];
  Value& right = values_.back();
  if (!isBinary) {
    Emit(handlers::ReduceAny, k, op);
  } else {
    if (left.kind == kConstant || left.isDefault) FlushOne(left);
    if (right.isDefault) FlushOne(right);
    if (e.use == Use::Condition && IsComparison(op) && e.ops.size() == 1 && k == 1 && !PrecedenceOf(Kind())) {
      comparison_ = {op, left, right};
    } else {
      lastBinary_ = Here();
      Instruction& i =
          Emit(handlers::BinaryOf(x_.traces, op, left.kind, right.kind), k, op | left.kind << 8 | right.kind << 10);
      SetA(i, left);
      SetB(i, right);
    }
  }
  values_.resize(values_.size() - 2);
  PushSlot(k);
}

// Both branches are evaluated; the walker stands on the colon.
void CCodeCompiler::Conditional(uint16_t k, Evaluation& e) {
  if (Kind() != TK_COLON) {
    Fail();
    return;
  }
  Flush();
  Step1();
  Evaluation branch;
  branch.use = Use::Branch;
  branch.outer = &e;
  branch.base = k;
  branch.kept = Temporary();
  branch.keptAt = k;
  branch.label = NewLabel();
  Emit(handlers::KeepFirst, k).offsetA = branch.kept;
  values_.pop_back();
  const size_t exits = exits_.size();
  Value second = Evaluate(branch);
  if (failed_) return;
  FlushOne(second);
  if (exits_.size() != exits) Bind(branch.label);
  Emit(handlers::Select, k).offsetA = branch.kept;
}

void CCodeCompiler::Primary(uint16_t k, Evaluation& e) {
  switch (Kind()) {
    case TK_NAME:
      PrimaryName(k, e);
      return;
    case TK_DECIMAL:
    case TK_BASED:
    case TK_INTEGER:
      PushInteger(k, static_cast<int32_t>(TokenWord(i_.At(at_))));
      Step1();
      return;
    case TK_FLOAT: {
      CValue number(&i_);
      number.SetFloat(TokenFloat(i_.At(at_)));
      Value value;
      value.kind = kConstant;
      value.k = k;
      value.constant = NumberConstant(number);
      Push(value);
      Step1();
      return;
    }
    case TK_ELEMENT:
      PrimaryElement(k, e);
      return;
    case TK_CALL:
      Call(k);
      return;
    case TK_SEMICOLON:
    case TK_PAREN_CLOSE:
    case TK_COMMA: {
      Value value;
      value.k = k;
      value.isDefault = true;
      Push(value);
      return;
    }
    case TK_NOT:
    case TK_COMPLEMENT:
    case TK_ADD:
    case TK_SUB:
      Unary(k, e);
      return;
    case TK_PAREN_OPEN:
      Parenthesis(k, e);
      return;
    default:
      PrimaryOther(k, e);
      return;
  }
}

void CCodeCompiler::PrimaryName(uint16_t k, Evaluation& e) {
  NameInfo* name = NameAt(at_);
  const uint32_t token = at_;
  Step1();
  const uint16_t next = Kind();
  if (IsMemberToken(next)) {
    FlushOperands(e);
    PlainCall plain;
    if (next == TK_MEMBER_CALL && nest_ == 0 && (code_.kind != CodeKind::Method || name->sure) &&
        !QuickTextMember(at_) && ScanPlain(plain)) {
      Value value;
      value.kind = name->sure ? kLocal : kName;
      value.name = name;
      SetA(EmitPlain(plain, k, handlers::PlainMethodOf(x_.traces, value.kind)), value);
    }
    // The common `name.variable`, with the two instructions behind it for anything else.
    const uint32_t member = at_;
    if (next == TK_MEMBER && !IsMemberToken(KindAt(Next(member))) && code_.kind != CodeKind::Method) {
      Value value;
      value.kind = name->sure ? kLocal : kName;
      value.name = name;
      Instruction& i = Emit(handlers::MemberReadOf(value.kind), k);
      SetA(i, value);
      i.b.number = TokenNameId(i_.At(member));
    }
    const uint32_t instruction = Here();
    at_ = token;
    Instruction& i = Emit(handlers::SourceOf, k);
    i.a.name = name;
    i.offsetA = name->offset;
    Step1();
    SideExit(instruction, e, k, true);
    Members(k, e, MemberFrom::Source);
    EndPlain(plain);
    return;
  }
  if (next == TK_ASSIGN || next == TK_PAREN_CLOSE) MayMake(name);
  Value value;
  value.kind = name->sure ? kLocal : kName;
  value.k = k;
  value.name = name;
  // Where This is an object, or only the frame is looked at, a name that is no local takes a search.
  if (!name->sure && (code_.kind == CodeKind::Method || (name->declared && !name->isLocal))) {
    Flush();
    const uint32_t back = at_;
    at_ = token;
    Instruction& i =
        Emit(code_.kind == CodeKind::Method && !name->declared ? handlers::LoadOwn : handlers::LoadNamed, k);
    i.a.name = name;
    i.offsetA = name->offset;
    at_ = back;
    value.kind = kSlot;
    // The end of its statement may still be stored to by name.
    if (code_.kind == CodeKind::Method) value.name = nullptr;
  }
  Push(value);
}

void CCodeCompiler::Unary(uint16_t k, Evaluation& e) {
  const uint16_t op = Kind();
  Step1();
  const bool behindSign = inUnary_;
  inUnary_ = true;
  Primary(k, e);
  inUnary_ = behindSign;
  if (failed_ || op == TK_ADD) return;
  Value& value = values_.back();
  if (op == TK_SUB && value.kind == kConstant && value.constant->type <= VT_FLOAT) {
    CValue number(&i_);
    number.Assign(*value.constant);
    ValueNegate(number);
    value.constant = NumberConstant(number);
    return;
  }
  Flush();
  Emit(handlers::Unary, k, op);
}

// Where nobody looks at slots, the value of a parenthesis may be had where it is needed: an operand stays one, and an
// operator on operands leaves its result there.
bool CCodeCompiler::MovesDown(Value& inner, uint16_t k, const Evaluation& e) {
  if (x_.traces != kNoTraces || inner.isDefault || NeedsTarget(e)) return false;
  if (inner.kind != kSlot) {
    inner.k = k;
    Push(inner);
    return true;
  }
  if (lastBinary_ + 1 != Here()) return false;
  Instruction& i = code_.instructions.back();
  if (i.k != k + 1 || (i.n >> 8 & 3) == kSlot || (i.n >> 10 & 3) == kSlot) return false;
  i.k = k;
  PushSlot(k);
  return true;
}

void CCodeCompiler::Parenthesis(uint16_t k, Evaluation& e) {
  Step1();
  Value inner = EvaluateNested(k, Use::Nested, true);
  if (failed_) return;
  if (Kind() != TK_PAREN_CLOSE) {
    Fail();
    return;
  }
  Step1();
  if (!IsMemberToken(Kind())) {
    if (MovesDown(inner, k, e)) return;
    FlushOne(inner);
    Emit(handlers::SwapDown, k);
    PushSlot(k);
    return;
  }
  values_.push_back(inner);
  Flush();
  values_.pop_back();
  const uint32_t instruction = Here();
  Emit(handlers::InnerMember, k);
  SideExit(instruction, e, k, true);
  Members(k, e, MemberFrom::Inner);
}

}  // namespace vl
