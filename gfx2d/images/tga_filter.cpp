#include "gfx2d/images/tga_filter.h"

#include <algorithm>
#include <cstring>

#include "gfx2d/images/image_input.h"
#include "gfx2d/pixel_format.h"

namespace vl {
namespace {

constexpr ImageFilter::Texts kTexts = {3, "TGA", "Targa picture", "tga;targa"};

constexpr uint8_t kTopDown = 0x20;
constexpr uint8_t kAlphaBits = 0x0F;
constexpr int64_t kPixelsPerPacket = 128;

}  // namespace

struct TgaFilter::Header {
  uint8_t idLength;
  uint8_t mapType;
  uint8_t imageType;
  uint16_t first;
  uint16_t mapLength;
  uint8_t mapBits;
  uint16_t width;
  uint16_t height;
  uint8_t pixelDepth;
  uint8_t descriptor;
  bool Indexed() const { return imageType == 1 || imageType == 9; }
  bool Coloured() const { return imageType == 2 || imageType == 10; }
  bool Grey() const { return imageType == 3 || imageType == 11; }
};

TgaFilter::TgaFilter(MemoryBudget& budget) : ImageFilter(budget, kTexts) {}

// False for what is no picture of this kind.
bool TgaFilter::ReadHeader(CStream& stream, Header& h) {
  uint8_t b[18];
  if (stream.Read(b, sizeof b)) return false;
  h = {b[0],
       b[1],
       b[2],
       LoadWord<uint16_t>(b + 3),
       LoadWord<uint16_t>(b + 5),
       b[7],
       LoadWord<uint16_t>(b + 12),
       LoadWord<uint16_t>(b + 14),
       b[16],
       b[17]};
  if (h.width == 0 || h.height == 0) return false;
  if (h.Indexed()) return h.mapType == 1 && h.first + h.mapLength <= 256;
  if (h.Coloured()) return h.pixelDepth == 15 || h.pixelDepth == 16 || h.pixelDepth == 24 || h.pixelDepth == 32;
  return h.Grey() && h.pixelDepth == 8;
}

bool TgaFilter::IsValid(CStream& stream, uint32_t) const {
  Header header;
  return ReadHeader(stream, header);
}

ImageError TgaFilter::Open(CStream& stream) {
  Header h;
  if (!ReadHeader(stream, h) || stream.Skip(h.idLength)) return kImageBadData;
  runs_ = h.imageType >= 9;
  grey_ = h.Grey();
  topDown_ = (h.descriptor & kTopDown) != 0;
  // Indices come as bytes whatever the header says of them.
  storedBytes_ = h.Indexed() || grey_ ? 1 : (h.pixelDepth + 1) / 8;
  const int pixelDepth = h.Indexed() ? 8 : grey_ ? 24 : h.pixelDepth == 16 ? 15 : h.pixelDepth;
  if (!SetPicture(h.width, h.height, pixelDepth)) return kImageBadData;
  lineBytes = width * storedBytes_;
  hasAlpha = h.pixelDepth == 32 && h.Coloured() && (h.descriptor & kAlphaBits) == 8;
  ImageError error = kImageOk;
  if (h.mapType == 1) error = ReadColourMap(stream, h);
  pixels_ = stream.GetPosition();
  const int64_t left = stream.Remaining();
  const int64_t most = runs_ ? left / (1 + storedBytes_) * kPixelsPerPacket + left : left / storedBytes_;
  if (!error && int64_t{width} * height > most) error = kImageBadData;
  if (error) depth = 0;
  return error;
}

ImageError TgaFilter::ReadColourMap(CStream& stream, const Header& h) {
  const uint32_t entryBytes = (uint32_t{h.mapBits} + 1) / 8;
  if (entryBytes < 1 || entryBytes > 4) return kImageBadData;
  if (!h.Indexed()) return stream.Skip(int64_t{h.mapLength} * entryBytes) ? kImageBadData : kImageOk;
  uint8_t entries[256 * 4];
  if (stream.Read(entries, h.mapLength * entryBytes)) return kImageBadData;
  palette.emplace();
  for (uint32_t i = 0; i < h.mapLength; ++i) {
    const uint8_t* e = entries + i * entryBytes;
    PaletteEntry& to = palette->entries[h.first + i];
    if (entryBytes == 1) {
      to = {e[0], e[0], e[0], 0};
    } else if (entryBytes == 2) {
      const Colour colour = Widen15(LoadWord<uint16_t>(e));
      to = {uint8_t(RedOf(colour)), uint8_t(GreenOf(colour)), uint8_t(BlueOf(colour)), 0};
    } else {
      to = {e[2], e[1], e[0], 0};
    }
  }
  return kImageOk;
}

ImageError TgaFilter::ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t* mask) {
  if (depth == 0) return kImageFilterClosed;
  if (!TakeFrame()) return kImagePastEnd;
  if (stream.Seek(pixels_)) return kImageReadFailed;
  ImageMemory stored;
  ImageMemory spread;
  if (!stored.Allocate(Budget(), uint64_t(lineBytes))) return kImageOutOfMemory;
  if (grey_ && !spread.Allocate(Budget(), uint64_t(rowBytes))) return kImageOutOfMemory;
  ImageInput input(stream);
  const auto pixelBytes = size_t(storedBytes_);
  // Of the packet in progress, which may go on in the next line.
  int32_t packetLeft = 0;
  bool repeated = false;
  uint8_t pixel[4] = {};

  for (int32_t line = 0; line < height; ++line) {
    const int32_t y = topDown_ ? line : height - 1 - line;
    uint8_t* to = stored.Data();
    if (!runs_) {
      if (!input.Read(to, size_t(lineBytes))) return kImageReadFailed;
    }
    for (int32_t x = 0; runs_ && x < width;) {
      if (packetLeft == 0) {
        uint8_t head = 0;
        if (!input.Next(head)) return kImageReadFailed;
        packetLeft = (head & 127) + 1;
        repeated = (head & 128) != 0;
        if (repeated && !input.Read(pixel, pixelBytes)) return kImageReadFailed;
      }
      const int32_t n = std::min(packetLeft, width - x);
      if (!repeated) {
        if (!input.Read(to, size_t(n) * pixelBytes)) return kImageReadFailed;
        to += size_t(n) * pixelBytes;
      } else {
        for (int32_t i = 0; i < n; ++i, to += pixelBytes) std::memcpy(to, pixel, pixelBytes);
      }
      packetLeft -= n;
      x += n;
    }
    const uint8_t* source = stored.Data();
    if (mask && hasAlpha) {
      uint8_t* alpha = mask + ptrdiff_t{y} * width;
      for (int32_t x = 0; x < width; ++x) alpha[x] = source[x * 4 + 3];
    }
    if (depth == 15) {
      for (int32_t x = 0; x < width; ++x) stored.Data()[x * 2 + 1] &= 0x7F;
    }
    if (grey_) {
      for (int32_t x = 0; x < width; ++x) std::memset(spread.Data() + x * 3, source[x], 3);
      source = spread.Data();
    }
    PutLine(source, Row(bits, pitch, y), width);
  }
  return kImageOk;
}

}  // namespace vl
