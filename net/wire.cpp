#include "net/wire.h"

#include "base/limits.h"

namespace vl {

namespace {

// Fields behind the type: h 2 bytes, w 4 bytes, t a text. Null: no such type.
const char* FieldsOf(WireDirection direction, uint8_t type) {
  if (direction == WireDirection::ToServer) {
    switch (type) {
      case kToServerSessionText:
        return "hwt";
      case kToServerText:
      case kToServerHello:
        return "ht";
      case kToServerUserText:
        return "hwwt";
      case kToServerJoin:
      case kToServerNameChange:
        return "t";
      case kToServerLeave:
        return "w";
      default:
        return nullptr;
    }
  }
  switch (type) {
    case kToPlayerText:
      return "hwwt";
    case kToPlayerUserLeft:
      return "www";
    case kToPlayerUserJoined:
    case kToPlayerUserIsOn:
      return "wwwtt";
    case kToPlayerJoined:
      return "wwwttt";
    case kToPlayerMotd:
      return "t";
    case kToPlayerUserNameChanged:
      return "wt";
    case kToPlayerWelcome:
      return "hw";
    default:
      return nullptr;
  }
}

uint32_t Little(const uint8_t* at, int bytes) {
  uint32_t v = 0;
  for (int i = 0; i < bytes; ++i) v |= static_cast<uint32_t>(at[i]) << 8 * i;
  return v;
}

std::string_view TextBehind(std::span<const uint8_t> bytes, size_t at) {
  return {reinterpret_cast<const char*>(bytes.data()) + at, bytes.size() - at};
}

}  // namespace

Parsed ParseMessage(WireDirection direction, std::span<const uint8_t> bytes, VexMessage& message) {
  if (bytes.empty()) return Parsed::Incomplete;
  message.type = bytes[0];
  const char* fields = FieldsOf(direction, message.type);
  if (!fields) return Parsed::Unknown;
  size_t at = 1;
  size_t words = 0;
  size_t texts = 0;
  for (; *fields; ++fields) {
    const size_t fixed = *fields == 'h' ? 2 : 4;
    if (bytes.size() - at < fixed) return Parsed::Incomplete;
    const uint32_t value = Little(&bytes[at], static_cast<int>(fixed));
    at += fixed;
    if (*fields == 'h') {
      message.half = static_cast<uint16_t>(value);
    } else if (*fields == 'w') {
      message.words[words++] = value;
    } else {
      if (value > limits::kMaxNetMessageBytes) return Parsed::TooLarge;
      if (value == 0 || bytes.size() - at < value) return Parsed::Incomplete;
      message.texts[texts++] = TextBehind(bytes, at).substr(0, value);
      at += value;
    }
  }
  message.size = at;
  return Parsed::Complete;
}

std::optional<VexBlast> ParseBlast(std::span<const uint8_t> datagram) {
  if (datagram.size() < VexBlast::kHeader || datagram[0] != kDatagramBlast) return std::nullopt;
  return VexBlast{static_cast<uint16_t>(Little(&datagram[1], 2)), Little(&datagram[3], 4), Little(&datagram[7], 4),
                  Little(&datagram[VexBlast::kTargetAt], 4), TextBehind(datagram, VexBlast::kHeader)};
}

std::optional<VexServerBlast> ParseServerBlast(std::span<const uint8_t> datagram) {
  if (datagram.size() < VexServerBlast::kHeader || datagram[0] != kDatagramServerBlast) return std::nullopt;
  return VexServerBlast{static_cast<uint16_t>(Little(&datagram[1], 2)), Little(&datagram[3], 4),
                        TextBehind(datagram, VexServerBlast::kHeader)};
}

WireWriter WriteBlast(const VexBlast& blast) {
  WireWriter writer(kDatagramBlast);
  writer.Half(blast.type).Word(blast.channel).Word(blast.sender).Word(blast.target).Rest(blast.text);
  return writer;
}

}  // namespace vl
