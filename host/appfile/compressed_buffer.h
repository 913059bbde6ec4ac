// The compressed buffer: u32 size, u32 compressed size (0: plain), and the bytes.
//
// Used for texts and tables of the file itself and as the body of most elements.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "host/appfile/app_limits.h"
#include "host/appfile/byte_block.h"
#include "host/appfile/stream.h"

namespace vl {

struct BufferSizes {
  uint32_t size = 0;            // of the plain data
  uint32_t compressedSize = 0;  // 0: the plain data follows
  uint32_t StoredSize() const { return compressedSize ? compressedSize : size; }
};

// Reads the two sizes and checks them: kAppEndOfFile when the stream holds fewer bytes, kAppBadStream when no
// stream of that length can give that much, kAppOutOfMemory above `maxSize`.
uint32_t ReadBufferSizes(CStream& stream, BufferSizes* sizes, uint32_t maxSize = limits::kMaxBodyBytes);

// Inflates a zlib stream of `compressedSize` bytes at the position into `out`, which it must fill exactly. The
// position ends up somewhere behind the start: inflating reads ahead.
uint32_t InflateInto(CStream& stream, uint32_t compressedSize, std::span<uint8_t> out);

// Reads the bytes that `sizes` tells of into a fresh block. On failure the block is empty.
uint32_t ReadBufferBytes(CStream& stream, const BufferSizes& sizes, ByteBlock* block);

// Both of the above. `*size` is the size without the 0 behind the block.
uint32_t ReadCompressedBuffer(CStream& stream, ByteBlock* buffer, uint32_t* size,
                              uint32_t maxSize = limits::kMaxBodyBytes);

// A zlib stream of the bytes, the same for the same bytes. Empty when there is no memory.
std::vector<uint8_t> DeflateBytes(std::span<const uint8_t> bytes);

}  // namespace vl
