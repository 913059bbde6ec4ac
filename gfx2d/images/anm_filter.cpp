#include "gfx2d/images/anm_filter.h"

#include <zlib.h>

#include <algorithm>
#include <cstring>

#include "gfx2d/images/anm_format.h"
#include "gfx2d/pixel_format.h"
#include "host/appfile/app_limits.h"

namespace vl {
namespace {

constexpr ImageFilter::Texts kTexts = {7, "ANM", "Vorlane animation", "anm"};

// A delta that repeats itself could cost more than its picture; no writer makes one of many times a key frame.
constexpr uint64_t kMostDeltaRatio = 4;

}  // namespace

struct AnmFilter::FrameHeader {
  uint32_t time = 0;
  uint32_t flags = 0;
  int32_t x = 0;
  int32_t y = 0;
  int32_t w = 0;
  int32_t h = 0;
  uint32_t unpacked = 0;  // 0: the data is raw
};

// The bytes of a frame, inflated when they are packed.
class AnmFilter::Data {
 public:
  Data(CStream& stream, uint32_t stored, uint32_t unpacked)
      : stream_(stream), storedLeft_(stored), left_(unpacked ? unpacked : stored), packed_(unpacked != 0) {}
  ~Data() {
    if (ready_) inflateEnd(&z_);
  }
  Data(const Data&) = delete;
  Data& operator=(const Data&) = delete;

  uint32_t Left() const { return left_; }
  bool Next(uint8_t& value) {
    if (at_ == fill_) {
      at_ = fill_ = 0;
      const auto count = std::min<uint32_t>(left_, sizeof ahead_);
      if (count == 0 || !Fill(ahead_, count)) return false;
      fill_ = count;
    }
    value = ahead_[at_++];
    --left_;
    return true;
  }
  bool Read(uint8_t* to, uint32_t size) {
    if (size > left_) return false;
    const uint32_t have = std::min(size, fill_ - at_);
    std::memcpy(to, ahead_ + at_, have);
    at_ += have;
    left_ -= have;
    to += have;
    size -= have;
    if (size == 0) return true;
    if (size < sizeof ahead_ / 4) {  // what is small comes in numbers
      at_ = fill_ = 0;
      const auto count = std::min<uint32_t>(left_, sizeof ahead_);
      if (!Fill(ahead_, count)) return false;
      fill_ = count;
      return Read(to, size);
    }
    left_ -= size;
    return Fill(to, size);
  }

 private:
  bool Fill(uint8_t* to, uint32_t size) {
    if (!packed_) {
      storedLeft_ -= size;
      return stream_.Read(to, size) == kAppOk;
    }
    if (!ready_) {
      if (inflateInit(&z_) != Z_OK) return false;
      ready_ = true;
    }
    z_.next_out = to;
    z_.avail_out = size;
    while (z_.avail_out > 0) {
      if (z_.avail_in == 0) {
        const auto count = std::min<uint32_t>(storedLeft_, sizeof input_);
        if (count == 0 || stream_.Read(input_, count)) return false;
        storedLeft_ -= count;
        z_.next_in = input_;
        z_.avail_in = count;
      }
      const int result = inflate(&z_, Z_NO_FLUSH);
      if (result == Z_STREAM_END) return z_.avail_out == 0;
      if (result != Z_OK) return false;
    }
    return true;
  }

