// SetupTree: game input settings as the rows of a tree, and what a person may do to each.
//
// Changes go to the settings at once. A node is named by its place: the indices from the setting down.
#pragma once

#include <array>
#include <compare>
#include <set>
#include <string>
#include <vector>

#include "input/game_setting.h"

namespace vl {

enum class SetupNode : uint8_t { Root, Setting, Player, Action, Device, Binding, Modifier };

// Depth d has d indices; those behind are 0. A device's index is its kind less 1.
struct SetupPlace {
  SetupNode node = SetupNode::Root;
  std::array<int, 6> at{};
  auto operator<=>(const SetupPlace&) const = default;
  size_t Depth() const { return static_cast<size_t>(node); }
};

struct SetupRow {
  SetupPlace place;
  std::string text;
  bool hasChildren = false;
  bool isExpanded = false;
};

class SetupTree {
 public:
  // The settings outlive the tree. Settings and players are open at first.
  SetupTree(GameSettings& settings, std::string rootText, std::string playerText);

  // What can be seen, from the root down.
  const std::vector<SetupRow>& Rows() const { return rows_; }
  // The row of a place, or of the nearest above it that can be seen.
  size_t RowOf(SetupPlace place) const;
  void Expand(const SetupPlace& place, bool expanded);

  // A child of the node, with a name or, below devices and bindings, an input; gives its place. The place itself when
  // there can be none.
  SetupPlace AddNamed(const SetupPlace& place, std::string name);
  SetupPlace AddInput(const SetupPlace& place, int row);
  static bool TakesNamed(SetupNode node) { return node <= SetupNode::Player; }
  static bool TakesInput(SetupNode node) { return node >= SetupNode::Device; }

  static bool CanRename(SetupNode node) { return node == SetupNode::Setting || node == SetupNode::Action; }
  void Rename(const SetupPlace& place, std::string name);
  const std::string& NameOf(const SetupPlace& place);

  static bool CanDelete(SetupNode node) { return node != SetupNode::Root && node != SetupNode::Device; }
  // Gives the place that is selected afterwards: the parent's.
  SetupPlace Delete(const SetupPlace& place);

  static bool HasInput(SetupNode node) { return node >= SetupNode::Binding; }
  void SetInput(const SetupPlace& place, int row);
  // The kind of device whose inputs a binding below the place may name; None for any: a modifier's.
  static DeviceKind KindFor(const SetupPlace& place, bool isNew);
  // Puts the device first among those that players of its setting are offered.
  void Prefer(const SetupPlace& device);

 private:
  void Rebuild();
  void AddRow(SetupPlace place, std::string text, bool hasChildren);
  bool IsExpanded(const SetupPlace& place) const { return expanded_.contains(place); }
  void AddAction(SetupPlace place, const GameAction& action);
  GameSetting& Setting(const SetupPlace& place) { return *settings_[static_cast<size_t>(place.at[0])]; }
  GamePlayer& Player(const SetupPlace& place) { return *Setting(place).players[static_cast<size_t>(place.at[1])]; }
  GameAction& Action(const SetupPlace& place) { return Player(place).actions[static_cast<size_t>(place.at[2])]; }
  std::vector<GameBinding>& Bindings(const SetupPlace& place) {
    return Action(place).bindings[static_cast<size_t>(place.at[3])];
  }
  GameBinding& Binding(const SetupPlace& place) { return Bindings(place)[static_cast<size_t>(place.at[4])]; }
  void ForgetExpansion(const SetupPlace& deleted);

  GameSettings& settings_;
  std::string rootText_;
  std::string playerText_;
  std::set<SetupPlace> expanded_;
  std::vector<SetupRow> rows_;
};

}  // namespace vl
