#include "interpreter/executor/code_scan.h"

#include "base/limits.h"
#include "interpreter/name_pool.h"

namespace vl {

namespace {

// A function this long may need more slots or locals than there are.
constexpr uint32_t kLongBytes = 15000;
// Once a program takes errors over, any member may leave its slot as it was.
constexpr const char kErrorEvent[] = "OnError";
// Collects objects, also in a program that makes none itself.
constexpr const char kCollector[] = "Flush";

bool IsClass(uint16_t kind) { return kind >= TK_CLASS_FIRST && kind <= TK_CLASS_LAST; }

}  // namespace

void CCodeScan::Run() {
  uint16_t kind = KindAt(0);
  while (kind != TK_END) {
    if (!functions_.empty() && at_ == functions_.back().bodyEnd) functions_.pop_back();
    const uint32_t token = at_;
    at_ = Next(token);
    const uint16_t next = KindAt(at_);
    Look(token, kind, next);
    before_ = kind;
    // The head of a function has been passed as a whole.
    kind = KindAt(at_);
  }
  if (showers_ & families) suspects = true;
}

void CCodeScan::Look(uint32_t at, uint16_t kind, uint16_t next) {
  switch (kind) {
    case TK_NAME:
      starts_ = false;
      if (next == TK_ASSIGN && functions_.empty()) x_.topNames.insert(TokenNameId(i_.At(at)));
      return;
    case TK_SEMICOLON:
      if (inFor_) {
        EndLead();
      } else {
        StartStatement();
        inCase_ = false;
      }
      return;
    case TK_BRACE_OPEN:
    case TK_BRACE_CLOSE:
    case TK_ELSE:
    case TK_DEFAULT:
      inFor_ = inCase_ = false;
      lists_ = brackets_ = 0;
      pending_ = 0;
      StartStatement();
      return;
    case TK_PAREN_CLOSE:
    case TK_BRACKET_CLOSE:
      Close(next);
      return;
    case TK_CALL:
      starts_ = false;
      if (++lists_ >= limits::kArgumentLevels || inCase_) Rare();
      openers_.push_back(Opener::Call);
      return;
    case TK_MEMBER:
    case TK_MEMBER_CALL:
    case TK_MEMBER_ELEMENT:
      Member(at, kind, next);
      return;
    case TK_ELEMENT:
      starts_ = false;
      if (functions_.empty()) x_.topNames.insert(TokenNameId(i_.At(at)));
      if (inCase_) Rare();
      ++brackets_;
      openers_.push_back(Opener::Bracket);
      return;
    case TK_PAREN_OPEN:
      EndLead();
      if (inCase_) Rare();
      openers_.push_back(Opener::Value);
      return;
    case TK_IF:
    case TK_WHILE:
    case TK_SWITCH:
      EndLead();
      openers_.push_back(Opener::Header);
      return;
    case TK_FOR:
      EndLead();
      inFor_ = true;
      openers_.push_back(Opener::Header);
      return;
    case TK_CASE:
      EndLead();
      inCase_ = true;
      return;
    case TK_FUNCTION:
      Head(TokenWord2(i_.At(at)));
      return;
    case TK_TEXT:
    case TK_CURWINDOW:
      if (starts_) isOwn_ = true;
      starts_ = false;
      return;
    case TK_THIS:
      starts_ = false;
      return;
    case TK_CONDITIONAL:
      EndLead();
      Rare();
      return;
    default:
      if (IsClass(kind)) {
        Class(at, kind, next);
      } else if (kind >= TK_OPERATOR_FIRST && kind <= TK_OPERATOR_LAST) {
        Operator(kind, next);
      } else {
        EndLead();
      }
      return;
  }
}

// Passes over the head of a function.
void CCodeScan::Head(uint32_t block) {
  const BlockRecord& record = i_.blocks[block];
  functions_.push_back({block, record.bodyEnd});
  if (record.bodyEnd - record.extra > kLongBytes) Rare();
  std::vector<uint32_t> names;
  for (; at_ != record.bodyStart; at_ = Next(at_)) {
    const uint16_t kind = KindAt(at_);
    if (kind == TK_NAME) {
      const uint32_t name = TokenNameId(i_.At(at_));
      if (std::find(names.begin(), names.end(), name) != names.end()) Rare();
      names.push_back(name);
    } else if (kind != TK_PAREN_OPEN && kind != TK_COMMA && kind != TK_PAREN_CLOSE) {
      Rare();
    }
  }
  EndLead();
}

void CCodeScan::Close(uint16_t next) {
  if (openers_.empty()) return;
  const Opener opener = openers_.back();
  openers_.pop_back();
  closedValue_ = opener == Opener::Value || opener == Opener::Bracket;
  if (opener == Opener::Bracket) --brackets_;
  if (opener == Opener::Call) {
    --lists_;
    if (before_ == TK_COMMA) Rare();
    if (pending_ && openers_.size() == pendingDepth_) {
      if (next != TK_SEMICOLON) showers_ |= pending_;
      pending_ = 0;
    }
  }
  // The statement of an If; those of loops start behind a brace.
  if (opener == Opener::Header && !inFor_) {
    if (IsMemberToken(next)) Rare();
    StartStatement();
    closedValue_ = false;
  }
}

void CCodeScan::Member(uint32_t at, uint16_t kind, uint16_t next) {
  starts_ = false;
  const bool follows = before_ == TK_NAME || before_ == TK_THIS || before_ == TK_CURWINDOW || before_ == TK_TEXT ||
                       before_ == TK_MEMBER || IsClass(before_) ||
                       ((before_ == TK_BRACKET_CLOSE || before_ == TK_PAREN_CLOSE) && closedValue_);
  if (!follows || (inCase_ && !IsClass(before_))) Rare();
  const bool isFirst = leads_ && openers_.empty();
  if (!IsClass(before_) && kind != TK_MEMBER_ELEMENT) {
    const uint8_t showers = x_.SlotShowers(TokenNameId(i_.At(at)));
    if (kind == TK_MEMBER_CALL && isFirst) {
      pending_ = showers;
      pendingDepth_ = openers_.size();
    } else if (!isFirst || (next != TK_SEMICOLON && next != TK_ASSIGN)) {
      showers_ |= showers;
    }
  }
  if (kind == TK_MEMBER_CALL) {
    if (++lists_ >= limits::kArgumentLevels) Rare();
    openers_.push_back(Opener::Call);
  } else if (kind == TK_MEMBER_ELEMENT) {
    ++brackets_;
    openers_.push_back(Opener::Bracket);
  }
}

void CCodeScan::Class(uint32_t at, uint16_t kind, uint16_t next) {
  if (starts_) isOwn_ = true;
  starts_ = false;
  families |= CExecutor::FamilyOf(kind);
  if (before_ == TK_NEW) {
    // Its parenthesis isn't in the stream.
    if (++lists_ >= limits::kArgumentLevels || inCase_) Rare();
    openers_.push_back(Opener::Call);
    return;
  }
  const CIClassInfo* info = i_.ClassInfo(kind);
  const bool isFixed = FactsOfClass(kind).fixed;
  const KeywordRow* known = info ? info->keywords->Find(i_.NameOf(i_.At(Next(at)))) : nullptr;
  const MemberRow* row = known && known->id < info->rows.size() ? info->rows[known->id] : nullptr;
  if (!row || (!isFixed && (row->kind != MemberKind::Constant || next != TK_MEMBER)) ||
      (isFixed && !i_.fixedObjects[kind]) || (!row->function && row->kind != MemberKind::Constant)) {
    Rare();
    return;
  }
  if (!row->function || !isFixed) return;
  if (EqualNoCase(row->name, kErrorEvent)) suspects = true;
  if (EqualNoCase(row->name, kCollector)) collects = true;
  if (row->gives) return;
  const bool isFirst = leads_ && openers_.empty();
  if (next == TK_MEMBER_CALL && isFirst) {
    pending_ = CExecutor::kAnyFamily;
    pendingDepth_ = 0;
  } else if (!isFirst || KindAt(Next(Next(at))) != TK_SEMICOLON) {
    showers_ |= CExecutor::kAnyFamily;
  }
}

void CCodeScan::Operator(uint16_t kind, uint16_t next) {
  if (kind == TK_INCREMENT || kind == TK_DECREMENT) {
    const bool follows =
        before_ == TK_NAME || before_ == TK_MEMBER || before_ == TK_BRACKET_CLOSE || before_ == TK_PAREN_CLOSE;
    if (!follows || (next != TK_SEMICOLON && next != TK_PAREN_CLOSE && next != TK_COMMA)) Rare();
  }
  const bool assigns = kind >= TK_ASSIGN && kind <= TK_SHR_ASSIGN;
  if (assigns && (brackets_ > 0 || inCase_)) Rare();
  if (isOwn_ && openers_.empty() && kind != TK_ASSIGN) Rare();
  if (openers_.empty()) {
    EndLead();
  } else {
    starts_ = false;
  }
}

}  // namespace vl
