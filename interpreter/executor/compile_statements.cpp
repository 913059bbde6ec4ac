// Statements of the code compiler.
#include "interpreter/executor/code_compiler.h"
#include "interpreter/executor/handlers.h"

namespace vl {

void CCodeCompiler::Statements(uint32_t to) {
  while (!failed_) {
    placeOf_[(at_ - start_) / 4] = Here();
    if (Kind() == TK_SEMICOLON) {
      Step1();
      if ((at_ - start_) / 4 < placeOf_.size()) placeOf_[(at_ - start_) / 4] = Here();
    }
    if (at_ >= to) return;
    const bool last = Kind() == TK_END;
    Statement();
    if (last) return;
  }
}

void CCodeCompiler::Statement() {
  values_.clear();
  const uint32_t token = at_;
  const uint16_t kind = Kind();
  switch (kind) {
    case TK_VAR:
      Step1();
      declared_ = at_;
      ExpressionStatement();
      return;
    case TK_NAME:
    case TK_ELEMENT:
    case TK_THIS:
      ExpressionStatement();
      return;
    case TK_CALL:
      Call(0);
      values_.clear();
      Emit(handlers::EndStatement, 0);
      return;
    case TK_IF: {
      const uint32_t behind = TokenWord(i_.At(token));
      Step1();
      Test(KindAt(behind) == TK_ELSE ? Next(behind) : behind, false, true);
      if (Kind() != TK_PAREN_CLOSE) Fail();
      Step1();
      return;
    }
    case TK_ELSE: {
      uint32_t to = token;
      do {
        to = TokenWord(i_.At(to));
      } while (KindAt(to) == TK_ELSE);
      JumpToOffset(Here(), to);
      Emit(handlers::JumpStatement, 0);
      Step1();
      return;
    }
    case TK_FOR:
      DoFor();
      return;
    case TK_WHILE:
      DoWhile();
      return;
    case TK_SWITCH:
      DoSwitch();
      return;
    case TK_CASE:
      // Falling through: on to the semicolon behind the label's value.
      while (Kind() != TK_SEMICOLON && Kind() != TK_END) Step1();
      if (Kind() == TK_END) Fail();
      Emit(handlers::EndStatement, 0);
      return;
    case TK_DEFAULT:
    case TK_SEMICOLON:
      Step1();
      Emit(handlers::EndStatement, 0);
      return;
    case TK_BRACE_OPEN:
      OpenScope(i_.blocks[TokenWord2(i_.At(token))]);
      Emit(handlers::EndStatement, 0);
      Step1();
      return;
    case TK_BRACE_CLOSE:
      DoCloseBrace();
      return;
    case TK_BREAK:
    case TK_CONTINUE:
      DoBreak(kind == TK_CONTINUE);
      return;
    case TK_RETURN:
      DoReturn();
      return;
    case TK_DELETE: {
      Step1();
      Value value = EvaluateNested(0, Use::Delete);
      if (failed_) return;
      FlushOne(value);
      Emit(handlers::Delete, 1);
      Emit(handlers::EndStatement, 0);
      return;
    }
    case TK_FUNCTION:
      at_ = Next(i_.blocks[TokenWord2(i_.At(token))].bodyEnd);
      JumpToOffset(Here(), at_);
      Emit(handlers::JumpStatement, 0);
      return;
    case TK_MAIN_START:
      Step1();
      Emit(handlers::SetPart, 0).a.number = static_cast<int32_t>(TokenWord(i_.At(token)));
      return;
    case TK_MAIN_END:
    case TK_END:
      Emit(handlers::Fail, 0, ERR_END);
      if (kind == TK_MAIN_END) Step1();
      return;
    case TK_TEXT:
    case TK_CURWINDOW:
    case CLASS_MATH:
    case CLASS_DISK:
    case CLASS_KEYBOARD:
    case CLASS_SYSTEM:
    case CLASS_PROGRAM:
    case CLASS_DISPLAY:
    case CLASS_EDITOR: {
      Evaluation e;
      e.use = Use::Statement;
      e.label = NewLabel();
      e.ops = {0};
      Primary(0, e);
      if (failed_) return;
      Flush();
      values_.clear();
      Emit(handlers::EndStatement, 0);
      if (Kind() == TK_ASSIGN) {
        // Only an event goes on behind what it is set to.
        Emit(handlers::Fail, 0, ERR_SYNTAX);
        Step1();
        EvaluateNested(0, Use::Other);
      }
      Bind(e.label);
      return;
    }
    case TK_MEMBER_CALL:
      Emit(handlers::Fail, 0, ERR_UNDEFINED);
      Step1();
      return;
    default:
      Emit(handlers::Fail, 0, ERR_SYNTAX);
      Step1();
      return;
  }
}

void CCodeCompiler::ExpressionStatement() {
  Evaluation e;
  e.use = Use::Statement;
  e.label = NewLabel();
  statementDone_ = false;
  shortcut_ = kNone;
  EmitTerms();
  Value value = Evaluate(e);
  if (failed_) return;
  if (!statementDone_) {
    FlushOne(value);
    Emit(handlers::EndStatement, 0);
  }
  if (shortcut_ != kNone) code_.instructions[shortcut_].at = Here() - shortcut_;
  statementDone_ = false;
  Bind(e.label);
}

// A condition: jumps to the offset when it holds (a loop, whose instruction then also ends the statement) or when it
// doesn't (which ends the statement on both ways).
void CCodeCompiler::Test(uint32_t offset, bool isLoop, bool isIf) {
  Evaluation e;
  e.use = Use::Condition;
  e.label = NewLabel();
  const size_t exits = exits_.size();
  comparison_.op = 0;
  Value value = Evaluate(e);
  if (failed_) return;
  const Handler test = isLoop ? handlers::LoopIf : handlers::JumpUnless;
  if (comparison_.op) {
    const Comparison c = comparison_;
    comparison_.op = 0;
    const auto of = isLoop ? handlers::CompareLoopOf : handlers::CompareUnlessOf;
    JumpToOffset(Here(), offset);
    Instruction& i =
        Emit(of(x_.traces, c.op, c.left.kind, c.right.kind), 1, c.op | c.left.kind << 8 | c.right.kind << 10);
    SetA(i, c.left);
    SetB(i, c.right);
  } else {
    FlushOne(value);
    JumpToOffset(Here(), offset);
    Emit(test, 1);
  }
  Bind(e.label);
  for (size_t x = exits; x < exits_.size(); ++x) {
    Exit& exit = exits_[x];
    if (exit.use != Use::Condition) continue;
    exit.test = test;
    exit.testOffset = offset;
    exit.afterTest = isIf;
  }
}

void CCodeCompiler::OpenScope(const BlockRecord& block) {
  open_.push_back(&block);
  scopes_.push_back(&code_.scopes.emplace_back());
  if (code_.kind == CodeKind::Global) Emit(handlers::OpenScope, 0);
}

// Code that closes the innermost blocks.
void CCodeCompiler::EmitClose(uint32_t levels) {
  if (levels == 0) return;
  Instruction& i = Emit(code_.kind == CodeKind::Global ? handlers::CloseScope : handlers::CloseLocals, 0, levels);
  i.a.pointer = scopes_[scopes_.size() - levels];
  i.b.number = static_cast<int64_t>(open_.size() - levels + 1);
}

void CCodeCompiler::PopScope() {
  open_.pop_back();
  scopes_.pop_back();
}

void CCodeCompiler::DoFor() {
  const BlockRecord& block = i_.blocks[TokenWord2(i_.At(at_))];
  Step1();
  Value value = EvaluateNested(0, Use::Other);
  if (failed_) return;
  FlushOne(value);
  OpenScope(block);
  const uint32_t body = Next(block.bodyStart);
  if (block.test) {
    at_ = block.test;
    Test(body, true, false);
    EmitClose(1);
    JumpToOffset(Here(), Next(block.bodyEnd));
    Emit(handlers::JumpStatement, 0);
  } else {
    Emit(handlers::EndStatement, 0);
  }
  at_ = body;
}

void CCodeCompiler::DoWhile() {
  const BlockRecord& block = i_.blocks[TokenWord2(i_.At(at_))];
  Step1();
  Test(Next(block.bodyEnd), false, false);
  OpenScope(block);
  at_ = Next(block.bodyStart);
}

// `For (…; a < b; a++)`: both parts of the loop's end in one instruction, with the two behind it for what isn't
// plain integers.
bool CCodeCompiler::CountLoop(const BlockRecord& block) {
  const uint32_t extra = block.extra;
  const uint32_t test = block.test;
  if (!extra || !test || code_.kind == CodeKind::Method) return false;
  const auto isPlainName = [&](uint32_t at) { return KindAt(at) == TK_NAME && !IsMemberToken(KindAt(Next(at))); };
  if (!isPlainName(extra) || KindAt(Next(extra)) != TK_INCREMENT) return false;
  if (KindAt(Next(Next(extra))) != TK_PAREN_CLOSE) return false;
  const uint32_t op = Next(test);
  const uint32_t right = Next(op);
  const uint16_t comparison = KindAt(op);
  if (!isPlainName(test) || TokenNameId(i_.At(test)) != TokenNameId(i_.At(extra))) return false;
  if (comparison < TK_GREATER_EQUAL || comparison > TK_NOT_EQUAL) return false;
  const bool isName = isPlainName(right);
  if ((!isName && KindAt(right) != TK_DECIMAL) || KindAt(Next(right)) != TK_SEMICOLON) return false;
  NameInfo* a = NameAt(test);
  Value left;
  left.kind = a->sure ? kLocal : kName;
  left.name = a;
  Value b;
  if (isName) {
    b.name = NameAt(right);
    b.kind = b.name->sure ? kLocal : kName;
  } else {
    CValue number(&i_);
    number.SetInt(static_cast<int32_t>(TokenWord(i_.At(right))));
    b.kind = kConstant;
    b.constant = NumberConstant(number);
  }
  JumpToOffset(Here(), Next(block.bodyStart));
  Instruction& i = Emit(handlers::CountLoopOf(x_.traces, comparison, left.kind, b.kind), 1);
  SetA(i, left);
  SetB(i, b);
  return true;
}

void CCodeCompiler::DoCloseBrace() {
  const uint32_t behind = Next(at_);
  if (open_.empty()) {
    Fail();
    return;
  }
  const BlockRecord& block = *open_.back();
  switch (block.kind) {
    case kBlockFor:
    case kBlockWhile: {
      const uint32_t body = Next(block.bodyStart);
      if (CountLoop(block)) {
        at_ = block.extra;
        const size_t first = Here();
        EvaluateNested(0, Use::Increment);
        at_ = block.test;
        Test(body, true, false);
        // The count loop passes over exactly these two.
        if (Here() != first + 2) Fail();
      } else {
        if (block.kind == kBlockFor && block.extra) {
          at_ = block.extra;
          statementDone_ = false;
          Value value = EvaluateNested(0, Use::Increment);
          if (failed_) return;
          if (!statementDone_) FlushOne(value);
          statementDone_ = false;
        }
        if (block.test) {
          at_ = block.test;
          Test(body, true, false);
        } else {
          JumpToOffset(Here(), body);
          Emit(handlers::JumpStatement, 0);
        }
      }
      if (block.test) {
        EmitClose(1);
        Emit(handlers::EndStatement, 0);
      }
      PopScope();
      break;
    }
    case kBlockPlain:
    case kBlockSwitch:
      EmitClose(1);
      Emit(handlers::EndStatement, 0);
      PopScope();
      break;
    case kBlockFunction:
      EmitReturnZero();
      PopScope();
      break;
    default:
      Fail();
      return;
  }
  at_ = behind;
}

void CCodeCompiler::DoBreak(bool isContinue) {
  const uint32_t token = at_;
  size_t depth = open_.size();
  while (depth > 0 && open_[depth - 1]->kind == kBlockPlain) --depth;
  const uint32_t kind = depth > 0 ? open_[depth - 1]->kind : 0;
  const bool isLoop = kind == kBlockFor || kind == kBlockWhile;
  if (!isLoop && (isContinue || kind != kBlockSwitch)) {
    Emit(handlers::Fail, 0, isContinue ? ERR_CONTINUE : ERR_BREAK);
    at_ = Next(token);
    return;
  }
  const BlockRecord& block = *open_[depth - 1];
  EmitClose(static_cast<uint32_t>(open_.size() - depth + (isContinue ? 0 : 1)));
  JumpToOffset(Here(), isContinue ? block.bodyEnd : Next(block.bodyEnd));
  Emit(handlers::JumpStatement, 0);
  at_ = Next(token);
}

void CCodeCompiler::DoSwitch() {
  const uint32_t token = at_;
  const BlockRecord& block = i_.blocks[TokenWord2(i_.At(token))];
  OpenScope(block);
  Step1();
  const size_t valueExits = exits_.size();
  Value value = EvaluateNested(0, Use::Other);
  if (failed_) return;
  FlushOne(value);
  const int64_t kept = Temporary();
  for (size_t e = valueExits; e < exits_.size(); ++e) {
    if (exits_[e].use == Use::Other) exits_[e].kept = kept;
  }
  Emit(handlers::KeepSwitch, 1).offsetA = kept;
  for (uint32_t label = TokenWord(i_.At(token)); label;) {
    const uint32_t at = label;
    label = TokenWord(i_.At(at));
    if (KindAt(at) == TK_DEFAULT) continue;
    at_ = Next(at);
    const size_t exits = exits_.size();
    Value wanted = EvaluateNested(0, Use::Other);
    if (failed_) return;
    // Where an early end of a label's value leads is for the walker.
    if (exits_.size() != exits || Kind() != TK_SEMICOLON) {
      Fail();
      return;
    }
    FlushOne(wanted);
    const uint32_t next = NewLabel();
    JumpToLabel(Here(), next);
    Emit(handlers::JumpUnlessCase, 1).offsetA = kept;
    Emit(handlers::DropKept, 0).offsetA = kept;
    JumpToOffset(Here(), Next(at_));
    Emit(handlers::JumpStatement, 0);
    Bind(next);
  }
  Emit(handlers::DropKept, 0).offsetA = kept;
  if (block.extra) {
    JumpToOffset(Here(), block.extra);
  } else {
    EmitClose(1);
    JumpToOffset(Here(), Next(block.bodyEnd));
  }
  Emit(handlers::JumpStatement, 0);
  at_ = Next(block.bodyStart);
}

void CCodeCompiler::DoReturn() {
  if (open_.empty()) {
    Emit(handlers::Fail, 0, ERR_RETURN);
    Step1();
    return;
  }
  if (!code_.block) {
    // Inside a block of the top level: it ends the program, and what stands behind isn't looked at.
    Emit(handlers::EndWalk, 0);
    while (Kind() != TK_SEMICOLON && Kind() != TK_END) Step1();
    return;
  }
  Step1();
  if (Kind() == TK_SEMICOLON) {
    EmitReturnZero();
    return;
  }
  const size_t exits = exits_.size();
  Value value = EvaluateNested(0, Use::Other);
  if (failed_) return;
  if (value.isDefault) FlushOne(value);
  if (value.kind == kSlot && exits_.size() == exits) ReturnOfTwo();
  BehindLocals(Here());
  Instruction& i = Emit(handlers::ReturnOf(code_.kind, x_.traces, value.kind), 0, value.kind);
  SetB(i, value);
}

// Puts an instruction in front of the operator that gives the value, which does that and the return.
void CCodeCompiler::ReturnOfTwo() {
  if (x_.traces != kNoTraces || code_.kind == CodeKind::Global || lastBinary_ + 1 != Here()) return;
  std::vector<Instruction>& all = code_.instructions;
  Instruction both = all.back();
  if (both.k != 1) return;
  both.run = handlers::ReturnOfTwoOf(both.n & 0xFF, static_cast<OperandKind>(both.n >> 8 & 3),
                                     static_cast<OperandKind>(both.n >> 10 & 3));
  if (!both.run) return;
  BehindLocals(Here() - 1);
  all.insert(all.end() - 1, both);
}

void CCodeCompiler::EmitReturnZero() {
  BehindLocals(Here());
  Emit(code_.kind == CodeKind::Global ? handlers::EndEvent : handlers::ReturnZero, 0);
}

}  // namespace vl
