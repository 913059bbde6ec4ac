#include "gfx2d/images/bmp_filter.h"

#include <algorithm>
#include <cstring>

#include "gfx2d/images/image_input.h"
#include "gfx2d/pixel_format.h"

namespace vl {
namespace {

constexpr ImageFilter::Texts kTexts = {0, "BMP", "Windows bitmap", "bmp;dib"};

constexpr uint32_t kFileHeaderBytes = 14;
constexpr uint32_t kOldHeader = 12;
constexpr uint32_t kInfoHeader = 40;
constexpr uint32_t kMaskBytes = 12;

constexpr uint32_t kPlain = 0;
constexpr uint32_t kRuns8 = 1;
constexpr uint32_t kMasks = 3;

bool IsHeaderSize(uint32_t size) { return size == kOldHeader || size == kInfoHeader; }
bool HasFileHeader(uint32_t firstFourBytes) { return (firstFourBytes & 0xFFFF) == 0x4D42; }  // "BM"

}  // namespace

BmpFilter::BmpFilter(MemoryBudget& budget) : ImageFilter(budget, kTexts) {}

bool BmpFilter::IsValid(CStream& stream, uint32_t firstFourBytes) const {
  if (!HasFileHeader(firstFourBytes)) return IsHeaderSize(firstFourBytes);
  uint32_t size = 0;
  return !stream.Skip(kFileHeaderBytes) && !stream.ReadDwordLE(&size) && IsHeaderSize(size);
}

ImageError BmpFilter::Open(CStream& stream) {
  const ImageError error = ReadHeader(stream);
  if (error) depth = 0;
  return error;
}

ImageError BmpFilter::ReadHeader(CStream& stream) {
  uint32_t headerBytes = 0;
  if (stream.ReadDwordLE(&headerBytes)) return kImageBadData;
  if (HasFileHeader(headerBytes) && (stream.Skip(kFileHeaderBytes - 4) || stream.ReadDwordLE(&headerBytes))) {
    return kImageBadData;
  }
  if (!IsHeaderSize(headerBytes)) return kImageBadData;

  int64_t fileWidth = 0;
  int64_t fileHeight = 0;
  uint16_t planes = 0;
  uint16_t pixelBits = 0;
  uint8_t header[kInfoHeader] = {};
  if (stream.Read(header, headerBytes - 4)) return kImageBadData;
  if (headerBytes == kOldHeader) {
    fileWidth = LoadWord<uint16_t>(header);
    fileHeight = LoadWord<uint16_t>(header + 2);
    planes = LoadWord<uint16_t>(header + 4);
    pixelBits = LoadWord<uint16_t>(header + 6);
  } else {
    fileWidth = LoadWord<int32_t>(header);
    fileHeight = LoadWord<int32_t>(header + 4);
    planes = LoadWord<uint16_t>(header + 8);
    pixelBits = LoadWord<uint16_t>(header + 10);
  }
  if (planes != 1) return kImageBadPlanes;
  if (pixelBits < 8) return kImageDepthTooSmall;
  if (pixelBits != 8 && pixelBits != 16 && pixelBits != 24 && pixelBits != 32) return kImageBadData;
  if (!SetPicture(fileWidth, fileHeight, pixelBits == 16 ? 15 : pixelBits, 4)) return kImageBadData;

  compression_ = headerBytes == kOldHeader ? kPlain : LoadWord<uint32_t>(header + 12);
  ImageError error = kImageOk;
  if (pixelBits == 8) {
    if (compression_ != kPlain && compression_ != kRuns8) return kImageBadData;
    uint32_t used = headerBytes == kOldHeader ? 0 : LoadWord<uint32_t>(header + 28);
    if (used == 0) used = 256;
    error = ReadPalette(stream, used, headerBytes == kOldHeader ? 3 : 4);
  } else if (compression_ == kMasks) {
    error = ReadMasks(stream, pixelBits);
  } else if (compression_ != kPlain) {
    error = kImageBadData;
  }
  if (error) return error;

  pixels_ = stream.GetPosition();
  const int64_t left = stream.Remaining();
  // Runs may leave out as much as they like, so their length tells nothing. The last line may lack its padding.
  const bool fits = compression_ == kRuns8 ? left > 0 : int64_t{lineBytes} * (height - 1) + rowBytes <= left;
  return fits ? kImageOk : kImageBadData;
}

ImageError BmpFilter::ReadMasks(CStream& stream, uint32_t pixelBits) {
  uint32_t red = 0;
  uint32_t green = 0;
  uint32_t blue = 0;
  if (stream.ReadDwordLE(&red) || stream.ReadDwordLE(&green) || stream.ReadDwordLE(&blue)) return kImageBadData;
  if (pixelBits == 16 && blue == 0x1F && green == 0x3E0 && red == 0x7C00) return kImageOk;
  if (pixelBits == 16 && blue == 0x1F && green == 0x7E0 && red == 0xF800) {
    depth = 16;
    return kImageOk;
  }
  if (pixelBits == 32 && blue == 0xFF && green == 0xFF00 && red == 0xFF0000) return kImageOk;
  return kImageBadPlanes;
}

ImageError BmpFilter::ReadPalette(CStream& stream, uint32_t stored, uint32_t entryBytes) {
  if (int64_t{stored} * entryBytes > stream.Remaining()) return kImageBadData;
  palette.emplace();
  const uint32_t kept = std::min(stored, 256u);
  uint8_t quads[256 * 4];
  if (stream.Read(quads, kept * entryBytes)) return kImageBadData;
  for (uint32_t i = 0; i < kept; ++i) {
    const uint8_t* quad = quads + i * entryBytes;
    palette->entries[i] = {quad[2], quad[1], quad[0], 0};
  }
  return stream.Skip(int64_t{stored - kept} * entryBytes) ? kImageBadData : kImageOk;
}

ImageError BmpFilter::ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t*) {
  if (depth == 0) return kImageFilterClosed;
  if (!TakeFrame()) return kImagePastEnd;
  if (stream.Seek(pixels_)) return kImageReadFailed;
  return compression_ == kRuns8 ? ReadRuns(stream, bits, pitch) : ReadPlain(stream, bits, pitch);
}

