#include "host/appfile/stream.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

namespace vl {

namespace {
constexpr uint32_t kFirstFill = 512;
}  // namespace

uint32_t CStream::Read(void* buffer, uint32_t size) {
  uint32_t read = 0;
  return ReadSome(buffer, size, &read);
}

uint32_t CStream::ReadWordBE(uint16_t* value) {
  uint8_t b[2];
  const uint32_t status = Read(b, sizeof b);
  if (!status) *value = static_cast<uint16_t>(b[0] << 8 | b[1]);
  return status;
}

uint32_t CStream::ReadDwordBE(uint32_t* value) {
  uint8_t b[4];
  const uint32_t status = Read(b, sizeof b);
  if (!status) *value = uint32_t{b[0]} << 24 | uint32_t{b[1]} << 16 | uint32_t{b[2]} << 8 | b[3];
  return status;
}

uint32_t CStream::ReadWordLE(uint16_t* value) {
  uint8_t b[2];
  const uint32_t status = Read(b, sizeof b);
  if (!status) *value = static_cast<uint16_t>(b[1] << 8 | b[0]);
  return status;
}

uint32_t CStream::ReadDwordLE(uint32_t* value) {
  uint8_t b[4];
  const uint32_t status = Read(b, sizeof b);
  if (!status) *value = uint32_t{b[3]} << 24 | uint32_t{b[2]} << 16 | uint32_t{b[1]} << 8 | b[0];
  return status;
}

uint32_t CStream::ReadFloatBE(float* value) {
  uint32_t bits = 0;
  const uint32_t status = ReadDwordBE(&bits);
  if (!status) *value = std::bit_cast<float>(bits);
  return status;
}

uint32_t CStream::ReadFloatLE(float* value) {
  uint32_t bits = 0;
  const uint32_t status = ReadDwordLE(&bits);
  if (!status) *value = std::bit_cast<float>(bits);
  return status;
}

uint32_t CStream::ReadDoubleBE(double* value) {
  uint32_t high = 0;
  uint32_t low = 0;
  uint32_t status = ReadDwordBE(&high);
  if (!status) status = ReadDwordBE(&low);
  if (!status) *value = std::bit_cast<double>(uint64_t{high} << 32 | low);
  return status;
}

uint32_t CStream::ReadDoubleLE(double* value) {
  uint32_t high = 0;
  uint32_t low = 0;
  uint32_t status = ReadDwordLE(&low);
  if (!status) status = ReadDwordLE(&high);
  if (!status) *value = std::bit_cast<double>(uint64_t{high} << 32 | low);
  return status;
}

uint32_t CStream::ReadShortText(std::string* text) {
  uint16_t length = 0;
  if (const uint32_t status = ReadWordLE(&length)) return status;
  if (length > Remaining()) return kAppEndOfFile;
  std::string result(length, '\0');
  const uint32_t status = Read(result.data(), length);
  if (!status) *text = std::move(result);
  return status;
}

uint32_t CStream::ReadLine(char* buffer, uint32_t size) {
  if (size == 0) return 0;
  uint32_t stored = 0;
  uint8_t c = 0;
  while (stored + 1 < size && ReadByte(&c) == kAppOk) {
    if (c == '\r' || c == '\n') {
      uint8_t other = 0;
      if (ReadByte(&other) == kAppOk && other != (c ^ '\r' ^ '\n')) Seek(GetPosition() - 1);
      buffer[stored++] = '\n';
      break;
    }
    buffer[stored++] = static_cast<char>(c);
  }
  buffer[stored] = '\0';
  return stored;
}

uint32_t CStream::Skip(int64_t bytes) {
  const int64_t position = GetPosition();
  if (bytes > 0 && position > INT64_MAX - bytes) return kAppReadFailed;
  return Seek(position + bytes);
}

int64_t CStream::Remaining() const { return std::max<int64_t>(GetLength() - GetPosition(), 0); }

CFileStream::CFileStream(std::shared_ptr<File> file) : CFileStream(std::move(file), 0, INT64_MAX) {}

CFileStream::CFileStream(std::shared_ptr<File> file, int64_t start, int64_t length)
    : file_(std::move(file)), nextFill_(kFirstFill) {
  const int64_t size = file_ ? std::max<int64_t>(file_->size(), 0) : 0;
  start_ = std::clamp<int64_t>(start, 0, size);
  length_ = std::clamp<int64_t>(length, 0, size - start_);
}

std::unique_ptr<CFileStream> CFileStream::Open(FileSystem& files, std::string_view path) {
  std::shared_ptr<File> file = files.open(path, FileMode::Read);
  return file ? std::make_unique<CFileStream>(std::move(file)) : nullptr;
}

// Makes the buffer hold bytes from the position on. Only called before the end.
bool CFileStream::Fill() {
  if (!buffer_) buffer_ = std::make_unique_for_overwrite<uint8_t[]>(kBufferBytes);
  if (position_ != bufferStart_ + bufferFill_) nextFill_ = kFirstFill;
  const auto want = static_cast<uint32_t>(std::min<int64_t>(nextFill_, length_ - position_));
  nextFill_ = std::min(nextFill_ * 4, kBufferBytes);
  bufferFill_ = 0;
  if (!file_->seek(start_ + position_)) return false;
  bufferStart_ = position_;
  bufferFill_ = static_cast<uint32_t>(file_->read(buffer_.get(), want));
  return bufferFill_ > 0;
}

uint32_t CFileStream::ReadSome(void* buffer, uint32_t size, uint32_t* read) {
  *read = 0;
  auto* out = static_cast<uint8_t*>(buffer);
  while (*read < size) {
    if (position_ >= length_) return kAppEndOfFile;
    const auto want = static_cast<uint32_t>(std::min<int64_t>(size - *read, length_ - position_));
    if (position_ >= bufferStart_ && position_ < bufferStart_ + bufferFill_) {
      const auto offset = static_cast<uint32_t>(position_ - bufferStart_);
      const uint32_t count = std::min(want, bufferFill_ - offset);
      std::memcpy(out + *read, buffer_.get() + offset, count);
      *read += count;
      position_ += count;
      continue;
    }
    if (want >= kBufferBytes) {
      if (!file_->seek(start_ + position_)) return kAppReadFailed;
      const auto count = static_cast<uint32_t>(file_->read(out + *read, want));
      *read += count;
      position_ += count;
      if (count < want) return file_->failed() ? kAppReadFailed : kAppEndOfFile;
      continue;
    }
    // The file may have shrunk since the length was taken.
    if (!Fill()) return file_->failed() ? kAppReadFailed : kAppEndOfFile;
  }
  return kAppOk;
}

uint32_t CFileStream::Seek(int64_t position) {
  if (position < 0) return kAppReadFailed;
  position_ = position;
  return kAppOk;
}

uint32_t CMemoryStream::ReadSome(void* buffer, uint32_t size, uint32_t* read) {
  *read = static_cast<uint32_t>(std::min<int64_t>(size, Remaining()));
  if (*read) std::memcpy(buffer, data_ + position_, *read);
  position_ += *read;
  return *read == size ? kAppOk : kAppEndOfFile;
}

uint32_t CMemoryStream::Seek(int64_t position) {
  if (position < 0) return kAppReadFailed;
  position_ = position;
  return kAppOk;
}

CWindowStream::CWindowStream(CStream& stream, int64_t length)
    : stream_(stream), start_(stream.GetPosition()), length_(std::clamp<int64_t>(length, 0, stream.Remaining())) {}

uint32_t CWindowStream::ReadSome(void* buffer, uint32_t size, uint32_t* read) {
  const auto want = static_cast<uint32_t>(std::min<int64_t>(size, Remaining()));
  *read = 0;
  const uint32_t status = want ? stream_.ReadSome(buffer, want, read) : kAppOk;
  return !status && want < size ? kAppEndOfFile : status;
}

uint32_t CWindowStream::Seek(int64_t position) {
  if (position < 0 || position > INT64_MAX - start_) return kAppReadFailed;
  return stream_.Seek(start_ + position);
}

}  // namespace vl
