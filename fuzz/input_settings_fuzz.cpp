// Reads arbitrary bytes as the text of game input settings, asks a few values, and writes the settings: what is
// written reads back as the same.
#include <cstdlib>

#include "base/limits.h"
#include "input/game_input_library.h"

namespace {

using namespace vl;

// A written line can be longer than the one that was read, and then doesn't come back whole.
constexpr size_t kSafeLine = 500;

class NoEvents final : public EventQueue {
 public:
  bool waitEvent(Event&, int) override { return false; }
  std::string takeBlob(uint32_t) override { return {}; }
};

bool HasLongLine(const std::string& text) {
  for (size_t at = 0; at < text.size();) {
    const size_t end = text.find('\n', at);
    if (end - at > kSafeLine) return true;
    at = end + 1;
  }
  return false;
}

void AskValues(GameInputLibrary& library) {
  if (!library.ActivateSetting(0)) return;
  for (int32_t player = -1; player <= library.GetPlayerCount(); ++player) {
    const GamePlayer* p = library.GetPlayer(player);
    if (!p) continue;
    for (size_t i = 0; i < p->actions.size() && i < 8; ++i) {
      const int32_t value = library.GetValue(player, p->actions[i].name);
      if (value < 0 || value > 65535) std::abort();
    }
  }
  library.Deactivate();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  NoEvents events;
  DeviceQueue queue(events, nullptr, nullptr);
  GameInputLibrary library;
  library.Open(&queue, 1);
  CMemoryStream text(data, uint32_t(size));
  library.ReadSettings(text);
  AskValues(library);
  const std::string written = library.WriteSettings();
  if (HasLongLine(written)) return 0;
  GameInputLibrary again;
  again.Open(&queue, 1);
  CMemoryStream back(written.data(), uint32_t(written.size()));
  const bool isRead = again.ReadSettings(back);
  // The writer's text may be longer than what a reader takes.
  if (!isRead && written.size() <= limits::kMaxInputSettingsBytes) std::abort();
  if (!isRead) return 0;
  if (again.WriteSettings() != written) std::abort();
  return 0;
}
