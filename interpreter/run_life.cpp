// The life of a run: opening, compiling, starting, restarting, resetting.
#include <cstdlib>

#include "host/appfile/app_file.h"
#include "interpreter/executor/executor.h"
#include "interpreter/interpretor.h"
#include "interpreter/plain_message_source.h"

namespace vl {

CInterpretor::CInterpretor(CThreadParam& param, const Services& services, const ClassRegistry& registry)
    : CIBaseObjectVar(*this, Listing::None),
      param(param),
      services(services),
      registry(registry),
      variablePool(this, &budget),
      framePool(this, &budget),
      elementPool(this, &budget),
      defaultValue(this),
      noVariable_(this) {
  keywords = &keywordTables;
  if (!this->services.disk) {
    ownDisk = std::make_unique<RunFiles>(services.files);
    this->services.disk = ownDisk.get();
  }
  constexpr size_t kArguments = limits::kArgumentLevels * limits::kArgumentsPerLevel;
  args.reserve(kArguments);
  while (args.size() < kArguments) {
    args.emplace_back(this);
    args.back().SetInt(0);
  }
  defaultValue.SetDefault();
  if (services.environment) errorTexts.french = services.environment->isFrench();
  messages = registry.makeMessageSource ? registry.makeMessageSource(*this)
                                        : std::make_unique<CPlainMessageSource>(*services.events, param);
  frame = thisObject = this;
  valueStore_.reset(static_cast<CValue*>(std::malloc(limits::kMaxValues * sizeof(CValue))));
  if (!valueStore_) throw std::bad_alloc();
}

CInterpretor::~CInterpretor() {
  Reset();
  terminating = true;
  for (CValue* value : valuePointers) value->~CValue();
  for (CIBaseObjectVar* unused : freeFrames_) delete unused;
  freeFrames_.clear();
}

bool CInterpretor::Init() {
  app = std::make_unique<CAppFile>(&budget);
  appStatus = app->Open("", param.path, *services.files, param.designMode);
  if (appStatus != 0) return false;
  applicationKind = app->applicationKind;
  if (applicationKind == 4 && param.startDelayMs >= 0 && !param.startDelayDone) {
    const uint32_t start = NowMs();
    while (NowMs() - start < static_cast<uint32_t>(param.startDelayMs) && !param.stop.load()) {
      messages->WaitForMessage(static_cast<int>(static_cast<uint32_t>(param.startDelayMs) - (NowMs() - start)));
    }
    param.startDelayDone = true;
  }
  std::vector<uint32_t> ids;
  if (param.allClasses) {
    for (uint32_t id = 1; id <= kClassCount; ++id) ids.push_back(id);
  } else {
    for (const std::string& name : app->classNames) ids.push_back(ClassIdByName(name));
  }
  LoadClasses(ids);
  return true;
}

bool CInterpretor::InitWithoutApplication(const std::vector<uint32_t>& classIds) {
  LoadClasses(classIds);
  return true;
}

void CInterpretor::LoadClasses(const std::vector<uint32_t>& ids) {
  BuildKeywordTables(keywordTables, registry, ids);
  for (uint32_t id = 1; id <= kClassCount; ++id) {
    if (!keywordTables.members[id]) continue;
    auto info = std::make_unique<CIClassInfo>();
    info->interpreter = this;
    info->keywords = keywordTables.members[id].get();
    info->table = keywordTables.tables[id];
    info->name = FactsOfClass(id).name;
    info->id = id;
    if (info->table) {
      for (const MemberRow& row : info->table->rows) {
        if (row.id >= info->rows.size()) info->rows.resize(row.id + 1u, nullptr);
        info->rows[row.id] = &row;
      }
    }
    classInfo_[id] = std::move(info);
  }
}

bool CInterpretor::CompileSources(bool withInitSource) {
  static_cast<CTokenInfos&>(*this) = CTokenInfos(&keywordTables);
  stage = Stage::Loading;
  if (app) {
    app->ForEachSource(withInitSource, [&](SourceEntry&& source) {
      return AddSource(source.text, source.flags, source.path, source.part);
    });
  }
  return Compile();
}

bool CInterpretor::Start() {
  // In the host's window the init source isn't used; it stands for the window that a detached run lacks.
  bool detached = param.detached;
  bool first = true;
  bool result = true;
  for (;;) {
    bool ended = CompileSources(detached);
    bool restart = false;
    if (ended) {
      Reset();
      try {
        Prepare(!detached);
        ended = RunProgram(restart);
      } catch (CIError& error) {
        lastError = std::move(error);
        ended = lastError.code == ERR_END;
      }
    }
    if (first) result = ended;
    if (!ended && !first && onRestartFailed) onRestartFailed();
    if (!restart && onEnd) onEnd();
    running = false;
    Reset();
    if (!restart) return result;
    // A program that restarts at once never comes to a tick: time passes and the host's stop is seen here too.
    services.clock->tick();
    messages->HasMessage();
    if (param.stop.load() || (tickLimit && ++ticks > tickLimit)) {
      if (onEnd) onEnd();
      return result;
    }
    first = false;
    detached = true;
  }
}

// Fixed objects, the part's settings, the attached window and the functions.
void CInterpretor::Prepare(bool attach) {
  if (valuePointers.empty()) GrowValues();
  sp = 0;
  tickPeriod = 10;
  tickCountdown = tickPeriod;
  autoRefresh = true;
  refreshInterval = movementInterval = 50;
  collectionThreshold = 1000;
  eventLimit = 10000;
  eventsEnabled = true;
  pendingError = -1;
  inEvent = 0;
  scopeDepth = 0;
  callDepth = evaluationDepth = 0;
  argDepth = 0;
  highWater = 0;
  declared = nullptr;
  returned = false;
  returnValue = nullptr;
  serials.fill(0);
  literals_.assign(tokens.size() / 8 + 1, Text());
  frame = thisObject = this;
  if (app) {
    app->SetCurrentPart(nullptr);
    if (const CAppPart* part = app->currentPart) {
      speedPercent = part->speedPercent;
      backColor = part->backColor;
      directSound3DEnabled = part->sound3D != 0;
    }
  }
  for (const uint32_t id : {CLASS_MATH, CLASS_KEYBOARD, CLASS_DISK, CLASS_PROGRAM, CLASS_SYSTEM, CLASS_DISPLAY}) {
    const CIClassInfo* info = ClassInfo(id);
    if (!info || !info->table || !info->table->create) continue;
    fixedObjects[id] = info->table->create(*this);
    fixedObjects[id]->Create();
  }
  if (app && app->currentPart && app->currentPart->gameInputUsed != 0 && registry.makeDefaultGameInput &&
      ClassInfo(CLASS_GAMEINPUT)) {
    defaultGameInput = registry.makeDefaultGameInput(*this);
  }
  if (attach && registry.attachWindow && ClassInfo(CLASS_WINDOW)) registry.attachWindow(*this);
  EnterFunctions();
  PrepareNames();
  PrepareExecutor();
}

void CInterpretor::EnterFunctions() {
  for (const BlockRecord& block : blocks) {
    if (block.kind == kBlockFunction) AddVariable(*this, block.test, 0)->SetFunction(&block);
  }
}

// Makes the name records ready for the walker: no variable known yet, and a mark where a member follows.
void CInterpretor::PrepareNames() {
  for (Token t = tokens.data(); TokenKindOf(t) != TK_END; t = TokenNext(t)) {
    const uint16_t kind = TokenKindOf(t);
    if (kind != TK_CALL && kind != TK_NAME && kind != TK_ELEMENT) continue;
    SetTokenVariable(Writable(t), &noVariable_);
    if (kind == TK_NAME && IsMemberToken(TokenKindOf(TokenNext(t)))) Writable(t)[3] |= kTokenMemberFollows;
  }
}

bool CInterpretor::KeepsSlots() const { return !executor_ || executor_->traces == kAllTraces; }

bool CInterpretor::PrepareAll() { return !executor_ || executor_->PrepareAll(); }

// What the executor can't run as a whole is left to the walker.
void CInterpretor::PrepareExecutor() {
  if (param.referenceWalker) return;
  executor_ = std::make_unique<CExecutor>(*this);
  if (!executor_->Prepare()) executor_.reset();
}

bool CInterpretor::RunProgram(bool& restart) {
  stage = Stage::Running;
  running = true;
  const uint32_t now = NowMs();
  lastPump = now;
  lastRefresh = now - refreshInterval;
  lastMovement = now - movementInterval;
  bool result = true;
  try {
    if (executor_) {
      executor_->RunProgram();
    } else {
      StatementWalk(tokens.data(), nullptr);
    }
  } catch (CIError& error) {
    restart = error.code == ERR_RESTART;
    if (error.code > ERR_RESTART) {
      lastError = std::move(error);
      result = false;
    }
  } catch (const std::bad_alloc&) {
    lastError = CIError(ERR_MEMORY, kNoArgument, "", 0, 0);
    result = false;
  }
  running = false;
  return result;
}

void CInterpretor::Reset() {
  terminating = true;
  stage = Stage::Loading;
  // A slot that was never used holds no value: a member that leaves it alone gives none.
  executor_.reset();
  for (size_t v = 0; v < valuePointers.size(); ++v) {
    valuePointers[v] = &valueStore_[v];
    valuePointers[v]->Release();
    valuePointers[v]->SetNew(VT_NEW_NAME, 0);
  }
  for (CValue& argument : args) argument.SetInt(0);
  argCounts.fill(0);
  argDepth = 0;
  highWater = 0;
  sp = 0;
  variables.Clear(variablePool);
  uint32_t cursor = events.First();
  while (CEvent* event = events.Step(cursor)) delete event;
  events.Clear();
  nextEvent = 0;
  for (uint32_t id = 0; id < kClassLists; ++id) {
    uint32_t object = classLists[id].First();
    while (CIBaseClassImpl* o = classLists[id].Step(object)) DestroyObject(o, true);
    classLists[id].Clear();
    suspected_[id] = {};
  }
  nextObjectOrder = 0;
  for (const FreeText& text : freeTexts_) delete text.object;
  freeTexts_.clear();
  fixedObjects.fill(nullptr);
  errorHook = nullptr;
  currentWindow = mainWindow = defaultGameInput = nullptr;
  windowFollower = nullptr;
  refreshList.Clear();
  filterCount = 0;
  timed.Clear();
  animatedCount = 0;
  // Arrays that are left; their elements may refer to one another.
  cursor = arrays_.First();
  while (CArrayStore* store = arrays_.Step(cursor)) {
    delete store;
    budget.Return(sizeof(CArrayStore));
  }
  arrays_.Clear();
  graveyard_.clear();
  scopeDepth = 0;
  scopeBlocks.clear();
  for (const std::string& file : tempFiles) services.disk->remove(file);
  tempFiles.clear();
  services.disk->SetCurrentFolder(kHomeFolder);
  literals_.clear();
  polls_.clear();
  downloads.reset();
  newsSinceCollection = 0;
  nextObjectNumber = 0x00400000;
  terminating = false;
}

void CInterpretor::RaiseError(uint32_t code, uint32_t argument, std::string detail) {
  // The person sees the state that led to the error.
  if (running && code != ERR_END) RefreshAll();
  Raise(code, argument, std::move(detail));
}

void CInterpretor::RaiseSystemError(uint32_t systemCode, uint32_t argument) {
  RaiseError(systemCode | kSystemError, argument);
}

}  // namespace vl
