// CInterpretor: one run of one program. It holds the walker with its stacks, the scopes and variables, the
// runtime objects, the event queue, and the tick that the walk runs between statements.
//
// Everything here runs on the interpreter's thread. Other threads reach it only through CThreadParam::stop and
// the event queue of the platform.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/limits.h"
#include "base/memory_budget.h"
#include "interpreter/array_store.h"
#include "interpreter/class_base.h"
#include "interpreter/downloads.h"
#include "interpreter/index_list.h"
#include "interpreter/message_source.h"
#include "interpreter/thread_param.h"
#include "interpreter/token_infos.h"
#include "platform/run_files.h"
#include "platform/services.h"

namespace vl {

class CAppFile;
class CAppPart;
class CElement;
class CExecutor;
class CITextHolder;

// What the error hook needs of the Program object: a copy of the last caught error and the OnError function.
struct ErrorHook {
  CIError lastError;
  const BlockRecord* onError = nullptr;
};

// One queued call of a script function.
struct CEvent {
  static constexpr int kMaxArguments = 8;
  const BlockRecord* function = nullptr;
  const void* key = nullptr;  // what makes the event unique, or null
  std::vector<CValue> args;
};

// Something that moves by time and is stepped by the tick.
class CTimed {
 public:
  virtual ~CTimed() = default;
  virtual void Step(uint32_t nowMs) = 0;
};

// Something that comes due by the clock. It is told from the dispatch of messages, at most once for all the time that
// passed without one.
class CAlarm {
 public:
  virtual ~CAlarm() = default;
  virtual void Ring() = 0;
  uint32_t dueMs = 0;  // on the run's clock
};

// Told of the window that has become the active one.
class CWindowFollower {
 public:
  virtual ~CWindowFollower() = default;
  virtual void WindowBecameActive(uint32_t handle) = 0;
};

// When a subsystem wants its next poll while the program waits: as it comes, within a millisecond or so, at once.
enum class PollNeed : uint8_t { None, Soon, Now };

// What a subsystem keeps for the length of the interpreter: surfaces' palettes, the window tree and the like.
class CSubsystem {
 public:
  virtual ~CSubsystem() = default;
};

class CInterpretor : public CIBaseObjectVar, public CTokenInfos {
 public:
  CInterpretor(CThreadParam& param, const Services& services, const ClassRegistry& registry);
  ~CInterpretor() override;

  // --- Life of a run (run_life.cpp) ---
  // Opens the application and loads the class tables. False when it can't be read; appStatus tells why.
  bool Init();
  // Opens nothing: takes the given sources and the named classes. For tools that check a source text.
  bool InitWithoutApplication(const std::vector<uint32_t>& classIds);
  // Compiles and runs. False when the run ended on an error, which lastError then holds.
  bool Start();
  // Compiles only.
  bool CompileSources(bool withInitSource);
  void Reset();
  uint32_t appStatus = 0;
  uint32_t applicationKind = 1;
  // Called after the program's walk and before the objects die, while the globals can still be read.
  std::function<void()> onEnd;
  // A run after Program.Restart failed; lastError tells why. The result of Start isn't changed by it.
  std::function<void()> onRestartFailed;

  // --- Errors (errors in members, walker and values end here) ---
  [[noreturn]] void RaiseError(uint32_t code, uint32_t argument = kNoArgument, std::string detail = {});
  [[noreturn]] void RaiseSystemError(uint32_t systemCode, uint32_t argument = kNoArgument);
  ErrorTexts errorTexts;
  std::string FormatLastError() const { return GetErrorText(errorTexts, true); }

