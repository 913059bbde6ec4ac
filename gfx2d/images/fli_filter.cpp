#include "gfx2d/images/fli_filter.h"

#include <algorithm>
#include <cstring>

#include "gfx2d/images/image_input.h"
#include "gfx2d/pixel_format.h"

namespace vl {
namespace {

constexpr ImageFilter::Texts kTexts = {5, "FLI", "Animator animation", "fli;flc"};

constexpr uint32_t kHeaderBytes = 128;
constexpr uint16_t kFli = 0xAF11;
constexpr uint16_t kFlc = 0xAF12;
constexpr uint16_t kFrame = 0xF1FA;
constexpr int64_t kFrameHeaderBytes = 16;
constexpr int64_t kChunkHeaderBytes = 6;

enum SubChunk : uint16_t {
  kColours = 4,
  kDeltaFlc = 7,
  kColours6 = 11,
  kDeltaFli = 12,
  kBlack = 13,
  kByteRun = 15,
  kCopy = 16
};

struct ChunkHeader {
  uint32_t size = 0;
  uint16_t id = 0;
};

// False at the end of the file, or when the size can't be.
bool ReadChunk(CStream& stream, ChunkHeader& chunk) {
  return !stream.ReadDwordLE(&chunk.size) && !stream.ReadWordLE(&chunk.id) && chunk.size >= kChunkHeaderBytes;
}

}  // namespace

// Where a frame goes. Everything is clipped to the picture.
struct FliFilter::Target {
  FliFilter& filter;
  uint8_t* bits;
  int32_t pitch;
  int32_t left = INT32_MAX;
  int32_t top = INT32_MAX;
  int32_t right = 0;
  int32_t bottom = 0;

