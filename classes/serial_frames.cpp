#include "classes/serial_frames.h"

#include <algorithm>
#include <array>
#include <bit>

namespace vl {

namespace {

enum FrameType : uint32_t { kInteger = 1, kDouble = 2, kText = 3, kBlock = 4 };
// Memory is taken as bytes arrive.
constexpr uint32_t kStepBytes = 64u << 10;

bool SendWord(SerialLine& line, uint32_t value) {
  const std::array<uint8_t, 4> bytes{static_cast<uint8_t>(value >> 24), static_cast<uint8_t>(value >> 16),
                                     static_cast<uint8_t>(value >> 8), static_cast<uint8_t>(value)};
  return line.Write(bytes.data(), bytes.size());
}

bool ReceiveWord(SerialLine& line, uint32_t* value) {
  std::array<uint8_t, 4> b;
  if (!line.Read(b.data(), b.size())) return false;
  *value = uint32_t{b[0]} << 24 | uint32_t{b[1]} << 16 | uint32_t{b[2]} << 8 | b[3];
  return true;
}

bool Expect(SerialLine& line, uint32_t wanted) {
  uint32_t found = 0;
  return ReceiveWord(line, &found) && found == wanted;
}

double DoubleOf(uint32_t high, uint32_t low) { return std::bit_cast<double>(uint64_t{high} << 32 | low); }

bool ReceiveRawWord(SerialLine& line, uint32_t* value) {
  std::array<uint8_t, 4> b;
  if (!line.Read(b.data(), b.size())) return false;
  *value = uint32_t{b[3]} << 24 | uint32_t{b[2]} << 16 | uint32_t{b[1]} << 8 | b[0];
  return true;
}

}  // namespace

bool SendFramedInteger(SerialLine& line, int32_t value) {
  return SendWord(line, kInteger) && SendWord(line, 4) && SendWord(line, static_cast<uint32_t>(value));
}

bool SendFramedText(SerialLine& line, std::string_view text) {
  return SendWord(line, kText) && SendWord(line, static_cast<uint32_t>(text.size() + 1)) && SendRawText(line, text);
}

bool SendFramedBlock(SerialLine& line, uint32_t tag, const uint8_t* bytes, size_t size) {
  return SendWord(line, kBlock) && SendWord(line, tag) && SendWord(line, static_cast<uint32_t>(size)) &&
         (size == 0 || line.Write(bytes, size));
}

bool ReceiveFramedInteger(SerialLine& line, int32_t* value) {
  uint32_t word = 0;
  if (!Expect(line, kInteger) || !Expect(line, 4) || !ReceiveWord(line, &word)) return false;
  *value = static_cast<int32_t>(word);
  return true;
}

bool ReceiveFramedDouble(SerialLine& line, double* value) {
  uint32_t high = 0;
  uint32_t low = 0;
  if (!Expect(line, kDouble) || !Expect(line, 8) || !ReceiveWord(line, &high) || !ReceiveWord(line, &low)) return false;
  *value = DoubleOf(high, low);
  return true;
}

bool ReceiveFramedText(SerialLine& line, std::string* text) {
  uint32_t length = 0;
  std::vector<uint8_t> bytes;
  if (!Expect(line, kText) || !ReceiveWord(line, &length) || !ReceiveRawBytes(line, length, &bytes)) return false;
  text->assign(bytes.begin(), std::find(bytes.begin(), bytes.end(), uint8_t{0}));
  return true;
}

bool ReceiveFramedBlock(SerialLine& line, SerialBlock* block) {
  uint32_t length = 0;
  return Expect(line, kBlock) && ReceiveWord(line, &block->tag) && ReceiveWord(line, &length) &&
         ReceiveRawBytes(line, length, &block->bytes);
}

bool SendRawInteger(SerialLine& line, int32_t value) {
  const auto v = static_cast<uint32_t>(value);
  const std::array<uint8_t, 4> bytes{static_cast<uint8_t>(v), static_cast<uint8_t>(v >> 8),
                                     static_cast<uint8_t>(v >> 16), static_cast<uint8_t>(v >> 24)};
  return line.Write(bytes.data(), bytes.size());
}

bool SendRawText(SerialLine& line, std::string_view text) {
  const std::string ended(text);
  return line.Write(ended.c_str(), ended.size() + 1);
}

bool ReceiveRawInteger(SerialLine& line, int32_t* value) {
  uint32_t word = 0;
  if (!ReceiveRawWord(line, &word)) return false;
  *value = static_cast<int32_t>(word);
  return true;
}

bool ReceiveRawDouble(SerialLine& line, double* value) {
  std::array<uint8_t, 8> b;
  if (!line.Read(b.data(), b.size())) return false;
  uint64_t bits = 0;
  for (size_t i = b.size(); i-- > 0;) bits = bits << 8 | b[i];
  *value = std::bit_cast<double>(bits);
  return true;
}

bool ReceiveRawText(SerialLine& line, std::string* text) {
  text->clear();
  for (char c = 1; text->size() < kMaxFrameBytes;) {
    if (!line.Read(&c, 1)) break;
    if (c == 0) return true;
    *text += c;
  }
  text->clear();
  return false;
}

bool ReceiveRawBytes(SerialLine& line, uint32_t size, std::vector<uint8_t>* bytes) {
  bytes->clear();
  if (size > kMaxFrameBytes) return false;
  while (bytes->size() < size) {
    const size_t at = bytes->size();
    const size_t step = std::min<size_t>(size - at, kStepBytes);
    bytes->resize(at + step);
    if (!line.Read(bytes->data() + at, step)) {
      bytes->clear();
      return false;
    }
  }
  return true;
}

}  // namespace vl