  // --- Member arguments and results (members.cpp) ---
  int GetArgCount() const { return argCounts[argDepth]; }
  // Argument i, which must be below the count.
  CValue& Arg(int i) { return args[argDepth * limits::kArgumentsPerLevel + static_cast<uint32_t>(i)]; }
  CValue* GetArg(int i);
  bool IsArgDefault(int i) { return i >= GetArgCount() || Arg(i).IsDefault(); }
  int32_t GetArgInt(int i) { return i < GetArgCount() ? Arg(i).GetInt() : kDefaultInt; }
  double GetArgDouble(int i) { return i < GetArgCount() ? Arg(i).GetDouble() : kDefaultDouble; }
  double GetArgFloat(int i) { return i < GetArgCount() ? Arg(i).GetFloat() : static_cast<double>(kDefaultFloat); }
  const char* GetArgString(int i) { return i < GetArgCount() ? GetArg(i)->GetString() : kDefaultString; }
  Text GetArgText(int i);
  CIBaseClassImpl* GetArgObject(int i);
  CIBaseClassImpl* GetArgObjectOfClass(int i, uint32_t wantedClass);
  void GetArgInt2(int first, int32_t& a, int32_t& b) {
    a = GetArgInt(first);
    b = GetArgInt(first + 1);
  }
  void GetArgInt4(int first, int32_t& a, int32_t& b, int32_t& c, int32_t& d) {
    GetArgInt2(first, a, b);
    GetArgInt2(first + 2, c, d);
  }
  CValue& GetResult() { return *values[sp]; }
  uint16_t GetMemberId() const { return currentMember; }
  // For a member whose name starts with On: reads the assignment behind it.
  const BlockRecord* GetEventFunction();
  // Runs a member of another object with the arguments of the current call, under the same id.
  void ForwardMember(CIBaseClassImpl& object, uint16_t id);

  // --- Resources and files (resources.cpp) ---
  // An element of the application: by name, or by index in the current part's bank of that type. Null for other
  // values and when there is none. `mustBeTyped` leaves the sources out.
  CElement* GetElement(const CValue& value, uint32_t type, bool mustBeTyped);
  // Error 129 unless the run itself made that file, or may make any.
  void RequireOwnFile(std::string_view path);
  // The result of a member that gives names: an array of texts.
  void SetResultNames(const std::vector<std::string>& names);

  // --- Objects (objects.cpp) ---
  void DeleteObject(CIBaseClassImpl* object);
  // Releases and frees without the walk.
  void DestroyObject(CIBaseClassImpl* object, bool final);
  void Collect();
  CIBaseClassImpl* FixedObject(uint32_t id) const { return fixedObjects[id]; }
  const CIndexList<CIBaseClassImpl>& ObjectsOfClass(uint32_t id) const { return classLists[id]; }
  CIClassInfo* ClassInfo(uint32_t id) const { return classInfo_[id].get(); }
  CArrayStore* NewArray();
  void DropArray(CArrayStore* store);  // the last reference is gone
  void Unpin(CIBaseClassImpl* object);
  uint32_t NextSerial(uint32_t id) { return ++serials[id]; }
  void Enlist(CIBaseClassImpl* object);
  void Delist(CIBaseClassImpl* object);
  // The object is new or has lost its last holder: the next collection looks at it, or the one that runs when it comes
  // there yet.
  void Suspect(CIBaseClassImpl& object);

  // --- Events (events.cpp) ---
  void PostEvent(const BlockRecord* function, std::vector<CValue> arguments);
  // Replaces the arguments of a queued event of this function and key, so that only the latest fires.
  void PostUniqueEvent(const BlockRecord* function, const void* key, std::vector<CValue> arguments);
  CValue MakeValue(int32_t v);
  CValue MakeValue(CIBaseClassImpl* object);
  CValue MakeValue(std::string_view text);
  void FireEvent();