  CStream& stream_;
  uint32_t storedLeft_;
  uint32_t left_;  // unpacked bytes that the reader hasn't had
  bool packed_;
  bool ready_ = false;
  z_stream z_{};
  uint32_t at_ = 0;
  uint32_t fill_ = 0;
  uint8_t input_[8192];
  uint8_t ahead_[1024];
};

AnmFilter::AnmFilter(MemoryBudget& budget) : ImageFilter(budget, kTexts) {}

bool AnmFilter::IsValid(CStream&, uint32_t firstFourBytes) const { return firstFourBytes == anm::kMagic; }

bool AnmFilter::ReadChunk(CStream& stream, int64_t at, Chunk& chunk) {
  uint16_t zero = 0;
  if (stream.Seek(at) || stream.ReadWordLE(&chunk.id) || stream.ReadWordLE(&zero) || stream.ReadDwordLE(&chunk.size)) {
    return false;
  }
  chunk.data = stream.GetPosition();
  return true;
}

bool AnmFilter::ReadFrameHeader(CStream& stream, FrameHeader& h) {
  uint8_t b[anm::kFrameHeaderBytes];
  if (stream.Read(b, sizeof b)) return false;
  h.time = LoadWord<uint32_t>(b);
  h.flags = LoadWord<uint32_t>(b + 4);
  h.x = LoadWord<int32_t>(b + 8);
  h.y = LoadWord<int32_t>(b + 12);
  h.w = LoadWord<int32_t>(b + 16);
  h.h = LoadWord<int32_t>(b + 20);
  h.unpacked = LoadWord<uint32_t>(b + 24);
  return true;
}

ImageError AnmFilter::Open(CStream& stream) {
  ImageError error = ReadHeader(stream);
  if (!error) error = FindFirstFrame(stream);
  if (error) depth = 0;
  return error;
}

ImageError AnmFilter::ReadHeader(CStream& stream) {
  uint8_t h[anm::kHeaderBytes];
  if (stream.Read(h, sizeof h) || LoadWord<uint32_t>(h) != anm::kMagic) return kImageBadData;
  const int32_t pixelBits = LoadWord<int32_t>(h + 20);
  if (pixelBits >= 0 && pixelBits < 8) return kImageDepthTooSmall;
  if (ImageDepthBit(pixelBits) == 0) return kImageBadData;
  if (!SetPicture(LoadWord<int32_t>(h + 12), LoadWord<int32_t>(h + 16), pixelBits, 4)) return kImageBadData;
  frameCount = LoadWord<int32_t>(h + 28);
  frameTime = std::max(LoadWord<int32_t>(h + 32), 0);
  totalTime = std::max(LoadWord<int32_t>(h + 36), 0);
  currentFrame = -1;
  return kImageOk;
}

ImageError AnmFilter::FindFirstFrame(CStream& stream) {
  if (depth == 8) palette.emplace();
  Chunk chunk;
  for (int64_t at = stream.GetPosition(); ReadChunk(stream, at, chunk); at = chunk.End()) {
    const bool whole = chunk.size <= stream.Remaining();
    if (chunk.id == anm::kKeyFrame) {
      firstFrame_ = next_ = at;
      firstPalette_ = palette;
      CollectTimes(stream);
      return kImageOk;
    }
    if (chunk.id == anm::kPalette && !ReadPalette(stream, chunk)) return kImageBadData;
    if (chunk.id == anm::kUserData && whole && chunk.size > 0) {
      if (!userData_.Allocate(Budget(), chunk.size)) return kImageOutOfMemory;
      stream.Read(userData_.Data(), chunk.size);
    }
    uint32_t count = 0;
    uint32_t start = 0;
    if (chunk.id == anm::kLoop && chunk.size >= 8 && !stream.ReadDwordLE(&count) && !stream.ReadDwordLE(&start)) {
      loopCount_ = int32_t(count);
      loopStart_ = int32_t(start);
    }
  }
  return kImageBadData;
}

// The times of all frames, so that a player can pass over frames that it hasn't read.
void AnmFilter::CollectTimes(CStream& stream) {
  const int64_t most = (stream.GetLength() - firstFrame_) / (anm::kChunkHeaderBytes + anm::kFrameHeaderBytes);
  const bool counted = frameCount > 0;
  const int64_t room = counted ? std::min<int64_t>(most, frameCount) : most;
  if (room < 1 || !times_.Allocate(Budget(), uint64_t(room) * 4)) return;
  int64_t found = 0;
  Chunk chunk;
  for (int64_t at = firstFrame_; found < room && ReadChunk(stream, at, chunk); at = chunk.End()) {
    if (chunk.id != anm::kKeyFrame && chunk.id != anm::kDeltaFrame) continue;
    uint32_t time = 0;
    if (stream.ReadDwordLE(&time)) break;
    StoreWord(times_.Data() + found * 4, time);
    ++found;
  }
  // A file whose writer didn't come to its end has no count.
  if (!counted) frameCount = int32_t(std::min<int64_t>(found, INT32_MAX));
}

int32_t AnmFilter::GetFrameTime(int32_t frame) const {
  if (frame < 0 || size_t(frame) >= times_.Size() / 4) return frameTime;
  const auto time = LoadWord<uint32_t>(times_.Data() + size_t(frame) * 4);
  return time == 0 ? frameTime : int32_t(std::min<uint32_t>(time, INT32_MAX));
}

void AnmFilter::Close() {
  userData_.Free();
  times_.Free();
  EndWrite();
}

void AnmFilter::Rewind(CStream&) {
  currentFrame = -1;
  next_ = firstFrame_;
  if (palette && firstPalette_ && !SameColours(*palette, *firstPalette_)) {
    palette = firstPalette_;
    PaletteReplaced();
  }
}

bool AnmFilter::ReadPalette(CStream& stream, const Chunk& chunk) {
  uint16_t first = 0;
  uint16_t count = 0;
  if (chunk.size < 4 || stream.ReadWordLE(&first) || stream.ReadWordLE(&count)) return false;
  if (!palette) return true;
  for (uint32_t i = 0; i < count; ++i) {
    uint8_t rgb[3];
    if (4 + (i + 1) * 3 > chunk.size || stream.Read(rgb, 3)) return false;
    if (first + i < 256) palette->entries[first + i] = {rgb[0], rgb[1], rgb[2], 0};
  }
  return true;
}

ImageError AnmFilter::ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t*) {
  if (depth == 0) return kImageFilterClosed;
  if (currentFrame >= frameCount - 1) return kImagePastEnd;
  paletteChanged = false;
  Chunk chunk;
  for (;; next_ = chunk.End()) {
    if (!ReadChunk(stream, next_, chunk)) return kImagePastEnd;
    if (chunk.id == anm::kKeyFrame || chunk.id == anm::kDeltaFrame) break;
    if (chunk.id == anm::kPalette) {
      if (!ReadPalette(stream, chunk)) return kImageReadFailed;
      PaletteReplaced();
    }
  }
  FrameHeader header;
  if (chunk.size < anm::kFrameHeaderBytes || !ReadFrameHeader(stream, header)) return kImageReadFailed;
  const uint32_t stored = chunk.size - anm::kFrameHeaderBytes;
  box_ = {};
  if (!(header.flags & anm::kNoPicture)) {
    if (stored > stream.Remaining() ||
        header.unpacked > stored * limits::kMaxInflateRatio + limits::kInflateSlackBytes) {
      return kImageReadFailed;
    }
    Data data(stream, stored, header.unpacked);
    const ImageError error =
        chunk.id == anm::kKeyFrame ? ReadKey(data, bits, pitch) : ReadDelta(data, header, bits, pitch);
    if (error) return error;
  }
  next_ = chunk.End();
  ++currentFrame;
  return kImageOk;
}

