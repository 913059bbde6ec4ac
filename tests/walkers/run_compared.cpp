#include "tests/walkers/run_compared.h"

#include <algorithm>
#include <map>

#include "classes/core_classes.h"
#include "host/globals.h"
#include "interpreter/interpretor.h"
#include "platform/headless/headless_platform.h"
#include "platform/memory_files.h"
#include "tools/project/project.h"

namespace vl {

namespace {

constexpr uint64_t kTicks = 600;
// So that a program which copies all it has at each statement comes to an end soon.
constexpr uint64_t kRunBytes = 8u << 20;

// A class that stands in for those of the player: members without a result, events, errors, service, collection.
class CProbe : public CIBaseClassImpl {
 public:
  explicit CProbe(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_MATRIX, Listing::Listed) {}
  void Construct() override { Create(); }
  void Nothing() {}
  void Post() {
    const CValue& function = *interpreter.GetArg(0);
    std::vector<CValue> arguments;
    for (int i = 1; i < interpreter.GetArgCount(); ++i) arguments.push_back(*interpreter.GetArg(i));
    if (function.type == VT_FUNCTION) interpreter.PostEvent(function.GetFunction(), std::move(arguments));
  }
  void Fail() { interpreter.RaiseError(static_cast<uint32_t>(interpreter.GetArgInt(0)) & 0xFF); }
  void Collect() { interpreter.newsSinceCollection = 100000; }
  void Serve() { interpreter.ServiceStep(); }
  void OnPing() { ping_ = interpreter.GetEventFunction(); }
  void Ping() {
    if (ping_) interpreter.PostUniqueEvent(ping_, this, {interpreter.MakeValue(static_cast<int32_t>(serial))});
  }

 private:
  const BlockRecord* ping_ = nullptr;
};

constexpr MemberRow kProbeRows[] = {
    {1, "Nothing", MemberKind::Member, kMember<&CProbe::Nothing>, 0, 0, ""},
    {2, "Post", MemberKind::Member, kMember<&CProbe::Post>, 0, 0, ""},
    {3, "Fail", MemberKind::Member, kMember<&CProbe::Fail>, 0, 0, ""},
    {4, "Collect", MemberKind::Member, kMember<&CProbe::Collect>, 0, 0, ""},
    {5, "Serve", MemberKind::Member, kMember<&CProbe::Serve>, 0, 0, ""},
    {6, "OnPing", MemberKind::Event, kMember<&CProbe::OnPing>, 0, 0, ""},
    {7, "Ping", MemberKind::Member, kMember<&CProbe::Ping>, 0, 0, ""},
};
constexpr ClassTable kProbeClass = {CLASS_MATRIX, kProbeRows, &CreateObject<CProbe>, ""};

const ClassRegistry& ProbedClasses() {
  static const ClassRegistry registry = [] {
    ClassRegistry r;
    RegisterCoreClasses(r);
    r.Add(kProbeClass);
    return r;
  }();
  return registry;
}

void PutPlain(std::string& out, const CValue& v) {
  out += std::to_string(v.type);
  out += ':';
  switch (v.type) {
    case VT_INTEGER:
      out += std::to_string(v.data.integer);
      break;
    case VT_FLOAT:
      out += std::to_string(v.data.real);
      break;
    case VT_STRING:
      out += v.StringView();
      break;
    case VT_OBJECT:
      out += v.data.object ? std::to_string(v.data.object->number) : "null";
      break;
    case VT_ARRAY:
      out += std::to_string(v.data.array->ElementCount());
      break;
    default:
      break;
  }
  out += ' ';
}

void PutObjects(std::string& out, std::string& counts, const CInterpretor& interpreter) {
  for (uint32_t id = 0; id <= kClassCount; ++id) {
    const auto& list = interpreter.ObjectsOfClass(id);
    uint32_t cursor = list.First();
    while (const CIBaseClassImpl* object = list.Step(cursor)) {
      out += "\nobject " + std::to_string(id) + "/" + std::to_string(object->number) + " pins " +
             std::to_string(object->pins);
      counts += std::to_string(object->refCount) + "/" + std::to_string(object->referrers.size()) + " ";
      out += ": ";
      if (object->classInfo) continue;
      std::map<std::string, const CVariable*> members;
      static_cast<const CIBaseObjectVar*>(object)->variables.ForEach(
          [&](const CVariable& variable) { members.emplace(interpreter.namePool->Name(variable.nameId), &variable); });
      for (const auto& [name, variable] : members) {
        out += name + "=";
        PutPlain(out, *variable);
      }
    }
  }
}

std::string ProbeSource(std::string text) {
  // The names under which a program knows the probe, whose place in the tables is another class's.
  const auto replace = [&](const std::string& from, const std::string& to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
      text.replace(at, from.size(), to);
    }
  };
  replace("New Probe()", "New Matrix()");
  replace("Probe.", "probe.");
  replace("Post(", "probe.Post(");
  replace("Serve(", "probe.Serve(");
  return text;
}

}  // namespace

