// Calls of the code compiler: arguments, and the quick way of calls whose arguments run no code.
#include "interpreter/executor/code_compiler.h"
#include "interpreter/executor/handlers.h"

namespace vl {

namespace {
constexpr size_t kPlainArguments = 8;
}  // namespace

// The list behind an opened parenthesis, into the bank; gives the count.
uint32_t CCodeCompiler::Arguments(uint16_t k, bool isFlushed) {
  if (!isFlushed) Flush();
  if (nest_ > 0) Emit(handlers::CheckLevel, k, nest_);
  uint32_t count = 0;
  if (Kind() != TK_PAREN_CLOSE) {
    ++nest_;
    for (;;) {
      if (count >= limits::kArgumentsPerLevel - 1) {
        Fail();
        return 0;
      }
      const uint32_t place = (nest_ - 1) * limits::kArgumentsPerLevel + count;
      Value value = EvaluateNested(k, Use::Argument, false, place);
      if (failed_) return 0;
      if (value.isDefault) FlushOne(value);
      // A literal text in the bank is put there by way of its slot, as any other value.
      Instruction& i = Emit(handlers::ArgumentOf(x_.traces, value.kind), k + 1u, place << 2 | value.kind);
      SetB(i, value);
      i.offsetA = static_cast<int64_t>(place * sizeof(CValue));
      ++count;
      if (Kind() != TK_COMMA) break;
      Step1();
    }
    --nest_;
  }
  if (Kind() != TK_PAREN_CLOSE || nest_ > limits::kArgumentLevels) {
    Fail();
    return 0;
  }
  Step1();
  return count;
}

// One operand of a plain argument at `at`; steps over it.
bool CCodeCompiler::ScanOperand(uint32_t& at, Value& value) {
  const uint16_t kind = KindAt(at);
  CValue number(&i_);
  if (kind == TK_NAME) {
    if (IsMemberToken(KindAt(Next(at))) || at == declared_) return false;
    value.name = NameAt(at);
    value.kind = value.name->sure ? kLocal : kName;
    // A method's names may be variables of its object.
    if (code_.kind == CodeKind::Method && value.kind == kName) return false;
  } else if (kind == TK_DECIMAL || kind == TK_BASED) {
    number.SetInt(static_cast<int32_t>(TokenWord(i_.At(at))));
  } else if (kind == TK_FLOAT) {
    number.SetFloat(TokenFloat(i_.At(at)));
  } else {
    return false;
  }
  if (kind != TK_NAME) {
    value.kind = kConstant;
    value.constant = NumberConstant(number);
  }
  at = Next(at);
  return true;
}

// The arguments of the call at the cursor, when each is an operand or a sum, difference, product or mask of two.
bool CCodeCompiler::ScanPlain(PlainCall& call) {
  uint32_t at = Next(at_);
  while (KindAt(at) != TK_PAREN_CLOSE) {
    PlainArgument argument;
    Value first;
    if (!ScanOperand(at, first)) return false;
    const uint16_t op = KindAt(at);
    if (op == TK_ADD || op == TK_SUB || op == TK_MUL || op == TK_AND) {
      at = Next(at);
      if (first.kind == kConstant || !ScanOperand(at, argument.b)) return false;
      argument.op = op;
      argument.a = first;
    } else {
      argument.b = first;
    }
    call.arguments.push_back(argument);
    if (KindAt(at) != TK_COMMA) break;
    at = Next(at);
    if (KindAt(at) == TK_PAREN_CLOSE || call.arguments.size() >= kPlainArguments) return false;
  }
  call.isPlain = KindAt(at) == TK_PAREN_CLOSE;
  return call.isPlain;
}

// The quick way of a call; what does the same for anything else must follow, and EndPlain.
Instruction& CCodeCompiler::EmitPlain(PlainCall& call, uint16_t k, Handler run) {
  Flush();
  const uint32_t common = NewLabel();
  call.behind = NewLabel();
  const auto count = static_cast<uint32_t>(call.arguments.size());
  if (nest_ > 0) {
    JumpToLabel(Here(), common);
    Emit(handlers::PlainLevel, k, nest_);
  }
  for (uint32_t p = 0; p < count; ++p) {
    const PlainArgument& argument = call.arguments[p];
    BehindLocals(Here());
    JumpToLabel(Here(), common);
    Instruction& i = Emit(handlers::ParameterOf(x_.traces, argument.op, argument.a.kind, argument.b.kind), k + 1u,
                          p + nest_ * limits::kArgumentsPerLevel);
    SetA(i, argument.a);
    SetB(i, argument.b);
    i.offsetTarget = static_cast<int64_t>((p + 1) * sizeof(CValue));
  }
  const uint32_t instruction = Here();
  BehindLocals(instruction);
  JumpToLabel(instruction, call.behind);
  Emit(run, k, count | nest_ << 8);
  Bind(common);
  if (count > 0) {
    BehindLocals(Here());
    Emit(handlers::ResetArguments, 0, count);
  }
  return code_.instructions[instruction];
}

void CCodeCompiler::Call(uint16_t k) {
  Flush();
  NameInfo* name = NameAt(at_);
  PlainCall plain;
  if (ScanPlain(plain)) {
    Instruction& i = EmitPlain(plain, k, handlers::PlainCallOf(x_.traces, code_.kind, nest_ > 0));
    i.a.pointer = name->cell;
    i.offsetA = name->nameId;
  }
  Emit(handlers::CallBegin, k).a.name = name;
  Step1();
  const uint32_t count = Arguments(k);
  if (failed_) return;
  Emit(handlers::CallEnd, k, count | nest_ << 8);
  EndPlain(plain);
  PushSlot(k);
}

}  // namespace vl
