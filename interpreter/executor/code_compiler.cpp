#include "interpreter/executor/code_compiler.h"

#include "interpreter/executor/handlers.h"

namespace vl {

namespace {
// Slots and locals are addressed with 16 bits, and a call's locals lie in one piece.
constexpr uint32_t kMaxSlots = 2000;
constexpr uint32_t kMaxLocals = 2000;
}  // namespace

Instruction& CCodeCompiler::Emit(Handler run, uint32_t k, uint32_t n) {
  if (k + 3 > code_.slots) code_.slots = k + 3;
  if (k > kMaxSlots || n > 0xFFFF) failed_ = true;
  Instruction& i = code_.instructions.emplace_back();
  i.run = run;
  i.k = static_cast<uint16_t>(k);
  i.n = static_cast<uint16_t>(n);
  i.at = at_;
  return i;
}

bool CCodeCompiler::CompileProgram() {
  code_.kind = CodeKind::Global;
  end_ = static_cast<uint32_t>(i_.tokens.size());
  placeOf_.assign(end_ / 4 + 2, UINT32_MAX);
  Statements(end_);
  return Finish();
}

bool CCodeCompiler::CompileFunction(const BlockRecord& block) {
  code_.block = &block;
  code_.part = static_cast<int32_t>(block.sourcePart);
  start_ = block.extra;
  end_ = Next(block.bodyEnd);
  placeOf_.assign((end_ - start_) / 4 + 2, UINT32_MAX);
  at_ = Next(block.extra);
  // Parameters first; a second one of the same name hides the first.
  std::vector<uint32_t> parameters;
  if (Kind() == TK_PAREN_OPEN) {
    do {
      Step1();
      if (Kind() != TK_NAME) return false;
      parameters.push_back(at_);
      Step1();
    } while (Kind() == TK_COMMA);
  }
  if (code_.kind != CodeKind::Global) {
    for (const uint32_t token : parameters) {
      const uint32_t nameId = TokenNameId(i_.At(token));
      if (code_.byName.contains(nameId)) return false;
      AddLocal(token);
      code_.parameters.push_back(code_.byName[nameId]->offset);
      code_.byName[nameId]->sure = true;
      code_.byName[nameId]->isParameter = true;
    }
    code_.parameterCount = static_cast<uint32_t>(parameters.size());
    CollectLocals(block.bodyStart, block.bodyEnd);
  } else {
    for (const uint32_t token : parameters) code_.parameters.push_back(TokenNameId(i_.At(token)));
  }
  open_.push_back(&block);
  scopes_.push_back(&code_.scopes.emplace_back());
  at_ = Next(block.bodyStart);
  Statements(end_);
  return Finish();
}

bool CCodeCompiler::CompileExpression(const Code& parent, uint32_t offset) {
  code_.kind = parent.kind;
  code_.block = parent.block;
  code_.locals = parent.spare;
  for (const auto& [nameId, name] : parent.byName) {
    code_.names.push_back(*name);
    code_.byName[nameId] = &code_.names.back();
  }
  at_ = start_ = offset;
  const auto level = parent.levelAt.find(offset);
  baseLevel_ = level != parent.levelAt.end() ? level->second : 1;
  parentLocals_ = parent.locals;
  // What it makes may live until any block of the parent ends; the parent's lists already hold all names it assigns.
  Value value = EvaluateNested(0, Use::Whole);
  if (failed_) return false;
  FlushOne(value);
  Emit(handlers::StopExpression, 1);
  const uint32_t needed = code_.locals;
  return Finish() && needed <= parent.locals;
}

// Every name that an assignment may make here. A name that is only read never is a variable of the call's frame.
void CCodeCompiler::CollectLocals(uint32_t from, uint32_t to) {
  uint16_t before = 0;
  for (uint32_t at = from; at < to; at = Next(at)) {
    uint16_t kind = KindAt(at);
    if (kind == TK_FUNCTION) {
      at = i_.blocks[TokenWord2(i_.At(at))].bodyEnd;
      before = TK_BRACE_CLOSE;
      continue;
    }
    const uint16_t next = KindAt(Next(at));
    if (kind == TK_ELEMENT || (kind == TK_NAME && (next == TK_ASSIGN || next == TK_PAREN_CLOSE))) {
      AddLocal(at);
      if (before == TK_VAR) code_.byName[TokenNameId(i_.At(at))]->sure = true;
    }
    before = kind;
  }
}

void CCodeCompiler::AddLocal(uint32_t token) {
  const uint32_t nameId = TokenNameId(i_.At(token));
  if (code_.byName.contains(nameId)) return;
  NameInfo& name = code_.names.emplace_back();
  name.nameId = nameId;
  name.token = token;
  name.cell = x_.CellOf(nameId);
  name.isLocal = true;
  // Where no global of that name is in sight.
  name.sure = code_.kind == CodeKind::Function && *name.cell == &x_.absent && !x_.topNames.contains(nameId);
  name.offset = NewLocal();
  code_.byName[nameId] = &name;
}

int64_t CCodeCompiler::NewLocal() {
  if (code_.locals >= kMaxLocals) failed_ = true;
  return static_cast<int64_t>(code_.locals++ * sizeof(CValue));
}

// A place among the locals for a value that a statement keeps.
int64_t CCodeCompiler::Temporary() {
  ++temporaries_;
  return NewLocal();
}

NameInfo* CCodeCompiler::NameAt(uint32_t token) {
  const uint32_t nameId = TokenNameId(i_.At(token));
  const auto local = code_.byName.find(nameId);
  NameInfo* known = local != code_.byName.end() ? local->second : nullptr;
  const bool declared = token == declared_;
  if (!declared) {
    if (known) return known;
    NameInfo*& global = globals_[nameId];
    if (!global) {
      global = &code_.names.emplace_back();
      global->nameId = nameId;
      global->token = token;
      global->cell = x_.CellOf(nameId);
    }
    return global;
  }
  NameInfo& name = code_.names.emplace_back();
  if (known) name = *known;
  name.nameId = nameId;
  name.token = token;
  name.cell = x_.CellOf(nameId);
  name.declared = true;
  return &name;
}

void CCodeCompiler::MayMake(const NameInfo* name) {
  // A parameter is there from the start and lasts as long as the call.
  if (!name->isLocal || name->isParameter) return;
  for (std::vector<int64_t>* scope : scopes_) {
    if (std::find(scope->begin(), scope->end(), name->offset) == scope->end()) scope->push_back(name->offset);
  }
}

const CValue* CCodeCompiler::NumberConstant(const CValue& v) {
  code_.constants.emplace_back(&i_);
  code_.constants.back().Assign(v);
  return &code_.constants.back();
}

// The jumps get their targets once all instructions stand where they stay.
bool CCodeCompiler::Finish() {
  // Either may ask for more of the other.
  size_t arrays = 0;
  size_t exits = 0;
  while (!failed_ && (arrays < lateArrays_.size() || exits < exits_.size())) {
    if (arrays < lateArrays_.size()) {
      EmitLateArray(LateArray(lateArrays_[arrays++]));
    } else {
      EmitExit(Exit(exits_[exits++]));
    }
  }
  if (failed_) return false;
  for (const auto& [instruction, offset] : toOffsets_) {
    const size_t place = (offset - start_) / 4;
    if (offset < start_ || place >= placeOf_.size() || placeOf_[place] == UINT32_MAX) return false;
    code_.instructions[instruction].target.target = &code_.instructions[placeOf_[place]];
  }
  for (const auto& [instruction, label] : toLabels_) {
    if (labels_[label] >= code_.instructions.size()) return false;
    code_.instructions[instruction].target.target = &code_.instructions[labels_[label]];
  }
  code_.first = code_.instructions.data();
  code_.spare = code_.locals;
  code_.locals += temporaries_;
  // An expression's calls keep their locals behind those of the function that it is part of.
  const uint32_t locals = parentLocals_ ? parentLocals_ : code_.locals;
  for (const uint32_t instruction : toLocalsEnd_) {
    code_.instructions[instruction].offsetTarget += static_cast<int64_t>(locals * sizeof(CValue));
  }
  DropEmptyScopes();
  return code_.slots <= kMaxSlots;
}

// A block that made no local has nothing to close: its instruction becomes the end of statement that follows.
void CCodeCompiler::DropEmptyScopes() {
  for (Instruction& i : code_.instructions) {
    if (i.run != handlers::CloseLocals) continue;
    if (!static_cast<const std::vector<int64_t>*>(i.a.pointer)->empty()) continue;
    const Instruction& behind = *(&i + 1);
    if (behind.run == handlers::EndStatement) {
      i.run = handlers::JumpStatement;
      i.target.target = &behind + 1;
    } else if (behind.run == handlers::JumpStatement) {
      i.run = handlers::JumpStatement;
      i.target = behind.target;
    }
  }
}

// What an evaluation that ends before its time still does: the operators that wait, and then what its statement does.
void CCodeCompiler::EmitExit(const Exit& exit) {
  code_.instructions[exit.instruction].target.index = 0;
  const uint32_t label = NewLabel();
  Bind(label);
  JumpToLabel(exit.instruction, label);
  at_ = exit.at;
  scopes_ = exit.scopes;
  if (exit.target) Emit(handlers::LoadNamed, 1).a.name = exit.target;
  for (const Step& step : exit.steps) {
    if (step.op == TK_COLON) {
      Emit(handlers::Select, step.k).offsetA = step.offset;
    } else if (step.op == TK_CONDITIONAL) {
      Emit(handlers::Fail, 0, ERR_SYNTAX);
    } else if (step.op == TK_ASSIGN) {
      const uint32_t instruction = Here();
      Emit(handlers::Assign, step.k).offsetA = Level();
      if (step.lateToken) {
        lateArrays_.push_back({instruction, step.lateToken, step.k, at_, NewLabel(), exit.nest, exit.scopes});
        Bind(lateArrays_.back().back);
      }
    } else {
      Emit(handlers::ReduceAny, step.k, step.op);
    }
  }
  const uint32_t code = Kind() == TK_MEMBER_CALL ? uint32_t{ERR_UNDEFINED} : uint32_t{ERR_SYNTAX};
  switch (exit.use) {
    case Use::Delete:
      if (exit.early) {
        Emit(handlers::Delete, 1);
        Emit(handlers::EndStatement, 0);
        Emit(handlers::Fail, 0, code);
        break;
      }
      JumpToLabel(Here(), exit.label);
      Emit(handlers::Jump, 0);
      break;
    case Use::Statement:
      Emit(handlers::EndStatement, 0);
      if (exit.early) {
        Emit(handlers::Fail, 0, code);
        break;
      }
      JumpToLabel(Here(), exit.label);
      Emit(handlers::Jump, 0);
      break;
    case Use::Condition:
      JumpToOffset(Here(), exit.testOffset);
      Emit(exit.test, 1);
      if (exit.early && exit.afterTest) {
        at_ = Next(at_);
        Emit(handlers::Fail, 0, ERR_SYNTAX);
        break;
      }
      JumpToLabel(Here(), exit.label);
      Emit(handlers::Jump, 0);
      break;
    case Use::Nested:
    case Use::Argument:
    case Use::Subscript:
      if (exit.early) {
        // The value is taken before its end is looked at.
        if (exit.use == Use::Argument) {
          Emit(handlers::ArgumentOf(x_.traces, kSlot), exit.k, exit.place << 2 | kSlot).offsetA =
              static_cast<int64_t>(exit.place * sizeof(CValue));
        }
        if (exit.use == Use::Subscript) {
          Emit(handlers::Subscript, exit.k - 1u);
          at_ = Next(at_);
        }
        Emit(handlers::Fail, 0, ERR_SYNTAX);
        break;
      }
      [[fallthrough]];
    default:
      if (exit.use == Use::Whole && exit.early) {
        Emit(handlers::StopExpression, 1);
        break;
      }
      // A value that can't be kept fails where it ended.
      if (exit.kept) Emit(handlers::KeepSwitch, 1).offsetA = exit.kept;
      JumpToLabel(Here(), exit.label);
      Emit(handlers::Jump, 0);
      break;
  }
}

void CCodeCompiler::EmitLateArray(const LateArray& late) {
  const uint32_t label = NewLabel();
  Bind(label);
  JumpToLabel(late.instruction, label);
  at_ = late.at;
  values_.clear();
  nest_ = late.nest;
  scopes_ = late.scopes;
  Emit(handlers::MakeArray, late.k).offsetA = Level();
  at_ = Next(late.token);
  const uint32_t count = ReadSubscripts(static_cast<uint16_t>(late.k + 1));
  Emit(handlers::StoreArray, late.k, count);
  JumpToLabel(Here(), late.back);
  Emit(handlers::Jump, 0);
}

}  // namespace vl
