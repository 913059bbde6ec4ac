// Member access: script objects, classes, texts, constants, and the arguments and results of members.
#include "interpreter/executor/executor.h"
#include "interpreter/interpretor.h"

namespace vl {

void SetConstant(CValue& slot, const MemberRow& row) {
  if (row.text) {
    slot.SetString(row.text);
  } else {
    slot.SetInt(static_cast<int32_t>(row.value));
  }
}

CValue* CInterpretor::GetArg(int i) {
  if (i < GetArgCount()) return &Arg(i);
  return &defaultValue;
}

Text CInterpretor::GetArgText(int i) {
  if (i < GetArgCount()) return Arg(i).GetText();
  return Text(kDefaultString);
}

CIBaseClassImpl* CInterpretor::GetArgObject(int i) {
  if (i >= GetArgCount()) RaiseError(ERR_OBJECT_MISSING);
  return Arg(i).GetObject();
}

CIBaseClassImpl* CInterpretor::GetArgObjectOfClass(int i, uint32_t wantedClass) {
  if (i >= GetArgCount() || !Arg(i).IsObjectOfClass(wantedClass)) RaiseError(ERR_WRONG_CLASS);
  return Arg(i).GetObject();
}

const BlockRecord* CInterpretor::GetEventFunction() {
  if (TokenKindOf(readCursor) != TK_ASSIGN) RaiseError(ERR_NOT_FUNCTION, kNoArgument, "= expected behind an event");
  readCursor = TokenNext(readCursor);
  values[sp]->ForgetTarget();
  const CValue* value = executor_ ? executor_->EvaluateAtCursor() : EvaluateInner();
  if (value->type <= VT_STRING && value->GetInt() == 0) return nullptr;
  return value->GetFunction();
}

void CInterpretor::ForwardMember(CIBaseClassImpl& object, uint16_t id) {
  const MemberRow* row = id < object.classInfo->rows.size() ? object.classInfo->rows[id] : nullptr;
  if (!row || !row->function) RaiseError(ERR_UNKNOWN_MEMBER);
  row->function(object);
}

bool CInterpretor::TakeOver(const CIError& error) {
  if (error.code == ERR_END || !errorHook) return false;
  errorHook->lastError = error;
  if (!errorHook->onError) return false;
  std::vector<CValue> arguments;
  arguments.reserve(5);
  arguments.push_back(MakeValue(static_cast<int32_t>(error.code)));
  arguments.push_back(MakeValue(std::string_view(FormatError(error.code, &error.line, errorTexts))));
  arguments.push_back(MakeValue(std::string_view(error.sourceName)));
  arguments.push_back(MakeValue(static_cast<int32_t>(error.column)));
  arguments.push_back(MakeValue(static_cast<int32_t>(error.line)));
  PostEvent(errorHook->onError, std::move(arguments));
  return true;
}

template <typename F>
void CInterpretor::Guarded(CIBaseClassImpl& object, F&& run) {
  struct Pin {
    CInterpretor& i;
    CIBaseClassImpl& o;
    ~Pin() { i.Unpin(&o); }
  } pin{*this, object};
  ++object.pins;
  const uint32_t savedSp = sp;
  const uint32_t savedArgDepth = argDepth;
  const int savedEvaluation = evaluationDepth;
  try {
    run();
  } catch (CIError& error) {
    sp = savedSp;
    argDepth = savedArgDepth;
    evaluationDepth = savedEvaluation;
    if (!TakeOver(error)) throw;
  }
}

uint32_t CInterpretor::ResolveMember(const CIClassInfo& info, Token token) {
  const uint16_t cached = TokenMemberId(token);
  if (cached != 0 && TokenMemberClass(token) == info.id) return cached;
  const KeywordRow* row = info.keywords->Find(NameOf(token));
  if (!row) {
    RaiseError(ERR_UNKNOWN_MEMBER, kNoArgument, std::string(info.name) + " has no member " + NameOf(token));
  }
  uint8_t* record = Writable(token);
  WriteRaw<uint32_t>(record + 4, row->id);
  WriteRaw<uint32_t>(record + 8, info.id);
  return row->id;
}

void CInterpretor::MemberOf(CIBaseClassImpl* object) {
  if (!object->classInfo) {
    MemberOfScriptObject(static_cast<CIBaseObjectVar*>(object));
  } else {
    CallClassMember(object);
  }
}

void CInterpretor::CallClassMember(CIBaseClassImpl* object) {
  const Token token = readCursor;
  const uint16_t kind = TokenKindOf(token);
  if (kind != TK_MEMBER_CALL && kind != TK_MEMBER) RaiseError(ERR_SYNTAX);
  const CIClassInfo& info = *object->classInfo;
  const uint32_t id = ResolveMember(info, token);
  const MemberRow* row = id < info.rows.size() ? info.rows[id] : nullptr;
  readCursor = TokenNext(token);
  CValue& slot = *values[sp];
  slot.ForgetTarget();
  if (kind == TK_MEMBER_CALL) {
    // The object must live until its member has run, whatever the arguments do.
    struct Pin {
      CInterpretor& i;
      CIBaseClassImpl& o;
      ~Pin() { i.Unpin(&o); }
    } pin{*this, *object};
    ++object->pins;
    EvaluateArguments();
    if (object->destroyed) RaiseError(ERR_NULL_OBJECT);
    if (row && row->function) {
      currentMember = static_cast<uint16_t>(id);
      Guarded(*object, [&] { row->function(*object); });
      return;
    }
  } else {
    if (argDepth >= limits::kArgumentLevels) RaiseError(ERR_TOO_MANY);
    argCounts[argDepth] = 0;
    if (row && row->function) {
      currentMember = static_cast<uint16_t>(id);
      Guarded(*object, [&] { row->function(*object); });
      return;
    }
  }
  if (row && row->kind == MemberKind::Constant) {
    SetConstant(slot, *row);
    return;
  }
  RaiseError(ERR_UNKNOWN_MEMBER, kNoArgument,
             std::string(info.name) + "." + NameOf(token) + " isn't part of this player yet");
}

void CInterpretor::ClassConstant(uint16_t classKind) {
  const CIClassInfo* info = ClassInfo(classKind);
  readCursor = TokenNext(readCursor);
  const Token token = readCursor;
  if (!info || TokenKindOf(token) != TK_MEMBER) RaiseError(ERR_SYNTAX);
  const uint32_t id = ResolveMember(*info, token);
  const MemberRow* row = id < info->rows.size() ? info->rows[id] : nullptr;
  if (!row || row->kind != MemberKind::Constant) {
    RaiseError(ERR_UNKNOWN_MEMBER, kNoArgument, std::string(info->name) + "." + NameOf(token) + " isn't a constant");
  }
  readCursor = TokenNext(token);
  SetConstant(*values[sp], *row);
}

const CIClassInfo& CInterpretor::RequireTexts() {
  const CIClassInfo* info = ClassInfo(CLASS_STRING);
  if (!info || !info->table || !info->table->create) RaiseError(ERR_UNKNOWN_MEMBER);
  return *info;
}

CIBaseClassImpl* CInterpretor::MakeText(CITextHolder*& holder) {
  CIBaseClassImpl* object = RequireTexts().table->create(*this);
  holder = &dynamic_cast<CITextHolder&>(*object);
  return object;
}

CIBaseClassImpl* CInterpretor::TakeText(CITextHolder*& holder) {
  if (freeTexts_.empty()) return MakeText(holder);
  const FreeText text = freeTexts_.back();
  freeTexts_.pop_back();
  holder = text.holder;
  return text.object;
}

// A member of the text in the current slot, run on a String that borrows it.
void CInterpretor::MemberOfText() {
  RequireTexts();
  struct Temporary {
    CInterpretor& i;
    CITextHolder* holder = nullptr;
    CIBaseClassImpl* object;
    explicit Temporary(CInterpretor& i) : i(i), object(i.TakeText(holder)) {}
    ~Temporary() {
      holder->SetHeldText(Text());
      i.GiveText(object, holder);
    }
  } temporary(*this);
  temporary.holder->SetHeldText(Text::Share(values[sp]->data.text));
  CallClassMember(temporary.object);
}

void CInterpretor::RunMember(CIBaseClassImpl& object, const MemberRow& row) {
  Guarded(object, [&] { row.function(object); });
}

void CInterpretor::MemberOfScriptObject(CIBaseObjectVar* object) {
  const Token token = readCursor;
  const uint16_t kind = TokenKindOf(token);
  CVariable* variable = object->variables.Find(TokenNameId(token));
  switch (kind) {
    case TK_MEMBER_CALL: {
      if (!variable || variable->type != VT_FUNCTION) RaiseNoFunction(token, variable);
      CallFunction(*variable->data.function, *object);
      return;
    }
    case TK_MEMBER:
      readCursor = TokenNext(token);
      if (variable) {
        ReadValue(*variable);
        return;
      }
      values[sp]->SetNewOfObject(VT_NEW_MEMBER, OffsetOf(token), object);
      if (TokenKindOf(readCursor) != TK_ASSIGN) {
        RaiseError(ERR_UNDEFINED, kNoArgument, "the object has no " + NameOf(token));
      }
      return;
    default:
      readCursor = TokenNext(token);
      if (variable) {
        ReadElement(*variable);
        return;
      }
      values[sp]->SetNewOfObject(VT_NEW_MEMBER_ARRAY, OffsetOf(token), object);
      SkipSubscriptsOfUnknown();
      return;
  }
}

void CInterpretor::NewObject() {
  readCursor = TokenNext(readCursor);
  const uint16_t kind = TokenKindOf(readCursor);
  if (kind >= TK_CLASS_FIRST && kind <= TK_CLASS_LAST) {
    NewClassObject(kind);
  } else if (kind == TK_CALL) {
    NewScriptObject();
  } else {
    RaiseError(ERR_SYNTAX);
  }
}

void CInterpretor::NewClassObject(uint16_t classKind) {
  readCursor = TokenNext(readCursor);
  EvaluateArguments();
  MakeClassObject(classKind);
}

void CInterpretor::MakeClassObject(uint16_t classKind) {
  if (FactsOfClass(classKind).fixed) RaiseError(ERR_FIXED_CLASS);
  const CIClassInfo* info = ClassInfo(classKind);
  if (!info || !info->table || !info->table->create) RaiseError(ERR_SYNTAX);
  CIBaseClassImpl* object = info->table->create(*this);
  // Until the result refers to it, this holds it.
  struct Owner {
    CInterpretor& i;
    CIBaseClassImpl* object;
    ~Owner() {
      if (object) i.DestroyObject(object, true);
    }
  } owner{*this, object};
  currentMember = 0;
  Guarded(*object, [&] { object->Construct(); });
  if (!object->alive) RaiseError(ERR_CONSTRUCTION, kNoArgument, std::string("New ") + info->name + " failed");
  CValue& slot = *values[sp];
  if (classKind == CLASS_STRING) {
    slot.SetText(dynamic_cast<CITextHolder&>(*object).HeldText());
    if (!slot.data.text) slot.SetString("");
    return;
  }
  const uint32_t kinds = applicationKind;
  if ((object->RequiredKinds() & kinds) == 0) RaiseError(ERR_UNKNOWN_MEMBER);
  slot.SetObject(object);
  owner.object = nullptr;
  CountNewObject();
}

void CInterpretor::NewScriptObject() {
  const Token token = readCursor;
  CVariable* variable = variables.Find(TokenNameId(token));
  if (!variable || variable->type != VT_FUNCTION) {
    RaiseError(ERR_UNKNOWN_FUNCTION, kNoArgument, "no function " + NameOf(token));
  }
  const BlockRecord& block = *variable->data.function;
  struct Owner {
    CInterpretor& i;
    CIBaseObjectVar* object;
    ~Owner() {
      object->Unhold();
      i.Unpin(object);
    }
  } owner{*this, new CIBaseObjectVar(*this, Listing::Listed)};
  owner.object->Hold();
  ++owner.object->pins;
  CallFunction(block, *owner.object);
  CValue& slot = *values[sp];
  if (owner.object->destroyed) {
    slot.SetInt(0);
  } else {
    owner.object->Construct();
    slot.SetObject(owner.object);
  }
  CountNewObject();
}

}  // namespace vl
