#include "interpreter/executor/executor.h"

#include <cstdlib>

#include "host/appfile/app_file.h"
#include "interpreter/executor/code_compiler.h"
#include "interpreter/executor/code_scan.h"
#include "interpreter/executor/handlers.h"

namespace vl {

namespace {

void FreeCells(CValue* cells) { std::free(cells); }

const Instruction* StopCode() {
  static const Instruction stop = [] {
    Instruction i;
    i.run = handlers::Stop;
    return i;
  }();
  return &stop;
}

}  // namespace

// A run of instructions inside another one, or the outermost: what it finds is there again behind it, also when an
// error leaves it.
class CExecutor::Run {
 public:
  explicit Run(CExecutor& x)
      : x_(x),
        S_(x.S),
        L_(x.L),
        bank_(x.bank),
        source_(x.source),
        code_(x.code),
        argBase_(x.argBase),
        resume_(x.resume),
        frames_(x.top),
        pending_(x.pending.size()),
        subscripts_(x.subscripts.size()) {
    x_.Adopt();
  }
  ~Run() {
    x_.Unwind(frames_, pending_);
    x_.subscripts.resize(subscripts_);
    x_.S = S_;
    x_.L = L_;
    x_.bank = bank_;
    x_.source = source_;
    x_.code = code_;
    x_.argBase = argBase_;
    x_.resume = resume_;
    x_.Publish();
  }

