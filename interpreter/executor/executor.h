// CExecutor: runs a program from prepared instructions, with the results of the walker.
//
// Calls of script functions keep their frames in a list of records here; the machine's stack only grows by members
// that run the program in turn (Wait, and an event's assignment). The executor works in slices: Run goes back to its
// loop now and then, which is where a host that must not be blocked could take over.
#pragma once

#include <unordered_set>

#include "interpreter/executor/instruction.h"
#include "interpreter/interpretor.h"

namespace vl {

class CExecutor {
 public:
  explicit CExecutor(CInterpretor& interpreter);
  ~CExecutor();
  CExecutor(const CExecutor&) = delete;
  CExecutor& operator=(const CExecutor&) = delete;

  // False when the program holds something that only the walker knows; nothing has run then.
  bool Prepare();
  // Prepares every function now. False when one can't be, or needs traces that aren't kept: then Prepare was wrong.
  bool PrepareAll();
  // Runs the program from its start. Throws as the walker does.
  void RunProgram();
  // Runs an event function: its arguments are in the bank.
  void RunEvent(const BlockRecord& block);
  // Evaluates the expression at the interpreter's cursor above the slot `sp`, for a member that reads an assignment.
  CValue* EvaluateAtCursor();

  // --- For the handlers ---
  // A call in progress. A plain one only knows what ran before it; what more a call changes stands behind that, and
  // `back` then is the code that undoes it and goes on at `then`.
  struct Frame {
    const Instruction* back;
    CValue* S;
    CValue* L;
    const Code* code;
    const Instruction* then;
    CIBaseObjectVar* self;
    CIBaseObjectVar* held;  // pinned for the length of the call, or null
    CValue* slot;           // of the result
    uint32_t segment;
    int32_t scopeDepth;
    int32_t part;
    uint32_t argBase;
    bool constructs;  // `held` is an object that New makes
  };
  // A call whose arguments are under evaluation.
  struct Pending {
    CIBaseClassImpl* object = nullptr;  // pinned, but for a text's
    const BlockRecord* block = nullptr;
    const MemberRow* row = nullptr;
    uint32_t id = 0;
    CITextHolder* text = nullptr;  // `object` holds a text for this call
    bool made = false;             // `object` is what New makes
  };
  // A local that a newer one of its name hides.
  struct Hidden {
    Hidden(CInterpretor* interpreter, const CValue* local, const Frame* frame)
        : value(interpreter), local(local), frame(frame) {}
    CValue value;
    const CValue* local;
    const Frame* frame;
  };

  // Starts a call: its arguments are in the bank at `level`. Gives its first instruction, with S and L set. Quickly
  // when a function is called as most are; null then tells that it takes more.
  const Instruction* EnterPlain(const Code& callee, CValue* slot, const Instruction* back, uint32_t level,
                                uint32_t count);
  const Instruction* Enter(const BlockRecord& block, CodeKind kind, CIBaseObjectVar& self, CIBaseObjectVar* held,
                           CValue* slot, const Instruction* back, uint32_t level, uint32_t count, bool constructs);
  // Ends the current call; its value is in S[0]. Gives what comes next, with S and L set.
  const Instruction* Leave();
  // What `leaveRest`, `leaveMethod` and `leaveLevel` do: undoes what more than a plain call the one that has just ended
  // has changed.
  const Instruction* FinishLeave();
  const Instruction* FinishMethod();
  const Instruction* FinishLevel();
  Code* CodeOf(const BlockRecord& block, CodeKind kind) {
    Code* known = codeOf_[static_cast<size_t>(&block - i.blocks.data())][static_cast<size_t>(kind)];
    return known ? known : MakeCode(block, kind);
  }
  // Has `frame`, of a call that starts, end with what another level of arguments takes.
  void TakeLevel(Frame& frame, const Instruction* back, uint32_t level) {
    frame.back = &leaveLevel;
    frame.then = back;
    frame.argBase = argBase;
    SetLevel(level);
  }
  void SetLevel(uint32_t level) {
    argBase = level;
    i.argDepth = level;
    bank = i.args.data() + level * limits::kArgumentsPerLevel;
  }
  bool IsPlainEnd(const Instruction* back) const {
    return back != &leaveRest && back != &leaveMethod && back != &leaveLevel;
  }
  void CloseScope(const std::vector<int64_t>& offsets, uint16_t level);

