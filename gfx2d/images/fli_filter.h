// FliFilter: FLI and FLC animations of 8 bits.
//
// A frame is decoded in place over the one before it, which the target must still hold. Behind the last frame the
// file has a ring frame that turns it into the first; reading on takes it.
#pragma once

#include "gfx2d/images/image_filter.h"

namespace vl {

class ImageInput;

class FliFilter final : public ImageFilter {
 public:
  explicit FliFilter(MemoryBudget& budget);
  std::unique_ptr<ImageFilter> CreateInstance() const override { return std::make_unique<FliFilter>(Budget()); }
  uint32_t GetId() const override { return ImageFilterId("FLI "); }
  uint32_t GetWritableDepths() const override { return kDepth8; }
  bool IsValid(CStream& stream, uint32_t firstFourBytes) const override;
  bool ReadsAnimations() const override { return true; }
  ImageError Open(CStream& stream) override;
  ImageError ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t* mask) override;
  void GetFrameBox(Rect& box) const override { box = box_; }
  void Rewind(CStream& stream) override;

 private:
  struct Target;
  struct LastTarget {
    const uint8_t* bits = nullptr;
    int32_t pitch = 0;
    int32_t depth = 0;
    std::array<uint8_t, 4> black{};  // the pixel of index 0
    bool operator==(const LastTarget&) const = default;
  };
  ImageError ReadHeader(CStream& stream);
  ImageError FindFirstFrame(CStream& stream);
  bool ReadPalette(CStream& stream, int64_t frameEnd);
  bool KnowTarget(const uint8_t* bits, int32_t pitch);
  bool ReadSubChunk(uint16_t type, ImageInput& input, Target& target);

  int64_t start_ = 0;        // of the file in the stream
  int64_t firstFrame_ = 0;   // position of its chunk
  int64_t secondFrame_ = 0;  // as the header tells it, 0 when it doesn't
  int64_t behindFirst_ = 0;  // position behind the first frame's chunk
  int64_t next_ = 0;         // position of the next chunk
  int32_t inFile_ = -1;      // the picture that was read last, by its place in the file
  Rect box_;
  LastTarget last_;
  // 1 for each line of the target that is all index 0, so that a file of nothing but black frames costs no more
  // than its bytes.
  ImageMemory blackLines_;
};

}  // namespace vl
