#include "input/script/game_input_class.h"

#include <algorithm>

#include "host/appfile/app_file.h"
#include "input/script/input_classes.h"
#include "input/script/setup_window.h"
#include "ui/window_class.h"

namespace vl {

CIGameInput::CIGameInput(CInterpretor& interpreter) : CIBaseClassImpl(interpreter, CLASS_GAMEINPUT, Listing::Listed) {}

CIBaseClassImpl* CIGameInput::MakeDefault(CInterpretor& interpreter) {
  auto* input = new CIGameInput(interpreter);
  input->OpenLibrary(0);
  input->ReadApplicationSettings();
  input->Create();
  input->Hold();
  return input;
}

void CIGameInput::Construct() {
  const CIBaseClassImpl* window = interpreter.currentWindow;
  if (!interpreter.IsArgDefault(0) && interpreter.GetArg(0)->IsObjectOfClass(CLASS_WINDOW)) {
    window = interpreter.GetArg(0)->data.object;
  }
  OpenLibrary(window ? static_cast<const CIWindow*>(window)->hwnd : 0);
  if (interpreter.IsArgDefault(1)) {
    ReadApplicationSettings();
  } else {
    ReadSource(*interpreter.GetArg(1));
  }
  Create();
}

void CIGameInput::OpenLibrary(uint32_t window) {
  window_ = window;
  library_ = std::make_unique<GameInputLibrary>();
  library_->Open(interpreter.services.devices, window);
  interpreter.windowFollower = this;
}

void CIGameInput::ReadApplicationSettings() {
  const CAppPart* part = interpreter.app ? interpreter.app->currentPart : nullptr;
  if (!part || part->gameInputData.empty()) return;
  CMemoryStream text(part->gameInputData.data(), static_cast<uint32_t>(part->gameInputData.size()));
  library_->ReadSettings(text);
}

bool CIGameInput::ReadSource(const CValue& source) {
  std::unique_ptr<CStream> text;
  CElement* element = interpreter.GetElement(source, kBankBinary, true);
  if (element) {
    text = element->OpenStream(0);
  } else if (source.type == VT_STRING && interpreter.app) {
    text = interpreter.app->OpenResource(source.StringView(), true, 0);
  }
  if (!text) interpreter.RaiseError(ERR_BAD_ARGUMENT, kNoArgument, "there are no such settings");
  const bool isRead = library_->ReadSettings(*text);
  text.reset();
  if (element) element->bank->Unload(element->index);
  return isRead;
}

void CIGameInput::Destroy(bool final) {
  StopRun();
  library_.reset();
  CIBaseClassImpl* const other = interpreter.defaultGameInput;
  if (interpreter.windowFollower == this) {
    interpreter.windowFollower = other && other != this ? static_cast<CIGameInput*>(other) : nullptr;
  }
  if (other == this) interpreter.defaultGameInput = nullptr;
  CIBaseClassImpl::Destroy(final);
}

void CIGameInput::WindowBecameActive(uint32_t handle) {
  if (!library_) return;
  const bool wasBound = window_ != 0;
  window_ = handle;
  {
    const Suspension suspension(*this);
    library_->SetWindow(handle);
  }
  const CAppPart* part = interpreter.app ? interpreter.app->currentPart : nullptr;
  if (wasBound || started_ || !part || part->gameInputData.empty()) return;
  if (part->gameInputPlayer < static_cast<uint32_t>(SettingCount())) {
    StartIndex(static_cast<int32_t>(part->gameInputPlayer));
  }
}

// --- Start and stop ---

int32_t CIGameInput::DefaultIndex() const {
  if (library_->settings.empty()) return -1;
  const CAppPart* part = interpreter.app ? interpreter.app->currentPart : nullptr;
  const uint32_t number = part ? part->gameInputPlayer : 0;
  return number < library_->settings.size() ? static_cast<int32_t>(number) : 0;
}

void CIGameInput::StartIndex(int32_t index) {
  if (!ClaimGameInput()) return;
  startedName_.reset();
  startedIndex_ = index;
  started_ = library_->ActivateSetting(index);
  if (started_) return;
  startedIndex_ = -1;
  ReleaseGameInput();
}

void CIGameInput::StartName(std::string_view name) {
  if (!ClaimGameInput()) return;
  startedIndex_ = -1;
  startedName_ = std::string(name);
  started_ = library_->ActivateSetting(name);
  if (started_) return;
  startedName_.reset();
  ReleaseGameInput();
}

void CIGameInput::Start() {
  // While one runs, be it this one, nothing can be started.
  const bool wasStarted = started_;
  if (interpreter.IsArgDefault(0)) {
    const int32_t index = DefaultIndex();
    if (index >= 0) StartIndex(index);
  } else {
    const CValue& setting = *interpreter.GetArg(0);
    if (setting.type == VT_STRING) {
      StartName(setting.StringView());
    } else if (setting.type == VT_INTEGER || setting.type == VT_FLOAT) {
      StartIndex(setting.GetInt());
    }
  }
  Result().SetInt(started_ && !wasStarted);
}

void CIGameInput::StopRun() {
  if (!started_) return;
  for (CIBaseClassImpl* device : ffDevices_) interpreter.DestroyObject(device, false);
  ffDevices_.clear();
  library_->Deactivate();
  started_ = false;
  startedName_.reset();
  startedIndex_ = -1;
  ReleaseGameInput();
}

void CIGameInput::Stop() { StopRun(); }

void CIGameInput::Resume() {
  if (!started_) return;
  if (startedName_) {
    library_->ActivateSetting(*startedName_);
  } else {
    library_->ActivateSetting(startedIndex_);
  }
}

void CIGameInput::IsStarted() { Result().SetInt(started_); }

// --- Settings ---

void CIGameInput::LoadSettings() {
  Result().SetInt(0);
  if (started_) return;
  library_->ClearSettings();
  const CValue& source = *interpreter.GetArg(0);
  if (source.type == VT_STRING && source.StringView().empty()) return;
  const bool isRead = ReadSource(source);
  Result().SetInt(isRead);
}

void CIGameInput::SaveSettings() {
  Result().SetInt(0);
  if (interpreter.IsArgDefault(0)) return;
  const Text name = interpreter.GetArgText(0);
  interpreter.RequireOwnFile(name.View());
  const Suspension suspension(*this);
  std::string path;
  RunFiles& disk = *interpreter.services.disk;
  const std::string text = library_->WriteSettings();
  const std::span bytes(reinterpret_cast<const uint8_t*>(text.data()), text.size());
  Result().SetInt(disk.GetFullPath(name.View(), &path) && disk.replace(path, bytes));
}

void CIGameInput::SetupDialog() {
  enum Answer : int32_t { kError = 0, kOk = 1, kCancel = 2 };
  const CIBaseClassImpl* owner = interpreter.currentWindow;
  if (!interpreter.IsArgDefault(0)) {
    if (!interpreter.GetArg(0)->IsObjectOfClass(CLASS_WINDOW)) interpreter.RaiseError(ERR_BAD_ARGUMENT);
    owner = interpreter.GetArg(0)->data.object;
  }
  if (!library_) {
    Result().SetInt(kError);
    return;
  }
  const Suspension suspension(*this);
  const bool isAccepted = RunSetupDialog(interpreter, *library_, owner ? static_cast<const CIWindow*>(owner)->hwnd : 0);
  Result().SetInt(isAccepted ? kOk : kCancel);
}

void CIGameInput::GetSettingCount() { Result().SetInt(SettingCount()); }
void CIGameInput::GetCurrentSettingIndex() { Result().SetInt(library_->currentSetting); }

void CIGameInput::GetCurrentSettingName() {
  const int32_t current = library_->currentSetting;
  Result().SetString(current < 0 ? std::string() : library_->settings[static_cast<size_t>(current)]->name);
}

void CIGameInput::GetSettingName() {
  if (library_->settings.empty()) {
    Result().SetString("");
    return;
  }
  const int32_t given = interpreter.IsArgDefault(0) ? library_->currentSetting : interpreter.GetArgInt(0);
  // Below 0, where nothing runs too, is past the end as well.
  const auto index = std::min<size_t>(static_cast<uint32_t>(given), library_->settings.size() - 1);
  Result().SetString(library_->settings[index]->name);
}

// --- Values ---

void CIGameInput::GetPlayerCount() { Result().SetInt(library_->GetPlayerCount()); }

void CIGameInput::GetDeviceValue() {
  int32_t player = 0;
  std::string_view action;
  for (int i = 0; i < std::min(interpreter.GetArgCount(), 2); ++i) {
    const CValue& value = *interpreter.GetArg(i);
    if (value.type == VT_STRING) {
      action = value.StringView();
    } else if (!value.IsDefault()) {
      player = value.GetInt();
    }
  }
  Result().SetInt(library_->GetValue(player, action));
}

int32_t CIGameInput::PlayerArgument() {
  if (interpreter.GetArgCount() == 0) return 0;
  const int32_t player = interpreter.GetArgInt(0);
  if (player == kDefaultInt) interpreter.RaiseError(ERR_BAD_ARGUMENT);
  return player;
}

const GamePlayer* CIGameInput::ArgumentPlayer() { return library_->GetPlayer(PlayerArgument()); }

void CIGameInput::GetPlayerDeviceType() {
  // By the kind of the library.
  constexpr int32_t kTypes[] = {0, 3, 2, 1};
  const GamePlayer* player = ArgumentPlayer();
  Result().SetInt(player ? kTypes[static_cast<size_t>(player->kind)] : 0);
}

void CIGameInput::HasFFSupport() {
  const GamePlayer* player = ArgumentPlayer();
  Result().SetInt(player && player->device && player->device->HasForceFeedback());
}

// No device has force feedback yet; the objects made here belong into ffDevices_.
void CIGameInput::GetFFDevice() {
  ArgumentPlayer();
  Result().SetObject(nullptr);
}

namespace {

constexpr MemberRow kRows[] = {
    Row(1, "Start", kMember<&CIGameInput::Start>,
        "Start(setting): by name or index, without one the application's; 1 when it runs, 0 also while another does"),
    Row(2, "Stop", kMember<&CIGameInput::Stop>, "Stop(): lets the devices go"),
    Row(3, "GetPlayerCount", kMember<&CIGameInput::GetPlayerCount>,
        "GetPlayerCount(): players of the running setting; -1 when none runs"),
    Row(4, "LoadSettings", kMember<&CIGameInput::LoadSettings>,
        "LoadSettings(source): an element or a file, in place of all settings; only while stopped; 1 on success"),
    Row(5, "SetupDialog", kMember<&CIGameInput::SetupDialog>,
        "SetupDialog(window): lets the person change the settings; SETUP_OK or SETUP_CANCEL"),
    Row(6, "SaveSettings", kMember<&CIGameInput::SaveSettings>,
        "SaveSettings(file): writes the settings to a file that the run made; 1 on success"),
    Row(7, "GetDeviceValue", kMember<&CIGameInput::GetDeviceValue>,
        "GetDeviceValue(player, action): 0 to 65535; in either order, player 0 when missing"),
    Row(8, "GetPlayerDeviceType", kMember<&CIGameInput::GetPlayerDeviceType>,
        "GetPlayerDeviceType(player): the kind of device that the player got, one of DEVICE_..."),
    Row(9, "GetSettingCount", kMember<&CIGameInput::GetSettingCount>, "GetSettingCount()"),
    Row(10, "GetCurrentSettingName", kMember<&CIGameInput::GetCurrentSettingName>,
        "GetCurrentSettingName(): \"\" while stopped"),
    Row(11, "GetCurrentSettingIndex", kMember<&CIGameInput::GetCurrentSettingIndex>,
        "GetCurrentSettingIndex(): -1 while stopped"),
    Row(12, "GetSettingName", kMember<&CIGameInput::GetSettingName>,
        "GetSettingName(index): the last one's past the end; without an index the running one's"),
    Row(13, "HasFFSupport", kMember<&CIGameInput::HasFFSupport>,
        "HasFFSupport(player): 1 when the player's device has force feedback"),
    Row(14, "GetFFDevice", kMember<&CIGameInput::GetFFDevice>,
        "GetFFDevice(player): the force feedback of the player's device, or null"),
    Row(15, "IsStarted", kMember<&CIGameInput::IsStarted>, "IsStarted(): 1 while a setting runs"),
    Constant(17, "SETUP_OK", 1, "of SetupDialog"),
    Constant(18, "SETUP_CANCEL", 2, "of SetupDialog"),
    Constant(19, "SETUP_ERROR", 0, "of SetupDialog"),
    Constant(20, "DEVICE_KEYBOARD", 1, "of GetPlayerDeviceType"),
    Constant(21, "DEVICE_JOYSTICK", 2, "of GetPlayerDeviceType"),
    Constant(22, "DEVICE_MOUSE", 3, "of GetPlayerDeviceType"),
    Constant(23, "DEVICE_UNKNOWN", 4, "of GetPlayerDeviceType"),
    Constant(24, "DEVICE_INVALID", 0, "of GetPlayerDeviceType: the player has none"),
};

}  // namespace

const ClassTable kGameInputClass = {
    CLASS_GAMEINPUT, kRows, &CreateObject<CIGameInput>,
    "Actions of a game instead of keys, buttons and sticks: New GameInput(window, settings)"};

}  // namespace vl
