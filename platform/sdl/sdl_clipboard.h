// SdlClipboard: shares texts with the desktop's clipboard; pictures, sounds and programs' own formats stay in the
// player.
//
// SDL's clipboard belongs to the host's thread. The program works on a copy here, which that thread renews when the
// desktop's text changes and hands out when the program's does.
#pragma once

#include <functional>
#include <mutex>

#include "platform/memory_clipboard.h"

namespace vl {

class SdlClipboard final : public Clipboard {
 public:
  // `wake` makes the host's thread call Apply soon.
  explicit SdlClipboard(std::function<void()> wake) : wake_(std::move(wake)) {}

  // For the interpreter's thread.
  bool has(std::string_view format) override;
  std::optional<std::vector<uint8_t>> get(std::string_view format) override;
  void clear() override;
  bool put(std::string_view format, std::span<const uint8_t> bytes) override;

  // For the host's thread: hands out what the program put, and takes over what another program has put.
  void Apply();
  void Renew();

 private:
  std::function<void()> wake_;
  std::string desktop_;  // the desktop's text as this player knows it, UTF-8; of the host's thread
  std::mutex mutex_;
  MemoryClipboard content_;
  std::optional<std::string> outgoing_;  // UTF-8
};

}  // namespace vl