ImageError AnmFilter::ReadKey(Data& data, uint8_t* bits, int32_t pitch) {
  // Lines are stored with or without padding; the size tells.
  const bool padded = uint64_t(lineBytes) * uint64_t(height) <= data.Left();
  if (!padded && uint64_t(rowBytes) * uint64_t(height) > data.Left()) return kImageReadFailed;
  const auto padding = uint32_t(padded ? lineBytes - rowBytes : 0);
  ImageMemory line;
  if (mustConvert && !line.Allocate(Budget(), uint64_t(rowBytes))) return kImageOutOfMemory;
  for (int32_t y = 0; y < height; ++y) {
    uint8_t* target = Row(bits, pitch, y);
    uint8_t* source = mustConvert ? line.Data() : target;
    uint8_t rest[4];
    if (!data.Read(source, uint32_t(rowBytes)) || !data.Read(rest, padding)) return kImageReadFailed;
    if (mustConvert) ConvertLine(source, target, width);
  }
  box_ = {0, 0, width, height};
  return kImageOk;
}

ImageError AnmFilter::ReadDelta(Data& data, const FrameHeader& h, uint8_t* bits, int32_t pitch) {
  if (h.x < 0 || h.y < 0 || h.x > width || h.y > height || h.w < 0 || h.h < 0) return kImageReadFailed;
  if (data.Left() > kMostDeltaRatio * (uint64_t(rowBytes) + 4) * uint64_t(height) + 64) return kImageReadFailed;
  box_ = {h.x, h.y, std::min(h.w, width - h.x) + h.x, std::min(h.h, height - h.y) + h.y};
  uint8_t pixels[anm::kMostAtOnce * 4];
  for (int32_t y = h.y; data.Left() > 0;) {
    uint8_t lines = 0;
    if (!data.Next(lines)) return kImageReadFailed;
    if (lines == 0) break;
    if (lines & anm::kSkip) {
      y = std::min(y + (lines & ~anm::kSkip), height);
      continue;
    }
    for (; lines > 0; --lines, ++y) {
      if (y >= height) return kImageReadFailed;
      uint8_t* line = Row(bits, pitch, y);
      for (int32_t x = h.x;;) {
        uint8_t code = 0;
        if (!data.Next(code)) return kImageReadFailed;
        if (code == 0) break;
        const int32_t count = code & ~anm::kSkip;
        if (count > width - x) return kImageReadFailed;
        if (!(code & anm::kSkip)) {
          if (!data.Read(pixels, uint32_t(count * bytesPerPixel))) return kImageReadFailed;
          PutLine(pixels, line + ptrdiff_t{x} * outputBytesPerPixel, count);
        }
        x += count;
      }
    }
  }
  return kImageOk;
}

}  // namespace vl