  // The variable that a name finds; null for none.
  CValue* FindName(const NameInfo& name, CValue* locals);
  void LoadName(CValue& slot, const NameInfo& name, CValue* locals);
  // `=` on S[k] and S[k + 1], but for arrays that don't exist yet. `level` is the function's block that may get a new
  // local, from 1. The result's place is only kept where something may still assign to it.
  void Assign(CValue* S, uint32_t k, uint16_t level, bool keepsPlace);
  static void SwapSlots(CValue& a, CValue& b);
  // The variable that an assignment to a name of no variable makes, in the frame.
  CValue& MakeVariable(uint32_t nameId, uint16_t level);
  // The same for a name at hand.
  CValue& MakeNamed(const NameInfo& name, uint16_t level) {
    CValue& local = *reinterpret_cast<CValue*>(reinterpret_cast<char*>(L) + name.offset);
    if (!name.isLocal || local.type != VT_NEW_NAME) return MakeVariable(name.nameId, level);
    local.type = VT_INTEGER;
    local.level = level;
    return local;
  }
  void StandAt(const CValue* S, uint32_t k, uint32_t at) {
    i.sp = static_cast<uint32_t>(S - slots) + k;
    i.readCursor = i.At(at);
  }
  // Runs a member of a class; its arguments are in the bank. The cursor stands behind them.
  void Invoke(CIBaseClassImpl& object, const MemberRow& row, uint32_t id, uint32_t level, uint32_t count);
  const MemberRow* Resolve(const CIBaseClassImpl& object, Token token, uint32_t& id);
  // Takes a String for the text in the slot.
  void BeginText(const CValue& slot);
  void EndText(const Pending& call);
  // A String for one more text, as the walk would have made it by now, for those that do without.
  void ReserveText();
  // The work between statements that isn't just counting.
  void Housekeep(const CValue* S);
  // The machine-wide count of statements, while a member or the tick runs.
  void Publish() {
    if (published_) return;
    i.tickCountdown = forced_ ? savedFuel_ : fuel;
    published_ = true;
  }
  void Adopt();
  bool IsSliceOver() {
    if (--rounds_ > 0) return false;
    rounds_ = kRoundsOfSlice;
    return true;
  }
  // Objects of these come from New or from others of their family; those of all other classes may come from anywhere.
  enum Family : uint8_t { kAnyFamily = 1, kSceneFamily = 2, kNetFamily = 4 };
  static Family FamilyOf(uint32_t classId);
  // The families of the classes with a member of that name that may leave its slot as it was.
  uint8_t SlotShowers(uint32_t nameId);
  uint8_t families = kAnyFamily;  // of which the program may have objects
  // Names that the top level assigns to: most likely these are globals wherever they stand.
  std::unordered_set<uint32_t> topNames;

  CInterpretor& i;
  int32_t fuel = 0;  // statements until Housekeep is needed
  CValue* S = nullptr;
  CValue* L = nullptr;
  CValue* slots = nullptr;
  CValue* slotsEnd = nullptr;    // of those that are made
  CValue* slotsSafe = nullptr;   // a plain call's first slot may be this one at most
  CValue* bank = nullptr;        // the arguments of the current call's level
  CValue* localsEnd = nullptr;   // of the current segment
  CValue* localsSafe = nullptr;  // a plain call's first local may be this one at most
  CValue* source = nullptr;      // the variable whose member comes next
  const Code* code = nullptr;
  uint32_t argBase = 0;
  Frame* top = nullptr;  // the call that runs; the first frame is none
  Frame* lastFrame = nullptr;
  Instruction leaveRest;
  Instruction leaveMethod;
  Instruction leaveLevel;  // of a call among the arguments of another one
  std::vector<Pending> pending;
  std::vector<int32_t> subscripts;
  std::deque<Hidden> hidden;
  uint32_t hiddenCount = 0;
  const Instruction* resume = nullptr;
  Traces traces = kNoTraces;  // what the slots are needed for
  bool suspects = false;      // the compiler has met a member that may show what a slot held
  bool collects = false;      // and one that collects objects
  uint32_t heldTexts = 0;     // texts whose member waits for its arguments without a String
  CVariable absent;
  CVariable* nowhere = &absent;  // the cell of a name that no global has
  CValue scratch;                // an element that is only a number, while something needs it as a value of its own
  CVariableIndex globals;

