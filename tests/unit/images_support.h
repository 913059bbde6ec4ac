// What the tests of picture files share: bytes of files as strings, pictures read into memory of any depth and
// line order, and files saved into memory.
#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "gfx2d/images/image_reader.h"
#include "gfx2d/images/load_image.h"
#include "gfx2d/pixel_format.h"
#include "platform/memory_files.h"
#include "tests/unit/appfile_bytes.h"
#include "tests/unit/gfx2d_support.h"

namespace vl::testing {

using test::U16;
using test::U32;

inline std::string Byte(uint32_t v) { return std::string(1, char(v)); }
// Bytes from numbers.
inline std::string Bytes(std::initializer_list<int> values) {
  std::string s;
  for (const int v : values) s += char(v);
  return s;
}
inline std::string Hex(std::string_view bytes) {
  static constexpr char kDigits[] = "0123456789abcdef";
  std::string s;
  for (const char c : bytes) {
    if (!s.empty()) s += ' ';
    s += kDigits[uint8_t(c) >> 4];
    s += kDigits[uint8_t(c) & 15];
  }
  return s;
}

// A palette of greys whose entry i is (i, i, i), or of the colours given and black.
inline PaletteRecord Greys() {
  PaletteRecord p;
  for (size_t i = 0; i < 256; ++i) p.entries[i] = {uint8_t(i), uint8_t(i), uint8_t(i), 0};
  return p;
}
inline PaletteRecord Colours(const std::vector<Colour>& colours, uint16_t count = 256) {
  PaletteRecord p;
  p.count = count;
  for (size_t i = 0; i < colours.size(); ++i) {
    p.entries[i] = {uint8_t(RedOf(colours[i])), uint8_t(GreenOf(colours[i])), uint8_t(BlueOf(colours[i])), 0};
  }
  return p;
}

struct Images {
  MemoryBudget budget{uint64_t{512} << 20};
  ImageFilterList filters{&budget};
};

// What reading gave: the lines from the top, without padding.
struct Frame {
  ImageError error = kImageOk;
  int width = 0;
  int height = 0;
  int depth = 0;
  std::string pixels;
  std::string mask;
};

// A target of its own memory with a guard of bytes around every line.
class Target {
 public:
  static constexpr uint8_t kGuard = 0xA5;
  Target(int width, int height, int depth, bool bottomUp = false)
      : width_(width), height_(height), row_(size_t(width) * size_t((depth + 1) / 8)) {
    memory_.assign((row_ + 8) * size_t(height), kGuard);
    for (int y = 0; y < height; ++y) std::fill_n(memory_.begin() + ptrdiff_t(At(y)), row_, uint8_t{0});
    mask_.assign(size_t(width) * size_t(height), 0x77);
    target = {
        memory_.data() + At(bottomUp ? height - 1 : 0), width, height, int(row_ + 8), depth, nullptr, mask_.data()};
    if (bottomUp) target.pitch = -target.pitch;
    bottomUp_ = bottomUp;
  }
  std::string Pixels() const {
    std::string s;
    for (int y = 0; y < height_; ++y) {
      const size_t at = At(bottomUp_ ? height_ - 1 - y : y);
      s.append(memory_.begin() + ptrdiff_t(at), memory_.begin() + ptrdiff_t(at + row_));
      for (size_t i = 0; i < 4; ++i) {
        EXPECT_EQ(memory_[at + row_ + i], kGuard) << "behind line " << y;
        EXPECT_EQ(memory_[at - 4 + i], kGuard) << "before line " << y;
      }
    }
    return s;
  }
  std::string Mask() const { return {mask_.begin(), mask_.end()}; }
  ImageTarget target;

 private:
  size_t At(int y) const { return 4 + size_t(y) * (row_ + 8); }
  int width_;
  int height_;
  size_t row_;
  bool bottomUp_ = false;
  std::vector<uint8_t> memory_;
  std::vector<uint8_t> mask_;
};

// Opens the bytes and reads one frame at `depth`, 0 for the file's own.
inline Frame ReadPicture(std::string_view file, int depth = 0, const PaletteRecord* palette = nullptr,
                         bool bottomUp = false, uint32_t filterId = 0) {
  Images images;
  Frame frame;
  {
    CMemoryStream stream(file.data(), uint32_t(file.size()));
    ImageReader reader(images.filters);
    frame.error = reader.OpenStream(&stream, filterId);
    if (frame.error) return frame;
    frame.width = reader.GetWidth();
    frame.height = reader.GetHeight();
    frame.depth = reader.GetDepth();
    Target target(frame.width, frame.height, depth ? depth : frame.depth, bottomUp);
    target.target.depth = depth;
    target.target.palette = palette;
    frame.error = reader.Read(target.target);
    frame.pixels = target.Pixels();
    if (reader.HasAlpha()) frame.mask = target.Mask();
  }
  EXPECT_EQ(images.budget.Used(), 0u) << "all memory is given back";
  return frame;
}

// The error of opening, or else of reading.
inline ImageError ErrorOf(std::string_view file) { return ReadPicture(file).error; }

// Saves lines without padding and gives the file; the error in `error`.
inline std::string SavePicture(uint32_t filterId, std::string_view pixels, int width, int height, int depth,
                               const PaletteRecord* palette, ImageError* error = nullptr) {
  Images images;
  MemoryFileSystem files;
  ImageReader reader(images.filters);
  EXPECT_EQ(reader.OpenFilter(filterId), kImageOk);
  const ImageError result = reader.Save(files, "picture", reinterpret_cast<const uint8_t*>(pixels.data()), width,
                                        height, depth, width * ((depth + 1) / 8), palette);
  if (error) *error = result;
  const std::vector<uint8_t> content = files.Content("picture");
  return {content.begin(), content.end()};
}

// A 40-byte bitmap header behind a file header whose offset of the pixels is nonsense.
inline std::string BmpFileHeader() { return "BM" + U32(0) + U32(0) + U32(0xDEADBEEF); }
inline std::string BmpInfo(int width, int height, int bits, int compression = 0, uint32_t used = 0, int planes = 1) {
  return U32(40) + U32(uint32_t(width)) + U32(uint32_t(height)) + U16(uint32_t(planes)) + U16(uint32_t(bits)) +
         U32(uint32_t(compression)) + U32(0) + U32(0) + U32(0) + U32(used) + U32(0);
}
inline std::string GreyQuads(int count, int entryBytes) {
  std::string s;
  for (int i = 0; i < count; ++i) s += std::string(3, char(i)) + (entryBytes == 4 ? std::string(1, '\x55') : "");
  return s;
}

}  // namespace vl::testing
