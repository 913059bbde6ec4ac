#include "gfx2d/images/pcx_filter.h"

#include <algorithm>
#include <cstring>

#include "gfx2d/images/image_input.h"
#include "gfx2d/pixel_format.h"

namespace vl {
namespace {

constexpr ImageFilter::Texts kTexts = {4, "PCX", "PC Paintbrush picture", "pcx"};

constexpr uint32_t kHeaderBytes = 128;
constexpr int64_t kPaletteBytes = 768;
constexpr uint8_t kRun = 0xC0;
// Two bytes make a run of at most so many.
constexpr int64_t kLongestRun = 63;

}  // namespace

PcxFilter::PcxFilter(MemoryBudget& budget) : ImageFilter(budget, kTexts) {}

ImageError PcxFilter::Open(CStream& stream) {
  const ImageError error = ReadHeader(stream);
  if (error) depth = 0;
  return error;
}

ImageError PcxFilter::ReadHeader(CStream& stream) {
  uint8_t h[kHeaderBytes];
  if (stream.Read(h, sizeof h)) return kImageBadData;
  runs_ = h[2] != 0;
  const int32_t bits = h[3];
  planes_ = h[65];
  planeBytes_ = LoadWord<uint16_t>(h + 66);
  const int32_t pixelDepth = bits * planes_;
  if (pixelDepth < 8) return kImageDepthTooSmall;
  if (planes_ != 1 && !(planes_ == 3 && pixelDepth == 24)) return kImageBadPlanes;
  if (bits != 8) return kImageBadData;
  const int32_t right = LoadWord<uint16_t>(h + 8);
  const int32_t bottom = LoadWord<uint16_t>(h + 10);
  if (!SetPicture(right - LoadWord<uint16_t>(h + 4) + 1, bottom - LoadWord<uint16_t>(h + 6) + 1, pixelDepth)) {
    return kImageBadData;
  }
  lineBytes = planeBytes_ * planes_;
  pixels_ = stream.GetPosition();
  const int64_t left = stream.Remaining();
  const int64_t stored = int64_t{lineBytes} * height;
  if (lineBytes == 0 || stored > (runs_ ? left / 2 * kLongestRun + left : left)) return kImageBadData;
  if (pixelDepth > 8) return kImageOk;

  uint8_t colours[kPaletteBytes];
  if (stream.GetLength() < kPaletteBytes || stream.Seek(stream.GetLength() - kPaletteBytes) ||
      stream.Read(colours, sizeof colours)) {
    return kImageBadData;
  }
  palette.emplace();
  for (size_t i = 0; i < 256; ++i) palette->entries[i] = {colours[i * 3], colours[i * 3 + 1], colours[i * 3 + 2], 0};
  return kImageOk;
}

ImageError PcxFilter::ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t*) {
  if (depth == 0) return kImageFilterClosed;
  if (!TakeFrame()) return kImagePastEnd;
  if (stream.Seek(pixels_)) return kImageReadFailed;
  // Lines shorter than the picture leave the rest of it 0.
  ImageMemory stored;
  ImageMemory pixels;
  if (!stored.Allocate(Budget(), uint64_t(lineBytes))) return kImageOutOfMemory;
  if (!pixels.Allocate(Budget(), uint64_t(rowBytes))) return kImageOutOfMemory;
  ImageInput input(stream);
  const int32_t shown = std::min(width, planeBytes_);
  for (int32_t y = 0; y < height; ++y) {
    uint8_t* line = stored.Data();
    if (!runs_) {
      if (!input.Read(line, size_t(lineBytes))) return kImageReadFailed;
    }
    for (int32_t at = 0; runs_ && at < lineBytes;) {
      uint8_t value = 0;
      int32_t count = 1;
      if (!input.Next(value)) return kImageReadFailed;
      if ((value & kRun) == kRun) {
        count = std::min<int32_t>(value & ~kRun, lineBytes - at);
        if (!input.Next(value)) return kImageReadFailed;
      }
      std::memset(line + at, value, size_t(count));
      at += count;
    }
    uint8_t* to = pixels.Data();
    if (planes_ == 1) {
      std::memcpy(to, line, size_t(shown));
    } else {
      for (int32_t x = 0; x < shown; ++x) {
        to[x * 3] = line[2 * planeBytes_ + x];
        to[x * 3 + 1] = line[planeBytes_ + x];
        to[x * 3 + 2] = line[x];
      }
    }
    PutLine(to, Row(bits, pitch, y), width);
  }
  return kImageOk;
}

}  // namespace vl