 private:
  CExecutor& x_;
  CValue* S_;
  CValue* L_;
  CValue* bank_;
  CValue* source_;
  const Code* code_;
  uint32_t argBase_;
  const Instruction* resume_;
  Frame* frames_;
  size_t pending_;
  size_t subscripts_;
};

CExecutor::CExecutor(CInterpretor& interpreter) : i(interpreter), absent(&interpreter), scratch(&interpreter) {
  globals.absent = &absent;
  uint32_t count = 0;
  for (uint32_t bucket = 0; bucket < CNamePool::kBuckets; ++bucket) {
    globals.starts[bucket] = count;
    count += static_cast<uint32_t>(i.namePool->NamesIn(bucket));
  }
  globals.cells.assign(count, &absent);
  i.variables.SetIndex(&globals);
  slots = i.valueStore_.get();
  frames_.reset(new Frame[limits::kMaxCallDepth + 1]);
  top = frames_.get();
  lastFrame = top + limits::kMaxCallDepth;
  leaveRest.run = handlers::LeaveRest;
  leaveMethod.run = handlers::LeaveMethod;
  leaveLevel.run = handlers::LeaveLevel;
}

CExecutor::~CExecutor() {
  hidden.clear();
  Unwind(frames_.get(), 0);
  i.variables.SetIndex(nullptr);
  i.budget.Return(segments_.size() * kSegmentBytes);
}

// Functions are prepared at their first calls, but for those that may hold what only the walker knows.
bool CExecutor::Prepare() {
  CCodeScan scan(*this);
  scan.Run();
  families = scan.families;
  const auto needed = [&] { return suspects ? kAllTraces : collects || i.newSeen ? kObjectTraces : kNoTraces; };
  suspects = scan.suspects;
  collects = scan.collects;
  do {
    traces = needed();
    codes_.clear();
    codeOf_.assign(i.blocks.size(), {});
    for (const BlockRecord& block : i.blocks) {
      if (block.kind != kBlockFunction || !scan.rare[static_cast<size_t>(&block - i.blocks.data())]) continue;
      if (!CodeOf(block, CodeKind::Function)) return false;
    }
    auto top = std::make_unique<Code>();
    if (!CCodeCompiler(*this, *top).CompileProgram()) return false;
    code = top.get();
    codes_.push_back(std::move(top));
  } while (needed() != traces);
  return true;
}

CExecutor::Family CExecutor::FamilyOf(uint32_t classId) {
  if (classId >= CLASS_CAMERA && classId <= CLASS_POINT3D) return kSceneFamily;
  if (classId >= CLASS_VEX && classId <= CLASS_VEXSTATS) return kNetFamily;
  return kAnyFamily;
}

uint8_t CExecutor::SlotShowers(uint32_t nameId) {
  const auto [known, isNew] = slotShowers_.try_emplace(nameId, uint8_t{0});
  if (!isNew) return known->second;
  const std::string& name = i.namePool->Name(nameId);
  for (uint32_t id = 1; id <= kClassCount; ++id) {
    const CIClassInfo* info = i.ClassInfo(id);
    const KeywordRow* found = info && info->table ? info->keywords->Find(name) : nullptr;
    const MemberRow* row = found && found->id < info->rows.size() ? info->rows[found->id] : nullptr;
    if (row && row->kind != MemberKind::Constant && !row->gives) known->second |= FamilyOf(id);
  }
  return known->second;
}

bool CExecutor::PrepareAll() {
  for (const BlockRecord& block : i.blocks) {
    if (block.kind == kBlockFunction && !CodeOf(block, CodeKind::Function)) return false;
  }
  return traces == kAllTraces || (!suspects && (traces == kObjectTraces || (!collects && !i.newSeen)));
}

Code* CExecutor::MakeCode(const BlockRecord& block, CodeKind kind) {
  auto made = std::make_unique<Code>();
  made->kind = kind;
  if (!CCodeCompiler(*this, *made).CompileFunction(block)) return nullptr;
  codes_.push_back(std::move(made));
  return codeOf_[static_cast<size_t>(&block - i.blocks.data())][static_cast<size_t>(kind)] = codes_.back().get();
}

void CExecutor::RunFrom(const Instruction* start) {
  resume = start;
  while (const Instruction* next = resume) {
    resume = nullptr;
#if VL_TAIL_CALLS
    next->run(*this, next, S, L);
#else
    while (next) next = next->run(*this, next, S, L);
#endif
  }
}

void CExecutor::RunProgram() {
  const Code* program = code;
  Run run(*this);
  NeedSlots(slots + program->slots);
  S = slots;
  L = nullptr;
  L = TakeLocals(program->locals);
  code = program;
  bank = i.args.data();
  argBase = 0;
  // The top level has no frame that an error would unwind: what an expression kept aside must go all the same.
  struct TopLocals {
    CValue* first;
    uint32_t count;
    ~TopLocals() {
      for (CValue* local = first; local != first + count; ++local) {
        local->Release();
        local->type = VT_NEW_NAME;
      }
    }
  } locals{L, program->locals};
  RunFrom(program->instructions.data());
}

void CExecutor::RunEvent(const BlockRecord& block) {
  Run run(*this);
  const Instruction* first = Enter(block, CodeKind::Global, *i.thisObject, nullptr, slots + i.sp, StopCode(),
                                   i.argDepth, static_cast<uint32_t>(i.argCounts[i.argDepth]), false);
  RunFrom(first);
}

CValue* CExecutor::EvaluateAtCursor() {
  const uint32_t offset = i.OffsetOf(i.readCursor);
  std::unique_ptr<Code>& expression = expressions_[offset * 4 + static_cast<uint32_t>(code->kind)];
  if (!expression) {
    auto made = std::make_unique<Code>();
    if (!CCodeCompiler(*this, *made).CompileExpression(*code, offset)) i.RaiseError(ERR_INTERNAL);
    expression = std::move(made);
  }
  CValue* const slot = slots + i.sp;
  NeedSlots(slot + expression->slots);
  Run run(*this);
  S = slot;
  RunFrom(expression->instructions.data());
  return slot + 1;
}

void CExecutor::NeedSlots(const CValue* end) {
  i.NeedValues(static_cast<uint32_t>(end - slots));
  slotsEnd = slots + i.valueLimit_;
  slotsSafe = slotsEnd - kPlainCells;
}

const Instruction* CExecutor::Enter(const BlockRecord& block, CodeKind kind, CIBaseObjectVar& self,
                                    CIBaseObjectVar* held, CValue* slot, const Instruction* back, uint32_t level,
                                    uint32_t count, bool constructs) {
  if (top == lastFrame) i.RaiseTooManyCalls();
  const Code* callee = CodeOf(block, kind);
  if (!callee) i.RaiseError(ERR_INTERNAL);
  NeedSlots(slot + callee->slots);
  const uint32_t segmentBefore = segment_;
  CValue* const locals = TakeLocals(callee->locals);
  Frame& frame = *++top;
  frame.back = &leaveRest;
  frame.then = back;
  frame.S = S;
  frame.L = L;
  frame.code = code;
  frame.self = i.thisObject;
  frame.held = held;
  frame.slot = slot;
  frame.segment = segmentBefore;
  frame.scopeDepth = i.scopeDepth;
  frame.part = i.currentPartNumber;
  frame.argBase = argBase;
  frame.constructs = constructs;
  if (kind == CodeKind::Global) ++i.scopeDepth;
  i.thisObject = &self;
  code = callee;
  S = slot;
  SetLevel(level);
  L = locals;
  uint32_t p = 0;
  for (const int64_t parameter : callee->parameters) {
    CValue* variable;
    if (kind == CodeKind::Global) [[unlikely]] {
      variable = i.AddVariable(i, static_cast<uint32_t>(parameter), i.scopeDepth);
    } else {
      variable = reinterpret_cast<CValue*>(reinterpret_cast<char*>(L) + parameter);
    }
    if (p < count) {
      variable->Assign(bank[p]);
    } else {
      variable->SetDefault();
    }
    ++p;
  }
  if (static_cast<int32_t>(block.sourcePart) != i.currentPartNumber) i.SetPart(static_cast<int32_t>(block.sourcePart));
  return callee->instructions.data();
}

const Instruction* CExecutor::Leave() {
  ReleaseLocals();
  const Frame& frame = *top--;
  code = frame.code;
  S = frame.S;
  L = frame.L;
  if (frame.back == &leaveRest) return FinishLeave();
  if (frame.back == &leaveMethod) return FinishMethod();
  if (frame.back == &leaveLevel) return FinishLevel();
  return frame.back;
}

const Instruction* CExecutor::FinishMethod() {
  const Frame& frame = top[1];
  const Instruction* const then = frame.then;
  DropHidden();
  i.thisObject = frame.self;
  i.Unpin(frame.held);
  return then;
}

const Instruction* CExecutor::FinishLevel() {
  DropHidden();
  SetLevel(top[1].argBase);
  return top[1].then;
}

const Instruction* CExecutor::FinishLeave() {
  const Frame frame = top[1];
  DropHidden();
  if (i.scopeDepth != frame.scopeDepth) {
    i.variables.RemoveFromLevel(frame.scopeDepth + 1, i.variablePool);
    i.scopeDepth = frame.scopeDepth;
  }
  i.thisObject = frame.self;
  if (segment_ != frame.segment) SetSegment(frame.segment);
  SetLevel(frame.argBase);
  if (i.currentPartNumber != frame.part) i.SetPart(frame.part);
  if (!frame.held) [[likely]]
    return frame.then;
  if (frame.constructs) {
    if (frame.held->destroyed) {
      frame.slot->SetInt(0);
    } else {
      frame.held->Construct();
      frame.slot->SetObject(frame.held);
    }
    frame.slot->lvalue = nullptr;
    ++i.newsSinceCollection;
    frame.held->Unhold();
  }
  i.Unpin(frame.held);
  return frame.then;
}

// The hidden locals of calls that have ended.
void CExecutor::DropHidden() {
  while (hiddenCount && hidden.back().frame > top) {
    hidden.pop_back();
    --hiddenCount;
  }
}

void CExecutor::DropPending() {
  const Pending call = pending.back();
  pending.pop_back();
  if (call.text) {
    EndText(call);
  } else if (!call.object && !call.block) {
    --heldTexts;
  } else if (call.object) {
    if (call.made) call.object->Unhold();
    i.Unpin(call.object);
  }
}

// An error leaves these calls. An object under construction is given up with its call.
void CExecutor::Unwind(Frame* frame, size_t pendingCount) {
  while (top > frame) {
    if (top->back == &leaveRest && top->constructs) {
      top->held->Unhold();
      top->constructs = false;
    }
    Leave();
  }
  while (pending.size() > pendingCount) DropPending();
}

void CExecutor::SetSegment(uint32_t segment) {
  segment_ = segment;
  localsEnd = segments_[segment_].get() + kSegmentCells;
  localsSafe = localsEnd - kPlainCells;
}

// The cells behind those of the call that runs.
CValue* CExecutor::TakeLocals(uint32_t count) {
  if (L && static_cast<size_t>(localsEnd - FreeLocals()) >= count) return FreeLocals();
  const uint32_t next = L ? segment_ + 1 : 0;
  if (next >= segments_.size()) {
    if (!i.budget.Take(kSegmentBytes)) i.RaiseError(ERR_MEMORY);
    auto* cells = static_cast<CValue*>(std::malloc(kSegmentBytes));
    if (!cells) {
      i.budget.Return(kSegmentBytes);
      i.RaiseError(ERR_MEMORY);
    }
    for (size_t c = 0; c < kSegmentBytes / sizeof(CValue); ++c) new (&cells[c]) CValue(&i);
    segments_.emplace_back(cells, &FreeCells);
  }
  SetSegment(next);
  return segments_[segment_].get();
}

// Every local ends: nothing is left of it but a cell that no name finds.
void CExecutor::ReleaseLocals() {
  CValue* const end = FreeLocals();
  for (CValue* local = L; local != end; ++local) {
    local->Release();
    local->type = VT_NEW_NAME;
  }
}

void CExecutor::CloseScope(const std::vector<int64_t>& offsets, uint16_t level) {
  for (const int64_t offset : offsets) {
    CValue& local = *reinterpret_cast<CValue*>(reinterpret_cast<char*>(L) + offset);
    if (local.type == VT_NEW_NAME || local.level < level) continue;
    local.Release();
    local.type = VT_NEW_NAME;
    while (hiddenCount && hidden.back().local == &local) {
      hidden.pop_back();
      --hiddenCount;
    }
  }
}

CValue* CExecutor::FindName(const NameInfo& name, CValue* locals) {
  CValue* local = reinterpret_cast<CValue*>(reinterpret_cast<char*>(locals) + name.offset);
  if (local->type != VT_NEW_NAME) return local;
  const bool isGlobalFrame = code->kind == CodeKind::Global;
  CVariable* global = *name.cell;
  if (isGlobalFrame && global != &absent) return global;
  if (name.declared) return nullptr;
  if (i.thisObject != &i) {
    if (CVariable* own = i.thisObject->variables.Find(name.nameId)) return own;
  }
  return isGlobalFrame || global == &absent ? nullptr : global;
}

void CExecutor::LoadName(CValue& slot, const NameInfo& name, CValue* locals) {
  if (CValue* variable = FindName(name, locals)) {
    slot.Assign(*variable);
    slot.lvalue = variable;
  } else {
    slot.SetNew(VT_NEW_NAME, name.token);
  }
}

CValue& CExecutor::MakeVariable(uint32_t nameId, uint16_t level) {
  if (code->kind == CodeKind::Global) return *i.AddVariable(i, nameId, i.scopeDepth);
  const auto known = code->byName.find(nameId);
  if (known == code->byName.end()) i.RaiseError(ERR_INTERNAL);
  CValue& local = *reinterpret_cast<CValue*>(reinterpret_cast<char*>(L) + known->second->offset);
  if (local.type != VT_NEW_NAME) {
    hidden.emplace_back(&i, &local, top).value.Assign(local);
    ++hiddenCount;
    // The end of the call must look for it.
    if (IsPlainEnd(top->back)) MakeFull(*top);
  }
  local.SetInt(0);
  local.level = level;
  return local;
}

// A plain call that turns out to need the full end.
void CExecutor::MakeFull(Frame& frame) {
  frame.then = frame.back;
  frame.back = &leaveRest;
  frame.self = i.thisObject;
  frame.held = nullptr;
  frame.segment = segment_;
  frame.scopeDepth = i.scopeDepth;
  frame.part = i.currentPartNumber;
  frame.argBase = argBase;
  frame.constructs = false;
}

// The two slots change places: here their content does, as the slots themselves must stay where they are.
void CExecutor::SwapSlots(CValue& a, CValue& b) {
  std::swap(a.lvalue, b.lvalue);
  std::swap(a.type, b.type);
  std::swap(a.data, b.data);
  std::swap(a.referrerIndex, b.referrerIndex);
  for (CValue* v : {&a, &b}) {
    CIBaseClassImpl* object = nullptr;
    if (v->type == VT_OBJECT) object = v->data.object;
    if (v->type == VT_NEW_MEMBER || v->type == VT_NEW_MEMBER_ARRAY) object = v->lvalueObject;
    if (object) object->referrers[v->referrerIndex] = v;
  }
}

void CExecutor::Assign(CValue* S, uint32_t k, uint16_t level, bool keepsPlace) {
  CValue& left = S[k];
  CValue& right = S[k + 1];
  if (right.type >= VT_NEW_NAME && right.type <= VT_NEW_ELEMENT) i.RaiseError(ERR_UNDEFINED);
  switch (left.type) {
    case VT_NEW_NAME:
      MakeVariable(TokenNameId(i.At(left.data.token)), level).Assign(right);
      break;
    case VT_NEW_MEMBER: {
      auto* object = static_cast<CIBaseObjectVar*>(left.lvalueObject);
      i.AddVariable(*object, TokenNameId(i.At(left.data.token)), 0)->Assign(right);
      break;
    }
    case VT_NEW_ELEMENT: {
      CValue* variable = left.lvalue;
      if (variable->type != VT_ARRAY) i.RaiseError(ERR_UNDEFINED);
      CArrayStore& store = *variable->data.array;
      const uint32_t index = left.data.token;
      if (left.level) {
        // The element was there: the slots change places, as they do for any place that is assigned to.
        const bool isNumber = store.ReadNumber(index, left);
        left.lvalue = nullptr;
        if (!isNumber) i.RaiseError(ERR_INTERNAL);
        store.Store(index, right);
        break;
      }
      CValue* element = nullptr;
      if (keepsPlace) {
        element = &store.StoreInCell(index, right);
      } else {
        store.Store(index, right);
      }
      left.Assign(right);
      left.lvalue = element;
      return;
    }
    default:
      if (!left.lvalue) i.RaiseError(ERR_SYNTAX);
      left.lvalue->Assign(right);
      break;
  }
  SwapSlots(left, right);
}

const MemberRow* CExecutor::Resolve(const CIBaseClassImpl& object, Token token, uint32_t& id) {
  const CIClassInfo& info = *object.classInfo;
  id = i.ResolveMember(info, token);
  const MemberRow* row = id < info.rows.size() ? info.rows[id] : nullptr;
  return row;
}

void CExecutor::Invoke(CIBaseClassImpl& object, const MemberRow& row, uint32_t id, uint32_t level, uint32_t count) {
  i.argDepth = level;
  i.argCounts[level] = static_cast<int32_t>(count);
  i.currentMember = static_cast<uint16_t>(id);
  Publish();
  i.RunMember(object, row);
  i.argDepth = argBase;
  Adopt();
}

void CExecutor::ReserveText() {
  if (i.freeTexts_.size() > heldTexts) return;
  CITextHolder* holder = nullptr;
  CIBaseClassImpl* object = i.MakeText(holder);
  i.GiveText(object, holder);
}

void CExecutor::BeginText(const CValue& slot) {
  ReserveText();
  Pending call;
  call.object = i.TakeText(call.text);
  call.text->SetHeldText(Text::Share(slot.data.text));
  pending.push_back(call);
}

void CExecutor::EndText(const Pending& call) {
  call.text->SetHeldText(Text());
  i.GiveText(call.object, call.text);
}

void CExecutor::Adopt() {
  fuel = i.tickCountdown;
  forced_ = false;
  published_ = false;
  if ((i.nextEvent && i.eventsEnabled && i.inEvent == 0) || i.pendingError != -1 ||
      i.param.stop.load(std::memory_order_relaxed)) {
    forced_ = true;
    savedFuel_ = fuel;
    fuel = 0;
  }
}

void CExecutor::Housekeep(const CValue* S) {
  // A tick that finds nothing to do.
  if (!forced_ && i.IsTickQuiet()) {
    fuel = i.tickPeriod;
    return;
  }
  i.sp = static_cast<uint32_t>(S - slots);
  i.tickCountdown = forced_ ? savedFuel_ : fuel + 1;
  forced_ = false;
  published_ = true;
  i.Housekeeping();
  Adopt();
}

}  // namespace vl
