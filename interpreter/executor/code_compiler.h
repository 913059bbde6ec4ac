// CCodeCompiler: turns a stretch of the token stream into instructions.
//
// It walks the tokens as the walker would, with a stack of operators of its own, and notes at each step what the
// walker would do there. What can only fail (an operator where a value must stand) it leaves to the walker: it
// gives up, and the whole program runs there.
#pragma once

#include "interpreter/executor/executor.h"

namespace vl {

class CCodeCompiler {
 public:
  CCodeCompiler(CExecutor& executor, Code& code) : x_(executor), i_(executor.i), code_(code) {}
  bool CompileProgram();
  bool CompileFunction(const BlockRecord& block);
  // An expression inside the function or program of `parent`, whose locals it shares.
  bool CompileExpression(const Code& parent, uint32_t offset);

 private:
  // A value that the walker would hold in slot k by now; what isn't kSlot is put there when something needs it.
  struct Value {
    OperandKind kind = kSlot;
    uint16_t k = 0;
    NameInfo* name = nullptr;
    const CValue* constant = nullptr;
    bool isDefault = false;  // an omitted value
    uint32_t lateToken = 0;  // of an array that may not exist yet: where it stands in the stream
  };
  // A comparison that a jump takes over.
  struct Comparison {
    uint16_t op = 0;  // 0: none
    Value left;
    Value right;
  };
  // A call whose arguments are operands, or two with an operator between them.
  struct PlainArgument {
    uint16_t op = 0;  // 0: `b` alone
    Value a;
    Value b;
  };
  struct PlainCall {
    bool isPlain = false;
    uint32_t behind = 0;  // label
    std::vector<PlainArgument> arguments;
  };
  enum class Use : uint8_t {
    Statement,
    Increment,
    Condition,
    Nested,
    Argument,
    Subscript,
    Branch,
    Delete,
    Whole,
    Other
  };
  struct Step {
    uint16_t op;
    uint16_t k;
    int64_t offset;      // of what a conditional keeps
    uint32_t lateToken;  // of an assignment to an array that may not exist yet, or 0
  };
  // An evaluation in progress, and what surrounds it.
  struct Evaluation {
    Use use = Use::Other;
    Evaluation* outer = nullptr;  // of a branch of ?
    uint16_t base = 0;
    std::vector<uint16_t> ops;
    int64_t kept = 0;     // of a branch: where the first branch's value waits
    uint16_t keptAt = 0;  // slot of the condition
    uint32_t label = 0;   // where the evaluation goes on with its value in its first slot
    bool parenthesis = false;
    uint32_t place = 0;
  };
  // The assignment to an array that may not exist yet: its subscripts are evaluated behind the right side.
  struct LateArray {
    uint32_t instruction;
    uint32_t token;
    uint16_t k;
    uint32_t at;
    uint32_t back;
    uint32_t nest;
    std::vector<std::vector<int64_t>*> scopes;
  };
  // Code apart for an evaluation that ends before its time: at a member of what has none, or behind an event.
  struct Exit {
    uint32_t instruction;
    std::vector<Step> steps;
    uint32_t at;
    Use use;
    uint16_t k;      // of the evaluation's value
    uint32_t place;  // of an argument in the bank
    uint32_t label;  // where to go on
    bool early;
    const NameInfo* target;  // a name that is assigned to and isn't in its slot yet, or null
    Handler test = nullptr;  // of a condition
    uint32_t testOffset = 0;
    uint32_t afterTest = 0;  // of If: where an early end fails once the condition holds, or 0
    int64_t kept = 0;        // of Switch: the local that keeps its value, or 0
    uint32_t nest = 0;
    std::vector<std::vector<int64_t>*> scopes;
  };

  uint16_t Kind() const { return TokenKindOf(i_.At(at_)); }
  uint16_t KindAt(uint32_t offset) const { return TokenKindOf(i_.At(offset)); }
  uint32_t Next(uint32_t offset) const { return offset + TokenSize(i_.At(offset)); }
  void Step1() { at_ = Next(at_); }
  Instruction& Emit(Handler run, uint32_t k, uint32_t n = 0);
  uint32_t Here() const { return static_cast<uint32_t>(code_.instructions.size()); }
  void JumpToOffset(uint32_t instruction, uint32_t offset) { toOffsets_.push_back({instruction, offset}); }
  void JumpToLabel(uint32_t instruction, uint32_t label) { toLabels_.push_back({instruction, label}); }
  uint32_t NewLabel() {
    labels_.push_back(0);
    return static_cast<uint32_t>(labels_.size() - 1);
  }
  void Bind(uint32_t label) { labels_[label] = Here(); }
  // Adds the place behind the call's locals to its `offsetTarget`.
  void BehindLocals(uint32_t instruction) { toLocalsEnd_.push_back(instruction); }
  // The function's block that gets what is made here, from 1.
  uint16_t Level() const { return static_cast<uint16_t>(baseLevel_ + scopes_.size()); }
  bool Finish();
  void DropEmptyScopes();
  bool Fail() {
    failed_ = true;
    return false;
  }

  // Names.
  void CollectLocals(uint32_t from, uint32_t to);
  void AddLocal(uint32_t token);
  NameInfo* NameAt(uint32_t token);
  int64_t NewLocal();
  int64_t Temporary();

  // Statements.
  void Statements(uint32_t to);
  void Statement();
  void ExpressionStatement();
  void DoIf();
  void DoFor();
  void DoWhile();
  void DoSwitch();
  void DoCase();
  void DoCloseBrace();
  void DoBreak(bool isContinue);
  void DoReturn();
  void EmitReturnZero();
  void ReturnOfTwo();
  void OpenScope(const BlockRecord& block);
  void EmitClose(uint32_t levels);
  void PopScope();
  // The condition at the cursor as a jump to an offset: taken when it holds (a loop) or when it doesn't.
  void Test(uint32_t offset, bool isLoop, bool isIf);
  bool CountLoop(const BlockRecord& block);

