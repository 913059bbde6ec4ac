// The expression walker: primaries, reductions, variables, elements and assignment.
//
// Two parallel stacks: `values` and `ops`, with the common top `sp`. Precedence is the operator's token kind.
#include <cstdlib>

#include "base/limits.h"
#include "interpreter/interpretor.h"

namespace vl {

void CInterpretor::FreeStore::operator()(CValue* store) const { std::free(store); }

void CInterpretor::GrowValues() {
  constexpr size_t kStep = 100;
  const size_t size = valuePointers.size() + kStep;
  if (size > limits::kMaxValues) RaiseError(ERR_MEMORY, kNoArgument, "evaluation nested too deeply");
  if (!budget.Take(kStep * (sizeof(CValue) + sizeof(CValue*)))) RaiseError(ERR_MEMORY);
  valuePointers.reserve(size);
  while (valuePointers.size() < size) {
    valuePointers.push_back(new (&valueStore_[valuePointers.size()]) CValue(this));
  }
  opStore.resize(size, 0);
  ops = opStore.data();
  values = valuePointers.data();
  valueLimit_ = static_cast<uint32_t>(size);
}

inline CVariable* CInterpretor::FindVariable(Token token) {
  if (CVariable* known = KnownVariable(token)) [[likely]]
    return known;
  return FindAnew(token);
}

// By the tables: the frame's variable, the object's own, or a global one. The token keeps one of the frame.
CVariable* CInterpretor::FindAnew(Token token) {
  const uint32_t nameId = TokenNameId(token);
  if (CVariable* v = frame->variables.Find(nameId)) {
    SetTokenVariable(Writable(token), v);
    return v;
  }
  if (token == declared) return nullptr;
  if (thisObject != frame) {
    if (CVariable* v = thisObject->variables.Find(nameId)) return v;
  }
  if (frame == this || thisObject == this) return nullptr;
  return variables.Find(nameId);
}

namespace {

// Precedence by token kind: the kind itself for an operator, 0 for what ends an expression.
constexpr std::array<uint8_t, TK_KIND_COUNT> MakePrecedence() {
  std::array<uint8_t, TK_KIND_COUNT> table{};
  for (uint8_t kind = TK_OPERATOR_FIRST; kind <= TK_OPERATOR_LAST; ++kind) table[kind] = kind;
  return table;
}
constexpr std::array<uint8_t, TK_KIND_COUNT> kPrecedence = MakePrecedence();
// An evaluation's operators that wait grow in precedence, so this many slots are enough for it,
// with two above its top for a statement that it calls.
constexpr uint32_t kSlotsOfEvaluation = TK_OPERATOR_LAST - TK_OPERATOR_FIRST + 6;

// A number goes to a slot that owns nothing.
inline void PutNumber(CValue& slot, const CValue& number, CValue* lvalue) {
  slot.type = number.type;
  slot.data = number.data;
  slot.lvalue = lvalue;
}

inline double RealOf(const CValue& number) { return number.type == VT_FLOAT ? number.data.real : number.data.integer; }

// The operators on two numbers, in line. False when one side is no number: nothing has happened then.
template <typename F>
inline bool Calculate(CValue& left, const CValue& right, F f) {
  if ((left.type | right.type) == VT_INTEGER) {
    left.data.integer =
        static_cast<int32_t>(f(static_cast<uint32_t>(left.data.integer), static_cast<uint32_t>(right.data.integer)));
    return true;
  }
  if ((left.type | right.type) != VT_FLOAT) return false;
  left.data.real = f(RealOf(left), RealOf(right));
  left.type = VT_FLOAT;
  return true;
}

template <typename F>
inline bool Compare(CValue& left, const CValue& right, F f) {
  if ((left.type | right.type) == VT_INTEGER) {
    left.data.integer = f(left.data.integer, right.data.integer);
    return true;
  }
  if ((left.type | right.type) != VT_FLOAT) return false;
  left.data.integer = f(RealOf(left), RealOf(right));
  left.type = VT_INTEGER;
  return true;
}

template <typename F>
inline bool OnIntegers(CValue& left, const CValue& right, F f) {
  if ((left.type | right.type) != VT_INTEGER) return false;
  left.data.integer = static_cast<int32_t>(f(left.data.integer, right.data.integer));
  return true;
}

// The compound assignments on numbers: the variable changes, and the slot takes its new value.
template <typename F>
inline bool CalculateInPlace(CValue& left, const CValue& right, F f) {
  if (left.type > VT_FLOAT || !left.lvalue || !Calculate(*left.lvalue, right, f)) return false;
  left.type = left.lvalue->type;
  left.data = left.lvalue->data;
  return true;
}

inline bool StepInteger(const CValue& left, uint32_t step) {
  if (left.type != VT_INTEGER || !left.lvalue || left.lvalue->type != VT_INTEGER) return false;
  left.lvalue->data.integer = static_cast<int32_t>(static_cast<uint32_t>(left.lvalue->data.integer) + step);
  return true;
}

// Runs an operator on numbers: slots[0] is its left side, slots[1] its right one. False when it takes more
// than that: nothing has happened then.
inline bool ReduceNumbers(uint32_t op, CValue** slots) {
  CValue& left = *slots[0];
  CValue& right = *slots[1];
  switch (op) {
    case TK_ASSIGN:
      if (left.type >= VT_NEW_NAME && left.type != VT_DEFAULT) return false;
      if (!left.lvalue || right.type > VT_FLOAT || !left.lvalue->IsPlain()) return false;
      left.lvalue->type = right.type;
      left.lvalue->data = right.data;
      slots[0] = &right;
      slots[1] = &left;
      return true;
    case TK_ADD_ASSIGN:
      return CalculateInPlace(left, right, [](auto a, auto b) { return a + b; });
    case TK_SUB_ASSIGN:
      return CalculateInPlace(left, right, [](auto a, auto b) { return a - b; });
    case TK_MUL_ASSIGN:
      return CalculateInPlace(left, right, [](auto a, auto b) { return a * b; });
    case TK_LOGICAL_AND:
      return OnIntegers(left, right, [](int32_t a, int32_t b) { return a != 0 && b != 0; });
    case TK_LOGICAL_OR:
      return OnIntegers(left, right, [](int32_t a, int32_t b) { return (a | b) != 0; });
    case TK_GREATER_EQUAL:
      return Compare(left, right, [](auto a, auto b) { return a >= b; });
    case TK_LESS_EQUAL:
      return Compare(left, right, [](auto a, auto b) { return a <= b; });
    case TK_EQUAL:
      return Compare(left, right, [](auto a, auto b) { return a == b; });
    case TK_LESS:
      return Compare(left, right, [](auto a, auto b) { return a < b; });
    case TK_GREATER:
      return Compare(left, right, [](auto a, auto b) { return a > b; });
    case TK_NOT_EQUAL:
      return Compare(left, right, [](auto a, auto b) { return a != b; });
    case TK_INCREMENT:
      return StepInteger(left, 1);
    case TK_DECREMENT:
      return StepInteger(left, ~0u);
    case TK_ADD:
      return Calculate(left, right, [](auto a, auto b) { return a + b; });
    case TK_SUB:
      return Calculate(left, right, [](auto a, auto b) { return a - b; });
    case TK_MUL:
      return Calculate(left, right, [](auto a, auto b) { return a * b; });
    case TK_DIV:
      if ((left.type | right.type) == VT_INTEGER) {
        if (right.data.integer <= 0) return false;
        left.data.integer /= right.data.integer;
        return true;
      }
      if ((left.type | right.type) != VT_FLOAT || RealOf(right) == 0.0) return false;
      left.data.real = RealOf(left) / RealOf(right);
      left.type = VT_FLOAT;
      return true;
    case TK_MOD:
      return right.data.integer > 0 && OnIntegers(left, right, [](int32_t a, int32_t b) { return a % b; });
    case TK_AND:
      return OnIntegers(left, right, [](int32_t a, int32_t b) { return a & b; });
    case TK_OR:
      return OnIntegers(left, right, [](int32_t a, int32_t b) { return a | b; });
    case TK_XOR:
      return OnIntegers(left, right, [](int32_t a, int32_t b) { return a ^ b; });
    case TK_SHL:
      return OnIntegers(left, right, [](int32_t a, int32_t b) { return static_cast<uint32_t>(a) << (b & 31); });
    case TK_SHR:
      return OnIntegers(left, right, [](int32_t a, int32_t b) { return a >> (b & 31); });
    default:
      return false;
  }
}

}  // namespace

// `a[i]` and `a[3]` where the array has one dimension and the element is a number. Gives the token behind, null
// when it takes more than that: nothing has happened then. The subscript is left above, as its evaluation does.
Token CInterpretor::ReadPlainElement(Token token, CValue** slots) {
  const CVariable* variable = FindVariable(token);
  const Token subscript = token + kNameRecord;
  if (!variable || variable->type != VT_ARRAY || !slots[0]->IsPlain() || !slots[1]->IsPlain()) return nullptr;
  CValue* source = nullptr;
  int32_t index = 0;
  Token next = subscript;
  if (TokenKindOf(subscript) == TK_NAME) {
    source = FindVariable(subscript);
    if (!source || source->type != VT_INTEGER) return nullptr;
    index = source->data.integer;
    next += kNameRecord;
  } else if (TokenKindOf(subscript) == TK_DECIMAL) {
    index = static_cast<int32_t>(TokenWord(subscript));
    next += kWordRecord;
  }
  if (TokenKindOf(next) != TK_BRACKET_CLOSE || next == subscript) return nullptr;
  next += kPlainRecord;
  CArrayStore& store = *variable->data.array;
  CValue* element = store.Place(store.InsideOfOne(static_cast<uint32_t>(index)));
  if (!element || element->type > VT_FLOAT || IsMemberToken(TokenKindOf(next))) return nullptr;
  CValue& above = *slots[1];
  above.type = VT_INTEGER;
  above.data.integer = index;
  above.lvalue = source;
  PutNumber(*slots[0], *element, element);
  return next;
}

// `o.name` where the script object has that variable and it is a number; as ReadPlainElement.
Token CInterpretor::ReadPlainMember(const CVariable& variable, Token member, CValue** slots) {
  if (variable.type != VT_OBJECT || TokenKindOf(member) != TK_MEMBER || !slots[0]->IsPlain()) return nullptr;
  const CIBaseClassImpl* object = variable.data.object;
  if (!object || object->classInfo) return nullptr;
  CVariable* found = static_cast<const CIBaseObjectVar*>(object)->variables.Find(TokenNameId(member));
  const Token next = member + kNameRecord;
  if (!found || found->type > VT_FLOAT || IsMemberToken(TokenKindOf(next))) return nullptr;
  PutNumber(*slots[0], *found, found);
  return next;
}

// The loop holds the cursor and the tops of the stacks in locals and writes them back before anything that may
// throw or run code. Numbers are read, and operators on numbers run, right here.
CValue* CInterpretor::Evaluate() {
  const uint32_t base = sp;
  if (base + kSlotsOfEvaluation > valueLimit_) GrowValues();
  Token cursor = readCursor;
  CValue** top = values + base;
  uint32_t* op = ops + base;  // what waits for the value at the top
  *op = 0;
  for (;;) {
    CValue& slot = **++top;
    Token next = nullptr;
    const auto header = ReadRaw<uint32_t>(cursor);
    if (header == kPlainNameHeader) {
      CVariable* variable = FindVariable(cursor);
      if (variable && variable->type <= VT_FLOAT && (slot.type <= VT_FLOAT || slot.IsPlain())) {
        PutNumber(slot, *variable, variable);
        next = cursor + kNameRecord;
      }
    } else {
      switch (header & 0xFFFF) {
        case TK_NAME:
          if (const CVariable* variable = FindVariable(cursor)) {
            next = ReadPlainMember(*variable, cursor + kNameRecord, top);
          }
          break;
        case TK_DECIMAL:
          if (slot.type <= VT_FLOAT || slot.IsPlain()) {
            slot.type = VT_INTEGER;
            slot.data.integer = static_cast<int32_t>(TokenWord(cursor));
            slot.lvalue = nullptr;
            next = cursor + kWordRecord;
          }
          break;
        case TK_FLOAT:
          if (slot.IsPlain()) {
            slot.type = VT_FLOAT;
            slot.data.real = TokenFloat(cursor);
            slot.lvalue = nullptr;
            next = cursor + kFloatRecord;
          }
          break;
        case TK_ELEMENT:
          next = ReadPlainElement(cursor, top);
          break;
        case TK_SEMICOLON:
        case TK_PAREN_CLOSE:
        case TK_COMMA:
          if (slot.IsPlain()) {
            slot.SetDefault();
            slot.lvalue = nullptr;
            next = cursor;
          }
          break;
        default:
          break;
      }
    }
    if (!next) {
      sp = static_cast<uint32_t>(top - values);
      readCursor = cursor;
      Primary();
      next = readCursor;
      top = values + sp;
      op = ops + sp - 1;
    }
    cursor = next;
    uint32_t precedence = kPrecedence[TokenKindOf(cursor)];
    while (precedence <= *op) {
      const uint32_t waiting = *op;
      if (waiting == 0) {
        sp = base;
        readCursor = cursor;
        return *top;
      }
      --op;
      --top;
      if (ReduceNumbers(waiting, top)) continue;
      sp = static_cast<uint32_t>(top - values);
      readCursor = cursor;
      Reduce(waiting);
      cursor = readCursor;
      top = values + sp;
      op = ops + sp - 1;
      precedence = kPrecedence[TokenKindOf(cursor)];
    }
    *++op = precedence;
    cursor += kPlainRecord;
  }
}

// The step of a loop at the cursor. `i++` on an integer runs right here, with the slots left as by its evaluation.
void CInterpretor::LoopStep() {
  const Token cursor = readCursor;
  const Token sign = cursor + kNameRecord;
  const Token next = sign + kPlainRecord;
  if (ReadRaw<uint32_t>(cursor) == kPlainNameHeader && TokenKindOf(sign) == TK_INCREMENT &&
      TokenKindOf(next) == TK_PAREN_CLOSE) {
    CVariable* variable = KnownVariable(cursor);
    CValue& slot = *values[sp + 1];
    CValue& above = *values[sp + 2];
    if (variable && variable->type == VT_INTEGER && slot.IsPlain() && above.IsPlain()) {
      PutNumber(slot, *variable, variable);
      above.SetDefault();
      above.lvalue = nullptr;
      StepInteger(slot, 1);
      readCursor = next;
      return;
    }
  }
  Evaluate();
}

// The condition at the cursor, read as an integer. The comparison of two integers that most loops have (a name with
// a name or number) runs right here, with the slots left as by its evaluation.
bool CInterpretor::Condition() {
  const Token cursor = readCursor;
  if (ReadRaw<uint32_t>(cursor) != kPlainNameHeader) return Evaluate()->GetInt() != 0;
  const Token sign = cursor + kNameRecord;
  const uint32_t comparison = TokenKindOf(sign);
  if (comparison < TK_GREATER_EQUAL || comparison > TK_NOT_EQUAL) return Evaluate()->GetInt() != 0;
  Token next = sign + kPlainRecord;
  CVariable* variable = nullptr;
  int32_t right = 0;
  if (ReadRaw<uint32_t>(next) == kPlainNameHeader) {
    variable = KnownVariable(next);
    if (!variable) return ConditionAnew();
    if (variable->type != VT_INTEGER) return Evaluate()->GetInt() != 0;
    right = variable->data.integer;
    next += kNameRecord;
  } else if (TokenKindOf(next) == TK_DECIMAL) {
    right = static_cast<int32_t>(TokenWord(next));
    next += kWordRecord;
  } else {
    return Evaluate()->GetInt() != 0;
  }
  CVariable* known = KnownVariable(cursor);
  if (!known) return ConditionAnew();
  CValue& slot = *values[sp + 1];
  CValue& above = *values[sp + 2];
  if (known->type != VT_INTEGER || kPrecedence[TokenKindOf(next)] != 0 || !slot.IsPlain() || !above.IsPlain()) {
    return Evaluate()->GetInt() != 0;
  }
  above.type = VT_INTEGER;
  above.data.integer = right;
  above.lvalue = variable;
  slot.type = VT_INTEGER;
  slot.lvalue = known;
  const int32_t left = known->data.integer;
  bool holds = false;
  switch (comparison) {
    case TK_GREATER_EQUAL:
      holds = left >= right;
      break;
    case TK_LESS_EQUAL:
      holds = left <= right;
      break;
    case TK_EQUAL:
      holds = left == right;
      break;
    case TK_LESS:
      holds = left < right;
      break;
    case TK_GREATER:
      holds = left > right;
      break;
    default:
      holds = left != right;
      break;
  }
  slot.data.integer = holds;
  readCursor = next;
  return holds;
}

// The same when a token doesn't know its variable: once both do, the short way is open.
bool CInterpretor::ConditionAnew() {
  const Token left = readCursor;
  const Token right = left + kNameRecord + kPlainRecord;
  FindAnew(left);
  if (TokenKindOf(right) == TK_NAME) FindAnew(right);
  if (KnownVariable(left) && (TokenKindOf(right) != TK_NAME || KnownVariable(right))) return Condition();
  return Evaluate()->GetInt() != 0;
}

void CInterpretor::RaiseTooDeep() {
  --evaluationDepth;
  RaiseError(ERR_MEMORY, kNoArgument, "evaluation nested too deeply");
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
      CValue& element = variable->data.array->StoreInCell(left.data.token, right);
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
  const CValue* second = EvaluateInner();
  CValue& left = *values[sp];
  if (left.GetInt() != 0) {
    left.Assign(first);
  } else {
    left.Assign(*second);
  }
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
    case TK_CALL:
      values[sp]->ForgetTarget();
      CallByName();
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
    subscripts[count++] = EvaluateInner()->GetInt();
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
  if (CValue* element = store.Place(index)) {
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
    case TK_VAR:
      readCursor = TokenNext(token);
      declared = readCursor;
      EvaluateInner();
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
      CValue* inner = EvaluateInner();
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
