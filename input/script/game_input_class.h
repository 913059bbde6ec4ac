// CIGameInput: the runtime class GameInput, the script's face of the game input library.
//
// Only one object of the process may be started. The interpreter's window follower is the object that was made last.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "input/game_input_library.h"
#include "interpreter/interpretor.h"

namespace vl {

class CIGameInput : public CIBaseClassImpl, public CWindowFollower {
 public:
  explicit CIGameInput(CInterpretor& interpreter);
  // The object with which the program starts, with the application's settings. It waits for a window.
  static CIBaseClassImpl* MakeDefault(CInterpretor& interpreter);

  void Construct() override;
  void Destroy(bool final) override;
  void WindowBecameActive(uint32_t handle) override;

  // Members.
  void Start();
  void Stop();
  void GetPlayerCount();
  void LoadSettings();
  void SetupDialog();
  void SaveSettings();
  void GetDeviceValue();
  void GetPlayerDeviceType();
  void GetSettingCount();
  void GetCurrentSettingName();
  void GetCurrentSettingIndex();
  void GetSettingName();
  void HasFFSupport();
  void GetFFDevice();
  void IsStarted();

 private:
  // Stops the devices for as long as it lives; the setting that was started goes on afterwards.
  class Suspension {
   public:
    explicit Suspension(CIGameInput& input) : input_(input) {
      if (input_.started_) input_.library_->Deactivate();
    }
    ~Suspension() { input_.Resume(); }
    Suspension(const Suspension&) = delete;
    Suspension& operator=(const Suspension&) = delete;

   private:
    CIGameInput& input_;
  };

  void OpenLibrary(uint32_t window);
  void ReadApplicationSettings();
  // Error 14 when there is no such element and no such file.
  bool ReadSource(const CValue& source);
  // What Start without an argument means; -1 without settings.
  int32_t DefaultIndex() const;
  void StartIndex(int32_t index);
  void StartName(std::string_view name);
  void StopRun();
  void Resume();
  // Argument 0: missing is 0, and the value that stands for a missing one is error 14.
  int32_t PlayerArgument();
  // Of the argument; null when nothing runs or there is none.
  const GamePlayer* ArgumentPlayer();
  int32_t SettingCount() const { return static_cast<int32_t>(library_->settings.size()); }
  CValue& Result() { return interpreter.GetResult(); }

  std::unique_ptr<GameInputLibrary> library_;
  std::vector<CIBaseClassImpl*> ffDevices_;  // handed out by GetFFDevice; they end with the run of the setting
  std::optional<std::string> startedName_;
  int32_t startedIndex_ = -1;
  bool started_ = false;
  uint32_t window_ = 0;
};

}  // namespace vl
