#include <algorithm>
#include <charconv>

#include "base/limits.h"
#include "host/appfile/names.h"
#include "input/settings_text.h"

namespace vl {
namespace {

constexpr uint32_t kLineBytes = 512;
constexpr size_t kMaxDepth = 4;
constexpr std::string_view kPreferred = "PreferredDevices";
constexpr std::string_view kPlayer = "Player";
constexpr std::string_view kSpokenBegin = "SPEECH_BEGIN[";
constexpr std::string_view kSpokenEnd = "]SPEECH_END";
constexpr std::string_view kBlanks = " \t";

bool StartsWith(std::string_view text, std::string_view word) {
  return text.size() >= word.size() && EqualsIgnoringCase(text.substr(0, word.size()), word);
}

void SkipAny(std::string_view& text, std::string_view characters) {
  text.remove_prefix(std::min(text.find_first_not_of(characters), text.size()));
}

std::string_view Trimmed(std::string_view text) {
  SkipAny(text, kBlanks);
  return text.substr(0, text.find_last_not_of(kBlanks) + 1);
}

// The text has at least one character.
GameInputName TakeToken(std::string_view& text) {
  const size_t spokenEnd = StartsWith(text, kSpokenBegin) ? text.find(kSpokenEnd) : std::string_view::npos;
  if (spokenEnd != std::string_view::npos) {
    const std::string_view inner = text.substr(kSpokenBegin.size(), spokenEnd - kSpokenBegin.size());
    GameInputName spoken = MakeInputName(std::string(inner), true);
    text.remove_prefix(spokenEnd + kSpokenEnd.size());
    return spoken;
  }
  const size_t end = std::min(text.find_first_of(" \t+"), text.size());
  GameInputName input = MakeInputName(std::string(text.substr(0, end)));
  text.remove_prefix(end);
  return input;
}

class Reader {
 public:
  explicit Reader(GameSettings& settings) : settings_(settings) {}

  // False for a line that stops the reading.
  bool Line(std::string_view line) {
    const size_t depth = std::min(line.find_first_not_of('\t'), line.size());
    line.remove_prefix(depth);
    if (line.empty() || depth > kMaxDepth) return true;
    switch (depth) {
      case 0:
        settings_.push_back(std::make_unique<GameSetting>());
        setting_ = settings_.back().get();
        setting_->name = line;
        player_ = nullptr;
        action_ = nullptr;
        return true;
      case 1:
        return SettingLine(line);
      case 2:
        if (Trimmed(line).empty()) return true;
        action_ = nullptr;
        kind_ = DeviceKind::None;
        if (!player_) return true;
        player_->actions.emplace_back();
        action_ = &player_->actions.back();
        action_->name = Trimmed(line);
        return true;
      case 3:
        kind_ = KindOfName(Trimmed(line));
        return true;
      default:
        BindingLine(line);
        return true;
    }
  }

 private:
  bool SettingLine(std::string_view line) {
    if (StartsWith(line, kPreferred)) {
      line.remove_prefix(kPreferred.size());
      SkipAny(line, " \t=");
      if (setting_) ReadPreferred(line);
      return true;
    }
    if (!StartsWith(line, kPlayer)) return false;
    line.remove_prefix(kPlayer.size());
    SkipAny(line, kBlanks);
    int number = 0;
    std::from_chars(line.data(), line.data() + line.size(), number);
    player_ = nullptr;
    action_ = nullptr;
    if (!setting_ || number < 1 || number > GameSetting::kMaxPlayers) return true;
    const auto place = static_cast<size_t>(number) - 1;
    if (setting_->players.size() <= place) setting_->players.resize(place + 1);
    setting_->players[place] = std::make_unique<GamePlayer>();
    player_ = setting_->players[place].get();
    return true;
  }

  void ReadPreferred(std::string_view line) {
    constexpr std::string_view kSpeech = "Speech";
    setting_->preferred.fill(DeviceKind::None);
    size_t count = 0;
    while (!line.empty()) {
      std::string_view word;
      DeviceKind found = DeviceKind::None;
      for (const DeviceKind kind : {DeviceKind::Joystick, DeviceKind::Keyboard, DeviceKind::Mouse}) {
        if (!StartsWith(line, NameOfKind(kind))) continue;
        word = NameOfKind(kind);
        found = kind;
      }
      if (StartsWith(line, kSpeech)) word = kSpeech;
      // A word goes with the separator behind it; of anything else one character.
      line.remove_prefix(std::min(word.size() + 1, line.size()));
      if (found != DeviceKind::None && count < setting_->preferred.size()) setting_->preferred[count++] = found;
    }
  }

  void BindingLine(std::string_view line) {
    if (!action_ || kind_ == DeviceKind::None) return;
    GameBinding binding;
    binding.kind = kind_;
    bool isFirst = true;
    for (SkipAny(line, " \t+"); !line.empty(); SkipAny(line, " \t+")) {
      GameInputName input = TakeToken(line);
      if (isFirst) {
        binding.input = std::move(input);
      } else {
        binding.modifiers.push_back(std::move(input));
      }
      isFirst = false;
    }
    if (!isFirst) action_->Of(kind_).push_back(std::move(binding));
  }

  GameSettings& settings_;
  GameSetting* setting_ = nullptr;
  GamePlayer* player_ = nullptr;
  GameAction* action_ = nullptr;
  DeviceKind kind_ = DeviceKind::None;
};

}  // namespace

bool ReadSettingsText(CStream& text, GameSettings& settings) {
  Reader reader(settings);
  char buffer[kLineBytes];
  size_t total = 0;
  while (const uint32_t length = text.ReadLine(buffer, kLineBytes)) {
    total += length;
    if (total > limits::kMaxInputSettingsBytes) return false;
    std::string_view line(buffer, length);
    if (line.ends_with('\n')) line.remove_suffix(1);
    // A text of a bank ends with its NUL.
    if (!reader.Line(line.substr(0, line.find('\0')))) return false;
  }
  return true;
}

}  // namespace vl
