#include "input/game_setting.h"

#include <algorithm>

#include "host/appfile/names.h"

namespace vl {

DeviceKind GameInputName::Kind() const {
  return row == kUnknownInput ? DeviceKind::None : InputTable()[static_cast<size_t>(row)].kind;
}

GameInputName MakeInputName(std::string name, bool isSpoken) {
  GameInputName input;
  if (!isSpoken) input.row = FindInput(name);
  // A known one is written as the table has it.
  input.name =
      input.row == kUnknownInput ? std::move(name) : std::string(InputTable()[static_cast<size_t>(input.row)].Name());
  input.isSpoken = isSpoken;
  return input;
}

const GameAction* GamePlayer::FindAction(std::string_view name) const {
  const auto found = std::find_if(actions.begin(), actions.end(),
                                  [&](const GameAction& action) { return EqualsIgnoringCase(action.name, name); });
  return found == actions.end() ? nullptr : &*found;
}

}  // namespace vl
