// Calls of script functions: arguments, frames, parameters.
#include "base/limits.h"
#include "host/appfile/app_file.h"
#include "interpreter/interpretor.h"

namespace vl {

// Evaluates the list behind an opened parenthesis into the current level of the bank; gives the count.
uint32_t CInterpretor::EvaluateArguments() {
  const uint32_t level = argDepth;
  if (level >= limits::kArgumentLevels) {
    RaiseError(ERR_TOO_MANY, kNoArgument, "argument lists nested more than 16 deep");
  }
  values[sp]->ForgetTarget();
  int32_t count = 0;
  if (TokenKindOf(readCursor) != TK_PAREN_CLOSE) {
    argDepth = level + 1;
    CValue* bank = args.data() + level * limits::kArgumentsPerLevel;
    for (;;) {
      const CValue* value = EvaluateInner();
      if (count >= limits::kArgumentsPerLevel) RaiseError(ERR_TOO_MANY);
      bank[count++].Assign(*value);
      if (TokenKindOf(readCursor) != TK_COMMA) break;
      readCursor = TokenNext(readCursor);
    }
    argDepth = level;
  }
  if (TokenKindOf(readCursor) != TK_PAREN_CLOSE) RaiseError(ERR_SYNTAX);
  readCursor = TokenNext(readCursor);
  if (count >= limits::kArgumentsPerLevel) RaiseError(ERR_TOO_MANY);
  argCounts[level] = count;
  highWater = std::max(highWater, static_cast<int32_t>(level) * limits::kArgumentsPerLevel + count);
  return static_cast<uint32_t>(count);
}

CIBaseObjectVar* CInterpretor::TakeFrame() {
  if (!freeFrames_.empty()) {
    CIBaseObjectVar* used = freeFrames_.back();
    freeFrames_.pop_back();
    return used;
  }
  auto* fresh = new CIBaseObjectVar(*this, CIBaseClassImpl::Listing::None);
  fresh->refCount = 1;
  return fresh;
}

void CInterpretor::GiveFrame(CIBaseObjectVar* used) {
  used->variables.Clear(variablePool);
  freeFrames_.push_back(used);
}

const BlockRecord& CInterpretor::FunctionNamed(Token token, CVariable* variable) {
  if (!variable) RaiseError(ERR_UNKNOWN_FUNCTION, kNoArgument, "no function " + NameOf(token));
  if (variable->type != VT_FUNCTION) {
    RaiseError(ERR_FUNCTION_VALUE, kNoArgument, NameOf(token) + " isn't a function");
  }
  return *variable->data.function;
}

void CInterpretor::CallByName() {
  const Token token = readCursor;
  const uint32_t nameId = TokenNameId(token);
  CVariable* variable = thisObject->variables.Find(nameId);
  if (!variable && thisObject != this) variable = variables.Find(nameId);
  const BlockRecord& block = FunctionNamed(token, variable);
  struct FrameOwner {
    CInterpretor& i;
    CIBaseObjectVar* frame;
    ~FrameOwner() { i.GiveFrame(frame); }
  } owner{*this, TakeFrame()};
  CallFunction(block, *owner.frame, *thisObject);
}

void CInterpretor::CallFunction(const BlockRecord& block, CIBaseObjectVar& newFrame, CIBaseObjectVar& newThis) {
  const uint16_t kind = TokenKindOf(readCursor);
  readCursor = TokenNext(readCursor);
  // The object must outlive its own method, whatever that deletes; so must it outlive its arguments.
  struct Pin {
    CInterpretor& i;
    CIBaseObjectVar& o;
    ~Pin() { i.Unpin(&o); }
  } pin{*this, newThis};
  ++newThis.pins;
  argCounts[argDepth] = 0;
  if (kind == TK_CALL || kind == TK_MEMBER_CALL) EvaluateArguments();
  CValue result(this);
  result.SetInt(0);
  RunFunction(block, newFrame, newThis, result);
  CValue& slot = *values[sp];
  slot.Assign(result);
  slot.lvalue = nullptr;
}

void CInterpretor::RunFunction(const BlockRecord& block, CIBaseObjectVar& newFrame, CIBaseObjectVar& newThis,
                               CValue& result) {
  if (callDepth >= limits::kMaxCallDepth) {
    RaiseError(ERR_MEMORY, kNoArgument,
               "more than " + std::to_string(limits::kMaxCallDepth) + " script calls in progress");
  }
  // Restores the caller's state on both ways out.
  struct Scope {
    explicit Scope(CInterpretor& i)
        : i(i),
          frame(i.frame),
          thisObject(i.thisObject),
          cursor(i.readCursor),
          depth(i.scopeDepth),
          part(i.currentPartNumber) {
      ++i.callDepth;
    }
    ~Scope() {
      --i.callDepth;
      while (i.scopeDepth > depth) {
        // Everything of the function's levels goes at once.
        i.scopeDepth = depth + 1;
        i.PopScope();
      }
      i.scopeDepth = depth;
      i.frame = frame;
      i.thisObject = thisObject;
      i.readCursor = cursor;
      if (i.currentPartNumber != part) i.SetPart(part);
    }
    CInterpretor& i;
    CIBaseObjectVar* frame;
    CIBaseObjectVar* thisObject;
    Token cursor;
    int32_t depth;
    int32_t part;
  } scope(*this);
  PushScope(block);
  frame = &newFrame;
  thisObject = &newThis;
  readCursor = TokenNext(At(block.extra));
  if (TokenKindOf(readCursor) == TK_PAREN_OPEN) BindParameters();
  if (static_cast<int32_t>(block.sourcePart) != currentPartNumber) SetPart(static_cast<int32_t>(block.sourcePart));
  StatementWalk(TokenNext(At(block.bodyStart)), &result);
}

void CInterpretor::BindParameters() {
  const CValue* bank = args.data() + argDepth * limits::kArgumentsPerLevel;
  const int32_t count = argCounts[argDepth];
  for (int32_t i = 0;; ++i) {
    readCursor = TokenNext(readCursor);
    if (TokenKindOf(readCursor) != TK_NAME) RaiseError(ERR_SYNTAX, kNoArgument, "a parameter must be a name");
    CVariable* parameter = AddVariable(*frame, TokenNameId(readCursor), scopeDepth);
    if (i < count) {
      parameter->Assign(bank[i]);
    } else {
      parameter->SetDefault();
    }
    readCursor = TokenNext(readCursor);
    if (TokenKindOf(readCursor) != TK_COMMA) return;
  }
}

void CInterpretor::SetPart(int32_t number) {
  currentPartNumber = number;
  if (app) app->SetCurrentPart(app->GetPartByNumber(static_cast<uint32_t>(number)));
}

}  // namespace vl
