// The expression walker: primaries, reductions, variables, elements and assignment.
//
// Two parallel stacks: `values` and `ops`, with the common top `sp`. Precedence is the operator's token kind.
#include "base/limits.h"
#include "interpreter/interpretor.h"

namespace vl {

namespace {
bool IsMemberToken(uint16_t kind) { return kind >= TK_MEMBER_CALL && kind <= TK_MEMBER_ELEMENT; }
}  // namespace

void CInterpretor::GrowValues() {
  constexpr size_t kStep = 100;
  const size_t size = valueStore.size() + kStep;
  if (!budget.Take(kStep * (sizeof(CValue) + sizeof(CValue*)))) RaiseError(ERR_MEMORY);
  valueStore.reserve(size);
  valuePointers.reserve(size);
  while (valueStore.size() < size) {
    valueStore.push_back(std::make_unique<CValue>(this));
    valuePointers.push_back(valueStore.back().get());
  }
  ops.resize(size, 0);
  values = valuePointers.data();
  valueLimit_ = static_cast<uint32_t>(size);
}

inline CVariable* CInterpretor::FindVariable(Token token) {
  const uint32_t nameId = TokenNameId(token);
  if (CVariable* v = frame->variables.Find(nameId)) return v;
  if (token == declared) return nullptr;
  if (thisObject != frame) {
    if (CVariable* v = thisObject->variables.Find(nameId)) return v;
  }
  if (frame == this || thisObject == this) return nullptr;
  return variables.Find(nameId);
}

// The loop holds the cursor and the top of the stacks in locals and writes them back before anything that may
// throw or run code. Names and numbers are read, and operators on integers run, right here.
CValue* CInterpretor::Evaluate() {
  if (++evaluationDepth > limits::kMaxEvaluationDepth) {
    --evaluationDepth;
    RaiseError(ERR_MEMORY, kNoArgument, "evaluation nested too deeply");
  }
  const uint32_t base = sp;
  uint32_t top = base;
  Token cursor = readCursor;
  ops[base] = 0;
  for (;;) {
    // Two slots of headroom: the primary's own, and one for an omitted right side.
    if (++top + 2 >= valueLimit_) GrowValues();
    sp = top;
    CValue& slot = *values[top];
    const uint16_t primary = TokenKindOf(cursor);
    if (primary == TK_NAME) {
      CVariable* variable = FindVariable(cursor);
      const Token next = TokenNext(cursor);
      if (variable && variable->type <= VT_FLOAT && slot.IsPlain() && !IsMemberToken(TokenKindOf(next))) {
        slot.type = variable->type;
        slot.data = variable->data;
        slot.lvalue = variable;
        cursor = next;
      } else {
        readCursor = next;
        if (variable) {
          ReadValue(*variable);
        } else {
          slot.SetNew(VT_NEW_NAME, OffsetOf(cursor));
        }
        cursor = readCursor;
      }
    } else if (primary == TK_DECIMAL && slot.IsPlain()) {
      slot.type = VT_INTEGER;
      slot.data.integer = static_cast<int32_t>(TokenWord(cursor));
      slot.lvalue = nullptr;
      cursor = TokenNext(cursor);
    } else {
      readCursor = cursor;
      Primary();
      cursor = readCursor;
    }
    for (;;) {
      const uint32_t kind = TokenKindOf(cursor);
      if (kind - TK_OPERATOR_FIRST <= TK_OPERATOR_LAST - TK_OPERATOR_FIRST && kind > ops[top - 1]) {
        ops[top] = kind;
        cursor = TokenNext(cursor);
        if (kind == TK_INCREMENT || kind == TK_DECREMENT) {
          // The common end of a postfix: its right side is an omitted value, and it is reduced first.
          CValue& left = *values[top];
          const uint32_t next = TokenKindOf(cursor);
          if (left.type == VT_INTEGER && left.lvalue && left.lvalue->type == VT_INTEGER &&
              (next == TK_SEMICOLON || next == TK_PAREN_CLOSE || next == TK_COMMA)) {
            const uint32_t step = kind == TK_INCREMENT ? 1u : ~0u;
            left.lvalue->data.integer = static_cast<int32_t>(static_cast<uint32_t>(left.lvalue->data.integer) + step);
            CValue& omitted = *values[top + 1];
            omitted.SetDefault();
            omitted.lvalue = nullptr;
            continue;
          }
        }
        break;  // the next primary
      }
      sp = --top;
      if (top == base) {
        readCursor = cursor;
        --evaluationDepth;
        return values[base + 1];
      }
      const uint32_t op = ops[top];
      CValue& left = *values[top];
      CValue& right = *values[top + 1];
      if ((left.type | right.type) == VT_INTEGER) {
        const int32_t a = left.data.integer;
        const int32_t b = right.data.integer;
        switch (op) {
          case TK_ADD:
            left.data.integer = static_cast<int32_t>(static_cast<uint32_t>(a) + static_cast<uint32_t>(b));
            continue;
          case TK_SUB:
            left.data.integer = static_cast<int32_t>(static_cast<uint32_t>(a) - static_cast<uint32_t>(b));
            continue;
          case TK_MUL:
            left.data.integer = static_cast<int32_t>(static_cast<uint32_t>(a) * static_cast<uint32_t>(b));
            continue;
          case TK_LESS:
            left.data.integer = a < b;
            continue;
          case TK_LESS_EQUAL:
            left.data.integer = a <= b;
            continue;
          case TK_GREATER:
            left.data.integer = a > b;
            continue;
          case TK_GREATER_EQUAL:
            left.data.integer = a >= b;
            continue;
          case TK_EQUAL:
            left.data.integer = a == b;
            continue;
          case TK_NOT_EQUAL:
            left.data.integer = a != b;
            continue;
          case TK_AND:
            left.data.integer = a & b;
            continue;
          case TK_OR:
            left.data.integer = a | b;
            continue;
          default:
            break;
        }
      } else if ((left.type | right.type) == VT_FLOAT) {
        const double a = left.type == VT_FLOAT ? left.data.real : left.data.integer;
        const double b = right.type == VT_FLOAT ? right.data.real : right.data.integer;
        switch (op) {
          case TK_ADD:
            left.type = VT_FLOAT;
            left.data.real = a + b;
            continue;
          case TK_SUB:
            left.type = VT_FLOAT;
            left.data.real = a - b;
            continue;
          case TK_MUL:
            left.type = VT_FLOAT;
            left.data.real = a * b;
            continue;
          case TK_LESS:
            left.type = VT_INTEGER;
            left.data.integer = a < b;
            continue;
          case TK_GREATER:
            left.type = VT_INTEGER;
            left.data.integer = a > b;
            continue;
          default:
            break;
        }
      }
      if (op == TK_ASSIGN && (left.type <= VT_ARRAY || left.type == VT_DEFAULT) && left.lvalue &&
          right.type <= VT_FLOAT && left.lvalue->IsPlain()) {
        left.lvalue->type = right.type;
        left.lvalue->data = right.data;
        std::swap(values[top], values[top + 1]);
        continue;
      }
      readCursor = cursor;
      Reduce(op);
      cursor = readCursor;
    }
  }
}

// Runs an operator on values[sp] and values[sp + 1]; the common ones on numbers without leaving this function.
void CInterpretor::Reduce(uint32_t op) {
  CValue& left = *values[sp];
  CValue& right = *values[sp + 1];
  const bool integers = (left.type | right.type) == VT_INTEGER;
  switch (op) {
    case TK_ASSIGN:
      Assignment();
      return;
    case TK_ADD_ASSIGN:
    case TK_SUB_ASSIGN:
    case TK_MUL_ASSIGN:
    case TK_DIV_ASSIGN:
    case TK_AND_ASSIGN:
    case TK_OR_ASSIGN:
    case TK_XOR_ASSIGN:
    case TK_MOD_ASSIGN:
    case TK_SHL_ASSIGN:
    case TK_SHR_ASSIGN: {
      if (left.type >= VT_NEW_NAME && left.type <= VT_NEW_ELEMENT) RaiseError(ERR_UNDEFINED);
      CValue* variable = left.lvalue;
      if (!variable) RaiseError(ERR_UNDEFINED);
      using Operator = void (*)(CValue&, CValue&);
      static constexpr Operator kOperators[] = {ValueAdd,       ValueSubtract,  ValueMultiply, ValueDivide,
                                                ValueAnd,       ValueOr,        ValueXor,      ValueModulo,
                                                ValueShiftLeft, ValueShiftRight};
      // The variable's own text is the only holder when the copy in the slot goes first: appending is in place.
      if (variable->type == VT_STRING) left.SetInt(0);
      kOperators[op - TK_ADD_ASSIGN](*variable, right);
      left.Assign(*variable);
      left.lvalue = variable;
      return;
    }
    case TK_CONDITIONAL:
      Conditional();
      return;
    case TK_LOGICAL_AND: {
      const bool a = left.IsTrue();
      const bool b = right.IsTrue();
      left.SetInt(a && b);
      break;
    }
    case TK_LOGICAL_OR: {
      const bool a = left.IsTrue();
      const bool b = right.IsTrue();
      left.SetInt(a || b);
      break;
    }
    case TK_GREATER_EQUAL:
      if (integers) {
        left.data.integer = left.data.integer >= right.data.integer;
      } else {
        ValueGreaterEqual(left, right);
      }
      break;
    case TK_LESS_EQUAL:
      if (integers) {
        left.data.integer = left.data.integer <= right.data.integer;
      } else {
        ValueLessEqual(left, right);
      }
      break;
    case TK_EQUAL:
      if (integers) {
        left.data.integer = left.data.integer == right.data.integer;
      } else {
        ValueEqual(left, right);
      }
      break;
    case TK_LESS:
      if (integers) {
        left.data.integer = left.data.integer < right.data.integer;
      } else {
        ValueLess(left, right);
      }
      break;
    case TK_GREATER:
      if (integers) {
        left.data.integer = left.data.integer > right.data.integer;
      } else {
        ValueGreater(left, right);
      }
      break;
    case TK_NOT_EQUAL:
      if (integers) {
        left.data.integer = left.data.integer != right.data.integer;
      } else {
        ValueNotEqual(left, right);
      }
      break;
    case TK_NOT:
      ValueNot(left);
      break;
    case TK_COMPLEMENT:
      ValueComplement(left);
      break;
    case TK_INCREMENT:
    case TK_DECREMENT:
      if (left.type >= VT_NEW_NAME && left.type <= VT_NEW_ELEMENT) RaiseError(ERR_UNDEFINED);
      if (!left.lvalue) RaiseError(ERR_UNDEFINED);
      ValueIncrement(*left.lvalue, op == TK_INCREMENT ? 1 : -1);
      return;
    case TK_ADD:
      if (integers) {
        left.data.integer =
            static_cast<int32_t>(static_cast<uint32_t>(left.data.integer) + static_cast<uint32_t>(right.data.integer));
      } else {
        ValueAdd(left, right);
      }
      break;
    case TK_SUB:
      if (integers) {
        left.data.integer =
            static_cast<int32_t>(static_cast<uint32_t>(left.data.integer) - static_cast<uint32_t>(right.data.integer));
      } else {
        ValueSubtract(left, right);
      }
      break;
    case TK_DIV:
      ValueDivide(left, right);
      break;
    case TK_MUL:
      ValueMultiply(left, right);
      break;
    case TK_AND:
      ValueAnd(left, right);
      break;
    case TK_OR:
      ValueOr(left, right);
      break;
    case TK_XOR:
      ValueXor(left, right);
      break;
    case TK_MOD:
      ValueModulo(left, right);
      break;
    case TK_SHL:
      ValueShiftLeft(left, right);
      break;
    case TK_SHR:
      ValueShiftRight(left, right);
      break;
    default:
      RaiseError(ERR_SYNTAX);
  }
  // `lvalue` stays: the result of an operator still names the variable that its left side was read from.
}

// `=`: the result is the right operand with its own lvalue, so the pointers of the two slots swap.
void CInterpretor::Assignment() {
  CValue& left = *values[sp];
  CValue& right = *values[sp + 1];
  if (right.type >= VT_NEW_NAME && right.type <= VT_NEW_ELEMENT) RaiseError(ERR_UNDEFINED);
  switch (left.type) {
    case VT_NEW_NAME: {
      CVariable* variable = AddVariable(*frame, TokenNameId(At(left.data.token)), scopeDepth);
      variable->Assign(right);
      break;
    }
    case VT_NEW_MEMBER: {
      auto* object = static_cast<CIBaseObjectVar*>(left.lvalueObject);
      AddVariable(*object, TokenNameId(At(left.data.token)), 0)->Assign(right);
      break;
    }
    case VT_NEW_ARRAY:
      StoreNewArray(*frame, At(left.data.token), scopeDepth, left, right);
      return;
    case VT_NEW_MEMBER_ARRAY: {
      auto* object = static_cast<CIBaseObjectVar*>(left.lvalueObject);
      StoreNewArray(*object, At(left.data.token), 0, left, right);
      return;
    }
    case VT_NEW_ELEMENT: {
      CValue* variable = left.lvalue;
      if (variable->type != VT_ARRAY) RaiseError(ERR_UNDEFINED);
      CValue& element = variable->data.array->Store(left.data.token, right);
      left.Assign(right);
      left.lvalue = &element;
      return;
    }
    default:
      if (!left.lvalue) RaiseError(ERR_SYNTAX);
      left.lvalue->Assign(right);
      break;
  }
  std::swap(values[sp], values[sp + 1]);
}

void CInterpretor::StoreNewArray(CIBaseObjectVar& object, Token token, int32_t level, CValue& left,
                                 const CValue& right) {
  const Token back = readCursor;
  // The value is kept: the subscripts are evaluated in the slots above.
  CValue value(this);
  value.Assign(right);
  CVariable* variable = AddVariable(object, TokenNameId(token), level);
  variable->SetArray(NewArray());
  readCursor = TokenNext(token);
  int32_t subscripts[CArrayStore::kMaxDimensions];
  ++sp;  // above the right operand
  values[sp]->ForgetTarget();
  const uint32_t count = ReadSubscripts(subscripts);
  --sp;
  if (variable->type != VT_ARRAY) RaiseError(ERR_UNDEFINED);
  CArrayStore& store = *variable->data.array;
  store.Store(store.Address(subscripts, count), value);
  readCursor = back;
  left.Assign(value);
  left.lvalue = nullptr;
}

// `?`: the walker stands on the colon; both branches are always evaluated.
void CInterpretor::Conditional() {
  if (TokenKindOf(readCursor) != TK_COLON) RaiseError(ERR_SYNTAX);
  readCursor = TokenNext(readCursor);
  CValue first(this);
  first.Assign(*values[sp + 1]);
  // The condition stays in values[sp]; the second branch is evaluated above it.
  const CValue* second = Evaluate();
  CValue& left = *values[sp];
  if (left.GetInt() != 0) {
    left.Assign(first);
  } else {
    left.Assign(*second);
  }
}

CVariable* CInterpretor::AddVariable(CIBaseObjectVar& object, uint32_t nameId, int32_t level) {
  CVariable* variable = object.variables.Add(nameId, level, variablePool);
  if (!variable) RaiseError(ERR_MEMORY);
  variable->SetInt(0);
  return variable;
}

void CInterpretor::Primary() {
  const Token token = readCursor;
  const uint16_t kind = TokenKindOf(token);
  switch (kind) {
    case TK_NAME:
      PrimaryName();
      return;
    case TK_DECIMAL:
    case TK_BASED:
    case TK_INTEGER: {
      CValue& slot = *values[sp];
      slot.SetInt(static_cast<int32_t>(TokenWord(token)));
      slot.lvalue = nullptr;
      readCursor = TokenNext(token);
      return;
    }
    case TK_ELEMENT:
      PrimaryElement();
      return;
    default:
      PrimarySlow(kind);
      return;
  }
}

void CInterpretor::PrimaryName() {
  const Token token = readCursor;
  CVariable* variable = FindVariable(token);
  readCursor = TokenNext(token);
  if (!variable) {
    values[sp]->SetNew(VT_NEW_NAME, OffsetOf(token));
    return;
  }
  ReadValue(*variable);
}

// Reads a variable or element into the current slot; the cursor stands behind its name.
void CInterpretor::ReadValue(CValue& source) {
  CValue& slot = *values[sp];
  const bool member = IsMemberToken(TokenKindOf(readCursor));
  if (!member) {
    slot.Assign(source);
    slot.lvalue = &source;
    return;
  }
  switch (source.type) {
    case VT_OBJECT:
      if (!source.data.object) RaiseError(ERR_NULL_OBJECT);
      MemberOf(source.data.object);
      return;
    case VT_STRING:
      slot.Assign(source);
      MemberOfText();
      return;
    default:
      RaiseError(ERR_NO_MEMBERS);
  }
}

uint32_t CInterpretor::ReadSubscripts(int32_t* subscripts) {
  uint32_t count = 0;
  for (;;) {
    if (count >= CArrayStore::kMaxDimensions) RaiseError(ERR_SUBSCRIPT_COUNT);
    subscripts[count++] = Evaluate()->GetInt();
    const uint16_t kind = TokenKindOf(readCursor);
    readCursor = TokenNext(readCursor);
    if (kind == TK_BRACKET_CLOSE) return count;
    if (kind != TK_COMMA) RaiseError(ERR_SYNTAX);
  }
}

CArrayStore& CInterpretor::ArrayOf(CValue& variable) {
  if (variable.type != VT_ARRAY) variable.SetArray(NewArray());
  return *variable.data.array;
}

void CInterpretor::PrimaryElement() {
  const Token token = readCursor;
  CVariable* variable = FindVariable(token);
  readCursor = TokenNext(token);
  if (!variable) {
    values[sp]->SetNew(VT_NEW_ARRAY, OffsetOf(token));
    SkipSubscriptsOfUnknown();
    return;
  }
  ReadElement(*variable);
}

// An array that doesn't exist: nothing is evaluated, the walker goes behind the first ] and expects =.
void CInterpretor::SkipSubscriptsOfUnknown() {
  while (TokenKindOf(readCursor) != TK_BRACKET_CLOSE) {
    if (TokenKindOf(readCursor) == TK_END) RaiseError(ERR_UNDEFINED);
    readCursor = TokenNext(readCursor);
  }
  readCursor = TokenNext(readCursor);
  if (TokenKindOf(readCursor) != TK_ASSIGN) RaiseError(ERR_UNDEFINED);
}

void CInterpretor::ReadElement(CValue& variable) {
  int32_t subscripts[CArrayStore::kMaxDimensions];
  // The subscripts may run code that ends the variable's scope.
  CValue& slot = *values[sp];
  slot.SetInt(0);
  slot.lvalue = &variable;
  const uint32_t count = ReadSubscripts(subscripts);
  CArrayStore& store = ArrayOf(variable);
  const uint32_t index = store.Address(subscripts, count);
  if (CValue* element = store.Element(index)) {
    ReadValue(*element);
    return;
  }
  values[sp]->SetNewElement(index, &variable);
  if (TokenKindOf(readCursor) != TK_ASSIGN) RaiseError(ERR_UNDEFINED);
}

void CInterpretor::PrimarySlow(uint16_t kind) {
  const Token token = readCursor;
  CValue& slot = *values[sp];
  slot.ForgetTarget();
  switch (kind) {
    case TK_END:
      RaiseError(ERR_END);
    case CLASS_MATH:
    case CLASS_DISK:
    case CLASS_KEYBOARD:
    case CLASS_SYSTEM:
    case CLASS_PROGRAM:
    case CLASS_DISPLAY:
    case CLASS_EDITOR: {
      CIBaseClassImpl* object = fixedObjects[kind];
      if (!object) RaiseError(ERR_SYNTAX);
      readCursor = TokenNext(token);
      const uint16_t next = TokenKindOf(readCursor);
      if (next != TK_MEMBER && next != TK_MEMBER_CALL) RaiseError(ERR_SYNTAX);
      CallClassMember(object);
      return;
    }
    case TK_CALL:
      CallByName();
      return;
    case TK_VAR:
      readCursor = TokenNext(token);
      declared = readCursor;
      Evaluate();
      return;
    case TK_NEW:
      NewObject();
      return;
    case TK_THIS:
      readCursor = TokenNext(token);
      if (IsMemberToken(TokenKindOf(readCursor))) {
        MemberOf(thisObject);
        return;
      }
      slot.SetObject(thisObject);
      slot.lvalue = nullptr;
      return;
    case TK_CURWINDOW:
      if (!currentWindow) RaiseError(ERR_NO_WINDOW);
      readCursor = TokenNext(token);
      if (IsMemberToken(TokenKindOf(readCursor))) {
        MemberOf(currentWindow);
        return;
      }
      slot.SetObject(currentWindow);
      slot.lvalue = nullptr;
      return;
    case TK_TEXT: {
      const uint32_t at = OffsetOf(token) >> 3;
      Text& literal = literals_[at];
      if (literal.IsNull() && !literal.Assign(TokenText(token), &budget)) RaiseError(ERR_MEMORY);
      slot.SetText(literal);
      slot.lvalue = nullptr;
      readCursor = TokenNext(token);
      if (IsMemberToken(TokenKindOf(readCursor))) MemberOfText();
      return;
    }
    case TK_FLOAT:
      slot.SetFloat(TokenFloat(token));
      slot.lvalue = nullptr;
      readCursor = TokenNext(token);
      return;
    case TK_ZERO:
    case TK_FALSE:
    case TK_OFF:
    case TK_TRUE:
    case TK_ON:
      slot.SetInt(kind == TK_TRUE || kind == TK_ON);
      slot.lvalue = nullptr;
      readCursor = TokenNext(token);
      return;
    case TK_OMITTED:
      slot.SetDefault();
      slot.lvalue = nullptr;
      readCursor = TokenNext(token);
      return;
    case TK_PAREN_OPEN: {
      readCursor = TokenNext(token);
      CValue* inner = Evaluate();
      if (TokenKindOf(readCursor) != TK_PAREN_CLOSE) RaiseError(ERR_SYNTAX);
      readCursor = TokenNext(readCursor);
      if (IsMemberToken(TokenKindOf(readCursor))) {
        if (inner->type == VT_OBJECT) {
          CIBaseClassImpl* object = inner->GetObjectNotNull();
          // The slot keeps the object alive while its member runs.
          slot.SetObject(object);
          slot.lvalue = nullptr;
          MemberOf(object);
          return;
        }
        if (inner->type == VT_STRING) {
          slot.Assign(*inner);
          MemberOfText();
          return;
        }
      }
      // The value moves down with its lvalue; types 6 to 10 too, so that (x) = 1 works.
      std::swap(values[sp], values[sp + 1]);
      return;
    }
    case TK_PAREN_CLOSE:
    case TK_COMMA:
    case TK_SEMICOLON:
      slot.SetDefault();
      slot.lvalue = nullptr;
      return;
    case TK_NOT:
    case TK_COMPLEMENT:
    case TK_ADD:
    case TK_SUB:
      readCursor = TokenNext(token);
      Primary();
      if (kind == TK_NOT) {
        ValueNot(*values[sp]);
      } else if (kind == TK_COMPLEMENT) {
        ValueComplement(*values[sp]);
      } else if (kind == TK_SUB) {
        ValueNegate(*values[sp]);
      }
      return;
    default:
      if (kind >= TK_CLASS_FIRST && kind <= TK_CLASS_LAST) {
        ClassConstant(kind);
        return;
      }
      RaiseError(ERR_SYNTAX);
  }
}

}  // namespace vl
