// The wire format: messages over TCP, which have no envelope, and datagrams. Integers are little-endian; a text is its
// length in 4 bytes and then its bytes.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

#include "net/vex_buffer.h"

namespace vl {

inline constexpr uint16_t kVexProtocol = 3;

// The two directions have separate types.
enum ToServer : uint8_t {
  kToServerSessionText = 1,
  kToServerText = 2,
  kToServerUserText = 3,
  kToServerJoin = 4,
  kToServerLeave = 5,
  kToServerNameChange = 11,
  kToServerHello = 12,
};

enum ToPlayer : uint8_t {
  kToPlayerText = 1,
  kToPlayerUserLeft = 5,
  kToPlayerUserJoined = 6,
  kToPlayerUserIsOn = 7,
  kToPlayerJoined = 8,
  kToPlayerMotd = 10,
  kToPlayerUserNameChanged = 11,
  kToPlayerWelcome = 12,
};

enum DatagramType : uint8_t { kDatagramBlast = 1, kDatagramServerBlast = 2 };

enum class WireDirection { ToServer, ToPlayer };

// A message as it stands in a buffer: its fields by kind, each in order. The texts are the buffer's.
struct VexMessage {
  size_t size = 0;  // with the type
  uint8_t type = 0;
  uint16_t half = 0;  // the type of a text that the program gave it, or a version
  std::array<uint32_t, 3> words{};
  std::array<std::string_view, 3> texts{};
};

enum class Parsed {
  Complete,
  Incomplete,  // more bytes must come; a text of length 0 never is complete
  Unknown,     // the first byte is no type of this direction
  TooLarge,
};

Parsed ParseMessage(WireDirection direction, std::span<const uint8_t> bytes, VexMessage& message);

// Blast: the header's fields and what is left of the datagram.
struct VexBlast {
  static constexpr size_t kHeader = 15;
  static constexpr size_t kTargetAt = 11;
  uint16_t type = 0;
  uint32_t channel = 0;
  uint32_t sender = 0;
  uint32_t target = 0;  // 0: the server, for the others of the session
  std::string_view text;
};

struct VexServerBlast {
  static constexpr size_t kHeader = 7;
  uint16_t type = 0;
  uint32_t sender = 0;
  std::string_view text;
};

std::optional<VexBlast> ParseBlast(std::span<const uint8_t> datagram);
std::optional<VexServerBlast> ParseServerBlast(std::span<const uint8_t> datagram);

// Writes one message or datagram. Small ones, which most are, take no memory of their own.
class WireWriter {
 public:
  explicit WireWriter(uint8_t type) { Little(type, 1); }
  WireWriter& Half(uint16_t v) { return Little(v, 2); }
  WireWriter& Word(uint32_t v) { return Little(v, 4); }
  WireWriter& Text(std::string_view text) { return Word(static_cast<uint32_t>(text.size())).Rest(text); }
  // Without a length.
  WireWriter& Rest(std::string_view text) {
    uint8_t* const to = Room(text.size());
    std::copy(text.begin(), text.end(), to);
    return *this;
  }
  std::span<const uint8_t> Bytes() const { return {large_.empty() ? small_.data() : large_.data(), size_}; }

 private:
  WireWriter& Little(uint32_t v, size_t bytes) {
    uint8_t* const to = Room(bytes);
    for (size_t i = 0; i < bytes; ++i) to[i] = static_cast<uint8_t>(v >> 8 * i);
    return *this;
  }
  // The next so many bytes, to be filled.
  uint8_t* Room(size_t bytes) {
    const size_t at = size_;
    size_ += bytes;
    if (large_.empty() && size_ <= small_.size()) return small_.data() + at;
    if (large_.empty()) large_.assign(small_.begin(), small_.begin() + static_cast<ptrdiff_t>(at));
    large_.resize(size_);
    return large_.data() + at;
  }

  std::array<uint8_t, 256> small_;  // until it is too small
  std::vector<uint8_t> large_;
  size_t size_ = 0;
};

WireWriter WriteBlast(const VexBlast& blast);

}  // namespace vl
