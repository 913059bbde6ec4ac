// Statements of the code compiler that calculate with variables of script objects.
#include "interpreter/executor/code_compiler.h"
#include "interpreter/executor/handlers.h"

namespace vl {

// A name, a number or `name.variable` at the offset, which moves behind it.
bool CCodeCompiler::ReadTerm(uint32_t& at, bool isTarget, Term& term) {
  const uint32_t behind = Next(at);
  if (KindAt(at) != TK_NAME) {
    if (isTarget || !IsPlainOperand(at)) return false;
    term.operand.constant = PlainOperand(at).constant;
    at = behind;
    return true;
  }
  const NameInfo* name = NameAt(at);
  if (code_.kind == CodeKind::Method) {
    if (!name->sure) return false;
    // Where the local doesn't exist, a variable of This may be meant: no global is looked at here.
    NameInfo& own = code_.names.emplace_back(*name);
    own.cell = &x_.nowhere;
    name = &own;
  }
  term.offset = name->offset;
  at = behind;
  if (KindAt(behind) == TK_MEMBER) {
    if (name->declared) return false;
    MemberInfo& member = code_.members.emplace_back();
    member.offset = name->offset;
    member.cell = name->cell;
    member.nameId = TokenNameId(i_.At(behind));
    term.kind = kMemberTerm;
    term.operand.member = &member;
    at = Next(behind);
    return true;
  }
  if (IsMemberToken(KindAt(behind))) return false;
  if (name->declared && (!isTarget || !name->isLocal)) return false;
  term.kind = kName;
  term.operand.name = name;
  return true;
}

// In front of a statement `target = a`, or with one or two operators between its terms: one instruction that does the
// whole of it where all are numbers.
void CCodeCompiler::EmitTerms() {
  if (x_.traces == kAllTraces || Kind() != TK_NAME) return;
  uint32_t at = at_;
  Term target;
  Term terms[3];
  uint16_t ops[2] = {};
  uint32_t count = 0;
  if (!ReadTerm(at, true, target) || KindAt(at) != TK_ASSIGN) return;
  const bool makes = target.kind == kName && NameAt(at_)->declared;
  bool hasMember = target.kind == kMemberTerm;
  for (;;) {
    at = Next(at);
    if (!ReadTerm(at, false, terms[count])) return;
    hasMember |= terms[count].kind == kMemberTerm;
    ++count;
    const uint16_t op = KindAt(at);
    if (op == TK_SEMICOLON) break;
    if (count == 3 || (op != TK_ADD && op != TK_SUB && op != TK_MUL)) return;
    ops[count - 1] = op;
  }
  // The other instructions are as good for names alone.
  if (!hasMember && !(makes && count == 3)) return;
  TermForm form = count == 1 ? TermForm::One : TermForm::Two;
  if (count == 3) {
    if (ops[1] == TK_MUL && ops[0] != TK_MUL) {
      form = TermForm::RightFirst;
    } else if (ops[0] == TK_MUL && ops[1] != TK_MUL) {
      form = TermForm::LeftFirst;
    } else {
      return;
    }
  }
  shortcut_ = Here();
  const uint32_t kinds = target.kind | terms[0].kind << 2 | terms[1].kind << 4 | terms[2].kind << 6;
  TermTarget to = makes ? TermTarget::Made : TermTarget::Name;
  if (target.kind == kMemberTerm) {
    const bool isFirst = terms[0].kind == kMemberTerm && terms[0].operand.member->cell == target.operand.member->cell &&
                         terms[0].operand.member->offset == target.operand.member->offset &&
                         terms[0].operand.member->nameId == target.operand.member->nameId;
    to = isFirst ? TermTarget::First : TermTarget::Member;
  }
  Instruction& i = Emit(handlers::TermsOf(x_.traces, form, to, ops[0], ops[1]), 2, kinds);
  i.k = Level();
  i.target = target.operand;
  i.offsetTarget = target.offset;
  i.a = terms[0].operand;
  i.offsetA = terms[0].offset;
  i.b = terms[1].operand;
  i.offsetB = terms[1].offset;
  Instruction& more = Emit(handlers::Jump, 2, form == TermForm::One ? 2 : form == TermForm::RightFirst ? 4 : 3);
  more.a = terms[2].operand;
  more.offsetA = terms[2].offset;
}

}  // namespace vl