 public:
  // What a function that is called plainly may have of locals and of slots.
  static constexpr uint32_t kPlainCells = 64;
  bool IsPlainCallee(const Code& callee) const {
    return callee.locals <= kPlainCells && callee.slots <= kPlainCells && callee.part == i.currentPartNumber;
  }
  void NeedSlots(const CValue* end);

 private:
  friend class CCodeCompiler;
  Code* MakeCode(const BlockRecord& block, CodeKind kind);
  std::unique_ptr<Frame[]> frames_;
  // Ticks after which the handlers go back to their loop.
  static constexpr uint32_t kRoundsOfSlice = 2000;
  static constexpr size_t kSegmentCells = 8192;
  // The arguments of a plain call are written before it is known whether it has room.
  static constexpr size_t kSegmentBytes = (kSegmentCells + kPlainCells) * sizeof(CValue);
  void SetSegment(uint32_t segment);
  CValue* FreeLocals() const { return L + code->locals; }
  class Run;
  void RunFrom(const Instruction* start);
  void Unwind(Frame* frame, size_t pendingCount);
  void DropPending();
  void ReleaseLocals();
  CValue* TakeLocals(uint32_t count);
  void DropHidden();
  void MakeFull(Frame& frame);
  CVariable** CellOf(uint32_t nameId) { return globals.CellOf(nameId); }

  std::vector<std::array<Code*, 3>> codeOf_;  // by block
  std::vector<std::unique_ptr<Code>> codes_;
  std::unordered_map<uint32_t, uint8_t> slotShowers_;  // by name
  std::unordered_map<uint32_t, std::unique_ptr<Code>> expressions_;
  std::vector<std::unique_ptr<CValue[], void (*)(CValue*)>> segments_;
  uint32_t segment_ = 0;
  int32_t savedFuel_ = 0;
  bool forced_ = false;    // fuel is 0 so that something waiting is seen; savedFuel_ is what it was
  bool published_ = true;  // the interpreter's countdown is the true one
  uint32_t rounds_ = kRoundsOfSlice;
};

inline const Instruction* CExecutor::EnterPlain(const Code& callee, CValue* slot, const Instruction* back,
                                                uint32_t level, uint32_t count) {
  CValue* const locals = FreeLocals();
  if (top == lastFrame || slot > slotsSafe || locals > localsSafe || count < callee.parameterCount ||
      !IsPlainCallee(callee)) [[unlikely]] {
    return nullptr;
  }
  // The parameters are the first locals. What isn't plain numbers takes the other way, which fills them anew.
  const CValue* argument = bank + (level - argBase) * limits::kArgumentsPerLevel;
  CValue* const behind = locals + 1 + callee.parameterCount;
  for (CValue* variable = locals + 1; variable != behind; ++variable, ++argument) {
    if (argument->type > VT_FLOAT) [[unlikely]] {
      while (variable-- != locals + 1) variable->type = VT_NEW_NAME;
      return nullptr;
    }
    variable->type = argument->type;
    variable->data = argument->data;
  }
  Frame& frame = *++top;
  if (level == argBase) {
    frame.back = back;
  } else {
    TakeLevel(frame, back, level);
  }
  frame.S = S;
  frame.L = L;
  frame.code = code;
  code = &callee;
  S = slot;
  L = locals;
  return callee.first;
}

}  // namespace vl