  // --- Run loop (run_loop.cpp) ---
  // Sleeps and serves for that long. Gives at once inside an event.
  void Wait(uint32_t ms);
  // One round of the run loop's service: pump, timed lists, refresh, one event.
  void ServiceStep();
  void IdleStep();
  void PumpMessages();
  void RefreshAll();
  void RequestRefresh();
  uint32_t NowMs() { return services.clock->nowMs(); }
  uint32_t AddRefresh(CIRefresh* object, bool atHead);
  void RemoveRefresh(CIRefresh* object);
  void AddMessageFilter(CIBaseMessages* filter);
  void RemoveMessageFilter(CIBaseMessages* filter);
  uint32_t AddTimed(CTimed* object);
  void RemoveTimed(uint32_t node);
  // The alarm stays the caller's and must be removed before it goes.
  void AddAlarm(CAlarm* alarm) { alarms_.push_back(alarm); }
  void RemoveAlarm(CAlarm* alarm) { std::erase(alarms_, alarm); }
  // Work of other subsystems at each poll (video, network, downloads).
  void AddPoll(std::function<PollNeed()> poll) { polls_.push_back(std::move(poll)); }
  void Poll();
  // A file of the run's own: its members may write it, and it goes with the run.
  void AddTempFile(std::string path) { tempFiles.push_back(std::move(path)); }

  // --- Strings of conversions ---
  char* TemporaryBuffer() { return temporaries_[temporaryNext_++ % kTemporaries].data(); }
  static constexpr size_t kTemporaryBytes = 48;

  // --- The walker (expressions.cpp, statements.cpp, calls.cpp) ---
  CValue* Evaluate();
  void StatementWalk(Token start, CValue* result);
  // Calls a function from the run loop or a member: arguments are in the bank already.
  uint32_t EvaluateArguments();
  // A late write through a reference to a variable that has died meets the same cell however calls keep theirs.
  CVariablePool& PoolOf(const CIBaseObjectVar& object) { return object.isCallFrame ? framePool : variablePool; }
  // A new variable, which holds the integer 0.
  CVariable* AddVariable(CIBaseObjectVar& object, uint32_t nameId, int32_t level) {
    CVariable* variable = object.variables.Add(nameId, level, PoolOf(object));
    if (!variable) RaiseError(ERR_MEMORY);
    variable->SetInt(0);
    return variable;
  }

  // --- What the executor shares with the walker ---
  // Whether the program runs from instructions, not by the walk over its tokens.
  bool IsPrepared() const { return executor_ != nullptr; }
  // Prepares every function now, not at its first call. False when the program can't run from instructions after all.
  bool PrepareAll();
  // Whether the evaluation slots hold what the walk would leave in them.
  bool KeepsSlots() const;
  // Runs an operator on values[sp] and values[sp + 1].
  void Reduce(uint32_t op);
  CArrayStore& ArrayOf(CValue& variable);
  // An object of a class, with the arguments of New in the bank.
  void MakeClassObject(uint16_t classKind);
  // Members of texts: error 11 where there are none; a String for one call, and its return.
  const CIClassInfo& RequireTexts();
  CIBaseClassImpl* MakeText(CITextHolder*& holder);
  CIBaseClassImpl* TakeText(CITextHolder*& holder);
  void GiveText(CIBaseClassImpl* object, CITextHolder* holder) { freeTexts_.push_back({object, holder}); }
  [[noreturn]] void RaiseNoFunction(Token token, const CVariable* variable);
  void SetPart(int32_t number);
  const std::string& NameOf(Token token) const { return namePool->Name(TokenNameId(token)); }

  // --- State ---
  CThreadParam& param;
  Services services;
  const ClassRegistry& registry;
  KeywordTables keywordTables;
  // The drive where none is handed in.
  std::unique_ptr<RunFiles> ownDisk;
  MemoryBudget budget;
  CVariablePool variablePool;
  CVariablePool framePool;
  CElementPool elementPool;

  std::unique_ptr<CAppFile> app;

  // Scopes.
  int32_t scopeDepth = 0;
  std::vector<const BlockRecord*> scopeBlocks;
  CIBaseObjectVar* frame = nullptr;
  CIBaseObjectVar* thisObject = nullptr;
  bool returned = false;
  CValue* returnValue = nullptr;
  int32_t currentPartNumber = 0;
  Token declared = nullptr;

