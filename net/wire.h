// The wire format: messages over TCP, which have no envelope, and datagrams. Integers are little-endian; a text is its
// length in 4 bytes and then its bytes.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

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

// Writes one message or datagram.
class WireWriter {
 public:
  // `bytes`: of all its texts, so that the store grows once.
  explicit WireWriter(uint8_t type, size_t bytes = 0) {
    buffer_.Reserve(kFixedBytes + bytes);
    buffer_.AppendU8(type);
  }
  WireWriter& Half(uint16_t v) {
    buffer_.AppendU16(v);
    return *this;
  }
  WireWriter& Word(uint32_t v) {
    buffer_.AppendU32(v);
    return *this;
  }
  WireWriter& Text(std::string_view text) {
    buffer_.AppendU32(static_cast<uint32_t>(text.size()));
    return Rest(text);
  }
  // Without a length.
  WireWriter& Rest(std::string_view text) {
    buffer_.AppendText(text);
    return *this;
  }
  std::span<const uint8_t> Bytes() const { return buffer_.Bytes(); }

 private:
  static constexpr size_t kFixedBytes = 32;  // more than the other fields of any message take
  VexBuffer buffer_;
};

WireWriter WriteBlast(const VexBlast& blast);

}  // namespace vl
