// GameInputLibrary: the settings of a game, its devices, and the value of an action for a player.
//
// Starting a setting gives each player a device by the setting's order of preference; then the game asks for values.
// It knows nothing of the interpreter, whose thread is the only one that uses it.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "host/appfile/stream.h"
#include "input/game_device.h"
#include "input/game_setting.h"

namespace vl {

// One device that was found.
struct DeviceSlot {
  int number = 0;  // among the devices of its kind
  DeviceKind kind = DeviceKind::None;
  std::unique_ptr<GameDevice> device;  // null unless open
};

class GameInputLibrary {
 public:
  GameInputLibrary() = default;
  ~GameInputLibrary() { Close(); }
  GameInputLibrary(const GameInputLibrary&) = delete;
  GameInputLibrary& operator=(const GameInputLibrary&) = delete;

  // `queue` outlives the library; null where there are no devices. `window` 0 is none.
  bool Open(DeviceQueue* queue, uint32_t window);
  void Close();
  // The devices go with that window from the next start on; a running setting must be suspended.
  void SetWindow(uint32_t window) { window_ = window; }

  void ClearSettings();
  // See ReadSettingsText; adds to what is there.
  bool ReadSettings(CStream& text);
  std::string WriteSettings() const;
  GameSetting& AddSetting(std::string name);

  // False without a window or when there is no such setting. A player who gets no device has values of 0.
  bool ActivateSetting(int32_t index);
  bool ActivateSetting(std::string_view name);
  void Deactivate();

  // 0 to 65535; 0 when nothing runs, and for an unknown player or action.
  int32_t GetValue(int32_t player, std::string_view action);
  // Of the running setting; -1 when none runs.
  int32_t GetPlayerCount() const;
  // Null outside, and for a number that the setting leaves out.
  const GamePlayer* GetPlayer(int32_t player) const;

  int32_t currentSetting = -1;
  std::vector<DeviceSlot> devices;
  GameSettings settings;

 private:
  void FindDevices();
  void AssignDevice(GamePlayer& player, const GameSetting& setting);
  GameDevice* TakeDevice(DeviceKind kind);
  GameDevice* OpenSlot(DeviceSlot& slot);
  // Whoever has it.
  GameDevice* AnyDevice(DeviceKind kind);
  int32_t ValueOf(const GameInputName& input, GameDevice* device);
  bool HoldsModifier(const GameModifier& modifier, const GamePlayer& player);

  DeviceQueue* queue_ = nullptr;
  uint32_t window_ = 0;
};

// One game input of the process may run at a time. False when another one does; from any thread.
bool ClaimGameInput();
void ReleaseGameInput();

}  // namespace vl
