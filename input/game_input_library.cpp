#include "input/game_input_library.h"

#include <algorithm>
#include <atomic>

#include "host/appfile/names.h"
#include "input/settings_text.h"

namespace vl {
namespace {

// The one thing that the runs of a process share: devices are the process's.
std::atomic<bool> isClaimed{false};

}  // namespace

bool ClaimGameInput() { return !isClaimed.exchange(true); }
void ReleaseGameInput() { isClaimed.store(false); }

bool GameInputLibrary::Open(DeviceQueue* queue, uint32_t window) {
  queue_ = queue;
  window_ = window;
  currentSetting = -1;
  FindDevices();
  return true;
}

void GameInputLibrary::Close() {
  ClearSettings();
  devices.clear();
  queue_ = nullptr;
}

void GameInputLibrary::ClearSettings() {
  Deactivate();
  settings.clear();
}

bool GameInputLibrary::ReadSettings(CStream& text) { return ReadSettingsText(text, settings); }

std::string GameInputLibrary::WriteSettings() const { return WriteSettingsText(settings); }

GameSetting& GameInputLibrary::AddSetting(std::string name) {
  settings.push_back(std::make_unique<GameSetting>());
  settings.back()->name = std::move(name);
  return *settings.back();
}

// Joysticks first, then the mouse and the keyboard, which are always there.
void GameInputLibrary::FindDevices() {
  devices.clear();
  if (!queue_) return;
  queue_->Update();
  for (int number = 0; number < kMaxJoysticks; ++number) {
    if (!queue_->State().joysticks[static_cast<size_t>(number)].isAttached) continue;
    devices.push_back({number, DeviceKind::Joystick, nullptr});
  }
  devices.push_back({0, DeviceKind::Mouse, nullptr});
  devices.push_back({0, DeviceKind::Keyboard, nullptr});
}

bool GameInputLibrary::ActivateSetting(std::string_view name) {
  const auto found = std::find_if(settings.begin(), settings.end(),
                                  [&](const auto& setting) { return EqualsIgnoringCase(setting->name, name); });
  return found != settings.end() && ActivateSetting(static_cast<int32_t>(found - settings.begin()));
}

bool GameInputLibrary::ActivateSetting(int32_t index) {
  if (!window_ || index < 0 || static_cast<size_t>(index) >= settings.size()) return false;
  Deactivate();
  // A joystick may have come or gone since the last start.
  FindDevices();
  currentSetting = index;
  GameSetting& setting = *settings[static_cast<size_t>(index)];
  for (const auto& player : setting.players) {
    if (player) AssignDevice(*player, setting);
  }
  return true;
}

void GameInputLibrary::Deactivate() {
  if (currentSetting >= 0 && static_cast<size_t>(currentSetting) < settings.size()) {
    for (const auto& player : settings[static_cast<size_t>(currentSetting)]->players) {
      if (!player) continue;
      player->kind = DeviceKind::None;
      player->device = nullptr;
    }
  }
  for (DeviceSlot& slot : devices) slot.device.reset();
  currentSetting = -1;
}

void GameInputLibrary::AssignDevice(GamePlayer& player, const GameSetting& setting) {
  player.kind = DeviceKind::None;
  player.device = nullptr;
  for (const DeviceKind kind : setting.preferred) {
    if (kind == DeviceKind::None) continue;
    GameDevice* device = TakeDevice(kind);
    if (!device) continue;
    player.kind = kind;
    player.device = device;
    return;
  }
}

// All share the keyboard; a mouse or a joystick is one player's.
GameDevice* GameInputLibrary::TakeDevice(DeviceKind kind) {
  if (kind == DeviceKind::Keyboard) return AnyDevice(kind);
  for (DeviceSlot& slot : devices) {
    if (slot.kind != kind || slot.device) continue;
    if (GameDevice* device = OpenSlot(slot)) return device;
  }
  return nullptr;
}

GameDevice* GameInputLibrary::AnyDevice(DeviceKind kind) {
  for (const DeviceSlot& slot : devices) {
    if (slot.kind == kind && slot.device) return slot.device.get();
  }
  for (DeviceSlot& slot : devices) {
    if (slot.kind != kind) continue;
    if (GameDevice* device = OpenSlot(slot)) return device;
  }
  return nullptr;
}

GameDevice* GameInputLibrary::OpenSlot(DeviceSlot& slot) {
  std::unique_ptr<GameDevice> device = MakeGameDevice(*queue_, slot.kind, slot.number);
  if (!device || !device->Open(true)) return nullptr;
  device->SetAxisRange(-kJoystickRange, kJoystickRange);
  slot.device = std::move(device);
  return slot.device.get();
}

int32_t GameInputLibrary::GetPlayerCount() const {
  if (currentSetting < 0) return -1;
  return static_cast<int32_t>(settings[static_cast<size_t>(currentSetting)]->players.size());
}

const GamePlayer* GameInputLibrary::GetPlayer(int32_t player) const {
  if (player < 0 || player >= GetPlayerCount()) return nullptr;
  return settings[static_cast<size_t>(currentSetting)]->players[static_cast<size_t>(player)].get();
}

int32_t GameInputLibrary::ValueOf(const GameInputName& input, GameDevice* device) {
  if (!device || input.row == kUnknownInput) return 0;
  return device->GetValue(InputTable()[static_cast<size_t>(input.row)]);
}

bool GameInputLibrary::HoldsModifier(const GameModifier& modifier, const GamePlayer& player) {
  const DeviceKind kind = modifier.Kind();
  if (kind == DeviceKind::None) return false;
  return ValueOf(modifier, kind == player.kind ? player.device : AnyDevice(kind)) != 0;
}

int32_t GameInputLibrary::GetValue(int32_t number, std::string_view actionName) {
  const GamePlayer* player = GetPlayer(number);
  if (!player || player->kind == DeviceKind::None) return 0;
  const GameAction* action = player->FindAction(actionName);
  if (!action) return 0;
  for (const GameBinding& binding : action->Of(player->kind)) {
    const int32_t value = ValueOf(binding.input, player->device);
    if (value == 0) continue;
    const bool isHeld = std::all_of(binding.modifiers.begin(), binding.modifiers.end(),
                                    [&](const GameModifier& modifier) { return HoldsModifier(modifier, *player); });
    if (isHeld) return value;
  }
  return 0;
}

}  // namespace vl