ImageError BmpFilter::ReadPlain(CStream& stream, uint8_t* bits, int32_t pitch) {
  ImageMemory line;
  if (mustConvert && !line.Allocate(Budget(), uint64_t(rowBytes))) return kImageOutOfMemory;
  for (int32_t y = height - 1; y >= 0; --y) {
    uint8_t* target = Row(bits, pitch, y);
    uint8_t* source = mustConvert ? line.Data() : target;
    if (stream.Read(source, uint32_t(rowBytes))) return kImageReadFailed;
    if (mustConvert) ConvertLine(source, target, width);
    if (lineBytes != rowBytes) stream.Skip(lineBytes - rowBytes);
  }
  return kImageOk;
}

// Pixels that the runs pass over have index 0.
ImageError BmpFilter::ReadRuns(CStream& stream, uint8_t* bits, int32_t pitch) {
  ImageMemory memory;
  if (!memory.Allocate(Budget(), uint64_t(width))) return kImageOutOfMemory;
  uint8_t* line = memory.Data();
  ImageInput input(stream);
  int32_t x = 0;
  int32_t y = 0;  // from the bottom
  const auto endLines = [&](int32_t count) {
    for (; count > 0 && y < height; --count, ++y) {
      PutLine(line, Row(bits, pitch, height - 1 - y), width);
      std::memset(line, 0, size_t(width));
    }
  };
  while (y < height) {
    uint8_t count = 0;
    uint8_t value = 0;
    if (!input.Next(count) || !input.Next(value)) return kImageReadFailed;
    if (count > 0) {
      const int32_t n = std::min<int32_t>(count, width - x);
      std::memset(line + x, value, size_t(n));
      x += n;
      continue;
    }
    switch (value) {
      case 0:
        endLines(1);
        x = 0;
        break;
      case 1:
        endLines(height);
        break;
      case 2: {
        uint8_t dx = 0;
        uint8_t dy = 0;
        if (!input.Next(dx) || !input.Next(dy)) return kImageReadFailed;
        x = std::min<int32_t>(x + dx, width);
        endLines(dy);
        break;
      }
      default: {
        const int32_t n = std::min<int32_t>(value, width - x);
        if (!input.Read(line + x, size_t(n)) || !input.Skip(size_t(value - n + (value & 1)))) return kImageReadFailed;
        x += n;
        break;
      }
    }
  }
  return kImageOk;
}

ImageError BmpFilter::Save(ImageOutput& output, const uint8_t* bits, int32_t saveWidth, int32_t saveHeight,
                           int32_t saveDepth, int32_t pitch, const PaletteRecord* savePalette) {
  if ((ImageDepthBit(saveDepth) & GetWritableDepths()) == 0) return kImageDepthNotWritable;
  const uint32_t pixelBits = saveDepth == 15 ? 16 : uint32_t(saveDepth);
  const uint32_t colours = saveDepth == 8 ? 256 : 0;
  if (colours && (!savePalette || savePalette->count < colours)) return kImageNoPalette;
  const uint64_t row = uint64_t(saveWidth) * (pixelBits / 8);
  const uint64_t line = ((uint64_t(saveWidth) * pixelBits + 31) & ~uint64_t{31}) / 8;
  const uint32_t offset = kFileHeaderBytes + kInfoHeader + colours * 4 + (saveDepth == 16 ? kMaskBytes : 0);
  const uint64_t imageBytes = line * uint64_t(saveHeight);
  if (imageBytes > UINT32_MAX - offset) return kImageBadArgument;

  output.WriteWord(0x4D42);
  output.WriteDword(uint32_t(offset + imageBytes));
  output.WriteDword(0);
  output.WriteDword(offset);
  output.WriteDword(kInfoHeader);
  output.WriteDword(uint32_t(saveWidth));
  output.WriteDword(uint32_t(saveHeight));
  output.WriteWord(1);
  output.WriteWord(pixelBits);
  output.WriteDword(saveDepth == 16 ? kMasks : kPlain);
  output.WriteDword(uint32_t(imageBytes));
  output.WriteZeros(16);  // resolution and colours used
  if (saveDepth == 16) {
    output.WriteDword(0xF800);
    output.WriteDword(0x7E0);
    output.WriteDword(0x1F);
  }
  for (uint32_t i = 0; i < colours; ++i) {
    const PaletteEntry& e = savePalette->entries[i];
    const uint8_t quad[4] = {e.blue, e.green, e.red, 0};
    output.Write(quad, sizeof quad);
  }
  for (int32_t y = saveHeight - 1; y >= 0 && !output.Failed(); --y) {
    output.Write(Row(bits, pitch, y), size_t(row));
    output.WriteZeros(size_t(line - row));
  }
  return output.Failed() ? kImageWriteFailed : kImageOk;
}

}  // namespace vl
