// MemoryClipboard: a clipboard that only its own process sees.
#pragma once

#include <map>

#include "platform/clipboard.h"

namespace vl {

class MemoryClipboard final : public Clipboard {
 public:
  static constexpr size_t kMaxBytes = size_t{256} << 20;

  bool has(std::string_view format) override { return content_.contains(format); }
  std::optional<std::vector<uint8_t>> get(std::string_view format) override;
  void clear() override { content_.clear(); }
  bool put(std::string_view format, std::span<const uint8_t> bytes) override;

 private:
  std::map<std::string, std::vector<uint8_t>, std::less<>> content_;
};

}  // namespace vl
