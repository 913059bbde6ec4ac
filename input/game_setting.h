// The settings of a game: which inputs mean which action, for each player and each kind of device.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "input/input_table.h"

namespace vl {

class GameDevice;

// An input by its name. A name that the table doesn't know has no value and stays for writing back.
struct GameInputName {
  std::string name;
  int row = kUnknownInput;
  bool isSpoken = false;  // stood, and is written, between the words that enclose a spoken one

  // None for an unknown one.
  DeviceKind Kind() const;
  bool operator==(const GameInputName&) const = default;
};
GameInputName MakeInputName(std::string name, bool isSpoken = false);

// What must be held together with a binding's input; it may be of another kind of device.
using GameModifier = GameInputName;

struct GameBinding {
  DeviceKind kind = DeviceKind::None;  // under which it stands
  GameInputName input;
  std::vector<GameModifier> modifiers;
  bool operator==(const GameBinding&) const = default;
};

struct GameAction {
  std::string name;
  // By kind less 1; in the order in which they are tried.
  std::array<std::vector<GameBinding>, kDeviceKinds> bindings;
  bool operator==(const GameAction&) const = default;

  std::vector<GameBinding>& Of(DeviceKind kind) { return bindings[static_cast<size_t>(kind) - 1]; }
  const std::vector<GameBinding>& Of(DeviceKind kind) const { return bindings[static_cast<size_t>(kind) - 1]; }
};

struct GamePlayer {
  std::vector<GameAction> actions;
  // While the setting runs.
  DeviceKind kind = DeviceKind::None;
  GameDevice* device = nullptr;  // a slot's

  // The first of that name, case not counting; null when there is none.
  const GameAction* FindAction(std::string_view name) const;
};

struct GameSetting {
  static constexpr int kMaxPlayers = 64;

  std::string name;
  // In this order a player is offered devices; None gives none.
  std::array<DeviceKind, kDeviceKinds> preferred = {DeviceKind::Joystick, DeviceKind::Keyboard, DeviceKind::Mouse};
  // A number that the text left out is null; at most kMaxPlayers.
  std::vector<std::unique_ptr<GamePlayer>> players;
};

using GameSettings = std::vector<std::unique_ptr<GameSetting>>;

}  // namespace vl
