#include "classes/program.h"

#include "classes/core_classes.h"
#include "classes/string.h"
#include "host/appfile/app_file.h"
#include "interpreter/array_store.h"
#include "interpreter/number_text.h"

namespace vl {

namespace {
constexpr uint32_t kDefaultWaitMs = 20;
constexpr size_t kArgumentChars = 255;
}  // namespace

CIProgram::CIProgram(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_PROGRAM, Listing::Listed) {
  interpreter.errorHook = &hook_;
}

CIProgram::~CIProgram() {
  if (interpreter.errorHook == &hook_) interpreter.errorHook = nullptr;
}

void CIProgram::End() { interpreter.RaiseError(ERR_END); }
void CIProgram::Restart() { interpreter.RaiseError(ERR_RESTART); }

void CIProgram::Wait() {
  if (interpreter.inEvent) interpreter.RaiseError(ERR_WAIT_IN_EVENT, kNoArgument, "Wait inside an event function");
  const int32_t ms = interpreter.GetArgInt(0);
  if (ms == kDefaultInt) {
    interpreter.Wait(kDefaultWaitMs);
  } else if (ms > 0) {
    interpreter.Wait(static_cast<uint32_t>(ms));
  }
}

void CIProgram::Flush() { interpreter.Collect(); }

void CIProgram::SetFlush() {
  const int32_t threshold = interpreter.GetArgInt(0);
  if (threshold < 1) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  interpreter.collectionThreshold = threshold;
}

void CIProgram::DisableEvents() { interpreter.eventsEnabled = false; }
void CIProgram::EnableEvents() { interpreter.eventsEnabled = true; }
void CIProgram::EventsEnabled() { interpreter.GetResult().SetInt(interpreter.eventsEnabled); }
void CIProgram::OnError() { hook_.onError = interpreter.GetEventFunction(); }

void CIProgram::GetLastError() {
  interpreter.GetResult().SetInt(static_cast<int32_t>(hook_.lastError.code));
  hook_.lastError.code = ERR_END;
  hook_.lastError.argument = kNoArgument;
}

void CIProgram::GetErrorMessage() {
  const int32_t code = interpreter.GetArgInt(0);
  if (code == kDefaultInt) {
    Result("");
  } else {
    Result(FormatError(static_cast<uint32_t>(code), nullptr, interpreter.errorTexts));
  }
}

void CIProgram::GetChar() {
  const int32_t code = interpreter.GetArgInt(0);
  if (code < 0 || code > 255) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  const char c = static_cast<char>(code);
  Result({&c, 1});
}

void CIProgram::GetString() {
  const CValue& v = *interpreter.GetArg(0);
  char buffer[CInterpretor::kTemporaryBytes];
  if (v.type == VT_FLOAT) {
    Result({buffer, FormatDouble(v.data.real, buffer)});
  } else {
    Result({buffer, FormatInteger(interpreter.GetArgInt(0), buffer)});
  }
}

void CIProgram::GetAscii() {
  const char* text = interpreter.IsArgDefault(0) ? "" : interpreter.GetArgString(0);
  interpreter.GetResult().SetInt(static_cast<unsigned char>(text[0]));
}

void CIProgram::GetRGB() {
  uint32_t color = 0;
  for (int i = 0; i < 3; ++i) {
    const int32_t channel = interpreter.GetArgInt(i);
    color = color << 8 | (channel == kDefaultInt ? 0 : static_cast<uint32_t>(channel) & 255);
  }
  interpreter.GetResult().SetInt(static_cast<int32_t>(color));
}

void CIProgram::GetRed() {
  const auto color = static_cast<uint32_t>(interpreter.GetArgInt(0));
  interpreter.GetResult().SetInt(static_cast<int32_t>(color >> 16 & 255));
}
void CIProgram::GetGreen() {
  const auto color = static_cast<uint32_t>(interpreter.GetArgInt(0));
  interpreter.GetResult().SetInt(static_cast<int32_t>(color >> 8 & 255));
}
void CIProgram::GetBlue() {
  const auto color = static_cast<uint32_t>(interpreter.GetArgInt(0));
  interpreter.GetResult().SetInt(static_cast<int32_t>(color & 255));
}

void CIProgram::FillArray() {
  const CValue& array = *interpreter.GetArg(0);
  if (array.type != VT_ARRAY) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  CArrayStore& store = *array.data.array;
  // The argument's own copy, so that filling an array with one of its elements is sound.
  CValue value(&interpreter);
  value.Assign(*interpreter.GetArg(1));
  for (uint32_t i = 0; i < store.ElementCount(); ++i) store.Store(i, value);
}

void CIProgram::IsArray() { interpreter.GetResult().SetInt(interpreter.GetArg(0)->type == VT_ARRAY); }
void CIProgram::IsDefaultValue() { interpreter.GetResult().SetInt(interpreter.GetArg(0)->IsDefault()); }
void CIProgram::IsString() { interpreter.GetResult().SetInt(interpreter.GetArg(0)->type == VT_STRING); }
void CIProgram::IsNumber() { interpreter.GetResult().SetInt(interpreter.GetArg(0)->type <= VT_FLOAT); }
void CIProgram::IsInteger() { interpreter.GetResult().SetInt(interpreter.GetArg(0)->type == VT_INTEGER); }
void CIProgram::IsFloat() { interpreter.GetResult().SetInt(interpreter.GetArg(0)->type == VT_FLOAT); }
void CIProgram::IsFunction() { interpreter.GetResult().SetInt(interpreter.GetArg(0)->type == VT_FUNCTION); }

void CIProgram::IsObject() {
  const CValue& v = *interpreter.GetArg(0);
  bool result = v.type == VT_OBJECT;
  if (result && !interpreter.IsArgDefault(1)) {
    const CIBaseClassImpl* object = v.data.object;
    result = object && object->classInfo && EqualNoCase(object->classInfo->name, interpreter.GetArgString(1));
  }
  interpreter.GetResult().SetInt(result);
}

void CIProgram::GetArrayDimensionCount() {
  const CValue& v = *interpreter.GetArg(0);
  if (v.type != VT_ARRAY) interpreter.RaiseError(ERR_NOT_ARRAY);
  interpreter.GetResult().SetInt(static_cast<int32_t>(v.data.array->dimensions));
}

void CIProgram::GetArrayDimensionSize() {
  const CValue& v = *interpreter.GetArg(0);
  if (v.type != VT_ARRAY) interpreter.RaiseError(ERR_NOT_ARRAY);
  const CArrayStore& store = *v.data.array;
  if (interpreter.IsArgDefault(1) && store.dimensions > 1) interpreter.RaiseError(ERR_ARGUMENT_COUNT);
  const uint32_t n = interpreter.IsArgDefault(1) ? 0 : static_cast<uint32_t>(interpreter.GetArgInt(1));
  if (n >= store.dimensions) interpreter.RaiseError(ERR_SUBSCRIPT);
  interpreter.GetResult().SetInt(static_cast<int32_t>(store.sizes[n]));
}

void CIProgram::LoadString() {
  interpreter.GetResult().SetText(LoadStringElement(interpreter, *interpreter.GetArg(0)));
}

std::vector<std::string> SplitArguments(std::string_view line) {
  std::vector<std::string> arguments;
  size_t i = 0;
  const auto isEnd = [&] { return i >= line.size() || static_cast<unsigned char>(line[i]) < 32; };
  const auto isTab = [&] { return i < line.size() && line[i] == '\t'; };
  for (;;) {
    while (i < line.size() && (line[i] == ' ' || line[i] == '\t')) ++i;
    if (isEnd()) return arguments;
    std::string argument;
    if (line[i] == '"' || line[i] == '\'') {
      const char quote = line[i++];
      while ((!isEnd() || isTab()) && line[i] != quote) argument += line[i++];
      if (i < line.size() && line[i] == quote) ++i;
    } else {
      while (!isEnd() && line[i] != ' ') argument += line[i++];
    }
    arguments.push_back(std::move(argument));
  }
}

void CIProgram::GetCommandLine() { Result(interpreter.param.commandLine); }

void CIProgram::GetNArguments() {
  interpreter.GetResult().SetInt(static_cast<int32_t>(SplitArguments(interpreter.param.commandLine).size()));
}

void CIProgram::GetArgument() {
  const auto arguments = SplitArguments(interpreter.param.commandLine);
  const int32_t i = interpreter.GetArgInt(0);
  const bool there = i >= 0 && static_cast<size_t>(i) < arguments.size();
  Result(there ? std::string_view(arguments[static_cast<size_t>(i)]).substr(0, kArgumentChars) : "");
}

bool CIProgram::ReleaseFlag() const {
  const CAppPart* part = interpreter.app ? interpreter.app->currentPart : nullptr;
  return !part || part->releaseFlag != 0;
}

void CIProgram::IsRelease() { interpreter.GetResult().SetInt(ReleaseFlag()); }
void CIProgram::IsDebug() { interpreter.GetResult().SetInt(!ReleaseFlag()); }
void CIProgram::IsScreenSaverSetupDialog() { interpreter.GetResult().SetInt(interpreter.param.detached); }

void CIProgram::IsScreenSaverControlPanel() {
  bool panel = !interpreter.param.detached && !interpreter.param.designMode;
  if (panel && interpreter.services.windows) {
    const ScreenInfo screen = interpreter.services.windows->screen();
    panel = !(interpreter.services.windows->hostSize() == Size{screen.width, screen.height});
  }
  interpreter.GetResult().SetInt(panel);
}

void CIProgram::GetApplicationDirectory() {
  const Environment* environment = interpreter.services.environment;
  Result(environment ? interpreter.services.environment->applicationDirectory() : "");
}

void CIProgram::GetParamList() {
  std::vector<std::string> names;
  for (const auto& [name, value] : interpreter.param.parameters) names.push_back(name);
  names.emplace_back();
  interpreter.SetResultNames(names);
}

void CIProgram::GetParamValue() {
  const CValue& wanted = *interpreter.GetArg(0);
  if (wanted.type != VT_STRING) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  for (const auto& [name, value] : interpreter.param.parameters) {
    if (name == wanted.StringView()) {
      Result(value);
      return;
    }
  }
}

void CIProgram::GetBankList() {
  std::vector<std::string> names;
  if (interpreter.app) {
    const CAppPart* part = interpreter.IsArgDefault(0) ? interpreter.app->currentPart
                                                       : interpreter.app->GetPartByName(interpreter.GetArgString(0));
    if (part) {
      for (const auto& bank : part->banks) {
        if (bank->type != 0) names.push_back(bank->name);
      }
    }
  }
  interpreter.SetResultNames(names);
}

void CIProgram::GetObjectList() {
  std::vector<std::string> names;
  if (interpreter.app) {
    for (const auto& part : interpreter.app->parts) names.push_back(part->name);
  }
  interpreter.SetResultNames(names);
}

void CIProgram::GetDefaultGameInput() {
  CIBaseClassImpl* input = interpreter.defaultGameInput;
  if (!input) interpreter.RaiseError(ERR_NO_GAME_INPUT);
  interpreter.GetResult().SetObject(input);
}

void CIProgram::IsDirectSound3DUsed() { interpreter.GetResult().SetInt(interpreter.directSound3DUsed); }
void CIProgram::IsDirectSound3DEnabled() { interpreter.GetResult().SetInt(interpreter.directSound3DEnabled); }

void CIProgram::DisableDirectSound3D() {
  if (interpreter.ObjectsOfClass(CLASS_SPEAKER).Count() > 0) interpreter.RaiseError(ERR_SOUND_3D);
  interpreter.directSound3DEnabled = false;
}

namespace {

// Whether a member always leaves a result: all but those that only do something.
constexpr bool Gives(uint16_t id) {
  for (const uint16_t silent : {1, 4, 5, 12, 15, 16, 27, 28, 30, 31, 42, 43, 44, 45, 47, 58}) {
    if (id == silent) return false;
  }
  return true;
}

constexpr MemberRow Global(uint16_t id, const char* name, MemberFunction function, const char* help,
                           MemberKind kind = MemberKind::Member) {
  return {id, name, kind, function, 0, CLASS_PROGRAM, help, nullptr, Gives(id)};
}

constexpr MemberRow kRows[] = {
    Global(1, "Restart", kMember<&CIProgram::Restart>, "Restart(): the program starts anew"),
    Global(2, "GetCommandLine", kMember<&CIProgram::GetCommandLine>, "GetCommandLine(): the whole command line"),
    Global(3, "GetArgument", kMember<&CIProgram::GetArgument>, "GetArgument(i): argument i of the command line"),
    Global(4, "Wait", kMember<&CIProgram::Wait>, "Wait(ms): sleeps and serves events; 20 ms when absent"),
    Global(5, "SysDebug", kMember<&CIProgram::Nothing>, "SysDebug(...): does nothing"),
    Global(6, "IsDebug", kMember<&CIProgram::IsDebug>, "IsDebug(): 1 for an application that isn't a release"),
    Global(7, "IsRelease", kMember<&CIProgram::IsRelease>, "IsRelease(): 1 for a release"),
    Global(8, "IsScreenSaver", kMember<&CIProgram::Zero>, "IsScreenSaver(): 0"),
    Global(9, "IsApplication", kMember<&CIProgram::One>, "IsApplication(): 1"),
    Global(10, "GetNArguments", kMember<&CIProgram::GetNArguments>, "GetNArguments(): arguments of the command line"),
    Global(11, "IsStandAlone", kMember<&CIProgram::One>, "IsStandAlone(): 1"),
    Global(12, "End", kMember<&CIProgram::End>, "End(): ends the program"),
    Global(13, "GetChar", kMember<&CIProgram::GetChar>, "GetChar(code): the character of a code from 0 to 255"),
    Global(14, "GetString", kMember<&CIProgram::GetString>, "GetString(number): the number as text"),
    Global(15, "Flush", kMember<&CIProgram::Flush>, "Flush(): frees the objects that nothing refers to"),
    Global(16, "SetFlush", kMember<&CIProgram::SetFlush>, "SetFlush(n): new objects between two collections"),
    Global(17, "GetRGB", kMember<&CIProgram::GetRGB>, "GetRGB(r, g, b): the colour 0xRRGGBB"),
    Global(18, "GetRed", kMember<&CIProgram::GetRed>, "GetRed(color): 0 to 255"),
    Global(19, "GetGreen", kMember<&CIProgram::GetGreen>, "GetGreen(color): 0 to 255"),
    Global(20, "GetBlue", kMember<&CIProgram::GetBlue>, "GetBlue(color): 0 to 255"),
    Global(21, "GetDefaultGameInput", kMember<&CIProgram::GetDefaultGameInput>,
           "GetDefaultGameInput(): the game input that the application asks for"),
    Global(22, "IsScreenSaverSetupDialog", kMember<&CIProgram::IsScreenSaverSetupDialog>,
           "IsScreenSaverSetupDialog(): 1 for a run of its own, without a host's window"),
    Global(23, "IsScreenSaverControlPanel", kMember<&CIProgram::IsScreenSaverControlPanel>,
           "IsScreenSaverControlPanel(): 1 in a host's window smaller than the screen"),
    Global(24, "IsEditorMode", kMember<&CIProgram::Zero>, "IsEditorMode(): 0"),
    Global(25, "IsDirectSound3DUsed", kMember<&CIProgram::IsDirectSound3DUsed>, "IsDirectSound3DUsed(): 1 or 0"),
    Global(26, "IsDirectSound3DEnabled", kMember<&CIProgram::IsDirectSound3DEnabled>,
           "IsDirectSound3DEnabled(): 1 or 0"),
    Global(27, "EnableDirectSound3D", kMember<&CIProgram::DisableDirectSound3D>,
           "EnableDirectSound3D(): does what DisableDirectSound3D does"),
    Global(28, "DisableDirectSound3D", kMember<&CIProgram::DisableDirectSound3D>,
           "DisableDirectSound3D(): plays without 3D from now on"),
    Global(29, "LoadString", kMember<&CIProgram::LoadString>, "LoadString(name): a text of the string bank"),
    Global(30, "DebugBreak", kMember<&CIProgram::Nothing>, "DebugBreak(): does nothing"),
    Global(31, "FillArray", kMember<&CIProgram::FillArray>, "FillArray(a, v): assigns v to every element"),
    Global(32, "IsArray", kMember<&CIProgram::IsArray>, "IsArray(v): 1 or 0"),
    Global(33, "IsDefaultValue", kMember<&CIProgram::IsDefaultValue>, "IsDefaultValue(v): 1 for an omitted argument"),
    Global(34, "IsString", kMember<&CIProgram::IsString>, "IsString(v): 1 or 0"),
    Global(35, "IsNumber", kMember<&CIProgram::IsNumber>, "IsNumber(v): 1 for an integer or float"),
    Global(36, "IsInteger", kMember<&CIProgram::IsInteger>, "IsInteger(v): 1 or 0"),
    Global(37, "IsFloat", kMember<&CIProgram::IsFloat>, "IsFloat(v): 1 or 0"),
    Global(38, "IsObject", kMember<&CIProgram::IsObject>, "IsObject(v, className): 1 for an object (of that class)"),
    Global(39, "IsFunction", kMember<&CIProgram::IsFunction>, "IsFunction(v): 1 or 0"),
    Global(40, "GetArrayDimensionCount", kMember<&CIProgram::GetArrayDimensionCount>,
           "GetArrayDimensionCount(a): number of dimensions"),
    Global(41, "GetArrayDimensionSize", kMember<&CIProgram::GetArrayDimensionSize>,
           "GetArrayDimensionSize(a, n): size of dimension n"),
    Global(42, "AddToDebugger", kMember<&CIProgram::Nothing>, "AddToDebugger(...): does nothing"),
    Global(43, "RemoveFromDebugger", kMember<&CIProgram::Nothing>, "RemoveFromDebugger(...): does nothing"),
    Global(44, "DisableEvents", kMember<&CIProgram::DisableEvents>, "DisableEvents(): no event fires and no tick runs"),
    Global(45, "EnableEvents", kMember<&CIProgram::EnableEvents>, "EnableEvents(): the contrary"),
    Global(46, "EventsEnabled", kMember<&CIProgram::EventsEnabled>, "EventsEnabled(): 1 or 0"),
    Global(47, "OnError", kMember<&CIProgram::OnError>, "OnError = f: f(code, text, source, column, line)",
           MemberKind::Event),
    Global(48, "GetLastError", kMember<&CIProgram::GetLastError>, "GetLastError(): code of the last caught error"),
    Global(49, "GetErrorMessage", kMember<&CIProgram::GetErrorMessage>, "GetErrorMessage(code): its text"),
    Global(50, "IsQuickTimeInstalled", kMember<&CIProgram::Zero>, "IsQuickTimeInstalled(): 1 or 0"),
    Global(51, "IsModPlugInstalled", kMember<&CIProgram::Zero>, "IsModPlugInstalled(): 1 or 0"),
    Global(52, "IsSpeechInstalled", kMember<&CIProgram::Zero>, "IsSpeechInstalled(): 1 or 0"),
    Global(53, "IsQuickTimeVRInstalled", kMember<&CIProgram::Zero>, "IsQuickTimeVRInstalled(): 1 or 0"),
    Global(54, "GetAscii", kMember<&CIProgram::GetAscii>, "GetAscii(text): code of its first character, 0 for none"),
    Global(55, "GetApplicationDirectory", kMember<&CIProgram::GetApplicationDirectory>,
           "GetApplicationDirectory(): directory of the player"),
    Global(56, "IsActiveX", kMember<&CIProgram::One>, "IsActiveX(): 1"),
    Global(57, "GetParamList", kMember<&CIProgram::GetParamList>, "GetParamList(): names of the page's parameters"),
    Global(58, "GetParamValue", kMember<&CIProgram::GetParamValue>, "GetParamValue(name): value of a parameter"),
    Global(59, "GetBankList", kMember<&CIProgram::GetBankList>, "GetBankList(part): names of the banks of a part"),
    Global(60, "GetObjectList", kMember<&CIProgram::GetObjectList>, "GetObjectList(): names of the parts"),
};

}  // namespace

const ClassTable kProgramClass = {CLASS_PROGRAM, kRows, &CreateObject<CIProgram>,
                                  "The running program; every member is a global name"};

}  // namespace vl
