// BmpFilter: bitmaps of 8, 15, 16, 24 and 32 bits, plain or with 8-bit run lengths, with or without a file header.
//
// The pixels follow the palette or the masks at once; the offset in the file header isn't looked at.
#pragma once

#include "gfx2d/images/image_filter.h"

namespace vl {

class BmpFilter final : public ImageFilter {
 public:
  explicit BmpFilter(MemoryBudget& budget);
  std::unique_ptr<ImageFilter> CreateInstance() const override { return std::make_unique<BmpFilter>(Budget()); }
  uint32_t GetId() const override { return ImageFilterId("BMP "); }
  uint32_t GetWritableDepths() const override { return kDepth8 | kDepth15 | kDepth16 | kDepth24 | kDepth32; }
  bool IsValid(CStream& stream, uint32_t firstFourBytes) const override;
  bool ReadsStills() const override { return true; }
  bool SavesStills() const override { return true; }
  ImageError Open(CStream& stream) override;
  ImageError ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t* mask) override;
  ImageError Save(ImageOutput& output, const uint8_t* bits, int32_t saveWidth, int32_t saveHeight, int32_t saveDepth,
                  int32_t pitch, const PaletteRecord* savePalette) override;

 private:
  ImageError ReadHeader(CStream& stream);
  ImageError ReadMasks(CStream& stream, uint32_t pixelBits);
  ImageError ReadPalette(CStream& stream, uint32_t stored, uint32_t entryBytes);
  ImageError ReadPlain(CStream& stream, uint8_t* bits, int32_t pitch);
  ImageError ReadRuns(CStream& stream, uint8_t* bits, int32_t pitch);

  uint32_t compression_ = 0;
  int64_t pixels_ = 0;  // their position in the stream
};

}  // namespace vl