  // Expressions. Each gives up by setting failed_.
  Value Evaluate(Evaluation& e);
  Value EvaluateNested(uint16_t base, Use use, bool parenthesis = false, uint32_t place = 0);
  void Primary(uint16_t k, Evaluation& e);
  void PrimaryOther(uint16_t k, Evaluation& e);
  void Reduce(uint16_t op, uint16_t k, Evaluation& e);
  bool StoreStatement(uint16_t op, const Evaluation& e);
  void Accumulate(const Value& target);
  void AssignStatement(uint16_t k);
  void Conditional(uint16_t k, Evaluation& e);
  void PrimaryName(uint16_t k, Evaluation& e);
  void Call(uint16_t k);
  bool ScanOperand(uint32_t& at, Value& value);
  bool ScanPlain(PlainCall& call);
  Instruction& EmitPlain(PlainCall& call, uint16_t k, Handler run);
  void EndPlain(const PlainCall& call) {
    if (call.isPlain) Bind(call.behind);
  }
  void PrimaryElement(uint16_t k, Evaluation& e);
  void Subscripts(uint16_t k, Evaluation& e, uint32_t unknown, uint32_t first, uint32_t token);
  uint32_t ReadSubscripts(uint16_t base);
  // What an element is wanted for, by what stands behind it.
  uint32_t ElementUse(uint32_t behind, uint16_t k, const Evaluation& e) const;
  bool MayBeAssigned(uint32_t behind) const;
  bool RunsNoCode(uint32_t at) const;
  bool IsClassMember(uint32_t token) const;
  bool IsPlainOperand(uint32_t at);
  Value PlainOperand(uint32_t at);
  void EmitShortcut(NameInfo* name, uint32_t subscript, uint32_t behind);
  // Statements on numbers with variables of script objects.
  struct Term {
    uint8_t kind = kConstant;
    Operand operand{};
    int64_t offset = 0;
  };
  void EmitTerms();
  bool ReadTerm(uint32_t& at, bool isTarget, Term& term);
  bool EmitPair(uint16_t k, const Evaluation& e, NameInfo* name, uint32_t first);
  void Unary(uint16_t k, Evaluation& e);
  void Parenthesis(uint16_t k, Evaluation& e);
  bool MovesDown(Value& inner, uint16_t k, const Evaluation& e);
  void NewObject(uint16_t k);
  void FixedMember(uint16_t k, Evaluation& e);
  void ClassConstant(uint16_t k);
  // Members behind a value that is found as `from` tells.
  void Members(uint16_t k, Evaluation& e, MemberFrom from);
  uint32_t Arguments(uint16_t k, bool isFlushed = false);
  bool KeepsTarget(const Evaluation& e) const;
  bool AssignsBehind(uint32_t at) const;
  bool IsDropped(const Evaluation& e, uint16_t k) const;
  void NoteMember(uint32_t token);
  const MemberRow* QuickTextMember(uint32_t token) const;
  bool NeedsTarget(const Evaluation& e) const;
  void Flush();
  // The same, but a name that the statement assigns to stays a name where no trace of its reading is needed.
  void FlushOperands(const Evaluation& e);
  void FlushOne(Value& value);
  void Push(const Value& value);
  void PushSlot(uint16_t k);
  void PushInteger(uint16_t k, int32_t v);
  void PushConstant(uint16_t k, const MemberRow& row);
  void SideExit(uint32_t instruction, const Evaluation& e, uint16_t k, bool early);
  void EmitExit(const Exit& exit);
  void EmitLateArray(const LateArray& late);
  void MayMake(const NameInfo* name);
  const CValue* NumberConstant(const CValue& v);
  void SetA(Instruction& i, const Value& value);
  void SetB(Instruction& i, const Value& value);
  void SetTarget(Instruction& i, const Value& value);

  CExecutor& x_;
  CInterpretor& i_;
  Code& code_;
  uint32_t at_ = 0;
  uint32_t start_ = 0;
  uint32_t end_ = 0;
  bool failed_ = false;
  bool inUnary_ = false;       // the primary stands behind a sign
  uint32_t parentheses_ = 0;   // around the evaluation, up to the next list or statement
  uint32_t shortcut_ = kNone;  // an instruction that does the whole statement where it can
  static constexpr uint32_t kNone = UINT32_MAX;
  uint32_t nest_ = 0;  // argument lists under evaluation
  uint32_t declared_ = UINT32_MAX;
  uint32_t temporaries_ = 0;
  std::vector<Value> values_;
  Comparison comparison_;
  bool statementDone_ = false;  // the last reduction was made together with the end of its statement
  std::vector<const BlockRecord*> open_;
  std::vector<std::vector<int64_t>*> scopes_;  // of the open blocks: offsets of the locals that they may make
  std::vector<uint32_t> placeOf_;              // instruction of each offset at which a statement starts
  std::vector<std::pair<uint32_t, uint32_t>> toOffsets_;
  std::vector<std::pair<uint32_t, uint32_t>> toLabels_;
  std::vector<uint32_t> labels_;
  std::vector<uint32_t> toLocalsEnd_;
  uint32_t parentLocals_ = 0;  // of the function that an expression is part of
  uint16_t baseLevel_ = 0;
  std::vector<Exit> exits_;
  std::vector<LateArray> lateArrays_;
  uint32_t lastBinary_ = UINT32_MAX;
  std::unordered_map<uint32_t, NameInfo*> globals_;
};

}  // namespace vl
