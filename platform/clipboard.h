// Clipboard: what programs hand to one another. Each format holds bytes; putting the first after clear() makes the
// content new.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vl {

// Names of the formats that everyone knows; others are the programs' own.
inline constexpr std::string_view kClipboardText = "text";  // code page 1252, without a NUL
inline constexpr std::string_view kClipboardDib = "dib";    // a bitmap: its header, palette and lines
inline constexpr std::string_view kClipboardWave = "wave";  // a RIFF file
// Before the name of a program's own format.
inline constexpr std::string_view kClipboardOwn = "own:";

class Clipboard {
 public:
  virtual ~Clipboard() = default;
  virtual bool has(std::string_view format) = 0;
  virtual std::optional<std::vector<uint8_t>> get(std::string_view format) = 0;
  virtual void clear() = 0;
  // False when it is too much.
  virtual bool put(std::string_view format, std::span<const uint8_t> bytes) = 0;
};

}  // namespace vl
