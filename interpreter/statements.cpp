// The statement walk and the actions of the statement tokens.
#include "interpreter/interpretor.h"

namespace vl {

void CInterpretor::StatementWalk(Token start, CValue* result) {
  struct Restore {
    CInterpretor& i;
    bool returned;
    CValue* returnValue;
    ~Restore() {
      i.returned = returned;
      i.returnValue = returnValue;
    }
  } restore{*this, returned, returnValue};
  returned = false;
  returnValue = result;
  readCursor = start;
  for (;;) {
    uint16_t kind = TokenKindOf(readCursor);
    if (kind == TK_SEMICOLON) {
      readCursor = TokenNext(readCursor);
      kind = TokenKindOf(readCursor);
    }
    switch (kind) {
      case TK_NAME:
      case TK_ELEMENT:
        Evaluate();
        break;
      case TK_IF:
        DoIf();
        break;
      case TK_RETURN:
        DoReturn();
        return;
      case TK_BRACE_CLOSE:
        DoCloseBrace();
        if (returned) return;
        break;
      default:
        Action(kind);
        if (returned) return;
        break;
    }
    Housekeeping();
  }
}

void CInterpretor::Action(uint16_t kind) {
  const Token token = readCursor;
  switch (kind) {
    case TK_THIS:
      Evaluate();
      return;
    case TK_CALL:
      CallByName();
      return;
    case TK_BRACE_OPEN:
      PushScope(blocks[TokenWord2(token)]);
      readCursor = TokenNext(token);
      return;
    case TK_ELSE:
      do {
        readCursor = At(TokenWord(readCursor));
      } while (TokenKindOf(readCursor) == TK_ELSE);
      return;
    case TK_FOR:
      DoFor();
      return;
    case TK_WHILE:
      DoWhile();
      return;
    case TK_SWITCH:
      DoSwitch();
      return;
    case TK_CASE: {
      Token t = token;
      while (TokenKindOf(t) != TK_SEMICOLON) {
        if (TokenKindOf(t) == TK_END) RaiseError(ERR_CASE_END);
        t = TokenNext(t);
      }
      readCursor = t;
      return;
    }
    case TK_DEFAULT:
    case TK_SEMICOLON:
      readCursor = TokenNext(token);
      return;
    case TK_BREAK:
      DoBreak();
      return;
    case TK_CONTINUE:
      DoContinue();
      return;
    case TK_DELETE:
      DoDelete();
      return;
    case TK_FUNCTION:
      GoBehind(blocks[TokenWord2(token)].bodyEnd);
      return;
    case TK_MAIN_START:
      SetPart(static_cast<int32_t>(TokenWord(token)));
      readCursor = TokenNext(token);
      return;
    case TK_MAIN_END:
    case TK_END:
      RaiseError(ERR_END);
    case TK_VAR:
    case TK_TEXT:
    case TK_CURWINDOW:
    case CLASS_MATH:
    case CLASS_DISK:
    case CLASS_KEYBOARD:
    case CLASS_SYSTEM:
    case CLASS_PROGRAM:
    case CLASS_DISPLAY:
    case CLASS_EDITOR:
      PrimarySlow(kind);
      return;
    case TK_MEMBER_CALL:
      RaiseError(ERR_UNDEFINED, kNoArgument, "a call's value can't be followed by a member");
    default:
      RaiseError(ERR_SYNTAX);
  }
}

void CInterpretor::DoIf() {
  const Token token = readCursor;
  readCursor = token + kWordRecord;
  if (Condition()) {
    readCursor = TokenNext(readCursor);
    return;
  }
  readCursor = At(TokenWord(token));
  if (TokenKindOf(readCursor) == TK_ELSE) readCursor = TokenNext(readCursor);
}

void CInterpretor::DoFor() {
  const Token token = readCursor;
  const BlockRecord& block = blocks[TokenWord2(token)];
  readCursor = TokenNext(token);
  Evaluate();
  PushScope(block);
  if (block.test) {
    readCursor = At(block.test);
    if (!Condition()) {
      GoBehind(block.bodyEnd);
      PopScope();
      return;
    }
  }
  GoBehind(block.bodyStart);
}

void CInterpretor::DoWhile() {
  const Token token = readCursor;
  const BlockRecord& block = blocks[TokenWord2(token)];
  readCursor = TokenNext(token);
  if (Condition()) {
    PushScope(block);
    GoBehind(block.bodyStart);
  } else {
    GoBehind(block.bodyEnd);
  }
}

void CInterpretor::DoCloseBrace() {
  if (scopeDepth <= 0) RaiseError(ERR_NO_BLOCK);
  const BlockRecord& block = *scopeBlocks[static_cast<size_t>(scopeDepth)];
  if (block.kind == kBlockFor || block.kind == kBlockWhile) {
    if (block.kind == kBlockFor && block.extra) {
      readCursor = At(block.extra);
      LoopStep();
    }
    if (block.test) {
      readCursor = At(block.test);
      if (!Condition()) {
        GoBehind(block.bodyEnd);
        PopScope();
        return;
      }
    }
    GoBehind(block.bodyStart);
    return;
  }
  switch (block.kind) {
    case kBlockPlain:
    case kBlockSwitch:
      PopScope();
      readCursor += kJumpRecord;
      return;
    case kBlockFunction:
      returned = true;
      if (returnValue) returnValue->SetInt(0);
      return;
    default:
      RaiseError(ERR_UNKNOWN_BLOCK);
  }
}

void CInterpretor::DoBreak() {
  while (scopeDepth > 0 && scopeBlocks[static_cast<size_t>(scopeDepth)]->kind == kBlockPlain) PopScope();
  if (scopeDepth <= 0) RaiseError(ERR_BREAK);
  const BlockRecord& block = *scopeBlocks[static_cast<size_t>(scopeDepth)];
  if (block.kind != kBlockFor && block.kind != kBlockWhile && block.kind != kBlockSwitch) RaiseError(ERR_BREAK);
  GoBehind(block.bodyEnd);
  PopScope();
}

void CInterpretor::DoContinue() {
  while (scopeDepth > 0 && scopeBlocks[static_cast<size_t>(scopeDepth)]->kind == kBlockPlain) PopScope();
  if (scopeDepth <= 0) RaiseError(ERR_CONTINUE);
  const BlockRecord& block = *scopeBlocks[static_cast<size_t>(scopeDepth)];
  if (block.kind != kBlockFor && block.kind != kBlockWhile) RaiseError(ERR_CONTINUE);
  readCursor = At(block.bodyEnd);
}

void CInterpretor::DoSwitch() {
  const Token token = readCursor;
  const BlockRecord& block = blocks[TokenWord2(token)];
  PushScope(block);
  readCursor = TokenNext(token);
  CValue kept(this);
  kept.Assign(*Evaluate());
  uint32_t label = TokenWord(token);
  while (label) {
    const Token t = At(label);
    label = TokenWord(t);
    if (TokenKindOf(t) == TK_DEFAULT) continue;
    readCursor = TokenNext(t);
    CValue* value = Evaluate();
    if (ValueIsEqual(kept, *value)) {
      readCursor = TokenNext(readCursor);
      return;
    }
  }
  if (block.extra) {
    readCursor = At(block.extra);
    return;
  }
  GoBehind(block.bodyEnd);
  PopScope();
}

void CInterpretor::DoReturn() {
  if (scopeDepth <= 0) RaiseError(ERR_RETURN, kNoArgument, "Return outside a function");
  readCursor = TokenNext(readCursor);
  CValue* result = returnValue;
  if (result) {
    if (TokenKindOf(readCursor) == TK_SEMICOLON) {
      result->SetInt(0);
    } else {
      result->Assign(*Evaluate());
    }
  }
  returned = true;
}

void CInterpretor::DoDelete() {
  readCursor = TokenNext(readCursor);
  CIBaseClassImpl* object = Evaluate()->GetObjectNotNull();
  if (object == this) RaiseError(ERR_DELETE_INTERPRETER);
  DeleteObject(object);
}

}  // namespace vl
