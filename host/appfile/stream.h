// CStream: how every resource is read, whether it lies in a file or in memory.
//
// A stream has a length and a position; a position behind the end is allowed and reads as the end. Streams
// aren't shared between threads. All operations return a status of errors.h and never throw. A failed read
// leaves its result unchanged, and the position somewhere up to the end.
#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "host/appfile/errors.h"
#include "platform/file_system.h"

namespace vl {

class CStream {
 public:
  virtual ~CStream() = default;

  // Reads up to `size` bytes and tells how many. kAppEndOfFile when fewer were left.
  virtual uint32_t ReadSome(void* buffer, uint32_t size, uint32_t* read) = 0;
  // Sets the position, in bytes from the stream's start. kAppReadFailed when it is below 0.
  virtual uint32_t Seek(int64_t position) = 0;
  virtual int64_t GetPosition() const = 0;
  virtual int64_t GetLength() const = 0;

  // All of `size` bytes, or kAppEndOfFile.
  uint32_t Read(void* buffer, uint32_t size);
  uint32_t ReadByte(uint8_t* value) { return Read(value, 1); }
  uint32_t ReadWordBE(uint16_t* value);
  uint32_t ReadDwordBE(uint32_t* value);
  uint32_t ReadWordLE(uint16_t* value);
  uint32_t ReadDwordLE(uint32_t* value);
  uint32_t ReadFloatBE(float* value);
  uint32_t ReadFloatLE(float* value);
  uint32_t ReadDoubleBE(double* value);
  uint32_t ReadDoubleLE(double* value);
  // A 16-bit length and that many bytes.
  uint32_t ReadShortText(std::string* text);

  // Reads one line into `buffer`, ended by NUL, and gives the bytes stored without it. CR, LF, CR-LF and LF-CR
  // are each one line end, stored as one LF. A line that is longer than the buffer goes on in the next call. 0
  // only at the end of the stream.
  uint32_t ReadLine(char* buffer, uint32_t size);

  uint32_t Skip(int64_t bytes);
  // Bytes behind the position, 0 behind the end.
  int64_t Remaining() const;
};

// Over a file, or a window in it, with a buffer of 16384 bytes. Keeps its own position: streams that share a
// File don't disturb each other. The length is taken when the stream is made.
class CFileStream final : public CStream {
 public:
  static constexpr uint32_t kBufferBytes = 16384;

  explicit CFileStream(std::shared_ptr<File> file);
  // The window is cut to the file.
  CFileStream(std::shared_ptr<File> file, int64_t start, int64_t length);
  // Null when the file can't be opened.
  static std::unique_ptr<CFileStream> Open(FileSystem& files, std::string_view path);

  uint32_t ReadSome(void* buffer, uint32_t size, uint32_t* read) override;
  uint32_t Seek(int64_t position) override;
  int64_t GetPosition() const override { return position_; }
  int64_t GetLength() const override { return length_; }

 private:
  bool Fill();

  std::shared_ptr<File> file_;
  int64_t start_ = 0;
  int64_t length_ = 0;
  int64_t position_ = 0;
  std::unique_ptr<uint8_t[]> buffer_;
  int64_t bufferStart_ = 0;
  uint32_t bufferFill_ = 0;
  uint32_t nextFill_;  // grows while reading goes straight on, so that a jump to a few bytes stays cheap
};

// Over a block that it doesn't own and that must outlive it.
class CMemoryStream final : public CStream {
 public:
  CMemoryStream(const void* data, uint32_t size) : data_(static_cast<const uint8_t*>(data)), size_(size) {}

  uint32_t ReadSome(void* buffer, uint32_t size, uint32_t* read) override;
  uint32_t Seek(int64_t position) override;
  int64_t GetPosition() const override { return position_; }
  int64_t GetLength() const override { return size_; }

 private:
  const uint8_t* data_;
  uint32_t size_;
  int64_t position_ = 0;
};

// The next `length` bytes of another stream, which must outlive it. Reading moves the other's position.
class CWindowStream final : public CStream {
 public:
  CWindowStream(CStream& stream, int64_t length);

  uint32_t ReadSome(void* buffer, uint32_t size, uint32_t* read) override;
  uint32_t Seek(int64_t position) override;
  int64_t GetPosition() const override { return stream_.GetPosition() - start_; }
  int64_t GetLength() const override { return length_; }

 private:
  CStream& stream_;
  int64_t start_;
  int64_t length_;
};

}  // namespace vl
