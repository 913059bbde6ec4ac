// PcxFilter: PCX pictures of one plane with a palette, or of three planes of colour.
//
// The palette is the last 768 bytes of the stream.
#pragma once

#include "gfx2d/images/image_filter.h"

namespace vl {

class PcxFilter final : public ImageFilter {
 public:
  explicit PcxFilter(MemoryBudget& budget);
  std::unique_ptr<ImageFilter> CreateInstance() const override { return std::make_unique<PcxFilter>(Budget()); }
  uint32_t GetId() const override { return ImageFilterId("PCX "); }
  uint32_t GetWritableDepths() const override { return kDepth8 | kDepth24; }
  bool IsValid(CStream& stream, uint32_t firstFourBytes) const override { return (firstFourBytes & 0xFF) == 10; }
  bool ReadsStills() const override { return true; }
  ImageError Open(CStream& stream) override;
  ImageError ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t* mask) override;

 private:
  ImageError ReadHeader(CStream& stream);

  bool runs_ = false;
  int32_t planes_ = 0;
  int32_t planeBytes_ = 0;  // of one line of one plane
  int64_t pixels_ = 0;      // their position in the stream
};

}  // namespace vl
