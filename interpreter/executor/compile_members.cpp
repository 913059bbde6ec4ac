// Members and objects of the code compiler.
#include "interpreter/executor/code_compiler.h"
#include "interpreter/executor/handlers.h"

namespace vl {

namespace {
// Once a program takes errors over, any member may leave its slot as it was.
constexpr const char kErrorEvent[] = "OnError";
// Collects objects, also in a program that makes none itself.
constexpr const char kCollector[] = "Flush";
}  // namespace

void CCodeCompiler::NewObject(uint16_t k) {
  Flush();
  Emit(handlers::ForgetTarget, k);
  Step1();
  const uint16_t kind = Kind();
  if (kind >= TK_CLASS_FIRST && kind <= TK_CLASS_LAST) {
    Step1();
    const uint32_t count = Arguments(k);
    if (failed_) return;
    Emit(handlers::NewClass, k, count | nest_ << 8).a.number = kind;
  } else if (kind == TK_CALL) {
    Emit(handlers::NewScriptBegin, k).a.name = NameAt(at_);
    Step1();
    const uint32_t count = Arguments(k);
    if (failed_) return;
    Emit(handlers::NewScriptEnd, k, count | nest_ << 8);
  } else {
    Fail();
    return;
  }
  PushSlot(k);
}

// A member of Math, Program and the like: bound here.
void CCodeCompiler::FixedMember(uint16_t k, Evaluation& e) {
  Flush();
  CIBaseClassImpl* object = i_.fixedObjects[Kind()];
  Step1();
  const uint16_t kind = Kind();
  if (!object || (kind != TK_MEMBER && kind != TK_MEMBER_CALL)) {
    Fail();
    return;
  }
  const CIClassInfo& info = *object->classInfo;
  const KeywordRow* known = info.keywords->Find(i_.NameOf(i_.At(at_)));
  const MemberRow* row = known && known->id < info.rows.size() ? info.rows[known->id] : nullptr;
  if (!row || (!row->function && row->kind != MemberKind::Constant)) {
    Fail();
    return;
  }
  Step1();
  uint32_t count = 0;
  if (kind == TK_MEMBER_CALL) {
    count = Arguments(k);
    if (failed_) return;
  } else if (nest_ > 0) {
    Emit(handlers::CheckLevel, k, nest_);
  }
  if (!row->function) {
    PushConstant(k, *row);
    return;
  }
  const uint32_t instruction = Here();
  const bool mayBeEvent = Kind() == TK_ASSIGN;
  Instruction& i = Emit(handlers::FixedCall, k, count | nest_ << 8);
  i.a.pointer = row;
  i.b.pointer = object;
  if (mayBeEvent) SideExit(instruction, e, k, false);
  if (!IsDropped(e, k) && !row->gives) x_.suspects = true;
  if (EqualNoCase(row->name, kErrorEvent)) x_.suspects = true;
  if (EqualNoCase(row->name, kCollector)) x_.collects = true;
  PushSlot(k);
}

// Whether the value at slot k is the whole of a statement, and so is looked at by nobody.
bool CCodeCompiler::IsDropped(const Evaluation& e, uint16_t k) const {
  return e.use == Use::Statement && e.ops.size() == 1 && k <= 1 && Kind() == TK_SEMICOLON;
}

// The row of a member of texts that has a quick way; null for none.
const MemberRow* CCodeCompiler::QuickTextMember(uint32_t token) const {
  const CIClassInfo* info = i_.ClassInfo(CLASS_STRING);
  const KeywordRow* known =
      info && info->table && info->table->create ? info->keywords->Find(i_.NameOf(i_.At(token))) : nullptr;
  const MemberRow* row = known && known->id < info->rows.size() ? info->rows[known->id] : nullptr;
  return row && row->onNumbers ? row : nullptr;
}

// A member of any class in use that might leave its slot as it was.
void CCodeCompiler::NoteMember(uint32_t token) {
  if (x_.SlotShowers(TokenNameId(i_.At(token))) & x_.families) x_.suspects = true;
}

void CCodeCompiler::ClassConstant(uint16_t k) {
  const CIClassInfo* info = i_.ClassInfo(Kind());
  Step1();
  if (!info || Kind() != TK_MEMBER) {
    Fail();
    return;
  }
  const KeywordRow* known = info->keywords->Find(i_.NameOf(i_.At(at_)));
  const MemberRow* row = known && known->id < info->rows.size() ? info->rows[known->id] : nullptr;
  if (!row || row->kind != MemberKind::Constant) {
    Fail();
    return;
  }
  PushConstant(k, *row);
  Step1();
}

void CCodeCompiler::PrimaryOther(uint16_t k, Evaluation& e) {
  const uint16_t kind = Kind();
  switch (kind) {
    case TK_NEW:
      NewObject(k);
      return;
    case TK_THIS:
    case TK_CURWINDOW:
      Flush();
      if (IsMemberToken(KindAt(Next(at_)))) {
        // Where there is no window, that fails at the word itself.
        if (kind == TK_CURWINDOW) Emit(handlers::WindowValue, k, 1);
        Step1();
        PlainCall plain;
        if (kind == TK_THIS && Kind() == TK_MEMBER_CALL && code_.kind == CodeKind::Method && nest_ == 0 &&
            ScanPlain(plain)) {
          EmitPlain(plain, k, handlers::PlainOwnMethodOf(x_.traces));
        }
        Members(k, e, kind == TK_THIS ? MemberFrom::This : MemberFrom::CurWindow);
        EndPlain(plain);
        return;
      }
      Emit(kind == TK_THIS ? handlers::ThisValue : handlers::WindowValue, k);
      Step1();
      PushSlot(k);
      return;
    case TK_TEXT: {
      code_.constants.emplace_back(&i_);
      code_.constants.back().SetString(TokenText(i_.At(at_)));
      Value value;
      value.kind = kConstant;
      value.k = k;
      value.constant = &code_.constants.back();
      Step1();
      if (!IsMemberToken(Kind())) {
        Push(value);
        return;
      }
      Push(value);
      Flush();
      values_.pop_back();
      Members(k, e, MemberFrom::SlotText);
      return;
    }
    case TK_ZERO:
    case TK_FALSE:
    case TK_OFF:
    case TK_TRUE:
    case TK_ON:
      PushInteger(k, kind == TK_TRUE || kind == TK_ON);
      Step1();
      return;
    case TK_OMITTED: {
      Value value;
      value.k = k;
      value.isDefault = true;
      Push(value);
      Step1();
      return;
    }
    default:
      if (kind < TK_CLASS_FIRST || kind > TK_CLASS_LAST) {
        Fail();
      } else if (FactsOfClass(kind).fixed) {
        FixedMember(k, e);
      } else {
        ClassConstant(k);
      }
  }
}

// The chain of members at the cursor. It goes on only behind a variable of a script object; behind anything else the
// evaluation ends there.
void CCodeCompiler::Members(uint16_t k, Evaluation& e, MemberFrom from) {
  for (;;) {
    const uint32_t token = at_;
    const uint16_t kind = Kind();
    if (kind == TK_MEMBER_CALL) {
      // A call changes no local of its caller: what is assigned to a local need not be known before.
      const MemberRow* quick = QuickTextMember(token);
      const bool keepsTarget = quick && code_.kind == CodeKind::Function && KeepsTarget(e) && !AssignsBehind(token) &&
                               values_[0].kind == kLocal;
      if (keepsTarget) {
        FlushOperands(e);
      } else {
        Flush();
      }
      Emit(handlers::MemberCallBegin, k, static_cast<uint32_t>(from)).b.pointer = quick;
      Step1();
      const uint32_t count = Arguments(k, keepsTarget);
      if (failed_) return;
      const uint32_t instruction = Here();
      const bool mayBeEvent = Kind() == TK_ASSIGN;
      Emit(handlers::MemberCallEnd, k, count | nest_ << 8).a.number = token;
      if (mayBeEvent) SideExit(instruction, e, k, false);
      if (!IsDropped(e, k)) NoteMember(token);
      PushSlot(k);
      return;
    }
    Step1();
    if (kind == TK_MEMBER) {
      const uint16_t next = Kind();
      const bool chains = IsMemberToken(next);
      // A variable of This is often a number and at its place.
      if (from == MemberFrom::This && code_.kind == CodeKind::Method && !chains) {
        Emit(handlers::OwnMember, k).b.number = TokenNameId(i_.At(token));
      }
      const uint32_t instruction = Here();
      Instruction& i = Emit(handlers::MemberGet, k,
                            static_cast<uint32_t>(from) | (next == TK_ASSIGN ? 0x100 : 0) | (chains ? 0x200 : 0));
      i.at = token;
      i.a.number = nest_;
      if (chains || next == TK_ASSIGN) SideExit(instruction, e, k, chains);
      // What is assigned to has no value that could be seen.
      const bool isTarget = next == TK_ASSIGN && e.ops.size() == 1;
      if (!isTarget && !IsDropped(e, k)) NoteMember(token);
      if (!chains) {
        PushSlot(k);
        return;
      }
      from = MemberFrom::Source;
      continue;
    }
    if (kind != TK_MEMBER_ELEMENT) {
      Fail();
      return;
    }
    uint32_t first = at_;
    while (KindAt(first) != TK_BRACKET_CLOSE) {
      if (KindAt(first) == TK_END) {
        Fail();
        return;
      }
      first = Next(first);
    }
    const uint32_t unknown = Here();
    Instruction& i = Emit(handlers::MemberElementOf, k,
                          static_cast<uint32_t>(from) | (KindAt(Next(first)) == TK_ASSIGN ? 0x100 : 0));
    i.at = token;
    i.a.number = Next(first);
    Subscripts(k, e, unknown, first, token);
    return;
  }
}

}  // namespace vl
