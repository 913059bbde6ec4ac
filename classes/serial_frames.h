// Values on a serial line, with a type and a length before each, or as they are.
//
// A line reads or writes all bytes that are asked for, or fails. What arrives is hostile: a length is believed only as
// far as its bytes come, and at most kMaxFrameBytes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vl {

class SerialLine {
 public:
  virtual ~SerialLine() = default;
  virtual bool Read(void* buffer, size_t size) = 0;
  virtual bool Write(const void* buffer, size_t size) = 0;
};

struct SerialBlock {
  uint32_t tag = 0;  // of a framed block
  std::vector<uint8_t> bytes;
};

inline constexpr uint32_t kMaxFrameBytes = 64u << 20;

// With type and length, big-endian. A receive that fails leaves the rest of the frame on the line.
bool SendFramedInteger(SerialLine& line, int32_t value);
bool SendFramedText(SerialLine& line, std::string_view text);
bool SendFramedBlock(SerialLine& line, uint32_t tag, const uint8_t* bytes, size_t size);
bool ReceiveFramedInteger(SerialLine& line, int32_t* value);
bool ReceiveFramedDouble(SerialLine& line, double* value);
bool ReceiveFramedText(SerialLine& line, std::string* text);
bool ReceiveFramedBlock(SerialLine& line, SerialBlock* block);

// Without: little-endian, texts with their NUL.
bool SendRawInteger(SerialLine& line, int32_t value);
bool SendRawText(SerialLine& line, std::string_view text);
bool ReceiveRawInteger(SerialLine& line, int32_t* value);
bool ReceiveRawDouble(SerialLine& line, double* value);
bool ReceiveRawText(SerialLine& line, std::string* text);
bool ReceiveRawBytes(SerialLine& line, uint32_t size, std::vector<uint8_t>* bytes);

}  // namespace vl