RunTrace TraceRun(const std::string& program, bool plainWalk) {
  RunTrace trace;
  MemoryFileSystem files;
  files.Add("walk.vlp", SingleSourceApplication(ProbeSource(program), "walk.vlq"));
  HeadlessOptions options;
  options.files = &files;
  options.attachHost = false;
  HeadlessPlatform platform(options);
  CThreadParam param;
  param.path = "walk.vlp";
  param.allClasses = true;
  param.detached = true;
  param.referenceWalker = plainWalk;
  CInterpretor interpreter(param, platform.services(), ProbedClasses());
  if (!interpreter.Init()) return trace;
  interpreter.tickLimit = kTicks;
  interpreter.budget.SetLimit(kRunBytes);
  bool failed = false;
  interpreter.onEnd = [&] {
    trace.compiled = true;
    trace.outOfMemory = interpreter.budget.HasRefused();
    trace.prepared = interpreter.IsPrepared();
    trace.allPrepared = interpreter.PrepareAll();
    trace.keepsSlots = interpreter.KeepsSlots();
    trace.globals = GlobalsToJson(interpreter);
    // Where an error left an evaluation, the operands in front of it may not be in their slots.
    const bool isClean = !interpreter.lastError.code && interpreter.ticks <= kTicks &&
                         !(interpreter.errorHook && interpreter.errorHook->lastError.code);
    PutObjects(trace.rest, trace.counts, interpreter);
    trace.rest += "\ntick " + std::to_string(interpreter.ticks) + " in " + std::to_string(interpreter.tickCountdown) +
                  " time " + std::to_string(interpreter.NowMs()) + " events " +
                  std::to_string(interpreter.events.Count()) + " depth " + std::to_string(interpreter.callDepth);
    if (!isClean) {
      trace.counts.clear();
      return;
    }
    trace.slots += "\nbank ";
    for (size_t v = 0; v < 64; ++v) PutPlain(trace.slots, interpreter.args[v]);
    trace.slots += "\nslots ";
    const size_t count = std::min<size_t>(interpreter.valuePointers.size(), 60);
    for (size_t s = 0; s < count; ++s) PutPlain(trace.slots, *interpreter.values[s]);
  };
  failed = !interpreter.Start();
  if (failed) {
    const CIError& e = interpreter.lastError;
    trace.error = std::to_string(e.code) + " at " + std::to_string(e.line + 1) + ":" + std::to_string(e.column + 1);
  }
  return trace;
}

std::string CompareRuns(const std::string& program, bool* wasPrepared) {
  const RunTrace plain = TraceRun(program, true);
  const RunTrace prepared = TraceRun(program, false);
  if (wasPrepared) *wasPrepared = prepared.prepared;
  std::string out;
  if (plain.outOfMemory || prepared.outOfMemory) return out;
  const auto compare = [&](const char* what, const std::string& a, const std::string& b) {
    if (a != b) out += std::string(what) + " differ:\n  plain:    " + a + "\n  prepared: " + b + "\n";
  };
  compare("errors", plain.error, prepared.error);
  compare("globals", plain.globals, prepared.globals);
  compare("traces", plain.rest, prepared.rest);
  compare("counts", plain.counts, prepared.counts);
  if (prepared.keepsSlots) compare("slots", plain.slots, prepared.slots);
  if (!prepared.allPrepared) out += "a function that wasn't called can't be prepared\n";
  return out;
}

}  // namespace vl
