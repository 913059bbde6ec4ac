#include "tools/project/file_kind.h"

#include "host/appfile/bank.h"

namespace vl {

namespace {

using std::string_view_literals::operator""sv;

struct Bytes {
  std::string_view all;
  // Bytes behind the end read as 0.
  uint32_t At(size_t i) const { return i < all.size() ? static_cast<uint8_t>(all[i]) : 0; }
  uint32_t Le16(size_t i) const { return At(i) | At(i + 1) << 8; }
  uint32_t Le32(size_t i) const { return Le16(i) | Le16(i + 2) << 16; }
  uint32_t Be16(size_t i) const { return At(i) << 8 | At(i + 1); }
  uint32_t Be32(size_t i) const { return Be16(i) << 16 | Be16(i + 2); }
};

bool Set(PictureSize* size, int64_t width, int64_t height, uint32_t depth) {
  if (height < 0) height = -height;
  if (width <= 0 || height <= 0 || width > 0xFFFF || height > 0xFFFF || depth > 64) return false;
  *size = {static_cast<uint16_t>(width), static_cast<uint16_t>(height), static_cast<uint16_t>(depth)};
  return true;
}

bool MeasureBmp(const Bytes& b, PictureSize* size) {
  const uint32_t header = b.Le32(14);
  if (header == 12) return Set(size, b.Le16(18), b.Le16(20), b.Le16(24));
  return header >= 40 && Set(size, static_cast<int32_t>(b.Le32(18)), static_cast<int32_t>(b.Le32(22)), b.Le16(28));
}

bool MeasurePng(const Bytes& b, PictureSize* size) {
  constexpr uint32_t kChannels[] = {1, 0, 3, 1, 2, 0, 4};
  const uint32_t type = b.At(25);
  return type <= 6 && kChannels[type] && Set(size, b.Be32(16), b.Be32(20), b.At(24) * kChannels[type]);
}

bool MeasureJpeg(const Bytes& b, PictureSize* size) {
  size_t at = 2;
  while (at + 9 < b.all.size()) {
    if (b.At(at) != 0xFF) return false;
    const uint32_t marker = b.At(at + 1);
    const bool frame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8 && marker != 0xCC;
    if (frame) return Set(size, b.Be16(at + 7), b.Be16(at + 5), b.At(at + 9) * 8);
    const bool alone = marker == 0xFF || marker == 1 || (marker >= 0xD0 && marker <= 0xD7);
    at += marker == 0xFF ? 1 : alone ? 2 : 2 + b.Be16(at + 2);
  }
  return false;
}

bool IsTga(const Bytes& b) {
  const uint32_t type = b.At(2);
  const uint32_t depth = b.At(16);
  return b.all.size() > 18 && b.At(1) <= 1 && ((type >= 1 && type <= 3) || (type >= 9 && type <= 11)) &&
         (depth == 8 || depth == 15 || depth == 16 || depth == 24 || depth == 32);
}

}  // namespace

bool MeasurePicture(std::string_view bytes, PictureSize* size) {
  const Bytes b{bytes};
  if (bytes.starts_with("BM")) return MeasureBmp(b, size);
  if (bytes.starts_with("\x89PNG\r\n\x1A\n")) return MeasurePng(b, size);
  if (bytes.starts_with("\xFF\xD8\xFF")) return MeasureJpeg(b, size);
  if (IsTga(b)) return Set(size, b.Le16(12), b.Le16(14), b.At(16));
  if (b.At(0) == 10 && bytes.size() >= 128) {
    return Set(size, int64_t{b.Le16(8)} - b.Le16(4) + 1, int64_t{b.Le16(10)} - b.Le16(6) + 1, b.At(3) * b.At(65));
  }
  return false;
}

std::string_view ExtensionFor(uint32_t bankType, std::string_view bytes) {
  if (bankType == kBankSource) return ".vlq";
  if (bankType == kBankString) return ".txt";
  const Bytes b{bytes};
  if (bytes.starts_with("BM")) return ".bmp";
  if (bytes.starts_with("\x89PNG")) return ".png";
  if (bytes.starts_with("\xFF\xD8\xFF")) return ".jpg";
  if (bytes.starts_with("ANMV")) return ".anm";
  if (bytes.starts_with("RIFF") && bytes.substr(0, 12).ends_with("WAVE")) return ".wav";
  if (bytes.starts_with("FORM")) return ".aif";
  if (bytes.starts_with("MThd")) return ".mid";
  if (bytes.starts_with("ID3") || bytes.starts_with("\xFF\xFB") || bytes.starts_with("\xFF\xFA")) return ".mp3";
  if (b.Le16(4) == 0xAF11) return ".fli";
  if (b.Le16(4) == 0xAF12) return ".flc";
  if (bankType == kBankImage) return b.At(0) == 10 ? ".pcx" : IsTga(b) ? ".tga" : ".img";
  return ".bin";
}

}  // namespace vl
