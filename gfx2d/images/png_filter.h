// PngFilter: PNG through libpng.
//
// 8 bits a pixel come out with the file's palette, all else as 24 bits, or 32 with the alpha in the fourth byte.
// Bit depths below 8 are refused, 16-bit channels lose their low byte. Only the chunks that pixels need are read.
#pragma once

#include "gfx2d/images/image_filter.h"

namespace vl {

class PngFilter final : public ImageFilter {
 public:
  explicit PngFilter(MemoryBudget& budget);
  ~PngFilter() override;
  std::unique_ptr<ImageFilter> CreateInstance() const override { return std::make_unique<PngFilter>(Budget()); }
  uint32_t GetId() const override { return ImageFilterId("PNG "); }
  uint32_t GetWritableDepths() const override { return kDepth8 | kDepth24; }
  bool IsValid(CStream& stream, uint32_t firstFourBytes) const override;
  bool ReadsStills() const override { return true; }
  bool SavesStills() const override { return true; }
  ImageError Open(CStream& stream) override;
  ImageError ReadFrame(CStream& stream, uint8_t* bits, int32_t pitch, uint8_t* mask) override;
  ImageError Save(ImageOutput& output, const uint8_t* bits, int32_t saveWidth, int32_t saveHeight, int32_t saveDepth,
                  int32_t pitch, const PaletteRecord* savePalette) override;
  void Close() override;

 private:
  struct Decoder;
  enum class Order { kBgr, kRgb, kWords };  // of the bytes of a pixel; words have a high byte of 0
  // These call libpng between a setjmp and its longjmp: they hold nothing that has a destructor.
  static bool ReadInfo(Decoder& decoder);
  static bool StartPixels(Decoder& decoder, Order order);
  static bool ReadLine(Decoder& decoder, uint8_t* to);
  static bool ReadLines(Decoder& decoder, uint8_t* bits, int32_t pitch, int32_t lines);

  std::unique_ptr<Decoder> decoder_;
};

}  // namespace vl
