#include "input/setup_tree.h"

#include <algorithm>

namespace vl {
namespace {

SetupPlace Child(const SetupPlace& place, size_t index) {
  SetupPlace child = place;
  child.at[place.Depth()] = static_cast<int>(index);
  child.node = static_cast<SetupNode>(place.Depth() + 1);
  return child;
}

SetupPlace Parent(SetupPlace place) {
  if (place.node == SetupNode::Root) return place;
  place.node = static_cast<SetupNode>(place.Depth() - 1);
  place.at[place.Depth()] = 0;
  return place;
}

template <typename Items>
void EraseAt(Items& items, int index) {
  items.erase(items.begin() + index);
}

}  // namespace

SetupTree::SetupTree(GameSettings& settings, std::string rootText, std::string playerText)
    : settings_(settings), rootText_(std::move(rootText)), playerText_(std::move(playerText)) {
  expanded_.insert(SetupPlace{});
  for (size_t s = 0; s < settings_.size(); ++s) {
    const SetupPlace setting = Child({}, s);
    expanded_.insert(setting);
    for (size_t p = 0; p < settings_[s]->players.size(); ++p) expanded_.insert(Child(setting, p));
  }
  Rebuild();
}

void SetupTree::AddRow(SetupPlace place, std::string text, bool hasChildren) {
  rows_.push_back({place, std::move(text), hasChildren, hasChildren && IsExpanded(place)});
}

void SetupTree::Rebuild() {
  rows_.clear();
  AddRow({}, rootText_, !settings_.empty());
  if (!IsExpanded({})) return;
  for (size_t s = 0; s < settings_.size(); ++s) {
    const GameSetting& setting = *settings_[s];
    const SetupPlace settingPlace = Child({}, s);
    const auto isThere = [](const auto& player) { return player != nullptr; };
    AddRow(settingPlace, setting.name, std::any_of(setting.players.begin(), setting.players.end(), isThere));
    if (!IsExpanded(settingPlace)) continue;
    for (size_t p = 0; p < setting.players.size(); ++p) {
      if (!setting.players[p]) continue;
      const std::vector<GameAction>& actions = setting.players[p]->actions;
      const SetupPlace playerPlace = Child(settingPlace, p);
      AddRow(playerPlace, playerText_ + " " + std::to_string(p + 1), !actions.empty());
      if (!IsExpanded(playerPlace)) continue;
      for (size_t a = 0; a < actions.size(); ++a) AddAction(Child(playerPlace, a), actions[a]);
    }
  }
}

void SetupTree::AddAction(SetupPlace place, const GameAction& action) {
  AddRow(place, action.name, true);
  if (!IsExpanded(place)) return;
  for (size_t d = 0; d < action.bindings.size(); ++d) {
    const SetupPlace device = Child(place, d);
    const std::vector<GameBinding>& bindings = action.bindings[d];
    AddRow(device, std::string(NameOfKind(static_cast<DeviceKind>(d + 1))), !bindings.empty());
    if (!IsExpanded(device)) continue;
    for (size_t b = 0; b < bindings.size(); ++b) {
      const SetupPlace binding = Child(device, b);
      AddRow(binding, bindings[b].input.name, !bindings[b].modifiers.empty());
      if (!IsExpanded(binding)) continue;
      for (size_t m = 0; m < bindings[b].modifiers.size(); ++m) {
        AddRow(Child(binding, m), "+ " + bindings[b].modifiers[m].name, false);
      }
    }
  }
}

size_t SetupTree::RowOf(SetupPlace place) const {
  for (;;) {
    const auto found =
        std::find_if(rows_.begin(), rows_.end(), [&](const SetupRow& row) { return row.place == place; });
    if (found != rows_.end()) return static_cast<size_t>(found - rows_.begin());
    if (place.node == SetupNode::Root) return 0;
    place = Parent(place);
  }
}

void SetupTree::Expand(const SetupPlace& place, bool expanded) {
  if (expanded) {
    expanded_.insert(place);
  } else {
    expanded_.erase(place);
  }
  Rebuild();
}

SetupPlace SetupTree::AddNamed(const SetupPlace& place, std::string name) {
  size_t index = 0;
  switch (place.node) {
    case SetupNode::Root:
      index = settings_.size();
      settings_.push_back(std::make_unique<GameSetting>());
      settings_.back()->name = std::move(name);
      break;
    case SetupNode::Setting: {
      auto& players = Setting(place).players;
      const auto gap = std::find(players.begin(), players.end(), nullptr);
      index = static_cast<size_t>(gap - players.begin());
      if (index >= static_cast<size_t>(GameSetting::kMaxPlayers)) return place;
      if (gap == players.end()) players.emplace_back();
      players[index] = std::make_unique<GamePlayer>();
      break;
    }
    case SetupNode::Player:
      index = Player(place).actions.size();
      Player(place).actions.emplace_back().name = std::move(name);
      break;
    default:
      return place;
  }
  Expand(place, true);
  return Child(place, index);
}

SetupPlace SetupTree::AddInput(const SetupPlace& place, int row) {
  const GameInputName input = MakeInputName(std::string(InputTable()[static_cast<size_t>(row)].Name()));
  SetupPlace parent = place;
  size_t index = 0;
  if (place.node == SetupNode::Device) {
    index = Bindings(place).size();
    GameBinding& binding = Bindings(place).emplace_back();
    binding.kind = static_cast<DeviceKind>(place.at[3] + 1);
    binding.input = input;
  } else if (HasInput(place.node)) {
    // Beside a modifier stands another one.
    if (place.node == SetupNode::Modifier) parent = Parent(place);
    index = Binding(parent).modifiers.size();
    Binding(parent).modifiers.push_back(input);
  } else {
    return place;
  }
  Expand(parent, true);
  return Child(parent, index);
}

void SetupTree::Rename(const SetupPlace& place, std::string name) {
  if (place.node == SetupNode::Setting) Setting(place).name = std::move(name);
  if (place.node == SetupNode::Action) Action(place).name = std::move(name);
  Rebuild();
}

const std::string& SetupTree::NameOf(const SetupPlace& place) {
  return place.node == SetupNode::Setting ? Setting(place).name : Action(place).name;
}

// What was open keeps its place: below the deleted node nothing is left, behind it all moves up.
void SetupTree::ForgetExpansion(const SetupPlace& deleted) {
  const size_t level = deleted.Depth() - 1;
  std::set<SetupPlace> kept;
  for (SetupPlace place : expanded_) {
    const bool isSibling =
        place.Depth() > level &&
        std::equal(place.at.begin(), place.at.begin() + static_cast<ptrdiff_t>(level), deleted.at.begin());
    if (isSibling && place.at[level] == deleted.at[level]) continue;
    if (isSibling && place.at[level] > deleted.at[level]) --place.at[level];
    kept.insert(place);
  }
  expanded_ = std::move(kept);
}

SetupPlace SetupTree::Delete(const SetupPlace& place) {
  switch (place.node) {
    case SetupNode::Setting:
      EraseAt(settings_, place.at[0]);
      break;
    case SetupNode::Player:
      EraseAt(Setting(place).players, place.at[1]);
      break;
    case SetupNode::Action:
      EraseAt(Player(place).actions, place.at[2]);
      break;
    case SetupNode::Binding:
      EraseAt(Bindings(place), place.at[4]);
      break;
    case SetupNode::Modifier:
      EraseAt(Binding(place).modifiers, place.at[5]);
      break;
    default:
      return place;
  }
  ForgetExpansion(place);
  Rebuild();
  return Parent(place);
}

void SetupTree::SetInput(const SetupPlace& place, int row) {
  const GameInputName input = MakeInputName(std::string(InputTable()[static_cast<size_t>(row)].Name()));
  if (place.node == SetupNode::Binding) Binding(place).input = input;
  if (place.node == SetupNode::Modifier) Binding(place).modifiers[static_cast<size_t>(place.at[5])] = input;
  Rebuild();
}

DeviceKind SetupTree::KindFor(const SetupPlace& place, bool isNew) {
  const bool isBinding = place.node == (isNew ? SetupNode::Device : SetupNode::Binding);
  return isBinding ? static_cast<DeviceKind>(place.at[3] + 1) : DeviceKind::None;
}

void SetupTree::Prefer(const SetupPlace& device) {
  auto& preferred = Setting(device).preferred;
  const auto kind = static_cast<DeviceKind>(device.at[3] + 1);
  auto at = std::find(preferred.begin(), preferred.end(), kind);
  if (at == preferred.end()) at = std::find(preferred.begin(), preferred.end(), DeviceKind::None);
  if (at == preferred.end()) at = preferred.end() - 1;
  *at = kind;
  std::rotate(preferred.begin(), at, at + 1);
}

}  // namespace vl
