// ImageOutput: what pictures are saved through, a buffer of 4096 bytes over a file.
//
// A failure sticks: later writes do nothing, and Commit tells of it.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "platform/file_system.h"

namespace vl {

class ImageOutput {
 public:
  static constexpr size_t kBufferBytes = 4096;

  explicit ImageOutput(std::unique_ptr<File> file) : file_(std::move(file)) {}
  ImageOutput(const ImageOutput&) = delete;
  ImageOutput& operator=(const ImageOutput&) = delete;

  bool Write(const void* bytes, size_t size);
  bool WriteByte(uint8_t v) { return Write(&v, 1); }
  bool WriteWord(uint32_t v);   // 16 bits, little-endian
  bool WriteDword(uint32_t v);  // 32 bits, little-endian
  bool WriteZeros(size_t count);
  // Position in bytes from the file's start.
  bool Seek(int64_t position);
  int64_t GetPosition() const { return position_ + int64_t(fill_); }
  // Everything is in the file. False when anything since the start failed.
  bool Commit();
  bool Failed() const { return failed_; }

 private:
  bool Flush();

  std::unique_ptr<File> file_;
  int64_t position_ = 0;  // in the file, where the buffer goes
  size_t fill_ = 0;
  bool failed_ = false;
  std::array<uint8_t, kBufferBytes> buffer_;
};

}  // namespace vl
