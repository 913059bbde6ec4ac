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
    EnterEvaluation();
    CValue* bank = args.data() + level * limits::kArgumentsPerLevel;
    for (;;) {
      const CValue* value = Evaluate();
      if (count >= limits::kArgumentsPerLevel) RaiseError(ERR_TOO_MANY);
      bank[count++].Assign(*value);
      if (TokenKindOf(readCursor) != TK_COMMA) break;
      readCursor += kPlainRecord;
    }
    --evaluationDepth;
    argDepth = level;
  }
  if (TokenKindOf(readCursor) != TK_PAREN_CLOSE) RaiseError(ERR_SYNTAX);
  readCursor += kPlainRecord;
  if (count >= limits::kArgumentsPerLevel) RaiseError(ERR_TOO_MANY);
  argCounts[level] = count;
  highWater = std::max(highWater, static_cast<int32_t>(level) * limits::kArgumentsPerLevel + count);
  return static_cast<uint32_t>(count);
}

CIBaseObjectVar* CInterpretor::NewFrame() {
  auto* fresh = new CIBaseObjectVar(*this, CIBaseClassImpl::Listing::None);
  fresh->refCount = 1;
  fresh->isCallFrame = true;
  return fresh;
}

// The function that a call's name stands for: the current object's own, else the global one.
const BlockRecord& CInterpretor::FunctionOf(Token token, CIBaseObjectVar& object) {
  CVariable* variable = TokenVariable(token);
  const uint32_t nameId = TokenNameId(token);
  if (variable->home != &object.variables || variable->nameId != nameId) {
    variable = object.variables.Find(nameId);
    if (variable) SetTokenVariable(Writable(token), variable);
    if (!variable && &object != this) variable = variables.Find(nameId);
  }
  if (!variable || variable->type != VT_FUNCTION) RaiseNoFunction(token, variable);
  return *variable->data.function;
}

void CInterpretor::RaiseNoFunction(Token token, const CVariable* variable) {
  if (!variable) RaiseError(ERR_UNKNOWN_FUNCTION, kNoArgument, "no function " + NameOf(token));
  RaiseError(ERR_FUNCTION_VALUE, kNoArgument, NameOf(token) + " isn't a function");
}

void CInterpretor::CallByName() {
  CIBaseObjectVar& object = *thisObject;
  CallFunction(FunctionOf(readCursor, object), object);
}

void CInterpretor::CallFunction(const BlockRecord& block, CIBaseObjectVar& newThis) {
  // The object must outlive its own method, whatever that deletes; so must it outlive its arguments.
  struct Held {
    CInterpretor& i;
    CIBaseObjectVar& object;
    CIBaseObjectVar* frame;
    ~Held() {
      frame->variables.Clear(i.framePool);
      i.freeFrames_.push_back(frame);
      i.Unpin(&object);
    }
  } held{*this, newThis, TakeFrame()};
  ++newThis.pins;
  const uint16_t kind = TokenKindOf(readCursor);
  readCursor += kNameRecord;
  argCounts[argDepth] = 0;
  if (kind == TK_CALL || kind == TK_MEMBER_CALL) EvaluateArguments();
  // The body evaluates above this slot, so the value can go straight to it.
  CValue& slot = *values[sp];
  slot.SetInt(0);
  slot.lvalue = nullptr;
  RunFunction(block, *held.frame, newThis, slot);
}

void CInterpretor::RunFunction(const BlockRecord& block, CIBaseObjectVar& newFrame, CIBaseObjectVar& newThis,
                               CValue& result) {
  if (callDepth >= limits::kMaxCallDepth) RaiseTooManyCalls();
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
      // Everything of the function's levels goes at once.
      i.frame->variables.RemoveFromLevel(depth + 1, i.PoolOf(*i.frame));
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

void CInterpretor::RaiseTooManyCalls() {
  RaiseError(ERR_MEMORY, kNoArgument,
             "more than " + std::to_string(limits::kMaxCallDepth) + " script calls in progress");
}

void CInterpretor::BindParameters() {
  const CValue* bank = args.data() + argDepth * limits::kArgumentsPerLevel;
  const int32_t count = argCounts[argDepth];
  for (int32_t i = 0;; ++i) {
    readCursor += kPlainRecord;
    if (TokenKindOf(readCursor) != TK_NAME) RaiseError(ERR_SYNTAX, kNoArgument, "a parameter must be a name");
    CVariable* parameter = AddVariable(*frame, TokenNameId(readCursor), scopeDepth);
    if (i < count) {
      parameter->Assign(bank[i]);
    } else {
      parameter->SetDefault();
    }
    readCursor += kNameRecord;
    if (TokenKindOf(readCursor) != TK_COMMA) return;
  }
}

void CInterpretor::SetPart(int32_t number) {
  currentPartNumber = number;
  if (app) app->SetCurrentPart(app->GetPartByNumber(static_cast<uint32_t>(number)));
}

}  // namespace vl
