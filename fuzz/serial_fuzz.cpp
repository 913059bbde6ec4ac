// Arbitrary bytes on a serial line, received as arbitrary values: nothing is made larger than what came.
#include <cstdint>
#include <cstdlib>
#include <cstring>

#include "classes/serial_frames.h"

namespace {

class BytesLine final : public vl::SerialLine {
 public:
  BytesLine(const uint8_t* data, size_t size) : at_(data), left_(size) {}
  bool Read(void* buffer, size_t size) override {
    if (size > left_) {
      left_ = 0;
      return false;
    }
    if (size > 0) std::memcpy(buffer, at_, size);
    at_ += size;
    left_ -= size;
    return true;
  }
  bool Write(const void*, size_t) override { return true; }
  size_t Left() const { return left_; }

 private:
  const uint8_t* at_;
  size_t left_;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* data, size_t size) {
  BytesLine line(data, size);
  while (line.Left() > 0) {
    uint8_t op = 0;
    line.Read(&op, 1);
    int32_t integer = 0;
    double real = 0;
    std::string text;
    vl::SerialBlock block;
    switch (op % 8) {
      case 0:
        vl::ReceiveFramedInteger(line, &integer);
        break;
      case 1:
        vl::ReceiveFramedDouble(line, &real);
        break;
      case 2:
        vl::ReceiveFramedText(line, &text);
        break;
      case 3:
        vl::ReceiveFramedBlock(line, &block);
        break;
      case 4:
        vl::ReceiveRawInteger(line, &integer);
        break;
      case 5:
        vl::ReceiveRawDouble(line, &real);
        break;
      case 6:
        vl::ReceiveRawText(line, &text);
        break;
      default:
        if (vl::ReceiveRawInteger(line, &integer)) {
          vl::ReceiveRawBytes(line, static_cast<uint32_t>(integer), &block.bytes);
        }
        break;
    }
    if (text.size() > size || block.bytes.size() > size) abort();
  }
  return 0;
}