  // Arguments.
  uint32_t argDepth = 0;
  std::array<int32_t, limits::kArgumentLevels + 1> argCounts{};
  std::vector<CValue> args;  // 16 levels of 16
  int32_t highWater = 0;
  CValue defaultValue;  // handed out for an absent argument
  uint16_t currentMember = 0;

  // Evaluation stack. Its slots lie in one piece and never move; the walker's assignments swap their pointers.
  CValue** values = nullptr;
  std::vector<CValue*> valuePointers;
  std::vector<uint32_t> opStore;
  uint32_t* ops = nullptr;
  uint32_t sp = 0;
  int callDepth = 0;
  int evaluationDepth = 0;

  // Objects.
  std::array<CIndexList<CIBaseClassImpl>, kClassLists> classLists;
  std::array<CIBaseClassImpl*, kClassCount + 1> fixedObjects{};
  std::array<uint32_t, kClassCount + 1> serials{};
  ErrorHook* errorHook = nullptr;  // of the Program object; null before it exists
  CIBaseClassImpl* currentWindow = nullptr;
  CIBaseClassImpl* mainWindow = nullptr;
  CIBaseClassImpl* defaultGameInput = nullptr;
  CWindowFollower* windowFollower = nullptr;  // the current game input
  int32_t newsSinceCollection = 0;
  uint64_t collectAboveBytes = limits::kCollectAfterBytes;
  int32_t collectionThreshold = 1000;
  bool terminating = false;
  uint32_t nextObjectNumber = 0x00400000;
  uint64_t nextObjectOrder = 0;

  // Run loop.
  int32_t tickCountdown = 0;
  int32_t tickPeriod = 10;
  bool eventsEnabled = true;
  CIndexList<CEvent> events;
  uint32_t nextEvent = 0;
  int32_t inEvent = 0;
  uint32_t eventLimit = 10000;
  int32_t pendingError = -1;
  bool running = false;
  uint32_t lastPump = 0;
  int32_t speedPercent = 100;
  uint32_t backColor = 0xFFFFFF;  // of the application part: 0xRRGGBB
  std::array<CIBaseMessages*, 8> messageFilters{};
  int32_t filterCount = 0;
  CIndexList<CIRefresh> refreshList;
  bool needsRefresh = false;
  bool autoRefresh = true;
  uint32_t refreshInterval = 50;
  uint32_t lastRefresh = 0;
  bool inRefresh = false;
  int32_t animatedCount = 0;
  CIndexList<CTimed> timed;
  uint32_t movementInterval = 50;
  uint32_t lastMovement = 0;
  std::vector<std::string> tempFiles;
  bool directSound3DUsed = false;
  bool directSound3DEnabled = false;
  // Made by their modules on first use; they outlive every runtime object.
  std::unique_ptr<CSubsystem> graphics;
  std::unique_ptr<CSubsystem> network;
  std::unique_ptr<CMessageSource> messages;  // of the window tree; never null
  std::unique_ptr<CDownloads> downloads;     // of System; null before it is asked for
  // Subsystems that live as long as the run keep their state here, by class module.
  std::function<void()> redrawOverlays;  // GroupBox and StaticText at the end of a refresh
  uint64_t tickLimit = 0;                // stop after that many ticks; 0: none
  uint64_t ticks = 0;

 private:
  static constexpr uint32_t kPumpIntervalMs = 50;
  friend class CExecutor;
  friend class CCodeCompiler;

