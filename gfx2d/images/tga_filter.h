// TgaFilter: Targa pictures, plain or run-length coded, with a palette, in colour or in grey.
//
// 16 bits are five a channel, like 15; the attribute bit is dropped. A grey byte is spread to three.
#pragma once

#include "gfx2d/images/image_filter.h"

namespace vl {

class TgaFilter final : public ImageFilter {
 public:
  explicit TgaFilter(MemoryBudget& budget);
  std::unique_ptr<ImageFilter> CreateInstance() const override { return std::make_unique<TgaFilter>(Budget()); }
  uint32_t GetId() const override { return ImageFilterId("TGA "); }
  uint32_t GetWritableDepths() const override { return kDepth8 | kDepth15 | kDepth16 | kDepth24 | kDepth32; }
  bool IsValid(CStream& stream, uint32_t firstFourBytes) const override;
  bool ReadsStills() const override { return true; }
  ImageError Open(CStream& stream) override;
  ImageError ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t* mask) override;

 private:
  struct Header;
  static bool ReadHeader(CStream& stream, Header& header);
  ImageError ReadColourMap(CStream& stream, const Header& header);

  bool runs_ = false;
  bool grey_ = false;
  bool topDown_ = false;
  int32_t storedBytes_ = 0;  // of a pixel
  int64_t pixels_ = 0;       // their position in the stream
};

}  // namespace vl