  // Room for pixels at x of line y; 0 outside.
  int32_t Room(int32_t x, int32_t y) const { return y < 0 || y >= filter.height ? 0 : std::max(filter.width - x, 0); }
  void Put(int32_t x, int32_t y, const uint8_t* indices, int32_t count) {
    count = std::min(count, Room(x, y));
    if (count <= 0) return;
    filter.PutLine(indices, Row(bits, pitch, y) + ptrdiff_t{x} * filter.outputBytesPerPixel, count);
    filter.blackLines_.Data()[y] = 0;
    Touch(x, y, count);
  }
  void Touch(int32_t x, int32_t y, int32_t count) {
    left = std::min(left, x);
    top = std::min(top, y);
    right = std::max(right, x + count);
    bottom = std::max(bottom, y + 1);
  }
  // `count` copies of the index or of the pair of indices.
  void Repeat(int32_t x, int32_t y, uint8_t even, uint8_t odd, int32_t count) {
    uint8_t run[256];
    count = std::min<int32_t>(count, sizeof run);
    for (int32_t i = 0; i < count; ++i) run[i] = i & 1 ? odd : even;
    Put(x, y, run, count);
  }
};

FliFilter::FliFilter(MemoryBudget& budget) : ImageFilter(budget, kTexts) {}

bool FliFilter::IsValid(CStream& stream, uint32_t) const {
  uint16_t magic = 0;
  return !stream.Skip(4) && !stream.ReadWordLE(&magic) && (magic == kFli || magic == kFlc);
}

ImageError FliFilter::Open(CStream& stream) {
  ImageError error = ReadHeader(stream);
  if (!error) error = FindFirstFrame(stream);
  if (error) depth = 0;
  return error;
}

ImageError FliFilter::ReadHeader(CStream& stream) {
  start_ = stream.GetPosition();
  uint8_t h[kHeaderBytes];
  if (stream.Read(h, sizeof h)) return kImageBadData;
  const uint16_t magic = LoadWord<uint16_t>(h + 4);
  if (magic != kFli && magic != kFlc) return kImageBadData;
  if (LoadWord<uint16_t>(h + 12) != 8) return kImageBadData;
  if (!SetPicture(LoadWord<uint16_t>(h + 8), LoadWord<uint16_t>(h + 10), 8)) return kImageBadData;
  frameCount = LoadWord<uint16_t>(h + 6);
  if (const uint32_t second = LoadWord<uint32_t>(h + 84)) secondFrame_ = start_ + second;
  int64_t time = magic == kFli ? int64_t{LoadWord<uint16_t>(h + 16)} * 100 / 7 : LoadWord<uint32_t>(h + 16);
  time = std::min<int64_t>(time, INT32_MAX);
  frameTime = int32_t(time);
  totalTime = int32_t(std::min<int64_t>(time * frameCount, INT32_MAX));
  currentFrame = -1;
  return kImageOk;
}

// Finds the first frame, and the first palette, which may lie in a later one.
ImageError FliFilter::FindFirstFrame(CStream& stream) {
  palette.emplace();
  int64_t at = start_ + kHeaderBytes;
  for (ChunkHeader chunk; !stream.Seek(at) && ReadChunk(stream, chunk); at += chunk.size) {
    if (chunk.id != kFrame) continue;
    if (firstFrame_ == 0) {
      firstFrame_ = at;
      behindFirst_ = at + chunk.size;
    }
    if (chunk.size >= kFrameHeaderBytes && ReadPalette(stream, at + chunk.size)) break;
    if (frameCount == 1) break;
  }
  next_ = firstFrame_;
  return firstFrame_ ? kImageOk : kImageBadData;
}

// The palette of the frame whose header's start was just read; false when it has none.
bool FliFilter::ReadPalette(CStream& stream, int64_t frameEnd) {
  uint16_t chunks = 0;
  if (stream.ReadWordLE(&chunks) || stream.Skip(8)) return false;
  for (int64_t at = stream.GetPosition(); chunks > 0 && at < frameEnd; --chunks) {
    ChunkHeader chunk;
    if (stream.Seek(at) || !ReadChunk(stream, chunk)) return false;
    at += chunk.size;
    if (chunk.id != kColours && chunk.id != kColours6) continue;
    const int shift = chunk.id == kColours6 ? 2 : 0;
    ImageInput input(stream, chunk.size - kChunkHeaderBytes);
    uint16_t packets = 0;
    if (!input.NextWord(packets)) return false;
    size_t entry = 0;
    for (; packets > 0; --packets) {
      uint8_t skip = 0;
      uint8_t stored = 0;
      if (!input.Next(skip) || !input.Next(stored)) return true;
      entry += skip;
      for (int count = stored ? stored : 256; count > 0; --count, ++entry) {
        uint8_t rgb[3];
        if (!input.Read(rgb, 3)) return true;
        if (entry < 256) {
          palette->entries[entry] = {uint8_t(rgb[0] << shift), uint8_t(rgb[1] << shift), uint8_t(rgb[2] << shift), 0};
        }
      }
    }
    return true;
  }
  return false;
}

void FliFilter::Rewind(CStream&) {
  currentFrame = -1;
  inFile_ = -1;
  next_ = firstFrame_;
}

ImageError FliFilter::ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t*) {
  if (depth == 0) return kImageFilterClosed;
  if (currentFrame >= frameCount) return kImagePastEnd;
  ChunkHeader chunk;
  int64_t at = next_;
  for (;; at += chunk.size) {
    if (stream.Seek(at) || !ReadChunk(stream, chunk)) return kImagePastEnd;
    if (chunk.id == kFrame) break;
  }
  const int64_t end = at + chunk.size;
  uint16_t chunks = 0;
  if (chunk.size < kFrameHeaderBytes || stream.ReadWordLE(&chunks)) return kImageReadFailed;
  if (!KnowTarget(bits, pitch)) return kImageOutOfMemory;
  Target target{*this, bits, pitch};
  bool good = true;
  for (at += kFrameHeaderBytes; good && chunks > 0 && at < end; --chunks) {
    ChunkHeader sub;
    good = !stream.Seek(at) && ReadChunk(stream, sub);
    if (!good) break;
    ImageInput input(stream, sub.size - kChunkHeaderBytes);
    good = ReadSubChunk(sub.id, input, target);
    at += sub.size;
  }
  box_ = target.right > 0 ? Rect{target.left, target.top, target.right, target.bottom} : Rect{};
  if (!good) return kImageReadFailed;

  next_ = end;
  if (++inFile_ >= frameCount) {
    // That was the ring frame: the target holds the first picture again, and the second comes next.
    inFile_ = 0;
    currentFrame = secondFrame_ ? 1 : 0;
    next_ = secondFrame_ ? secondFrame_ : behindFirst_;
  } else {
    currentFrame = inFile_;
  }
  return kImageOk;
}

