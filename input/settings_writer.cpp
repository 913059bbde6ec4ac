#include "input/settings_text.h"

namespace vl {
namespace {

constexpr std::string_view kLineEnd = "\r\n";

void AppendInput(std::string& text, const GameInputName& input) {
  if (input.isSpoken) text += "SPEECH_BEGIN[";
  text += input.name;
  if (input.isSpoken) text += "]SPEECH_END";
}

void AppendAction(std::string& text, const GameAction& action) {
  text += "\t\t";
  text += action.name;
  text += kLineEnd;
  for (const DeviceKind kind : {DeviceKind::Mouse, DeviceKind::Joystick, DeviceKind::Keyboard}) {
    text += "\t\t\t";
    text += NameOfKind(kind);
    text += kLineEnd;
    for (const GameBinding& binding : action.Of(kind)) {
      text += "\t\t\t\t";
      AppendInput(text, binding.input);
      for (const GameModifier& modifier : binding.modifiers) {
        text += '+';
        AppendInput(text, modifier);
      }
      text += kLineEnd;
    }
  }
}

}  // namespace

std::string WriteSettingsText(const GameSettings& settings) {
  std::string text;
  for (const auto& setting : settings) {
    text += setting->name;
    text += kLineEnd;
    text += "\tPreferredDevices=";
    bool isFirst = true;
    for (const DeviceKind kind : setting->preferred) {
      if (kind == DeviceKind::None) continue;
      if (!isFirst) text += ';';
      text += NameOfKind(kind);
      isFirst = false;
    }
    text += kLineEnd;
    for (size_t i = 0; i < setting->players.size(); ++i) {
      if (!setting->players[i]) continue;
      text += "\tPlayer " + std::to_string(i + 1);
      text += kLineEnd;
      for (const GameAction& action : setting->players[i]->actions) AppendAction(text, action);
    }
  }
  return text;
}

}  // namespace vl