  // Evaluation.
  void Primary();
  void PrimarySlow(uint16_t kind);
  void Assignment();
  void Conditional();
  void PrimaryName();
  void PrimaryElement();
  // The frame's variable that the token found before; null when it must be looked for.
  CVariable* KnownVariable(Token token) const {
    CVariable* known = TokenVariable(token);
    return known->home == &frame->variables && known->nameId == TokenNameId(token) ? known : nullptr;
  }
  CVariable* FindVariable(Token token);
  CVariable* FindAnew(Token token);
  Token ReadPlainElement(Token token, CValue** slots);
  Token ReadPlainMember(const CVariable& variable, Token member, CValue** slots);
  void LoopStep();
  bool Condition();
  bool ConditionAnew();
  // Evaluate inside an evaluation: of a parenthesis, a subscript, an argument.
  CValue* EvaluateInner() {
    EnterEvaluation();
    CValue* value = Evaluate();
    --evaluationDepth;
    return value;
  }
  void EnterEvaluation() {
    if (++evaluationDepth > limits::kMaxEvaluationDepth) RaiseTooDeep();
  }
  [[noreturn]] void RaiseTooDeep();
  void ReadValue(CValue& source);
  void ReadElement(CValue& variable);
  void MemberOf(CIBaseClassImpl* object);
  void MemberOfText();
  void MemberOfScriptObject(CIBaseObjectVar* object);
  void CallClassMember(CIBaseClassImpl* object);
  void ClassConstant(uint16_t classKind);
  uint32_t ResolveMember(const CIClassInfo& info, Token token);
  uint32_t ReadSubscripts(int32_t* subscripts);
  void StoreNewArray(CIBaseObjectVar& object, Token token, int32_t level, CValue& left, const CValue& right);
  void SkipSubscriptsOfUnknown();
  void NewObject();
  void NewClassObject(uint16_t classKind);
  void NewScriptObject();
  void CallByName();
  // Evaluates the arguments behind the call token at the cursor and runs the function in a frame of its own; the
  // result goes to the current slot.
  void CallFunction(const BlockRecord& block, CIBaseObjectVar& newThis);
  // The call proper: arguments are in the bank at `argDepth`.
  void RunFunction(const BlockRecord& block, CIBaseObjectVar& newFrame, CIBaseObjectVar& newThis, CValue& result);
  void BindParameters();
  CIBaseObjectVar* TakeFrame() {
    if (freeFrames_.empty()) return NewFrame();
    CIBaseObjectVar* used = freeFrames_.back();
    freeFrames_.pop_back();
    return used;
  }
  CIBaseObjectVar* NewFrame();
  const BlockRecord& FunctionOf(Token token, CIBaseObjectVar& object);
  [[noreturn]] void RaiseTooManyCalls();
  void GrowValues();
  void NeedValues(uint32_t count) {
    while (count > valueLimit_) GrowValues();
  }
  // Runs a member or constructor; a CIError goes to the error hook, which may swallow it.
  template <typename F>
  void Guarded(CIBaseClassImpl& object, F&& run);
  // A member whose arguments are in the bank.
  void RunMember(CIBaseClassImpl& object, const MemberRow& row);
  // True when the program takes the error over.
  bool TakeOver(const CIError& error);

  // The tick collects when enough is new, by number or by size.
  void CountNewObject() {
    ++newsSinceCollection;
    // A program that wants none says so by the largest threshold.
    if (budget.Used() <= collectAboveBytes || collectionThreshold == INT32_MAX) return;
    newsSinceCollection = std::max(newsSinceCollection, collectionThreshold + 1);
  }

  // Statements.
  void Action(uint16_t kind);
  void DoIf();
  void DoFor();
  void DoWhile();
  void DoSwitch();
  void DoCloseBrace();
  void DoBreak();
  void DoContinue();
  void DoReturn();
  void DoDelete();
  void PushScope(const BlockRecord& block) {
    const auto depth = static_cast<size_t>(++scopeDepth);
    if (depth >= scopeBlocks.size()) scopeBlocks.resize(depth + 64, nullptr);
    scopeBlocks[depth] = &block;
  }
  void PopScope() {
    frame->variables.RemoveFromLevel(scopeDepth, PoolOf(*frame));
    --scopeDepth;
  }
  // Behind a brace.
  void GoBehind(uint32_t offset) { readCursor = At(offset) + kJumpRecord; }

