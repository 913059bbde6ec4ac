// CIProgram: the fixed object Program, through which a script speaks to the runtime itself. All of its members
// are global names.
#pragma once

#include <string>
#include <vector>

#include "interpreter/interpretor.h"

namespace vl {

class CIProgram : public CIBaseClassImpl {
 public:
  explicit CIProgram(CInterpretor& interpreter);
  ~CIProgram() override;

  // Life.
  void Restart();
  void Wait();
  void End();
  void Flush();
  void SetFlush();
  void DisableEvents();
  void EnableEvents();
  void EventsEnabled();
  void OnError();
  void GetLastError();
  void GetErrorMessage();
  void Nothing() {}
  // Values.
  void GetChar();
  void GetString();
  void GetAscii();
  void GetRGB();
  void GetRed();
  void GetGreen();
  void GetBlue();
  void FillArray();
  void IsArray();
  void IsDefaultValue();
  void IsString();
  void IsNumber();
  void IsInteger();
  void IsFloat();
  void IsObject();
  void IsFunction();
  void GetArrayDimensionCount();
  void GetArrayDimensionSize();
  void LoadString();
  // The host and the application.
  void GetCommandLine();
  void GetNArguments();
  void GetArgument();
  void One() { interpreter.GetResult().SetInt(1); }
  void Zero() { interpreter.GetResult().SetInt(0); }
  void IsDebug();
  void IsRelease();
  void IsScreenSaverSetupDialog();
  void IsScreenSaverControlPanel();
  void GetApplicationDirectory();
  void GetParamList();
  void GetParamValue();
  void GetBankList();
  void GetObjectList();
  void GetDefaultGameInput();
  // Environment.
  void IsDirectSound3DUsed();
  void IsDirectSound3DEnabled();
  void DisableDirectSound3D();

 private:
  void Result(std::string_view text) { interpreter.GetResult().SetString(text); }
  bool ReleaseFlag() const;
  ErrorHook hook_;
};

// Splits a command line: blanks and tabs separate, quotes at the start of an argument hold up to the same quote,
// a character below 32 ends the line.
std::vector<std::string> SplitArguments(std::string_view line);

}  // namespace vl