// Which lines are black is only known as long as frames go into one target in one format.
bool FliFilter::KnowTarget(const uint8_t* bits, int32_t pitch) {
  if (!blackLines_.Data() && !blackLines_.Allocate(Budget(), uint64_t(height))) return false;
  const uint8_t index = 0;
  LastTarget now{bits, pitch, outputDepth, {}};
  PutLine(&index, now.black.data(), 1);
  if (now != last_) std::memset(blackLines_.Data(), 0, blackLines_.Size());
  last_ = now;
  return true;
}

bool FliFilter::ReadSubChunk(uint16_t type, ImageInput& input, Target& target) {
  uint8_t bytes[256];
  switch (type) {
    case kByteRun:
      for (int32_t y = 0; y < height; ++y) {
        uint8_t packets = 0;  // not to be trusted: wide pictures need more than it can count
        if (!input.Next(packets)) return false;
        for (int32_t x = 0; x < width;) {
          uint8_t code = 0;
          if (!input.Next(code)) return false;
          const int count = int8_t(code);
          if (count < 0) {
            if (!input.Read(bytes, size_t(-count))) return false;
            target.Put(x, y, bytes, -count);
            x -= count;
          } else {
            uint8_t value = 0;
            if (!input.Next(value)) return false;
            target.Repeat(x, y, value, value, count);
            x += count;
          }
        }
      }
      return true;
    case kDeltaFli: {
      uint16_t first = 0;
      uint16_t lines = 0;
      if (!input.NextWord(first) || !input.NextWord(lines)) return false;
      for (int32_t y = first; y < first + lines; ++y) {
        uint8_t packets = 0;
        if (!input.Next(packets)) return false;
        for (int32_t x = 0; packets > 0; --packets) {
          uint8_t skip = 0;
          uint8_t code = 0;
          if (!input.Next(skip) || !input.Next(code)) return false;
          x += skip;
          const int count = int8_t(code);
          if (count >= 0) {
            if (!input.Read(bytes, size_t(count))) return false;
            target.Put(x, y, bytes, count);
            x += count;
          } else {
            uint8_t value = 0;
            if (!input.Next(value)) return false;
            target.Repeat(x, y, value, value, -count);
            x -= count;
          }
        }
      }
      return true;
    }
    case kDeltaFlc: {
      uint16_t lines = 0;
      if (!input.NextWord(lines)) return false;
      for (int32_t y = 0; lines > 0; --lines, ++y) {
        uint16_t code = 0;
        // Words ahead of the packets: lines to skip, or the last byte of a line of odd width.
        for (;;) {
          if (!input.NextWord(code)) return false;
          if ((code & 0xC000) == 0xC000) {
            y = std::min(y + 0x10000 - code, height);
          } else if ((code & 0xC000) == 0x8000) {
            const auto value = uint8_t(code);
            target.Put(width - 1, y, &value, 1);
          } else {
            break;
          }
        }
        int32_t x = 0;
        for (int packets = code & 0x3FFF; packets > 0; --packets) {
          uint8_t skip = 0;
          uint8_t sized = 0;
          if (!input.Next(skip) || !input.Next(sized)) return false;
          x = std::min(x + skip, width);
          const int count = int8_t(sized);
          if (count >= 0) {
            if (!input.Read(bytes, size_t(count) * 2)) return false;
            target.Put(x, y, bytes, count * 2);
            x += count * 2;
          } else {
            if (!input.Read(bytes, 2)) return false;
            target.Repeat(x, y, bytes[0], bytes[1], -count * 2);
            x -= count * 2;
          }
        }
      }
      return true;
    }
    case kBlack:
      std::memset(bytes, 0, sizeof bytes);
      for (int32_t y = 0; y < height; ++y) {
        target.Touch(0, y, width);
        if (blackLines_.Data()[y]) continue;
        for (int32_t x = 0; x < width; x += int32_t{sizeof bytes}) target.Put(x, y, bytes, sizeof bytes);
        blackLines_.Data()[y] = 1;
      }
      return true;
    case kCopy:
      for (int32_t y = 0; y < height; ++y) {
        for (int32_t x = 0; x < width; x += int32_t{sizeof bytes}) {
          const int32_t count = std::min<int32_t>(sizeof bytes, width - x);
          if (!input.Read(bytes, size_t(count))) return false;
          target.Put(x, y, bytes, count);
        }
      }
      return true;
    default:
      return true;
  }
}

}  // namespace vl