  // Run loop.
  // True when a tick has only moved the clock, as nothing was due: then it has been done.
  bool IsTickQuiet() {
    if ((tickLimit && ticks + 1 > tickLimit) || !eventsEnabled || nextEvent || pendingError != -1 ||
        animatedCount > 0 || needsRefresh || newsSinceCollection > collectionThreshold ||
        param.stop.load(std::memory_order_relaxed)) {
      return false;
    }
    const uint32_t now = services.clock->tickAndNow();
    if (now - lastPump <= kPumpIntervalMs) {
      if (tickLimit) ++ticks;
      return true;
    }
    lateTick_ = true;
    return false;
  }
  void Housekeeping() {
    if (nextEvent && eventsEnabled && inEvent == 0) FireEvent();
    if (--tickCountdown < 0 || pendingError != -1 || param.stop.load(std::memory_order_relaxed)) SlowHousekeeping();
  }
  void SlowHousekeeping();
  void Tick();
  void WatchForStop();
  void StepTimed(uint32_t nowMs);
  void RingAlarms();
  bool FilterAndDispatch();
  bool RunProgram(bool& restart);
  void Prepare(bool attach);
  void LoadClasses(const std::vector<uint32_t>& ids);
  void EnterFunctions();
  void PrepareNames();
  void PrepareExecutor();
  bool MarkDependants(CIBaseClassImpl* object);
  void CollectClass(uint32_t id);

  static constexpr size_t kTemporaries = 256;
  std::array<std::array<char, kTemporaryBytes>, kTemporaries> temporaries_;
  uint32_t temporaryNext_ = 0;
  uint32_t valueLimit_ = 0;
  int32_t quietStatements_ = 0;
  uint32_t lastStopCheck_ = 0;
  bool lateTick_ = false;  // the clock has moved for the tick that comes
  std::array<std::unique_ptr<CIClassInfo>, kClassCount + 1> classInfo_;
  std::vector<CIBaseObjectVar*> freeFrames_;
  // String temporaries that wait for the next member of a text.
  struct FreeText {
    CIBaseClassImpl* object;
    CITextHolder* holder;
  };
  std::vector<FreeText> freeTexts_;
  struct FreeStore {
    void operator()(CValue* store) const;
  };
  std::unique_ptr<CValue[], FreeStore> valueStore_;  // limits::kMaxValues slots, of which valueLimit_ are made
  std::unique_ptr<CExecutor> executor_;              // null: the walker runs the program
  // What the next collection looks at, by class; an entry may be of an object that has died.
  struct Suspected {
    uint64_t order;
    uint32_t node;
    bool operator<(const Suspected& other) const { return order < other.order; }
  };
  struct SuspectedList {
    std::vector<Suspected> entries;
    size_t tidyAt = 1024;  // entries, at which those of the dead are dropped
  };
  std::array<SuspectedList, kClassLists> suspected_;
  // While a class is collected: what it has yet to look at as a heap, newest first, and where it stands.
  std::vector<Suspected> collecting_;
  uint32_t collectingClass_ = kClassLists;
  uint64_t collectingOrder_ = 0;
  CIndexList<CArrayStore> arrays_;
  std::vector<CArrayStore*> graveyard_;  // dropped, not yet deleted: nested arrays die in a loop, not by recursion
  bool draining_ = false;
  std::vector<Text> literals_;
  CVariable noVariable_;  // what a name's token refers to before its first look-up
  std::vector<std::function<PollNeed()>> polls_;
  PollNeed pollNeed_ = PollNeed::None;  // of the last poll
  std::vector<CAlarm*> alarms_;
};

// A runtime object that holds its own text: String.
class CITextHolder {
 public:
  virtual ~CITextHolder() = default;
  virtual void SetHeldText(const Text& text) = 0;
  virtual const Text& HeldText() const = 0;
};

}  // namespace vl
