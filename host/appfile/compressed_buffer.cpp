#include "host/appfile/compressed_buffer.h"

#include <zlib.h>

#include <algorithm>

namespace vl {

namespace {

constexpr uint32_t kReadBufferBytes = 8192;

struct Inflater {
  z_stream z{};
  bool ready = false;
  ~Inflater() {
    if (ready) inflateEnd(&z);
  }
};

}  // namespace

uint32_t ReadBufferSizes(CStream& stream, BufferSizes* sizes, uint32_t maxSize) {
  BufferSizes s;
  uint32_t status = stream.ReadDwordLE(&s.size);
  if (!status) status = stream.ReadDwordLE(&s.compressedSize);
  if (status) return status;
  *sizes = s;
  if (s.size == 0) return kAppOk;
  if (s.StoredSize() > stream.Remaining()) return kAppEndOfFile;
  if (s.compressedSize && s.size > s.compressedSize * limits::kMaxInflateRatio + limits::kInflateSlackBytes) {
    return kAppBadStream;
  }
  return s.size > maxSize ? kAppOutOfMemory : kAppOk;
}

uint32_t InflateInto(CStream& stream, uint32_t compressedSize, std::span<uint8_t> out) {
  Inflater inflater;
  z_stream& z = inflater.z;
  if (inflateInit(&z) != Z_OK) return kAppOutOfMemory;
  inflater.ready = true;
  uint8_t input[kReadBufferBytes];
  uint8_t beyond = 0;  // where a byte too many would go
  z.next_out = out.empty() ? &beyond : out.data();
  z.avail_out = static_cast<uInt>(out.size());
  uint32_t left = compressedSize;
  int result = Z_OK;
  while (result != Z_STREAM_END) {
    if (z.avail_in == 0) {
      if (left == 0) return kAppBadStream;
      const uint32_t count = std::min(left, kReadBufferBytes);
      if (const uint32_t status = stream.Read(input, count)) return status;
      left -= count;
      z.next_in = input;
      z.avail_in = count;
    }
    if (z.avail_out == 0) {
      // All is there; what is left of the stream is its check sum.
      if (z.next_out == &beyond + 1) return kAppBadStream;
      z.next_out = &beyond;
      z.avail_out = 1;
    }
    result = inflate(&z, Z_NO_FLUSH);
    if (result != Z_OK && result != Z_STREAM_END) return result == Z_MEM_ERROR ? kAppOutOfMemory : kAppBadStream;
  }
  return z.total_out == out.size() ? kAppOk : kAppBadStream;
}

uint32_t ReadBufferBytes(CStream& stream, const BufferSizes& sizes, ByteBlock* block) {
  if (!block->Allocate(sizes.size)) return kAppOutOfMemory;
  uint32_t status = kAppOk;
  if (sizes.size == 0) {
  } else if (sizes.compressedSize == 0) {
    status = stream.Read(block->Data(), sizes.size);
  } else {
    status = InflateInto(stream, sizes.compressedSize, {block->Data(), sizes.size});
  }
  if (status) block->Clear();
  return status;
}

uint32_t ReadCompressedBuffer(CStream& stream, ByteBlock* buffer, uint32_t* size, uint32_t maxSize) {
  buffer->Clear();
  *size = 0;
  BufferSizes sizes;
  uint32_t status = ReadBufferSizes(stream, &sizes, maxSize);
  if (!status) status = ReadBufferBytes(stream, sizes, buffer);
  if (!status) *size = sizes.size;
  return status;
}

std::vector<uint8_t> DeflateBytes(std::span<const uint8_t> bytes) {
  uLongf size = compressBound(static_cast<uLong>(bytes.size()));
  std::vector<uint8_t> result(size);
  if (compress2(result.data(), &size, bytes.data(), static_cast<uLong>(bytes.size()), 9) != Z_OK) return {};
  result.resize(size);
  return result;
}

}  // namespace vl
